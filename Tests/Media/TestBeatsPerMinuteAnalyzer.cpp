#include "AudioFormat.h"
#include "BeatsPerMinuteAnalyzer.h"
#include <climits>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

static_assert(!std::is_polymorphic_v<CBeatsPerMinuteAnalyzerV1>);
static_assert(std::is_same_v<decltype(CBeatsPerMinuteAnalyzerV1::m_Histogram), int[256]>);

namespace
{
using Analyzer = CBeatsPerMinuteAnalyzerV1;

// An analyser with steps of one frame and a filter that only delays, so that a step's energy is a frame's square.
Analyzer MakePlain()
{
    Analyzer analyzer;
    analyzer.m_Filter.b0 = 1;
    analyzer.m_nSamplesPerStep = 1;
    return analyzer;
}

// One step with an energy above the average, or below it, whatever came before.
void Step(Analyzer& analyzer, bool bLoud)
{
    analyzer.m_fFastAverage = 0;
    analyzer.m_fSlowAverage = bLoud ? -1 : 1;
    analyzer.ProcessBlock(0, 0);
}

// Steps that are quiet until nStep, and then a loud one.
void BeatAt(Analyzer& analyzer, int nStep)
{
    while (analyzer.m_nStep < nStep)
        Step(analyzer, false);
    Step(analyzer, true);
}

int SumHistogram(const Analyzer& analyzer)
{
    int nSum = 0;
    for (int n : analyzer.m_Histogram)
        nSum += n;
    return nSum;
}

// Bytes from member to member: the filter has some behind its last one that mean nothing.
void ExpectSame(const Analyzer& first, const Analyzer& second)
{
    const auto IsSame = [](const void* p1, const void* p2, size_t nBytes) { return memcmp(p1, p2, nBytes) == 0; };
    EXPECT_TRUE(IsSame(&first.m_fFastAverage, &second.m_fFastAverage, 16 + sizeof first.m_Histogram + 8));
    EXPECT_TRUE(IsSame(&first.m_Filter.b0, &second.m_Filter.b0, 17 * sizeof(float)));
    EXPECT_TRUE(IsSame(&first.m_fEnergy, &second.m_fEnergy, 8 + 4 * sizeof(int)));
    EXPECT_EQ(first.GetOnsets().GetFrames(), second.GetOnsets().GetFrames());
    for (int i = 0; i <= COnsetCorrelation::MAX_LAG; ++i)
        ASSERT_EQ(first.GetOnsets().GetCovariance(i), second.GetOnsets().GetCovariance(i)) << i;
}
} // namespace

TEST(BeatsPerMinuteAnalyzer, StartsWithZeros)
{
    const Analyzer analyzer;
    EXPECT_EQ(analyzer.m_fFastAverage, 0);
    EXPECT_EQ(analyzer.m_fSlowAverage, 0);
    EXPECT_EQ(SumHistogram(analyzer), 0);
    EXPECT_EQ(analyzer.m_nTotal, 0);
    EXPECT_EQ(analyzer.m_nSinceBeat, 0);
    EXPECT_EQ(analyzer.m_fEnergy, 0);
    EXPECT_EQ(analyzer.m_nLastBeatMS, 0);
    EXPECT_EQ(analyzer.m_nStepSamples, 0);
    EXPECT_EQ(analyzer.m_nSamplesPerStep, 0);
    EXPECT_EQ(analyzer.m_nStep, 0);
    EXPECT_EQ(analyzer.m_Filter.m_fQ, 1.4F);
}

TEST(BeatsPerMinuteAnalyzer, LiesInMemoryInTheOrderOfItsMembers)
{
    const Analyzer analyzer;
    const char* pStart = reinterpret_cast<const char*>(&analyzer);
    const auto Offset = [pStart](const void* p) { return static_cast<const char*>(p) - pStart; };
    EXPECT_EQ(Offset(&analyzer.m_fFastAverage), 0);
    EXPECT_EQ(Offset(&analyzer.m_fSlowAverage), 8);
    EXPECT_EQ(Offset(&analyzer.m_Histogram), 16);
    EXPECT_EQ(Offset(&analyzer.m_nTotal), 1040);
    EXPECT_EQ(Offset(&analyzer.m_nSinceBeat), 1044);
    EXPECT_EQ(Offset(&analyzer.m_Filter), 1048);
    EXPECT_EQ(Offset(&analyzer.m_fEnergy), 1128);
    EXPECT_EQ(Offset(&analyzer.m_nLastBeatMS), 1136);
    EXPECT_EQ(Offset(&analyzer.m_nStepSamples), 1140);
    EXPECT_EQ(Offset(&analyzer.m_nSamplesPerStep), 1144);
    EXPECT_EQ(Offset(&analyzer.m_nStep), 1148);
}

