#include "FakeDisc.h"
#include "LyCoreLib/RawTable.h"
#include "RecordingTools.h"
#include "THDriveInterface.h"
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

class DriveInterface : public testing::Test
{
protected:
    void SetUp() override
    {
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
    }

    std::vector<std::string> Calls()
    {
        std::vector<std::string> calls;
        for (int i = 0; i < m_pFake->GetCallCount(); i++)
            calls.push_back(m_pFake->GetCall(i));
        return calls;
    }

    bool SendTestUnitReady()
    {
        const unsigned char cdb[6] = {CDB_TEST_UNIT_READY};
        return m_Drive.SendCmd(DRIVE_TRANSFER_NONE, cdb, sizeof cdb, nullptr, 0, 1000, false);
    }

    IFakeDisc* m_pFake = nullptr;
    CTHDriveInterface m_Drive;
};

// ---- The interfaces of the disc service: the places of their operations, called as a stranger calls them.

TEST_F(DriveInterface, DiscManagerKeepsItsPlaces)
{
    IDiscManager* pManager = GetDiscManager(true);
    void* pDrive = CallSlot<void*>(pManager, 2, L"E:");
    ASSERT_NE(nullptr, pDrive);
    EXPECT_EQ(nullptr, CallSlot<void*>(pManager, 2, L"F:"));
    // A string that goes by value travels as the address of a copy.
    LyString strPath(L"E:");
    EXPECT_TRUE((CallSlot<bool, LyString*, bool>(pManager, 8, &strPath, true)));
    EXPECT_TRUE(m_pFake->GetAcquired(L"E:"));
    CallSlot<void, LyString*, bool>(pManager, 9, &strPath, false);
    EXPECT_FALSE(m_pFake->GetAcquired(L"E:"));
    unsigned char cdb[6] = {CDB_TEST_UNIT_READY};
    unsigned char sense[SENSE_BYTES] = {};
    int nBytes = 0;
    EXPECT_TRUE(
        (CallSlot<bool, const wchar_t*, unsigned char*, int, unsigned char*, int&, int, int, unsigned char*, int>(
            pManager, 10, L"E:", cdb, 6, nullptr, nBytes, 0, 1000, sense, 32)));
    EXPECT_EQ(1, m_pFake->CountCommands(CDB_TEST_UNIT_READY));
}

TEST_F(DriveInterface, DiscDriveKeepsItsPlaces)
{
    m_pFake->SetStates(0xA1, 0xB2);
    IDiscDrive* pDrive = GetDiscManager(true)->GetDrive(L"E:");
    CallSlot<void, int>(pDrive, 6, 2);
    EXPECT_EQ(1, m_pFake->GetUsers(L"E:"));
    CallSlot<void, int>(pDrive, 7, 2);
    EXPECT_EQ(0, m_pFake->GetUsers(L"E:"));
    EXPECT_EQ(0xA1, CallSlot<unsigned char>(pDrive, 8));
    EXPECT_EQ(0xB2, CallSlot<unsigned char>(pDrive, 12));
    for (int nSlot : {9, 10, 13})
        LyCom::SysFreeString(CallSlot<wchar_t*>(pDrive, nSlot));
    EXPECT_EQ((std::vector<std::string>{"GetDrive E:", "AddUser 2", "RemoveUser 2", "GetStateA", "GetStateB",
                                        "GetVendor", "GetModel", "GetPackedCapabilities"}),
              Calls());
}

// ---- Opening and closing

TEST_F(DriveInterface, StartsClosedWithoutSense)
{
    EXPECT_TRUE(m_Drive.m_DriveInfo.m_strPath.IsEmpty());
    EXPECT_EQ(0, m_Drive.m_nReadCacheSize);
    for (unsigned char n : m_Drive.m_Sense)
        EXPECT_EQ(0, n);
}

TEST_F(DriveInterface, OpenAsksInItsOrder)
{
    EXPECT_TRUE(m_Drive.Open(L"E:", 2));
    EXPECT_EQ((std::vector<std::string>{"GetDrive E:", "AddUser 2", "AcquireDrive E: 1", "GetStateB", "GetStateA",
                                        "GetModel", "GetVendor", "GetPackedCapabilities"}),
              Calls());
    EXPECT_EQ(0, m_pFake->GetCommandCount());
}

