#include "LyFile.h"
#include "LyTempFolder.h"
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
int g_nLockError = 0; // with this error every lock is refused; 0 leaves them to the system
int g_nLocksAsked = 0;
struct flock g_LastLock;
} // namespace

// Takes the place of the C library's, so that locks can be refused and counted.
extern "C" int fcntl(int nDescriptor, int nCommand, ...)
{
    va_list arguments;
    va_start(arguments, nCommand);
    void* pArgument = va_arg(arguments, void*);
    va_end(arguments);
    if (nCommand == F_SETLK)
    {
        ++g_nLocksAsked;
        g_LastLock = *static_cast<struct flock*>(pArgument);
        if (g_nLockError != 0)
        {
            errno = g_nLockError;
            return -1;
        }
    }
    return static_cast<int>(syscall(SYS_fcntl, nDescriptor, nCommand, pArgument));
}

namespace
{
class LyFileTest : public testing::Test
{
protected:
    ~LyFileTest() override { g_nLockError = 0; }
    LyString GetName(const wchar_t* p) const { return m_Folder.GetName(p); }
    void Write(const LyString& strName, const std::string& strText)
    {
        LyFile file;
        ASSERT_TRUE(file.Open(strName, 2, 3, static_cast<CreationModes>(0)));
        ASSERT_TRUE(file.Write(strText.data(), static_cast<unsigned int>(strText.size())));
    }
    std::string Read(const LyString& strName)
    {
        LyFile file(strName, 1, 3, static_cast<CreationModes>(3));
        if (!file.Open())
            return "(none)";
        char aryText[1000];
        unsigned int nRead = 0;
        EXPECT_TRUE(file.Read(aryText, sizeof aryText, nRead));
        return std::string(aryText, nRead);
    }

    LyTempFolder m_Folder;
};

// What the work returns in a process of its own.
int RunInChild(const std::function<int()>& work)
{
    pid_t nChild = fork();
    if (nChild == 0)
        _exit(work());
    int nStatus = 0;
    if (waitpid(nChild, &nStatus, 0) != nChild || !WIFEXITED(nStatus))
        return -1;
    return WEXITSTATUS(nStatus);
}

struct MODE_CASE
{
    const char* pName;
    int nMode;
    bool bOpensMissing;
    bool bOpensExisting;
    const char* pContentAfter; // of a file that held "old"
};

const MODE_CASE s_aryModeCases[] = {
    {"CreateAlways", 0, true, true, ""},      {"CreateNew", 1, true, false, "old"},
    {"OpenOrCreate", 2, true, true, "old"},   {"OpenExisting", 3, false, true, "old"},
    {"TruncateExisting", 4, false, true, ""},
};
} // namespace

TEST_F(LyFileTest, CreationModesDecideAboutMissingAndExistingFiles)
{
    for (const MODE_CASE& c : s_aryModeCases)
    {
        LyString strMissing = GetName(L"missing");
        LyFile file;
        EXPECT_EQ(file.Open(strMissing, 2, 3, static_cast<CreationModes>(c.nMode)), c.bOpensMissing) << c.pName;
        EXPECT_EQ(file.GetIsOpen(), c.bOpensMissing) << c.pName;
        file.Close();
        EXPECT_EQ(unlink(LyStringUTF8(strMissing)) == 0, c.bOpensMissing) << c.pName;

        LyString strExisting = GetName(L"existing");
        Write(strExisting, "old");
        EXPECT_EQ(file.Open(strExisting, 2, 3, static_cast<CreationModes>(c.nMode)), c.bOpensExisting) << c.pName;
        file.Close();
        EXPECT_EQ(Read(strExisting), c.pContentAfter) << c.pName;
    }
}

TEST_F(LyFileTest, NewFileHasPermissions0644)
{
    mode_t nMask = umask(0);
    Write(GetName(L"a"), "x");
    umask(nMask);
    LyFileInfo info{LyFilename(GetName(L"a"))};
    EXPECT_EQ(info.GetStatus().st_mode & 07777, static_cast<mode_t>(0644));
}

TEST_F(LyFileTest, AccessDecidesAboutReadingAndWriting)
{
    Write(GetName(L"a"), "abc");
    for (unsigned int nAccess = 1; nAccess <= 3; ++nAccess)
    {
        LyFile file(GetName(L"a"), nAccess, 3, static_cast<CreationModes>(3));
        ASSERT_TRUE(file.Open());
        char c = 'a';
        unsigned int nRead = 99;
        EXPECT_EQ(file.Read(&c, 1, nRead), (nAccess & 1) != 0);
        EXPECT_EQ(nRead, nAccess & 1);
        EXPECT_EQ(file.SetPosition(0, 0), 0);
        EXPECT_EQ(file.Write(&c, 1), (nAccess & 2) != 0);
    }
}

