#include "LyArray.h"
#include "LyStringFormat.h"
#include <climits>
#include <gtest/gtest.h>
#include <vector>

namespace
{
using CNumbers = LyNumberArray<int>;

CNumbers Numbers(std::initializer_list<int> values)
{
    CNumbers ary;
    for (int n : values)
        ary.Add(n);
    return ary;
}

std::vector<int> Values(const CNumbers& ary) { return std::vector<int>(ary.begin(), ary.end()); }

// Notes which elements passed the hook.
class HookedArray : public LyCoreArray<int, int, false>
{
public:
    ~HookedArray() override { RemoveAll(true); }
    int SetAt(int nIndex, int value, bool bDestroyExisting) override
    {
        ++m_nSets;
        return LyCoreArray::SetAt(nIndex, value, bDestroyExisting);
    }
    void DestroyElement(int nIndex) override { m_aryDestroyed.push_back(m_pData[nIndex]); }

    int m_nSets = 0;
    std::vector<int> m_aryDestroyed;
};

template <class T>
bool IsZero(const T* p, int nCount)
{
    const unsigned char* pBytes = reinterpret_cast<const unsigned char*>(p);
    for (size_t i = 0; i < static_cast<size_t>(nCount) * sizeof(T); ++i)
    {
        if (pBytes[i] != 0)
            return false;
    }
    return true;
}

void** TableOf(void* pObject) { return *static_cast<void***>(pObject); }
} // namespace

// The virtual table, three counters, the pointer to the elements.
static_assert(sizeof(LyCoreArray<int, int, true>) == 32);
static_assert(sizeof(LyStringArray) == 32 && sizeof(LyCommandLine) == 32);
static_assert(std::is_base_of_v<LyArray<double, double, true>, LyNumberArray<double>>);

struct GROWTH_CASE
{
    int nGrowBlock;
    int nSize;
    int nCapacity;
};

class LyArrayGrowth : public testing::TestWithParam<GROWTH_CASE>
{
};

TEST_P(LyArrayGrowth, GivesTheCapacity)
{
    CNumbers ary;
    ary.SetGrowBlock(GetParam().nGrowBlock);
    EXPECT_EQ(ary.NewAllocationSize(GetParam().nSize), GetParam().nCapacity);
}

INSTANTIATE_TEST_SUITE_P(Table, LyArrayGrowth,
                         testing::Values(GROWTH_CASE{-1, 0, 4}, GROWTH_CASE{-1, 1, 4}, GROWTH_CASE{-1, 4, 4},
                                         GROWTH_CASE{-1, 5, 64}, GROWTH_CASE{-1, 64, 64}, GROWTH_CASE{-1, 65, 256},
                                         GROWTH_CASE{-1, 256, 256}, GROWTH_CASE{-1, 257, 1024},
                                         GROWTH_CASE{-1, 1024, 1024}, GROWTH_CASE{-1, 1025, 4096},
                                         GROWTH_CASE{-1, 4096, 4096}, GROWTH_CASE{-1, 4097, 16384},
                                         GROWTH_CASE{-1, 16384, 16384}, GROWTH_CASE{-1, 16385, 65536},
                                         GROWTH_CASE{-1, 65536, 65536}, GROWTH_CASE{-1, 65537, 131073},
                                         GROWTH_CASE{-1, 1000000, 1065536}));
INSTANTIATE_TEST_SUITE_P(GrowBlock, LyArrayGrowth,
                         testing::Values(GROWTH_CASE{10, 9, 10}, GROWTH_CASE{10, 10, 20}, GROWTH_CASE{10, 0, 10},
                                         GROWTH_CASE{1, 5, 6}, GROWTH_CASE{1000, 1, 1000}));
INSTANTIATE_TEST_SUITE_P(Hostile, LyArrayGrowth,
                         testing::Values(GROWTH_CASE{-1, INT_MAX, INT_MAX}, GROWTH_CASE{-1, INT_MAX - 65535, INT_MAX},
                                         GROWTH_CASE{10, INT_MAX, INT_MAX}, GROWTH_CASE{0, 5, 64},
                                         GROWTH_CASE{-7, 5, 64}, GROWTH_CASE{-1, -5, 4},
                                         GROWTH_CASE{INT_MAX, INT_MAX, INT_MAX}));

