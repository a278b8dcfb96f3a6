#include "OptionText.h"
#include <gtest/gtest.h>

TEST(OptionText, IsUTF8)
{
    EXPECT_EQ("", EncodeOptionText(L""));
    EXPECT_EQ("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB5", EncodeOptionText(L"a\u00e4\u20ac\U0001F3B5"));
    EXPECT_EQ(L"a\u00e4\u20ac\U0001F3B5", DecodeOptionText("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB5"));
}

TEST(OptionText, SurrogatesKeepTheirThreeBytes)
{
    const std::wstring strSurrogates = {L'\xD800', L'\xDBFF', L'\xDC00', L'\xDC80', L'\xDFFF'};
    EXPECT_EQ("\xED\xA0\x80\xED\xAF\xBF\xED\xB0\x80\xED\xB2\x80\xED\xBF\xBF", EncodeOptionText(strSurrogates));
}

TEST(OptionText, EveryCharacterComesBack)
{
    std::wstring strAll;
    for (wchar_t c = 1; c <= 0x10FFFF; c++)
        strAll += c;
    EXPECT_TRUE(DecodeOptionText(EncodeOptionText(strAll)) == strAll);
}

TEST(OptionText, WhatIsNoCharacterBecomesTheReplacement)
{
    EXPECT_EQ("\xEF\xBF\xBD", EncodeOptionText(std::wstring(1, static_cast<wchar_t>(0x110000))));
    EXPECT_EQ("\xEF\xBF\xBD", EncodeOptionText(std::wstring(1, static_cast<wchar_t>(-1))));
}

TEST(OptionText, ForeignBytesAreMarked)
{
    const struct
    {
        const char* pBytes;
        std::wstring strText;
    } aryCases[] = {
        {"\xFF", {L'\xDCFF'}},
        {"\xC3", {L'\xDCC3'}},                       // cut
        {"\xED\xA0", {L'\xDCED', L'\xDCA0'}},        // a surrogate that is cut
        {"\xED\xA0z", {L'\xDCED', L'\xDCA0', L'z'}}, //
        {"\xED\x9F\xBF", {L'\xD7FF'}},               // the character before them
        {"\xC0\x80", {L'\xDCC0', L'\xDC80'}},        // too long
    };
    for (const auto& row : aryCases)
        EXPECT_EQ(row.strText, DecodeOptionText(row.pBytes));
}
