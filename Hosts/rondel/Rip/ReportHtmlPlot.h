// ReportHtmlPlot: what the charts of the HTML report have in common: frame, axes, legend, and the drawing of a series.
//
// Shape: inline SVG. Whatever depends on the width of the page is given in percent of the plot, so that texts stay
//        as large as they are; only series, in a drawing of their own, are stretched. Axis texts stand outside of the
//        plot, at negative x.
// Units: heights in CSS pixels, times in seconds.

#pragma once

#include <string>

namespace ReportHtml
{
// Around a plot run lanes for the heads of the marks: what is in doubt above it, what was read again below.
constexpr int LANE = 16;
constexpr int AXIS = 20; // with the times, below them

struct CHART
{
    std::string strID;
    std::string strCaption;
    std::string strLegend; // items
    std::string strTitle;  // plain text, as the next one
    std::string strDescription;
    int nTop = 0;  // of the plot
    int nPlot = 0; // its height
    int nHeight = 0;
    double fFirst = 0;   // seconds at the left
    double fSeconds = 0; // of the whole width
};

std::string Number(double f); // as programs read it, with two digits behind the point at most
std::string Attribute(const char* pName, const std::string& strValue);
std::string Attribute(const char* pName, int nValue);

std::string LegendItem(const char* pClass, const std::string& strDrawing, const std::string& strText);
std::string MakeFigure(const CHART& chart, const std::string& strBody);
std::string MakeText(const std::string& strX, int nY, const char* pClass, const std::string& strText);
// A line across the plot, with its value at the left.
std::string MakeLevel(int nY, const std::string& strText, const char* pClass = "grid");
// The frame, and the time below it. On a narrow screen every second text goes.
std::string MakeTimeAxis(const CHART& chart);
// The drawing that is stretched, of this many columns and units.
std::string MakeSeries(const CHART& chart, size_t nColumns, int nUnits, const std::string& strPaths);
// A series in it, with the name, scale and unit that the script tells its values by. Nothing for an empty path.
std::string MakePath(const char* pClass, const std::string& strID, const std::string& strPath, const char* pName,
                     double fTop, double fBottom, const char* pUnit);
} // namespace ReportHtml
