#include "ZLibService.h"

#include "LyFilename.h"
#include "UTF8.h"
#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace
{
constexpr unsigned char GZIP_MAGIC[] = {0x1F, 0x8B, Z_DEFLATED}; // RFC 1952, 2.3: ID1, ID2, CM
constexpr int GZIP_WINDOW_BITS = 16 + MAX_WBITS;                 // zlib's way to ask for a gzip header

int OpenRegularFile(const wchar_t* pPath)
{
    const LyString strPath = LyFilename(pPath).GetFilenameForUseWithOperatingSystem();
    const std::string strName = NarrowUTF8(static_cast<const wchar_t*>(strPath));
    const int nDescriptor = open(strName.c_str(),
                                 O_RDONLY | O_CLOEXEC | O_NONBLOCK); // a pipe is not waited for
    struct stat status;
    if (nDescriptor < 0 || (fstat(nDescriptor, &status) == 0 && S_ISREG(status.st_mode)))
        return nDescriptor;
    (void)close(nDescriptor);
    return -1;
}

class ZLibFile final : public IZLibFile
{
public:
    explicit ZLibFile(int nDescriptor) : m_nDescriptor(nDescriptor) {} // owned
    ~ZLibFile() override
    {
        if (m_bInflating)
            (void)inflateEnd(&m_Stream);
        (void)close(m_nDescriptor);
    }
    ZLibFile(const ZLibFile&) = delete;
    ZLibFile& operator=(const ZLibFile&) = delete;

    bool Begin()
    {
        m_bInflating = inflateInit2(&m_Stream, GZIP_WINDOW_BITS) == Z_OK;
        return m_bInflating && IsAtMember();
    }

    int Read(void* pBuffer, int nBytes) override
    {
        if (pBuffer == nullptr || nBytes < 0)
            return -1;
        m_Stream.next_out = static_cast<Bytef*>(pBuffer);
        m_Stream.avail_out = static_cast<uInt>(nBytes);
        while (m_Stream.avail_out > 0 && m_eState == READING)
            m_eState = Step();
        const int nDone = nBytes - static_cast<int>(m_Stream.avail_out);
        return nDone == 0 && m_eState == FAILED ? -1 : nDone;
    }

private:
    enum STATE
    {
        READING,
        ENDED,
        FAILED
    };

    STATE Step()
    {
        if (m_Stream.avail_in == 0 && !Fill())
            return FAILED; // a stream that has not ended yet
        const int nResult = inflate(&m_Stream, Z_NO_FLUSH);
        if (nResult == Z_STREAM_END)
        {
            if (!IsAtMember())
                return ENDED;
            return inflateReset(&m_Stream) == Z_OK ? READING : FAILED;
        }
        return nResult == Z_OK ? READING : FAILED;
    }

    // Another member begins here. What is looked at stays in the buffer.
    bool IsAtMember()
    {
        while (m_Stream.avail_in < sizeof GZIP_MAGIC && Fill())
            ;
        return m_Stream.avail_in >= sizeof GZIP_MAGIC &&
               std::equal(std::begin(GZIP_MAGIC), std::end(GZIP_MAGIC), m_Stream.next_in);
    }

    // Moves what is left to the start of the buffer, and reads on behind it.
    // False at the end and on an error.
    bool Fill()
    {
        std::copy_n(m_Stream.next_in, m_Stream.avail_in, m_aryInput.begin());
        m_Stream.next_in = m_aryInput.data();
        ssize_t nRead;
        do
        {
            nRead = read(m_nDescriptor, m_aryInput.data() + m_Stream.avail_in, m_aryInput.size() - m_Stream.avail_in);
        } while (nRead < 0 && errno == EINTR);
        if (nRead <= 0)
            return false;
        m_Stream.avail_in += static_cast<uInt>(nRead);
        return true;
    }

    int m_nDescriptor;
    bool m_bInflating = false;
    STATE m_eState = READING;
    std::array<Bytef, 16384> m_aryInput;
    z_stream m_Stream{};
};

class BufferCompressor final : public IZLibBufferCompressor
{
public:
    explicit BufferCompressor(int nLevel) : m_nLevel(nLevel) {}

    int Compress(const void* pInput, int nInputBytes, void* pOutput, int nOutputBytes) override
    {
        if (nInputBytes < 0 || nOutputBytes < 0 || pOutput == nullptr || (pInput == nullptr && nInputBytes > 0))
            return -1;
        uLongf nWritten = static_cast<uLongf>(nOutputBytes);
        const int nResult = compress2(static_cast<Bytef*>(pOutput), &nWritten, static_cast<const Bytef*>(pInput),
                                      static_cast<uLong>(nInputBytes), m_nLevel);
        return nResult == Z_OK ? static_cast<int>(nWritten) : -1;
    }

private:
    int m_nLevel;
};

class BufferDecompressor final : public IZLibBufferDecompressor
{
public:
    int Decompress(const void* pInput, int nInputBytes, void* pOutput, int nOutputBytes) override
    {
        if (nInputBytes < 0 || nOutputBytes < 0 || pInput == nullptr || (pOutput == nullptr && nOutputBytes > 0))
            return -1;
        uLongf nWritten = static_cast<uLongf>(nOutputBytes);
        const int nResult = uncompress(static_cast<Bytef*>(pOutput), &nWritten, static_cast<const Bytef*>(pInput),
                                       static_cast<uLong>(nInputBytes));
        return nResult == Z_OK ? static_cast<int>(nWritten) : -1;
    }
};
} // namespace

IZLibBufferCompressor* ZLibService::CreateBufferCompressor(int nLevel, int nFormat)
{
    if (nLevel < Z_DEFAULT_COMPRESSION || nLevel > Z_BEST_COMPRESSION || nFormat != FORMAT_ZLIB)
        return nullptr;
    return new (std::nothrow) BufferCompressor(nLevel);
}

IZLibBufferDecompressor* ZLibService::CreateBufferDecompressor() { return new (std::nothrow) BufferDecompressor; }

IZLibFile* ZLibService::OpenFile(const wchar_t* pPath)
{
    if (pPath == nullptr || *pPath == 0)
        return nullptr;
    try
    {
        const int nDescriptor = OpenRegularFile(pPath);
        if (nDescriptor < 0)
            return nullptr;
        auto* pFile = new (std::nothrow) ZLibFile(nDescriptor);
        if (pFile == nullptr)
            (void)close(nDescriptor);
        std::unique_ptr<ZLibFile> file(pFile);
        return file != nullptr && file->Begin() ? file.release() : nullptr;
    }
    catch (const std::exception&)
    {
        return nullptr; // no memory
    }
}
