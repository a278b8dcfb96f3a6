// What is outside goes wrong: the options file is broken, locked, read-only or too big for the disk.

#include "OptionStore.h"
#include "UserFolders.h"
#include <algorithm>
#include <csignal>
#include <fstream>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sched.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
constexpr unsigned int NOBODY = 65534;

std::string ReadFile(const std::string& strFile)
{
    std::ifstream stream(strFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Runs commands of SQLite on a file, as another program does.
void Execute(const std::string& strFile, const char* pCommands)
{
    std::filesystem::create_directories(std::filesystem::path(strFile).parent_path());
    sqlite3* pDatabase = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(strFile.c_str(), &pDatabase));
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(pDatabase, pCommands, nullptr, nullptr, nullptr)) << sqlite3_errmsg(pDatabase);
    EXPECT_EQ(SQLITE_OK, sqlite3_close(pDatabase));
}

void SetOne(const wchar_t* pValue)
{
    OptionStore store;
    ASSERT_TRUE(store.Set(L"S", L"K", pValue));
}

// What the operation writes to the standard error output.
std::string Hear(const std::function<void()>& operation)
{
    testing::internal::CaptureStderr();
    operation();
    return testing::internal::GetCapturedStderr();
}

// Runs the operation in a process without the rights of the administrator. True if all it expected came true.
bool RunAsOrdinaryUser(const std::function<bool()>& operation)
{
    const pid_t nProcess = fork();
    if (nProcess == 0)
    {
        if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(NOBODY) != 0 || setuid(NOBODY) != 0))
            _exit(2);
        _exit(operation() ? 0 : 1);
    }
    int nStatus = -1;
    return waitpid(nProcess, &nStatus, 0) == nProcess && nStatus == 0;
}

std::string WithReason(const UserFolders& user, const char* pBefore, const char* pReason)
{
    return std::string("rondel: Options cannot be ") + pBefore + " " + user.GetOptionsFile() + ": " + pReason + ".\n";
}

// Everything in the file that another program may have put there.
const struct DAMAGE_CASE
{
    const char* pName;
    std::function<void(const std::string& strFile)> damage;
} s_aryDamageCases[] = {
    {"TwoBytes", [](const std::string& strFile) { std::ofstream(strFile) << "xy"; }},
    {"Text", [](const std::string& strFile) { std::ofstream(strFile) << std::string(511, 'x'); }},
    {"LongText", [](const std::string& strFile) { std::ofstream(strFile) << std::string(100000, 'x'); }},
    {"Zeros", [](const std::string& strFile) { std::ofstream(strFile) << std::string(8192, '\0'); }},
    {"CutInTheHeader", [](const std::string& strFile) { std::filesystem::resize_file(strFile, 50); }},
    {"CutAfterThePage", [](const std::string& strFile) { std::filesystem::resize_file(strFile, 4096); }},
    {"BrokenPage",
     [](const std::string& strFile)
     {
         std::fstream stream(strFile, std::ios::in | std::ios::out | std::ios::binary);
         stream.seekp(4096);
         stream << std::string(4096, '\xA5');
     }},
    {"AnotherProgramsDatabase",
     [](const std::string& strFile)
     {
         std::filesystem::remove(strFile);
         Execute(strFile, "CREATE TABLE options(store, key, value)");
     }},
    {"NoTable", [](const std::string& strFile) { Execute(strFile, "DROP TABLE options"); }},
    {"NoColumn",
     [](const std::string& strFile) { Execute(strFile, "DROP TABLE options; CREATE TABLE options(store, key)"); }},
    {"NoVersion", [](const std::string& strFile) { Execute(strFile, "PRAGMA user_version = 0"); }},
};
class OptionStoreDamage : public testing::TestWithParam<DAMAGE_CASE>
{
};
} // namespace

TEST_P(OptionStoreDamage, IsKeptAsideAndAFreshFileBegins)
{
    const UserFolders user;
    SetOne(L"old");
    GetParam().damage(user.GetOptionsFile());
    const std::string strBroken = ReadFile(user.GetOptionsFile());
    const std::string strKept = user.GetOptionsFile() + ".damaged-1";
    OptionStore store;
    EXPECT_EQ("rondel: The options file was broken. It is kept as " + strKept + ", and a fresh one begins.\n",
              Hear([&] { EXPECT_FALSE(store.Get(L"S", L"K")); }));
    EXPECT_TRUE(ReadFile(strKept) == strBroken);
    EXPECT_TRUE(std::filesystem::exists(user.GetOptionsFile()));
    EXPECT_EQ("", Hear(
                      [&]
                      {
                          EXPECT_TRUE(store.Set(L"S", L"K", L"new"));
                          EXPECT_EQ(L"new", store.Get(L"S", L"K"));
                      }));
    EXPECT_FALSE(std::filesystem::exists(user.GetOptionsFile() + ".damaged-2"));
}
INSTANTIATE_TEST_SUITE_P(Table, OptionStoreDamage, testing::ValuesIn(s_aryDamageCases),
                         [](const auto& each) { return std::string(each.param.pName); });

