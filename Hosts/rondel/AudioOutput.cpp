#include "AudioOutput.h"
#include "CDUnits.h"
#include "HostError.h"
#include "PartialFile.h"
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <sndfile.h>
#include <unistd.h>

namespace
{
constexpr int WAV_HEADER_BYTES = 44;

void PutLE(unsigned char* p, unsigned long long nValue, int nBytes)
{
    for (int i = 0; i < nBytes; ++i)
        p[i] = static_cast<unsigned char>(nValue >> (8 * i));
}

// The canonical header of 44 bytes (Multimedia Programming Interface and Data Specifications 1.0, RIFF WAVE).
std::array<unsigned char, WAV_HEADER_BYTES> MakeHeader(long long nDataBytes)
{
    std::array<unsigned char, WAV_HEADER_BYTES> aryHeader{};
    unsigned char* p = aryHeader.data();
    const unsigned long long nBytes = static_cast<unsigned long long>(nDataBytes);
    std::memcpy(p, "RIFF", 4);
    PutLE(p + 4, nBytes + WAV_HEADER_BYTES - 8, 4);
    std::memcpy(p + 8, "WAVEfmt ", 8);
    PutLE(p + 16, 16, 4);
    PutLE(p + 20, 1, 2); // PCM
    PutLE(p + 22, 2, 2);
    PutLE(p + 24, LY_CD_SAMPLE_RATE, 4);
    PutLE(p + 28, LY_CD_SECOND_BYTES, 4);
    PutLE(p + 32, LY_CD_FRAME_BYTES, 2);
    PutLE(p + 34, 16, 2);
    std::memcpy(p + 36, "data", 4);
    PutLE(p + 40, nBytes, 4);
    return aryHeader;
}

// A WAV into a stream that cannot be rewound. CLOSE is the function that ends the stream, null for one that stays.
class StreamOutput : public AudioOutput
{
public:
    using CLOSE = int (*)(FILE*);

    StreamOutput(FILE* pStream, CLOSE pClose, long long nExpectedBytes) : m_pStream(pStream), m_pClose(pClose)
    {
        const auto aryHeader = MakeHeader(nExpectedBytes);
        Write(aryHeader.data(), WAV_HEADER_BYTES);
    }
    ~StreamOutput() override
    {
        if (m_pClose != nullptr && m_pStream != nullptr)
            (void)m_pClose(m_pStream);
    }
    void Write(const unsigned char* pData, int nBytes) override
    {
        if (std::fwrite(pData, 1, static_cast<size_t>(nBytes), m_pStream) != static_cast<size_t>(nBytes))
            ThrowFailure();
    }
    void Finish() override
    {
        if (std::fflush(m_pStream) != 0)
            ThrowFailure();
        if (m_pClose == nullptr)
            return;
        const int nStatus = m_pClose(m_pStream);
        m_pStream = nullptr;
        if (nStatus != 0)
            ThrowFailure();
    }

private:
    [[noreturn]] static void ThrowFailure()
    {
        if (errno == EPIPE)
            throw HostError("the program that takes the audio has ended early; start it again, or use -o FILE.wav.");
        throw HostError(std::string("the audio could not be written to its end (") + std::strerror(errno) +
                        "); choose another place with -o FILE.wav.");
    }

    FILE* m_pStream;
    CLOSE m_pClose;
};

[[noreturn]] void ThrowNotWritable(const std::string& strPath)
{
    throw HostError(strPath + " cannot be written (" + std::strerror(errno) +
                    "); choose a folder that is there and that you may write to.");
}

class FileOutput : public AudioOutput
{
public:
    explicit FileOutput(const std::string& strPath) : m_strPath(strPath), m_Partial(strPath)
    {
        if (!m_Partial.GetIsOpen())
            ThrowNotWritable(strPath);
        SF_INFO info{};
        info.samplerate = LY_CD_SAMPLE_RATE;
        info.channels = 2;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        m_pFile = sf_open_fd(m_Partial.TakeDescriptor(), SFM_WRITE, &info, SF_TRUE);
        if (m_pFile == nullptr)
            ThrowFailure();
    }
    ~FileOutput() override
    {
        if (m_pFile != nullptr)
            sf_close(m_pFile);
    }
    void Write(const unsigned char* pData, int nBytes) override
    {
        if (sf_write_raw(m_pFile, pData, nBytes) != nBytes)
            ThrowFailure();
    }
    void Finish() override
    {
        SNDFILE* pFile = m_pFile;
        m_pFile = nullptr;
        if (sf_close(pFile) != 0 || !m_Partial.Finish())
            ThrowFailure();
    }

private:
    [[noreturn]] void ThrowFailure() const
    {
        throw HostError(m_strPath + " could not be written to its end; is the disk full? Choose another place.");
    }

    std::string m_strPath;
    PartialFile m_Partial;
    SNDFILE* m_pFile = nullptr;
};

std::unique_ptr<AudioOutput> OpenFile(const std::string& strPath, long long nExpectedBytes)
{
    const OUTPUT_PLACE place = FindOutputPlace(strPath);
    if (place.bFile)
        return std::make_unique<FileOutput>(place.strPath);
    FILE* pStream = std::fopen(place.strPath.c_str(), "wb");
    if (pStream == nullptr)
        ThrowNotWritable(strPath);
    return std::make_unique<StreamOutput>(pStream, std::fclose, nExpectedBytes);
}
} // namespace

std::unique_ptr<AudioOutput> AudioOutput::Create(const std::string& strTarget, long long nExpectedBytes)
{
    // A player or pipe that goes away is an error to report, not a signal to die of.
    std::signal(SIGPIPE, SIG_IGN);
    if (strTarget == "-")
    {
        if (isatty(STDOUT_FILENO))
            throw HostError("standard output is a terminal; pipe it into a program, or use -o FILE.wav.");
        return std::make_unique<StreamOutput>(stdout, nullptr, nExpectedBytes);
    }
    return OpenFile(strTarget, nExpectedBytes);
}
