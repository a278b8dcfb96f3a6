#include "ServiceDrive.h"
#include <cstring>

namespace
{
constexpr unsigned char SENSE_KEY_MASK = 0x0F; // byte 2: the key below the flags of file mark, end of medium, length
constexpr unsigned char FIXED_SENSE_ADDITIONAL = 10; // 18 bytes in all
} // namespace

void SENSE_DATA::Set(const DRIVE_SENSE& sense)
{
    std::memset(m_aryBytes, 0, sizeof m_aryBytes);
    m_aryBytes[SENSE_OFFSET_RESPONSE_CODE] = SENSE_RESPONSE_CURRENT;
    m_aryBytes[SENSE_OFFSET_KEY] = sense.m_nKey;
    m_aryBytes[SENSE_OFFSET_ADDITIONAL_LENGTH] = FIXED_SENSE_ADDITIONAL;
    m_aryBytes[SENSE_OFFSET_ASC] = sense.m_nASC;
    m_aryBytes[SENSE_OFFSET_ASCQ] = sense.m_nASCQ;
}

DRIVE_SENSE SENSE_DATA::GetCodes() const
{
    return {static_cast<unsigned char>(m_aryBytes[SENSE_OFFSET_KEY] & SENSE_KEY_MASK), m_aryBytes[SENSE_OFFSET_ASC],
            m_aryBytes[SENSE_OFFSET_ASCQ]};
}
