// The corners of the copy engine: what its table looks like, what takes which size, and where a read error ends what.

#include "CDAC.h"
#include "CDUnits.h"
#include "CountAllocations.h"
#include "wavesave.h"
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <type_traits>
#include <vector>

namespace
{
typedef std::pair<int, int> SECTORS; // first and count

// A disc whose sectors hold their number, and whose bad sectors leave an error. Nothing is allocated while it is read.
class NumberedCD : public CSCSICD
{
public:
    NumberedCD(TDriveInfo& info) : CSCSICD(nullptr, info, L"M:")
    {
        (void)Lasterror();
        m_aryReads.reserve(20000);
    }
    void ReadCDDA(int nSector, int nCount, void* pBuffer) override
    {
        m_aryReads.push_back({nSector, nCount});
        if (m_pStopped != nullptr && static_cast<int>(m_aryReads.size()) == m_nStopAtRead)
            m_pStopped->StopCopy();
        for (int i = 0; i < nCount; ++i)
            if (m_setBad.count(nSector + i) != 0)
            {
                m_nLastError = ERROR_COMMAND_FAILED;
                return;
            }
        for (int i = 0; i < nCount; ++i)
        {
            const bool bOther = nSector + i == m_nUnsteady;
            std::memset(static_cast<char*>(pBuffer) + static_cast<ptrdiff_t>(i) * LY_CD_SECTOR_BYTES,
                        bOther ? 100 + static_cast<int>(m_aryReads.size()) : nSector + i, LY_CD_SECTOR_BYTES);
        }
    }
    std::vector<SECTORS> m_aryReads;
    std::set<int> m_setBad;
    int m_nUnsteady = -1;
    CDAC* m_pStopped = nullptr;
    int m_nStopAtRead = 0;
};

class CountingSink : public CWaveSave
{
public:
    CountingSink() { m_aryWrites.reserve(20000); }
    void WriteBuffer(long nFrames, unsigned int*) override { m_aryWrites.push_back(nFrames); }
    void Stop() override { ++m_nStops; }
    std::vector<long> m_aryWrites;
    int m_nStops = 0;
};

class EdgeCopy : public CDAC
{
public:
    void WriteInit() override
    {
        if (m_nMaximum > 0)
            m_pCD->SetMaxSektors(m_nMaximum);
    }
    void WritePercent(int nPercent) override { m_nPercent = nPercent; }
    void WriteDone() override { ++m_nDones; }
    void OnSecureReadResult(SECURE_READ_RESULT& result) override { m_aryResults.push_back(result); }
    int m_nMaximum = 0;
    int m_nPercent = -1;
    int m_nDones = 0;
    std::vector<SECURE_READ_RESULT> m_aryResults;
};

class CopyEdgeTest : public ::testing::Test
{
protected:
    CopyEdgeTest() : m_CD(m_Info)
    {
        m_Copy.m_pCD = &m_CD;
        m_Copy.m_pSectorList = &m_List;
        m_Copy.m_pWaveSave = &m_Sink;
        m_Copy.m_bRunning = true;
        for (unsigned char*& pBuffer : m_Copy.m_pBuffers)
            pBuffer = new unsigned char[400 * LY_CD_SECTOR_BYTES]();
    }
    void Add(int nTrack, int nStart, int nSectors) { (void)m_List.Add({nTrack, nStart, nSectors}); }
    void UseSecureMode() { m_CD.m_DriveInfo.m_nMode = 1; }

    TDriveInfo m_Info;
    NumberedCD m_CD;
    RipSectorList m_List;
    CountingSink m_Sink;
    EdgeCopy m_Copy;
};
} // namespace

