#include "CDRipper.h"
#include "FakeDisc.h"
#include <gtest/gtest.h>
#include <vector>

namespace
{
class RecordingOwner : public IRipOwner
{
public:
    void Post(int nMessage, int nFirst, int nSecond, int nThird) override
    {
        m_aryPosts.push_back({nMessage, nFirst, nSecond, nThird});
    }
    std::vector<std::vector<int>> m_aryPosts;
};

// A command layer whose reads leave an error, which READ CD itself never does.
class FailingCD : public CSCSICD
{
public:
    FailingCD(CTHDriveInterface* pDrive, TDriveInfo& info, int nFailures, int nSleepMS)
        : CSCSICD(pDrive, info, FakeDisc::DRIVE), m_nFailures(nFailures), m_nSleepMS(nSleepMS)
    {
    }
    void ReadCDDA(int nSector, int, void*) override
    {
        m_nSector = nSector;
        ++m_nReads;
        Sleep(static_cast<unsigned int>(m_nSleepMS));
        if (m_nReads <= m_nFailures)
            m_nLastError = 40 + m_nReads;
    }
    int m_nFailures;
    int m_nSleepMS;
    int m_nReads = 0;
    int m_nSector = 0;
};

// A copy that ends at once with an error, or with none.
class EmptyCopy : public CDAC
{
public:
    explicit EmptyCopy(int nError) : m_nError(nError) { m_bRunning = true; }
    void WriteInit() override { m_nLastError = m_nError; }
    void OnSecureReadResult(SECURE_READ_RESULT&) override {}
    int m_nError;
};

// An output that tells, when it goes, which marks of a rip are still set.
class WatchingOutput : public CWaveSave
{
public:
    WatchingOutput(const MyReader& reader, bool& bSeen) : m_Reader(reader), m_bSeen(bSeen) {}
    ~WatchingOutput() override { m_bSeen = m_Reader.m_bThreadActive || m_Reader.m_bRipping; }

private:
    const MyReader& m_Reader;
    bool& m_bSeen;
};

class RipperTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
    }
    FailingCD* UseFailingCD(CCDRipper& ripper, int nFailures, int nSleepMS)
    {
        FailingCD* pCD = new FailingCD(ripper.m_pDrive, *ripper.m_pReader->m_pDriveInfo, nFailures, nSleepMS);
        CSCSICD::Delete(ripper.m_pReader->m_pCD);
        ripper.m_pReader->m_pCD = pCD;
        return pCD;
    }
    // The object is larger than what the controller deletes, which CSCSICD::Delete allows for.
    IFakeDisc* m_pFake = nullptr;
    char m_aryBuffer[27 * LY_CD_SECTOR_BYTES] = {};
};
} // namespace

TEST_F(RipperTest, ANewControllerHoldsTheDocumentedValues)
{
    const CCDRipper ripper;
    EXPECT_EQ(nullptr, ripper.m_pReader.Get());
    EXPECT_EQ(0, ripper.m_nReadSpeed);
    EXPECT_EQ(1, ripper.m_nCopyMode);
    EXPECT_EQ(0, ripper.m_CDParams.GetSize());
    EXPECT_NE(nullptr, ripper.m_pDrive.Get());
    EXPECT_NE(nullptr, ripper.m_pOptions.Get());
    EXPECT_EQ(nullptr, ripper.m_pReserved.Get());
}

TEST_F(RipperTest, BeforeOpenDriveEverythingIsNotInitialised)
{
    CCDRipper ripper;
    EXPECT_EQ(13, ripper.ReadSectors(1, 0, 1, m_aryBuffer));
    EXPECT_EQ(13, ripper.GetTrackLength(1));
}

TEST_F(RipperTest, InitReplacesTheStateAndMarksItInitialised)
{
    CCDRipper ripper;
    ripper.m_nReserved1 = ripper.m_nReserved2 = ripper.m_nReserved3 = 9;
    EXPECT_EQ(0, ripper.Init());
    EXPECT_TRUE(ripper.m_pReader->m_bInitialized);
    EXPECT_FALSE(ripper.m_pReader->m_bDriveOpen);
    EXPECT_EQ(0, ripper.m_nReserved1);
    EXPECT_EQ(0, ripper.m_nReserved2);
    EXPECT_EQ(9, ripper.m_nReserved3);
    EXPECT_EQ(14, ripper.ReadSectors(1, 0, 1, m_aryBuffer));
    EXPECT_EQ(14, ripper.GetTrackLength(1));
}

