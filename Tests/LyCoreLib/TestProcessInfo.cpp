#include "LyThread.h"
#include "ProcessInfo.h"
#include "Tools/FakeTools.h"
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <malloc.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}

// The name of the block as every library of the process builds it.
std::string GetBlockName() { return "/Lyndle Process v20 (" + std::to_string(getpid()) + ")"; }

bool GetIsBlockThere() { return std::filesystem::exists("/dev/shm" + GetBlockName()); }

std::string GetProgramFolder() { return std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + "/"; }

// The block as a library of another build sees it: bytes at offsets.
class RawBlock
{
public:
    explicit RawBlock(int nBytes = 6232, bool bCreate = false)
    {
        int nDescriptor = shm_open(GetBlockName().c_str(), bCreate ? O_RDWR | O_CREAT : O_RDWR, 0666);
        if (nDescriptor == -1)
            return;
        bool bSized = !bCreate || ftruncate(nDescriptor, nBytes) == 0;
        if (bSized && nBytes > 0)
            m_pBytes = static_cast<char*>(mmap(nullptr, SIZE, PROT_READ | PROT_WRITE, MAP_SHARED, nDescriptor, 0));
        close(nDescriptor);
    }
    ~RawBlock()
    {
        if (m_pBytes != nullptr)
            munmap(m_pBytes, SIZE);
    }
    RawBlock(const RawBlock&) = delete;
    RawBlock& operator=(const RawBlock&) = delete;

    bool GetIsThere() const { return m_pBytes != nullptr; }
    template <class T>
    T& At(int nOffset) const
    {
        return *reinterpret_cast<T*>(m_pBytes + nOffset);
    }
    const wchar_t* GetText(int nOffset) const { return &At<const wchar_t>(nOffset); }
    bool GetIsZero(int nOffset, int nBytes) const
    {
        for (int nByte = nOffset; nByte < nOffset + nBytes; nByte++)
            if (m_pBytes[nByte] != 0)
                return false;
        return true;
    }

    static constexpr int SIZE = 8192;

private:
    char* m_pBytes = nullptr;
};

// Each test begins and ends without a block of that name. What maps the old one keeps it.
class ProcessInfoTest : public testing::Test
{
protected:
    ProcessInfoTest() { shm_unlink(GetBlockName().c_str()); }
    ~ProcessInfoTest() override { shm_unlink(GetBlockName().c_str()); }
};

const CProcessInfo* const s_pBeforeMain = GetProcessInfo(false);

// Lives longer than the process information of the library: it was made earlier.
struct ASKS_LATE
{
    ~ASKS_LATE() { (void)GetProcessInfo(true); }
} s_AsksLate;
} // namespace

// ---- The one object of the library

TEST_F(ProcessInfoTest, IsOnlyCreatedOnDemand)
{
    EXPECT_EQ(nullptr, s_pBeforeMain);
    CProcessInfo* pProcess = GetProcessInfo(true);
    ASSERT_NE(nullptr, pProcess);
    EXPECT_TRUE(pProcess->m_bReady);
    EXPECT_EQ(pProcess, GetProcessInfo(false));
    EXPECT_EQ(pProcess, GetProcessInfo(true));
}

namespace
{
std::atomic<int> s_nMade{0};
std::atomic<int> s_nDestroyed{0};
struct COUNTED
{
    COUNTED() { s_nMade++; }
    ~COUNTED() { s_nDestroyed++; }
};
} // namespace

TEST(LyGlobalWrapper, ThreadsShareOneObjectUntilItIsClosed)
{
    LyGlobalWrapper<COUNTED, 1> wrapper;
    EXPECT_EQ(nullptr, wrapper.Get(false));
    std::vector<std::thread> aryThreads;
    std::atomic<int> nGot{0};
    for (int nThread = 0; nThread < 4; nThread++)
        aryThreads.emplace_back([&] { nGot += wrapper.Get(true) != nullptr; });
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ(4, nGot);
    EXPECT_EQ(1, s_nMade);
    wrapper.Close();
    EXPECT_EQ(1, s_nDestroyed);
    EXPECT_EQ(nullptr, wrapper.Get(true)) << "what comes after the end gets nothing";
    EXPECT_EQ(1, s_nMade);
}

