#include "DRAnalyzer.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <type_traits>
#include <vector>

namespace
{
using CHANNEL = CDRAnalyzer::CChannel;

static_assert(!std::is_polymorphic_v<CDRAnalyzer>);
static_assert(std::is_same_v<decltype(&CDRAnalyzer::Process), void (CDRAnalyzer::*)(const double*, int)>);
static_assert(std::is_same_v<decltype(&CHANNEL::Process), void (CHANNEL::*)(const double*, int, int)>);

CAudioFormat Doubles(int nRate, int nChannels)
{
    CAudioFormat format;
    format.SetFormat(64, nRate, nChannels);
    return format;
}

// Adds channels with a window of nWindow samples to an analyser.
void AddChannels(CDRAnalyzer& analyzer, int nChannels, int nWindow)
{
    analyzer.m_Format = Doubles(44100, nChannels);
    for (int i = 0; i < nChannels; ++i)
    {
        CHANNEL* pChannel = new CHANNEL;
        pChannel->m_nWindowSamples = nWindow;
        analyzer.m_Channels.Add(pChannel);
    }
}

std::vector<double> Values(const LyNumberArray<double>& ary) { return std::vector<double>(ary.begin(), ary.end()); }

// The same measurement, told again sample by sample.
struct TWIN
{
    int nWindow;
    int nCount = 0;
    double fSum = 0;
    double fPeak = 0;
    std::vector<double> aryRMS = {};
    std::vector<double> aryPeaks = {};

    void Take(double fSample)
    {
        fSum = fSum + fSample * fSample;
        if (std::fabs(fSample) > fPeak)
            fPeak = std::fabs(fSample);
        if (++nCount == nWindow)
            Finish();
    }
    void Finish()
    {
        if (nCount == 0)
            return;
        const double fMean = 2 * fSum / nCount;
        aryRMS.push_back(fMean > 0 ? std::sqrt(fMean) : fMean);
        aryPeaks.push_back(fPeak);
        nCount = 0;
        fSum = fPeak = 0;
    }
};
} // namespace

TEST(DRAnalyzerStart, HasTheDefaultFormatAndNoChannelsAndDoesNothing)
{
    CDRAnalyzer analyzer;
    EXPECT_EQ(analyzer.m_Format.wFormatTag, 1);
    EXPECT_EQ(analyzer.m_Format.nBlockAlign, 4);
    EXPECT_EQ(analyzer.m_Format.nSamplesPerSec, 44100U);
    EXPECT_EQ(analyzer.m_Channels.GetSize(), 0);
    const double arySamples[] = {1, 1};
    analyzer.Process(arySamples, 1);
    analyzer.Finish();
    double fDB = 5;
    EXPECT_FALSE(analyzer.GetDynamicRange(fDB));
    EXPECT_EQ(fDB, 5);
    EXPECT_EQ(analyzer.GetDRValue(), -1);
}

TEST(DRAnalyzerStart, MembersStandInTheirOrder)
{
    CDRAnalyzer analyzer;
    EXPECT_EQ(static_cast<void*>(&analyzer), static_cast<void*>(&analyzer.m_Format));
    EXPECT_LT(static_cast<void*>(&analyzer.m_Format), static_cast<void*>(&analyzer.m_Channels));
    CHANNEL channel;
    const char* pStart = reinterpret_cast<const char*>(&channel);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_nWindowSamples) - pStart, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_nCount) - pStart, 4);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_fSumSquares) - pStart, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_fPeak) - pStart, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&channel.m_RMS) - pStart, 24);
    EXPECT_GT(reinterpret_cast<const char*>(&channel.m_Peaks), reinterpret_cast<const char*>(&channel.m_RMS));
}

TEST(DRAnalyzerWindow, SevenSamplesInWindowsOfThreeGiveTwoValuesAndFinishAThird)
{
    CDRAnalyzer analyzer;
    AddChannels(analyzer, 1, 3);
    const double arySamples[] = {0.5, -1, 0.5, 0, 0.25, 0, -0.5};
    analyzer.Process(arySamples, 7);
    const CHANNEL& channel = *analyzer.m_Channels[0];
    EXPECT_EQ(Values(channel.m_RMS), (std::vector<double>{1.0, std::sqrt(2 * 0.0625 / 3)}));
    EXPECT_EQ(Values(channel.m_Peaks), (std::vector<double>{1, 0.25}));
    EXPECT_EQ(channel.m_nCount, 1);
    EXPECT_EQ(channel.m_fSumSquares, 0.25);
    EXPECT_EQ(channel.m_fPeak, 0.5);
    analyzer.Finish();
    EXPECT_EQ(channel.m_RMS.GetSize(), 3);
    EXPECT_EQ(channel.m_RMS[2], std::sqrt(0.5));
    EXPECT_EQ(channel.m_Peaks[2], 0.5);
    EXPECT_EQ(channel.m_nCount, 0);
    EXPECT_EQ(channel.m_fSumSquares, 0);
    EXPECT_EQ(channel.m_fPeak, 0);
}

