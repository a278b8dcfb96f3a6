// DriveTiming: how long a drive in software takes. It knows where the head is and whether the disc turns; it does not
// sleep.
//
//   every command                  the latency
//   a read from the cache          nothing more
//   a read from the disc           spin-up, if the disc stands still; a seek, unless the head is there; the transfer
//
// A seek over the full disc takes the profile's time, a shorter one its part of that, but never less than a tenth,
// which stands for settling and for the turn of the disc. A transfer takes its sectors at the speed last set.
//
// Threads: one at a time. Times are the caller's steady clock.

#pragma once

#include "DriveProfile.h"
#include <chrono>

class DriveTiming
{
public:
    using CLOCK = std::chrono::steady_clock;
    using DURATION = std::chrono::microseconds;

    static constexpr int FULL_STROKE_SECTORS = 80 * 60 * LY_CD_SECTORS_PER_SECOND;
    static constexpr int SHORTEST_SEEK_DIVISOR = 10;

    // The disc stands still, the head is at its start, the speed is the highest.
    void Reset(const DRIVE_PROFILE& profile);
    void StandStill() { m_bSpinning = false; } // stopped by command, or another disc
    void SetSpeed(unsigned int nKBPerSecond);  // by SET CD SPEED
    unsigned int GetSpeed() const { return m_nKBPerSecond; }

    DURATION GetLatency() const { return m_Latency; }
    // Brings the disc to its speed. Zero if it turns. bSpinUp tells whether it stood still.
    DURATION SpinUp(CLOCK::time_point now, bool& bSpinUp);
    // What reading these sectors from the disc takes, behind spinning up. Moves the head.
    DURATION ReadFromDisc(int nLBA, int nSectors);
    // The drive was last at work at this time.
    void SetLastUse(CLOCK::time_point when) { m_LastUse = when; }
    CLOCK::time_point GetLastUse() const { return m_LastUse; }

    // How many sectors, at most nMax, pass under the head in that time, and the head's place. Only while it turns.
    int GetSectorsIn(DURATION time, int nMax) const;
    int GetHeadLBA() const { return m_nHeadLBA; }
    void MoveHead(int nLBA) { m_nHeadLBA = nLBA; }

private:
    DURATION GetTransfer(int nSectors) const;
    DURATION GetSeek(int nLBA) const;

    DURATION m_Latency{};
    DURATION m_SpinUpTime{};
    DURATION m_SpinDownAfter{};
    DURATION m_FullSeek{};
    bool m_bTimed = false; // transfers take time
    unsigned int m_nMaxKBPerSecond = 0;
    unsigned int m_nKBPerSecond = 0;
    bool m_bSpinning = false;
    int m_nHeadLBA = 0;
    CLOCK::time_point m_LastUse{};
};
