// R128LanePair: two K-weighted channels of CR128Analyzer, each a lane of a vector, with their state in registers; for
// the sources that are in a hurry. The arithmetic and its order are those of CIIRFilter::Filter.

#pragma once

#include "R128Analyzer.h"
#include <bit>

class R128LanePair
{
public:
    // The compiler's vectors: two doubles, and the bits of two doubles.
    typedef double LANES __attribute__((vector_size(16)));
    typedef unsigned long long BITS __attribute__((vector_size(16)));

    R128LanePair(const CR128Analyzer::CChannel& first, const CR128Analyzer::CChannel& second)
        : m_Gain{first.m_Coef[0], second.m_Coef[0]}, m_Sum{first.m_fSum, second.m_fSum}
    {
        for (int i = 0; i < COEFFICIENTS; ++i)
            m_aryC[i] = LANES{first.m_Coef[i + 1], second.m_Coef[i + 1]};
        for (int i = 0; i < STATES; ++i)
            m_aryS[i] = LANES{first.m_State[i], second.m_State[i]};
    }

    // A sample of each channel: adds the squares of the filters' outputs to the sums.
    [[gnu::always_inline]] void Add(LANES samples)
    {
        const LANES* c = m_aryC;
        LANES* s = m_aryS;
        const LANES input = m_Gain * samples;
        LANES w = input - c[0] * s[0] - c[1] * s[1];
        LANES between = w + c[2] * s[0] + c[3] * s[1];
        LANES v = between - c[4] * s[2] - c[5] * s[3];
        // Music hardly ever has values to flush. A branch that is foreseen keeps the test out of the recursion, whose
        // length in time is what a sample costs.
        if (__builtin_expect(IsAnyMarked(MarkTiny(w) | MarkTiny(v)), 0))
        {
            w = Flush(w);
            between = w + c[2] * s[0] + c[3] * s[1];
            v = Flush(between - c[4] * s[2] - c[5] * s[3]);
        }
        const LANES output = v + c[6] * s[2] + c[7] * s[3];
        s[1] = s[0];
        s[0] = w;
        s[3] = s[2];
        s[2] = v;
        m_Sum += output * output;
    }

    void Store(CR128Analyzer::CChannel& first, CR128Analyzer::CChannel& second) const
    {
        for (int i = 0; i < STATES; ++i)
        {
            first.m_State[i] = m_aryS[i][0];
            second.m_State[i] = m_aryS[i][1];
        }
        first.m_fSum = m_Sum[0];
        second.m_fSum = m_Sum[1];
    }

private:
    static constexpr unsigned long long SIGN = 1ULL << 63;

    // Sets the sign bit of each lane whose value has to be flushed. Magnitudes are in the order of their bits, and not
    // a number lies above them all.
    static BITS MarkTiny(LANES values)
    {
        constexpr BITS WITHOUT_SIGN = {~SIGN, ~SIGN};
        constexpr LANES FLUSH_BELOW = {CIIRFilter::FLUSH_BELOW, CIIRFilter::FLUSH_BELOW};
        return (std::bit_cast<BITS>(values) & WITHOUT_SIGN) - std::bit_cast<BITS>(FLUSH_BELOW);
    }

    static bool IsAnyMarked(BITS marks) { return ((marks[0] | marks[1]) & SIGN) != 0; }

    // All bits of the marked lanes become 0.
    static LANES Flush(LANES values)
    {
        const BITS keep = (MarkTiny(values) >> 63) - 1;
        return std::bit_cast<LANES>(std::bit_cast<BITS>(values) & keep);
    }

    static constexpr int COEFFICIENTS = 8; // of the first section, then of the second: a1, a2, b1, b2
    static constexpr int STATES = 4;       // inner values: newest and older of the first section, then of the second

    LANES m_Gain;
    LANES m_aryC[COEFFICIENTS];
    LANES m_aryS[STATES];
    LANES m_Sum;
};
