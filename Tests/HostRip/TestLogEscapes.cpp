#include "LogEscapes.h"
#include <gtest/gtest.h>

TEST(LogEscapes, WhatCanBeSeenStays)
{
    for (const char* p : {"", "Song 1 - \"A/B\" (100 %)", "\xC3\xA4\xE6\xAD\x8C\xF0\x9F\x8E\xB5", "\xE2\x80\x8D"})
    {
        EXPECT_EQ(p, EscapeForLine(p));
        EXPECT_EQ(p, UnescapeLine(p));
    }
}

TEST(LogEscapes, WhatCannotBeSeenIsWritten)
{
    struct ROW
    {
        std::string strText;
        const char* pLine;
    };
    const ROW aryRows[] = {
        {"a\nb", R"(a\x0Ab)"},
        {std::string(1, '\0'), R"(\x00)"},
        {"\x1F\x20\x7F", R"(\x1F \x7F)"},
        {"\xC2\x80\xC2\x9F\xC2\xA0", "\\xC2\\x80\\xC2\\x9F\xC2\xA0"}, // the blank that does not break is one
        {"\xE2\x80\xA8\xE2\x80\xA9", R"(\xE2\x80\xA8\xE2\x80\xA9)"},  // ends of lines and paragraphs
        {"\xE2\x80\xAE\xE2\x81\xA6", R"(\xE2\x80\xAE\xE2\x81\xA6)"},  // directions
        {"\xEF\xBB\xBF", R"(\xEF\xBB\xBF)"},
        {"\\", R"(\\)"},
        {"\\x0A", R"(\\x0A)"},
        {"\xFF\xC3", R"(\xFF\xC3)"},
        {"\xC0\x8A", R"(\xC0\x8A)"},         // a line feed in two bytes is no UTF-8
        {"\xED\xA0\x80", R"(\xED\xA0\x80)"}, // nor is a surrogate
        {"\xF3\xA0\x81\x81", R"(\xF3\xA0\x81\x81)"},
    };
    for (const ROW& row : aryRows)
    {
        EXPECT_EQ(row.pLine, EscapeForLine(row.strText));
        EXPECT_EQ(row.strText, UnescapeLine(row.pLine));
    }
}

TEST(LogEscapes, WhatNobodyWritesIsNotRead)
{
    for (const char* p :
         {"\\", "a\\", "\\n", "\\x", "\\x0", "\\x0a", "\\xGG", "\\x41", "\n", "\xFF", "\\x0\n", "\\\\\\"})
        EXPECT_FALSE(UnescapeLine(p)) << p;
}

TEST(LogEscapes, EveryByteAndEveryPairComesBack)
{
    for (int nFirst = 0; nFirst < 256; ++nFirst)
        for (int nSecond = 0; nSecond < 256; ++nSecond)
        {
            const std::string str = {static_cast<char>(nFirst), static_cast<char>(nSecond)};
            ASSERT_EQ(str, UnescapeLine(EscapeForLine(str))) << nFirst << " " << nSecond;
        }
}
