#include "LyArray.h"
#include "LyStringFormat.h"
#include <climits>
#include <clocale>
#include <gtest/gtest.h>
#include <string>

namespace
{
// The elements, each in brackets.
std::wstring Show(const LyStringArray& ary)
{
    std::wstring strAll;
    for (const LyString& str : ary)
        strAll += std::wstring(L"[") + static_cast<const wchar_t*>(str) + L"]";
    return strAll;
}

LyStringArray Strings(const wchar_t* pList, const wchar_t* pDelimiter = L",")
{
    LyStringArray ary;
    ary.InitFromList(pList, pDelimiter);
    return ary;
}

const wchar_t* Characters(const LyString& str) { return str; }

struct LIST_CASE
{
    const char* pName;
    const wchar_t* pList;
    const wchar_t* pDelimiter;
    bool bTrim;
    bool bSkipEmptyTrailing;
    const wchar_t* pShown;
};

const LIST_CASE s_aryListCases[] = {
    {"Plain", L"a;b;c", L";", false, false, L"[a][b][c]"},
    {"DelimiterAtTheEnd", L"a;b;", L";", false, false, L"[a][b]"},
    {"DelimiterAtTheEndSkipping", L"a;b;", L";", false, true, L"[a][b]"},
    {"DelimiterAtTheEndTrimming", L"a;b;", L";", true, false, L"[a][b]"},
    {"EmptyText", L"", L";", false, false, L"[]"},
    {"EmptyTextSkipping", L"", L";", false, true, L""},
    {"EmptyTextTrimming", L"", L";", true, false, L"[]"},
    {"NullText", nullptr, L";", false, false, L"[]"},
    {"NullTextSkipping", nullptr, L";", false, true, L""},
    {"NoDelimiterInTheText", L"abc", L";", false, false, L"[abc]"},
    {"NoDelimiterIsNotTrimmed", L"  abc  ", L";", true, false, L"[  abc  ]"},
    {"EmptyDelimiter", L"a;b", L"", false, false, L"[a;b]"},
    {"NullDelimiter", L"a;b", nullptr, true, true, L"[a;b]"},
    {"OnlyADelimiter", L";", L";", false, false, L"[]"},
    {"OnlyADelimiterSkipping", L";", L";", false, true, L"[]"},
    {"TwoDelimiters", L";;", L";", false, false, L"[][]"},
    {"EmptyTokensInTheMiddle", L"a;;;b", L";", false, true, L"[a][][][b]"},
    {"DelimiterFirst", L";a", L";", false, false, L"[][a]"},
    {"LongDelimiter", L"a::b:c::", L"::", false, false, L"[a][b:c]"},
    {"OverlappingDelimiter", L"a:::b", L"::", false, false, L"[a][:b]"},
    {"DelimiterLongerThanTheText", L"a", L"aa", false, false, L"[a]"},
    {"WithoutTrimBlanksStay", L" a ; b ; c ", L";", false, false, L"[ a ][ b ][ c ]"},
    {"TrimWorksAroundDelimiters", L" a ; b ; c ", L";", true, false, L"[ a][b][c ]"},
    {"TrimTakesAllWhiteSpace", L"a \t\r\n;\n\t b;c", L";", true, false, L"[a][b][c]"},
    {"TrimLeavesBlanksInside", L"a b ; c d", L";", true, false, L"[a b][c d]"},
    {"TrimOfBlankTokens", L"a;   ;b", L";", true, false, L"[a][][b]"},
    {"TrimOfABlankFirstToken", L"   ;b", L";", true, false, L"[][b]"},
    {"TrimmedEndAfterDelimiter", L"a;b;  ", L";", true, false, L"[a][b]"},
    {"UntrimmedEndAfterDelimiter", L"a;b;  ", L";", false, false, L"[a][b][  ]"},
    {"BlankDelimiterCollapsesWhenTrimmed", L"a  b   c", L" ", true, false, L"[a][b][c]"},
    {"BlankDelimiterPlain", L"a  b", L" ", false, false, L"[a][][b]"},
};

class LyStringArrayInitFromList : public testing::TestWithParam<LIST_CASE>
{
};
} // namespace

