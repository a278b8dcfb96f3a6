#include "AccurateRipAnswer.h"

namespace
{
constexpr size_t ID_OFFSETS[] = {1, 5, 9};
constexpr size_t ENTRY_SUM_OFFSET = 1;
constexpr size_t ENTRY_FRAME450_OFFSET = 5;

uint32_t GetLittle32(const uint8_t* p)
{
    return p[0] | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16 |
           static_cast<uint32_t>(p[3]) << 24;
}

void PutLittle32(std::vector<uint8_t>& ary, uint32_t n)
{
    for (int nShift = 0; nShift < 32; nShift += 8)
        ary.push_back(static_cast<uint8_t>(n >> nShift));
}

// The bytes of the block have been counted.
ACCURATERIP_BLOCK ReadBlock(const uint8_t* p)
{
    ACCURATERIP_BLOCK block;
    block.m_ID = {p[0], GetLittle32(p + ID_OFFSETS[0]), GetLittle32(p + ID_OFFSETS[1]), GetLittle32(p + ID_OFFSETS[2])};
    block.m_aryEntries.reserve(p[0]);
    for (int i = 0; i < block.m_ID.m_nTracks; ++i)
    {
        const uint8_t* pEntry = p + ACCURATERIP_HEADER_BYTES + static_cast<size_t>(i) * ACCURATERIP_ENTRY_BYTES;
        block.m_aryEntries.push_back(
            {pEntry[0], GetLittle32(pEntry + ENTRY_SUM_OFFSET), GetLittle32(pEntry + ENTRY_FRAME450_OFFSET)});
    }
    return block;
}
} // namespace

ACCURATERIP_ANSWER_ERROR ParseAccurateRipAnswer(const void* pData, size_t nBytes,
                                                std::vector<ACCURATERIP_BLOCK>& aryBlocks, size_t& nBadBlock)
{
    const uint8_t* p = static_cast<const uint8_t*>(pData);
    std::vector<ACCURATERIP_BLOCK> aryRead;
    aryBlocks.clear();
    nBadBlock = 0;
    if (nBytes == 0)
        return ACCURATERIP_ANSWER_EMPTY;
    while (nBadBlock < nBytes)
    {
        if (aryRead.size() == ACCURATERIP_MAX_BLOCKS)
            return ACCURATERIP_ANSWER_TOO_MANY;
        const size_t nTracks = p[nBadBlock];
        if (nTracks < 1 || nTracks > LY_CD_MAX_TRACKS)
            return ACCURATERIP_ANSWER_BAD_COUNT;
        const size_t nBlockBytes = ACCURATERIP_HEADER_BYTES + nTracks * ACCURATERIP_ENTRY_BYTES;
        if (nBytes - nBadBlock < nBlockBytes)
            return ACCURATERIP_ANSWER_CUT_OFF;
        aryRead.push_back(ReadBlock(p + nBadBlock));
        nBadBlock += nBlockBytes;
    }
    aryBlocks.swap(aryRead);
    return ACCURATERIP_ANSWER_OK;
}

std::vector<uint8_t> MakeAccurateRipAnswer(const std::vector<ACCURATERIP_BLOCK>& aryBlocks)
{
    std::vector<uint8_t> ary;
    for (const ACCURATERIP_BLOCK& block : aryBlocks)
    {
        ary.push_back(static_cast<uint8_t>(block.m_aryEntries.size()));
        PutLittle32(ary, block.m_ID.m_nID1);
        PutLittle32(ary, block.m_ID.m_nID2);
        PutLittle32(ary, block.m_ID.m_nCDDB);
        for (const ACCURATERIP_ENTRY& entry : block.m_aryEntries)
        {
            ary.push_back(static_cast<uint8_t>(entry.m_nConfidence));
            PutLittle32(ary, entry.m_nSum);
            PutLittle32(ary, entry.m_nFrame450);
        }
    }
    return ary;
}
