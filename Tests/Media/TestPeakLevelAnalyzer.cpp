#include "PeakLevelAnalyzer.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
using CHANNEL = CPeakLevelAnalyzer::CChannel;

static_assert(!std::is_polymorphic_v<CPeakLevelAnalyzer> && !std::is_polymorphic_v<CHANNEL>);
static_assert(std::is_same_v<decltype(&CPeakLevelAnalyzer::Process), void (CPeakLevelAnalyzer::*)(const double*, int)>);
static_assert(std::is_same_v<decltype(&CHANNEL::Process), void (CHANNEL::*)(const double*, int, int)>);

CAudioFormat Doubles(int nRate, int nChannels)
{
    CAudioFormat format;
    format.SetFormat(64, nRate, nChannels);
    return format;
}

std::vector<double> Noise(size_t nSamples, unsigned int nSeed, double fLevel = 1)
{
    std::mt19937 random(nSeed);
    std::uniform_real_distribution<double> value(-fLevel, fLevel);
    std::vector<double> arySamples(nSamples);
    for (double& fSample : arySamples)
        fSample = value(random);
    return arySamples;
}

// The measurement told again: the same steps, one sample after the other, without vectors and without runs.
struct TWIN
{
    static constexpr int HISTORY = 16384;

    int nPhases;
    std::vector<float> aryCoefficients;
    int nTaps = static_cast<int>(aryCoefficients.size()) / std::max(nPhases, 1);
    std::vector<float> aryHistory = std::vector<float>(static_cast<size_t>(HISTORY + nTaps), 0.0F);
    int nWindow = 0;
    float fPeak = 0;
    float fTruePeak = 0;

    void Take(double fSample)
    {
        const float fValue = static_cast<float>(fSample);
        fPeak = std::fabs(fValue) > fPeak ? std::fabs(fValue) : fPeak;
        if (++nWindow == HISTORY)
        {
            for (size_t i = 0; i < 11; ++i)
                aryHistory[i] = aryHistory[HISTORY + i];
            nWindow = 0;
        }
        aryHistory[static_cast<size_t>(nWindow + nTaps - 1)] = fValue;
        for (int j = 0; j < nPhases; ++j)
        {
            float fSum = 0;
            for (int i = 0; i < nTaps; ++i)
                fSum += aryHistory[static_cast<size_t>(nWindow + i)] *
                        aryCoefficients[static_cast<size_t>(i * nPhases + j)];
            fTruePeak = std::fabs(fSum) > fTruePeak ? std::fabs(fSum) : fTruePeak;
        }
    }
};

TWIN TwinOf(const CHANNEL& channel)
{
    const auto nTaps = static_cast<size_t>(channel.m_nFilterTaps);
    return TWIN{channel.m_nOversampling, std::vector<float>(channel.m_pCoefficients, channel.m_pCoefficients + nTaps)};
}

// A channel whose filter the caller brings along, with memory of the exact size.
struct OWN_FILTER
{
    CHANNEL channel;
    std::vector<float> aryCoefficients;
    std::vector<float> aryHistory = std::vector<float>(16384 + 11, 0.0F);

    OWN_FILTER(int nOversampling, std::vector<float> aryTaps) : aryCoefficients(std::move(aryTaps))
    {
        channel.m_nOversampling = nOversampling;
        channel.m_nFilterTaps = static_cast<int>(aryCoefficients.size());
        channel.m_pCoefficients = aryCoefficients.data();
        channel.m_pHistory = aryHistory.data();
        channel.m_pWindow = aryHistory.data();
    }
};
} // namespace

