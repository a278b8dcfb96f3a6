#include "CRC32.h"
#include "CRC32Details.h"
#include <bit>
#include <cstdio>
#include <cstring>

namespace
{
constexpr size_t SLICES = 16;
static_assert(std::endian::native == std::endian::little, "the tables are applied to words as they lie in memory");

using SLICE_TABLES = std::array<std::array<uint32_t, 256>, SLICES>;

// Table k moves a byte over itself and k more bytes.
constexpr SLICE_TABLES MakeSliceTables()
{
    SLICE_TABLES tables{};
    for (uint32_t n = 0; n < 256; ++n)
    {
        uint32_t nRegister = n;
        for (int nBit = 0; nBit < 8; ++nBit)
            nRegister = MultiplyCRC32ByX(nRegister);
        tables[0][n] = nRegister;
    }
    for (size_t k = 1; k < SLICES; ++k)
    {
        for (size_t n = 0; n < 256; ++n)
            tables[k][n] = tables[k - 1][n] >> 8 ^ tables[0][tables[k - 1][n] & 0xFF];
    }
    return tables;
}

constexpr SLICE_TABLES s_tables = MakeSliceTables();

uint32_t AddByte(uint32_t nRegister, uint8_t n) { return nRegister >> 8 ^ s_tables[0][(nRegister ^ n) & 0xFF]; }

// The four bytes of a word that is followed by nAfter more words of the same slice.
uint32_t Slice(uint32_t nWord, size_t nAfter)
{
    const size_t k = 4 * nAfter;
    return s_tables[k + 3][nWord & 0xFF] ^ s_tables[k + 2][nWord >> 8 & 0xFF] ^ s_tables[k + 1][nWord >> 16 & 0xFF] ^
           s_tables[k][nWord >> 24];
}
} // namespace

uint32_t AddToCRC32RegisterPlain(uint32_t nRegister, const void* pData, size_t nBytes)
{
    const uint8_t* p = static_cast<const uint8_t*>(pData);
    for (size_t i = 0; i < nBytes; ++i)
        nRegister = AddByte(nRegister, p[i]);
    return nRegister;
}

uint32_t AddToCRC32RegisterByTables(uint32_t nRegister, const uint8_t* p, uint64_t nBytes)
{
    for (; nBytes >= SLICES; nBytes -= SLICES, p += SLICES)
    {
        uint32_t aryWords[SLICES / 4];
        std::memcpy(aryWords, p, sizeof aryWords);
        nRegister =
            Slice(aryWords[0] ^ nRegister, 3) ^ Slice(aryWords[1], 2) ^ Slice(aryWords[2], 1) ^ Slice(aryWords[3], 0);
    }
    for (; nBytes >= 4; nBytes -= 4, p += 4)
    {
        uint32_t nWord = 0;
        std::memcpy(&nWord, p, sizeof nWord);
        nRegister = Slice(nWord ^ nRegister, 0);
    }
    for (; nBytes > 0; --nBytes)
        nRegister = AddByte(nRegister, *p++);
    return nRegister;
}

uint32_t AddToCRC32Register(uint32_t nRegister, const void* pData, size_t nBytes)
{
    static const CRC32_UPDATE s_pUpdate = GetFoldingCRC32() ? GetFoldingCRC32() : AddToCRC32RegisterByTables;
    return s_pUpdate(nRegister, static_cast<const uint8_t*>(pData), nBytes);
}

uint32_t GetCRC32(const void* pData, size_t nBytes) { return ~AddToCRC32Register(CRC32_START, pData, nBytes); }

std::string MakeCRC32Text(uint32_t nCRC32)
{
    char szText[2 * sizeof nCRC32 + 1];
    (void)std::snprintf(szText, sizeof szText, "%08X", nCRC32);
    return szText;
}

uint32_t CombineCRC32(uint32_t nFirst, uint32_t nSecond, uint64_t nSecondBytes)
{
    // The inversions cancel out: those at the end of the first piece and at the beginning of the second.
    return MultiplyCRC32(nFirst, GetCRC32BytesPower(nSecondBytes)) ^ nSecond;
}

CRC32Shift::CRC32Shift(uint64_t nBytes)
{
    const uint32_t nPower = GetCRC32BytesPower(nBytes);
    for (size_t k = 0; k < m_aryTables.size(); ++k)
    {
        for (uint32_t n = 0; n < 256; ++n)
            m_aryTables[k][n] = 0;
        for (uint32_t nBit = 0; nBit < 8; ++nBit)
        {
            const uint32_t nStep = 1U << nBit;
            const uint32_t nImage = MultiplyCRC32(nStep << (8 * k), nPower);
            for (uint32_t n = nStep; n < 2 * nStep; ++n)
                m_aryTables[k][n] = m_aryTables[k][n - nStep] ^ nImage;
        }
    }
}
