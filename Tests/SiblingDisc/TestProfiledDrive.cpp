// What a drive with a profile says of itself, how long it takes, and what its cache serves.

#include "ProfiledDiscs.h"
#include <thread>

using ProfiledDriveTest = ProfiledDiscTest;

TEST_F(ProfiledDriveTest, WithAnEmptyProfileItIsAnImageDrive)
{
    Open("");
    ASSERT_TRUE(Read(10, 27));
    EXPECT_EQ(GetTruth(10, 27), m_Data);
    EXPECT_LT(GetLastMs(), 1);
    EXPECT_FALSE(Read(SECTORS, 1));
    ExpectSense(5, 0x21, 0);
    EXPECT_FALSE(Send({0xFF, 0, 0, 0, 0, 0}, 8));
    ExpectSense(5, 0x20, 0);
    EXPECT_FALSE(Send({}, 8));
    EXPECT_EQ(1, m_pDrive->GetStateA());
    EXPECT_EQ(1, m_pDrive->GetStateB());
    EXPECT_EQ("", m_pDrive->GetReadErrorText());
    EXPECT_EQ("", m_pDrive->GetWarnings());
}

TEST_F(ProfiledDriveTest, TheNamesAreThoseOfTheProfile)
{
    Open("Vendor = ACME\nModel = Turbo 52X\nRevision = 9.99\n");
    ASSERT_TRUE(Send({CDB_INQUIRY, 0, 0, 0, 100, 0}, 100));
    EXPECT_EQ("ACME    Turbo 52X       9.99", std::string(m_Data.begin() + 8, m_Data.end()));
    ASSERT_TRUE(Send({CDB_INQUIRY, 0, 0, 0, 10, 0}, 100));
    EXPECT_EQ(10U, m_Data.size());
    const DRIVE_DESCRIPTION description = m_pDrive->GetDescription();
    EXPECT_EQ("ACME", description.m_strVendor);
    EXPECT_EQ("Turbo 52X", description.m_strModel);
    EXPECT_EQ("9.99", description.m_strRevision);
    EXPECT_TRUE(description.m_bImage);
    wchar_t* pVendor = m_pDrive->GetVendor();
    wchar_t* pModel = m_pDrive->GetModel();
    EXPECT_STREQ(L"ACME", pVendor);
    EXPECT_STREQ(L"Turbo 52X", pModel);
    LyCom::SysFreeString(pVendor);
    LyCom::SysFreeString(pModel);
}

TEST_F(ProfiledDriveTest, BufferAndSpeedStandInTheCapabilities)
{
    Open("Buffer = 198\nSpeed = 24\nJitter = 0-1, 5\n");
    const Bytes cdb = {CDB_MODE_SENSE_10, 0, MODE_PAGE_CAPABILITIES, 0, 0, 0, 0, 1, 0, 0};
    ASSERT_TRUE(Send(cdb, 256));
    ASSERT_EQ(8U + 32U, m_Data.size());
    const unsigned char* pPage = &m_Data[8];
    EXPECT_EQ(38U, MMCGet16(m_Data.data()));
    EXPECT_EQ(MODE_PAGE_CAPABILITIES, pPage[0]);
    EXPECT_EQ(0x61, pPage[5]); // a stream that starts somewhere is not accurate
    EXPECT_EQ(24U * 176, MMCGet16(pPage + 8));
    EXPECT_EQ(198U, MMCGet16(pPage + 12));
    EXPECT_EQ(24U * 176, MMCGet16(pPage + 14));
    ASSERT_TRUE(Send({CDB_SET_CD_SPEED, 0, 0x05, 0x80, 0, 0, 0, 0, 0, 0, 0, 0}));
    ASSERT_TRUE(Send({CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 1, 0}));
    ASSERT_TRUE(Send(cdb, 256));
    EXPECT_EQ(8U * 176, MMCGet16(&m_Data[8 + 14]));
    EXPECT_EQ(0x02, m_Data[8 + 6] & 0x02);

    wchar_t* pText = m_pDrive->GetPackedCapabilities();
    DSENSEMASK mask = {};
    mask.InitFromPackedData(LyString(pText));
    LyCom::SysFreeString(pText);
    EXPECT_TRUE(mask.m_bCapabilitiesValid);
    EXPECT_EQ(24U * 176, MMCGet16(mask.m_CapabilitiesPage + 8));
    EXPECT_EQ(198U, MMCGet16(mask.m_CapabilitiesPage + 12));
}

