#include "Dac32.h"
#include "FakeDisc.h"
#include "LyCoreLib/RawTable.h"
#include "RecordingTools.h"
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

typedef std::vector<unsigned char> BYTES;

struct CDDeleter
{
    void operator()(CSCSICD* pCD) const { CSCSICD::Delete(pCD); }
};

class CommandLayer : public testing::Test
{
protected:
    void SetUp() override
    {
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
        ASSERT_TRUE(m_Drive.Open(FakeDisc::DRIVE, 2));
    }

    CSCSICD& MakeCD()
    {
        m_pCD.reset(new CSCSICD(&m_Drive, m_Info, FakeDisc::DRIVE));
        m_pFake->ForgetCommands();
        return *m_pCD;
    }

    // The only command since then, checked for what all of this layer's commands have in common.
    FAKE_COMMAND OnlyCommand()
    {
        FAKE_COMMAND command = {};
        EXPECT_EQ(1, m_pFake->GetCommandCount());
        EXPECT_TRUE(m_pFake->GetCommand(0, command));
        EXPECT_EQ(10000, command.nTimeoutMs);
        return command;
    }

    static BYTES CDB(const FAKE_COMMAND& command) { return BYTES(command.cdb, command.cdb + command.nCDBBytes); }

    IFakeDisc* m_pFake = nullptr;
    CTHDriveInterface m_Drive;
    TDriveInfo m_Info;
    std::unique_ptr<CSCSICD, CDDeleter> m_pCD;
};

// ---- The drive description

TEST(DriveDescription, IsTakenFromTheSnapshot)
{
    DRIVE_INFO snapshot;
    snapshot.m_strVendor = L"ACME";
    snapshot.m_strModel = L"CD-ROM X1";
    snapshot.m_nValueA = 77;
    TDriveInfo info(snapshot, 1);
    EXPECT_EQ(4, info.m_nDriveType);
    EXPECT_EQ(27, info.m_nMaxSektors);
    EXPECT_EQ(1, info.m_nMode);
    EXPECT_STREQ("ACME", info.m_szVendor);
    EXPECT_STREQ("CD-ROM X1", info.m_szModel);
    EXPECT_EQ(77, info.m_nDriveValue);
    EXPECT_EQ(0, info.m_nCacheSize);
    EXPECT_EQ(0, info.m_nReadCompensation);
}

TEST(DriveDescription, LongTextsFillTheirFields)
{
    DRIVE_INFO snapshot;
    snapshot.m_strVendor = L"123456789ABC";
    snapshot.m_strModel = L"123456789ABCDEFGHI";
    TDriveInfo info(snapshot, 0);
    EXPECT_EQ(0, memcmp("123456789", info.m_szVendor, 9));
    EXPECT_EQ(0, memcmp("123456789ABCDEFGH", info.m_szModel, 17));
    EXPECT_EQ(16, info.m_nDriveValue);
}

TEST(DriveDescription, CharactersBeyondTheNarrowOnesAreQuestionMarks)
{
    DRIVE_INFO snapshot;
    snapshot.m_strVendor = L"A\x416Z";
    TDriveInfo info(snapshot, 0);
    EXPECT_STREQ("A?Z", info.m_szVendor);
}

// ---- Construction

TEST_F(CommandLayer, ConstructorReadsTheTableOfContents)
{
    m_Info.m_nCacheSize = 4711;
    CSCSICD cd(&m_Drive, m_Info, L"E:");
    EXPECT_FALSE(cd.m_bCDTextRead);
    EXPECT_TRUE(cd.m_strDiscTitle.IsEmpty() && cd.m_strDiscPerformer.IsEmpty());
    EXPECT_EQ(0, cd.m_TrackTitles.GetSize() + cd.m_TrackPerformers.GetSize());
    EXPECT_EQ(&m_Drive, cd.m_pDrive);
    EXPECT_EQ(0, cd.m_nLastError);
    EXPECT_NE(nullptr, cd.m_FirstTrack);
    EXPECT_EQ(4711, cd.m_DriveInfo.m_nCacheSize);
    EXPECT_STREQ(L"E:", cd.m_strDrive);
    EXPECT_EQ(0, cd.m_nCurrentSpeed);
    EXPECT_EQ(13, cd.GetLastTrackNumber());
    ASSERT_EQ(2, m_pFake->GetCommandCount());
    FAKE_COMMAND command;
    EXPECT_TRUE(m_pFake->GetCommand(0, command));
    EXPECT_EQ(CDB_READ_SUB_CHANNEL, command.cdb[0]);
    EXPECT_TRUE(m_pFake->GetCommand(1, command));
    EXPECT_EQ(CDB_READ_TOC, command.cdb[0]);
}

