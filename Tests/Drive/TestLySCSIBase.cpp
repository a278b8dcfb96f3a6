#include "LyCoreLib/RawTable.h"
#include "LySCSIBase.h"
#include "MMC.h"
#include "RecordingTools.h"
#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

static_assert(std::is_abstract_v<LySCSIBase>);

// A drive object that brings only what it must: SendCommand. It records the command and gives an answer.
class ScriptedDrive final : public LySCSIBase
{
public:
    bool SendCommand(unsigned char* pCDB, int nCDBLen, unsigned char* pData, int& nDataLen, DRIVE_TRANSFERTYPE eType,
                     int nTimeoutMs, unsigned char* pSense, int nSenseLen) override
    {
        m_CDB.assign(pCDB, pCDB + nCDBLen);
        m_nDataLen = nDataLen;
        m_eType = eType;
        m_nTimeoutMs = nTimeoutMs;
        m_nSenseLen = nSenseLen;
        m_bBuffersAreZero = true;
        for (int i = 0; i < nDataLen; i++)
            m_bBuffersAreZero = m_bBuffersAreZero && pData[i] == 0;
        for (int i = 0; i < nSenseLen; i++)
            m_bBuffersAreZero = m_bBuffersAreZero && pSense[i] == 0;
        std::copy_n(m_Answer.data(), std::min(m_Answer.size(), static_cast<size_t>(nDataLen)), pData);
        return m_bResult;
    }

    std::wstring Property(const wchar_t* pName) const
    {
        return static_cast<const wchar_t*>(GetProperty(pName, L"(none)"));
    }

    std::vector<unsigned char> m_Answer;
    bool m_bResult = true;
    std::vector<unsigned char> m_CDB;
    int m_nDataLen = 0;
    DRIVE_TRANSFERTYPE m_eType = DRIVE_TRANSFER_NONE;
    int m_nTimeoutMs = 0;
    int m_nSenseLen = 0;
    bool m_bBuffersAreZero = false;
};

// A mode page behind its header and nDescriptorBytes of block descriptor.
static std::vector<unsigned char> MakeModeAnswer(int nDescriptorBytes, const std::vector<unsigned char>& page)
{
    std::vector<unsigned char> answer(static_cast<size_t>(8 + nDescriptorBytes), 0);
    answer[7] = static_cast<unsigned char>(nDescriptorBytes);
    answer.insert(answer.end(), page.begin(), page.end());
    return answer;
}

static std::vector<unsigned char> MakePage(int nLength)
{
    std::vector<unsigned char> page(static_cast<size_t>(nLength + 2), 0);
    page[0] = 0x2A;
    page[1] = static_cast<unsigned char>(nLength);
    return page;
}

TEST(LySCSIBaseTable, NewOperationsFollowThoseOfThePropertyMap)
{
    constexpr int PROPERTY_MAP_SLOTS = 21;
    constexpr int SEND_COMMAND = PROPERTY_MAP_SLOTS + 4; // behind the two places of the destructor and two more
    ScriptedDrive drive;
    unsigned char cdb[1] = {0xEE};
    unsigned char data[1] = {};
    unsigned char sense[1] = {};
    int nBytes = 1;
    EXPECT_TRUE(
        (CallSlot<bool, unsigned char*, int, unsigned char*, int&, DRIVE_TRANSFERTYPE, int, unsigned char*, int>(
            static_cast<LySCSIBase*>(&drive), SEND_COMMAND, cdb, 1, data, nBytes, DRIVE_TRANSFER_IN, 1, sense, 1)));
    EXPECT_EQ(std::vector<unsigned char>{0xEE}, drive.m_CDB);
    EXPECT_TRUE(CallSlot<bool>(static_cast<LySCSIBase*>(&drive), SEND_COMMAND + 2)); // zeros are a short page
    EXPECT_EQ(CDB_MODE_SENSE_10, drive.m_CDB[0]);
    EXPECT_TRUE(CallSlot<bool>(static_cast<LySCSIBase*>(&drive), SEND_COMMAND + 3));
    EXPECT_EQ(CDB_INQUIRY, drive.m_CDB[0]);
}

TEST(LySCSIBase, SendCommandOfTheBaseRefuses)
{
    ScriptedDrive drive;
    int nBytes = 0;
    EXPECT_FALSE(drive.LySCSIBase::SendCommand(nullptr, 0, nullptr, nBytes, DRIVE_TRANSFER_NONE, 0, nullptr, 0));
}

