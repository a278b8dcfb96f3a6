#include "R128Analyzer.h"
#include <climits>
#include <gtest/gtest.h>
#include <limits>
#include <type_traits>
#include <vector>

static_assert(std::has_virtual_destructor_v<CR128Analyzer>);
static_assert(std::is_base_of_v<CIIRFilter, CR128Analyzer::CChannel>);
static_assert(sizeof(CR128Analyzer::CChannel) == sizeof(CIIRFilter) + 4 + 4 + 8 + 8);
static_assert(std::is_same_v<decltype(CR128Analyzer::m_Channels), LyOwnedPtrArray<CR128Analyzer::CChannel>>);
static_assert(std::is_same_v<decltype(CR128Analyzer::m_Blocks), LyNumberArray<double>>);

namespace
{
// A channel whose filter only scales, so that block values can be worked out by hand.
void AddChannel(CR128Analyzer& analyzer, double fWeight, double fGain = 1)
{
    CR128Analyzer::CChannel* pChannel = new CR128Analyzer::CChannel;
    pChannel->m_Coef[0] = fGain;
    pChannel->m_fWeight = fWeight;
    analyzer.m_Channels.Add(pChannel);
}

void SetChannels(CR128Analyzer& analyzer, std::vector<double> aryWeights, int nBlockSamples)
{
    analyzer.m_Format.SetFormat(64, 44100, static_cast<int>(aryWeights.size()), false, LY_GUID_NULL, true);
    for (double fWeight : aryWeights)
        AddChannel(analyzer, fWeight);
    analyzer.m_nBlockSamples = nBlockSamples;
}

bool Feed(CR128Analyzer& analyzer, const std::vector<double>& arySamples)
{
    return analyzer.Process(arySamples.data(), static_cast<int>(arySamples.size()) / analyzer.m_Format.nChannels);
}

std::vector<double> GetBlocks(const CR128Analyzer& analyzer)
{
    return std::vector<double>(analyzer.m_Blocks.begin(), analyzer.m_Blocks.end());
}
} // namespace

TEST(R128Analyzer, StartsWithADefaultFormatAndNoChannels)
{
    CR128Analyzer analyzer;
    EXPECT_EQ(analyzer.m_Format.nChannels, 2);
    EXPECT_EQ(analyzer.m_Format.nSamplesPerSec, 44100U);
    EXPECT_EQ(analyzer.m_Format.wBitsPerSample, 16);
    EXPECT_EQ(analyzer.m_Format.wFormatTag, WAVE_TAG_PCM);
    EXPECT_EQ(analyzer.m_Channels.GetSize(), 0);
    EXPECT_EQ(analyzer.m_Blocks.GetSize(), 0);
    EXPECT_EQ(analyzer.m_nBlockSamples, 0);
}

TEST(R128Analyzer, LiesInMemoryInTheOrderOfItsMembers)
{
    const CR128Analyzer analyzer;
    const char* pStart = reinterpret_cast<const char*>(&analyzer);
    EXPECT_EQ(reinterpret_cast<const char*>(&analyzer.m_Format) - pStart, 8);
    EXPECT_LT(static_cast<const void*>(&analyzer.m_Format), static_cast<const void*>(&analyzer.m_Channels));
    EXPECT_LT(static_cast<const void*>(&analyzer.m_Channels), static_cast<const void*>(&analyzer.m_Blocks));
    EXPECT_LT(static_cast<const void*>(&analyzer.m_Blocks), static_cast<const void*>(&analyzer.m_nBlockSamples));

    const CR128Analyzer::CChannel channel;
    const char* pChannel = reinterpret_cast<const char*>(&channel);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_nCount) - pChannel, static_cast<int>(sizeof(CIIRFilter)));
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_fSum) - pChannel, static_cast<int>(sizeof(CIIRFilter)) + 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_fWeight) - pChannel, static_cast<int>(sizeof(CIIRFilter)) + 16);
}

