#include "TextDecode.h"
#include <gtest/gtest.h>

namespace
{
struct UTF8_CASE
{
    const char* m_pName;
    std::string m_strBytes;
    bool m_bValid;
};

const UTF8_CASE s_aryUTF8Cases[] = {
    {"Empty", "", true},
    {"ASCII", "Aria", true},
    {"TwoBytes", "\xC3\xA4", true},
    {"ThreeBytes", "\xE2\x82\xAC", true},
    {"FourBytes", "\xF0\x9D\x84\x9E", true},
    {"LastCharacter", "\xF4\x8F\xBF\xBF", true},
    {"BeyondTheLastCharacter", "\xF4\x90\x80\x80", false},
    {"OverlongTwoBytes", "\xC1\xBF", false},
    {"OverlongThreeBytes", "\xE0\x9F\xBF", false},
    {"OverlongFourBytes", "\xF0\x8F\xBF\xBF", false},
    {"Surrogate", "\xED\xA0\x80", false},
    {"LoneTrailingByte", "\x80", false},
    {"CutSequence", "a\xE2\x82", false},
    {"WrongTrailingByte", "\xC3(", false},
    {"ImpossibleLead", "\xFF", false},
};

TEST(IsValidUTF8, AcceptsExactlyTheWellFormed)
{
    for (const UTF8_CASE& row : s_aryUTF8Cases)
        EXPECT_EQ(row.m_bValid, IsValidUTF8(row.m_strBytes)) << row.m_pName;
}

TEST(DecodeText, KeepsUTF8) { EXPECT_EQ("Dvo\xC5\x99\xC3\xA1k", DecodeText("Dvo\xC5\x99\xC3\xA1k")); }

TEST(DecodeText, TakesAnythingElseAsLatin1) { EXPECT_EQ("F\xC3\xBCr Elise", DecodeText("F\xFCr Elise")); }

TEST(DecodeText, ReadsQuotationMarksThatLatin1DoesNotHave)
{
    EXPECT_EQ("\xE2\x80\x9CHi\xE2\x80\x9D", DecodeText("\x93Hi\x94"));
    EXPECT_EQ("\xC2\x81", DecodeText("\x81")); // free in the code page: itself
}

TEST(DecodeText, TakesByteOrderMarksOff)
{
    using namespace std::string_literals;
    EXPECT_EQ("REM", DecodeText("\xEF\xBB\xBFREM"));
    EXPECT_EQ("\xC3\xA9", DecodeText("\xFF\xFE\xE9\x00"s));
    EXPECT_EQ("\xC3\xA9", DecodeText("\xFE\xFF\x00\xE9"s));
    EXPECT_EQ("\xF0\x9D\x84\x9E", DecodeText("\xFF\xFE\x34\xD8\x1E\xDD"s)); // a surrogate pair
    EXPECT_EQ("\xEF\xBF\xBD!", DecodeText("\xFF\xFE\x34\xD8!\0"s));         // half a pair
    EXPECT_EQ("a", DecodeText("\xFF\xFE\x61\0z"s));                         // half a character at the end
}

TEST(DecodeText, MarkedUTF8ThatIsNoneBecomesLatin1) { EXPECT_EQ("\xC3\xBC", DecodeText("\xEF\xBB\xBF\xFC")); }

TEST(DecodeText, AlwaysGivesWellFormedText)
{
    std::string strAll;
    for (int n = 0; n < 256; n++)
        strAll += static_cast<char>(n);
    EXPECT_TRUE(IsValidUTF8(DecodeText(strAll)));
    EXPECT_TRUE(IsValidUTF8(DecodeText("\xFF\xFE" + strAll)));
    EXPECT_TRUE(IsValidUTF8(DecodeText("\xFE\xFF" + strAll)));
}

TEST(FoldCase, MakesCapitalsSmall)
{
    EXPECT_EQ("track 01.wav", FoldCase("TRACK 01.WAV"));
    EXPECT_EQ("\xC3\xA4\xC3\xB6\xC3\xBE\xC3\x97\xC3\x9F", FoldCase("\xC3\x84\xC3\x96\xC3\x9E\xC3\x97\xC3\x9F"));
    EXPECT_EQ("\xC5\x99\xC5\xBE\xC5\x82\xC3\xBF",
              FoldCase("\xC5\x98\xC5\xBD\xC5\x81\xC5\xB8"));     // R and Z caron, L stroke, Y
    EXPECT_EQ("\xCE\xB1\xCF\x89", FoldCase("\xCE\x91\xCE\xA9")); // alpha, omega
    EXPECT_EQ("\xD1\x8F\xD1\x91", FoldCase("\xD0\xAF\xD0\x81")); // ya, yo
}

TEST(FoldCase, KeepsMalformedBytes) { EXPECT_EQ("a\xFF\xC3", FoldCase("A\xFF\xC3")); }

TEST(EqualNoCase, ComparesASCIIOnly)
{
    EXPECT_TRUE(EqualNoCase("Track", "tRACK"));
    EXPECT_FALSE(EqualNoCase("Track", "Tracks"));
    EXPECT_FALSE(EqualNoCase("\xC3\x84", "\xC3\xA4"));
}
} // namespace
