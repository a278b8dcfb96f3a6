#include "AudioFormat.h"
#include "IIRFilter.h"
#include "LoudnessSetup.h"
#include "R128Analyzer.h"
#include <climits>
#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <numbers>
#include <vector>

namespace
{
constexpr double PRINTED_DIGITS = 1e-12;

double GetGainDB(const CLoudnessSetup::SECTION& s, double fRate, double fHz)
{
    const std::complex<double> d = std::polar(1.0, -2 * std::numbers::pi * fHz / fRate); // 1/z
    return 20 * std::log10(std::abs((s.b0 + s.b1 * d + s.b2 * d * d) / (1.0 + s.a1 * d + s.a2 * d * d)));
}

double GetKWeightDB(double fRate, double fHz)
{
    return GetGainDB(CLoudnessSetup::GetPreFilter(fRate), fRate, fHz) +
           GetGainDB(CLoudnessSetup::GetRLBFilter(fRate), fRate, fHz);
}

std::vector<double> GetWeights(const CAudioFormat& format)
{
    std::vector<double> aryWeights;
    for (int i = 0; i < format.nChannels; ++i)
        aryWeights.push_back(CLoudnessSetup::GetChannelWeight(format, i));
    return aryWeights;
}
} // namespace

// BS.1770-4, annex 1, table 1.
TEST(LoudnessSetup, PreFilterAt48kHzIsThePrintedOne)
{
    const CLoudnessSetup::SECTION s = CLoudnessSetup::GetPreFilter(48000);
    EXPECT_NEAR(s.b0, 1.53512485958697, PRINTED_DIGITS);
    EXPECT_NEAR(s.b1, -2.69169618940638, PRINTED_DIGITS);
    EXPECT_NEAR(s.b2, 1.19839281085285, PRINTED_DIGITS);
    EXPECT_NEAR(s.a1, -1.69065929318241, PRINTED_DIGITS);
    EXPECT_NEAR(s.a2, 0.73248077421585, PRINTED_DIGITS);
}

// BS.1770-4, annex 1, table 2.
TEST(LoudnessSetup, RLBFilterAt48kHzIsThePrintedOne)
{
    const CLoudnessSetup::SECTION s = CLoudnessSetup::GetRLBFilter(48000);
    EXPECT_EQ(s.b0, 1);
    EXPECT_EQ(s.b1, -2);
    EXPECT_EQ(s.b2, 1);
    EXPECT_NEAR(s.a1, -1.99004745483398, PRINTED_DIGITS);
    EXPECT_NEAR(s.a2, 0.99007225036621, PRINTED_DIGITS);
}

// What the 0.691 of the loudness formula takes back is the gain at 1 kHz (997 Hz in BS.1770-4).
TEST(LoudnessSetup, TheGainAtOneKilohertzIsTheCalibration) { EXPECT_NEAR(GetKWeightDB(48000, 997), 0.691, 0.005); }

TEST(LoudnessSetup, TheShelfIsFourDecibelsAndTheHighPassFallsByTwelveAnOctave)
{
    for (double fRate : {8000.0, 44100.0, 96000.0, 192000.0})
    {
        const CLoudnessSetup::SECTION pre = CLoudnessSetup::GetPreFilter(fRate);
        EXPECT_NEAR(GetGainDB(pre, fRate, 10), 0, 0.01) << fRate;
        EXPECT_NEAR(GetGainDB(pre, fRate, fRate / 2 - 1), 4, 0.01) << fRate;
        const CLoudnessSetup::SECTION rlb = CLoudnessSetup::GetRLBFilter(fRate);
        EXPECT_NEAR(GetGainDB(rlb, fRate, 4) - GetGainDB(rlb, fRate, 2), 12, 0.2) << fRate;
    }
}

