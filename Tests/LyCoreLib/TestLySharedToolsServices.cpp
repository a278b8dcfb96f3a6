// The services of the tools library, reached through the functions that LySharedToolsHelper.h declares.

#include "OptionsHelper.h"
#include "Tools/FakeEvents.h"
#include "Tools/FakeTools.h"
#include "ZLibHelper.h"
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
void UseFakeTools() { GetProcessInfo(true)->SetSharedLibraryPath(FakeTools::GetDirectory()); }

class Events : public IFakeEvents
{
public:
    void Record(const char* pEvent) override { m_aryEvents.push_back(pEvent); }
    std::vector<std::string> m_aryEvents;
};
using EVENTS = std::vector<std::string>;

// Calls an operation by its place in the virtual table, counted from 1.
template <class RESULT, class... ARGUMENTS>
RESULT CallSlot(void* pObject, int nSlot, ARGUMENTS... arguments)
{
    void** pTable = *static_cast<void***>(pObject);
    return reinterpret_cast<RESULT (*)(void*, ARGUMENTS...)>(pTable[nSlot - 1])(pObject, arguments...);
}
} // namespace

TEST(LyToolsSlots, ServicesStandAtTheirPlaces)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    void* pTools = GetLyTools(false);
    EXPECT_NE(nullptr, GetStringHelper(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 6, true), GetStringHelper(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 10, true), GetProductInfo(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 11, true), GetLogManager(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 12, true), GetLyMessageBoxHelper(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 16, true), GetMainThreadMessageManager(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 17, true), GetDateTimeHelper(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 19, true), GetFileSystemManager(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 21, true), GetSystemPowerManager(true));
    EXPECT_EQ(CallSlot<void*>(pTools, 8, true), static_cast<void*>(GetLyTools(false)->GetTranslator(true)));
}

TEST(LyToolsSlots, OperationsStandAtTheirPlaces)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    void* pTools = GetLyTools(false);
    int nValue = 0;
    CallSlot<void>(pTools, 4, static_cast<void*>(&nValue));
    EXPECT_EQ(&nValue, tools->GetNotifiedApplication());
    CallSlot<void>(pTools, 31);
    UpdateOptionsHelperTokenReplacer();
    EXPECT_EQ(2, tools->GetCount(FAKE_COUNT_TOKEN_REPLACER));
    delete CallSlot<IOptionsHelper*>(pTools, 23, static_cast<const wchar_t*>(L"Store"), true);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_OPTIONS_CREATED));
    delete CallSlot<IZLib*>(pTools, 27);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_ZLIB_CREATED));
    Events events;
    IFakeEvents* pEvents = &events;
    CallSlot<void>(pTools, 1, reinterpret_cast<long long>(pEvents), static_cast<HINSTANCE__*>(nullptr));
    CallSlot<void>(pTools, 2, reinterpret_cast<long long>(pEvents), static_cast<HINSTANCE__*>(nullptr));
    EXPECT_EQ((EVENTS{"tools attach", "tools detach"}), events.m_aryEvents);
    CallSlot<void>(pTools, 1, 0LL, static_cast<HINSTANCE__*>(nullptr));
}

TEST(LyToolsServices, FlagAsksTheServiceToComeUp)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    for (int nService = 0; nService < FAKE_SERVICE_COUNT; nService++)
        tools->SetServiceOnDemand(static_cast<FAKE_TOOLS_SERVICE>(nService));
    EXPECT_EQ(nullptr, GetStringHelper(false));
    EXPECT_NE(nullptr, GetStringHelper(true));
    EXPECT_NE(nullptr, GetStringHelper(false));
    EXPECT_EQ(nullptr, GetProductInfo(false));
    EXPECT_NE(nullptr, GetProductInfo(true));
    EXPECT_EQ(nullptr, GetLogManager(false));
    EXPECT_NE(nullptr, GetLogManager(true));
    EXPECT_EQ(nullptr, GetLyMessageBoxHelper(false));
    EXPECT_NE(nullptr, GetLyMessageBoxHelper(true));
    EXPECT_EQ(nullptr, GetMainThreadMessageManager(false));
    EXPECT_NE(nullptr, GetMainThreadMessageManager(true));
    EXPECT_EQ(nullptr, GetDateTimeHelper(false));
    EXPECT_NE(nullptr, GetDateTimeHelper(true));
    EXPECT_EQ(nullptr, GetFileSystemManager(false));
    EXPECT_NE(nullptr, GetFileSystemManager(true));
    EXPECT_EQ(nullptr, GetSystemPowerManager(false));
    EXPECT_NE(nullptr, GetSystemPowerManager(true));
}

TEST(LyToolsServices, FactoriesLoadTheTools)
{
    UseFakeTools();
    ASSERT_EQ(nullptr, GetLyTools(false));
    IZLib* pZLib = CreateZLib();
    EXPECT_NE(nullptr, pZLib);
    EXPECT_NE(nullptr, GetLyTools(false));
    delete pZLib;
    g_LySharedToolsHelper.UnloadLyToolsLib();
    IOptionsHelper* pOptions = CreateOptionsHelperName(L"Properties", false);
    EXPECT_NE(nullptr, pOptions);
    delete pOptions;
    g_LySharedToolsHelper.UnloadLyToolsLib();
}

TEST(LyToolsServices, ProductIsLoadedOnceUnlessAlways)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    EXPECT_TRUE(LoadProductInfo(L"", true, false, false, nullptr, 0));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_PRODUCT_LOAD));
    FAKE_PRODUCT_CALL call = tools->GetLastProductLoad();
    EXPECT_STREQ(L"", call.pName);
    EXPECT_TRUE(call.bFirst);
    EXPECT_FALSE(call.bSecond);
    EXPECT_EQ(nullptr, call.pText);
    EXPECT_TRUE(LoadProductInfo(L"Other", false, true, false, L"text", 7));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_PRODUCT_LOAD)) << "there is one already";
    EXPECT_TRUE(LoadProductInfo(L"Other", false, true, true, L"text", 7));
    EXPECT_EQ(2, tools->GetCount(FAKE_COUNT_PRODUCT_LOAD));
    call = tools->GetLastProductLoad();
    EXPECT_STREQ(L"Other", call.pName);
    EXPECT_FALSE(call.bFirst);
    EXPECT_TRUE(call.bSecond);
    EXPECT_STREQ(L"text", call.pText);
    EXPECT_EQ(7, call.nNumber);
}

TEST(LyToolsServices, ProductLoadBringsUpToolsAndService)
{
    UseFakeTools();
    ASSERT_EQ(nullptr, GetLyTools(false));
    EXPECT_TRUE(LoadProductInfo(L"", true, false, false, nullptr, 0));
    ASSERT_NE(nullptr, GetLyTools(false));
    EXPECT_EQ(1, FakeTools::GetControl()->GetCount(FAKE_COUNT_PRODUCT_LOAD));
    g_LySharedToolsHelper.UnloadLyToolsLib();
}

TEST(SystemCommand, IsTrueForExitStatusZero)
{
    EXPECT_TRUE(SystemCommand(L"true"));
    EXPECT_FALSE(SystemCommand(L"false"));
    EXPECT_FALSE(SystemCommand(L"exit 3"));
    EXPECT_TRUE(SystemCommand(L"test '\u00e4' = \"$(printf '\\303\\244')\"")) << "it goes out as UTF-8";
}
