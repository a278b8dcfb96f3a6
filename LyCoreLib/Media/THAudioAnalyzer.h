// CTHAudioAnalyzer: the place where the audio of a rip is measured, one for each controller, built with it.
//
// This version counts what passes; the measurements themselves are not part of it.
// Units:   sample frames.
// Threads: the rip's worker.

#pragma once

class CTHAudioAnalyzer
{
public:
    virtual ~CTHAudioAnalyzer() = default;

    int ProcessBlocks(const double* pSamples, int nFrames); // interleaved; returns nFrames
    int Finish();                                           // 0, or -1 if nothing was processed

    long long m_nFramesProcessed = 0; // over the whole life of the object
};