TEST(LyArrayBase, StartsEmptyWithTheGrowthTable)
{
    const LyArrayBase base;
    EXPECT_EQ(base.m_nCount, 0);
    EXPECT_EQ(base.m_nAllocated, 0);
    EXPECT_EQ(base.m_nGrowBlock, -1);
}

TEST(LyArrayBase, GrowHelperIgnoresWhatFits)
{
    LyArrayBase base;
    void* p = nullptr;
    ASSERT_TRUE(base.GrowAllocatedHelper(p, 4, 10, true, true, true));
    EXPECT_EQ(base.m_nAllocated, 10);
    void* pBefore = p;
    EXPECT_TRUE(base.GrowAllocatedHelper(p, 4, 10, true, true, true));
    EXPECT_TRUE(base.GrowAllocatedHelper(p, 4, 3, true, true, true));
    EXPECT_EQ(p, pBefore);
    EXPECT_EQ(base.m_nAllocated, 10);
    delete[] static_cast<unsigned char*>(p);
}

TEST(LyArrayBase, GrowHelperKeepsTheCountAndZeroesTheRest)
{
    LyArrayBase base;
    void* p = nullptr;
    ASSERT_TRUE(base.GrowAllocatedHelper(p, 4, 3, false, true, true));
    ASSERT_EQ(base.m_nAllocated, 4);
    int* pNumbers = static_cast<int*>(p);
    pNumbers[0] = 11;
    pNumbers[1] = 22;
    pNumbers[2] = 33; // behind the count: not kept
    base.m_nCount = 2;
    ASSERT_TRUE(base.GrowAllocatedHelper(p, 4, 5, false, true, true));
    EXPECT_EQ(base.m_nAllocated, 64);
    pNumbers = static_cast<int*>(p);
    EXPECT_EQ(pNumbers[0], 11);
    EXPECT_EQ(pNumbers[1], 22);
    EXPECT_TRUE(IsZero(pNumbers + 2, 62));
    delete[] static_cast<unsigned char*>(p);
}

TEST(LyArrayBase, GrowHelperRefusesImpossibleSizes)
{
    LyArrayBase base;
    void* p = nullptr;
    EXPECT_TRUE(base.GrowAllocatedHelper(p, 4, -1, true, true, true)); // fits into nothing
    EXPECT_FALSE(base.GrowAllocatedHelper(p, INT_MAX, INT_MAX, true, false, false));
    EXPECT_FALSE(base.GrowAllocatedHelper(p, 0, 5, true, false, false));
    EXPECT_FALSE(base.GrowAllocatedHelper(p, -4, 5, true, false, false));
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(base.m_nAllocated, 0);
}

TEST(LyCoreArraySetSize, GrowsByStepsOrExactly)
{
    CNumbers aryStepped;
    EXPECT_TRUE(aryStepped.SetSize(5, false, true, true));
    EXPECT_EQ(aryStepped.GetSize(), 5);
    EXPECT_EQ(aryStepped.GetAllocated(), 64);
    CNumbers aryExact;
    EXPECT_TRUE(aryExact.SetSize(5, true, true, true));
    EXPECT_EQ(aryExact.GetAllocated(), 5);
}

TEST(LyCoreArraySetSize, NewPlainElementsAreZero)
{
    CNumbers ary;
    ary.SetSize(3, false, true, true);
    EXPECT_TRUE(IsZero(ary.GetData(), 3));
}

TEST(LyCoreArraySetSize, ZeroesNewPlainElementsInPlaceToo)
{
    CNumbers ary;
    ary.SetSize(2, false, false, true);
    ary.GetData()[2] = 77; // a spare slot: there is room for four
    ary.SetSize(3, false, true, true);
    EXPECT_EQ(ary[2], 0);
}

