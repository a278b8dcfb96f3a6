// Serialised fields: "(" count ":" characters ")".

#include "StringTestSupport.h"
#include <climits>
#include <gtest/gtest.h>
#include <string>

// ---- Saving

TEST(LyStringSaveString, AppendsCountAndText)
{
    LyString str;
    str.SaveString(L"ab");
    str.SaveInt(-12);
    EXPECT_STREQ(str, L"(2:ab)(3:-12)");
    str = L"head";
    str.SaveString(L"");
    str.SaveString(nullptr);
    str.SaveString(L"(1:x)");
    EXPECT_STREQ(str, L"head(0:)(0:)(5:(1:x))");
}

TEST(LyStringSaveInt, IsTheDecimalText)
{
    LyString str;
    str.SaveInt(INT_MIN);
    str.SaveInt(0);
    str.SaveInt(INT_MAX);
    EXPECT_STREQ(str, L"(11:-2147483648)(1:0)(10:2147483647)");
}

TEST(LyStringSaveString, ASavedStringMayBeTheTarget)
{
    LyString str(L"abc");
    str.SaveString(str);
    EXPECT_STREQ(str, L"abc(3:abc)");
    str.SaveString(TextOf(str) + 8);
    EXPECT_STREQ(str, L"abc(3:abc)(2:c))");
}

TEST(LyStringSaveString, GrowsByWholeStepsOf1024)
{
    LyString str;
    str.SaveString(L"x");
    EXPECT_EQ(BlockOf(str)->nAllocated, 1024 + 1);
    const wchar_t* pText = str;
    while (str.GetLength() + 5 < 1024)
    {
        str.SaveString(L"x");
        ASSERT_EQ(TextOf(str), pText) << str.GetLength(); // no reallocation on the way
    }
    str.SaveString(L"x");
    EXPECT_EQ(BlockOf(str)->nAllocated, 2 * 1024 + 1);
}

TEST(LyStringSaveString, ACopyKeepsItsText)
{
    LyString str(L"head");
    LyString strCopy(str);
    str.SaveString(L"x");
    EXPECT_STREQ(strCopy, L"head");
    EXPECT_STREQ(str, L"head(1:x)");
}

// ---- Loading

struct LOAD_CASE
{
    const wchar_t* pText;
    int nPosition;
    bool bLoaded;
    const wchar_t* pResult;
    int nNewPosition;
};

const LOAD_CASE s_aryLoadCases[] = {
    {L"(2:ab)(3:-12)", 0, true, L"ab", 6},
    {L"(2:ab)(3:-12)", 6, true, L"-12", 13},
    {L"(0:)", 0, true, L"", 4},
    {L"(5:(1:x))", 0, true, L"(1:x)", 9},
    {L"(002:ab)", 0, true, L"ab", 8},
    {L"(1:)))", 0, true, L")", 5},
    {L"xx(1:a)", 2, true, L"a", 7},
    {L"(2:ab)", -1, false, L"default", -1},
    {L"(2:ab)", INT_MIN, false, L"default", INT_MIN},
    {L"(2:ab)", 6, false, L"default", 6},
    {L"(2:ab)", INT_MAX, false, L"default", INT_MAX},
    {L"(2:ab)", 1, false, L"default", 1},
    {L"", 0, false, L"default", 0},
    {L"(", 0, false, L"default", 1},
    {L"(:ab)", 0, false, L"default", 2}, // behind the colon
    {L"(x:ab)", 0, false, L"default", 1},
    {L"(2x:ab)", 0, false, L"default", 2},
    {L"(-1:ab)", 0, false, L"default", 1},
    {L"(+2:ab)", 0, false, L"default", 1},
    {L"(2", 0, false, L"default", 2},
    {L"(2:", 0, false, L"default", 3},
    {L"(0:", 0, false, L"default", 3},
    {L"(3:ab)", 0, false, L"default", 3}, // the bracket is no part of the text
    {L"(1:ab)", 0, false, L"default", 3},
    {L"(2:ab", 0, false, L"default", 3},
    {L"(9:ab)", 0, false, L"default", 3},
    {L"(2147483647:ab)", 0, false, L"default", 12},
    {L"(2147483648:ab)", 0, false, L"default", 12},
    {L"(4294967298:ab)", 0, false, L"default", 12},           // would be 2 in 32 bits
    {L"(18446744073709551618:ab)", 0, false, L"default", 22}, // would be 2 in 64 bits
    {L"(99999999999999999999999999999999999999:ab)", 0, false, L"default", 40},
};

