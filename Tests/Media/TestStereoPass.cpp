#include "AudioFormat.h"
#include "BeatsPerMinuteAnalyzer.h"
#include "DRAnalyzer.h"
#include "R128Analyzer.h"
#include "StereoPass.h"
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace
{
struct THREE
{
    CBeatsPerMinuteAnalyzerV1 beats;
    CR128Analyzer loudness;
    CDRAnalyzer range;

    void SetUp(int nRate)
    {
        CAudioFormat format;
        format.SetFormat(64, nRate, 2, false, LY_GUID_IEEE_FLOAT, true);
        ASSERT_TRUE(beats.SetUp(format));
        ASSERT_TRUE(loudness.SetUp(format));
        ASSERT_TRUE(range.SetUp(format));
    }
    bool Fits() const { return CStereoPass::Fits(beats, loudness, range); }
};

template <class T>
bool IsSame(const T& first, const T& second)
{
    return std::memcmp(&first, &second, sizeof first) == 0;
}

void ExpectSame(const CBeatsPerMinuteAnalyzerV1& first, const CBeatsPerMinuteAnalyzerV1& second)
{
    EXPECT_TRUE(IsSame(first.m_fFastAverage, second.m_fFastAverage) && IsSame(first.m_fEnergy, second.m_fEnergy) &&
                IsSame(first.m_fSlowAverage, second.m_fSlowAverage) && IsSame(first.m_Histogram, second.m_Histogram));
    EXPECT_EQ(first.m_nStep, second.m_nStep);
    EXPECT_EQ(first.m_nStepSamples, second.m_nStepSamples);
    EXPECT_EQ(first.m_nLastBeatMS, second.m_nLastBeatMS);
    EXPECT_EQ(first.m_Filter.m_nIndex, second.m_Filter.m_nIndex);
    EXPECT_EQ(first.m_Filter.m_nIndexBefore, second.m_Filter.m_nIndexBefore);
    EXPECT_EQ(first.m_Filter.m_nIndexBefore2, second.m_Filter.m_nIndexBefore2);
    EXPECT_TRUE(IsSame(first.m_Filter.m_X, second.m_Filter.m_X) && IsSame(first.m_Filter.m_Y, second.m_Filter.m_Y));
    for (int i = 0; i <= COnsetCorrelation::MAX_LAG; ++i)
        ASSERT_EQ(first.GetOnsets().GetCovariance(i), second.GetOnsets().GetCovariance(i)) << i;
}

void ExpectSame(const CR128Analyzer& first, const CR128Analyzer& second)
{
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(first.m_Channels[i]->m_nCount, second.m_Channels[i]->m_nCount);
        EXPECT_TRUE(IsSame(first.m_Channels[i]->m_fSum, second.m_Channels[i]->m_fSum));
        EXPECT_TRUE(IsSame(first.m_Channels[i]->m_State, second.m_Channels[i]->m_State));
    }
    ASSERT_EQ(first.m_Blocks.GetSize(), second.m_Blocks.GetSize());
    for (int i = 0; i < first.m_Blocks.GetSize(); ++i)
        ASSERT_TRUE(IsSame(first.m_Blocks.GetData()[i], second.m_Blocks.GetData()[i])) << i;
}

void ExpectSame(const CDRAnalyzer& first, const CDRAnalyzer& second)
{
    for (int i = 0; i < 2; ++i)
    {
        const CDRAnalyzer::CChannel& channel1 = *first.m_Channels[i];
        const CDRAnalyzer::CChannel& channel2 = *second.m_Channels[i];
        EXPECT_EQ(channel1.m_nCount, channel2.m_nCount);
        EXPECT_TRUE(IsSame(channel1.m_fSumSquares, channel2.m_fSumSquares));
        EXPECT_TRUE(IsSame(channel1.m_fPeak, channel2.m_fPeak));
        ASSERT_EQ(channel1.m_RMS.GetSize(), channel2.m_RMS.GetSize());
        for (int k = 0; k < channel1.m_RMS.GetSize(); ++k)
            ASSERT_TRUE(IsSame(channel1.m_RMS.GetData()[k], channel2.m_RMS.GetData()[k]) &&
                        IsSame(channel1.m_Peaks.GetData()[k], channel2.m_Peaks.GetData()[k]))
                << k;
    }
}

