// CWAVCreator: writes PCM into a wave file, and at the end puts the lengths into its header.
//
// The header is the canonical one of RIFF WAVE, 44 bytes, all numbers little-endian:
//
//     0  "RIFF"    4  file length - 8     8  "WAVE"
//    12  "fmt "   16  16
//    20  tag, 2   22  channels, 2        24  sample rate, 4
//    28  bytes per second, 4             32  block align, 2    34  bits of a sample, 2
//    36  "data"   40  file length - 44
//
// Units:   bytes of PCM.
// Limits:  a RIFF size has 32 bits, so there is room for MAX_DATA_BYTES. Open refuses what is known to become longer,
//          and a write that would pass the limit fails before anything of it is written: the file stays right.
// Errors:  false or -1. What went wrong is known to the writer: who wants its words (GetInfo("Error")) hands one in.
// Threads: one at a time.

#pragma once

#include "AudioFormat.h"
#include "ILyReader.h"
#include "LyPtr.h"

class CWAVCreator
{
public:
    static constexpr int HEADER_BYTES = 44;
    static constexpr int RIFF_SIZE_OFFSET = 4;
    static constexpr int DATA_SIZE_OFFSET = 40;
    static constexpr int RIFF_HEADER_BYTES = 8; // which the RIFF size does not count
    static constexpr long long MAX_DATA_BYTES = 0xFFFFFFFFLL + RIFF_HEADER_BYTES - HEADER_BYTES;
    static constexpr long long UNKNOWN_LENGTH = -1;

    CWAVCreator() = default;
    virtual ~CWAVCreator(); // finalizes what is still open
    CWAVCreator(const CWAVCreator&) = delete;
    CWAVCreator& operator=(const CWAVCreator&) = delete;

    // Makes the file of that name, an existing one is replaced, and writes its header. What was open is finalized
    // first. The format needs channels, a rate and whole bytes, and a tag of its own or an extensible sub-format that
    // is one. nDataBytes is the length that is to come, as far as it is known: beyond MAX_DATA_BYTES nothing is opened.
    // With bSwapBytes the samples come in the other byte order.
    bool Open(const wchar_t* pPath, const CAudioFormat& format, bool bSwapBytes = false,
              long long nDataBytes = UNKNOWN_LENGTH);
    // The same into a writer, which is opened with Create if it is not open, and closed at the end. An owned one is
    // destroyed then, and also if Open fails; one that is not owned is left as it is.
    // A stream cannot be patched: its header says nDataBytes, to which the caller then keeps, or FFFFFFFFh for a length
    // that is not known.
    bool Open(ILyReader* pWriter, bool bOwned, const CAudioFormat& format, bool bSwapBytes = false,
              long long nDataBytes = UNKNOWN_LENGTH);

    // 0, or -1 if not all of it was written. Deliberate: with m_bSwapBytes the caller's own buffer is swapped. It is
    // the one copy of a rip's block, and nobody reads it behind the output.
    int WritePCMData(void* pData, long long nBytes);
    // Patches the header and lets go of the file. Always 0: what fails here is not told.
    int FinalizeWAV();

    CAudioFormat m_Format;
    long long m_nDataBytes = 0; // written so far
    LyPtr<ILyReader, ILyReader> m_pWriter;
    bool m_bOpen = false;
    bool m_bWriteSizes = false; // FinalizeWAV patches the header
    bool m_bSwapBytes = false;

private:
    bool WriteHeader(long long nDataBytes);
    void SwapSamples(unsigned char* pData, long long nBytes) const;
    void PatchSize(int nOffset, unsigned int nSize);
};