TEST(LoudnessSetup, OtherRatesHaveTheSameFrequencyResponse)
{
    for (double fRate : {44100.0, 88200.0, 96000.0, 176400.0, 192000.0})
    {
        for (double fHz : {20.0, 38.0, 60.0, 100.0, 400.0, 1000.0, 1682.0, 3000.0})
            EXPECT_NEAR(GetKWeightDB(fRate, fHz), GetKWeightDB(48000, fHz), 0.05) << fRate << ' ' << fHz;
    }
    // At low rates the frequency axis of the bilinear transform is already bent, and the numerator of the high pass,
    // kept as printed, has its own gain.
    for (double fRate : {8000.0, 16000.0, 22050.0, 32000.0})
    {
        for (double fHz : {20.0, 38.0, 100.0, 400.0, 1000.0})
            EXPECT_NEAR(GetKWeightDB(fRate, fHz), GetKWeightDB(48000, fHz), 0.25) << fRate << ' ' << fHz;
    }
}

TEST(LoudnessSetup, FiltersAreStableAtEveryRate)
{
    for (int nRate = 8000; nRate <= 192000; nRate += 100)
    {
        for (const CLoudnessSetup::SECTION& s :
             {CLoudnessSetup::GetPreFilter(nRate), CLoudnessSetup::GetRLBFilter(nRate)})
        {
            ASSERT_LT(std::fabs(s.a2), 1) << nRate;
            ASSERT_LT(std::fabs(s.a1), 1 + s.a2) << nRate;
        }
    }
}

TEST(LoudnessSetup, TheFilterIsBothSectionsInARow)
{
    CIIRFilter filter;
    filter.m_State[3] = 5;
    CLoudnessSetup::SetKWeighting(filter, 44100);
    EXPECT_EQ(filter.m_nSections, 2);
    EXPECT_NE(filter.m_nForm, 0);
    EXPECT_EQ(filter.m_State[3], 0);

    // The same in direct form I, which takes the sections as they are printed.
    CIIRFilter twin;
    twin.m_nSections = 2;
    const CLoudnessSetup::SECTION pre = CLoudnessSetup::GetPreFilter(44100);
    const CLoudnessSetup::SECTION rlb = CLoudnessSetup::GetRLBFilter(44100);
    const double ary[] = {0, pre.b0, pre.b1, pre.b2, pre.a1, pre.a2, rlb.b0, rlb.b1, rlb.b2, rlb.a1, rlb.a2};
    std::copy(std::begin(ary), std::end(ary), twin.m_Coef);
    for (int i = 0; i < 5000; ++i)
    {
        const double x = i == 0 ? 1 : std::sin(i * i * 0.001);
        ASSERT_NEAR(filter.Filter(x), twin.Filter(x), 1e-9) << i;
    }
}

TEST(LoudnessSetup, WeightsFollowTheChannelTable)
{
    struct ROW
    {
        int nChannels;
        std::vector<double> aryWeights;
    };
    const ROW aryRows[] = {
        {1, {1}},
        {2, {1, 1}},
        {3, {1, 1, 0}}, // left, right, low-frequency
        {4, {1, 1, 1.41, 1.41}},
        {5, {1, 1, 1, 1.41, 1.41}},
        {6, {1, 1, 1, 0, 1.41, 1.41}},
        {7, {1, 1, 1, 0, 1.41, 1.41, 1}},    // the last is straight behind
        {8, {1, 1, 1, 0, 1.41, 1.41, 1, 1}}, // sides; the back pair behind them is off the sides
        {10, {1, 1, 1, 0, 1.41, 1.41, 1, 1, 1, 1}},
    };
    for (const ROW& row : aryRows)
    {
        CAudioFormat format;
        format.SetFormat(16, 48000, row.nChannels, false, LY_GUID_NULL, true);
        EXPECT_EQ(GetWeights(format), row.aryWeights) << row.nChannels;
    }
    CAudioFormat format;
    format.SetFormat(16, 48000, 7, false, LY_GUID_NULL, true);
    format.SetChannelsInfo(7, CAudioFormat::LAYOUT_BACK_CENTER_FIRST);
    EXPECT_EQ(GetWeights(format), std::vector<double>({1, 1, 1, 0, 1, 1.41, 1.41}));
}

