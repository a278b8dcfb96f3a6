// What the set-up of every analyser has in common: which streams can be measured, and the form in which their samples
// reach the analysers.
//
// Units:   samples per second, channels.

#pragma once

#include "AudioFormat.h"

constexpr unsigned int ANALYSIS_MIN_SAMPLE_RATE = 8000;
constexpr unsigned int ANALYSIS_MAX_SAMPLE_RATE = 192000;

// True for 8 to 192 kHz and 1 to 32 channels.
bool CanAnalyze(const CAudioFormat& format);

// The same rate and channels as interleaved 64-bit floats.
CAudioFormat GetAnalysisFormat(const CAudioFormat& format);
