#include "LyArray.h"
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <gtest/gtest.h>
#include <mutex>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

namespace
{
class CompareInts : public ILyQSortCompare<int>
{
public:
    int LyQSort_Compare(int* pFirst, int* pSecond) override
    {
        m_nCompares.fetch_add(1, std::memory_order_relaxed);
        return *pFirst < *pSecond ? -1 : *pFirst > *pSecond;
    }
    std::atomic<int> m_nCompares{0};
};

// Notes the values of each pair that is compared. For one thread.
class TraceInts : public ILyQSortCompare<int>
{
public:
    int LyQSort_Compare(int* pFirst, int* pSecond) override
    {
        m_aryPairs.emplace_back(*pFirst, *pSecond);
        return *pFirst - *pSecond;
    }
    std::vector<std::pair<int, int>> m_aryPairs;
};

std::vector<int> Ascending(int nCount)
{
    std::vector<int> ary(static_cast<size_t>(nCount));
    std::iota(ary.begin(), ary.end(), 0);
    return ary;
}

void SortInts(std::vector<int>& ary, bool bMultiThreaded)
{
    CompareInts compare;
    LyQSort<int> sort;
    sort.Sort(&compare, ary.data(), ary.size(), bMultiThreaded);
}

void ExpectSorts(std::vector<int> ary, bool bMultiThreaded, const char* pPattern)
{
    std::vector<int> arySorted(ary);
    std::sort(arySorted.begin(), arySorted.end());
    SortInts(ary, bMultiThreaded);
    EXPECT_EQ(ary, arySorted) << pPattern << " of " << ary.size();
}

void ExpectSortsAllPatterns(int nCount, bool bMultiThreaded, std::mt19937& random)
{
    std::vector<int> ary = Ascending(nCount);
    ExpectSorts(ary, bMultiThreaded, "ascending");
    std::reverse(ary.begin(), ary.end());
    ExpectSorts(ary, bMultiThreaded, "descending");
    for (int& n : ary)
        n = static_cast<int>(random() % 1000000);
    ExpectSorts(ary, bMultiThreaded, "random");
    for (int& n : ary)
        n = static_cast<int>(random() % 4);
    ExpectSorts(ary, bMultiThreaded, "few values");
    std::fill(ary.begin(), ary.end(), 7);
    ExpectSorts(ary, bMultiThreaded, "equal");
    for (int i = 0; i < nCount; ++i)
        ary[static_cast<size_t>(i)] = i < nCount / 2 ? i : nCount - i;
    ExpectSorts(ary, bMultiThreaded, "organ pipe");
}

void** TableOf(void* pObject) { return *static_cast<void***>(pObject); }
} // namespace

static_assert(std::is_base_of_v<LyThread, LyQSort<int*>>);

class LyQSortThreads : public testing::TestWithParam<bool>
{
};

TEST_P(LyQSortThreads, SortsEverySmallCount)
{
    std::mt19937 random(1);
    // With a helper each sort of 17 and more starts a thread: fewer of them.
    const int nStep = GetParam() ? 7 : 1;
    for (int nCount = 0; nCount <= 70; nCount += nStep)
        ExpectSortsAllPatterns(nCount, GetParam(), random);
}

TEST_P(LyQSortThreads, SortsLargeCounts)
{
    std::mt19937 random(2);
    for (int nCount : {1000, 4097, 50000})
        ExpectSortsAllPatterns(nCount, GetParam(), random);
}

INSTANTIATE_TEST_SUITE_P(OneAndTwo, LyQSortThreads, testing::Bool(),
                         [](const auto& row) { return row.param ? "TwoThreads" : "OneThread"; });

TEST(LyQSort, SortsPointersByWhatTheyPointTo)
{
    class ComparePointers : public ILyQSortCompare<int*>
    {
    public:
        int LyQSort_Compare(int** ppFirst, int** ppSecond) override { return **ppFirst - **ppSecond; }
    } compare;
    int aryValues[] = {3, 1, 2};
    LyPointerArray<int> ary;
    for (int& n : aryValues)
        ary.Add(&n);
    LyQSort<int*> sort;
    sort.Sort(&compare, ary.GetData(), static_cast<unsigned long>(ary.GetSize()), false);
    EXPECT_EQ(ary[0], &aryValues[1]);
    EXPECT_EQ(ary[1], &aryValues[2]);
    EXPECT_EQ(ary[2], &aryValues[0]);
}

