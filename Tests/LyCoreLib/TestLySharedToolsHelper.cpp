#include "Tools/FakeEvents.h"
#include "Tools/FakeTools.h"
#include <atomic>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}

void UseFakes(const char* pFolder)
{
    GetProcessInfo(true)->SetSharedLibraryPath(Wide(std::string(RONDEL_FAKES_DIR "/") + pFolder + "/"));
}

bool GetIsMapped(const char* pFolder)
{
    std::string strPath = std::string(RONDEL_FAKES_DIR "/") + pFolder + "/libLyTools.dylib";
    void* hLibrary = dlopen(strPath.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (hLibrary != nullptr)
        dlclose(hLibrary);
    return hLibrary != nullptr;
}

class Events : public IFakeEvents
{
public:
    void Record(const char* pEvent) override { m_aryEvents.push_back(pEvent); }
    std::vector<std::string> m_aryEvents;
};
using EVENTS = std::vector<std::string>;

// A static object of another file than the helper's: asks for services before and after everything else.
bool s_bAskedWhileConstructing = false;
struct ASKS_EARLY_AND_LATE
{
    ASKS_EARLY_AND_LATE()
    {
        s_bAskedWhileConstructing = GetLogManager(true) == nullptr && GetLyTools(false) == nullptr;
        LySharedLibLock()->Unlock();
    }
    ~ASKS_EARLY_AND_LATE()
    {
        if (GetLogManager(true) != nullptr || GetLyTools(false) != nullptr)
            abort();
        LySharedLibLock()->Unlock();
        g_LySharedToolsHelper.UnloadLySharedLibs(true);
    }
} s_AsksEarlyAndLate;
} // namespace

TEST(LySharedToolsHelper, IsThereForStaticConstructors) { EXPECT_TRUE(s_bAskedWhileConstructing); }

TEST(LySharedToolsHelper, FileNames)
{
    const struct
    {
        int nLibrary;
        const wchar_t* pName;
    } aryRows[] = {
        {0, L"libLyTools.dylib"},
        {1, L"libLyImage.dylib"},
        {2, L"libLyReader.dylib"},
        {3, L"libLyDisc.dylib"},
        {4, L"libLyPlayer.dylib"},
        {5, L"libLyWMFactory.dylib"},
        {6, L""},
        {-1, L""},
        {7, L""},
    };
    for (const auto& row : aryRows)
        EXPECT_STREQ(row.pName, CLySharedToolsHelper::GetLibraryFileName(static_cast<ELibraries>(row.nLibrary)))
            << row.nLibrary;
}

TEST(LySharedToolsHelper, AccessorsAreNullBeforeTheToolsAreLoadedAndDoNotLoadThem)
{
    UseFakes("tools"); // it could be loaded
    EXPECT_EQ(nullptr, GetLyTools(false));
    for (bool bCreate : {false, true})
    {
        EXPECT_EQ(nullptr, GetProductInfo(bCreate));
        EXPECT_EQ(nullptr, GetStringHelper(bCreate));
        EXPECT_EQ(nullptr, GetLogManager(bCreate));
        EXPECT_EQ(nullptr, GetLyMessageBoxHelper(bCreate));
        EXPECT_EQ(nullptr, GetMainThreadMessageManager(bCreate));
        EXPECT_EQ(nullptr, GetDateTimeHelper(bCreate));
        EXPECT_EQ(nullptr, GetFileSystemManager(bCreate));
        EXPECT_EQ(nullptr, GetSystemPowerManager(bCreate));
    }
    UpdateOptionsHelperTokenReplacer();
    EXPECT_FALSE(GetIsMapped("tools"));
}

TEST(LySharedToolsHelper, NothingIsFoundWhereNoLibraryIs)
{
    UseFakes("nowhere");
    EXPECT_EQ(nullptr, GetLyTools(true));
    EXPECT_EQ(nullptr, CreateOptionsHelperName(L"Properties", true));
    EXPECT_EQ(nullptr, CreateZLib());
    EXPECT_EQ(nullptr, CreateGenericReader(L"/a"));
    EXPECT_EQ(nullptr, GetDiscManager(true));
    EXPECT_TRUE(LoadProductInfo(L"", true, false, false, nullptr, 0)) << "works without a description";
}

