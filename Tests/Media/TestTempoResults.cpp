#include "BeatsPerMinuteAnalyzer.h"
#include "TempoResults.h"
#include "Thinning.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>
#include <vector>

namespace
{
using Analyzer = CBeatsPerMinuteAnalyzerV1;

void Count(Analyzer& analyzer, int nTempo, int nTimes)
{
    analyzer.m_Histogram[nTempo] += nTimes;
    analyzer.m_nTotal += nTimes;
}

enum CLICK
{
    BURST,   // 10 ms of 1 kHz, as of a metronome
    IMPULSE, // one sample
    DRUM     // a fading tone of 60 Hz
};

std::vector<double> MakeClick(CLICK eClick, int nRate)
{
    if (eClick == IMPULSE)
        return {0.9};
    std::vector<double> arySamples(static_cast<size_t>(nRate) / (eClick == BURST ? 100 : 4));
    for (size_t i = 0; i < arySamples.size(); ++i)
    {
        const double fTime = static_cast<double>(i) / nRate;
        arySamples[i] = eClick == BURST ? 0.8 * std::sin(2 * std::numbers::pi * 1000 * fTime)
                                        : 0.9 * std::exp(-fTime * 30) * std::sin(2 * std::numbers::pi * 60 * fTime);
    }
    return arySamples;
}

constexpr int LISTEN_SECONDS = 20;

// Clicks, in one channel, over a little noise if asked for.
CTempoResults Listen(double fBPM, CLICK eClick, int nRate, double fNoise)
{
    std::minstd_rand random(1);
    std::uniform_real_distribution<double> noise(-fNoise, fNoise);
    std::vector<double> arySamples(static_cast<size_t>(LISTEN_SECONDS * nRate));
    if (fNoise > 0)
        std::generate(arySamples.begin(), arySamples.end(), [&] { return noise(random); });
    const std::vector<double> aryClick = MakeClick(eClick, nRate);
    for (int nClick = 0; nClick < LISTEN_SECONDS * fBPM / 60; ++nClick)
    {
        const size_t nStart = static_cast<size_t>(std::lround(nClick * 60 / fBPM * nRate));
        for (size_t i = 0; i < aryClick.size() && nStart + i < arySamples.size(); ++i)
            arySamples[nStart + i] += aryClick[i];
    }
    Analyzer analyzer;
    EXPECT_TRUE(analyzer.SetUp(nRate));
    analyzer.ProcessFrames(arySamples.data(), static_cast<int>(arySamples.size()), 1);
    EXPECT_TRUE(analyzer.Finish());
    return CTempoResults(analyzer);
}

// Within 2 %. From 181 on tempos are folded, and 180 is 181 by the uncertainty of a step: there it may be the octave
// below.
bool IsTempo(double fMeasured, double fBPM)
{
    constexpr double TOLERANCE = 0.02;
    const bool bOctave = fBPM >= Analyzer::MAX_TEMPO && std::fabs(fMeasured * 2 / fBPM - 1) < TOLERANCE;
    return bOctave || std::fabs(fMeasured / fBPM - 1) < TOLERANCE;
}
} // namespace

TEST(TempoResults, NoIntervalIsNoTempo)
{
    const CTempoResults results{Analyzer()};
    EXPECT_EQ(results.m_fBPM, 0);
    EXPECT_EQ(results.m_fOctaveBPM, 0);
    EXPECT_EQ(results.m_fConfidence, 0);
    EXPECT_EQ(results.m_nIntervals, 0);
}

TEST(TempoResults, TheNearerOctaveIsToldBesideATempo)
{
    struct ROW
    {
        int nTempo;
        double fTimes;
    };
    for (const ROW& row : {ROW{50, 2}, ROW{80, 2}, ROW{120, 0.5}, ROW{170, 0.5}})
    {
        Analyzer analyzer;
        Count(analyzer, row.nTempo, 5);
        const CTempoResults results(analyzer);
        EXPECT_NEAR(results.m_fOctaveBPM, results.m_fBPM * row.fTimes, 1e-9) << row.nTempo;
    }
}