// Noise, 16-bit values, silence, samples too small for the loudness filter, and what is no sample at all.
std::vector<double> MakeSamples(std::mt19937_64& random, int nRound, size_t nFrames)
{
    std::uniform_real_distribution<double> any(-1.2, 1.2);
    std::vector<double> arySamples(2 * nFrames);
    for (double& f : arySamples)
    {
        f = nRound % 50 > 35 ? 0.0 : nRound % 2 == 0 ? any(random) : std::floor(any(random) * 25000) / 32768;
        if (nRound % 50 == 35)
            f *= 1e-152;
    }
    const double aryStrange[] = {1e9, -1e9, 1e200, std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()};
    if (nRound > 380 && nRound % 10 == 0 && nFrames > 0)
        arySamples[random() % arySamples.size()] = aryStrange[nRound / 10 % 5];
    return arySamples;
}
} // namespace

TEST(StereoPass, EqualsOneBehindTheOtherBitForBit)
{
    for (const int nRate : {8000, 44100, 48000})
    {
        std::mt19937_64 random(11);
        THREE both;
        THREE apart;
        both.SetUp(nRate);
        apart.SetUp(nRate);
        for (int nRound = 0; nRound < 450; ++nRound)
        {
            const std::vector<double> arySamples = MakeSamples(random, nRound, random() % 1500);
            const int nFrames = static_cast<int>(arySamples.size()) / 2;
            ASSERT_TRUE(both.Fits());
            CStereoPass::Process(both.beats, both.loudness, both.range, arySamples.data(), nFrames);
            apart.beats.ProcessFrames(arySamples.data(), nFrames, 2);
            (void)apart.loudness.Process(arySamples.data(), nFrames);
            apart.range.Process(arySamples.data(), nFrames);
            ASSERT_NO_FATAL_FAILURE(ExpectSame(both.beats, apart.beats)) << nRound;
            ASSERT_NO_FATAL_FAILURE(ExpectSame(both.loudness, apart.loudness)) << nRound;
            ASSERT_NO_FATAL_FAILURE(ExpectSame(both.range, apart.range)) << nRound;
        }
        EXPECT_GT(both.beats.m_nTotal, 0);
        EXPECT_GT(both.loudness.m_Blocks.GetSize(), 50);
        EXPECT_GT(both.range.m_Channels[1]->m_RMS.GetSize(), 1);
    }
}

TEST(StereoPass, FitsWhatIsSetUpForStereo)
{
    THREE three;
    EXPECT_FALSE(three.Fits());
    three.SetUp(44100);
    EXPECT_TRUE(three.Fits());
    CAudioFormat format;
    format.SetFormat(64, 44100, 3, false, LY_GUID_IEEE_FLOAT, true);
    ASSERT_TRUE(three.loudness.SetUp(format));
    EXPECT_FALSE(three.Fits());
}

TEST(StereoPass, FitsNothingThatSomebodyElseChanged)
{
    using CHANGE = void (*)(THREE & three);
    const CHANGE aryChanges[] = {
        [](THREE& three) { three.beats.m_nSamplesPerStep = 0; },
        [](THREE& three) { three.beats.m_nStepSamples = -1; },
        [](THREE& three) { three.beats.m_nStepSamples = three.beats.m_nSamplesPerStep; },
        [](THREE& three) { three.loudness.m_nBlockSamples = 0; },
        [](THREE& three) { three.loudness.m_Channels[0]->m_fWeight = 0; },
        [](THREE& three) { three.loudness.m_Channels[1]->m_fWeight = 0; },
        [](THREE& three) { three.loudness.m_Channels[1]->m_nSections = 1; },
        [](THREE& three) { three.loudness.m_Channels[0]->m_nForm = 0; },
        [](THREE& three) { three.loudness.m_Channels[0]->m_nCount = 1; },
        [](THREE& three) { three.loudness.m_Channels[0]->m_nCount = three.loudness.m_Channels[1]->m_nCount = -1; },
        [](THREE& three) { three.loudness.m_Channels[0]->m_nCount = three.loudness.m_Channels[1]->m_nCount = 4410; },
        [](THREE& three) { three.loudness.m_Format.nChannels = 1; },
        [](THREE& three) { three.range.m_Channels[0]->m_nCount = 1; },
        [](THREE& three) { three.range.m_Channels[1]->m_nWindowSamples = 7; },
        [](THREE& three) { three.range.m_Channels[0]->m_nCount = three.range.m_Channels[1]->m_nCount = -1; },
        [](THREE& three) { three.range.m_Channels[0]->m_nCount = three.range.m_Channels[1]->m_nCount = 132300; },
        [](THREE& three) { three.range.m_Channels.RemoveAll(); },
    };
    for (const CHANGE& change : aryChanges)
    {
        THREE three;
        three.SetUp(44100);
        change(three);
        EXPECT_FALSE(three.Fits()) << &change - aryChanges;
    }
}
