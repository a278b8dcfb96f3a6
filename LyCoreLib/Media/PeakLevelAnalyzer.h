// CPeakLevelAnalyzer: the largest sample of each channel, and the largest value between the samples.
//
// The latter comes from a polyphase filter: for each sample, one output for each of 2 or 4 phases, 12 taps a phase.
// Shape:   interleaved doubles; full scale is 1.0. All arithmetic is in 32-bit floats.
// Start:   no channels, and nothing is done. SetUp makes them.
// Errors:  false, and nothing changed, for a format that cannot be measured; levels of silence are minus infinity.
// Source:  ITU-R BS.1770-4, annex 2 (true peak). Its filter is flat within 0.3 dB up to two fifths of the rate: a sine
//          near a twelfth or two fifths of the rate may read 0.24 dB too much.
// Threads: one at a time.

#pragma once

#include "AudioFormat.h"
#include "LyArray.h"
#include <memory>

class CPeakLevelAnalyzer
{
public:
    static constexpr int HISTORY_BYTES = 65536; // how far the window slides before it starts over
    static constexpr int HISTORY_FLOATS = HISTORY_BYTES / static_cast<int>(sizeof(float));
    static constexpr int TAPS_PER_PHASE = 12;
    static constexpr int KEPT_BYTES = 44; // what moves to the start: the window without its newest sample
    static constexpr int KEPT_FLOATS = KEPT_BYTES / static_cast<int>(sizeof(float));
    static constexpr int ALL_CHANNELS = -1; // for the readers: the loudest channel
    static_assert(KEPT_FLOATS == TAPS_PER_PHASE - 1);

    class CChannel
    {
    public:
        // Gives the channel its filter and its history: nOversampling 0, 2 or 4. What was measured is forgotten.
        bool SetUp(int nOversampling);

        // nFrames samples of this channel, nStride doubles apart.
        void Process(const double* pSamples, int nFrames, int nStride);

        float m_fPeak = 0;
        float m_fTruePeak = 0; // of the filter's outputs alone; equal to m_fPeak without oversampling
        int m_nOversampling = 0;
        int m_nFilterTaps = 0;            // of all phases together
        float* m_pCoefficients = nullptr; // tap 0 of every phase, oldest sample first, then tap 1, and so on
        float* m_pHistory = nullptr;      // HISTORY_FLOATS and a tail of KEPT_FLOATS
        float* m_pWindow = nullptr;       // where the window of the last sample starts

    private:
        void ProcessPlain(const double* pSamples, int nFrames, int nStride);
        void ProcessRun(const double* pSamples, int nFrames, int nStride, int nTaps);
        int StartRun(int nFrames);

        std::unique_ptr<float[]> m_pOwned; // history, tail and coefficients, if SetUp made them
    };

    CPeakLevelAnalyzer();

    // Makes the analyser ready for interleaved doubles of this format, 8 to 192 kHz and 1 to 32 channels, and forgets
    // what it measured.
    bool SetUp(const CAudioFormat& format);

    // The phases that SetUp chooses: 4 up to 96 kHz, 2 above, none (0) from 192 kHz on, where the samples lie dense
    // enough by themselves.
    static int GetOversamplingForRate(unsigned int nSampleRate);

    void Process(const double* pSamples, int nFrames);

    // The largest sample, 1.0 being full scale, of one channel or of all. 0 for a channel that is not there.
    double GetSamplePeak(int nChannel = ALL_CHANNELS) const;
    // The same between the samples. Deliberate: never below the sample peak, since the filter has no phase that gives
    // the samples themselves back, and the wave passes through them.
    double GetTruePeak(int nChannel = ALL_CHANNELS) const;
    double GetSamplePeakDBFS(int nChannel = ALL_CHANNELS) const; // 20 log10 of it; minus infinity for silence
    double GetTruePeakDBTP(int nChannel = ALL_CHANNELS) const;

    CAudioFormat m_Format;
    LyOwnedPtrArray<CChannel> m_Channels;
};