TEST_F(CommandLayer, EmptyTrayLeavesAnEmptyListAndAnError)
{
    m_pFake->EjectDisc();
    CSCSICD cd(&m_Drive, m_Info, L"E:");
    EXPECT_EQ(1, cd.Get_DriveStatus().bMediaLoaded);
    EXPECT_EQ(nullptr, cd.m_FirstTrack);
    EXPECT_EQ(0, cd.GetLastTrackNumber());
    EXPECT_EQ(1, cd.Lasterror());
    EXPECT_EQ(0, cd.Lasterror());
}

TEST_F(CommandLayer, DeleteEndsAnObjectMadeByNew)
{
    CSCSICD::Delete(new CSCSICD(&m_Drive, m_Info, L"E:"));
    CSCSICD::Delete(nullptr);
}

TEST_F(CommandLayer, KeepsThePlacesOfItsTable)
{
    m_Info.m_nMode = 1;
    m_Info.m_nCacheSize = 4711;
    m_Info.m_nReadCompensation = 30;
    CSCSICD* pCD = &MakeCD();
    BYTES sector(LY_CD_SECTOR_BYTES);
    CallSlot<void, int, int, void*>(pCD, 0, 0, 1, sector.data());
    EXPECT_EQ(1, m_pFake->CountCommands(CDB_READ_CD));
    EXPECT_EQ(1, CallSlot<TDriveStatus>(pCD, 1).bMediaLoaded);
    m_pFake->ForgetCommands();
    CallSlot<void>(pCD, 2);
    CallSlot<void, int>(pCD, 3, 1);
    CallSlot<void>(pCD, 4);
    CallSlot<void>(pCD, 5);
    EXPECT_FALSE(CallSlot<bool>(pCD, 6));
    const unsigned char opcodes[] = {0x1B, 0x1E, 0x1B, 0x43, 0x43};
    for (int i = 0; i < 5; i++)
    {
        FAKE_COMMAND command;
        ASSERT_TRUE(m_pFake->GetCommand(i, command));
        EXPECT_EQ(opcodes[i], command.cdb[0]) << i;
    }
    CallSlot<void, int>(pCD, 7, 13);
    EXPECT_EQ(30, CallSlot<int>(pCD, 8));
    EXPECT_EQ(4711, CallSlot<int>(pCD, 9));
    EXPECT_EQ(13, CallSlot<int>(pCD, 10));
    EXPECT_EQ(1, CallSlot<int>(pCD, 11));
}

// ---- Plain access

TEST_F(CommandLayer, MaxSektorsWorksOnItsOwnCopy)
{
    CSCSICD& cd = MakeCD();
    EXPECT_EQ(27, cd.GetMaxSektors());
    cd.SetMaxSektors(54);
    EXPECT_EQ(54, cd.GetMaxSektors());
    EXPECT_EQ(27, m_Info.m_nMaxSektors);
}

// ---- Reading

