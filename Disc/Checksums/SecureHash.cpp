#include "SecureHash.h"
#include <algorithm>
#include <bit>
#include <cstring>

namespace
{
constexpr size_t LENGTH_BYTES = 8; // the length in bits at the end of the last block

uint32_t Get32(const uint8_t* p)
{
    return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 | static_cast<uint32_t>(p[2]) << 8 |
           p[3];
}

template <class DIGEST, class STATE>
DIGEST MakeDigest(const STATE& aryState)
{
    DIGEST digest{};
    for (size_t i = 0; i < digest.size(); ++i)
        digest[i] = static_cast<uint8_t>(aryState[i / 4] >> (24 - 8 * (i % 4)));
    return digest;
}

// FIPS 180-4, 4.2.2 and 5.3.3: 32 bits of the fractions of the square roots of the first eight primes, and of the cube
// roots of the first 64. Integer roots find them: the root of p * 2^64, and of p * 2^96.
__extension__ typedef unsigned __int128 WIDE;

constexpr uint32_t FractionOfRoot(uint32_t nPrime, bool bCube)
{
    uint64_t nRoot = 0; // of the prime shifted so that 32 bits of the root are fraction; below 2^36
    for (int nBit = 35; nBit >= 0; --nBit)
    {
        const uint64_t nTry = nRoot | 1ULL << nBit;
        // The cube of 36 bits fits in 108 bits, and so does p * 2^96 for p below 2^9.
        const WIDE nPower = bCube ? static_cast<WIDE>(nTry) * nTry * nTry : static_cast<WIDE>(nTry) * nTry;
        if (nPower <= static_cast<WIDE>(nPrime) << (bCube ? 96 : 64))
            nRoot = nTry;
    }
    return static_cast<uint32_t>(nRoot);
}

template <size_t COUNT>
constexpr std::array<uint32_t, COUNT> MakeFractions(bool bCube)
{
    std::array<uint32_t, COUNT> ary{};
    size_t nFound = 0;
    for (uint32_t n = 2; nFound < COUNT; ++n)
    {
        bool bPrime = true;
        for (uint32_t nDivisor = 2; nDivisor * nDivisor <= n; ++nDivisor)
            bPrime = bPrime && n % nDivisor != 0;
        if (bPrime)
            ary[nFound++] = FractionOfRoot(n, bCube);
    }
    return ary;
}

constexpr std::array<uint32_t, 8> SHA256_START = MakeFractions<8>(false);
constexpr std::array<uint32_t, 64> SHA256_K = MakeFractions<64>(true);
static_assert(SHA256_START[0] == 0x6A09E667 && SHA256_K[0] == 0x428A2F98 && SHA256_K[63] == 0xC67178F2);
} // namespace

void SecureHashBlocks::Add(const void* pData, size_t nBytes)
{
    const uint8_t* p = static_cast<const uint8_t*>(pData);
    m_nBytes += nBytes;
    while (nBytes > 0)
    {
        if (m_nPending == 0 && nBytes >= BLOCK_BYTES)
        {
            AddBlock(p);
            p += BLOCK_BYTES;
            nBytes -= BLOCK_BYTES;
            continue;
        }
        const size_t nTaken = std::min(nBytes, BLOCK_BYTES - m_nPending);
        std::memcpy(m_aryPending.data() + m_nPending, p, nTaken);
        p += nTaken;
        nBytes -= nTaken;
        m_nPending += nTaken;
        if (m_nPending == BLOCK_BYTES)
        {
            AddBlock(m_aryPending.data());
            m_nPending = 0;
        }
    }
}

void SecureHashBlocks::Pad()
{
    static constexpr std::array<uint8_t, BLOCK_BYTES> PADDING{0x80};
    const uint64_t nBits = m_nBytes * 8;
    const size_t nUsed = m_nPending + LENGTH_BYTES;
    Add(PADDING.data(), nUsed < BLOCK_BYTES ? BLOCK_BYTES - nUsed : 2 * BLOCK_BYTES - nUsed);
    uint8_t aryLength[LENGTH_BYTES];
    for (size_t i = 0; i < LENGTH_BYTES; ++i)
        aryLength[i] = static_cast<uint8_t>(nBits >> (56 - 8 * i));
    Add(aryLength, LENGTH_BYTES);
}