TEST(BeatsPerMinuteAnalyzer, FinishIsAlwaysTrueAndDoesNothing)
{
    Analyzer analyzer;
    const Analyzer before = analyzer;
    EXPECT_TRUE(analyzer.Finish());
    ExpectSame(analyzer, before);
}

TEST(BeatsPerMinuteAnalyzer, WithoutSetUpNoStepEnds)
{
    Analyzer analyzer;
    for (int i = 0; i < 1000; ++i)
        analyzer.ProcessBlock(30000, -20000);
    EXPECT_EQ(analyzer.m_nStep, 0);
    EXPECT_EQ(analyzer.m_nStepSamples, 1000);
    EXPECT_EQ(analyzer.m_fEnergy, 0);
}

// The mean of both channels, two calls late: (2 + 4) / 2 = 3, then (-5 + 0) / 2 = -2.5.
TEST(BeatsPerMinuteAnalyzer, EnergyIsTheSquareOfTheMeanTwoFramesLate)
{
    Analyzer analyzer = MakePlain();
    analyzer.m_nSamplesPerStep = 100;
    analyzer.ProcessBlock(2, 4);
    analyzer.ProcessBlock(-5, 0);
    EXPECT_EQ(analyzer.m_fEnergy, 0);
    analyzer.ProcessBlock(0, 0);
    EXPECT_EQ(analyzer.m_fEnergy, 9);
    analyzer.ProcessBlock(0, 0);
    EXPECT_EQ(analyzer.m_fEnergy, 9 + 6.25);
    EXPECT_EQ(analyzer.m_nStepSamples, 4);
}

TEST(BeatsPerMinuteAnalyzer, TheSquareIsTakenInFloat)
{
    Analyzer analyzer = MakePlain();
    analyzer.m_nSamplesPerStep = 100;
    analyzer.ProcessBlock(8191, 8190); // 8190.5, whose square 67084290.25 lies between the floats ...288 and ...292
    analyzer.ProcessBlock(0, 0);
    analyzer.ProcessBlock(0, 0);
    EXPECT_EQ(analyzer.m_fEnergy, 67084292.0);
}

// Two frames of 4 and 8 in a step: mean = (16 + 64) * 0.5 / 2 = 20; fast += 20 * 0.25 = 5; slow += 20 / 1024.
TEST(BeatsPerMinuteAnalyzer, AStepMovesBothAverages)
{
    Analyzer analyzer = MakePlain();
    analyzer.m_nSamplesPerStep = 2;
    analyzer.m_nStep = 7;
    analyzer.ProcessBlock(4, 4);
    analyzer.ProcessBlock(8, 8); // the step of the two frames before, still silent, ends
    EXPECT_EQ(analyzer.m_fFastAverage, 0);
    EXPECT_EQ(analyzer.m_nStep, 8);
    analyzer.ProcessBlock(0, 0);
    analyzer.ProcessBlock(0, 0);
    EXPECT_EQ(analyzer.m_fFastAverage, 5);
    EXPECT_EQ(analyzer.m_fSlowAverage, 20 * 0.0009765625);
    EXPECT_EQ(analyzer.m_fEnergy, 0);
    EXPECT_EQ(analyzer.m_nStepSamples, 0);
    EXPECT_EQ(analyzer.m_nStep, 9);
    analyzer.ProcessBlock(0, 0);
    analyzer.ProcessBlock(0, 0);
    EXPECT_EQ(analyzer.m_fFastAverage, 3.75); // 5 + (0 - 5) / 4
}

TEST(BeatsPerMinuteAnalyzer, EqualAveragesAreNoOnset)
{
    Analyzer analyzer = MakePlain();
    analyzer.m_nStep = 100;
    analyzer.ProcessBlock(0, 0);
    EXPECT_EQ(analyzer.m_nSinceBeat, 1);
}