TEST_F(CommandLayer, ReadOf27SectorsAsksFor63504Bytes)
{
    CSCSICD& cd = MakeCD();
    BYTES data(27 * 2352);
    cd.ReadCDDA(0x0102, 27, data.data());
    FAKE_COMMAND command = OnlyCommand();
    EXPECT_EQ((BYTES{0xBE, 4, 0, 0, 0x01, 0x02, 0, 0, 27, 0x10, 0, 0}), CDB(command));
    EXPECT_EQ(DRIVE_TRANSFER_IN, command.eType);
    EXPECT_EQ(63504, command.nDataBytes);
    for (int i : {0, 2351, 2352, 63503})
        EXPECT_EQ(FakeDisc::AudioByte(0x0102 + i / 2352, i % 2352), data[static_cast<size_t>(i)]) << i;
}

TEST_F(CommandLayer, ReadUsesThreeAddressBytesAndTwoOfTheCount)
{
    CSCSICD& cd = MakeCD();
    m_pFake->Answer(CDB_READ_CD, "", 0);
    unsigned char data[1];
    cd.ReadCDDA(0x7F123456, 0x10203, data);
    EXPECT_EQ((BYTES{0xBE, 4, 0, 0x12, 0x34, 0x56, 0, 0x02, 0x03, 0x10, 0, 0}), CDB(OnlyCommand()));
}

TEST_F(CommandLayer, FailedReadIsNotReported)
{
    CSCSICD& cd = MakeCD();
    m_pFake->FailNext(CDB_READ_CD, -1, SENSE_MEDIUM_ERROR, 0x11, 5);
    BYTES data(2352, 0x77);
    cd.ReadCDDA(0, 1, data.data());
    EXPECT_EQ(BYTES(2352, 0x77), data); // as the drive left it
    EXPECT_EQ(0, cd.Lasterror());
}

TEST_F(CommandLayer, ReadLeavesAnErrorOfBefore)
{
    CSCSICD& cd = MakeCD();
    cd.m_nLastError = 1;
    BYTES data(2352);
    cd.ReadCDDA(0, 1, data.data());
    EXPECT_EQ(1, cd.m_nLastError);
}

TEST_F(CommandLayer, ReadNotesItsTick)
{
    CSCSICD& cd = MakeCD();
    EXPECT_EQ(0U, cd.m_nLastReadTick);
    BYTES data(2352);
    unsigned int nBefore = GetTickCount();
    cd.ReadCDDA(0, 1, data.data());
    EXPECT_LE(cd.m_nLastReadTick - nBefore, GetTickCount() - nBefore);
}

// ---- Tray, lock and speed

TEST_F(CommandLayer, EjectSendsItsCommand)
{
    MakeCD().EjectDisk();
    FAKE_COMMAND command = OnlyCommand();
    EXPECT_EQ((BYTES{0x1B, 0, 0, 0, 2, 0}), CDB(command));
    EXPECT_EQ(DRIVE_TRANSFER_NONE, command.eType);
    EXPECT_EQ(0, command.nDataBytes);
}

TEST_F(CommandLayer, CloseTraySendsItsCommand)
{
    MakeCD().CloseTray();
    FAKE_COMMAND command = OnlyCommand();
    EXPECT_EQ((BYTES{0x1B, 0, 0, 0, 3, 0}), CDB(command));
    EXPECT_EQ(DRIVE_TRANSFER_NONE, command.eType);
    EXPECT_EQ(0, command.nDataBytes);
}

TEST_F(CommandLayer, LockSendsOnlyTheLowestBit)
{
    for (int nLock : {0, 1, 2, 3, -1})
    {
        MakeCD().LockDoor(nLock);
        FAKE_COMMAND command = OnlyCommand();
        EXPECT_EQ((BYTES{0x1E, 0, 0, 0, static_cast<unsigned char>(nLock & 1), 0}), CDB(command)) << nLock;
        EXPECT_EQ(DRIVE_TRANSFER_NONE, command.eType);
    }
}

struct SPEED_CASE
{
    int nMultiplier;
    unsigned char nHigh;
    unsigned char nLow;
};

static const SPEED_CASE s_arySpeedCases[] = {
    {0, 0xFF, 0xFF},     // the drive's maximum
    {1, 0x00, 0xAC},     // 172.27
    {4, 0x02, 0xB1},     // 689.06
    {52, 0x22, 0xFD},    // 8957.8
    {-1, 0xFF, 0x54},    // -172: truncated towards zero
    {24349, 0x00, 0xBF}, // 24349 * 176400 wraps to 196,304: 191
};

