// What goes wrong with a drive, when its profile says so.

#include "ProfiledDiscs.h"
#include <set>
#include <thread>

using DriveFaultsTest = ProfiledDiscTest;

TEST_F(DriveFaultsTest, AnUnreadableSectorFailsEveryReadThatTouchesIt)
{
    Open("Unreadable = 100-101\n");
    EXPECT_TRUE(Read(99));
    EXPECT_FALSE(Read(100));
    ExpectSense(3, 0x11, 5);
    EXPECT_FALSE(Read(90, 27));
    EXPECT_FALSE(Read(101));
    EXPECT_TRUE(Read(102));
    EXPECT_EQ(GetTruth(102), m_Data);
    EXPECT_EQ(3, m_pDrive->GetStatistics().m_nFailed);
}

TEST_F(DriveFaultsTest, EveryNthReadFailsAndTheOthersAreTrue)
{
    Open("Unreadable = 100, every 3\n");
    for (int n = 1; n <= 9; ++n)
    {
        EXPECT_EQ(n % 3 != 0, Read(100)) << n;
        EXPECT_EQ(n % 3 != 0 ? GetTruth(100) : Bytes(LY_CD_SECTOR_BYTES), m_Data);
        EXPECT_TRUE(Read(50));
    }
}

TEST_F(DriveFaultsTest, AProbabilityIsKeptAndRepeatsWithItsSeed)
{
    std::vector<std::vector<bool>> aryRuns;
    for (const char* pSeed : {"1", "1", "2"})
    {
        Open(std::string("Unreadable = 0-399, 30%\nSeed = ") + pSeed);
        aryRuns.emplace_back();
        for (int n = 0; n < 1000; ++n)
            aryRuns.back().push_back(Read(n % 400));
    }
    EXPECT_EQ(aryRuns[0], aryRuns[1]);
    EXPECT_NE(aryRuns[0], aryRuns[2]);
    const auto nGood = std::count(aryRuns[0].begin(), aryRuns[0].end(), true);
    EXPECT_NEAR(700, static_cast<double>(nGood), 60); // four standard deviations
}

TEST_F(DriveFaultsTest, WhatTheCacheHoldsIsReadableStill)
{
    Open("Buffer = 64\nUnreadable = 10, every 2\n");
    EXPECT_TRUE(Read(10));
    EXPECT_TRUE(Read(10)); // not from the disc
    EXPECT_TRUE(Read(200, 27));
    EXPECT_FALSE(Read(10));
}

TEST_F(DriveFaultsTest, SectorsThatDifferComeOtherwiseOnEveryReadOfTheDisc)
{
    Open("Differs = 20-21\n");
    std::set<Bytes> setSeen;
    for (int n = 0; n < 50; ++n)
    {
        ASSERT_TRUE(Read(19, 3));
        EXPECT_EQ(GetTruth(19), Bytes(m_Data.begin(), m_Data.begin() + 2352));
        setSeen.insert(Bytes(m_Data.begin() + 2352, m_Data.begin() + 2 * 2352));
        EXPECT_EQ(2, GetLast().m_nWrongSectors);
    }
    EXPECT_EQ(50U, setSeen.size());
    EXPECT_EQ(0U, setSeen.count(GetTruth(20)));
    EXPECT_EQ(100, m_pDrive->GetStatistics().m_nWrongSectors);
}

TEST_F(DriveFaultsTest, TheCacheGivesWrongBytesAsItGotThem)
{
    Open("Buffer = 64\nDiffers = 20-21\n");
    ASSERT_TRUE(Read(20));
    const Bytes first = m_Data;
    ASSERT_TRUE(Read(20));
    EXPECT_EQ(first, m_Data);
    EXPECT_EQ(1, GetLast().m_nWrongSectors);
    ASSERT_TRUE(Read(200, 27));
    ASSERT_TRUE(Read(20));
    EXPECT_NE(first, m_Data);
}

