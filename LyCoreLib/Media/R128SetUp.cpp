// Making a CR128Analyzer measure: its channels, their filters and weights.

#include "AudioAnalysisSetUp.h"
#include "LoudnessSetup.h"
#include "R128Analyzer.h"
#include <new>

namespace
{
constexpr int MS_PER_SECOND = 1000;

using CHANNELS = LyOwnedPtrArray<CR128Analyzer::CChannel>;

bool AddChannel(CHANNELS& aryChannels, const CAudioFormat& format)
{
    CR128Analyzer::CChannel* pChannel = new (std::nothrow) CR128Analyzer::CChannel;
    if (pChannel == nullptr)
        return false;
    CLoudnessSetup::SetKWeighting(*pChannel, format.nSamplesPerSec);
    pChannel->m_fWeight = CLoudnessSetup::GetChannelWeight(format, aryChannels.GetSize());
    if (aryChannels.Add(pChannel) >= 0)
        return true;
    delete pChannel;
    return false;
}
} // namespace

bool CR128Analyzer::SetUp(const CAudioFormat& format)
{
    const int nChannels = format.nChannels;
    if (!CanAnalyze(format))
        return false;

    // All memory is found before the first change: the new channels, and room to keep them.
    CHANNELS aryNew;
    for (int i = 0; i < nChannels; ++i)
    {
        if (!AddChannel(aryNew, format))
            return false;
    }
    if (!m_Channels.SetSize(nChannels))
        return false;
    for (int i = 0; i < nChannels; ++i)
    {
        m_Channels.SetAt(i, aryNew[i], true);
        aryNew[i] = nullptr;
    }
    m_Blocks.RemoveAll(false);
    m_Format = format;
    m_nBlockSamples = static_cast<int>(format.nSamplesPerSec) * BLOCK_MS / MS_PER_SECOND;
    return true;
}
