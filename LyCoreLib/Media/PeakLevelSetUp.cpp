// The oversampling filter of the true peak, the making of the channels, and the levels they show.

#include "PeakLevelAnalyzer.h"

#include "AudioAnalysisSetUp.h"
#include <cmath>
#include <memory>
#include <new>
#include <utility>

namespace
{
constexpr int TAPS = CPeakLevelAnalyzer::TAPS_PER_PHASE;
constexpr int FULL_PHASES = 4;
constexpr int HALF_PHASES = 2;
constexpr unsigned int FULL_PHASES_UP_TO = 96000; // samples per second
constexpr unsigned int NO_PHASES_FROM = 192000;

// ITU-R BS.1770-4, annex 2: the interpolation filter of 48 taps, a row for each tap of its four phases. Read with the
// oldest sample first, as here, the outputs are those of the newest first in the opposite order of phases, since phase
// 3 is phase 0 backwards and phase 2 is phase 1 backwards. Phase j lies (5.875 - j / 4) samples behind the newest when
// that comes first: the four stand a quarter of a sample apart.
constexpr float s_aryFilter[TAPS][FULL_PHASES] = {
    {0.0017089843750F, -0.0291748046875F, -0.0189208984375F, -0.0083007812500F},
    {0.0109863281250F, 0.0292968750000F, 0.0330810546875F, 0.0148925781250F},
    {-0.0196533203125F, -0.0517578125000F, -0.0582275390625F, -0.0266113281250F},
    {0.0332031250000F, 0.0891113281250F, 0.1076660156250F, 0.0476074218750F},
    {-0.0594482421875F, -0.1665039062500F, -0.2003173828125F, -0.1022949218750F},
    {0.1373291015625F, 0.4650878906250F, 0.7797851562500F, 0.9721679687500F},
    {0.9721679687500F, 0.7797851562500F, 0.4650878906250F, 0.1373291015625F},
    {-0.1022949218750F, -0.2003173828125F, -0.1665039062500F, -0.0594482421875F},
    {0.0476074218750F, 0.1076660156250F, 0.0891113281250F, 0.0332031250000F},
    {-0.0266113281250F, -0.0582275390625F, -0.0517578125000F, -0.0196533203125F},
    {0.0148925781250F, 0.0330810546875F, 0.0292968750000F, 0.0109863281250F},
    {-0.0083007812500F, -0.0189208984375F, -0.0291748046875F, 0.0017089843750F},
};

// Two phases are every second one of the four, 0 and 2: the published filter at twice the rate, half a sample from one
// output to the next. Above 96 kHz they show as much of the audible band as the four do below.
void CopyFilter(int nPhases, float* pCoefficients)
{
    const int nStep = FULL_PHASES / nPhases;
    for (int i = 0; i < TAPS; ++i)
    {
        for (int j = 0; j < nPhases; ++j)
            pCoefficients[i * nPhases + j] = s_aryFilter[i][j * nStep];
    }
}

double ToDecibels(double fLevel) { return fLevel > 0 ? 20 * std::log10(fLevel) : -HUGE_VAL; }
} // namespace

bool CPeakLevelAnalyzer::CChannel::SetUp(int nOversampling)
{
    if (nOversampling != 0 && nOversampling != HALF_PHASES && nOversampling != FULL_PHASES)
        return false;
    // The window reaches past the end of the history by all samples but its newest.
    constexpr int ROOM_FLOATS = HISTORY_FLOATS + KEPT_FLOATS;
    std::unique_ptr<float[]> pOwned;
    if (nOversampling != 0)
    {
        pOwned.reset(new (std::nothrow) float[ROOM_FLOATS + TAPS * FULL_PHASES]());
        if (pOwned == nullptr)
            return false;
        CopyFilter(nOversampling, pOwned.get() + ROOM_FLOATS);
    }
    m_pOwned = std::move(pOwned);
    m_fPeak = 0;
    m_fTruePeak = 0;
    m_nOversampling = nOversampling;
    m_nFilterTaps = TAPS * nOversampling;
    m_pCoefficients = m_pOwned != nullptr ? m_pOwned.get() + ROOM_FLOATS : nullptr;
    m_pHistory = m_pOwned.get();
    m_pWindow = m_pHistory;
    return true;
}

int CPeakLevelAnalyzer::GetOversamplingForRate(unsigned int nSampleRate)
{
    if (nSampleRate >= NO_PHASES_FROM)
        return 0;
    return nSampleRate > FULL_PHASES_UP_TO ? HALF_PHASES : FULL_PHASES;
}

bool CPeakLevelAnalyzer::SetUp(const CAudioFormat& format)
{
    if (!CanAnalyze(format))
        return false;
    m_Format = format;
    m_Channels.RemoveAll();
    for (int i = 0; i < format.nChannels; ++i)
    {
        std::unique_ptr<CChannel> pChannel(new (std::nothrow) CChannel);
        if (pChannel == nullptr || !pChannel->SetUp(GetOversamplingForRate(format.nSamplesPerSec)) ||
            m_Channels.Add(pChannel.get()) < 0)
        {
            m_Channels.RemoveAll();
            return false;
        }
        (void)pChannel.release(); // the array's from now on
    }
    return true;
}

double CPeakLevelAnalyzer::GetSamplePeak(int nChannel) const
{
    double fPeak = 0;
    for (int i = 0; i < m_Channels.GetSize(); ++i)
    {
        if (nChannel == ALL_CHANNELS || nChannel == i)
            fPeak = std::fmax(fPeak, m_Channels[i]->m_fPeak);
    }
    return fPeak;
}

double CPeakLevelAnalyzer::GetTruePeak(int nChannel) const
{
    double fPeak = GetSamplePeak(nChannel);
    for (int i = 0; i < m_Channels.GetSize(); ++i)
    {
        if (nChannel == ALL_CHANNELS || nChannel == i)
            fPeak = std::fmax(fPeak, m_Channels[i]->m_fTruePeak);
    }
    return fPeak;
}

double CPeakLevelAnalyzer::GetSamplePeakDBFS(int nChannel) const { return ToDecibels(GetSamplePeak(nChannel)); }

double CPeakLevelAnalyzer::GetTruePeakDBTP(int nChannel) const { return ToDecibels(GetTruePeak(nChannel)); }
