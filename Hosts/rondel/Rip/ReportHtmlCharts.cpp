// The charts of the HTML report: inline SVG. Whatever depends on the width of the page is given in percent of the plot,
// so that texts keep their size; only the series, in a drawing of its own, are stretched. Axis texts stand outside of
// the plot, at negative x.

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
constexpr int WAVE_PLOT = 100;
constexpr int LOUDNESS_PLOT = 120;
constexpr int LOUDNESS_GRID = 10; // LU
constexpr size_t MOST_PLACES_TOLD = 5;

std::string DescribeMark(const RIP_PIECE& piece, const MARK& mark, bool bBad)
{
    std::string str = bBad ? "In doubt: " : "Read again: ";
    str += mark.GetSectors() == 1 ? "sector " + std::to_string(mark.nFirst)
                                  : "sectors " + std::to_string(mark.nFirst) + " to " + std::to_string(mark.nEnd - 1);
    str += ", from " + FormatMSF(static_cast<int>(mark.nFirst - piece.nStart)) + " of the track";
    return str + "; " +
           (mark.nPlaces == 1 ? GetStatusText(mark.nStatus) : FormatCount(mark.nPlaces, "place") + " close together");
}

// One mark: the stretch over the plot, as wide as it is but never invisible, and its head in the lane.
std::string MakeMark(const CHART& chart, const RIP_PIECE& piece, const MARK& mark, bool bBad)
{
    const double fAll = piece.nSectors;
    const double fFirst = static_cast<double>(mark.nFirst - piece.nStart) / fAll;
    const double fWidth = static_cast<double>(mark.GetSectors()) / fAll;
    const int nHead = bBad ? chart.nTop - LANE / 2 : chart.nTop + chart.nPlot + LANE / 2;
    return "<g class=\"" + std::string(bBad ? "bad" : "again") + "\"><title>" +
           Escape(DescribeMark(piece, mark, bBad)) + "</title><rect" + Attribute("x", FormatPlace(fFirst)) +
           Attribute("width", FormatPlace(fWidth)) + Attribute("y", chart.nTop) + Attribute("height", chart.nPlot) +
           "/><use href=\"#" + (bBad ? "head-bad" : "head-again") + "\"" +
           Attribute("x", FormatPlace(fFirst + fWidth / 2)) + Attribute("y", nHead) + "/></g>";
}

std::string MakeMarks(const CHART& chart, const RIP_PIECE& piece)
{
    std::string strMarks;
    for (const bool bBad : {false, true})
        for (const MARK& mark : GetMarks(piece, bBad))
            strMarks += MakeMark(chart, piece, mark, bBad);
    return strMarks;
}

std::string DescribeMarks(const RIP_PIECE& piece, bool bBad)
{
    const std::vector<MARK> aryMarks = GetMarks(piece, bBad);
    if (aryMarks.empty())
        return bBad ? " Nothing is in doubt." : " Nothing was read again.";
    std::string str;
    for (size_t i = 0; i < std::min(aryMarks.size(), MOST_PLACES_TOLD); ++i)
        str += " " + DescribeMark(piece, aryMarks[i], bBad) + ".";
    if (aryMarks.size() > MOST_PLACES_TOLD)
        str += " And " + FormatCount(static_cast<long long>(aryMarks.size() - MOST_PLACES_TOLD), "place") + " more.";
    return str;
}

CHART MakePieceChart(const RIP_REPORT& report, size_t nPiece, const char* pID, const char* pCaption)
{
    const RIP_PIECE& piece = report.aryPieces[nPiece];
    CHART chart;
    chart.strID = pID + std::to_string(nPiece);
    chart.strCaption = pCaption;
    chart.strTitle = std::string(pCaption) + " of " + GetPieceName(report, piece);
    chart.fSeconds = static_cast<double>(piece.nSectors) / LY_CD_SECTORS_PER_SECOND;
    return chart;
}

std::string MakeMarkLegend()
{
    return LegendItem("bad", "<use href=\"#head-bad\" x=\"11\" y=\"6\"/>", "in doubt") +
           LegendItem("again", "<use href=\"#head-again\" x=\"11\" y=\"6\"/>", "read again, good");
}
} // namespace

std::string MakeSymbols()
{
    return "<svg class=\"symbols\" width=\"0\" height=\"0\" aria-hidden=\"true\"><defs>"
           "<path id=\"head-bad\" d=\"M-4-4 4 4M-4 4 4-4\"/><circle id=\"head-again\" r=\"3.5\"/></defs></svg>\n";
}

std::string MakeWaveChart(const RIP_REPORT& report, size_t nPiece)
{
    const RIP_PIECE& piece = report.aryPieces[nPiece];
    if (piece.nSectors <= 0 || (piece.series.aryWave.empty() && piece.aryEntries.empty()))
        return "<p class=\"none\">The waveform was not recorded.</p>\n";
    CHART chart = MakePieceChart(report, nPiece, "wave", "Waveform");
    chart.strLegend =
        LegendItem("wave", "<rect y=\"1\" width=\"22\" height=\"10\"/>", "both channels, dBFS") + MakeMarkLegend();
    chart.strDescription = "Lowest and highest sample of both channels over " + FormatSeconds(chart.fSeconds) + "." +
                           DescribeMarks(piece, true) + DescribeMarks(piece, false);
    chart.nTop = LANE;
    chart.nPlot = WAVE_PLOT;
    chart.nHeight = LANE + WAVE_PLOT + LANE + AXIS;

    const COLUMNS columns = ThinWave(piece, GetColumns(report.aryPieces.size()));
    std::string strBody = MakeTimeAxis(chart);
    static constexpr const char* LEVELS[] = {"0", "−6", "−∞", "−6", "0"}; // dBFS at 1, 1/2 and 0 of full scale
    for (int i = 0; i < 5; ++i)
        strBody += MakeLevel(LANE + i * WAVE_PLOT / 4, LEVELS[i]);
    const std::string strPath = MakeBandPath(columns, 1, -1, WAVE_UNITS);
    strBody += MakeSeries(chart, columns.size(), WAVE_UNITS,
                          MakePath("wave", "w" + std::to_string(nPiece), strPath, "peaks", 1, -1, "dBFS"));
    return MakeFigure(chart, strBody + MakeMarks(chart, piece));
}

