// Any samples, as doubles and as 16-bit integers, in any stream: measured at once and in pieces, with equal results.

#include "FuzzCheck.h"
#include "TempoResults.h"
#include "THAudioAnalyzer.h"
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

static void CheckTempo(const CBeatsPerMinuteAnalyzerV1& whole, const CBeatsPerMinuteAnalyzerV1& pieces)
{
    Check(whole.m_nTotal == pieces.m_nTotal && whole.GetOnsets().GetFrames() == pieces.GetOnsets().GetFrames());
    for (int i = 0; i <= COnsetCorrelation::MAX_LAG; ++i)
    {
        const double fCovariance = whole.GetOnsets().GetCovariance(i);
        Check(std::isfinite(fCovariance) && fCovariance == pieces.GetOnsets().GetCovariance(i));
    }
    const CTempoResults tempo(whole);
    Check(tempo.m_fConfidence >= 0 && tempo.m_fConfidence <= 1 && (tempo.m_fBPM == 0) == (tempo.m_fOctaveBPM == 0));
    Check(tempo.m_fBPM == 0 || (tempo.m_fBPM > 30 && tempo.m_fBPM < 200));
}

static void CheckResults(CTHAudioAnalyzer& whole, CTHAudioAnalyzer& pieces, int nFrames)
{
    Check(whole.Finish() == (nFrames > 0 ? 0 : -1) && pieces.Finish() == whole.Finish());
    Check(whole.m_nFramesProcessed == nFrames && pieces.m_nFramesProcessed == nFrames);
    for (int i = 0; i < whole.m_Peak.m_Channels.GetSize(); ++i)
    {
        const double fPeak = whole.m_Peak.GetSamplePeak(i);
        Check(fPeak >= 0 && fPeak == pieces.m_Peak.GetSamplePeak(i));
        Check(whole.m_Peak.GetTruePeak(i) >= fPeak);
        Check(whole.m_Peak.m_Channels[i]->m_fTruePeak == pieces.m_Peak.m_Channels[i]->m_fTruePeak);
        double fDB = 0;
        if (whole.m_DR.GetDynamicRange(i, fDB))
            Check(std::isfinite(fDB));
    }
    CheckTempo(whole.m_BPM, pieces.m_BPM);
    Check(whole.m_R128.m_Blocks.GetSize() == pieces.m_R128.m_Blocks.GetSize());
    Check(whole.m_DR.GetDRValue() >= -1);
}

// Bytes 0 and 1 the rate, 2 the channels, 3 the size of a piece, 4 whether the rest is doubles; then the samples.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    constexpr size_t HEAD_BYTES = 5;
    if (nBytes < HEAD_BYTES)
        return 0;
    CAudioFormat format;
    format.SetFormat(16, 3 * (pData[0] + 256 * pData[1]), pData[2]);
    CTHAudioAnalyzer whole;
    CTHAudioAnalyzer pieces;
    const bool bMeasured = whole.SetUp(format);
    Check(pieces.SetUp(format) == bMeasured);
    const size_t nChannels = bMeasured ? pData[2] : 2; // what a new analyser expects
    const int nPiece = 1 + pData[3];
    const bool bDoubles = (pData[4] & 1) != 0;
    const size_t nFrameBytes = nChannels * (bDoubles ? sizeof(double) : sizeof(short));
    const size_t nFrames = (nBytes - HEAD_BYTES) / nFrameBytes;
    // Copies of the exact size, so that a step too far is seen.
    std::vector<double> aryDoubles(bDoubles ? nFrames * nChannels : 0);
    std::vector<short> aryShorts(bDoubles ? 0 : nFrames * nChannels);
    void* pSamples = bDoubles ? static_cast<void*>(aryDoubles.data()) : static_cast<void*>(aryShorts.data());
    if (nFrames > 0)
        std::memcpy(pSamples, pData + HEAD_BYTES, nFrames * nFrameBytes);
    const auto process = [&](CTHAudioAnalyzer& analyzer, size_t nFirst, int nCount)
    {
        const int nDone = bDoubles ? analyzer.ProcessBlocks(aryDoubles.data() + nFirst * nChannels, nCount)
                                   : analyzer.ProcessBlocks16Bit(aryShorts.data() + nFirst * nChannels, nCount);
        Check(nDone == nCount);
    };
    process(whole, 0, static_cast<int>(nFrames));
    for (size_t i = 0; i < nFrames; i += static_cast<size_t>(nPiece))
        process(pieces, i, static_cast<int>(std::min<size_t>(static_cast<size_t>(nPiece), nFrames - i)));
    CheckResults(whole, pieces, static_cast<int>(nFrames));
    return 0;
}
