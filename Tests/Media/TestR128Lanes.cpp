// Two channels in the lanes of one vector against the same channels one by one: every bit of every state, sum and
// block.

#include "R128Lanes.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace
{
// The layout's steps, a sample at a time and a channel at a time.
class PlainTwin
{
public:
    explicit PlainTwin(const CR128Analyzer& analyzer)
        : m_nStride(analyzer.m_Format.nChannels), m_nBlockSamples(analyzer.m_nBlockSamples)
    {
        for (const CR128Analyzer::CChannel* pChannel : analyzer.m_Channels)
            m_aryChannels.push_back(*pChannel);
    }

    void Process(const double* pSamples, int nFrames)
    {
        int nRemaining = nFrames;
        while (nRemaining > 0)
        {
            const int nToDo = std::min(nRemaining, m_nBlockSamples - m_aryChannels[0].m_nCount);
            for (size_t c = 0; c < m_aryChannels.size(); ++c)
                Run(m_aryChannels[c], pSamples + static_cast<ptrdiff_t>(nFrames - nRemaining) * m_nStride + c, nToDo);
            if (m_aryChannels[0].m_nCount == m_nBlockSamples)
                Finish();
            nRemaining -= nToDo;
        }
    }

    std::vector<CR128Analyzer::CChannel> m_aryChannels;
    std::vector<double> m_aryBlocks;

private:
    void Run(CR128Analyzer::CChannel& channel, const double* pSample, int nFrames) const
    {
        for (int i = 0; i < nFrames && channel.m_fWeight != 0; ++i)
        {
            const double y = channel.Filter(pSample[static_cast<ptrdiff_t>(i) * m_nStride]);
            channel.m_fSum += y * y;
        }
        channel.m_nCount += nFrames;
    }
    void Finish()
    {
        double fValue = 0;
        for (CR128Analyzer::CChannel& channel : m_aryChannels)
        {
            if (channel.m_fWeight != 0)
                fValue += channel.m_fWeight * channel.m_fSum / channel.m_nCount;
            channel.m_fSum = 0;
            channel.m_nCount = 0;
        }
        m_aryBlocks.push_back(fValue);
    }

    int m_nStride;
    int m_nBlockSamples;
};

bool IsSame(double f1, double f2) { return memcmp(&f1, &f2, sizeof f1) == 0; }

void ExpectSame(const CR128Analyzer& analyzer, const PlainTwin& twin)
{
    ASSERT_EQ(analyzer.m_Blocks.GetSize(), static_cast<int>(twin.m_aryBlocks.size()));
    for (int i = 0; i < analyzer.m_Blocks.GetSize(); ++i)
        ASSERT_TRUE(IsSame(analyzer.m_Blocks[i], twin.m_aryBlocks[static_cast<size_t>(i)])) << "block " << i;
    for (int c = 0; c < analyzer.m_Channels.GetSize(); ++c)
    {
        const CR128Analyzer::CChannel& ours = *analyzer.m_Channels[c];
        const CR128Analyzer::CChannel& theirs = twin.m_aryChannels[static_cast<size_t>(c)];
        ASSERT_EQ(ours.m_nCount, theirs.m_nCount);
        ASSERT_TRUE(IsSame(ours.m_fSum, theirs.m_fSum)) << "channel " << c;
        for (int i = 0; i < CIIRFilter::STATES; ++i)
            ASSERT_TRUE(IsSame(ours.m_State[i], theirs.m_State[i])) << "channel " << c << " state " << i;
    }
}

void SetUpFor(CR128Analyzer& analyzer, int nRate, int nChannels)
{
    CAudioFormat format;
    format.SetFormat(64, nRate, nChannels, false, LY_GUID_NULL, true);
    ASSERT_TRUE(analyzer.SetUp(format));
}

enum SIGNAL
{
    NOISE,
    INTEGERS, // as from a disc
    SILENCE,
    TINY, // around the limit of Flush
    SIGNALS
};

void Fill(std::vector<double>& arySamples, int nSignal, std::mt19937_64& random)
{
    std::uniform_real_distribution<double> any(-1, 1);
    for (double& f : arySamples)
    {
        switch (nSignal)
        {
        case NOISE:
            f = any(random);
            break;
        case INTEGERS:
            f = static_cast<double>(static_cast<int>(random() % 65536) - 32768) / 32768;
            break;
        case TINY:
            f = any(random) * 3e-150;
            break;
        default:
            f = random() % 2 == 0 ? 0.0 : -0.0;
            break;
        }
    }
}
} // namespace

