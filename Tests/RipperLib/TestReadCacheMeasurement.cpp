#include "FakeDisc.h"
#include "ReadCacheMeasurementDetails.h"
#include "RecordingTools.h"
#include "THDriveInterface.h"
#include <gtest/gtest.h>
#include <thread>
#include <vector>

struct READ
{
    int nSector;
    int nCount;
    bool operator==(const READ& other) const { return nSector == other.nSector && nCount == other.nCount; }
};

static std::ostream& operator<<(std::ostream& out, const READ& read)
{
    return out << "{" << read.nSector << ", " << read.nCount << "}";
}

// A drive with a clock of its own. Blocks of up to m_nCacheSectors come the second time from the cache.
class TimedDrive final : public ReadCacheMeasurement::Drive
{
public:
    explicit TimedDrive(int nCacheSectors) : m_nCacheSectors(nCacheSectors) {}

    bool Read(int nSector, int nCount) override
    {
        m_Reads.push_back({nSector, nCount});
        if (static_cast<int>(m_Reads.size()) == m_nFailingRead)
            return false;
        if (static_cast<int>(m_Reads.size()) == m_nCancelAfterRead)
            m_bCancelled = true;
        bool bAgain = nSector == m_nLastSector && nCount == m_nLastCount && nCount <= m_nCacheSectors;
        m_nNow += bAgain ? m_nHitMs : m_nMissMs;
        m_nLastSector = nSector;
        m_nLastCount = nCount;
        return true;
    }
    unsigned int Now() override { return m_nNow; }
    bool GetCancelled() override { return m_bCancelled; }

    int m_nCacheSectors;
    unsigned int m_nMissMs = 400;
    unsigned int m_nHitMs = 100;
    unsigned int m_nNow = 0xFFFFFF00; // wraps on the way
    int m_nFailingRead = 0;           // counted from 1
    int m_nCancelAfterRead = 0;
    bool m_bCancelled = false;
    std::vector<READ> m_Reads;

private:
    int m_nLastSector = -1;
    int m_nLastCount = -1;
};

static int Measure(TimedDrive& drive, unsigned int nBufferBytes)
{
    std::atomic<int> nResult{0};
    ReadCacheMeasurement(drive, nResult).Run(nBufferBytes);
    return nResult;
}

// 16 sectors exactly: the search runs between 2 and 16.
static constexpr unsigned int SMALL_BUFFER = 16 * 2352;

TEST(ReadCacheSearch, FindsTheLargestBlockThatFits)
{
    TimedDrive drive(6);
    EXPECT_EQ(6 * 2352, Measure(drive, SMALL_BUFFER));
    const std::vector<READ> expected = {
        {100, 2}, {100, 2}, {116, 16}, // the low bound itself, first; then the reads that push it out
        {100, 9}, {100, 9},            // (2 + 16) / 2: does not fit
        {100, 5}, {100, 5}, {109, 9},  // (2 + 9) / 2
        {100, 7}, {100, 7},            // (5 + 9) / 2: does not fit
        {100, 6}, {100, 6}, {107, 7},  // (5 + 7) / 2; then (6 + 7) / 2 is the low bound
    };
    EXPECT_EQ(expected, drive.m_Reads);
}

TEST(ReadCacheSearch, LowBoundThatDoesNotFitFindsNothing)
{
    TimedDrive drive(1);
    EXPECT_EQ(0, Measure(drive, SMALL_BUFFER));
    EXPECT_EQ((std::vector<READ>{{100, 2}, {100, 2}}), drive.m_Reads);
}

TEST(ReadCacheSearch, RatioIsAnIntegerOfAtLeastFour)
{
    TimedDrive three(100);
    three.m_nMissMs = 399; // 399 / 100 = 3
    EXPECT_EQ(0, Measure(three, SMALL_BUFFER));
    TimedDrive four(100);
    EXPECT_EQ(15 * 2352, Measure(four, SMALL_BUFFER));
}