// ---- The shared block

TEST_F(ProcessInfoTest, BlockHasItsNameAndGoesWithTheObject)
{
    {
        CProcessInfo process;
        EXPECT_TRUE(GetIsBlockThere());
        EXPECT_EQ(8192u, std::filesystem::file_size("/dev/shm" + GetBlockName())) << "6232 bytes in whole pages";
    }
    EXPECT_FALSE(GetIsBlockThere());
}

TEST_F(ProcessInfoTest, FreshBlockIsFilledFromWhereTheProgramLies)
{
    setenv("HOME", "/home/somebody", 1);
    CProcessInfo process;
    RawBlock block;
    ASSERT_TRUE(block.GetIsThere());
    LyString strFolder = Wide(GetProgramFolder());
    EXPECT_EQ(1, block.At<int>(0));
    EXPECT_TRUE(block.GetIsZero(4, 1028));
    EXPECT_TRUE(strFolder == block.GetText(1032)) << "install path";
    EXPECT_TRUE(strFolder == block.GetText(2060)) << "customization files path";
    EXPECT_TRUE(strFolder == block.GetText(3088)) << "shared library path";
    EXPECT_STREQ(L"/home/somebody/Library/Application Support/", block.GetText(4116));
    EXPECT_TRUE(block.GetIsZero(5144, 8));
    EXPECT_EQ(static_cast<unsigned long long>(pthread_self()), block.At<unsigned long long>(5152));
    EXPECT_TRUE(block.GetIsZero(5160, 8));
    EXPECT_TRUE(block.GetIsZero(5168, 1048));
    EXPECT_EQ(-1, block.At<int>(6216));
    EXPECT_TRUE(block.GetIsZero(6220, 4));
    EXPECT_EQ(99, block.At<int>(6224));
    EXPECT_TRUE(block.GetIsZero(6228, 4));
}

TEST_F(ProcessInfoTest, GettersReadTheBlock)
{
    CProcessInfo process;
    EXPECT_TRUE(process.GetInstallPath() == Wide(GetProgramFolder()));
    EXPECT_TRUE(process.GetSharedLibraryPath() == Wide(GetProgramFolder()));
    EXPECT_TRUE(process.GetCustomizationFilesPath() == Wide(GetProgramFolder()));
}

TEST_F(ProcessInfoTest, SecondLibraryFindsTheBlockFilled)
{
    CProcessInfo first;
    first.SetSharedLibraryPath(L"/opt/libs/");
    CProcessInfo second;
    EXPECT_TRUE(second.GetSharedLibraryPath() == L"/opt/libs/");
    second.SetInstallPath(L"/opt/player", false, false);
    EXPECT_TRUE(first.GetInstallPath() == L"/opt/player/");
}

TEST_F(ProcessInfoTest, WhoFreesFirstRemovesTheNameAndTheOthersKeepTheirBlock)
{
    CProcessInfo first;
    first.SetSharedLibraryPath(L"/opt/libs/");
    {
        CProcessInfo second;
    }
    EXPECT_FALSE(GetIsBlockThere());
    EXPECT_TRUE(first.GetSharedLibraryPath() == L"/opt/libs/");
    first.SetSharedLibraryPath(L"/opt/other/");
    EXPECT_TRUE(first.GetSharedLibraryPath() == L"/opt/other/");
}

TEST_F(ProcessInfoTest, BlockOfAnEarlierProcessOfThisNumberIsReadSafely)
{
    RawBlock stale(RawBlock::SIZE, true);
    ASSERT_TRUE(stale.GetIsThere());
    for (int nByte = 0; nByte < 6232; nByte++)
        stale.At<unsigned char>(nByte) = 'x'; // no terminator anywhere, and a bool that is none
    CProcessInfo process;
    EXPECT_EQ(255, process.GetInstallPath().GetLength());
    EXPECT_EQ(255, process.GetSharedLibraryPath().GetLength());
    EXPECT_EQ(255, process.GetCustomizationFilesPath().GetLength());
    EXPECT_EQ(255, process.GetApplicationDataPath().GetLength());
    process.SetApplicationDataPathToDefault();
    process.GetDefaultProcessInformation();
    EXPECT_TRUE(process.GetInstallPath() == Wide(GetProgramFolder()));
}

