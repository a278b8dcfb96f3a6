#include "BeatsMixDown.h"
#include "BeatsPerMinuteAnalyzer.h"
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace
{
constexpr int LANE_FRAMES = 4;

typedef double FRAME __attribute__((vector_size(16)));            // left and right
typedef unsigned long long BITS __attribute__((vector_size(16))); // the bits of left and right
typedef int FRAME_INTS __attribute__((vector_size(8)));           // left and right, rounded
typedef int LANES __attribute__((vector_size(16)));               // one channel of four frames
typedef unsigned int WRAPPING __attribute__((vector_size(16)));   // the same, where sums may wrap around
typedef float MIXED __attribute__((vector_size(16)));             // the mean of four frames

constexpr BITS SIGN = {1ULL << 63, 1ULL << 63};
constexpr FRAME FULL_SCALE = {32768.0, 32768.0};
constexpr FRAME HALF = {0.5, 0.5};

// Added to the bits of a magnitude, this reaches the sign bit from 2^30 on, with infinity and not a number as well. Two
// integers below it can be added.
constexpr unsigned long long TO_SIGN = (1ULL << 63) - std::bit_cast<unsigned long long>(1073741824.0);
constexpr BITS TOO_LARGE = {TO_SIGN, TO_SIGN};

// Rounds a frame. A value that is too large sets the sign bit of its lane in unsafe.
FRAME_INTS Round(const double* pFrame, BITS& unsafe)
{
    FRAME frame;
    memcpy(&frame, pFrame, sizeof frame);
    frame *= FULL_SCALE;
    const BITS bits = std::bit_cast<BITS>(frame);
    unsafe |= (bits & ~SIGN) + TOO_LARGE;
    // 0.5 for what is above 0, -0.5 for what is below; 0 becomes 0 either way.
    frame += std::bit_cast<FRAME>(std::bit_cast<BITS>(HALF) | (bits & SIGN));
    return __builtin_convertvector(frame, FRAME_INTS);
}

typedef double SQUARES __attribute__((vector_size(32))); // of the differences of four frames

// Limits differences, squares them and adds them.
void AddSquares(MIXED edges, SQUARES& sums)
{
    constexpr MIXED MOST = {BeatsMixDown::MAX_EDGE, BeatsMixDown::MAX_EDGE, BeatsMixDown::MAX_EDGE,
                            BeatsMixDown::MAX_EDGE};
    edges = edges > MOST ? MOST : edges;
    edges = edges < -MOST ? -MOST : edges;
    const SQUARES exact = __builtin_convertvector(edges, SQUARES);
    sums += exact * exact;
}

LANES Join(FRAME_INTS first, FRAME_INTS second) { return __builtin_shufflevector(first, second, 0, 1, 2, 3); }

// Mixes groups of four frames. False if a value was out of range: then the output holds nothing of use.
bool MixGroups(const double* pSamples, int nGroups, ptrdiff_t nChannels, float* pMixed)
{
    BITS unsafe = {0, 0};
    for (int i = 0; i < nGroups; ++i, pSamples += LANE_FRAMES * nChannels, pMixed += LANE_FRAMES)
    {
        const LANES early = Join(Round(pSamples, unsafe), Round(pSamples + nChannels, unsafe));
        const LANES late = Join(Round(pSamples + 2 * nChannels, unsafe), Round(pSamples + 3 * nChannels, unsafe));
        // Values that are too large wrap around here; the caller then drops the result.
        const LANES sums =
            std::bit_cast<LANES>(std::bit_cast<WRAPPING>(__builtin_shufflevector(early, late, 0, 2, 4, 6)) +
                                 std::bit_cast<WRAPPING>(__builtin_shufflevector(early, late, 1, 3, 5, 7)));
        const MIXED mixed = __builtin_convertvector(sums, MIXED) * 0.5F;
        memcpy(pMixed, &mixed, sizeof mixed);
    }
    return ((unsafe[0] | unsafe[1]) >> 63) == 0;
}
} // namespace

void BeatsMixDown::Mix(const double* pSamples, int nFrames, int nChannels, float* pMixed)
{
    const ptrdiff_t nStride = nChannels;
    const int nSecond = nChannels >= 2 ? 1 : 0;
    int i = 0;
    if (nChannels >= 2 && MixGroups(pSamples, nFrames / LANE_FRAMES, nStride, pMixed))
        i = nFrames / LANE_FRAMES * LANE_FRAMES;
    for (; i < nFrames; ++i)
    {
        const double* pFrame = pSamples + i * nStride;
        pMixed[i] = Mix(CBeatsPerMinuteAnalyzerV1::RoundSample(pFrame[0]),
                        CBeatsPerMinuteAnalyzerV1::RoundSample(pFrame[nSecond]));
    }
}

double BeatsMixDown::GetEdges(const float* pMixed, int nFrames, float fBefore)
{
    if (nFrames < 1)
        return 0;
    const auto square = [](float fEdge)
    {
        const double fExact = static_cast<double>(std::clamp(fEdge, -MAX_EDGE, MAX_EDGE));
        return fExact * fExact;
    };
    double fSum = square(pMixed[0] - fBefore);
    // Halves of whole numbers: their sums are exact, whatever the order.
    SQUARES sums = {0, 0, 0, 0};
    int i = 1;
    for (; i <= nFrames - LANE_FRAMES; i += LANE_FRAMES)
    {
        MIXED frames;
        MIXED before;
        memcpy(&frames, pMixed + i, sizeof frames);
        memcpy(&before, pMixed + i - 1, sizeof before);
        AddSquares(frames - before, sums);
    }
    for (; i < nFrames; ++i)
        fSum += square(pMixed[i] - pMixed[i - 1]);
    return fSum + (sums[0] + sums[1]) + (sums[2] + sums[3]);
}
