#include "LyAudioInputBase.h"
#include "LyThread.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr int FIELD_24_ANSWER = 4;
// How long a call may wait on a source that has nothing and asks to be tried again.
constexpr int STALL_LIMIT_MS = 101;

int Answer(const ILyDllString& result, const LyString& strText)
{
    result.Set(strText, strText.GetLength());
    return 0;
}
} // namespace

LyAudioInputBase::LyAudioInputBase(ILyAudioInputOwner* pOwner) : m_pOwner(pOwner) {}

LyAudioInputBase::~LyAudioInputBase()
{
    delete[] m_pBuffer;
    m_pBuffer = nullptr;
    delete m_pReader;
    m_pReader = nullptr;
}

int LyAudioInputBase::Open(const wchar_t* pPath)
{
    m_nBufferFill = 0;
    delete m_pReader; // of an earlier Open
    m_pReader = m_pOwner != nullptr ? m_pOwner->CreateReader(pPath) : nullptr;
    if (m_pReader == nullptr)
        return -1;
    m_pReader->SetProperty(L"READ_ONLY", L"1");
    m_pReader->SetProperty(L"Set Support ICY Metadata", m_bSupportICY ? L"1" : L"");
    if (!m_pReader->Open())
        return -1;
    delete[] m_pBuffer;
    m_pBuffer = new unsigned char[static_cast<size_t>(m_nBufferSize)];
    return 0;
}

int LyAudioInputBase::GetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const ILyDllString& result)
{
    LyString strText;
    switch (eField)
    {
    case LY_AUDIO_INPUT_INFO_BITRATE:
        return Answer(result, strText.Format(L"%d", m_nBitrate));
    case LY_AUDIO_INPUT_INFO_DURATION:
        return Answer(result, strText.Format(L"%I64d", m_nDurationMS));
    case LY_AUDIO_INPUT_INFO_NAME:
        return Answer(result, L"Unknown input plug-in");
    case LY_AUDIO_INPUT_INFO_SAMPLE_RATE:
        return Answer(result, strText.Format(L"%d", m_nSampleRate));
    case LY_AUDIO_INPUT_INFO_CHANNELS:
        return Answer(result, strText.Format(L"%d", m_nChannels));
    case LY_AUDIO_INPUT_INFO_BITS_PER_SAMPLE:
        return Answer(result, strText.Format(L"%d", m_nBitsPerSample));
    case LY_AUDIO_INPUT_INFO_TOTAL_SAMPLES:
        return Answer(result, strText.Format(L"%I64d", m_nTotalSamples));
    case LY_AUDIO_INPUT_INFO_FIELD_24:
        return Answer(result, strText.Format(L"%d", FIELD_24_ANSWER));
    case LY_AUDIO_INPUT_INFO_FIELD_28:
        return Answer(result, strText.Format(L"%d", m_nField28));
    default:
        return -1;
    }
}

int LyAudioInputBase::SetInformation(LY_AUDIO_INPUT_INFO_FIELDS, const wchar_t*) { return -1; }

int LyAudioInputBase::DoCommand(LY_AUDIO_INPUT_COMMANDS eCommand, long long, long long)
{
    if (eCommand != LY_AUDIO_INPUT_COMMAND_CLOSE_READER || m_pReader == nullptr || !m_pReader->GetCanClose())
        return -1;
    m_pReader->Close();
    return 0;
}

int LyAudioInputBase::GetSamples(unsigned char* pBuffer, int nBytes)
{
    int nRemaining = nBytes;
    int nWritten = 0;
    const unsigned int nStartTick = GetTickCount();
    for (bool bGo = true; bGo && nRemaining >= 1;)
    {
        const int nCopied = CopyOut(pBuffer + nWritten, nRemaining);
        nWritten += nCopied;
        nRemaining -= nCopied;
        if (m_nBufferFill - m_nReadPosition - m_nHoldBack > 0)
            continue;
        Compact();
        if (m_bEndOfData)
        {
            bGo = false;
            continue;
        }
        bGo = Refill();
        if (m_nBufferFill == 0 && GetTickCount() - nStartTick >= STALL_LIMIT_MS)
            bGo = false;
    }
    if (nWritten != 0)
        return nWritten;
    return m_bEndOfData ? 0 : -1;
}

int LyAudioInputBase::CopyOut(unsigned char* pBuffer, int nBytes)
{
    const int nCount = std::min(nBytes, m_nBufferFill - m_nReadPosition - m_nHoldBack);
    if (nCount < 1)
        return 0;
    std::memcpy(pBuffer, m_pBuffer + m_nReadPosition, static_cast<size_t>(nCount));
    m_nReadPosition += nCount;
    return nCount;
}

// What is held back moves to the start of the buffer, so that a refill has all the room there is.
void LyAudioInputBase::Compact()
{
    const int nLeft = m_nBufferFill - m_nReadPosition;
    if (nLeft > 0 && m_nReadPosition > 0)
        std::memmove(m_pBuffer, m_pBuffer + m_nReadPosition, static_cast<size_t>(nLeft));
    m_nReadPosition = 0;
    m_nBufferFill = nLeft;
}

// Asks the source for more. Returns whether another pass can bring anything.
bool LyAudioInputBase::Refill()
{
    const int nFillBefore = m_nBufferFill;
    const bool bRefused = AddDataToBuffer() != 0;
    if (m_nBufferFill > nFillBefore)
        return !bRefused;
    return m_bRetryWhenEmpty && !bRefused;
}

int LyAudioInputBase::AddDataToBuffer() { return -1; }

int LyAudioInputBase::ResetInternalBuffer()
{
    m_nReadPosition = 0;
    m_nBufferFill = 0;
    m_bEndOfData = false;
    return 0;
}