TEST_F(RipperTest, AnUnknownDriveIsFourteen)
{
    CCDRipper ripper;
    EXPECT_EQ(14, ripper.OpenDrive(L"Q:", true));
    EXPECT_FALSE(ripper.m_pReader->m_bDriveOpen);
}

TEST_F(RipperTest, AnOpenDriveAnswersLengthsAndSectors)
{
    CCDRipper ripper;
    (void)ripper.SetCopyMode(COPY_MODE_PLAYBACK);
    (void)ripper.SetReadSpeed(4);
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, true));
    EXPECT_EQ(1000, ripper.GetTrackLength(1));
    EXPECT_EQ(1000, ripper.GetTrackLength(12));
    EXPECT_EQ(16, ripper.GetTrackLength(0));
    EXPECT_EQ(16, ripper.GetTrackLength(14));
    EXPECT_EQ(16, ripper.GetTrackLength(-1));
    ASSERT_EQ(0, ripper.ReadSectors(2, 5, 3, m_aryBuffer));
    for (int i = 0; i < 3 * LY_CD_SECTOR_BYTES; ++i)
        ASSERT_EQ(FakeDisc::AudioByte(1005 + i / 2352, i % 2352), static_cast<unsigned char>(m_aryBuffer[i]));
    FAKE_COMMAND speed{};
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_SET_CD_SPEED, 0, speed));
    EXPECT_EQ(0x02, speed.cdb[2]);
    EXPECT_EQ(0xB1, speed.cdb[3]);
}

TEST_F(RipperTest, AnUnknownTrackReadsFromTheStartOfTheDisc)
{
    CCDRipper ripper;
    (void)ripper.SetCopyMode(COPY_MODE_PLAYBACK);
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, true));
    EXPECT_EQ(0, ripper.ReadSectors(50, 2, 1, m_aryBuffer));
    EXPECT_EQ(FakeDisc::AudioByte(2, 0), static_cast<unsigned char>(m_aryBuffer[0]));
}

TEST_F(RipperTest, ARunningRipBlocksOpeningAndReading)
{
    CCDRipper ripper;
    (void)ripper.SetCopyMode(COPY_MODE_PLAYBACK);
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, true));
    const CSCSICD* pCD = ripper.m_pReader->m_pCD;
    ripper.m_pReader->m_bRipping = true;
    EXPECT_EQ(15, ripper.OpenDrive(FakeDisc::DRIVE, true));
    EXPECT_EQ(pCD, ripper.m_pReader->m_pCD);
    EXPECT_NE(nullptr, ripper.m_pReader->m_pDriveInfo);
    EXPECT_EQ(15, ripper.ReadSectors(1, 0, 1, m_aryBuffer));
    EXPECT_EQ(15, ripper.GetTrackLength(1));
}

TEST_F(RipperTest, ARipGoesAheadOfAClosedDriveInReadsAndBehindItInLengths)
{
    CCDRipper ripper;
    (void)ripper.Init();
    ripper.m_pReader->m_bRipping = true;
    EXPECT_EQ(15, ripper.ReadSectors(1, 0, 1, m_aryBuffer));
    EXPECT_EQ(14, ripper.GetTrackLength(1));
}

TEST_F(RipperTest, AnErrorIsTriedThreeTimesAndTheLastOneIsTheAnswer)
{
    CCDRipper ripper;
    (void)ripper.SetCopyMode(COPY_MODE_PLAYBACK);
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, true));
    FailingCD* pCD = UseFailingCD(ripper, 100, 0);
    EXPECT_EQ(43, ripper.ReadSectors(3, 7, 1, m_aryBuffer));
    EXPECT_EQ(3, pCD->m_nReads);
    EXPECT_EQ(2007, pCD->m_nSector);
}

TEST_F(RipperTest, AReadThatSucceedsOnItsSecondAttemptIsGood)
{
    CCDRipper ripper;
    (void)ripper.SetCopyMode(COPY_MODE_PLAYBACK);
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, true));
    FailingCD* pCD = UseFailingCD(ripper, 1, 0);
    EXPECT_EQ(0, ripper.ReadSectors(1, 0, 1, m_aryBuffer));
    EXPECT_EQ(2, pCD->m_nReads);
}

