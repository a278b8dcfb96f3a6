// A safe replacement is killed at every system call, its own and those of the programs that it runs.

#include "KillProcessTree.h"
#include "LyFileSystem.h"
#include "LyTempFolder.h"
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>
#include <sys/stat.h>

namespace
{
namespace fs = std::filesystem;

const std::string OLD_TEXT(3'000, 'o');
const std::string NEW_TEXT(2'000, 'n');

std::string Read(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}

// What is whole under which name.
struct STATE
{
    explicit STATE(const std::string& strFolder, const std::string& strNew)
        : bOriginalOld(Read(strFolder + "/original.dat") == OLD_TEXT),
          bOriginalNew(Read(strFolder + "/original.dat") == NEW_TEXT),
          bBackupOld(Read(strFolder + "/original (1).dat") == OLD_TEXT), bNewNew(Read(strNew) == NEW_TEXT)
    {
    }

    bool bOriginalOld;
    bool bOriginalNew;
    bool bBackupOld;
    bool bNewNew;
};

class LyFileSystemKilled : public testing::Test
{
protected:
    void Prepare(const std::string& strNew) const
    {
        for (const auto& entry : fs::directory_iterator(m_Folder.GetPath()))
            fs::remove_all(entry.path());
        (void)m_Folder.Write("original.dat", OLD_TEXT);
        std::ofstream(strNew, std::ios::binary) << NEW_TEXT;
    }

    // The rounds, and how often each state was met.
    int Run(const std::string& strNew, int nEvery)
    {
        const LyString strOriginal = m_Folder.GetName(L"original.dat");
        auto Replace = [&]
        {
            if (!LyFileSystem::SafeReplaceFile(strOriginal, Wide(strNew), 1, false, false))
                _exit(2);
        };
        auto Check = [&](int nCall)
        {
            const STATE state(m_Folder.GetPath(), strNew);
            EXPECT_TRUE(state.bOriginalOld || state.bBackupOld || state.bOriginalNew) << nCall;
            EXPECT_TRUE(state.bNewNew || state.bOriginalNew) << nCall;
            if (state.bOriginalOld)
                m_States["not begun"]++;
            else if (state.bOriginalNew)
                m_States[state.bBackupOld ? "replaced, with a backup" : "complete"]++;
            else
                m_States["under the backup's name"]++;
            m_bComplete = state.bOriginalNew && !state.bBackupOld && !fs::exists(strNew);
        };
        return KillTreeAtEachCall(
            Replace, Check, [&] { Prepare(strNew); }, nEvery);
    }

    LyTempFolder m_Folder;
    std::map<std::string, int> m_States;
    bool m_bComplete = false; // after the last round
};
} // namespace

TEST_F(LyFileSystemKilled, OneCompleteCopyIsThereAtEachMoment)
{
    const int nCalls = Run(m_Folder.GetPath("new.dat"), 1);
    if (nCalls == KILL_NOT_ALLOWED)
        GTEST_SKIP() << "nobody may trace a process here";
    EXPECT_GT(nCalls, 50) << "two shells and two programs";
    EXPECT_TRUE(m_bComplete);
    for (const char* pState : {"not begun", "under the backup's name", "replaced, with a backup", "complete"})
        EXPECT_GT(m_States[pState], 0) << pState;
}

// There mv copies and deletes, instead of renaming: the copy may be cut in the middle, but the backup is whole.
TEST_F(LyFileSystemKilled, OneCompleteCopyIsThereAtEachMomentAcrossVolumes)
{
    struct stat here;
    struct stat there;
    if (stat(m_Folder.GetPath().c_str(), &here) != 0 || stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev)
        GTEST_SKIP() << "there is no second volume";
    const std::string strNew = "/dev/shm/RondelTest." + std::to_string(getpid()) + ".new";
    const int nCalls = Run(strNew, 1);
    fs::remove(strNew);
    if (nCalls == KILL_NOT_ALLOWED)
        GTEST_SKIP() << "nobody may trace a process here";
    EXPECT_GT(nCalls, 50);
    EXPECT_TRUE(m_bComplete);
    EXPECT_GT(m_States["under the backup's name"], 0);
}
