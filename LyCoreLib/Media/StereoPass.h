// CStereoPass: the filters of the beat analyser, those of loudness, and the sums of the dynamic range, of a stereo
// stream in one loop.
//
// Each of these waits most of the time for its own last result: side by side they take the time of one. The arithmetic
// of each is its own, and so the analysers stand afterwards as if one had worked after the other, bit for bit.
// Threads: one at a time. Nothing is allocated but room for results.

#pragma once

class CBeatsPerMinuteAnalyzerV1;
class CDRAnalyzer;
class CR128Analyzer;

class CStereoPass
{
public:
    // True if all are set up for interleaved stereo and stand within a step, a block and a window.
    static bool Fits(const CBeatsPerMinuteAnalyzerV1& beats, const CR128Analyzer& loudness, const CDRAnalyzer& range);

    // ProcessFrames of the first and Process of the others, of frames of two doubles. They must fit.
    static void Process(CBeatsPerMinuteAnalyzerV1& beats, CR128Analyzer& loudness, CDRAnalyzer& range,
                        const double* pSamples, int nFrames);
};
