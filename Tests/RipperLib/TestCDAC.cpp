#include "CDAC.h"
#include "CDUnits.h"
#include "FakeDisc.h"
#include "wavesave.h"
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace
{
// A disc in memory. A sector's bytes all have one value, its number's low byte, until they are disturbed. Reads of bad
// sectors leave an error, as other commands of the layer do.
class MemoryCD : public CSCSICD
{
public:
    MemoryCD(TDriveInfo& info) : CSCSICD(nullptr, info, L"M:") { (void)Lasterror(); }
    void ReadCDDA(int nSector, int nCount, void* pBuffer) override
    {
        m_aryReads.push_back({nSector, nCount});
        bool bBad = false;
        for (int i = 0; i < nCount; ++i)
        {
            const auto pBad = m_mapBad.find(nSector + i);
            if (pBad != m_mapBad.end() && pBad->second != 0)
            {
                bBad = true;
                if (pBad->second > 0)
                    --pBad->second;
            }
        }
        if (bBad)
        {
            m_nLastError = 1;
            return;
        }
        for (int i = 0; i < nCount; ++i)
        {
            unsigned char nValue = static_cast<unsigned char>(nSector + i);
            auto pUnsteady = m_mapUnsteady.find(nSector + i);
            if (pUnsteady != m_mapUnsteady.end() && pUnsteady->second > 0)
                nValue = static_cast<unsigned char>(nValue + 100 + pUnsteady->second--);
            std::memset(static_cast<char*>(pBuffer) + i * LY_CD_SECTOR_BYTES, nValue, LY_CD_SECTOR_BYTES);
        }
    }
    std::vector<std::pair<int, int>> m_aryReads;
    std::map<int, int> m_mapBad;      // sector, and how many reads of it fail; -1 all
    std::map<int, int> m_mapUnsteady; // sector, and how many reads of it differ
};

class MemorySink : public CWaveSave
{
public:
    void WriteBuffer(long nFrames, unsigned int* pData) override
    {
        const unsigned char* pBytes = reinterpret_cast<unsigned char*>(pData);
        std::vector<int> arySectors;
        for (long i = 0; i < nFrames / LY_CD_SECTOR_FRAMES; ++i)
            arySectors.push_back(pBytes[i * LY_CD_SECTOR_BYTES]);
        m_aryWrites.push_back(arySectors);
    }
    void Stop() override { ++m_nStops; }
    std::vector<std::vector<int>> m_aryWrites; // the value of each sector of each write
    int m_nStops = 0;
};

class TestCopy : public CDAC
{
public:
    void WriteInit() override { ++m_nInits; }
    void WritePercent(int nPercent) override { m_aryPercents.push_back(nPercent); }
    void WriteDone() override { ++m_nDones; }
    void OnSecureReadResult(SECURE_READ_RESULT& result) override { m_aryResults.push_back(result); }

    int m_nInits = 0;
    int m_nDones = 0;
    std::vector<int> m_aryPercents;
    std::vector<SECURE_READ_RESULT> m_aryResults;
};

class CopyTest : public ::testing::Test
{
protected:
    CopyTest() : m_CD(m_Info)
    {
        m_CD.SetMaxSektors(4);
        m_Copy.m_pCD = &m_CD;
        m_Copy.m_pSectorList = &m_List;
        m_Copy.m_pWaveSave = &m_Sink;
        m_Copy.m_bRunning = true;
        for (unsigned char*& pBuffer : m_Copy.m_pBuffers)
            pBuffer = new unsigned char[60 * LY_CD_SECTOR_BYTES]();
    }
    void UseSecureMode() { m_CD.m_DriveInfo.m_nMode = 1; }
    void AddSection(int nTrack, int nStart, int nSectors) { (void)m_List.Add({nTrack, nStart, nSectors}); }
    int SecureRead(int nStart, int nCount)
    {
        m_Copy.m_nSectionStart = 0;
        m_Copy.m_nSectionEnd = 1000;
        return m_Copy.SecureRead(nStart, nCount);
    }
    std::vector<int> GetWritten() const
    {
        std::vector<int> ary;
        for (const auto& write : m_Sink.m_aryWrites)
            ary.insert(ary.end(), write.begin(), write.end());
        return ary;
    }
    static std::vector<int> Range(int nFrom, int nCount)
    {
        std::vector<int> ary;
        for (int i = 0; i < nCount; ++i)
            ary.push_back((nFrom + i) & 255);
        return ary;
    }

    TDriveInfo m_Info;
    MemoryCD m_CD;
    RipSectorList m_List;
    MemorySink m_Sink;
    TestCopy m_Copy;
};
} // namespace

