#include "WaveExtremes.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr size_t VECTORS = 2; // at a time: each waits for the one before it

// Samples that are looked at together.
struct VECTOR
{
    using SAMPLES [[gnu::vector_size(16)]] = short;
};
struct AVX2_VECTOR
{
    using SAMPLES [[gnu::vector_size(32)]] = short;
};

// Adds whole steps and answers how many samples that were.
template <class V>
[[gnu::always_inline]] inline size_t AddSteps(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples)
{
    using SAMPLES = typename V::SAMPLES;
    constexpr size_t LANES = sizeof(SAMPLES) / sizeof(short);
    constexpr size_t STEP = VECTORS * LANES;
    if (nSamples < STEP)
        return 0;
    SAMPLES aryLow[VECTORS];
    std::memcpy(aryLow, pSamples, sizeof aryLow);
    SAMPLES aryHigh[VECTORS] = {aryLow[0], aryLow[1]};
    size_t nDone = 0;
    for (; nDone + STEP <= nSamples; nDone += STEP)
    {
        SAMPLES arySamples[VECTORS];
        std::memcpy(arySamples, pSamples + nDone, sizeof arySamples);
        for (size_t n = 0; n < VECTORS; ++n)
        {
            aryLow[n] = arySamples[n] < aryLow[n] ? arySamples[n] : aryLow[n];
            aryHigh[n] = arySamples[n] > aryHigh[n] ? arySamples[n] : aryHigh[n];
        }
    }
    for (size_t n = 0; n < LANES; ++n)
    {
        point.nLow = std::min<short>({point.nLow, aryLow[0][n], aryLow[1][n]});
        point.nHigh = std::max<short>({point.nHigh, aryHigh[0][n], aryHigh[1][n]});
    }
    return nDone;
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) size_t AddStepsByAVX2(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples)
{
    return AddSteps<AVX2_VECTOR>(point, pSamples, nSamples);
}

size_t AddMost(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples)
{
    static const bool s_bAVX2 = __builtin_cpu_supports("avx2") != 0;
    return s_bAVX2 ? AddStepsByAVX2(point, pSamples, nSamples) : AddSteps<VECTOR>(point, pSamples, nSamples);
}
#else
size_t AddMost(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples)
{
    return AddSteps<VECTOR>(point, pSamples, nSamples);
}
#endif
} // namespace

void AddExtremesPlain(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples)
{
    for (size_t n = 0; n < nSamples; ++n)
    {
        point.nLow = std::min(point.nLow, pSamples[n]);
        point.nHigh = std::max(point.nHigh, pSamples[n]);
    }
}

void AddExtremes(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples)
{
    const size_t nDone = AddMost(point, pSamples, nSamples);
    AddExtremesPlain(point, pSamples + nDone, nSamples - nDone);
}
