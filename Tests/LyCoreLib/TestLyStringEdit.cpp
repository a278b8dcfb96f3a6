// Changes in place.

#include "StringTestSupport.h"
#include <climits>
#include <clocale>
#include <gtest/gtest.h>
#include <memory>

namespace
{
// The copy must not see a change of the string, and a string without a change must not let go of the copy.
class SharedPair
{
public:
    explicit SharedPair(const wchar_t* pText) : m_str(pText), m_strCopy(m_str), m_pText(pText) {}
    LyString* operator->() { return &m_str; }
    const wchar_t* Text() const { return m_str; }
    bool IsDetached() const
    {
        EXPECT_STREQ(m_strCopy, m_pText);
        return TextOf(m_str) != TextOf(m_strCopy);
    }

private:
    LyString m_str;
    LyString m_strCopy;
    const wchar_t* m_pText;
};
} // namespace

// ---- Removing

TEST(LyStringRemove, CharacterEverywhere)
{
    SharedPair pair(L"a-b--c-");
    EXPECT_EQ(pair->Remove(L'-'), 4);
    EXPECT_STREQ(pair.Text(), L"abc");
    EXPECT_EQ(pair->GetLength(), 3);
    EXPECT_TRUE(pair.IsDetached());
    EXPECT_EQ(pair->Remove(L'a'), 1);
    EXPECT_STREQ(pair.Text(), L"bc");
}

TEST(LyStringRemove, AbsentCharacterLeavesTheStringShared)
{
    SharedPair pair(L"abc");
    EXPECT_EQ(pair->Remove(L'x'), 0);
    EXPECT_FALSE(pair.IsDetached());
    EXPECT_EQ(LyString().Remove(L'x'), 0);
}

struct CUT_CASE
{
    int nLeft;
    int nRight;
    const wchar_t* pText;
};

const CUT_CASE s_aryCutCases[] = {
    {1, 0, L"bcdef"},
    {0, 1, L"abcde"},
    {2, 3, L"c"},
    {3, 3, L""},
    {6, 0, L""},
    {0, 6, L""},
    {7, 0, L""},
    {0, 9, L""},
    {INT_MAX, INT_MAX, L""},
    {-1, 2, L"abcd"},
    {2, -1, L"cdef"},
    {0, 0, L"abcdef"},
    {-5, 0, L"abcdef"},
    {INT_MIN, INT_MIN, L"abcdef"},
    {INT_MIN, 1, L"abcde"},
};

TEST(LyStringRemove, LeftAndRight)
{
    for (const CUT_CASE& row : s_aryCutCases)
    {
        LyString str(L"abcdef");
        str.RemoveLeftAndRight(row.nLeft, row.nRight);
        EXPECT_STREQ(str, row.pText) << row.nLeft << ", " << row.nRight;
        EXPECT_EQ(BlockOf(str)->GetReferences(), 1) << "an owned string keeps its block";
        SharedPair pair(L"abcdef");
        pair->RemoveLeftAndRight(row.nLeft, row.nRight);
        EXPECT_STREQ(pair.Text(), row.pText) << row.nLeft << ", " << row.nRight;
        EXPECT_EQ(pair.IsDetached(), row.nLeft > 0 || row.nRight > 0);
    }
}

TEST(LyStringRemove, OneSide)
{
    LyString str(L"abcdef");
    str.RemoveLeft(2);
    EXPECT_STREQ(str, L"cdef");
    str.RemoveRight(1);
    EXPECT_STREQ(str, L"cde");
    str.RemoveLeft(-1);
    str.RemoveRight(0);
    EXPECT_STREQ(str, L"cde");
    str.RemoveRight(3);
    EXPECT_STREQ(str, L"");
}

TEST(LyStringRemove, Prefix)
{
    LyString str(L"cda://E:");
    EXPECT_FALSE(str.RemoveLeft(L"CDA://", true));
    EXPECT_STREQ(str, L"cda://E:");
    EXPECT_TRUE(str.RemoveLeft(L"CDA://", false));
    EXPECT_STREQ(str, L"E:");
    EXPECT_FALSE(str.RemoveLeft(L"E:/", true));
    EXPECT_FALSE(str.RemoveLeft(L"", true));
    EXPECT_FALSE(str.RemoveLeft(nullptr, true));
    EXPECT_TRUE(str.RemoveLeft(L"E:", true));
    EXPECT_TRUE(str.IsEmpty());
}