TEST_F(CopyTest, AnEmptyListTouchesNoDrive)
{
    m_Copy.Copy();
    EXPECT_EQ(1, m_Copy.m_nInits);
    EXPECT_EQ(1, m_Copy.m_nDones);
    EXPECT_EQ((std::vector<int>{0}), m_Copy.m_aryPercents);
    EXPECT_TRUE(m_CD.m_aryReads.empty());
    EXPECT_TRUE(m_Sink.m_aryWrites.empty());
}

TEST_F(CopyTest, BurstModeReadsEachBlockOnceAndWritesOneBlockBehind)
{
    AddSection(1, 10, 10);
    AddSection(2, 50, 4);
    m_Copy.Copy();
    EXPECT_EQ((std::vector<std::pair<int, int>>{{10, 4}, {14, 4}, {18, 2}, {50, 4}}), m_CD.m_aryReads);
    EXPECT_EQ((std::vector<std::vector<int>>{Range(10, 4), Range(14, 4), Range(18, 2), Range(50, 4)}),
              m_Sink.m_aryWrites);
    EXPECT_EQ((std::vector<int>{0, 28, 57, 71, 100}), m_Copy.m_aryPercents);
    EXPECT_EQ(0, m_Copy.Lasterror());
    EXPECT_EQ(0, m_Sink.m_nStops);
}

TEST_F(CopyTest, AnEmptySectionWritesTheBlockBeforeItOnceMore)
{
    AddSection(1, 10, 4);
    AddSection(2, 20, 0);
    m_Copy.Copy();
    EXPECT_EQ((std::vector<std::vector<int>>{Range(10, 4), Range(10, 4)}), m_Sink.m_aryWrites);
}

TEST_F(CopyTest, TwoFailedReadsOfABlockAreForgiven)
{
    AddSection(1, 0, 4);
    m_CD.m_mapBad[2] = 2;
    m_Copy.Copy();
    EXPECT_EQ(3U, m_CD.m_aryReads.size());
    EXPECT_EQ(Range(0, 4), GetWritten());
    EXPECT_EQ(0, m_Copy.Lasterror());
}

TEST_F(CopyTest, ASalvagedBlockGoesOutTwice)
{
    AddSection(1, 0, 24);
    m_CD.m_mapBad[5] = -1;
    m_Copy.Copy();
    // Block 4 to 7 fails; 4, 6 and 7 are salvaged and written at once, after the block before them, and the whole
    // buffer again as the previous block. Its last place holds what the buffer held before: nothing.
    const std::vector<std::vector<int>> aryExpected = {Range(0, 4),  {4, 6, 7},    {4, 6, 7, 0}, Range(8, 4),
                                                       Range(12, 4), Range(16, 4), Range(20, 4)};
    EXPECT_EQ(aryExpected, m_Sink.m_aryWrites);
    EXPECT_EQ(0, m_Copy.Lasterror());
}

