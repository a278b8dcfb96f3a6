#include "ReportHtmlPlot.h"
#include "ReportHtmlParts.h"
#include "Text.h"
#include <cmath>
#include <cstdio>

namespace ReportHtml
{
namespace
{
constexpr int MOST_TICKS = 8;

double GetTimeStep(double fSeconds)
{
    for (const double fStep : {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600})
        if (fSeconds / fStep <= MOST_TICKS)
            return fStep;
    return std::ceil(fSeconds / MOST_TICKS);
}
} // namespace

std::string Number(double f)
{
    char szText[400]; // the largest double has 309 digits ahead of the point
    std::snprintf(szText, sizeof szText, "%.2f", std::isfinite(f) ? f : 0.0);
    std::string str = szText;
    str.erase(str.find_last_not_of('0') + 1);
    if (str.ends_with('.'))
        str.pop_back();
    return str;
}
std::string Attribute(const char* pName, const std::string& strValue)
{
    return std::string(" ") + pName + "=\"" + strValue + "\"";
}
std::string Attribute(const char* pName, int nValue) { return Attribute(pName, std::to_string(nValue)); }

std::string LegendItem(const char* pClass, const std::string& strDrawing, const std::string& strText)
{
    return "<li><svg class=\"key\" width=\"22\" height=\"12\" aria-hidden=\"true\"><g class=\"" + std::string(pClass) +
           "\">" + strDrawing + "</g></svg>" + strText + "</li>";
}

std::string MakeFigure(const CHART& chart, const std::string& strBody)
{
    const std::string strTitleID = chart.strID + "-t";
    const std::string strDescriptionID = chart.strID + "-d";
    return "<figure><figcaption><span class=\"cap\">" + chart.strCaption + "</span><ul class=\"legend\">" +
           chart.strLegend + "</ul></figcaption><svg class=\"chart\" role=\"img\"" +
           Attribute("height", chart.nHeight) + Attribute("aria-labelledby", strTitleID) +
           Attribute("aria-describedby", strDescriptionID) + Attribute("data-top", chart.nTop) +
           Attribute("data-plot", chart.nPlot) + Attribute("data-first", Number(chart.fFirst)) +
           Attribute("data-seconds", Number(chart.fSeconds)) + "><title" + Attribute("id", strTitleID) + ">" +
           Escape(chart.strTitle) + "</title><desc" + Attribute("id", strDescriptionID) + ">" +
           Escape(chart.strDescription) + "</desc>" + strBody + "</svg></figure>\n";
}

std::string MakeText(const std::string& strX, int nY, const char* pClass, const std::string& strText)
{
    return "<text class=\"" + std::string(pClass) + "\"" + Attribute("x", strX) + Attribute("y", nY) + ">" + strText +
           "</text>";
}

std::string MakeLevel(int nY, const std::string& strText, const char* pClass)
{
    return "<line class=\"" + std::string(pClass) + "\" x1=\"0\" x2=\"100%\"" + Attribute("y1", nY) +
           Attribute("y2", nY) + "/>" + (strText.empty() ? "" : MakeText("-6", nY + 4, "y", strText));
}

std::string MakeTimeAxis(const CHART& chart)
{
    const double fStep = GetTimeStep(chart.fSeconds);
    const int nBottom = chart.nTop + chart.nPlot;
    std::string strAxis = "<rect class=\"frame\" x=\"0\" width=\"100%\"" + Attribute("y", chart.nTop) +
                          Attribute("height", chart.nPlot) + "/>";
    double fTick = std::ceil(chart.fFirst / fStep) * fStep;
    for (int i = 0; fTick <= chart.fFirst + chart.fSeconds && i <= MOST_TICKS; ++i, fTick += fStep)
    {
        const std::string strX = FormatPlace((fTick - chart.fFirst) / chart.fSeconds);
        strAxis += "<line class=\"grid\"" + Attribute("x1", strX) + Attribute("x2", strX) +
                   Attribute("y1", chart.nTop) + Attribute("y2", nBottom) + "/>" +
                   MakeText(strX, chart.nHeight - 5, i % 2 == 0 ? "x" : "x odd", FormatSeconds(fTick));
    }
    return strAxis;
}

std::string MakeSeries(const CHART& chart, size_t nColumns, int nUnits, const std::string& strPaths)
{
    return "<svg class=\"series\" x=\"0\" width=\"100%\" preserveAspectRatio=\"none\"" + Attribute("y", chart.nTop) +
           Attribute("height", chart.nPlot) +
           Attribute("viewBox", "0 0 " + std::to_string(nColumns) + " " + std::to_string(nUnits)) + ">" + strPaths +
           "</svg>";
}

std::string MakePath(const char* pClass, const std::string& strID, const std::string& strPath, const char* pName,
                     double fTop, double fBottom, const char* pUnit)
{
    if (strPath.empty())
        return "";
    return "<path class=\"" + std::string(pClass) + "\"" + (strID.empty() ? "" : Attribute("id", strID)) +
           Attribute("data-name", pName) + Attribute("data-from", Number(fTop)) +
           Attribute("data-to", Number(fBottom)) + Attribute("data-unit", pUnit) + Attribute("d", strPath) + "/>";
}
} // namespace ReportHtml
