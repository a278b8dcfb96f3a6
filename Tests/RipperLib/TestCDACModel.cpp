// The copy engine against a second telling of what it does (CopyModel.h), over thousands of worlds full of faults: the
// same reads in the same order into the same places, the same writes, reports, percentages and errors.

#include "CDAC.h"
#include "CDUnits.h"
#include "CopyModel.h"
#include "Thinning.h"
#include "wavesave.h"
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace
{
constexpr unsigned int WORLDS = Thinning::Some(5000U, 250U);
constexpr unsigned int STOPPED_WORLDS = Thinning::Some(20U, 2U);

using namespace CopyModel;

constexpr int SECTOR_WORDS = LY_CD_SECTOR_BYTES / static_cast<int>(sizeof(int));

int GetValue(const unsigned char* pSector)
{
    int nFirst;
    int nLast;
    std::memcpy(&nFirst, pSector, sizeof nFirst);
    std::memcpy(&nLast, pSector + LY_CD_SECTOR_BYTES - sizeof nLast, sizeof nLast);
    return nFirst == nLast ? nFirst : -1;
}

// A sector of the real buffers is its value, 588 times.
TEST_RECKONING void PutValue(unsigned char* pSector, int nValue)
{
    int* pWords = reinterpret_cast<int*>(pSector); // of a buffer from the heap, whose sectors are whole words
    for (int i = 0; i < SECTOR_WORDS; ++i)
        pWords[i] = nValue;
}

TEST_RECKONING unsigned char* MakeEmptyBuffer()
{
    constexpr size_t BYTES = static_cast<size_t>(Teller::BUFFER_CELLS) * LY_CD_SECTOR_BYTES;
    unsigned char* pBuffer = new unsigned char[BYTES];
    for (size_t i = 0; i < BYTES; ++i)
        pBuffer[i] = 0;
    return pBuffer;
}

struct STAGE
{
    const WORLD& m_World;
    EVENTS m_Events;
};

class StageCopy : public CDAC
{
public:
    explicit StageCopy(STAGE& stage) : m_Stage(stage) {}
    void WriteInit() override
    {
        m_Stage.m_Events.push_back("init");
        m_pCD->SetMaxSektors(m_Stage.m_World.m_nMaximum);
    }
    void WritePercent(int nPercent) override { m_Stage.m_Events.push_back("percent " + std::to_string(nPercent)); }
    void WriteDone() override { m_Stage.m_Events.push_back("done"); }
    void OnIdle() override { m_Stage.m_Events.push_back("idle"); }
    void OnSecureReadResult(SECURE_READ_RESULT& result) override
    {
        m_Stage.m_Events.push_back(
            ReportEvent(result.nStatus, result.nRetries, result.nSectors, result.nOffset, result.nMismatchedSectors));
        if (++m_nReports == m_Stage.m_World.m_nFatalReport)
            m_nLastError = CDAC_FATAL;
    }
    STAGE& m_Stage;
    int m_nReports = 0;
};

class StageCD : public CSCSICD
{
public:
    StageCD(TDriveInfo& info, STAGE& stage, StageCopy& copy)
        : CSCSICD(nullptr, info, L"M:"), m_Stage(stage), m_Copy(copy)
    {
        (void)Lasterror();
        m_aryNodes.resize(stage.m_World.m_aryData.size());
        for (size_t i = 0; i < m_aryNodes.size(); ++i)
        {
            m_aryNodes[i].Info.nTrackNumber = static_cast<unsigned char>(i + 1);
            m_aryNodes[i].Info.bDataTrack = stage.m_World.m_aryData[i] ? 1 : 0;
            m_aryNodes[i].pPrevious = i > 0 ? &m_aryNodes[i - 1] : nullptr;
            m_aryNodes[i].pNext = i + 1 < m_aryNodes.size() ? &m_aryNodes[i + 1] : nullptr;
        }
        m_FirstTrack = m_AktTrack = m_aryNodes.empty() ? nullptr : m_aryNodes.data();
    }
    ~StageCD() { m_FirstTrack = m_AktTrack = nullptr; }

    void ReadCDDA(int nSector, int nCount, void* pBuffer) override
    {
        unsigned char* pBytes = static_cast<unsigned char*>(pBuffer);
        for (int i = 0; i < CDAC::BUFFERS; ++i)
        {
            const ptrdiff_t nOffset = pBytes - m_Copy.m_pBuffers[i];
            if (nOffset >= 0 && nOffset < Teller::BUFFER_CELLS * LY_CD_SECTOR_BYTES)
                m_Stage.m_Events.push_back(
                    ReadEvent(nSector, nCount, i, static_cast<int>(nOffset / LY_CD_SECTOR_BYTES)));
        }
        const READ read = m_Stage.m_World.m_Read(++m_nReads, nSector, nCount);
        for (size_t i = 0; i < read.m_aryValues.size(); ++i)
            PutValue(pBytes + i * LY_CD_SECTOR_BYTES, read.m_aryValues[i]);
        if (read.m_eOutcome == ERROR_SAID)
            m_nLastError = ERROR_COMMAND_FAILED;
        if (m_nReads == m_Stage.m_World.m_nStopAtRead)
            m_Copy.StopCopy();
    }

private:
    STAGE& m_Stage;
    StageCopy& m_Copy;
    std::vector<TTrackListNode> m_aryNodes;
    int m_nReads = 0;
};

class StageSink : public CWaveSave
{
public:
    explicit StageSink(STAGE& stage) : m_Stage(stage) {}
    void WriteBuffer(long nFrames, unsigned int* pData) override
    {
        CELLS cells;
        for (long i = 0; i < nFrames / LY_CD_SECTOR_FRAMES; ++i)
            cells.push_back(GetValue(reinterpret_cast<unsigned char*>(pData) + i * LY_CD_SECTOR_BYTES));
        m_Stage.m_Events.push_back("write" + Join(cells));
    }
    void Stop() override { m_Stage.m_Events.push_back("stop"); }
    STAGE& m_Stage;
};

EVENTS RunEngine(const WORLD& world)
{
    STAGE stage = {world, {}};
    StageCopy copy(stage);
    for (unsigned char*& pBuffer : copy.m_pBuffers)
        pBuffer = MakeEmptyBuffer();
    TDriveInfo info;
    StageCD cd(info, stage, copy);
    cd.m_DriveInfo.m_nMode = world.m_bSecure ? 1 : 0;
    cd.SetMaxSektors(world.m_nBlock);
    RipSectorList list;
    for (const RIP_SECTION& section : world.m_arySections)
        (void)list.Add(section);
    StageSink sink(stage);
    copy.m_pCD = &cd;
    copy.m_pSectorList = &list;
    copy.m_pWaveSave = &sink;
    copy.m_bRunning = true;
    copy.Copy();
    stage.m_Events.push_back("error " + std::to_string(copy.Lasterror()));
    stage.m_Events.push_back("rereads " + std::to_string(copy.m_nReReads));
    return stage.m_Events;
}

class Dice
{
public:
    explicit Dice(unsigned int nSeed) : m_Engine(nSeed) {}
    // 0 to nLimit - 1; the same on every machine.
    int Below(int nLimit) { return static_cast<int>(m_Engine() % static_cast<unsigned int>(nLimit)); }
    int OneOf(const std::vector<int>& ary) { return ary[static_cast<size_t>(Below(static_cast<int>(ary.size())))]; }

private:
    std::mt19937 m_Engine;
};

struct FAULTS
{
    unsigned int m_nSeed;
    int m_nSaid;     // percent of reads that leave an error
    int m_nUnsaid;   // percent of reads that deliver nothing without a word
    int m_nBad;      // percent of sectors at which every read leaves an error
    int m_nUnsteady; // percent of sectors that differ...
    int m_nDiffers;  // ... in so many percent of reads
    int m_nStuck;    // sectors from this one on, 15 of them, always fail; -1: none
};

bool Happens(unsigned int nSeed, int nFirst, int nSecond, int nPercent)
{
    std::seed_seq seeds{nSeed, static_cast<unsigned int>(nFirst), static_cast<unsigned int>(nSecond)};
    unsigned int aryWord[1];
    seeds.generate(aryWord, aryWord + 1);
    return static_cast<int>(aryWord[0] % 100) < nPercent;
}

READ ReadFaulty(const FAULTS& faults, int nRead, int nStart, int nCount)
{
    bool bFails = Happens(faults.m_nSeed, nRead, -1, faults.m_nSaid);
    for (int n = nStart; n < nStart + nCount; ++n)
        bFails |= Happens(faults.m_nSeed, -2, n, faults.m_nBad) ||
                  (faults.m_nStuck >= 0 && n >= faults.m_nStuck && n < faults.m_nStuck + 15);
    if (bFails)
        return {ERROR_SAID, {}};
    if (Happens(faults.m_nSeed, nRead, -3, faults.m_nUnsaid))
        return {NOTHING_SAID, {}};
    READ read = {DELIVERED, {}};
    for (int n = nStart; n < nStart + nCount; ++n)
    {
        const bool bOther =
            Happens(faults.m_nSeed, -4, n, faults.m_nUnsteady) && Happens(faults.m_nSeed, nRead, n, faults.m_nDiffers);
        read.m_aryValues.push_back(n + 1 + (bOther ? 10000 * nRead : 0));
    }
    return read;
}

WORLD MakeWorld(unsigned int nSeed)
{
    Dice dice(nSeed);
    WORLD world;
    world.m_bSecure = dice.Below(3) != 0;
    world.m_nBlock = dice.OneOf({1, 2, 3, 4, 5, 8, 11, 27, 30});
    world.m_nMaximum = world.m_nBlock + dice.OneOf({0, 0, 0, 1, 7, 30});
    world.m_nStopAtRead = dice.Below(4) == 0 ? 1 + dice.Below(40) : 0;
    world.m_nFatalReport = dice.Below(10) == 0 ? 1 + dice.Below(2) : 0;
    const int nSections = dice.Below(4);
    const int nTracks = nSections + dice.Below(2);
    for (int i = 0; i < nTracks; ++i)
        world.m_aryData.push_back(i >= 1 && dice.Below(3) == 0);
    for (int i = 0; i < nSections; ++i)
        world.m_arySections.push_back({i + 1, i * 500 + dice.Below(10), dice.OneOf({0, 1, 3, 10, 11, 20, 40, 61})});
    const FAULTS faults = {nSeed,
                           dice.OneOf({0, 0, 5, 30, 70}),
                           dice.OneOf({0, 0, 0, 10}),
                           dice.OneOf({0, 0, 3, 20}),
                           dice.OneOf({0, 10, 60}),
                           dice.OneOf({20, 60, 95, 100}),
                           dice.Below(3) == 0 ? dice.Below(30) : -1};
    world.m_Read = [faults](int nRead, int nStart, int nCount) { return ReadFaulty(faults, nRead, nStart, nCount); };
    return world;
}
} // namespace

