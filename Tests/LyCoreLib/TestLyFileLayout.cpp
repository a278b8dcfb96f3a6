// The layouts of files, snapshots and shared memory, which other libraries share; and what lands on the disk beside the
// content: permissions and names.

#include "LyFile.h"
#include "LyFileSystem.h"
#include "LyTempFolder.h"
#include "LyThread.h"
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace
{
template <class T>
T Peek(const void* pObject, size_t nOffset)
{
    T value;
    std::memcpy(&value, static_cast<const char*>(pObject) + nOffset, sizeof value);
    return value;
}

constexpr size_t NAME = sizeof(LyFilename);

// Without the mask that the tests were started under.
class NoMask
{
public:
    NoMask() : m_nFormer(umask(0)) {}
    ~NoMask() { umask(m_nFormer); }
    NoMask(const NoMask&) = delete;
    NoMask& operator=(const NoMask&) = delete;

private:
    mode_t m_nFormer;
};

unsigned int GetPermissions(const std::string& strPath)
{
    struct stat status = {};
    EXPECT_EQ(stat(strPath.c_str(), &status), 0) << strPath;
    return status.st_mode & 07777;
}
} // namespace

TEST(LyFileLayout, FieldsOfAFile)
{
    static_assert(sizeof(LyFile) ==
                  (NAME + 3 * 4 + 4 + 4 + alignof(LyFilename) - 1) / alignof(LyFilename) * alignof(LyFilename));
    LyTempFolder folder;
    LyFile file(LyFilename(folder.GetName(L"a")), 3, 2, LY_FILE_OPEN_OR_CREATE);
    EXPECT_EQ(Peek<unsigned int>(&file, NAME), 3u) << "access";
    EXPECT_EQ(Peek<unsigned int>(&file, NAME + 4), 2u) << "share";
    EXPECT_EQ(Peek<int>(&file, NAME + 8), 2) << "creation mode";
    EXPECT_FALSE(Peek<bool>(&file, NAME + 12)) << "sequential scan";
    EXPECT_FALSE(Peek<bool>(&file, NAME + 13)) << "open";
    EXPECT_EQ(Peek<int>(&file, NAME + 16), -1) << "descriptor";
    file.SetSequentialScan(true);
    ASSERT_TRUE(file.Open());
    EXPECT_TRUE(Peek<bool>(&file, NAME + 12));
    EXPECT_TRUE(Peek<bool>(&file, NAME + 13));
    EXPECT_GE(Peek<int>(&file, NAME + 16), 0);
    file.Close();
    EXPECT_EQ(Peek<int>(&file, NAME + 16), -1);
}

TEST(LyFileLayout, FieldsOfASnapshot)
{
    constexpr size_t NAME_OFFSET = alignof(LyFilename);
    static_assert(sizeof(LyFileInfo) == NAME_OFFSET + NAME + sizeof(struct stat));
    LyTempFolder folder;
    (void)folder.Write("a", "12345");
    const LyFileInfo info{LyFilename(folder.GetName(L"a"))};
    EXPECT_TRUE(Peek<bool>(&info, 0));
    EXPECT_EQ(&info.GetFilename(),
              reinterpret_cast<const LyFilename*>(reinterpret_cast<const char*>(&info) + NAME_OFFSET));
    EXPECT_EQ(&info.GetStatus(),
              reinterpret_cast<const struct stat*>(reinterpret_cast<const char*>(&info) + NAME_OFFSET + NAME));
}

TEST(LyFileLayout, FieldsOfSharedMemory)
{
    static_assert(std::has_virtual_destructor_v<LySharedMemory> && sizeof(LySharedMemory) == 32);
    LySharedMemory memory;
    EXPECT_EQ(Peek<int>(&memory, 16), -1) << "descriptor";
    LyString strName(L"RondelTestLayout");
    strName += LyString().FromInt(getpid());
    NoMask noMask;
    ASSERT_TRUE(memory.Allocate(strName, 1));
    EXPECT_EQ(*reinterpret_cast<const LyString*>(reinterpret_cast<const char*>(&memory) + 8), L"/" + strName);
    EXPECT_GE(Peek<int>(&memory, 16), 0);
    EXPECT_EQ(Peek<int>(&memory, 20), getpagesize()) << "size";
    EXPECT_EQ(Peek<void*>(&memory, 24), memory.GetAddress());
    struct stat status = {};
    EXPECT_EQ(fstat(Peek<int>(&memory, 16), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0666u);
    memory.Free();
    EXPECT_EQ(Peek<int>(&memory, 16), -1);
    EXPECT_EQ(Peek<void*>(&memory, 24), nullptr);
}

TEST(LyFileOnDisk, PermissionsOfFilesAndFolders)
{
    LyTempFolder folder;
    NoMask noMask;
    LyFile file;
    EXPECT_TRUE(file.Open(LyFilename(folder.GetName(L"a")), 2, 3, LY_FILE_CREATE_ALWAYS));
    EXPECT_EQ(GetPermissions(folder.GetPath("a")), 0644u);
    EXPECT_TRUE(LyFileSystem::CreateDirectory(folder.GetName(L"b")));
    EXPECT_EQ(GetPermissions(folder.GetPath("b")), 0777u);
}

TEST(LyFileOnDisk, TestForWritingUsesANameOfTheThread)
{
    LyTempFolder folder;
    EXPECT_TRUE(LyFileSystem::IsWritableDirectory(folder.GetName(L"")));
    // A folder of that name is in the way of the file.
    std::filesystem::create_directory(folder.GetPath(
        "Directory Write Test (" + std::to_string(static_cast<int>(LyProcess::GetCurrentThreadId())) + ").tmp"));
    EXPECT_FALSE(LyFileSystem::IsWritableDirectory(folder.GetName(L"")));
}

TEST(LyFileOnDisk, ReplacementLeavesOtherBackupsAlone)
{
    LyTempFolder folder;
    (void)folder.Write("a.txt", "old");
    const std::string strBackup = folder.Write("a (1).txt", "somebody's");
    (void)folder.Write("new", "new");
    EXPECT_TRUE(LyFileSystem::SafeReplaceFile(folder.GetName(L"a.txt"), folder.GetName(L"new"), 3, false, false));
    EXPECT_EQ(std::filesystem::file_size(strBackup), 10u);
    EXPECT_FALSE(std::filesystem::exists(folder.GetPath("a (2).txt")));
    EXPECT_FALSE(std::filesystem::exists(folder.GetPath("new")));
}