TEST_F(ProfiledDriveTest, AModePageStandsInPlaceOfTheBuiltInOne)
{
    Open("ModePage = 2A 12 01 00 00 00 00 00 02 C0 00 00 00 40 00 B0 00 00 00 00\nModePage = 30 02 AB CD\n");
    ASSERT_TRUE(Send({CDB_MODE_SENSE_10, 0, 0x2A, 0, 0, 0, 0, 1, 0, 0}, 256));
    EXPECT_EQ(28U, m_Data.size());
    EXPECT_EQ(64, m_Data[8 + 13]);
    ASSERT_TRUE(Send({CDB_MODE_SENSE_10, 0, 0x30, 0, 0, 0, 0, 1, 0, 0}, 256));
    EXPECT_EQ((Bytes{0, 10, 0, 0, 0, 0, 0, 0, 0x30, 2, 0xAB, 0xCD}), m_Data);
    ASSERT_TRUE(Send({CDB_MODE_SENSE_10, 0, 0x70, 0, 0, 0, 0, 1, 0, 0}, 256)); // what can be changed: nothing
    EXPECT_EQ((Bytes{0, 10, 0, 0, 0, 0, 0, 0, 0x30, 2, 0, 0}), m_Data);
    ASSERT_TRUE(Send({CDB_MODE_SENSE_10, 0, 0x3F, 0, 0, 0, 0, 1, 0, 0}, 256)); // all of them, ascending
    EXPECT_EQ(8U + 12 + 8 + 16 + 20 + 4, m_Data.size());
    EXPECT_EQ(0x30, m_Data[8 + 12 + 8 + 16 + 20]);
    ASSERT_TRUE(Send({CDB_MODE_SENSE_10, 0, 0x3F, 0, 0, 0, 0, 0, 4, 0}, 256));
    EXPECT_EQ(4U, m_Data.size());
    EXPECT_FALSE(Send({CDB_MODE_SENSE_10, 0, 0x31, 0, 0, 0, 0, 1, 0, 0}, 256));
    ExpectSense(5, 0x24, 0);
    EXPECT_FALSE(Send({CDB_MODE_SENSE_10, 0, 0xEA, 0, 0, 0, 0, 1, 0, 0}, 256));
    ExpectSense(5, 0x39, 0);
    EXPECT_FALSE(Send({CDB_MODE_SENSE_10, 0, 0x2A}, 256));
    ExpectSense(5, 0x24, 0);
}

TEST_F(ProfiledDriveTest, TimeIsLatencySpinUpSeekAndTransfer)
{
    Open("Latency = 2\nSpinUp = 40\nSeek = 100\nSpeed = 150\n");
    ASSERT_TRUE(TestUnitReady());
    EXPECT_EQ(2, GetLastMs());
    EXPECT_GE(m_Took.count(), 2); // it really sleeps
    ASSERT_TRUE(Read(0, 27));     // 27 sectors at 11,250 a second are 2.4 ms
    EXPECT_EQ(44, GetLastMs());
    EXPECT_GE(m_Took.count(), 44);
    ASSERT_TRUE(Read(27, 27));
    EXPECT_EQ(4, GetLastMs());
    ASSERT_TRUE(Read(200, 27)); // a seek of a tenth
    EXPECT_EQ(14, GetLastMs());
    ASSERT_TRUE(Send({CDB_SET_CD_SPEED, 0, 0x06, 0xE0, 0, 0, 0, 0, 0, 0, 0, 0})); // 10 times
    ASSERT_TRUE(Read(227, 27));                                                   // 36 ms
    EXPECT_EQ(38, GetLastMs());
    ASSERT_TRUE(Send({CDB_START_STOP_UNIT, 0, 0, 0, 0, 0}));
    ASSERT_TRUE(Read(254, 1));
    EXPECT_EQ(43, GetLastMs()); // it had to spin up again
    ASSERT_TRUE(Send({CDB_START_STOP_UNIT, 0, 0, 0, 0, 0}));
    ASSERT_TRUE(Send({CDB_START_STOP_UNIT, 0, 0, 0, 1, 0}));
    EXPECT_EQ(42, GetLastMs());
    EXPECT_EQ(3, m_pDrive->GetStatistics().m_nSpinUps);
}

