#include "PolyphasePeak.h"

#include <cmath>

float PolyphasePeakPlain(const float* pWindows, int nFrames, const float* pCoefficients, float fPeak)
{
    for (int k = 0; k < nFrames; ++k)
    {
        for (int nPhase = 0; nPhase < POLYPHASE_PHASES; ++nPhase)
        {
            float fOutput = 0;
            for (int i = 0; i < POLYPHASE_TAPS; ++i)
                fOutput += pWindows[k + i] * pCoefficients[i * POLYPHASE_PHASES + nPhase];
            const float fMagnitude = std::fabs(fOutput);
            fPeak = fMagnitude > fPeak ? fMagnitude : fPeak;
        }
    }
    return fPeak;
}

namespace
{
#define LANES_NAME PolyphasePeak128
#define LANES_TARGET
#define LANES_COUNT 4
#include "PolyphasePeakLanes.inc"
#undef LANES_NAME
#undef LANES_TARGET
#undef LANES_COUNT

// The wider vectors of one architecture. None of these targets brings a fused multiply-add that the compiler may use:
// contraction is off for the whole tree.
#if defined(__x86_64__)
#define LANES_NAME PolyphasePeak256
#define LANES_TARGET __attribute__((target("avx")))
#define LANES_COUNT 8
#include "PolyphasePeakLanes.inc"
#undef LANES_NAME
#undef LANES_TARGET
#undef LANES_COUNT

#define LANES_NAME PolyphasePeak512
#define LANES_TARGET __attribute__((target("avx512f")))
#define LANES_COUNT 16
#include "PolyphasePeakLanes.inc"
#undef LANES_NAME
#undef LANES_TARGET
#undef LANES_COUNT
#endif
} // namespace

POLYPHASE_PEAK GetPolyphasePeak(VECTOR_WIDTH nWidth)
{
    if (nWidth == VECTOR_128)
        return PolyphasePeak128;
#if defined(__x86_64__)
    if (nWidth == VECTOR_256 && __builtin_cpu_supports("avx"))
        return PolyphasePeak256;
    if (nWidth == VECTOR_512 && __builtin_cpu_supports("avx512f"))
        return PolyphasePeak512;
#endif
    return nullptr;
}

POLYPHASE_PEAK GetWidestPolyphasePeak()
{
    if (const POLYPHASE_PEAK pVersion = GetPolyphasePeak(VECTOR_512); pVersion != nullptr)
        return pVersion;
    const POLYPHASE_PEAK pVersion = GetPolyphasePeak(VECTOR_256);
    return pVersion != nullptr ? pVersion : PolyphasePeak128;
}
