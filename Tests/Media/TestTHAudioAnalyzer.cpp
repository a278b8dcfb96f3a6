#include "THAudioAnalyzer.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <numbers>
#include <random>
#include <type_traits>
#include <vector>

namespace
{
static_assert(std::has_virtual_destructor_v<CTHAudioAnalyzer>);
static_assert(
    std::is_same_v<decltype(&CTHAudioAnalyzer::ProcessBlocks16Bit), int (CTHAudioAnalyzer::*)(const short*, int)>);
static_assert(
    std::is_same_v<decltype(&CTHAudioAnalyzer::ProcessBlocks), int (CTHAudioAnalyzer::*)(const double*, int)>);
static_assert(
    std::is_same_v<decltype(&CTHAudioAnalyzer::ProcessBlockInternal), void (CTHAudioAnalyzer::*)(const void*)>);

CAudioFormat Stream(int nBits, int nRate, int nChannels)
{
    CAudioFormat format;
    format.SetFormat(nBits, nRate, nChannels);
    return format;
}

std::vector<short> Noise16(size_t nSamples, unsigned int nSeed)
{
    std::mt19937 random(nSeed);
    std::vector<short> arySamples(nSamples);
    for (short& nSample : arySamples)
        nSample = static_cast<short>(random());
    return arySamples;
}

std::vector<double> ToDoubles(const std::vector<short>& arySamples)
{
    std::vector<double> aryDoubles;
    for (const short nSample : arySamples)
        aryDoubles.push_back(nSample / 32768.0);
    return aryDoubles;
}

// Everything that the beat analyser has summed up and remembers, as bytes.
std::vector<unsigned char> StateOf(const CBeatsPerMinuteAnalyzerV1& bpm)
{
    std::vector<unsigned char> aryState;
    const auto add = [&aryState](const auto& value)
    {
        const auto* p = reinterpret_cast<const unsigned char*>(&value);
        aryState.insert(aryState.end(), p, p + sizeof value);
    };
    add(bpm.m_fFastAverage);
    add(bpm.m_fSlowAverage);
    add(bpm.m_Histogram);
    add(bpm.m_nTotal);
    add(bpm.m_nSinceBeat);
    add(bpm.m_Filter.m_X);
    add(bpm.m_Filter.m_Y);
    add(bpm.m_fEnergy);
    add(bpm.m_nLastBeatMS);
    add(bpm.m_nStepSamples);
    add(bpm.m_nStep);
    return aryState;
}

void ExpectSameResults(const CTHAudioAnalyzer& a, const CTHAudioAnalyzer& b)
{
    EXPECT_EQ(a.m_nFramesProcessed, b.m_nFramesProcessed);
    EXPECT_EQ(StateOf(a.m_BPM), StateOf(b.m_BPM));
    ASSERT_EQ(a.m_R128.m_Blocks.GetSize(), b.m_R128.m_Blocks.GetSize());
    for (int i = 0; i < a.m_R128.m_Blocks.GetSize(); ++i)
        EXPECT_EQ(a.m_R128.m_Blocks[i], b.m_R128.m_Blocks[i]);
    ASSERT_EQ(a.m_Peak.m_Channels.GetSize(), b.m_Peak.m_Channels.GetSize());
    for (int i = 0; i < a.m_Peak.m_Channels.GetSize(); ++i)
    {
        EXPECT_EQ(a.m_Peak.m_Channels[i]->m_fPeak, b.m_Peak.m_Channels[i]->m_fPeak);
        EXPECT_EQ(a.m_Peak.m_Channels[i]->m_fTruePeak, b.m_Peak.m_Channels[i]->m_fTruePeak);
        EXPECT_EQ(a.m_DR.m_Channels[i]->m_nCount, b.m_DR.m_Channels[i]->m_nCount);
        EXPECT_EQ(a.m_DR.m_Channels[i]->m_fSumSquares, b.m_DR.m_Channels[i]->m_fSumSquares);
        EXPECT_EQ(a.m_DR.m_Channels[i]->m_RMS.GetSize(), b.m_DR.m_Channels[i]->m_RMS.GetSize());
    }
}
} // namespace