TEST_P(LyStringArrayInitFromList, CutsTheText)
{
    const LIST_CASE& row = GetParam();
    LyStringArray ary;
    ary.InitFromList(row.pList, row.pDelimiter, row.bTrim, row.bSkipEmptyTrailing);
    EXPECT_EQ(Show(ary), row.pShown);
    // Whatever was in the list before goes.
    LyStringArray aryUsed = Strings(L"1,2,3,4,5,6,7");
    aryUsed.InitFromList(row.pList, row.pDelimiter, row.bTrim, row.bSkipEmptyTrailing);
    EXPECT_EQ(Show(aryUsed), row.pShown);
}

TEST_P(LyStringArrayInitFromList, CutsTheTextOfItsOwnElement)
{
    const LIST_CASE& row = GetParam();
    for (int nOwner : {0, 1, 2})
    {
        LyStringArray ary = Strings(L"x,y,z");
        ary[nOwner] = row.pList;
        ary.InitFromList(ary[nOwner], row.pDelimiter, row.bTrim, row.bSkipEmptyTrailing);
        EXPECT_EQ(Show(ary), row.pShown) << nOwner;
    }
}

INSTANTIATE_TEST_SUITE_P(Table, LyStringArrayInitFromList, testing::ValuesIn(s_aryListCases),
                         [](const auto& row) { return row.param.pName; });

TEST(LyStringArrayInitFromOwnText, DelimiterMayBeAnElementToo)
{
    LyStringArray ary = Strings(L"a+b+c,+");
    ary.InitFromList(ary[0], ary[1]);
    EXPECT_EQ(Show(ary), L"[a][b][c]");
}

TEST(LyStringArrayInitFromOwnText, MayBeginInsideTheElement)
{
    LyStringArray ary;
    ary.Add(L"head:a;b");
    ary.InitFromList(Characters(ary[0]) + 5, L";");
    EXPECT_EQ(Show(ary), L"[a][b]");
}

TEST(LyStringArrayInitFromOwnText, SharedTextStaysIntactElsewhere)
{
    const LyString str(L"a;b");
    LyStringArray ary;
    ary.Add(str);
    ary.InitFromList(ary[0], L";");
    EXPECT_STREQ(str, L"a;b");
    EXPECT_EQ(Show(ary), L"[a][b]");
}

TEST(LyStringArrayInitFromList, CutsCapacityNever)
{
    LyStringArray ary = Strings(L"1,2,3,4,5");
    ASSERT_EQ(ary.GetAllocated(), 64);
    ary.InitFromList(L"a", L",");
    EXPECT_EQ(ary.GetSize(), 1);
    EXPECT_EQ(ary.GetAllocated(), 64);
}

TEST(LyStringArrayInitFromList, ManyTokens)
{
    LyString strList;
    for (int i = 0; i < 1000; ++i)
        strList += LyFormatString(L"%d,", i);
    const LyStringArray ary = Strings(strList);
    ASSERT_EQ(ary.GetSize(), 1000);
    EXPECT_STREQ(ary[0], L"0");
    EXPECT_STREQ(ary[999], L"999");
}