TEST(OptionStoreFaults, ABrokenFileIsReplacedBySetToo)
{
    const UserFolders user;
    for (const char* pNumber : {"1", "2", "3"})
    {
        SetOne(L"old");
        std::ofstream(user.GetOptionsFile()) << "broken " << pNumber;
        OptionStore store;
        EXPECT_NE("", Hear([&] { EXPECT_TRUE(store.Set(L"S", L"K", L"new")); }));
        EXPECT_EQ(std::string("broken ") + pNumber, ReadFile(user.GetOptionsFile() + ".damaged-" + pNumber));
    }
}

TEST(OptionStoreFaults, WhatBreaksWhileItIsOpenIsNoticed)
{
    const UserFolders user;
    OptionStore store;
    for (int nKey = 0; nKey < 200; nKey++)
        ASSERT_TRUE(store.Set(L"S", std::to_wstring(nKey).c_str(), std::wstring(100, L'x').c_str()));
    // A change counter of another value makes the next reader look at the pages again.
    std::string strContent = ReadFile(user.GetOptionsFile());
    std::fill(strContent.begin() + 24, strContent.begin() + 28, '\x7F');
    std::fill(strContent.begin() + 4096, strContent.end(), '\xA5');
    std::fstream(user.GetOptionsFile(), std::ios::in | std::ios::out | std::ios::binary) << strContent;
    EXPECT_NE("", Hear([&] { EXPECT_FALSE(store.Get(L"S", L"1")); }));
    EXPECT_TRUE(std::filesystem::exists(user.GetOptionsFile() + ".damaged-1"));
    EXPECT_TRUE(store.Set(L"S", L"K", L"new"));
    EXPECT_EQ(L"new", store.Get(L"S", L"K"));
}

TEST(OptionStoreFaults, WhatBelongsToAForeignFileGoesWithIt)
{
    const UserFolders user;
    std::filesystem::create_directories(user.GetConfig() + "/rondel");
    sqlite3* pHolder = nullptr; // another program, at work on its own file with a write-ahead log
    ASSERT_EQ(SQLITE_OK, sqlite3_open(user.GetOptionsFile().c_str(), &pHolder));
    ASSERT_EQ(SQLITE_OK,
              sqlite3_exec(pHolder, "PRAGMA journal_mode = WAL; CREATE TABLE t(x)", nullptr, nullptr, nullptr));
    EXPECT_NE("", Hear([] { SetOne(L"new"); }));
    EXPECT_TRUE(std::filesystem::exists(user.GetOptionsFile() + ".damaged-1-wal"));
    EXPECT_FALSE(std::filesystem::exists(user.GetOptionsFile() + "-wal"));
    EXPECT_EQ(SQLITE_OK, sqlite3_close(pHolder));
    OptionStore store;
    EXPECT_EQ(L"new", store.Get(L"S", L"K"));
}

TEST(OptionStoreFaults, TwoProcessesKeepABrokenFileOnce)
{
    const UserFolders user;
    SetOne(L"old");
    std::ofstream(user.GetOptionsFile()) << "broken";
    pid_t aryProcesses[4];
    for (pid_t& nProcess : aryProcesses)
    {
        nProcess = fork();
        if (nProcess != 0)
            continue;
        (void)freopen("/dev/null", "w", stderr);
        OptionStore store;
        _exit(store.Set(L"S", std::to_wstring(getpid()).c_str(), L"new") ? 0 : 1);
    }
    for (const pid_t nProcess : aryProcesses)
    {
        int nStatus = -1;
        ASSERT_EQ(nProcess, waitpid(nProcess, &nStatus, 0));
        EXPECT_EQ(0, nStatus);
    }
    EXPECT_EQ("broken", ReadFile(user.GetOptionsFile() + ".damaged-1"));
    EXPECT_FALSE(std::filesystem::exists(user.GetOptionsFile() + ".damaged-2"));
    OptionStore store;
    EXPECT_EQ(4U, store.List(nullptr)->size());
}

