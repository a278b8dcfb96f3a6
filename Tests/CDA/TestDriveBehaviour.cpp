// The one gate to a drive, on drives in software that behave like hardware, through the built disc service: what the
// cache measurement finds, and how often a command is sent.

#include "LySharedToolsHelper.h"
#include "ServiceFolder.h"
#include "THDriveInterface.h"

namespace
{
class DriveBehaviour : public ::testing::Test
{
protected:
    void TearDown() override
    {
        m_Drive.Close();
        g_LySharedToolsHelper.UnloadLySharedLibs(false);
    }
    void Open(const std::string& strProfile, int nSectors)
    {
        m_Disc = m_Folder.WriteEmptyDisc("disc", nSectors);
        ServiceFolder::WriteProfile(m_Disc, strProfile);
        ASSERT_TRUE(m_Drive.Open(LyString(WidenUTF8(m_Disc.string()).c_str()), 2));
    }
    bool Send(std::vector<unsigned char> cdb, int nRoom = 0)
    {
        std::vector<unsigned char> aryData(static_cast<size_t>(nRoom) + 1);
        return m_Drive.SendCmd(nRoom > 0 ? DRIVE_TRANSFER_IN : DRIVE_TRANSFER_NONE, cdb.data(),
                               static_cast<int>(cdb.size()), aryData.data(), nRoom, CTHDriveInterface::CD_TIMEOUT_MS,
                               false);
    }
    int CountSends(unsigned char nOpcode)
    {
        return static_cast<int>(SelectOpcode(ReadEvidence(m_Disc), nOpcode).size());
    }

    ServiceFolder m_Folder;
    std::filesystem::path m_Disc;
    CTHDriveInterface m_Drive;
};

struct CACHE_CASE
{
    int m_nBufferKiB;
    int m_nCacheKiB;
    int m_nBytes; // what the measurement says
};

void PrintTo(const CACHE_CASE& row, std::ostream* pStream)
{
    *pStream << row.m_nCacheKiB << " of " << row.m_nBufferKiB << " KiB";
}

// The search counts in whole sectors: it finds the most of them that fit, between an eighth of the declared buffer
// (135 sectors for one above 2.4 MiB) and the buffer. What is below the eighth is found as nothing; so is all of a
// buffer that has fewer than eight sectors.
constexpr int SECTOR = LY_CD_SECTOR_BYTES;
const CACHE_CASE s_aryCaches[] = {
    {64, 16, 6 * SECTOR},        // 16,384 bytes: 6.97 sectors
    {64, 64, 27 * SECTOR},       // 27.9
    {128, 128, 55 * SECTOR},     // 55.7
    {256, 256, 111 * SECTOR},    // 111.5
    {512, 512, 222 * SECTOR},    // 222.9
    {1024, 1024, 445 * SECTOR},  // 445.8
    {2048, 2048, 891 * SECTOR},  // 891.6
    {4096, 4096, 1783 * SECTOR}, // 1783.3
    {8192, 8192, 3566 * SECTOR}, // 3566.6
    {512, 128, 55 * SECTOR},     // a part of the buffer
    {2048, 300, 130 * SECTOR},   // 130.6
    {128, 0, 0},                 // none at all
    {128, 16, 0},                // below the eighth, which is 7 sectors
    {16, 16, 0},                 // a buffer of 7 sectors has no eighth
    {15, 15, 0},                 // not worth a measurement
};

class CacheMeasurement : public DriveBehaviour, public ::testing::WithParamInterface<CACHE_CASE>
{
};
} // namespace

TEST_P(CacheMeasurement, FindsTheSizeOfTheProfile)
{
    const CACHE_CASE& row = GetParam();
    // A seek of 20 ms and 12,000 sectors a second: far more than four times what the cache takes.
    Open("Buffer = " + std::to_string(row.m_nBufferKiB) + "\nCache = " + std::to_string(row.m_nCacheKiB) +
             "\nSeek = 200\nSpeed = 160\n",
         300 + 2 * row.m_nBufferKiB * 1024 / SECTOR);
    // The search goes by real time. Another program that takes the processor may disturb it, though not for long. A
    // drive that is opened anew has an empty cache.
    constexpr int ATTEMPTS = 4;
    int nBytes = m_Drive.GetReadCacheSize();
    for (int n = 1; n < ATTEMPTS && nBytes != row.m_nBytes; ++n)
    {
        ASSERT_TRUE(m_Drive.Open(LyString(WidenUTF8(m_Disc.string()).c_str()), 2));
        nBytes = m_Drive.GetReadCacheSize();
    }
    EXPECT_EQ(row.m_nBytes, nBytes);
}

INSTANTIATE_TEST_SUITE_P(Table, CacheMeasurement, ::testing::ValuesIn(s_aryCaches));