TEST(TempoResults, OneTempoIsAsCertainAsItIsFrequent)
{
    Analyzer analyzer;
    Count(analyzer, 120, 1); // an interval of 500 ms alone
    EXPECT_NEAR(CTempoResults(analyzer).m_fBPM, 120, 1e-9);
    EXPECT_NEAR(CTempoResults(analyzer).m_fConfidence, 0, 1e-9);
    Count(analyzer, 120, 3);
    EXPECT_NEAR(CTempoResults(analyzer).m_fConfidence, 0.5, 1e-9); // 1 - 1 / sqrt(4)
    Count(analyzer, 120, 396);
    const CTempoResults results(analyzer);
    EXPECT_NEAR(results.m_fBPM, 120, 1e-9);
    EXPECT_NEAR(results.m_fConfidence, 0.95, 1e-9);
    EXPECT_EQ(results.m_nIntervals, 400);
}

// 60 stands for the intervals from 985 to 1000 ms, whose middle is 992.5 ms.
TEST(TempoResults, ATempoIsTheMiddleOfItsIntervals)
{
    Analyzer analyzer;
    Count(analyzer, 60, 1);
    EXPECT_NEAR(CTempoResults(analyzer).m_fBPM, 60000 / 992.5, 1e-9);
}

// 118 stands for 505 ms, 120 for 500 ms: in equal numbers, 502.5 ms.
TEST(TempoResults, NeighboursAreOneTempo)
{
    Analyzer analyzer;
    Count(analyzer, 118, 3);
    Count(analyzer, 120, 3);
    const CTempoResults results(analyzer);
    EXPECT_NEAR(results.m_fBPM, 60000 / 502.5, 0.2);
    EXPECT_GT(results.m_fConfidence, 0.5);
    EXPECT_EQ(results.m_nIntervals, 6);
}

// Basses at one and a half and at two and a half beats of 600 ms: 900 ms is counted at 66 and 1500 ms at 40. The pulse
// of both is 300 ms, half a beat, and told an octave lower.
TEST(TempoResults, MultiplesOfABeatSpeakForTheBeat)
{
    Analyzer analyzer;
    Count(analyzer, 66, 15);
    Count(analyzer, 40, 20);
    const CTempoResults results(analyzer);
    EXPECT_NEAR(results.m_fBPM, 100, 1);
    EXPECT_GT(results.m_fConfidence, 0.5);
}

// A drum track at 180: 335 ms is counted at 179, and 330 ms, that is 181, folded at 90.
TEST(TempoResults, TheFoldedPartOfATempoSpeaksForItToo)
{
    Analyzer analyzer;
    Count(analyzer, 179, 20);
    Count(analyzer, 90, 10);
    const CTempoResults results(analyzer);
    EXPECT_NEAR(results.m_fBPM, 180, 1);
    EXPECT_GT(results.m_fConfidence, 0.5);
}

TEST(TempoResults, StepsThatAreNotQuite5msAreTakenAsTheyAre)
{
    Analyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(44100)); // 220 frames
    Count(analyzer, 120, 1);
    EXPECT_NEAR(CTempoResults(analyzer).m_fBPM, 120 * 220.5 / 220, 1e-9);
}

TEST(TempoResults, EveryTempoIsFoundNearItself)
{
    for (int i = Analyzer::MIN_TEMPO; i <= Analyzer::MAX_TEMPO; ++i)
    {
        Analyzer analyzer;
        Count(analyzer, i, 3);
        EXPECT_NEAR(CTempoResults(analyzer).m_fBPM, i + 0.5, 0.51) << i;
    }
}

