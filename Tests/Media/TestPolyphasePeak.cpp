#include "PolyphasePeak.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace
{
struct CASE
{
    std::vector<float> aryWindows;
    std::vector<float> aryCoefficients;
};

// The exact length, so that a read behind it is seen by the address sanitizer.
CASE MakeCase(int nFrames, unsigned int nSeed)
{
    std::mt19937 random(nSeed);
    std::uniform_real_distribution<float> value(-1, 1);
    CASE result;
    for (int i = 0; i < nFrames + POLYPHASE_TAPS - 1; ++i)
        result.aryWindows.push_back(value(random));
    for (int i = 0; i < POLYPHASE_TAPS * POLYPHASE_PHASES; ++i)
        result.aryCoefficients.push_back(value(random));
    return result;
}

// Told again in another way: all outputs first, then the largest.
float Retold(const CASE& in, int nFrames, float fPeak)
{
    std::vector<float> aryOutputs;
    for (int k = 0; k < nFrames; ++k)
    {
        for (int j = 0; j < POLYPHASE_PHASES; ++j)
        {
            volatile float fSum = 0; // every step is rounded to a float
            for (int i = 0; i < POLYPHASE_TAPS; ++i)
            {
                const volatile float fProduct = in.aryWindows[static_cast<size_t>(k + i)] *
                                                in.aryCoefficients[static_cast<size_t>(i * POLYPHASE_PHASES + j)];
                fSum = fSum + fProduct;
            }
            aryOutputs.push_back(std::fabs(fSum));
        }
    }
    for (const float fOutput : aryOutputs)
        fPeak = fOutput > fPeak ? fOutput : fPeak;
    return fPeak;
}
} // namespace

TEST(PolyphasePeak, PlainVersionSumsTapByTap)
{
    for (unsigned int nSeed = 0; nSeed < 20; ++nSeed)
    {
        const int nFrames = static_cast<int>(nSeed) * 3;
        const CASE in = MakeCase(nFrames, nSeed);
        EXPECT_EQ(PolyphasePeakPlain(in.aryWindows.data(), nFrames, in.aryCoefficients.data(), 0),
                  Retold(in, nFrames, 0));
    }
}

// At least the vectors that every machine of the architecture has; the wider ones where this machine has them.
TEST(PolyphasePeak, EveryVectorWidthEqualsThePlainVersionBitForBit)
{
    ASSERT_NE(GetPolyphasePeak(VECTOR_128), nullptr);
    for (int nWidth = 0; nWidth < VECTOR_WIDTHS; ++nWidth)
    {
        const POLYPHASE_PEAK pVersion = GetPolyphasePeak(static_cast<VECTOR_WIDTH>(nWidth));
        if (pVersion == nullptr)
            continue;
        for (int nFrames = 0; nFrames < 150; ++nFrames)
        {
            const CASE in = MakeCase(nFrames, static_cast<unsigned int>(nFrames));
            for (const float fPeak : {0.0F, 1.5F})
                EXPECT_EQ(pVersion(in.aryWindows.data(), nFrames, in.aryCoefficients.data(), fPeak),
                          PolyphasePeakPlain(in.aryWindows.data(), nFrames, in.aryCoefficients.data(), fPeak))
                    << nWidth << " " << nFrames;
        }
    }
}

TEST(PolyphasePeak, EachLaneAndEachPhaseIsHeard)
{
    for (int nWidth = 0; nWidth < VECTOR_WIDTHS; ++nWidth)
    {
        const POLYPHASE_PEAK pVersion = GetPolyphasePeak(static_cast<VECTOR_WIDTH>(nWidth));
        if (pVersion == nullptr)
            continue;
        constexpr int FRAMES = 70;
        for (int nLoud = 0; nLoud < FRAMES; ++nLoud)
        {
            for (int nPhase = 0; nPhase < POLYPHASE_PHASES; ++nPhase)
            {
                CASE in = MakeCase(FRAMES, 0);
                in.aryWindows.assign(in.aryWindows.size(), 0);
                in.aryCoefficients.assign(in.aryCoefficients.size(), 0);
                in.aryWindows[static_cast<size_t>(nLoud)] = -2;
                in.aryCoefficients[static_cast<size_t>(nPhase)] = 3;
                EXPECT_EQ(pVersion(in.aryWindows.data(), FRAMES, in.aryCoefficients.data(), 0), 6);
            }
        }
    }
}

TEST(PolyphasePeak, WhatIsNoNumberCountsForNothing)
{
    for (int nWidth = 0; nWidth < VECTOR_WIDTHS; ++nWidth)
    {
        const POLYPHASE_PEAK pVersion = GetPolyphasePeak(static_cast<VECTOR_WIDTH>(nWidth));
        if (pVersion == nullptr)
            continue;
        CASE in = MakeCase(64, 3);
        in.aryWindows[20] = std::numeric_limits<float>::quiet_NaN();
        const float fPeak = pVersion(in.aryWindows.data(), 64, in.aryCoefficients.data(), 0);
        EXPECT_EQ(fPeak, PolyphasePeakPlain(in.aryWindows.data(), 64, in.aryCoefficients.data(), 0));
        EXPECT_TRUE(std::isfinite(fPeak));
        EXPECT_GT(fPeak, 0);
    }
}

TEST(PolyphasePeak, TheWidestIsOneOfTheVersions)
{
    const POLYPHASE_PEAK pWidest = GetWidestPolyphasePeak();
    bool bFound = false;
    for (int nWidth = 0; nWidth < VECTOR_WIDTHS; ++nWidth)
        bFound = bFound || pWidest == GetPolyphasePeak(static_cast<VECTOR_WIDTH>(nWidth));
    EXPECT_TRUE(bFound);
}
