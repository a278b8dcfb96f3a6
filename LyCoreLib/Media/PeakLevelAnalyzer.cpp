#include "PeakLevelAnalyzer.h"

#include "PolyphasePeak.h"
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

static_assert(CPeakLevelAnalyzer::TAPS_PER_PHASE == POLYPHASE_TAPS);

namespace
{
constexpr int RUN_FRAMES = 1024; // what is gathered, measured and filtered while it is near

using FLOATS [[gnu::vector_size(16)]] = float;
using FLOATS_IN_MEMORY [[gnu::vector_size(16), gnu::aligned(4), gnu::may_alias]] = float;
using BITS [[gnu::vector_size(16)]] = int;
constexpr int LANES = 4;
constexpr int ALL_BUT_SIGN = 0x7FFFFFFF;

using PAIR [[gnu::vector_size(16)]] = double;
using FLOAT_PAIR [[gnu::vector_size(8)]] = float;
using FLOAT_PAIR_IN_MEMORY [[gnu::vector_size(8), gnu::aligned(4), gnu::may_alias]] = float;

// The samples of one channel side by side, as floats.
void Gather(const double* pSamples, int nFrames, int nStride, float* pDestination)
{
    int i = 0;
    for (; i <= nFrames - 2; i += 2, pSamples += 2 * static_cast<ptrdiff_t>(nStride))
    {
        const PAIR pair = {pSamples[0], pSamples[nStride]};
        *reinterpret_cast<FLOAT_PAIR_IN_MEMORY*>(pDestination + i) = __builtin_convertvector(pair, FLOAT_PAIR);
    }
    if (i < nFrames)
        pDestination[i] = static_cast<float>(*pSamples);
}

// The larger of a peak and the magnitudes of the floats at p; what is no number counts for nothing.
FLOATS TakeMagnitudes(FLOATS peak, const float* p)
{
    const FLOATS value = *reinterpret_cast<const FLOATS_IN_MEMORY*>(p);
    const FLOATS magnitude = reinterpret_cast<FLOATS>(reinterpret_cast<BITS>(value) & (BITS{} + ALL_BUT_SIGN));
    return magnitude > peak ? magnitude : peak;
}

// The largest magnitude, or fPeak if that is larger. A maximum is the same in any order, and so two grow side by side.
float LargestMagnitude(const float* p, int nCount, float fPeak)
{
    FLOATS even = FLOATS{} + fPeak;
    FLOATS odd = even;
    int i = 0;
    for (; i <= nCount - 2 * LANES; i += 2 * LANES)
    {
        even = TakeMagnitudes(even, p + i);
        odd = TakeMagnitudes(odd, p + i + LANES);
    }
    const FLOATS peak = odd > even ? odd : even;
    for (int nLane = 0; nLane < LANES; ++nLane)
        fPeak = peak[nLane] > fPeak ? peak[nLane] : fPeak;
    for (; i < nCount; ++i)
    {
        const float fMagnitude = std::fabs(p[i]);
        fPeak = fMagnitude > fPeak ? fMagnitude : fPeak;
    }
    return fPeak;
}

// Any number of taps and phases, one output after the other.
float FilterPeak(const float* pWindow, int nTaps, const float* pCoefficients, int nPhases, float fPeak)
{
    for (int nPhase = 0; nPhase < nPhases; ++nPhase)
    {
        float fOutput = 0;
        for (int i = 0; i < nTaps; ++i)
            fOutput += pWindow[i] * pCoefficients[i * nPhases + nPhase];
        const float fMagnitude = std::fabs(fOutput);
        fPeak = fMagnitude > fPeak ? fMagnitude : fPeak;
    }
    return fPeak;
}

// Two phases run as four, in which each stands twice: the largest output is the same.
void DoublePhases(const float* pTwoPhases, float* pFourPhases)
{
    for (int i = 0; i < POLYPHASE_TAPS; ++i)
    {
        for (int nPhase = 0; nPhase < POLYPHASE_PHASES; ++nPhase)
            pFourPhases[i * POLYPHASE_PHASES + nPhase] = pTwoPhases[i * 2 + nPhase % 2];
    }
}

float FilterRun(const float* pWindows, int nFrames, int nTaps, const float* pCoefficients, int nPhases, float fPeak)
{
    static const POLYPHASE_PEAK s_pPolyphasePeak = GetWidestPolyphasePeak();
    if (nTaps == POLYPHASE_TAPS && nPhases == POLYPHASE_PHASES)
        return s_pPolyphasePeak(pWindows, nFrames, pCoefficients, fPeak);
    if (nTaps == POLYPHASE_TAPS && nPhases == 2)
    {
        float aryFourPhases[POLYPHASE_TAPS * POLYPHASE_PHASES];
        DoublePhases(pCoefficients, aryFourPhases);
        return s_pPolyphasePeak(pWindows, nFrames, aryFourPhases, fPeak);
    }
    // Deliberate: with any other number of phases, all outputs are 0.
    if (nPhases != 2 && nPhases != POLYPHASE_PHASES)
        return 0 > fPeak ? 0 : fPeak;
    for (int k = 0; k < nFrames; ++k)
        fPeak = FilterPeak(pWindows + k, nTaps, pCoefficients, nPhases, fPeak);
    return fPeak;
}
} // namespace