TEST(LySharedToolsHelper, SecondLoadOfTheToolsDoesNotLoadAgain)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    ILyTools* pTools = GetLyTools(false);
    EXPECT_TRUE(g_LySharedToolsHelper.LoadLyToolsLib(L""));
    EXPECT_EQ(pTools, GetLyTools(true));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_LIBRARY_ATTACH));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_ROOT_ATTACH));
}

TEST(LySharedToolsHelper, FlagSaysWhetherTheLibraryWasThereBefore)
{
    UseFakes("tools");
    bool bNew = true;
    EXPECT_TRUE(
        g_LySharedToolsHelper.LoadLySharedLib(L"libLyTools.dylib", &g_LySharedToolsHelper.m_ToolsLibrary, &bNew));
    EXPECT_FALSE(bNew);
    EXPECT_TRUE(
        g_LySharedToolsHelper.LoadLySharedLib(L"libLyTools.dylib", &g_LySharedToolsHelper.m_ToolsLibrary, &bNew));
    EXPECT_TRUE(bNew);
    EXPECT_TRUE(g_LySharedToolsHelper.LoadLySharedLib(L"", &g_LySharedToolsHelper.m_ToolsLibrary, nullptr));
    g_LySharedToolsHelper.UnloadLyToolsLib();
    EXPECT_EQ(nullptr, GetLyTools(false));
}

TEST(LySharedToolsHelper, NullLibraryIsRefused)
{
    bool bNew = true;
    EXPECT_FALSE(g_LySharedToolsHelper.LoadLySharedLib(L"libLyTools.dylib", nullptr, &bNew));
    EXPECT_FALSE(g_LySharedToolsHelper.LoadLySharedLib(L"libLyTools.dylib", nullptr, nullptr));
}

TEST(LySharedToolsHelper, RootIsGivenContextAndModuleHandle)
{
    Events events;
    int nModule = 0;
    CProcessInfo::s_hInstance = reinterpret_cast<HINSTANCE__*>(&nModule);
    g_LySharedToolsHelper.m_nToolsContext = reinterpret_cast<long long>(static_cast<IFakeEvents*>(&events));
    {
        FakeTools tools;
        ASSERT_TRUE(tools.GetIsLoaded());
        EXPECT_EQ(g_LySharedToolsHelper.m_nToolsContext, tools->GetContext());
        EXPECT_EQ(&nModule, tools->GetApplicationHandle());
        EXPECT_EQ(0, tools->GetCount(FAKE_COUNT_NOTIFY_UNLOAD));
    }
    EXPECT_EQ((EVENTS{"tools attach", "tools detach", "tools library detach"}), events.m_aryEvents);
    g_LySharedToolsHelper.m_nToolsContext = 0;
    CProcessInfo::s_hInstance = nullptr;
}

// The folder of a tools library that cannot be used.
class BrokenTools : public testing::TestWithParam<const char*>
{
};

TEST_P(BrokenTools, IsUnloadedAgain)
{
    UseFakes(GetParam());
    EXPECT_EQ(nullptr, GetLyTools(true));
    EXPECT_FALSE(g_LySharedToolsHelper.LoadLyToolsLib(L""));
    EXPECT_EQ(nullptr, GetLyTools(false));
    EXPECT_FALSE(g_LySharedToolsHelper.m_ToolsLibrary.GetIsLoaded());
    EXPECT_FALSE(GetIsMapped(GetParam()));
    EXPECT_EQ(nullptr, GetLogManager(true));
    EXPECT_EQ(nullptr, CreateOptionsHelperName(L"Properties", true));
}

INSTANTIATE_TEST_SUITE_P(LySharedToolsHelper, BrokenTools,
                         testing::Values("tools_no_entry", "tools_attach_throws", "tools_detach_throws",
                                         "tools_entry_throws", "tools_entry_is_null"),
                         [](const auto& folder) { return std::string(folder.param); });

// ---- Where a library is looked for

