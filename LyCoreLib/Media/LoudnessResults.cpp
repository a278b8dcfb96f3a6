#include "LoudnessResults.h"
#include "R128Analyzer.h"
#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
// BS.1770-4, annex 1, equation 2: takes back the K-weighting's gain at 1 kHz.
constexpr double CALIBRATION_LU = -0.691;
// BS.1770-4, annex 1, equations 5 and 6: the absolute and the relative gate.
constexpr double ABSOLUTE_GATE_LUFS = -70;
constexpr double RELATIVE_GATE_LU = -10;
// EBU Tech 3342: the gate of the range, and the percentiles between which it lies.
constexpr double RANGE_GATE_LU = -20;
constexpr double RANGE_LOW = 0.10;
constexpr double RANGE_HIGH = 0.95;
// ReplayGain 2.0 specification: the reference level.
constexpr double REPLAY_GAIN_LUFS = -18;

constexpr double NO_LEVEL = -std::numeric_limits<double>::infinity();

// The mean energy of each run of nWindow blocks, behind what is there already.
bool AddWindows(LyNumberArray<double>& aryWindows, const double* pBlocks, int nBlocks, int nWindow)
{
    const int nWindows = nBlocks - nWindow + 1;
    if (nWindows < 1)
        return true;
    const int nOld = aryWindows.GetSize();
    if (nWindows > std::numeric_limits<int>::max() - nOld || !aryWindows.SetSize(nOld + nWindows))
        return false;
    for (int i = 0; i < nWindows; ++i)
    {
        // Each sum is made anew: one that is moved on would keep the rounding of the loudest place.
        double fSum = 0;
        for (int k = 0; k < nWindow; ++k)
            fSum += pBlocks[i + k];
        aryWindows[nOld + i] = fSum / nWindow;
    }
    return true;
}

// The mean of the energies that Passes lets through; 0 without any. What is not a number passes no gate.
template <class PASSES>
double GetMean(const LyNumberArray<double>& aryEnergies, PASSES Passes)
{
    double fSum = 0;
    int nPassed = 0;
    for (double fEnergy : aryEnergies)
    {
        if (!Passes(fEnergy))
            continue;
        fSum += fEnergy;
        ++nPassed;
    }
    return nPassed > 0 ? fSum / nPassed : 0;
}

double GetMax(const LyNumberArray<double>& aryEnergies)
{
    double fMax = 0;
    for (double fEnergy : aryEnergies)
        fMax = fEnergy > fMax ? fEnergy : fMax;
    return CLoudnessResults::ToLUFS(fMax);
}

double ToFactor(double fDecibels) { return std::pow(10.0, fDecibels / 10); }

// The value at a fraction of the way through a sorted list, as EBU Tech 3342 rounds it.
double GetPercentile(const LyNumberArray<double>& arySorted, double fFraction)
{
    return arySorted[static_cast<int>(std::lround((arySorted.GetSize() - 1) * fFraction))];
}
} // namespace

CLoudnessResults::CLoudnessResults(const CR128Analyzer& analyzer) { (void)Add(analyzer); } // without memory: no level

bool CLoudnessResults::Add(const CR128Analyzer& analyzer)
{
    return Add(analyzer.m_Blocks.GetData(), analyzer.m_Blocks.GetSize());
}

bool CLoudnessResults::Add(const double* pBlocks, int nBlocks)
{
    if (nBlocks < 0 || (pBlocks == nullptr && nBlocks > 0))
        return false;
    const int nMomentary = m_Momentary.GetSize();
    if (!AddWindows(m_Momentary, pBlocks, nBlocks, MOMENTARY_BLOCKS))
        return false;
    if (AddWindows(m_ShortTerm, pBlocks, nBlocks, SHORT_TERM_BLOCKS))
        return true;
    (void)m_Momentary.SetSize(nMomentary); // shrinking needs no memory
    return false;
}

double CLoudnessResults::ToLUFS(double fEnergy)
{
    return fEnergy > 0 ? CALIBRATION_LU + 10 * std::log10(fEnergy) : NO_LEVEL;
}

double CLoudnessResults::ToEnergy(double fLUFS) { return ToFactor(fLUFS - CALIBRATION_LU); }

double CLoudnessResults::GetIntegrated() const
{
    const double fAbsolute = ToEnergy(ABSOLUTE_GATE_LUFS);
    const double fUngated = GetMean(m_Momentary, [=](double f) { return f > fAbsolute; });
    const double fGate = std::max(fAbsolute, fUngated * ToFactor(RELATIVE_GATE_LU));
    return ToLUFS(GetMean(m_Momentary, [=](double f) { return f > fGate; }));
}

double CLoudnessResults::GetMomentaryMax() const { return GetMax(m_Momentary); }

double CLoudnessResults::GetShortTermMax() const { return GetMax(m_ShortTerm); }

double CLoudnessResults::GetRange() const
{
    const double fAbsolute = ToEnergy(ABSOLUTE_GATE_LUFS);
    const double fUngated = GetMean(m_ShortTerm, [=](double f) { return f >= fAbsolute; });
    const double fGate = std::max(fAbsolute, fUngated * ToFactor(RANGE_GATE_LU));
    LyNumberArray<double> aryGated;
    if (!aryGated.SetSize(m_ShortTerm.GetSize()))
        return 0;
    const double* pEnd =
        std::copy_if(m_ShortTerm.begin(), m_ShortTerm.end(), aryGated.begin(), [=](double f) { return f >= fGate; });
    if (pEnd == aryGated.begin())
        return 0;
    (void)aryGated.SetSize(static_cast<int>(pEnd - aryGated.begin())); // shrinking needs no memory
    std::sort(aryGated.begin(), aryGated.end());
    const double fRange = ToLUFS(GetPercentile(aryGated, RANGE_HIGH)) - ToLUFS(GetPercentile(aryGated, RANGE_LOW));
    return std::isfinite(fRange) ? fRange : 0;
}

bool CLoudnessResults::GetReplayGain(double& fGain) const
{
    const double fIntegrated = GetIntegrated();
    const bool bKnown = std::isfinite(fIntegrated);
    fGain = bKnown ? REPLAY_GAIN_LUFS - fIntegrated : 0;
    return bKnown;
}
