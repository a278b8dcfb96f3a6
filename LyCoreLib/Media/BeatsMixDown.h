// What the beat analyser hears of a frame: the mean of its first two channels, on the scale of 16-bit integers; and how
// far it is from the frame before.

#pragma once

class BeatsMixDown
{
public:
    // Half the sum of two rounded samples.
    static float Mix(int nLeft, int nRight)
    {
        return static_cast<float>(static_cast<long long>(nLeft) + nRight) * 0.5F;
    }

    // Mix of the first two samples of each of nFrames interleaved frames, or of the only one with itself, rounded as
    // CBeatsPerMinuteAnalyzerV1::RoundSample does. Four frames at a time are the lanes of a vector.
    static void Mix(const double* pSamples, int nFrames, int nChannels, float* pMixed);

    // The sum of the squared differences of neighbours among nFrames mixed frames, of the first one with fBefore; none
    // counts for more than MAX_EDGE. Exact, and so the same for the whole and for the sum of its parts, as long as it
    // stays below 2^51.
    static constexpr float MAX_EDGE = 131072;
    static double GetEdges(const float* pMixed, int nFrames, float fBefore);
};
