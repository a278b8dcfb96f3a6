// The built library, loaded as other programs load it.

#include "IProductInfo.h"
#include "IStringHelper.h"
#include "LyFileSystem.h"
#include "LySharedToolsHelper.h"
#include "LyTools.h"
#include "OptionsHelper.h"
#include "ProcessInfo.h"
#include "UserFolders.h"
#include "ZLibHelper.h"
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <string>
#include <vector>

namespace
{
const wchar_t* const STORE = L"Software\\Lyndle\\Tune Hearth\\Plugins\\Input\\CDA";
const char* const LIBRARY = RONDEL_BIN_DIR "/libLyTools.dylib";

// Has the front ends find the built library, for the length of a scope.
class BuiltTools
{
public:
    BuiltTools()
    {
        LyString strFolder;
        strFolder.FromUTF8(reinterpret_cast<const unsigned char*>(RONDEL_BIN_DIR "/"));
        GetProcessInfo(true)->SetSharedLibraryPath(strFolder);
    }
    ~BuiltTools() { g_LySharedToolsHelper.UnloadLySharedLibs(true); }
    BuiltTools(const BuiltTools&) = delete;
    BuiltTools& operator=(const BuiltTools&) = delete;

    template <class FUNCTION>
    FUNCTION GetExport(const char* pName) const
    {
        return reinterpret_cast<FUNCTION>(g_LySharedToolsHelper.m_ToolsLibrary.GetProcAddress(pName));
    }
};

int CountDescriptors()
{
    int nCount = 0;
    for ([[maybe_unused]] const auto& each : std::filesystem::directory_iterator("/proc/self/fd"))
        nCount++;
    return nCount;
}

// Whether the process has a file of that name mapped.
bool IsMapped(const char* pName)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string strLine; std::getline(maps, strLine);)
        if (strLine.find(pName) != std::string::npos)
            return true;
    return false;
}

// Loads the library, uses what it has, and lets go of it.
bool RunOneLife()
{
    void* hLibrary = dlopen(LIBRARY, RTLD_LAZY);
    if (hLibrary == nullptr)
        return false;
    auto pAttach = reinterpret_cast<bool (*)(void*)>(dlsym(hLibrary, "Attach"));
    auto pDetach = reinterpret_cast<void (*)()>(dlsym(hLibrary, "Detach"));
    auto pEntry = reinterpret_cast<ILyTools* (*)(int)>(dlsym(hLibrary, "GetLyToolsDLL"));
    bool bGood = pAttach(nullptr);
    ILyTools* pTools = pEntry(LY_TOOLS_INTERFACE_VERSION);
    pTools->Attach(0, nullptr);
    IOptionsHelper* pOptions = pTools->CreateOptionsHelper(STORE, true);
    bGood = pOptions->Get(L"ReadSpeed", 0, 0, 0) == 8 && bGood;
    delete pOptions;
    delete pTools->CreateZLib();
    bGood = pTools->GetStringHelper(true)->FindNoCase(L"ABC", L"b", 0) == 1 && bGood;
    bGood = pTools->GetDateTimeHelper(true) != nullptr && bGood;
    bGood = pTools->GetTranslator(true) != nullptr && pTools->GetFileSystemManager(true) != nullptr && bGood;
    bGood =
        pTools->GetLyMessageBoxHelper(true) != nullptr && pTools->GetMainThreadMessageManager(true) != nullptr && bGood;
    pTools->Detach(0, nullptr);
    pDetach();
    return dlclose(hLibrary) == 0 && bGood;
}
} // namespace

TEST(LyToolsLibrary, ExportsItsEntriesAlone)
{
    void* hLibrary = dlopen(LIBRARY, RTLD_LAZY);
    ASSERT_NE(nullptr, hLibrary) << dlerror();
    for (const char* pName : {"Attach", "Detach", "GetLyToolsDLL", "EnumerateLyOptions"})
        EXPECT_NE(nullptr, dlsym(hLibrary, pName)) << pName;
    for (const char* pName : {"g_LySharedToolsHelper", "_Z10GetLyToolsb"})
    {
        Dl_info info{};
        void* pSymbol = dlsym(hLibrary, pName);
        EXPECT_TRUE(pSymbol == nullptr || (dladdr(pSymbol, &info) != 0 && strstr(info.dli_fname, LIBRARY) == nullptr));
    }
    EXPECT_EQ(0, dlclose(hLibrary));
}