TEST(PeakLevelStart, HasTheDefaultFormatAndNoChannelsAndDoesNothing)
{
    CPeakLevelAnalyzer analyzer;
    EXPECT_EQ(analyzer.m_Format.nBlockAlign, 4);
    EXPECT_EQ(analyzer.m_Format.nSamplesPerSec, 44100U);
    EXPECT_EQ(analyzer.m_Channels.GetSize(), 0);
    const double arySamples[] = {1, 1};
    analyzer.Process(arySamples, 1);
    EXPECT_EQ(analyzer.GetSamplePeak(), 0);
    EXPECT_EQ(analyzer.GetSamplePeakDBFS(), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(analyzer.GetTruePeakDBTP(), -std::numeric_limits<double>::infinity());
}

TEST(PeakLevelStart, MembersStandInTheirOrder)
{
    CPeakLevelAnalyzer analyzer;
    EXPECT_EQ(static_cast<void*>(&analyzer), static_cast<void*>(&analyzer.m_Format));
    EXPECT_LT(static_cast<void*>(&analyzer.m_Format), static_cast<void*>(&analyzer.m_Channels));
    CHANNEL channel;
    const char* pStart = reinterpret_cast<const char*>(&channel);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_fPeak) - pStart, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_fTruePeak) - pStart, 4);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_nOversampling) - pStart, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_nFilterTaps) - pStart, 12);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_pCoefficients) - pStart, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_pHistory) - pStart, 24);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_pWindow) - pStart, 32);
}

TEST(PeakLevelPlain, KeepsTheLargestMagnitudeAsAFloat)
{
    CHANNEL channel;
    const double arySamples[] = {0.1, 9, -0.7, 9, 0.3, 9};
    channel.Process(arySamples, 3, 2);
    EXPECT_EQ(channel.m_fPeak, 0.7F);
    const double fQuieter = 0.5;
    channel.Process(&fQuieter, 1, 1);
    EXPECT_EQ(channel.m_fPeak, 0.7F);
}

TEST(PeakLevelPlain, WithoutOversamplingTheTruePeakIsThePeakAfterEachCall)
{
    CHANNEL channel;
    channel.m_fTruePeak = 5;
    const double arySamples[] = {0.25, -0.5, 0.125};
    channel.Process(arySamples, 1, 1);
    EXPECT_EQ(channel.m_fTruePeak, 0.25F);
    channel.Process(arySamples + 1, 2, 1);
    EXPECT_EQ(channel.m_fTruePeak, 0.5F);
    EXPECT_EQ(channel.m_fTruePeak, channel.m_fPeak);
    channel.m_fTruePeak = 5;
    channel.Process(arySamples, 0, 1);
    EXPECT_EQ(channel.m_fTruePeak, 0.5F);
}

TEST(PeakLevelPlain, EverySampleOfALongCallIsSeen)
{
    for (const int nLoud : {0, 1, 3, 1022, 1023, 1024, 1025, 2999})
    {
        std::vector<double> arySamples(3000, 0.1);
        arySamples[static_cast<size_t>(nLoud)] = -0.75;
        for (const int nOversampling : {0, 2, 4})
        {
            CHANNEL channel;
            ASSERT_TRUE(channel.SetUp(nOversampling));
            channel.Process(arySamples.data(), 3000, 1);
            EXPECT_EQ(channel.m_fPeak, 0.75F) << nLoud;
        }
    }
}

TEST(PeakLevelPlain, WhatIsNoNumberIsNoPeak)
{
    CPeakLevelAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(44100, 1)));
    std::vector<double> arySamples(100, 0.25);
    arySamples[50] = std::numeric_limits<double>::quiet_NaN();
    analyzer.Process(arySamples.data(), 100);
    EXPECT_EQ(analyzer.GetSamplePeak(), 0.25);
    EXPECT_TRUE(std::isfinite(analyzer.GetTruePeak()));
}

TEST(PeakLevelPlain, NothingToProcessChangesNothing)
{
    CPeakLevelAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(44100, 2)));
    const float* pWindow = analyzer.m_Channels[0]->m_pWindow;
    const double arySamples[] = {1, 1};
    analyzer.Process(arySamples, 0);
    analyzer.Process(arySamples, -7);
    analyzer.Process(nullptr, 1);
    EXPECT_EQ(analyzer.m_Channels[0]->m_pWindow, pWindow);
    EXPECT_EQ(analyzer.GetSamplePeak(), 0);
}