TEST_F(ProfiledDriveTest, TheCacheServesWhatWasReadAndCostsLatencyAlone)
{
    Open("Buffer = 64\nLatency = 1\nSeek = 200\nSpeed = 100\n"); // 27 sectors
    ASSERT_TRUE(Read(100, 20));
    EXPECT_FALSE(GetLast().m_bCached);
    ASSERT_TRUE(Read(105, 10));
    EXPECT_TRUE(GetLast().m_bCached);
    EXPECT_EQ(GetTruth(105, 10), m_Data);
    EXPECT_EQ(1, GetLastMs());
    ASSERT_TRUE(Read(115, 10)); // in part
    EXPECT_FALSE(GetLast().m_bCached);
    EXPECT_EQ(1, GetLastMs());  // the head is at 120: five sectors are 0.7 ms
    ASSERT_TRUE(Read(200, 27)); // pushes all out
    ASSERT_TRUE(Read(100, 1));
    EXPECT_FALSE(GetLast().m_bCached);
    const PROFILED_STATISTICS statistics = m_pDrive->GetStatistics();
    EXPECT_EQ(5, statistics.m_nReads);
    EXPECT_EQ(1, statistics.m_nCachedReads);
    EXPECT_EQ(20 + 5 + 27 + 1, statistics.m_nDiscSectors);
}

TEST_F(ProfiledDriveTest, AllSectorsOfTheLastReadAreInACacheThatHoldsThem)
{
    Open("Buffer = 64\nCache = 14\n"); // 6 sectors
    ASSERT_TRUE(Read(100, 9));         // 103 to 108 stay
    ASSERT_TRUE(Read(100, 6));         // the first three of these would push out the last three
    ASSERT_TRUE(Read(100, 6));
    EXPECT_TRUE(GetLast().m_bCached);
}

TEST_F(ProfiledDriveTest, AHeadThatReadsOnFillsTheCacheWhileTheHostWaits)
{
    Open("Buffer = 512\nReadAhead = 50\n");
    ASSERT_TRUE(Read(100, 10));
    ASSERT_TRUE(Read(110, 40));
    EXPECT_TRUE(GetLast().m_bCached);
    EXPECT_EQ(GetTruth(110, 40), m_Data);
    EXPECT_EQ(50, m_pDrive->GetStatistics().m_nAheadSectors);
    ASSERT_TRUE(Read(160, 1));
    EXPECT_FALSE(GetLast().m_bCached);
    ASSERT_TRUE(Read(SECTORS - 5, 1)); // the disc ends, and with it the reading on
    ASSERT_TRUE(Read(SECTORS - 1, 1));
    EXPECT_TRUE(GetLast().m_bCached);
    EXPECT_LE(m_pDrive->GetStatistics().m_nAheadSectors, 50 + 50 + 4);
}

TEST_F(ProfiledDriveTest, ACommandThatTakesLongerThanItsTimeOutFails)
{
    Open("Latency = 300\n");
    EXPECT_FALSE(Read(0, 1, 50));
    ExpectSense(4, 0x08, 1);
    EXPECT_GE(m_Took.count(), 50);
    EXPECT_EQ(50, GetLastMs());
    EXPECT_EQ(1, m_pDrive->GetStatistics().m_nTimeouts);
    EXPECT_TRUE(Read(0, 1, 400));
}

TEST_F(ProfiledDriveTest, CommandsOfTwoThreadsTakeTheirTurns)
{
    Open("Latency = 30\n");
    std::thread other([this] { (void)m_pDrive->GetDescription(); });
    other.join();
    const auto start = std::chrono::steady_clock::now();
    const auto send = [this]
    {
        const unsigned char aryCDB[6] = {};
        int nBytes = 0;
        SENSE_DATA sense;
        EXPECT_TRUE(m_pDrive->Send({aryCDB, 6, nullptr, nBytes, DRIVE_TRANSFER_NONE}, sense));
    };
    std::thread second(send);
    send();
    second.join();
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
}

TEST_F(ProfiledDriveTest, TheFirstHolderFindsTheProfileAsItIsThen)
{
    Open("Vendor = ONE\nUnreadable = 5\n");
    EXPECT_FALSE(Read(5));
    std::string strError;
    ASSERT_TRUE(m_pDrive->Acquire(strError)); // a second holder changes nothing
    EXPECT_EQ(1, m_pDrive->GetStatistics().m_nCommands);
    m_pDrive->Release();
    m_pDrive->Release();
    EXPECT_EQ(0, m_pDrive->GetStateA());
    (void)m_Folder.Write("disc.cue.drive", "Vendor = TWO\n");
    ASSERT_TRUE(m_pDrive->Acquire(strError));
    EXPECT_EQ("TWO", m_pDrive->GetDescription().m_strVendor);
    EXPECT_EQ(0, m_pDrive->GetStatistics().m_nCommands);
    EXPECT_TRUE(Read(5));
    m_pDrive->Release();
    (void)m_Folder.Write("disc.cue.drive", "Vendor\n");
    EXPECT_FALSE(m_pDrive->Acquire(strError));
    EXPECT_NE(std::string::npos, strError.find("line 1"));
    std::filesystem::remove(m_Folder.GetPath("disc.cue.drive"));
    ASSERT_TRUE(m_pDrive->Acquire(strError)); // an ordinary image again
    EXPECT_EQ("RONDEL", m_pDrive->GetDescription().m_strVendor);
    m_pDrive->Release();
    m_pDrive->Release();
}