TEST(AudioAnalyzerStart, MembersStandInTheirOrder)
{
    CTHAudioAnalyzer analyzer;
    const void* aryMembers[] = {
        &analyzer,           &analyzer.m_Format, &analyzer.m_Buffer, &analyzer.m_nFramesProcessed,
        &analyzer.m_Convert, &analyzer.m_R128,   &analyzer.m_Peak,   &analyzer.m_DR,
        &analyzer.m_BPM};
    for (size_t i = 1; i < std::size(aryMembers); ++i)
        EXPECT_LT(aryMembers[i - 1], aryMembers[i]) << i;
    EXPECT_EQ(reinterpret_cast<const char*>(&analyzer.m_Format) - reinterpret_cast<const char*>(&analyzer),
              static_cast<ptrdiff_t>(sizeof(void*))); // behind the table of virtual operations
    EXPECT_EQ(sizeof(analyzer.m_nFramesProcessed), 8U);
}

TEST(AudioAnalyzerStart, AllFormatsAreSixteenBitStereoOfACD)
{
    const CTHAudioAnalyzer analyzer;
    for (const CAudioFormat* pFormat :
         {&analyzer.m_Format, &analyzer.m_R128.m_Format, &analyzer.m_Peak.m_Format, &analyzer.m_DR.m_Format})
    {
        EXPECT_EQ(pFormat->wFormatTag, 1);
        EXPECT_EQ(pFormat->nChannels, 2);
        EXPECT_EQ(pFormat->nSamplesPerSec, 44100U);
        EXPECT_EQ(pFormat->nAvgBytesPerSec, 176400U);
        EXPECT_EQ(pFormat->nBlockAlign, 4);
        EXPECT_EQ(pFormat->wValidBitsPerSample, 16);
        EXPECT_TRUE(pFormat->SubFormat == LY_GUID_PCM);
        EXPECT_EQ(pFormat->m_Channels[1].nSpeaker, 3U);
    }
    EXPECT_FALSE(analyzer.m_Convert.IsBound());
    EXPECT_EQ(analyzer.m_nFramesProcessed, 0);
}

TEST(AudioAnalyzerStart, NothingIsMeasuredAndFramesAreCounted)
{
    CTHAudioAnalyzer analyzer;
    const std::vector<short> arySamples = Noise16(2000, 1);
    const std::vector<double> aryDoubles = ToDoubles(arySamples);
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(arySamples.data(), 1000), 1000);
    EXPECT_EQ(analyzer.ProcessBlocks(aryDoubles.data(), 1000), 1000);
    EXPECT_EQ(analyzer.m_nFramesProcessed, 2000);
    EXPECT_EQ(analyzer.m_R128.m_Blocks.GetSize(), 0);
    EXPECT_EQ(analyzer.m_BPM.m_nStep, 0);
    EXPECT_EQ(analyzer.m_BPM.m_fEnergy, 0);
    EXPECT_EQ(analyzer.Finish(), 0);
}

TEST(AudioAnalyzerFinish, IsMinusOneWithoutAudio)
{
    CTHAudioAnalyzer analyzer;
    EXPECT_EQ(analyzer.Finish(), -1);
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    EXPECT_EQ(analyzer.Finish(), -1);
    const short arySamples[2] = {};
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(arySamples, 1), 1);
    EXPECT_EQ(analyzer.Finish(), 0);
    EXPECT_EQ(analyzer.Finish(), 0);
}

TEST(AudioAnalyzerFinish, EndsTheLastWindowOfTheDynamicRange)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    const std::vector<short> arySamples = Noise16(200, 1);
    analyzer.ProcessBlocks16Bit(arySamples.data(), 100);
    EXPECT_EQ(analyzer.m_DR.m_Channels[0]->m_RMS.GetSize(), 0);
    EXPECT_EQ(analyzer.Finish(), 0);
    EXPECT_EQ(analyzer.m_DR.m_Channels[0]->m_RMS.GetSize(), 1);
    EXPECT_EQ(analyzer.m_DR.m_Channels[1]->m_RMS.GetSize(), 1);
}

TEST(AudioAnalyzerFinish, CountersRunOnFromRipToRip)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    const short arySamples[8] = {};
    analyzer.ProcessBlocks16Bit(arySamples, 4);
    analyzer.Finish();
    analyzer.ProcessBlocks16Bit(arySamples, 3);
    EXPECT_EQ(analyzer.m_nFramesProcessed, 7);
}

