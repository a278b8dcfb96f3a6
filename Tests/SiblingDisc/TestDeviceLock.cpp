#include "DeviceLock.h"
#include "DeviceNote.h"
#include "HolderProcess.h"
#include "TempFolder.h"
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace
{
namespace fs = std::filesystem;

class DeviceLockTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_strNode = m_Folder.Write("sr0", "");
        m_nDescriptor = OpenNode();
    }
    void TearDown() override { close(m_nDescriptor); }
    int OpenNode() const { return open(m_strNode.c_str(), O_RDONLY | O_CLOEXEC); }
    int CountNotes() const
    {
        int nNotes = 0;
        if (fs::exists(m_Folder.GetPath("rondel")))
            for ([[maybe_unused]] const auto& entry : fs::directory_iterator(m_Folder.GetPath("rondel")))
                ++nNotes;
        return nNotes;
    }
    std::string GetNotePath() const
    {
        struct stat status = {};
        (void)stat(m_strNode.c_str(), &status);
        return m_Folder.GetPath("rondel/" + GetNoteName(status));
    }
    bool Take(DeviceLock& lock) { return lock.Take(m_nDescriptor, m_strNode, m_strError); }

    TempFolder m_Folder;
    RuntimeFolder m_Runtime{m_Folder.GetPath()};
    std::string m_strNode;
    std::string m_strError;
    int m_nDescriptor = -1;
};

// Holds the node in a process of its own.
class OtherProgram
{
public:
    explicit OtherProgram(const std::string& strNode)
        : m_Process(
              [this, strNode]
              {
                  std::string strError;
                  const int nDescriptor = open(strNode.c_str(), O_RDONLY | O_CLOEXEC);
                  return nDescriptor >= 0 && m_Lock.Take(nDescriptor, strNode, strError);
              },
              [this] { m_Lock.Give(); })
    {
    }
    HolderProcess& Get() { return m_Process; }

private:
    DeviceLock m_Lock; // that of the other process is a copy of this one
    HolderProcess m_Process;
};

TEST_F(DeviceLockTest, IsTakenAndGivenBack)
{
    DeviceLock lock;
    EXPECT_FALSE(lock.IsTaken());
    ASSERT_TRUE(Take(lock)) << m_strError;
    EXPECT_TRUE(lock.IsTaken());
    EXPECT_FALSE(lock.WasLeft());
    EXPECT_FALSE(lock.IsUnsupported());
    EXPECT_EQ(1, CountNotes());
    lock.Give();
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_EQ(0, CountNotes());
    lock.Give();
    ASSERT_TRUE(Take(lock));
    EXPECT_FALSE(lock.WasLeft());
    lock.Give();
}

TEST_F(DeviceLockTest, NoteNamesThisProgram)
{
    DeviceLock lock;
    ASSERT_TRUE(Take(lock));
    struct stat status = {};
    ASSERT_EQ(0, fstat(m_nDescriptor, &status));
    const DEVICE_NOTE note = DeviceNotes().Read(GetNoteName(status));
    EXPECT_EQ(getpid(), note.m_nPid);
    EXPECT_EQ("TestDeviceLock", note.m_strProgram);
    ASSERT_EQ(0, stat(GetNotePath().c_str(), &status));
    EXPECT_EQ(0600u, status.st_mode & 0777u);
    ASSERT_EQ(0, stat(m_Folder.GetPath("rondel").c_str(), &status));
    EXPECT_EQ(0700u, status.st_mode & 0777u);
    lock.Give();
}

TEST_F(DeviceLockTest, SecondProcessIsRefusedAndToldWhoHasIt)
{
    OtherProgram other(m_strNode);
    ASSERT_TRUE(other.Get().WasGood());
    DeviceLock lock;
    EXPECT_FALSE(Take(lock));
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_EQ(m_strNode + " is held by TestDeviceLock (process " + std::to_string(other.Get().GetPid()) +
                  "); stop it or choose another drive.",
              m_strError);
    EXPECT_EQ(m_strError, FindDeviceHolder(m_nDescriptor, m_strNode));
    EXPECT_EQ(m_strError, FindDeviceHolder(m_strNode));
    EXPECT_EQ(1, CountNotes()); // the refused one leaves the holder's alone
    other.Get().Finish();
    EXPECT_EQ("", FindDeviceHolder(m_nDescriptor, m_strNode));
    ASSERT_TRUE(Take(lock)) << m_strError;
    EXPECT_FALSE(lock.WasLeft());
    lock.Give();
}

TEST_F(DeviceLockTest, KilledHolderLeavesTheLockAndANote)
{
    OtherProgram other(m_strNode);
    ASSERT_TRUE(other.Get().WasGood());
    other.Get().Kill();
    EXPECT_EQ("", FindDeviceHolder(m_nDescriptor, m_strNode));
    DeviceLock lock;
    ASSERT_TRUE(Take(lock)) << m_strError;
    EXPECT_TRUE(lock.WasLeft());
    lock.Give();
    EXPECT_FALSE(lock.WasLeft());
    ASSERT_TRUE(Take(lock));
    EXPECT_FALSE(lock.WasLeft());
    lock.Give();
}

TEST_F(DeviceLockTest, HolderWithoutANoteIsFoundByTheKernelsList)
{
    HolderProcess other([&] { return flock(OpenNode(), LOCK_EX) == 0; }, [] {});
    ASSERT_TRUE(other.WasGood());
    DeviceLock lock;
    EXPECT_FALSE(Take(lock));
    EXPECT_NE(std::string::npos, m_strError.find("(process " + std::to_string(other.GetPid()) + ")")) << m_strError;
}