TEST(LyCoreArraySetSize, SmallerRemovesFromTheEndAndKeepsCapacity)
{
    CNumbers ary = Numbers({1, 2, 3, 4, 5});
    EXPECT_TRUE(ary.SetSize(2, true, true, true));
    EXPECT_EQ(Values(ary), std::vector<int>({1, 2}));
    EXPECT_EQ(ary.GetAllocated(), 64);
    EXPECT_TRUE(ary.SetSize(0, true, true, true));
    EXPECT_EQ(ary.GetSize(), 0);
    EXPECT_EQ(ary.GetAllocated(), 64);
}

TEST(LyCoreArraySetSize, RefusesNegativeAndImpossibleSizes)
{
    struct BIG
    {
        char data[4096];
    };
    CNumbers ary = Numbers({1, 2});
    EXPECT_FALSE(ary.SetSize(-1, false, true, true));
    EXPECT_FALSE(ary.SetSize(INT_MIN, false, true, true));
    EXPECT_EQ(Values(ary), std::vector<int>({1, 2}));
    LyArray<BIG, const BIG&, true> aryBig;
    EXPECT_FALSE(aryBig.SetSize(INT_MAX, true, false, false));
    EXPECT_EQ(aryBig.GetSize(), 0);
}

TEST(LyCoreArraySetSize, NewStringsAreTheSharedEmptyString)
{
    LyStringArray ary;
    ary.SetSize(3, false, true, true);
    const wchar_t* pEmpty = LyStringGlobals::GetManager()->GetEmptyLyStringData();
    for (const LyString& str : ary)
        EXPECT_EQ(static_cast<const wchar_t*>(str), pEmpty);
}

TEST(LyCoreArraySetSize, StringsSurviveGrowthWithoutKeepContents)
{
    LyStringArray ary;
    ary.Add(L"one");
    ary.SetSize(100, true, false, false);
    EXPECT_STREQ(ary[0], L"one");
    EXPECT_STREQ(ary[99], L"");
}

TEST(LyCoreArraySetAt, ReturnsTheIndexAndCallsTheHookOnlyWhenAsked)
{
    HookedArray ary;
    ary.SetSize(2, false, true, true);
    EXPECT_EQ(ary.SetAt(1, 5, false), 1);
    EXPECT_TRUE(ary.m_aryDestroyed.empty());
    EXPECT_EQ(ary.SetAt(1, 6, true), 1);
    EXPECT_EQ(ary.m_aryDestroyed, std::vector<int>({5}));
    EXPECT_EQ(ary[1], 6);
}

TEST(LyCoreArraySetAtGrow, GrowsBehindTheEndAndReplacesBefore)
{
    CNumbers ary = Numbers({1, 2, 3, 4, 5});
    EXPECT_EQ(ary.SetAtGrow(5, 6), 5);
    EXPECT_EQ(ary.GetSize(), 6);
    EXPECT_EQ(ary.SetAtGrow(0, 9), 0);
    EXPECT_EQ(Values(ary), std::vector<int>({9, 2, 3, 4, 5, 6}));
}

TEST(LyCoreArraySetAtGrow, LeavesEmptyElementsInAGap)
{
    LyStringArray ary;
    EXPECT_EQ(ary.SetAtGrow(3, L"four"), 3);
    EXPECT_EQ(ary.GetSize(), 4);
    EXPECT_STREQ(ary[0], L"");
    EXPECT_STREQ(ary[2], L"");
    EXPECT_STREQ(ary[3], L"four");
}

TEST(LyCoreArraySetAtGrow, GoesThroughSetAtAndDestroysNothing)
{
    HookedArray ary;
    ary.SetAtGrow(0, 1);
    ary.SetAtGrow(0, 2);
    EXPECT_EQ(ary.m_nSets, 2);
    EXPECT_TRUE(ary.m_aryDestroyed.empty());
}

TEST(LyCoreArraySetAtGrow, RefusesBadIndexes)
{
    CNumbers ary = Numbers({1});
    EXPECT_EQ(ary.SetAtGrow(-1, 5), -1);
    EXPECT_EQ(ary.SetAtGrow(INT_MIN, 5), -1);
    EXPECT_EQ(ary.SetAtGrow(INT_MAX, 5), -1);
    EXPECT_EQ(Values(ary), std::vector<int>({1}));
}

