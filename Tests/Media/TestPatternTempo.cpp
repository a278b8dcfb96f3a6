#include "OnsetCorrelation.h"
#include "PatternTempo.h"
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <random>
#include <string>

namespace
{
constexpr double FRAME_SECONDS = 0.01;

// Plays a pattern of digits, its strokes' loudness, again and again; each digit is nFrames long.
std::unique_ptr<COnsetCorrelation> Play(const std::string& strPattern, int nFrames, int nAll = 6000)
{
    auto pCorrelation = std::make_unique<COnsetCorrelation>();
    for (int i = 0; i < nAll; ++i)
    {
        const int nPlace = i / nFrames % static_cast<int>(strPattern.size());
        const int nStroke = i % nFrames == 0 ? strPattern[static_cast<size_t>(nPlace)] - '0' : 0;
        const double fEnergy = 10 + nStroke * 1e4;
        pCorrelation->Add(fEnergy, 0);
        pCorrelation->Add(fEnergy, 0);
    }
    return pCorrelation;
}

struct PATTERN_ROW
{
    const char* pName;
    const char* pPattern;
    int nFrames; // 10 ms each
    double fBPM;
    double fOctaveBPM;
};

// A digit of 25 frames is a quarter of a second: 240 a minute.
const PATTERN_ROW s_aryPatterns[] = {
    {"ABeatAlone", "9", 50, 120, 60},
    {"ABeatAloneAtTheUpperEnd", "9", 34, 60 / 0.34, 30 / 0.34},
    {"TooFastForABeatIsToldAnOctaveLower", "9", 28, 30 / 0.28, 15 / 0.28},
    {"FourBeatsOfWhichOneIsLoud", "9111", 50, 120, 60},
    {"ThreeBeatsOfWhichOneIsLoud", "911", 50, 120, 60},
    {"HalfBeatsBetweenBeats", "91315131", 25, 120, 60},
    {"ThirdsOfABeat", "902502702502", 20, 100, 50},
    {"ABeatSlowerThanAnyBarIsFast", "9", 150, 40, 80},
    {"TwoAndAHalfAndOneAndAHalfBeats", "90000900", 30, 100, 50}, // only bars of 2.4 s come again
};
} // namespace

TEST(PatternTempo, BeatsAreWholePartsOfThePattern)
{
    for (const PATTERN_ROW& row : s_aryPatterns)
    {
        PATTERN_TEMPO tempo;
        ASSERT_TRUE(ReadPatternTempo(*Play(row.pPattern, row.nFrames), FRAME_SECONDS, tempo)) << row.pName;
        EXPECT_NEAR(tempo.fBPM, row.fBPM, 0.01 * row.fBPM) << row.pName;
        EXPECT_NEAR(tempo.fOctaveBPM, row.fOctaveBPM, 0.01 * row.fOctaveBPM) << row.pName;
        EXPECT_GT(tempo.fStrength, 0.8) << row.pName;
        EXPECT_LE(tempo.fStrength, 1) << row.pName;
    }
}

TEST(PatternTempo, TheLengthOfAFrameIsTaken)
{
    PATTERN_TEMPO tempo;
    ASSERT_TRUE(ReadPatternTempo(*Play("9", 50), 0.0125, tempo));
    EXPECT_NEAR(tempo.fBPM, 96, 0.5);
}

TEST(PatternTempo, LessThanTwoSecondsAreTooLittle)
{
    PATTERN_TEMPO tempo;
    tempo.fBPM = 5;
    EXPECT_FALSE(ReadPatternTempo(*Play("9", 50, 199), FRAME_SECONDS, tempo));
    EXPECT_EQ(tempo.fBPM, 0);
    EXPECT_TRUE(ReadPatternTempo(*Play("9", 50, 200), FRAME_SECONDS, tempo));
    EXPECT_NEAR(tempo.fBPM, 120, 1);
}

TEST(PatternTempo, AFrameOfNoLengthIsRefused)
{
    PATTERN_TEMPO tempo;
    for (const double fSeconds : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(ReadPatternTempo(*Play("9", 50), fSeconds, tempo));
}

TEST(PatternTempo, WhatDoesNotComeAgainHasNone)
{
    std::mt19937 random(7);
    COnsetCorrelation chance;
    for (int i = 0; i < 12000; ++i)
        chance.Add(random() % 40 == 0 ? 1e5 : 10, 0);
    const auto pSilence = Play("0", 50);
    for (const COnsetCorrelation* pOnsets : {&chance, pSilence.get()})
    {
        PATTERN_TEMPO tempo;
        tempo.fBPM = tempo.fOctaveBPM = tempo.fStrength = 5;
        EXPECT_FALSE(ReadPatternTempo(*pOnsets, FRAME_SECONDS, tempo));
        EXPECT_EQ(tempo.fBPM, 0);
        EXPECT_EQ(tempo.fOctaveBPM, 0);
        EXPECT_EQ(tempo.fStrength, 0);
    }
}