TEST(DRAnalyzerWindow, FinishOfAnEmptyWindowAddsNothing)
{
    CDRAnalyzer analyzer;
    AddChannels(analyzer, 1, 3);
    analyzer.Finish();
    EXPECT_EQ(analyzer.m_Channels[0]->m_RMS.GetSize(), 0);
    const double arySamples[] = {1, 1, 1};
    analyzer.Process(arySamples, 3);
    analyzer.Finish();
    analyzer.Finish();
    EXPECT_EQ(analyzer.m_Channels[0]->m_RMS.GetSize(), 1);
}

TEST(DRAnalyzerWindow, SilenceReadsZero)
{
    CDRAnalyzer analyzer;
    AddChannels(analyzer, 2, 4);
    const double arySamples[8] = {};
    analyzer.Process(arySamples, 4);
    EXPECT_EQ(Values(analyzer.m_Channels[1]->m_RMS), std::vector<double>{0});
    EXPECT_EQ(Values(analyzer.m_Channels[1]->m_Peaks), std::vector<double>{0});
    EXPECT_FALSE(std::signbit(analyzer.m_Channels[0]->m_RMS[0]));
    double fDB = 0;
    EXPECT_FALSE(analyzer.GetDynamicRange(fDB));
}

// The factor 2 inside the root.
TEST(DRAnalyzerWindow, FullScaleSineOfWholePeriodsReadsOne)
{
    CHANNEL channel;
    channel.m_nWindowSamples = 44100;
    for (int i = 0; i < 44100; ++i)
    {
        const double fSample = std::sin(2 * std::numbers::pi * 441 * i / 44100);
        channel.Process(&fSample, 1, 1);
    }
    ASSERT_EQ(channel.m_RMS.GetSize(), 1);
    EXPECT_NEAR(channel.m_RMS[0], 1.0, 1e-12);
    EXPECT_NEAR(channel.m_Peaks[0], 1.0, 1e-12);
}

TEST(DRAnalyzerWindow, StrideSkipsTheOtherChannels)
{
    CHANNEL channel;
    channel.m_nWindowSamples = 2;
    const double arySamples[] = {0.5, 9, 9, -0.5, 9, 9};
    channel.Process(arySamples, 2, 3);
    EXPECT_EQ(Values(channel.m_RMS), std::vector<double>{std::sqrt(0.5)});
    EXPECT_EQ(Values(channel.m_Peaks), std::vector<double>{0.5});
}

TEST(DRAnalyzerWindow, WithoutALengthNothingIsDone)
{
    for (const int nWindow : {0, -1, std::numeric_limits<int>::min()})
    {
        CDRAnalyzer analyzer;
        AddChannels(analyzer, 2, nWindow);
        const double arySamples[] = {1, 1, 1, 1};
        analyzer.Process(arySamples, 2);
        analyzer.Finish();
        EXPECT_EQ(analyzer.m_Channels[0]->m_RMS.GetSize(), 0);
        EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 0);
    }
}

TEST(DRAnalyzerWindow, NothingToProcessChangesNothing)
{
    CDRAnalyzer analyzer;
    AddChannels(analyzer, 2, 3);
    const double arySamples[] = {1, 1};
    analyzer.Process(arySamples, 0);
    analyzer.Process(arySamples, -1);
    analyzer.Process(nullptr, 1);
    EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 0);
}

TEST(DRAnalyzerWindow, WhatIsNoNumberIsNoPeak)
{
    CDRAnalyzer analyzer;
    AddChannels(analyzer, 2, 8);
    const double fNaN = std::numeric_limits<double>::quiet_NaN();
    const double arySamples[] = {0.5, 0.5, fNaN, fNaN, 0.25, 0.75};
    analyzer.Process(arySamples, 3);
    EXPECT_EQ(analyzer.m_Channels[0]->m_fPeak, 0.5);
    EXPECT_EQ(analyzer.m_Channels[1]->m_fPeak, 0.75);
    EXPECT_TRUE(std::isnan(analyzer.m_Channels[0]->m_fSumSquares));
}