TEST_F(DriveInterface, OpenFillsTheSnapshot)
{
    m_pFake->SetStates(0xA1, 0xB2);
    EXPECT_TRUE(m_Drive.Open(L"E:", 2));
    DRIVE_INFO info;
    EXPECT_TRUE(m_Drive.GetDriveInfo(info));
    EXPECT_STREQ(L"E:", info.m_strPath);
    EXPECT_STREQ(FakeDisc::MODEL, info.m_strModel);
    EXPECT_STREQ(FakeDisc::VENDOR, info.m_strVendor);
    EXPECT_TRUE(info.m_strExtra.IsEmpty());
    EXPECT_EQ(0xA1, info.m_bStateA);
    EXPECT_EQ(0xB2, info.m_bStateB);
    EXPECT_EQ(16, info.m_nValueA);
    EXPECT_EQ(16, info.m_nValueB);
    DSENSEMASK mask = FakeDisc::DefaultMask();
    EXPECT_EQ(0, memcmp(&mask, &info.m_SenseMask, sizeof mask));
    EXPECT_EQ(2, m_Drive.m_nOpenMode);
    unsigned int nValue;
    EXPECT_TRUE(m_Drive.QueryCDParms(31, nValue));
    EXPECT_EQ(512U, nValue);
    EXPECT_EQ(0, m_pFake->GetCommandCount());
}

TEST_F(DriveInterface, NullTextsAreEmpty)
{
    m_pFake->SetNullTexts(true);
    EXPECT_TRUE(m_Drive.Open(L"E:", 2));
    EXPECT_TRUE(m_Drive.m_DriveInfo.m_strModel.IsEmpty());
    EXPECT_TRUE(m_Drive.m_DriveInfo.m_strVendor.IsEmpty());
    EXPECT_FALSE(m_Drive.m_DriveInfo.m_SenseMask.m_bCapabilitiesValid);
}

TEST_F(DriveInterface, OpenOfAnUnknownDriveFails)
{
    EXPECT_FALSE(m_Drive.Open(L"F:", 2));
    EXPECT_TRUE(m_Drive.m_DriveInfo.m_strPath.IsEmpty());
    EXPECT_EQ((std::vector<std::string>{"GetDrive F:"}), Calls());
}

TEST_F(DriveInterface, OpenThatCannotAcquireUndoesTheUser)
{
    m_pFake->SetAcquireResult(false);
    EXPECT_FALSE(m_Drive.Open(L"E:", 3));
    EXPECT_EQ((std::vector<std::string>{"GetDrive E:", "AddUser 3", "AcquireDrive E: 1", "RemoveUser 3"}), Calls());
    EXPECT_EQ(0, m_pFake->GetUsers(L"E:"));
    EXPECT_TRUE(m_Drive.m_DriveInfo.m_strPath.IsEmpty());
}

TEST_F(DriveInterface, CloseReleasesWithTheModeOfOpen)
{
    ASSERT_TRUE(m_Drive.Open(L"E:", 7));
    m_pFake->ForgetCalls();
    m_Drive.Close();
    EXPECT_EQ((std::vector<std::string>{"ReleaseDrive E: 0", "GetDrive E:", "RemoveUser 7"}), Calls());
    EXPECT_TRUE(m_Drive.m_DriveInfo.m_strPath.IsEmpty());
    EXPECT_FALSE(m_Drive.m_DriveInfo.m_SenseMask.m_bCapabilitiesValid);
    EXPECT_EQ(1, m_Drive.m_DriveInfo.m_bStateB);
}

TEST_F(DriveInterface, CloseWithoutADriveAsksNothing)
{
    m_Drive.m_DriveInfo.m_nValueA = 3;
    m_Drive.Close();
    EXPECT_TRUE(Calls().empty());
    EXPECT_EQ(16, m_Drive.m_DriveInfo.m_nValueA); // reset in every case
}

