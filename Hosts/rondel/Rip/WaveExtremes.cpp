#include "WaveExtremes.h"
#include <algorithm>
#include <cstring>

namespace
{
// Samples that are looked at together.
struct VECTOR
{
    using SAMPLES [[gnu::vector_size(16)]] = short;
};
struct AVX2_VECTOR
{
    using SAMPLES [[gnu::vector_size(32)]] = short;
};

// Adds whole steps and answers how many samples that were. A step has two vectors, since each waits for the one before
// it. They are named, not an array, which would lie in memory.
template <class V>
[[gnu::always_inline]] inline size_t AddSteps(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples)
{
    using SAMPLES = typename V::SAMPLES;
    constexpr size_t LANES = sizeof(SAMPLES) / sizeof(short);
    constexpr size_t STEP = 2 * LANES;
    if (nSamples < STEP)
        return 0;
    SAMPLES low1;
    std::memcpy(&low1, pSamples, sizeof low1);
    SAMPLES low2 = low1;
    SAMPLES high1 = low1;
    SAMPLES high2 = low1;
    size_t nDone = 0;
    for (; nDone + STEP <= nSamples; nDone += STEP)
    {
        SAMPLES samples1;
        SAMPLES samples2;
        std::memcpy(&samples1, pSamples + nDone, sizeof samples1);
        std::memcpy(&samples2, pSamples + nDone + LANES, sizeof samples2);
        low1 = samples1 < low1 ? samples1 : low1;
        low2 = samples2 < low2 ? samples2 : low2;
        high1 = samples1 > high1 ? samples1 : high1;
        high2 = samples2 > high2 ? samples2 : high2;
    }
    for (size_t n = 0; n < LANES; ++n)
    {
        point.nLow = std::min<short>({point.nLow, low1[n], low2[n]});
        point.nHigh = std::max<short>({point.nHigh, high1[n], high2[n]});
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