TEST_F(CopyTest, AnUnreadableEndOfASectionIsForgiven)
{
    AddSection(1, 0, 12);
    for (int i = 4; i < 12; ++i)
        m_CD.m_mapBad[i] = -1;
    m_Copy.Copy();
    EXPECT_EQ(1, m_Copy.m_nDones);
    EXPECT_EQ(0, m_Copy.Lasterror());
    EXPECT_EQ(Range(0, 4), GetWritten());
}

TEST_F(CopyTest, FurtherFromTheEndAnUnsalvageableBlockEndsTheCopyWithItsError)
{
    AddSection(1, 0, 15);
    for (int i = 4; i < 15; ++i)
        m_CD.m_mapBad[i] = -1;
    m_Copy.Copy();
    EXPECT_EQ(1, m_Copy.m_nDones);
    EXPECT_EQ(2, m_Copy.Lasterror());
    EXPECT_EQ(0, m_Copy.Lasterror());
}

TEST_F(CopyTest, TheRunOutAheadOfADataTrackIsForgivenUpTo179Sectors)
{
    for (const int nSectors : {179, 180})
    {
        m_Sink.m_aryWrites.clear();
        m_List.RemoveAll(true);
        AddSection(1, 0, nSectors);
        TTrackListNode data{{2, 1000, 10, 2, 0, 1, 0}, nullptr, nullptr};
        TTrackListNode audio{{1, 0, nSectors, 2, 0, 0, 0}, nullptr, &data};
        data.pPrevious = &audio;
        m_CD.m_FirstTrack = m_CD.m_AktTrack = &audio;
        for (int i = 0; i < nSectors; ++i)
            m_CD.m_mapBad[i] = -1;
        m_Copy.Copy();
        EXPECT_EQ(nSectors == 179 ? 0 : 2, m_Copy.Lasterror()) << nSectors;
        m_CD.m_FirstTrack = m_CD.m_AktTrack = nullptr;
    }
}

TEST_F(CopyTest, AStoppedCopyWritesItsPendingBlockAndStopsTheOutput)
{
    class StoppingCopy : public TestCopy
    {
    public:
        void WritePercent(int nPercent) override
        {
            if (nPercent > 0)
                StopCopy();
        }
    } copy;
    AddSection(1, 0, 40);
    AddSection(2, 100, 4);
    copy.m_pCD = &m_CD;
    copy.m_pSectorList = &m_List;
    copy.m_pWaveSave = &m_Sink;
    copy.m_bRunning = true;
    for (unsigned char*& pBuffer : copy.m_pBuffers)
        pBuffer = new unsigned char[60 * LY_CD_SECTOR_BYTES]();
    copy.Copy();
    EXPECT_EQ(Range(0, 4), GetWritten());
    EXPECT_EQ(1, m_Sink.m_nStops);
    EXPECT_EQ(7, copy.Lasterror());
    EXPECT_EQ(1, copy.m_nDones);
}

TEST_F(CopyTest, AFatalConditionEndsTheCopyWithoutSalvage)
{
    class FatalCopy : public TestCopy
    {
    public:
        void OnSecureReadResult(SECURE_READ_RESULT& result) override
        {
            TestCopy::OnSecureReadResult(result);
            m_nLastError = CDAC_FATAL;
        }
    } copy;
    UseSecureMode();
    m_CD.m_mapUnsteady[5] = 3;
    AddSection(1, 0, 40);
    copy.m_pCD = &m_CD;
    copy.m_pSectorList = &m_List;
    copy.m_pWaveSave = &m_Sink;
    copy.m_bRunning = true;
    for (unsigned char*& pBuffer : copy.m_pBuffers)
        pBuffer = new unsigned char[60 * LY_CD_SECTOR_BYTES]();
    copy.Copy();
    EXPECT_EQ(9, copy.Lasterror());
    EXPECT_EQ(Range(0, 4), GetWritten()); // the block before the fatal one was still written
}

struct SECURE_CASE
{
    int nUnsteadyReads; // reads of one sector that differ from all others
    int nReturned;
    int nStatus; // 0: no report
    int nRetries;
    int nBlockReads;
};

