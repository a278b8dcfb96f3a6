// Searching without regard to case: by the service of the tools library, and without it.

#include "IStringHelper.h"
#include "StandInTools.h"
#include "StringTestSupport.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
// Answers what it is told to, and remembers what it was asked.
class FakeStringHelper final : public IStringHelper
{
public:
    int FindNoCase(const wchar_t* pText, const wchar_t* pPattern, int nStart) override
    {
        m_strText = pText;
        m_strPattern = pPattern;
        m_nStart = nStart;
        ++m_nCalls;
        return m_nAnswer;
    }
    int Compare(const wchar_t*, const wchar_t*, int) override { return 0; }

    std::wstring m_strText;
    std::wstring m_strPattern;
    int m_nStart = -1;
    int m_nCalls = 0;
    int m_nAnswer = -1;
};

// A tools library that has the string helper and nothing else.
class FakeTools final : public StandInTools
{
public:
    IStringHelper* GetStringHelper(bool bCreate) override
    {
        m_bCreate = bCreate;
        return &m_Helper;
    }

    FakeStringHelper m_Helper;
    bool m_bCreate = false;
};
} // namespace

TEST(LyStringFindNoCase, IgnoresCaseWithoutTheService)
{
    LyString str(L"abcABC");
    EXPECT_EQ(str.FindNoCase(L"BC"), 1);
    EXPECT_EQ(str.FindNoCase(L"bc", 2), 4);
    EXPECT_EQ(str.FindNoCase(L"bc", 5), -1);
    EXPECT_EQ(str.FindNoCase(L"Bc", 0, true), 3);
    EXPECT_EQ(str.FindNoCase(L"Bc", 2, true), 6);
    EXPECT_EQ(str.FindNoCase(L"x", 0, true), -1);
    EXPECT_EQ(str.FindNoCase(L""), 0);
    EXPECT_EQ(str.FindNoCase(L"a", -3), 0);
    EXPECT_EQ(str.FindNoCase(L"a", INT_MAX), -1);
    EXPECT_EQ(str.FindNoCase(nullptr), -1);
}

TEST(LyStringFindNoCase, AsksTheService)
{
    FakeTools tools;
    tools.m_Helper.m_nAnswer = 4;
    EXPECT_EQ(LyString(L"some text").FindNoCase(L"XyZ", 2), 4);
    EXPECT_TRUE(tools.m_bCreate);
    EXPECT_EQ(tools.m_Helper.m_strText, L"some text");
    EXPECT_EQ(tools.m_Helper.m_strPattern, L"XyZ");
    EXPECT_EQ(tools.m_Helper.m_nStart, 2);
    EXPECT_EQ(LyString(L"some text").FindNoCase(L"XyZ", 2, true), 7);
    tools.m_Helper.m_nAnswer = -1;
    EXPECT_EQ(LyString(L"some text").FindNoCase(L"TEXT", 0, true), -1);
}

TEST(LyStringFindNoCase, DoesNotBelieveAPlaceOutsideTheString)
{
    FakeTools tools;
    LyString str(L"abc");
    for (int nAnswer : {INT_MIN, -2, 4, INT_MAX})
    {
        tools.m_Helper.m_nAnswer = nAnswer;
        EXPECT_EQ(str.FindNoCase(L"bc"), -1) << nAnswer;
    }
    tools.m_Helper.m_nAnswer = 2;
    EXPECT_EQ(str.FindNoCase(L"bc", 0, true), 3);
}

TEST(LyStringFindNoCase, OtherSearchesDoWithoutTheService)
{
    FakeTools tools;
    LyString str(L"aBc");
    EXPECT_EQ(str.ReverseFind(L"BC", false), 1);
    EXPECT_EQ(str.GetSubAppearanceCount(L"b", false), 1);
    EXPECT_EQ(str.CompareLeft(L"AB", false, 9), 0);
    EXPECT_STREQ(str.GetSpan(L"A", L"C", false, 0, false, RECURSIVE_SPAN_NONE, false), L"B");
    EXPECT_EQ(tools.m_Helper.m_nCalls, 0);
}
