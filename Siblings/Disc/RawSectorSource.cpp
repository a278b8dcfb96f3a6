#include "SectorSource.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// A file whose bytes are sectors. pread keeps no position, so that tracks may share one source at no cost.
class RawSectorSource : public SectorSource
{
public:
    RawSectorSource(int nFile, long long nBytes, bool bSwapBytes)
        : m_nFile(nFile), m_nBytes(nBytes), m_bSwapBytes(bSwapBytes)
    {
    }
    ~RawSectorSource() override { (void)close(m_nFile); } // opened for reading: there is nothing that could be lost

    long long GetBytes() const override { return m_nBytes; }

    int Read(long long nOffset, unsigned char* pBuffer, int nBytes) override
    {
        int nDone = 0;
        while (nOffset >= 0 && nDone < nBytes)
        {
            ssize_t nRead = pread(m_nFile, pBuffer + nDone, static_cast<size_t>(nBytes - nDone), nOffset + nDone);
            if (nRead < 0 && errno == EINTR)
                continue;
            if (nRead <= 0)
                break;
            nDone += static_cast<int>(nRead);
        }
        if (m_bSwapBytes)
            SwapBytePairs(pBuffer, nDone);
        return nDone;
    }

private:
    int m_nFile;
    long long m_nBytes;
    bool m_bSwapBytes;
};
} // namespace

void SwapBytePairs(unsigned char* pBytes, int nBytes)
{
    constexpr uint64_t LOW_BYTES = 0x00FF00FF00FF00FF;
    int n = 0;
    for (; n + 8 <= nBytes; n += 8) // compilers turn this into vector code
    {
        uint64_t nWords;
        memcpy(&nWords, pBytes + n, sizeof nWords);
        nWords = (nWords & LOW_BYTES) << 8 | (nWords >> 8 & LOW_BYTES);
        memcpy(pBytes + n, &nWords, sizeof nWords);
    }
    for (; n + 2 <= nBytes; n += 2)
    {
        unsigned char nFirst = pBytes[n];
        pBytes[n] = pBytes[n + 1];
        pBytes[n + 1] = nFirst;
    }
}

std::unique_ptr<SectorSource> OpenRawSectorSource(const std::string& strPath, bool bSwapBytes, std::string& strError)
{
    int nFile = open(strPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); // a pipe must not hold us up; it is refused
    if (nFile < 0)
    {
        strError = "the file \"" + strPath + "\" cannot be opened (" + strerror(errno) + "); check its permissions";
        return nullptr;
    }
    struct stat info = {};
    if (fstat(nFile, &info) != 0 || !S_ISREG(info.st_mode))
        strError = "\"" + strPath + "\" is not a plain file; name the image file itself";
    else if (info.st_size <= 0)
        strError = "the file \"" + strPath + "\" is empty; copy it again from where it came from";
    else
        return std::make_unique<RawSectorSource>(nFile, info.st_size, bSwapBytes);
    (void)close(nFile);
    return nullptr;
}