std::string MakeThumbnail(const RIP_REPORT& report, size_t nPiece)
{
    const RIP_PIECE& piece = report.aryPieces[nPiece];
    const COLUMNS columns = ThinWave(piece, GetColumns(report.aryPieces.size()));
    if (columns.empty() || !columns.front().bKnown)
        return "";
    std::string strMarks;
    for (const bool bBad : {false, true})
    {
        for (const MARK& mark : GetMarks(piece, bBad))
        {
            const double fPart = (static_cast<double>(mark.nFirst + mark.nEnd) / 2 - piece.nStart) / piece.nSectors;
            const int nX = static_cast<int>(std::lround(fPart * static_cast<double>(columns.size())));
            strMarks += "<path class=\"" + std::string(bBad ? "bad" : "again") + "\"" +
                        Attribute("d", "M" + std::to_string(nX) + (bBad ? " 0V200" : " 150V200")) + "/>";
        }
    }
    return "<svg class=\"thumb\" preserveAspectRatio=\"none\" aria-hidden=\"true\"" +
           Attribute("viewBox", "0 0 " + std::to_string(columns.size()) + " " + std::to_string(WAVE_UNITS)) +
           "><use href=\"#w" + std::to_string(nPiece) + "\"/>" + strMarks + "</svg>";
}

std::string MakeLoudnessChart(const RIP_REPORT& report, size_t nPiece)
{
    const RIP_PIECE& piece = report.aryPieces[nPiece];
    if (piece.nSectors <= 0 || (piece.series.aryMomentary.empty() && piece.series.aryShortTerm.empty()))
        return "<p class=\"none\">The loudness over time was not recorded.</p>\n";
    CHART chart = MakePieceChart(report, nPiece, "loud", "Loudness");
    chart.strLegend = LegendItem("momentary", "<rect y=\"2\" width=\"22\" height=\"10\"/>", "momentary, LUFS") +
                      LegendItem("shortterm", "<path d=\"M0 9 8 4 14 7 22 3\"/>", "short-term");
    chart.nTop = 4;
    chart.nPlot = LOUDNESS_PLOT;
    chart.nHeight = chart.nTop + LOUDNESS_PLOT + AXIS;
    const auto height = [&](double f)
    {
        const double fPart =
            (LOUDNESS_TOP - std::clamp(f, LOUDNESS_BOTTOM, LOUDNESS_TOP)) / (LOUDNESS_TOP - LOUDNESS_BOTTOM);
        return chart.nTop + static_cast<int>(std::lround(fPart * LOUDNESS_PLOT));
    };
    std::string strBody = MakeTimeAxis(chart);
    for (int nLevel = 0; nLevel > LOUDNESS_BOTTOM; nLevel -= LOUDNESS_GRID)
        strBody += MakeLevel(height(nLevel), FormatDecimal(nLevel, 0));

    const int nColumns = GetColumns(report.aryPieces.size());
    COLUMNS momentary = ThinLoudness(piece, piece.series.aryMomentary, nColumns);
    for (COLUMN& column : momentary)
        column.fLow = LOUDNESS_BOTTOM; // an area
    const COLUMNS shortTerm = ThinLoudness(piece, piece.series.aryShortTerm, nColumns);
    strBody +=
        MakeSeries(chart, std::max(momentary.size(), shortTerm.size()), LOUDNESS_UNITS,
                   MakePath("momentary", "", MakeBandPath(momentary, LOUDNESS_TOP, LOUDNESS_BOTTOM, LOUDNESS_UNITS),
                            "momentary", LOUDNESS_TOP, LOUDNESS_BOTTOM, "LUFS") +
                       MakePath("shortterm", "", MakeLinePath(shortTerm, LOUDNESS_TOP, LOUDNESS_BOTTOM, LOUDNESS_UNITS),
                                "short-term", LOUDNESS_TOP, LOUDNESS_BOTTOM, "LUFS"));
    chart.strDescription = "Momentary and short-term loudness over " + FormatSeconds(chart.fSeconds) + ".";
    if (piece.analysis)
    {
        const RIP_LOUDNESS& loudness = piece.analysis->loudness;
        const std::string strIntegrated = FormatDecimal(loudness.fIntegrated, 1) + " LUFS";
        chart.strLegend += LegendItem("integrated", "<path d=\"M0 6H22\"/>", "integrated, " + strIntegrated);
        chart.strDescription += " Integrated " + strIntegrated + ", momentary at most " +
                                FormatDecimal(loudness.fMomentaryMax, 1) + ", short-term at most " +
                                FormatDecimal(loudness.fShortTermMax, 1) + ", range " +
                                FormatDecimal(loudness.fRange, 1) + " LU.";
        if (std::isfinite(loudness.fIntegrated))
            strBody += MakeLevel(height(loudness.fIntegrated), "", "integrated");
    }
    return MakeFigure(chart, strBody);
}
} // namespace ReportHtml
