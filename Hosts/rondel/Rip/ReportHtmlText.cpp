// Texts and numbers of the HTML report.

#include "CRC32.h"
#include "ReportHtmlParts.h"
#include "UTF8.h"
#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{
constexpr const char* REPLACEMENT = "\xEF\xBF\xBD"; // U+FFFD

// What neither HTML nor XML 1.0 (2.2) lets stand in a text, or what would be seen as nothing: controls, and the
// characters that are none.
// A byte that is no UTF-8 comes out of the decoder as a surrogate.
bool IsShowable(char32_t n)
{
    const bool bControl = n < 0x20 || (n >= 0x7F && n < 0xA0);
    return !bControl && !UTF8Details::IsSurrogate(n) && n != 0xFFFE && n != 0xFFFF;
}

const char* GetEntity(char c)
{
    switch (c)
    {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        return nullptr;
    }
}
} // namespace

namespace ReportHtml
{
int GetColumns(size_t nPieces)
{
    const size_t nEach = PAGE_COLUMNS / std::max<size_t>(nPieces, 1);
    return static_cast<int>(std::clamp<size_t>(nEach, LEAST_COLUMNS, CHART_COLUMNS));
}

std::string Escape(std::string_view strText)
{
    std::string strResult;
    strResult.reserve(strText.size());
    for (size_t nBytes = 0; !strText.empty(); strText.remove_prefix(nBytes))
    {
        const char32_t nCharacter = UTF8Details::Decode(strText, nBytes);
        if (!IsShowable(nCharacter))
            strResult += nCharacter == '\n' || nCharacter == '\t' ? " " : REPLACEMENT;
        else if (const char* pEntity = GetEntity(strText[0]))
            strResult += pEntity;
        else
            strResult += strText.substr(0, nBytes);
    }
    return strResult;
}

std::string Isolate(std::string_view strText)
{
    return strText.empty() ? std::string() : "<bdi>" + Escape(strText) + "</bdi>";
}

std::string FormatDecimal(double f, int nDigits)
{
    if (std::isnan(f))
        return UNKNOWN;
    if (std::isinf(f))
        return f < 0 ? "−∞" : "∞";
    char szText[400]; // the largest double has 309 digits ahead of the point
    std::snprintf(szText, sizeof szText, "%.*f", nDigits, std::fabs(f));
    const bool bZero = std::string_view(szText).find_first_not_of("0.") == std::string_view::npos;
    return (f < 0 && !bZero ? "−" : "") + std::string(szText);
}

std::string FormatWhole(long long n)
{
    std::string str = std::to_string(n);
    const size_t nFirstDigit = n < 0 ? 1 : 0;
    for (size_t i = str.size(); i > nFirstDigit + 3;)
        str.insert(i -= 3, ",");
    return str;
}

std::string FormatCount(long long n, const char* pNoun) { return FormatWhole(n) + " " + pNoun + (n == 1 ? "" : "s"); }

std::string FormatSum(uint32_t n) { return n != 0 ? MakeCRC32Text(n) : UNKNOWN; }

std::string FormatPlace(double fPart)
{
    char szText[32];
    std::snprintf(szText, sizeof szText, "%.3f%%", std::isfinite(fPart) ? std::clamp(fPart, 0.0, 1.0) * 100 : 0.0);
    return szText;
}

std::string OrUnknown(const std::string& strHtml) { return strHtml.empty() ? UNKNOWN : strHtml; }

std::string GetPieceName(const RIP_REPORT& report, const RIP_PIECE& piece)
{
    if (piece.nTrack != 0)
        return "Track " + std::to_string(piece.nTrack);
    const auto& aryTracks = report.disc.layout.m_aryTracks;
    const long long nEnd = static_cast<long long>(piece.nStart) + piece.nSectors;
    if (!aryTracks.empty() && nEnd <= aryTracks.front().m_nStart)
        return "Hidden audio";
    return "Sectors " + std::to_string(piece.nStart) + " to " + std::to_string(nEnd - 1);
}

int CountReReadPlaces(const RIP_PIECE& piece)
{
    return static_cast<int>(std::count_if(piece.aryEntries.begin(), piece.aryEntries.end(),
                                          [](const SECURE_RIP_ENTRY& entry) { return !entry.IsBad(); }));
}

const char* GetStatusText(int nStatus)
{
    static const char* const s_aryTexts[SECURE_RIP_STATUSES] = {
        "alike when it was read again",                      // SECURE_RIP_REREAD
        "alike after several readings",                      // SECURE_RIP_MATCHED
        "never twice alike",                                 // SECURE_RIP_LIMIT
        "the drive delivered too little",                    // SECURE_RIP_SHORT
        "the drive delivered nothing",                       // SECURE_RIP_NOTHING
        "refused by the drive; silence stands for it",       // SECURE_RIP_UNREAD
        "both readings may come out of the drive’s cache",   // SECURE_RIP_CACHED
        "the rip was stopped while this was being compared", // SECURE_RIP_UNFINISHED
        "differed in every reading",                         // SECURE_RIP_DIFFERS
    };
    return nStatus >= 0 && nStatus < SECURE_RIP_STATUSES ? s_aryTexts[nStatus] : "unknown to this program";
}
} // namespace ReportHtml