CPeakLevelAnalyzer::CPeakLevelAnalyzer() { m_Format.SetFormat(16, 44100, 2, false, LY_GUID_NULL, true); }

void CPeakLevelAnalyzer::Process(const double* pSamples, int nFrames)
{
    if (pSamples == nullptr)
        return;
    for (int i = 0; i < m_Channels.GetSize(); ++i)
        m_Channels[i]->Process(pSamples + i, nFrames, m_Channels.GetSize());
}

void CPeakLevelAnalyzer::CChannel::Process(const double* pSamples, int nFrames, int nStride)
{
    if (pSamples == nullptr)
        return;
    if (m_nOversampling == 0)
    {
        ProcessPlain(pSamples, nFrames, nStride);
        m_fTruePeak = m_fPeak;
        return;
    }
    const int nTaps = m_nFilterTaps / m_nOversampling;
    if (m_pHistory == nullptr || m_pWindow == nullptr || m_pCoefficients == nullptr || nTaps < 1)
    {
        ProcessPlain(pSamples, nFrames, nStride); // there is no filter yet
        return;
    }
    while (nFrames > 0)
    {
        const int nRun = StartRun(nFrames);
        ProcessRun(pSamples, nRun, nStride, nTaps);
        pSamples += static_cast<ptrdiff_t>(nRun) * nStride;
        nFrames -= nRun;
    }
}

void CPeakLevelAnalyzer::CChannel::ProcessPlain(const double* pSamples, int nFrames, int nStride)
{
    float arySamples[RUN_FRAMES];
    while (nFrames > 0)
    {
        const int nRun = std::min(nFrames, RUN_FRAMES);
        Gather(pSamples, nRun, nStride, arySamples);
        m_fPeak = LargestMagnitude(arySamples, nRun, m_fPeak);
        pSamples += static_cast<ptrdiff_t>(nRun) * nStride;
        nFrames -= nRun;
    }
}

// Moves the window on to the next sample, and back to the start where the history ends: it slides instead of wrapping,
// so that the samples of a window are always neighbours. How many windows can follow from there.
int CPeakLevelAnalyzer::CChannel::StartRun(int nFrames)
{
    float* pEnd = m_pHistory + HISTORY_FLOATS;
    if (++m_pWindow == pEnd)
    {
        std::memmove(m_pHistory, m_pWindow, KEPT_BYTES);
        m_pWindow = m_pHistory;
    }
    return static_cast<int>(std::min<ptrdiff_t>({nFrames, RUN_FRAMES, pEnd - m_pWindow}));
}

// The window stands at the first of these samples, and is left at the last.
void CPeakLevelAnalyzer::CChannel::ProcessRun(const double* pSamples, int nFrames, int nStride, int nTaps)
{
    float* pNewest = m_pWindow + nTaps - 1;
    Gather(pSamples, nFrames, nStride, pNewest);
    m_fPeak = LargestMagnitude(pNewest, nFrames, m_fPeak);
    m_fTruePeak = FilterRun(m_pWindow, nFrames, nTaps, m_pCoefficients, m_nOversampling, m_fTruePeak);
    m_pWindow += nFrames - 1;
}
