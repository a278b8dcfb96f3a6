#include "DiscManager.h"
#include "ImageFiles.h"
#include "MMC.h"
#include <gtest/gtest.h>
#include <thread>

namespace
{
class DiscManagerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        (void)m_Folder.Write("a,b.bin", std::string(100 * 2352, 'x'));
        m_strCue = m_Folder.Write("a,b.cue", "FILE \"a,b.bin\" BINARY\nTRACK 01 AUDIO\n INDEX 01 00:00:00\n");
        m_strPath.FromANSI(m_strCue.c_str());
    }
    bool Send(const wchar_t* pPath, unsigned char* pSense)
    {
        unsigned char aryCDB[6] = {CDB_TEST_UNIT_READY};
        int nBytes = 0;
        return m_Manager.SendCommand(pPath, aryCDB, 6, nullptr, nBytes, DRIVE_TRANSFER_NONE, 10000, pSense, 32);
    }
    TempFolder m_Folder;
    std::string m_strCue;
    LyString m_strPath;
    DiscManager m_Manager;
};
} // namespace

TEST_F(DiscManagerTest, APathToAnImageIsADrive)
{
    IDiscDrive* pDrive = m_Manager.GetDrive(m_strPath);
    ASSERT_NE(nullptr, pDrive);
    EXPECT_EQ(pDrive, m_Manager.GetDrive(m_strPath));
    wchar_t* pModel = pDrive->GetModel();
    EXPECT_STREQ(L"DISC IMAGE", pModel);
    LyCom::SysFreeString(pModel);
    EXPECT_EQ(1, pDrive->GetStateB());
}

TEST_F(DiscManagerTest, AFileURLNamesTheSameDrive)
{
    LyString strURL(m_strPath);
    strURL.Replace(L",", L"%2c");
    strURL = L"file://" + strURL;
    EXPECT_NE(nullptr, m_Manager.GetDrive(strURL));
    EXPECT_EQ(m_Manager.GetDrive(m_strPath), m_Manager.GetDrive(strURL));
}

TEST_F(DiscManagerTest, AnUnknownPathIsNoDriveAndSaysWhy)
{
    for (const wchar_t* pPath : {L"/no/such/file.cue", L"", L"E:", L"/"})
    {
        EXPECT_EQ(nullptr, m_Manager.GetDrive(pPath));
        EXPECT_FALSE(m_Manager.AcquireDrive(pPath, true));
        m_Manager.ReleaseDrive(pPath, false);
    }
    EXPECT_EQ(nullptr, m_Manager.GetDrive(nullptr));
    EXPECT_EQ(nullptr, m_Manager.GetDrive(L"/no/such/file.cue"));
    EXPECT_NE(std::string::npos, m_Manager.GetErrorText(L"/no/such/file.cue").find("/no/such/file.cue"));
    EXPECT_EQ("", m_Manager.GetErrorText(m_strPath));
}

TEST_F(DiscManagerTest, ADriveAnswersOnceItIsAcquired)
{
    ASSERT_NE(nullptr, m_Manager.GetDrive(m_strPath));
    ASSERT_TRUE(m_Manager.AcquireDrive(m_strPath, true));
    unsigned char arySense[32] = {};
    EXPECT_TRUE(Send(m_strPath, arySense));
    m_Manager.ReleaseDrive(m_strPath, false);
    EXPECT_FALSE(Send(m_strPath, arySense));
    EXPECT_EQ(0x70, arySense[0]);
    EXPECT_EQ(2, arySense[2]);
    EXPECT_EQ(0x3A, arySense[12]);
}

TEST_F(DiscManagerTest, AnUnknownDriveFailsWithSenseAndAZeroedBuffer)
{
    unsigned char aryCDB[6] = {CDB_INQUIRY};
    unsigned char aryData[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    unsigned char arySense[4] = {9, 9, 9, 9};
    int nBytes = 8;
    EXPECT_FALSE(m_Manager.SendCommand(L"Q:", aryCDB, 6, aryData, nBytes, DRIVE_TRANSFER_IN, 1000, arySense, 3));
    EXPECT_EQ(0, aryData[0] | aryData[7]);
    EXPECT_EQ(2, arySense[2]);
    EXPECT_EQ(9, arySense[3]); // the buffer's size is kept to
    EXPECT_FALSE(m_Manager.SendCommand(nullptr, nullptr, 0, nullptr, nBytes, DRIVE_TRANSFER_IN, 1000, nullptr, 0));
}

TEST_F(DiscManagerTest, AnImageThatVanishedIsRefusedWithItsReason)
{
    ASSERT_NE(nullptr, m_Manager.GetDrive(m_strPath));
    ASSERT_TRUE(m_Manager.AcquireDrive(m_strPath, true));
    m_Manager.ReleaseDrive(m_strPath, false);
    std::filesystem::remove(m_strCue);
    EXPECT_FALSE(m_Manager.AcquireDrive(m_strPath, true));
    EXPECT_NE(std::string::npos, m_Manager.GetErrorText(m_strPath).find("a,b.cue"));
}

TEST_F(DiscManagerTest, TwoThreadsUseOneDrive)
{
    ASSERT_NE(nullptr, m_Manager.GetDrive(m_strPath));
    ASSERT_TRUE(m_Manager.AcquireDrive(m_strPath, true));
    const auto read = [this]
    {
        std::vector<unsigned char> aryData(2352);
        for (int i = 0; i < 500; ++i)
        {
            unsigned char aryCDB[12] = {CDB_READ_CD, 4, 0, 0,    0, static_cast<unsigned char>(i % 90),
                                        0,           0, 1, 0x10, 0, 0};
            int nBytes = 2352;
            unsigned char arySense[32];
            ASSERT_TRUE(m_Manager.SendCommand(m_strPath, aryCDB, 12, aryData.data(), nBytes, DRIVE_TRANSFER_IN, 1000,
                                              arySense, 32));
            ASSERT_EQ('x', aryData[2351]);
        }
    };
    std::thread other(read);
    read();
    other.join();
}