TEST(LoudnessSetup, WhatIsNoChannelHasNoWeight)
{
    CAudioFormat format;
    format.SetFormat(16, 48000, 2, false, LY_GUID_NULL, true);
    format.m_Channels[1].bUsed = false;
    EXPECT_EQ(GetWeights(format), std::vector<double>({1, 0}));
    for (int nChannel : {-1, 2, 31, 32, INT_MAX, INT_MIN})
        EXPECT_EQ(CLoudnessSetup::GetChannelWeight(format, nChannel), 0);
    format.nChannels = 65535;
    for (int nChannel : {2, 31, 32, 65534})
        EXPECT_EQ(CLoudnessSetup::GetChannelWeight(format, nChannel), 0);
}

TEST(R128SetUp, MakesChannelsFiltersWeightsAndBlocksOf100ms)
{
    CR128Analyzer analyzer;
    CAudioFormat format;
    format.SetFormat(64, 44100, 6, false, LY_GUID_NULL, true);
    ASSERT_TRUE(analyzer.SetUp(format));
    EXPECT_EQ(analyzer.m_nBlockSamples, 4410);
    EXPECT_EQ(analyzer.m_Format.nChannels, 6);
    ASSERT_EQ(analyzer.m_Channels.GetSize(), 6);
    EXPECT_EQ(analyzer.m_Channels[0]->m_fWeight, 1);
    EXPECT_EQ(analyzer.m_Channels[3]->m_fWeight, 0);
    EXPECT_EQ(analyzer.m_Channels[5]->m_fWeight, 1.41);
    EXPECT_EQ(analyzer.m_Channels[5]->m_nSections, 2);
}

TEST(R128SetUp, StartsAnewForMoreAndForFewerChannels)
{
    CR128Analyzer analyzer;
    const std::vector<double> arySamples(32 * 8000, 0.5);
    for (int nChannels : {2, 32, 1, 6, 6})
    {
        CAudioFormat format;
        format.SetFormat(64, 8000, nChannels, false, LY_GUID_NULL, true);
        ASSERT_TRUE(analyzer.SetUp(format));
        EXPECT_EQ(analyzer.m_Blocks.GetSize(), 0);
        ASSERT_EQ(analyzer.m_Channels.GetSize(), nChannels);
        EXPECT_EQ(analyzer.m_Channels[0]->m_nCount, 0);
        EXPECT_EQ(analyzer.m_Channels[0]->m_State[0], 0);
        ASSERT_TRUE(analyzer.Process(arySamples.data(), 8000));
        EXPECT_EQ(analyzer.m_Blocks.GetSize(), 10);
    }
}

TEST(R128SetUp, RefusesWhatCannotBeMeasuredAndChangesNothing)
{
    CR128Analyzer analyzer;
    CAudioFormat good;
    good.SetFormat(64, 48000, 2, false, LY_GUID_NULL, true);
    ASSERT_TRUE(analyzer.SetUp(good));
    const CR128Analyzer::CChannel* pChannel = analyzer.m_Channels[0];
    struct ROW
    {
        unsigned int nRate;
        unsigned short nChannels;
    };
    for (const ROW& row :
         {ROW{0, 2}, ROW{7999, 2}, ROW{192001, 2}, ROW{UINT_MAX, 2}, ROW{48000, 0}, ROW{48000, 33}, ROW{48000, 65535}})
    {
        CAudioFormat bad = good;
        bad.nSamplesPerSec = row.nRate;
        bad.nChannels = row.nChannels;
        EXPECT_FALSE(analyzer.SetUp(bad)) << row.nRate << ' ' << row.nChannels;
        EXPECT_EQ(analyzer.m_Channels[0], pChannel);
        EXPECT_EQ(analyzer.m_Format.nSamplesPerSec, 48000U);
    }
}
