#include "DRAnalyzer.h"

#include "AudioAnalysisSetUp.h"
#include "DRLanePair.h"
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <new>

namespace
{
constexpr int RESERVED_WINDOWS = 1024; // room from the start, 51 minutes

using CHANNEL = CDRAnalyzer::CChannel;

// How many of nFrames still belong to the current window.
int FramesOfWindow(const CHANNEL& channel, int nFrames)
{
    return std::min(nFrames, std::max(channel.m_nWindowSamples - channel.m_nCount, 0));
}

// Both channels at once, each sum in its own lane and in the order of the frames.
void AddPair(CHANNEL& first, CHANNEL& second, const double* pSamples, int nFrames, int nStride)
{
    DRLanePair pair(first, second);
    for (int i = 0; i < nFrames; ++i, pSamples += nStride)
    {
        DRLanePair::LANES samples;
        std::memcpy(&samples, pSamples, sizeof samples);
        pair.Add(samples);
    }
    pair.Store(first, second);
}

void ProcessPair(CHANNEL& first, CHANNEL& second, const double* pSamples, int nFrames, int nStride)
{
    while (nFrames > 0)
    {
        const int nRun = FramesOfWindow(first, nFrames);
        AddPair(first, second, pSamples, nRun, nStride);
        DRLanePair::EndRun(first, nRun);
        DRLanePair::EndRun(second, nRun);
        pSamples += static_cast<ptrdiff_t>(nRun) * nStride;
        nFrames -= nRun;
    }
}

bool Reserve(LyNumberArray<double>& ary)
{
    if (!ary.SetSize(RESERVED_WINDOWS, true))
        return false;
    ary.RemoveAll(false);
    return true;
}

// The root mean square of the loudest part of the windows. False if a window has no level, or without memory.
bool GetLoudLevel(const LyNumberArray<double>& aryRMS, double& fLevel)
{
    LyNumberArray<double> aryLevels(aryRMS);
    if (aryLevels.GetSize() == 0 || std::any_of(aryLevels.begin(), aryLevels.end(), [](double f) { return !(f >= 0); }))
        return false;
    const int nLoud = std::max(aryLevels.GetSize() / CDRAnalyzer::LOUD_PART, 1);
    std::partial_sort(aryLevels.begin(), aryLevels.begin() + nLoud, aryLevels.end(), std::greater<>());
    double fSum = 0;
    for (int i = 0; i < nLoud; ++i)
        fSum += aryLevels[i] * aryLevels[i];
    fLevel = std::sqrt(fSum / nLoud);
    return true;
}

// The second largest value; of one value, itself.
double GetSecondPeak(const LyNumberArray<double>& aryPeaks)
{
    double fFirst = 0;
    double fSecond = 0;
    for (const double fPeak : aryPeaks)
    {
        fSecond = std::max(fSecond, std::min(fFirst, fPeak));
        fFirst = std::max(fFirst, fPeak);
    }
    return aryPeaks.GetSize() > 1 ? fSecond : fFirst;
}
} // namespace

void CDRAnalyzer::CChannel::Process(const double* pSamples, int nFrames, int nStride)
{
    if (pSamples == nullptr || m_nWindowSamples < 1)
        return;
    while (nFrames > 0)
    {
        const int nRun = FramesOfWindow(*this, nFrames);
        for (int i = 0; i < nRun; ++i, pSamples += nStride)
        {
            m_fSumSquares += *pSamples * *pSamples;
            const double fMagnitude = std::fabs(*pSamples);
            m_fPeak = fMagnitude > m_fPeak ? fMagnitude : m_fPeak;
        }
        DRLanePair::EndRun(*this, nRun);
        nFrames -= nRun;
    }
}

void CDRAnalyzer::CChannel::FinishWindow()
{
    if (m_nCount == 0)
        return;
    // Deliberate: the factor 2 makes a full-scale sine read 1.0 (AES17), 3 dB above a plain root mean square.
    double fRMS = 2 * m_fSumSquares / m_nCount;
    if (fRMS > 0)
        fRMS = std::sqrt(fRMS);
    (void)m_RMS.Add(fRMS); // without memory the figure rests on the windows that there are
    (void)m_Peaks.Add(m_fPeak);
    m_nCount = 0;
    m_fSumSquares = 0;
    m_fPeak = 0;
}

bool CDRAnalyzer::CChannel::GetDynamicRange(double& fDB) const
{
    double fLevel = 0;
    if (!GetLoudLevel(m_RMS, fLevel))
        return false;
    const double fPeak = GetSecondPeak(m_Peaks);
    const double fRatio = fPeak / fLevel;
    if (!(fRatio > 0) || !std::isfinite(fRatio)) // silence, or samples beyond all measure
        return false;
    fDB = 20 * std::log10(fRatio);
    return true;
}

CDRAnalyzer::CDRAnalyzer() { m_Format.SetFormat(16, 44100, 2, false, LY_GUID_NULL, true); }

bool CDRAnalyzer::SetUp(const CAudioFormat& format)
{
    if (!CanAnalyze(format))
        return false;
    m_Format = format;
    m_Channels.RemoveAll();
    for (int i = 0; i < format.nChannels; ++i)
    {
        std::unique_ptr<CChannel> pChannel(new (std::nothrow) CChannel);
        if (pChannel == nullptr || !Reserve(pChannel->m_RMS) || !Reserve(pChannel->m_Peaks) ||
            m_Channels.Add(pChannel.get()) < 0)
        {
            m_Channels.RemoveAll();
            return false;
        }
        pChannel.release()->m_nWindowSamples = static_cast<int>(format.nSamplesPerSec) * WINDOW_SECONDS;
    }
    return true;
}

void CDRAnalyzer::Process(const double* pSamples, int nFrames)
{
    if (pSamples == nullptr)
        return;
    const int nChannels = m_Channels.GetSize();
    int i = 0;
    for (; i + 1 < nChannels && DRLanePair::HaveSameWindow(*m_Channels[i], *m_Channels[i + 1]); i += 2)
        ProcessPair(*m_Channels[i], *m_Channels[i + 1], pSamples + i, nFrames, nChannels);
    for (; i < nChannels; ++i)
        m_Channels[i]->Process(pSamples + i, nFrames, nChannels);
}

void CDRAnalyzer::Finish()
{
    for (CChannel* pChannel : m_Channels)
        pChannel->FinishWindow();
}

bool CDRAnalyzer::GetDynamicRange(int nChannel, double& fDB) const
{
    return nChannel >= 0 && nChannel < m_Channels.GetSize() && m_Channels[nChannel]->GetDynamicRange(fDB);
}

bool CDRAnalyzer::GetDynamicRange(double& fDB) const
{
    double fSum = 0;
    int nCounted = 0;
    for (int i = 0; i < m_Channels.GetSize(); ++i)
    {
        double fChannelDB = 0;
        if (!GetDynamicRange(i, fChannelDB))
            continue;
        fSum += fChannelDB;
        ++nCounted;
    }
    if (nCounted == 0)
        return false;
    fDB = fSum / nCounted;
    return true;
}

int CDRAnalyzer::GetDRValue() const
{
    double fDB = 0;
    return GetDynamicRange(fDB) ? static_cast<int>(std::lround(std::max(fDB, 0.0))) : -1;
}
