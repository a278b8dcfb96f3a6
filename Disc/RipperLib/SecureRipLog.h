// SecureRipLog: what a rip could not read at once, and what of it is to be doubted.
//
// Shape:   entries in the order in which they happened, each a stretch of sectors with a status.
// Units:   sectors of LY_CD_SECTOR_BYTES at logical block addresses; milliseconds since the rip began.
// Rule:    nothing is called good that was not read twice alike. A status from 2 on makes bad sectors of all that the
//          entry names, whatever the bytes look like.
// Errors:  a log that cannot grow any more calls every sector bad. A text that is no log is refused, and the log stays.
// Threads: any; one lock. The rip's thread adds, whoever shows the rip reads.

#pragma once

#include "CDAC.h"
#include "LyLock.h"
#include <string>
#include <vector>

// The first five are SECURE_READ_STATUS, what the copy engine reports of a block. The others are found by the job.
enum SECURE_RIP_STATUS : int
{
    SECURE_RIP_REREAD = SECURE_READ_PLAIN,    // one mismatch, and alike in the next comparison; good
    SECURE_RIP_MATCHED = SECURE_READ_MATCHED, // alike after 2 to 15 mismatches; good
    SECURE_RIP_LIMIT = SECURE_READ_LIMIT,     // never alike, or too late
    SECURE_RIP_SHORT = SECURE_READ_SHORT,     //
    SECURE_RIP_NOTHING = SECURE_READ_NOTHING, //
    SECURE_RIP_UNREAD = 5,                    // the drive refused these sectors; silence stands for them
    SECURE_RIP_CACHED = 6,                    // both reads may be one: the drive's cache could not be emptied
    SECURE_RIP_UNFINISHED = 7,                // the rip was stopped while they were being compared
    SECURE_RIP_DIFFERS = 8,                   // within a block of SECURE_RIP_LIMIT: these differed to the last
    SECURE_RIP_STATUSES = 9                   // how many there are
};

struct SECURE_RIP_ENTRY
{
    int nTrack;
    int nSector;            // the first
    int nSectors;           //
    int nStatus;            // SECURE_RIP_STATUS
    int nRetries;           // of the block; comparisons that failed ahead of the last one
    int nMismatchedSectors; // of the block; in its first comparison, its last sector not counted
    int nElapsedMs;         // since the rip began

    bool IsBad() const { return nStatus >= SECURE_RIP_LIMIT; }
};

class SecureRipLog
{
public:
    SecureRipLog();
    SecureRipLog(const SecureRipLog&) = delete;
    SecureRipLog& operator=(const SecureRipLog&) = delete;

    void Clear();
    // An entry that goes on where the last one ended, and is like it, joins it. One without sectors is not taken.
    void Add(const SECURE_RIP_ENTRY& entry);
    // The engine's report on the block of nSectors from nSector. The record's own count of sectors has eight bits only
    // for two of its statuses, so that the block tells which are meant.
    void AddResult(const SECURE_READ_RESULT& result, int nTrack, int nSector, int nSectors, int nElapsedMs);
    void SetReReads(int nReReads); // of the whole rip

    int GetSize() const;
    int GetReReads() const;
    std::vector<SECURE_RIP_ENTRY> GetEntries() const;
    std::vector<SECURE_RIP_ENTRY> GetEntriesOfTrack(int nTrack) const;
    int CountEntries(int nStatus) const;
    int CountBadSectors() const;                   // each once
    bool IsBad(int nSector) const;                 //
    std::vector<RIP_SECTION> GetBadRanges() const; // ascending, apart from each other, cut where the track changes
    bool GetComplete() const;                      // no entry was lost

    // The log as lines of text, and back. A line holds the fields of one entry in their order, separated by tabs.
    std::string GetText() const;
    bool SetText(const std::string& strText);

private:
    mutable LyLock m_Lock;
    std::vector<SECURE_RIP_ENTRY> m_aryEntries LY_GUARDED_BY(m_Lock);
    int m_nReReads LY_GUARDED_BY(m_Lock) = 0;
    bool m_bComplete LY_GUARDED_BY(m_Lock) = true;
};