// The first sample of all stands at the last place of the second window.
TEST(PeakLevelWindow, AdvancesFirstAndTakesTheSampleAtItsEnd)
{
    OWN_FILTER own(4, std::vector<float>(48, 0.0F));
    const double arySamples[] = {0.5, 0.25};
    own.channel.Process(arySamples, 1, 1);
    EXPECT_EQ(own.channel.m_pWindow, own.aryHistory.data() + 1);
    EXPECT_EQ(own.aryHistory[12], 0.5F);
    own.channel.Process(arySamples + 1, 1, 1);
    EXPECT_EQ(own.channel.m_pWindow, own.aryHistory.data() + 2);
    EXPECT_EQ(own.aryHistory[13], 0.25F);
    EXPECT_EQ(own.channel.m_fTruePeak, 0);
}

TEST(PeakLevelWindow, SlidesBackWithElevenFloatsAtTheEndOfTheHistory)
{
    OWN_FILTER own(4, std::vector<float>(48, 0.0F));
    const std::vector<double> arySamples = Noise(16384, 1);
    own.channel.Process(arySamples.data(), 16383, 1);
    EXPECT_EQ(own.channel.m_pWindow, own.aryHistory.data() + 16383);
    EXPECT_EQ(own.aryHistory[16384 + 10], static_cast<float>(arySamples[16382]));
    own.channel.Process(arySamples.data() + 16383, 1, 1);
    EXPECT_EQ(own.channel.m_pWindow, own.aryHistory.data());
    for (size_t i = 0; i < 12; ++i)
        EXPECT_EQ(own.aryHistory[i], static_cast<float>(arySamples[16384 - 12 + i])) << i;
}

TEST(PeakLevelWindow, CoefficientsAreInterleavedByPhaseOldestSampleFirst)
{
    std::vector<float> aryTaps(48, 0.0F);
    aryTaps[0 * 4 + 2] = 3;     // the oldest of the twelve, in the third phase
    aryTaps[11 * 4 + 1] = 0.5F; // the newest, in the second phase
    OWN_FILTER own(4, aryTaps);
    const double fOne = 1;
    const double fZero = 0;
    own.channel.Process(&fOne, 1, 1);
    EXPECT_EQ(own.channel.m_fTruePeak, 0.5F);
    for (int i = 0; i < 10; ++i)
        own.channel.Process(&fZero, 1, 1);
    EXPECT_EQ(own.channel.m_fTruePeak, 0.5F);
    own.channel.Process(&fZero, 1, 1);
    EXPECT_EQ(own.channel.m_fTruePeak, 3);
}

TEST(PeakLevelWindow, TwoPhasesAreInterleavedByTwo)
{
    std::vector<float> aryTaps(24, 0.0F);
    aryTaps[11 * 2 + 1] = 2;
    OWN_FILTER own(2, aryTaps);
    const double fHalf = -0.5;
    own.channel.Process(&fHalf, 1, 1);
    EXPECT_EQ(own.channel.m_fTruePeak, 1);
    EXPECT_EQ(own.channel.m_fPeak, 0.5F);
}

TEST(PeakLevelWindow, OtherNumbersOfPhasesGiveZeroAndStillSlide)
{
    OWN_FILTER own(3, std::vector<float>(36, 1.0F));
    const double arySamples[] = {1, 1};
    own.channel.Process(arySamples, 2, 1);
    EXPECT_EQ(own.channel.m_fPeak, 1);
    EXPECT_EQ(own.channel.m_fTruePeak, 0);
    EXPECT_EQ(own.channel.m_pWindow, own.aryHistory.data() + 2);
    EXPECT_EQ(own.aryHistory[13], 1);
}

TEST(PeakLevelWindow, TapsAreDividedByThePhasesAndTheRestIsLeft)
{
    OWN_FILTER own(4, std::vector<float>(11, 1.0F)); // two taps a phase
    const double arySamples[] = {1, 1, 1};
    own.channel.Process(arySamples, 3, 1);
    EXPECT_EQ(own.channel.m_fTruePeak, 2);
    EXPECT_EQ(own.aryHistory[2], 1); // the first window starts at 1, and its second place is 2
}

