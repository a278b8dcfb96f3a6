// Evidence: the last commands of all drives, each with its sector range, outcome, sense and time. It answers what a
// drive said when bytes came out wrong, or did not come at all.
//
// Shape:   a ring of RECORDS records; the oldest give way. A record's number is its place in the order in which the
//          commands ended, from 1.
// Threads: any. Recording takes no lock, allocates nothing and never waits for a reader: a drive's thread is not to be
//          held up by somebody who looks. A record that is being written ends a reading; the next one goes on there,
//          so that none is missed.

#pragma once

#include "LyDisc.h"
#include "ServiceDrive.h"
#include <array>
#include <atomic>
#include <memory>

// When a command was sent.
struct EVIDENCE_START
{
    long long m_nWallUS;   // since 1970-01-01 UTC
    long long m_nSteadyUS; // of a clock that nobody sets

    static EVIDENCE_START Now();
};

class Evidence
{
public:
    static constexpr unsigned int RECORDS = 16384;
    static constexpr int EVERY_DRIVE = 0;
    static constexpr int MAX_DRIVES = 0xFFFFFF; // what a record has room for

    Evidence();
    Evidence(const Evidence&) = delete;
    Evidence& operator=(const Evidence&) = delete;

    // One command that has just ended, of the drive nDrive (1 to MAX_DRIVES). Its m_nDataBytes is what was transferred.
    // Only the codes of the sense data are kept.
    void Record(int nDrive, const EVIDENCE_START& start, const DRIVE_COMMAND& command, bool bGood,
                const SENSE_DATA& sense);

    // Copies the drive's records with a number above nAfter that are still held, oldest first. The count copied.
    int Read(int nDrive, unsigned long long nAfter, DISC_EVIDENCE* pRecords, int nRecords) const;

private:
    static constexpr int WORDS = sizeof(DISC_EVIDENCE) / sizeof(unsigned long long);
    static_assert(WORDS * sizeof(unsigned long long) == sizeof(DISC_EVIDENCE));
    // The first word is the record's number, and IN_WORK while the others are written.
    using SLOT = std::array<std::atomic<unsigned long long>, WORDS>;
    static constexpr unsigned long long IN_WORK = 0;

    void Write(unsigned long long nNumber, DISC_EVIDENCE& record);
    bool Copy(unsigned long long nNumber, DISC_EVIDENCE& record) const;

    const std::unique_ptr<SLOT[]> m_pSlots;
    std::atomic<unsigned long long> m_nLast{0}; // number of the newest record, which may still be in work
};

// Where a READ command reads. Other commands, and one that is cut short, read nothing.
struct SECTOR_RANGE
{
    int m_nLBA = 0;
    int m_nSectors = 0;
};
SECTOR_RANGE GetSectorRange(const unsigned char* pCDB, int nCDBBytes);