TEST(CopyModelTest, EngineAndModelTellTheSameOfThousandsOfWorlds)
{
    // What the worlds have met, so that none of the outcomes is missing among them.
    std::vector<int> aryErrors(10);
    std::vector<int> aryStatuses(5);
    for (unsigned int nSeed = 1; nSeed <= WORLDS; ++nSeed)
    {
        const WORLD world = MakeWorld(nSeed);
        const EVENTS expected = Teller(world).Tell();
        ASSERT_EQ(expected, RunEngine(world)) << "seed " << nSeed;
        for (const std::string& strEvent : expected)
        {
            if (strEvent.rfind("error ", 0) == 0)
                ++aryErrors[static_cast<size_t>(std::atoi(strEvent.c_str() + 6))];
            if (strEvent.rfind("report ", 0) == 0)
                ++aryStatuses[static_cast<size_t>(std::atoi(strEvent.c_str() + 7))];
        }
    }
    const int nOften = static_cast<int>(WORLDS) / 250;
    for (const size_t nError : {0U, 2U, 7U, 9U})
        EXPECT_GT(aryErrors[nError], nOften) << nError;
    for (const size_t nStatus : {1U, 2U, 3U, 4U})
        EXPECT_GT(aryStatuses[nStatus], nOften) << nStatus;
}

