#include "CDUnits.h"
#include "DeviceDrive.h"
#include "HolderProcess.h"
#include "ScriptedKernel.h"
#include <cerrno>
#include <filesystem>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace
{
const Bytes TEST_UNIT_READY(6);
const Bytes LOCK_DOOR = {CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 1, 0};
const Bytes UNLOCK_DOOR = {CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 0, 0};

class DeviceDriveTest : public ::testing::Test
{
protected:
    bool Send(const Bytes& cdb, int nRoom = 0)
    {
        m_Buffer.assign(static_cast<size_t>(nRoom), 0xAA);
        m_Sense = {};
        int nBytes = nRoom;
        const DRIVE_TRANSFERTYPE eType = nRoom > 0 ? DRIVE_TRANSFER_IN : DRIVE_TRANSFER_NONE;
        return m_Drive.Send({cdb.data(), static_cast<int>(cdb.size()), m_Buffer.data(), nBytes, eType}, m_Sense);
    }
    bool ReadCD(int nLBA, int nCount)
    {
        Bytes cdb = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 0, 0, 0, 0, 0, READ_CD_USER_DATA, 0, 0};
        MMCPut32(&cdb[2], static_cast<unsigned int>(nLBA));
        MMCPut24(&cdb[6], static_cast<unsigned int>(nCount));
        return Send(cdb, nCount * LY_CD_SECTOR_BYTES);
    }
    void ExpectFailure(int nKey, int nASC, int nASCQ)
    {
        EXPECT_EQ(nKey, m_Sense.GetCodes().m_nKey);
        EXPECT_EQ(nASC, m_Sense.GetCodes().m_nASC);
        EXPECT_EQ(nASCQ, m_Sense.GetCodes().m_nASCQ);
        EXPECT_EQ(Bytes(m_Buffer.size()), m_Buffer);
    }
    bool Holds(const std::string& strPart) const { return m_strError.find(strPart) != std::string::npos; }
    static std::wstring Take(wchar_t* pText)
    {
        const std::wstring strText = pText;
        LyCom::SysFreeString(pText);
        return strText;
    }
    static int CountDescriptors()
    {
        int nCount = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
            ++nCount;
        return nCount;
    }

    ScriptedKernel m_Kernel;
    RuntimeFolder m_Runtime{m_Kernel.m_Folder.GetPath()};
    DeviceDrive m_Drive{m_Kernel.GetNode(), m_Kernel.GetCalls()};
    std::string m_strError;
    SENSE_DATA m_Sense;
    Bytes m_Buffer;
};

TEST_F(DeviceDriveTest, LoadOpensAndAsksWhatItIs)
{
    ASSERT_TRUE(m_Drive.Load(m_strError)) << m_strError;
    EXPECT_EQ(std::vector<int>{O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOCTTY}, m_Kernel.m_aryOpenFlags);
    ASSERT_EQ(5u, m_Kernel.m_aryCalls.size());
    EXPECT_EQ((Bytes{0x12, 0, 0, 0, 36, 0}), m_Kernel.m_aryCalls[0].m_CDB);
    for (const SG_CALL& call : m_Kernel.m_aryCalls)
        EXPECT_EQ(5000u, call.m_Header.timeout);
    EXPECT_EQ(L"ACME", Take(m_Drive.GetVendor()));
    EXPECT_EQ(L"CD-READER 3000", Take(m_Drive.GetModel()));
    EXPECT_EQ("1.07", m_Drive.GetDescription().m_strRevision);
    const std::wstring strPages = Take(m_Drive.GetPackedCapabilities());
    EXPECT_EQ(280u, strPages.size());
    EXPECT_EQ(L"01010101", strPages.substr(272));
    EXPECT_EQ(1, m_Drive.GetStateB());
}

