// Making, assigning, sharing and comparing.

#include "StringTestSupport.h"
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{
int References(const LyString& str) { return BlockOf(str)->GetReferences(); }

// Strings of exactly this capacity come from a manager that keeps no blocks yet.
class LyStringForeign : public testing::Test
{
protected:
    LyStringGlobals m_Manager;
};
} // namespace

// ---- Making

TEST(LyString, DefaultIsTheSharedEmptyString)
{
    LyString str;
    EXPECT_TRUE(str.IsEmpty());
    EXPECT_EQ(str.GetLength(), 0);
    EXPECT_STREQ(str, L"");
    EXPECT_EQ(TextOf(str), LyStringGlobals::GetManager()->GetEmptyLyStringData());
    EXPECT_EQ(References(str), 0x7ffffc17);
}

TEST(LyString, PassesAsTextAndIndexes)
{
    LyString str(L"abc");
    const wchar_t* p = str;
    EXPECT_STREQ(p, L"abc");
    EXPECT_EQ(str[1], L'b');
    EXPECT_EQ(str[2L], L'c');
    EXPECT_EQ(str[size_t{0}], L'a');
    EXPECT_EQ(str[3], 0);
    EXPECT_EQ(References(str), 1);
}

TEST(LyString, NullAndEmptyTextAreEmpty)
{
    EXPECT_EQ(References(LyString(static_cast<const wchar_t*>(nullptr))), 0x7ffffc17);
    EXPECT_EQ(References(LyString(L"")), 0x7ffffc17);
}

TEST(LyString, CopyShares)
{
    LyString str(L"shared");
    {
        LyString strCopy(str);
        LyString strThird(strCopy);
        EXPECT_EQ(TextOf(strThird), TextOf(str));
        EXPECT_EQ(References(str), 3);
    }
    EXPECT_EQ(References(str), 1);
}

TEST(LyString, SharedEmptyStringIsNeverCounted)
{
    LyString str;
    LyString strCopy(str);
    LyString strThird = strCopy;
    strThird = str;
    EXPECT_EQ(References(str), 0x7ffffc17);
}

TEST(LyString, MoveTakesTheBlock)
{
    LyString str(L"moved");
    const wchar_t* p = str;
    LyString strTarget(std::move(str));
    EXPECT_EQ(TextOf(strTarget), p);
    EXPECT_EQ(References(strTarget), 1);
    EXPECT_TRUE(str.IsEmpty());
    LyString strAssigned(L"old");
    strAssigned = std::move(strTarget);
    EXPECT_EQ(TextOf(strAssigned), p);
    EXPECT_TRUE(strTarget.IsEmpty());
}

TEST(LyString, MoveToItselfKeepsTheText)
{
    LyString str(L"self");
    LyString& strSame = str;
    str = std::move(strSame);
    EXPECT_STREQ(str, L"self");
    EXPECT_EQ(References(str), 1);
}

TEST(LyString, MoveOfALockedStringCopies)
{
    LyString str(L"locked");
    wchar_t* p = str.GetBuffer(-1, false, true);
    LyString strMade(std::move(str));
    LyString strAssigned;
    strAssigned = std::move(str);
    p[0] = L'L';
    str.ReleaseBuffer(-1);
    EXPECT_STREQ(strMade, L"locked");
    EXPECT_STREQ(strAssigned, L"locked");
    EXPECT_STREQ(str, L"Locked");
}

// ---- Assigning

TEST(LyStringAssign, SharesWithinAManager)
{
    LyString str(L"text");
    LyString strTarget(L"other");
    strTarget = str;
    EXPECT_EQ(TextOf(strTarget), TextOf(str));
    EXPECT_EQ(References(str), 2);
}

TEST(LyStringAssign, ToItselfDoesNothing)
{
    LyString str(L"text");
    const wchar_t* p = str;
    LyString& strSame = str;
    str = strSame;
    str = p;
    EXPECT_EQ(TextOf(str), p);
    EXPECT_EQ(References(str), 1);
}

TEST(LyStringAssign, OfASharedCopyKeepsTheCount)
{
    LyString str(L"text");
    LyString strCopy(str);
    strCopy = str;
    EXPECT_EQ(References(str), 2);
}

TEST(LyStringAssign, ReleasesTheOldBlock)
{
    LyString strOld(L"old");
    LyString strTarget(strOld);
    strTarget = LyString(L"new");
    EXPECT_EQ(References(strOld), 1);
    EXPECT_STREQ(strTarget, L"new");
}

TEST(LyStringAssign, OfAnEmptyStringKeepsTheCapacity)
{
    LyString str(L"a text of some length");
    const wchar_t* p = str;
    str = LyString();
    EXPECT_TRUE(str.IsEmpty());
    EXPECT_EQ(TextOf(str), p);
    str = L"";
    EXPECT_EQ(TextOf(str), p);
    str = static_cast<const wchar_t*>(nullptr);
    EXPECT_EQ(TextOf(str), p);
}

