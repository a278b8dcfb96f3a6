// CTHAudioAnalyzer: the pipeline that measures the audio of a rip. Blocks go in; loudness, peaks, dynamic range and
// tempo come together in its four analysers, which also answer for the results.
//
// Shape:   interleaved frames, as 16-bit integers or as doubles with full scale 1.0.
// Start:   no analyser has channels; what comes in is counted and not measured. SetUp makes it measure.
// Errors:  false and -1. Frames that cannot be taken (null, a negative count, no memory) are not counted.
// Memory:  m_Buffer grows to the largest call and is used again: the steady state allocates nothing but, now and then,
//          room for results.
// Threads: one at a time; in a rip, the worker.

#pragma once

#include "AudioFormat.h"
#include "BeatsPerMinuteAnalyzer.h"
#include "ConvertToFloatFilter.h"
#include "DRAnalyzer.h"
#include "LyBuffer.h"
#include "PeakLevelAnalyzer.h"
#include "R128Analyzer.h"

class CTHAudioAnalyzer
{
public:
    static constexpr int BUFFER_GROW_BYTES = 16384;

    CTHAudioAnalyzer();
    virtual ~CTHAudioAnalyzer() = default;

    // Makes all four analysers ready for a stream of this rate and of these channels, and forgets what they measured
    // and the count of frames. Of the format only nSamplesPerSec, nChannels, dwChannelMask and m_Channels matter:
    // ProcessBlocks takes doubles and ProcessBlocks16Bit takes 16-bit samples whatever the stream was stored in.
    // False, and nothing changed, outside 8 to 192 kHz or 1 to 32 channels. False, and nothing measured from then on,
    // if memory is out.
    bool SetUp(const CAudioFormat& format);

    int ProcessBlocks16Bit(const short* pSamples, int nFrames); // the frames taken
    int ProcessBlocks(const double* pSamples, int nFrames);     // the frames taken
    void ProcessBlockInternal(const void* pFrame);              // one frame of doubles, to the beat analyser
    int Finish();                                               // 0, or -1 if nothing was processed

    CAudioFormat m_Format;            // of the doubles, once it is set up: 64-bit float, nBlockAlign = 8 * nChannels
    LyBuffer m_Buffer;                // the doubles that 16-bit samples become
    long long m_nFramesProcessed = 0; // since the construction or the last SetUp
    CConvertToFloatFilter m_Convert;
    CR128Analyzer m_R128;
    CPeakLevelAnalyzer m_Peak;
    CDRAnalyzer m_DR;
    CBeatsPerMinuteAnalyzerV1 m_BPM;

private:
    bool IsDoublesOnly() const;
    void ProcessBeats(const double* pSamples, int nFrames);
};
