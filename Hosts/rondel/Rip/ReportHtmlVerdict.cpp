// The verdict of the HTML report, and the figures beside it.

#include "CDUnits.h"
#include "ReportHtmlParts.h"
#include "Text.h"
#include <algorithm>

namespace ReportHtml
{
namespace
{
struct VERDICT
{
    const char* pClass = "";
    const char* pSign = ""; // a path in a square of 24
    std::string strHeadline;
    std::vector<std::string> arySentences; // HTML
};

constexpr const char* SIGN_GOOD = "M5 12.5 10 17.5 19 7";
constexpr const char* SIGN_DOUBT = "M12 4V14M12 18.5V19.5";
constexpr const char* SIGN_STOPPED = "M8 6V18M16 6V18";
constexpr const char* SIGN_FAILED = "M6 6 18 18M6 18 18 6";

int CountWhole(const RIP_REPORT& report)
{
    return static_cast<int>(std::count_if(report.aryPieces.begin(), report.aryPieces.end(),
                                          [](const RIP_PIECE& piece) { return piece.IsWhole(); }));
}

std::string DescribeProgress(const RIP_REPORT& report)
{
    const int nWhole = CountWhole(report);
    const bool bTracks = std::all_of(report.aryPieces.begin(), report.aryPieces.end(),
                                     [](const RIP_PIECE& piece) { return piece.nTrack != 0; });
    return std::to_string(nWhole) + " of " +
           FormatCount(static_cast<long long>(report.aryPieces.size()), bTracks ? "track" : "piece") +
           (nWhole == 1 ? " is whole." : " are whole.");
}

// The pieces in which something is in doubt, with links to them.
std::string DescribeDoubt(const RIP_REPORT& report)
{
    const int nBad = report.CountBadSectors();
    std::string strPieces;
    for (size_t i = 0; i < report.aryPieces.size(); ++i)
    {
        const int nHere = report.aryPieces[i].CountBadSectors();
        if (nHere > 0)
            strPieces += (strPieces.empty() ? "" : ", ") + std::string("<a href=\"#t") + std::to_string(i) + "\">" +
                         GetPieceName(report, report.aryPieces[i]) + "</a> (" + FormatWhole(nHere) + ")";
    }
    return FormatCount(nBad, "sector") + (nBad == 1 ? " is" : " are") + " in doubt: " + strPieces + ".";
}

std::string DescribeMode(const RIP_REPORT& report, bool bDoubt)
{
    if (!report.bSecure)
        return bDoubt
                   ? "Burst mode reads once and compares nothing: of the other sectors is only known that the drive "
                     "delivered them."
                   : "Burst mode reads once and compares nothing: that the drive delivered every sector is all that is "
                     "known.";
    return bDoubt ? "All other sectors were read twice alike." : "Every sector was read twice alike.";
}

VERDICT GetVerdict(const RIP_REPORT& report)
{
    const bool bDoubt = report.CountBadSectors() > 0;
    VERDICT verdict;
    switch (report.eOutcome)
    {
    case RIP_OUTCOME_WHOLE:
    case RIP_OUTCOME_DOUBTFUL:
        if (bDoubt || report.eOutcome == RIP_OUTCOME_DOUBTFUL)
            verdict = {"doubt", SIGN_DOUBT, "Whole, but in doubt", {}};
        else
            verdict = {"good", SIGN_GOOD, report.bSecure ? "Whole" : "Whole, but not compared", {}};
        if (bDoubt)
            verdict.arySentences.push_back(DescribeDoubt(report));
        if (bDoubt || report.eOutcome == RIP_OUTCOME_WHOLE)
            verdict.arySentences.push_back(DescribeMode(report, bDoubt));
        return verdict;
    case RIP_OUTCOME_STOPPED:
        verdict = {"stopped", SIGN_STOPPED, "Stopped", {DescribeProgress(report)}};
        break;
    default:
        verdict = {"failed", SIGN_FAILED, "Failed", {}};
        if (!report.strError.empty())
            verdict.arySentences.push_back(Isolate(report.strError));
        verdict.arySentences.push_back(DescribeProgress(report));
        break;
    }
    if (bDoubt)
        verdict.arySentences.push_back(DescribeDoubt(report));
    return verdict;
}

// What the database thinks of it, if all tracks agree with it.
std::string DescribeAccurateRip(const RIP_REPORT& report)
{
    for (const RIP_VERIFICATION& verification : report.aryVerifications)
    {
        if (!verification.accurateRip)
            continue;
        const auto& aryTracks = verification.accurateRip->m_aryTracks;
        const auto nAccurate = std::count_if(aryTracks.begin(), aryTracks.end(),
                                             [](const ACCURATERIP_TRACK_VERDICT& track) { return track.IsAccurate(); });
        return "AccurateRip: " + FormatWhole(nAccurate) + " of " +
               FormatCount(static_cast<long long>(aryTracks.size()), "track") + " agree with the rips of others.";
    }
    return "";
}

std::string Figure(const char* pName, const std::string& strValue, const char* pUnit)
{
    return std::string("<div><dt>") + pName + "</dt><dd>" + strValue +
           (*pUnit != '\0' && strValue != UNKNOWN ? std::string(" <small>") + pUnit + "</small>" : "") + "</dd></div>";
}

std::string MakeFigures(const RIP_REPORT& report)
{
    long long nSectors = 0;
    for (const RIP_PIECE& piece : report.aryPieces)
        nSectors += std::max(piece.nSectors, 0);
    const auto loudness = [&](double RIP_LOUDNESS::*pField, int nDigits)
    { return report.GetLoudness() ? FormatDecimal((*report.GetLoudness()).*pField, nDigits) : UNKNOWN; };
    return "<dl class=\"figures\">" +
           Figure("Length", FormatSeconds(static_cast<double>(nSectors) / LY_CD_SECTORS_PER_SECOND), "min") +
           Figure("In doubt", FormatWhole(report.CountBadSectors()), "sectors") +
           Figure("Re-reads", FormatWhole(report.nReReads), "") +
           Figure("Loudness", loudness(&RIP_LOUDNESS::fIntegrated, 1), "LUFS") +
           Figure("True peak", loudness(&RIP_LOUDNESS::fTruePeak, 1), "dBTP") +
           Figure("Range", loudness(&RIP_LOUDNESS::fRange, 1), "LU") +
           Figure("Dynamics", report.GetDR() ? "DR" + std::to_string(*report.GetDR()) : UNKNOWN, "") + "</dl>";
}
} // namespace

std::string MakeVerdict(const RIP_REPORT& report)
{
    VERDICT verdict = GetVerdict(report);
    if (const std::string str = DescribeAccurateRip(report); !str.empty())
        verdict.arySentences.push_back(str);
    std::string strSentences;
    for (const std::string& str : verdict.arySentences)
        strSentences += "<p>" + str + "</p>";
    return "<section class=\"verdict " + std::string(verdict.pClass) +
           "\" aria-labelledby=\"verdict-h\"><svg class=\"sign\" width=\"44\" height=\"44\" viewBox=\"0 0 24 24\" "
           "aria-hidden=\"true\"><path d=\"" +
           verdict.pSign + "\"/></svg><div><h2 id=\"verdict-h\">" + verdict.strHeadline + "</h2>" + strSentences +
           "</div></section>\n" + MakeFigures(report) + "\n";
}
} // namespace ReportHtml
