// WaveExtremes: the least and the greatest of samples, for the picture of a wave. The vectors and their plain twin find
// the same: only comparing is done, in whatever order.
//
// Units:   samples of 16 bits; of all channels together.
// Errors:  without samples the extremes stay as they were.
// Threads: any.

#pragma once

#include "RipReport.h"
#include <cstddef>

// Widens the point by the samples. They may lie anywhere in memory.
void AddExtremes(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples);
void AddExtremesPlain(RIP_WAVE_POINT& point, const short* pSamples, size_t nSamples); // the twin, sample by sample
