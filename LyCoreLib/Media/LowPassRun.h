// LowPassRun: many samples through a CLowPassFilter, with its ring in registers; for the sources that are in a hurry.
// The arithmetic and its order are those of FilterCapAs16BitInteger, and so is the filter's state afterwards. The
// filter's index must lie in its ring, as it does after IsSilentWith.

#pragma once

#include "LowPassFilter.h"

class LowPassRun
{
public:
    explicit LowPassRun(const CLowPassFilter& filter)
        : m_fB0(filter.b0), m_fB1(filter.b1), m_fB2(filter.b2), m_fA1(filter.a1), m_fA2(filter.a2),
          m_fX1(filter.m_X[Before(filter.m_nIndex, 1)]), m_fX2(filter.m_X[Before(filter.m_nIndex, 2)]),
          m_fX3(filter.m_X[filter.m_nIndex]), m_fY1(filter.m_Y[Before(filter.m_nIndex, 1)]),
          m_fY2(filter.m_Y[Before(filter.m_nIndex, 2)]), m_fY3(filter.m_Y[filter.m_nIndex])
    {
    }

    // The next sample: what a call of the filter returns, the output of two calls before.
    [[gnu::always_inline]] float Add(float fSample)
    {
        const float fDelayed = m_fY2;
        const float fOutput = Limit(m_fB0 * fSample + m_fB1 * m_fX1 + m_fB2 * m_fX2 - m_fA1 * m_fY1 - m_fA2 * m_fY2);
        m_fX3 = m_fX2;
        m_fX2 = m_fX1;
        m_fX1 = fSample;
        m_fY3 = m_fY2;
        m_fY2 = m_fY1;
        m_fY1 = fOutput;
        return fDelayed;
    }

    // Back into the filter that it came from, after so many samples, at least one.
    void Store(CLowPassFilter& filter, int nSamples) const
    {
        filter.m_nIndex = (filter.m_nIndex + nSamples % CLowPassFilter::RING) % CLowPassFilter::RING;
        filter.m_nIndexBefore = Before(filter.m_nIndex, 2);
        filter.m_nIndexBefore2 = Before(filter.m_nIndex, 3);
        filter.m_X[Before(filter.m_nIndex, 1)] = m_fX1;
        filter.m_X[Before(filter.m_nIndex, 2)] = m_fX2;
        filter.m_X[filter.m_nIndex] = m_fX3;
        filter.m_Y[Before(filter.m_nIndex, 1)] = m_fY1;
        filter.m_Y[Before(filter.m_nIndex, 2)] = m_fY2;
        filter.m_Y[filter.m_nIndex] = m_fY3;
    }

    // So many places before an index of the ring, around it.
    static constexpr int Before(int nIndex, int nPlaces)
    {
        return (nIndex + CLowPassFilter::RING - nPlaces) % CLowPassFilter::RING;
    }

    [[gnu::always_inline]] static float Limit(float fSample)
    {
        // A branch that is foreseen, not a minimum and a maximum, keeps the limits out of the recursion, whose length
        // in time is what a sample costs.
        if (__builtin_expect(fSample > CLowPassFilter::MAX_OUTPUT || fSample < CLowPassFilter::MIN_OUTPUT, 0))
            return fSample > CLowPassFilter::MAX_OUTPUT ? CLowPassFilter::MAX_OUTPUT : CLowPassFilter::MIN_OUTPUT;
        return fSample;
    }

private:
    float m_fB0, m_fB1, m_fB2, m_fA1, m_fA2;
    float m_fX1, m_fX2, m_fX3; // inputs, newest first
    float m_fY1, m_fY2, m_fY3; // outputs
};
