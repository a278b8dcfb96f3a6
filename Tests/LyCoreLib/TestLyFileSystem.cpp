#include "LyFileSystem.h"
#include "Tools/FakeTools.h"
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
namespace fs = std::filesystem;

LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}

void Write(const fs::path& path, const std::string& strContent) { std::ofstream(path) << strContent; }

std::string Read(const fs::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

int CountEntries(const fs::path& path)
{
    return static_cast<int>(std::distance(fs::directory_iterator(path), fs::directory_iterator()));
}

// An empty folder for each test, and a tools library, without which no folder is made.
class LyFileSystemTest : public testing::Test
{
protected:
    LyFileSystemTest()
        : m_Folder(fs::path(testing::TempDir()) / ("rondel " + std::to_string(getpid()) + " " +
                                                   testing::UnitTest::GetInstance()->current_test_info()->name()))
    {
        fs::remove_all(m_Folder);
        fs::create_directories(m_Folder);
        m_FormerFolder = fs::current_path();
    }
    ~LyFileSystemTest() override
    {
        fs::current_path(m_FormerFolder);
        fs::remove_all(m_Folder);
    }
    void SetUp() override { ASSERT_TRUE(m_Tools.GetIsLoaded()); }

    LyString Path(const std::string& strName) const { return Wide((m_Folder / strName).string()); }

    FakeTools m_Tools;
    fs::path m_Folder;
    fs::path m_FormerFolder;
};
} // namespace

// ---- Folders

TEST_F(LyFileSystemTest, InstanceFolderIsThatOfTheProgram)
{
    EXPECT_TRUE(LyFileSystem::GetDirectoryInstance() ==
                Wide(fs::read_symlink("/proc/self/exe").parent_path().string() + "/"));
}

TEST_F(LyFileSystemTest, CleanDirectoryEndsInOneSlash)
{
    const struct
    {
        const wchar_t* pPath;
        const wchar_t* pExpected;
    } aryRows[] = {{L"", L""}, {L"/a", L"/a/"}, {L"/a/", L"/a/"}, {L"/a///", L"/a/"}, {L"/", L"/"}};
    for (const auto& row : aryRows)
    {
        LyString strPath(row.pPath);
        LyFileSystem::CleanDirectory(strPath);
        EXPECT_STREQ(row.pExpected, strPath);
    }
}

TEST_F(LyFileSystemTest, ProcessFoldersAreCleaned)
{
    GetProcessInfo(true)->SetInstallPath(L"/opt/player//", false, false);
    EXPECT_TRUE(LyFileSystem::GetDirectoryInstall() == L"/opt/player/");
    GetProcessInfo(true)->SetApplicationDataPath(L"/var/data");
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLocal() == L"/var/data/");
    GetProcessInfo(true)->SetApplicationDataPath(L"");
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLocal() == L"");
}

TEST_F(LyFileSystemTest, RawAppdataFolderLiesInHome)
{
    setenv("HOME", "/home/some\xe4", 1); // bytes, not UTF-8
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLocalRawOSCall() == L"/home/some\u00e4/Library/Application Support/");
    setenv("HOME", "/", 1);
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLocalRawOSCall() == L"/Library/Application Support/");
    unsetenv("HOME");
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLocalRawOSCall() == L"Library/Application Support/");
}

TEST_F(LyFileSystemTest, ProductSuppliesTheAppdataFolder)
{
    GetProcessInfo(true)->SetApplicationDataPath(L"/var/data/");
    m_Tools->SetAppdataDirectory(L"/var/product");
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLy() == L"/var/product/");
    m_Tools->SetAppdataDirectory(L"");
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLy() == L"/var/data/Lyndle/Generic/");
    m_Tools->SetAppdataDirectory(nullptr);
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLy() == L"/var/data/Lyndle/Generic/");
    m_Tools->SetServiceThere(FAKE_PRODUCT_INFO, false);
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLy() == L"/var/data/Lyndle/Generic/");
}

TEST_F(LyFileSystemTest, TempFolderComesFromTheOption)
{
    m_Tools->SetOption(L"Properties", L"File Location - Temp Location", Path("temp"));
    EXPECT_TRUE(LyFileSystem::GetDirectoryTempLy(true, true) == Path("temp/Lyndle/"));
    EXPECT_TRUE(fs::is_directory(m_Folder / "temp/Lyndle"));
    EXPECT_TRUE(LyFileSystem::GetDirectoryTempLy(true, false) == Path("temp/"));
}

