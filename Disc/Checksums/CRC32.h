// CRC-32 of IEEE 802.3, 3.2.9: the check sum of ZIP, PNG and of ripped audio.
//
// Shape:   polynomial 04C11DB7, bits reflected, the register begins with ones and is inverted at the end.
//          A "register" here is the state without either inversion. It is linear: the register of two pieces, one
//          after the other, is the first one's moved over the second one's length, exclusive-or the second one's.
// Threads: any; nothing but constant tables.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

constexpr uint32_t CRC32_START = 0xFFFFFFFF; // the register ahead of the first byte

// The register after nBytes more bytes. The plain twin, byte by byte, is what the fast one is compared with.
uint32_t AddToCRC32Register(uint32_t nRegister, const void* pData, size_t nBytes);
uint32_t AddToCRC32RegisterPlain(uint32_t nRegister, const void* pData, size_t nBytes);

// The check sum of a piece, and its usual text: eight upper-case digits.
uint32_t GetCRC32(const void* pData, size_t nBytes);
std::string MakeCRC32Text(uint32_t nCRC32);

// The check sum of two pieces from theirs, the second of nSecondBytes bytes.
uint32_t CombineCRC32(uint32_t nFirst, uint32_t nSecond, uint64_t nSecondBytes);

// Moves registers over a fixed number of bytes, as if so many zero bytes had been added: four look-ups each.
class CRC32Shift
{
public:
    explicit CRC32Shift(uint64_t nBytes);

    uint32_t operator()(uint32_t nRegister) const
    {
        return m_aryTables[0][nRegister & 0xFF] ^ m_aryTables[1][nRegister >> 8 & 0xFF] ^
               m_aryTables[2][nRegister >> 16 & 0xFF] ^ m_aryTables[3][nRegister >> 24];
    }

private:
    std::array<std::array<uint32_t, 256>, 4> m_aryTables;
};

// The check sum of a stretch from the registers ahead of it and behind it, which began with 0 somewhere ahead. The
// shift is that of the stretch's length.
inline uint32_t GetCRC32Between(uint32_t nAhead, uint32_t nBehind, const CRC32Shift& shift)
{
    return ~(nBehind ^ shift(nAhead ^ CRC32_START));
}