TEST(LyStringRemove, Before)
{
    LyString str(L"ab=c=d");
    EXPECT_TRUE(str.RemoveBefore(L'=', false));
    EXPECT_STREQ(str, L"=c=d");
    EXPECT_TRUE(str.RemoveBefore(L'=', true));
    EXPECT_STREQ(str, L"c=d");
    EXPECT_FALSE(str.RemoveBefore(L'x', true));
    EXPECT_STREQ(str, L"c=d");
    EXPECT_TRUE(str.RemoveBefore(L'd', true));
    EXPECT_STREQ(str, L"");
}

struct AFTER_CASE
{
    wchar_t c;
    bool bToo;
    int nStart;
    bool bResult;
    const wchar_t* pText;
};

const AFTER_CASE s_aryAfterCases[] = {
    {L'.', false, 0, true, L"a."},          {L'.', true, 0, true, L"a"},      {L'.', false, 2, true, L"a.b."},
    {L'.', true, 2, true, L"a.b"},          {L'.', true, 4, false, L"a.b.c"}, {L'x', true, 0, false, L"a.b.c"},
    {L'c', false, 0, true, L"a.b.c"},       {L'a', true, 0, true, L""},       {L'.', true, -3, true, L"a"},
    {L'.', true, INT_MAX, false, L"a.b.c"},
};

TEST(LyStringRemove, After)
{
    for (const AFTER_CASE& row : s_aryAfterCases)
    {
        LyString str(L"a.b.c");
        EXPECT_EQ(str.RemoveAfter(row.c, row.bToo, row.nStart), row.bResult);
        EXPECT_STREQ(str, row.pText);
    }
}

TEST(LyStringRemove, AfterIndex)
{
    LyString str(L"abcdef");
    EXPECT_FALSE(str.RemoveAfterIndex(-1, true));
    EXPECT_FALSE(str.RemoveAfterIndex(6, true));
    EXPECT_FALSE(str.RemoveAfterIndex(INT_MAX, false));
    EXPECT_STREQ(str, L"abcdef");
    EXPECT_TRUE(str.RemoveAfterIndex(5, false));
    EXPECT_STREQ(str, L"abcdef");
    EXPECT_TRUE(str.RemoveAfterIndex(3, false));
    EXPECT_STREQ(str, L"abcd");
    EXPECT_TRUE(str.RemoveAfterIndex(2, true));
    EXPECT_STREQ(str, L"ab");
    EXPECT_TRUE(str.RemoveAfterIndex(0, true));
    EXPECT_STREQ(str, L"");
}

TEST(LyStringRemove, AfterTheLast)
{
    LyString str(L"a.b.c");
    EXPECT_TRUE(str.RemoveAfterReverse(L'.', false));
    EXPECT_STREQ(str, L"a.b.");
    EXPECT_TRUE(str.RemoveAfterReverse(L'.', true));
    EXPECT_STREQ(str, L"a.b");
    EXPECT_FALSE(str.RemoveAfterReverse(L'x', true));
}

TEST(LyStringRemove, EndsWithAReleaseOfALockedString)
{
    LyString str(L"abc");
    (void)str.GetBuffer(-1, false, true);
    str.RemoveLeft(1);
    EXPECT_STREQ(str, L"bc");
    EXPECT_EQ(BlockOf(str)->GetReferences(), 1);
}

// ---- Editing

TEST(LyStringInsert, PutsACharacterIn)
{
    SharedPair pair(L"bd");
    EXPECT_EQ(pair->Insert(1, L'c'), 3);
    EXPECT_EQ(pair->Insert(0, L'a'), 4);
    EXPECT_EQ(pair->Insert(4, L'e'), 5);
    EXPECT_STREQ(pair.Text(), L"abcde");
    EXPECT_TRUE(pair.IsDetached());
    LyString strEmpty;
    EXPECT_EQ(strEmpty.Insert(0, L'x'), 1);
    EXPECT_STREQ(strEmpty, L"x");
}

TEST(LyStringInsert, OutsideDoesNothing)
{
    SharedPair pair(L"abc");
    EXPECT_EQ(pair->Insert(-1, L'x'), 3);
    EXPECT_EQ(pair->Insert(4, L'x'), 3);
    EXPECT_EQ(pair->Insert(INT_MAX, L'x'), 3);
    EXPECT_FALSE(pair.IsDetached());
}

struct TRIM_CASE
{
    const wchar_t* pText;
    const wchar_t* pTrimmed;
};

