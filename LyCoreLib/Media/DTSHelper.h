// DTSHelper: finds out whether the data of a WAV file is a DTS stream laid into it as if it were PCM, so that it is not
// played as noise.
//
// Data:    the first bytes of the audio data, as they lie in the file. The stream may begin anywhere in them.
// Source:  ETSI TS 102 114, core frame header; the 14-bit packings are those of DTS on a compact disc.
// Errors:  false. What was found of a stream that was not taken for one stays in the type and the offset.
// Threads: one at a time. The packing and the header are plain functions.

#pragma once

#include "LyBuffer.h"
#include <cstddef>

// How the words of a stream lie in the file. The sync word 7FFE8001h has these forms:
enum DTS_STREAM_TYPE : int
{
    DTS_STREAM_NONE = 0,
    DTS_STREAM_14_BIT_LITTLE_ENDIAN = 1, // FF 1F 00 E8 F0|F1 07
    DTS_STREAM_14_BIT_BIG_ENDIAN = 2,    // 1F FF E8 00 07 F0|F1
    DTS_STREAM_16_BIT_LITTLE_ENDIAN = 3, // FE 7F 01 80
    DTS_STREAM_16_BIT_BIG_ENDIAN = 4     // 7F FE 80 01
};

class DTSHelper
{
public:
    static constexpr int MAX_TEST_BYTES = 0x40000;     // what callers hand to Analyze, at most
    static constexpr int HEADER_BYTES = 15;            // must be there for a header to be read
    static constexpr int MIN_SAMPLE_BLOCKS = 5;        // of a frame
    static constexpr int MIN_FRAME_BYTES = 95;         // of a frame
    static constexpr int SYNC_WORD = 0x7FFE8001;       // as the first 32 bits of a frame in 16-bit big-endian words
    static constexpr int NO_FRAME = -1;                // as an offset
    static constexpr int FOURTEEN_BIT_GROUP_WORDS = 8; // 112 bits, which fill 7 words of 16

    struct FrameHeader
    {
        int m_nSyncWord = 0;        // bits 0 to 31
        int m_nFrameType = 0;       // bit 32; 1 is a normal frame
        int m_nDeficitSamples = 0;  // bits 33 to 37, plus 1
        bool m_bCRCPresent = false; // bit 38
        int m_nSampleBlocks = 0;    // bits 39 to 45, plus 1; of 32 samples each
        int m_nFrameBytes = 0;      // bits 46 to 59, plus 1
    };

    // True if the buffer holds a DTS stream: from the first sync word on, the bytes of well-formed frames outweigh all
    // others, and those ahead of it, too.
    bool Analyze(const LyBuffer& buffer);

    // The first of the four forms of the sync word, at any byte; sets type and offset.
    bool SearchForFirstDTSFrame(const LyBuffer& buffer);

    // Packs 14-bit words, each in the low bits of a big-endian word, into words of 16 bits, big-endian as well. A last
    // group of fewer than FOURTEEN_BIT_GROUP_WORDS is left out. pOut may be pIn. The words written: 7 for every 8.
    static int ConvertFourteenBitDTS(const void* pIn, int nWords, void* pOut);

    // Reads the header of a frame in 16-bit big-endian words. False if there is none at nOffset, or one that no frame
    // has; without HEADER_BYTES or the sync word the header is left alone.
    static bool ParseFrameHeader(FrameHeader& header, const LyBuffer& buffer, int nOffset);

    unsigned char m_cReserved = 0; // nothing here uses it
    int m_nStreamType = DTS_STREAM_NONE;
    int m_nFirstFrameOffset = NO_FRAME; // in the data, bytes
    FrameHeader m_FirstFrameHeader;

private:
    bool CopyAsBigEndianWords(const LyBuffer& buffer, LyBuffer& words) const;
    bool WellFormedFramesPrevail(const LyBuffer& words) const;
};
static_assert(offsetof(DTSHelper, m_nStreamType) == 4 && offsetof(DTSHelper, m_nFirstFrameOffset) == 8);
static_assert(offsetof(DTSHelper, m_FirstFrameHeader) == 12 && sizeof(DTSHelper) == 36);
static_assert(offsetof(DTSHelper::FrameHeader, m_bCRCPresent) == 12 &&
              offsetof(DTSHelper::FrameHeader, m_nSampleBlocks) == 16 && sizeof(DTSHelper::FrameHeader) == 24);
