#include "EncoderBase.h"
#include "UTF8.h"
#include <algorithm>
#include <cstring>

namespace
{
// The border of the library: what the standard library throws (no memory, above all) ends here.
template <class CALL>
bool Guarded(CALL call) noexcept
{
    try
    {
        call();
        return true;
    }
    catch (...)
    {
        return false;
    }
}
} // namespace

EncoderBase::EncoderBase(ILyEncoderCallback* pCallback, ENCODER_DESCRIPTION description)
    : m_pCallback(pCallback), m_Description(std::move(description))
{
}

bool EncoderBase::Fail(int nError, const std::string& strDetail)
{
    if (m_nError == ENCODER_OK)
    {
        m_nError = nError;
        (void)Guarded([&] { m_strDetail = strDetail; }); // the code alone says enough
    }
    return false;
}

bool EncoderBase::EncodeBuffer(unsigned char* pData, int nBytes)
{
    if (m_eState == STATE_IDLE && !Start())
        return false;
    if (m_eState != STATE_RUNNING)
        return false;
    bool bTaken = false;
    if (nBytes < 0 || (pData == nullptr && nBytes > 0))
        (void)Fail(ENCODER_INPUT_READ, "A piece of audio without bytes came.");
    else if (!Guarded([&] { bTaken = Take(pData, static_cast<size_t>(nBytes)); }))
        (void)Fail(ENCODER_NO_MEMORY, {});
    if (!bTaken)
        return Close(false);
    ReportProgress();
    return m_eState == STATE_RUNNING; // who hears of the progress may have stopped it
}

bool EncoderBase::FinishBufferInput()
{
    // Without audio there is nothing to make a file of, but what is wrong with the set-up is told first.
    if (m_eState == STATE_IDLE && !Start())
        return false;
    if (m_eState != STATE_RUNNING)
        return m_eState == STATE_DONE;
    bool bDone = false;
    if (!Guarded([&] { bDone = Finish(); }))
        (void)Fail(ENCODER_NO_MEMORY, {});
    return Close(bDone);
}

// Deliberate: a finished file stays. A rip's end is FinishBufferInput and then Stop.
void EncoderBase::Stop()
{
    if (m_eState != STATE_RUNNING)
        return;
    m_eState = STATE_STOPPED;
    Abandon();
    m_Output.Discard();
    if (m_pCallback != nullptr)
        m_pCallback->OnFinished(this);
}

// Ends the encoding one way or the other.
bool EncoderBase::Close(bool bDone)
{
    m_eState = bDone ? STATE_DONE : STATE_FAILED;
    Abandon();
    m_Output.Discard();
    if (m_pCallback == nullptr)
        return bDone;
    if (!bDone)
    {
        std::wstring strText;
        (void)Guarded(
            [&]
            {
                bool bKnown = false;
                strText = WidenUTF8(GetText("last error", bKnown));
            });
        m_pCallback->OnError(this, -1, strText.c_str());
    }
    m_pCallback->OnFinished(this);
    return bDone;
}

bool EncoderBase::Start()
{
    m_nError = ENCODER_OK;
    m_strDetail.clear();
    m_nFrames = 0;
    m_nPercent = -1;
    m_nPieceBytes = 0;
    bool bStarted = false;
    if (!Guarded([&] { bStarted = CheckSetUp() && Begin(); }))
        (void)Fail(ENCODER_NO_MEMORY, {});
    if (!bStarted)
        return Close(false);
    m_eState = STATE_RUNNING;
    return true;
}

bool EncoderBase::CheckSetUp()
{
    if (!m_strSettingsError.empty())
        return Fail(ENCODER_REFUSED, m_strSettingsError);
    if (!m_Format.GetIsValid())
        return Fail(ENCODER_REFUSED, "Audio comes with a sample rate up to 768000 Hz, 1 to 8 channels and 16, 24 or 32 "
                                     "bits.");
    if (m_nExpectedFrames < 0)
        return Fail(ENCODER_REFUSED, "The number of expected frames is none.");
    if (m_strOutput.empty())
        return Fail(ENCODER_OUTPUT_OPEN, "No output file is set.");
    m_Picture = {};
    std::string strError;
    const int nResult = m_strPicture.empty() ? ENCODER_OK : m_Picture.Load(m_strPicture, strError);
    return nResult == ENCODER_OK || Fail(nResult, strError);
}

bool EncoderBase::Take(const unsigned char* pData, size_t nBytes)
{
    const size_t nFrameBytes = m_Format.GetFrameBytes();
    if (m_nPieceBytes > 0)
    {
        const size_t nMore = std::min(nFrameBytes - m_nPieceBytes, nBytes);
        memcpy(m_aryPiece + m_nPieceBytes, pData, nMore);
        m_nPieceBytes += nMore;
        pData += nMore;
        nBytes -= nMore;
        if (m_nPieceBytes < nFrameBytes)
            return true;
        m_nPieceBytes = 0;
        if (!TakeFrames(m_aryPiece, 1))
            return false;
    }
    const size_t nFrames = nBytes / nFrameBytes;
    if (nFrames > 0 && !TakeFrames(pData, nFrames))
        return false;
    m_nPieceBytes = nBytes % nFrameBytes;
    if (m_nPieceBytes > 0)
        memcpy(m_aryPiece, pData + nFrames * nFrameBytes, m_nPieceBytes);
    return true;
}

bool EncoderBase::TakeFrames(const unsigned char* pData, size_t nFrames)
{
    if (!Encode(pData, nFrames))
        return false;
    m_nFrames += static_cast<long long>(nFrames);
    return true;
}

bool EncoderBase::Finish()
{
    if (m_nPieceBytes > 0)
        return Fail(ENCODER_INPUT_READ, "The audio ends within a frame.");
    if (m_nFrames == 0)
        return Fail(ENCODER_INPUT_READ, "No audio came.");
    // A rip that was broken off ends its input, too. What it has made must not look whole.
    if (m_nExpectedFrames > 0 && m_nFrames != m_nExpectedFrames)
        return Fail(ENCODER_INPUT_READ, std::to_string(m_nExpectedFrames) + " frames of audio were announced, " +
                                            std::to_string(m_nFrames) + " came.");
    return End() && (m_Output.Commit() || FailByOutput());
}

void EncoderBase::ReportProgress()
{
    if (m_pCallback == nullptr || m_nExpectedFrames <= 0)
        return;
    const int nPercent = static_cast<int>(std::min(m_nFrames, m_nExpectedFrames) * 100 / m_nExpectedFrames);
    if (nPercent == m_nPercent)
        return;
    m_nPercent = nPercent;
    m_pCallback->OnProgress(this, nPercent);
}
