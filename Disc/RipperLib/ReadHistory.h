// ReadHistory: which sectors a drive's read cache may still hold, by what was read from the drive since.
//
// A cache of C sectors forgets a sector once C others have come from the disc behind it, whether the oldest leaves it
// first or the one unused for longest. So a sector is surely gone if C sectors were read since it was, none of which
// the cache served.
//
// Limits:  a cache in segments, which keeps several runs apart, forgets later than that. What a drive reads ahead by
//          itself makes it forget earlier.
// Memory:  one number for each sector of the disc, allocated by Reset.
// Threads: one at a time.

#pragma once

#include <vector>

class ReadHistory
{
public:
    // Forgets everything. Without a cache nothing is ever held. False if there is no memory.
    bool Reset(int nCacheSectors, int nDiscSectors);

    int GetCacheSectors() const { return m_nCacheSectors; }
    bool MayHold(int nSector, int nCount) const; // one of them at least
    void OnRead(int nSector, int nCount);        // these came from the disc, in this order

private:
    int m_nCacheSectors = 0;
    unsigned int m_nRead = 0;                // sectors so far; wraps after a thousand years of reading
    std::vector<unsigned int> m_aryLastRead; // by sector: the count right behind its last read; 0 for never
};