TEST(LyToolsLibrary, TheRootIsForTheKnownVersionOnly)
{
    const BuiltTools built;
    ILyTools* pTools = GetLyTools(true);
    ASSERT_NE(nullptr, pTools);
    auto pEntry = built.GetExport<ILyTools* (*)(int)>("GetLyToolsDLL");
    EXPECT_EQ(pTools, pEntry(200048));
    for (const int nVersion : {0, -1, 200047, 200049})
        EXPECT_EQ(nullptr, pEntry(nVersion));
}

TEST(LyToolsLibrary, OptionsPassThroughTheFrontEnd)
{
    const UserFolders user;
    {
        const BuiltTools built;
        COptionsHelper options(STORE, true);
        ASSERT_NE(nullptr, options.m_pHelper.Get());
        EXPECT_TRUE(options.Get(L"Text", L"default") == L"default");
        EXPECT_TRUE(options.Set(L"Text", L"\u00e4 \U0001F3B5"));
        EXPECT_TRUE(options.Set(L"ReadSpeed", L"8"));
        EXPECT_TRUE(options.Get(L"Text", L"default") == L"\u00e4 \U0001F3B5");
    }
    EXPECT_EQ(nullptr, GetLyTools(false));
    const BuiltTools again;
    COptionsHelper options(STORE, false);
    EXPECT_EQ(8, options.Get(L"ReadSpeed", 0));
    EXPECT_TRUE(options.Delete(L"ReadSpeed"));
    EXPECT_EQ(0, options.Get(L"ReadSpeed", 0));
}

TEST(LyToolsLibrary, EveryServiceIsReachedThroughTheFrontEnds)
{
    const UserFolders user;
    const BuiltTools built;
    EXPECT_EQ(nullptr, GetStringHelper(true)) << "nobody has loaded the library yet";
    ASSERT_NE(nullptr, GetLyTools(true));
    EXPECT_NE(nullptr, GetStringHelper(true));
    EXPECT_NE(nullptr, GetProductInfo(true));
    EXPECT_NE(nullptr, GetLyMessageBoxHelper(true));
    EXPECT_NE(nullptr, GetMainThreadMessageManager(true));
    EXPECT_NE(nullptr, GetDateTimeHelper(true));
    EXPECT_NE(nullptr, GetFileSystemManager(true));
    EXPECT_NE(nullptr, GetSystemPowerManager(true));
    EXPECT_NE(nullptr, GetLyTools(false)->GetTranslator(true));
    IZLib* pZLib = CreateZLib();
    EXPECT_NE(nullptr, pZLib);
    delete pZLib;
    UpdateOptionsHelperTokenReplacer();
}

TEST(LyToolsLibrary, TheLogManagerComesWithTheLibrary)
{
    const UserFolders user;
    {
        const Environment log("RONDEL_LOG", ("4096:" + user.GetFolder().GetPath("log")).c_str());
        const BuiltTools built;
        EXPECT_EQ(nullptr, GetLogManager(false));
        ASSERT_NE(nullptr, GetLyTools(true));
        EXPECT_NE(nullptr, GetLogManager(false));
    }
    const Environment log("RONDEL_LOG", nullptr);
    const BuiltTools built;
    ASSERT_NE(nullptr, GetLyTools(true));
    EXPECT_EQ(nullptr, GetLogManager(false));
}

TEST(LyToolsLibrary, TheProductGivesTheFolderForData)
{
    const UserFolders user;
    const BuiltTools built;
    EXPECT_TRUE(LoadProductInfo(LyString(), true, false, false, nullptr, 0));
    ASSERT_NE(nullptr, GetProductInfo(false));
    EXPECT_TRUE(GetProductInfo(false)->GetHasProduct());
    LyString strExpected;
    strExpected.FromUTF8(reinterpret_cast<const unsigned char*>(user.GetFolder().GetPath("data/rondel/").c_str()));
    EXPECT_TRUE(LyFileSystem::GetDirectoryAppdataLy() == strExpected);
}

TEST(LyToolsLibrary, WithoutItEverythingGoesOn)
{
    GetProcessInfo(true)->SetSharedLibraryPath(L"/nowhere/");
    COptionsHelper options(STORE, true);
    EXPECT_EQ(7, options.Get(L"ReadSpeed", 7));
    EXPECT_FALSE(options.Set(L"ReadSpeed", L"8"));
    EXPECT_FALSE(options.Delete(L"ReadSpeed"));
    EXPECT_EQ(nullptr, CreateZLib());
    EXPECT_EQ(nullptr, GetStringHelper(true));
    EXPECT_TRUE(LoadProductInfo(LyString(), true, false, false, nullptr, 0));
    EXPECT_EQ(1, LyString(L"ABC").FindNoCase(L"b", 0));
    EXPECT_TRUE(TranslateString(L"Reading") == L"Reading");
}

