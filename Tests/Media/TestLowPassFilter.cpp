#include "LowPassFilter.h"
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>
#include <type_traits>
#include <vector>

static_assert(std::has_virtual_destructor_v<CLowPassFilter>);
static_assert(sizeof(CLowPassFilter) == 8 + 17 * 4 + 4); // the last 4 fill up to the pointer's alignment
static_assert(std::is_same_v<decltype(CLowPassFilter::b0), float>);
static_assert(std::is_same_v<decltype(CLowPassFilter::m_X), float[3]>);

namespace
{
// Nothing but the input, delayed by the ring.
CLowPassFilter MakeThrough()
{
    CLowPassFilter filter;
    filter.b0 = 1;
    return filter;
}

void ExpectSame(const CLowPassFilter& first, const CLowPassFilter& second)
{
    // Behind the pointer to the virtual table all is plain numbers without gaps.
    const char* p1 = reinterpret_cast<const char*>(&first) + sizeof(void*);
    const char* p2 = reinterpret_cast<const char*>(&second) + sizeof(void*);
    EXPECT_EQ(memcmp(p1, p2, 17 * sizeof(float)), 0);
}

double GetGain(CLowPassFilter filter, double fRate, double fHz)
{
    double fPeak = 0;
    const int nSamples = static_cast<int>(fRate);
    for (int i = 0; i < nSamples; ++i)
    {
        const double fAngle = 2 * std::numbers::pi * fHz * i / fRate;
        const float fOutput = filter.FilterCapAs16BitInteger(static_cast<float>(10000 * std::sin(fAngle)));
        if (i > nSamples / 2)
            fPeak = std::max(fPeak, std::fabs(static_cast<double>(fOutput)));
    }
    return fPeak / 10000;
}
} // namespace

TEST(LowPassFilter, StartsAtZeroWithItsOwnQ)
{
    const CLowPassFilter filter;
    EXPECT_EQ(filter.b0, 0);
    EXPECT_EQ(filter.b1, 0);
    EXPECT_EQ(filter.b2, 0);
    EXPECT_EQ(filter.a1, 0);
    EXPECT_EQ(filter.a2, 0);
    EXPECT_EQ(filter.m_fQ, 1.4F);
    EXPECT_EQ(filter.m_nIndex, 0);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(filter.m_X[i] == 0 && filter.m_Y[i] == 0);
}

TEST(LowPassFilter, LiesInMemoryInTheOrderOfItsMembers)
{
    const CLowPassFilter filter;
    const char* pStart = reinterpret_cast<const char*>(&filter);
    const void* const aryMembers[] = {&filter.b0,  &filter.b1,     &filter.b2,     &filter.a1,
                                      &filter.a2,  &filter.m_X,    &filter.m_X[1], &filter.m_X[2],
                                      &filter.m_Y, &filter.m_Y[1], &filter.m_Y[2]};
    int nOffset = 8;
    for (const void* pMember : aryMembers)
    {
        EXPECT_EQ(static_cast<const char*>(pMember) - pStart, nOffset);
        nOffset += 4;
    }
    nOffset += 8; // two floats
    EXPECT_EQ(reinterpret_cast<const char*>(&filter.m_fQ) - pStart, nOffset);
    EXPECT_EQ(reinterpret_cast<const char*>(&filter.m_nIndex) - pStart, nOffset + 4);
}

TEST(LowPassFilter, AsConstructedPassesNothing)
{
    CLowPassFilter filter;
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(filter.FilterCapAs16BitInteger(1000), 0);
}

TEST(LowPassFilter, TheResultComesTwoCallsLate)
{
    CLowPassFilter filter = MakeThrough();
    const float aryExpected[] = {0, 0, 1, 2, 3, 4, 5};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(filter.FilterCapAs16BitInteger(static_cast<float>(i + 1)), aryExpected[i]) << i;
    EXPECT_EQ(filter.m_nIndex, 1); // seven calls around a ring of three
}

