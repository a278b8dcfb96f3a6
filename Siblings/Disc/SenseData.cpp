#include "SenseData.h"
#include <algorithm>
#include <cstdio>
#include <cstring>

namespace
{
constexpr unsigned char RESPONSE_CODE_MASK = 0x7F;
constexpr unsigned char KEY_MASK = 0x0F;
constexpr unsigned char VALID = 0x80; // byte 0 of the fixed form: the information field counts
constexpr int FIXED_MIN_BYTES = SENSE_OFFSET_KEY + 1;

constexpr int FIXED_INFORMATION = 3;
constexpr int FIXED_COMMAND_SPECIFIC = 8;
constexpr int FIXED_UNIT = 14;
constexpr int FIXED_KEY_SPECIFIC = 15;

constexpr int DESCRIPTOR_HEADER_BYTES = 8;
constexpr int DESCRIPTOR_OFFSET_KEY = 1;
constexpr int DESCRIPTOR_OFFSET_ASC = 2;
constexpr int DESCRIPTOR_OFFSET_ASCQ = 3;
constexpr int DESCRIPTOR_MIN_BYTES = DESCRIPTOR_OFFSET_ASCQ + 1;

// SPC-3, table 12, and 4.5.2.2 to 4.5.2.6.
enum SENSE_DESCRIPTOR : unsigned char
{
    INFORMATION = 0x00,
    COMMAND_SPECIFIC = 0x01,
    KEY_SPECIFIC = 0x02,
    REPLACEABLE_UNIT = 0x03,
    STREAM_COMMANDS = 0x04,
    BLOCK_COMMANDS = 0x05
};
constexpr int WIDE_DESCRIPTOR_BYTES = 12; // information and command-specific information
constexpr int KEY_SPECIFIC_DESCRIPTOR_BYTES = 7;
constexpr int SHORT_DESCRIPTOR_BYTES = 4;
constexpr unsigned char STREAM_FLAGS = 0xE0; // FILEMARK, EOM, ILI
constexpr unsigned char BLOCK_FLAG_ILI = 0x20;

// Puts a field of eight bytes into the four that the fixed form has. False if it does not fit.
bool PutNarrow(const unsigned char* pWide, unsigned char* pNarrow)
{
    if (MMCGet32(pWide) != 0)
        return false;
    std::memcpy(pNarrow, pWide + 4, 4);
    return true;
}

// One descriptor of nBytes, header included.
void PutDescriptor(const unsigned char* p, int nBytes, unsigned char* pFixed)
{
    switch (p[0])
    {
    case INFORMATION:
        if (nBytes >= WIDE_DESCRIPTOR_BYTES && (p[2] & VALID) != 0 && PutNarrow(p + 4, pFixed + FIXED_INFORMATION))
            pFixed[SENSE_OFFSET_RESPONSE_CODE] |= VALID;
        break;
    case COMMAND_SPECIFIC:
        if (nBytes >= WIDE_DESCRIPTOR_BYTES)
            (void)PutNarrow(p + 4, pFixed + FIXED_COMMAND_SPECIFIC);
        break;
    case KEY_SPECIFIC:
        if (nBytes >= KEY_SPECIFIC_DESCRIPTOR_BYTES)
            std::memcpy(pFixed + FIXED_KEY_SPECIFIC, p + 4, 3);
        break;
    case REPLACEABLE_UNIT:
        if (nBytes >= SHORT_DESCRIPTOR_BYTES)
            pFixed[FIXED_UNIT] = p[3];
        break;
    case STREAM_COMMANDS:
    case BLOCK_COMMANDS:
        if (nBytes >= SHORT_DESCRIPTOR_BYTES)
            pFixed[SENSE_OFFSET_KEY] |=
                static_cast<unsigned char>(p[3] & (p[0] == STREAM_COMMANDS ? STREAM_FLAGS : BLOCK_FLAG_ILI));
        break;
    default:
        break;
    }
}

bool ReadDescriptorForm(const unsigned char* pSense, int nBytes, bool bDeferred, SENSE_DATA& fixed)
{
    if (nBytes < DESCRIPTOR_MIN_BYTES)
        return false;
    fixed.Set({static_cast<unsigned char>(pSense[DESCRIPTOR_OFFSET_KEY] & KEY_MASK), pSense[DESCRIPTOR_OFFSET_ASC],
               pSense[DESCRIPTOR_OFFSET_ASCQ]});
    if (bDeferred)
        fixed.m_aryBytes[SENSE_OFFSET_RESPONSE_CODE] = SENSE_RESPONSE_DEFERRED;
    if (nBytes < DESCRIPTOR_HEADER_BYTES)
        return true;
    const int nEnd = std::min(nBytes, DESCRIPTOR_HEADER_BYTES + pSense[SENSE_OFFSET_ADDITIONAL_LENGTH]);
    for (int nPos = DESCRIPTOR_HEADER_BYTES; nPos + 2 <= nEnd;)
    {
        const int nDescriptorBytes = 2 + pSense[nPos + 1];
        if (nDescriptorBytes > nEnd - nPos)
            break;
        PutDescriptor(pSense + nPos, nDescriptorBytes, fixed.m_aryBytes);
        nPos += nDescriptorBytes;
    }
    return true;
}
} // namespace

bool ReadSenseData(const unsigned char* pSense, int nBytes, SENSE_DATA& fixed)
{
    fixed = {};
    if (pSense == nullptr || nBytes < 1)
        return false;
    switch (pSense[SENSE_OFFSET_RESPONSE_CODE] & RESPONSE_CODE_MASK)
    {
    case SENSE_RESPONSE_CURRENT:
    case SENSE_RESPONSE_DEFERRED:
        if (nBytes < FIXED_MIN_BYTES)
            return false;
        std::memcpy(fixed.m_aryBytes, pSense, static_cast<size_t>(std::min(nBytes, SENSE_BYTES)));
        return true;
    case SENSE_RESPONSE_DESCRIPTOR_CURRENT:
        return ReadDescriptorForm(pSense, nBytes, false, fixed);
    case SENSE_RESPONSE_DESCRIPTOR_DEFERRED:
        return ReadDescriptorForm(pSense, nBytes, true, fixed);
    default:
        return false;
    }
}

bool IsDeferred(const SENSE_DATA& fixed)
{
    return (fixed.m_aryBytes[SENSE_OFFSET_RESPONSE_CODE] & RESPONSE_CODE_MASK) == SENSE_RESPONSE_DEFERRED;
}

std::string GetCodesText(const DRIVE_SENSE& sense)
{
    char szCodes[16];
    std::snprintf(szCodes, sizeof szCodes, "%X/%02X/%02X", sense.m_nKey, sense.m_nASC, sense.m_nASCQ);
    return szCodes;
}
