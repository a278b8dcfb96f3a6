#include "LoudnessResults.h"
#include "LoudnessSignals.h"
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace
{
constexpr double NO_LEVEL = -std::numeric_limits<double>::infinity();

double Energy(double fLUFS) { return CLoudnessResults::ToEnergy(fLUFS); }

// nBlocks of one level, behind what is there.
void Append(std::vector<double>& aryBlocks, int nBlocks, double fLUFS)
{
    aryBlocks.insert(aryBlocks.end(), static_cast<size_t>(nBlocks), Energy(fLUFS));
}

bool Add(CLoudnessResults& results, const std::vector<double>& aryBlocks)
{
    return results.Add(aryBlocks.data(), static_cast<int>(aryBlocks.size()));
}
} // namespace

// -0.691 + 10 log10(energy)
TEST(LoudnessResults, LevelsAndEnergies)
{
    EXPECT_NEAR(CLoudnessResults::ToLUFS(1), -0.691, 1e-12);
    EXPECT_NEAR(CLoudnessResults::ToLUFS(0.01), -20.691, 1e-12);
    EXPECT_NEAR(CLoudnessResults::ToEnergy(-0.691), 1, 1e-12);
    EXPECT_NEAR(CLoudnessResults::ToEnergy(-10.691), 0.1, 1e-12);
    EXPECT_EQ(CLoudnessResults::ToLUFS(0), NO_LEVEL);
    EXPECT_EQ(CLoudnessResults::ToLUFS(-1), NO_LEVEL);
    EXPECT_EQ(CLoudnessResults::ToLUFS(std::numeric_limits<double>::quiet_NaN()), NO_LEVEL);
}

TEST(LoudnessResults, NothingHasNoLevel)
{
    CLoudnessResults results;
    EXPECT_EQ(results.GetIntegrated(), NO_LEVEL);
    EXPECT_EQ(results.GetMomentaryMax(), NO_LEVEL);
    EXPECT_EQ(results.GetShortTermMax(), NO_LEVEL);
    EXPECT_EQ(results.GetRange(), 0);
    double fGain = 5;
    EXPECT_FALSE(results.GetReplayGain(fGain));
    EXPECT_EQ(fGain, 0);
    EXPECT_TRUE(results.Add(nullptr, 0));
    EXPECT_TRUE(results.Add(CR128Analyzer()));
    EXPECT_EQ(results.GetIntegrated(), NO_LEVEL);
}

TEST(LoudnessResults, RefusesWhatIsNoList)
{
    CLoudnessResults results;
    const double fBlock = 1;
    EXPECT_FALSE(results.Add(nullptr, 1));
    EXPECT_FALSE(results.Add(&fBlock, -1));
    EXPECT_FALSE(results.Add(&fBlock, INT_MIN));
    EXPECT_EQ(results.m_Momentary.GetSize(), 0);
}

TEST(LoudnessResults, WindowsAreMeansOfFourAndThirtyBlocks)
{
    std::vector<double> aryBlocks;
    for (int i = 0; i < 31; ++i)
        aryBlocks.push_back(i);
    CLoudnessResults results;
    ASSERT_TRUE(Add(results, aryBlocks));
    ASSERT_EQ(results.m_Momentary.GetSize(), 28);
    EXPECT_EQ(results.m_Momentary[0], 1.5);   // 0, 1, 2, 3
    EXPECT_EQ(results.m_Momentary[27], 28.5); // 27, 28, 29, 30
    ASSERT_EQ(results.m_ShortTerm.GetSize(), 2);
    EXPECT_EQ(results.m_ShortTerm[0], 14.5);
    EXPECT_EQ(results.m_ShortTerm[1], 15.5);
}

TEST(LoudnessResults, AWindowNeedsAllItsBlocks)
{
    std::vector<double> aryBlocks(3, 1.0);
    CLoudnessResults results;
    EXPECT_TRUE(Add(results, aryBlocks));
    EXPECT_EQ(results.GetIntegrated(), NO_LEVEL);
    aryBlocks.push_back(1);
    EXPECT_TRUE(Add(results, aryBlocks));
    EXPECT_NEAR(results.GetIntegrated(), -0.691, 1e-9);
    EXPECT_NEAR(results.GetMomentaryMax(), -0.691, 1e-9);
    EXPECT_EQ(results.GetShortTermMax(), NO_LEVEL);
}

TEST(LoudnessResults, NoWindowReachesIntoTheNextPiece)
{
    CLoudnessResults results;
    const std::vector<double> aryBlocks(5, 1.0);
    EXPECT_TRUE(Add(results, aryBlocks));
    EXPECT_TRUE(Add(results, aryBlocks));
    EXPECT_EQ(results.m_Momentary.GetSize(), 4);
    EXPECT_EQ(results.m_ShortTerm.GetSize(), 0);
}