TEST(PeakLevelWindow, WithoutAFilterOnlyThePeakIsKept)
{
    const double fOne = 1;
    for (const int nOversampling : {4, 2, -4})
    {
        CHANNEL channel;
        channel.m_nOversampling = nOversampling;
        channel.m_nFilterTaps = 48;
        channel.Process(&fOne, 1, 1);
        EXPECT_EQ(channel.m_fPeak, 1);
        EXPECT_EQ(channel.m_fTruePeak, 0);
    }
    OWN_FILTER own(4, {1, 1, 1}); // less than a tap a phase
    own.channel.Process(&fOne, 1, 1);
    EXPECT_EQ(own.channel.m_fPeak, 1);
    EXPECT_EQ(own.channel.m_fTruePeak, 0);
}

// Over three lengths of the history, in calls of every size, with the published filter and with any other.
TEST(PeakLevelTwin, EqualsItsPlainTwinBitForBit)
{
    std::mt19937 random(11);
    for (const int nOversampling : {2, 4})
    {
        for (const int nStride : {1, 2, 5})
        {
            CHANNEL channel;
            ASSERT_TRUE(channel.SetUp(nOversampling));
            TWIN twin = TwinOf(channel);
            for (int nDone = 0; nDone < 3 * 16384;)
            {
                const int nFrames = static_cast<int>(random() % (random() % 4 == 0 ? 20000 : 100));
                const std::vector<double> arySamples =
                    Noise(static_cast<size_t>(nFrames * nStride), static_cast<unsigned int>(random()), 1.1);
                channel.Process(arySamples.data(), nFrames, nStride);
                for (int i = 0; i < nFrames; ++i)
                    twin.Take(arySamples[static_cast<size_t>(i * nStride)]);
                nDone += nFrames;
                ASSERT_EQ(channel.m_fPeak, twin.fPeak);
                ASSERT_EQ(channel.m_fTruePeak, twin.fTruePeak);
                ASSERT_EQ(channel.m_pWindow - channel.m_pHistory, twin.nWindow);
            }
            EXPECT_TRUE(std::equal(channel.m_pHistory, channel.m_pHistory + 16384 + 11, twin.aryHistory.begin()));
        }
    }
}

TEST(PeakLevelTwin, EqualsItWithAnotherFilterToo)
{
    for (const int nTaps : {1, 4, 11, 12})
    {
        std::vector<float> aryTaps;
        for (const double fTap : Noise(static_cast<size_t>(nTaps) * 4, 5))
            aryTaps.push_back(static_cast<float>(fTap));
        OWN_FILTER own(4, aryTaps);
        TWIN twin{4, aryTaps};
        twin.aryHistory.resize(16384 + 11);
        const std::vector<double> arySamples = Noise(40000, 6);
        own.channel.Process(arySamples.data(), 40000, 1);
        for (const double fSample : arySamples)
            twin.Take(fSample);
        EXPECT_EQ(own.channel.m_fTruePeak, twin.fTruePeak) << nTaps;
        EXPECT_EQ(own.aryHistory, twin.aryHistory) << nTaps;
    }
}

TEST(PeakLevelSetUp, OversamplingFollowsTheRate)
{
    EXPECT_EQ(CPeakLevelAnalyzer::GetOversamplingForRate(8000), 4);
    EXPECT_EQ(CPeakLevelAnalyzer::GetOversamplingForRate(44100), 4);
    EXPECT_EQ(CPeakLevelAnalyzer::GetOversamplingForRate(96000), 4);
    EXPECT_EQ(CPeakLevelAnalyzer::GetOversamplingForRate(96001), 2);
    EXPECT_EQ(CPeakLevelAnalyzer::GetOversamplingForRate(176400), 2);
    EXPECT_EQ(CPeakLevelAnalyzer::GetOversamplingForRate(191999), 2);
    EXPECT_EQ(CPeakLevelAnalyzer::GetOversamplingForRate(192000), 0);
}