TEST(BeatsPerMinuteAnalyzer, AtTheTimeOfTheLastBeatThereIsNoOnset)
{
    Analyzer analyzer = MakePlain();
    Step(analyzer, true); // at 0 ms, where the last beat stands from the start
    EXPECT_EQ(analyzer.m_nSinceBeat, 1);
    EXPECT_EQ(analyzer.m_nLastBeatMS, 0);
    Step(analyzer, true); // at 5 ms
    EXPECT_EQ(analyzer.m_nSinceBeat, 0);
}

struct INTERVAL_CASE
{
    const char* pName;
    int nIntervalMS;
    int nTempo; // 0: not counted
    bool bMovesReference;
};

// Tempo = 60000 / interval, cut; folded once: from 181 up halved, under 35 doubled; 35 to 180 count.
const INTERVAL_CASE s_aryIntervalCases[] = {
    {"Plain120", 500, 120, true},      {"Halved240To120", 250, 120, true}, {"Doubled30To60", 2000, 60, true},
    {"Halved181To90", 330, 90, true},  {"Plain179", 335, 179, true},       {"Cut118", 505, 118, true},
    {"Plain35", 1710, 35, true},       {"Doubled34To68", 1715, 68, true},  {"Doubled18To36", 3300, 36, true},
    {"Doubled17To34", 3400, 0, true},  {"Doubled0", 60005, 0, true},       {"Halved352To176", 170, 176, true},
    {"Halved363To181", 165, 0, false}, {"Halved500To250", 120, 0, false},  {"Halved666To333", 90, 0, false},
};

TEST(BeatsPerMinuteAnalyzer, IntervalsCountUnderTheirFoldedTempo)
{
    for (const INTERVAL_CASE& row : s_aryIntervalCases)
    {
        Analyzer analyzer = MakePlain();
        BeatAt(analyzer, 200); // 1000 ms
        ASSERT_EQ(analyzer.m_nLastBeatMS, 1000);
        ASSERT_EQ(analyzer.m_Histogram[60], 1);
        analyzer.m_Histogram[60] = analyzer.m_nTotal = 0;

        BeatAt(analyzer, 200 + row.nIntervalMS / 5);
        EXPECT_EQ(analyzer.m_nTotal, row.nTempo != 0 ? 1 : 0) << row.pName;
        EXPECT_EQ(SumHistogram(analyzer), analyzer.m_nTotal) << row.pName;
        EXPECT_EQ(analyzer.m_Histogram[row.nTempo], row.nTempo != 0 ? 1 : 0) << row.pName;
        EXPECT_EQ(analyzer.m_nLastBeatMS, row.bMovesReference ? 1000 + row.nIntervalMS : 1000) << row.pName;
        EXPECT_EQ(analyzer.m_nSinceBeat, 0) << row.pName;
    }
}

TEST(BeatsPerMinuteAnalyzer, ATempoTooHighLeavesTheReferenceForTheNextBeat)
{
    Analyzer analyzer = MakePlain();
    BeatAt(analyzer, 200);
    BeatAt(analyzer, 224); // 120 ms later: dropped
    BeatAt(analyzer, 300); // 500 ms after the first
    EXPECT_EQ(analyzer.m_Histogram[120], 1);
}

TEST(BeatsPerMinuteAnalyzer, OnlyTheFirstStepOfABurstCounts)
{
    Analyzer analyzer = MakePlain();
    BeatAt(analyzer, 100);
    for (int i = 0; i < 50; ++i)
    {
        Step(analyzer, true);
        EXPECT_EQ(analyzer.m_nSinceBeat, 0);
    }
    EXPECT_EQ(analyzer.m_nTotal, 1);
    EXPECT_EQ(analyzer.m_nLastBeatMS, 500);
}

TEST(BeatsPerMinuteAnalyzer, SixteenQuietStepsMakeTheNextOnsetCount)
{
    for (int nQuiet : {15, 16})
    {
        Analyzer analyzer = MakePlain();
        BeatAt(analyzer, 100);
        for (int i = 0; i < nQuiet; ++i)
            Step(analyzer, false);
        EXPECT_EQ(analyzer.m_nSinceBeat, nQuiet);
        analyzer.m_nLastBeatMS = (analyzer.m_nStep - 100) * 5; // 500 ms ago
        Step(analyzer, true);
        EXPECT_EQ(analyzer.m_nTotal, nQuiet == 16 ? 2 : 1);
        EXPECT_EQ(analyzer.m_nSinceBeat, 0) << "an onset resets, counted or not";
    }
}

