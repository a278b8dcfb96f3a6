// UnreadSectors: the sectors of a disc that could not be read, each counted once however often it was tried, and not
// any more once it was read after all.
//
// Units:   sectors; addresses are logical block addresses, which are negative in the first pregap.
// Errors:  a disc with more than MAX_RANGES damaged places is told of with those.
// Threads: one at a time.

#pragma once

#include "ServiceDrive.h"
#include <cstddef>
#include <map>
#include <string>

class UnreadSectors
{
public:
    static constexpr size_t MAX_RANGES = 4096;

    void Add(int nLBA, int nSectors);    // could not be read
    void Remove(int nLBA, int nSectors); // could be read
    void Clear();
    void Note(const DRIVE_COMMAND& command, bool bGood, const DRIVE_SENSE& sense); // a command that has ended

    long long GetCount() const;
    long long GetFirst() const; // 0 if there is none
    // One sentence with the number, the first place and the last reason; empty if there is none.
    std::string GetText(const std::string& strDrive) const;

private:
    std::map<long long, long long> m_mapRanges; // start to end; neither touching nor overlapping
    DRIVE_SENSE m_LastSense;                    // of the last read that failed
};
