// DRLanePair: two channels of CDRAnalyzer, each a lane of a vector, with their sums in registers; for the sources that
// are in a hurry. Each sum grows in the order of the frames, as in CChannel::Process.

#pragma once

#include "DRAnalyzer.h"

class DRLanePair
{
public:
    typedef double LANES __attribute__((vector_size(16)));

    // Whether both are at the same place of windows of the same length.
    static bool HaveSameWindow(const CDRAnalyzer::CChannel& first, const CDRAnalyzer::CChannel& second)
    {
        return first.m_nWindowSamples > 0 && first.m_nWindowSamples == second.m_nWindowSamples &&
               first.m_nCount == second.m_nCount;
    }

    DRLanePair(const CDRAnalyzer::CChannel& first, const CDRAnalyzer::CChannel& second)
        : m_Sum{first.m_fSumSquares, second.m_fSumSquares}, m_Peak{first.m_fPeak, second.m_fPeak}
    {
    }

    // A sample of each channel, of the current window.
    [[gnu::always_inline]] void Add(LANES samples)
    {
        m_Sum += samples * samples;
        const LANES magnitudes = reinterpret_cast<LANES>(reinterpret_cast<BITS>(samples) & (BITS{} + ALL_BUT_SIGN));
        m_Peak = magnitudes > m_Peak ? magnitudes : m_Peak;
    }

    void Store(CDRAnalyzer::CChannel& first, CDRAnalyzer::CChannel& second) const
    {
        first.m_fSumSquares = m_Sum[0];
        second.m_fSumSquares = m_Sum[1];
        first.m_fPeak = m_Peak[0];
        second.m_fPeak = m_Peak[1];
    }

    // Counts frames that have been added, none beyond the window; the last one of it ends it.
    static void EndRun(CDRAnalyzer::CChannel& channel, int nFrames)
    {
        channel.m_nCount += nFrames;
        if (channel.m_nCount >= channel.m_nWindowSamples)
            channel.FinishWindow();
    }

private:
    typedef long long BITS __attribute__((vector_size(16)));
    static constexpr long long ALL_BUT_SIGN = 0x7FFFFFFFFFFFFFFF;

    LANES m_Sum;
    LANES m_Peak;
};
