#include "PipeEncoder.h"
#include "EncoderCommand.h"
#include "GlobalMacros.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr size_t WAV_HEADER_BYTES = 44;
constexpr uint32_t WAV_UNKNOWN_BYTES = 0xFFFFFFFF; // readers take all that comes
constexpr int MAX_TIMEOUT_SECONDS = 86400;

void PutNumber(unsigned char* p, uint32_t nNumber, size_t nBytes)
{
    for (size_t i = 0; i < nBytes; ++i)
        p[i] = static_cast<unsigned char>(nNumber >> (8 * i));
}
} // namespace

PipeEncoder::PipeEncoder(ILyEncoderCallback* pCallback) : EncoderBase(pCallback, {"Pipe", "", "command", "a program"})
{
}

PipeEncoder::~PipeEncoder() { PipeEncoder::Abandon(); }

bool PipeEncoder::ApplySettings(EncoderSettings& settings)
{
    m_Settings = {};
    if (!settings.AllowOnly({"input", "timeout", "command"}) ||
        !settings.Get("timeout", 0, MAX_TIMEOUT_SECONDS, m_Settings.nTimeoutSeconds))
        return false;
    if (const std::string* pInput = settings.Find("input"))
    {
        if (*pInput != "wav" && *pInput != "raw")
            return settings.Fail("The setting 'input' is wav or raw, not '" + *pInput + "'.");
        m_Settings.bWavHeader = *pInput == "wav";
    }
    const std::string* pCommand = settings.Find("command");
    if (pCommand == nullptr)
        return true; // the beginning of an encoding asks for it
    std::string strError;
    if (!EncoderSplitCommand(*pCommand, m_Settings.aryArguments, strError))
        return settings.Fail(strError);
    // Unknown placeholders are told now, and not with the first audio.
    const ENCODER_PLACEHOLDER placeholder = [this](char cKind, std::string_view strName, std::string& strText)
    { return GetPlaceholder(cKind, strName, strText); };
    for (const std::string& strArgument : m_Settings.aryArguments)
    {
        std::string strExpanded;
        if (!EncoderExpandArgument(strArgument, placeholder, strExpanded, strError))
            return settings.Fail(strError);
    }
    return true;
}

bool PipeEncoder::GetPlaceholder(char cKind, std::string_view strName, std::string& strText) const
{
    switch (cKind)
    {
    case 'o':
        strText = m_Output.GetTemporaryPath();
        return true;
    case 'p':
        strText = m_strPicture;
        return true;
    case 'r':
        strText = std::to_string(m_Format.nSampleRate);
        return true;
    case 'c':
        strText = std::to_string(m_Format.nChannels);
        return true;
    case 'b':
        strText = std::to_string(m_Format.nBits);
        return true;
    case '{':
        if (const std::string* pValue = m_Tags.Find(strName))
            strText = *pValue;
        return true;
    default:
        return false;
    }
}

bool PipeEncoder::Expand(std::vector<std::string>& aryArguments, bool& bNamesFile)
{
    const ENCODER_PLACEHOLDER placeholder =
        [this, &bNamesFile](char cKind, std::string_view strName, std::string& strText)
    {
        bNamesFile |= cKind == 'o';
        return GetPlaceholder(cKind, strName, strText);
    };
    for (const std::string& strArgument : m_Settings.aryArguments)
    {
        std::string strError;
        if (!EncoderExpandArgument(strArgument, placeholder, aryArguments.emplace_back(), strError))
            return Fail(ENCODER_REFUSED, strError);
    }
    return true;
}

bool PipeEncoder::Begin()
{
    if (m_Settings.aryArguments.empty())
        return Fail(ENCODER_REFUSED, "The setting 'command' is missing.");
    std::vector<std::string> aryArguments;
    bool bNamesFile = false;
    // The temporary name is an argument, so it comes first; whether the command wants it shows then.
    if (!m_Output.OpenForOther(m_strOutput))
        return FailByOutput();
    if (!Expand(aryArguments, bNamesFile))
        return false;
    if (!bNamesFile && !m_Output.Open(m_strOutput))
        return FailByOutput();
    if (!m_Program.Start(aryArguments, bNamesFile ? -1 : m_Output.GetHandle(), m_Settings.nTimeoutSeconds))
        return FailByProgram();
    return !m_Settings.bWavHeader || WriteHeader();
}

// RIFF WAVE, as CWAVCreator.h has it. Beyond 4 GiB a stream has no length.
bool PipeEncoder::WriteHeader()
{
    const uint64_t nBytes = static_cast<uint64_t>(m_nExpectedFrames) * m_Format.GetFrameBytes();
    const bool bKnown = nBytes > 0 && nBytes < WAV_UNKNOWN_BYTES - WAV_HEADER_BYTES;
    const uint32_t nData = bKnown ? static_cast<uint32_t>(nBytes) : WAV_UNKNOWN_BYTES;
    const uint32_t nFrameBytes = static_cast<uint32_t>(m_Format.GetFrameBytes());
    unsigned char aryHeader[WAV_HEADER_BYTES] = {};
    memcpy(aryHeader, "RIFF....WAVEfmt ", 16);
    PutNumber(aryHeader + 4, bKnown ? nData + static_cast<uint32_t>(WAV_HEADER_BYTES) - 8 : WAV_UNKNOWN_BYTES, 4);
    PutNumber(aryHeader + 16, 16, 4); // bytes of the format
    PutNumber(aryHeader + 20, 1, 2);  // PCM
    PutNumber(aryHeader + 22, static_cast<uint32_t>(m_Format.nChannels), 2);
    PutNumber(aryHeader + 24, static_cast<uint32_t>(m_Format.nSampleRate), 4);
    PutNumber(aryHeader + 28, static_cast<uint32_t>(m_Format.nSampleRate) * nFrameBytes, 4);
    PutNumber(aryHeader + 32, nFrameBytes, 2);
    PutNumber(aryHeader + 34, static_cast<uint32_t>(m_Format.nBits), 2);
    memcpy(aryHeader + 36, "data", 4);
    PutNumber(aryHeader + 40, nData, 4);
    return m_Program.Write(aryHeader, sizeof aryHeader) || FailByProgram();
}

bool PipeEncoder::Encode(const unsigned char* pData, size_t nFrames)
{
    return m_Program.Write(pData, nFrames * m_Format.GetFrameBytes()) || FailByProgram();
}

bool PipeEncoder::End() { return m_Program.Finish() || FailByProgram(); }

void PipeEncoder::Abandon() { m_Program.Kill(); }

bool PipeEncoder::FailByProgram() { return Fail(m_Program.GetError(), m_Program.GetDetail()); }

LY_EXPORT ILyEncoder* CreateEncoder(int, ILyEncoderCallback* pCallback)
{
    try
    {
        return new PipeEncoder(pCallback);
    }
    catch (...)
    {
        return nullptr;
    }
}
