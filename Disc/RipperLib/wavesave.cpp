#include "wavesave.h"
#include "CDUnits.h"
#include "EncoderError.h"
#include "OptionsHelper.h"
#include "THAudioAnalyzer.h"
#include <algorithm>
#include <climits>

CWaveSave::CWaveSave(const wchar_t* pPath, const CAudioFormat& format, CTHAudioAnalyzer* pAnalyzer,
                     long long nDataBytes)
    : m_pAnalyzer(pAnalyzer)
{
    (void)m_WAVCreator.Open(pPath, format, false, nDataBytes); // GetIsReady tells
}

CWaveSave::CWaveSave(const CEncoderPlugin& encoder, ILyEncoderCallback* pCallback, CTHAudioAnalyzer* pAnalyzer)
    : m_pAnalyzer(pAnalyzer), m_bUseEncoder(true)
{
    CEncoderPlugin::m_strName = encoder.m_strName;
    m_strDescription = encoder.m_strDescription;
    m_strLibrary = encoder.m_strLibrary;
    m_nParameter = encoder.m_nParameter;
    m_strProfile = encoder.m_strProfile;
    m_strSettings = encoder.m_strSettings;
    (void)Open(pCallback, true); // GetIsReady tells
}

CWaveSave::~CWaveSave() { CWaveSave::Stop(); }

bool CWaveSave::GetIsReady() const { return m_bUseEncoder ? m_pEncoder != nullptr : m_WAVCreator.m_bOpen; }

void CWaveSave::WriteBuffer(long nFrames, unsigned int* pData)
{
    m_nError = WAVESAVE_WRITTEN;
    nFrames = std::clamp<long>(nFrames, 0, INT_MAX);
    // The analyser sees the samples before the file's byte order may change them.
    if (m_pAnalyzer != nullptr && (pData != nullptr || nFrames == 0))
        (void)m_pAnalyzer->ProcessBlocks16Bit(reinterpret_cast<const short*>(pData), static_cast<int>(nFrames));
    const long long nBytes = static_cast<long long>(nFrames) * LY_CD_FRAME_BYTES;
    if (m_bUseEncoder)
        SendToEncoder(reinterpret_cast<unsigned char*>(pData), nBytes);
    else if (m_WAVCreator.WritePCMData(pData, nBytes) != 0)
        m_nError = WAVESAVE_FILE_REFUSED;
}

// In pieces of one block of the drive at most. The first that fails ends the call.
void CWaveSave::SendToEncoder(unsigned char* pData, long long nBytes)
{
    while (nBytes > 0)
    {
        const int nPiece = static_cast<int>(std::min<long long>(nBytes, LY_CD_MAX_READ_BYTES));
        const int nResult = EncodeBuffer(pData, nPiece);
        if (nResult != ENCODER_OK)
        {
            // Deliberate: the rip's thread waits for the box, and each failing block shows one of its own.
            (void)IMB(GetEncoderErrorText(nResult), TranslateString(L"Information"), LyString(), false, false);
            m_nError = WAVESAVE_ENCODER_FAILED;
            return;
        }
        pData += nPiece;
        nBytes -= nPiece;
    }
}

void CWaveSave::Stop()
{
    m_nError = WAVESAVE_WRITTEN;
    if (m_pAnalyzer != nullptr)
        (void)m_pAnalyzer->Finish();
    if (!m_bUseEncoder)
    {
        (void)m_WAVCreator.FinalizeWAV();
        return;
    }
    (void)FinishBufferInput(); // what it answers is not told: the callback has heard of it
    CEncoderPlugin::Stop();
    Close();
}
