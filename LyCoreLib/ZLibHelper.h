// The zlib service of the tools library.
//
// Ownership: CreateZLib and the operations of IZLib make new objects, which the caller deletes.
// Threads:   an object belongs to one thread at a time.

#pragma once

// A gzip file, open for reading.
class IZLibFile
{
public:
    virtual ~IZLibFile() = default;
    virtual int Read(void* pBuffer, int nBytes) = 0; // the bytes produced; 0 or less at the end or on an error
};

// Both give the bytes written, or -1 if the input is bad or the output does not fit.
class IZLibBufferCompressor
{
public:
    virtual ~IZLibBufferCompressor() = default;
    virtual int Compress(const void* pInput, int nInputBytes, void* pOutput, int nOutputBytes) = 0;
};
class IZLibBufferDecompressor
{
public:
    virtual ~IZLibBufferDecompressor() = default;
    virtual int Decompress(const void* pInput, int nInputBytes, void* pOutput, int nOutputBytes) = 0;
};

// The order of the operations is their order in the virtual table, in which the destructor takes two places.
class IZLib
{
public:
    virtual ~IZLib() = default;
    // The level is zlib's, -1 for its default; the format is 1 for the zlib wrapper (RFC 1950).
    virtual IZLibBufferCompressor* CreateBufferCompressor(int nLevel, int nFormat) = 0;
    virtual IZLibBufferDecompressor* CreateBufferDecompressor() = 0;
    virtual IZLibFile* OpenFile(const wchar_t* pPath) = 0; // null if the file cannot be opened
};

IZLib* CreateZLib(); // loads the tools library first; null without it
