#include "wavesave.h"

void CWaveSave::WriteBuffer(long nFrames, unsigned int*)
{
    m_nError = nFrames > 0 ? WAVESAVE_FILE_REFUSED : WAVESAVE_WRITTEN;
}

void CWaveSave::Stop() { m_nError = WAVESAVE_WRITTEN; }
