// GetBuffer and ReleaseBuffer: capacities, locking, detaching.

#include "StringTestSupport.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
int References(const LyString& str) { return BlockOf(str)->GetReferences(); }
} // namespace

struct BUFFER_CASE
{
    const char* pName;
    const wchar_t* pText; // a full string of n characters has the capacity n + 1
    int nMinChars;
    bool bExactSize;
    int nAllocated;
    bool bInPlace;
};

const BUFFER_CASE s_aryBufferCases[] = {
    {"PresentSize", L"1234567", -1, false, 8, true},
    {"SmallerThanTheCapacity", L"1234567", 7, false, 8, true},
    {"EightOnEightDoubles", L"1234567", 8, false, 17, false},
    {"EightOnNineStays", L"12345678", 8, false, 9, true},
    {"EightOnEightExactly", L"1234567", 8, true, 9, false},
    {"FiveGivesEight", L"1234", 5, false, 9, false},
    {"SevenGivesEight", L"1234", 7, false, 9, false},
    {"SixteenGivesThirtyTwo", L"1234", 16, false, 33, false},
    {"PowersOfTwoUpToAMillion", L"1234", 0x100000, false, 0x200001, false},
    {"StepsAboveAMillion", L"1234", 0x100001, false, 0x200001, false},
    {"WholeStepStaysAStep", L"1234", 0x200000, false, 0x200001, false},
    {"LargeExactly", L"1234", 0x100001, true, 0x100002, false},
    {"ZeroIsAlwaysThere", L"1234", 0, true, 5, true},
    {"NegativeIsThePresentSize", L"1234", -17, false, 5, true},
};

TEST(LyStringGetBuffer, OwnedStringGrowsByTheRules)
{
    for (const BUFFER_CASE& row : s_aryBufferCases)
    {
        LyStringGlobals manager;
        ForeignString foreign(manager, row.pText);
        LyString& str = foreign.Get();
        const wchar_t* pOld = str;
        wchar_t* p = str.GetBuffer(row.nMinChars, row.bExactSize, true);
        EXPECT_EQ(p, TextOf(str)) << row.pName;
        EXPECT_EQ(p == pOld, row.bInPlace) << row.pName;
        EXPECT_EQ(BlockOf(str)->nAllocated, row.nAllocated) << row.pName;
        EXPECT_EQ(BlockOf(str)->manager, &manager) << row.pName;
        EXPECT_EQ(References(str), -1) << row.pName;
        EXPECT_STREQ(str, row.pText) << row.pName;
        str.ReleaseBuffer(-1);
    }
}

struct SHARED_CASE
{
    const char* pName;
    int nMinChars;
    int nAllocated;
    const wchar_t* pKept;
};

const SHARED_CASE s_arySharedCases[] = {
    {"PresentSize", -1, 7, L"shared"},
    {"NoRounding", 8, 9, L"shared"},
    {"CutToASmallerSize", 3, 4, L"sha"},
    {"NothingAtAll", 0, 1, L""},
    {"NegativeIsThePresentSize", -9, 7, L"shared"},
};

TEST(LyStringGetBuffer, SharedStringDetachesWithoutRounding)
{
    for (const SHARED_CASE& row : s_arySharedCases)
    {
        for (bool bExactSize : {false, true})
        {
            LyStringGlobals manager;
            ForeignString first(manager, L"shared");
            ForeignString second(manager, L"x");
            second.Get() = first.Get();
            EXPECT_EQ(References(first.Get()), 2);
            LyStringBuffer* pKept;
            while (manager.GetSlotCount() > 0 && (pKept = manager.Construct(0, true)) != nullptr)
                manager.Delete((pKept->nAllocated = 2000, pKept)); // too large to be kept: it is freed
            (void)second.Get().GetBuffer(row.nMinChars, bExactSize, true);
            EXPECT_EQ(BlockOf(second.Get())->nAllocated, row.nAllocated) << row.pName;
            EXPECT_EQ(References(second.Get()), -1) << row.pName;
            EXPECT_EQ(References(first.Get()), 1) << row.pName;
            second.Get().ReleaseBuffer(-1);
            EXPECT_STREQ(second.Get(), row.pKept) << row.pName;
            EXPECT_STREQ(first.Get(), L"shared") << row.pName;
        }
    }
}

TEST(LyStringGetBuffer, EmptyStringAlwaysGetsABlock)
{
    LyStringGlobals manager;
    ForeignString foreign(manager, L"");
    EXPECT_EQ(References(foreign.Get()), 0x7ffffc17);
    wchar_t* p = foreign.Get().GetBuffer(-1, false, true);
    EXPECT_NE(p, manager.GetEmptyLyStringData());
    EXPECT_EQ(BlockOf(foreign.Get())->nAllocated, 1);
    EXPECT_EQ(References(foreign.Get()), -1);
    foreign.Get().ReleaseBuffer(-1);
    EXPECT_TRUE(foreign.Get().IsEmpty());
    EXPECT_EQ(BlockOf(foreign.Get())->nReferences, 1);

    LyString str;
    (void)str.GetBuffer(0, true, false);
    EXPECT_NE(TextOf(str), LyStringGlobals::GetManager()->GetEmptyLyStringData());
    str.ReleaseBuffer(0);
}

