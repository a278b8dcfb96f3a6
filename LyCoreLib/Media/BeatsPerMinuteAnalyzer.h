// CBeatsPerMinuteAnalyzerV1: finds beats in the low-frequency energy of a stereo signal and counts the tempo of the
// intervals between them. TempoResults.h reads the tempo.
//
// Intervals between loud low notes are a bar of a waltz as well as a beat, or one and a half beats of a bass: so,
// beside the histogram, the analyser keeps how much the onsets are like those before (OnsetCorrelation.h).
//
// Shape:   one stereo frame at a time; steps of 5 ms, each with one energy; a histogram of whole beats per minute.
// Units:   samples on the scale of 16-bit integers; times in milliseconds of audio.
// Errors:  an analyser that was not set up counts nothing.
// Threads: one at a time. Nothing is allocated.

#pragma once

#include "LowPassFilter.h"
#include "OnsetCorrelation.h"

class CAudioFormat;

class CBeatsPerMinuteAnalyzerV1
{
public:
    static constexpr int STEP_MS = 5;
    static constexpr int STEPS_PER_SECOND = 1000 / STEP_MS;
    static constexpr int MIN_TEMPO = 35;       // beats per minute that are counted ...
    static constexpr int MAX_TEMPO = 180;      // ... both included
    static constexpr int MIN_QUIET_STEPS = 16; // 80 ms below the average make the next onset count
    static constexpr int HISTOGRAM_ENTRIES = 256;
    static constexpr double FAST_WEIGHT = 0.25;         // of a step in the fast average
    static constexpr double SLOW_WEIGHT = 0.0009765625; // of a step in the slow average, 1/1024: some 5 s
    // Kick drums and basses have their energy below this, voices and most other instruments above it.
    static constexpr float CUT_OFF_HZ = 150.0F;

    // Starts anew for audio of this rate: steps of 5 ms, and the low pass at CUT_OFF_HZ with the filter's own Q of 1.4.
    // False, and nothing changed, for a rate outside 8 to 192 kHz.
    bool SetUp(int nSampleRate);
    bool SetUp(const CAudioFormat& format); // by its nSamplesPerSec

    // One frame.
    void ProcessBlock(int nLeft, int nRight);

    // What ProcessBlock would do with each of the interleaved frames of nChannels samples (full scale 1.0) in turn, the
    // first two samples of a frame rounded as RoundSample does, or the first one twice if there is no second.
    void ProcessFrames(const double* pSamples, int nFrames, int nChannels);

    // A sample of full scale 1.0 on the scale of 16-bit integers: half away from zero, cut to 32 bits, not a number is
    // 0.
    static int RoundSample(double fSample);

    bool Finish() { return true; } // nothing is left to do at the end

    const COnsetCorrelation& GetOnsets() const { return m_Onsets; }

    double m_fFastAverage = 0;               // of the energy, weight 0.25
    double m_fSlowAverage = 0;               // of the energy, weight 1/1024
    int m_Histogram[HISTOGRAM_ENTRIES] = {}; // how often a tempo was counted; only 35 to 180 are used
    int m_nTotal = 0;                        // sum of the histogram
    int m_nSinceBeat = 0;                    // steps since the last onset was accepted or refused
    CLowPassFilter m_Filter;
    double m_fEnergy = 0;      // sum of squares in the current step
    int m_nLastBeatMS = 0;     // time of the last counted beat
    int m_nStepSamples = 0;    // frames in the current step so far
    int m_nSamplesPerStep = 0; // frames in a step; 0 before the set-up, so that no step ever ends
    int m_nStep = 0;           // finished steps

private:
    friend class CStereoPass;
    // What is taken at a time: two buffers of floats that stay in the cache.
    static constexpr int CHUNK_FRAMES = 512;

    int GetChunk(int nFrames) const;
    void MixChunk(const double* pSamples, int nFrames, int nChannels, float* pMixed);
    void FilterChunk(const float* pMixed, int nFrames);
    void EndChunk(int nFrames);
    void FinishStep();
    bool TakeOnset();
    void CountTempo(unsigned int nTempo, int nNowMS);

    double m_fEdges = 0; // sum of the squared differences of neighbouring frames in the current step
    float m_fLastMix = 0;
    COnsetCorrelation m_Onsets;
};
