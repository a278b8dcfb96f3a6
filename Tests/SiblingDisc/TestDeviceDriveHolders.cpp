// Who holds a drive: several in one process, and one of several processes.

#include "DeviceDrive.h"
#include "HolderProcess.h"
#include "ScriptedKernel.h"
#include <gtest/gtest.h>

namespace
{
class DeviceDriveHolders : public ::testing::Test
{
protected:
    // Another program that holds the drive and may lock its door.
    std::unique_ptr<HolderProcess> MakeOther(bool bLockDoor)
    {
        return std::make_unique<HolderProcess>(
            [this, bLockDoor]
            {
                std::string strError;
                const unsigned char aryCDB[6] = {CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 1, 0};
                int nBytes = 0;
                SENSE_DATA sense;
                return m_Other.Load(strError) && m_Other.Acquire(strError) &&
                       (!bLockDoor || m_Other.Send({aryCDB, 6, nullptr, nBytes, DRIVE_TRANSFER_NONE}, sense));
            },
            [this] { m_Other.Release(); });
    }
    int CountUnlocks() const { return m_Kernel.CountOf(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL); }

    ScriptedKernel m_Kernel;
    RuntimeFolder m_Runtime{m_Kernel.m_Folder.GetPath()};
    DeviceDrive m_Other{m_Kernel.GetNode(), m_Kernel.GetCalls()}; // the other process has a copy
    DeviceDrive m_Drive{m_Kernel.GetNode(), m_Kernel.GetCalls()};
    std::string m_strError;
};

TEST_F(DeviceDriveHolders, OneProcessMayHoldSeveralTimes)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Drive.Release();
    EXPECT_FALSE(MakeOther(false)->WasGood()); // still held
    m_Drive.Release();
    EXPECT_TRUE(MakeOther(false)->WasGood());
}

TEST_F(DeviceDriveHolders, SecondProcessIsRefusedWithTheHoldersName)
{
    const auto pOther = MakeOther(true);
    ASSERT_TRUE(pOther->WasGood());
    // The name of a program without a note is cut by the kernel; this one has left a note.
    const std::string strRefusal = m_Kernel.GetNode() + " is held by TestDeviceDriveHolders (process " +
                                   std::to_string(pOther->GetPid()) + "); stop it or choose another drive.";
    EXPECT_FALSE(m_Drive.Acquire(m_strError));
    EXPECT_EQ(strRefusal, m_strError);
    m_strError.clear();
    EXPECT_FALSE(m_Drive.Load(m_strError));
    EXPECT_EQ(strRefusal, m_strError);
    EXPECT_EQ(0, m_Drive.GetStateA());
    EXPECT_TRUE(m_Kernel.m_aryCalls.empty()); // the holder is not disturbed
    pOther->Finish();
    EXPECT_TRUE(m_Drive.Acquire(m_strError)) << m_strError;
    EXPECT_EQ(0, CountUnlocks()); // it gave the drive back in good order
}

TEST_F(DeviceDriveHolders, DriveOpenedAheadIsNotHeldYet)
{
    ASSERT_TRUE(m_Drive.Load(m_strError));
    const auto pOther = MakeOther(false);
    ASSERT_TRUE(pOther->WasGood());
    EXPECT_FALSE(m_Drive.Acquire(m_strError));
    EXPECT_NE(std::string::npos, m_strError.find("is held by")) << m_strError;
    pOther->Finish();
    EXPECT_TRUE(m_Drive.Acquire(m_strError)) << m_strError;
}

TEST_F(DeviceDriveHolders, AfterAKillTheDoorIsUnlockedOnce)
{
    const auto pOther = MakeOther(true);
    ASSERT_TRUE(pOther->WasGood());
    EXPECT_FALSE(m_Drive.Acquire(m_strError));
    pOther->Kill();
    ASSERT_TRUE(m_Drive.Acquire(m_strError)) << m_strError;
    ASSERT_EQ(1, CountUnlocks());
    EXPECT_EQ((Bytes{CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 0, 0}), m_Kernel.m_aryCalls.back().m_CDB);
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Drive.Release();
    m_Drive.Release();
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Drive.Release();
    EXPECT_EQ(1, CountUnlocks());
}

TEST_F(DeviceDriveHolders, UnlockingAfterAKillGoesBehindAUnitAttention)
{
    const auto pOther = MakeOther(true);
    ASSERT_TRUE(pOther->WasGood());
    pOther->Kill();
    m_Kernel.NextOf(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, SG_ANSWER::Check(6, 0x28, 0));
    ASSERT_TRUE(m_Drive.Acquire(m_strError)) << m_strError;
    EXPECT_EQ(2, CountUnlocks());
}

TEST_F(DeviceDriveHolders, ReadOnlyDriveIsHeldToo)
{
    m_Kernel.m_nWriteErrno = EACCES;
    const auto pOther = MakeOther(false);
    ASSERT_TRUE(pOther->WasGood());
    EXPECT_FALSE(m_Drive.Acquire(m_strError));
    EXPECT_NE(std::string::npos, m_strError.find("is held by")) << m_strError;
}
} // namespace
