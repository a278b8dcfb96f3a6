// The chart of the read speed over the disc.

#include "CDUnits.h"
#include "ReportHtmlParts.h"
#include "ReportHtmlPlot.h"
#include "ReportHtmlSeries.h"
#include "Text.h"
#include <algorithm>
#include <cmath>

namespace ReportHtml
{
namespace
{
constexpr int SPEED_PLOT = 140;
constexpr double LEAST_LABEL_GAP = 0.028; // of the width, between numbers of tracks
constexpr int MOST_LEVELS = 5;

struct STRETCH // of the disc, in sectors
{
    long long nFirst = 0;
    long long nEnd = 0;
    double GetPart(long long nSector) const
    {
        return static_cast<double>(nSector - nFirst) / static_cast<double>(nEnd - nFirst);
    }
};

STRETCH GetStretch(const RIP_REPORT& report)
{
    STRETCH stretch;
    for (const RIP_PIECE& piece : report.aryPieces)
    {
        if (piece.nSectors <= 0)
            continue;
        const long long nEnd = static_cast<long long>(piece.nStart) + piece.nSectors;
        const bool bFirst = stretch.nEnd == stretch.nFirst;
        stretch.nFirst = bFirst ? piece.nStart : std::min<long long>(stretch.nFirst, piece.nStart);
        stretch.nEnd = bFirst ? nEnd : std::max(stretch.nEnd, nEnd);
    }
    return stretch;
}

// The distance of round values, 1, 2 or 5 times a power of ten, of which few reach the top.
double GetLevelStep(double fTop)
{
    double fStep = std::pow(10, std::floor(std::log10(fTop)) - 1);
    for (const double fFactor : {1, 2, 5, 10})
        if (fTop / (fStep * fFactor) <= MOST_LEVELS)
            return fStep * fFactor;
    return fTop;
}

// Where tracks begin: a line down, and above it the number, unless it would touch the last one.
std::string MakeTrackLines(const CHART& chart, const RIP_REPORT& report, const STRETCH& stretch)
{
    std::string strLines;
    double fLast = -1;
    for (const RIP_PIECE& piece : report.aryPieces)
    {
        if (piece.nSectors <= 0)
            continue;
        const double fPart = stretch.GetPart(piece.nStart);
        const std::string strX = FormatPlace(fPart);
        strLines += "<line class=\"track\"" + Attribute("x1", strX) + Attribute("x2", strX) +
                    Attribute("y1", chart.nTop - LANE / 2) + Attribute("y2", chart.nTop + chart.nPlot) + "/>";
        if (piece.nTrack == 0 || (fLast >= 0 && std::fabs(fPart - fLast) < LEAST_LABEL_GAP))
            continue;
        strLines += "<text class=\"no\" dx=\"3\"" + Attribute("x", strX) + Attribute("y", chart.nTop - 4) + ">" +
                    std::to_string(piece.nTrack) + "</text>";
        fLast = fPart;
    }
    return strLines;
}

// Bad places on the floor of the plot, for the eye to compare with the dents in the speed.
std::string MakeBadPlaces(const CHART& chart, const RIP_REPORT& report, const STRETCH& stretch)
{
    std::string strMarks;
    for (const RIP_PIECE& piece : report.aryPieces)
    {
        double fLast = -1;
        for (const MARK& mark : GetMarks(piece, true))
        {
            const double fPart = stretch.GetPart((mark.nFirst + mark.nEnd) / 2);
            if (fLast >= 0 && fPart - fLast < 1.0 / CHART_COLUMNS)
                continue;
            fLast = fPart;
            strMarks += "<use class=\"bad\" href=\"#head-bad\"" + Attribute("x", FormatPlace(fPart)) +
                        Attribute("y", chart.nTop + chart.nPlot + LANE / 2) + "/>";
        }
    }
    return strMarks;
}

// Times of the audio for the time that reading it took; 0 if that is not known.
double GetAverageSpeed(const RIP_REPORT& report)
{
    double fAudio = 0;
    double fReading = 0;
    for (const RIP_PIECE& piece : report.aryPieces)
    {
        if (piece.eState != RIP_PIECE_READ || !(piece.fSeconds > 0) || !std::isfinite(piece.fSeconds))
            continue;
        fAudio += static_cast<double>(piece.nSectors) / LY_CD_SECTORS_PER_SECOND;
        fReading += piece.fSeconds;
    }
    return fReading > 0 ? fAudio / fReading : 0;
}

struct SPEED_RANGE
{
    double fLow = 0;
    double fHigh = 0;
    bool bKnown = false;
};

SPEED_RANGE GetRange(const COLUMNS& columns)
{
    SPEED_RANGE range;
    for (const COLUMN& column : columns)
    {
        if (!column.bKnown)
            continue;
        range.fLow = range.bKnown ? std::min(range.fLow, column.fLow) : column.fLow;
        range.fHigh = std::max(range.fHigh, column.fHigh);
        range.bKnown = true;
    }
    return range;
}

// Without its series.
CHART MakeFrame(const STRETCH& stretch, const SPEED_RANGE& range)
{
    CHART chart;
    chart.strID = "speed";
    chart.strCaption = "Read speed over the disc";
    chart.strTitle = chart.strCaption;
    chart.strDescription = "All readings of a block together: from " + FormatDecimal(range.fLow, 1) + " to " +
                           FormatDecimal(range.fHigh, 1) + " times the speed of playing.";
    chart.strLegend = LegendItem("speed", "<rect y=\"3\" width=\"22\" height=\"8\"/><path d=\"M0 3H22\"/>",
                                 "times the speed of playing; lowest to highest");
    chart.nTop = LANE;
    chart.nPlot = SPEED_PLOT;
    chart.nHeight = LANE + SPEED_PLOT + LANE + AXIS;
    chart.fFirst = static_cast<double>(stretch.nFirst) / LY_CD_SECTORS_PER_SECOND;
    chart.fSeconds = static_cast<double>(stretch.nEnd - stretch.nFirst) / LY_CD_SECTORS_PER_SECOND;
    return chart;
}
} // namespace

std::string MakeSpeedChart(const RIP_REPORT& report)
{
    const STRETCH stretch = GetStretch(report);
    const COLUMNS columns = ThinSpeed(report, stretch.nFirst, stretch.nEnd, CHART_COLUMNS);
    const SPEED_RANGE range = GetRange(columns);
    if (!range.bKnown)
        return "<p class=\"none\">The read speed was not recorded.</p>\n";

    CHART chart = MakeFrame(stretch, range);
    const double fTop = std::max(range.fHigh * 1.05, 1.0);
    const auto height = [&](double f)
    { return LANE + static_cast<int>(std::lround((1 - std::clamp(f / fTop, 0.0, 1.0)) * SPEED_PLOT)); };
    std::string strBody = MakeTimeAxis(chart);
    const double fStep = GetLevelStep(fTop);
    for (int i = 0; i * fStep <= fTop; ++i)
        strBody += MakeLevel(height(i * fStep), Number(i * fStep) + "×");
    strBody += MakeTrackLines(chart, report, stretch) +
               MakeSeries(chart, columns.size(), SPEED_UNITS,
                          MakePath("band", "", MakeBandPath(columns, fTop, 0, SPEED_UNITS), "speed", fTop, 0, "×") +
                              MakePath("line", "", MakeLinePath(columns, fTop, 0, SPEED_UNITS), "", fTop, 0, ""));
    if (const double fAverage = GetAverageSpeed(report); fAverage > 0)
    {
        strBody += MakeLevel(height(fAverage), "", "average");
        chart.strLegend +=
            LegendItem("average", "<path d=\"M0 6H22\"/>", "average, " + FormatDecimal(fAverage, 1) + "×");
    }
    if (report.CountBadSectors() > 0)
        chart.strLegend += LegendItem("bad", "<use href=\"#head-bad\" x=\"11\" y=\"6\"/>", "in doubt");
    return MakeFigure(chart, strBody + MakeBadPlaces(chart, report, stretch));
}
} // namespace ReportHtml