TEST_F(LyFileSystemTest, TempFolderWithoutOptionLiesInTheAppdata)
{
    m_Tools->SetAppdataDirectory(Path("data"));
    EXPECT_TRUE(LyFileSystem::GetDirectoryTempLy(true, true) == Path("data/Temp/")) << "the option is empty";
    EXPECT_TRUE(fs::is_directory(m_Folder / "data/Temp"));
    m_Tools->SetOption(L"Properties", L"File Location - Temp Location", Path("temp"));
    EXPECT_TRUE(LyFileSystem::GetDirectoryTempLy(false, true) == Path("data/Temp/")) << "the option is not asked";
    EXPECT_FALSE(fs::exists(m_Folder / "temp"));
}

TEST_F(LyFileSystemTest, TempOptionThatCannotBeMadeIsForgotten)
{
    Write(m_Folder / "file", "in the way");
    m_Tools->SetAppdataDirectory(Path("data"));
    m_Tools->SetOption(L"Properties", L"File Location - Temp Location", Path("file/temp"));
    EXPECT_TRUE(LyFileSystem::GetDirectoryTempLy(true, true) == Path("data/Temp/"));
    EXPECT_EQ(1, m_Tools->GetCount(FAKE_COUNT_OPTIONS_DELETE));
    EXPECT_EQ(nullptr, m_Tools->GetOption(L"Properties", L"File Location - Temp Location"));
}

// ---- Making directories

TEST_F(LyFileSystemTest, TreeIsMadeFromTheShallowestDown)
{
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(Path("a/b/c"), false));
    EXPECT_TRUE(fs::is_directory(m_Folder / "a/b/c"));
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(Path("a/b/c"), false)) << "already there";
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(Path("a/b/d///"), true));
    EXPECT_EQ(0, CountEntries(m_Folder / "a/b/d")) << "the test for writing leaves nothing";
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(Path("x//y"), false));
    EXPECT_TRUE(fs::is_directory(m_Folder / "x/y"));
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(Path("\xc3\xa4\xe2\x82\xac/b"), false));
    EXPECT_TRUE(fs::is_directory(m_Folder / "\xc3\xa4\xe2\x82\xac/b"));
}

TEST_F(LyFileSystemTest, TreeNeedsAPathAndTheFileSystemManager)
{
    EXPECT_FALSE(LyFileSystem::MakeDirectoryTree(L"", false));
    m_Tools->SetServiceOnDemand(FAKE_FILE_SYSTEM_MANAGER);
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(Path("a"), false)) << "it is asked to come up";
    m_Tools->SetServiceThere(FAKE_FILE_SYSTEM_MANAGER, false);
    EXPECT_FALSE(LyFileSystem::MakeDirectoryTree(Path("b"), false));
    EXPECT_FALSE(LyFileSystem::MakeDirectoryTree(Path("a"), false)) << "even for what is there";
    EXPECT_FALSE(fs::exists(m_Folder / "b"));
}

TEST_F(LyFileSystemTest, RelativePathMakesNothing)
{
    fs::current_path(m_Folder);
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(L"a/b", false));
    EXPECT_FALSE(LyFileSystem::MakeDirectoryTree(L"a/b", true));
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(L"C:\\a", false));
    EXPECT_EQ(0, CountEntries(m_Folder));
}

TEST_F(LyFileSystemTest, TildeIsAFolderLikeAnyOther)
{
    fs::current_path(m_Folder);
    EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(L"~/a", true));
    EXPECT_TRUE(fs::is_directory(m_Folder / "~/a"));
}

TEST_F(LyFileSystemTest, FileInTheWayFails)
{
    Write(m_Folder / "file", "");
    EXPECT_FALSE(LyFileSystem::MakeDirectoryTree(Path("file"), false));
    EXPECT_FALSE(LyFileSystem::MakeDirectoryTree(Path("file/a/b"), false));
    EXPECT_TRUE(fs::is_regular_file(m_Folder / "file"));
}

TEST_F(LyFileSystemTest, RootIsThere) { EXPECT_TRUE(LyFileSystem::MakeDirectoryTree(L"/", false)); }

TEST_F(LyFileSystemTest, SeveralMakersOfOneTreeAllSucceed)
{
    std::atomic<int> nMade{0};
    std::vector<std::thread> aryThreads;
    LyString strPath = Path("1/2/3/4/5/6/7/8");
    for (int nThread = 0; nThread < 4; nThread++)
        aryThreads.emplace_back([&nMade, strPath] { nMade += LyFileSystem::MakeDirectoryTree(strPath, true); });
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ(4, nMade);
}