TEST(LyQSort, FewerThanTwoElementsAreNotCompared)
{
    CompareInts compare;
    LyQSort<int> sort;
    int n = 5;
    sort.Sort(&compare, &n, 1, true);
    sort.Sort(&compare, &n, 0, true);
    sort.Sort(&compare, nullptr, 0, true);
    sort.Sort(&compare, nullptr, 9, true);
    sort.Sort(nullptr, &n, 1, true);
    EXPECT_EQ(compare.m_nCompares, 0);
    EXPECT_EQ(n, 5);
}

TEST(LyQSort, SixteenElementsNeverStartTheHelper)
{
    CompareInts compare;
    LyQSort<int> sort;
    std::vector<int> ary = Ascending(16);
    std::reverse(ary.begin(), ary.end());
    sort.Sort(&compare, ary.data(), ary.size(), true);
    EXPECT_EQ(sort.GetRunCount(), 0);
    EXPECT_EQ(ary, Ascending(16));
}

TEST(LyQSort, HelperIsStartedOnceAndHasEnded)
{
    CompareInts compare;
    LyQSort<int> sort;
    for (int nRound = 0; nRound < 3; ++nRound)
    {
        std::vector<int> ary = Ascending(2000);
        std::reverse(ary.begin(), ary.end());
        sort.Sort(&compare, ary.data(), ary.size(), true);
        EXPECT_EQ(sort.GetRunCount(), 1) << "counted anew in each sort";
        EXPECT_FALSE(sort.GetRunning());
        EXPECT_EQ(ary, Ascending(2000));
    }
}

TEST(LyQSort, OneThreadStartsNoHelper)
{
    CompareInts compare;
    LyQSort<int> sort;
    std::vector<int> ary = Ascending(2000);
    sort.Sort(&compare, ary.data(), ary.size(), false);
    EXPECT_EQ(sort.GetRunCount(), 0);
}

TEST(LyQSort, WorksAloneIfTheHelperCannotBeStarted)
{
    class Refusing : public LyQSort<int>
    {
    public:
        bool StartThread(int) override { return false; }
    } sort;
    CompareInts compare;
    std::vector<int> ary = Ascending(500);
    std::reverse(ary.begin(), ary.end());
    sort.Sort(&compare, ary.data(), ary.size(), true);
    EXPECT_EQ(ary, Ascending(500));
    EXPECT_EQ(sort.GetRunCount(), 0);
}

namespace
{
// Holds up the caller's thread until the helper has compared something, so that the helper must take part.
class WaitForHelper : public ILyQSortCompare<int>
{
public:
    explicit WaitForHelper(LyQSort<int>& sort) : m_Sort(sort) {}
    int LyQSort_Compare(int* pFirst, int* pSecond) override
    {
        std::unique_lock lock(m_Mutex);
        if (std::this_thread::get_id() != m_Caller)
        {
            m_bHelped = true;
            m_Condition.notify_all();
        }
        else if (m_Sort.GetRunCount() > 0 && !m_bTimedOut)
        {
            m_bTimedOut = !m_Condition.wait_for(lock, std::chrono::seconds(30), [this] { return m_bHelped; });
        }
        return *pFirst - *pSecond;
    }
    bool m_bHelped = false;
    bool m_bTimedOut = false;

private:
    LyQSort<int>& m_Sort;
    std::thread::id m_Caller = std::this_thread::get_id();
    std::mutex m_Mutex;
    std::condition_variable m_Condition;
};
} // namespace

TEST(LyQSort, HelperTakesItsShare)
{
    LyQSort<int> sort;
    WaitForHelper compare(sort);
    std::mt19937 random(3);
    std::vector<int> ary = Ascending(5000);
    std::shuffle(ary.begin(), ary.end(), random);
    sort.Sort(&compare, ary.data(), ary.size(), true);
    EXPECT_TRUE(compare.m_bHelped);
    EXPECT_FALSE(compare.m_bTimedOut);
    EXPECT_EQ(ary, Ascending(5000));
}

struct GAP_CASE
{
    int nCount;
    std::vector<int> aryGaps;
};

class LyQSortShell : public testing::TestWithParam<GAP_CASE>
{
};

// In a sorted array every element is compared just once in each pass: with the one that stands a gap before it.
TEST_P(LyQSortShell, GoesThroughTheGaps)
{
    const GAP_CASE& row = GetParam();
    std::vector<std::pair<int, int>> aryExpected;
    for (int nGap : row.aryGaps)
    {
        for (int i = nGap; i < row.nCount; ++i)
            aryExpected.emplace_back(i - nGap, i);
    }
    std::vector<int> ary = Ascending(row.nCount);
    TraceInts trace;
    LyQSort<int> sort;
    sort.Sort(&trace, ary.data(), ary.size(), false);
    EXPECT_EQ(trace.m_aryPairs, aryExpected);
}

