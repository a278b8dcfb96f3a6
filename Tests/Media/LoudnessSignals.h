// Test signals as the EBU describes them: tones of 1 kHz in phase in all channels, a level for each stretch of time.

#pragma once

#include "LoudnessResults.h"
#include "R128Analyzer.h"
#include <cmath>
#include <numbers>
#include <vector>

// A stretch of a test signal. Levels are those of the tone's peak in dBFS, one for each channel, or one for all.
struct STRETCH
{
    double fSeconds;
    std::vector<double> aryLevels;
};

constexpr double TONE_HZ = 1000;
constexpr double NO_TONE = -1000; // a level that is silence

inline std::vector<double> MakeTones(const std::vector<STRETCH>& aryStretches, int nRate, int nChannels,
                                     double fHz = TONE_HZ)
{
    std::vector<double> arySamples;
    long long nFrame = 0;
    double fEnd = 0;
    for (const STRETCH& stretch : aryStretches)
    {
        fEnd += stretch.fSeconds;
        const long long nEnd = std::llround(fEnd * nRate);
        for (; nFrame < nEnd; ++nFrame)
        {
            const double fTone = std::sin(2 * std::numbers::pi * fHz * static_cast<double>(nFrame) / nRate);
            for (int c = 0; c < nChannels; ++c)
            {
                const bool bOne = stretch.aryLevels.size() == 1;
                const double fLevel = stretch.aryLevels[bOne ? 0 : static_cast<size_t>(c)];
                arySamples.push_back(fLevel == NO_TONE ? 0 : std::pow(10, fLevel / 20) * fTone);
            }
        }
    }
    return arySamples;
}

inline CAudioFormat MakeFormat(int nRate, int nChannels)
{
    CAudioFormat format;
    format.SetFormat(64, nRate, nChannels, false, LY_GUID_NULL, true);
    return format;
}

// Everything in calls of odd lengths, as a stream comes.
inline CLoudnessResults Measure(const std::vector<double>& arySamples, const CAudioFormat& format)
{
    CR128Analyzer analyzer;
    if (!analyzer.SetUp(format))
        return CLoudnessResults();
    constexpr int CALL_FRAMES = 1777;
    const int nFrames = static_cast<int>(arySamples.size()) / format.nChannels;
    for (int i = 0; i < nFrames; i += CALL_FRAMES)
    {
        const int nCall = nFrames - i < CALL_FRAMES ? nFrames - i : CALL_FRAMES;
        (void)analyzer.Process(arySamples.data() + static_cast<ptrdiff_t>(i) * format.nChannels, nCall);
    }
    return CLoudnessResults(analyzer);
}

// libebur128 takes a short-term value for the range once a second and not ten times.
inline void AddEachSecond(CLoudnessResults& thinned, const CLoudnessResults& results)
{
    constexpr int LIBRARY_STEP = 10;
    for (int i = 0; i < results.m_ShortTerm.GetSize(); i += LIBRARY_STEP)
        thinned.m_ShortTerm.Add(results.m_ShortTerm[i]);
}

inline double GetRangeOfEachSecond(const CLoudnessResults& results)
{
    CLoudnessResults thinned;
    AddEachSecond(thinned, results);
    return thinned.GetRange();
}

inline CLoudnessResults MeasureTones(const std::vector<STRETCH>& aryStretches, int nRate = 48000, int nChannels = 2)
{
    return Measure(MakeTones(aryStretches, nRate, nChannels), MakeFormat(nRate, nChannels));
}
