// CWaveSave: the sink of a rip. It takes PCM from the copy engine.
//
// This version has no output to open: a sink accepts nothing and says so in m_nError. The copy engine does not read
// that and runs to its end, so that a copy can be watched through its results alone. Units:   sample frames of
// LY_CD_FRAME_BYTES. Threads: the rip's worker.

#pragma once

enum WAVESAVE_RESULT : int
{
    WAVESAVE_WRITTEN = 0,
    WAVESAVE_FILE_REFUSED = 11,
    WAVESAVE_ENCODER_FAILED = 24
};

class CWaveSave
{
public:
    virtual ~CWaveSave() = default;
    virtual void WriteBuffer(long nFrames, unsigned int* pData);
    virtual void Stop(); // ends the output; may run twice

    int m_nError = WAVESAVE_WRITTEN; // outcome of the last WriteBuffer
};
