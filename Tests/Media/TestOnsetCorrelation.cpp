#include "OnsetCorrelation.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace
{
using Correlation = COnsetCorrelation;

// A frame of that energy in the low notes, which is two steps.
void AddFrame(Correlation& correlation, double fLow, double fEdges = 0)
{
    correlation.Add(fLow, fEdges);
    correlation.Add(fLow, fEdges);
}

// A second reading of what the class is: all onsets are kept, and compared with all.
class Model
{
public:
    void Add(double fLow, double fEdges)
    {
        const float fLowRise = m_Low.GetRise(fLow);
        const float fEdgeRise = m_Edges.GetRise(fEdges);
        m_aryOnsets.push_back(0.8F * fLowRise + 0.2F * fEdgeRise);
    }
    double GetCovariance(size_t nLag) const
    {
        const size_t nCount = m_aryOnsets.size();
        double fSum = 0;
        double fProducts = 0;
        for (size_t i = 0; i < nCount; ++i)
        {
            fSum += static_cast<double>(m_aryOnsets[i]);
            fProducts += i >= nLag ? static_cast<double>(m_aryOnsets[i] * m_aryOnsets[i - nLag]) : 0;
        }
        const double fMean = fSum / static_cast<double>(nCount);
        return (fProducts - fMean * fMean * static_cast<double>(nCount - nLag)) / static_cast<double>(nCount);
    }

private:
    struct BAND
    {
        std::vector<float> aryLevels = {0, 0};
        double fAverage = -1;

        float GetRise(double fEnergy)
        {
            fAverage = fAverage < 0 ? fEnergy : fAverage + (fEnergy - fAverage) / 512;
            aryLevels.push_back(static_cast<float>(std::log1p(10 * fEnergy / (fAverage + 1))));
            return std::max(0.0F, aryLevels.back() - aryLevels[aryLevels.size() - 3]);
        }
    };

    BAND m_Low;
    BAND m_Edges;
    std::vector<float> m_aryOnsets;
};
} // namespace

TEST(OnsetCorrelation, StartsWithNothing)
{
    const Correlation correlation;
    EXPECT_EQ(correlation.GetFrames(), 0);
    EXPECT_EQ(correlation.GetCovariance(0), 0);
}

TEST(OnsetCorrelation, TwoStepsAreAFrame)
{
    Correlation correlation;
    correlation.Add(100, 100);
    EXPECT_EQ(correlation.GetFrames(), 0);
    correlation.Add(100, 100);
    EXPECT_EQ(correlation.GetFrames(), 1);
}

// The first frame is as loud as the average: log(1 + 10 * 999 / 1000) above nothing. What comes after is no louder. So
// there are two onsets, since each frame is compared with the one but one before: x and x, then 0 and 0.
TEST(OnsetCorrelation, OfAToneOnlyTheBeginningCounts)
{
    Correlation correlation;
    for (int i = 0; i < 4; ++i)
        AddFrame(correlation, 999);
    const double f = 0.8 * std::log(1 + 9.99);
    // Squares: (f f + f f) / 4 less the mean f / 2 squared. Neighbours: f f / 4 less three quarters of that.
    EXPECT_NEAR(correlation.GetCovariance(0), f * f / 4, 1e-5);
    EXPECT_NEAR(correlation.GetCovariance(1), f * f / 16, 1e-5);
    EXPECT_NEAR(correlation.GetCovariance(2), -f * f / 8, 1e-5);
}

TEST(OnsetCorrelation, EdgesCountForAFifth)
{
    Correlation low;
    Correlation edges;
    AddFrame(low, 999, 0);
    AddFrame(low, 999, 0);
    AddFrame(low, 999, 0);
    AddFrame(edges, 0, 999);
    AddFrame(edges, 0, 999);
    AddFrame(edges, 0, 999);
    EXPECT_NEAR(low.GetCovariance(0), 16 * edges.GetCovariance(0), 1e-5);
    EXPECT_GT(edges.GetCovariance(0), 0);
}

TEST(OnsetCorrelation, SilenceIsNoOnset)
{
    Correlation correlation;
    for (int i = 0; i < 1000; ++i)
        AddFrame(correlation, 0);
    for (int i = 0; i <= Correlation::MAX_LAG; ++i)
        ASSERT_EQ(correlation.GetCovariance(i), 0) << i;
}

TEST(OnsetCorrelation, WhatComesEveryThirtyFramesIsAlikeAfterThirty)
{
    Correlation correlation;
    for (int i = 0; i < 3000; ++i)
        AddFrame(correlation, i % 30 == 0 ? 1e6 : 10);
    EXPECT_GT(correlation.GetCovariance(30), 0.9 * correlation.GetCovariance(0));
    EXPECT_GT(correlation.GetCovariance(600), 0.75 * correlation.GetCovariance(0)); // a fifth of the pairs is missing
    EXPECT_LT(correlation.GetCovariance(15), 0);
}

// More frames than the history holds, several times.
TEST(OnsetCorrelation, EqualsTheModelAtEveryLag)
{
    std::mt19937 random(3);
    std::exponential_distribution<double> energy(1e-4);
    Correlation correlation;
    Model model;
    for (int i = 0; i < 7000; ++i)
    {
        const double fLow = i % 700 < 100 ? 0 : energy(random);
        const double fEdges = energy(random);
        AddFrame(correlation, fLow, fEdges);
        model.Add(fLow, fEdges);
    }
    EXPECT_EQ(correlation.GetFrames(), 7000);
    for (int i = 0; i <= Correlation::MAX_LAG; ++i)
        ASSERT_NEAR(correlation.GetCovariance(i), model.GetCovariance(static_cast<size_t>(i)), 1e-6) << i;
}

TEST(OnsetCorrelation, LagsThatAreNoneHaveNoCovariance)
{
    Correlation correlation;
    for (int i = 0; i < 50; ++i)
        AddFrame(correlation, i % 7 * 1000.0);
    for (int nLag : {-1, 50, 51, Correlation::MAX_LAG + 1, std::numeric_limits<int>::min()})
        EXPECT_EQ(correlation.GetCovariance(nLag), 0) << nLag;
    EXPECT_NE(correlation.GetCovariance(49), 0);
}

TEST(OnsetCorrelation, EnergiesThatAreNoneAreSilence)
{
    Correlation correlation;
    const double fInfinity = std::numeric_limits<double>::infinity();
    for (double fEnergy : {std::numeric_limits<double>::quiet_NaN(), -fInfinity, -5.0, fInfinity, 1e300, 0.0})
        AddFrame(correlation, fEnergy, fEnergy);
    for (int i = 0; i < 6; ++i)
        EXPECT_TRUE(std::isfinite(correlation.GetCovariance(i))) << i;
}