TEST_F(LyFileSystemTest, CreateDirectoryMakesOneLevel)
{
    EXPECT_FALSE(LyFileSystem::CreateDirectory(Path("a/b")));
    EXPECT_TRUE(LyFileSystem::CreateDirectory(Path("a")));
    EXPECT_TRUE(LyFileSystem::CreateDirectory(Path("a/b")));
    EXPECT_FALSE(LyFileSystem::CreateDirectory(Path("a")));
    EXPECT_FALSE(LyFileSystem::CreateDirectory(nullptr));
}

TEST_F(LyFileSystemTest, WritableFolder)
{
    EXPECT_TRUE(LyFileSystem::IsWritableDirectory(Wide(m_Folder.string() + "/")));
    EXPECT_EQ(0, CountEntries(m_Folder));
    EXPECT_FALSE(LyFileSystem::IsWritableDirectory(L""));
    EXPECT_FALSE(LyFileSystem::IsWritableDirectory(Path("missing/")));
}

// ---- Files

TEST_F(LyFileSystemTest, DeleteFile)
{
    Write(m_Folder / "\xc3\xa4.txt", "a");
    EXPECT_TRUE(LyFileSystem::DeleteFile(Path("\xc3\xa4.txt")));
    EXPECT_FALSE(LyFileSystem::DeleteFile(Path("\xc3\xa4.txt")));
    EXPECT_FALSE(LyFileSystem::DeleteFile(L""));
    fs::create_directory(m_Folder / "folder");
    EXPECT_FALSE(LyFileSystem::DeleteFile(Path("folder")));
}

TEST_F(LyFileSystemTest, FileExistsLowLevelKnowsFilesOnly)
{
    Write(m_Folder / "file", "");
    EXPECT_TRUE(LyFileSystem::FileExistsLowLevel(Path("file")));
    EXPECT_FALSE(LyFileSystem::FileExistsLowLevel(Path("missing")));
    EXPECT_FALSE(LyFileSystem::FileExistsLowLevel(Wide(m_Folder.string())));
    EXPECT_FALSE(LyFileSystem::FileExistsLowLevel(L""));
    EXPECT_FALSE(LyFileSystem::FileExistsLowLevel(nullptr));
    EXPECT_EQ(0, m_Tools->GetCount(FAKE_COUNT_FILE_EXISTS));
}

TEST_F(LyFileSystemTest, FileExistsAsksTheManagerIfTold)
{
    m_Tools->SetFileExistsAlways(true);
    EXPECT_TRUE(LyFileSystem::FileExists(Path("missing"), true));
    EXPECT_EQ(0, m_Tools->GetLastFileExistsFlags());
    EXPECT_FALSE(LyFileSystem::FileExists(Path("missing"), false));
    EXPECT_FALSE(LyFileSystem::FileExists(L"", true));
    EXPECT_FALSE(LyFileSystem::FileExists(nullptr, true));
}

TEST_F(LyFileSystemTest, FileSize)
{
    Write(m_Folder / "file", "12345");
    EXPECT_EQ(5, LyFileSystem::FileSize(Path("file"), false));
    EXPECT_EQ(5, LyFileSystem::FileSize(Path("file"), true));
    EXPECT_EQ(-1, LyFileSystem::FileSize(Path("missing"), false));
}

TEST_F(LyFileSystemTest, UniqueNameIsTheFirstThatIsFree)
{
    LyString strPath = Path("a.txt");
    LyFileSystem::MakeUniqueFilename(strPath);
    EXPECT_TRUE(strPath == Path("a.txt"));
    for (const char* pExpected : {"a (1).txt", "a (2).txt", "a (3).txt"})
    {
        Write(LyStringUTF8(strPath).Get(), "");
        strPath = Path("a.txt");
        LyFileSystem::MakeUniqueFilename(strPath);
        EXPECT_TRUE(strPath == Path(pExpected)) << pExpected;
    }
}

TEST_F(LyFileSystemTest, MoveFileKeepsQuotesAndOtherCharactersOfTheShell)
{
    for (const char* pName : {"it's.txt", "''", "a b", "$(touch x)", "a;b", "back\\slash", "\xc3\xa4\"q\""})
    {
        Write(m_Folder / "from", pName);
        EXPECT_TRUE(MoveFile(Path("from"), Path(pName))) << pName;
        EXPECT_EQ(pName, Read(m_Folder / pName));
        EXPECT_TRUE(MoveFile(Path(pName), Path("to"))) << pName;
        EXPECT_EQ(pName, Read(m_Folder / "to"));
    }
    EXPECT_EQ(1, CountEntries(m_Folder));
}

