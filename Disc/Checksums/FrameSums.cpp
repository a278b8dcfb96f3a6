// AccurateRip's sums, several frames at a time. All of it is modulo 2^32, so that the order of the additions is free.

#include "AudioSums.h"
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

static_assert(std::endian::native == std::endian::little, "frames are read as they lie in memory");

void FRAME_SUMS::AddPlain(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex)
{
    for (size_t i = 0; i < nFrames; ++i, pFrames += LY_CD_FRAME_BYTES)
    {
        uint32_t nWord = 0;
        std::memcpy(&nWord, pFrames, sizeof nWord);
        const uint64_t nProduct = static_cast<uint64_t>(nWord) * (nIndex + static_cast<uint32_t>(i));
        m_nWords += nWord;
        m_nLow += static_cast<uint32_t>(nProduct);
        m_nHigh += static_cast<uint32_t>(nProduct >> 32);
    }
}

#if defined(__x86_64__)
namespace
{
// Both ways multiply every other lane into a whole product. Added lane by lane, the low halves of products gather in
// the even lanes and their high halves in the odd ones.
template <size_t LANES>
void AddLanes(FRAME_SUMS& sums, const uint32_t (&aryWords)[LANES], const uint32_t (&aryProducts)[LANES])
{
    for (size_t i = 0; i < LANES; i += 2)
    {
        sums.m_nWords += aryWords[i] + aryWords[i + 1];
        sums.m_nLow += aryProducts[i];
        sums.m_nHigh += aryProducts[i + 1];
    }
}

// Each answers how many frames it has added: whole vectors only.
size_t AddBySSE2(FRAME_SUMS& sums, const uint8_t* pFrames, size_t nFrames, uint32_t nIndex)
{
    constexpr size_t LANES = 4;
    const size_t nVectors = nFrames / LANES;
    const __m128i indices = _mm_set1_epi32(static_cast<int>(nIndex));
    const __m128i step = _mm_set1_epi32(LANES);
    __m128i evenIndices = _mm_add_epi32(indices, _mm_setr_epi32(0, 0, 2, 0));
    __m128i oddIndices = _mm_add_epi32(indices, _mm_setr_epi32(1, 0, 3, 0));
    __m128i words = _mm_setzero_si128();
    __m128i evenProducts = words;
    __m128i oddProducts = words;
    for (size_t i = 0; i < nVectors; ++i)
    {
        const auto* pVector = reinterpret_cast<const __m128i*>(pFrames + i * LANES * LY_CD_FRAME_BYTES);
        const __m128i frames = _mm_loadu_si128(pVector);
        words = _mm_add_epi32(words, frames);
        evenProducts = _mm_add_epi32(evenProducts, _mm_mul_epu32(frames, evenIndices));
        oddProducts = _mm_add_epi32(oddProducts, _mm_mul_epu32(_mm_srli_epi64(frames, 32), oddIndices));
        evenIndices = _mm_add_epi32(evenIndices, step);
        oddIndices = _mm_add_epi32(oddIndices, step);
    }
    uint32_t aryWords[LANES];
    uint32_t aryProducts[LANES];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(aryWords), words);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(aryProducts), _mm_add_epi32(evenProducts, oddProducts));
    AddLanes(sums, aryWords, aryProducts);
    return nVectors * LANES;
}

__attribute__((target("avx2"))) size_t AddByAVX2(FRAME_SUMS& sums, const uint8_t* pFrames, size_t nFrames,
                                                 uint32_t nIndex)
{
    constexpr size_t LANES = 8;
    const size_t nVectors = nFrames / LANES;
    const __m256i indices = _mm256_set1_epi32(static_cast<int>(nIndex));
    const __m256i step = _mm256_set1_epi32(LANES);
    __m256i evenIndices = _mm256_add_epi32(indices, _mm256_setr_epi32(0, 0, 2, 0, 4, 0, 6, 0));
    __m256i oddIndices = _mm256_add_epi32(indices, _mm256_setr_epi32(1, 0, 3, 0, 5, 0, 7, 0));
    __m256i words = _mm256_setzero_si256();
    __m256i evenProducts = words;
    __m256i oddProducts = words;
    for (size_t i = 0; i < nVectors; ++i)
    {
        const auto* pVector = reinterpret_cast<const __m256i*>(pFrames + i * LANES * LY_CD_FRAME_BYTES);
        const __m256i frames = _mm256_loadu_si256(pVector);
        words = _mm256_add_epi32(words, frames);
        evenProducts = _mm256_add_epi32(evenProducts, _mm256_mul_epu32(frames, evenIndices));
        oddProducts = _mm256_add_epi32(oddProducts, _mm256_mul_epu32(_mm256_srli_epi64(frames, 32), oddIndices));
        evenIndices = _mm256_add_epi32(evenIndices, step);
        oddIndices = _mm256_add_epi32(oddIndices, step);
    }
    uint32_t aryWords[LANES];
    uint32_t aryProducts[LANES];
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(aryWords), words);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(aryProducts), _mm256_add_epi32(evenProducts, oddProducts));
    AddLanes(sums, aryWords, aryProducts);
    return nVectors * LANES;
}
} // namespace

void FRAME_SUMS::Add(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex)
{
    static const bool s_bAVX2 = __builtin_cpu_supports("avx2") != 0;
    const size_t nDone =
        s_bAVX2 ? AddByAVX2(*this, pFrames, nFrames, nIndex) : AddBySSE2(*this, pFrames, nFrames, nIndex);
    AddPlain(pFrames + nDone * LY_CD_FRAME_BYTES, nFrames - nDone, nIndex + static_cast<uint32_t>(nDone));
}

void FRAME_SUMS::AddWithSSE2(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex)
{
    const size_t nDone = AddBySSE2(*this, pFrames, nFrames, nIndex);
    AddPlain(pFrames + nDone * LY_CD_FRAME_BYTES, nFrames - nDone, nIndex + static_cast<uint32_t>(nDone));
}
#else
void FRAME_SUMS::Add(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex) { AddPlain(pFrames, nFrames, nIndex); }
void FRAME_SUMS::AddWithSSE2(const uint8_t* pFrames, size_t nFrames, uint32_t nIndex)
{
    AddPlain(pFrames, nFrames, nIndex);
}
#endif
