#include "AudioSums.h"
#include <algorithm>
#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "frames are read as they lie in memory");

namespace
{
constexpr size_t SAMPLE_BYTES = sizeof(short);
constexpr size_t WORD_SAMPLES = sizeof(uint64_t) / SAMPLE_BYTES;

uint32_t GetFrame(const uint8_t* p)
{
    uint32_t nWord = 0;
    std::memcpy(&nWord, p, sizeof nWord);
    return nWord;
}
} // namespace

void FRAME_SUMS::Add(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex)
{
    // Integers modulo 2^32: the order of the additions is free, so that the sums run side by side.
    constexpr size_t LANES = 4;
    uint32_t aryWords[LANES] = {};
    uint64_t aryProducts[LANES] = {}; // only the low half of their sum is used
    uint64_t aryHigh[LANES] = {};
    size_t i = 0;
    for (; i + LANES <= nFrames; i += LANES)
    {
        for (size_t k = 0; k < LANES; ++k)
        {
            const uint32_t nWord = GetFrame(pFrames + (i + k) * LY_CD_FRAME_BYTES);
            const uint64_t nProduct = static_cast<uint64_t>(nWord) * (nIndex + static_cast<uint32_t>(i + k));
            aryWords[k] += nWord;
            aryProducts[k] += nProduct;
            aryHigh[k] += nProduct >> 32;
        }
    }
    for (; i < nFrames; ++i)
    {
        const uint32_t nWord = GetFrame(pFrames + i * LY_CD_FRAME_BYTES);
        const uint64_t nProduct = static_cast<uint64_t>(nWord) * (nIndex + static_cast<uint32_t>(i));
        aryWords[0] += nWord;
        aryProducts[0] += nProduct;
        aryHigh[0] += nProduct >> 32;
    }
    m_nWords += aryWords[0] + aryWords[1] + aryWords[2] + aryWords[3];
    m_nLow += static_cast<uint32_t>(aryProducts[0] + aryProducts[1] + aryProducts[2] + aryProducts[3]);
    m_nHigh += static_cast<uint32_t>(aryHigh[0] + aryHigh[1] + aryHigh[2] + aryHigh[3]);
}

bool HasNullSample(const uint8_t* pSamples, size_t nSamples)
{
    // A lane that is 0 borrows and has no high bit of its own. A lane above it may be taken for one, never the lowest.
    constexpr uint64_t ONES = 0x0001000100010001;
    uint64_t nFound = 0;
    size_t i = 0;
    for (; i + WORD_SAMPLES <= nSamples; i += WORD_SAMPLES)
    {
        uint64_t nWord = 0;
        std::memcpy(&nWord, pSamples + i * SAMPLE_BYTES, sizeof nWord);
        nFound |= (nWord - ONES) & ~nWord & ONES << 15;
    }
    for (; i < nSamples; ++i)
    {
        if (pSamples[i * SAMPLE_BYTES] == 0 && pSamples[i * SAMPLE_BYTES + 1] == 0)
            return true;
    }
    return nFound != 0;
}

uint32_t AddToCRC32RegisterWithoutNull(uint32_t nRegister, const uint8_t* pSamples, size_t nSamples)
{
    uint16_t aryKept[2 * LY_CD_SECTOR_FRAMES];
    while (nSamples > 0)
    {
        const size_t nPiece = std::min(nSamples, std::size(aryKept));
        size_t nKept = 0;
        for (size_t i = 0; i < nPiece; ++i)
        {
            uint16_t nSample = 0;
            std::memcpy(&nSample, pSamples + i * SAMPLE_BYTES, sizeof nSample);
            aryKept[nKept] = nSample;
            nKept += nSample != 0 ? 1 : 0;
        }
        nRegister = AddToCRC32Register(nRegister, aryKept, nKept * SAMPLE_BYTES);
        pSamples += nPiece * SAMPLE_BYTES;
        nSamples -= nPiece;
    }
    return nRegister;
}

void AudioCRC32::Add(const void* pData, size_t nBytes)
{
    const uint8_t* p = static_cast<const uint8_t*>(pData);
    m_nRegister = AddToCRC32Register(m_nRegister, p, nBytes);
    if (m_bHalf && nBytes > 0)
    {
        const uint8_t arySample[SAMPLE_BYTES] = {m_nHalf, *p++};
        --nBytes;
        m_bHalf = false;
        m_nWithoutNull = AddToCRC32RegisterWithoutNull(m_nWithoutNull, arySample, 1);
    }
    m_nWithoutNull = AddToCRC32RegisterWithoutNull(m_nWithoutNull, p, nBytes / SAMPLE_BYTES);
    if (nBytes % SAMPLE_BYTES != 0)
    {
        m_bHalf = true;
        m_nHalf = p[nBytes - 1];
    }
}

AccurateRipSum::AccurateRipSum(uint32_t nFrames, bool bFirst, bool bLast) : m_nLast(nFrames)
{
    if (bFirst)
        m_nFirst = ACCURATERIP_FIRST_FRAME;
    if (bLast)
        m_nLast = nFrames > ACCURATERIP_LAST_FRAMES ? nFrames - ACCURATERIP_LAST_FRAMES : 0;
}

void AccurateRipSum::Add(const void* pData, size_t nBytes)
{
    const uint8_t* p = static_cast<const uint8_t*>(pData);
    if (m_nPending > 0)
    {
        const size_t nTaken = std::min(nBytes, sizeof m_aryPending - m_nPending);
        std::copy_n(p, nTaken, m_aryPending + m_nPending);
        p += nTaken;
        nBytes -= nTaken;
        m_nPending += nTaken;
        if (m_nPending < sizeof m_aryPending)
            return;
        AddFrames(m_aryPending, 1);
    }
    const size_t nFrames = nBytes / LY_CD_FRAME_BYTES;
    AddFrames(p, nFrames);
    m_nPending = nBytes % LY_CD_FRAME_BYTES;
    std::copy_n(p + nFrames * LY_CD_FRAME_BYTES, m_nPending, m_aryPending);
}

void AccurateRipSum::AddFrames(const uint8_t* pFrames, size_t nFrames)
{
    const uint64_t nEnd = m_nIndex + nFrames;
    const uint64_t nFrom = std::max(m_nIndex, m_nFirst);
    const uint64_t nTo = std::min(nEnd, m_nLast + 1);
    if (nFrom < nTo)
        m_sums.Add(pFrames + (nFrom - m_nIndex) * LY_CD_FRAME_BYTES, nTo - nFrom, static_cast<uint32_t>(nFrom));
    m_nIndex = nEnd;
}