TEST(AudioAnalyzerSetUp, DescribesTheDoublesOfTheStream)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 48000, 6)));
    EXPECT_EQ(analyzer.m_Format.nBlockAlign, 48);
    EXPECT_EQ(analyzer.m_Format.nChannels, 6);
    EXPECT_EQ(analyzer.m_Format.wBitsPerSample, 64);
    EXPECT_EQ(analyzer.m_Format.nSamplesPerSec, 48000U);
    EXPECT_EQ(analyzer.m_Format.wFormatTag, 3);
    EXPECT_TRUE(analyzer.m_Convert.IsBound());
    EXPECT_EQ(analyzer.m_Peak.m_Format.nBlockAlign, 48);
    EXPECT_EQ(analyzer.m_DR.m_Channels.GetSize(), 6);
    EXPECT_EQ(analyzer.m_Peak.m_Channels.GetSize(), 6);
    EXPECT_EQ(analyzer.m_R128.m_Channels.GetSize(), 6);
}

TEST(AudioAnalyzerSetUp, BelievesTheChannelTableOfTheStream)
{
    CAudioFormat format = Stream(24, 48000, 7);
    format.SetChannelsInfo(7, CAudioFormat::LAYOUT_BACK_CENTER_FIRST);
    format.dwChannelMask = 0x13F;
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(format));
    EXPECT_EQ(analyzer.m_Format.m_Channels[4].nSpeaker, static_cast<unsigned int>(SPEAKER_ID_BACK_CENTER));
    EXPECT_EQ(analyzer.m_Format.dwChannelMask, 0x13FU);
    // A record that says nothing of its channels gets the usual table.
    CAudioFormat bare;
    bare.nChannels = 2;
    bare.nSamplesPerSec = 44100;
    ASSERT_TRUE(analyzer.SetUp(bare));
    EXPECT_EQ(analyzer.m_Format.m_Channels[1].nSpeaker, static_cast<unsigned int>(SPEAKER_ID_FRONT_RIGHT));
}

TEST(AudioAnalyzerSetUp, WorksForEveryRateAndNumberOfChannels)
{
    for (const int nRate : {8000, 11025, 22050, 44100, 48000, 88200, 96000, 176400, 192000})
    {
        for (const int nChannels : {1, 2, 3, 6, 8, 32})
        {
            CTHAudioAnalyzer analyzer;
            ASSERT_TRUE(analyzer.SetUp(Stream(16, nRate, nChannels))) << nRate << " " << nChannels;
            const std::vector<short> arySamples = Noise16(static_cast<size_t>(nRate / 4 * nChannels), 2);
            EXPECT_EQ(analyzer.ProcessBlocks16Bit(arySamples.data(), nRate / 4), nRate / 4);
            EXPECT_EQ(analyzer.Finish(), 0);
            EXPECT_EQ(analyzer.m_R128.m_Blocks.GetSize(), 2);
            EXPECT_EQ(analyzer.m_DR.m_Channels[nChannels - 1]->m_RMS.GetSize(), 1);
            EXPECT_GT(analyzer.m_Peak.GetTruePeak(nChannels - 1), 0.9);
            EXPECT_EQ(analyzer.m_BPM.m_nStep, nRate / 4 / (nRate / 200));
        }
    }
}

TEST(AudioAnalyzerSetUp, RefusesOtherStreamsAndKeepsWhatItHas)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    const short arySamples[2] = {};
    analyzer.ProcessBlocks16Bit(arySamples, 1);
    EXPECT_FALSE(analyzer.SetUp(Stream(16, 7999, 2)));
    EXPECT_FALSE(analyzer.SetUp(Stream(16, 192001, 2)));
    EXPECT_FALSE(analyzer.SetUp(Stream(16, -1, 2)));
    EXPECT_FALSE(analyzer.SetUp(Stream(16, 44100, 0)));
    EXPECT_FALSE(analyzer.SetUp(Stream(16, 44100, 33)));
    EXPECT_EQ(analyzer.m_Format.nSamplesPerSec, 44100U);
    EXPECT_EQ(analyzer.m_nFramesProcessed, 1);
}