TEST(R128Analyzer, AsConstructedDoesNothing)
{
    CR128Analyzer analyzer;
    EXPECT_FALSE(Feed(analyzer, {1, 1, 1, 1}));
    EXPECT_EQ(analyzer.m_Blocks.GetSize(), 0);
}

TEST(R128Analyzer, RefusesNoFramesAndNoSamplesAndChangesNothing)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1, 1}, 4);
    const double arySamples[] = {1, 1};
    EXPECT_FALSE(analyzer.Process(arySamples, 0));
    EXPECT_FALSE(analyzer.Process(arySamples, -1));
    EXPECT_FALSE(analyzer.Process(arySamples, INT_MIN));
    EXPECT_FALSE(analyzer.Process(nullptr, 1));
    EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 0);
    EXPECT_TRUE(analyzer.Process(arySamples, 1));
    EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 1);
}

TEST(R128Analyzer, RefusesABlockLengthOfNothing)
{
    for (int nBlockSamples : {0, -1, INT_MIN})
    {
        CR128Analyzer analyzer;
        SetChannels(analyzer, {1}, nBlockSamples);
        EXPECT_FALSE(Feed(analyzer, {1, 1, 1}));
        EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 0);
    }
}

TEST(R128Analyzer, RefusesAFormatWithoutChannels)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1}, 2);
    analyzer.m_Format.nChannels = 0;
    const double fSample = 1;
    EXPECT_FALSE(analyzer.Process(&fSample, 1));
}

// Frames (1, 10) and (3, 20), weights 0.5 and 2: 0.5 * (1 + 9) / 2 + 2 * (100 + 400) / 2 = 502.5
TEST(R128Analyzer, ABlockIsTheWeightedSumOfMeanSquares)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {0.5, 2}, 2);
    EXPECT_TRUE(Feed(analyzer, {1, 10, 3, 20}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({502.5}));
}

TEST(R128Analyzer, SamplesPassTheChannelsFilter)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1}, 2);
    analyzer.m_Channels[0]->m_Coef[0] = 10;
    EXPECT_TRUE(Feed(analyzer, {1, 3}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({500})); // (10^2 + 30^2) / 2
}

TEST(R128Analyzer, OneCallOverTwoBlockEndsAppendsTwoValuesInOrder)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1}, 2);
    EXPECT_TRUE(Feed(analyzer, {1, 1, 2, 2, 3}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({1, 4}));
    EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 1);
    EXPECT_EQ(analyzer.m_Channels[0]->m_fSum, 9); // not complete, not appended
}

TEST(R128Analyzer, ABlockGoesOnFromCallToCall)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1}, 3);
    EXPECT_TRUE(Feed(analyzer, {1}));
    EXPECT_TRUE(Feed(analyzer, {1}));
    EXPECT_EQ(analyzer.m_Blocks.GetSize(), 0);
    EXPECT_TRUE(Feed(analyzer, {2, 3}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({2})); // (1 + 1 + 4) / 3
    EXPECT_EQ(analyzer.m_Channels[0]->m_fSum, 9);
}

TEST(R128Analyzer, AChannelWithoutWeightIsNotFilteredYetCounts)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1, 0}, 4);
    CR128Analyzer::CChannel& silent = *analyzer.m_Channels[1];
    silent.m_nSections = 1;
    silent.m_nForm = 1;
    EXPECT_TRUE(Feed(analyzer, {1, 5, 1, 5, 1, 5}));
    EXPECT_EQ(silent.m_nCount, 3);
    EXPECT_EQ(silent.m_fSum, 0);
    EXPECT_EQ(silent.m_State[0], 0);
    EXPECT_TRUE(Feed(analyzer, {1, 5}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({1}));
    EXPECT_EQ(silent.m_nCount, 0);
}

TEST(R128Analyzer, AFirstChannelWithoutWeightStillPacesTheBlocks)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {0, 1}, 2);
    EXPECT_TRUE(Feed(analyzer, {9, 1, 9, 1, 9, 1}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({1}));
    EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 1);
}