TEST(PeakLevelSetUp, MakesEveryChannelWithItsFilter)
{
    for (const int nRate : {8000, 44100, 96000, 176400, 192000})
    {
        for (const int nChannels : {1, 2, 32})
        {
            CPeakLevelAnalyzer analyzer;
            ASSERT_TRUE(analyzer.SetUp(Doubles(nRate, nChannels)));
            ASSERT_EQ(analyzer.m_Channels.GetSize(), nChannels);
            const CHANNEL& channel = *analyzer.m_Channels[nChannels - 1];
            const int nPhases = CPeakLevelAnalyzer::GetOversamplingForRate(static_cast<unsigned int>(nRate));
            EXPECT_EQ(channel.m_nOversampling, nPhases);
            EXPECT_EQ(channel.m_nFilterTaps, 12 * nPhases);
            EXPECT_EQ(channel.m_pHistory == nullptr, nPhases == 0);
            EXPECT_EQ(channel.m_pWindow, channel.m_pHistory);
            const std::vector<double> arySamples = Noise(static_cast<size_t>(100 * nChannels), 9);
            analyzer.Process(arySamples.data(), 100);
            EXPECT_GT(channel.m_fTruePeak, 0);
        }
    }
}

TEST(PeakLevelSetUp, RefusesWhatItCannotMeasureAndKeepsWhatItHas)
{
    CPeakLevelAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(44100, 2)));
    EXPECT_FALSE(analyzer.SetUp(Doubles(7999, 2)));
    EXPECT_FALSE(analyzer.SetUp(Doubles(192001, 2)));
    EXPECT_FALSE(analyzer.SetUp(Doubles(44100, 0)));
    EXPECT_FALSE(analyzer.SetUp(Doubles(44100, 33)));
    EXPECT_EQ(analyzer.m_Channels.GetSize(), 2);
    CHANNEL channel;
    EXPECT_FALSE(channel.SetUp(3));
    EXPECT_FALSE(channel.SetUp(-1));
    EXPECT_FALSE(channel.SetUp(8));
    EXPECT_EQ(channel.m_nOversampling, 0);
}

TEST(PeakLevelSetUp, ForgetsWhatWasMeasured)
{
    CPeakLevelAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(44100, 1)));
    const double fOne = 1;
    analyzer.Process(&fOne, 1);
    ASSERT_TRUE(analyzer.SetUp(Doubles(44100, 1)));
    EXPECT_EQ(analyzer.GetTruePeak(), 0);
    const std::vector<double> arySilence(20, 0.0);
    analyzer.Process(arySilence.data(), 20);
    EXPECT_EQ(analyzer.GetTruePeak(), 0); // nor does the history remember it
}

TEST(PeakLevelSetUp, FilterIsThePublishedOne)
{
    CHANNEL channel;
    ASSERT_TRUE(channel.SetUp(4));
    const float* p = channel.m_pCoefficients;
    EXPECT_EQ(p[0], 0.001708984375F);
    EXPECT_EQ(p[1], -0.0291748046875F);
    EXPECT_EQ(p[2], -0.0189208984375F);
    EXPECT_EQ(p[3], -0.00830078125F);
    EXPECT_EQ(p[5 * 4 + 3], 0.9721679687500F);
    EXPECT_EQ(p[6 * 4 + 0], 0.9721679687500F);
    for (int i = 0; i < 12; ++i)
    {
        // Every coefficient is a whole number of 1/8192, and the phases mirror each other.
        for (int j = 0; j < 4; ++j)
        {
            EXPECT_EQ(p[i * 4 + j] * 8192, std::round(p[i * 4 + j] * 8192)) << i << " " << j;
            EXPECT_EQ(p[i * 4 + j], p[(11 - i) * 4 + 3 - j]) << i << " " << j;
        }
    }
}

