// A second telling of what the copy engine does, for the tests: as a list of events, worked out from a description of
// the world without any of the engine's code. Sectors are single numbers here, buffers are lists of them, loops are
// recursions, and "try three times" is an "or".

#pragma once

#include "RipSectorList.h"
#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

namespace CopyModel
{
enum OUTCOME
{
    DELIVERED,    // the sectors' values arrive
    NOTHING_SAID, // nothing arrives, and nobody says so
    ERROR_SAID    // nothing arrives, and an error is left behind
};

struct READ
{
    OUTCOME m_eOutcome;
    std::vector<int> m_aryValues;
};

// What the engine meets.
struct WORLD
{
    bool m_bSecure = false;
    int m_nBlock = 4;       // the maximum at the start
    int m_nMaximum = 4;     // from WriteInit on
    int m_nStopAtRead = 0;  // the copy is stopped while this read is under way, from 1; 0: never
    int m_nFatalReport = 0; // this report makes the derived class give up; 0: none
    std::vector<RIP_SECTION> m_arySections;
    std::vector<bool> m_aryData; // of track 1, 2, ...: it is a data track
    std::function<READ(int nRead, int nStart, int nCount)> m_Read;
};

typedef std::vector<std::string> EVENTS;
typedef std::vector<int> CELLS;

inline std::string Join(const CELLS& cells)
{
    std::string str;
    for (const int n : cells)
        str += " " + std::to_string(n);
    return str;
}

inline std::string ReadEvent(int nStart, int nCount, int nBuffer, int nPlace)
{
    return "read" + Join({nStart, nCount}) + " into" + Join({nBuffer, nPlace});
}

inline std::string ReportEvent(int nStatus, int nRetries, int nSectors, int nOffset, int nMismatched)
{
    return "report" + Join({nStatus, nRetries, nSectors, nOffset, nMismatched});
}

class Teller
{
public:
    static constexpr int BUFFER_CELLS = 64;

    explicit Teller(const WORLD& world) : m_World(world) { m_Buffers.fill(CELLS(BUFFER_CELLS, 0)); }

    EVENTS Tell()
    {
        Say("init");
        Say("percent 0");
        const bool bToTheEnd =
            std::all_of(m_World.m_arySections.begin(), m_World.m_arySections.end(),
                        [this](const RIP_SECTION& section) { return !m_bRunning || TellSection(section); });
        Say("done");
        if (bToTheEnd && !m_bRunning)
        {
            m_nError = 7;
            Say("stop");
        }
        Say("error " + std::to_string(m_nError));
        Say("rereads " + std::to_string(m_nReReads));
        return m_Events;
    }

private:
    struct GOT
    {
        int m_nSectors;
        int m_nError;
    };

    void Say(const std::string& str) { m_Events.push_back(str); }

    bool Read(int nStart, int nCount, int nBuffer, int nPlace)
    {
        Say(ReadEvent(nStart, nCount, nBuffer, nPlace));
        const READ read = m_World.m_Read(++m_nReads, nStart, nCount);
        if (m_nReads == m_World.m_nStopAtRead)
            m_bRunning = false;
        std::copy(read.m_aryValues.begin(), read.m_aryValues.end(), m_Buffers[Index(nBuffer)].begin() + nPlace);
        return read.m_eOutcome != ERROR_SAID;
    }

    // At most three attempts.
    bool Stubborn(int nStart, int nCount, int nBuffer, int nPlace)
    {
        const auto once = [&] { return Read(nStart, nCount, nBuffer, nPlace); };
        return once() || once() || once();
    }

    // The sectors that could be had one by one: 0 if more than nMost had to be left out.
    GOT Salvage(int nStart, int nCount, int nBuffer, int nMost)
    {
        bool bAnyBad = false;
        const std::function<int(int, int, int)> walk = [&](int nAt, int nLeftOut, int nRow) -> int
        {
            if (nAt >= nCount)
                return nCount - nLeftOut;
            if (Read(nStart + nAt, 1, nBuffer, nAt - nLeftOut))
                return walk(nAt + 1, nLeftOut, 0);
            bAnyBad = true;
            const int nJump = nRow < 10 ? 0 : nRow + 1;
            const int nNextRow = nRow < 10 ? nRow + 1 : 2 * nJump;
            return nLeftOut + 1 + nJump > nMost ? 0 : walk(nAt + 1 + nJump, nLeftOut + 1 + nJump, nNextRow);
        };
        const int nSectors = walk(0, 0, 0);
        return {nSectors, bAnyBad ? 2 : 0};
    }

    GOT Many(int nStart, int nCount, int nBuffer, int nDone = 0)
    {
        if (nDone >= nCount)
            return {std::max(nCount, 0), 0};
        const int nPiece = std::min(27, nCount - nDone);
        if (Stubborn(nStart + nDone, nPiece, nBuffer, nDone))
            return Many(nStart, nCount, nBuffer, nDone + nPiece);
        const GOT salvaged = Salvage(nStart + nDone, nCount - nDone, nBuffer, std::max(nCount - 1, 2));
        return {nDone + salvaged.m_nSectors, salvaged.m_nError};
    }

    void Report(int nStatus, int nRetries, int nSectors, int nStart, int nMismatched)
    {
        Say(ReportEvent(nStatus, nRetries, nSectors, nStart - m_Section.nStartSector, nMismatched));
        if (++m_nReports == m_World.m_nFatalReport)
            m_nError = 9;
    }

