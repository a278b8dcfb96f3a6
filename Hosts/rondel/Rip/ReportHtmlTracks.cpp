// The tables of tracks and the section of each.

#include "CDUnits.h"
#include "ReportHtmlParts.h"
#include "Text.h"
#include <algorithm>

namespace ReportHtml
{
namespace
{
// A table of places ends after so many rows; with many pieces sooner, so that the page stays small. The log has all.
constexpr size_t PAGE_ROWS = 4000;
constexpr size_t LEAST_ROWS = 20;
constexpr size_t MOST_ROWS = 200;
constexpr size_t ROWS_SHOWN_AT_ONCE = 12; // more wait behind their heading

std::string Column(const char* pText, const char* pClass = "n")
{
    return std::string("<th scope=\"col\" class=\"") + pClass + "\">" + pText + "</th>";
}

std::string Cell(const std::string& strHtml, const char* pClass = "n")
{
    return std::string("<td class=\"") + pClass + "\">" + strHtml + "</td>";
}

std::string BeginTable(const std::string& strName, const char* pClass)
{
    return "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"" + strName +
           ", table\"><table class=\"" + pClass + "\"><caption class=\"hidden\">" + strName + "</caption><thead><tr>";
}
constexpr const char* END_TABLE = "</tbody></table></div>\n";

std::string HeadSign(const char* pClass, const char* pHead)
{
    return "<svg class=\"key\" width=\"12\" height=\"12\" aria-hidden=\"true\"><g class=\"" + std::string(pClass) +
           "\"><use href=\"#" + pHead + "\" x=\"6\" y=\"6\"/></g></svg>";
}

// A count with the head of its marks, so that it stands out without colour, too.
std::string MarkedCount(long long n, const char* pClass, const char* pHead)
{
    return n == 0 ? "0" : HeadSign(pClass, pHead) + FormatWhole(n);
}

struct STATE
{
    const char* pClass;
    std::string strText;
};

STATE GetState(const RIP_PIECE& piece)
{
    const int nBad = piece.CountBadSectors();
    const bool bNoFile = std::any_of(piece.aryFiles.begin(), piece.aryFiles.end(),
                                     [](const RIP_FILE& file) { return !file.strError.empty(); });
    if (!piece.IsWhole())
        return {"open", "not whole"};
    if (nBad > 0)
        return {"doubt", "in doubt"};
    if (bNoFile)
        return {"failed", "file missing"};
    return {"good", piece.eState == RIP_PIECE_TAKEN ? "whole, from earlier" : "whole"};
}

std::string GetNumber(const RIP_PIECE& piece) { return piece.nTrack != 0 ? std::to_string(piece.nTrack) : UNKNOWN; }

// The number, as a link to the piece's section.
std::string MakeRowHead(const RIP_REPORT& report, size_t nPiece)
{
    const RIP_PIECE& piece = report.aryPieces[nPiece];
    return "<tr><th scope=\"row\"><a href=\"#t" + std::to_string(nPiece) + "\" aria-label=\"" +
           Escape(GetPieceName(report, piece)) + "\">" + GetNumber(piece) + "</a></th>";
}

std::string MakeTrackRow(const RIP_REPORT& report, size_t nPiece)
{
    const RIP_PIECE& piece = report.aryPieces[nPiece];
    const auto loudness = [&](double RIP_LOUDNESS::*pField)
    { return piece.analysis ? FormatDecimal(piece.analysis->loudness.*pField, 1) : UNKNOWN; };
    const std::string strDR = piece.analysis && piece.analysis->nDR ? std::to_string(*piece.analysis->nDR) : UNKNOWN;
    const std::string strBPM =
        piece.analysis && piece.analysis->fBPM ? FormatDecimal(*piece.analysis->fBPM, 0) : UNKNOWN;
    const STATE state = GetState(piece);
    const std::string strTitle = piece.strTitle.empty() ? Escape(GetPieceName(report, piece)) : Isolate(piece.strTitle);
    return MakeRowHead(report, nPiece) + Cell(strTitle, "title") + Cell(MakeThumbnail(report, nPiece), "picture") +
           Cell(FormatMSF(std::max(piece.nSectors, 0))) +
           Cell("<span class=\"state " + std::string(state.pClass) + "\">" + state.strText + "</span>", "w") +
           Cell(MarkedCount(piece.CountBadSectors(), "bad", "head-bad")) +
           Cell(MarkedCount(CountReReadPlaces(piece), "again", "head-again")) +
           Cell(loudness(&RIP_LOUDNESS::fIntegrated)) + Cell(loudness(&RIP_LOUDNESS::fRange)) +
           Cell(loudness(&RIP_LOUDNESS::fTruePeak)) + Cell(strDR) + Cell(strBPM) + "</tr>\n";
}

std::string MakePlaceRow(const RIP_PIECE& piece, const SECURE_RIP_ENTRY& entry)
{
    const long long nLast = static_cast<long long>(entry.nSector) + entry.nSectors - 1;
    const int nTime = entry.nSector > piece.nStart && piece.nStart >= 0 ? entry.nSector - piece.nStart : 0;
    const std::string strSectors = entry.nSectors == 1 ? std::to_string(entry.nSector)
                                                       : std::to_string(entry.nSector) + " to " + std::to_string(nLast);
    const std::string strKind =
        entry.IsBad() ? HeadSign("bad", "head-bad") + "in doubt" : HeadSign("again", "head-again") + "read again";
    return "<tr><th scope=\"row\">" + FormatMSF(nTime) + "</th>" + Cell(strKind, "w") + Cell(strSectors) +
           Cell(Escape(GetStatusText(entry.nStatus)), "w") + Cell(FormatWhole(entry.nRetries)) +
           Cell(FormatSeconds(entry.nElapsedMs / 1000.0)) + "</tr>\n";
}

// All places by sector. If there are too many, those in doubt first.
std::string MakePlaces(const RIP_REPORT& report, const RIP_PIECE& piece)
{
    if (piece.aryEntries.empty())
        return "";
    const size_t nMost = std::clamp(PAGE_ROWS / report.aryPieces.size(), LEAST_ROWS, MOST_ROWS);
    std::vector<SECURE_RIP_ENTRY> aryEntries = piece.aryEntries;
    const bool bCut = aryEntries.size() > nMost;
    std::stable_sort(aryEntries.begin(), aryEntries.end(),
                     [&](const SECURE_RIP_ENTRY& a, const SECURE_RIP_ENTRY& b)
                     { return bCut && a.IsBad() != b.IsBad() ? a.IsBad() : a.nSector < b.nSector; });
    std::string strTable = BeginTable("Places of " + Escape(GetPieceName(report, piece)), "places") +
                           Column("Time in the track", "") + Column("Mark", "w") + Column("Sectors") +
                           Column("Finding", "w") + Column("Failed comparisons") + Column("After") +
                           "</tr></thead><tbody>\n";
    for (size_t i = 0; i < std::min(aryEntries.size(), nMost); ++i)
        strTable += MakePlaceRow(piece, aryEntries[i]);
    strTable += END_TABLE;
    if (bCut)
        strTable += "<p class=\"none\">" + FormatCount(static_cast<long long>(aryEntries.size() - nMost), "place") +
                    " more stand in the log.</p>\n";
    return "<details class=\"list\"" + std::string(aryEntries.size() <= ROWS_SHOWN_AT_ONCE ? " open=\"open\"" : "") +
           "><summary>" + FormatCount(static_cast<long long>(aryEntries.size()), "place") +
           " in doubt or read again</summary>" + strTable + "</details>\n";
}

std::string Fact(const char* pName, const std::string& strHtml)
{
    return strHtml.empty() ? "" : std::string("<div><dt>") + pName + "</dt><dd>" + strHtml + "</dd></div>";
}

std::string MakeAnalysisFacts(const RIP_ANALYSIS& analysis)
{
    const RIP_LOUDNESS& loudness = analysis.loudness;
    std::string strChannels;
    for (const double f : analysis.aryChannelDR)
        strChannels += (strChannels.empty() ? "" : " / ") + FormatDecimal(f, 1);
    std::string strFacts = Fact("Integrated", FormatDecimal(loudness.fIntegrated, 1) + " LUFS") +
                           Fact("Momentary, highest", FormatDecimal(loudness.fMomentaryMax, 1) + " LUFS") +
                           Fact("Short-term, highest", FormatDecimal(loudness.fShortTermMax, 1) + " LUFS") +
                           Fact("Range", FormatDecimal(loudness.fRange, 1) + " LU") +
                           Fact("Sample peak", FormatDecimal(loudness.fSamplePeak, 2) + " dBFS") +
                           Fact("True peak", FormatDecimal(loudness.fTruePeak, 2) + " dBTP");
    if (loudness.fReplayGain)
        strFacts += Fact("ReplayGain", FormatDecimal(*loudness.fReplayGain, 2) + " dB");
    if (analysis.nDR)
        strFacts += Fact("Dynamics", "DR" + std::to_string(*analysis.nDR) +
                                         (strChannels.empty() ? "" : " <small>(" + strChannels + " dB)</small>"));
    if (analysis.fBPM)
        strFacts +=
            Fact("Tempo", FormatDecimal(*analysis.fBPM, 1) + " BPM <small>(" +
                              (analysis.fOctaveBPM ? "or " + FormatDecimal(*analysis.fOctaveBPM, 1) + ", " : "") +
                              FormatDecimal(analysis.fBPMConfidence * 100, 0) + " % sure)</small>");
    return strFacts;
}

std::string MakePieceFacts(const RIP_PIECE& piece)
{
    const long long nLast = static_cast<long long>(piece.nStart) + piece.nSectors - 1;
    std::string strFacts =
        Fact("Performer", Isolate(piece.strPerformer)) + Fact("ISRC", Isolate(piece.strISRC)) +
        Fact("Sectors", piece.nSectors > 0 ? std::to_string(piece.nStart) + " to " + std::to_string(nLast) : "none") +
        Fact("Pre-emphasis", piece.bPreEmphasis ? "yes" : "");
    if (piece.eState == RIP_PIECE_READ && piece.fSeconds > 0)
        strFacts += Fact("Read in", FormatSeconds(piece.fSeconds) + " min <small>(" +
                                        FormatDecimal(piece.nSectors / piece.fSeconds / LY_CD_SECTORS_PER_SECOND, 1) +
                                        "×)</small>");
    return "<dl class=\"inline\">" + strFacts + (piece.analysis ? MakeAnalysisFacts(*piece.analysis) : "") + "</dl>\n";
}
} // namespace

std::string MakeTrackTable(const RIP_REPORT& report)
{
    std::string strTable = BeginTable("Tracks", "tracks") + Column("No.", "") + Column("Title", "title") +
                           Column("Waveform", "w") + Column("Length") + Column("State", "w") +
                           Column("In doubt<br/><small>sectors</small>") +
                           Column("Read again<br/><small>places</small>") + Column("Loudness<br/><small>LUFS</small>") +
                           Column("Range<br/><small>LU</small>") + Column("True peak<br/><small>dBTP</small>") +
                           Column("DR") + Column("BPM") + "</tr></thead><tbody>\n";
    for (size_t i = 0; i < report.aryPieces.size(); ++i)
        strTable += MakeTrackRow(report, i);
    return strTable + END_TABLE;
}

std::string MakeSumTable(const RIP_REPORT& report)
{
    std::string strTable = BeginTable("Check sums", "sums") + Column("No.", "") + Column("CRC-32", "sum") +
                           Column("without null samples", "sum") + Column("AccurateRip v1", "sum") +
                           Column("AccurateRip v2", "sum") + Column("Sector 450", "sum") + Column("CTDB", "sum") +
                           "</tr></thead><tbody>\n";
    for (size_t i = 0; i < report.aryPieces.size(); ++i)
    {
        const TRACK_CHECKSUMS& sums = report.aryPieces[i].sums;
        strTable += MakeRowHead(report, i);
        for (const uint32_t nSum : {sums.m_nCRC32, sums.m_nCRC32WithoutNull, sums.m_nAccurateRip1, sums.m_nAccurateRip2,
                                    sums.m_nFrame450, sums.m_nCTDB})
            strTable += Cell(FormatSum(nSum), "sum");
        strTable += "</tr>\n";
    }
    return strTable + END_TABLE + "<p>CTDB sum of the whole disc: <code>" + FormatSum(report.nDiscCTDB) +
           "</code></p>\n";
}

std::string MakeTrackDetails(const RIP_REPORT& report, size_t nPiece)
{
    const RIP_PIECE& piece = report.aryPieces[nPiece];
    const std::string strName = GetPieceName(report, piece);
    const STATE state = GetState(piece);
    return "<details class=\"track\" open=\"open\" id=\"t" + std::to_string(nPiece) + "\"><summary><h3>" +
           Escape(strName) +
           (piece.strTitle.empty() ? "" : " <span class=\"name\">" + Isolate(piece.strTitle) + "</span>") +
           "</h3><span class=\"length\">" + FormatMSF(std::max(piece.nSectors, 0)) + "</span><span class=\"state " +
           state.pClass + "\">" + state.strText + "</span></summary>\n<div class=\"body\">" +
           MakeWaveChart(report, nPiece) + MakeLoudnessChart(report, nPiece) + MakePieceFacts(piece) +
           MakePlaces(report, piece) + MakeFiles(piece.aryFiles, "Files of " + strName) + "</div></details>\n";
}
} // namespace ReportHtml
