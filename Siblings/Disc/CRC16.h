// The check sum of the Q sub-channel and of CD-Text packs (IEC 60908, 17.5; MMC-3, annex J).

#pragma once

#include <cstddef>

// CRC-16 of nBytes bytes: x^16 + x^12 + x^5 + 1, from 0, inverted at the end. It is stored high byte first.
unsigned short GetCRC16(const unsigned char* p, size_t nBytes);