TEST_F(DriveFaultsTest, JitterShiftsAReadAsAWholeByTrueNeighbours)
{
    Open("Jitter = 100-150, 12\nSeed = 5\n");
    const std::string strAll = GetContent(1);
    std::set<int> setShifts;
    for (int n = 0; n < 200; ++n)
    {
        ASSERT_TRUE(Read(110, 3));
        int nFound = 1000;
        for (int nShift = -12; nShift <= 12; ++nShift)
        {
            const auto pStart = strAll.begin() + 110 * 2352 + nShift * 4;
            if (Bytes(pStart, pStart + 3 * 2352) == m_Data)
                nFound = nShift;
        }
        ASSERT_NE(1000, nFound);
        setShifts.insert(nFound);
        EXPECT_EQ(nFound != 0 ? 3 : 0, GetLast().m_nWrongSectors);
    }
    EXPECT_EQ(-12, *setShifts.begin());
    EXPECT_EQ(12, *setShifts.rbegin());
    ASSERT_TRUE(Read(160, 3));
    EXPECT_EQ(GetTruth(160, 3), m_Data);
}

TEST_F(DriveFaultsTest, JitterAtTheEdgesOfTheDiscBringsSilence)
{
    Open("Jitter = 0-399, 588\n");
    const std::string strAll = std::string(150 * 2352, '\0') + GetContent(1) + std::string(2352, '\0');
    for (int n = 0; n < 20; ++n)
        for (const int nLBA : {0, SECTORS - 1})
        {
            ASSERT_TRUE(Read(nLBA));
            const std::string strGot(m_Data.begin(), m_Data.end());
            bool bFound = false;
            for (int nShift = -588; nShift <= 588; ++nShift)
                bFound |= strAll.compare(static_cast<size_t>((nLBA + 150) * 2352 + nShift * 4), 2352, strGot) == 0;
            EXPECT_TRUE(bFound) << nLBA;
        }
}

TEST_F(DriveFaultsTest, SilentErrorsSpoilSoManyBytesAndSayNothing)
{
    Open("SilentErrors = 30-39, 4\nSilentErrors = 50, 2352\nSilentErrors = 60-159, 1, 50%\n");
    ASSERT_TRUE(Read(35));
    Bytes truth = GetTruth(35);
    int nWrong = 0;
    for (size_t n = 0; n < truth.size(); ++n)
        nWrong += truth[n] != m_Data[n] ? 1 : 0;
    EXPECT_EQ(4, nWrong);
    const Bytes first = m_Data;
    ASSERT_TRUE(Read(35));
    EXPECT_NE(first, m_Data);
    ASSERT_TRUE(Read(50));
    truth = GetTruth(50);
    for (size_t n = 0; n < truth.size(); ++n)
        ASSERT_NE(truth[n], m_Data[n]) << n;
    ASSERT_TRUE(Read(60, 100));
    EXPECT_NEAR(50, GetLast().m_nWrongSectors, 20); // four standard deviations
}

TEST_F(DriveFaultsTest, AHangHoldsItsCommandAndNobodyElse)
{
    Open("Hang = 2, 0.6\n");
    ASSERT_TRUE(TestUnitReady());
    bool bHung = false;
    std::thread other([&] { bHung = TestUnitReady(); });
    while (m_pDrive->GetStatistics().m_nCommands < 2)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const auto start = std::chrono::steady_clock::now();
    std::string strError;
    EXPECT_TRUE(m_pDrive->Acquire(strError));
    EXPECT_EQ("RONDEL", m_pDrive->GetDescription().m_strVendor);
    m_pDrive->Release();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(400));
    other.join();
    EXPECT_TRUE(bHung);
    EXPECT_GE(m_Took.count(), 590);
}

TEST_F(DriveFaultsTest, AHangEndsWithTheTimeOutOfItsCommand)
{
    Open("Hang = read 2, 600\n");
    ASSERT_TRUE(Read(1));
    EXPECT_FALSE(Read(1, 1, 80));
    ExpectSense(4, 0x08, 1);
    EXPECT_GE(m_Took.count(), 80);
    ASSERT_TRUE(Read(1)); // the drive was reset
    EXPECT_LT(GetLastMs(), 1);
}

TEST_F(DriveFaultsTest, UnitAttentionIsToldToTheNextCommandsThatCanHearIt)
{
    Open("UnitAttention = 2, 6/29/00, 2\nUnitAttention = read 3\n");
    ASSERT_TRUE(TestUnitReady());
    EXPECT_TRUE(Send({CDB_INQUIRY, 0, 0, 0, 36, 0}, 36)); // answers whatever happens
    EXPECT_FALSE(TestUnitReady());
    ExpectSense(6, 0x29, 0);
    EXPECT_FALSE(Read(1));
    ExpectSense(6, 0x29, 0);
    EXPECT_TRUE(Read(1));
    EXPECT_FALSE(Read(1));
    ExpectSense(6, 0x28, 0);
    EXPECT_TRUE(Read(1));
}