TEST_F(DeviceDriveTest, AcquireBehindLoadAsksNothingAgain)
{
    ASSERT_TRUE(m_Drive.Load(m_strError));
    ASSERT_TRUE(m_Drive.Load(m_strError)); // still open
    ASSERT_TRUE(m_Drive.Acquire(m_strError)) << m_strError;
    EXPECT_EQ(1u, m_Kernel.m_aryOpenFlags.size());
    EXPECT_EQ(5u, m_Kernel.m_aryCalls.size());
    m_Drive.Release();
    ASSERT_TRUE(m_Drive.Acquire(m_strError)); // it may be another drive by now
    EXPECT_EQ(2u, m_Kernel.m_aryOpenFlags.size());
    EXPECT_EQ(10u, m_Kernel.m_aryCalls.size());
}

TEST_F(DeviceDriveTest, NodeThatWasMadeAnewIsOpenedAnew)
{
    ASSERT_TRUE(m_Drive.Load(m_strError));
    (void)m_Kernel.m_Folder.Write("new", "");
    std::filesystem::rename(m_Kernel.m_Folder.GetPath("new"), m_Kernel.GetNode());
    m_Kernel.m_Inquiry[8] = 'B';
    ASSERT_TRUE(m_Drive.Acquire(m_strError)) << m_strError;
    EXPECT_EQ(2u, m_Kernel.m_aryOpenFlags.size());
    EXPECT_EQ(L"BCME", Take(m_Drive.GetVendor()));
}

TEST_F(DeviceDriveTest, OtherDevicesAreRefused)
{
    m_Kernel.m_Inquiry = ScriptedKernel::MakeInquiry(0);
    EXPECT_FALSE(m_Drive.Load(m_strError));
    EXPECT_EQ(m_Kernel.GetNode() +
                  " is no optical drive (device type 0); choose one of those that 'rondel drives' lists.",
              m_strError);
    m_Kernel.m_Inquiry = ScriptedKernel::MakeInquiry(0x25); // no drive is connected there
    EXPECT_FALSE(m_Drive.Acquire(m_strError));
    EXPECT_TRUE(Holds("is no optical drive"));
    m_Kernel.m_bDevice = false;
    EXPECT_FALSE(m_Drive.Load(m_strError));
    EXPECT_TRUE(Holds("takes no drive commands")) << m_strError;
}

TEST_F(DeviceDriveTest, DriveThatDoesNotAnswerIsRefused)
{
    m_Kernel.Next(SG_ANSWER::Host(3));
    EXPECT_FALSE(m_Drive.Load(m_strError));
    EXPECT_EQ("The drive " + m_Kernel.GetNode() +
                  " does not answer (4/08/01); check its cable, or switch it off and on.",
              m_strError);
    m_Kernel.Next(SG_ANSWER::Errno(ENOTTY));
    EXPECT_FALSE(m_Drive.Load(m_strError));
    EXPECT_TRUE(Holds("takes no drive commands")) << m_strError;
    m_Kernel.Next(SG_ANSWER::Errno(ENODEV));
    EXPECT_FALSE(m_Drive.Load(m_strError));
    EXPECT_TRUE(Holds("No drive answers")) << m_strError;
    ASSERT_TRUE(m_Drive.Load(m_strError)); // it is back
}

TEST_F(DeviceDriveTest, OpenErrorsAreSentences)
{
    const std::pair<int, const char*> aryCases[] = {{ENOENT, "is not there"},
                                                    {EBUSY, "in use by another program"},
                                                    {ENOMEDIUM, "no disc"},
                                                    {ENXIO, "No drive answers"}};
    for (const auto& [nErrno, pText] : aryCases)
    {
        m_Kernel.m_nWriteErrno = nErrno;
        m_Kernel.m_aryOpenFlags.clear();
        EXPECT_FALSE(m_Drive.Load(m_strError));
        EXPECT_TRUE(Holds(pText)) << m_strError;
        EXPECT_FALSE(m_Drive.Acquire(m_strError));
        EXPECT_TRUE(Holds(pText)) << m_strError;
        EXPECT_EQ(2u, m_Kernel.m_aryOpenFlags.size()) << nErrno; // reading alone would not help
    }
    EXPECT_TRUE(m_Kernel.m_aryCalls.empty());
}

