// Parts, searching and comparing.

#include "StringTestSupport.h"
#include <climits>
#include <gtest/gtest.h>

// ---- Parts

struct PART_CASE
{
    int nStart;
    int nCount;
    const wchar_t* pPart;
};

const PART_CASE s_aryMidCases[] = {
    {0, 3, L"abc"},
    {2, 3, L"cde"},
    {4, 3, L"ef"},
    {6, 1, L""},
    {7, 1, L""},
    {2, 0, L""},
    {2, -1, L""},
    {-4, 2, L"ab"},
    {3, INT_MAX, L"def"},
    {INT_MAX, INT_MAX, L""},
    {INT_MIN, INT_MAX, L"abcdef"},
    {5, 1, L"f"},
};

TEST(LyStringMid, IsClampedIntoTheString)
{
    LyString str(L"abcdef");
    for (const PART_CASE& row : s_aryMidCases)
        EXPECT_STREQ(str.Mid(row.nStart, row.nCount), row.pPart) << row.nStart << ", " << row.nCount;
}

TEST(LyStringMid, FromTheStartShares)
{
    LyString str(L"abcdef");
    EXPECT_EQ(TextOf(str.Mid(0)), TextOf(str));
    EXPECT_EQ(TextOf(str.Mid(-3)), TextOf(str));
    EXPECT_NE(TextOf(str.Mid(1)), TextOf(str));
    EXPECT_STREQ(str.Mid(4), L"ef");
}

TEST(LyStringMid, AtTheEndIsEmpty)
{
    LyString str(L"abc");
    const wchar_t* pEmpty = LyStringGlobals::GetManager()->GetEmptyLyStringData();
    EXPECT_EQ(TextOf(str.Mid(3)), pEmpty);
    EXPECT_EQ(TextOf(str.Mid(99)), pEmpty);
    EXPECT_EQ(TextOf(LyString().Mid(0)), pEmpty);
    EXPECT_EQ(TextOf(LyString().Mid(2, 2)), pEmpty);
}

TEST(LyStringLeft, SharesTheWholeAndCopiesParts)
{
    LyString str(L"abc");
    EXPECT_EQ(TextOf(str.Left(3)), TextOf(str));
    EXPECT_EQ(TextOf(str.Left(4)), TextOf(str));
    EXPECT_EQ(TextOf(str.Left(INT_MAX)), TextOf(str));
    EXPECT_STREQ(str.Left(2), L"ab");
    EXPECT_EQ(BlockOf(str)->GetReferences(), 1);
    EXPECT_STREQ(str, L"abc");
}

TEST(LyStringLeft, OfNothingIsTheEmptyString)
{
    LyString str(L"abc");
    const wchar_t* pEmpty = LyStringGlobals::GetManager()->GetEmptyLyStringData();
    EXPECT_EQ(TextOf(str.Left(0)), pEmpty);
    EXPECT_EQ(TextOf(str.Left(-5)), pEmpty);
}

TEST(LyStringLeft, OfAForeignStringIsACopy)
{
    LyStringGlobals manager;
    ForeignString foreign(manager, L"foreign");
    LyString strLeft = foreign.Get().Left(100);
    EXPECT_STREQ(strLeft, L"foreign");
    EXPECT_EQ(BlockOf(strLeft)->manager, LyStringGlobals::GetManager());
    EXPECT_EQ(BlockOf(foreign.Get().Mid(2, 3))->manager, LyStringGlobals::GetManager());
}

// ---- Find

struct FIND_CASE
{
    const wchar_t* pPattern;
    int nStart;
    int nFound;
};

const FIND_CASE s_aryFindCases[] = {
    {L"ab", 0, 0},        {L"ab", 1, 4}, {L"ab", 5, -1}, {L"AB", 0, 2},       {L"abABabABx", 0, -1},
    {L"", 0, 0},          {L"", 3, 3},   {L"", 8, 8},    {L"", 9, -1},        {L"ab", -7, 0},
    {L"ab", INT_MAX, -1}, {L"B", 7, 7},  {L"B", 8, -1},  {L"ab", INT_MIN, 0},
};

TEST(LyStringFind, FindsTextAtOrBehindTheStart)
{
    LyString str(L"abABabAB");
    for (const FIND_CASE& row : s_aryFindCases)
        EXPECT_EQ(str.Find(row.pPattern, row.nStart), row.nFound) << row.nStart;
    EXPECT_EQ(str.Find(static_cast<const wchar_t*>(nullptr), 0), -1);
    EXPECT_EQ(LyString().Find(L"a"), -1);
    EXPECT_EQ(LyString().Find(L""), 0);
}

TEST(LyStringFind, FindsACharacter)
{
    LyString str(L"abcabc");
    EXPECT_EQ(str.Find(L'b', 0), 1);
    EXPECT_EQ(str.Find(L'b', 2), 4);
    EXPECT_EQ(str.Find(L'b', 5), -1);
    EXPECT_EQ(str.Find(L'x'), -1);
    EXPECT_EQ(str.Find(L'a', -5), 0);
    EXPECT_EQ(str.Find(L'a', INT_MAX), -1);
    EXPECT_EQ(str.Find(L'\0', 0), -1) << "the terminator is not part of the text";
    EXPECT_EQ(str.Find(static_cast<wchar_t>(0x1f600), 0), -1);
}

