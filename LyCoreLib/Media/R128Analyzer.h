// CR128Analyzer: the channel-weighted mean-square energy of filtered audio, one number for each block of fixed length.
// It is the raw material of a loudness measurement; LoudnessResults.h makes decibels of it.
//
// Shape:   interleaved doubles, full scale 1.0; m_Format says how many channels. Blocks do not overlap.
// Units:   a block is the weighted sum of the channels' mean squares: linear, relative to full scale, no decibels.
// Start:   no channels, and Process does nothing. SetUp makes them.
// Errors:  false, and nothing changed, for what cannot be measured.
// Source:  ITU-R BS.1770-4, annex 1.
// Threads: one at a time. Nothing is allocated but room for blocks.

#pragma once

#include "AudioFormat.h"
#include "IIRFilter.h"
#include "LyArray.h"

class CR128Analyzer
{
public:
    // EBU Tech 3341 wants loudness ten times a second, and BS.1770-4 gating blocks of 400 ms that overlap by three
    // quarters: both are made of blocks of 100 ms.
    static constexpr int BLOCK_MS = 100;

    class CChannel : public CIIRFilter
    {
    public:
        int m_nCount = 0;     // samples in the current block
        double m_fSum = 0;    // sum of squares in the current block
        double m_fWeight = 0; // the channel's weight; 0 leaves it out
    };

    CR128Analyzer() { m_Format.SetFormat(16, 44100, 2, false, LY_GUID_NULL, true); }
    virtual ~CR128Analyzer() = default;

    // Starts anew for interleaved doubles of this format: a K-weighting filter for its rate and a weight for each of
    // its channels (LoudnessSetup.h), and blocks of 100 ms. False, and nothing changed, for a rate outside 8 to 192
    // kHz, for no channels or more than the channel table holds, and without memory.
    bool SetUp(const CAudioFormat& format);

    // Adds nFrames frames, and a block for each block length that they complete. Blocks go on from call to call.
    // False if there are no channels, no block length, no frames or no samples: then nothing changes.
    bool Process(const double* pSamples, int nFrames);

    CAudioFormat m_Format;
    LyOwnedPtrArray<CChannel> m_Channels;
    LyNumberArray<double> m_Blocks; // a block that the end of the audio cuts off is not among them
    int m_nBlockSamples = 0;        // block length, in frames

private:
    friend class CStereoPass;

    int CountUsableChannels() const;
    void ProcessChannels(const double* pSamples, int nFrames, int nUsable);
    void EndRun(int nFrames);
    void FinishBlock(int nUsable);
};