// The first read and each comparison's read: n unsteady reads make n failed comparisons.
const SECURE_CASE s_arySecureCases[] = {
    {0, 1, 0, 0, 2}, {1, 2, 0, 0, 3}, {2, 3, 1, 2, 4}, {15, 16, 1, 15, 17}, {16, 17, 2, 16, 18}, {1000, 17, 2, 16, 18},
};

TEST_F(CopyTest, SecureReadsAreComparedUpToSeventeenTimes)
{
    for (const SECURE_CASE& row : s_arySecureCases)
    {
        m_CD.m_aryReads.clear();
        m_Copy.m_aryResults.clear();
        m_Copy.m_nReReads = 0;
        m_CD.m_mapUnsteady[21] = row.nUnsteadyReads;
        EXPECT_EQ(row.nReturned, SecureRead(20, 4)) << row.nUnsteadyReads;
        EXPECT_EQ(row.nBlockReads, static_cast<int>(m_CD.m_aryReads.size())) << row.nUnsteadyReads;
        EXPECT_EQ(row.nReturned - 1, m_Copy.m_nReReads);
        ASSERT_EQ(row.nStatus == 0 ? 0U : 1U, m_Copy.m_aryResults.size()) << row.nUnsteadyReads;
        if (row.nStatus == 0)
            continue;
        const SECURE_READ_RESULT& result = m_Copy.m_aryResults[0];
        EXPECT_EQ(row.nStatus, result.nStatus);
        EXPECT_EQ(row.nRetries, result.nRetries);
        EXPECT_EQ(4, result.nSectors);
        EXPECT_EQ(20, result.nOffset);
        EXPECT_EQ(1, result.nMismatchedSectors);
    }
}

TEST_F(CopyTest, AShortBlockDefeatsTheCacheByAReadAtTheSectionsStart)
{
    EXPECT_EQ(1, SecureRead(20, 3));
    EXPECT_EQ((std::vector<std::pair<int, int>>{{20, 3}, {0, 1}, {20, 3}}), m_CD.m_aryReads);
}

TEST_F(CopyTest, AFirstReadThatDeliversNothingIsStatusFour)
{
    for (int i = 0; i < 60; ++i)
        m_CD.m_mapBad[i] = -1;
    EXPECT_EQ(0, SecureRead(20, 4));
    ASSERT_EQ(1U, m_Copy.m_aryResults.size());
    EXPECT_EQ(4, m_Copy.m_aryResults[0].nStatus);
    EXPECT_EQ(4, m_Copy.m_aryResults[0].nSectors);
    EXPECT_EQ(0, m_Copy.m_aryResults[0].nRetries);
    EXPECT_EQ(2, m_Copy.m_nLastError);
}

TEST_F(CopyTest, AShortFirstReadIsStatusThreeWithTheMissingSectors)
{
    m_CD.m_mapBad[21] = -1;
    EXPECT_EQ(0, SecureRead(20, 4));
    ASSERT_EQ(1U, m_Copy.m_aryResults.size());
    EXPECT_EQ(3, m_Copy.m_aryResults[0].nStatus);
    EXPECT_EQ(1, m_Copy.m_aryResults[0].nSectors);
    EXPECT_EQ(0, m_Copy.m_nLastError);
}

TEST_F(CopyTest, SalvageJumpsOverABigSpotAndDoublesTheJump)
{
    for (int i = 0; i < 45; ++i)
        m_CD.m_mapBad[i] = -1;
    std::vector<unsigned int> aryBuffer(60 * LY_CD_SECTOR_BYTES / 4);
    // Ten single bad sectors, the eleventh with a jump of 11, the next with one of 23; then 46 to 49 are good.
    EXPECT_EQ(50 - 10 - 12 - 24, m_Copy.ReadCDSkipErrors(0, 50, aryBuffer.data(), 1000));
    EXPECT_EQ(2, m_Copy.m_nLastError);
    EXPECT_EQ(46, m_CD.m_aryReads[12].first);
    EXPECT_EQ(46, reinterpret_cast<unsigned char*>(aryBuffer.data())[0]);
}

