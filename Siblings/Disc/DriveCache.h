// DriveCache: which sectors a drive in software holds in its cache, and which read brought each of them there.
//
// Shape:   a window that the oldest sectors leave first: a range that fits stays, a larger one pushes itself out. With
//          segments, each holds one run of consecutive sectors, and the one unused for longest gives way to a new run.
// Threads: one at a time.

#pragma once

#include <cstddef>
#include <deque>
#include <unordered_map>
#include <vector>

class DriveCache
{
public:
    static constexpr unsigned long long NOT_CACHED = 0;

    // Forgets everything. Without a size nothing is ever held; nSegmentSectors 0 makes one window of the whole.
    void Reset(int nSectors, int nSegmentSectors);
    void Clear();

    // The number of the read that fetched the sector from the disc, 1 and up; or NOT_CACHED.
    unsigned long long Find(int nLBA) const;
    // A sector that was read from the disc by that read.
    void Insert(int nLBA, unsigned long long nRead);
    // A sector that served a read: its segment is in use.
    void Touch(int nLBA);

private:
    struct SEGMENT
    {
        std::deque<int> m_LBAs; // oldest first
        unsigned long long m_nLastUse = 0;
    };
    struct ENTRY
    {
        unsigned long long m_nRead;
        size_t m_nSegment;
    };

    size_t TakeSegment(int nLBA);

    bool m_bSegmented = false;
    size_t m_nSegmentSectors = 0;
    unsigned long long m_nUses = 0;
    size_t m_nLastSegment = 0; // where the last sector went: the next one mostly goes there too
    std::vector<SEGMENT> m_arySegments;
    std::unordered_map<int, ENTRY> m_mapEntries;
};