TEST_F(LyFileTest, NameMayBeAURLAndHoldAnyCharacter)
{
    LyString strName = GetName(L"\u00FC \u65E5.bin");
    Write(strName, "text");
    EXPECT_EQ(Read(strName), "text");
    EXPECT_EQ(Read(LyString(L"file://") + GetName(L"%C3%BC missing")), "(none)");
    Write(GetName(L"a b"), "blank");
    EXPECT_EQ(Read(LyString(L"file://") + GetName(L"a%20b")), "blank");
}

TEST_F(LyFileTest, FailuresAreFalse)
{
    LyFile file;
    EXPECT_FALSE(file.Open());
    EXPECT_FALSE(file.Open(L"", 1, 3, static_cast<CreationModes>(3)));
    EXPECT_FALSE(file.Open(GetName(L"no/such/folder"), 2, 3, static_cast<CreationModes>(0)));
    EXPECT_FALSE(file.Open(m_Folder.GetName(L""), 2, 3, static_cast<CreationModes>(3))); // a folder
    EXPECT_FALSE(file.GetIsOpen());
}

TEST_F(LyFileTest, NothingWorksWhileClosed)
{
    LyFile file(GetName(L"a"), 3, 3, static_cast<CreationModes>(0));
    char c = 0;
    unsigned int nCount = 99;
    EXPECT_FALSE(file.Write(&c, 1));
    EXPECT_FALSE(file.Write(&c, 1, nCount));
    EXPECT_EQ(nCount, 0u);
    nCount = 99;
    EXPECT_FALSE(file.Read(&c, 1, nCount));
    EXPECT_EQ(nCount, 0u);
    EXPECT_EQ(file.SetPosition(0, 0), -1);
    file.Close();
    ASSERT_TRUE(file.Open());
    EXPECT_TRUE(file.Write(&c, 1));
    file.Close();
    EXPECT_FALSE(file.Write(&c, 1));
}

TEST_F(LyFileTest, OpenClosesFirst)
{
    LyFile file;
    ASSERT_TRUE(file.Open(GetName(L"a"), 2, 3, static_cast<CreationModes>(0)));
    EXPECT_FALSE(file.Open(GetName(L"missing"), 1, 3, static_cast<CreationModes>(3)));
    EXPECT_FALSE(file.GetIsOpen());
    EXPECT_FALSE(file.Write("x", 1));
}

TEST_F(LyFileTest, PositionsFollowTheOrigin)
{
    Write(GetName(L"a"), "abcdef");
    LyFile file(GetName(L"a"), 1, 3, static_cast<CreationModes>(3));
    ASSERT_TRUE(file.Open());
    EXPECT_EQ(file.SetPosition(4, 0), 4);
    EXPECT_EQ(file.SetPosition(-3, 1), 1);
    EXPECT_EQ(file.SetPosition(-1, 2), 5);
    EXPECT_EQ(file.SetPosition(10, 2), 16);
    EXPECT_EQ(file.SetPosition(-1, 0), -1); // before the start
    EXPECT_EQ(file.SetPosition(0, 3), -1);  // no such origin
    EXPECT_EQ(file.SetPosition(0, UINT_MAX), -1);
    EXPECT_EQ(file.SetPosition(0, 1), 16);
    EXPECT_EQ(file.SetPosition(LLONG_MIN, 0), -1);
}

TEST_F(LyFileTest, ReadEndsAtTheEndOfTheFile)
{
    Write(GetName(L"a"), "abc");
    LyFile file(GetName(L"a"), 1, 3, static_cast<CreationModes>(3));
    file.SetSequentialScan(true);
    ASSERT_TRUE(file.Open());
    char aryText[10];
    unsigned int nRead = 0;
    EXPECT_TRUE(file.Read(aryText, 2, nRead));
    EXPECT_EQ(nRead, 2u);
    EXPECT_TRUE(file.Read(aryText, 10, nRead));
    EXPECT_EQ(nRead, 1u);
    EXPECT_EQ(aryText[0], 'c');
    EXPECT_TRUE(file.Read(aryText, 10, nRead));
    EXPECT_EQ(nRead, 0u);
    EXPECT_TRUE(file.Read(nullptr, 0, nRead));
    EXPECT_FALSE(file.Read(nullptr, 1, nRead));
}