TEST_F(CopyEdgeTest, TheOwnersOperationsStandInTheirSlots)
{
    class Slots : public CDAC
    {
    public:
        void WriteInit() override { m_nCalled = 0; }
        void WritePercent(int nPercent) override { m_nCalled = 100 + nPercent; }
        void WriteDone() override { m_nCalled = 2; }
        void OnIdle() override { m_nCalled = 3; }
        void OnSecureReadResult(SECURE_READ_RESULT& result) override { m_nCalled = 400 + result.nStatus; }
        int m_nCalled = -1;
    } slots;
    void** const pTable = *reinterpret_cast<void***>(static_cast<CDAC*>(&slots));
    typedef void (*PLAIN)(CDAC*);
    reinterpret_cast<PLAIN>(pTable[0])(&slots);
    EXPECT_EQ(0, slots.m_nCalled);
    reinterpret_cast<void (*)(CDAC*, int)>(pTable[1])(&slots, 7);
    EXPECT_EQ(107, slots.m_nCalled);
    reinterpret_cast<PLAIN>(pTable[2])(&slots);
    EXPECT_EQ(2, slots.m_nCalled);
    reinterpret_cast<PLAIN>(pTable[3])(&slots);
    EXPECT_EQ(3, slots.m_nCalled);
    SECURE_READ_RESULT result{4, 0, 0, 0, 0};
    reinterpret_cast<void (*)(CDAC*, SECURE_READ_RESULT*)>(pTable[4])(&slots, &result);
    EXPECT_EQ(404, slots.m_nCalled);
    static_assert(std::is_abstract_v<CDAC> && !std::has_virtual_destructor_v<CDAC>);
}

TEST_F(CopyEdgeTest, TheBlockSizeIsTakenAheadOfWriteInitAndTheDefeatFollowsTheMaximum)
{
    UseSecureMode();
    m_CD.SetMaxSektors(4);
    m_Copy.m_nMaximum = 9;
    Add(1, 50, 8);
    m_Copy.Copy();
    // Blocks of four; in between nine less four sectors from the section's start.
    EXPECT_EQ((std::vector<SECTORS>{{50, 4}, {50, 5}, {50, 4}, {54, 4}, {50, 5}, {54, 4}}), m_CD.m_aryReads);
    EXPECT_EQ((std::vector<long>{4 * 588, 4 * 588}), m_Sink.m_aryWrites);
}

TEST_F(CopyEdgeTest, TheDefeatReadsNoMoreThanTheSectionHas)
{
    UseSecureMode();
    m_Copy.m_nMaximum = 300;
    Add(1, 50, 30); // a block of 27 and one of 3
    m_Copy.Copy();
    // Of the first block: it, all 30 sectors in place of 273, it again; and of the second likewise.
    EXPECT_EQ((std::vector<SECTORS>{{50, 27}, {50, 27}, {77, 3}, {50, 27}, {77, 3}, {50, 27}, {77, 3}, {77, 3}}),
              m_CD.m_aryReads);
}

TEST_F(CopyEdgeTest, AtTheDefaultAFullBlockIsReadTwiceAndNothingElse)
{
    UseSecureMode();
    Add(1, 0, 54);
    m_Copy.Copy();
    EXPECT_EQ((std::vector<SECTORS>{{0, 27}, {0, 27}, {27, 27}, {27, 27}}), m_CD.m_aryReads);
}

TEST_F(CopyEdgeTest, ASecureReadOfNothingIsStatusFour)
{
    for (const int nCount : {0, -3})
    {
        m_Copy.m_aryResults.clear();
        EXPECT_EQ(0, m_Copy.SecureRead(5, nCount));
        ASSERT_EQ(1U, m_Copy.m_aryResults.size());
        EXPECT_EQ(SECURE_READ_NOTHING, m_Copy.m_aryResults[0].nStatus);
    }
    EXPECT_TRUE(m_CD.m_aryReads.empty());
}

TEST_F(CopyEdgeTest, SectorsOfStatusesThreeAndFourHaveEightBits)
{
    UseSecureMode();
    m_Copy.m_nSectionEnd = 400;
    for (int n = 0; n < 300; ++n)
        m_CD.m_setBad.insert(n);
    EXPECT_EQ(0, m_Copy.SecureRead(0, 300));
    ASSERT_EQ(1U, m_Copy.m_aryResults.size());
    EXPECT_EQ(SECURE_READ_NOTHING, m_Copy.m_aryResults[0].nStatus);
    EXPECT_EQ(300 - 256, m_Copy.m_aryResults[0].nSectors);
    EXPECT_EQ(CDAC_READ_FAILED, m_Copy.m_nLastError);
    // The first 27 can be read; from there on the jumps end behind sector 286.
    m_CD.m_setBad.clear();
    for (int n = 27; n < 298; ++n)
        m_CD.m_setBad.insert(n);
    m_Copy.m_aryResults.clear();
    EXPECT_EQ(0, m_Copy.SecureRead(0, 300));
    ASSERT_EQ(1U, m_Copy.m_aryResults.size());
    EXPECT_EQ(SECURE_READ_SHORT, m_Copy.m_aryResults[0].nStatus);
    EXPECT_EQ(CDAC_NO_ERROR, m_Copy.m_nLastError);
}