TEST(OptionStoreFaults, AnEmptyFileIsAFreshOne)
{
    const UserFolders user;
    std::filesystem::create_directories(user.GetConfig() + "/rondel");
    std::ofstream(user.GetOptionsFile()).flush();
    OptionStore store;
    EXPECT_EQ("", Hear(
                      [&]
                      {
                          EXPECT_FALSE(store.Get(L"S", L"K"));
                          EXPECT_TRUE(store.List(nullptr)->empty());
                          EXPECT_TRUE(store.Set(L"S", L"K", L"new"));
                      }));
    EXPECT_EQ(L"new", store.Get(L"S", L"K"));
}

TEST(OptionStoreFaults, AFileOfALaterVersionIsLeftAlone)
{
    const UserFolders user;
    SetOne(L"old");
    Execute(user.GetOptionsFile(), "PRAGMA user_version = 2");
    const std::string strContent = ReadFile(user.GetOptionsFile());
    OptionStore store;
    EXPECT_EQ("rondel: The options file " + user.GetOptionsFile() +
                  " is from a later version of this program and is not used.\n",
              Hear(
                  [&]
                  {
                      EXPECT_FALSE(store.Get(L"S", L"K"));
                      EXPECT_FALSE(store.Set(L"S", L"K", L"new"));
                      EXPECT_FALSE(store.Delete(L"S", L"K"));
                      EXPECT_FALSE(store.List(nullptr));
                  }));
    EXPECT_TRUE(ReadFile(user.GetOptionsFile()) == strContent);
    EXPECT_FALSE(std::filesystem::exists(user.GetOptionsFile() + ".damaged-1"));
}

TEST(OptionStoreFaults, WithoutAHomeThereAreDefaultsOnly)
{
    const Environment home("HOME", nullptr);
    const Environment config("XDG_CONFIG_HOME", nullptr);
    OptionStore store;
    EXPECT_EQ("", Hear([&] { EXPECT_FALSE(store.Get(L"S", L"K")); }));
    EXPECT_EQ("rondel: Options are not kept, since neither XDG_CONFIG_HOME nor HOME names a folder.\n",
              Hear(
                  [&]
                  {
                      EXPECT_FALSE(store.Set(L"S", L"K", L"1"));
                      EXPECT_FALSE(store.Set(L"S", L"K", L"1")) << "one sentence for both";
                  }));
    EXPECT_FALSE(store.Delete(L"S", L"K"));
    EXPECT_TRUE(store.List(nullptr)->empty());
}

TEST(OptionStoreFaults, AReadOnlyFileCanBeRead)
{
    const UserFolders user;
    SetOne(L"old");
    std::filesystem::permissions(user.GetConfig(), std::filesystem::perms(0755));
    std::filesystem::permissions(user.GetConfig() + "/rondel", std::filesystem::perms(0755));
    const std::string strHeard = Hear(
        [&]
        {
            EXPECT_TRUE(RunAsOrdinaryUser(
                []
                {
                    OptionStore store;
                    return store.Get(L"S", L"K") == L"old" && !store.Set(L"S", L"K", L"new") &&
                           !store.Set(L"S", L"K", L"new") && !store.Delete(L"S", L"K") &&
                           store.Get(L"S", L"K") == L"old";
                }));
        });
    EXPECT_EQ(WithReason(user, "written to", "attempt to write a readonly database"), strHeard);
}

TEST(OptionStoreFaults, AReadOnlyFolderCanBeRead)
{
    const UserFolders user;
    SetOne(L"old");
    std::filesystem::permissions(user.GetConfig(), std::filesystem::perms(0755));
    std::filesystem::permissions(user.GetConfig() + "/rondel", std::filesystem::perms(0755));
    std::filesystem::permissions(user.GetOptionsFile(), std::filesystem::perms(0666)); // the journal finds no place
    const std::string strHeard = Hear(
        [&]
        {
            EXPECT_TRUE(RunAsOrdinaryUser(
                []
                {
                    OptionStore store;
                    return store.Get(L"S", L"K") == L"old" && !store.Set(L"S", L"K", L"new") &&
                           !store.Set(L"S", L"K", L"new") && store.Get(L"S", L"K") == L"old";
                }));
        });
    EXPECT_EQ(0U, strHeard.find("rondel: Options cannot be written to " + user.GetOptionsFile())) << strHeard;
    EXPECT_EQ(1, std::count(strHeard.begin(), strHeard.end(), '\n')) << strHeard;
}

TEST(OptionStoreFaults, AFolderThatCannotBeMadeIsSaid)
{
    const UserFolders user;
    (void)user.GetFolder().Write("config", "a file where the folder should be");
    OptionStore store;
    const std::string strHeard = Hear(
        [&]
        {
            EXPECT_FALSE(store.Set(L"S", L"K", L"1"));
            EXPECT_FALSE(store.Set(L"S", L"K", L"1"));
        });
    EXPECT_EQ(WithReason(user, "written to", "unable to open database file (Not a directory)"), strHeard);
}

