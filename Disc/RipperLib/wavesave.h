// CWaveSave: the sink of a rip. It takes PCM from the copy engine and passes it to the analyser, and then to a WAV file
// or to an encoder plug-in, which is the CEncoderPlugin that it is itself.
//
// Units:   sample frames of LY_CD_FRAME_BYTES.
// Errors:  m_nError, which the copy engine does not read: the rip carries on to its end. An encoder's error is shown
//          in a message box each time.
// Threads: the rip's worker, which a message box blocks.

#pragma once

#include "EncoderHelper.h"
#include "WAVCreator.h"

class CTHAudioAnalyzer;

enum WAVESAVE_RESULT : int
{
    WAVESAVE_WRITTEN = 0,
    WAVESAVE_FILE_REFUSED = 11,
    WAVESAVE_ENCODER_FAILED = 24
};

class CWaveSave : public CEncoderPlugin
{
public:
    CWaveSave() = default; // into no file: everything is refused, until m_WAVCreator or the encoder is set up
    // Into a WAV file. The analyser may be null; it outlives this object.
    CWaveSave(const wchar_t* pPath, const CAudioFormat& format, CTHAudioAnalyzer* pAnalyzer = nullptr,
              long long nDataBytes = CWAVCreator::UNKNOWN_LENGTH);
    // Into an encoder like the one described, of which this object holds its own. The callback is not owned.
    CWaveSave(const CEncoderPlugin& encoder, ILyEncoderCallback* pCallback, CTHAudioAnalyzer* pAnalyzer = nullptr);
    ~CWaveSave() override; // stops

    bool GetIsReady() const; // there is a file or an encoder that takes data

    // Changes the buffer if the file has the other byte order. Virtual, so that a host may send one rip to many places.
    virtual void WriteBuffer(long nFrames, unsigned int* pData);
    // Ends the output. A cancelled rip does so twice, by the copy engine and by the destructor.
    virtual void Stop();

    CWAVCreator m_WAVCreator;
    CTHAudioAnalyzer* m_pAnalyzer = nullptr;
    int m_nError = WAVESAVE_WRITTEN; // outcome of the last WriteBuffer
    bool m_bUseEncoder = false;
    LyString m_strName; // not read; the encoder's name is that of the base class

protected:
    void SendToEncoder(unsigned char* pData, long long nBytes); // the pieces of WriteBuffer
};
