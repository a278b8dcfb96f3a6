// What the loudness and beat analysers allocate while audio passes: room for blocks, in the steps of the arrays, and
// nothing else.

#include "BeatsPerMinuteAnalyzer.h"
#include "LoudnessSignals.h"
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <vector>

namespace
{
std::atomic<long long> g_nAllocations = 0;

void* Allocate(size_t nBytes)
{
    g_nAllocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(nBytes != 0 ? nBytes : 1);
}
} // namespace

// Every way to make an object comes here in the end.
void* operator new(size_t nBytes)
{
    void* p = Allocate(nBytes);
    if (p == nullptr)
        throw std::bad_alloc();
    return p;
}
void* operator new[](size_t nBytes) { return operator new(nBytes); }
void* operator new(size_t nBytes, const std::nothrow_t&) noexcept { return Allocate(nBytes); }
void* operator new[](size_t nBytes, const std::nothrow_t&) noexcept { return Allocate(nBytes); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
void operator delete[](void* p, size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }

TEST(LoudnessAllocations, TheCounterCounts)
{
    const long long nBefore = g_nAllocations;
    std::vector<int> aryNumbers(10);
    EXPECT_EQ(g_nAllocations - nBefore, 1);
    EXPECT_EQ(aryNumbers[9], 0);
}

// The growth table: 4, 64, 256, 1024, 4096 blocks.
TEST(LoudnessAllocations, BlocksGrowInTheStepsOfTheArrays)
{
    CR128Analyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(MakeFormat(8000, 2)));
    const std::vector<double> arySecond(2 * 8000, 0.25);
    const long long nBefore = g_nAllocations;
    for (int i = 0; i < 200; ++i)
        (void)analyzer.Process(arySecond.data(), 8000);
    EXPECT_EQ(analyzer.m_Blocks.GetSize(), 2000);
    EXPECT_EQ(g_nAllocations - nBefore, 5);
}

TEST(LoudnessAllocations, BeatsAllocateNothing)
{
    CBeatsPerMinuteAnalyzerV1 analyzer;
    const std::vector<double> arySecond(2 * 8000, 0.25);
    const long long nBefore = g_nAllocations;
    EXPECT_TRUE(analyzer.SetUp(8000));
    for (int i = 0; i < 20; ++i)
    {
        analyzer.ProcessFrames(arySecond.data(), 8000, 2);
        analyzer.ProcessBlock(1, 2);
    }
    EXPECT_TRUE(analyzer.Finish());
    EXPECT_EQ(g_nAllocations - nBefore, 0);
}

TEST(LoudnessAllocations, SetUpAnewKeepsTheRoomForBlocks)
{
    CR128Analyzer analyzer;
    const std::vector<double> arySecond(2 * 8000, 0.25);
    ASSERT_TRUE(analyzer.SetUp(MakeFormat(8000, 2)));
    (void)analyzer.Process(arySecond.data(), 8000);
    ASSERT_TRUE(analyzer.SetUp(MakeFormat(8000, 2)));
    const long long nBefore = g_nAllocations;
    (void)analyzer.Process(arySecond.data(), 8000);
    EXPECT_EQ(g_nAllocations - nBefore, 0);
}
