// Rows of numbers as text and back, to the bit.

#include "ReportFields.h"
#include "ReportPacking.h"
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace
{
uint32_t GetBits(float f)
{
    uint32_t nBits = 0;
    std::memcpy(&nBits, &f, sizeof f);
    return nBits;
}
} // namespace

TEST(ReportPacking, CellsStandLittleEndianOneBehindTheOther)
{
    EXPECT_EQ("0080ff7f" // -32768 = 8000h, 32767 = 7FFFh
              "01000a00",
              PackRows(std::vector<RIP_WAVE_POINT>{{-32768, 32767}, {1, 10}}));
    EXPECT_EQ("0000803f", PackRows(std::vector<float>{1.0F})); // 3F800000h
    EXPECT_EQ("78563412"                                       // the sector
              "000000c0"                                       // C0000000h
              "0000003f",                                      // 3F000000h
              PackRows(std::vector<RIP_SPEED_POINT>{{0x12345678, -2.0F, 0.5F}}));
    EXPECT_EQ("", PackRows(std::vector<float>()));
}

TEST(ReportPacking, EveryFloatComesBackToTheBit)
{
    using LIMITS = std::numeric_limits<float>;
    std::vector<float> aryValues = {0.0F,
                                    -0.0F,
                                    0.1F,
                                    LIMITS::max(),
                                    LIMITS::min(),
                                    LIMITS::denorm_min(),
                                    LIMITS::lowest(),
                                    LIMITS::infinity(),
                                    -LIMITS::infinity(),
                                    LIMITS::quiet_NaN()};
    std::mt19937 random(1);
    for (int n = 0; n < 1000; ++n)
        aryValues.push_back(-static_cast<float>(random()) / 1e8F);
    std::vector<float> aryAgain = {1};
    ASSERT_TRUE(UnpackRows(PackRows(aryValues), aryAgain));
    ASSERT_EQ(aryValues.size(), aryAgain.size());
    for (size_t n = 0; n < aryValues.size(); ++n)
        EXPECT_EQ(GetBits(aryValues[n]), GetBits(aryAgain[n])) << n;
}

TEST(ReportPacking, EverySampleComesBack)
{
    std::vector<RIP_WAVE_POINT> aryWave;
    for (int n = -32768; n < 32768; n += 7)
        aryWave.push_back({static_cast<short>(n), static_cast<short>(~n)});
    std::vector<RIP_WAVE_POINT> aryAgain;
    ASSERT_TRUE(UnpackRows(PackRows(aryWave), aryAgain));
    ASSERT_EQ(aryWave.size(), aryAgain.size());
    for (size_t n = 0; n < aryWave.size(); ++n)
    {
        EXPECT_EQ(aryWave[n].nLow, aryAgain[n].nLow);
        EXPECT_EQ(aryWave[n].nHigh, aryAgain[n].nHigh);
    }
}

TEST(ReportPacking, WhatIsNotMadeOfWholeRowsGivesNone)
{
    const char* const NO_ROWS[] = {"0",          "00",       "000000",   "0000000",  "000000000",
                                   "00000000ff", "0000000g", "0000000F", "zzzzzzzz", "0x000000"};
    for (const char* pRows : NO_ROWS)
    {
        std::vector<float> aryValues = {1, 2};
        EXPECT_FALSE(UnpackRows(pRows, aryValues)) << pRows;
        EXPECT_TRUE(aryValues.empty());
    }
    std::vector<float> aryValues = {1, 2};
    EXPECT_TRUE(UnpackRows("", aryValues));
    EXPECT_TRUE(aryValues.empty());
}