TEST_F(DeviceLockTest, NoteOfADeadProcessDoesNotNameTheHolder)
{
    fs::create_directory(m_Folder.GetPath("rondel"));
    fs::permissions(m_Folder.GetPath("rondel"), fs::perms(0700));
    (void)m_Folder.Write("rondel/" + fs::path(GetNotePath()).filename().string(), "999999999 ghost\n");
    HolderProcess other([&] { return flock(OpenNode(), LOCK_EX) == 0; }, [] {});
    ASSERT_TRUE(other.WasGood());
    DeviceLock lock;
    EXPECT_FALSE(Take(lock));
    EXPECT_EQ(std::string::npos, m_strError.find("ghost")) << m_strError;
    EXPECT_EQ(m_strNode + " is held by TestDeviceLock (process " + std::to_string(other.GetPid()) +
                  "); stop it or choose another drive.",
              m_strError);
}

TEST_F(DeviceLockTest, WhoOnlyLooksIsWaitedFor)
{
    const int nOther = OpenNode();
    ASSERT_EQ(0, flock(nOther, LOCK_SH));
    std::thread looker(
        [nOther]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            flock(nOther, LOCK_UN);
        });
    EXPECT_EQ("", FindDeviceHolder(m_nDescriptor, m_strNode)); // two who look do not disturb each other
    DeviceLock lock;
    EXPECT_TRUE(Take(lock)) << m_strError;
    looker.join();
    lock.Give();
    close(nOther);
}

TEST_F(DeviceLockTest, ChildWithACopyOfTheDescriptorDoesNotKeepTheLock)
{
    DeviceLock lock;
    ASSERT_TRUE(Take(lock));
    HolderProcess child([] { return true; }, [] {});
    lock.Give();
    close(m_nDescriptor);
    m_nDescriptor = OpenNode();
    EXPECT_TRUE(Take(lock)) << m_strError;
    lock.Give();
}

TEST_F(DeviceLockTest, LockWorksWithoutTheFolder)
{
    (void)m_Folder.Write("rondel", "a file in the folder's place");
    DeviceLock lock;
    EXPECT_TRUE(Take(lock)) << m_strError;
    const int nOther = OpenNode();
    EXPECT_NE("", FindDeviceHolder(nOther, m_strNode));
    close(nOther);
    lock.Give();
}

TEST_F(DeviceLockTest, LinkInTheFoldersPlaceIsNotFollowed)
{
    fs::create_directory(m_Folder.GetPath("elsewhere"));
    fs::create_directory_symlink(m_Folder.GetPath("elsewhere"), m_Folder.GetPath("rondel"));
    DeviceLock lock;
    EXPECT_TRUE(Take(lock)) << m_strError;
    EXPECT_TRUE(fs::is_empty(m_Folder.GetPath("elsewhere")));
    lock.Give();
}

TEST_F(DeviceLockTest, FolderThatOthersMayWriteToIsNotUsed)
{
    fs::create_directory(m_Folder.GetPath("rondel"));
    fs::permissions(m_Folder.GetPath("rondel"), fs::perms(0777));
    DeviceLock lock;
    EXPECT_TRUE(Take(lock)) << m_strError;
    EXPECT_EQ(0, CountNotes());
    lock.Give();
}

TEST_F(DeviceLockTest, LinkInTheNotesPlaceIsReplacedAndItsTargetStays)
{
    const std::string strTarget = m_Folder.Write("precious", "keep me");
    fs::create_directory(m_Folder.GetPath("rondel"));
    fs::permissions(m_Folder.GetPath("rondel"), fs::perms(0700));
    fs::create_symlink(strTarget, GetNotePath());
    fs::create_symlink(strTarget, GetNotePath() + ".new");
    DeviceLock lock;
    ASSERT_TRUE(Take(lock)) << m_strError;
    EXPECT_FALSE(lock.WasLeft());
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(GetNotePath())));
    EXPECT_EQ(7u, fs::file_size(strTarget));
    lock.Give();
}

TEST_F(DeviceLockTest, DescriptorThatCannotBeLockedIsTakenWithoutALock)
{
    DeviceLock lock;
    EXPECT_TRUE(lock.Take(100000, m_strNode, m_strError)); // no such descriptor: no lock to be had
    EXPECT_TRUE(lock.IsUnsupported());
    EXPECT_EQ(0, CountNotes());
    lock.Give();
    EXPECT_EQ("", FindDeviceHolder(100000, m_strNode));
    EXPECT_EQ("", FindDeviceHolder(m_Folder.GetPath("not there")));
}

TEST(DeviceNote, OnlyWholeLinesWithAProcessCount)
{
    struct NOTE_CASE
    {
        const char* m_pContent;
        int m_nPid;
        const char* m_pProgram;
    };
    const NOTE_CASE aryCases[] = {
        {"1234 rondel\n", 1234, "rondel"},
        {"1234 my player\nmore\n", 1234, "my player"},
        {"1234 \n", 1234, ""},
        {"1 a\033[31mb\177c\n", 1, "a[31mbc"},
        {"1234 rondel", 0, ""}, // still being written
        {"1234\n", 0, ""},
        {"", 0, ""},
        {"\n", 0, ""},
        {"0 x\n", 0, ""},
        {"-5 x\n", 0, ""},
        {"x 5\n", 0, ""},
        {"99999999999 x\n", 0, ""},
        {"12x\n", 0, ""},
    };
    for (const NOTE_CASE& row : aryCases)
    {
        const DEVICE_NOTE note = ReadDeviceNote(row.m_pContent);
        EXPECT_EQ(row.m_nPid, note.m_nPid) << row.m_pContent;
        EXPECT_EQ(row.m_pProgram, note.m_strProgram) << row.m_pContent;
    }
    EXPECT_EQ(64u, ReadDeviceNote("7 " + std::string(200, 'n') + "\n").m_strProgram.size());
}
} // namespace
