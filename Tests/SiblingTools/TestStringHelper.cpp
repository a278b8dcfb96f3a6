#include "StringHelper.h"

#include <algorithm>
#include <climits>
#include <clocale>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
constexpr int STABLE_NO_CASE = LY_STRING_COMPARE_IGNORE_CASE | LY_STRING_COMPARE_STABLE;
static_assert(STABLE_NO_CASE == 0x201);

struct FIND_CASE
{
    const wchar_t* pText;
    const wchar_t* pPattern;
    int nStart;
    int nFound;
};

const FIND_CASE s_aryFindCases[] = {
    {L"Hello World", L"WORLD", 0, 6},
    {L"Hello World", L"world", 6, 6},
    {L"Hello World", L"world", 7, -1},
    {L"Hello World", L"o", 5, 7},
    {L"aaab", L"AAB", 0, 1},
    {L"Hello", L"Hello there", 0, -1},
    {L"xÄÖÜ", L"äöü", 0, 1},
    {L"ΣΊΣΥΦΟΣ", L"σίσυφος", 0, 0}, // the small sigma at the end of a word, too
    {L"ПРИВЕТ", L"вет", 0, 3},
    {L"\U00010400", L"\U00010428", 0, 0}, // Deseret, above U+FFFF
    {L"[x]", L"{X}", 0, -1},              // 0x20 apart, but no letters
    {L"@", L"`", 0, -1},
};

// Characters that fold to each other, and characters that only look as if they did.
struct FOLD_CASE
{
    const wchar_t* pFirst;
    const wchar_t* pSecond;
    bool bSame;
};

const FOLD_CASE s_aryFoldCases[] = {
    {L"µ", L"μ", true},                           // micro sign, mu
    {L"ſ", L"S", true},                           // long s
    {L"\u212A", L"k", true},                      // kelvin sign
    {L"\u1E9E", L"ß", true}, {L"ǅ", L"ǆ", true},  // a title case letter
    {L"ß", L"ss", false},    {L"I", L"ı", false}, // Turkic alone
    {L"İ", L"i", false},     {L"é", L"e", false},
};
} // namespace

TEST(StringHelperFindNoCase, FindsWhateverTheCase)
{
    StringHelper helper;
    for (const FIND_CASE& each : s_aryFindCases)
        EXPECT_EQ(helper.FindNoCase(each.pText, each.pPattern, each.nStart), each.nFound) << each.pPattern;
}

TEST(StringHelperFindNoCase, EmptyPatternIsFoundWhereTheSearchBegins)
{
    StringHelper helper;
    EXPECT_EQ(helper.FindNoCase(L"abc", L"", 0), 0);
    EXPECT_EQ(helper.FindNoCase(L"abc", L"", 2), 2);
    EXPECT_EQ(helper.FindNoCase(L"abc", L"", 3), 3);
    EXPECT_EQ(helper.FindNoCase(L"abc", L"", 4), -1);
    EXPECT_EQ(helper.FindNoCase(L"", L"", 0), 0);
}

TEST(StringHelperFindNoCase, StartBelowZeroIsZeroAndStartBehindTheEndFindsNothing)
{
    StringHelper helper;
    EXPECT_EQ(helper.FindNoCase(L"abc", L"A", INT_MIN), 0);
    EXPECT_EQ(helper.FindNoCase(L"abc", L"c", 3), -1);
    EXPECT_EQ(helper.FindNoCase(L"abc", L"c", INT_MAX), -1);
}

TEST(StringHelperFindNoCase, NullIsNowhere)
{
    StringHelper helper;
    EXPECT_EQ(helper.FindNoCase(nullptr, L"a", 0), -1);
    EXPECT_EQ(helper.FindNoCase(L"a", nullptr, 0), -1);
}

TEST(StringHelper, FoldsOneCharacterToOne)
{
    StringHelper helper;
    for (const FOLD_CASE& each : s_aryFoldCases)
    {
        EXPECT_EQ(helper.FindNoCase(each.pFirst, each.pSecond, 0) == 0, each.bSame) << each.pFirst;
        EXPECT_EQ(helper.Compare(each.pFirst, each.pSecond, LY_STRING_COMPARE_IGNORE_CASE) == 0, each.bSame);
    }
}

