#include "OnsetCorrelation.h"
#include <algorithm>
#include <climits>
#include <cmath>

namespace
{
constexpr double AVERAGE_WEIGHT = 1.0 / 512; // of a frame: some five seconds
// How fast the scale bends: a frame as loud as the average stands at log(11).
constexpr double LOUDNESS = 10;
constexpr double QUIET = 1;         // under one step of 16 bits nothing is an onset
constexpr double MAX_ENERGY = 1e30; // far more than any audio has

double Clean(double fEnergy) { return fEnergy > 0 ? std::min(fEnergy, MAX_ENERGY) : 0; }
} // namespace

// How far the level of the frame lies above that of the frame but one before: a drum needs more than one to rise.
float COnsetCorrelation::BAND::GetRise(bool bFirst)
{
    const double fFrame = fEnergy / STEPS;
    fEnergy = 0;
    fAverage += (fFrame - fAverage) * (bFirst ? 1 : AVERAGE_WEIGHT);
    const float fNow = std::log(1 + static_cast<float>(LOUDNESS * fFrame / (fAverage + QUIET)));
    const float fRise = std::max(fNow - fLevelBefore, 0.0F);
    fLevelBefore = fLevel;
    fLevel = fNow;
    return fRise;
}

void COnsetCorrelation::Add(double fLow, double fEdges)
{
    m_Low.fEnergy += Clean(fLow);
    m_Edges.fEnergy += Clean(fEdges);
    if (++m_nSteps < STEPS)
        return;
    m_nSteps = 0;
    const bool bFirst = m_nFrames == 0;
    const float fLowRise = m_Low.GetRise(bFirst);
    const float fEdgeRise = m_Edges.GetRise(bFirst);
    AddOnset(static_cast<float>(1 - EDGE_PART) * fLowRise + static_cast<float>(EDGE_PART) * fEdgeRise);
}

void COnsetCorrelation::AddOnset(float fOnset)
{
    if (m_nFrames == INT_MAX)
        return; // eight months of audio
    if (m_nNewest == 0)
    {
        m_nNewest = HISTORY - LAGS + 1;
        std::copy_n(m_aryOnsets, LAGS - 1, m_aryOnsets + m_nNewest);
    }
    float* pNewest = m_aryOnsets + --m_nNewest;
    *pNewest = fOnset;
    ++m_nFrames;
    if (fOnset == 0)
        return;
    m_fSum += static_cast<double>(fOnset);
    for (int i = 0; i < LAGS; i += GROUP)
    {
        for (int k = i; k < i + GROUP; ++k)
            m_arySums[k] += static_cast<double>(fOnset * pNewest[k]);
    }
}

double COnsetCorrelation::GetCovariance(int nLag) const
{
    if (nLag < 0 || nLag > MAX_LAG || nLag >= m_nFrames)
        return 0;
    const double fMean = m_fSum / m_nFrames;
    return (m_arySums[nLag] - fMean * fMean * (m_nFrames - nLag)) / m_nFrames;
}
