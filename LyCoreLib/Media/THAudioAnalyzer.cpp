#include "THAudioAnalyzer.h"

#include "AudioAnalysisSetUp.h"
#include "StereoPass.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int SAMPLE_BYTES = static_cast<int>(sizeof(double));

int BytesPerFrame(const CAudioFormat& format)
{
    return format.nBlockAlign != 0 ? format.nBlockAlign : format.nChannels * format.wBitsPerSample / 8;
}
} // namespace

CTHAudioAnalyzer::CTHAudioAnalyzer() { m_Format.SetFormat(16, 44100, 2, false, LY_GUID_NULL, true); }

bool CTHAudioAnalyzer::SetUp(const CAudioFormat& format)
{
    if (!CanAnalyze(format))
        return false;
    m_Format = GetAnalysisFormat(format);
    m_nFramesProcessed = 0;
    m_Convert.BindTo16Bit();
    // Each is called, so that none keeps what it measured before.
    const bool bR128 = m_R128.SetUp(m_Format);
    const bool bPeak = m_Peak.SetUp(m_Format);
    const bool bDR = m_DR.SetUp(m_Format);
    const bool bBPM = m_BPM.SetUp(m_Format);
    return bR128 && bPeak && bDR && bBPM;
}

int CTHAudioAnalyzer::ProcessBlocks16Bit(const short* pSamples, int nFrames)
{
    if (pSamples == nullptr || nFrames < 1)
        return 0;
    const long long nBytes = static_cast<long long>(BytesPerFrame(m_Format)) * nFrames;
    const long long nDoubleBytes = static_cast<long long>(m_Format.nChannels) * SAMPLE_BYTES * nFrames;
    if (std::max(nBytes, nDoubleBytes) > INT_MAX)
        return 0;
    m_Buffer.Empty(false);
    // As long as no set-up has given the format, its frames are shorter than the doubles that come to lie there.
    if (nDoubleBytes > nBytes &&
        m_Buffer.GetAppendBlock(static_cast<int>(nDoubleBytes), false, BUFFER_GROW_BYTES, false) == nullptr)
        return 0;
    unsigned char* pBlock = m_Buffer.GetAppendBlock(static_cast<int>(nBytes), false, BUFFER_GROW_BYTES, true);
    if (pBlock == nullptr)
        return 0;
    double* pDoubles = reinterpret_cast<double*>(pBlock);
    (void)m_Convert(pSamples, pDoubles, m_Format.nChannels * nFrames); // unbound, it gives silence
    return ProcessBlocks(pDoubles, nFrames);
}

int CTHAudioAnalyzer::ProcessBlocks(const double* pSamples, int nFrames)
{
    if (pSamples == nullptr || nFrames < 1)
        return 0;
    // The usual stereo takes the short way; no analyser can tell it from one behind the other.
    const bool bSameChannels = IsDoublesOnly() && m_Format.nChannels == m_R128.m_Format.nChannels;
    if (bSameChannels && CStereoPass::Fits(m_BPM, m_R128, m_DR))
    {
        CStereoPass::Process(m_BPM, m_R128, m_DR, pSamples, nFrames);
        m_Peak.Process(pSamples, nFrames);
    }
    else
    {
        ProcessBeats(pSamples, nFrames);
        (void)m_R128.Process(pSamples, nFrames); // no channels is no fault
        m_Peak.Process(pSamples, nFrames);
        m_DR.Process(pSamples, nFrames);
    }
    m_nFramesProcessed += nFrames;
    return nFrames;
}

bool CTHAudioAnalyzer::IsDoublesOnly() const
{
    return m_Format.nChannels > 0 && m_Format.nBlockAlign == m_Format.nChannels * SAMPLE_BYTES;
}

// ProcessBlockInternal for each frame; where the frames are doubles and nothing else, all at once.
void CTHAudioAnalyzer::ProcessBeats(const double* pSamples, int nFrames)
{
    if (IsDoublesOnly())
    {
        m_BPM.ProcessFrames(pSamples, nFrames, m_Format.nChannels);
        return;
    }
    const unsigned char* pFrame = reinterpret_cast<const unsigned char*>(pSamples);
    for (int i = 0; i < nFrames; ++i, pFrame += m_Format.nBlockAlign)
        ProcessBlockInternal(pFrame);
}

void CTHAudioAnalyzer::ProcessBlockInternal(const void* pFrame)
{
    // Copied, since without a set-up the step from frame to frame may be shorter than a double.
    double fLeft = 0;
    std::memcpy(&fLeft, pFrame, sizeof fLeft);
    double fRight = fLeft;
    if (m_Format.nChannels >= 2)
        std::memcpy(&fRight, static_cast<const unsigned char*>(pFrame) + sizeof fLeft, sizeof fRight);
    m_BPM.ProcessBlock(CBeatsPerMinuteAnalyzerV1::RoundSample(fLeft), CBeatsPerMinuteAnalyzerV1::RoundSample(fRight));
}

int CTHAudioAnalyzer::Finish()
{
    (void)m_BPM.Finish(); // always true
    m_DR.Finish();
    return m_nFramesProcessed > 0 ? 0 : -1;
}
