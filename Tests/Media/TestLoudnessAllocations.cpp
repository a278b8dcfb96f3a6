// What the loudness and beat analysers allocate while audio passes: room for blocks, in the steps of the arrays, and
// nothing else.

#include "BeatsPerMinuteAnalyzer.h"
#include "CountAllocations.h"
#include "LoudnessSignals.h"
#include <gtest/gtest.h>
#include <vector>

TEST(LoudnessAllocations, TheCounterCounts)
{
    const long long nBefore = CountAllocations::GetCount();
    std::vector<int> aryNumbers(10);
    EXPECT_EQ(CountAllocations::GetCount() - nBefore, 1);
    EXPECT_EQ(aryNumbers[9], 0);
}

// The growth table: 4, 64, 256, 1024, 4096 blocks.
TEST(LoudnessAllocations, BlocksGrowInTheStepsOfTheArrays)
{
    CR128Analyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(MakeFormat(8000, 2)));
    const std::vector<double> arySecond(2 * 8000, 0.25);
    const long long nBefore = CountAllocations::GetCount();
    for (int i = 0; i < 200; ++i)
        (void)analyzer.Process(arySecond.data(), 8000);
    EXPECT_EQ(analyzer.m_Blocks.GetSize(), 2000);
    EXPECT_EQ(CountAllocations::GetCount() - nBefore, 5);
}

TEST(LoudnessAllocations, BeatsAllocateNothing)
{
    CBeatsPerMinuteAnalyzerV1 analyzer;
    const std::vector<double> arySecond(2 * 8000, 0.25);
    const long long nBefore = CountAllocations::GetCount();
    EXPECT_TRUE(analyzer.SetUp(8000));
    for (int i = 0; i < 20; ++i)
    {
        analyzer.ProcessFrames(arySecond.data(), 8000, 2);
        analyzer.ProcessBlock(1, 2);
    }
    EXPECT_TRUE(analyzer.Finish());
    EXPECT_EQ(CountAllocations::GetCount() - nBefore, 0);
}

TEST(LoudnessAllocations, SetUpAnewKeepsTheRoomForBlocks)
{
    CR128Analyzer analyzer;
    const std::vector<double> arySecond(2 * 8000, 0.25);
    ASSERT_TRUE(analyzer.SetUp(MakeFormat(8000, 2)));
    (void)analyzer.Process(arySecond.data(), 8000);
    ASSERT_TRUE(analyzer.SetUp(MakeFormat(8000, 2)));
    const long long nBefore = CountAllocations::GetCount();
    (void)analyzer.Process(arySecond.data(), 8000);
    EXPECT_EQ(CountAllocations::GetCount() - nBefore, 0);
}