TEST(R128Lanes, FitTheKWeightingAndNothingElse)
{
    CIIRFilter filter;
    filter.m_nForm = 1;
    filter.m_nSections = 2;
    EXPECT_TRUE(R128Lanes::Fits(filter));
    filter.m_nForm = 0;
    EXPECT_FALSE(R128Lanes::Fits(filter));
    filter.m_nForm = 1;
    filter.m_nSections = 3;
    EXPECT_FALSE(R128Lanes::Fits(filter));
}

TEST(R128Lanes, EqualThePlainTwinForEveryChannelCount)
{
    std::mt19937_64 random(11);
    for (int nChannels : {1, 2, 3, 5, 6, 8, 32})
    {
        CR128Analyzer analyzer;
        SetUpFor(analyzer, 8000, nChannels);
        PlainTwin twin(analyzer);
        for (int nRound = 0; nRound < 60; ++nRound)
        {
            const int nFrames = 1 + static_cast<int>(random() % 2000);
            std::vector<double> arySamples(static_cast<size_t>(nFrames * nChannels));
            Fill(arySamples, nRound / 4 % SIGNALS, random);
            ASSERT_TRUE(analyzer.Process(arySamples.data(), nFrames));
            twin.Process(arySamples.data(), nFrames);
            ExpectSame(analyzer, twin);
        }
        EXPECT_GT(analyzer.m_Blocks.GetSize(), 10);
    }
}

// The lanes need not hold the same filter, and one may be silent while the other is not.
TEST(R128Lanes, KeepTheirOwnCoefficientsAndFlushAlone)
{
    std::mt19937_64 random(12);
    std::uniform_real_distribution<double> any(-0.9, 0.9);
    for (int nRound = 0; nRound < 200; ++nRound)
    {
        CR128Analyzer analyzer;
        SetUpFor(analyzer, 8000, 2);
        for (CR128Analyzer::CChannel* pChannel : analyzer.m_Channels)
        {
            for (int i = 0; i < 9; ++i)
                pChannel->m_Coef[i] = any(random);
        }
        PlainTwin twin(analyzer);
        std::vector<double> arySamples(2 * 3000);
        Fill(arySamples, NOISE, random);
        for (size_t i = 400; i < arySamples.size(); i += 2)
            arySamples[i + static_cast<size_t>(nRound) % 2] *= nRound % 3 == 0 ? 0 : 1e-149;
        ASSERT_TRUE(analyzer.Process(arySamples.data(), 3000));
        twin.Process(arySamples.data(), 3000);
        ExpectSame(analyzer, twin);
    }
}

TEST(R128Lanes, NotANumberAndInfinityTakeTheSameWay)
{
    const double aryStrange[] = {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(), 1e308};
    for (double fStrange : aryStrange)
    {
        CR128Analyzer analyzer;
        SetUpFor(analyzer, 8000, 2);
        PlainTwin twin(analyzer);
        std::vector<double> arySamples(2 * 1000, 0.25);
        arySamples[200] = fStrange;
        ASSERT_TRUE(analyzer.Process(arySamples.data(), 1000));
        twin.Process(arySamples.data(), 1000);
        for (int c = 0; c < 2; ++c)
        {
            const double f1 = analyzer.m_Channels[c]->m_State[0];
            const double f2 = twin.m_aryChannels[static_cast<size_t>(c)].m_State[0];
            EXPECT_TRUE(f1 == f2 || (std::isnan(f1) && std::isnan(f2)));
        }
        EXPECT_TRUE(IsSame(analyzer.m_Channels[1]->m_fSum, twin.m_aryChannels[1].m_fSum)) << "the other lane is sound";
    }
}

// Weights decide which channels meet in a vector; other forms of filter run alone.
TEST(R128Lanes, AnyMixtureOfChannelsGivesTheSame)
{
    std::mt19937_64 random(13);
    for (int nRound = 0; nRound < 100; ++nRound)
    {
        CR128Analyzer analyzer;
        SetUpFor(analyzer, 8000, 6);
        for (CR128Analyzer::CChannel* pChannel : analyzer.m_Channels)
        {
            pChannel->m_fWeight = random() % 3 == 0 ? 0 : 1.41;
            if (random() % 3 == 0)
                pChannel->m_nSections = 1;
        }
        PlainTwin twin(analyzer);
        std::vector<double> arySamples(6 * 2500);
        Fill(arySamples, NOISE, random);
        ASSERT_TRUE(analyzer.Process(arySamples.data(), 2500));
        twin.Process(arySamples.data(), 2500);
        ExpectSame(analyzer, twin);
    }
}