TEST(R128Analyzer, AWeightThatIsNotANumberIsNotZero)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {std::numeric_limits<double>::quiet_NaN()}, 2);
    EXPECT_TRUE(Feed(analyzer, {1}));
    EXPECT_EQ(analyzer.m_Channels[0]->m_fSum, 1);
    EXPECT_TRUE(Feed(analyzer, {1}));
    ASSERT_EQ(analyzer.m_Blocks.GetSize(), 1);
    EXPECT_TRUE(analyzer.m_Blocks[0] != analyzer.m_Blocks[0]);
}

TEST(R128Analyzer, EachChannelIsDividedByItsOwnCount)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1, 1}, 4);
    analyzer.m_Channels[1]->m_nCount = 4; // ahead of the first channel, by what it held before
    analyzer.m_Channels[1]->m_fSum = 8;
    EXPECT_TRUE(Feed(analyzer, {1, 2, 1, 2, 1, 2, 1, 2}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({1 + (8 + 16) / 8.0}));
}

TEST(R128Analyzer, ACountPastTheBlockEndsTheBlockBeforeAnySample)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1}, 2);
    analyzer.m_Channels[0]->m_nCount = 8;
    analyzer.m_Channels[0]->m_fSum = 16;
    EXPECT_TRUE(Feed(analyzer, {3, 3}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({2, 9}));
}

TEST(R128Analyzer, CountsOutOfAllRangeDoNoHarm)
{
    for (int nCount : {INT_MIN, -1, INT_MAX})
    {
        CR128Analyzer analyzer;
        SetChannels(analyzer, {1, 1}, INT_MAX);
        analyzer.m_Channels[0]->m_nCount = nCount;
        analyzer.m_Channels[1]->m_nCount = INT_MAX;
        EXPECT_TRUE(Feed(analyzer, {1, 1, 1, 1}));
    }
}

TEST(R128Analyzer, MoreChannelsThanTheFormatHasAreNotFed)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1}, 2);
    AddChannel(analyzer, 1);
    EXPECT_TRUE(Feed(analyzer, {1, 1}));
    EXPECT_EQ(analyzer.m_Channels[1]->m_nCount, 0);
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({1}));
}

TEST(R128Analyzer, FewerChannelsThanTheFormatHasLeaveItsLastOut)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1}, 2);
    analyzer.m_Format.nChannels = 3;
    EXPECT_TRUE(Feed(analyzer, {1, 7, 7, 3, 7, 7}));
    EXPECT_EQ(GetBlocks(analyzer), std::vector<double>({5})); // (1 + 9) / 2
}

TEST(R128Analyzer, AGapInTheListEndsIt)
{
    CR128Analyzer analyzer;
    SetChannels(analyzer, {1, 1}, 2);
    delete analyzer.m_Channels[0];
    analyzer.m_Channels[0] = nullptr;
    EXPECT_FALSE(Feed(analyzer, {1, 1}));
}

TEST(R128Analyzer, SilenceGivesBlocksOfZeroAndZeroStates)
{
    CR128Analyzer analyzer;
    CAudioFormat format;
    format.SetFormat(64, 8000, 2, false, LY_GUID_NULL, true);
    ASSERT_TRUE(analyzer.SetUp(format));
    std::vector<double> arySamples(2 * 8000 * 20, 0.0);
    arySamples[0] = arySamples[1] = 1;
    EXPECT_TRUE(Feed(analyzer, arySamples));
    ASSERT_EQ(analyzer.m_Blocks.GetSize(), 200);
    EXPECT_GT(analyzer.m_Blocks[0], 0);
    EXPECT_EQ(analyzer.m_Blocks[199], 0);
    for (const CR128Analyzer::CChannel* pChannel : analyzer.m_Channels)
    {
        for (double fState : pChannel->m_State)
            EXPECT_EQ(fState, 0);
    }
}
