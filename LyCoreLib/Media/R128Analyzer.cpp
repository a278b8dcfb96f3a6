#include "R128Analyzer.h"
#include "R128Lanes.h"
#include <algorithm>
#include <cstddef>

// The channel goes on where the filter ends.
static_assert(sizeof(CR128Analyzer::CChannel) == sizeof(CIIRFilter) + 8 + 2 * sizeof(double));

namespace
{
// One channel by the filter itself: what R128Lanes does for two.
void ProcessChannel(CR128Analyzer::CChannel& channel, const double* pSamples, int nFrames, int nStride)
{
    for (int i = 0; i < nFrames; ++i, pSamples += nStride)
    {
        const double fOutput = channel.Filter(*pSamples);
        channel.m_fSum += fOutput * fOutput;
    }
}

// Counts hold what anybody may have put there: nothing may overflow.
void Count(int& nCount, int nAdded)
{
    nCount = static_cast<int>(static_cast<unsigned int>(nCount) + static_cast<unsigned int>(nAdded));
}
} // namespace

bool CR128Analyzer::Process(const double* pSamples, int nFrames)
{
    const int nUsable = CountUsableChannels();
    if (nUsable == 0 || nFrames < 1 || pSamples == nullptr || m_nBlockSamples < 1)
        return false;

    const ptrdiff_t nStride = m_Format.nChannels;
    int nRemaining = nFrames;
    while (nRemaining > 0)
    {
        const long long nRoom = static_cast<long long>(m_nBlockSamples) - m_Channels[0]->m_nCount;
        const int nToDo = static_cast<int>(std::clamp<long long>(nRoom, 0, nRemaining));
        ProcessChannels(pSamples + (nFrames - nRemaining) * nStride, nToDo, nUsable);
        if (m_Channels[0]->m_nCount >= m_nBlockSamples)
            FinishBlock(nUsable);
        nRemaining -= nToDo;
    }
    return true;
}

// The channels that there are samples for: no more than the format says, and none behind a gap in the list.
int CR128Analyzer::CountUsableChannels() const
{
    const int nMost = std::min<int>(m_Format.nChannels, m_Channels.GetSize());
    int nUsable = 0;
    while (nUsable < nMost && m_Channels[nUsable] != nullptr)
        ++nUsable;
    return nUsable;
}

void CR128Analyzer::ProcessChannels(const double* pSamples, int nFrames, int nUsable)
{
    const int nStride = m_Format.nChannels;
    int nWaiting = -1; // a channel that waits for another one to fill the second lane
    for (int i = 0; i < nUsable; ++i)
    {
        CChannel& channel = *m_Channels[i];
        Count(channel.m_nCount, nFrames);
        if (channel.m_fWeight == 0 || nFrames < 1)
            continue;
        if (!R128Lanes::Fits(channel))
        {
            ProcessChannel(channel, pSamples + i, nFrames, nStride);
        }
        else if (nWaiting < 0)
        {
            nWaiting = i;
        }
        else
        {
            R128Lanes::Process(*m_Channels[nWaiting], channel, pSamples + nWaiting, pSamples + i, nFrames, nStride);
            nWaiting = -1;
        }
    }
    if (nWaiting >= 0)
        ProcessChannel(*m_Channels[nWaiting], pSamples + nWaiting, nFrames, nStride);
}

// Counts frames that all channels have been fed, none beyond the block; the last one of it ends it.
void CR128Analyzer::EndRun(int nFrames)
{
    for (CChannel* pChannel : m_Channels)
        pChannel->m_nCount += nFrames;
    if (m_Channels[0]->m_nCount == m_nBlockSamples)
        FinishBlock(m_Channels.GetSize());
}

void CR128Analyzer::FinishBlock(int nUsable)
{
    double fValue = 0;
    for (int i = 0; i < nUsable; ++i)
    {
        CChannel& channel = *m_Channels[i];
        if (channel.m_nCount > 0 && channel.m_fWeight != 0)
            fValue += channel.m_fWeight * channel.m_fSum / channel.m_nCount;
        channel.m_fSum = 0;
        channel.m_nCount = 0;
    }
    (void)m_Blocks.Add(fValue); // without memory the measurement lacks a block; there is nobody to tell
}
