#include "UTF8.h"
#include <gtest/gtest.h>

namespace
{
struct UTF8_CASE
{
    const char* pName;
    std::string_view strBytes;
    std::wstring_view strWide;
};

const UTF8_CASE s_aryCases[] = {
    {"Empty", "", L""},
    {"ASCII", "a,b c", L"a,b c"},
    {"FirstOfTwoBytes", "\xC2\x80", L"\x80"},
    {"LastOfTwoBytes", "\xDF\xBF", L"\x7FF"},
    {"FirstOfThreeBytes", "\xE0\xA0\x80", L"\x800"},
    {"LastBelowTheSurrogates", "\xED\x9F\xBF", L"\xD7FF"},
    {"LastOfThreeBytes", "\xEF\xBF\xBF", L"\xFFFF"},
    {"FirstOfFourBytes", "\xF0\x90\x80\x80", L"\x10000"},
    {"Tune", "\xF0\x9F\x8E\xB5", L"\x1F3B5"},
    {"LastOfAll", "\xF4\x8F\xBF\xBF", L"\x10FFFF"},
    {"BehindTheLast", "\xF4\x90\x80\x80", L"\xDCF4\xDC90\xDC80\xDC80"},
    {"LoneFollower", "a\x80z", L"a\xDC80z"},
    {"OverlongSlash", "\xC0\xAF", L"\xDCC0\xDCAF"},
    {"OverlongOfThree", "\xE0\x9F\xBF", L"\xDCE0\xDC9F\xDCBF"},
    {"Surrogate", "\xED\xA0\x80", L"\xDCED\xDCA0\xDC80"},
    {"Latin1", "caf\xE9!", L"caf\xDCE9!"},
    {"CutInTheMiddle", "x\xF0\x9F\x8E", L"x\xDCF0\xDC9F\xDC8E"},
    {"BrokenOff", "\xE2\x82-", L"\xDCE2\xDC82-"},
    {"NeverAFirst", "\xFE\xFF", L"\xDCFE\xDCFF"},
};
} // namespace

TEST(UTF8, EveryTextGoesInAndComesOutTheSame)
{
    for (const UTF8_CASE& row : s_aryCases)
    {
        EXPECT_EQ(row.strWide, WidenUTF8(row.strBytes)) << row.pName;
        EXPECT_EQ(row.strBytes, NarrowUTF8(row.strWide)) << row.pName;
    }
}

TEST(UTF8, WhatIsNoCharacterComesOutAsTheReplacement)
{
    const wchar_t aryNone[] = {0xD800, 0xDC7F, 0xDD00, 0xDFFF, 0x110000, static_cast<wchar_t>(-1), 0};
    std::string strWanted;
    for (int i = 0; i < 6; ++i)
        strWanted += "\xEF\xBF\xBD";
    EXPECT_EQ(strWanted, NarrowUTF8(aryNone));
}

TEST(UTF8, EveryPairOfBytesComesBack)
{
    for (int i = 0; i < 65536; ++i)
    {
        const char aryBytes[] = {static_cast<char>(i >> 8), static_cast<char>(i)};
        const std::string_view str(aryBytes, 2);
        ASSERT_EQ(str, NarrowUTF8(WidenUTF8(str))) << i;
    }
}
