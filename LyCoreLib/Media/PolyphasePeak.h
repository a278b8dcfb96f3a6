// The largest output of the four-phase filter over a run of samples: the inner loop of the true peak.
//
// Output j of sample k is the sum over i, from 0 to POLYPHASE_TAPS - 1 in this order, of
// pWindows[k + i] * pCoefficients[i * POLYPHASE_PHASES + j], in 32-bit floats, each product and each sum rounded. The
// vector versions run several samples side by side, one in each lane, so that every output has the value of the plain
// version bit for bit; and the largest of a set is the same in any order.
//
// Shape:   pWindows holds nFrames + POLYPHASE_TAPS - 1 floats; nothing behind them is touched.
// Result:  the largest magnitude, or fPeak if that is larger. What is no number counts for nothing.

#pragma once

constexpr int POLYPHASE_PHASES = 4;
constexpr int POLYPHASE_TAPS = 12; // of each phase

using POLYPHASE_PEAK = float (*)(const float* pWindows, int nFrames, const float* pCoefficients, float fPeak);

// Sample by sample, without vectors.
float PolyphasePeakPlain(const float* pWindows, int nFrames, const float* pCoefficients, float fPeak);

enum VECTOR_WIDTH : int
{
    VECTOR_128, // what every machine of the architecture has
    VECTOR_256,
    VECTOR_512,
    VECTOR_WIDTHS
};

// The version of a width, or null if this machine does not have it; and the widest that it has.
POLYPHASE_PEAK GetPolyphasePeak(VECTOR_WIDTH nWidth);
POLYPHASE_PEAK GetWidestPolyphasePeak();
