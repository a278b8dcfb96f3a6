// DriveFaults: what goes wrong with a drive in software, and when.
//
// Random:  what a sector suffers depends on the seed, on its address and on the number of the read that fetched it from
//          the disc; what a command suffers, on the seed and on the command's number. The same commands therefore meet
//          the same faults, and a sector out of the cache comes with the bytes with which it went in.
// Threads: one at a time.

#pragma once

#include "DriveProfile.h"
#include <chrono>
#include <deque>
#include <string>
#include <vector>

// SplitMix64: a counter with an odd step, and a mix that maps numbers to numbers one to one.
class DriveRandom
{
public:
    explicit DriveRandom(unsigned long long nSeed) : m_nState(nSeed) {}
    DriveRandom(unsigned long long nSeed, unsigned long long nFirst, unsigned long long nSecond);

    unsigned long long Next();
    unsigned int Below(unsigned int nLimit) { return static_cast<unsigned int>((Next() >> 32) * nLimit >> 32); }
    bool Happens(unsigned int nPPM) { return nPPM > 0 && Below(CERTAIN_PPM) < nPPM; }

private:
    unsigned long long m_nState;
};

// What happens ahead of a command.
struct FAULT_DECISION
{
    bool m_bRemoved = false;
    const std::string* m_pNewDisc = nullptr; // lies in the profile
    std::chrono::milliseconds m_Hang{};
    DRIVE_SENSE m_Sense; // the command fails with this
};

class DriveFaults
{
public:
    // The profile must outlive this object, or its next Reset.
    void Reset(const DRIVE_PROFILE& profile);

    // The next command. It counts.
    FAULT_DECISION OnCommand(unsigned char nOpcode);
    long long GetCommands() const { return m_nCommands; }
    long long GetReads() const { return m_nReads; } // also the number of the read at work

    // A read of the disc comes to this stretch of sectors. An error if one of them cannot be read this time. Each line
    // of the profile counts a command once, however often this is asked during it.
    DRIVE_SENSE OnDiscSectors(int nLBA, int nSectors);
    // Whether the drive will try to read this sector by itself.
    bool MayReadAhead(int nLBA) const;

    // By how many frames the sector comes too late (positive) or too early, as that read fetched it.
    int GetShift(int nLBA, unsigned long long nRead) const;
    // Changes what the sector's LY_CD_SECTOR_BYTES suffer by that read. False if they stay as they are.
    bool Spoil(unsigned char* pSector, int nLBA, unsigned long long nRead) const;
    bool SpoilsAnything() const;

private:
    bool IsAt(const COMMAND_TRIGGER& when, bool bRead) const;
    bool SpoilSilently(unsigned char* pSector, const SILENT_FAULT& fault, DriveRandom random) const;

    struct TRIES
    {
        long long m_nCount = 0;
        long long m_nLastRead = 0;
        bool m_bFails = false; // in that read
    };

    const DRIVE_PROFILE* m_pProfile = nullptr;
    long long m_nCommands = 0;
    long long m_nReads = 0;
    std::deque<DRIVE_SENSE> m_Attentions; // that commands are still to be told of
    std::vector<TRIES> m_aryTries;        // of each line of unreadable sectors
};

// READ(10), READ(12) and READ CD.
bool IsReadOpcode(unsigned char nOpcode);