TEST(LySCSIBase, StartsWithoutNameAndPages)
{
    ScriptedDrive drive;
    EXPECT_TRUE(drive.m_strName.IsEmpty());
    EXPECT_FALSE(drive.m_SenseMask.m_bCapabilitiesValid);
}

TEST(DriveStrings, AskByInquiryOf100Bytes)
{
    ScriptedDrive drive;
    EXPECT_TRUE(drive.SetDriveStrings());
    EXPECT_EQ((std::vector<unsigned char>{0x12, 0, 0, 0, 0x64, 0}), drive.m_CDB);
    EXPECT_EQ(100, drive.m_nDataLen);
    EXPECT_EQ(DRIVE_TRANSFER_IN, drive.m_eType);
    EXPECT_EQ(5000, drive.m_nTimeoutMs);
    EXPECT_EQ(32, drive.m_nSenseLen);
    EXPECT_TRUE(drive.m_bBuffersAreZero);
}

TEST(DriveStrings, VendorEndsUpHoldingTheRevision)
{
    ScriptedDrive drive;
    const char* pInquiry = "\x05\x80\x02\x02\x1F___ACME    CD-ROM X1       1.23rest";
    drive.m_Answer.assign(pInquiry, pInquiry + strlen(pInquiry));
    EXPECT_TRUE(drive.SetDriveStrings());
    EXPECT_EQ(L"CD-ROM X1       ", drive.Property(L"Model"));
    EXPECT_EQ(L"1.23", drive.Property(L"Vendor"));
}

TEST(DriveStrings, EndAtTheFirstZero)
{
    ScriptedDrive drive;
    drive.m_Answer.assign(36, 0);
    memcpy(drive.m_Answer.data() + 16, "X1\0Y", 4);
    memcpy(drive.m_Answer.data() + 32, "A\0B\0", 4);
    EXPECT_TRUE(drive.SetDriveStrings());
    EXPECT_EQ(L"X1", drive.Property(L"Model"));
    EXPECT_EQ(L"A", drive.Property(L"Vendor"));
}

TEST(DriveStrings, FailedInquiryLeavesTheProperties)
{
    ScriptedDrive drive;
    drive.SetProperty(L"Vendor", L"before", false);
    drive.m_bResult = false;
    EXPECT_FALSE(drive.SetDriveStrings());
    EXPECT_EQ(L"before", drive.Property(L"Vendor"));
    EXPECT_EQ(L"(none)", drive.Property(L"Model"));
}

TEST(DriveProperties, AskForPage2A)
{
    ScriptedDrive drive;
    drive.m_Answer = MakeModeAnswer(0, MakePage(18));
    EXPECT_TRUE(drive.SetDriveProperties());
    EXPECT_EQ((std::vector<unsigned char>{0x5A, 0, 0x2A, 0, 0, 0, 0, 1, 0, 0}), drive.m_CDB);
    EXPECT_EQ(256, drive.m_nDataLen);
    EXPECT_EQ(DRIVE_TRANSFER_IN, drive.m_eType);
    EXPECT_EQ(5000, drive.m_nTimeoutMs);
    EXPECT_EQ(32, drive.m_nSenseLen);
    EXPECT_TRUE(drive.m_bBuffersAreZero);
}

TEST(DriveProperties, AreSetFromThePage)
{
    std::vector<unsigned char> page = MakePage(34);
    page[2] = 0x01;                   // reads CD-R, not CD-RW
    page[3] = 0x02;                   // writes CD-RW, not CD-R
    page[4] = 0x80;                   // buffer underrun protection
    MMCPut16(page.data() + 8, 7056);  // 40x
    MMCPut16(page.data() + 30, 1);    // one write speed
    MMCPut16(page.data() + 34, 2822); // 16x
    ScriptedDrive drive;
    drive.m_Answer = MakeModeAnswer(0, page);
    EXPECT_TRUE(drive.SetDriveProperties());
    EXPECT_EQ(L"0", drive.Property(L"CDR Write"));
    EXPECT_EQ(L"1", drive.Property(L"CDRW Write"));
    EXPECT_EQ(L"1", drive.Property(L"CDR Read"));
    EXPECT_EQ(L"0", drive.Property(L"CDRW Read"));
    EXPECT_EQ(L"16", drive.Property(L"Max Write Speed"));
    EXPECT_EQ(L"40", drive.Property(L"Max Read Speed"));
    EXPECT_EQ(L"1", drive.Property(L"Has Burnproof"));
}