TEST_F(DeviceDriveTest, RefusedAccessNamesTheGroup)
{
    const group* pGroup = getgrnam("cdrom");
    if (geteuid() != 0 || pGroup == nullptr)
        GTEST_SKIP() << "a file can be given to another group by root only";
    ASSERT_EQ(0, chown(m_Kernel.GetNode().c_str(), 0, pGroup->gr_gid));
    ASSERT_EQ(0, chmod(m_Kernel.GetNode().c_str(), 0660));
    m_Kernel.m_nWriteErrno = EACCES;
    m_Kernel.m_nReadErrno = EACCES;
    EXPECT_FALSE(m_Drive.Load(m_strError));
    EXPECT_TRUE(Holds("the group cdrom only; join it with 'sudo usermod -aG cdrom ")) << m_strError;
}

TEST_F(DeviceDriveTest, ReadOnlyIsTakenAndTold)
{
    for (const int nErrno : {EACCES, EROFS, EPERM})
    {
        m_Kernel.m_nWriteErrno = nErrno;
        m_Kernel.m_aryOpenFlags.clear();
        ASSERT_TRUE(m_Drive.Acquire(m_strError)) << m_strError;
        const int nCommon = O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
        EXPECT_EQ((std::vector<int>{O_RDWR | nCommon, O_RDONLY | nCommon}), m_Kernel.m_aryOpenFlags);
        const std::string strWarnings = m_Drive.GetWarnings();
        EXPECT_NE(std::string::npos, strWarnings.find("its speed cannot be set and its door cannot be locked"))
            << strWarnings;
        EXPECT_TRUE(ReadCD(0, 1));
        m_Drive.Release();
        EXPECT_EQ("", m_Drive.GetWarnings());
    }
    m_Kernel.m_nWriteErrno = 0;
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    EXPECT_EQ("", m_Drive.GetWarnings());
}

TEST_F(DeviceDriveTest, UnitAttentionWhileItIsAskedIsPassedOver)
{
    m_Kernel.NextOf(CDB_MODE_SENSE_10, SG_ANSWER::Check(6, 0x29, 0));
    m_Kernel.NextOf(CDB_MODE_SENSE_10, SG_ANSWER::Check(6, 0x28, 0));
    ASSERT_TRUE(m_Drive.Load(m_strError));
    EXPECT_EQ(L"01010101", Take(m_Drive.GetPackedCapabilities()).substr(272));
    EXPECT_EQ(6, m_Kernel.CountOf(CDB_MODE_SENSE_10));
}

TEST_F(DeviceDriveTest, MissingPageHasFlagZero)
{
    m_Kernel.NextOf(CDB_MODE_SENSE_10, SG_ANSWER::Check(5, 0x24, 0));
    ASSERT_TRUE(m_Drive.Load(m_strError));
    EXPECT_EQ(L"00010101", Take(m_Drive.GetPackedCapabilities()).substr(272));
}

TEST_F(DeviceDriveTest, CommandsAreSentOnceAndAsGiven)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Kernel.m_aryCalls.clear();
    m_Kernel.Next(SG_ANSWER::Check(6, 0x28, 0));
    EXPECT_FALSE(ReadCD(5, 2));
    ExpectFailure(6, 0x28, 0);
    ASSERT_EQ(1u, m_Kernel.m_aryCalls.size());
    EXPECT_EQ((Bytes{0xBE, 4, 0, 0, 0, 5, 0, 0, 2, 0x10, 0, 0}), m_Kernel.m_aryCalls[0].m_CDB);
    EXPECT_EQ(10000u, m_Kernel.m_aryCalls[0].m_Header.timeout);
    EXPECT_TRUE(ReadCD(5, 2));
    EXPECT_EQ(Bytes(2 * LY_CD_SECTOR_BYTES, 0x11), m_Buffer);
}