TEST_F(RipperTest, AnAttemptThatEndsAfterFourSecondsIsTheLast)
{
    CCDRipper ripper;
    (void)ripper.SetCopyMode(COPY_MODE_PLAYBACK);
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, true));
    FailingCD* pCD = UseFailingCD(ripper, 100, 4100);
    EXPECT_EQ(41, ripper.ReadSectors(1, 0, 1, m_aryBuffer));
    EXPECT_EQ(1, pCD->m_nReads);
}

TEST_F(RipperTest, ThreadWithoutACopyStillTellsItsOwner)
{
    CCDRipper ripper;
    (void)ripper.Init();
    RecordingOwner owner;
    ripper.m_pReader->m_pOwner = &owner;
    ripper.m_pReader->m_bThreadActive = true;
    ripper.m_pReader->m_bRipping = true;
    ripper.m_pReader->m_pWaveSave = new CWaveSave;
    EXPECT_FALSE(ripper.Thread());
    EXPECT_EQ((std::vector<std::vector<int>>{{1151, 0, 0, 0}}), owner.m_aryPosts);
    EXPECT_EQ(nullptr, ripper.m_pReader->m_pWaveSave);
    EXPECT_FALSE(ripper.m_pReader->m_bThreadActive);
    EXPECT_FALSE(ripper.m_pReader->m_bRipping);
}

TEST_F(RipperTest, TheOutputGoesWithinTheRipOfACopyAndBehindTheEndOfNone)
{
    for (const bool bCopy : {true, false})
    {
        CCDRipper ripper;
        (void)ripper.Init();
        MyReader& reader = *ripper.m_pReader;
        RipSectorList list;
        bool bSeen = !bCopy;
        reader.m_pWaveSave = new WatchingOutput(reader, bSeen);
        reader.m_bThreadActive = true;
        reader.m_bRipping = true;
        if (bCopy)
        {
            reader.m_pDAC = new EmptyCopy(0);
            reader.m_pDAC->m_pSectorList = &list;
        }
        EXPECT_FALSE(ripper.Thread());
        EXPECT_EQ(bCopy, bSeen);
        EXPECT_EQ(nullptr, reader.m_pWaveSave);
        EXPECT_FALSE(reader.m_bThreadActive || reader.m_bRipping);
    }
}

TEST_F(RipperTest, TheEndOfACopyIsToldWithItsError)
{
    for (const int nError : {0, 2, 9})
    {
        CCDRipper ripper;
        (void)ripper.Init();
        RecordingOwner owner;
        RipSectorList list;
        ripper.m_pReader->m_pOwner = &owner;
        ripper.m_pReader->m_pDAC = new EmptyCopy(nError);
        ripper.m_pReader->m_pDAC->m_pSectorList = &list;
        ripper.m_pReader->m_pWaveSave = ripper.m_pReader->m_pDAC->m_pWaveSave = new CWaveSave;
        ASSERT_TRUE(ripper.Start(0, false));
        ripper.WaitUntilFinished();
        EXPECT_EQ(nError != 0, ripper.Stop());
        EXPECT_EQ((std::vector<std::vector<int>>{{nError != 0 ? 1152 : 1151, nError, 0, 0}}), owner.m_aryPosts);
        EXPECT_EQ(nullptr, ripper.m_pReader->m_pDAC);
        EXPECT_EQ(nullptr, ripper.m_pReader->m_pWaveSave);
    }
}

TEST_F(RipperTest, StopStopsTheCopy)
{
    CCDRipper ripper;
    (void)ripper.Init();
    ripper.m_pReader->m_pDAC = new EmptyCopy(0);
    EXPECT_TRUE(ripper.m_pReader->m_pDAC->m_bRunning);
    EXPECT_TRUE(ripper.Stop()); // no thread ever ran
    EXPECT_FALSE(ripper.m_pReader->m_pDAC->m_bRunning);
    CDAC::Delete(ripper.m_pReader->m_pDAC);
    ripper.m_pReader->m_pDAC = nullptr;
}

TEST_F(RipperTest, MessagesAreAnsweredTrue)
{
    CCDRipper ripper;
    EXPECT_TRUE(ripper.ProcessMainThreadMessage(1, 2));
}