const TRIM_CASE s_aryTrimCases[] = {
    {L"  a b \t\r\n", L"a b"}, {L"a", L"a"}, {L" a", L"a"}, {L"a ", L"a"}, {L" \v\f\t ", L""}, {L"", L""},
};

TEST(LyStringTrim, RemovesWhiteSpaceAtBothEnds)
{
    for (const TRIM_CASE& row : s_aryTrimCases)
    {
        LyString str(row.pText);
        EXPECT_EQ(&str.Trim(), &str);
        EXPECT_STREQ(str, row.pTrimmed);
    }
}

TEST(LyStringTrim, LeavesATrimmedStringShared)
{
    SharedPair pair(L"a b");
    pair->Trim();
    EXPECT_FALSE(pair.IsDetached());
}

TEST(LyStringTrim, KnowsWideWhiteSpace)
{
    if (!std::setlocale(LC_ALL, "C.UTF-8"))
        GTEST_SKIP() << "no UTF-8 locale here";
    LyString str(L"\x2003 a\x2003");
    EXPECT_STREQ(str.Trim(), L"a");
    std::setlocale(LC_ALL, "C");
}

TEST(LyStringTrimLeft, RemovesTheCharacterFromTheFront)
{
    LyString str(L"000700");
    EXPECT_EQ(&str.TrimLeft(L'0'), &str);
    EXPECT_STREQ(str, L"700");
    EXPECT_STREQ(LyString(L"000").TrimLeft(L'0'), L"");
    SharedPair pair(L"abc");
    pair->TrimLeft(L'x');
    EXPECT_FALSE(pair.IsDetached());
}

TEST(LyStringLower, DetachesOnlyForAChange)
{
    SharedPair pair(L"already lower 1");
    pair->Lower();
    EXPECT_FALSE(pair.IsDetached());
    SharedPair upper(L"Some TEXT");
    EXPECT_STREQ(upper->Lower(), L"some text");
    EXPECT_TRUE(upper.IsDetached());
    EXPECT_TRUE(LyString().Lower().IsEmpty());
}

TEST(LyStringLower, WideLettersChangeOnlyUpToTheFirstChange)
{
    if (!std::setlocale(LC_ALL, "C.UTF-8"))
        GTEST_SKIP() << "no UTF-8 locale here";
    // Cyrillic: the first capital is the first change; the letters behind it go through tolower, which knows none.
    LyString str(L"\x44f\x42f\x42f");
    EXPECT_STREQ(str.Lower(), L"\x44f\x44f\x42f");
    LyString strMixed(L"A\x42f");
    EXPECT_STREQ(strMixed.Lower(), L"a\x42f");
    LyString strHostile(L"AB");
    wchar_t* p = strHostile.GetBuffer(-1, false, true);
    p[1] = static_cast<wchar_t>(0x80000001);
    strHostile.ReleaseBuffer(2);
    EXPECT_EQ(strHostile.Lower()[1], static_cast<wchar_t>(0x80000001));
    std::setlocale(LC_ALL, "C");
}

// ---- Arrays with zeros in them

TEST(LyStringRemovePrematureNulls, KeepsWhatIsNotZero)
{
    std::unique_ptr<char[]> pNarrow(LyString::RemovePrematureNulls("a\0b\0\0c", 6));
    EXPECT_STREQ(pNarrow.get(), "abc");
    std::unique_ptr<wchar_t[]> pWide(LyString::RemovePrematureNulls(L"\0x\0", 3));
    EXPECT_STREQ(pWide.get(), L"x");
    const unsigned short nUnits[] = {0, 0x3042, 0, 0x41};
    std::unique_ptr<unsigned short[]> pUnits(LyString::RemovePrematureNulls(nUnits, 4));
    EXPECT_EQ(pUnits[0], 0x3042);
    EXPECT_EQ(pUnits[1], 0x41);
    EXPECT_EQ(pUnits[2], 0);
}

TEST(LyStringRemovePrematureNulls, NothingGivesATerminator)
{
    std::unique_ptr<char[]> pNull(LyString::RemovePrematureNulls(static_cast<const char*>(nullptr), 5));
    EXPECT_EQ(pNull[0], 0);
    std::unique_ptr<char[]> pNegative(LyString::RemovePrematureNulls("abc", -5));
    EXPECT_EQ(pNegative[0], 0);
    std::unique_ptr<char[]> pZeros(LyString::RemovePrematureNulls("\0\0", 2));
    EXPECT_EQ(pZeros[0], 0);
}