TEST_F(LyFileSystemTest, MoveFileReportsFailure)
{
    EXPECT_FALSE(MoveFile(Path("missing"), Path("to")));
    EXPECT_FALSE(MoveFile(L"", L""));
}

// ---- SafeReplaceFile

TEST_F(LyFileSystemTest, ReplaceTakesTheNewFileAndLeavesNoBackup)
{
    Write(m_Folder / "it's.txt", "old");
    Write(m_Folder / "new", "new content");
    EXPECT_TRUE(LyFileSystem::SafeReplaceFile(Path("it's.txt"), Path("new"), 1, true, true));
    EXPECT_EQ("new content", Read(m_Folder / "it's.txt"));
    EXPECT_EQ(1, CountEntries(m_Folder));
    EXPECT_EQ(0, m_Tools->GetLogLineCount());
}

TEST_F(LyFileSystemTest, ReplaceWithoutOriginalIsAMove)
{
    Write(m_Folder / "new", "new content");
    EXPECT_TRUE(LyFileSystem::SafeReplaceFile(Path("original"), Path("new"), 1, false, false));
    EXPECT_EQ("new content", Read(m_Folder / "original"));
    EXPECT_EQ(1, CountEntries(m_Folder));
}

TEST_F(LyFileSystemTest, ReplaceByATooSmallFileLeavesBoth)
{
    Write(m_Folder / "original", "old");
    Write(m_Folder / "new", "1234");
    EXPECT_FALSE(LyFileSystem::SafeReplaceFile(Path("original"), Path("new"), 5, false, false));
    EXPECT_EQ("old", Read(m_Folder / "original"));
    EXPECT_EQ("1234", Read(m_Folder / "new"));
    EXPECT_TRUE(LyFileSystem::SafeReplaceFile(Path("original"), Path("new"), 4, false, false)) << "just enough";
}

TEST_F(LyFileSystemTest, ReplaceDeletesTheNewFileOnFailureIfTold)
{
    Write(m_Folder / "original", "old");
    Write(m_Folder / "new", "1234");
    EXPECT_FALSE(LyFileSystem::SafeReplaceFile(Path("original"), Path("new"), 5, true, false));
    EXPECT_EQ("old", Read(m_Folder / "original"));
    EXPECT_FALSE(fs::exists(m_Folder / "new"));
}

TEST_F(LyFileSystemTest, ReplaceByAMissingFileFails)
{
    Write(m_Folder / "original", "old");
    EXPECT_FALSE(LyFileSystem::SafeReplaceFile(Path("original"), Path("missing"), 0, false, false));
    EXPECT_FALSE(LyFileSystem::SafeReplaceFile(nullptr, nullptr, 0, true, true));
    EXPECT_EQ("old", Read(m_Folder / "original"));
}

TEST_F(LyFileSystemTest, FailedBackupIsLoggedAndMovesNothing)
{
    // The name of the backup is longer than any file name may be.
    std::string strLongName(253, 'n');
    Write(m_Folder / strLongName, "old");
    Write(m_Folder / "new", "new content");
    EXPECT_FALSE(LyFileSystem::SafeReplaceFile(Path(strLongName), Path("new"), 1, false, false));
    EXPECT_EQ("old", Read(m_Folder / strLongName));
    EXPECT_EQ("new content", Read(m_Folder / "new"));
    ASSERT_EQ(1, m_Tools->GetLogLineCount());
    EXPECT_EQ(1, m_Tools->GetLogLine(0).nArea);
    EXPECT_STREQ(L"LyFileSystem::SafeReplaceFile", m_Tools->GetLogLine(0).pName);
    EXPECT_STREQ(L"Error renaming original file", m_Tools->GetLogLine(0).pText);
}

TEST_F(LyFileSystemTest, FailedMoveBringsTheOriginalBackAndIsLogged)
{
    Write(m_Folder / "original", "old");
    // The size of a missing file is -1, so this minimum lets the missing file come as far as the move.
    EXPECT_FALSE(LyFileSystem::SafeReplaceFile(Path("original"), Path("missing"), -1, false, false));
    EXPECT_EQ("old", Read(m_Folder / "original"));
    EXPECT_EQ(1, CountEntries(m_Folder));
    ASSERT_EQ(1, m_Tools->GetLogLineCount());
    EXPECT_EQ(1, m_Tools->GetLogLine(0).nArea);
    EXPECT_STREQ(L"LyFileSystem::SafeReplaceFile", m_Tools->GetLogLine(0).pName);
    EXPECT_STREQ(L"Error moving new file into place of original name", m_Tools->GetLogLine(0).pText);
}