TEST(BeatsPerMinuteAnalyzer, CountersAtTheirEndsDoNoHarm)
{
    Analyzer analyzer = MakePlain();
    analyzer.m_nStep = INT_MAX;
    analyzer.m_nSinceBeat = INT_MAX;
    analyzer.m_nTotal = INT_MAX;
    analyzer.m_nLastBeatMS = INT_MIN;
    Step(analyzer, true);
    analyzer.m_nSinceBeat = INT_MAX;
    Step(analyzer, false);
    analyzer.m_nStepSamples = INT_MAX;
    Step(analyzer, false);
    EXPECT_EQ(analyzer.m_nStepSamples, INT_MIN);
    analyzer.ProcessBlock(INT_MAX, INT_MAX);
    analyzer.ProcessBlock(INT_MIN, INT_MIN);
    EXPECT_EQ(analyzer.m_Filter.m_X[0] + analyzer.m_Filter.m_X[1] + analyzer.m_Filter.m_X[2], 0)
        << "the sum of two integers is exact: 2^31 and -2^31";
}

TEST(BeatsPerMinuteAnalyzer, SetUpMakesStepsOfFiveMilliseconds)
{
    struct ROW
    {
        int nRate;
        int nFrames;
    };
    for (const ROW& row : {ROW{8000, 40}, ROW{11025, 55}, ROW{44100, 220}, ROW{48000, 240}, ROW{192000, 960}})
    {
        Analyzer analyzer;
        ASSERT_TRUE(analyzer.SetUp(row.nRate));
        EXPECT_EQ(analyzer.m_nSamplesPerStep, row.nFrames);
        EXPECT_GT(analyzer.m_Filter.b0, 0);
        EXPECT_EQ(analyzer.m_Filter.m_fCutOff, Analyzer::CUT_OFF_HZ);
        EXPECT_EQ(analyzer.m_Filter.m_fQ, 1.4F);
        CAudioFormat format;
        format.SetFormat(64, row.nRate, 2, false, LY_GUID_NULL, true);
        Analyzer byFormat;
        ASSERT_TRUE(byFormat.SetUp(format));
        ExpectSame(analyzer, byFormat);
    }
}

TEST(BeatsPerMinuteAnalyzer, SetUpRefusesOtherRatesAndChangesNothing)
{
    Analyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(44100));
    analyzer.ProcessBlock(1, 1);
    const Analyzer before = analyzer;
    for (int nRate : {INT_MIN, -44100, 0, 7999, 192001, INT_MAX})
        EXPECT_FALSE(analyzer.SetUp(nRate)) << nRate;
    CAudioFormat format;
    format.nSamplesPerSec = UINT_MAX;
    EXPECT_FALSE(analyzer.SetUp(format));
    ExpectSame(analyzer, before);
}

TEST(BeatsPerMinuteAnalyzer, SetUpForgetsWhatWasHeard)
{
    Analyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(44100));
    const Analyzer fresh = analyzer;
    for (int i = 0; i < 100000; ++i)
        analyzer.ProcessBlock(i % 3000, 0);
    ASSERT_TRUE(analyzer.SetUp(44100));
    ExpectSame(analyzer, fresh);
}

