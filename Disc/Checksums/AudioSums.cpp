#include "AudioSums.h"
#include <algorithm>
#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "samples are read as they lie in memory");

namespace
{
constexpr size_t SAMPLE_BYTES = sizeof(short);
// Samples that are looked at together.
struct VECTOR
{
    using SAMPLES [[gnu::vector_size(16)]] = short;
};
struct AVX2_VECTOR
{
    using SAMPLES [[gnu::vector_size(32)]] = short;
};

template <class V>
[[gnu::always_inline]] inline bool FindNullSample(const uint8_t* pSamples, size_t nSamples)
{
    using SAMPLES = typename V::SAMPLES;
    constexpr size_t LANES = sizeof(SAMPLES) / SAMPLE_BYTES;
    SAMPLES found{}; // lanes of ones where there was a null sample
    size_t i = 0;
    for (; i + LANES <= nSamples; i += LANES)
    {
        SAMPLES samples;
        std::memcpy(&samples, pSamples + i * SAMPLE_BYTES, sizeof samples);
        found |= samples == 0;
    }
    for (; i < nSamples; ++i)
    {
        if (pSamples[i * SAMPLE_BYTES] == 0 && pSamples[i * SAMPLE_BYTES + 1] == 0)
            return true;
    }
    uint64_t aryFound[sizeof found / sizeof(uint64_t)];
    std::memcpy(aryFound, &found, sizeof found);
    return std::any_of(std::begin(aryFound), std::end(aryFound), [](uint64_t n) { return n != 0; });
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) bool HasNullSampleByAVX2(const uint8_t* pSamples, size_t nSamples)
{
    return FindNullSample<AVX2_VECTOR>(pSamples, nSamples);
}
#endif
} // namespace

bool HasNullSample(const uint8_t* pSamples, size_t nSamples)
{
#if defined(__x86_64__)
    static const bool s_bAVX2 = __builtin_cpu_supports("avx2") != 0;
    if (s_bAVX2)
        return HasNullSampleByAVX2(pSamples, nSamples);
#endif
    return FindNullSample<VECTOR>(pSamples, nSamples);
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
