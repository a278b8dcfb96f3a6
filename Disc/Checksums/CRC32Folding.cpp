// CRC-32 sixteen bytes at a time on machines that multiply without carry.
//
// A message is congruent to a shorter one: 128 bits far ahead may be replaced by their product with the power of x that
// lies between, modulo the polynomial, added to the 128 bits there. Four sums run side by side over the data, are
// folded into one, and the sixteen bytes that remain go through the tables like any others. Exact, like the tables.

#include "CRC32Details.h"

#if defined(__x86_64__)
#include <immintrin.h>

namespace
{
constexpr uint64_t FOLD_BYTES = 16;
constexpr uint64_t LANES = 4;

// The product of two reflected values of 64 bits lies one bit too low; a factor shifted by one mends that.
constexpr long long FoldingFactor(uint64_t nExponent)
{
    return static_cast<long long>(static_cast<uint64_t>(GetCRC32Power(nExponent)) << 1);
}

// Moving 128 bits over nBits: the half that comes first in memory stands 64 bits higher; 32 less is the register's.
constexpr long long FirstHalfFactor(uint64_t nBits) { return FoldingFactor(nBits + 32); }
constexpr long long SecondHalfFactor(uint64_t nBits) { return FoldingFactor(nBits - 32); }

__attribute__((target("pclmul"))) inline __m128i Fold(__m128i sum, __m128i factors, __m128i next)
{
    const __m128i first = _mm_clmulepi64_si128(sum, factors, 0x00);
    const __m128i second = _mm_clmulepi64_si128(sum, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(first, second), next);
}

inline __m128i Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

__attribute__((target("pclmul"))) uint32_t AddByFolding(uint32_t nRegister, const uint8_t* p, uint64_t nBytes)
{
    if (nBytes < LANES * FOLD_BYTES)
        return AddToCRC32RegisterByTables(nRegister, p, nBytes);
    const __m128i far = _mm_set_epi64x(SecondHalfFactor(LANES * 128), FirstHalfFactor(LANES * 128));
    const __m128i near = _mm_set_epi64x(SecondHalfFactor(128), FirstHalfFactor(128));
    __m128i arySums[LANES] = {Load(p), Load(p + 16), Load(p + 32), Load(p + 48)};
    arySums[0] = _mm_xor_si128(arySums[0], _mm_cvtsi32_si128(static_cast<int>(nRegister)));
    p += LANES * FOLD_BYTES;
    nBytes -= LANES * FOLD_BYTES;
    for (; nBytes >= LANES * FOLD_BYTES; nBytes -= LANES * FOLD_BYTES, p += LANES * FOLD_BYTES)
    {
        for (uint64_t k = 0; k < LANES; ++k)
            arySums[k] = Fold(arySums[k], far, Load(p + k * FOLD_BYTES));
    }
    __m128i sum = arySums[0];
    for (uint64_t k = 1; k < LANES; ++k)
        sum = Fold(sum, near, arySums[k]);
    for (; nBytes >= FOLD_BYTES; nBytes -= FOLD_BYTES, p += FOLD_BYTES)
        sum = Fold(sum, near, Load(p));
    uint8_t aryRest[FOLD_BYTES];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(aryRest), sum);
    return AddToCRC32RegisterByTables(AddToCRC32RegisterByTables(0, aryRest, FOLD_BYTES), p, nBytes);
}
} // namespace

CRC32_UPDATE GetFoldingCRC32() { return __builtin_cpu_supports("pclmul") ? AddByFolding : nullptr; }

#else

CRC32_UPDATE GetFoldingCRC32() { return nullptr; }

#endif
