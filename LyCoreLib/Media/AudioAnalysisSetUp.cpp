#include "AudioAnalysisSetUp.h"

#include <algorithm>
#include <iterator>

bool CanAnalyze(const CAudioFormat& format)
{
    return format.nSamplesPerSec >= ANALYSIS_MIN_SAMPLE_RATE && format.nSamplesPerSec <= ANALYSIS_MAX_SAMPLE_RATE &&
           format.nChannels >= 1 && format.nChannels <= CAudioFormat::MAX_CHANNELS;
}

CAudioFormat GetAnalysisFormat(const CAudioFormat& format)
{
    constexpr int BITS = 8 * static_cast<int>(sizeof(double));
    CAudioFormat doubles;
    doubles.SetFormat(BITS, static_cast<int>(format.nSamplesPerSec), format.nChannels, false, LY_GUID_IEEE_FLOAT, true);
    // A stream that says what its channels are is believed; the weights of loudness hang on it.
    if (format.m_Channels[0].bUsed)
        std::copy(std::begin(format.m_Channels), std::end(format.m_Channels), doubles.m_Channels);
    doubles.dwChannelMask = format.dwChannelMask;
    return doubles;
}