TEST_F(ProcessInfoTest, BlockThatIsOlderThanTheProcessIsReplaced)
{
    RawBlock stale(RawBlock::SIZE, true);
    ASSERT_TRUE(stale.GetIsThere());
    stale.At<int>(0) = 1;
    stale.At<wchar_t>(3088) = L'x'; // a shared library path of that process
    const timespec aryLongAgo[] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, ("/dev/shm" + GetBlockName()).c_str(), aryLongAgo, 0));
    CProcessInfo process;
    EXPECT_TRUE(process.GetSharedLibraryPath() == Wide(GetProgramFolder()));
}

TEST_F(ProcessInfoTest, BlockLeftWithoutSizeIsReplaced)
{
    RawBlock stale(0, true);
    ASSERT_TRUE(GetIsBlockThere());
    CProcessInfo process;
    EXPECT_TRUE(process.GetInstallPath() == Wide(GetProgramFolder()));
    EXPECT_TRUE(RawBlock().GetIsThere());
}

namespace
{
// As nobody, with a block of root's under the name. Root's block cannot be removed, and if all may write it, it is
// still not trusted: libraries would be loaded from where it says.
int MeetBesideForeignBlock(mode_t nPermissions)
{
    constexpr unsigned int NOBODY = 65534;
    const RawBlock foreign(RawBlock::SIZE, true);
    if (!foreign.GetIsThere())
        return 1;
    foreign.At<int>(0) = 1;
    foreign.At<wchar_t>(3088) = L'x'; // a shared library path
    if (chmod(("/dev/shm" + GetBlockName()).c_str(), nPermissions) != 0 || setgid(NOBODY) != 0 || setuid(NOBODY) != 0)
        return 2;
    CProcessInfo first;
    CProcessInfo second;
    if (first.GetSharedLibraryPath() != Wide(GetProgramFolder()))
        return 3;
    first.SetSharedLibraryPath(L"/opt/other/");
    return second.GetSharedLibraryPath() == L"/opt/other/" ? 0 : 4;
}
} // namespace

using ProcessInfoDeathTest = ProcessInfoTest;

TEST_F(ProcessInfoDeathTest, LibrariesMeetUnderAnotherNameWhereAnotherUserHasLeftABlock)
{
    if (getuid() != 0)
        GTEST_SKIP() << "needs root, who can become another user";
    for (const mode_t nPermissions : {0600U, 0666U})
    {
        pid_t nChild = fork();
        ASSERT_NE(-1, nChild);
        if (nChild == 0)
            _exit(MeetBesideForeignBlock(nPermissions));
        int nStatus = 0;
        ASSERT_EQ(nChild, waitpid(nChild, &nStatus, 0));
        EXPECT_EQ(0, WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1) << std::oct << nPermissions;
        (void)shm_unlink(("/Lyndle Process v20 (" + std::to_string(nChild) + ")").c_str());
    }
}

TEST_F(ProcessInfoTest, WithoutBlockPathsAreEmptyAndCannotBeSet)
{
    CProcessInfo process;
    process.m_pData->Free();
    process.SetInstallPath(L"/a", true, false);
    process.SetSharedLibraryPath(L"/a");
    process.SetCustomizationFilesPath(L"/a");
    process.SetApplicationDataPath(L"/a");
    process.SetApplicationDataPathToDefault();
    process.GetDefaultProcessInformation();
    EXPECT_TRUE(process.GetInstallPath().IsEmpty());
    EXPECT_TRUE(process.GetSharedLibraryPath().IsEmpty());
    EXPECT_TRUE(process.GetCustomizationFilesPath().IsEmpty());
    EXPECT_TRUE(process.GetApplicationDataPath().IsEmpty());
}

// ---- Setting paths