TEST(PeakLevelSetUp, TwoPhasesAreTheFirstAndTheThird)
{
    CHANNEL four;
    CHANNEL two;
    ASSERT_TRUE(four.SetUp(4) && two.SetUp(2));
    for (int i = 0; i < 12; ++i)
    {
        EXPECT_EQ(two.m_pCoefficients[i * 2], four.m_pCoefficients[i * 4]);
        EXPECT_EQ(two.m_pCoefficients[i * 2 + 1], four.m_pCoefficients[i * 4 + 2]);
    }
}

struct SINE_ROW
{
    const char* pName;
    int nRate;
    double fFrequency;
    double fPhase; // in parts of a turn
    double fLevel;
    double fLowerDB; // what the true peak may read
    double fUpperDB;
};

// EBU Tech 3341, true peak: a reading may lie 0.2 dB above and 0.4 dB below the peak of the wave.
const SINE_ROW s_aryTruePeaks[] = {
    {"QuarterOfTheRateOnTheSamples", 48000, 12000, 0, 0.5, -6.4, -5.8},
    {"QuarterOfTheRateBetweenTheSamples", 48000, 12000, 0.125, 0.5, -6.4, -5.8},
    {"SixthOfTheRate", 48000, 8000, 1.0 / 6, 0.5, -6.4, -5.8},
    {"EighthOfTheRate", 48000, 6000, 0.1875, 0.5, -6.4, -5.8},
    {"BeyondFullScale", 48000, 12000, 0.125, 1.41, 2.6, 3.2},
    {"QuarterOfTheRateAtTwoPhases", 176400, 44100, 0.125, 0.5, -6.8, -5.8},
    {"AudibleAtTwoPhases", 176400, 19000, 0.1, 0.5, -6.2, -5.8},
    {"AudibleWithoutPhases", 192000, 19000, 0.1, 0.5, -6.3, -5.9},
};

TEST(PeakLevelResult, TruePeakOfASineIsItsLevelWhereverTheSamplesFall)
{
    for (const SINE_ROW& row : s_aryTruePeaks)
    {
        CPeakLevelAnalyzer analyzer;
        ASSERT_TRUE(analyzer.SetUp(Doubles(row.nRate, 1)));
        for (int i = 0; i < row.nRate / 4; ++i)
        {
            const double fFade = std::min(1.0, i / (0.05 * row.nRate));
            const double fSample =
                row.fLevel * fFade * std::sin(2 * std::numbers::pi * (row.fFrequency * i / row.nRate + row.fPhase));
            analyzer.Process(&fSample, 1);
        }
        EXPECT_GE(analyzer.GetTruePeakDBTP(), row.fLowerDB) << row.pName;
        EXPECT_LE(analyzer.GetTruePeakDBTP(), row.fUpperDB) << row.pName;
    }
}

TEST(PeakLevelResult, IsThatOfOneChannelOrOfTheLoudest)
{
    CPeakLevelAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(192000, 3)));
    const double arySamples[] = {0.1, -1, 0};
    analyzer.Process(arySamples, 1);
    EXPECT_NEAR(analyzer.GetSamplePeakDBFS(0), -20, 1e-6);
    EXPECT_EQ(analyzer.GetSamplePeakDBFS(1), 0);
    EXPECT_EQ(analyzer.GetSamplePeakDBFS(2), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(analyzer.GetSamplePeak(), 1);
    EXPECT_EQ(analyzer.GetTruePeak(), 1);
    EXPECT_EQ(analyzer.GetTruePeak(0), 0.1F);
    EXPECT_EQ(analyzer.GetSamplePeak(3), 0);
    EXPECT_EQ(analyzer.GetTruePeak(-2), 0);
}

// A single sample: none of the four phases gives it back whole.
TEST(PeakLevelResult, TruePeakIsNeverBelowTheSamplePeak)
{
    CPeakLevelAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(44100, 1)));
    std::vector<double> arySamples(100, 0.0);
    arySamples[50] = 1;
    analyzer.Process(arySamples.data(), 100);
    EXPECT_EQ(analyzer.m_Channels[0]->m_fTruePeak, 0.97216796875F);
    EXPECT_EQ(analyzer.GetTruePeak(), 1);
    EXPECT_EQ(analyzer.GetTruePeakDBTP(), 0);
}