// y = 2x + 3x' + 4x'' - 0.5y' - 0.25y'':
//   x = 4: 8;  x = 8: 16 + 12 - 4 = 24;  x = 16: 32 + 24 + 16 - 12 - 2 = 58;  x = 0: 48 + 32 - 29 - 6 = 45
TEST(LowPassFilter, TheSectionByHand)
{
    CLowPassFilter filter;
    filter.b0 = 2;
    filter.b1 = 3;
    filter.b2 = 4;
    filter.a1 = 0.5F;
    filter.a2 = 0.25F;
    EXPECT_EQ(filter.FilterCapAs16BitInteger(4), 0);
    EXPECT_EQ(filter.FilterCapAs16BitInteger(8), 0);
    EXPECT_EQ(filter.FilterCapAs16BitInteger(16), 8);
    EXPECT_EQ(filter.FilterCapAs16BitInteger(0), 24);
    EXPECT_EQ(filter.m_Y[0], 45); // the fourth output stands where the first one stood
    EXPECT_EQ(filter.m_Y[1], 24);
    EXPECT_EQ(filter.m_Y[2], 58);
    EXPECT_EQ(filter.m_X[0], 0);
    EXPECT_EQ(filter.m_X[1], 8);
    EXPECT_EQ(filter.m_X[2], 16);
}

TEST(LowPassFilter, OutputsAreLimitedAndGoOnLimited)
{
    struct ROW
    {
        float fInput;
        float fOutput;
    };
    const ROW aryRows[] = {{32767, 32767},   {32768, 32767},   {1e9F, 32767},
                           {-32768, -32768}, {-32769, -32768}, {-1e9F, -32768}};
    for (const ROW& row : aryRows)
    {
        CLowPassFilter filter = MakeThrough();
        filter.a1 = -1; // y = x + y'
        (void)filter.FilterCapAs16BitInteger(row.fInput);
        (void)filter.FilterCapAs16BitInteger(0);
        EXPECT_EQ(filter.FilterCapAs16BitInteger(0), row.fOutput);
        EXPECT_EQ(filter.m_Y[1], row.fOutput) << "the sum went on from the limit";
        EXPECT_EQ(filter.m_X[0], row.fInput) << "inputs are not limited";
    }
}

TEST(LowPassFilter, ArithmeticIsInFloats)
{
    CLowPassFilter filter = MakeThrough();
    filter.b1 = 1e-9F; // lost beside 1 in a float
    (void)filter.FilterCapAs16BitInteger(1);
    (void)filter.FilterCapAs16BitInteger(1);
    (void)filter.FilterCapAs16BitInteger(0);
    EXPECT_EQ(filter.m_Y[1], 1.0F);
}

TEST(LowPassFilter, AnIndexOutsideTheRingStartsItAnew)
{
    for (int nIndex : {-1, 3, 1000000, std::numeric_limits<int>::min()})
    {
        CLowPassFilter filter = MakeThrough();
        filter.m_nIndex = nIndex;
        (void)filter.FilterCapAs16BitInteger(5);
        EXPECT_EQ(filter.m_nIndex, 1);
        filter.m_nIndex = nIndex;
        const float arySamples[2] = {1, 2};
        float aryOutput[2];
        (void)filter.FilterBlock(arySamples, aryOutput, 2);
        EXPECT_EQ(filter.m_nIndex, 2);
    }
}

TEST(LowPassFilter, SetUpRefusesWhatIsNoLowPass)
{
    const float fNoNumber = std::numeric_limits<float>::quiet_NaN();
    CLowPassFilter filter;
    EXPECT_FALSE(filter.SetUp(44100, 0));
    EXPECT_FALSE(filter.SetUp(44100, -1));
    EXPECT_FALSE(filter.SetUp(44100, 22050));
    EXPECT_FALSE(filter.SetUp(0, 150));
    EXPECT_FALSE(filter.SetUp(fNoNumber, 150));
    EXPECT_FALSE(filter.SetUp(44100, fNoNumber));
    EXPECT_EQ(filter.b0, 0);
}

