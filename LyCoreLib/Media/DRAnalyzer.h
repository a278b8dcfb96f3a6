// CDRAnalyzer: for each channel and each window of time, a root-mean-square level and a peak; and from these the
// dynamic range figure.
//
// Shape:   interleaved doubles; full scale is 1.0.
// Start:   no channels, and nothing is done. SetUp makes them, with windows of three seconds.
// Errors:  false for a format that cannot be measured, and for a figure that does not exist (no audio, or silence).
// Source:  the "DR" figure as the Pleasurize Music Foundation published it: 20 dB per decade between the second
//          largest peak of a window and the root mean square of the loudest fifth of the windows.
// Threads: one at a time.

#pragma once

#include "AudioFormat.h"
#include "LyArray.h"

class CDRAnalyzer
{
public:
    static constexpr int WINDOW_SECONDS = 3;
    static constexpr int LOUD_PART = 5; // the loudest fifth of the windows counts, at least one

    class CChannel
    {
    public:
        // nFrames samples of this channel, nStride doubles apart. Without a window length nothing is done.
        void Process(const double* pSamples, int nFrames, int nStride);
        void FinishWindow(); // ends the current window, unless it is empty

        // The dynamic range of the finished windows in dB. False if there is none, or nothing but silence.
        bool GetDynamicRange(double& fDB) const;

        int m_nWindowSamples = 0;      // the length of a window
        int m_nCount = 0;              // samples in the current window
        double m_fSumSquares = 0;      // of the current window
        double m_fPeak = 0;            // the largest magnitude in it
        LyNumberArray<double> m_RMS;   // one for each finished window; a full-scale sine reads 1.0
        LyNumberArray<double> m_Peaks; // parallel to m_RMS
    };

    CDRAnalyzer();

    // Makes the analyser ready for interleaved doubles of this format, 8 to 192 kHz and 1 to 32 channels, and forgets
    // what it measured.
    bool SetUp(const CAudioFormat& format);

    void Process(const double* pSamples, int nFrames);
    void Finish(); // ends the last window, which may be shorter than the others and counts like them

    // In dB; of one channel, or the mean of all channels that have one. False if there is none.
    bool GetDynamicRange(int nChannel, double& fDB) const;
    bool GetDynamicRange(double& fDB) const;
    // What stands on lists as "DR10": the mean, rounded to a whole number. -1 if there is none.
    int GetDRValue() const;

    CAudioFormat m_Format;
    LyOwnedPtrArray<CChannel> m_Channels;
};