TEST(LyStringAssign, TextMayBePartOfTheString)
{
    LyString str(L"abcdef");
    str = TextOf(str) + 2;
    EXPECT_STREQ(str, L"cdef");
    LyString strCopy(str);
    str = TextOf(str) + 1; // shared: a new block
    EXPECT_STREQ(str, L"def");
    EXPECT_STREQ(strCopy, L"cdef");
    str = TextOf(str) + 3;
    EXPECT_TRUE(str.IsEmpty());
}

TEST(LyStringAssign, OfTextDetachesASharedString)
{
    LyString str(L"text");
    LyString strCopy(str);
    str = L"abc";
    EXPECT_STREQ(str, L"abc");
    EXPECT_STREQ(strCopy, L"text");
    EXPECT_EQ(References(strCopy), 1);
}

TEST(LyStringAssign, ExactCopyTakesZerosToo)
{
    LyString str;
    str.Assign(L"a\0bc", 3);
    EXPECT_EQ(Contents(str), std::wstring(L"a\0b", 3));
    str.Assign(L"measured", -1);
    EXPECT_STREQ(str, L"measured");
    str.Assign(nullptr, 4);
    EXPECT_TRUE(str.IsEmpty());
}

TEST(LyStringAssign, LeavesALockedStringLocked)
{
    LyString strSource(L"source");
    LyString str(L"target");
    (void)str.GetBuffer(-1, false, true);
    str = strSource;
    EXPECT_STREQ(str, L"source");
    EXPECT_NE(TextOf(str), TextOf(strSource));
    EXPECT_EQ(References(str), -1);
    EXPECT_EQ(References(strSource), 1);
    str.ReleaseBuffer(3);
    EXPECT_STREQ(str, L"sou");
    EXPECT_EQ(References(str), 1);
}

TEST(LyStringAssign, OfTextLeavesALockedStringLocked)
{
    LyString str(L"target");
    (void)str.GetBuffer(-1, false, true);
    str = L"text";
    EXPECT_EQ(References(str), -1);
    str = L"a text that does not fit into what it had before, even if that was a block with room to spare";
    EXPECT_EQ(References(str), -1);
    str.ReleaseBuffer(6);
    EXPECT_STREQ(str, L"a text");
}

TEST(LyStringAssign, MoveLeavesALockedTargetLocked)
{
    LyString str(L"target");
    (void)str.GetBuffer(-1, false, true);
    str = LyString(L"source");
    EXPECT_EQ(References(str), -1);
    str.ReleaseBuffer(-1);
    EXPECT_STREQ(str, L"source");
}

// ---- Emptying

TEST(LyStringEmpty, OwnedStringKeepsItsCapacity)
{
    LyString str(L"text");
    int nAllocated = BlockOf(str)->nAllocated;
    const wchar_t* p = str;
    str.Empty();
    EXPECT_EQ(TextOf(str), p);
    EXPECT_EQ(str.GetLength(), 0);
    EXPECT_EQ(str[0], 0);
    EXPECT_EQ(BlockOf(str)->nAllocated, nAllocated);
    EXPECT_EQ(References(str), 1);
}

TEST(LyStringEmpty, SharedStringBecomesTheSharedEmptyString)
{
    LyString str(L"text");
    LyString strCopy(str);
    str.Empty();
    EXPECT_EQ(TextOf(str), LyStringGlobals::GetManager()->GetEmptyLyStringData());
    EXPECT_STREQ(strCopy, L"text");
    EXPECT_EQ(References(strCopy), 1);
}

TEST(LyStringEmpty, LockedStringStaysLocked)
{
    LyString str(L"text");
    wchar_t* p = str.GetBuffer(-1, false, true);
    str.Empty();
    EXPECT_EQ(TextOf(str), p);
    EXPECT_EQ(References(str), -1);
    EXPECT_EQ(str.GetLength(), 0);
    str.ReleaseBuffer(-1);
    EXPECT_EQ(References(str), 1);
}

// ---- Two managers

TEST_F(LyStringForeign, CopyIsNeverShared)
{
    ForeignString foreign(m_Manager, L"foreign");
    LyString strCopy(foreign.Get());
    EXPECT_NE(TextOf(strCopy), TextOf(foreign.Get()));
    EXPECT_EQ(BlockOf(strCopy)->manager, LyStringGlobals::GetManager());
    EXPECT_STREQ(strCopy, L"foreign");
    EXPECT_EQ(References(foreign.Get()), 1);
}

TEST_F(LyStringForeign, EmptyCopyIsOurEmptyString)
{
    ForeignString foreign(m_Manager, L"");
    EXPECT_EQ(TextOf(LyString(foreign.Get())), LyStringGlobals::GetManager()->GetEmptyLyStringData());
}

TEST_F(LyStringForeign, CopyEndsAtTheFirstZero)
{
    ForeignString foreign(m_Manager, L"ab");
    foreign.Get().Assign(L"a\0b", 3);
    EXPECT_EQ(foreign.Get().GetLength(), 3);
    EXPECT_EQ(LyString(foreign.Get()).GetLength(), 1);
}