TEST(LySharedToolsHelperPaths, DirectoryGoesBetweenSharedPathAndFileName)
{
    GetProcessInfo(true)->SetSharedLibraryPath(Wide(RONDEL_FAKES_DIR "/"));
    EXPECT_FALSE(g_LySharedToolsHelper.LoadLyToolsLib(L"nowhere"));
    EXPECT_TRUE(g_LySharedToolsHelper.LoadLyToolsLib(L"tools"));
    g_LySharedToolsHelper.UnloadLyToolsLib();
    EXPECT_TRUE(g_LySharedToolsHelper.LoadLyToolsLib(L"tools//"));
    g_LySharedToolsHelper.UnloadLyToolsLib();
}

TEST(LySharedToolsHelperPaths, ForwardSlashPathAlwaysGetsThePrefix)
{
    LyString strPath = Wide(RONDEL_FAKES_DIR "/tools/libLyTools.dylib");
    LyLoadLibrary library;
    GetProcessInfo(true)->SetSharedLibraryPath(L"/nowhere");
    EXPECT_FALSE(g_LySharedToolsHelper.LoadLySharedLib(strPath, &library, nullptr));
    GetProcessInfo(true)->SetSharedLibraryPath(L"/");
    EXPECT_TRUE(g_LySharedToolsHelper.LoadLySharedLib(strPath, &library, nullptr));
    library.Unload();
    GetProcessInfo(true)->SetSharedLibraryPath(L"");
    EXPECT_TRUE(g_LySharedToolsHelper.LoadLySharedLib(strPath, &library, nullptr)) << "an empty prefix is none";
}

TEST(LySharedToolsHelperPaths, BackslashFormsAreFullPaths)
{
    // Folders whose names look like the beginning of a full path, below the current one.
    std::filesystem::path former = std::filesystem::current_path();
    std::filesystem::path directory =
        std::filesystem::path(testing::TempDir()) / ("rondel full paths " + std::to_string(getpid()));
    const struct
    {
        const char* pFolder;
        bool bFull;
    } aryRows[] = {
        {"Z:\\libs", true}, {"\\\\server", true}, {"ZZ:\\libs", false}, {"Z\\:libs", false}, {"a\\\\b", false},
    };
    for (const auto& row : aryRows)
    {
        std::filesystem::create_directories(directory / row.pFolder);
        std::filesystem::copy_file(RONDEL_FAKES_DIR "/siblings/libLyWMFactory.dylib", directory / row.pFolder / "lib",
                                   std::filesystem::copy_options::overwrite_existing);
    }
    std::filesystem::current_path(directory);
    GetProcessInfo(true)->SetSharedLibraryPath(L"/nowhere/");
    for (const auto& row : aryRows)
    {
        LyLoadLibrary library;
        LyString strPath = Wide(std::string(row.pFolder) + "/lib");
        EXPECT_EQ(row.bFull, g_LySharedToolsHelper.LoadLySharedLib(strPath, &library, nullptr)) << row.pFolder;
    }
    std::filesystem::current_path(former);
    std::filesystem::remove_all(directory);
}

// ---- The other siblings

class LySiblings : public testing::Test
{
protected:
    LySiblings()
    {
        CProcessInfo::s_hInstance = reinterpret_cast<HINSTANCE__*>(static_cast<IFakeEvents*>(&m_Events));
        UseFakes("siblings");
    }
    ~LySiblings() override
    {
        g_LySharedToolsHelper.UnloadLySharedLibs(false);
        CProcessInfo::s_hInstance = nullptr;
    }

    static bool Load(CLySharedToolsHelper& helper, LyLoadLibrary& library, const wchar_t* pFile)
    {
        return helper.LoadLySharedLib(pFile, &library, nullptr);
    }
    static void LoadAll(CLySharedToolsHelper& helper)
    {
        helper.m_nReaderContext = 1;
        helper.m_nImageContext = 2;
        helper.m_nPlayerContext = 3;
        helper.m_nDiscContext = 4;
        helper.m_nTelevisionContext = 5;
        EXPECT_TRUE(helper.LoadLyReaderLib(L""));
        EXPECT_TRUE(Load(helper, helper.m_ImageLibrary, L"libLyImage.dylib"));
        EXPECT_TRUE(Load(helper, helper.m_PlayerLibrary, L"libLyPlayer.dylib"));
        EXPECT_TRUE(helper.LoadLyDiscLib(L""));
        EXPECT_TRUE(Load(helper, helper.m_WMFactoryLibrary, L"libLyWMFactory.dylib"));
        EXPECT_TRUE(Load(helper, helper.m_TelevisionLibrary, L"libLyTelevision.dylib"));
    }