TEST_F(CopyEdgeTest, AStopDuringASecureReadReportsNothingAndTheBlockIsStillWritten)
{
    UseSecureMode();
    m_CD.m_nUnsteady = 30; // would never match
    m_CD.m_pStopped = &m_Copy;
    m_CD.m_nStopAtRead = 5; // the third read of the second block
    Add(1, 0, 81);
    Add(2, 200, 27);
    m_Copy.Copy();
    EXPECT_EQ(5U, m_CD.m_aryReads.size());
    EXPECT_TRUE(m_Copy.m_aryResults.empty());
    EXPECT_EQ((std::vector<long>{27 * 588, 27 * 588}), m_Sink.m_aryWrites);
    EXPECT_EQ(CDAC_STOPPED, m_Copy.Lasterror());
    EXPECT_EQ(1, m_Sink.m_nStops);
    EXPECT_EQ(1, m_Copy.m_nDones);
}

TEST_F(CopyEdgeTest, AFirstReadOfNothingEndsASecureCopyAndAShortOneDoesNot)
{
    UseSecureMode();
    Add(1, 0, 54);
    m_CD.m_setBad = {3};
    m_Copy.Copy();
    EXPECT_EQ(CDAC_NO_ERROR, m_Copy.Lasterror());
    ASSERT_EQ(1U, m_Copy.m_aryResults.size());
    EXPECT_EQ(SECURE_READ_SHORT, m_Copy.m_aryResults[0].nStatus);
    EXPECT_EQ(1, m_Copy.m_aryResults[0].nSectors);
    EXPECT_EQ(2U, m_Sink.m_aryWrites.size());
    for (int n = 0; n < 27; ++n)
        m_CD.m_setBad.insert(n);
    m_Sink.m_aryWrites.clear();
    m_Copy.Copy();
    EXPECT_EQ(CDAC_READ_FAILED, m_Copy.Lasterror());
    EXPECT_EQ(SECURE_READ_NOTHING, m_Copy.m_aryResults.back().nStatus);
    EXPECT_TRUE(m_Sink.m_aryWrites.empty());
    EXPECT_EQ(2, m_Copy.m_nDones);
}

struct END_CASE
{
    int nSectors; // of the section, all of one block; none can be read
    bool bDataBehind;
    int nError;
};

TEST_F(CopyEdgeTest, HowNearTheEndAnUnreadableBlockIsForgiven)
{
    const END_CASE aryCases[] = {{10, false, 0}, {11, false, 2}, {11, true, 0},   {179, false, 2},
                                 {179, true, 0}, {180, true, 2}, {180, false, 2}, {1, false, 0}};
    m_CD.SetMaxSektors(200);
    for (const END_CASE& row : aryCases)
    {
        TTrackListNode next{{2, 1000, 10, 2, 0, static_cast<unsigned char>(row.bDataBehind), 0}, nullptr, nullptr};
        TTrackListNode audio{{1, 0, 500, 2, 0, 0, 0}, nullptr, &next};
        next.pPrevious = &audio;
        m_CD.m_FirstTrack = m_CD.m_AktTrack = &audio;
        m_CD.m_setBad.clear();
        for (int n = 0; n < row.nSectors; ++n)
            m_CD.m_setBad.insert(n);
        m_List.RemoveAll(true);
        Add(1, 0, row.nSectors);
        m_Copy.Copy();
        EXPECT_EQ(row.nError, m_Copy.Lasterror()) << row.nSectors << row.bDataBehind;
        m_CD.m_FirstTrack = m_CD.m_AktTrack = nullptr;
    }
    EXPECT_EQ(0, m_Sink.m_nStops);
}

