// What may stand on the two sides of the operators of strings.

#include "LyString.h"
#include "LyStringFormat.h"
#include "StringTestSupport.h"
#include <gtest/gtest.h>

namespace
{
// A system string that the test frees.
class SystemText
{
public:
    explicit SystemText(const wchar_t* p) { m_Text.Set(p); }
    ~SystemText() { LyCom::SysFreeString(m_Text.m_pText); }
    SystemText(const SystemText&) = delete;
    SystemText& operator=(const SystemText&) = delete;
    const LyXString& Get() const { return m_Text; }

private:
    LyXString m_Text;
};
} // namespace

TEST(LyStringOperands, TextIsComparedOnEitherSide)
{
    LyString str(L"text");
    wchar_t aryText[] = L"text"; // at another address
    const wchar_t* pOther = L"other";
    EXPECT_TRUE(str == aryText);
    EXPECT_TRUE(aryText == str);
    EXPECT_FALSE(str != aryText);
    EXPECT_FALSE(aryText != str);
    EXPECT_TRUE(str != pOther);
    EXPECT_TRUE(pOther != str);
    EXPECT_FALSE(str == pOther);
    EXPECT_FALSE(pOther == str);
    EXPECT_TRUE(LyString(L"te") + L"xt" == aryText);
}

TEST(LyStringOperands, FormattedStringsAreStrings)
{
    LyFormatString strOne(L"%d", 1);
    EXPECT_TRUE(strOne == L"1");
    EXPECT_TRUE(L"1" == strOne);
    EXPECT_TRUE(LyString(L"1") == strOne);
    EXPECT_TRUE(strOne != LyFormatString(L"%d", 2));
    EXPECT_EQ(Contents(strOne + L"/" + LyFormatString(L"%d", 2)), L"1/2");
}

TEST(LyStringOperands, SystemStringsAreComparedAsText)
{
    SystemText system(L"text");
    const LyXString& text = system.Get();
    LyString str(L"text");
    EXPECT_TRUE(str == text);
    EXPECT_TRUE(text == str);
    EXPECT_FALSE(str != text);
    EXPECT_FALSE(text != str);
    EXPECT_TRUE(text != LyString(L"Text"));
    EXPECT_TRUE(LyString() == LyXString{});
    EXPECT_FALSE(str == LyXString{});
}

TEST(LyStringOperands, SystemStringsAreJoinedAsText)
{
    SystemText system(L"b");
    const LyXString& text = system.Get();
    LyString str(L"a");
    EXPECT_EQ(Contents(str + text), L"ab");
    EXPECT_EQ(Contents(text + str), L"ba");
    EXPECT_EQ(Contents(L"a" + text), L"ab");
    EXPECT_EQ(Contents(text + L"a"), L"ba");
    EXPECT_EQ(Contents(LyString(L"a") + L"-" + text + L"-" + text), L"a-b-b");
    str += text;
    str.Append(text);
    EXPECT_EQ(Contents(str), L"abb");
    str += LyXString{};
    EXPECT_EQ(Contents(str + LyXString{}), L"abb");
    EXPECT_EQ(Contents(LyXString{} + str), L"abb");
    EXPECT_EQ(Contents(text), L"b");
}

TEST(LyStringOperands, SystemStringsAndPointersToStringsAreFormatted)
{
    SystemText system(L"b");
    LyString str(L"a");
    const LyString* pNone = nullptr;
    EXPECT_EQ(Contents(LyFormatString(L"%s%s%s%s", str, &str, system.Get(), LyXString{})), L"aab(null)");
    EXPECT_EQ(Contents(LyFormatString(L"[%s]", pNone)), L"[]");
    EXPECT_EQ(LyString::CFormatArgument(&str).m_nType, LyString::CFormatArgument::STRING);
    EXPECT_EQ(LyString::CFormatArgument(system.Get()).m_nType, LyString::CFormatArgument::WIDE_TEXT);
    EXPECT_EQ(LyString::CFormatArgument(static_cast<void*>(&str)).m_nType, LyString::CFormatArgument::INTEGER);
}