INSTANTIATE_TEST_SUITE_P(Table, LyQSortShell,
                         testing::Values(GAP_CASE{2, {1}}, GAP_CASE{3, {1}}, GAP_CASE{4, {2, 1}}, GAP_CASE{5, {2, 1}},
                                         GAP_CASE{6, {3, 1}}, GAP_CASE{8, {4, 1}}, GAP_CASE{10, {5, 2, 1}},
                                         GAP_CASE{12, {6, 2, 1}}, GAP_CASE{14, {7, 3, 1}}, GAP_CASE{16, {8, 3, 1}}));

// Seventeen sorted elements, compare by compare.
TEST(LyQSortPartition, FollowsItsSteps)
{
    std::vector<std::pair<int, int>> aryExpected = {{0, 8}, {0, 16}, {8, 16}}; // the middle of three
    for (int i = 1; i <= 7; ++i)
        aryExpected.emplace_back(i, 8); // up to the middle,
    aryExpected.emplace_back(9, 8);     // beyond it,
    for (int i = 15; i >= 9; --i)
        aryExpected.emplace_back(i, 8); // down to it,
    aryExpected.emplace_back(7, 8);     // and over what equals it
    for (int nPart : {9, 0})            // of equal parts the left one waits; the pivot is in neither
    {
        for (int nGap : {4, 1})
        {
            for (int i = nGap; i < 8; ++i)
                aryExpected.emplace_back(nPart + i - nGap, nPart + i);
        }
    }
    std::vector<int> ary = Ascending(17);
    TraceInts trace;
    LyQSort<int> sort;
    sort.Sort(&trace, ary.data(), ary.size(), false);
    EXPECT_EQ(trace.m_aryPairs, aryExpected);
}

TEST(LyQSortPartition, EqualElementsAreDoneInOnePass)
{
    std::vector<int> ary(10000, 5);
    CompareInts compare;
    LyQSort<int> sort;
    sort.Sort(&compare, ary.data(), ary.size(), false);
    EXPECT_LE(compare.m_nCompares, 3 * 10000);
}

TEST(LyQSortPartition, ComparesStayLogarithmicOnSortedInput)
{
    std::vector<int> ary = Ascending(65536);
    CompareInts compare;
    LyQSort<int> sort;
    sort.Sort(&compare, ary.data(), ary.size(), false);
    EXPECT_LE(compare.m_nCompares, 65536 * 24) << "1.5 times n times log2 n";
}

// A comparer that contradicts itself gives no order, but every element stays in the array exactly once.
TEST(LyQSortHostile, ContradictoryComparerLosesNothing)
{
    class CompareByDice : public ILyQSortCompare<int>
    {
    public:
        int LyQSort_Compare(int*, int*) override { return static_cast<int>(m_Random() % 3) - 1; }
        std::mt19937 m_Random{4};
    } compare;
    LyQSort<int> sort;
    for (int nCount = 2; nCount <= 300; ++nCount)
    {
        std::vector<int> ary = Ascending(nCount);
        sort.Sort(&compare, ary.data(), ary.size(), false);
        std::sort(ary.begin(), ary.end());
        ASSERT_EQ(ary, Ascending(nCount));
    }
}

TEST(LyQSortHostile, ConstantComparersLoseNothing)
{
    class CompareConstant : public ILyQSortCompare<int>
    {
    public:
        explicit CompareConstant(int nAnswer) : m_nAnswer(nAnswer) {}
        int LyQSort_Compare(int*, int*) override { return m_nAnswer; }
        int m_nAnswer;
    };
    for (int nAnswer : {-1, 0, 1})
    {
        CompareConstant compare(nAnswer);
        LyQSort<int> sort;
        std::vector<int> ary = Ascending(2000);
        sort.Sort(&compare, ary.data(), ary.size(), false);
        std::sort(ary.begin(), ary.end());
        EXPECT_EQ(ary, Ascending(2000));
    }
}

TEST(LyQSortCompare, IsTheOnlySlotOfItsInterface)
{
    TraceInts trace;
    int nFirst = 9;
    int nSecond = 4;
    ILyQSortCompare<int>* pInterface = &trace;
    const auto pCompare = reinterpret_cast<int (*)(void*, int*, int*)>(TableOf(pInterface)[0]);
    EXPECT_EQ(pCompare(pInterface, &nFirst, &nSecond), 5);
}
