// Two channels of CR128Analyzer at once: each channel is a lane of a vector and keeps its own order of arithmetic, so
// that the sums are those of CIIRFilter::Filter bit for bit. Only the K-weighting's shape is served: direct form II,
// two sections. The coefficients of the two channels may differ.

#pragma once

#include "R128Analyzer.h"

class R128Lanes
{
public:
    static bool Fits(const CIIRFilter& filter) { return filter.m_nForm != 0 && filter.m_nSections == 2; }

    // Runs nFrames samples of both channels through their filters and adds the squared outputs to their sums. pFirst
    // and pSecond are the first samples of the two channels, nStride doubles from one frame to the next.
    static void Process(CR128Analyzer::CChannel& first, CR128Analyzer::CChannel& second, const double* pFirst,
                        const double* pSecond, int nFrames, int nStride);
};
