#include "UnreadSectors.h"
#include <algorithm>

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
