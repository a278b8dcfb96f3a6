// Joining: what the result is, and how much room it takes.

#include "StringTestSupport.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
int References(const LyString& str) { return BlockOf(str)->GetReferences(); }

// Strings that are exactly full come from a manager that keeps no blocks yet.
class LyStringAppendFull : public testing::Test
{
protected:
    LyStringGlobals m_Manager;
};
} // namespace

TEST(LyStringJoin, PlusJoinsTextAndCharacters)
{
    LyString str(L"ab");
    const wchar_t* pNull = nullptr;
    EXPECT_STREQ(str + str, L"abab");
    EXPECT_STREQ(str + L"cd", L"abcd");
    EXPECT_STREQ(L"cd" + str, L"cdab");
    EXPECT_STREQ(str + L'c', L"abc");
    EXPECT_STREQ(L'c' + str, L"cab");
    EXPECT_STREQ(str + pNull, L"ab");
    EXPECT_STREQ(pNull + str, L"ab");
    EXPECT_STREQ(str + L"-" + str + L'!', L"ab-ab!");
    EXPECT_STREQ(str, L"ab");
}

TEST(LyStringJoin, SumWithAnEmptyStringShares)
{
    LyString str(L"ab");
    LyString strSum = str + LyString();
    EXPECT_EQ(TextOf(strSum), TextOf(str));
    LyString strOther = LyString(L"") + str;
    EXPECT_STREQ(strOther, L"ab");
    LyString strText = str + L"";
    EXPECT_EQ(TextOf(strText), TextOf(str));
}

TEST(LyStringJoin, PlusAssignAppends)
{
    LyString str;
    str += L"ab";
    str += LyString(L"cd");
    str += L'e';
    str += static_cast<const wchar_t*>(nullptr);
    str += L"";
    EXPECT_STREQ(str, L"abcde");
    EXPECT_EQ(str.GetLength(), 5);
}

TEST(LyStringJoin, AppendToAnEmptyStringShares)
{
    LyString strSource(L"text");
    LyString str;
    str.Append(strSource);
    EXPECT_EQ(TextOf(str), TextOf(strSource));
    EXPECT_EQ(References(str), 2);
}

TEST(LyStringJoin, AppendDetachesASharedString)
{
    LyString str(L"ab");
    LyString strCopy(str);
    str += L'c';
    EXPECT_STREQ(str, L"abc");
    EXPECT_STREQ(strCopy, L"ab");
    EXPECT_EQ(References(strCopy), 1);
}

TEST(LyStringJoin, AppendedToItselfDuplicates)
{
    LyString str(L"abc");
    str.Append(str);
    EXPECT_STREQ(str, L"abcabc");
    str += str;
    EXPECT_STREQ(str, L"abcabcabcabc");
    LyString strShared(str);
    str.Append(strShared);
    EXPECT_EQ(str.GetLength(), 24);
    LyString strEmpty;
    strEmpty.Append(strEmpty);
    EXPECT_TRUE(strEmpty.IsEmpty());
}

TEST_F(LyStringAppendFull, AppendedToItselfTakesABufferOfTwiceTheLength)
{
    ForeignString foreign(m_Manager, L"abc");
    foreign.Get().Append(foreign.Get());
    EXPECT_STREQ(foreign.Get(), L"abcabc");
    EXPECT_EQ(BlockOf(foreign.Get())->nAllocated, 9); // 6 gives 8, and the terminator
}

TEST(LyStringJoin, AppendedTextMayBePartOfTheString)
{
    LyString str(L"abcd");
    for (int i = 0; i < 10; ++i)
        str += TextOf(str) + str.GetLength() - 3;
    EXPECT_EQ(str.GetLength(), 34);
    EXPECT_STREQ(TextOf(str) + 28, L"bcdbcd");
    LyString strCopy(str);
    str.Append(TextOf(str), 2, -1);
    EXPECT_STREQ(TextOf(str) + 34, L"ab");
    // More than there is of the string itself is cut.
    LyString strShort(L"xyz");
    strShort.Append(TextOf(strShort) + 1, 200, -1);
    EXPECT_STREQ(strShort, L"xyzyz");
}

struct GROW_CASE
{
    const wchar_t* pText;
    int nAppended;
    int nGrowBlock;
    int nAllocated;
};