TEST_F(LyFileSystemTest, FileTimesAreLeftAlone)
{
    Write(m_Folder / "from", "a");
    Write(m_Folder / "to", "b");
    fs::last_write_time(m_Folder / "from", fs::file_time_type::clock::now() - std::chrono::hours(24));
    auto time = fs::last_write_time(m_Folder / "to");
    EXPECT_FALSE(LyFileSystem::SetNewFileTimeInfo(Path("from"), Path("to"), true, true, true));
    EXPECT_EQ(time, fs::last_write_time(m_Folder / "to"));
    EXPECT_EQ("b", Read(m_Folder / "to"));
    EXPECT_FALSE(LyFileSystem::SetNewFileTimeInfo(Path("missing"), Path("missing2"), true, true, true));
    EXPECT_FALSE(fs::exists(m_Folder / "missing2"));
}

// ---- Temporary names

TEST_F(LyFileSystemTest, TemporaryNamePartByPart)
{
    LyString strThread = Wide(std::to_string(static_cast<int>(pthread_self())));
    EXPECT_TRUE(LyFileSystem::GetTemporaryFilename(L"Name", L"wav", false, false, L"/d") == L"/d/Name.wav");
    EXPECT_TRUE(LyFileSystem::GetTemporaryFilename(L"Name", L"", false, false, L"/d/") == L"/d/Name");
    EXPECT_TRUE(LyFileSystem::GetTemporaryFilename(L"Name", L"wav", true, false, L"/d/") ==
                L"/d/Name - " + strThread + L".wav");
}

TEST_F(LyFileSystemTest, TemporaryNameIsUniqueIfTold)
{
    Write(m_Folder / "Name.wav", "");
    LyString strFolder = Wide(m_Folder.string());
    EXPECT_TRUE(LyFileSystem::GetTemporaryFilename(L"Name", L"wav", false, true, strFolder) == Path("Name (1).wav"));
    EXPECT_TRUE(LyFileSystem::GetTemporaryFilename(L"Name", L"wav", false, false, strFolder) == Path("Name.wav"));
    EXPECT_EQ(1, CountEntries(m_Folder)) << "a name, not a file";
}

TEST_F(LyFileSystemTest, TemporaryNameWithoutFolderLiesInTheTempFolder)
{
    m_Tools->SetOption(L"Properties", L"File Location - Temp Location", Path("temp"));
    EXPECT_TRUE(LyFileSystem::GetTemporaryFilename(L"Name", L"dat", false, false, L"") == Path("temp/Lyndle/Name.dat"));
}

// ---- Sizes

TEST(LyFileSystemSizes, ReadableSizes)
{
    const struct
    {
        long long nBytes;
        const wchar_t* pExpected;
    } aryRows[] = {
        {0, L"0 bytes"},          {1, L"1 bytes"},         {1023, L"1023 bytes"},      {1024, L"1.0 KB"},
        {1536, L"1.5 KB"},        {102399, L"100.0 KB"}, // 99.999 is below 100
        {102400, L"100 KB"},      {0xfffff, L"1024 KB"},   {0x100000, L"1.0 MB"},      {0x180000, L"1.5 MB"},
        {0x20000000, L"512 MB"},  {0x40000000, L"1.0 GB"}, {0x10000000000, L"1.0 TB"}, {0x4000000000000, L"1.0 PB"},
        {LLONG_MAX, L"8192 PB"},  {-1, L"-1 bytes"},       {-1023, L"-1023 bytes"},    {-1536, L"-1.5 KB"},
        {LLONG_MIN, L"-8192 PB"},
    };
    for (const auto& row : aryRows)
        EXPECT_STREQ(row.pExpected, LyFileSystem::FileSizeToReadableFileSize(row.nBytes)) << row.nBytes;
}

TEST(LyFileSystemSizes, WholeNumbersFromOneHundred)
{
    LyString strSize;
    LyFileSystem::FormatStringForFileSize(strSize, 99.94, L"X");
    EXPECT_STREQ(L"99.9 X", strSize);
    LyFileSystem::FormatStringForFileSize(strSize, 100.0, L"X");
    EXPECT_STREQ(L"100 X", strSize);
    LyFileSystem::FormatStringForFileSize(strSize, 1.25, L"X");
    EXPECT_STREQ(L"1.3 X", strSize);
}