TEST(LyStringGetBuffer, ContentsGoIfNotWanted)
{
    LyStringGlobals manager;
    ForeignString foreign(manager, L"1234");
    wchar_t* p = foreign.Get().GetBuffer(40, true, false);
    EXPECT_EQ(p[0], 0);
    foreign.Get().ReleaseBuffer(-1);
    EXPECT_TRUE(foreign.Get().IsEmpty());

    // The present size is there even if nothing of the shared text is kept.
    LyString str(L"shared");
    LyString strCopy(str);
    p = strCopy.GetBuffer(-1, false, false);
    EXPECT_GE(BlockOf(strCopy)->nAllocated, 7);
    std::wmemcpy(p, L"filled", 6);
    strCopy.ReleaseBuffer(6);
    EXPECT_STREQ(strCopy, L"filled");
    EXPECT_STREQ(str, L"shared");
}

TEST(LyStringGetBuffer, LockedStringMayGrowAgain)
{
    LyStringGlobals manager;
    ForeignString foreign(manager, L"12345");
    wchar_t* p = foreign.Get().GetBuffer(-1, false, true);
    p[2] = 0; // the locked length is older than the text
    ASSERT_NE(nullptr, foreign.Get().GetBuffer(40, true, true));
    EXPECT_EQ(BlockOf(foreign.Get())->nLength, 2);
    EXPECT_EQ(References(foreign.Get()), -1);
    EXPECT_EQ(manager.GetSlotCount(), 1); // the locked block went back
    foreign.Get().ReleaseBuffer(-1);
    EXPECT_STREQ(foreign.Get(), L"12");
}

TEST(LyStringGetBuffer, LengthOfAnUnlockedStringIsTrusted)
{
    LyString str;
    str.Assign(L"a\0b", 3);
    (void)str.GetBuffer(2000, true, true);
    EXPECT_EQ(str.GetLength(), 3);
    str.ReleaseBuffer(3);
    EXPECT_EQ(Contents(str), std::wstring(L"a\0b", 3));
}

TEST(LyStringGetBuffer, CopyOfALockedStringIsIndependent)
{
    LyString str(L"before");
    wchar_t* p = str.GetBuffer(-1, false, true);
    LyString strCopy(str);
    LyString strLeft = str.Left(100);
    LyString strMid = str.Mid(0);
    LyString strAssigned;
    strAssigned = str;
    std::wmemcpy(p, L"behind", 6);
    str.ReleaseBuffer(6);
    for (const LyString* pCopy : {&strCopy, &strLeft, &strMid, &strAssigned})
    {
        EXPECT_STREQ(*pCopy, L"before");
        EXPECT_EQ(References(*pCopy), 1);
    }
    EXPECT_STREQ(str, L"behind");
}

TEST(LyStringGetBuffer, HostileSizeLeavesTheString)
{
    LyString str(L"text");
    const wchar_t* p = str;
    EXPECT_EQ(str.GetBuffer(INT_MAX, true, true), nullptr);
    EXPECT_EQ(str.GetBuffer(INT_MAX, false, true), nullptr);
    EXPECT_EQ(TextOf(str), p);
    EXPECT_EQ(References(str), 1);
    LyString strEmpty;
    EXPECT_EQ(strEmpty.GetBuffer(INT_MAX, false, false), nullptr);
    EXPECT_EQ(References(strEmpty), 0x7ffffc17);
}

TEST(LyStringReleaseBuffer, SetsLengthAndTerminator)
{
    LyString str;
    wchar_t* p = str.GetBuffer(10, true, false);
    std::wmemcpy(p, L"0123456789", 10);
    str.ReleaseBuffer(4);
    EXPECT_STREQ(str, L"0123");
    EXPECT_EQ(str.GetLength(), 4);
    EXPECT_EQ(References(str), 1);
}

TEST(LyStringReleaseBuffer, MeasuresToTheFirstZero)
{
    LyString str;
    wchar_t* p = str.GetBuffer(10, true, false);
    std::wmemcpy(p,
                 L"012\0"
                 L"456",
                 8);
    str.ReleaseBuffer(-1);
    EXPECT_STREQ(str, L"012");
    EXPECT_EQ(str.GetLength(), 3);
}

TEST(LyStringReleaseBuffer, StaysInsideTheBuffer)
{
    LyStringGlobals manager;
    ForeignString foreign(manager, L"123");
    wchar_t* p = foreign.Get().GetBuffer(-1, false, true);
    std::wmemcpy(p, L"abcd", 4); // over the terminator
    foreign.Get().ReleaseBuffer(-1);
    EXPECT_STREQ(foreign.Get(), L"abc");
    (void)foreign.Get().GetBuffer(-1, false, true);
    foreign.Get().ReleaseBuffer(INT_MAX);
    EXPECT_EQ(foreign.Get().GetLength(), 3);
    (void)foreign.Get().GetBuffer(-1, false, true);
    foreign.Get().ReleaseBuffer(INT_MIN);
    EXPECT_EQ(foreign.Get().GetLength(), 3);
}

TEST(LyStringReleaseBuffer, WithoutAWritablePointerTouchesNothingShared)
{
    LyString str(L"shared");
    LyString strCopy(str);
    strCopy.ReleaseBuffer(2);
    EXPECT_STREQ(str, L"shared");
    LyString strEmpty;
    strEmpty.ReleaseBuffer(0);
    EXPECT_EQ(References(strEmpty), 0x7ffffc17);
}
