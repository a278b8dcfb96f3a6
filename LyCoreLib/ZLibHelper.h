// The zlib service of the tools library, and CZLibHelper, which unpacks gzip files with it.
//
// Ownership: CreateZLib and the operations of IZLib make new objects, which the caller deletes.
// Threads:   an object belongs to one thread at a time. A cancel flag may be set by another thread.

#pragma once

#include "LyBuffer.h"
#include "LyPtr.h"
#include "LyString.h"

// A gzip file, open for reading.
class IZLibFile
{
public:
    virtual ~IZLibFile() = default;
    virtual int Read(void* pBuffer, int nBytes) = 0; // the bytes produced; 0 at the end, less on an error
};

// Both give the bytes written, or -1 if the input is bad or the output does not fit. A service that offers no work on
// buffers leaves them, and the operations that make them, as they are.
class IZLibBufferCompressor
{
public:
    virtual ~IZLibBufferCompressor() = default;
    virtual int Compress(const void*, int /*nInputBytes*/, void* /*pOutput*/, int /*nOutputBytes*/) { return -1; }
};
class IZLibBufferDecompressor
{
public:
    virtual ~IZLibBufferDecompressor() = default;
    virtual int Decompress(const void*, int /*nInputBytes*/, void* /*pOutput*/, int /*nOutputBytes*/) { return -1; }
};

// The order of the operations is their order in the virtual table, in which the destructor takes two places.
class IZLib
{
public:
    virtual ~IZLib() = default;
    // The level is zlib's, -1 for its default; the format is 1 for the zlib wrapper (RFC 1950).
    virtual IZLibBufferCompressor* CreateBufferCompressor(int /*nLevel*/, int /*nFormat*/) { return nullptr; }
    virtual IZLibBufferDecompressor* CreateBufferDecompressor() { return nullptr; }
    virtual IZLibFile* OpenFile(const wchar_t* pPath) = 0; // null if the file cannot be opened
};

IZLib* CreateZLib(); // loads the tools library first; null without it

// Unpacks gzip files (RFC 1952). Without the tools library every operation is false.
//
// A fault in the middle of the data ends it as the end of the file would: the result is what came so far, and true. Who
// needs the whole asks m_bDamaged.
class CZLibHelper
{
public:
    CZLibHelper();

    // Unpacks into strDestination, or, if that is empty, in place. The destination is whole at each moment: the bytes
    // go to a file of that name with ".tmp" behind it, which takes its place at the end, and never stays behind.
    // pCancel may be null; once it points to true the run stops, is false, and leaves the destination as it was.
    bool DecompressFile(LyString strSource, LyString strDestination, volatile bool* pCancel);

    // Deliberate: a cancelled run gives an empty buffer and true. The caller tests the flag, which is his own.
    bool DecompressFileToBuffer(LyString strSource, LyBuffer& output, volatile bool* pCancel);

    LyPtr<IZLib, IZLib> m_pZLib; // null without the tools library; then the others are, too
    LyPtr<IZLibBufferCompressor, IZLibBufferCompressor> m_pCompressor;
    LyPtr<IZLibBufferDecompressor, IZLibBufferDecompressor> m_pDecompressor;
    bool m_bDamaged = false; // a fault has ended what the last operation unpacked

private:
    IZLibFile* OpenFile(const wchar_t* pPath);
};