TEST(ReadCacheSearch, SecondReadTakesAtLeastOneTick)
{
    TimedDrive drive(100);
    drive.m_nHitMs = 0;
    drive.m_nMissMs = 4;
    EXPECT_EQ(15 * 2352, Measure(drive, SMALL_BUFFER));
    TimedDrive three(100);
    three.m_nHitMs = 0;
    three.m_nMissMs = 3;
    EXPECT_EQ(0, Measure(three, SMALL_BUFFER));
}

struct BOUND_CASE
{
    const char* pName;
    unsigned int nBufferBytes;
    int nLow;  // the first block that is tested
    int nHigh; // the first block that pushes out
};

static const BOUND_CASE s_aryBoundCases[] = {
    {"SixteenKiB", 16384, 0, 7},                   // 6.97 sectors
    {"WholeSectors", 2352 * 80, 10, 80},           //
    {"RoundedUpToSectors", 2352 * 80 + 1, 10, 81}, // an eighth, truncated
    {"LargestEighth", 2352 * 1080, 135, 1080},     // 2,540,160
    {"OneSectorMore", 2352 * 1080 + 1, 135, 1081}, // 2,542,512 is above 2,540,167
    {"EightMiB", 8 * 1048576, 135, 3567},          // 3566.6 sectors
    {"LargestField", 65535U * 1024, 135, 28533},   //
};

class ReadCacheBounds : public testing::TestWithParam<BOUND_CASE>
{
};

TEST_P(ReadCacheBounds, FollowFromTheBuffer)
{
    const BOUND_CASE& bound = GetParam();
    TimedDrive drive(1000000);
    (void)Measure(drive, bound.nBufferBytes);
    ASSERT_LE(2U, drive.m_Reads.size());
    EXPECT_EQ((READ{100, bound.nLow}), drive.m_Reads[0]);
    EXPECT_EQ((READ{100, bound.nLow}), drive.m_Reads[1]);
    if (bound.nLow > 0)
    {
        EXPECT_EQ((READ{100 + bound.nHigh, bound.nHigh}), drive.m_Reads[2]);
    }
}

INSTANTIATE_TEST_SUITE_P(Buffers, ReadCacheBounds, testing::ValuesIn(s_aryBoundCases),
                         [](const auto& row) { return row.param.pName; });

TEST(ReadCacheSearch, FailedReadKeepsWhatWasProven)
{
    // The reads of the first test above: which of them fails, and what is known by then.
    const int aryProven[] = {0, 0, 2, 2, 2, 2, 2, 5, 5, 5, 5, 5, 6};
    for (int nRead = 1; nRead <= 13; nRead++)
    {
        TimedDrive drive(6);
        drive.m_nFailingRead = nRead;
        EXPECT_EQ(aryProven[nRead - 1] * 2352, Measure(drive, SMALL_BUFFER)) << nRead;
        EXPECT_EQ(nRead, static_cast<int>(drive.m_Reads.size()));
    }
}

TEST(ReadCacheSearch, CancelIsSeenAtEachPassAndBehindTheFirstRead)
{
    TimedDrive before(6);
    before.m_bCancelled = true;
    EXPECT_EQ(0, Measure(before, SMALL_BUFFER));
    EXPECT_TRUE(before.m_Reads.empty());

    TimedDrive behindFirst(6);
    behindFirst.m_nCancelAfterRead = 1;
    EXPECT_EQ(0, Measure(behindFirst, SMALL_BUFFER));
    EXPECT_EQ(1U, behindFirst.m_Reads.size());

    TimedDrive behindSecond(6);
    behindSecond.m_nCancelAfterRead = 2;
    EXPECT_EQ(2 * 2352, Measure(behindSecond, SMALL_BUFFER)); // the pass ends as it would have
    EXPECT_EQ(3U, behindSecond.m_Reads.size());
}

// ---- On a drive

class ReadCache : public testing::Test
{
protected:
    void SetUp() override
    {
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
    }

    void OpenDrive(unsigned int nBufferKiB, bool bValid = true)
    {
        DSENSEMASK mask = FakeDisc::DefaultMask();
        MMCPut16(mask.m_CapabilitiesPage + 12, nBufferKiB);
        mask.m_bCapabilitiesValid = bValid;
        m_pFake->AddDrive(FakeDisc::DRIVE, FakeDisc::VENDOR, FakeDisc::MODEL, FakeDisc::Pack(mask));
        ASSERT_TRUE(m_Drive.Open(FakeDisc::DRIVE, 2));
    }

