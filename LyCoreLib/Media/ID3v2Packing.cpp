// What may be wrapped around the bytes of a frame: unsynchronisation and compression.

#include "ID3v2Packing.h"
#include "MP3Tag.h"
#include "ZLibHelper.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int SYNC_BYTE = 0xFF;

// The bytes from p on up to and with the first FF, at most nBytes of them.
int MeasureRun(const unsigned char* p, int nBytes)
{
    const void* pSync = memchr(p, SYNC_BYTE, static_cast<size_t>(nBytes));
    return pSync == nullptr ? nBytes : static_cast<int>(static_cast<const unsigned char*>(pSync) - p) + 1;
}
} // namespace

void ID3v2Packing::Append(LyBuffer& buffer, const void* p, int nBytes)
{
    unsigned char* pEnd = nBytes > 0 ? buffer.GetAppendBlock(nBytes, false, LyBuffer::BYTE_WRITER_GROW_BYTES) : nullptr;
    if (pEnd != nullptr)
        memcpy(pEnd, p, static_cast<size_t>(nBytes));
}

int ID3v2Packing::CopyUnsynchronized(const unsigned char* p, int nBytes, unsigned char* pOut, int nLimit, int& nRemoved)
{
    int nRead = 0;
    int nWritten = 0;
    nRemoved = 0;
    while (nRead < nBytes && nWritten < nLimit)
    {
        const int nRun = MeasureRun(p + nRead, std::min(nBytes - nRead, nLimit - nWritten));
        memmove(pOut + nWritten, p + nRead, static_cast<size_t>(nRun));
        nRead += nRun;
        nWritten += nRun;
        if (nRead < nBytes && p[nRead - 1] == SYNC_BYTE && p[nRead] == 0)
        {
            ++nRead;
            ++nRemoved;
        }
    }
    return nWritten;
}

void CID3v2Tag::UnsynchronizeBuffer(LyBuffer& buffer, int nLimit, int* pnRemoved)
{
    const int nBytes = buffer.GetSize();
    int nRemoved = 0;
    // What is written never overtakes what is read.
    const int nWritten = ID3v2Packing::CopyUnsynchronized(buffer.GetData(), nBytes, buffer.GetData(), nLimit, nRemoved);
    (void)buffer.RemoveRight(nBytes - nWritten); // there may be nothing to remove
    if (pnRemoved != nullptr)
        *pnRemoved = nRemoved;
}

void CID3v2Tag::DecompressBuffer(LyBuffer& buffer)
{
    const int nBytes = buffer.GetSize();
    if (nBytes == 0 || nBytes > INT_MAX / INFLATE_FACTOR)
        return; // nothing, or more than a buffer has room for
    const LyPtr<IZLib, IZLib> zlib(CreateZLib(), true, false);
    if (zlib == nullptr)
        return;
    const LyPtr<IZLibBufferDecompressor, IZLibBufferDecompressor> decompressor(zlib->CreateBufferDecompressor(), true,
                                                                               false);
    LyBuffer output(nBytes * INFLATE_FACTOR);
    if (decompressor == nullptr || output.GetSize() == 0)
        return;
    const int nWritten = decompressor->Decompress(buffer.GetData(), nBytes, output.GetData(), output.GetSize());
    if (nWritten >= 0 && nWritten <= output.GetSize())
        buffer.FromBuffer(output.GetData(), nWritten);
}
