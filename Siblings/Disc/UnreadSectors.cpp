#include "UnreadSectors.h"
#include "CDUnits.h"
#include "Evidence.h"
#include "SenseData.h"
#include <algorithm>
#include <cstdio>

namespace
{
std::string GetPlace(long long nLBA)
{
    const long long nSector = std::max(0LL, nLBA + LY_CD_MSF_OFFSET);
    const long long nSeconds = nSector / LY_CD_SECTORS_PER_SECOND;
    char szPlace[48];
    std::snprintf(szPlace, sizeof szPlace, "%02lld:%02lld.%02lld", nSeconds / 60, nSeconds % 60,
                  nSector % LY_CD_SECTORS_PER_SECOND);
    return szPlace;
}
} // namespace

void UnreadSectors::Add(int nLBA, int nSectors)
{
    if (nSectors <= 0)
        return;
    long long nStart = nLBA;
    long long nEnd = nStart + nSectors;
    auto pRange = m_mapRanges.upper_bound(nStart);
    if (pRange != m_mapRanges.begin() && std::prev(pRange)->second >= nStart)
        --pRange;
    while (pRange != m_mapRanges.end() && pRange->first <= nEnd)
    {
        nStart = std::min(nStart, pRange->first);
        nEnd = std::max(nEnd, pRange->second);
        pRange = m_mapRanges.erase(pRange);
    }
    if (m_mapRanges.size() < MAX_RANGES)
        m_mapRanges[nStart] = nEnd;
}

void UnreadSectors::Remove(int nLBA, int nSectors)
{
    if (nSectors <= 0 || m_mapRanges.empty())
        return;
    const long long nStart = nLBA;
    const long long nEnd = nStart + nSectors;
    auto pRange = m_mapRanges.upper_bound(nStart);
    if (pRange != m_mapRanges.begin() && std::prev(pRange)->second > nStart)
        --pRange;
    while (pRange != m_mapRanges.end() && pRange->first < nEnd)
    {
        const auto [nRangeStart, nRangeEnd] = *pRange;
        pRange = m_mapRanges.erase(pRange);
        if (nRangeStart < nStart)
            m_mapRanges[nRangeStart] = nStart;
        if (nRangeEnd > nEnd)
            m_mapRanges[nEnd] = nRangeEnd;
    }
}

long long UnreadSectors::GetCount() const
{
    long long nCount = 0;
    for (const auto& [nStart, nEnd] : m_mapRanges)
        nCount += nEnd - nStart;
    return nCount;
}

long long UnreadSectors::GetFirst() const { return m_mapRanges.empty() ? 0 : m_mapRanges.begin()->first; }

void UnreadSectors::Clear()
{
    m_mapRanges.clear();
    m_LastSense = {};
}

void UnreadSectors::Note(const DRIVE_COMMAND& command, bool bGood, const DRIVE_SENSE& sense)
{
    // A read that was put off or was wrong in itself says nothing of the disc.
    if (!bGood && (sense.m_nKey == SENSE_UNIT_ATTENTION || sense.m_nKey == SENSE_ILLEGAL_REQUEST))
        return;
    const SECTOR_RANGE range = GetSectorRange(command.m_pCDB, command.m_nCDBBytes);
    if (range.m_nSectors == 0)
        return;
    if (bGood)
    {
        Remove(range.m_nLBA, range.m_nSectors);
        return;
    }
    Add(range.m_nLBA, range.m_nSectors);
    m_LastSense = sense;
}

std::string UnreadSectors::GetText(const std::string& strDrive) const
{
    const long long nSectors = GetCount();
    if (nSectors == 0)
        return {};
    return strDrive + ": " + std::to_string(nSectors) + (nSectors == 1 ? " sector" : " sectors") + " from " +
           GetPlace(GetFirst()) + " on could not be read (" + GetCodesText(m_LastSense) +
           ") and are silence; clean the disc, or try another drive.";
}