// Gains of a low pass of second order: 1 far below the cut-off, Q at it, and (cut-off / f)^2 far above it.
TEST(LowPassFilter, SetUpMakesALowPassOfItsQ)
{
    CLowPassFilter filter;
    ASSERT_TRUE(filter.SetUp(44100, 150));
    EXPECT_NEAR(GetGain(filter, 44100, 5), 1.0, 0.01);
    EXPECT_NEAR(GetGain(filter, 44100, 150), 1.4, 0.01);
    EXPECT_NEAR(GetGain(filter, 44100, 1500), 0.01, 0.001);
    filter.m_fQ = 0.5F;
    ASSERT_TRUE(filter.SetUp(8000, 150));
    EXPECT_NEAR(GetGain(filter, 8000, 150), 0.5, 0.01);
    EXPECT_EQ(filter.m_fQ, 0.5F);
}

TEST(LowPassFilter, SetUpForgetsWhatWasHeard)
{
    CLowPassFilter filter;
    ASSERT_TRUE(filter.SetUp(44100, 150));
    const CLowPassFilter fresh = filter;
    for (int i = 0; i < 5; ++i)
        (void)filter.FilterCapAs16BitInteger(1000);
    ASSERT_TRUE(filter.SetUp(44100, 150));
    ExpectSame(filter, fresh);
}

// Blocks of all lengths against single calls, over noise, peaks beyond the limits, and silence long enough for the
// outputs to reach the denormal numbers and circle there.
TEST(LowPassFilter, BlocksEqualSingleCallsBitForBit)
{
    std::mt19937 random(3);
    for (float fRate : {8000.0F, 44100.0F, 192000.0F})
    {
        CLowPassFilter single;
        ASSERT_TRUE(single.SetUp(fRate, 150));
        CLowPassFilter block = single;
        bool bWasSilent = false;
        for (int nRound = 0; nRound < 3000; ++nRound)
        {
            const bool bNoise = nRound % 1500 < 50;
            const int nSamples = static_cast<int>(random() % 300);
            std::vector<float> arySamples(static_cast<size_t>(nSamples));
            for (float& f : arySamples)
                f = bNoise ? static_cast<float>(static_cast<int>(random() % 400000) - 200000) : 0.0F;
            std::vector<float> aryOutput(arySamples.size() + 1);
            const bool bSilent = block.FilterBlock(arySamples.data(), aryOutput.data(), nSamples);
            bWasSilent = bWasSilent || bSilent;
            for (size_t i = 0; i < arySamples.size(); ++i)
            {
                const float fExpected = single.FilterCapAs16BitInteger(arySamples[i]);
                ASSERT_EQ(memcmp(&fExpected, &aryOutput[i], sizeof fExpected), 0) << nRound << ' ' << i;
                ASSERT_TRUE(!bSilent || fExpected * fExpected == 0);
            }
            ExpectSame(single, block);
        }
        EXPECT_TRUE(bWasSilent);
    }
}

TEST(LowPassFilter, SilenceOfAGrowingFilterIsStillExact)
{
    CLowPassFilter single;
    single.b0 = 1;
    single.a1 = -1.5F; // y = x + 1.5y'
    single.m_Y[2] = std::numeric_limits<float>::denorm_min() * 100;
    CLowPassFilter block = single;
    const std::vector<float> arySamples(600, 0.0F);
    std::vector<float> aryOutput(arySamples.size());
    (void)block.FilterBlock(arySamples.data(), aryOutput.data(), 600);
    for (float fOutput : aryOutput)
        ASSERT_EQ(single.FilterCapAs16BitInteger(0), fOutput);
    EXPECT_EQ(single.m_Y[0], 32767);
    ExpectSame(single, block);
}
