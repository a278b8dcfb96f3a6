// The shape of UTF-8 as this system reads it, for the counting and the decoding of it (LyStringFormat.h says more).
//
// RFC 3629, section 3, without the form of four bytes:
//
//   below 0x80    0xxxxxxx
//   below 0x800   110xxxxx 10xxxxxx
//   all others    1110xxxx 10xxxxxx 10xxxxxx

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace LyUTF8Details
{
constexpr uint32_t ONE_BYTE_END = 0x80;
constexpr uint32_t TWO_BYTES_END = 0x800;
constexpr size_t MAX_SEQUENCE_BYTES = 3;
constexpr size_t PLAIN_RUN_BYTES = sizeof(uint64_t); // looked at in one step

enum UTF8_BYTES : unsigned char
{
    UTF8_CONTINUATION = 0x80,
    UTF8_LEAD_OF_2 = 0xC0,
    UTF8_LEAD_OF_3 = 0xE0,
    UTF8_NO_LEAD = 0xFE // this and the next one open byte order marks of UTF-16
};

inline bool IsContinuation(unsigned char c) { return (c & 0xC0) == UTF8_CONTINUATION; }

// True if the next PLAIN_RUN_BYTES bytes are characters below 0x80.
inline bool IsPlainRun(const unsigned char* p)
{
    uint64_t nBytes;
    std::memcpy(&nBytes, p, sizeof nBytes);
    return (nBytes & 0x8080808080808080U) == 0;
}

// The bytes of the sequence at p. Looks at no more than nAvailable bytes, and behind the first byte only as far as they
// continue a sequence.
//
// Deliberate: FE and FF lead nothing, although the top bits of a code point from 0x1E000 up make one of them when it is
// written. They never occur in UTF-8; such a character takes three bytes and does not read back.
inline int GetSequenceBytes(const unsigned char* p, size_t nAvailable, int nValueIfBad)
{
    unsigned char cLead = p[0];
    if (cLead < ONE_BYTE_END)
        return 1;
    if (cLead < UTF8_LEAD_OF_2 || cLead >= UTF8_NO_LEAD)
        return nValueIfBad;
    if (nAvailable < 2 || !IsContinuation(p[1]))
        return nValueIfBad;
    if (cLead < UTF8_LEAD_OF_3)
        return 2;
    return nAvailable >= 3 && IsContinuation(p[2]) ? 3 : nValueIfBad;
}

// The character of a sequence of that many bytes.
inline wchar_t DecodeSequence(const unsigned char* p, int nBytes)
{
    if (nBytes == 1)
        return p[0];
    if (nBytes == 2)
        return (p[0] & 31) << 6 | (p[1] & 63);
    // Deliberate: the mask leaves five bits of the lead, not four, so that F0 to FD lead three bytes, too.
    return (p[0] & 31) << 12 | (p[1] & 63) << 6 | (p[2] & 63);
}
} // namespace LyUTF8Details
