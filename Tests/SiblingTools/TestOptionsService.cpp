#include "OptionsService.h"
#include "UserFolders.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
// Calls an operation by its place in the virtual table, counted from 1.
template <class RESULT, class... ARGUMENTS>
RESULT CallSlot(void* pObject, int nSlot, ARGUMENTS... arguments)
{
    void** pTable = *static_cast<void***>(pObject);
    return reinterpret_cast<RESULT (*)(void*, ARGUMENTS...)>(pTable[nSlot - 1])(pObject, arguments...);
}

std::wstring Take(LyXString text)
{
    std::wstring str(text.Get() != nullptr ? text.Get() : L"(null)");
    LyCom::SysFreeString(text.m_pText);
    return str;
}

const UserFolders& GetUser()
{
    static const UserFolders s_User;
    return s_User;
}

struct OptionsServiceTest : testing::Test
{
    OptionsServiceTest() { std::filesystem::remove_all(GetUser().GetConfig()); }

    std::shared_ptr<OptionStore> m_pStore = std::make_shared<OptionStore>();
    OptionsService m_Options{m_pStore, L"CD Reader"};
};
} // namespace

TEST_F(OptionsServiceTest, TextsAreSystemStringsOfTheCaller)
{
    EXPECT_EQ(L"default", Take(m_Options.Get(L"K", L"default", 0, nullptr, 0)));
    EXPECT_EQ(L"", Take(m_Options.Get(L"K", static_cast<const wchar_t*>(nullptr), 0, nullptr, 0)));
    EXPECT_TRUE(m_Options.Set(L"K", L"value", 0, nullptr, 0));
    EXPECT_EQ(L"value", Take(m_Options.Get(L"K", L"default", 0, nullptr, 0)));
    EXPECT_TRUE(m_Options.Set(L"K", L"", 0, nullptr, 0));
    EXPECT_EQ(L"", Take(m_Options.Get(L"K", L"default", 0, nullptr, 0))) << "an empty value is a value";
    EXPECT_EQ(L"default", Take(m_Options.Get(nullptr, L"default", 0, nullptr, 0)));
}

TEST_F(OptionsServiceTest, TheTrailingArgumentsSayNothing)
{
    EXPECT_TRUE(m_Options.Set(L"K", L"5", 1, L"other", 2));
    EXPECT_EQ(L"5", Take(m_Options.Get(L"K", L"default", 3, L"another", 4)));
    EXPECT_EQ(5, m_Options.Get(L"K", 0, 5, 6));
}

TEST_F(OptionsServiceTest, NumbersAreDecimalTexts)
{
    const struct
    {
        const wchar_t* pText;
        int nNumber; // 77 is the default
    } aryCases[] = {
        {L"0", 0},
        {L"8", 8},
        {L"-8", -8},
        {L"+8", 8},
        {L"007", 7},
        {L" 8 ", 8},
        {L"\t8\r\n", 8},
        {L"2147483647", INT_MAX},
        {L"-2147483648", INT_MIN},
        {L"2147483648", 77},
        {L"-2147483649", 77},
        {L"99999999999999999999999999", 77},
        {L"", 77},
        {L" ", 77},
        {L"-", 77},
        {L"+-8", 77},
        {L"- 8", 77},
        {L"8x", 77},
        {L"x8", 77},
        {L"8 8", 77},
        {L"8.0", 77},
        {L"0x10", 77},
        {L"true", 77},
        {L"\u0668", 77}, // a digit of another script
    };
    for (const auto& row : aryCases)
    {
        ASSERT_TRUE(m_Options.Set(L"K", row.pText, 0, nullptr, 0));
        EXPECT_EQ(row.nNumber, m_Options.Get(L"K", 77, 0, 0)) << testing::PrintToString(std::wstring(row.pText));
    }
    EXPECT_EQ(77, m_Options.Get(L"Absent", 77, 0, 0));
    EXPECT_EQ(77, m_Options.Get(nullptr, 77, 0, 0));
}

TEST_F(OptionsServiceTest, DeleteSaysWhetherThereWasOne)
{
    EXPECT_FALSE(m_Options.Delete(L"K"));
    EXPECT_TRUE(m_Options.Set(L"K", L"1", 0, nullptr, 0));
    EXPECT_TRUE(m_Options.Delete(L"K"));
    EXPECT_FALSE(m_Options.Delete(L"K"));
    EXPECT_FALSE(m_Options.Delete(nullptr));
    EXPECT_EQ(77, m_Options.Get(L"K", 77, 0, 0));
}

TEST_F(OptionsServiceTest, StoresOfOtherNamesAreOthers)
{
    OptionsService same(m_pStore, L"cd reader");
    OptionsService other(m_pStore, L"Properties");
    OptionsService unnamed(m_pStore, nullptr);
    EXPECT_TRUE(m_Options.Set(L"K", L"1", 0, nullptr, 0));
    EXPECT_TRUE(unnamed.Set(L"K", L"3", 0, nullptr, 0));
    EXPECT_EQ(1, same.Get(L"K", 77, 0, 0));
    EXPECT_EQ(77, other.Get(L"K", 77, 0, 0));
    EXPECT_EQ(3, OptionsService(m_pStore, L"").Get(L"K", 77, 0, 0));
}

TEST_F(OptionsServiceTest, OperationsStandAtTheirPlaces)
{
    void* pOptions = &m_Options;
    const wchar_t* pNull = nullptr;
    EXPECT_TRUE(CallSlot<bool>(pOptions, 6, L"K", L"12", 0, pNull, 0));
    EXPECT_EQ(L"12", Take({CallSlot<wchar_t*>(pOptions, 3, L"K", L"default", 0, pNull, 0)}));
    EXPECT_EQ(12, CallSlot<int>(pOptions, 4, L"K", 77, 0, 0));
    EXPECT_TRUE(CallSlot<bool>(pOptions, 11, L"K"));
    EXPECT_FALSE(CallSlot<bool>(pOptions, 11, L"K"));
    EXPECT_EQ(77, CallSlot<int>(pOptions, 4, L"K", 77, 0, 0));
}
