// RipMeter: measures the pieces of a rip as their audio passes: loudness, peaks, dynamic range and tempo by the
// analysers, and the picture of the wave. What they are together, the pieces' series tell afterwards.
//
// Shape:   16-bit stereo at 44,100 Hz.
// Units:   frames; sectors for the stretches of the picture.
// Errors:  without memory for the analysers a piece has no analysis.
// Threads: one at a time; in a rip, the worker.

#pragma once

#include "RipReport.h"
#include "THAudioAnalyzer.h"

class RipMeter
{
public:
    static constexpr int WAVE_POINTS = 1600; // of a piece, at most

    explicit RipMeter(bool bAnalyze) : m_bAnalyze(bAnalyze) {}

    void Begin(int nSectors);
    void Add(const short* pSamples, long long nFrames);
    void Finish(RIP_PIECE& piece); // the analysis, and the wave and loudness of the series

private:
    void AddToWave(const short* pSamples, long long nFrames);

    const bool m_bAnalyze;
    bool m_bReady = false; // the analysers are
    CTHAudioAnalyzer m_Analyzer;
    std::vector<RIP_WAVE_POINT> m_aryWave;
    int m_nWaveSectors = 1;
    long long m_nPointFrames = 0; // that the point at work still takes
};

// Of all pieces together: the album, if they are all its audio, else a selection. Nothing if one was not measured.
void MeasureAlbum(RIP_REPORT& report);
