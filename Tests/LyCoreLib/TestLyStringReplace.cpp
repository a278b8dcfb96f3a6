// Replacing texts and characters.

#include "FakeStringTools.h"
#include "StringTestSupport.h"
#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
// The general form with case, without limit, prefix and suffix.
int ReplaceAll(LyString& str, std::vector<const wchar_t*> from, std::vector<const wchar_t*> to)
{
    return str.Replace(from.data(), to.data(), static_cast<int>(from.size()), true, INT_MAX, false, nullptr, nullptr);
}

int ReplaceMatches(LyString& str, const wchar_t* pFrom, const wchar_t* pTo, bool bCaseSensitive, int nMaxHits,
                   bool bKeepMatch, const wchar_t* pPrefix, const wchar_t* pSuffix)
{
    return str.Replace(&pFrom, &pTo, 1, bCaseSensitive, nMaxHits, bKeepMatch, pPrefix, pSuffix);
}
} // namespace

// ---- One text

struct REPLACE_CASE
{
    const wchar_t* pText;
    const wchar_t* pFrom;
    const wchar_t* pTo;
    const wchar_t* pResult;
    int nHits;
};

const REPLACE_CASE s_aryReplaceCases[] = {
    {L"abcabc", L"b", L"x", L"axcaxc", 2},
    {L"abcabc", L"bc", L"", L"aa", 2},
    {L"abcabc", L"bc", nullptr, L"aa", 2}, // null removes
    {L"abc", L"b", L"123", L"a123c", 1},
    {L"abc", L"abc", L"", L"", 1},
    {L"abc", L"abcd", L"x", L"abc", 0},
    {L"abc", L"B", L"x", L"abc", 0},
    {L"aaa", L"aa", L"b", L"ba", 1},     // matches do not overlap
    {L"aaa", L"a", L"aa", L"aaaaaa", 3}, // what was put in is not searched
    {L"abc", L"", L"x", L"abc", 0},
    {L"abc", nullptr, L"x", L"abc", 0},
    {L"", L"a", L"x", L"", 0},
    {L"a", L"a", L"a", L"a", 1},
};

TEST(LyStringReplace, ReplacesEveryMatch)
{
    for (const REPLACE_CASE& row : s_aryReplaceCases)
    {
        LyString str(row.pText);
        EXPECT_EQ(str.Replace(row.pFrom, row.pTo), row.nHits) << row.pText;
        EXPECT_STREQ(str, row.pResult);
    }
}

TEST(LyStringReplace, WithoutAMatchNothingIsDetached)
{
    LyString str(L"abc");
    LyString strCopy(str);
    EXPECT_EQ(str.Replace(L"x", L"y"), 0);
    EXPECT_EQ(TextOf(str), TextOf(strCopy));
    EXPECT_EQ(str.Replace(L"b", L"y"), 1);
    EXPECT_STREQ(strCopy, L"abc");
}

TEST(LyStringReplace, TheTextsMayLieInTheString)
{
    LyString str(L"abc");
    EXPECT_EQ(str.Replace(TextOf(str) + 2, TextOf(str)), 1);
    EXPECT_STREQ(str, L"ababc");
}

TEST(LyStringReplace, ZerosInTheTextStay)
{
    LyString str;
    str.FromStringInMemoryFast(L"a\0a\0", 4);
    EXPECT_EQ(str.Replace(L"a", L"bb"), 2);
    EXPECT_EQ(Contents(str), std::wstring(L"bb\0bb\0", 6));
}

// ---- Many texts in one pass

TEST(LyStringReplaceMany, TheEarliestMatchWins)
{
    LyString str(L"one two three");
    EXPECT_EQ(ReplaceAll(str, {L"three", L"two", L"one"}, {L"3", L"2", L"1"}), 3);
    EXPECT_STREQ(str, L"1 2 3");
}

TEST(LyStringReplaceMany, AtTheSamePlaceTheLowerIndexWins)
{
    LyString str(L"abcd");
    EXPECT_EQ(ReplaceAll(str, {L"ab", L"abc"}, {L"1", L"2"}), 1);
    EXPECT_STREQ(str, L"1cd");
    str = L"abcd";
    EXPECT_EQ(ReplaceAll(str, {L"abc", L"ab"}, {L"2", L"1"}), 1);
    EXPECT_STREQ(str, L"2d");
}

