#include "DTSHelper.h"

#include <climits>

namespace
{
constexpr int WORD_BYTES = 2;
constexpr int FOURTEEN_BITS = 14;
constexpr int GROUP_IN_BYTES = DTSHelper::FOURTEEN_BIT_GROUP_WORDS * WORD_BYTES;
constexpr int GROUP_OUT_BYTES = DTSHelper::FOURTEEN_BIT_GROUP_WORDS * FOURTEEN_BITS / CHAR_BIT;
static_assert(GROUP_IN_BYTES == 16 && GROUP_OUT_BYTES == 14);

constexpr int LONGEST_SYNC_BYTES = 6;
constexpr int CUT_FRAME_TYPE_BIT = 0xFE; // of a byte whose lowest bit is no longer the sync word's

bool Is14Bit(int nType) { return nType == DTS_STREAM_14_BIT_LITTLE_ENDIAN || nType == DTS_STREAM_14_BIT_BIG_ENDIAN; }

bool IsLittleEndian(int nType)
{
    return nType == DTS_STREAM_14_BIT_LITTLE_ENDIAN || nType == DTS_STREAM_16_BIT_LITTLE_ENDIAN;
}

bool BeginsWith(const unsigned char* p, unsigned char c0, unsigned char c1, unsigned char c2, unsigned char c3)
{
    return p[0] == c0 && p[1] == c1 && p[2] == c2 && p[3] == c3;
}

using BYTES [[gnu::vector_size(16)]] = unsigned char;
using BYTES_IN_MEMORY [[gnu::vector_size(16), gnu::aligned(1), gnu::may_alias]] = unsigned char;
using HALVES [[gnu::vector_size(16)]] = unsigned long long;
constexpr int VECTOR_BYTES = sizeof(BYTES);

// Whether the first two bytes of any form stand at one of the VECTOR_BYTES places from p on; a byte more than these can
// be read. In music they hardly ever do, and a look at each byte would take longer than all else that opens a file.
bool MayHoldSync(const unsigned char* p)
{
    const BYTES first = *reinterpret_cast<const BYTES_IN_MEMORY*>(p);
    const BYTES second = *reinterpret_cast<const BYTES_IN_MEMORY*>(p + 1);
    const auto IsPair = [&](unsigned char c1, unsigned char c2)
    { return reinterpret_cast<HALVES>((first == c1) & (second == c2)); };
    const HALVES found = IsPair(0xFF, 0x1F) | IsPair(0x1F, 0xFF) | IsPair(0xFE, 0x7F) | IsPair(0x7F, 0xFE);
    return (found[0] | found[1]) != 0;
}

// The form of the sync word that stands at p, of which LONGEST_SYNC_BYTES can be read. The first byte alone tells which
// form it could be, and in music it is mostly none of them.
DTS_STREAM_TYPE GetSyncForm(const unsigned char* p)
{
    switch (p[0])
    {
    case 0xFF:
        if (BeginsWith(p, 0xFF, 0x1F, 0x00, 0xE8) && (p[4] & CUT_FRAME_TYPE_BIT) == 0xF0 && p[5] == 0x07)
            return DTS_STREAM_14_BIT_LITTLE_ENDIAN;
        break;
    case 0x1F:
        if (BeginsWith(p, 0x1F, 0xFF, 0xE8, 0x00) && p[4] == 0x07 && (p[5] & CUT_FRAME_TYPE_BIT) == 0xF0)
            return DTS_STREAM_14_BIT_BIG_ENDIAN;
        break;
    case 0xFE:
        if (BeginsWith(p, 0xFE, 0x7F, 0x01, 0x80))
            return DTS_STREAM_16_BIT_LITTLE_ENDIAN;
        break;
    case 0x7F:
        if (BeginsWith(p, 0x7F, 0xFE, 0x80, 0x01))
            return DTS_STREAM_16_BIT_BIG_ENDIAN;
        break;
    default:
        break;
    }
    return DTS_STREAM_NONE;
}

// Makes the size a multiple of nBlock.
void CutToMultiple(LyBuffer& buffer, int nBlock) { (void)buffer.RemoveRight(buffer.GetSize() % nBlock); }

void SwapWords(LyBuffer& buffer)
{
    unsigned char* p = buffer.GetData();
    for (int n = 0; n + 1 < buffer.GetSize(); n += WORD_BYTES)
    {
        const unsigned char c = p[n];
        p[n] = p[n + 1];
        p[n + 1] = c;
    }
}
} // namespace

bool DTSHelper::SearchForFirstDTSFrame(const LyBuffer& buffer)
{
    m_nStreamType = DTS_STREAM_NONE;
    m_nFirstFrameOffset = NO_FRAME;
    const unsigned char* p = buffer.GetData();
    const int nLast = buffer.GetSize() - LONGEST_SYNC_BYTES;
    for (int nOffset = 0; nOffset <= nLast; ++nOffset)
    {
        while (nOffset + VECTOR_BYTES <= nLast && !MayHoldSync(p + nOffset))
            nOffset += VECTOR_BYTES;
        const DTS_STREAM_TYPE eType = GetSyncForm(p + nOffset);
        if (eType == DTS_STREAM_NONE)
            continue;
        m_nStreamType = eType;
        m_nFirstFrameOffset = nOffset;
        return true;
    }
    return false;
}