TEST(LyStringArrayInitFromList, TrimTakesWideWhiteSpace)
{
    if (setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        GTEST_SKIP() << "no locale that knows wide white space";
    LyStringArray ary;
    ary.InitFromList(L"a\x2003;\x2003\x62 ;c", L";", true, false);
    EXPECT_EQ(Show(ary), L"[a][b][c]");
    setlocale(LC_CTYPE, "C");
}

TEST(LyStringDelimiterScanner, AppendsBehindWhatIsThere)
{
    LyStringArray ary = Strings(L"x,y");
    LyStringDelimiterScanner(L"a;b;", L";", false).FillStringArray(ary, false, false);
    EXPECT_EQ(Show(ary), L"[x][y][a][b]");
    LyStringDelimiterScanner(L"", L";", false).FillStringArray(ary, false, true);
    EXPECT_EQ(Show(ary), L"[x][y][a][b]");
    LyStringDelimiterScanner(L"", L";", false).FillStringArray(ary, false, false);
    EXPECT_EQ(Show(ary), L"[x][y][a][b][]");
    LyStringDelimiterScanner(ary[0], L";", false).FillStringArray(ary, false, false);
    EXPECT_EQ(Show(ary), L"[x][y][a][b][][x]");
}

TEST(LyStringArrayGetList, JoinsInEitherOrder)
{
    const LyStringArray ary = Strings(L"a,bc,,d");
    EXPECT_STREQ(ary.GetList(L"; "), L"a; bc; ; d");
    EXPECT_STREQ(ary.GetList(L"; ", true), L"d; ; bc; a");
    EXPECT_STREQ(ary.GetList(L'/'), L"a/bc//d");
    EXPECT_STREQ(ary.GetList(L'/', true), L"d//bc/a");
    EXPECT_STREQ(ary.GetList(L""), L"abcd");
    EXPECT_STREQ(ary.GetList(static_cast<const wchar_t*>(nullptr)), L"abcd");
}

TEST(LyStringArrayGetList, OfNothingIsEmpty)
{
    const LyStringArray ary;
    bool bTruncated = true;
    EXPECT_STREQ(ary.GetList(L";", false, -1, &bTruncated), L"");
    EXPECT_FALSE(bTruncated);
    EXPECT_STREQ(ary.GetList(L';'), L"");
}

TEST(LyStringArrayGetList, OneItemIsSharedAndHasNoDelimiter)
{
    const LyStringArray ary = Strings(L"only");
    const LyString strList = ary.GetList(L";");
    EXPECT_STREQ(strList, L"only");
    EXPECT_EQ(Characters(strList), Characters(ary[0]));
    EXPECT_EQ(Characters(ary.GetList(L';', true)), Characters(ary[0]));
}

TEST(LyStringArrayGetList, IsCutAtTheMostItems)
{
    const LyStringArray ary = Strings(L"a,b,c");
    bool bTruncated = false;
    EXPECT_STREQ(ary.GetList(L";", false, 2, &bTruncated), L"a;b");
    EXPECT_TRUE(bTruncated);
    EXPECT_STREQ(ary.GetList(L";", true, 2, &bTruncated), L"b;a");
    EXPECT_TRUE(bTruncated);
    EXPECT_STREQ(ary.GetList(L";", false, 1, &bTruncated), L"a");
    EXPECT_TRUE(bTruncated);
    EXPECT_STREQ(ary.GetList(L";", false, 0, &bTruncated), L"");
    EXPECT_TRUE(bTruncated);
    EXPECT_STREQ(ary.GetList(L";", false, 3, &bTruncated), L"a;b;c");
    EXPECT_FALSE(bTruncated);
    EXPECT_STREQ(ary.GetList(L";", false, INT_MAX, &bTruncated), L"a;b;c");
    EXPECT_FALSE(bTruncated);
    EXPECT_STREQ(ary.GetList(L";", false, -5, &bTruncated), L"a;b;c");
    EXPECT_FALSE(bTruncated);
    EXPECT_STREQ(ary.GetList(L";", false, 2), L"a;b");
}

TEST(LyStringArrayGetList, KeepsZeroCharactersInside)
{
    LyStringArray ary;
    LyString strWithZero;
    strWithZero.FromStringInMemoryFast(L"a\0b", 3);
    ary.Add(strWithZero);
    ary.Add(L"c");
    const LyString strList = ary.GetList(L";");
    ASSERT_EQ(strList.GetLength(), 5);
    EXPECT_EQ(strList[2], L'b');
    EXPECT_EQ(strList[4], L'c');
}

TEST(LyStringArrayList, RoundTrip)
{
    for (const wchar_t* pList : {L"a;b;c", L";;x", L"one", L"a; b ;c d"})
        EXPECT_STREQ(Strings(pList, L";").GetList(L";"), pList);
}
