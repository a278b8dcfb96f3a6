// The text form of SecureRipLog:
//
//   secure-rip-log 1
//   re-reads <tab> n
//   complete <tab> 1
//   track <tab> sector <tab> sectors <tab> status <tab> retries <tab> mismatched <tab> elapsed-ms
//   1 <tab> 12345 <tab> 27 <tab> 2 <tab> 16 <tab> 3 <tab> 81230
//   ...
//
// Numbers are decimal. Every line ends with a line feed.

#include "RipSections.h"
#include "SecureRipLog.h"
#include <charconv>
#include <string_view>
#include <utility>

namespace
{
constexpr std::string_view TITLE = "secure-rip-log 1";
constexpr std::string_view RE_READS = "re-reads";
constexpr std::string_view COMPLETE = "complete";
constexpr std::string_view COLUMNS = "track\tsector\tsectors\tstatus\tretries\tmismatched\telapsed-ms";
constexpr int FIELDS = 7;
constexpr int MAX_RETRIES = 16;

std::string_view TakeLine(std::string_view& text)
{
    const size_t nEnd = text.find('\n');
    const std::string_view line = text.substr(0, nEnd);
    text.remove_prefix(nEnd == std::string_view::npos ? text.size() : nEnd + 1);
    return line;
}

// A number of 0 or more, and the tab behind it if another one follows.
bool TakeNumber(std::string_view& line, bool bLast, int& nValue)
{
    const auto [pEnd, error] = std::from_chars(line.data(), line.data() + line.size(), nValue);
    if (error != std::errc() || nValue < 0)
        return false;
    line.remove_prefix(static_cast<size_t>(pEnd - line.data()));
    if (bLast)
        return line.empty();
    if (line.empty() || line.front() != '\t')
        return false;
    line.remove_prefix(1);
    return true;
}

bool TakeNamed(std::string_view& text, std::string_view name, int& nValue)
{
    std::string_view line = TakeLine(text);
    if (line.substr(0, name.size()) != name || line.size() <= name.size() || line[name.size()] != '\t')
        return false;
    line.remove_prefix(name.size() + 1);
    return TakeNumber(line, true, nValue);
}

bool TakeEntry(std::string_view line, SECURE_RIP_ENTRY& entry)
{
    int* const aryFields[FIELDS] = {&entry.nTrack,    &entry.nSector,  &entry.nSectors,
                                    &entry.nStatus,   &entry.nRetries, &entry.nMismatchedSectors,
                                    &entry.nElapsedMs};
    for (int i = 0; i < FIELDS; ++i)
        if (!TakeNumber(line, i == FIELDS - 1, *aryFields[i]))
            return false;
    return entry.nTrack <= LY_CD_MAX_TRACKS && entry.nSectors >= 1 && entry.nSectors <= RIP_MAX_SECTORS &&
           entry.nSector <= RIP_MAX_SECTORS - entry.nSectors && entry.nStatus < SECURE_RIP_STATUSES &&
           entry.nRetries <= MAX_RETRIES && entry.nMismatchedSectors <= RIP_MAX_SECTORS;
}
} // namespace

std::string SecureRipLog::GetText() const
{
    const LySingleLock lock(&m_Lock);
    std::string strText(TITLE);
    strText += '\n';
    strText.append(RE_READS) += '\t' + std::to_string(m_nReReads) + '\n';
    strText.append(COMPLETE) += '\t' + std::to_string(m_bComplete ? 1 : 0) + '\n';
    strText.append(COLUMNS) += '\n';
    for (const SECURE_RIP_ENTRY& entry : m_aryEntries)
    {
        strText += std::to_string(entry.nTrack);
        for (const int nValue :
             {entry.nSector, entry.nSectors, entry.nStatus, entry.nRetries, entry.nMismatchedSectors, entry.nElapsedMs})
            strText += '\t' + std::to_string(nValue);
        strText += '\n';
    }
    return strText;
}

bool SecureRipLog::SetText(const std::string& strText)
{
    std::string_view text = strText;
    int nReReads = 0;
    int nComplete = 0;
    if (TakeLine(text) != TITLE || !TakeNamed(text, RE_READS, nReReads) || !TakeNamed(text, COMPLETE, nComplete) ||
        nComplete > 1 || TakeLine(text) != COLUMNS)
        return false;
    std::vector<SECURE_RIP_ENTRY> aryEntries;
    while (!text.empty())
    {
        SECURE_RIP_ENTRY entry{};
        if (!TakeEntry(TakeLine(text), entry))
            return false;
        aryEntries.push_back(entry);
    }
    const LySingleLock lock(&m_Lock);
    m_aryEntries = std::move(aryEntries);
    m_nReReads = nReReads;
    m_bComplete = nComplete != 0;
    return true;
}