namespace
{
const std::vector<unsigned char> READ_SECTOR_7 = {CDB_READ_CD, 4, 0, 0, 0, 7, 0, 0, 1, 0x10, 0, 0};

struct RETRY_CASE
{
    const char* m_pProfile;
    std::vector<unsigned char> m_CDB;
    int m_nSends;
    bool m_bGood;
};

void PrintTo(const RETRY_CASE& row, std::ostream* pStream) { *pStream << row.m_pProfile; }

const RETRY_CASE s_aryRetries[] = {
    {"Unreadable = 7", READ_SECTOR_7, 2, false},
    {"Unreadable = 7, every 1", READ_SECTOR_7, 2, false},
    {"UnitAttention = 1", READ_SECTOR_7, 2, true},
    {"UnitAttention = 1, 6/28/00, 4", READ_SECTOR_7, 5, true},
    {"UnitAttention = 1, 6/29/00, 9", READ_SECTOR_7, 5, false},
    {"UnitAttention = 1\nUnreadable = 7", READ_SECTOR_7, 5, false}, // the limit stays raised
    {"Unreadable = 7\nUnitAttention = 2", READ_SECTOR_7, 5, false}, // also by the last send that was allowed
    {"FailRate = 100%, 4/44/00", READ_SECTOR_7, 2, false},
    {"UnitAttention = 1, 6/28/00, 9", {CDB_TEST_UNIT_READY, 0, 0, 0, 0, 0}, 1, false},
    {"UnitAttention = 1, 6/28/00, 9", {CDB_MODE_SENSE_10, 0, 0x2A, 0, 0, 0, 0, 1, 0, 0}, 1, false},
};

class Retries : public DriveBehaviour, public ::testing::WithParamInterface<RETRY_CASE>
{
};
} // namespace

TEST_P(Retries, AreAsMany)
{
    Open(GetParam().m_pProfile, 100);
    EXPECT_EQ(GetParam().m_bGood, Send(GetParam().m_CDB, LY_CD_SECTOR_BYTES));
    const std::vector<DISC_EVIDENCE> arySends = SelectOpcode(ReadEvidence(m_Disc), GetParam().m_CDB[0]);
    ASSERT_EQ(GetParam().m_nSends, static_cast<int>(arySends.size()));
    EXPECT_EQ(GetParam().m_bGood, arySends.back().m_bGood);
    for (size_t n = 1; n < arySends.size(); ++n)
        EXPECT_GE(arySends[n].m_nStartUS - arySends[n - 1].m_nStartUS, 19000); // 20 ms, by another clock
}

INSTANTIATE_TEST_SUITE_P(Table, Retries, ::testing::ValuesIn(s_aryRetries));

TEST_F(DriveBehaviour, TheNamesAndTheBufferReachTheDriveLayer)
{
    Open("Vendor = ACME\nModel = Turbo 52X\nBuffer = 1984\nSpeed = 52\n", 100);
    DRIVE_INFO info;
    ASSERT_TRUE(m_Drive.GetDriveInfo(info));
    EXPECT_STREQ(L"ACME", info.m_strVendor);
    EXPECT_STREQ(L"Turbo 52X", info.m_strModel);
    unsigned int nValue = 0;
    EXPECT_TRUE(m_Drive.QueryCDParms(31, nValue));
    EXPECT_EQ(1984U, nValue);
    EXPECT_TRUE(m_Drive.QueryCDParms(29, nValue));
    EXPECT_EQ(52U, nValue);
}

TEST_F(DriveBehaviour, AProfileIsADriveOfItsOwn)
{
    (void)m_Folder.WriteEmptyDisc("disc", 100);
    m_Disc = m_Folder.Write("my.drive", "Image = disc.cue\nModel = MINE\nRemove = 3\n");
    ASSERT_TRUE(m_Drive.Open(LyString(WidenUTF8(m_Disc.string()).c_str()), 2));
    EXPECT_STREQ(L"MINE", m_Drive.m_DriveInfo.m_strModel);
    EXPECT_TRUE(Send(READ_SECTOR_7, LY_CD_SECTOR_BYTES));
    EXPECT_TRUE(Send(READ_SECTOR_7, LY_CD_SECTOR_BYTES));
    EXPECT_FALSE(Send(READ_SECTOR_7, LY_CD_SECTOR_BYTES));
    int nResponse = 0;
    int nKey = 0;
    int nASC = 0;
    int nASCQ = 0;
    ASSERT_TRUE(m_Drive.GetLastErrorCodes(nResponse, nKey, nASC, nASCQ));
    EXPECT_EQ(4, nKey);
    EXPECT_EQ(0x05, nASC);
    EXPECT_EQ(4, CountSends(CDB_READ_CD));
}

TEST_F(DriveBehaviour, ABrokenProfileIsNoDrive)
{
    m_Disc = m_Folder.WriteEmptyDisc("disc", 100);
    ServiceFolder::WriteProfile(m_Disc, "Speed = 9999\n");
    EXPECT_FALSE(m_Drive.Open(LyString(WidenUTF8(m_Disc.string()).c_str()), 2));
}