TEST(AudioAnalyzerSetUp, AnotherOneStartsAnew)
{
    const std::vector<short> arySamples = Noise16(44100 * 2, 3);
    CTHAudioAnalyzer fresh;
    ASSERT_TRUE(fresh.SetUp(Stream(16, 44100, 2)));
    fresh.ProcessBlocks16Bit(arySamples.data(), 44100);
    CTHAudioAnalyzer used;
    ASSERT_TRUE(used.SetUp(Stream(16, 48000, 6)));
    used.ProcessBlocks16Bit(arySamples.data(), 14000);
    used.Finish();
    ASSERT_TRUE(used.SetUp(Stream(16, 44100, 2)));
    used.ProcessBlocks16Bit(arySamples.data(), 44100);
    ExpectSameResults(used, fresh);
}

TEST(AudioAnalyzerPipeline, IsEachAnalyserOverTheWholeCall)
{
    for (const int nChannels : {1, 2, 3, 6})
    {
        const CAudioFormat format = Stream(64, 44100, nChannels);
        CTHAudioAnalyzer analyzer;
        CTHAudioAnalyzer parts;
        ASSERT_TRUE(analyzer.SetUp(format) && parts.SetUp(format));
        std::mt19937 random(4);
        for (int nCall = 0; nCall < 20; ++nCall)
        {
            const int nFrames = 1 + static_cast<int>(random() % 3000);
            const std::vector<double> arySamples =
                ToDoubles(Noise16(static_cast<size_t>(nFrames * nChannels), static_cast<unsigned int>(nCall)));
            EXPECT_EQ(analyzer.ProcessBlocks(arySamples.data(), nFrames), nFrames);
            for (int i = 0; i < nFrames; ++i)
                parts.ProcessBlockInternal(&arySamples[static_cast<size_t>(i * nChannels)]);
            parts.m_R128.Process(arySamples.data(), nFrames);
            parts.m_Peak.Process(arySamples.data(), nFrames);
            parts.m_DR.Process(arySamples.data(), nFrames);
            parts.m_nFramesProcessed += nFrames;
        }
        ExpectSameResults(analyzer, parts);
    }
}

TEST(AudioAnalyzerPipeline, SixteenBitsAreTheirDoubles)
{
    const std::vector<short> arySamples = Noise16(44100, 5);
    CTHAudioAnalyzer shorts;
    CTHAudioAnalyzer doubles;
    ASSERT_TRUE(shorts.SetUp(Stream(16, 44100, 2)) && doubles.SetUp(Stream(16, 44100, 2)));
    EXPECT_EQ(shorts.ProcessBlocks16Bit(arySamples.data(), 22050), 22050);
    EXPECT_EQ(doubles.ProcessBlocks(ToDoubles(arySamples).data(), 22050), 22050);
    ExpectSameResults(shorts, doubles);
}

TEST(AudioAnalyzerPipeline, PiecesAreTheWhole)
{
    const std::vector<short> arySamples = Noise16(60000, 6);
    CTHAudioAnalyzer whole;
    CTHAudioAnalyzer pieces;
    ASSERT_TRUE(whole.SetUp(Stream(16, 44100, 2)) && pieces.SetUp(Stream(16, 44100, 2)));
    whole.ProcessBlocks16Bit(arySamples.data(), 30000);
    std::mt19937 random(6);
    for (int nDone = 0; nDone < 30000;)
    {
        const int nFrames = std::min(1 + static_cast<int>(random() % 700), 30000 - nDone);
        pieces.ProcessBlocks16Bit(&arySamples[static_cast<size_t>(nDone) * 2], nFrames);
        nDone += nFrames;
    }
    ExpectSameResults(whole, pieces);
}

struct BEAT_ROW
{
    double fSample;
    int nRounded;
};

const BEAT_ROW s_aryBeats[] = {
    {0, 0},           {1.0 / 32768, 1},   {0.49 / 32768, 0}, {0.5 / 32768, 1}, {-0.5 / 32768, -1}, {-0.49 / 32768, 0},
    {1.5 / 32768, 2}, {-1.5 / 32768, -2}, {1, 32768},        {-1, -32768},     {2, 65536},
};

// The beat analyser that got the rounded integers one by one is the judge.
TEST(AudioAnalyzerBeats, SamplesAreRoundedHalfAwayFromZero)
{
    for (const BEAT_ROW& row : s_aryBeats)
    {
        CTHAudioAnalyzer analyzer;
        ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
        CBeatsPerMinuteAnalyzerV1 judge = analyzer.m_BPM;
        const double aryFrame[] = {row.fSample, -row.fSample * 3};
        analyzer.ProcessBlockInternal(aryFrame);
        judge.ProcessBlock(
            row.nRounded, static_cast<int>(std::trunc(-row.fSample * 3 * 32768 + (-row.fSample * 3 > 0 ? 0.5 : -0.5))));
        EXPECT_EQ(StateOf(analyzer.m_BPM), StateOf(judge)) << row.fSample;
        EXPECT_EQ(analyzer.m_nFramesProcessed, 0); // only ProcessBlocks counts
    }
}

