#include "OptionsHelper.h"
#include "Tools/FakeTools.h"
#include <gtest/gtest.h>

namespace
{
const wchar_t* const STORE = L"Software\\Lyndle\\Tune Hearth\\Plugins\\Input\\CDA";

void UseNoTools() { GetProcessInfo(true)->SetSharedLibraryPath(L"/nowhere/"); }
} // namespace

TEST(OptionsHelper, WithoutToolsDefaultsAreReturned)
{
    UseNoTools();
    COptionsHelper options(STORE, true);
    EXPECT_EQ(nullptr, options.m_pHelper.Get());
    LyString strDefault(L"default");
    LyString strValue = options.Get(L"Key", strDefault, 0, L"", 0);
    EXPECT_EQ(static_cast<const wchar_t*>(strDefault), static_cast<const wchar_t*>(strValue)) << "one buffer for both";
    EXPECT_EQ(42, options.Get(L"ReadSpeed", 42, 0, 0));
    EXPECT_FALSE(options.Set(L"Key", L"value", 0, nullptr, 0));
    EXPECT_FALSE(options.Delete(L"Key"));
}

TEST(OptionsHelper, IsOneOwningPointer)
{
    EXPECT_EQ(sizeof(LyPtr<IOptionsHelper, IOptionsHelper>), sizeof(COptionsHelper));
    UseNoTools();
    EXPECT_EQ(1, COptionsHelper(STORE, true).m_pHelper.GetFlags());
}

TEST(OptionsHelper, LoadsTheToolsAndOwnsItsService)
{
    GetProcessInfo(true)->SetSharedLibraryPath(FakeTools::GetDirectory());
    ASSERT_EQ(nullptr, GetLyTools(false));
    {
        COptionsHelper options(STORE, true);
        ASSERT_NE(nullptr, GetLyTools(false));
        EXPECT_NE(nullptr, options.m_pHelper.Get());
        EXPECT_EQ(0, FakeTools::GetControl()->GetCount(FAKE_COUNT_OPTIONS_DESTROYED));
    }
    EXPECT_EQ(1, FakeTools::GetControl()->GetCount(FAKE_COUNT_OPTIONS_DESTROYED));
    g_LySharedToolsHelper.UnloadLyToolsLib();
}

TEST(OptionsHelper, NameAndFlagReachTheFactory)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    for (bool bCreate : {false, true})
    {
        COptionsHelper options(STORE, bCreate);
        (void)options.Get(L"Key", 0, 0, 0);
        EXPECT_STREQ(STORE, tools->GetLastOptionsCall().pStore);
        EXPECT_EQ(bCreate, tools->GetLastOptionsCall().bCreate);
    }
}

TEST(OptionsHelper, ValuesComeFromTheStore)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetOption(STORE, L"Text", L"\u00e4 value");
    tools->SetOption(STORE, L"ReadSpeed", L"8");
    COptionsHelper options(STORE, true);
    EXPECT_TRUE(options.Get(L"Text", L"default", 0, L"", 0) == L"\u00e4 value");
    EXPECT_TRUE(options.Get(L"Other", L"default", 0, L"", 0) == L"default");
    EXPECT_EQ(8, options.Get(L"ReadSpeed", 0, 0, 0));
    EXPECT_EQ(-1, options.Get(L"Other", -1, 0, 0));
}

TEST(OptionsHelper, SetAndDeleteReachTheStore)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    COptionsHelper options(L"CD Reader", false);
    EXPECT_TRUE(options.Set(L"LastCDROMType-X", L"1,2,3", 0, nullptr, 0));
    EXPECT_STREQ(L"1,2,3", tools->GetOption(L"CD Reader", L"LastCDROMType-X"));
    EXPECT_TRUE(options.Delete(L"LastCDROMType-X"));
    EXPECT_EQ(nullptr, tools->GetOption(L"CD Reader", L"LastCDROMType-X"));
    EXPECT_FALSE(options.Delete(L"LastCDROMType-X"));
}

TEST(OptionsHelper, TrailingArgumentsArePassedOn)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    COptionsHelper options(STORE, true);
    (void)options.Get(L"A", L"default", 1, L"other", 2);
    FAKE_OPTIONS_CALL call = tools->GetLastOptionsCall();
    EXPECT_STREQ(L"A", call.pKey);
    EXPECT_EQ(1, call.nA);
    EXPECT_STREQ(L"other", call.pB);
    EXPECT_EQ(2, call.nC);
    (void)options.Get(L"B", 0, 3, 4);
    call = tools->GetLastOptionsCall();
    EXPECT_EQ(3, call.nA);
    EXPECT_EQ(4, call.nC);
    (void)options.Set(L"C", L"value", 5, nullptr, 6);
    call = tools->GetLastOptionsCall();
    EXPECT_EQ(5, call.nA);
    EXPECT_EQ(nullptr, call.pB);
    EXPECT_EQ(6, call.nC);
}

// Counted from 1; the destructor takes the first two places.
TEST(OptionsHelper, ServiceOperationsStandAtTheirPlaces)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    COptionsHelper options(STORE, true);
    IOptionsHelper* pService = options.m_pHelper;
    void** pTable = *reinterpret_cast<void***>(pService);
    using GET_TEXT = LyXString (*)(void*, const wchar_t*, const wchar_t*, int, const wchar_t*, int);
    using GET_INT = int (*)(void*, const wchar_t*, int, int, int);
    using SET = bool (*)(void*, const wchar_t*, const wchar_t*, int, const wchar_t*, int);
    using DELETE_KEY = bool (*)(void*, const wchar_t*);
    EXPECT_TRUE(reinterpret_cast<SET>(pTable[6 - 1])(pService, L"Key", L"12", 0, nullptr, 0));
    LyXString text = reinterpret_cast<GET_TEXT>(pTable[3 - 1])(pService, L"Key", L"", 0, L"", 0);
    EXPECT_STREQ(L"12", text);
    LyCom::SysFreeString(text.m_pText);
    EXPECT_EQ(12, reinterpret_cast<GET_INT>(pTable[4 - 1])(pService, L"Key", 0, 0, 0));
    EXPECT_TRUE(reinterpret_cast<DELETE_KEY>(pTable[11 - 1])(pService, L"Key"));
    EXPECT_EQ(nullptr, tools->GetOption(STORE, L"Key"));
}