    IFakeDisc* m_pFake = nullptr;
    RecordingTools m_Tools;
    CTHDriveInterface m_Drive;
};

TEST_F(ReadCache, TestReadGoesInPiecesOf27)
{
    OpenDrive(512);
    EXPECT_TRUE(m_Drive.ReadCDDATest(0x01F0, 60));
    ASSERT_EQ(3, m_pFake->GetCommandCount());
    const unsigned char expected[3][12] = {
        {0xBE, 4, 0, 0, 0x01, 0xF0, 0, 0, 27, 0xF0, 0, 0},
        {0xBE, 4, 0, 0, 0x02, 0x0B, 0, 0, 27, 0xF0, 0, 0},
        {0xBE, 4, 0, 0, 0x02, 0x26, 0, 0, 6, 0xF0, 0, 0},
    };
    for (int i = 0; i < 3; i++)
    {
        FAKE_COMMAND command;
        ASSERT_TRUE(m_pFake->GetCommand(i, command));
        EXPECT_EQ(12, command.nCDBBytes);
        EXPECT_EQ(0, memcmp(expected[i], command.cdb, 12)) << i;
        EXPECT_EQ(DRIVE_TRANSFER_IN, command.eType);
        EXPECT_EQ(63504, command.nDataBytes);
        EXPECT_EQ(10000, command.nTimeoutMs);
    }
}

TEST_F(ReadCache, TestReadUsesAllFourAddressBytes)
{
    OpenDrive(512);
    m_pFake->Answer(CDB_READ_CD, "", 0);
    EXPECT_TRUE(m_Drive.ReadCDDATest(0x12345678, 1));
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommand(0, command));
    EXPECT_EQ(0x12345678U, MMCGet32(command.cdb + 2));
}

TEST_F(ReadCache, TestReadOfNothingIsTrueAtOnce)
{
    OpenDrive(512);
    EXPECT_TRUE(m_Drive.ReadCDDATest(50, 0));
    EXPECT_TRUE(m_Drive.ReadCDDATest(50, -5));
    EXPECT_EQ(0, m_pFake->GetCommandCount());
}

TEST_F(ReadCache, TestReadEndsWithTheFirstFailedPiece)
{
    OpenDrive(512);
    m_pFake->FailSector(30, -1);
    EXPECT_FALSE(m_Drive.ReadCDDATest(0, 81));
    EXPECT_EQ(1 + 2, m_pFake->CountCommands(CDB_READ_CD)); // the second piece twice
}

TEST_F(ReadCache, BufferOf15KiBIsNotMeasured)
{
    OpenDrive(15);
    EXPECT_EQ(0, m_Drive.GetReadCacheSize());
    EXPECT_EQ(0, m_pFake->GetCommandCount());
    EXPECT_FALSE(m_Drive.GetReturnValue());
}

TEST_F(ReadCache, UnknownBufferIsNotMeasured)
{
    OpenDrive(512, false);
    EXPECT_EQ(0, m_Drive.GetReadCacheSize());
    EXPECT_EQ(0, m_pFake->GetCommandCount());
}

TEST_F(ReadCache, FailedSpinUpEndsTheMeasurement)
{
    OpenDrive(512);
    m_pFake->FailSector(50, -1);
    m_pFake->FailNext(CDB_START_STOP_UNIT, -1, SENSE_ILLEGAL_REQUEST); // is ignored
    EXPECT_EQ(0, m_Drive.GetReadCacheSize());
    EXPECT_FALSE(m_Drive.GetReturnValue());
    EXPECT_EQ(2, m_pFake->CountCommands(CDB_START_STOP_UNIT));
    EXPECT_EQ(2, m_pFake->CountCommands(CDB_READ_CD));
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommand(0, command));
    const unsigned char start[6] = {0x1B, 0, 0, 0, 0, 0};
    EXPECT_EQ(6, command.nCDBBytes);
    EXPECT_EQ(0, memcmp(start, command.cdb, sizeof start));
    EXPECT_EQ(0, command.nDataBytes);
    EXPECT_FALSE(command.bHasData);
    EXPECT_EQ(10000, command.nTimeoutMs);
    EXPECT_FALSE(pthread_equal(pthread_self(), command.thread));
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_READ_CD, 0, command));
    EXPECT_EQ(50U, MMCGet32(command.cdb + 2));
    EXPECT_EQ(27, command.cdb[8]);
}

