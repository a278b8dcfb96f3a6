// Test signals as the EBU describes them: tones of 1 kHz in phase in all channels, a level for each stretch of time.

#pragma once

#include "LoudnessResults.h"
#include "R128Analyzer.h"
#include "Thinning.h"
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

// The frames from nFrame to nEnd of a signal that begins at pSamples; fPeriods of the tone go into a frame.
TEST_RECKONING inline void FillWithTone(double* pSamples, long long nFrame, long long nEnd, const double* pFactors,
                                        int nChannels, double fPeriods)
{
    for (; nFrame < nEnd; ++nFrame)
    {
        const double fTone = std::sin(2 * std::numbers::pi * fPeriods * static_cast<double>(nFrame));
        for (int c = 0; c < nChannels; ++c)
            pSamples[nFrame * nChannels + c] = pFactors[c] * fTone;
    }
}

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
        std::vector<double> aryFactors;
        for (int c = 0; c < nChannels; ++c)
        {
            const double fLevel = stretch.aryLevels[stretch.aryLevels.size() == 1 ? 0 : static_cast<size_t>(c)];
            aryFactors.push_back(fLevel == NO_TONE ? 0 : std::pow(10, fLevel / 20));
        }
        arySamples.resize(static_cast<size_t>(nEnd * nChannels));
        FillWithTone(arySamples.data(), nFrame, nEnd, aryFactors.data(), nChannels, fHz / nRate);
        nFrame = nEnd;
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
