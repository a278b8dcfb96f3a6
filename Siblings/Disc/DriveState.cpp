#include "DriveState.h"
#include <cstdio>

namespace
{
constexpr unsigned char ASC_INCOMPATIBLE_MEDIUM = 0x30;

DISC_DRIVE_STATE GetState(const DRIVE_SENSE& sense)
{
    if (sense.m_nKey != SENSE_NOT_READY)
        return DISC_DRIVE_UNUSABLE;
    if (sense.m_nASC == ASC_NOT_READY)
        return DISC_DRIVE_BECOMING;
    if (sense.m_nASC != ASC_MEDIUM_NOT_PRESENT)
        return DISC_DRIVE_UNUSABLE;
    return sense.m_nASCQ == ASCQ_TRAY_OPEN ? DISC_DRIVE_TRAY_OPEN : DISC_DRIVE_NO_DISC;
}

std::string GetReason(const DRIVE_SENSE& sense)
{
    if (sense.IsGood())
        return "The drive does not answer; check its cable and its power.";
    char szCodes[16];
    std::snprintf(szCodes, sizeof szCodes, "%X/%02X/%02X", sense.m_nKey, sense.m_nASC, sense.m_nASCQ);
    if (sense.m_nASC == ASC_INCOMPATIBLE_MEDIUM)
        return std::string("The drive cannot read this kind of disc (") + szCodes + "); put in another one.";
    if (sense.m_nKey == SENSE_MEDIUM_ERROR)
        return std::string("The drive cannot read this disc (") + szCodes + "); clean it, or put in another one.";
    return std::string("The drive reports the error ") + szCodes + "; switch it off and on, or try another drive.";
}
} // namespace

void JudgeReadiness(DRIVE_LISTING& listing, bool bGood, const DRIVE_SENSE& sense)
{
    listing.m_eState = bGood ? DISC_DRIVE_READY : GetState(sense);
    listing.m_strReason = listing.m_eState == DISC_DRIVE_UNUSABLE ? GetReason(sense) : std::string();
}