TEST_F(CopyTest, SalvageGivesUpBeyondTheAllowedErrors)
{
    for (const int i : {1, 3, 5, 7})
        m_CD.m_mapBad[i] = -1;
    std::vector<unsigned int> aryBuffer(60 * LY_CD_SECTOR_BYTES / 4);
    EXPECT_EQ(0, m_Copy.ReadCDSkipErrors(0, 10, aryBuffer.data(), 3));
    EXPECT_EQ(6, m_Copy.ReadCDSkipErrors(0, 10, aryBuffer.data(), 4));
    EXPECT_EQ(0, m_Copy.ReadCDSkipErrors(0, 0, aryBuffer.data(), 3));
    EXPECT_EQ(-5, m_Copy.ReadCDSkipErrors(0, -5, aryBuffer.data(), 3));
}

TEST_F(CopyTest, ReadMultiSplitsAt27SectorsAndSalvagesIntoTheStartOfTheBuffer)
{
    std::vector<unsigned char> aryBuffer(60 * LY_CD_SECTOR_BYTES);
    EXPECT_EQ(60, m_Copy.ReadMulti(0, 60, aryBuffer.data()));
    EXPECT_EQ((std::vector<std::pair<int, int>>{{0, 27}, {27, 27}, {54, 6}}), m_CD.m_aryReads);
    EXPECT_EQ(0, m_Copy.ReadMulti(0, 0, aryBuffer.data()));
    m_CD.m_mapBad[30] = -1;
    EXPECT_EQ(59, m_Copy.ReadMulti(0, 60, aryBuffer.data()));
    EXPECT_EQ(27, aryBuffer[0]);
}

TEST_F(CopyTest, MatchesCountDifferingSectorsButTheLast)
{
    std::vector<unsigned char> a(3 * LY_CD_SECTOR_BYTES);
    std::vector<unsigned char> b = a;
    int nMismatched = 77;
    const int nBytes = static_cast<int>(a.size());
    EXPECT_TRUE(CDAC::GetBufferMatch(a.data(), b.data(), nBytes, false, nMismatched));
    EXPECT_EQ(77, nMismatched);
    EXPECT_TRUE(CDAC::GetBufferMatch(a.data(), b.data(), nBytes, true, nMismatched));
    EXPECT_EQ(0, nMismatched);
    b.back() = 1;
    EXPECT_FALSE(CDAC::GetBufferMatch(a.data(), b.data(), nBytes, true, nMismatched));
    EXPECT_EQ(0, nMismatched);
    b[0] = b[LY_CD_SECTOR_BYTES] = 1;
    EXPECT_FALSE(CDAC::GetBufferMatch(a.data(), b.data(), nBytes, true, nMismatched));
    EXPECT_EQ(2, nMismatched);
}

TEST(RipSectorListTest, AnIndexOutsideIsAnAnswer)
{
    RipSectorList list;
    (void)list.Add({3, 100, 10});
    (void)list.Add({4, 50, 5});
    EXPECT_EQ(100, list.GetStartSector(0));
    EXPECT_EQ(5, list.GetNumSectors(1));
    EXPECT_EQ(4, list.GetTrackNum(1));
    for (const int nIndex : {-1, 2})
    {
        EXPECT_EQ(-1, list.GetStartSector(nIndex));
        EXPECT_EQ(-1, list.GetNumSectors(nIndex));
        EXPECT_EQ(-1, list.GetTrackNum(nIndex));
    }
    EXPECT_EQ(15, list.GetTotalSectors(0));
    EXPECT_EQ(5, list.GetRemainingSectors(1));
    EXPECT_EQ(0, list.GetTotalSectors(2));
}