TEST_F(ProcessInfoTest, LongPathsAreCutAt255Characters)
{
    LyString strLong;
    strLong.AppendLeft(L'a', 300);
    CProcessInfo process;
    process.SetSharedLibraryPath(strLong);
    process.SetCustomizationFilesPath(strLong);
    process.SetApplicationDataPath(strLong);
    process.SetInstallPath(strLong, false, false);
    EXPECT_TRUE(process.GetSharedLibraryPath() == strLong.Left(255));
    EXPECT_TRUE(process.GetCustomizationFilesPath() == strLong.Left(255));
    EXPECT_TRUE(process.GetApplicationDataPath() == strLong.Left(255));
    EXPECT_TRUE(process.GetInstallPath() == strLong.Left(255)) << "the added slash lies behind the cut";
    RawBlock block;
    for (int nPath : {1032, 2060, 3088, 4116})
    {
        EXPECT_EQ(0, block.At<int>(nPath + 255 * 4));
        EXPECT_TRUE(block.GetIsZero(nPath + 256 * 4, 4)) << "the spare character";
    }
}

TEST_F(ProcessInfoTest, ShorterPathLeavesNothingOfTheLongerOne)
{
    CProcessInfo process;
    process.SetSharedLibraryPath(L"/a/long/path/");
    process.SetSharedLibraryPath(L"/b/");
    EXPECT_TRUE(RawBlock().GetIsZero(3088 + 3 * 4, 1028 - 3 * 4));
    process.SetSharedLibraryPath(L"");
    EXPECT_TRUE(process.GetSharedLibraryPath().IsEmpty());
}

TEST_F(ProcessInfoTest, InstallPathGetsItsSlash)
{
    CProcessInfo process;
    process.SetInstallPath(L"/opt/player", false, false);
    EXPECT_TRUE(process.GetInstallPath() == L"/opt/player/");
    process.SetInstallPath(L"/opt/other/", false, false);
    EXPECT_TRUE(process.GetInstallPath() == L"/opt/other/");
    EXPECT_TRUE(process.GetSharedLibraryPath() == Wide(GetProgramFolder())) << "not derived";
}

TEST_F(ProcessInfoTest, DerivedPathsFollowTheInstallPath)
{
    CProcessInfo process;
    process.SetInstallPath(L"/opt/A.app/Contents/MacOS", true, false);
    EXPECT_TRUE(process.GetInstallPath() == L"/opt/A.app/Contents/MacOS/");
    EXPECT_TRUE(process.GetSharedLibraryPath() == L"/opt/A.app/Contents/MacOS/");
    EXPECT_TRUE(process.GetCustomizationFilesPath() == L"/opt/A.app/Contents/Resources/");
}

TEST_F(ProcessInfoTest, InstallPathCanWaitUntilTheObjectIsReady)
{
    CProcessInfo process;
    process.SetInstallPath(L"/ready", false, true);
    EXPECT_TRUE(process.GetInstallPath() == L"/ready/");
    process.m_bReady = false;
    process.SetInstallPath(L"/early", true, true);
    EXPECT_TRUE(process.GetInstallPath() == L"/ready/");
    process.SetInstallPath(L"/early", false, false);
    EXPECT_TRUE(process.GetInstallPath() == L"/early/");
}

TEST_F(ProcessInfoTest, InstallPathUpdatesTheTokenReplacer)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    CProcessInfo process;
    tools->Reset();
    process.SetInstallPath(L"/opt/player", false, false);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_TOKEN_REPLACER));
    process.m_bReady = false;
    process.SetInstallPath(L"/opt/player", false, true);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_TOKEN_REPLACER)) << "nothing was set";
}

TEST_F(ProcessInfoTest, ApplicationDataLiesInHomeOrUnderTheInstallPath)
{
    setenv("HOME", "/home/somebody/", 1);
    CProcessInfo process;
    process.SetInstallPath(L"/opt/player", false, false);
    process.SetApplicationDataPath(L"/elsewhere/");
    EXPECT_TRUE(process.GetApplicationDataPath() == L"/elsewhere/");
    process.SetApplicationDataPathToDefault();
    EXPECT_TRUE(process.GetApplicationDataPath() == L"/home/somebody/Library/Application Support/");
    RawBlock().At<unsigned char>(5168) = 1;
    process.SetApplicationDataPathToDefault();
    EXPECT_TRUE(process.GetApplicationDataPath() == L"/opt/player/Application Data\\");
}