TEST_F(CommandLayer, SpeedIsSentInKBPerSecond)
{
    for (const SPEED_CASE& speed : s_arySpeedCases)
    {
        CSCSICD& cd = MakeCD();
        cd.SetCurrentSpeed(speed.nMultiplier);
        FAKE_COMMAND command = OnlyCommand();
        EXPECT_EQ((BYTES{0xBB, 0, speed.nHigh, speed.nLow, 0, 0, 0, 0, 0, 0, 0, 0}), CDB(command)) << speed.nMultiplier;
        EXPECT_EQ(DRIVE_TRANSFER_NONE, command.eType);
        EXPECT_EQ(0, command.nDataBytes);
        EXPECT_EQ(speed.nMultiplier, cd.m_nCurrentSpeed);
    }
}

TEST_F(CommandLayer, FailedTrayLockAndSpeedCommandsAreReported)
{
    CSCSICD& cd = MakeCD();
    for (int nOpcode : {CDB_START_STOP_UNIT, CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, CDB_SET_CD_SPEED})
        m_pFake->FailNext(nOpcode, -1, SENSE_ILLEGAL_REQUEST, 0x24, 0);
    cd.EjectDisk();
    EXPECT_EQ(1, cd.Lasterror());
    cd.CloseTray();
    EXPECT_EQ(1, cd.Lasterror());
    cd.LockDoor(1);
    EXPECT_EQ(1, cd.Lasterror());
    cd.SetCurrentSpeed(4);
    EXPECT_EQ(1, cd.Lasterror());
    EXPECT_EQ(0, cd.Lasterror());
}

TEST_F(CommandLayer, OnlySpeedClearsAnErrorOfBefore)
{
    CSCSICD& cd = MakeCD();
    cd.m_nLastError = 1;
    cd.EjectDisk();
    cd.CloseTray();
    cd.LockDoor(0);
    cd.ReRead();
    EXPECT_EQ(1, cd.m_nLastError);
    cd.SetCurrentSpeed(4);
    EXPECT_EQ(0, cd.m_nLastError);
}

// ---- Is there a disc?

TEST_F(CommandLayer, StatusAsksForTheSubChannel)
{
    RecordingTools tools;
    EXPECT_EQ(1, MakeCD().Get_DriveStatus().bMediaLoaded);
    FAKE_COMMAND command = OnlyCommand();
    EXPECT_EQ((BYTES{0x42, 2, 0x40, 1, 0, 0, 0, 0, 0x18, 0}), CDB(command));
    EXPECT_EQ(DRIVE_TRANSFER_IN, command.eType);
    EXPECT_EQ(24, command.nDataBytes);
    EXPECT_TRUE(
        tools.HasLogFrom(L"CSCSICD::Get_DriveStatus", L"after reading sub-channel data, bResult=1, bMediaLoaded=1"));
}

static const wchar_t* ASSUMED =
    L"bMediaLoaded=false, switch to true because at this point we'll assume medium is loaded...";

TEST_F(CommandLayer, EmptySubChannelIsTakenForADisc)
{
    CSCSICD& cd = MakeCD();
    RecordingTools tools;
    m_pFake->AnswerNext(CDB_READ_SUB_CHANNEL, "\0\x15\0\0", 4);
    EXPECT_EQ(1, cd.Get_DriveStatus().bMediaLoaded);
    EXPECT_EQ(1, m_pFake->GetCommandCount()); // no attempt at loading
    EXPECT_TRUE(tools.HasLog(L"after reading sub-channel data, bResult=1, bMediaLoaded=0"));
    EXPECT_TRUE(tools.HasLog(ASSUMED));
}