// The same worlds, stopped at each of their reads in turn.
TEST(CopyModelTest, AStopAtEveryReadIsTheSameForBoth)
{
    int nStops = 0;
    for (unsigned int nSeed = 1; nSeed <= STOPPED_WORLDS; ++nSeed)
    {
        WORLD world;
        world.m_bSecure = nSeed % 2 == 0;
        world.m_nBlock = 4;
        world.m_nMaximum = 9;
        world.m_aryData = {false, false};
        world.m_arySections = {{1, 0, 18}, {2, 500, 6}};
        const FAULTS faults = {nSeed, 10, 0, 0, 40, 60, -1};
        world.m_Read = [faults](int nRead, int nStart, int nCount)
        { return ReadFaulty(faults, nRead, nStart, nCount); };
        const EVENTS whole = Teller(world).Tell();
        const auto nReads = std::count_if(whole.begin(), whole.end(),
                                          [](const std::string& strEvent) { return strEvent.rfind("read ", 0) == 0; });
        for (int nRead = 1; nRead <= nReads; ++nRead, ++nStops)
        {
            world.m_nStopAtRead = nRead;
            const EVENTS expected = Teller(world).Tell();
            ASSERT_EQ(expected, RunEngine(world)) << nSeed << " stopped at read " << nRead;
        }
    }
    EXPECT_GT(nStops, 15 * static_cast<int>(STOPPED_WORLDS));
}