TEST(StringHelper, FoldsAloneOfTheProcessLocale)
{
    const std::string strBefore = setlocale(LC_ALL, nullptr);
    for (const char* pLocale : {"C", "C.UTF-8"})
    {
        ASSERT_NE(setlocale(LC_ALL, pLocale), nullptr);
        StringHelper helper;
        EXPECT_EQ(helper.FindNoCase(L"ÄRGER", L"ärger", 0), 0) << pLocale;
        EXPECT_STREQ(setlocale(LC_ALL, nullptr), pLocale); // and leaves it alone
    }
    setlocale(LC_ALL, strBefore.c_str());
}

TEST(StringHelperCompare, FoldedOrderComesFirst)
{
    StringHelper helper;
    EXPECT_EQ(helper.Compare(L"apple", L"BANANA", STABLE_NO_CASE), -1);
    EXPECT_EQ(helper.Compare(L"BANANA", L"apple", STABLE_NO_CASE), 1);
    EXPECT_EQ(helper.Compare(L"ab", L"ABC", STABLE_NO_CASE), -1);
    EXPECT_EQ(helper.Compare(L"_", L"A", STABLE_NO_CASE), -1); // the folded letter stands behind it
    EXPECT_EQ(helper.Compare(L"Z", L"ä", STABLE_NO_CASE), -1);
    EXPECT_EQ(helper.Compare(L"\uFFFD", L"\U00010000", STABLE_NO_CASE), -1);
}

TEST(StringHelperCompare, StableOrderTellsTextsApartThatDifferInCaseAlone)
{
    StringHelper helper;
    EXPECT_EQ(helper.Compare(L"ABC", L"abc", STABLE_NO_CASE), -1);
    EXPECT_EQ(helper.Compare(L"abc", L"ABC", STABLE_NO_CASE), 1);
    EXPECT_EQ(helper.Compare(L"aBc", L"abC", STABLE_NO_CASE), -1);
    EXPECT_EQ(helper.Compare(L"ABC", L"abc", LY_STRING_COMPARE_IGNORE_CASE), 0);
    EXPECT_EQ(helper.Compare(L"Éa", L"éA", STABLE_NO_CASE), -1);
}

TEST(StringHelperCompare, OnlyEqualTextsAreZero)
{
    StringHelper helper;
    EXPECT_EQ(helper.Compare(L"Tune", L"Tune", STABLE_NO_CASE), 0);
    EXPECT_EQ(helper.Compare(L"", L"", STABLE_NO_CASE), 0);
    EXPECT_EQ(helper.Compare(L"ς", L"σ", STABLE_NO_CASE), -1);
}

TEST(StringHelperCompare, NullCountsAsEmpty)
{
    StringHelper helper;
    EXPECT_EQ(helper.Compare(nullptr, nullptr, STABLE_NO_CASE), 0);
    EXPECT_EQ(helper.Compare(nullptr, L"", STABLE_NO_CASE), 0);
    EXPECT_EQ(helper.Compare(nullptr, L"a", STABLE_NO_CASE), -1);
    EXPECT_EQ(helper.Compare(L"a", nullptr, STABLE_NO_CASE), 1);
}

TEST(StringHelperCompare, WithoutTheCaseFlagCodePointsDecide)
{
    StringHelper helper;
    EXPECT_EQ(helper.Compare(L"B", L"a", 0), -1);
    EXPECT_EQ(helper.Compare(L"a", L"A", LY_STRING_COMPARE_STABLE), 1);
}

// Antisymmetric and transitive: sorted from any order, the texts come out the same.
TEST(StringHelperCompare, IsATotalOrder)
{
    const std::vector<std::wstring> arySorted = {L"", L"A", L"AA", L"Aa", L"aA", L"aa", L"B", L"b", L"Ä", L"ä"};
    StringHelper helper;
    for (size_t i = 0; i < arySorted.size(); ++i)
    {
        for (size_t j = 0; j < arySorted.size(); ++j)
        {
            const int nExpected = i < j ? -1 : i > j ? 1 : 0;
            EXPECT_EQ(helper.Compare(arySorted[i].c_str(), arySorted[j].c_str(), STABLE_NO_CASE), nExpected)
                << i << " " << j;
        }
    }
}