TEST(LyCoreArrayAdd, ReturnsTheIndex)
{
    CNumbers ary;
    EXPECT_EQ(ary.Add(7), 0);
    EXPECT_EQ(ary.Add(8), 1);
    EXPECT_EQ(ary.GetData()[1], 8);
}

TEST(LyCoreArrayAdd, TakesAnElementOfItselfWhileGrowing)
{
    LyStringArray ary;
    for (int i = 0; i < 4; ++i)
        ary.Add(LyFormatString(L"%d", i));
    ASSERT_EQ(ary.GetAllocated(), 4);
    EXPECT_EQ(ary.Add(ary[1]), 4);
    EXPECT_STREQ(ary[1], L"1");
    EXPECT_STREQ(ary[4], L"1");
}

struct REMOVE_CASE
{
    const char* pName;
    int nIndex;
    int nCount;
    std::vector<int> aryLeft; // of 1 2 3 4 5
};

class LyCoreArrayRemoveAt : public testing::TestWithParam<REMOVE_CASE>
{
};

TEST_P(LyCoreArrayRemoveAt, LeavesTheRestAndZeroesSpareSlots)
{
    CNumbers ary = Numbers({1, 2, 3, 4, 5});
    ary.RemoveAt(GetParam().nIndex, GetParam().nCount);
    EXPECT_EQ(Values(ary), GetParam().aryLeft);
    EXPECT_EQ(ary.GetAllocated(), 64);
    EXPECT_TRUE(IsZero(ary.GetData() + ary.GetSize(), 64 - ary.GetSize()));
}

INSTANTIATE_TEST_SUITE_P(
    Table, LyCoreArrayRemoveAt,
    testing::Values(REMOVE_CASE{"ClampsTheCount", 2, 100, {1, 2}},
                    REMOVE_CASE{"ClampsTheLargestCount", 4, INT_MAX, {1, 2, 3, 4}},
                    REMOVE_CASE{"MovesTheTailDown", 1, 2, {1, 4, 5}}, REMOVE_CASE{"FirstElement", 0, 1, {2, 3, 4, 5}},
                    REMOVE_CASE{"LastElement", 4, 1, {1, 2, 3, 4}}, REMOVE_CASE{"AllElements", 0, 5, {}},
                    REMOVE_CASE{"IndexAtTheCount", 5, 1, {1, 2, 3, 4, 5}},
                    REMOVE_CASE{"IndexBehindTheCount", 99, 1, {1, 2, 3, 4, 5}},
                    REMOVE_CASE{"NegativeIndex", -1, 2, {1, 2, 3, 4, 5}}, REMOVE_CASE{"NoCount", 1, 0, {1, 2, 3, 4, 5}},
                    REMOVE_CASE{"NegativeCount", 1, -3, {1, 2, 3, 4, 5}}),
    [](const auto& row) { return row.param.pName; });

TEST(LyCoreArrayRemoval, PassesEachElementThroughTheHookInOrder)
{
    HookedArray ary;
    for (int i = 1; i <= 5; ++i)
        ary.Add(i);
    ary.RemoveAt(1, 2);
    EXPECT_EQ(ary.m_aryDestroyed, std::vector<int>({2, 3}));
    ary.RemoveAll(false);
    EXPECT_EQ(ary.m_aryDestroyed, std::vector<int>({2, 3, 1, 4, 5}));
}

TEST(LyCoreArrayRemoval, DropsTheReferencesOfStrings)
{
    const LyString str(L"shared");
    const LyStringBuffer* pBlock =
        LyStringBuffer::FromCharacters(const_cast<wchar_t*>(static_cast<const wchar_t*>(str)));
    LyStringArray ary;
    for (int i = 0; i < 6; ++i)
        ary.Add(str);
    EXPECT_EQ(pBlock->GetReferences(), 7);
    ary.RemoveAt(1, 2);
    EXPECT_EQ(pBlock->GetReferences(), 5);
    ary.RemoveAll(false);
    EXPECT_EQ(pBlock->GetReferences(), 1);
}