TEST(LyStringReplaceMany, AMatchHidesThoseThatBeginInIt)
{
    LyString str(L"abcbc");
    EXPECT_EQ(ReplaceAll(str, {L"bc", L"ab"}, {L"x", L"y"}), 2);
    EXPECT_STREQ(str, L"ycx");
}

TEST(LyStringReplaceMany, IsOnePass)
{
    LyString str(L"ab");
    EXPECT_EQ(ReplaceAll(str, {L"a", L"b"}, {L"b", L"a"}), 2);
    EXPECT_STREQ(str, L"ba");
}

TEST(LyStringReplaceMany, ManyPatterns)
{
    std::vector<std::wstring> texts;
    std::vector<const wchar_t*> from;
    std::vector<const wchar_t*> to;
    for (wchar_t c = L'a'; c <= L'z'; ++c)
        texts.emplace_back(1, c);
    for (size_t i = 0; i < texts.size(); ++i)
    {
        from.push_back(texts[i].c_str());
        to.push_back(texts[texts.size() - 1 - i].c_str());
    }
    LyString str(L"abc-xyz");
    EXPECT_EQ(ReplaceAll(str, from, to), 6);
    EXPECT_STREQ(str, L"zyx-cba");
}

TEST(LyStringReplaceMany, RefusesUselessPatterns)
{
    LyString str(L"abc");
    EXPECT_EQ(ReplaceAll(str, {L"a", L""}, {L"1", L"2"}), 0);
    EXPECT_EQ(ReplaceAll(str, {L"a", nullptr}, {L"1", L"2"}), 0);
    EXPECT_EQ(ReplaceAll(str, {}, {}), 0);
    const wchar_t* pFrom = L"a";
    EXPECT_EQ(str.Replace(&pFrom, &pFrom, -1, true, 5, false, nullptr, nullptr), 0);
    EXPECT_EQ(str.Replace(nullptr, &pFrom, 1, true, 5, false, nullptr, nullptr), 0);
    EXPECT_STREQ(str, L"abc");
    EXPECT_EQ(str.Replace(&pFrom, nullptr, 1, true, 5, false, nullptr, nullptr), 1); // no replacements: all null
    EXPECT_STREQ(str, L"bc");
}

TEST(LyStringReplaceMany, StopsAfterTheMostHits)
{
    for (int nMaxHits : {INT_MIN, -1, 0, 1, 2, 3, 4, INT_MAX})
    {
        LyString str(L"aaa");
        int nExpected = nMaxHits < 0 ? 0 : nMaxHits > 3 ? 3 : nMaxHits;
        EXPECT_EQ(ReplaceMatches(str, L"a", L"b", true, nMaxHits, false, nullptr, nullptr), nExpected);
        auto nHits = static_cast<size_t>(nExpected);
        EXPECT_EQ(Contents(str), std::wstring(nHits, L'b') + std::wstring(3 - nHits, L'a'));
    }
}

TEST(LyStringReplaceMany, PutsPrefixAndSuffixAroundEachHit)
{
    LyString str(L"say hello, hello");
    EXPECT_EQ(ReplaceMatches(str, L"hello", L"hi", true, INT_MAX, false, L"<b>", L"</b>"), 2);
    EXPECT_STREQ(str, L"say <b>hi</b>, <b>hi</b>");
    EXPECT_EQ(ReplaceMatches(str, L"hi", nullptr, true, INT_MAX, false, L"<", L">"), 2);
    EXPECT_STREQ(str, L"say <b><></b>, <b><></b>");
}

TEST(LyStringReplaceMany, KeepsTheMatchIfAsked)
{
    FakeStringTools tools;
    LyString str(L"Hello hello");
    EXPECT_EQ(ReplaceMatches(str, L"HELLO", L"unused", false, INT_MAX, true, L"<", L">"), 2);
    EXPECT_STREQ(str, L"<Hello> <hello>");
    EXPECT_EQ(ReplaceMatches(str, L"llo", nullptr, true, INT_MAX, true, nullptr, L"!"), 2);
    EXPECT_STREQ(str, L"<Hello!> <hello!>");
}

