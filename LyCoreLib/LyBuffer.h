// LyBuffer: the byte array of the system.
//
// Shape:   size (bytes in use) and capacity (bytes allocated), both int. The capacity never falls, except when the
//          memory is released entirely (Empty(true), or an operation that says so).
// Errors:  null or false. Negative and excessive counts are answers, not faults; exhausted memory is survived.
// Owner:   the buffer owns its bytes. Pointers into it hold until the next operation that grows or releases it.
// Threads: one at a time.

#pragma once

#include "LyFilename.h"
#include "LyString.h"

class ILyReader;

class LyBuffer
{
public:
    static constexpr int BYTE_WRITER_GROW_BYTES = 16384; // how writers of single bytes let it grow

    LyBuffer() = default;
    explicit LyBuffer(int nBytes, bool bZero = false);
    LyBuffer(const LyBuffer& buffer);
    LyBuffer& operator=(const LyBuffer& buffer);
    ~LyBuffer();

    unsigned char* GetData() { return m_pData; }
    const unsigned char* GetData() const { return m_pData; }
    int GetSize() const { return m_nSize; }
    int GetAllocated() const { return m_nAllocated; }
    void Empty(bool bFreeMemory);

    // Room for nBytes behind the bytes in use (a negative count is 0); gives the address of the old end, null if there
    // is no memory or the size would pass the range of int. Where it must grow, it grows by nGrowBytes or to an exact
    // fit, whichever is more. bAddToSize counts the bytes as in use. The last argument has no meaning.
    unsigned char* GetAppendBlock(int nBytes, bool bZero = false, int nGrowBytes = 0, bool bAddToSize = true,
                                  bool bUnused = false);

    // Takes a copy of nBytes from nStart (-1: all from there). What cannot be had, or is nothing, releases this buffer
    // and gives false.
    bool FromBuffer(const LyBuffer& buffer, int nBytes = -1, int nStart = 0);
    bool FromBuffer(const void* p, int nBytes);

    // Loads the first nMaxBytes (below 1: all) of a file or a URL. Without bAllowReader the reader library is left
    // alone, and a URL fails. A load that takes long shows a wait message.
    bool FromFile(const LyFilename& filename, int nMaxBytes = -1, bool bAllowReader = true);

    // Reads nBytes from an open reader (-1 or -2: all from its position). True if anything came.
    bool FromReader(ILyReader* pReader, int nBytes = -1);

    // Writes the first nBytes (-1: all) as a new file, making its folder. Deliberate: writing nothing leaves an empty
    // file and is false, since callers take an empty result for a failure.
    bool ToFile(const LyFilename& filename, int nBytes = -1) const;
    static bool s_ToFile(const LyFilename& filename, unsigned char* pData, int nBytes);

    bool FromStringBase64(const LyString& str);
    LyString ToStringBase64() const;
    bool FromStringHexDigits(const LyString& str);

    // Looks at nStart and every nStep bytes from there. The offset of the first match, or -1.
    int Search(const unsigned char* pPattern, int nLength, int nStart = 0, int nStep = 1) const;

    // Bits counted from the top bit of the first byte on, at most 32, right-aligned. 0 if they are not all there.
    unsigned int ReadBits(int nBitOffset, int nBits) const;

    bool RemoveRight(int nBytes); // false if nBytes is below 1; what is too many empties it

    // Appends cPad until the size is a multiple of nBlock. False if nBlock is below 1 or memory is out.
    bool PadForBlockAlign(int nBlock, unsigned char cPad, int nGrowBytes = 0);

private:
    bool Reallocate(long long nBytes);
    bool SetSizeForOverwrite(int nBytes);

    unsigned char* m_pData = nullptr;
    int m_nSize = 0;
    int m_nAllocated = 0;
};