TEST_F(DriveFaultsTest, ARemovedDriveFailsEveryCommandUntilItIsAcquiredAnew)
{
    Open("Remove = read 2\nHang = read 3, 600\n");
    EXPECT_TRUE(Read(1));
    EXPECT_FALSE(Read(1));
    ExpectSense(4, 0x05, 0);
    EXPECT_FALSE(Send({CDB_INQUIRY, 0, 0, 0, 36, 0}, 36));
    ExpectSense(4, 0x05, 0);
    EXPECT_FALSE(Read(1)); // what is not there does not hang
    EXPECT_EQ(0, m_pDrive->GetStateA());
    EXPECT_EQ(0, m_pDrive->GetStateB());
    EXPECT_TRUE(m_pDrive->GetStatistics().m_bRemoved);
    std::string strError;
    EXPECT_FALSE(m_pDrive->Acquire(strError));
    EXPECT_NE(std::string::npos, strError.find("was removed"));
    m_pDrive->Release();
    EXPECT_TRUE(m_pDrive->Acquire(strError));
    EXPECT_TRUE(Read(1));
}

TEST_F(DriveFaultsTest, ADiscIsChangedBehindALockedDoorAndAFullCache)
{
    WriteDisc("other", 5000);
    Open("Buffer = 64\nChangeDisc = read 3, other.cue\n");
    ASSERT_TRUE(Send({CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 1, 0}));
    ASSERT_TRUE(Read(10));
    ASSERT_TRUE(Read(10));
    EXPECT_EQ(GetTruth(10), m_Data);
    EXPECT_FALSE(Read(10));
    ExpectSense(6, 0x28, 0);
    ASSERT_TRUE(Read(10));
    EXPECT_EQ(GetTruth(10, 1, 5000), m_Data);
    EXPECT_FALSE(Send({CDB_START_STOP_UNIT, 0, 0, 0, 2, 0})); // the door is locked as before
    m_pDrive->Release();
    std::string strError;
    ASSERT_TRUE(m_pDrive->Acquire(strError)); // all begins again, with the first disc
    ASSERT_TRUE(Read(10));
    EXPECT_EQ(GetTruth(10), m_Data);
}

TEST_F(DriveFaultsTest, ADiscThatCannotBeOpenedLeavesNoDiscAndSaysWhy)
{
    (void)m_Folder.Write("broken.cue", "FILE \"nothing.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    Open("ChangeDisc = 1, broken.cue\n");
    EXPECT_FALSE(Read(10));
    ExpectSense(2, 0x3A, 1);
    EXPECT_NE(std::string::npos, m_pDrive->GetReadErrorText().find("broken.cue"));
}

TEST_F(DriveFaultsTest, ARateOfFailureComesWithItsSense)
{
    Open("FailRate = 20%, 4/44/00\nSeed = 3\n");
    int nFailed = 0;
    for (int n = 0; n < 500; ++n)
        if (!TestUnitReady())
        {
            ++nFailed;
            ExpectSense(4, 0x44, 0);
        }
    EXPECT_NEAR(100, nFailed, 36); // four standard deviations
    Open("FailRate = read 100%, 3/11/05\n");
    EXPECT_TRUE(TestUnitReady());
    EXPECT_FALSE(Read(1));
    ExpectSense(3, 0x11, 5);
}

TEST_F(DriveFaultsTest, TheHistoryTellsEachCommand)
{
    Open("Unreadable = 5\nBuffer = 64\n");
    (void)TestUnitReady();
    (void)Read(3, 2);
    (void)Read(4, 2);
    (void)Read(3);
    const std::vector<PROFILED_COMMAND> history = m_pDrive->GetHistory();
    ASSERT_EQ(4U, history.size());
    EXPECT_EQ(1, history[0].m_nNumber);
    EXPECT_EQ(CDB_TEST_UNIT_READY, history[0].m_nOpcode);
    EXPECT_EQ(3, history[1].m_nLBA);
    EXPECT_EQ(2, history[1].m_nSectors);
    EXPECT_TRUE(history[1].m_Sense.IsGood());
    EXPECT_EQ(SENSE_MEDIUM_ERROR, history[2].m_Sense.m_nKey);
    EXPECT_TRUE(history[3].m_bCached);
}