void SHA1Hash::AddBlock(const uint8_t* pBlock)
{
    // FIPS 180-4, 6.1.2 and 4.2.1.
    uint32_t w[80];
    for (int t = 0; t < 80; ++t)
        w[t] = t < 16 ? Get32(pBlock + 4 * t) : std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    auto [a, b, c, d, e] = m_aryState;
    for (int t = 0; t < 80; ++t)
    {
        uint32_t f = b ^ c ^ d;
        uint32_t k = t < 40 ? 0x6ED9EBA1 : 0xCA62C1D6;
        if (t < 20)
        {
            f = (b & c) ^ (~b & d);
            k = 0x5A827999;
        }
        else if (t >= 40 && t < 60)
        {
            f = (b & c) ^ (b & d) ^ (c & d);
            k = 0x8F1BBCDC;
        }
        const uint32_t nNext = std::rotl(a, 5) + f + e + k + w[t];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = nNext;
    }
    const uint32_t aryAdd[] = {a, b, c, d, e};
    for (size_t i = 0; i < m_aryState.size(); ++i)
        m_aryState[i] += aryAdd[i];
}

SHA1Hash::DIGEST SHA1Hash::Finish()
{
    Pad();
    return MakeDigest<DIGEST>(m_aryState);
}

SHA1Hash::DIGEST SHA1Hash::Make(const void* pData, size_t nBytes)
{
    SHA1Hash hash;
    hash.Add(pData, nBytes);
    return hash.Finish();
}

SHA256Hash::SHA256Hash() : m_aryState(SHA256_START) {}

void SHA256Hash::AddBlock(const uint8_t* pBlock)
{
    // FIPS 180-4, 6.2.2 and 4.1.2.
    uint32_t w[64];
    for (int t = 0; t < 16; ++t)
        w[t] = Get32(pBlock + 4 * t);
    for (int t = 16; t < 64; ++t)
    {
        const uint32_t s0 = std::rotr(w[t - 15], 7) ^ std::rotr(w[t - 15], 18) ^ w[t - 15] >> 3;
        const uint32_t s1 = std::rotr(w[t - 2], 17) ^ std::rotr(w[t - 2], 19) ^ w[t - 2] >> 10;
        w[t] = s1 + w[t - 7] + s0 + w[t - 16];
    }
    std::array<uint32_t, 8> v = m_aryState;
    for (size_t t = 0; t < 64; ++t)
    {
        const uint32_t s1 = std::rotr(v[4], 6) ^ std::rotr(v[4], 11) ^ std::rotr(v[4], 25);
        const uint32_t n1 = v[7] + s1 + ((v[4] & v[5]) ^ (~v[4] & v[6])) + SHA256_K[t] + w[t];
        const uint32_t s0 = std::rotr(v[0], 2) ^ std::rotr(v[0], 13) ^ std::rotr(v[0], 22);
        const uint32_t n2 = s0 + ((v[0] & v[1]) ^ (v[0] & v[2]) ^ (v[1] & v[2]));
        v = {n1 + n2, v[0], v[1], v[2], v[3] + n1, v[4], v[5], v[6]};
    }
    for (size_t i = 0; i < m_aryState.size(); ++i)
        m_aryState[i] += v[i];
}

SHA256Hash::DIGEST SHA256Hash::Finish()
{
    Pad();
    return MakeDigest<DIGEST>(m_aryState);
}

SHA256Hash::DIGEST SHA256Hash::Make(const void* pData, size_t nBytes)
{
    SHA256Hash hash;
    hash.Add(pData, nBytes);
    return hash.Finish();
}

std::string MakeHexText(const uint8_t* pData, size_t nBytes)
{
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string strText;
    strText.reserve(2 * nBytes);
    for (size_t i = 0; i < nBytes; ++i)
    {
        strText += DIGITS[pData[i] >> 4];
        strText += DIGITS[pData[i] & 15];
    }
    return strText;
}
