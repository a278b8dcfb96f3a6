#include "OneLineText.h"
#include <gtest/gtest.h>

namespace
{
struct TEXT_CASE
{
    const wchar_t* pText;
    const char* pLine;
};

const TEXT_CASE s_aryTextCases[] = {
    {nullptr, ""},
    {L"", ""},
    {L"plain ~", "plain ~"},
    {L"a\nb", "a\\nb"},
    {L"a\r\n\tb", "a\\r\\n\\tb"},
    {L"\x1b[2J", "\\x1b[2J"},
    {L"\x7f\x85", "\\x7f\\x85"},
    {L"\x2028\x202e", "\\u2028\\u202e"},
    {L"back\\slash", "back\\slash"},
    {L"\u00e9", "\xc3\xa9"},
    {L"\u20ac", "\xe2\x82\xac"},
    {L"\U0001F600", "\xf0\x9f\x98\x80"},
};
} // namespace

TEST(OneLineText, IsUTF8WithoutControlCharacters)
{
    for (const TEXT_CASE& each : s_aryTextCases)
    {
        std::string strLine = ">";
        AppendOneLine(strLine, each.pText);
        EXPECT_EQ(strLine, std::string(">") + each.pLine);
    }
}

TEST(OneLineText, WhatIsNoCharacterIsReplaced)
{
    const wchar_t aryText[] = {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0xDFFF), 0x110000, -1};
    std::string strLine;
    AppendOneLine(strLine, aryText, 4);
    EXPECT_EQ(strLine, "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
}

TEST(OneLineText, AZeroInsideIsWrittenOut)
{
    std::string strLine;
    AppendOneLine(strLine, L"a\0b", 3);
    EXPECT_EQ(strLine, "a\\x00b");
}

TEST(OneLineText, ColumnsFollowTheWidthOfCharacters)
{
    EXPECT_EQ(GetColumns(L'a'), 1);
    EXPECT_EQ(GetColumns(L'\u00e9'), 1);
    EXPECT_EQ(GetColumns(L'\u65e5'), 2);
    EXPECT_EQ(GetColumns(L'\uff21'), 2);
    EXPECT_EQ(GetColumns(L'\U0001F600'), 2);
    EXPECT_EQ(GetColumns(L'\u0301'), 0);
}