TEST(LoudnessResults, WhatIsUnderMinus70IsNotHeard)
{
    std::vector<double> aryBlocks;
    Append(aryBlocks, 40, -70.1);
    CLoudnessResults silent;
    ASSERT_TRUE(Add(silent, aryBlocks));
    EXPECT_EQ(silent.GetIntegrated(), NO_LEVEL);
    EXPECT_EQ(silent.GetRange(), 0);
    EXPECT_NEAR(silent.GetMomentaryMax(), -70.1, 1e-9);

    aryBlocks.clear();
    Append(aryBlocks, 40, -69.9);
    CLoudnessResults quiet;
    ASSERT_TRUE(Add(quiet, aryBlocks));
    EXPECT_NEAR(quiet.GetIntegrated(), -69.9, 1e-9);
}

// A half at -20, a half at -29: the mean is -22.5, the gate -32.5, and all of it is heard. At -33 the mean is -22.8 and
// the quiet half is out.
TEST(LoudnessResults, TheRelativeGateIsTenUnderTheMean)
{
    struct ROW
    {
        double fQuiet;
        double fIntegrated;
    };
    const double fBoth = CLoudnessResults::ToLUFS((Energy(-20) + Energy(-29)) / 2);
    for (const ROW& row : {ROW{-29, fBoth}, ROW{-33, -20}})
    {
        CLoudnessResults results;
        std::vector<double> aryBlocks;
        Append(aryBlocks, 100, -20);
        ASSERT_TRUE(Add(results, aryBlocks));
        aryBlocks.clear();
        Append(aryBlocks, 100, row.fQuiet);
        ASSERT_TRUE(Add(results, aryBlocks));
        EXPECT_NEAR(results.GetIntegrated(), row.fIntegrated, 1e-9);
    }
}

// 101 values in steps of 0.1 LU: the percentiles 10 and 95 are the values at 10 and at 95, 8.5 LU apart.
TEST(LoudnessResults, TheRangeLiesBetweenThePercentiles)
{
    CLoudnessResults results;
    for (int i = 100; i >= 0; --i)
    {
        std::vector<double> aryBlocks;
        Append(aryBlocks, 30, -30 + i * 0.1);
        ASSERT_TRUE(Add(results, aryBlocks));
    }
    ASSERT_EQ(results.m_ShortTerm.GetSize(), 101);
    EXPECT_NEAR(results.GetRange(), 8.5, 1e-9);
}

TEST(LoudnessResults, TheRangeGateIsTwentyUnderTheMean)
{
    CLoudnessResults results;
    std::vector<double> aryBlocks;
    Append(aryBlocks, 30, -20);
    for (int i = 0; i < 10; ++i)
        ASSERT_TRUE(Add(results, aryBlocks));
    aryBlocks.clear();
    Append(aryBlocks, 30, -41); // the mean is at most -20.4
    for (int i = 0; i < 1; ++i)
        ASSERT_TRUE(Add(results, aryBlocks));
    EXPECT_NEAR(results.GetRange(), 0, 1e-9);
    aryBlocks.clear();
    Append(aryBlocks, 30, -39);
    for (int i = 0; i < 2; ++i)
        ASSERT_TRUE(Add(results, aryBlocks));
    EXPECT_NEAR(results.GetRange(), 19, 1e-9); // of 12, the second is the 10th percentile
}

TEST(LoudnessResults, ReplayGainLeadsToMinus18)
{
    std::vector<double> aryBlocks;
    Append(aryBlocks, 10, -9.5);
    CLoudnessResults results;
    ASSERT_TRUE(Add(results, aryBlocks));
    double fGain = 0;
    EXPECT_TRUE(results.GetReplayGain(fGain));
    EXPECT_NEAR(fGain, -8.5, 1e-9);
}

TEST(LoudnessResults, AlbumGainComesFromAllTracksTogether)
{
    std::vector<double> aryLoud;
    std::vector<double> aryQuiet;
    Append(aryLoud, 103, -10);
    Append(aryQuiet, 103, -16);
    CLoudnessResults album;
    ASSERT_TRUE(Add(album, aryLoud));
    ASSERT_TRUE(Add(album, aryQuiet));
    double fGain = 0;
    ASSERT_TRUE(album.GetReplayGain(fGain));
    EXPECT_NEAR(fGain, -18 - CLoudnessResults::ToLUFS((Energy(-10) + Energy(-16)) / 2), 1e-9);
}

TEST(LoudnessResults, EnergiesThatAreNoNumbersDoNoHarm)
{
    const double fNoNumber = std::numeric_limits<double>::quiet_NaN();
    const double fInfinity = std::numeric_limits<double>::infinity();
    for (double fStrange : {fNoNumber, fInfinity, -fInfinity, -1.0, 1e308})
    {
        std::vector<double> aryBlocks(100, 0.1);
        aryBlocks[50] = fStrange;
        CLoudnessResults results;
        ASSERT_TRUE(Add(results, aryBlocks));
        (void)results.GetIntegrated();
        (void)results.GetMomentaryMax();
        EXPECT_TRUE(std::isfinite(results.GetRange()));
        double fGain = 0;
        (void)results.GetReplayGain(fGain);
        EXPECT_TRUE(std::isfinite(fGain));
    }
    std::vector<double> aryBlocks(100, 0.1);
    aryBlocks[50] = fNoNumber;
    CLoudnessResults results;
    ASSERT_TRUE(Add(results, aryBlocks));
    EXPECT_NEAR(results.GetIntegrated(), -10.691, 1e-9) << "what is not a number is not heard";
}