TEST(BeatsPerMinuteAnalyzer, SamplesRoundHalfAwayFromZero)
{
    struct ROW
    {
        double fSample;
        int nRounded;
    };
    const double fInfinity = std::numeric_limits<double>::infinity();
    const ROW aryRows[] = {{0, 0},
                           {1, 32768},
                           {-1, -32768},
                           {1 / 32768.0, 1},
                           {0.5 / 32768, 1},
                           {-0.5 / 32768, -1},
                           {0.49 / 32768, 0},
                           {-0.49 / 32768, 0},
                           {1.5 / 32768, 2},
                           {2, 65536},
                           {1e9, INT_MAX},
                           {-1e9, INT_MIN},
                           {fInfinity, INT_MAX},
                           {-fInfinity, INT_MIN},
                           {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (const ROW& row : aryRows)
        EXPECT_EQ(Analyzer::RoundSample(row.fSample), row.nRounded) << row.fSample;
    for (int i = -32768; i < 32768; ++i)
        ASSERT_EQ(Analyzer::RoundSample(i / 32768.0), i);
}

// Many frames at once against one by one, through calls of all lengths: noise, integers, silence, and values out of
// range.
TEST(BeatsPerMinuteAnalyzer, ManyFramesEqualSingleOnesBitForBit)
{
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> any(-1.2, 1.2);
    const double aryStrange[] = {1e9, -1e9, 70000, std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::infinity()};
    for (int nChannels : {1, 2, 3, 6})
    {
        Analyzer single;
        ASSERT_TRUE(single.SetUp(nChannels == 2 ? 44100 : 8000));
        Analyzer many = single;
        for (int nRound = 0; nRound < 600; ++nRound)
        {
            const int nFrames = static_cast<int>(random() % 1500);
            std::vector<double> arySamples(static_cast<size_t>(nFrames * nChannels));
            for (double& f : arySamples)
                f = nRound % 200 > 100 ? 0.0 : nRound % 2 == 0 ? any(random) : std::floor(any(random) * 25000) / 32768;
            if (nRound % 10 == 0 && !arySamples.empty())
                arySamples[random() % arySamples.size()] = aryStrange[random() % 5];
            many.ProcessFrames(arySamples.data(), nFrames, nChannels);
            for (int i = 0; i < nFrames; ++i)
            {
                const double* pFrame = arySamples.data() + static_cast<ptrdiff_t>(i) * nChannels;
                single.ProcessBlock(Analyzer::RoundSample(pFrame[0]),
                                    Analyzer::RoundSample(pFrame[nChannels > 1 ? 1 : 0]));
            }
            ASSERT_NO_FATAL_FAILURE(ExpectSame(many, single)) << nRound;
        }
        EXPECT_GT(single.m_nStep, 100);
    }
}

// Four frames of 100 and 300 by turns, 20 steps long, after as many of silence: the filter lets nothing of them
// through, but the edges of 200 are heard. Steps 20 and 21 are the frame in which they begin.
TEST(BeatsPerMinuteAnalyzer, EdgesAboveTheFilterAreOnsets)
{
    Analyzer analyzer;
    analyzer.m_nSamplesPerStep = 4;
    for (int i = 0; i < 160; ++i)
        analyzer.ProcessBlock(i < 80 ? 0 : i % 2 == 0 ? 100 : 300, i < 80 ? 0 : i % 2 == 0 ? 100 : 300);
    EXPECT_EQ(analyzer.m_fFastAverage, 0);
    EXPECT_EQ(analyzer.GetOnsets().GetFrames(), 20);
    EXPECT_GT(analyzer.GetOnsets().GetCovariance(0), 0);
}

TEST(BeatsPerMinuteAnalyzer, ManyFramesWithoutSetUpCountOnlyTheFrames)
{
    Analyzer analyzer;
    const std::vector<double> arySamples(2 * 1000, 0.5);
    analyzer.ProcessFrames(arySamples.data(), 1000, 2);
    EXPECT_EQ(analyzer.m_nStepSamples, 1000);
    EXPECT_EQ(analyzer.m_nStep, 0);
}

TEST(BeatsPerMinuteAnalyzer, AStepThatStartsPastItsEndRunsAroundTheCounter)
{
    Analyzer single = MakePlain();
    single.m_nSamplesPerStep = 10;
    single.m_nStepSamples = -20; // as after 2^32 - 20 frames
    Analyzer many = single;
    const std::vector<double> arySamples(2 * 100, 0.25);
    many.ProcessFrames(arySamples.data(), 100, 2);
    for (int i = 0; i < 100; ++i)
        single.ProcessBlock(8192, 8192);
    EXPECT_EQ(many.m_nStep, 8); // after 30 frames, and then every 10
    ExpectSame(many, single);
}

TEST(BeatsPerMinuteAnalyzer, NoFramesAreRefusedInSilence)
{
    Analyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(44100));
    const Analyzer before = analyzer;
    const double arySamples[2] = {1, 1};
    analyzer.ProcessFrames(nullptr, 5, 2);
    analyzer.ProcessFrames(arySamples, 0, 2);
    analyzer.ProcessFrames(arySamples, -1, 2);
    analyzer.ProcessFrames(arySamples, 1, 0);
    analyzer.ProcessFrames(arySamples, 1, -2);
    ExpectSame(analyzer, before);
}