TEST(AudioAnalyzerBeats, OneChannelIsTakenTwice)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 1)));
    CBeatsPerMinuteAnalyzerV1 judge = analyzer.m_BPM;
    const double arySamples[] = {0.5, 0.25};
    analyzer.ProcessBlocks(arySamples, 2);
    judge.ProcessBlock(16384, 16384);
    judge.ProcessBlock(8192, 8192);
    EXPECT_EQ(StateOf(analyzer.m_BPM), StateOf(judge));
}

TEST(AudioAnalyzerBeats, OnlyTheFirstTwoOfManyChannelsAreHeard)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 4)));
    CBeatsPerMinuteAnalyzerV1 judge = analyzer.m_BPM;
    const double arySamples[] = {0.5, 0.25, 1, 1, -0.5, 0.125, 1, 1};
    analyzer.ProcessBlocks(arySamples, 2);
    judge.ProcessBlock(16384, 8192);
    judge.ProcessBlock(-16384, 4096);
    EXPECT_EQ(StateOf(analyzer.m_BPM), StateOf(judge));
}

// Frames are stepped through by the block align, whatever it is.
TEST(AudioAnalyzerBeats, StepsByTheBlockAlign)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    analyzer.m_Format.nBlockAlign = 8; // frames that overlap
    analyzer.m_R128.m_Channels.RemoveAll();
    CBeatsPerMinuteAnalyzerV1 judge = analyzer.m_BPM;
    const double arySamples[] = {0.5, 0.25, 0.125, 0};
    analyzer.ProcessBlocks(arySamples, 2);
    judge.ProcessBlock(16384, 8192);
    judge.ProcessBlock(8192, 4096);
    EXPECT_EQ(StateOf(analyzer.m_BPM), StateOf(judge));
}

TEST(AudioAnalyzerBeats, HostileSamplesAreSurvived)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    const double fHuge = std::numeric_limits<double>::max();
    const double fInfinite = std::numeric_limits<double>::infinity();
    const double fNaN = std::numeric_limits<double>::quiet_NaN();
    const double arySamples[] = {fHuge, fHuge, -fHuge, -fHuge, fInfinite, -fInfinite, fNaN, fNaN, 1e-310, -1e-310};
    EXPECT_EQ(analyzer.ProcessBlocks(arySamples, 5), 5);
    for (int i = 0; i < 5; ++i)
        analyzer.ProcessBlockInternal(&arySamples[static_cast<size_t>(i) * 2]);
    EXPECT_EQ(analyzer.Finish(), 0);
}

TEST(AudioAnalyzerBuffer, HoldsTheDoublesOfOneCall)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    const short arySamples[] = {16384, -32768, 1, 0};
    analyzer.ProcessBlocks16Bit(arySamples, 2);
    ASSERT_EQ(analyzer.m_Buffer.GetSize(), 2 * 16);
    double aryDoubles[4];
    std::memcpy(aryDoubles, analyzer.m_Buffer.GetData(), sizeof aryDoubles);
    EXPECT_EQ(aryDoubles[0], 0.5);
    EXPECT_EQ(aryDoubles[1], -1);
    EXPECT_EQ(aryDoubles[2], 1.0 / 32768);
    EXPECT_EQ(aryDoubles[3], 0);
    analyzer.ProcessBlocks16Bit(arySamples, 1);
    EXPECT_EQ(analyzer.m_Buffer.GetSize(), 16);
}

TEST(AudioAnalyzerBuffer, GrowsByBlocksOf16384AndIsUsedAgain)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    const std::vector<short> arySamples = Noise16(4000, 7);
    analyzer.ProcessBlocks16Bit(arySamples.data(), 1);
    EXPECT_EQ(analyzer.m_Buffer.GetAllocated(), 16384);
    analyzer.ProcessBlocks16Bit(arySamples.data(), 1024);
    EXPECT_EQ(analyzer.m_Buffer.GetAllocated(), 16384);
    analyzer.ProcessBlocks16Bit(arySamples.data(), 1025);
    EXPECT_EQ(analyzer.m_Buffer.GetAllocated(), 2 * 16384);
    const unsigned char* pData = analyzer.m_Buffer.GetData();
    analyzer.ProcessBlocks16Bit(arySamples.data(), 2000);
    EXPECT_EQ(analyzer.m_Buffer.GetData(), pData);
}