TEST(ProfiledDriveFactory, AProfileIsBesideItsImageOrNamesOne)
{
    const TempFolder folder;
    (void)folder.Write("disc.bin", std::string(20 * LY_CD_SECTOR_BYTES, 'x'));
    const std::string strCue =
        folder.Write("disc.cue", "FILE \"disc.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    EXPECT_FALSE(HasDriveProfile(strCue));
    (void)folder.Write("disc.cue.drive", "Model = BESIDE\n");
    (void)folder.Write("named.DRIVE", "Image = disc.cue\nModel = NAMED\n");
    (void)folder.Write("none.drive", "Model = NONE\n");
    struct CASE
    {
        const char* m_pName;
        const char* m_pModel; // null: it cannot be loaded
    };
    for (const CASE& row : {CASE{"disc.cue", "BESIDE"}, CASE{"disc.cue.drive", "BESIDE"}, CASE{"named.DRIVE", "NAMED"},
                            CASE{"none.drive", nullptr}, CASE{"missing.drive", nullptr}})
    {
        const std::string strPath = folder.GetPath(row.m_pName);
        EXPECT_TRUE(HasDriveProfile(strPath)) << strPath;
        std::string strError;
        const std::unique_ptr<ServiceDrive> pDrive = CreateProfiledDrive(strPath, strError);
        const bool bLoaded = pDrive != nullptr && pDrive->Load(strError);
        EXPECT_EQ(row.m_pModel != nullptr, bLoaded) << strError;
        EXPECT_EQ(bLoaded ? row.m_pModel : "", bLoaded ? pDrive->GetDescription().m_strModel : "");
        EXPECT_EQ(bLoaded, strError.find("; ") == std::string::npos) << strError;
    }
    EXPECT_FALSE(HasDriveProfile(".drive"));
    EXPECT_FALSE(HasDriveProfile(""));
}

// As hardware, so that whoever plays can say at the end what is missing.
TEST_F(ProfiledDriveTest, WhatCouldNotBeReadIsToldWithPlaceAndReason)
{
    Open("Unreadable = 100\nUnreadable = 200, every 2\nUnitAttention = 5\n");
    const std::string strDrive = m_Folder.GetPath("disc.cue.drive");
    EXPECT_TRUE(Read(0, 27));
    EXPECT_TRUE(Read(200, 2));
    EXPECT_FALSE(Read(200, 2));
    EXPECT_NE("", m_pDrive->GetReadErrorText());
    EXPECT_TRUE(Read(200, 2));
    EXPECT_EQ("", m_pDrive->GetReadErrorText()); // it was read after all
    EXPECT_FALSE(Read(300, 1));                  // put off by the unit attention
    ExpectSense(6, 0x28, 0);
    EXPECT_FALSE(Read(SECTORS, 1)); // there is no such sector
    EXPECT_EQ("", m_pDrive->GetReadErrorText());
    EXPECT_FALSE(Read(81, 27));
    EXPECT_FALSE(Read(81, 27));
    EXPECT_EQ(strDrive +
                  ": 27 sectors from 00:03.06 on could not be read (3/11/05) and are silence; clean the disc, or "
                  "try another drive.",
              m_pDrive->GetReadErrorText());
    m_pDrive->Release();
    EXPECT_NE("", m_pDrive->GetReadErrorText()); // still to be read behind the end
    std::string strError;
    ASSERT_TRUE(m_pDrive->Acquire(strError));
    EXPECT_EQ("", m_pDrive->GetReadErrorText());
}

TEST_F(ProfiledDriveTest, ADriveThatWasRemovedIsToldOf)
{
    Open("Remove = 2\n");
    EXPECT_TRUE(Read(0, 27));
    EXPECT_FALSE(Read(27, 27));
    EXPECT_EQ(m_Folder.GetPath("disc.cue.drive") +
                  " went away while it was in use; check its cable and its power, then open it again.",
              m_pDrive->GetReadErrorText());
}