TEST_F(LyStringForeign, MoveCopies)
{
    ForeignString foreign(m_Manager, L"foreign");
    LyString strMade(std::move(foreign.Get()));
    EXPECT_EQ(BlockOf(strMade)->manager, LyStringGlobals::GetManager());
    LyString strAssigned(L"x");
    strAssigned = std::move(foreign.Get());
    EXPECT_EQ(BlockOf(strAssigned)->manager, LyStringGlobals::GetManager());
    EXPECT_STREQ(strAssigned, L"foreign");
}

TEST_F(LyStringForeign, AssignmentToItIsNotSharedEither)
{
    LyString strOurs(L"ours");
    ForeignString foreign(m_Manager, L"foreign");
    foreign.Get() = strOurs;
    EXPECT_STREQ(foreign.Get(), L"ours");
    EXPECT_NE(TextOf(foreign.Get()), TextOf(strOurs));
    EXPECT_EQ(References(strOurs), 1);
}

TEST_F(LyStringForeign, TwoOfOneManagerShare)
{
    ForeignString first(m_Manager, L"first");
    ForeignString second(m_Manager, L"second");
    first.Get() = second.Get();
    EXPECT_EQ(TextOf(first.Get()), TextOf(second.Get()));
    EXPECT_EQ(References(second.Get()), 2);
    ForeignString third(m_Manager, L"third");
    const wchar_t* p = third.Get();
    first.Get() = std::move(third.Get());
    EXPECT_EQ(TextOf(first.Get()), p);
    EXPECT_EQ(TextOf(third.Get()), m_Manager.GetEmptyLyStringData());
}

TEST_F(LyStringForeign, LastReferenceGoesBackToItsManager)
{
    int nOurs = LyStringGlobals::GetGlobals().GetSlotCount();
    {
        ForeignString foreign(m_Manager, L"foreign");
        EXPECT_EQ(m_Manager.GetSlotCount(), 0);
    }
    EXPECT_EQ(m_Manager.GetSlotCount(), 1);
    EXPECT_EQ(LyStringGlobals::GetGlobals().GetSlotCount(), nOurs);
}

TEST_F(LyStringForeign, SharedOneEmptiesToItsManagersEmptyString)
{
    ForeignString first(m_Manager, L"first");
    ForeignString second(m_Manager, L"second");
    first.Get() = second.Get();
    first.Get().Empty();
    EXPECT_EQ(TextOf(first.Get()), m_Manager.GetEmptyLyStringData());
}

TEST_F(LyStringForeign, LockedOneIsAssignedByACopyOfItsManager)
{
    ForeignString first(m_Manager, L"first");
    ForeignString second(m_Manager, L"second");
    (void)first.Get().GetBuffer(-1, false, true);
    first.Get() = second.Get();
    EXPECT_NE(TextOf(first.Get()), TextOf(second.Get()));
    EXPECT_EQ(References(first.Get()), -1);
    EXPECT_EQ(BlockOf(first.Get())->manager, &m_Manager);
    first.Get().ReleaseBuffer(-1);
    EXPECT_STREQ(first.Get(), L"second");
}

// ---- Comparing

TEST(LyStringEqual, ComparesAllCharacters)
{
    LyString str(L"text");
    LyString strSame(L"text");
    EXPECT_TRUE(str == strSame);
    EXPECT_TRUE(str == L"text");
    EXPECT_TRUE(L"text" == str);
    EXPECT_TRUE(str != LyString(L"Text"));
    EXPECT_TRUE(str != L"tex");
    EXPECT_TRUE(str != L"texts");
    EXPECT_FALSE(str == LyString(L"tex"));
}

TEST(LyStringEqual, NullEqualsTheEmptyString)
{
    const wchar_t* pNull = nullptr;
    EXPECT_TRUE(LyString() == pNull);
    EXPECT_TRUE(LyString(L"x") != pNull);
    EXPECT_TRUE(LyString() == L"");
}

// ---- Threads

TEST(LyStringThreads, CopiesOfOneBlockMayGoToDifferentThreads)
{
    LyString str(L"shared by all");
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < 4; ++i)
        aryThreads.emplace_back(
            [strMine = str, i]() mutable
            {
                for (int n = 0; n < 1000; ++n)
                {
                    LyString strCopy(strMine);
                    strCopy += static_cast<wchar_t>(L'0' + i);
                    LyString strOther;
                    strOther = strMine;
                    ASSERT_EQ(strCopy.GetLength(), 14);
                    ASSERT_EQ(strOther.GetLength(), 13);
                }
            });
    for (auto& thread : aryThreads)
        thread.join();
    EXPECT_EQ(References(str), 1);
    EXPECT_STREQ(str, L"shared by all");
}

TEST(LyStringThreads, LastTwoOwnersMayDetachAtOnce)
{
    for (int n = 0; n < 300; ++n)
    {
        LyString strA(L"both");
        LyString strB(strA);
        std::thread thread([str = std::move(strB)]() mutable { str += L" ends"; });
        strA += L" ends";
        thread.join();
        ASSERT_STREQ(strA, L"both ends");
    }
}

TEST(LyStringStubs, DoNothing)
{
    OutputDebugString(L"text");
    OutputDebugString(nullptr);
    NotImplemented(LyString(L"operation"));
}