TEST(AudioAnalyzerBuffer, BeforeASetUpItIsAsLongAsTheFormatSays)
{
    CTHAudioAnalyzer analyzer;
    const short arySamples[20] = {};
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(arySamples, 10), 10);
    EXPECT_EQ(analyzer.m_Buffer.GetSize(), 40);
    // The conversion has its room even so.
    analyzer.m_Convert.BindTo16Bit();
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(arySamples, 10), 10);
    EXPECT_EQ(analyzer.m_Buffer.GetSize(), 40);
    EXPECT_GE(analyzer.m_Buffer.GetAllocated(), 160);
}

TEST(AudioAnalyzerBuffer, AZeroBlockAlignFallsBackOnChannelsAndBits)
{
    CTHAudioAnalyzer analyzer;
    analyzer.m_Format.SetFormat(1, 44100, 2);
    ASSERT_EQ(analyzer.m_Format.nBlockAlign, 0);
    const short arySamples[64] = {};
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(arySamples, 32), 32);
    EXPECT_EQ(analyzer.m_Buffer.GetSize(), 2 * 1 / 8 * 32);
    analyzer.m_Format.SetFormat(1, 44100, 8);
    const short aryMore[256] = {};
    analyzer.m_Format.nBlockAlign = 0;
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(aryMore, 32), 32);
    EXPECT_EQ(analyzer.m_Buffer.GetSize(), 8 * 1 / 8 * 32);
}

TEST(AudioAnalyzerErrors, NothingToProcessIsNotCounted)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    const short nSample = 0;
    const double fSample = 0;
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(&nSample, 0), 0);
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(&nSample, INT_MIN), 0);
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(nullptr, 1), 0);
    EXPECT_EQ(analyzer.ProcessBlocks(&fSample, 0), 0);
    EXPECT_EQ(analyzer.ProcessBlocks(&fSample, -1), 0);
    EXPECT_EQ(analyzer.ProcessBlocks(nullptr, 1), 0);
    EXPECT_EQ(analyzer.m_nFramesProcessed, 0);
    EXPECT_EQ(analyzer.Finish(), -1);
}

TEST(AudioAnalyzerErrors, MoreFramesThanABufferHoldsAreRefused)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    const short nSample = 0;
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(&nSample, INT_MAX), 0);
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(&nSample, INT_MAX / 16 + 1), 0);
    EXPECT_EQ(analyzer.m_nFramesProcessed, 0);
}

TEST(AudioAnalyzerWhole, AFullScaleSineReadsWhatItMust)
{
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(Stream(16, 44100, 2)));
    std::vector<short> arySamples;
    for (int i = 0; i < 44100 * 6; ++i)
    {
        const double fSine = std::sin(2 * std::numbers::pi * 1000 * i / 44100);
        arySamples.push_back(static_cast<short>(std::lround(fSine * 32767)));
        arySamples.push_back(static_cast<short>(std::lround(fSine * 3277))); // 20 dB below
    }
    EXPECT_EQ(analyzer.ProcessBlocks16Bit(arySamples.data(), 44100 * 6), 44100 * 6);
    EXPECT_EQ(analyzer.Finish(), 0);
    ASSERT_EQ(analyzer.m_DR.m_Channels[0]->m_RMS.GetSize(), 2);
    EXPECT_NEAR(analyzer.m_DR.m_Channels[0]->m_RMS[0], 1, 1e-4);
    EXPECT_NEAR(analyzer.m_Peak.GetSamplePeakDBFS(0), 0, 0.01);
    EXPECT_NEAR(analyzer.m_Peak.GetTruePeakDBTP(0), 0, 0.05);
    EXPECT_NEAR(analyzer.m_Peak.GetSamplePeakDBFS(1), -20, 0.01);
    double fDB = 0;
    ASSERT_TRUE(analyzer.m_DR.GetDynamicRange(fDB));
    EXPECT_NEAR(fDB, 0, 0.01);
}
