#include "THAudioAnalyzer.h"

int CTHAudioAnalyzer::ProcessBlocks(const double*, int nFrames)
{
    m_nFramesProcessed += nFrames;
    return nFrames;
}

int CTHAudioAnalyzer::Finish() { return m_nFramesProcessed > 0 ? 0 : -1; }
