// ReportHtmlSeries: series of a rip thinned to the columns of a chart, and the SVG paths made of them.
//
// Shape:   a path's x counts columns from 0, its y counts units from the top; it is stretched to the chart's size.
// Errors:  a series without values makes an empty path. Values that are no numbers, or lie outside of the scale, come
//          to its edge.

#pragma once

#include "RipReport.h"
#include <string>
#include <vector>

namespace ReportHtml
{
// From the top to the bottom of a chart, in whole units, so that a path needs no fractions.
constexpr int WAVE_UNITS = 200;
constexpr int LOUDNESS_UNITS = 600;
constexpr int SPEED_UNITS = 500;

// The scale of loudness: what is below is as good as silence. EBU Tech 3341 has +9 LU above -23 LUFS as its scale, and
// music goes beyond.
constexpr double LOUDNESS_TOP = 5;      // LUFS
constexpr double LOUDNESS_BOTTOM = -55; //

// What a column holds of the values that fall into it. Unknown if there are none.
struct COLUMN
{
    bool bKnown = false;
    double fLow = 0;
    double fHigh = 0;

    void Add(double fFrom, double fTo);
};
using COLUMNS = std::vector<COLUMN>;

COLUMNS ThinWave(const RIP_PIECE& piece, int nColumns);
// Values every 100 ms from the beginning of the piece.
COLUMNS ThinLoudness(const RIP_PIECE& piece, const std::vector<float>& aryValues, int nColumns);
COLUMNS ThinSpeed(const RIP_REPORT& report, long long nFirst, long long nEnd, int nColumns);

// The stretch between low and high, as a closed outline for each run of known columns.
std::string MakeBandPath(const COLUMNS& columns, double fTop, double fBottom, int nUnits);
// A line along the highest values.
std::string MakeLinePath(const COLUMNS& columns, double fTop, double fBottom, int nUnits);

// A place to be marked in a piece.
struct MARK
{
    long long nFirst = 0; // sectors of the disc
    long long nEnd = 0;
    int nPlaces = 0; // that it stands for
    int nStatus = 0; // of the only one

    long long GetSectors() const { return nEnd - nFirst; }
};
// More marks than this are joined with their neighbours.
constexpr size_t MAX_MARKS = 150;
std::vector<MARK> GetMarks(const RIP_PIECE& piece, bool bBad);
} // namespace ReportHtml
