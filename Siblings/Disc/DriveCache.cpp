#include "DriveCache.h"
#include <algorithm>

void DriveCache::Reset(int nSectors, int nSegmentSectors)
{
    m_bSegmented = nSegmentSectors > 0 && nSegmentSectors < nSectors;
    m_nSegmentSectors = static_cast<size_t>(std::max(0, m_bSegmented ? nSegmentSectors : nSectors));
    m_arySegments.assign(m_bSegmented ? static_cast<size_t>(nSectors / nSegmentSectors) : 1, {});
    m_mapEntries.clear();
    m_mapEntries.reserve(m_nSegmentSectors * m_arySegments.size());
    m_nLastSegment = 0;
    m_nUses = 0;
}

void DriveCache::Clear()
{
    m_mapEntries.clear();
    for (SEGMENT& segment : m_arySegments)
        segment = {};
}

unsigned long long DriveCache::Find(int nLBA) const
{
    const auto pFound = m_mapEntries.find(nLBA);
    return pFound != m_mapEntries.end() ? pFound->second.m_nRead : NOT_CACHED;
}

void DriveCache::Touch(int nLBA)
{
    if (const auto pFound = m_mapEntries.find(nLBA); pFound != m_mapEntries.end())
        m_arySegments[pFound->second.m_nSegment].m_nLastUse = ++m_nUses;
}

void DriveCache::Insert(int nLBA, unsigned long long nRead)
{
    if (m_nSegmentSectors == 0)
        return;
    if (const auto pFound = m_mapEntries.find(nLBA); pFound != m_mapEntries.end())
    {
        pFound->second.m_nRead = nRead; // in its old place; it was read again in spite of being here
        return;
    }
    m_nLastSegment = TakeSegment(nLBA);
    SEGMENT& segment = m_arySegments[m_nLastSegment];
    if (segment.m_LBAs.size() >= m_nSegmentSectors)
    {
        m_mapEntries.erase(segment.m_LBAs.front());
        segment.m_LBAs.pop_front();
    }
    segment.m_LBAs.push_back(nLBA);
    segment.m_nLastUse = ++m_nUses;
    m_mapEntries[nLBA] = {nRead, m_nLastSegment};
}

// The segment whose run the sector continues, or the one that gives way to a new run.
size_t DriveCache::TakeSegment(int nLBA)
{
    if (!m_bSegmented)
        return 0;
    const auto continues = [nLBA](const SEGMENT& segment)
    { return !segment.m_LBAs.empty() && segment.m_LBAs.back() + 1 == nLBA; };
    if (continues(m_arySegments[m_nLastSegment]))
        return m_nLastSegment;
    auto pSegment = std::find_if(m_arySegments.begin(), m_arySegments.end(), continues);
    if (pSegment == m_arySegments.end())
    {
        pSegment = std::min_element(m_arySegments.begin(), m_arySegments.end(),
                                    [](const SEGMENT& a, const SEGMENT& b) { return a.m_nLastUse < b.m_nLastUse; });
        for (const int nOld : pSegment->m_LBAs)
            m_mapEntries.erase(nOld);
        *pSegment = {};
    }
    return static_cast<size_t>(pSegment - m_arySegments.begin());
}
