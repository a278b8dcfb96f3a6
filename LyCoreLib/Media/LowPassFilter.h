// CLowPassFilter: a second-order section in 32-bit floats whose output is kept in the range of 16-bit integers.
//
// Units:   samples on the scale of 16-bit integers (full scale 32768).
// Errors:  a new filter has no coefficients and passes nothing. SetUp refuses what is no low pass (false).
// Threads: one at a time.

#pragma once

class CLowPassFilter
{
public:
    static constexpr int RING = 3; // the newest sample and the two before it
    static constexpr float MAX_OUTPUT = 32767.0F;
    static constexpr float MIN_OUTPUT = -32768.0F;

    virtual ~CLowPassFilter() = default;

    // Makes the section a low pass with the present m_fQ and clears what it remembers. False, and nothing changed,
    // unless 0 < cut-off < half the rate. Audio EQ Cookbook (R. Bristow-Johnson): the low pass of the bilinear
    // transform.
    bool SetUp(float fSampleRate, float fCutOff);

    // Takes in a sample and returns the output of two calls before.
    // Deliberate: the ring is read at the place that the next call will overwrite, so that the result comes two samples
    // late. The times of beats are counted from this delay, and a new filter answers 0 twice.
    float FilterCapAs16BitInteger(float fSample);

    // What nSamples calls would return, and the same state after them, bit for bit. True if the filter is silent: then
    // the outputs are so close to zero that their squares are zero.
    bool FilterBlock(const float* pSamples, float* pOutput, int nSamples);
    // Whether that would be true, unless the outputs grow; for those who run the filter themselves (LowPassRun.h).
    bool IsSilentWith(const float* pSamples, int nSamples);

    float b0 = 0;
    float b1 = 0;
    float b2 = 0;
    float a1 = 0;
    float a2 = 0;
    float m_X[RING] = {};    // input ring
    float m_Y[RING] = {};    // output ring
    float m_fSampleRate = 0; // Hz, as SetUp was told
    float m_fCutOff = 0;     // Hz, as SetUp was told
    float m_fQ = 1.4F;       // resonance at the cut-off
    int m_nIndex = 0;        // where the next sample goes in both rings
    int m_nIndexBefore = 0;  // where the last call found the sample before its own
    int m_nIndexBefore2 = 0; // and the one before that

private:
    bool IsSilent() const;
    int FilterSilence(float* pOutput, int nSamples);
};