    void Secure(int nStart, int nCount)
    {
        const GOT first = Many(nStart, nCount, m_nNow);
        m_nError = first.m_nError;
        if (first.m_nSectors == 0)
            return Report(4, 0, nCount % 256, nStart, 0);
        if (first.m_nSectors < nCount)
        {
            Report(3, 0, (nCount - first.m_nSectors) % 256, nStart, 0);
            m_nError = 0;
            return;
        }
        Compare(nStart, nCount, 0, 0);
    }

    // One comparison, and those behind it.
    void Compare(int nStart, int nCount, int nFailed, int nMismatched)
    {
        const int nTarget = nFailed % 2 == 0 ? 2 : m_nNow;
        if (m_World.m_nMaximum > nCount)
            (void)Many(m_Section.nStartSector, std::min(m_World.m_nMaximum - nCount, m_Section.nSectors), nTarget);
        const GOT again = Many(nStart, nCount, nTarget);
        m_nError = again.m_nError;
        if (again.m_nSectors < nCount)
        {
            Report(3, 0, nCount % 256, nStart, 0);
            m_nError = 0;
            return;
        }
        const auto differ = [&](int i) { return m_Buffers[Index(m_nNow)][Index(i)] != m_Buffers[2][Index(i)] ? 1 : 0; };
        int nDiffering = 0;
        for (int i = 0; i + 1 < nCount; ++i)
            nDiffering += differ(i);
        const bool bAlike = nDiffering + differ(nCount - 1) == 0;
        if (nFailed == 0)
            nMismatched = nDiffering;
        if (!m_bRunning)
            return;
        if (!bAlike && nFailed < 16)
        {
            ++m_nReReads;
            return Compare(nStart, nCount, nFailed + 1, nMismatched);
        }
        if (nFailed > 1)
            Report(nFailed == 16 ? 2 : 1, nFailed, nCount, nStart, nMismatched);
    }

    void Write(int nSectors, int nBuffer)
    {
        const CELLS& cells = m_Buffers[Index(nBuffer)];
        Say("write" + Join(CELLS(cells.begin(), cells.begin() + nSectors)));
    }

    // False if the copy ends here.
    bool TellSection(const RIP_SECTION& section)
    {
        m_Section = section;
        for (int nDone = 0; nDone < section.nSectors && m_bRunning;)
        {
            m_nLast = std::min(m_World.m_nBlock, section.nSectors - nDone);
            if (!TellBlock(nDone, section.nSectors - nDone))
                return false;
            nDone += m_nLast;
            m_nNow = 1 - m_nNow;
            TellPercent(section.nSectors - nDone);
        }
        Write(m_nLast, 1 - m_nNow);
        return true;
    }

    bool TellBlock(int nDone, int nLeft)
    {
        const int nStart = m_Section.nStartSector + nDone;
        if (m_World.m_bSecure)
            Secure(nStart, m_nLast);
        else
            m_nError = Stubborn(nStart, m_nLast, m_nNow, 0) ? 0 : 2;
        if (nDone > 0)
            Write(m_World.m_nBlock, 1 - m_nNow);
        if (m_nError == 0)
            return true;
        return m_nError != 9 && !m_World.m_bSecure && Forgive(nStart, nLeft);
    }

    bool Forgive(int nStart, int nLeft)
    {
        const GOT salvaged = Salvage(nStart, m_nLast, m_nNow, 3);
        if (salvaged.m_nSectors != 0)
            Write(salvaged.m_nSectors, m_nNow);
        const size_t nNext = Index(m_Section.nTrack); // counted from 0, the track behind this one
        const bool bRunOut = nLeft < 180 && nNext < m_World.m_aryData.size() && m_World.m_aryData[nNext];
        const bool bEnd = nLeft < 11 || bRunOut;
        if (bEnd || salvaged.m_nSectors != 0)
            m_nError = 0;
        return !bEnd && salvaged.m_nSectors != 0;
    }

    void TellPercent(int nLeft)
    {
        int nTotal = 0;
        int nBehind = 0;
        for (const RIP_SECTION& section : m_World.m_arySections)
        {
            nTotal += section.nSectors;
            nBehind += &section > FindSection() ? section.nSectors : 0;
        }
        Say("percent " + std::to_string(nTotal > 0 ? (nTotal - nBehind - nLeft) * 100 / nTotal : 0));
    }

    // Sections of a world are told apart by their start.
    const RIP_SECTION* FindSection() const
    {
        return &*std::find_if(m_World.m_arySections.begin(), m_World.m_arySections.end(),
                              [this](const RIP_SECTION& section)
                              { return section.nStartSector == m_Section.nStartSector; });
    }

    static size_t Index(int n) { return static_cast<size_t>(n); }

    const WORLD& m_World;
    EVENTS m_Events;
    std::array<CELLS, 3> m_Buffers;
    RIP_SECTION m_Section{};
    bool m_bRunning = true;
    int m_nNow = 0;  // the buffer of the block at work
    int m_nLast = 0; // sectors of that block
    int m_nError = 0;
    int m_nReads = 0;
    int m_nReports = 0;
    int m_nReReads = 0;
};
} // namespace CopyModel