// Channels are measured side by side where they can be; every bit is as if each were measured alone.
TEST(DRAnalyzerTwin, EqualsItsPlainTwinBitForBit)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> level(-1.2, 1.2);
    for (const int nChannels : {1, 2, 3, 5, 8, 32})
    {
        CDRAnalyzer analyzer;
        AddChannels(analyzer, nChannels, 0);
        std::vector<TWIN> aryTwins;
        for (int i = 0; i < nChannels; ++i)
        {
            // Neighbours mostly share a window; the fifth has its own.
            analyzer.m_Channels[i]->m_nWindowSamples = i == 4 ? 17 : 23;
            aryTwins.push_back(TWIN{i == 4 ? 17 : 23});
        }
        for (int nCall = 0; nCall < 60; ++nCall)
        {
            const int nFrames = static_cast<int>(random() % 50);
            std::vector<double> arySamples(static_cast<size_t>(nFrames * nChannels));
            for (double& fSample : arySamples)
                fSample = level(random);
            analyzer.Process(arySamples.data(), nFrames);
            for (size_t i = 0; i < arySamples.size(); ++i)
                aryTwins[i % static_cast<size_t>(nChannels)].Take(arySamples[i]);
        }
        analyzer.Finish();
        for (int i = 0; i < nChannels; ++i)
        {
            TWIN& twin = aryTwins[static_cast<size_t>(i)];
            twin.Finish();
            EXPECT_EQ(Values(analyzer.m_Channels[i]->m_RMS), twin.aryRMS) << nChannels << " " << i;
            EXPECT_EQ(Values(analyzer.m_Channels[i]->m_Peaks), twin.aryPeaks) << nChannels << " " << i;
        }
    }
}

TEST(DRAnalyzerSetUp, MakesAChannelForEachWithWindowsOfThreeSeconds)
{
    for (const int nRate : {8000, 44100, 192000})
    {
        for (const int nChannels : {1, 2, 32})
        {
            CDRAnalyzer analyzer;
            ASSERT_TRUE(analyzer.SetUp(Doubles(nRate, nChannels)));
            ASSERT_EQ(analyzer.m_Channels.GetSize(), nChannels);
            EXPECT_EQ(analyzer.m_Channels[nChannels - 1]->m_nWindowSamples, 3 * nRate);
            EXPECT_EQ(analyzer.m_Format.nSamplesPerSec, static_cast<unsigned int>(nRate));
        }
    }
}

TEST(DRAnalyzerSetUp, RefusesWhatItCannotMeasureAndKeepsWhatItHas)
{
    CDRAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(44100, 2)));
    EXPECT_FALSE(analyzer.SetUp(Doubles(7999, 2)));
    EXPECT_FALSE(analyzer.SetUp(Doubles(192001, 2)));
    EXPECT_FALSE(analyzer.SetUp(Doubles(44100, 0)));
    EXPECT_FALSE(analyzer.SetUp(Doubles(44100, 33)));
    EXPECT_EQ(analyzer.m_Channels.GetSize(), 2);
    EXPECT_EQ(analyzer.m_Format.nSamplesPerSec, 44100U);
}

TEST(DRAnalyzerSetUp, ForgetsWhatWasMeasured)
{
    CDRAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(8000, 1)));
    const double fSample = 1;
    analyzer.Process(&fSample, 1);
    analyzer.Finish();
    ASSERT_TRUE(analyzer.SetUp(Doubles(8000, 1)));
    EXPECT_EQ(analyzer.m_Channels[0]->m_RMS.GetSize(), 0);
    EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 0);
}

struct RANGE_ROW
{
    const char* pName;
    std::vector<double> aryRMS;
    std::vector<double> aryPeaks;
    double fDB;
};

