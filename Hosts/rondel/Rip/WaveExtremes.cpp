#include "WaveExtremes.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr size_t LANES = 8;
constexpr size_t VECTORS = 2; // at a time: each waits for the one before it
using SAMPLES [[gnu::vector_size(LANES * sizeof(short))]] = short;

SAMPLES Load(const short* p)
{
    SAMPLES samples;
    std::memcpy(&samples, p, sizeof samples);
    return samples;
}

SAMPLES GetLower(SAMPLES a, SAMPLES b) { return a < b ? a : b; }
SAMPLES GetHigher(SAMPLES a, SAMPLES b) { return a > b ? a : b; }
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
    constexpr size_t STEP = VECTORS * LANES;
    if (nSamples >= STEP)
    {
        SAMPLES aryLow[VECTORS];
        SAMPLES aryHigh[VECTORS];
        for (size_t n = 0; n < VECTORS; ++n)
            aryLow[n] = aryHigh[n] = Load(pSamples + n * LANES);
        for (; nSamples >= STEP; nSamples -= STEP, pSamples += STEP)
        {
            for (size_t n = 0; n < VECTORS; ++n)
            {
                const SAMPLES samples = Load(pSamples + n * LANES);
                aryLow[n] = GetLower(aryLow[n], samples);
                aryHigh[n] = GetHigher(aryHigh[n], samples);
            }
        }
        const SAMPLES low = GetLower(aryLow[0], aryLow[1]);
        const SAMPLES high = GetHigher(aryHigh[0], aryHigh[1]);
        for (size_t n = 0; n < LANES; ++n)
        {
            point.nLow = std::min<short>(point.nLow, low[n]);
            point.nHigh = std::max<short>(point.nHigh, high[n]);
        }
    }
    AddExtremesPlain(point, pSamples, nSamples);
}