    Events m_Events;
    const EVENTS m_aryUnloads{"disc LyDiscUninitialize 4",
                              "disc Detach",
                              "player Detach",
                              "television Detach",
                              "factory Detach",
                              "image Detach",
                              "reader Detach"};
};

TEST_F(LySiblings, EntriesRunWithTheContextAfterAttach)
{
    CLySharedToolsHelper helper;
    LoadAll(helper);
    EXPECT_EQ((EVENTS{"reader Attach", "reader LyReaderInitialize 1", "image Attach", "image root attach 2",
                      "player Attach", "player root attach 3", "disc Attach", "disc LyDiscInitialize 4",
                      "factory Attach", "television Attach", "television root attach 5"}),
              m_Events.m_aryEvents);
    EXPECT_NE(nullptr, helper.m_pImage);
    EXPECT_NE(nullptr, helper.m_pPlayer);
    EXPECT_NE(nullptr, helper.m_pTelevision);
}

TEST_F(LySiblings, UnloadOrderEndsWithTheTools)
{
    CLySharedToolsHelper helper;
    LoadAll(helper);
    UseFakes("tools");
    helper.m_nToolsContext = reinterpret_cast<long long>(static_cast<IFakeEvents*>(&m_Events));
    ASSERT_TRUE(helper.LoadLyToolsLib(L""));
    int nApplication = 0;
    CLySharedToolsHelper::s_pApplication = &nApplication;
    m_Events.m_aryEvents.clear();
    helper.UnloadLySharedLibs(true);

    EVENTS aryExpected{"tools notify"};
    aryExpected.insert(aryExpected.end(), m_aryUnloads.begin(), m_aryUnloads.end());
    aryExpected.insert(aryExpected.end(), {"tools detach", "tools library detach"});
    EXPECT_EQ(aryExpected, m_Events.m_aryEvents);
    EXPECT_EQ(nullptr, helper.m_pTools.load());
    EXPECT_EQ(nullptr, helper.m_pImage);
    EXPECT_EQ(nullptr, helper.m_pPlayer);
    EXPECT_EQ(nullptr, helper.m_pTelevision);
    CLySharedToolsHelper::s_pApplication = nullptr;
}

TEST_F(LySiblings, NoticeCarriesTheApplicationObject)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    void* hKeep = dlopen(RONDEL_FAKES_DIR "/tools/libLyTools.dylib", RTLD_LAZY); // its control outlives the unload
    int nApplication = 0;
    CLySharedToolsHelper::s_pApplication = &nApplication;
    g_LySharedToolsHelper.UnloadLySharedLibs(true);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_NOTIFY_UNLOAD));
    EXPECT_EQ(&nApplication, tools->GetNotifiedApplication());
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_LIBRARY_DETACH));
    CLySharedToolsHelper::s_pApplication = nullptr;
    dlclose(hKeep);
}

TEST_F(LySiblings, DestructorUnloadsWithoutNotice)
{
    {
        CLySharedToolsHelper helper;
        LoadAll(helper);
        m_Events.m_aryEvents.clear();
    }
    EXPECT_EQ(m_aryUnloads, m_Events.m_aryEvents);
}

TEST_F(LySiblings, UnloadOfWhatIsNotLoadedDoesNothing)
{
    g_LySharedToolsHelper.UnloadLySharedLibs(true);
    g_LySharedToolsHelper.UnloadLyDiscLib();
    EXPECT_EQ(EVENTS{}, m_Events.m_aryEvents);
}

TEST_F(LySiblings, AnotherHelperKeepsItsLibraries)
{
    CLySharedToolsHelper host;
    CLySharedToolsHelper plugin;
    ASSERT_TRUE(host.LoadLyDiscLib(L""));
    ASSERT_TRUE(plugin.LoadLyDiscLib(L""));
    plugin.UnloadLySharedLibs(false);
    EXPECT_NE(nullptr, host.m_DiscLibrary.GetProcAddress("GetDiscManagerDLL"));
}