TEST(DriveProperties, ShortPageHasNoWriteSpeed)
{
    ScriptedDrive drive;
    drive.m_Answer = MakeModeAnswer(0, MakePage(18));
    EXPECT_TRUE(drive.SetDriveProperties());
    EXPECT_EQ(L"(none)", drive.Property(L"Max Write Speed"));
    EXPECT_EQ(L"(none)", drive.Property(L"Max Read Speed"));
    EXPECT_EQ(L"0", drive.Property(L"Has Burnproof"));
}

TEST(DriveProperties, BlockDescriptorIsSteppedOver)
{
    std::vector<unsigned char> page = MakePage(18);
    page[2] = 0x02;
    ScriptedDrive drive;
    drive.m_Answer = MakeModeAnswer(8, page);
    EXPECT_TRUE(drive.SetDriveProperties());
    EXPECT_EQ(0x2A, drive.m_SenseMask.m_CapabilitiesPage[0]);
    EXPECT_EQ(L"1", drive.Property(L"CDRW Read"));
}

struct PAGE_CASE
{
    const char* pName;
    int nDescriptorBytes;
    int nPageLength;
    bool bAccepted;
};

static const PAGE_CASE s_aryPageCases[] = {
    {"LengthZero", 0, 0, true},
    {"FillsItsPlace", 0, 98, true},
    {"OneByteTooLong", 0, 99, false},
    {"EndsWithTheAnswer", 148, 98, true},
    {"EndsBehindTheAnswer", 149, 98, false},
    {"ShortPageAtTheLastPlace", 246, 0, true},
    {"LengthAtTheLastPlaceTooLarge", 246, 1, false},
    {"NoRoomForALengthByte", 247, 0, false},
    {"LongestDescriptor", 255, 0, false},
};

class DrivePage : public testing::TestWithParam<PAGE_CASE>
{
};

TEST_P(DrivePage, IsAcceptedOnlyIfItFitsWhole)
{
    const PAGE_CASE& page = GetParam();
    ScriptedDrive drive;
    drive.m_Answer = MakeModeAnswer(page.nDescriptorBytes, MakePage(page.nPageLength));
    EXPECT_EQ(page.bAccepted, drive.SetDriveProperties());
    EXPECT_EQ(page.bAccepted, drive.m_SenseMask.m_bCapabilitiesValid);
}

INSTANTIATE_TEST_SUITE_P(Sizes, DrivePage, testing::ValuesIn(s_aryPageCases),
                         [](const auto& row) { return row.param.pName; });

TEST(DriveProperties, FailedModeSenseLeavesThePropertiesAndForgetsThePages)
{
    RecordingTools tools;
    ScriptedDrive drive;
    drive.SetProperty(L"CDR Read", L"before", false);
    drive.m_SenseMask.m_bCapabilitiesValid = true;
    drive.m_bResult = false;
    EXPECT_FALSE(drive.SetDriveProperties());
    EXPECT_FALSE(drive.m_SenseMask.m_bCapabilitiesValid);
    EXPECT_EQ(L"before", drive.Property(L"CDR Read"));
    EXPECT_TRUE(tools.HasLogFrom(L"LySCSIBase::SetDriveProperties", L"failed getting cd/dvd capabilities page"));
}

TEST(DriveProperties, AreLogged)
{
    RecordingTools tools;
    ScriptedDrive drive;
    drive.m_Answer = MakeModeAnswer(0, MakePage(18));
    EXPECT_TRUE(drive.SetDriveProperties());
    std::vector<RecordingTools::LOG_LINE> lines = tools.GetLogLines();
    ASSERT_EQ(4U, lines.size());
    EXPECT_EQ(L"Start", lines[0].strText);
    EXPECT_EQ(L"before InternalSendCmd to get cd/dvd capabilities page", lines[1].strText);
    EXPECT_EQ(L"returning max write speed multiplier of 0", lines[2].strText);
    EXPECT_EQ(0U, lines[3].strText.find(L"Finish ("));
    for (const RecordingTools::LOG_LINE& line : lines)
        EXPECT_EQ(4096, line.nArea);
}