TEST_F(DeviceDriveTest, SenseOfTheDriveIsFixedByteForByte)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    SG_ANSWER answer = SG_ANSWER::Check(0, 0, 0);
    answer.m_Sense = {0xF0, 0, 0x23, 0, 0, 1, 2, 10, 0, 0, 0, 0, 0x11, 5, 0, 0x80, 0, 3};
    m_Kernel.Next(answer);
    EXPECT_FALSE(ReadCD(0, 1));
    EXPECT_EQ(answer.m_Sense, Bytes(m_Sense.m_aryBytes, m_Sense.m_aryBytes + 18));
    answer.m_Sense = {0x72, 3, 0x11, 5, 0, 0, 0, 0};
    m_Kernel.Next(answer);
    EXPECT_FALSE(ReadCD(0, 1));
    EXPECT_EQ((Bytes{0x70, 0, 3}), Bytes(m_Sense.m_aryBytes, m_Sense.m_aryBytes + 3));
    ExpectFailure(3, 0x11, 5);
}

TEST_F(DeviceDriveTest, ClosedDriveFailsCommands)
{
    EXPECT_FALSE(ReadCD(0, 1));
    ExpectFailure(4, 0x05, 0);
    EXPECT_TRUE(m_Kernel.m_aryCalls.empty());
    m_Drive.Release(); // nothing was held
}

TEST_F(DeviceDriveTest, VanishedDriveFailsAtOnceUntilItIsTakenAgain)
{
    for (const int nErrno : {ENODEV, ENXIO})
    {
        ASSERT_TRUE(m_Drive.Acquire(m_strError));
        EXPECT_TRUE(ReadCD(0, 1));
        m_Kernel.Next(SG_ANSWER::Errno(nErrno));
        EXPECT_FALSE(ReadCD(1, 1));
        ExpectFailure(4, 0x05, 0);
        const size_t nCalls = m_Kernel.m_aryCalls.size();
        for (int i = 0; i < 100; ++i)
            EXPECT_FALSE(ReadCD(2, 1));
        ExpectFailure(4, 0x05, 0);
        EXPECT_EQ(nCalls, m_Kernel.m_aryCalls.size());
        EXPECT_EQ(0, m_Drive.GetStateA());
        EXPECT_EQ(0, m_Drive.GetStateB());
        EXPECT_FALSE(m_Drive.Acquire(m_strError)); // a second holder would have nothing of it
        EXPECT_TRUE(Holds("No drive answers")) << m_strError;
        EXPECT_FALSE(m_Drive.Load(m_strError));
        const std::string strGone =
            m_Kernel.GetNode() + " went away while it was in use; check its cable and its power, then open it again.";
        EXPECT_EQ(strGone, m_Drive.GetReadErrorText());
        m_Drive.Release();
        EXPECT_EQ(strGone, m_Drive.GetReadErrorText()); // still to be read behind the end
        EXPECT_EQ(nCalls, m_Kernel.m_aryCalls.size());
        ASSERT_TRUE(m_Drive.Acquire(m_strError)) << m_strError; // plugged in again
        EXPECT_EQ("", m_Drive.GetReadErrorText());
        EXPECT_EQ(1, m_Drive.GetStateB());
        EXPECT_TRUE(ReadCD(2, 1));
        m_Drive.Release();
    }
}

TEST_F(DeviceDriveTest, MissingNodeIsAnAbsentDrive)
{
    std::filesystem::remove(m_Kernel.GetNode());
    EXPECT_EQ(0, m_Drive.GetStateB());
    EXPECT_EQ(0, m_Drive.GetStateA());
    EXPECT_FALSE(m_Drive.Load(m_strError));
    EXPECT_TRUE(Holds("is not there")) << m_strError;
}

