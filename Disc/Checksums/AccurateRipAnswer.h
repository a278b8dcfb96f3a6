// AccurateRipAnswer: what the AccurateRip database said about a disc, as a saved file has it.
//
// Shape:   any number of blocks, one for each pressing that was submitted. Multi-byte fields are little-endian.
//
//            byte  0         number of audio tracks, 1 to 99
//                  1, 5, 9   the three identifiers of the disc, four bytes each
//                 13         per track nine bytes: confidence (1), sum (4), sum of sector 450 (4)
//
// Errors:  a file that is cut off, or has a count that no disc has, is refused as a whole: what is damaged in one place
//          is no witness in another. A file of no blocks is refused as well.
// Threads: any.

#pragma once

#include "DiscIdentifiers.h"
#include <cstddef>
#include <cstdint>
#include <vector>

struct ACCURATERIP_ENTRY
{
    int m_nConfidence = 0;    // submissions with these sums, 0 to 255
    uint32_t m_nSum = 0;      // AccurateRip v1 or v2, which it doesn't say; 0 if there is none
    uint32_t m_nFrame450 = 0; // 0 if there is none
};

struct ACCURATERIP_BLOCK
{
    ACCURATERIP_ID m_ID;
    std::vector<ACCURATERIP_ENTRY> m_aryEntries; // as many as tracks
};

enum ACCURATERIP_ANSWER_ERROR : int
{
    ACCURATERIP_ANSWER_OK = 0,
    ACCURATERIP_ANSWER_EMPTY = 1,     // no byte
    ACCURATERIP_ANSWER_BAD_COUNT = 2, // a number of tracks that no disc has
    ACCURATERIP_ANSWER_CUT_OFF = 3,   // the file ends within a block
    ACCURATERIP_ANSWER_TOO_MANY = 4   // more than ACCURATERIP_MAX_BLOCKS
};

constexpr size_t ACCURATERIP_MAX_BLOCKS = 1000; // far more pressings than a disc has
constexpr size_t ACCURATERIP_HEADER_BYTES = 1 + 3 * 4;
constexpr size_t ACCURATERIP_ENTRY_BYTES = 1 + 2 * 4;

// nBadBlock is the offset of the block at fault, or the number of bytes if there is none.
ACCURATERIP_ANSWER_ERROR ParseAccurateRipAnswer(const void* pData, size_t nBytes,
                                                std::vector<ACCURATERIP_BLOCK>& aryBlocks, size_t& nBadBlock);
// The same blocks as bytes again.
std::vector<uint8_t> MakeAccurateRipAnswer(const std::vector<ACCURATERIP_BLOCK>& aryBlocks);
