#include "R128Lanes.h"
#include "R128LanePair.h"
#include <cstddef>

void R128Lanes::Process(CR128Analyzer::CChannel& first, CR128Analyzer::CChannel& second, const double* pFirst,
                        const double* pSecond, int nFrames, int nStride)
{
    R128LanePair pair(first, second);
    const ptrdiff_t nStep = nStride;
    for (int i = 0; i < nFrames; ++i, pFirst += nStep, pSecond += nStep)
        pair.Add(R128LanePair::LANES{*pFirst, *pSecond});
    pair.Store(first, second);
}