TEST_F(ReadCache, IsMeasuredOnADrive)
{
    OpenDrive(125); // 54.4 sectors: the search runs between 6 and 55
    m_pFake->SimulateCache(20, 150, 0);
    EXPECT_EQ(20 * 2352, m_Drive.GetReadCacheSize());
    EXPECT_EQ(20 * 2352, m_Drive.m_nReadCacheSize);
    EXPECT_TRUE(m_Drive.GetReturnValue());
}

TEST_F(ReadCache, SlowDriveWithoutACacheMeasuresNothing)
{
    OpenDrive(125);
    m_pFake->SimulateCache(1, 60, 60);
    EXPECT_EQ(0, m_Drive.GetReadCacheSize());
}

TEST_F(ReadCache, WaitMessageIsShownMeanwhile)
{
    m_Tools.m_strTranslationMark = L"~";
    OpenDrive(15);
    EXPECT_EQ(0, m_Drive.GetReadCacheSize());
    ASSERT_EQ(1U, m_Tools.m_WaitMessages.size());
    EXPECT_EQ(L"~Determining CD drive cache size...", m_Tools.m_WaitMessages[0].strText);
    EXPECT_EQ(210, m_Tools.m_WaitMessages[0].nDelayMS);
    EXPECT_TRUE(m_Tools.m_WaitMessages[0].bCancelButton);
    EXPECT_EQ(1, m_Tools.m_nClosedWaitMessages);
}

TEST_F(ReadCache, CancelledMeasurementIsAbandoned)
{
    OpenDrive(512);
    m_pFake->CloseGate();
    m_Tools.m_nPollsUntilCancel = 2;
    // The measurement stays in its first read until it has been cancelled: that read is not interrupted.
    std::thread opener(
        [this]
        {
            while (!m_Drive.GetCancel())
                std::this_thread::yield();
            m_pFake->OpenGate();
        });
    EXPECT_EQ(-1, m_Drive.GetReadCacheSize());
    opener.join();
    EXPECT_EQ(-1, m_Drive.m_nReadCacheSize);
    EXPECT_FALSE(m_Drive.GetRunning());
    EXPECT_EQ(1, m_pFake->CountCommands(CDB_READ_CD)); // the spin-up; the search saw the cancel
    EXPECT_EQ(1, m_Tools.m_nClosedWaitMessages);
}

TEST_F(ReadCache, CancelInTheLastMomentStillAbandons)
{
    OpenDrive(15);
    m_Tools.m_nPollsUntilCancel = 0;
    EXPECT_EQ(-1, m_Drive.GetReadCacheSize());
    EXPECT_EQ(-1, m_Drive.m_nReadCacheSize);
}

TEST_F(ReadCache, NextMeasurementStartsAfresh)
{
    OpenDrive(15);
    m_Drive.m_nReadCacheSize = 4711;
    EXPECT_EQ(0, m_Drive.GetReadCacheSize());
}

TEST_F(ReadCache, DestructorWaitsForARunningMeasurement)
{
    m_pFake->CloseGate();
    std::thread opener(
        [this]
        {
            EXPECT_TRUE(m_pFake->WaitForHeldReads(1, 10000));
            m_pFake->OpenGate();
        });
    {
        CTHDriveInterface drive;
        ASSERT_TRUE(drive.Open(FakeDisc::DRIVE, 2));
        ASSERT_TRUE(drive.Start(0, false));
        opener.join();
    }
    EXPECT_EQ(0, m_pFake->GetUsers(FakeDisc::DRIVE));
    EXPECT_FALSE(m_pFake->WaitForHeldReads(1, 0));
}
