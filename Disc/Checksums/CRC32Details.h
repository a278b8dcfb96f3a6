// Arithmetic of polynomials over GF(2) modulo that of CRC-32, for the sources and the tests of CRC32.h.
// The highest bit of a value is the coefficient of x^0, the lowest that of x^31, as in the reflected register.

#pragma once

#include <cstdint>

constexpr uint32_t CRC32_POLYNOMIAL = 0xEDB88320; // 04C11DB7, reflected
constexpr uint32_t CRC32_ONE = 0x80000000;        // x^0

constexpr uint32_t MultiplyCRC32ByX(uint32_t n) { return (n & 1) != 0 ? n >> 1 ^ CRC32_POLYNOMIAL : n >> 1; }

constexpr uint32_t MultiplyCRC32(uint32_t a, uint32_t b)
{
    uint32_t nProduct = 0;
    for (uint32_t nBit = CRC32_ONE; nBit != 0; nBit >>= 1)
    {
        if ((a & nBit) != 0)
            nProduct ^= b;
        b = MultiplyCRC32ByX(b);
    }
    return nProduct;
}

// x to the power of nExponent, by squaring.
constexpr uint32_t GetCRC32Power(uint64_t nExponent)
{
    uint32_t nResult = CRC32_ONE;
    for (uint32_t nSquare = MultiplyCRC32ByX(CRC32_ONE); nExponent != 0; nExponent >>= 1)
    {
        if ((nExponent & 1) != 0)
            nResult = MultiplyCRC32(nResult, nSquare);
        nSquare = MultiplyCRC32(nSquare, nSquare);
    }
    return nResult;
}

// By which a register is multiplied when so many zero bytes follow. x^(2^32 - 1) is 1, so that a count of bytes that
// overflows as a count of bits can be reduced first.
constexpr uint32_t GetCRC32BytesPower(uint64_t nBytes) { return GetCRC32Power(nBytes % 0xFFFFFFFF * 8); }

// What AddToCRC32Register is on a machine with a carry-less multiplication, and on one without.
using CRC32_UPDATE = uint32_t (*)(uint32_t nRegister, const uint8_t* p, uint64_t nBytes);
uint32_t AddToCRC32RegisterByTables(uint32_t nRegister, const uint8_t* p, uint64_t nBytes);
CRC32_UPDATE GetFoldingCRC32(); // null where the machine has no such multiplication