// ---- Without case

TEST(LyStringReplaceNoCase, AsksTheService)
{
    FakeStringTools tools;
    LyString str(L"abcABCabc");
    EXPECT_EQ(str.ReplaceNoCase(L"Bc", L"x"), 3);
    EXPECT_STREQ(str, L"axAxax");
    EXPECT_GT(tools.m_Helper.m_nCalls, 0);
    EXPECT_EQ(str.ReplaceNoCase(L"X", L"yy", 2), 2);
    EXPECT_STREQ(str, L"ayyAyyax");
}

TEST(LyStringReplaceNoCase, WithoutTheServiceCaseCounts)
{
    LyString str(L"abcABC");
    EXPECT_EQ(str.ReplaceNoCase(L"BC", L"x"), 1);
    EXPECT_STREQ(str, L"abcAx");
    EXPECT_EQ(str.ReplaceNoCase(L"Bc", L"x"), 0);
    EXPECT_EQ(str.ReplaceNoCase(L"bc", L"x", 0), 0);
}

TEST(LyStringReplaceNoCase, WithCaseTheServiceIsNotAsked)
{
    FakeStringTools tools;
    LyString str(L"abcABC");
    EXPECT_EQ(str.Replace(L"bc", L"x"), 1);
    EXPECT_EQ(tools.m_Helper.m_nCalls, 0);
}

TEST(LyStringReplaceNoCase, DoesNotBelieveAPlaceOutsideTheString)
{
    FakeStringTools tools;
    for (int nAnswer : {INT_MIN, -3, -1, 2, 3, 4, INT_MAX})
    {
        tools.m_Helper.m_nAnswer = nAnswer;
        LyString str(L"abc");
        EXPECT_EQ(str.ReplaceNoCase(L"bc", L"x"), 0) << nAnswer; // two characters do not fit behind place 1
        EXPECT_STREQ(str, L"abc");
    }
    tools.m_Helper.m_nAnswer = 0; // the same place for ever
    LyString str(L"abc");
    EXPECT_EQ(str.ReplaceNoCase(L"bc", L"x"), 1);
    EXPECT_STREQ(str, L"xc");
}

// ---- Characters

TEST(LyStringReplaceCharacter, WorksInPlace)
{
    LyString str(L"a/b/c");
    const wchar_t* pText = str;
    EXPECT_EQ(str.Replace(L'/', L'\\'), 2);
    EXPECT_STREQ(str, L"a\\b\\c");
    EXPECT_EQ(TextOf(str), pText);
    EXPECT_EQ(str.Replace(L'x', L'y'), 0);
    EXPECT_EQ(LyString().Replace(L'x', L'y'), 0);
}

TEST(LyStringReplaceCharacter, DetachesAtTheFirstHit)
{
    LyString str(L"abc");
    LyString strCopy(str);
    EXPECT_EQ(str.Replace(L'x', L'y'), 0);
    EXPECT_EQ(TextOf(str), TextOf(strCopy));
    EXPECT_EQ(str.Replace(L'b', L'y'), 1);
    EXPECT_STREQ(str, L"ayc");
    EXPECT_STREQ(strCopy, L"abc");
}

TEST(LyStringReplaceCharacter, ZeroEndsTheString)
{
    LyString str(L"ab/cd/e");
    EXPECT_EQ(str.Replace(L'/', L'\0'), 1);
    EXPECT_STREQ(str, L"ab");
    EXPECT_EQ(str.GetLength(), 2);
    str = L"/a";
    EXPECT_EQ(str.Replace(L'/', L'\0'), 1);
    EXPECT_TRUE(str.IsEmpty());
}

TEST(LyStringReplaceCharacter, AZeroMayBeReplaced)
{
    LyString str;
    str.FromStringInMemoryFast(L"a\0b", 3);
    EXPECT_EQ(str.Replace(L'\0', L'-'), 1);
    EXPECT_STREQ(str, L"a-b");
    EXPECT_EQ(str.Replace(L'\0', L'-'), 0); // the terminator is not a part of the text
}