bool DTSHelper::Analyze(const LyBuffer& buffer)
{
    if (!SearchForFirstDTSFrame(buffer))
        return false;
    LyBuffer words;
    if (!CopyAsBigEndianWords(buffer, words) || !ParseFrameHeader(m_FirstFrameHeader, words, 0))
        return false;
    return WellFormedFramesPrevail(words);
}

// The stream from its first frame on, as 16-bit big-endian words, whatever its packing.
bool DTSHelper::CopyAsBigEndianWords(const LyBuffer& buffer, LyBuffer& words) const
{
    if (!words.FromBuffer(buffer, -1, m_nFirstFrameOffset))
        return false;
    if (IsLittleEndian(m_nStreamType))
    {
        CutToMultiple(words, WORD_BYTES);
        SwapWords(words);
    }
    if (Is14Bit(m_nStreamType))
    {
        CutToMultiple(words, GROUP_IN_BYTES);
        const int nWords = ConvertFourteenBitDTS(words.GetData(), words.GetSize() / WORD_BYTES, words.GetData());
        (void)words.RemoveRight(words.GetSize() - nWords * WORD_BYTES);
    }
    return true;
}

// Walks from frame to frame. Where none is, each byte counts against the stream, as do those ahead of the first frame.
bool DTSHelper::WellFormedFramesPrevail(const LyBuffer& words) const
{
    long long nGood = m_FirstFrameHeader.m_nFrameBytes;
    long long nErrors = 0;
    FrameHeader header;
    for (long long nPosition = nGood; nPosition + HEADER_BYTES <= words.GetSize();)
    {
        if (ParseFrameHeader(header, words, static_cast<int>(nPosition)))
        {
            nGood += header.m_nFrameBytes;
            nPosition += header.m_nFrameBytes;
            continue;
        }
        ++nErrors;
        ++nPosition;
    }
    return nGood > nErrors + m_nFirstFrameOffset;
}

int DTSHelper::ConvertFourteenBitDTS(const void* pIn, int nWords, void* pOut)
{
    if (pIn == nullptr || pOut == nullptr || nWords < FOURTEEN_BIT_GROUP_WORDS)
        return 0;
    const auto* p = static_cast<const unsigned char*>(pIn);
    auto* pTarget = static_cast<unsigned char*>(pOut);
    const int nGroups = nWords / FOURTEEN_BIT_GROUP_WORDS;
    for (int nGroup = 0; nGroup < nGroups; ++nGroup)
    {
        // Eight words are two halves of 56 bits, seven bytes each. Both are read before anything is written: the
        // result may lie over the source.
        unsigned long long aryHalves[2] = {};
        for (int nWord = 0; nWord < FOURTEEN_BIT_GROUP_WORDS; ++nWord, p += WORD_BYTES)
        {
            constexpr unsigned int FOURTEEN_BIT_MASK = (1U << FOURTEEN_BITS) - 1;
            unsigned long long& nHalf = aryHalves[nWord / (FOURTEEN_BIT_GROUP_WORDS / 2)];
            const unsigned int nBits = (static_cast<unsigned int>(p[0]) << CHAR_BIT | p[1]) & FOURTEEN_BIT_MASK;
            nHalf = nHalf << FOURTEEN_BITS | nBits;
        }
        for (const unsigned long long nHalf : aryHalves)
            for (int nByte = GROUP_OUT_BYTES / 2; nByte-- > 0;)
                *pTarget++ = static_cast<unsigned char>(nHalf >> (nByte * CHAR_BIT));
    }
    return nGroups * GROUP_OUT_BYTES / WORD_BYTES;
}

// | 32 sync | 1 frame type | 5 deficit samples | 1 CRC | 7 sample blocks | 14 frame bytes | ...
bool DTSHelper::ParseFrameHeader(FrameHeader& header, const LyBuffer& buffer, int nOffset)
{
    if (nOffset < 0 || nOffset > buffer.GetSize() - HEADER_BYTES)
        return false;
    const unsigned char* p = buffer.GetData() + nOffset;
    if (!BeginsWith(p, 0x7F, 0xFE, 0x80, 0x01))
        return false;
    // The fields behind the sync word lie in four bytes.
    const unsigned int nFields = static_cast<unsigned int>(p[4]) << 24 | static_cast<unsigned int>(p[5]) << 16 |
                                 static_cast<unsigned int>(p[6]) << 8 | p[7];
    header.m_nSyncWord = SYNC_WORD;
    header.m_nFrameType = static_cast<int>(nFields >> 31);
    header.m_nDeficitSamples = static_cast<int>(nFields >> 26 & 0x1F) + 1;
    header.m_bCRCPresent = (nFields >> 25 & 1) != 0;
    header.m_nSampleBlocks = static_cast<int>(nFields >> 18 & 0x7F) + 1;
    header.m_nFrameBytes = static_cast<int>(nFields >> 4 & 0x3FFF) + 1;
    return header.m_nSampleBlocks >= MIN_SAMPLE_BLOCKS && header.m_nFrameBytes >= MIN_FRAME_BYTES;
}
