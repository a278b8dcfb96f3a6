// The sums of audio that need nothing but the audio: CRC-32 with and without null samples, and AccurateRip's sums.
//
// Shape:   16-bit little-endian PCM, stereo, left first, in pieces of any number of bytes, even of odd ones. A frame is
//          one word of 32 bits, left in its low half.
// Errors:  bytes of a frame that never becomes whole count for CRC-32 only.
// Threads: an object belongs to one thread.

#pragma once

#include "CDUnits.h"
#include "CRC32.h"
#include <cstddef>
#include <cstdint>

// AccurateRip leaves out the first frames of a disc's first audio track and the last frames of its last one, because
// drives with an offset can't read them. Frames count from 1: those below the first limit, and those beyond the number
// of frames less the second, are left out.
constexpr int ACCURATERIP_FIRST_FRAME = 5 * LY_CD_SECTOR_FRAMES; // 2940; 2939 frames are left out
constexpr int ACCURATERIP_LAST_FRAMES = 5 * LY_CD_SECTOR_FRAMES; // 2940 frames are left out

// What frames add to the sums, the frame at pFrames having the index nIndex (from 1, below 2^32).
struct FRAME_SUMS
{
    uint32_t m_nWords = 0; // of the frames as words
    uint32_t m_nLow = 0;   // of the low halves of frame times index: AccurateRip v1
    uint32_t m_nHigh = 0;  // of the high halves; added to the low ones this is AccurateRip v2

    // The other two are what machines without AVX2 take, and what the fast one is compared with.
    void Add(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex);
    void AddWithSSE2(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex);
    void AddPlain(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex);
};

// CRC-32 of all bytes, and of what is left when every sample (16 bits) of the value 0 is left out.
class AudioCRC32
{
public:
    void Add(const void* pData, size_t nBytes);
    void AddSamples(const short* pSamples, size_t nSamples) { Add(pSamples, nSamples * sizeof(short)); }
    uint32_t Get() const { return ~m_nRegister; }
    uint32_t GetWithoutNull() const { return ~m_nWithoutNull; }

private:
    uint32_t m_nRegister = CRC32_START;
    uint32_t m_nWithoutNull = CRC32_START;
    bool m_bHalf = false; // the first byte of a sample waits for its second
    uint8_t m_nHalf = 0;
};

// The register after the samples that are not null; the samples begin and end at whole ones.
uint32_t AddToCRC32RegisterWithoutNull(uint32_t nRegister, const uint8_t* pSamples, size_t nSamples);
bool HasNullSample(const uint8_t* pSamples, size_t nSamples);

// AccurateRip's two sums of one track. A track of silence has 0 for both, which never is a match.
// To test a track at an offset, feed it from so many frames later: that is the only way for version 2.
class AccurateRipSum
{
public:
    // nFrames of the whole track, which decides what bLast leaves out; what comes beyond them counts for nothing.
    AccurateRipSum(uint32_t nFrames, bool bFirst, bool bLast);

    void Add(const void* pData, size_t nBytes);
    void AddSamples(const short* pSamples, size_t nSamples) { Add(pSamples, nSamples * sizeof(short)); }
    uint32_t GetVersion1() const { return m_sums.m_nLow; }
    uint32_t GetVersion2() const { return m_sums.m_nLow + m_sums.m_nHigh; }

private:
    void AddFrames(const uint8_t* pFrames, size_t nFrames);

    FRAME_SUMS m_sums;
    uint64_t m_nIndex = 1; // of the next frame
    uint64_t m_nFirst = 1; // what counts, both included
    uint64_t m_nLast = 0;
    uint8_t m_aryPending[LY_CD_FRAME_BYTES] = {};
    size_t m_nPending = 0;
};
