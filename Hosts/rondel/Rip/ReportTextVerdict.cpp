#include "ReportTextDetails.h"

namespace
{
// A row of either database's table.
template <class VERDICT>
std::string FormatVerdict(const VERDICT& verdict)
{
    std::string strOther = "-";
    if (verdict.m_nOtherConfidence > 0)
        strOther = FormatText("%d at %+d frames", verdict.m_nOtherConfidence, verdict.m_nOtherOffset);
    const char* pWords = "DIFFERS from all submissions";
    if (!verdict.m_bKnown)
        pWords = "not known: it was not ripped whole";
    else if (verdict.IsAccurate())
        pWords = "accurate";
    else if (verdict.m_nOtherConfidence > 0)
        pWords = "alike, but at another offset";
    else if (verdict.m_nSubmissions < 1)
        pWords = "nobody has submitted it";
    return FormatText("%9d  %-22s  %s", verdict.m_nSubmissions, strOther.c_str(), pWords);
}

void AddAccurateRip(TextLines& lines, const ACCURATERIP_VERDICT& verdict)
{
    lines.Field("Pressings",
                FormatText("%d of this disc, %d of other discs", verdict.m_nBlocks, verdict.m_nForeignBlocks));
    lines.Field("Agreements", FormatText("%zu at all offsets", verdict.m_aryMatches.size()));
    lines.Empty();
    lines.Line("  Track  Alike v1  Alike v2  Submitted  At another offset       Verdict");
    for (const ACCURATERIP_TRACK_VERDICT& track : verdict.m_aryTracks)
        lines.Line(FormatText("  %5d  %8d  %8d  ", track.m_nTrack, track.m_nConfidence1, track.m_nConfidence2) +
                   FormatVerdict(track));
}

void AddCTDB(TextLines& lines, const CTDB_VERDICT& verdict)
{
    lines.Field("Entries",
                FormatText("%d of this disc, %d of other discs", verdict.m_nEntries, verdict.m_nForeignEntries));
    if (verdict.m_nParity > 0)
        lines.Field("Parity", FormatText("%d words of it are offered", verdict.m_nParity));
    lines.Empty();
    lines.Line("  Track     Alike  Submitted  At another offset       Verdict");
    lines.Line(FormatText("  disc   %8d  ", verdict.m_Disc.m_nConfidence) + FormatVerdict(verdict.m_Disc));
    for (const CTDB_PART_VERDICT& track : verdict.m_aryTracks)
        lines.Line(FormatText("  %5d  %8d  ", track.m_nTrack, track.m_nConfidence) + FormatVerdict(track));
}

void AddBadSectors(TextLines& lines, const RIP_REPORT& report)
{
    lines.Empty();
    for (const RIP_PIECE& piece : report.aryPieces)
        for (const auto& [nFirst, nEnd] : piece.GetBadStretches())
            lines.Line(FormatText("    %-24s sector %-15s  %s", NamePiece(report, piece).c_str(),
                                  FormatSectors(nFirst, nEnd - nFirst).c_str(),
                                  FormatAddresses(nFirst, nEnd - nFirst).c_str()));
}

const char* DescribeOutcome(const RIP_REPORT& report)
{
    switch (report.eOutcome)
    {
    case RIP_OUTCOME_WHOLE:
        return report.bSecure ? "All is well: every sector was read twice alike, and every file is there."
                              : "All was read, and every file is there. Burst mode compares nothing.";
    case RIP_OUTCOME_DOUBTFUL:
        return "Every file is there, but not all of it can be trusted.";
    case RIP_OUTCOME_STOPPED:
        return "The rip was stopped. What is open above has no files.";
    default:
        return "The rip failed. What is open above has no files.";
    }
}
} // namespace

void AddVerification(TextLines& lines, const RIP_VERIFICATION& verification)
{
    lines.Title("Comparison with a database's answer");
    lines.Field("Answer", verification.strFile);
    lines.Field("Database", verification.strKind);
    for (const std::string& strNote : verification.aryNotes)
        lines.Field("Note", strNote);
    if (verification.accurateRip)
        AddAccurateRip(lines, *verification.accurateRip);
    if (verification.ctdb)
        AddCTDB(lines, *verification.ctdb);
}

void AddConclusion(TextLines& lines, const RIP_REPORT& report)
{
    lines.Title("Conclusion");
    for (const std::string& strNote : report.aryNotes)
        lines.Field("Note", strNote);
    lines.Field("Error", report.strError);
    const int nBad = report.CountBadSectors();
    lines.Line(FormatText("  %s", DescribeOutcome(report)));
    if (nBad == 0)
        return;
    lines.Line(nBad == 1 ? "  One sector is doubtful:" : FormatText("  %d sectors are doubtful:", nBad));
    AddBadSectors(lines, report);
}