TEST_F(DriveInterface, CloseOfADriveThatIsGoneReleasesOnly)
{
    ASSERT_TRUE(m_Drive.Open(L"E:", 2));
    m_pFake->RemoveDrives();
    m_pFake->ForgetCalls();
    m_Drive.Close();
    EXPECT_EQ((std::vector<std::string>{"ReleaseDrive E: 0", "GetDrive E:"}), Calls());
    EXPECT_TRUE(m_Drive.m_DriveInfo.m_strPath.IsEmpty());
}

TEST_F(DriveInterface, SecondOpenLeavesTheFirstDrive)
{
    m_pFake->AddDrive(L"F:", L"OTHER", L"Y2", L"");
    ASSERT_TRUE(m_Drive.Open(L"E:", 2));
    ASSERT_TRUE(m_Drive.Open(L"F:", 4));
    EXPECT_FALSE(m_pFake->GetAcquired(L"E:"));
    EXPECT_EQ(0, m_pFake->GetUsers(L"E:"));
    EXPECT_TRUE(m_pFake->GetAcquired(L"F:"));
    EXPECT_EQ(1, m_pFake->GetUsers(L"F:"));
    EXPECT_STREQ(L"Y2", m_Drive.m_DriveInfo.m_strModel);
    EXPECT_FALSE(m_Drive.m_DriveInfo.m_SenseMask.m_bCapabilitiesValid); // nothing is left of the first
}

TEST_F(DriveInterface, FailedSecondOpenLeavesItClosed)
{
    ASSERT_TRUE(m_Drive.Open(L"E:", 2));
    EXPECT_FALSE(m_Drive.Open(L"F:", 2));
    EXPECT_FALSE(m_pFake->GetAcquired(L"E:"));
    EXPECT_TRUE(m_Drive.m_DriveInfo.m_strPath.IsEmpty());
}

TEST_F(DriveInterface, DestructorCloses)
{
    auto pDrive = std::make_unique<CTHDriveInterface>();
    ASSERT_TRUE(pDrive->Open(L"E:", 2));
    pDrive.reset();
    EXPECT_FALSE(m_pFake->GetAcquired(L"E:"));
    EXPECT_EQ(0, m_pFake->GetUsers(L"E:"));
}

// ---- Sending

TEST_F(DriveInterface, CommandReachesTheServiceAsGiven)
{
    ASSERT_TRUE(m_Drive.Open(L"E:", 2));
    const unsigned char cdb[10] = {CDB_READ_TOC, 0, 0, 0, 0, 0, 0, 0, 12, 0};
    unsigned char data[64] = {};
    EXPECT_TRUE(m_Drive.SendCmd(DRIVE_TRANSFER_IN, cdb, sizeof cdb, data, sizeof data, 1234, false));
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommand(0, command));
    EXPECT_EQ(0, memcmp(cdb, command.cdb, sizeof cdb));
    EXPECT_EQ(10, command.nCDBBytes);
    EXPECT_EQ(DRIVE_TRANSFER_IN, command.eType);
    EXPECT_EQ(64, command.nDataBytes);
    EXPECT_EQ(1234, command.nTimeoutMs);
    EXPECT_EQ(32, command.nSenseBytes);
    EXPECT_STREQ(L"E:", command.path);
    EXPECT_TRUE(pthread_equal(pthread_self(), command.thread));
    EXPECT_EQ(1, data[2]);  // first track
    EXPECT_EQ(13, data[3]); // last track
}

TEST_F(DriveInterface, CommandWithoutAnOpenDriveGoesToTheEmptyPath)
{
    EXPECT_TRUE(SendTestUnitReady());
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommand(0, command));
    EXPECT_STREQ(L"", command.path);
}

TEST_F(DriveInterface, CommandWithoutBytesIsNotSent)
{
    EXPECT_FALSE(m_Drive.SendCmd(DRIVE_TRANSFER_NONE, nullptr, 0, nullptr, 0, 1000, false));
    EXPECT_EQ(0, m_pFake->GetCommandCount());
}

// ---- What the sense data says