const RANGE_ROW s_aryRanges[] = {
    {"OneWindowIsItsOwnFifthAndItsOwnSecondPeak", {0.1}, {1}, 20},
    {"SecondPeakOfTwo", {0.05, 0.05}, {1, 0.5}, 20},
    {"EqualPeaksAreFirstAndSecond", {0.05, 0.05}, {0.5, 0.5}, 20},
    {"LoudestOfFive", {0.01, 0.05, 0.02, 0.01, 0.01}, {0.5, 0.5, 0.1, 0.1, 0.1}, 20},
    {"NineStillHaveAFifthOfOne",
     {0.05, 0.04, 0.04, 0.04, 0.04, 0.04, 0.04, 0.04, 0.04},
     {0.5, 0.5, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1},
     20},
    // The root mean square of 0.6 and 0.8 is the root of a half.
    {"TwoOfTen", {0.8, 0, 0, 0, 0.6, 0, 0, 0, 0, 0}, {1, 1, 0, 0, 0, 0, 0, 0, 0, 0}, 3.0102999566398120},
};

TEST(DRAnalyzerResult, IsTheSecondPeakAboveTheLoudestFifth)
{
    for (const RANGE_ROW& row : s_aryRanges)
    {
        CDRAnalyzer analyzer;
        AddChannels(analyzer, 1, 10);
        for (const double fRMS : row.aryRMS)
            analyzer.m_Channels[0]->m_RMS.Add(fRMS);
        for (const double fPeak : row.aryPeaks)
            analyzer.m_Channels[0]->m_Peaks.Add(fPeak);
        double fDB = 0;
        EXPECT_TRUE(analyzer.GetDynamicRange(0, fDB)) << row.pName;
        EXPECT_NEAR(fDB, row.fDB, 1e-9) << row.pName;
    }
}

TEST(DRAnalyzerResult, TheWholeIsTheMeanOfTheChannelsThatHaveOne)
{
    CDRAnalyzer analyzer;
    AddChannels(analyzer, 3, 10);
    const double aryLevels[] = {0.1, 0.01, 0}; // 20 dB, 40 dB, silence
    for (int i = 0; i < 3; ++i)
    {
        analyzer.m_Channels[i]->m_RMS.Add(aryLevels[i]);
        analyzer.m_Channels[i]->m_Peaks.Add(i == 2 ? 0 : 1);
    }
    double fDB = 0;
    EXPECT_TRUE(analyzer.GetDynamicRange(fDB));
    EXPECT_NEAR(fDB, 30, 1e-9);
    EXPECT_EQ(analyzer.GetDRValue(), 30);
    EXPECT_FALSE(analyzer.GetDynamicRange(2, fDB));
    EXPECT_FALSE(analyzer.GetDynamicRange(3, fDB));
    EXPECT_FALSE(analyzer.GetDynamicRange(-1, fDB));
}

TEST(DRAnalyzerResult, ASineHasNoneAndTheValueIsRounded)
{
    CDRAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Doubles(8000, 2)));
    for (int i = 0; i < 8000 * 9; ++i)
    {
        const double fSine = std::sin(2 * std::numbers::pi * 100 * i / 8000);
        const double arySamples[] = {fSine, fSine * (i % 24000 < 12000 ? 1 : 0.1)};
        analyzer.Process(arySamples, 1);
    }
    analyzer.Finish();
    double fDB = 0;
    ASSERT_TRUE(analyzer.GetDynamicRange(0, fDB));
    EXPECT_NEAR(fDB, 0, 1e-9);
    ASSERT_TRUE(analyzer.GetDynamicRange(1, fDB));
    EXPECT_NEAR(fDB, -10 * std::log10(0.505), 1e-3); // half the time at a hundredth of the power
    EXPECT_EQ(analyzer.GetDRValue(), 1);             // (0 + 2.97) / 2 = 1.48
}

TEST(DRAnalyzerResult, WhatIsNoNumberIsNoResult)
{
    CDRAnalyzer analyzer;
    AddChannels(analyzer, 1, 10);
    analyzer.m_Channels[0]->m_RMS.Add(std::numeric_limits<double>::quiet_NaN());
    analyzer.m_Channels[0]->m_Peaks.Add(1);
    double fDB = 0;
    EXPECT_FALSE(analyzer.GetDynamicRange(fDB));
    EXPECT_EQ(analyzer.GetDRValue(), -1);
}

TEST(DRAnalyzerResult, SamplesWhoseSquaresOverflowHaveNone)
{
    CDRAnalyzer analyzer;
    AddChannels(analyzer, 1, 2);
    const double arySamples[] = {1e308, -1e308};
    analyzer.Process(arySamples, 2);
    double fDB = 0;
    EXPECT_FALSE(analyzer.GetDynamicRange(fDB));
}
