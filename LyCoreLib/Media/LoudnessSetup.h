// The K-weighting of ITU-R BS.1770-4 (annex 1) for any sample rate, and the weight of each channel.
//
// The recommendation prints the coefficients of its two filters for 48 kHz only, and asks for the same frequency
// response at other rates. Those printed are taken back through the bilinear transform to the analogue filters that
// they came from, and these go through it again at the rate in question. At 48 kHz the printed ones come out.
//
// Units:   samples per second.
// Threads: any; nothing is kept.

#pragma once

class CAudioFormat;
class CIIRFilter;

class CLoudnessSetup
{
public:
    // (b0 + b1/z + b2/zz) / (1 + a1/z + a2/zz)
    struct SECTION
    {
        double b0;
        double b1;
        double b2;
        double a1;
        double a2;
    };

    static SECTION GetPreFilter(double fSampleRate); // stage 1: the high shelf that stands for the head
    static SECTION GetRLBFilter(double fSampleRate); // stage 2: the high pass, "revised low-frequency B-curve"

    // Both stages as two sections of direct form II, with nothing in their memory.
    static void SetKWeighting(CIIRFilter& filter, double fSampleRate);

    // The weight of a channel by its entry in the format's channel table. 0 for an entry that is not in use, and for an
    // index outside the table or the channels.
    static double GetChannelWeight(const CAudioFormat& format, int nChannel);
};