TEST_F(DeviceDriveTest, StateAIsTestUnitReady)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Kernel.m_aryCalls.clear();
    EXPECT_EQ(1, m_Drive.GetStateA());
    ASSERT_EQ(1u, m_Kernel.m_aryCalls.size());
    EXPECT_EQ(TEST_UNIT_READY, m_Kernel.m_aryCalls[0].m_CDB);
    m_Kernel.Next(SG_ANSWER::Check(2, 0x3A, 1));
    EXPECT_EQ(0, m_Drive.GetStateA());
    EXPECT_TRUE(Send(TEST_UNIT_READY)); // nothing is left over
}

TEST_F(DeviceDriveTest, StateAOfAClosedDriveLeavesItClosed)
{
    const int nDescriptors = CountDescriptors();
    EXPECT_EQ(1, m_Drive.GetStateA());
    EXPECT_EQ(nDescriptors, CountDescriptors());
    EXPECT_EQ(1u, m_Kernel.m_aryCalls.size());
}

TEST_F(DeviceDriveTest, UnitAttentionThatStateATookIsGivenToTheNextCommand)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Kernel.Next(SG_ANSWER::Check(6, 0x28, 0));
    EXPECT_EQ(1, m_Drive.GetStateA());
    m_Kernel.m_aryCalls.clear();
    EXPECT_TRUE(Send({CDB_INQUIRY, 0, 0, 0, 36, 0}, 36)); // is never held up by one
    EXPECT_FALSE(ReadCD(0, 1));
    ExpectFailure(6, 0x28, 0);
    EXPECT_EQ(1u, m_Kernel.m_aryCalls.size());
    EXPECT_TRUE(ReadCD(0, 1));
    EXPECT_EQ("", m_Drive.GetReadErrorText());
}

TEST_F(DeviceDriveTest, StateAEndsWithADriveThatAlwaysHasAttention)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    for (int i = 0; i < 10; ++i)
        m_Kernel.NextOf(CDB_TEST_UNIT_READY, SG_ANSWER::Check(6, 0x28, 0));
    EXPECT_EQ(0, m_Drive.GetStateA());
    EXPECT_EQ(4, m_Kernel.CountOf(CDB_TEST_UNIT_READY));
}

TEST_F(DeviceDriveTest, LastReleaseUnlocksTheDoorThatWasLocked)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    ASSERT_TRUE(Send(LOCK_DOOR));
    m_Drive.Release();
    EXPECT_EQ(1, m_Kernel.CountOf(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL));
    m_Drive.Release();
    ASSERT_EQ(2, m_Kernel.CountOf(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL));
    EXPECT_EQ(UNLOCK_DOOR, m_Kernel.m_aryCalls.back().m_CDB);
    m_Drive.Release();
    EXPECT_EQ(2, m_Kernel.CountOf(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL));
}

TEST_F(DeviceDriveTest, DoorThatIsNotLockedIsLeftAlone)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Drive.Release();
    EXPECT_EQ(0, m_Kernel.CountOf(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL));
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    ASSERT_TRUE(Send(LOCK_DOOR));
    ASSERT_TRUE(Send(UNLOCK_DOOR));
    m_Drive.Release();
    EXPECT_EQ(2, m_Kernel.CountOf(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL));
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Kernel.Next(SG_ANSWER::Errno(EPERM)); // the kernel did not let it through
    EXPECT_FALSE(Send(LOCK_DOOR));
    m_Drive.Release();
    EXPECT_EQ(3, m_Kernel.CountOf(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL));
}

TEST_F(DeviceDriveTest, EndOfTheObjectGivesEverythingBack)
{
    const int nDescriptors = CountDescriptors();
    {
        DeviceDrive drive(m_Kernel.GetNode(), m_Kernel.GetCalls());
        ASSERT_TRUE(drive.Acquire(m_strError));
        int nBytes = 0;
        SENSE_DATA sense;
        ASSERT_TRUE(drive.Send({LOCK_DOOR.data(), 6, nullptr, nBytes, DRIVE_TRANSFER_NONE}, sense));
        EXPECT_EQ(nDescriptors + 1, CountDescriptors());
    }
    EXPECT_EQ(nDescriptors, CountDescriptors());
    EXPECT_EQ(UNLOCK_DOOR, m_Kernel.m_aryCalls.back().m_CDB);
    EXPECT_TRUE(std::filesystem::is_empty(m_Kernel.m_Folder.GetPath("rondel")));
}