TEST_F(LyFileTest, WriteTellsHowMuchWent)
{
    LyFile file(GetName(L"a"), 2, 3, static_cast<CreationModes>(0));
    ASSERT_TRUE(file.Open());
    unsigned int nWritten = 0;
    EXPECT_TRUE(file.Write("abcdef", 6, nWritten));
    EXPECT_EQ(nWritten, 6u);
    EXPECT_TRUE(file.Write("", 0));
    EXPECT_FALSE(file.Write(nullptr, 1));
    EXPECT_EQ(file.GetLength(), 6);
}

TEST_F(LyFileTest, FullDeviceIsFalse)
{
    LyFile file;
    ASSERT_TRUE(file.Open(L"/dev/full", 2, 3, static_cast<CreationModes>(3)));
    unsigned int nWritten = 99;
    EXPECT_FALSE(file.Write("abc", 3));
    EXPECT_FALSE(file.Write("abc", 3, nWritten));
    EXPECT_EQ(nWritten, 0u);
}

// A pipe holds less than what is written, so that every call moves a part only.
TEST_F(LyFileTest, PartialTransfersAreContinued)
{
    constexpr unsigned int BYTES = 1'000'000;
    LyString strPipe = GetName(L"pipe");
    ASSERT_EQ(mkfifo(LyStringUTF8(strPipe), 0600), 0);
    pid_t nChild = fork();
    if (nChild == 0)
    {
        LyFile writer(strPipe, 2, 3, static_cast<CreationModes>(3));
        std::string strText(BYTES, 'x');
        _exit(writer.Open() && writer.Write(strText.data(), BYTES) ? 0 : 1);
    }
    LyFile reader(strPipe, 1, 3, static_cast<CreationModes>(3));
    ASSERT_TRUE(reader.Open());
    std::string strText(BYTES + 1, ' ');
    unsigned int nRead = 0;
    EXPECT_TRUE(reader.Read(strText.data(), BYTES + 1, nRead));
    EXPECT_EQ(nRead, BYTES);
    int nStatus = -1;
    waitpid(nChild, &nStatus, 0);
    EXPECT_EQ(nStatus, 0);
    EXPECT_EQ(strText, std::string(BYTES, 'x') + " ");
}

TEST_F(LyFileTest, LengthNeedsNoOpenFile)
{
    Write(GetName(L"a"), "abcde");
    LyFile file(GetName(L"a"), 1, 3, static_cast<CreationModes>(3));
    EXPECT_EQ(file.GetLength(), 5);
    ASSERT_TRUE(file.Open());
    EXPECT_EQ(file.GetLength(), 5);
    unlink(LyStringUTF8(GetName(L"a")));
    EXPECT_EQ(file.GetLength(), 5); // it is still open
    file.Close();
    EXPECT_EQ(file.GetLength(), -1);
    EXPECT_EQ(LyFile().GetLength(), -1);
}

TEST_F(LyFileTest, WriterWithoutSharedWritingLocksTheWholeFile)
{
    for (unsigned int nShare : {0u, 1u})
    {
        for (unsigned int nAccess : {2u, 3u})
        {
            g_nLocksAsked = 0;
            LyFile file(GetName(L"a"), nAccess, nShare, static_cast<CreationModes>(0));
            EXPECT_TRUE(file.Open());
            EXPECT_EQ(g_nLocksAsked, 1);
            EXPECT_EQ(g_LastLock.l_type, F_WRLCK);
            EXPECT_EQ(g_LastLock.l_whence, SEEK_SET);
            EXPECT_EQ(g_LastLock.l_start, 0);
            EXPECT_EQ(g_LastLock.l_len, 0);
        }
    }
}

TEST_F(LyFileTest, SharedWritingAndReadingTakeNoLock)
{
    g_nLockError = EACCES; // a lock that was asked for would be refused
    g_nLocksAsked = 0;
    LyFile file;
    EXPECT_TRUE(file.Open(GetName(L"a"), 2, 2, static_cast<CreationModes>(0)));
    EXPECT_TRUE(file.Open(GetName(L"a"), 3, 3, static_cast<CreationModes>(0)));
    EXPECT_TRUE(file.Open(GetName(L"a"), 1, 0, static_cast<CreationModes>(3)));
    EXPECT_EQ(g_nLocksAsked, 0);
}