TEST_F(CommandLayer, BothBytesOfTheSubChannelLengthCount)
{
    CSCSICD& cd = MakeCD();
    RecordingTools tools;
    m_pFake->AnswerNext(CDB_READ_SUB_CHANNEL, "\0\x15\x01\0", 4);
    EXPECT_EQ(1, cd.Get_DriveStatus().bMediaLoaded);
    EXPECT_TRUE(tools.HasLog(L"after reading sub-channel data, bResult=1, bMediaLoaded=1"));
    EXPECT_FALSE(tools.HasLog(ASSUMED));
}

TEST_F(CommandLayer, FailedSubChannelTriesToLoad)
{
    CSCSICD& cd = MakeCD();
    RecordingTools tools;
    m_pFake->FailNext(CDB_READ_SUB_CHANNEL, -1, 2, 0x3A, 1);
    EXPECT_EQ(1, cd.Get_DriveStatus().bMediaLoaded);
    ASSERT_EQ(3, m_pFake->GetCommandCount()); // READ SUB-CHANNEL twice
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommand(2, command));
    EXPECT_EQ((BYTES{0x1B, 0, 0, 0, 3, 0}), CDB(command));
    EXPECT_EQ(DRIVE_TRANSFER_IN, command.eType);
    EXPECT_EQ(0, command.nDataBytes);
    EXPECT_FALSE(command.bHasData);
    EXPECT_EQ(10000, command.nTimeoutMs);
    EXPECT_TRUE(tools.HasLog(L"after reading sub-channel data, bResult=0, bMediaLoaded=0"));
    EXPECT_TRUE(tools.HasLog(L"reading sub-channel failed, error codes: responseCode=112, senseKey=2, ASC=58, ASCQ=1"));
    EXPECT_TRUE(tools.HasLog(L"after trying start/stop command with 'load medium' flag set, bMediaLoaded=1"));
    EXPECT_FALSE(tools.HasLog(ASSUMED));
    EXPECT_EQ(0, cd.Lasterror());
}

TEST_F(CommandLayer, FailedLoadIsTakenForADiscAllTheSame)
{
    CSCSICD& cd = MakeCD();
    RecordingTools tools;
    m_pFake->FailNext(CDB_READ_SUB_CHANNEL, -1, 2, 0x3A, 1);
    m_pFake->FailNext(CDB_START_STOP_UNIT, -1, 4, 0x53, 0, 0x71);
    EXPECT_EQ(1, cd.Get_DriveStatus().bMediaLoaded);
    EXPECT_TRUE(tools.HasLog(L"after trying start/stop command with 'load medium' flag set, bMediaLoaded=0"));
    EXPECT_TRUE(tools.HasLog(L"error codes: responseCode=113, senseKey=4, ASC=83, ASCQ=0"));
    EXPECT_TRUE(tools.HasLog(ASSUMED));
    EXPECT_EQ(0, cd.Lasterror());
}

TEST_F(CommandLayer, FailureWithoutSenseDataIsLoggedWithZeros)
{
    CSCSICD& cd = MakeCD();
    RecordingTools tools;
    m_pFake->FailNext(CDB_READ_SUB_CHANNEL, -1, 0, 0, 0, 0);
    EXPECT_EQ(1, cd.Get_DriveStatus().bMediaLoaded);
    EXPECT_TRUE(tools.HasLog(L"reading sub-channel failed, error codes: responseCode=0, senseKey=0, ASC=0, ASCQ=0"));
}

TEST_F(CommandLayer, ConstructorAndListOpenLogScopes)
{
    RecordingTools tools;
    MakeCD();
    for (const wchar_t* pName : {L"CSCSICD::CSCSICD, setting m_FirstTrack to 0", L"CSCSICD::Get_DriveStatus",
                                 L"CSCSICD::ReRead", L"CBaseCD::DeleteTrackList, setting m_FirstTrack to 0"})
        EXPECT_TRUE(tools.HasLogFrom(pName, L"Start")) << pName;
    for (const RecordingTools::LOG_LINE& line : tools.GetLogLines())
        EXPECT_EQ(4096, line.nArea);
}