TEST_F(DeviceDriveTest, UnreadSectorsAreToldWithPlaceAndReason)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    EXPECT_EQ("", m_Drive.GetReadErrorText());
    for (int i = 0; i < 2; ++i) // the caller tries twice
    {
        m_Kernel.Next(SG_ANSWER::Check(3, 0x11, 5));
        EXPECT_FALSE(ReadCD(4350, 27)); // 00:58.00 + 00:02.00
        ExpectFailure(3, 0x11, 5);
    }
    EXPECT_EQ(m_Kernel.GetNode() +
                  ": 27 sectors from 01:00.00 on could not be read (3/11/05) and are silence; clean the "
                  "disc, or try another drive.",
              m_Drive.GetReadErrorText());
    EXPECT_TRUE(ReadCD(4351, 26));
    EXPECT_EQ(m_Kernel.GetNode() + ": 1 sector from 01:00.00 on could not be read (3/11/05) and are silence; clean the "
                                   "disc, or try another drive.",
              m_Drive.GetReadErrorText());
    EXPECT_TRUE(ReadCD(4350, 1));
    EXPECT_EQ("", m_Drive.GetReadErrorText());
}

TEST_F(DeviceDriveTest, UnreadSectorsAreForgottenByTheNextFirstHolder)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Kernel.Next(SG_ANSWER::Host(3));
    EXPECT_FALSE(ReadCD(0, 1));
    ASSERT_TRUE(m_Drive.Acquire(m_strError)); // a second one
    m_Drive.Release();
    m_Drive.Release();
    EXPECT_NE("", m_Drive.GetReadErrorText());
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    EXPECT_EQ("", m_Drive.GetReadErrorText());
}

TEST_F(DeviceDriveTest, ReadThatWasWrongInItselfSaysNothingOfTheDisc)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    m_Kernel.Next(SG_ANSWER::Check(5, 0x21, 0));
    EXPECT_FALSE(ReadCD(999999, 1));
    m_Kernel.Next(SG_ANSWER::Check(6, 0x28, 0));
    EXPECT_FALSE(ReadCD(0, 1));
    EXPECT_EQ("", m_Drive.GetReadErrorText());
}

TEST_F(DeviceDriveTest, CommandsOfManyThreadsGoOneAfterTheOther)
{
    ASSERT_TRUE(m_Drive.Acquire(m_strError));
    std::vector<std::thread> aryThreads;
    for (int nThread = 0; nThread < 4; ++nThread)
        aryThreads.emplace_back(
            [this, nThread]
            {
                Bytes buffer(LY_CD_SECTOR_BYTES);
                for (int i = 0; i < 200; ++i)
                {
                    const Bytes cdb = {0xBE, 4, 0, 0, 0, static_cast<unsigned char>(i), 0, 0, 1, 0x10, 0, 0};
                    int nBytes = LY_CD_SECTOR_BYTES;
                    SENSE_DATA sense;
                    EXPECT_TRUE(m_Drive.Send({cdb.data(), 12, buffer.data(), nBytes, DRIVE_TRANSFER_IN}, sense));
                    if (nThread == 0)
                    {
                        (void)m_Drive.GetReadErrorText();
                        (void)m_Drive.GetStateA();
                        (void)m_Drive.GetStateB();
                        (void)m_Drive.GetDescription();
                        m_Drive.AddUser(2);
                        m_Drive.RemoveUser(2);
                    }
                }
            });
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ(1, m_Kernel.m_nMostAtOnce);
    EXPECT_EQ(800, m_Kernel.CountOf(CDB_READ_CD));
}
} // namespace