TEST_F(ProcessInfoTest, NestedBundlesReduceToTheOutermost)
{
    const struct
    {
        const wchar_t* pPath;
        const wchar_t* pExpected;
    } aryRows[] = {
        {L"/opt/player/", L"/opt/player/"},
        {L"/Apps/A.app/Contents/MacOS/", L"/Apps/A.app/Contents/MacOS/"},
        {L"/Apps/A.app/Contents/MacOS/B.app/Contents/MacOS/", L"/Apps/A.app/Contents/MacOS/"},
        {L"/Apps/A.app/Contents/MacOS/B.app/Contents/MacOS/C.app/Contents/MacOS/", L"/Apps/A.app/Contents/MacOS/"},
        {L"/Apps/A.app/Contents/MacOS/sub/B.app/Contents/MacOS/", L"/Apps/A.app/Contents/MacOS/sub/"},
        {L"", L""},
    };
    for (const auto& row : aryRows)
        EXPECT_STREQ(row.pExpected, CProcessInfo::GetOutermostBundlePath(row.pPath)) << LyStringUTF8(row.pPath).Get();
}

TEST_F(ProcessInfoTest, InstanceHandleIsThatOfTheFirstAttach)
{
    EXPECT_EQ(nullptr, CProcessInfo::GetDynamicLibraryInstanceHandle());
    int nModule = 0;
    CProcessInfo::s_hInstance = reinterpret_cast<HINSTANCE__*>(&nModule);
    EXPECT_EQ(reinterpret_cast<HINSTANCE__*>(&nModule), CProcessInfo::GetDynamicLibraryInstanceHandle());
    CProcessInfo::s_hInstance = nullptr;
}

TEST(CopyStringToFixedBuffer, CutsTerminatesAndZeroesTheRest)
{
    wchar_t aryBuffer[5] = {L'x', L'x', L'x', L'x', L'x'};
    CopyStringToFixedBuffer(aryBuffer, L"abcdefgh", 4);
    EXPECT_STREQ(L"abc", aryBuffer);
    EXPECT_EQ(L'x', aryBuffer[4]) << "behind the field";
    CopyStringToFixedBuffer(aryBuffer, L"a", 4);
    EXPECT_EQ(0, aryBuffer[1]);
    EXPECT_EQ(0, aryBuffer[2]);
}

// ---- A plug-in that comes and goes

namespace
{
int CountDescriptors()
{
    int nCount = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        nCount++;
    return nCount;
}

bool GetIsMapped(const std::string& strPath)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string strLine; std::getline(maps, strLine);)
        if (strLine.find(strPath) != std::string::npos)
            return true;
    return false;
}

bool LoadUseUnload()
{
    CProcessInfo process; // the plug-in finds this block, and with it the tools library
    process.SetSharedLibraryPath(FakeTools::GetDirectory());
    LyLoadLibrary library;
    return library.Load(Wide(RONDEL_FAKES_DIR "/process_user/libProcessUser.dylib"), true, 0);
}
} // namespace

TEST_F(ProcessInfoTest, ThousandLoadsOfAPluginLeaveNothingBehind)
{
    constexpr int WARM_UP_LOADS = 20;
    constexpr int LOADS = 1000;
    constexpr size_t SLACK_BYTES = 32 * 1024; // less than 33 bytes for each load
    for (int nLoad = 0; nLoad < WARM_UP_LOADS; nLoad++)
        ASSERT_TRUE(LoadUseUnload());
    int nDescriptors = CountDescriptors();
    size_t nHeapBytes = mallinfo2().uordblks;
    for (int nLoad = 0; nLoad < LOADS; nLoad++)
        ASSERT_TRUE(LoadUseUnload());
    EXPECT_EQ(nDescriptors, CountDescriptors());
    EXPECT_LT(mallinfo2().uordblks, nHeapBytes + SLACK_BYTES);
    EXPECT_FALSE(GetIsBlockThere());
    EXPECT_FALSE(GetIsMapped("libProcessUser.dylib"));
    EXPECT_FALSE(GetIsMapped("libLyTools.dylib"));
}
