#include "R128Lanes.h"
#include <bit>
#include <cstddef>

namespace
{
// The compiler's vectors: two doubles, and the bits of two doubles.
typedef double LANES __attribute__((vector_size(16)));
typedef unsigned long long BITS __attribute__((vector_size(16)));

constexpr unsigned long long SIGN = 1ULL << 63;
constexpr BITS WITHOUT_SIGN = {~SIGN, ~SIGN};
constexpr LANES FLUSH_BELOW = {CIIRFilter::FLUSH_BELOW, CIIRFilter::FLUSH_BELOW};

LANES Pair(double fFirst, double fSecond) { return LANES{fFirst, fSecond}; }

// Sets the sign bit of each lane whose value has to be flushed. Magnitudes are in the order of their bits, and not a
// number lies above them all.
BITS MarkTiny(LANES values) { return (std::bit_cast<BITS>(values) & WITHOUT_SIGN) - std::bit_cast<BITS>(FLUSH_BELOW); }

bool IsAnyMarked(BITS marks) { return ((marks[0] | marks[1]) & SIGN) != 0; }

// All bits of the marked lanes become 0.
LANES Flush(LANES values)
{
    const BITS keep = (MarkTiny(values) >> 63) - 1;
    return std::bit_cast<LANES>(std::bit_cast<BITS>(values) & keep);
}

// Two filters of the same shape, a lane each.
struct FILTER_PAIR
{
    LANES gain;
    LANES c[8]; // of the first section, then of the second: a1, a2, b1, b2
    LANES s[4]; // inner values: newest and older of the first section, then of the second
    LANES sum;
};

FILTER_PAIR Load(const CR128Analyzer::CChannel& first, const CR128Analyzer::CChannel& second)
{
    FILTER_PAIR pair;
    pair.gain = Pair(first.m_Coef[0], second.m_Coef[0]);
    for (int i = 0; i < 8; ++i)
        pair.c[i] = Pair(first.m_Coef[i + 1], second.m_Coef[i + 1]);
    for (int i = 0; i < 4; ++i)
        pair.s[i] = Pair(first.m_State[i], second.m_State[i]);
    pair.sum = Pair(first.m_fSum, second.m_fSum);
    return pair;
}

void Store(const FILTER_PAIR& pair, int nLane, CR128Analyzer::CChannel& channel)
{
    for (int i = 0; i < 4; ++i)
        channel.m_State[i] = pair.s[i][nLane];
    channel.m_fSum = pair.sum[nLane];
}
} // namespace

void R128Lanes::Process(CR128Analyzer::CChannel& first, CR128Analyzer::CChannel& second, const double* pFirst,
                        const double* pSecond, int nFrames, int nStride)
{
    FILTER_PAIR pair = Load(first, second);
    const LANES* c = pair.c;
    LANES s0 = pair.s[0], s1 = pair.s[1], t0 = pair.s[2], t1 = pair.s[3];
    LANES sum = pair.sum;
    const ptrdiff_t nStep = nStride;
    for (int i = 0; i < nFrames; ++i, pFirst += nStep, pSecond += nStep)
    {
        const LANES input = pair.gain * Pair(*pFirst, *pSecond);
        LANES w = input - c[0] * s0 - c[1] * s1;
        LANES between = w + c[2] * s0 + c[3] * s1;
        LANES v = between - c[4] * t0 - c[5] * t1;
        // Music hardly ever has values to flush. A branch that is foreseen keeps the test out of the recursion, whose
        // length in time is what a sample costs.
        if (__builtin_expect(IsAnyMarked(MarkTiny(w) | MarkTiny(v)), 0))
        {
            w = Flush(w);
            between = w + c[2] * s0 + c[3] * s1;
            v = Flush(between - c[4] * t0 - c[5] * t1);
        }
        const LANES output = v + c[6] * t0 + c[7] * t1;
        s1 = s0;
        s0 = w;
        t1 = t0;
        t0 = v;
        sum += output * output;
    }
    pair.s[0] = s0;
    pair.s[1] = s1;
    pair.s[2] = t0;
    pair.s[3] = t1;
    pair.sum = sum;
    Store(pair, 0, first);
    Store(pair, 1, second);
}