TEST(LyCoreArrayRemoval, SlotsAreUsableAgain)
{
    LyStringArray ary;
    ary.InitFromList(L"a,b,c", L",");
    ary.RemoveAt(0, 3);
    EXPECT_TRUE(IsZero(ary.GetData(), 3));
    ary.Add(L"new");
    EXPECT_STREQ(ary[0], L"new");
    ary.RemoveAll(false);
    EXPECT_TRUE(IsZero(ary.GetData(), 1));
    ary.SetSize(2, false, true, true);
    EXPECT_STREQ(ary[1], L"");
}

TEST(LyCoreArrayRemoveAll, KeepsOrFreesTheMemory)
{
    CNumbers ary = Numbers({1, 2, 3});
    ary.RemoveAll(false);
    EXPECT_EQ(ary.GetSize(), 0);
    EXPECT_EQ(ary.GetAllocated(), 4);
    EXPECT_NE(ary.GetData(), nullptr);
    ary.RemoveAll(true);
    EXPECT_EQ(ary.GetAllocated(), 0);
    EXPECT_EQ(ary.GetData(), nullptr);
    ary.RemoveAll(true);
    ary.RemoveAll(false);
    EXPECT_EQ(ary.GetSize(), 0);
}

TEST(LyCoreArrayAppend, AddsCopies)
{
    CNumbers ary = Numbers({1, 2});
    EXPECT_TRUE(ary.Append(Numbers({3, 4, 5})));
    EXPECT_EQ(Values(ary), std::vector<int>({1, 2, 3, 4, 5}));
    EXPECT_TRUE(ary.Append(CNumbers()));
    EXPECT_EQ(ary.GetSize(), 5);
}

TEST(LyCoreArrayAppend, WorksOnItself)
{
    LyStringArray ary;
    ary.InitFromList(L"a,b,c", L",");
    EXPECT_TRUE(ary.Append(ary));
    EXPECT_STREQ(ary.GetList(L","), L"a,b,c,a,b,c");
    CNumbers aryNumbers = Numbers({1, 2, 3});
    EXPECT_TRUE(aryNumbers.Append(aryNumbers));
    EXPECT_EQ(Values(aryNumbers), std::vector<int>({1, 2, 3, 1, 2, 3}));
}

TEST(LyCoreArrayCopy, CopiesAreIndependent)
{
    LyStringArray ary;
    ary.InitFromList(L"a,b", L",");
    LyStringArray aryCopy(ary);
    aryCopy[0] = L"changed";
    EXPECT_STREQ(ary[0], L"a");
    LyStringArray aryAssigned;
    aryAssigned.Add(L"old");
    aryAssigned = ary;
    EXPECT_STREQ(aryAssigned.GetList(L","), L"a,b");
    const LyStringArray& arySame = aryAssigned;
    aryAssigned = arySame;
    EXPECT_STREQ(aryAssigned.GetList(L","), L"a,b");
}

TEST(LyCoreArrayCopy, MovingLeavesAnEmptyArray)
{
    CNumbers ary = Numbers({1, 2});
    const int* pData = ary.GetData();
    CNumbers aryMoved(std::move(ary));
    EXPECT_EQ(aryMoved.GetData(), pData);
    CNumbers aryAssigned = Numbers({9});
    aryAssigned = std::move(aryMoved);
    EXPECT_EQ(Values(aryAssigned), std::vector<int>({1, 2}));
    EXPECT_EQ(aryMoved.GetSize(), 0);
}

TEST(LyCoreArraySlots, StandInTheirOrder)
{
    HookedArray ary;
    ary.Add(41);
    void** ppSlots = TableOf(static_cast<LyCoreArray<int, int, false>*>(&ary));
    const auto pSetAt = reinterpret_cast<int (*)(void*, int, int, bool)>(ppSlots[2]);
    const auto pDestroyElement = reinterpret_cast<void (*)(void*, int)>(ppSlots[3]);
    pDestroyElement(&ary, 0);
    EXPECT_EQ(ary.m_aryDestroyed, std::vector<int>({41}));
    EXPECT_EQ(pSetAt(&ary, 0, 42, false), 0);
    EXPECT_EQ(ary[0], 42);
}
