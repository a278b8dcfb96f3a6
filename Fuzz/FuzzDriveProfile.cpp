// Any text as a drive profile. What is accepted keeps its limits, and its faults can be lived through.

#include "DriveFaults.h"
#include "DriveProfile.h"
#include "FuzzCheck.h"
#include "MMC.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

static bool IsOnDisc(const LBA_RANGE& range)
{
    return range.m_nFirst >= -LY_CD_MSF_OFFSET && range.m_nFirst <= range.m_nLast && range.m_nLast <= DISC_MAX_LBA;
}

static void CheckLimits(const DRIVE_PROFILE& profile)
{
    Check(profile.m_nBufferKiB <= PROFILE_MAX_KIB && profile.m_nCacheKiB >= 0);
    Check(profile.m_nCacheKiB <= std::max(0, profile.m_nBufferKiB) && profile.m_nSegmentKiB <= profile.m_nCacheKiB);
    Check(profile.m_nSpeed >= 0 && profile.m_nSpeed <= PROFILE_MAX_SPEED && profile.m_nLatencyMs <= PROFILE_MAX_MS);
    Check(profile.m_strVendor.size() <= 8 && profile.m_strModel.size() <= 16 && profile.m_strRevision.size() <= 4);
    for (const auto& [nCode, page] : profile.m_mapModePages)
        Check(page.size() >= 2 && page[0] == nCode && page[1] == page.size() - 2);
    for (const UNREADABLE_FAULT& fault : profile.m_aryUnreadable)
        Check(IsOnDisc(fault.m_Range) && fault.m_nEvery >= 1 && fault.m_nPPM <= CERTAIN_PPM);
    for (const JITTER_FAULT& fault : profile.m_aryJitter)
        Check(IsOnDisc(fault.m_Range) && fault.m_nMaxFrames >= 1 && fault.m_nMaxFrames <= PROFILE_MAX_JITTER);
    for (const SILENT_FAULT& fault : profile.m_arySilent)
        Check(IsOnDisc(fault.m_Range) && fault.m_nBytes >= 1 && fault.m_nBytes <= LY_CD_SECTOR_BYTES);
    for (const HANG_FAULT& fault : profile.m_aryHangs)
        Check(fault.m_When.m_nCommand >= 1 && fault.m_nMs >= 0 && fault.m_nMs <= PROFILE_MAX_HANG_MS);
    for (const ATTENTION_FAULT& fault : profile.m_aryAttentions)
        Check(fault.m_Sense.m_nKey == SENSE_UNIT_ATTENTION && fault.m_nTimes >= 1);
    for (const FAIL_FAULT& fault : profile.m_aryFails)
        Check(fault.m_nPPM <= CERTAIN_PPM && !fault.m_Sense.IsGood());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    DRIVE_PROFILE profile;
    SHEET_ERROR error;
    if (!ParseDriveProfile(std::string(pData, pData + nBytes), profile, error))
    {
        Check(!error.m_strText.empty() && error.m_nLine >= 0);
        return 0;
    }
    CheckLimits(profile);
    DriveFaults faults;
    faults.Reset(profile);
    unsigned char arySector[LY_CD_SECTOR_BYTES] = {};
    for (int nLBA : {-LY_CD_MSF_OFFSET, 0, 1, 100, DISC_MAX_LBA - 1})
    {
        (void)faults.OnCommand(CDB_READ_CD);
        (void)faults.OnDiscSectors(nLBA, 27);
        (void)faults.Spoil(arySector, nLBA, 7);
        const int nShift = faults.GetShift(nLBA, 7);
        Check(nShift >= -PROFILE_MAX_JITTER && nShift <= PROFILE_MAX_JITTER);
    }
    return 0;
}
