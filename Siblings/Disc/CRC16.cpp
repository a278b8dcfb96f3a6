#include "CRC16.h"

unsigned short GetCRC16(const unsigned char* p, size_t nBytes)
{
    constexpr unsigned int POLYNOMIAL = 0x1021;
    unsigned int nCRC = 0;
    for (size_t i = 0; i < nBytes; ++i)
    {
        nCRC ^= static_cast<unsigned int>(p[i]) << 8;
        for (int nBit = 0; nBit < 8; ++nBit)
            nCRC = (nCRC & 0x8000U) != 0 ? nCRC << 1 ^ POLYNOMIAL : nCRC << 1;
    }
    return static_cast<unsigned short>(~nCRC & 0xFFFFU);
}