TEST_F(LyFileTest, FileSystemThatCannotLockLetsTheFileOpen)
{
    for (int nError : {ENOTSUP, ENOLCK, EOPNOTSUPP})
    {
        g_nLockError = nError;
        LyFile file(GetName(L"a"), 2, 1, static_cast<CreationModes>(0));
        EXPECT_TRUE(file.Open()) << nError;
        EXPECT_TRUE(file.Write("abc", 3)) << nError;
    }
}

TEST_F(LyFileTest, AnyOtherRefusedLockFails)
{
    for (int nError : {EACCES, EAGAIN, EDEADLK, EINVAL, EBADF})
    {
        g_nLockError = nError;
        LyFile file(GetName(L"a"), 2, 1, static_cast<CreationModes>(0));
        EXPECT_FALSE(file.Open()) << nError;
        EXPECT_FALSE(file.GetIsOpen()) << nError;
        EXPECT_FALSE(file.Write("abc", 3)) << nError;
    }
}

TEST_F(LyFileTest, LockKeepsOtherProcessesWritersOutUntilTheClose)
{
    LyString strName = GetName(L"a");
    auto OpenInChild = [&](unsigned int nAccess, unsigned int nShare) {
        return RunInChild([&]
                          { return LyFile().Open(strName, nAccess, nShare, static_cast<CreationModes>(3)) ? 1 : 0; });
    };
    LyFile file(strName, 2, 1, static_cast<CreationModes>(0));
    ASSERT_TRUE(file.Open());
    EXPECT_EQ(OpenInChild(2, 1), 0);
    EXPECT_EQ(OpenInChild(3, 0), 0);
    EXPECT_EQ(OpenInChild(2, 2), 1); // does not ask
    EXPECT_EQ(OpenInChild(1, 0), 1);
    file.Close();
    EXPECT_EQ(OpenInChild(2, 1), 1);
}

TEST_F(LyFileTest, DestructorCloses)
{
    LyString strName = GetName(L"a");
    {
        LyFile file(strName, 2, 1, static_cast<CreationModes>(0));
        ASSERT_TRUE(file.Open());
    }
    EXPECT_EQ(RunInChild([&] { return LyFile().Open(strName, 2, 1, static_cast<CreationModes>(3)) ? 1 : 0; }), 1);
}

TEST_F(LyFileTest, InfoOfAFile)
{
    Write(GetName(L"a"), "abcde");
    LyFileInfo info{LyFilename(GetName(L"a"))};
    EXPECT_TRUE(info.GetValid());
    EXPECT_FALSE(info.GetIsDirectory());
    EXPECT_EQ(info.GetFileSize(), 5);
    EXPECT_STREQ(info.GetFilename().m_strName, GetName(L"a"));
}

TEST_F(LyFileTest, InfoOfAFolderHasATrailingSlash)
{
    LyString strFolder = m_Folder.GetName(L"");
    strFolder.RemoveRight(1);
    for (const LyString& strName : {strFolder, strFolder + L"/", strFolder + L"//"})
    {
        LyFileInfo info{LyFilename(strName)};
        EXPECT_TRUE(info.GetIsDirectory());
        EXPECT_STREQ(info.GetFilename().m_strName, strFolder + L"/");
    }
}

TEST_F(LyFileTest, InfoOfNothingIsCleared)
{
    Write(GetName(L"a"), "abcde");
    LyFileInfo info{LyFilename(GetName(L"a"))};
    EXPECT_FALSE(info.Set(GetName(L"missing"), nullptr));
    EXPECT_FALSE(info.GetValid());
    EXPECT_EQ(info.GetFileSize(), -1);
    EXPECT_STREQ(info.GetFilename().m_strName, L"");
    EXPECT_EQ(info.GetStatus().st_size, 0);
    EXPECT_EQ(LyFileInfo().GetFileSize(), -1);
}

TEST_F(LyFileTest, InfoTakesAGivenStatusWithoutAsking)
{
    struct stat status = {};
    status.st_size = 123;
    status.st_mode = S_IFREG;
    LyFileInfo info;
    EXPECT_TRUE(info.Set(L"/no/such/file", &status));
    EXPECT_TRUE(info.GetValid());
    EXPECT_EQ(info.GetFileSize(), 123);
    status.st_mode = S_IFDIR;
    EXPECT_TRUE(info.Set(L"/no/such/folder", &status));
    EXPECT_STREQ(info.GetFilename().m_strName, L"/no/such/folder/");
}
