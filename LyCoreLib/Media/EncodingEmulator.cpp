// The feed of a WAV file to an encoder plug-in.

#include "EncoderError.h"
#include "EncoderHelper.h"
#include "LyBuffer.h"
#include <algorithm>

namespace
{
constexpr const wchar_t* ENCODING_ERROR = L"Encoding error";
constexpr int CHUNKS_PER_SECOND = 4;
// A chunk of any real format is smaller. Rate and block align are numbers from a file, and their product may be absurd.
constexpr long long MAX_CHUNK_BYTES = 0x4000000;
static_assert(MAX_CHUNK_BYTES >= 0xFFFFLL * CEncoderPluginFileBasedEncodingEmulator::MIN_CHUNK_BLOCKS);

long long GetChunkBlocks(long long nSampleRate, int nBlockAlign)
{
    const long long nBlocks =
        std::max<long long>(nSampleRate / CHUNKS_PER_SECOND, CEncoderPluginFileBasedEncodingEmulator::MIN_CHUNK_BLOCKS);
    return std::min(nBlocks, MAX_CHUNK_BYTES / nBlockAlign);
}
} // namespace

CEncoderPluginFileBasedEncodingEmulator::CEncoderPluginFileBasedEncodingEmulator() : LyThread(false, true) {}

CEncoderPluginFileBasedEncodingEmulator::~CEncoderPluginFileBasedEncodingEmulator() { (void)Stop(STOP_TIMEOUT_MS); }

bool CEncoderPluginFileBasedEncodingEmulator::OpenFile(const LyString& strFile)
{
    m_pFileReader.Set(CreateGenericReader(strFile), true, false);
    if (m_pFileReader == nullptr)
        return false;
    m_pFileReader->SetProperty(L"READ_ONLY", L"1"); // what is encoded is not changed
    return m_pFileReader->Open() && m_WAVInfo.Open(m_pFileReader.Get(), false, true) == 0;
}

bool CEncoderPluginFileBasedEncodingEmulator::Thread()
{
    const long long nTotal = m_WAVInfo.GetTotalBlocks();
    const bool bAllSent = Feed(nTotal) == nTotal;
    (void)PostToMainThread(MESSAGE_FEED_ENDED, bAllSent ? 1 : 0);
    return true;
}

// Sends the file to the encoder, chunk by chunk. The blocks sent: all, or fewer after a cancel or failure.
long long CEncoderPluginFileBasedEncodingEmulator::Feed(long long nTotal)
{
    const int nBlockAlign = m_WAVInfo.GetBlockAlign();
    if (nTotal < 1 || nBlockAlign < 1 || m_pPlugin == nullptr)
        return 0;
    const long long nChunk = GetChunkBlocks(m_WAVInfo.GetSampleRate(), nBlockAlign);
    // No read is longer than the audio.
    const long long nMostBytes = std::min(nChunk * nBlockAlign, m_WAVInfo.GetDataBytes());
    LyBuffer buffer(static_cast<int>(nMostBytes) + EXTRA_BUFFER_BYTES);
    if (buffer.GetData() == nullptr)
        return 0;
    long long nPosition = 0;
    while (nPosition < nTotal && !GetCancel())
    {
        long long nBytes = 0;
        if (m_WAVInfo.ReadBlocks(buffer.GetData(), nPosition, nChunk, &nBytes, false) != 0 || nBytes < 1)
            break;
        if (m_pPlugin->EncodeBuffer(buffer.GetData(), static_cast<int>(nBytes)) != ENCODER_OK)
            break;
        const long long nBlocks = nBytes / nBlockAlign;
        if (nBlocks < 1)
            break; // less than a block came, and the same would come for ever
        nPosition += nBlocks;
        if (m_pCallback != nullptr)
            (void)PostToMainThread(MESSAGE_PROGRESS, nPosition * 100 / nTotal);
    }
    return nPosition;
}

bool CEncoderPluginFileBasedEncodingEmulator::ProcessMainThreadMessage(int nMessage, long long nParameter)
{
    if (m_pPlugin == nullptr)
        return true;
    if (nMessage == MESSAGE_PROGRESS && m_pCallback != nullptr)
        m_pCallback->OnProgress(m_pPlugin->m_pEncoder, static_cast<int>(nParameter));
    else if (nMessage == MESSAGE_FEED_ENDED)
        OnFeedEnded(nParameter != 0);
    return true;
}

// Deliberate: the encoder hears of the end of its input also after a cancel or failure, since it has no other way to
// learn that nothing more will come.
void CEncoderPluginFileBasedEncodingEmulator::OnFeedEnded(bool bAllSent)
{
    const bool bFinished = m_pPlugin->FinishBufferInput();
    // The callback may destroy this object, so nothing of it is touched from the first call on.
    ILyEncoderCallback* const pCallback = m_pCallback;
    ILyEncoder* const pEncoder = m_pPlugin->m_pEncoder;
    if (pCallback == nullptr)
        return;
    if (!bFinished || !bAllSent)
    {
        LyString strText = m_pPlugin->GetInfo(LY_ENCODER_INFO_LAST_ERROR);
        if (strText.IsEmpty())
            strText = ENCODING_ERROR;
        pCallback->OnError(pEncoder, -1, strText);
    }
    pCallback->OnFinished(pEncoder);
}