TEST(LyStringReverseFind, FindsTheLastCharacter)
{
    LyString str(L"abcabc");
    EXPECT_EQ(str.ReverseFind(L'b'), 4);
    EXPECT_EQ(str.ReverseFind(L'a'), 3);
    EXPECT_EQ(str.ReverseFind(L'x'), -1);
    EXPECT_EQ(LyString().ReverseFind(L'a'), -1);
}

TEST(LyStringReverseFind, FindsTheLastText)
{
    LyString str(L"abABab");
    EXPECT_EQ(str.ReverseFind(L"ab", true), 4);
    EXPECT_EQ(str.ReverseFind(L"AB", true), 2);
    EXPECT_EQ(str.ReverseFind(L"AB", false), 4);
    EXPECT_EQ(str.ReverseFind(L"BA", false), 3);
    EXPECT_EQ(str.ReverseFind(L"abABab", true), 0);
    EXPECT_EQ(str.ReverseFind(L"abABabA", false), -1);
    EXPECT_EQ(str.ReverseFind(L"x"), -1);
    EXPECT_EQ(str.ReverseFind(nullptr), -1);
    EXPECT_EQ(str.ReverseFind(L""), 6);
}

// ---- Counting and comparing

TEST(LyStringCount, CountsWithoutOverlap)
{
    LyString str(L"aaaaAAa");
    EXPECT_EQ(str.GetSubAppearanceCount(L"aa", true), 2);
    EXPECT_EQ(str.GetSubAppearanceCount(L"aa", false), 3);
    EXPECT_EQ(str.GetSubAppearanceCount(L"a", false), 7);
    EXPECT_EQ(str.GetSubAppearanceCount(L"b", true), 0);
    EXPECT_EQ(str.GetSubAppearanceCount(L"", true), 0);
    EXPECT_EQ(str.GetSubAppearanceCount(nullptr, true), 0);
    EXPECT_EQ(str.GetSubAppearanceCount(L"aaaaAAaa", false), 0);
}

struct COMPARE_CASE
{
    const wchar_t* pText;
    const wchar_t* pOther;
    bool bCaseSensitive;
    int nSign;
};

const COMPARE_CASE s_aryCompareCases[] = {
    {L"abcdef", L"abc", true, 0}, {L"abc", L"abc", true, 0},  {L"ab", L"abc", true, -1}, {L"ABC", L"abc", false, 0},
    {L"ABC", L"abc", true, -1},   {L"ab", L"ABC", false, -1}, {L"b", L"ABC", false, 1},  {L"", L"a", true, -1},
    {L"", L"a", false, -1},       {L"abD", L"ABc", false, 1},
};

TEST(LyStringCompareLeft, ComparesTheBeginningWithAllOfTheOther)
{
    for (const COMPARE_CASE& row : s_aryCompareCases)
    {
        int nResult = LyString(row.pText).CompareLeft(row.pOther, row.bCaseSensitive, 99);
        EXPECT_EQ((nResult > 0) - (nResult < 0), row.nSign) << LyString(row.pText).GetLength();
    }
}

TEST(LyStringCompareLeft, NullOrEmptyGivesTheCallersValue)
{
    EXPECT_EQ(LyString(L"abc").CompareLeft(nullptr, true, 17), 17);
    EXPECT_EQ(LyString(L"abc").CompareLeft(L"", false, -3), -3);
    EXPECT_EQ(LyString().CompareLeft(L"", true, 0), 0);
}

TEST(LyStringBeginsWith, Text)
{
    LyString str(L"cda://E:,5");
    EXPECT_TRUE(str.BeginsWith(L"cda://", false));
    EXPECT_TRUE(str.BeginsWith(L"CDA://", true));
    EXPECT_FALSE(str.BeginsWith(L"CDA://", false));
    EXPECT_FALSE(str.BeginsWith(L"cda://E:,5 ", true));
    EXPECT_TRUE(str.BeginsWith(L"", false));
    EXPECT_TRUE(str.BeginsWith(static_cast<const wchar_t*>(nullptr), false));
}

TEST(LyStringBeginsWith, Character)
{
    LyString str(L"Ab");
    EXPECT_TRUE(str.BeginsWith(L'A', false));
    EXPECT_FALSE(str.BeginsWith(L'a', false));
    EXPECT_TRUE(str.BeginsWith(L'a', true));
    EXPECT_FALSE(str.BeginsWith(L'b', true));
}

TEST(LyStringEndsWith, Character)
{
    LyString str(L"aB");
    EXPECT_TRUE(str.EndsWith(L'B', false));
    EXPECT_FALSE(str.EndsWith(L'b', false));
    EXPECT_TRUE(str.EndsWith(L'b', true));
    EXPECT_FALSE(str.EndsWith(L'a', true));
}

TEST(LyStringEndsWith, EmptyStringComparesAsCharacterZero)
{
    EXPECT_TRUE(LyString().BeginsWith(L'\0', false));
    EXPECT_TRUE(LyString().EndsWith(L'\0', true));
    EXPECT_FALSE(LyString().EndsWith(L'a', false));
    EXPECT_FALSE(LyString(L"a").EndsWith(L'\0', false));
}