TEST(LyToolsEnumerate, TellsOfEachOptionInOrder)
{
    const UserFolders user;
    const BuiltTools built;
    COptionsHelper first(L"A", true);
    COptionsHelper second(L"b", true);
    ASSERT_TRUE(second.Set(L"K", L"3"));
    ASSERT_TRUE(first.Set(L"L", L"2"));
    ASSERT_TRUE(first.Set(L"K", L"1"));
    auto pEnumerate = built.GetExport<decltype(&EnumerateLyOptions)>("EnumerateLyOptions");
    ASSERT_NE(nullptr, pEnumerate);
    struct HEARD
    {
        std::wstring strAll;
        size_t nMost = 100;
        size_t nCount = 0;
    };
    const LY_OPTION_CALLBACK pCallback =
        [](void* pContext, const wchar_t* pStore, const wchar_t* pKey, const wchar_t* pValue)
    {
        HEARD& heard = *static_cast<HEARD*>(pContext);
        heard.strAll += std::wstring(pStore) + L"/" + pKey + L"=" + pValue + L" ";
        return ++heard.nCount < heard.nMost;
    };
    HEARD all;
    EXPECT_EQ(3, pEnumerate(nullptr, pCallback, &all));
    EXPECT_EQ(L"A/K=1 A/L=2 b/K=3 ", all.strAll);
    HEARD one;
    EXPECT_EQ(1, pEnumerate(L"B", pCallback, &one));
    EXPECT_EQ(L"b/K=3 ", one.strAll);
    HEARD ended;
    ended.nMost = 2;
    EXPECT_EQ(2, pEnumerate(nullptr, pCallback, &ended)) << "the callback had enough";
    HEARD none;
    EXPECT_EQ(0, pEnumerate(L"none", pCallback, &none));
    EXPECT_EQ(-1, pEnumerate(nullptr, nullptr, nullptr));
}

TEST(LyToolsEnumerate, ItsCallbackMayUseTheOptions)
{
    const UserFolders user;
    const BuiltTools built;
    COptionsHelper options(L"A", true);
    ASSERT_TRUE(options.Set(L"K", L"1"));
    auto pEnumerate = built.GetExport<decltype(&EnumerateLyOptions)>("EnumerateLyOptions");
    EXPECT_EQ(1, pEnumerate(
                     nullptr,
                     [](void* pContext, const wchar_t*, const wchar_t* pKey, const wchar_t*)
                     { return static_cast<COptionsHelper*>(pContext)->Set(pKey, L"2"); },
                     &options));
    EXPECT_EQ(2, options.Get(L"K", 0));
}

TEST(LyToolsEnumerate, AFileThatCannotBeReadIsNoEmptyOne)
{
    const UserFolders user;
    std::filesystem::create_directories(user.GetOptionsFile());
    const BuiltTools built;
    ASSERT_NE(nullptr, GetLyTools(true));
    auto pEnumerate = built.GetExport<decltype(&EnumerateLyOptions)>("EnumerateLyOptions");
    testing::internal::CaptureStderr();
    EXPECT_EQ(-1, pEnumerate(
                      nullptr, [](void*, const wchar_t*, const wchar_t*, const wchar_t*) { return true; }, nullptr));
    EXPECT_NE("", testing::internal::GetCapturedStderr());
}

TEST(LyToolsLives, NothingIsLeftAfterAThousand)
{
    constexpr int LIVES = 1000;
    constexpr int FIRST_LIVES = 20; // until the allocator has what it keeps
    constexpr size_t BYTES_ALLOWED = 64 * 1024;
    const UserFolders user;
    {
        const BuiltTools built;
        ASSERT_TRUE(COptionsHelper(STORE, true).Set(L"ReadSpeed", L"8"));
    }
    for (int nLife = 0; nLife < FIRST_LIVES; nLife++)
        ASSERT_TRUE(RunOneLife());
    EXPECT_FALSE(IsMapped("libLyTools"));
    const int nDescriptors = CountDescriptors();
    const size_t nBytes = mallinfo2().uordblks;
    for (int nLife = 0; nLife < LIVES; nLife++)
        ASSERT_TRUE(RunOneLife()) << "life " << nLife;
    EXPECT_EQ(nDescriptors, CountDescriptors());
    EXPECT_LE(mallinfo2().uordblks, nBytes + BYTES_ALLOWED);
}