TEST_F(LySiblings, DiscManagerLoadsItsLibraryAndPassesTheFlag)
{
    EXPECT_NE(nullptr, GetDiscManager(true));
    EXPECT_EQ(nullptr, GetDiscManager(false));
    EXPECT_EQ((EVENTS{"disc Attach", "disc LyDiscInitialize"}), m_Events.m_aryEvents) << "loaded once";
}

TEST_F(LySiblings, GenericReaderLoadsItsLibrary)
{
    EXPECT_NE(nullptr, CreateGenericReader(L"/a.wav"));
    EXPECT_EQ((EVENTS{"reader Attach", "reader LyReaderInitialize"}), m_Events.m_aryEvents);
    EXPECT_EQ(nullptr, CreateGenericReader(L"")) << "this makes the fake throw";
    EXPECT_NE(nullptr, CreateGenericReader(L"/a.wav"));
}

TEST_F(LySiblings, LibrariesThatThrowOrLackTheirEntryAreUnloadedAgain)
{
    UseFakes("siblings_broken");
    CLySharedToolsHelper& helper = g_LySharedToolsHelper;
    EXPECT_FALSE(Load(helper, helper.m_ImageLibrary, L"libLyImage.dylib")) << "the root throws";
    EXPECT_EQ(nullptr, helper.m_pImage);
    EXPECT_FALSE(Load(helper, helper.m_PlayerLibrary, L"libLyPlayer.dylib")) << "there is no entry";
    EXPECT_EQ(nullptr, helper.m_pPlayer);
    EXPECT_FALSE(helper.LoadLyReaderLib(L"")) << "initialize throws";
    EXPECT_EQ(nullptr, CreateGenericReader(L"/a.wav"));
    EXPECT_FALSE(helper.m_ImageLibrary.GetIsLoaded() || helper.m_PlayerLibrary.GetIsLoaded() ||
                 helper.m_ReaderLibrary.GetIsLoaded());
    EXPECT_TRUE(helper.LoadLyDiscLib(L""));
    EXPECT_EQ(nullptr, GetDiscManager(true)) << "the manager's entry throws";
}

TEST_F(LySiblings, InitializeEntriesNeedNotExist)
{
    CLySharedToolsHelper helper;
    EXPECT_TRUE(Load(helper, helper.m_ReaderLibrary, L"libLyWMFactory.dylib"));
    EXPECT_TRUE(Load(helper, helper.m_DiscLibrary, L"libLyWMFactory.dylib"));
}

TEST(LySharedToolsHelper, ThreadsThatAskAtOnceLoadOnce)
{
    UseFakes("tools");
    ASSERT_EQ(nullptr, GetLyTools(false));
    std::atomic<int> nFound{0};
    std::vector<std::thread> aryThreads;
    for (int nThread = 0; nThread < 4; nThread++)
        aryThreads.emplace_back([&] { nFound += GetLyTools(true) != nullptr && GetLogManager(true) != nullptr; });
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ(4, nFound);
    EXPECT_EQ(1, FakeTools::GetControl()->GetCount(FAKE_COUNT_LIBRARY_ATTACH));
    g_LySharedToolsHelper.UnloadLyToolsLib();
}

// The lock is taken inside the library, where the analysis of this file does not look.
static void UnlockByHand(LyLock* pLock) LY_NO_THREAD_SAFETY_ANALYSIS { pLock->Unlock(); }

TEST(LySharedLibLock, IsRecursive)
{
    LyLock* pLock = LySharedLibLock();
    EXPECT_EQ(pLock, LySharedLibLock());
    EXPECT_EQ(2, pLock->GetLockCount());
    UseFakes("tools");
    EXPECT_NE(nullptr, GetLyTools(true));
    g_LySharedToolsHelper.UnloadLyToolsLib();
    EXPECT_EQ(2, pLock->GetLockCount()) << "every operation gives back what it took";
    UnlockByHand(pLock);
    UnlockByHand(pLock);
}
