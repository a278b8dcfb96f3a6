#include "LyArray.h"
#include "LyMap.h"
#include "LyStringFormat.h"
#include <gtest/gtest.h>

namespace
{
LyStringArray Strings(const wchar_t* pList)
{
    LyStringArray ary;
    ary.InitFromList(pList, L",");
    return ary;
}
} // namespace

struct FIND_CASE
{
    const char* pName;
    const wchar_t* pList;
    const wchar_t* pWanted;
    bool bCaseSensitive;
    bool bWholeString;
    bool bCompareLeft;
    int nIndex;
};

class LyStringArrayFind : public testing::TestWithParam<FIND_CASE>
{
};

TEST_P(LyStringArrayFind, GivesTheFirstIndex)
{
    const FIND_CASE& row = GetParam();
    const LyStringArray ary = Strings(row.pList);
    EXPECT_EQ(ary.FindStringHelper(row.pWanted, row.bCaseSensitive, row.bWholeString, row.bCompareLeft), row.nIndex);
    if (row.bCompareLeft)
        return;
    EXPECT_EQ(ary.FindString(row.pWanted, row.bCaseSensitive, row.bWholeString), row.nIndex);
    if (row.bWholeString)
    {
        EXPECT_EQ(ary.ContainsString(row.pWanted, row.bCaseSensitive), row.nIndex >= 0);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, LyStringArrayFind,
    testing::Values(FIND_CASE{"WholeWithCase", L"one,two,Two", L"Two", true, true, false, 2},
                    FIND_CASE{"WholeWithoutCase", L"one,two,Two", L"TWO", false, true, false, 1},
                    FIND_CASE{"WholeIsNotPart", L"one,two", L"tw", true, true, false, -1},
                    FIND_CASE{"WholeIsNotLonger", L"one,two", L"twos", false, true, false, -1},
                    FIND_CASE{"FirstOfTwo", L"a,b,b", L"b", true, true, false, 1},
                    FIND_CASE{"PartWithCase", L"one,twofold,Two", L"of", true, false, false, 1},
                    FIND_CASE{"PartMissesOtherCase", L"one,twofold", L"OF", true, false, false, -1},
                    FIND_CASE{"PartWithoutCase", L"one,twofold", L"OF", false, false, false, 1},
                    FIND_CASE{"BeginWithCase", L"Twofold,twofold", L"two", true, false, true, 1},
                    FIND_CASE{"BeginWithoutCase", L"Twofold,twofold", L"two", false, false, true, 0},
                    FIND_CASE{"BeginWinsOverWhole", L"twofold", L"two", true, true, true, 0},
                    FIND_CASE{"BeginIsNotMiddle", L"atwo", L"two", true, false, true, -1},
                    FIND_CASE{"NothingBeginsEverything", L"a", L"", true, false, true, 0},
                    FIND_CASE{"EmptyStringIsFoundWhole", L"a,,b", L"", true, true, false, 1}),
    [](const auto& row) { return row.param.pName; });

TEST(LyStringArrayFindEmpty, AnswersMinusOne)
{
    const LyStringArray ary;
    EXPECT_EQ(ary.FindStringHelper(L"", true, true, false), -1);
    EXPECT_EQ(ary.FindStringHelper(L"", true, false, true), -1);
    EXPECT_EQ(ary.FindStringHelper(L"", false, false, false), -1);
    EXPECT_FALSE(ary.ContainsString(L"", true));
}

TEST(LyStringArrayRemoveString, RemovesAllEqualOnes)
{
    LyStringArray ary = Strings(L"a,b,A,c,a");
    EXPECT_EQ(ary.RemoveString(L"a", true), 2);
    EXPECT_STREQ(ary.GetList(L","), L"b,A,c");
    ary = Strings(L"a,b,A,c,a");
    EXPECT_EQ(ary.RemoveString(L"a", false), 3);
    EXPECT_STREQ(ary.GetList(L","), L"b,c");
    EXPECT_EQ(ary.RemoveString(L"x", false), 0);
    EXPECT_EQ(LyStringArray().RemoveString(L"x", false), 0);
}

TEST(LyStringArrayRemoveString, TakesAnElementOfTheList)
{
    LyStringArray ary = Strings(L"a,b,a,c,a");
    EXPECT_EQ(ary.RemoveString(ary[2], true), 3);
    EXPECT_STREQ(ary.GetList(L","), L"b,c");
    EXPECT_EQ(ary.RemoveString(ary[1], true), 1);
    EXPECT_STREQ(ary.GetList(L","), L"b");
}

struct DUPLICATE_CASE
{
    const char* pName;
    const wchar_t* pList;
    const wchar_t* pLeft;
};

class LyStringArrayRemoveDuplicates : public testing::TestWithParam<DUPLICATE_CASE>
{
};

TEST_P(LyStringArrayRemoveDuplicates, LeavesTheFirstInOrder)
{
    LyStringArray ary = Strings(GetParam().pList);
    ary.RemoveDuplicates();
    EXPECT_STREQ(ary.GetList(L","), GetParam().pLeft);
    ary.RemoveDuplicates();
    EXPECT_STREQ(ary.GetList(L","), GetParam().pLeft);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LyStringArrayRemoveDuplicates,
    testing::Values(DUPLICATE_CASE{"None", L"a,b,c", L"a,b,c"}, DUPLICATE_CASE{"One", L"a", L"a"},
                    DUPLICATE_CASE{"CaseNeverCounts", L"Abc,aBC,b,ABC", L"Abc,b"},
                    DUPLICATE_CASE{"EmptyOnes", L"a,,b,,c", L"a,,b,c"}, DUPLICATE_CASE{"AllEqual", L"x,X,x,X", L"x"},
                    DUPLICATE_CASE{"SixteenByPairs", L"a,b,c,d,e,f,g,h,A,j,k,l,m,n,B,c", L"a,b,c,d,e,f,g,h,j,k,l,m,n"},
                    DUPLICATE_CASE{"SeventeenByHash", L"a,b,c,d,e,f,g,h,A,j,k,l,m,n,B,c,A",
                                   L"a,b,c,d,e,f,g,h,j,k,l,m,n"},
                    DUPLICATE_CASE{"SeventeenDifferent", L"a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p,q",
                                   L"a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p,q"},
                    DUPLICATE_CASE{"SeventeenEqual", L"z,z,Z,z,z,Z,z,z,z,Z,z,z,z,z,Z,z,z", L"z"}),
    [](const auto& row) { return row.param.pName; });

TEST(LyStringArrayRemoveDuplicates, EmptyListStaysEmpty)
{
    LyStringArray ary;
    ary.RemoveDuplicates();
    EXPECT_EQ(ary.GetSize(), 0);
}

// The two texts differ, but their 64 bit hashes are equal. With characters cut to 16 bits U+10141 and U+20141 are one.
// With whole characters "\x1\x10040" is 65599 + 65600, and "\x2\x1" is 2 * 65599 + 1.
TEST(LyStringArrayRemoveDuplicates, HashPathTakesEqualHashesForEqualTexts)
{
    const wchar_t* pFirst = L"\x1\x10040";
    const wchar_t* pSecond = L"\x2\x1";
    const bool bWholeCharacters = LyHash::HashString(pFirst, false) == LyHash::HashString(pSecond, false);
    const LyString strFirst(bWholeCharacters ? pFirst : L"\x10141");
    const LyString strSecond(bWholeCharacters ? pSecond : L"\x20141");

    LyStringArray ary;
    ary.Add(strFirst);
    ary.Add(strSecond);
    for (int i = 0; i < 14; ++i)
        ary.Add(LyFormatString(L"%d", i));
    ary.RemoveDuplicates();
    EXPECT_EQ(ary.GetSize(), 16) << "sixteen go by pairs, which compare texts";

    ary.Add(L"seventeenth");
    ary.RemoveDuplicates();
    EXPECT_EQ(ary.GetSize(), 16) << "seventeen go by hashes";
    EXPECT_TRUE(ary.ContainsString(strFirst, true));
    EXPECT_FALSE(ary.ContainsString(strSecond, true));
}

TEST(LyCommandLine, IsAListOfStrings)
{
    LyCommandLine line;
    line.Add(L"-x");
    const LyStringArray& ary = line;
    EXPECT_TRUE(ary.ContainsString(L"-X", false));
    LyCommandLine copy = ary;
    EXPECT_EQ(copy.GetSize(), 1);
}
