#include "SecureRipLog.h"
#include <algorithm>
#include <exception>

namespace
{
constexpr size_t RESERVED_ENTRIES = 4096; // a rip allocates nothing below this

// One kind of trouble that goes on: unreadable stretches come sector by sector.
bool Continues(const SECURE_RIP_ENTRY& last, const SECURE_RIP_ENTRY& entry)
{
    const bool bStretch =
        entry.nStatus == SECURE_RIP_UNREAD || entry.nStatus == SECURE_RIP_CACHED || entry.nStatus == SECURE_RIP_DIFFERS;
    return bStretch && last.nStatus == entry.nStatus && last.nTrack == entry.nTrack &&
           static_cast<long long>(last.nSector) + last.nSectors == entry.nSector;
}
} // namespace

SecureRipLog::SecureRipLog() { m_aryEntries.reserve(RESERVED_ENTRIES); }

void SecureRipLog::Clear()
{
    const LySingleLock lock(&m_Lock);
    m_aryEntries.clear();
    m_nReReads = 0;
    m_bComplete = true;
}

void SecureRipLog::Add(const SECURE_RIP_ENTRY& entry)
{
    if (entry.nSectors < 1)
        return;
    const LySingleLock lock(&m_Lock);
    if (!m_aryEntries.empty() && Continues(m_aryEntries.back(), entry))
    {
        m_aryEntries.back().nSectors += entry.nSectors;
        return;
    }
    try
    {
        m_aryEntries.push_back(entry);
    }
    catch (const std::exception&)
    {
        m_bComplete = false; // no memory, or as many entries as a list can have
    }
}

void SecureRipLog::AddResult(const SECURE_READ_RESULT& result, int nTrack, int nSector, int nSectors, int nElapsedMs)
{
    Add({nTrack, nSector, nSectors, result.nStatus, result.nRetries, result.nMismatchedSectors, nElapsedMs});
}

void SecureRipLog::SetReReads(int nReReads)
{
    const LySingleLock lock(&m_Lock);
    m_nReReads = nReReads;
}

int SecureRipLog::GetSize() const
{
    const LySingleLock lock(&m_Lock);
    return static_cast<int>(m_aryEntries.size());
}

int SecureRipLog::GetReReads() const
{
    const LySingleLock lock(&m_Lock);
    return m_nReReads;
}

std::vector<SECURE_RIP_ENTRY> SecureRipLog::GetEntries() const
{
    const LySingleLock lock(&m_Lock);
    return m_aryEntries;
}

std::vector<SECURE_RIP_ENTRY> SecureRipLog::GetEntriesOfTrack(int nTrack) const
{
    std::vector<SECURE_RIP_ENTRY> aryEntries = GetEntries();
    std::erase_if(aryEntries, [nTrack](const SECURE_RIP_ENTRY& entry) { return entry.nTrack != nTrack; });
    return aryEntries;
}

int SecureRipLog::CountEntries(int nStatus) const
{
    const LySingleLock lock(&m_Lock);
    return static_cast<int>(std::count_if(m_aryEntries.begin(), m_aryEntries.end(),
                                          [nStatus](const SECURE_RIP_ENTRY& entry)
                                          { return entry.nStatus == nStatus; }));
}

int SecureRipLog::CountBadSectors() const
{
    int nSectors = 0;
    for (const RIP_SECTION& range : GetBadRanges())
        nSectors += range.nSectors;
    return nSectors;
}

bool SecureRipLog::IsBad(int nSector) const
{
    const LySingleLock lock(&m_Lock);
    return !m_bComplete ||
           std::any_of(m_aryEntries.begin(), m_aryEntries.end(),
                       [nSector](const SECURE_RIP_ENTRY& entry) {
                           return entry.IsBad() && nSector >= entry.nSector && nSector - entry.nSector < entry.nSectors;
                       });
}

bool SecureRipLog::GetComplete() const
{
    const LySingleLock lock(&m_Lock);
    return m_bComplete;
}

// Sectors that two entries name belong to the track of the entry that starts first.
std::vector<RIP_SECTION> SecureRipLog::GetBadRanges() const
{
    std::vector<RIP_SECTION> aryRanges;
    for (const SECURE_RIP_ENTRY& entry : GetEntries())
        if (entry.IsBad())
            aryRanges.push_back({entry.nTrack, entry.nSector, entry.nSectors});
    std::sort(aryRanges.begin(), aryRanges.end(),
              [](const RIP_SECTION& a, const RIP_SECTION& b) { return a.nStartSector < b.nStartSector; });
    std::vector<RIP_SECTION> aryApart;
    for (RIP_SECTION range : aryRanges)
    {
        if (!aryApart.empty())
        {
            RIP_SECTION& last = aryApart.back();
            const int nOverlap = std::clamp(last.nStartSector + last.nSectors - range.nStartSector, 0, range.nSectors);
            range.nStartSector += nOverlap;
            range.nSectors -= nOverlap;
            if (last.nTrack == range.nTrack && last.nStartSector + last.nSectors == range.nStartSector)
            {
                last.nSectors += range.nSectors;
                continue;
            }
        }
        if (range.nSectors > 0)
            aryApart.push_back(range);
    }
    return aryApart;
}
