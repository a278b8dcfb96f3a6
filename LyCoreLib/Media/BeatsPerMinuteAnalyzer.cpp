#include "BeatsPerMinuteAnalyzer.h"
#include "AudioAnalysisSetUp.h"
#include "AudioFormat.h"
#include "BeatsMixDown.h"
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>

// What is published comes first.
static_assert(sizeof(CBeatsPerMinuteAnalyzerV1) ==
              16 + 256 * 4 + 2 * 4 + sizeof(CLowPassFilter) + 8 + 4 * 4 + 2 * 8 + sizeof(COnsetCorrelation));

namespace
{
constexpr double FULL_SCALE = 32768.0;
constexpr unsigned int MS_PER_MINUTE = 60000;

// Counters may run for ever: they wrap instead of overflowing.
void Count(int& nCount, unsigned int nAdded) { nCount = static_cast<int>(static_cast<unsigned int>(nCount) + nAdded); }
} // namespace

bool CBeatsPerMinuteAnalyzerV1::SetUp(const CAudioFormat& format)
{
    return format.nSamplesPerSec <= INT_MAX && SetUp(static_cast<int>(format.nSamplesPerSec));
}

bool CBeatsPerMinuteAnalyzerV1::SetUp(int nSampleRate)
{
    if (nSampleRate < static_cast<int>(ANALYSIS_MIN_SAMPLE_RATE) ||
        nSampleRate > static_cast<int>(ANALYSIS_MAX_SAMPLE_RATE))
        return false;
    *this = CBeatsPerMinuteAnalyzerV1();
    m_nSamplesPerStep = nSampleRate / STEPS_PER_SECOND;
    return m_Filter.SetUp(static_cast<float>(nSampleRate), CUT_OFF_HZ);
}

int CBeatsPerMinuteAnalyzerV1::RoundSample(double fSample)
{
    const double fScaled = fSample * FULL_SCALE;
    const double fRounded = fScaled > 0 ? fScaled + 0.5 : fScaled - 0.5;
    if (fRounded != fRounded)
        return 0;
    return static_cast<int>(std::clamp<double>(fRounded, INT_MIN, INT_MAX));
}

void CBeatsPerMinuteAnalyzerV1::ProcessBlock(int nLeft, int nRight)
{
    const float fMix = BeatsMixDown::Mix(nLeft, nRight);
    m_fEdges += BeatsMixDown::GetEdges(&fMix, 1, m_fLastMix);
    m_fLastMix = fMix;
    const float fOutput = m_Filter.FilterCapAs16BitInteger(fMix);
    m_fEnergy += static_cast<double>(fOutput * fOutput);
    Count(m_nStepSamples, 1);
    if (m_nStepSamples == m_nSamplesPerStep)
        FinishStep();
}

void CBeatsPerMinuteAnalyzerV1::ProcessFrames(const double* pSamples, int nFrames, int nChannels)
{
    if (pSamples == nullptr || nChannels < 1)
        return;
    float aryMixed[CHUNK_FRAMES];
    while (nFrames > 0)
    {
        const int nChunk = GetChunk(nFrames);
        MixChunk(pSamples, nChunk, nChannels, aryMixed);
        FilterChunk(aryMixed, nChunk);
        EndChunk(nChunk);
        pSamples += static_cast<ptrdiff_t>(nChunk) * nChannels;
        nFrames -= nChunk;
    }
}

// How many of nFrames are taken at once. A chunk ends with its step at the latest; the count runs around the 32 bits if
// the step's end lies behind it.
int CBeatsPerMinuteAnalyzerV1::GetChunk(int nFrames) const
{
    const uint64_t nLeft =
        static_cast<unsigned int>(m_nSamplesPerStep) - static_cast<unsigned int>(m_nStepSamples) - 1U;
    return static_cast<int>(std::min<uint64_t>(nLeft + 1, static_cast<uint64_t>(std::min(nFrames, CHUNK_FRAMES))));
}

void CBeatsPerMinuteAnalyzerV1::MixChunk(const double* pSamples, int nFrames, int nChannels, float* pMixed)
{
    BeatsMixDown::Mix(pSamples, nFrames, nChannels, pMixed);
    m_fEdges += BeatsMixDown::GetEdges(pMixed, nFrames, m_fLastMix);
    m_fLastMix = pMixed[nFrames - 1];
}

void CBeatsPerMinuteAnalyzerV1::FilterChunk(const float* pMixed, int nFrames)
{
    float aryOutput[CHUNK_FRAMES];
    if (m_Filter.FilterBlock(pMixed, aryOutput, nFrames))
        return;
    for (int i = 0; i < nFrames; ++i)
        m_fEnergy += static_cast<double>(aryOutput[i] * aryOutput[i]);
}

void CBeatsPerMinuteAnalyzerV1::EndChunk(int nFrames)
{
    Count(m_nStepSamples, static_cast<unsigned int>(nFrames));
    if (m_nStepSamples == m_nSamplesPerStep)
        FinishStep();
}

// A step of 5 ms is over: its energy moves both averages, and may start a beat.
void CBeatsPerMinuteAnalyzerV1::FinishStep()
{
    const double fMean = m_fEnergy * 0.5 / m_nStepSamples;
    m_fFastAverage += (fMean - m_fFastAverage) * FAST_WEIGHT;
    m_fSlowAverage += (fMean - m_fSlowAverage) * SLOW_WEIGHT;
    if (!(m_fFastAverage > m_fSlowAverage) || !TakeOnset())
        Count(m_nSinceBeat, 1);
    m_Onsets.Add(fMean, m_fEdges * 0.5 / m_nStepSamples);
    m_fEnergy = 0;
    m_fEdges = 0;
    Count(m_nStep, 1);
    m_nStepSamples = 0;
}

// The energy is above its long average. False if this is no onset: no time has passed since the last counted beat.
bool CBeatsPerMinuteAnalyzerV1::TakeOnset()
{
    const unsigned int nNowMS = static_cast<unsigned int>(m_nStep) * static_cast<unsigned int>(STEP_MS);
    const unsigned int nSinceMS = nNowMS - static_cast<unsigned int>(m_nLastBeatMS);
    if (nSinceMS == 0)
        return false;
    if (m_nSinceBeat >= MIN_QUIET_STEPS)
        CountTempo(MS_PER_MINUTE / nSinceMS, static_cast<int>(nNowMS));
    m_nSinceBeat = 0;
    return true;
}

// Deliberate: the tempo is folded once, not until it fits. What is beyond 180 even when halved counts nothing and
// does not become the time from which the next interval is taken; what is under 35 even when doubled does.
void CBeatsPerMinuteAnalyzerV1::CountTempo(unsigned int nTempo, int nNowMS)
{
    if (nTempo > MAX_TEMPO)
        nTempo >>= 1;
    else if (nTempo < MIN_TEMPO)
        nTempo *= 2;
    if (nTempo > MAX_TEMPO)
        return;
    if (nTempo >= MIN_TEMPO)
    {
        Count(m_Histogram[nTempo], 1);
        Count(m_nTotal, 1);
    }
    m_nLastBeatMS = nNowMS;
}