// A full string of n characters has the capacity n + 1.
const GROW_CASE s_aryGrowCases[] = {
    {L"abcd", 4, -1, 17},     // 8 characters: 16, and the terminator
    {L"abcd", 3, -1, 9},      // 7: 8
    {L"abcd", 4, 10, 11},     // (8 + 1) / 10 + 1 blocks of 10
    {L"abcd", 5, 10, 21},     // (9 + 1) / 10 + 1
    {L"abcd", 1, 1024, 1025}, // (5 + 1) / 1024 + 1
    {L"abcd", 0, 1024, 5},    // nothing to append: nothing to grow
    {L"abcd", 2, 0, 9},       // no block: as GetBuffer
};

TEST(LyStringAppend, GrowsByBlocksOrByDoubling)
{
    for (const GROW_CASE& row : s_aryGrowCases)
    {
        LyStringGlobals manager;
        ForeignString foreign(manager, row.pText);
        foreign.Get().Append(L"0123456789", row.nAppended, row.nGrowBlock);
        EXPECT_EQ(foreign.Get().GetLength(), 4 + row.nAppended);
        EXPECT_EQ(BlockOf(foreign.Get())->nAllocated, row.nAllocated) << row.nAppended << " by " << row.nGrowBlock;
        EXPECT_EQ(References(foreign.Get()), 1);
    }
}

TEST_F(LyStringAppendFull, GrowBlockIsNotUsedWhileThereIsRoom)
{
    ForeignString foreign(m_Manager, L"abcd");
    foreign.Get().Append(L"ef", 2, 100);
    const wchar_t* p = foreign.Get();
    EXPECT_EQ(BlockOf(foreign.Get())->nAllocated, 101);
    foreign.Get().Append(L"gh", 2, 100);
    EXPECT_EQ(TextOf(foreign.Get()), p);
    EXPECT_STREQ(foreign.Get(), L"abcdefgh");
}

TEST(LyStringAppend, HostileLengthsLeaveTheString)
{
    LyString str(L"abc");
    str.Append(L"x", -7, -1);
    EXPECT_STREQ(str, L"abc");
    str.Append(nullptr, 5, -1);
    EXPECT_STREQ(str, L"abc");
    str.Append(L"x", INT_MAX, -1);
    EXPECT_STREQ(str, L"abc");
    str.Append4(L"x", INT_MAX, L"y", INT_MAX, L"z", INT_MAX, nullptr, INT_MAX, 1024);
    EXPECT_STREQ(str, L"abc");
    str.Append(L"x", 1, INT_MAX); // a block that does not fit: grows as without one
    EXPECT_STREQ(str, L"abcx");
    str.Append(L"yz", -1, -1);
    EXPECT_STREQ(str, L"abcxyz");
}

TEST_F(LyStringAppendFull, Append4TakesOneBufferForAll)
{
    ForeignString foreign(m_Manager, L"0");
    LyString& str = foreign.Get();
    str.Append4(L"abc", 2, L"def", 3, nullptr, 9, L"x", 1, -1);
    EXPECT_STREQ(str, L"0abdefx");
    EXPECT_EQ(BlockOf(str)->nAllocated, 9); // 7 gives 8
    EXPECT_EQ(m_Manager.GetSlotCount(), 1); // only the old block came back
    str.Append4(str, 1, TextOf(str) + 1, 2, L"--", 2, nullptr, 0, 50);
    EXPECT_STREQ(str, L"0abdefx0ab--");
    EXPECT_EQ(BlockOf(str)->nAllocated, 51);
}

TEST(LyStringAppend, AppendLeftPutsCharactersInFront)
{
    LyString str(L"7");
    LyString strCopy(str);
    str.AppendLeft(L'0', 3);
    EXPECT_STREQ(str, L"0007");
    EXPECT_STREQ(strCopy, L"7");
    str.AppendLeft(L'x', 0);
    str.AppendLeft(L'x', -4);
    str.AppendLeft(L'x', INT_MAX);
    EXPECT_STREQ(str, L"0007");
    LyString strEmpty;
    strEmpty.AppendLeft(L'a', 2);
    EXPECT_STREQ(strEmpty, L"aa");
}