TEST(OptionStoreFaults, AFullDiskLeavesTheContentAsItWas)
{
    const UserFolders user;
    SetOne(L"old");
    const std::string strHeard = Hear(
        [&]
        {
            const pid_t nProcess = fork();
            if (nProcess == 0)
            {
                // No file may grow beyond two pages, the journal included.
                (void)signal(SIGXFSZ, SIG_IGN);
                const rlimit limit = {8192, 8192};
                OptionStore store;
                const bool bGood =
                    setrlimit(RLIMIT_FSIZE, &limit) == 0 && !store.Set(L"S", L"K", std::wstring(50000, L'x').c_str()) &&
                    !store.Set(L"S", L"K", std::wstring(50000, L'y').c_str()) && store.Get(L"S", L"K") == L"old";
                _exit(bGood ? 0 : 1);
            }
            int nStatus = -1;
            ASSERT_EQ(nProcess, waitpid(nProcess, &nStatus, 0));
            EXPECT_EQ(0, nStatus);
        });
    EXPECT_EQ(WithReason(user, "written to", "disk I/O error (File too large)"), strHeard);
    OptionStore store;
    EXPECT_EQ(L"old", store.Get(L"S", L"K"));
    EXPECT_TRUE(store.Set(L"S", L"K", L"new"));
    EXPECT_EQ(L"new", store.Get(L"S", L"K"));
}

// As above, on a disk that really is full: a small one in memory, which only this child sees.
TEST(OptionStoreFaults, ADiskWithoutSpaceIsNamedAsSuch)
{
    constexpr int NOT_ALLOWED = 77;
    const UserFolders user;
    int nStatus = -1;
    const std::string strHeard = Hear(
        [&]
        {
            const pid_t nProcess = fork();
            if (nProcess == 0)
            {
                std::filesystem::create_directories(user.GetConfig());
                if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                    mount("none", user.GetConfig().c_str(), "tmpfs", 0, "size=64k") != 0)
                    _exit(NOT_ALLOWED);
                OptionStore store;
                const bool bGood = store.Set(L"S", L"K", L"old") &&
                                   !store.Set(L"S", L"K", std::wstring(100000, L'x').c_str()) &&
                                   store.Get(L"S", L"K") == L"old" && store.Set(L"S", L"K", L"short") &&
                                   store.Get(L"S", L"K") == L"short";
                _exit(bGood ? 0 : 1);
            }
            ASSERT_EQ(nProcess, waitpid(nProcess, &nStatus, 0));
        });
    if (WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == NOT_ALLOWED)
        GTEST_SKIP() << "this user may not mount a disk";
    EXPECT_EQ(0, nStatus);
    EXPECT_EQ(WithReason(user, "written to", "database or disk is full"), strHeard);
}

TEST(OptionStoreFaults, AFileThatCannotBeOpenedIsSaidOnce)
{
    const UserFolders user;
    std::filesystem::create_directories(user.GetOptionsFile());
    OptionStore store;
    const std::string strHeard = Hear(
        [&]
        {
            EXPECT_FALSE(store.Get(L"S", L"K"));
            EXPECT_FALSE(store.Get(L"S", L"K"));
            EXPECT_FALSE(store.List(nullptr));
        });
    EXPECT_EQ(WithReason(user, "read from", "unable to open database file (Is a directory)"), strHeard);
}

TEST(OptionStoreFaults, WhoHasToWaitTooLongIsRefused)
{
    const UserFolders user;
    SetOne(L"old");
    sqlite3* pHolder = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(user.GetOptionsFile().c_str(), &pHolder));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(pHolder, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr));
    OptionStore store;
    EXPECT_EQ(L"old", store.Get(L"S", L"K")) << "a writer that has not finished does not hold up the readers";
    EXPECT_EQ(WithReason(user, "written to", "database is locked"),
              Hear([&] { EXPECT_FALSE(store.Set(L"S", L"K", L"new")); }));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(pHolder, "COMMIT", nullptr, nullptr, nullptr));
    EXPECT_TRUE(store.Set(L"S", L"K", L"new"));
    EXPECT_EQ(SQLITE_OK, sqlite3_close(pHolder));
}

TEST(OptionStoreFaults, NothingInAForeignSchemaIsRun)
{
    const UserFolders user;
    SetOne(L"old");
    Execute(user.GetOptionsFile(), "CREATE TRIGGER t AFTER UPDATE ON options BEGIN DELETE FROM options; END");
    OptionStore store;
    EXPECT_TRUE(store.Set(L"S", L"K", L"new"));
    EXPECT_EQ(L"new", store.Get(L"S", L"K"));
}