TEST(TempoResults, CountersOutOfAllRangeDoNoHarm)
{
    Analyzer analyzer;
    for (int& n : analyzer.m_Histogram)
        n = 0x7FFFFFFF;
    CTempoResults results(analyzer);
    EXPECT_EQ(results.m_nIntervals, 0x7FFFFFFF);
    EXPECT_LT(results.m_fConfidence, 0.5);
    for (int& n : analyzer.m_Histogram)
        n = -5;
    results = CTempoResults(analyzer);
    EXPECT_EQ(results.m_fBPM, 0);
}

TEST(TempoResults, ClickTracksFrom60To180)
{
    for (CLICK eClick : {BURST, IMPULSE, DRUM})
    {
        for (int nRate : {44100, 48000})
        {
            for (int nBPM = 60; nBPM <= 180; nBPM += nRate == 44100 ? Thinning::Some(5, 60) : Thinning::Some(30, 120))
            {
                const CTempoResults results = Listen(nBPM, eClick, nRate, 0);
                EXPECT_TRUE(IsTempo(results.m_fBPM, nBPM)) << nBPM << " read as " << results.m_fBPM << ", " << eClick;
                EXPECT_GT(results.m_fConfidence, 0.6) << nBPM << ' ' << eClick;
                EXPECT_GE(results.m_nIntervals, nBPM * LISTEN_SECONDS / 60 - 3) << nBPM << ' ' << eClick;
            }
        }
    }
}

TEST(TempoResults, ClickTracksOverNoise)
{
    for (int nBPM = 60; nBPM <= 180; nBPM += Thinning::Some(10, 60))
    {
        const CTempoResults results = Listen(nBPM, DRUM, 44100, 0.05);
        EXPECT_TRUE(IsTempo(results.m_fBPM, nBPM)) << nBPM << " read as " << results.m_fBPM;
    }
}

TEST(TempoResults, AClickTrackTellsItsOctave)
{
    EXPECT_NEAR(Listen(60, DRUM, 44100, 0).m_fOctaveBPM, 120, 2);
    EXPECT_NEAR(Listen(150, DRUM, 44100, 0).m_fOctaveBPM, 75, 2);
}

TEST(TempoResults, AClickTrackOfFortyIsNoBar)
{
    const CTempoResults results = Listen(40, DRUM, 44100, 0);
    EXPECT_NEAR(results.m_fBPM, 40, 0.8);
    EXPECT_NEAR(results.m_fOctaveBPM, 80, 1.6);
}

// Intervals of 600 ms in the histogram, and drums at 150 to hear.
TEST(TempoResults, WhereNothingComesAgainTheHistogramTells)
{
    Analyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(44100));
    Count(analyzer, 100, 9);
    const std::vector<double> arySilence(static_cast<size_t>(3 * 44100));
    analyzer.ProcessFrames(arySilence.data(), static_cast<int>(arySilence.size()), 1);
    EXPECT_NEAR(CTempoResults(analyzer).m_fBPM, 100, 1);
    const std::vector<double> aryDrum = MakeClick(DRUM, 44100);
    std::vector<double> aryBeat(static_cast<size_t>(0.4 * 44100));
    std::copy_n(aryDrum.begin(), std::min(aryDrum.size(), aryBeat.size()), aryBeat.begin());
    for (int i = 0; i < 20; ++i)
        analyzer.ProcessFrames(aryBeat.data(), static_cast<int>(aryBeat.size()), 1);
    EXPECT_NEAR(CTempoResults(analyzer).m_fBPM, 150, 3);
    EXPECT_GT(CTempoResults(analyzer).m_nIntervals, 9);
}

TEST(TempoResults, OtherRates)
{
    for (int nRate : {8000, 11025, 22050, 96000, 192000})
    {
        if (Thinning::SANITIZED && nRate > 44100)
            continue;
        const CTempoResults results = Listen(100, DRUM, nRate, 0);
        EXPECT_NEAR(results.m_fBPM, 100, 1) << nRate;
    }
}

TEST(TempoResults, NoiseAloneIsNotCertain) { EXPECT_LT(Listen(1, IMPULSE, 44100, 0.3).m_fConfidence, 0.5); }