TEST(LyStringLoadStringFast, ReadsFieldsAndRefusesDefects)
{
    for (const LOAD_CASE& row : s_aryLoadCases)
    {
        LyString str(row.pText);
        LyString strOut(L"old");
        int nPosition = row.nPosition;
        EXPECT_EQ(str.LoadStringFast(nPosition, strOut, L"default"), row.bLoaded) << row.pText;
        EXPECT_STREQ(strOut, row.pResult) << row.pText;
        EXPECT_EQ(nPosition, row.nNewPosition) << row.pText;
    }
}

TEST(LyStringLoadStringFast, TheTargetMustBeAnotherString)
{
    LyString str(L"(2:ab)");
    int nPosition = 0;
    EXPECT_FALSE(str.LoadStringFast(nPosition, str, L"default"));
    EXPECT_STREQ(str, L"default");
    EXPECT_EQ(nPosition, 0);
    EXPECT_FALSE(str.LoadStringFast(nPosition, str, nullptr));
    EXPECT_STREQ(str, L"");
}

TEST(LyStringLoadStringFast, ANullDefaultIsEmpty)
{
    LyString strOut(L"old");
    int nPosition = 0;
    EXPECT_FALSE(LyString(L"x").LoadStringFast(nPosition, strOut, nullptr));
    EXPECT_STREQ(strOut, L"");
}

TEST(LyStringLoadStringFast, TheTargetMayShareTheBlock)
{
    LyString str(L"(2:ab)");
    LyString strOut(str);
    int nPosition = 0;
    EXPECT_TRUE(str.LoadStringFast(nPosition, strOut, L""));
    EXPECT_STREQ(strOut, L"ab");
    EXPECT_STREQ(str, L"(2:ab)");
}

TEST(LyStringLoadIntFast, ReadsOrGivesTheDefault)
{
    LyString str(L"(3:-12)(0:)(1:x)(11:99999999999)(1");
    int nPosition = 0;
    EXPECT_EQ(str.LoadIntFast(nPosition, 7), -12);
    EXPECT_EQ(str.LoadIntFast(nPosition, 7), 7); // empty
    EXPECT_EQ(str.LoadIntFast(nPosition, 7), 0); // no number
    EXPECT_EQ(str.LoadIntFast(nPosition, 7), INT_MAX);
    EXPECT_EQ(nPosition, 32);
    EXPECT_EQ(str.LoadIntFast(nPosition, 7), 7);
    EXPECT_EQ(nPosition, 34);
    EXPECT_EQ(str.LoadIntFast(nPosition, -7), -7);
}

TEST(LyStringFields, EveryTextComesBack)
{
    std::wstring strLong(5000, L')');
    const std::wstring texts[] = {L"", L"a", L"(", L")", L"(3:abc)", L":", L"1:", L"\x1F600", strLong};
    LyString str;
    for (const std::wstring& strText : texts)
        str.SaveString(strText.c_str());
    int nPosition = 0;
    for (const std::wstring& strText : texts)
    {
        LyString strOut(L"old");
        EXPECT_TRUE(str.LoadStringFast(nPosition, strOut, L"default"));
        EXPECT_EQ(Contents(strOut), strText);
    }
    EXPECT_EQ(nPosition, str.GetLength());
}