TEST_F(CopyEdgeTest, LasterrorOfTheCopyIsReadOnce)
{
    m_Copy.m_nLastError = CDAC_FATAL;
    EXPECT_EQ(CDAC_FATAL, m_Copy.Lasterror());
    EXPECT_EQ(CDAC_NO_ERROR, m_Copy.Lasterror());
}

TEST_F(CopyEdgeTest, ReadCDDAAlwaysAnswersZero)
{
    std::vector<unsigned char> buffer(27 * LY_CD_SECTOR_BYTES);
    m_CD.m_setBad = {3};
    EXPECT_EQ(0, m_Copy.ReadCDDA(0, 27, buffer.data()));
    EXPECT_EQ(CDAC_READ_FAILED, m_Copy.m_nLastError);
    EXPECT_EQ(3U, m_CD.m_aryReads.size());
    EXPECT_EQ(0, m_Copy.ReadCDDA(4, 20, buffer.data()));
    EXPECT_EQ(CDAC_NO_ERROR, m_Copy.m_nLastError);
}

TEST_F(CopyEdgeTest, ASmallReadMayLoseUpToTwoSectors)
{
    // The larger of the count less one and two: of two sectors both may be bad without the salvage giving up early,
    // and of one too, but what is left is nothing.
    std::vector<unsigned char> buffer(27 * LY_CD_SECTOR_BYTES);
    m_CD.m_setBad = {0, 1, 2};
    EXPECT_EQ(0, m_Copy.ReadMulti(0, 2, buffer.data()));
    EXPECT_EQ(5U, m_CD.m_aryReads.size());
    EXPECT_EQ(0, m_Copy.ReadMulti(0, 3, buffer.data())); // three bad are more than two
    EXPECT_EQ(1, m_Copy.ReadMulti(0, 4, buffer.data()));
    EXPECT_EQ(3, buffer[0]);
}

TEST_F(CopyEdgeTest, NoCommandOfASecureCopyAsksForMoreThan27Sectors)
{
    UseSecureMode();
    m_CD.SetMaxSektors(300);
    m_CD.m_nUnsteady = 150;
    Add(1, 0, 310);
    m_Copy.Copy();
    ASSERT_FALSE(m_CD.m_aryReads.empty());
    for (const SECTORS& read : m_CD.m_aryReads)
        EXPECT_LE(read.second, 27);
}

TEST_F(CopyEdgeTest, ACopyAllocatesNothing)
{
    UseSecureMode();
    m_Copy.m_nMaximum = 60;
    m_CD.m_setBad = {40};
    Add(1, 0, 300);
    const long long nBefore = CountAllocations::GetCount();
    m_Copy.m_aryResults.reserve(100);
    const long long nReserved = CountAllocations::GetCount();
    m_Copy.Copy();
    EXPECT_EQ(nReserved, CountAllocations::GetCount());
    EXPECT_EQ(nBefore + 1, nReserved);
}

TEST_F(CopyEdgeTest, WhatIsNoLengthIsNotRead)
{
    Add(1, 10, -5);
    m_CD.SetMaxSektors(0);
    Add(1, 10, 5);
    m_Copy.Copy();
    EXPECT_TRUE(m_CD.m_aryReads.empty());
    EXPECT_EQ(1, m_Copy.m_nDones);
    int nMismatched = 3;
    EXPECT_TRUE(CDAC::GetBufferMatch(nullptr, nullptr, -1, true, nMismatched));
    EXPECT_EQ(0, nMismatched);
}

TEST(RipSectorListEdges, ItIsAnArrayOfSections)
{
    RipSectorList list;
    (void)list.Add({1, 0, 5});
    (void)list.Add({2, 5, 6});
    (void)list.SetAt(0, {3, 50, 7}, true);
    EXPECT_EQ(3, list.GetTrackNum(0));
    EXPECT_EQ(13, list.GetTotalSectors(0));
    EXPECT_EQ(0, list.GetTotalSectors(5));
    list.RemoveAll(true);
    EXPECT_EQ(0, list.GetSize());
    EXPECT_EQ(-1, list.GetNumSectors(0));
    static_assert(sizeof(RIP_SECTION) == 12 && std::is_trivially_destructible_v<RIP_SECTION>);
}
