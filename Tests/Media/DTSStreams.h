// DTS streams for tests: frames with a header and nothing in them, and the packings in which a WAV file may hold them.

#pragma once

#include "DTSHelper.h"
#include <algorithm>
#include <string>

constexpr DTS_STREAM_TYPE ALL_DTS_PACKINGS[] = {DTS_STREAM_14_BIT_LITTLE_ENDIAN, DTS_STREAM_14_BIT_BIG_ENDIAN,
                                                DTS_STREAM_16_BIT_LITTLE_ENDIAN, DTS_STREAM_16_BIT_BIG_ENDIAN};

inline LyBuffer ToBuffer(const std::string& strBytes)
{
    LyBuffer buffer;
    (void)buffer.FromBuffer(strBytes.data(), static_cast<int>(strBytes.size()));
    return buffer;
}

// A frame in 16-bit big-endian words: normal, 31 + 1 deficit samples, no CRC. Behind the header are zeros.
inline std::string MakeDTSFrame(int nFrameBytes, int nSampleBlocks = 16)
{
    std::string strFrame("\x7F\xFE\x80\x01", 4);
    const unsigned int nFields = 0xFC000000U | static_cast<unsigned int>(nSampleBlocks - 1) << 18 |
                                 static_cast<unsigned int>(nFrameBytes - 1) << 4;
    for (int nShift = 24; nShift >= 0; nShift -= 8)
        strFrame += static_cast<char>(nFields >> nShift);
    strFrame.resize(static_cast<size_t>(nFrameBytes), '\0');
    return strFrame;
}

inline std::string MakeDTSFrames(int nFrames, int nFrameBytes)
{
    std::string strStream;
    for (int n = 0; n < nFrames; ++n)
        strStream += MakeDTSFrame(nFrameBytes);
    return strStream;
}

inline std::string SwapBytesOfWords(std::string strWords)
{
    for (size_t n = 0; n + 1 < strWords.size(); n += 2)
        std::swap(strWords[n], strWords[n + 1]);
    return strWords;
}

// Bit by bit, 14 of them in each word; the upper two bits are the sign's, as on a disc. What fills no word is left out.
inline std::string SpreadTo14Bits(const std::string& strStream)
{
    std::string strWords;
    for (size_t nWord = 0; (nWord + 1) * 14 <= strStream.size() * 8; ++nWord)
    {
        unsigned int n = 0;
        for (size_t nBit = nWord * 14; nBit < (nWord + 1) * 14; ++nBit)
            n = n << 1 | (static_cast<unsigned char>(strStream[nBit / 8]) >> (7 - nBit % 8) & 1U);
        if (n & 0x2000)
            n |= 0xC000;
        strWords += static_cast<char>(n >> 8);
        strWords += static_cast<char>(n);
    }
    return strWords;
}

// A stream of 16-bit big-endian words in another packing.
inline std::string PackDTS(const std::string& strStream, DTS_STREAM_TYPE eType)
{
    switch (eType)
    {
    case DTS_STREAM_14_BIT_LITTLE_ENDIAN:
        return SwapBytesOfWords(SpreadTo14Bits(strStream));
    case DTS_STREAM_14_BIT_BIG_ENDIAN:
        return SpreadTo14Bits(strStream);
    case DTS_STREAM_16_BIT_LITTLE_ENDIAN:
        return SwapBytesOfWords(strStream);
    default:
        return strStream;
    }
}
