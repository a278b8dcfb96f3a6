// A system without a disc service. It has a program of its own, since a loaded service stays.

#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "SCSICD.h"
#include <gtest/gtest.h>

class MissingService : public testing::Test
{
protected:
    void SetUp() override
    {
        GetProcessInfo(true)->SetSharedLibraryPath(L"/nowhere/");
        ASSERT_EQ(nullptr, GetDiscManager(true));
    }
};

TEST_F(MissingService, OpenFails)
{
    CTHDriveInterface drive;
    EXPECT_FALSE(drive.Open(L"E:", 2));
    EXPECT_TRUE(drive.m_DriveInfo.m_strPath.IsEmpty());
}

TEST_F(MissingService, CommandsFailAndClearTheSense)
{
    CTHDriveInterface drive;
    drive.m_Sense[2] = 5;
    const unsigned char cdb[6] = {CDB_TEST_UNIT_READY};
    EXPECT_FALSE(drive.SendCmd(DRIVE_TRANSFER_NONE, cdb, sizeof cdb, nullptr, 0, 1000, true));
    EXPECT_EQ(0, drive.m_Sense[2]);
}

TEST_F(MissingService, CloseOfADriveThatWasOpenOnlyResets)
{
    CTHDriveInterface drive;
    drive.m_DriveInfo.m_strPath = L"E:";
    drive.Close();
    EXPECT_TRUE(drive.m_DriveInfo.m_strPath.IsEmpty());
}

TEST_F(MissingService, CommandLayerHasNoTracks)
{
    CTHDriveInterface drive;
    TDriveInfo info;
    CSCSICD cd(&drive, info, L"E:");
    EXPECT_EQ(0, cd.GetLastTrackNumber());
    EXPECT_EQ(1, cd.Lasterror());
}

TEST_F(MissingService, CommandLayerWithoutADriveHasNoTracksEither)
{
    TDriveInfo info;
    CSCSICD cd(nullptr, info, L"E:");
    EXPECT_EQ(0, cd.GetLastTrackNumber());
    EXPECT_EQ(1, cd.Lasterror());
    EXPECT_FALSE(cd.ReadCDText());
    unsigned char data[LY_CD_SECTOR_BYTES] = {};
    cd.ReadCDDA(0, 1, data);
    EXPECT_EQ(0, cd.Lasterror());
}
