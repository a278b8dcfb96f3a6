#include "StereoPass.h"
#include "BeatsPerMinuteAnalyzer.h"
#include "DRAnalyzer.h"
#include "DRLanePair.h"
#include "LowPassRun.h"
#include "R128Analyzer.h"
#include "R128LanePair.h"
#include "R128Lanes.h"
#include <algorithm>
#include <cstddef>
#include <cstring>

namespace
{
constexpr int STEREO = 2;

bool IsReady(const CR128Analyzer::CChannel& channel, int nBlockSamples)
{
    return R128Lanes::Fits(channel) && channel.m_fWeight != 0 && channel.m_nCount >= 0 &&
           channel.m_nCount < nBlockSamples;
}

bool IsReady(const CDRAnalyzer& range)
{
    if (range.m_Channels.GetSize() != STEREO || range.m_Channels[0] == nullptr || range.m_Channels[1] == nullptr)
        return false;
    const CDRAnalyzer::CChannel& first = *range.m_Channels[0];
    return DRLanePair::HaveSameWindow(first, *range.m_Channels[1]) && first.m_nCount >= 0 &&
           first.m_nCount < first.m_nWindowSamples;
}

// The channels of the two analysers that have some.
struct CHANNELS
{
    CR128Analyzer::CChannel& loudness1;
    CR128Analyzer::CChannel& loudness2;
    CDRAnalyzer::CChannel& range1;
    CDRAnalyzer::CChannel& range2;
};

// Frames of one step, block and window. Returns the sum of squares that the low pass lets through, added to that
// before.
double RunAll(CLowPassFilter& filter, const float* pMixed, double fEnergy, const CHANNELS& channels,
              const double* pSamples, int nFrames)
{
    LowPassRun low(filter);
    R128LanePair loudness(channels.loudness1, channels.loudness2);
    DRLanePair range(channels.range1, channels.range2);
    for (int i = 0; i < nFrames; ++i)
    {
        R128LanePair::LANES samples;
        std::memcpy(&samples, pSamples + static_cast<ptrdiff_t>(i) * STEREO, sizeof samples);
        loudness.Add(samples);
        range.Add(samples);
        const float fOutput = low.Add(pMixed[i]);
        fEnergy += static_cast<double>(fOutput * fOutput);
    }
    low.Store(filter, nFrames);
    loudness.Store(channels.loudness1, channels.loudness2);
    range.Store(channels.range1, channels.range2);
    return fEnergy;
}
} // namespace

bool CStereoPass::Fits(const CBeatsPerMinuteAnalyzerV1& beats, const CR128Analyzer& loudness, const CDRAnalyzer& range)
{
    if (loudness.m_Format.nChannels != STEREO || loudness.m_Channels.GetSize() != STEREO ||
        loudness.CountUsableChannels() != STEREO || !IsReady(range))
        return false;
    const CR128Analyzer::CChannel& first = *loudness.m_Channels[0];
    const CR128Analyzer::CChannel& second = *loudness.m_Channels[1];
    return IsReady(first, loudness.m_nBlockSamples) && IsReady(second, loudness.m_nBlockSamples) &&
           first.m_nCount == second.m_nCount && beats.m_nStepSamples >= 0 &&
           beats.m_nStepSamples < beats.m_nSamplesPerStep;
}

void CStereoPass::Process(CBeatsPerMinuteAnalyzerV1& beats, CR128Analyzer& loudness, CDRAnalyzer& range,
                          const double* pSamples, int nFrames)
{
    const CHANNELS channels = {*loudness.m_Channels[0], *loudness.m_Channels[1], *range.m_Channels[0],
                               *range.m_Channels[1]};
    float aryMixed[CBeatsPerMinuteAnalyzerV1::CHUNK_FRAMES];
    while (nFrames > 0)
    {
        const int nChunk = beats.GetChunk(std::min({nFrames, loudness.m_nBlockSamples - channels.loudness1.m_nCount,
                                                    channels.range1.m_nWindowSamples - channels.range1.m_nCount}));
        beats.MixChunk(pSamples, nChunk, STEREO, aryMixed);
        if (beats.m_Filter.IsSilentWith(aryMixed, nChunk))
        {
            // Fading to nothing, the low pass has a way of its own.
            beats.FilterChunk(aryMixed, nChunk);
            (void)loudness.Process(pSamples, nChunk);
            range.Process(pSamples, nChunk);
        }
        else
        {
            beats.m_fEnergy = RunAll(beats.m_Filter, aryMixed, beats.m_fEnergy, channels, pSamples, nChunk);
            loudness.EndRun(nChunk);
            DRLanePair::EndRun(channels.range1, nChunk);
            DRLanePair::EndRun(channels.range2, nChunk);
        }
        beats.EndChunk(nChunk);
        pSamples += static_cast<ptrdiff_t>(nChunk) * STEREO;
        nFrames -= nChunk;
    }
}