TEST_F(DriveInterface, WithoutSenseDataThereIsNothingToTell)
{
    m_pFake->FailNext(CDB_TEST_UNIT_READY, 1, 0, 0, 0, 0);
    EXPECT_FALSE(SendTestUnitReady());
    EXPECT_STREQ(L"No error information is available.", m_Drive.GetLastErrorMsg());
    int nResponse = 91;
    int nKey = 92;
    int nASC = 93;
    int nASCQ = 94;
    EXPECT_FALSE(m_Drive.GetLastErrorCodes(nResponse, nKey, nASC, nASCQ));
    EXPECT_EQ(91, nResponse);
    EXPECT_EQ(92, nKey);
    EXPECT_EQ(93, nASC);
    EXPECT_EQ(94, nASCQ);
}

TEST_F(DriveInterface, SenseDataIsTold)
{
    m_pFake->FailNext(CDB_TEST_UNIT_READY, 1, 2, 0x3A, 0xFE, 0xF0);
    EXPECT_FALSE(SendTestUnitReady());
    int nResponse;
    int nKey;
    int nASC;
    int nASCQ;
    EXPECT_TRUE(m_Drive.GetLastErrorCodes(nResponse, nKey, nASC, nASCQ));
    EXPECT_EQ(0xF0, nResponse);
    EXPECT_EQ(2, nKey);
    EXPECT_EQ(0x3A, nASC);
    EXPECT_EQ(0xFE, nASCQ);
    EXPECT_STREQ(L"Unknown error. Device codes: 2, 58, 254", m_Drive.GetLastErrorMsg());
}

TEST_F(DriveInterface, SenseKeyIsNotMasked)
{
    m_pFake->FailNext(CDB_TEST_UNIT_READY, 1, 0xF2, 0x3A, 0);
    EXPECT_FALSE(SendTestUnitReady());
    EXPECT_STREQ(L"Unknown error. Device codes: 242, 58, 0", m_Drive.GetLastErrorMsg());
}

TEST_F(DriveInterface, SenseDataIsClearedByTheNextCommand)
{
    m_pFake->FailNext(CDB_TEST_UNIT_READY, 1, 2, 0x3A, 0);
    EXPECT_FALSE(SendTestUnitReady());
    EXPECT_EQ(2, m_Drive.m_Sense[2]);
    EXPECT_TRUE(SendTestUnitReady());
    EXPECT_EQ(0, m_Drive.m_Sense[2]);
    EXPECT_EQ(0, m_Drive.m_Sense[12]);
}

TEST_F(DriveInterface, TextWithoutSenseDataIsTranslated)
{
    RecordingTools tools;
    tools.m_strTranslationMark = L"~";
    EXPECT_STREQ(L"~No error information is available.", m_Drive.GetLastErrorMsg());
}

// ---- Showing errors

TEST_F(DriveInterface, ErrorIsShownOnRequest)
{
    RecordingTools tools;
    tools.m_strTranslationMark = L"~";
    m_pFake->FailNext(CDB_TEST_UNIT_READY, 1, 2, 0x3A, 0);
    const unsigned char cdb[6] = {CDB_TEST_UNIT_READY};
    EXPECT_FALSE(m_Drive.SendCmd(DRIVE_TRANSFER_NONE, cdb, sizeof cdb, nullptr, 0, 1000, true));
    ASSERT_EQ(1U, tools.m_Boxes.size());
    EXPECT_EQ(L"Medium not present.", tools.m_Boxes[0].strText);
    EXPECT_EQ(L"~Information", tools.m_Boxes[0].strCaption);
}

TEST_F(DriveInterface, ErrorIsNotShownUnasked)
{
    RecordingTools tools;
    m_pFake->FailNext(CDB_TEST_UNIT_READY, 1, 2, 0x3A, 0);
    EXPECT_FALSE(SendTestUnitReady());
    EXPECT_TRUE(tools.m_Boxes.empty());
}

TEST_F(DriveInterface, ErrorWithoutSenseDataIsNotShown)
{
    RecordingTools tools;
    m_pFake->FailNext(CDB_READ_CD, -1, 0, 0, 0, 0);
    const unsigned char cdb[12] = {CDB_READ_CD};
    EXPECT_FALSE(m_Drive.SendCmd(DRIVE_TRANSFER_NONE, cdb, sizeof cdb, nullptr, 0, 1000, true));
    EXPECT_TRUE(tools.m_Boxes.empty());
}
