// The sectors of a drive in software that behaves like hardware: from its cache or from the disc, in the time that
// takes, and with what the faults make of them.

#include "MMC.h"
#include "ProfiledDrive.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace
{
constexpr DRIVE_SENSE GOOD = {};
constexpr int READ_CD_CDB_BYTES = 12;
constexpr unsigned char READ_CD_TYPE_MASK = 0x1C;
constexpr int SMALLEST_SECTOR_BYTES = 2048; // user data of a data sector
} // namespace

// READ CD with sectors that a disc can have and that the buffer can hold. Everything else is refused by the image, or
// transfers nothing.
ProfiledDrive::READ_REQUEST ProfiledDrive::GetReadRequest(const DRIVE_COMMAND& command)
{
    const unsigned char* pCDB = command.m_pCDB;
    if (pCDB[0] != CDB_READ_CD || command.m_nCDBBytes < READ_CD_CDB_BYTES || command.m_pData == nullptr ||
        command.m_eType != DRIVE_TRANSFER_IN)
        return {};
    const int nLBA = static_cast<int>(MMCGet32(pCDB + 2));
    const int nCount = static_cast<int>(MMCGet32(pCDB + 5) & 0xFFFFFFU);
    if (nLBA < -LY_CD_MSF_OFFSET || nLBA > DISC_MAX_LBA || nCount > DISC_MAX_LBA - nLBA)
        return {};
    return {nLBA, std::min(nCount, std::max(0, command.m_nDataBytes) / SMALLEST_SECTOR_BYTES)};
}

// Looks up where each sector comes from. How many at the start are in the cache.
int ProfiledDrive::FindOrigins(const READ_REQUEST& request)
{
    m_aryOrigins.resize(static_cast<size_t>(request.m_nSectors));
    int nFirstMissing = request.m_nSectors;
    for (int n = request.m_nSectors; n-- > 0;)
    {
        m_aryOrigins[static_cast<size_t>(n)] = m_Cache.Find(request.m_nLBA + n);
        if (m_aryOrigins[static_cast<size_t>(n)] == DriveCache::NOT_CACHED)
            nFirstMissing = n;
    }
    return nFirstMissing;
}

// How long the command takes from when the drive begins with it, and where that leaves head and disc.
DriveTiming::DURATION ProfiledDrive::GetDuration(const DRIVE_COMMAND& command, const READ_REQUEST& request,
                                                 int nFirstMissing, CLOCK::time_point start)
{
    DriveTiming::DURATION time = m_Timing.GetLatency();
    const bool bFromDisc = nFirstMissing < request.m_nSectors;
    const bool bStart = command.m_pCDB[0] == CDB_START_STOP_UNIT && command.m_nCDBBytes > 4 &&
                        (command.m_pCDB[4] & (START_STOP_START | START_STOP_LOAD_EJECT)) == START_STOP_START;
    if (bFromDisc || bStart)
    {
        bool bSpinUp = false;
        time += m_Timing.SpinUp(start, bSpinUp);
        m_Statistics.m_nSpinUps += bSpinUp ? 1 : 0;
    }
    if (bFromDisc)
        time += m_Timing.ReadFromDisc(request.m_nLBA + nFirstMissing, request.m_nSectors - nFirstMissing);
    return time;
}

DRIVE_SENSE ProfiledDrive::ServeRead(const DRIVE_COMMAND& command, const READ_REQUEST& request,
                                     PROFILED_COMMAND& record)
{
    const DRIVE_SENSE sense = TryDisc(request);
    if (!sense.IsGood())
        return sense;
    const DRIVE_SENSE image = RunOnImage(command);
    if (!image.IsGood())
        return image;
    KeepSectors(request);
    const int nSectors = std::min(request.m_nSectors, command.m_nDataBytes / LY_CD_SECTOR_BYTES);
    const bool bWhole = command.m_nDataBytes == nSectors * LY_CD_SECTOR_BYTES;
    if (GetReadOffset(command) != 0 && bWhole)
        for (int n = 0; n < nSectors; ++n)
            FillSector(command.m_pData + static_cast<std::ptrdiff_t>(n) * LY_CD_SECTOR_BYTES, request.m_nLBA + n,
                       -GetReadOffset(command));
    if (m_Faults.SpoilsAnything() && bWhole)
        record.m_nWrongSectors = SpoilSectors(command, {request.m_nLBA, nSectors});
    return GOOD;
}

// Whether what the cache does not hold can be read this time.
DRIVE_SENSE ProfiledDrive::TryDisc(const READ_REQUEST& request)
{
    DRIVE_SENSE sense;
    for (int n = 0; n < request.m_nSectors;)
    {
        int nEnd = n;
        while (nEnd < request.m_nSectors && m_aryOrigins[static_cast<size_t>(nEnd)] == DriveCache::NOT_CACHED)
            ++nEnd;
        const DRIVE_SENSE stretch = m_Faults.OnDiscSectors(request.m_nLBA + n, nEnd - n);
        if (!stretch.IsGood())
            sense = stretch;
        n = std::max(nEnd, n + 1);
    }
    return sense;
}

// What came from the disc goes into the cache, and the drive is free to read on behind it.
void ProfiledDrive::KeepSectors(const READ_REQUEST& request)
{
    const auto nRead = static_cast<unsigned long long>(m_Faults.GetReads());
    for (int n = 0; n < request.m_nSectors; ++n)
    {
        unsigned long long& nOrigin = m_aryOrigins[static_cast<size_t>(n)];
        if (nOrigin != DriveCache::NOT_CACHED)
        {
            // What the sectors ahead of it in this command have just pushed out is still in the drive's hands.
            if (m_Cache.Find(request.m_nLBA + n) == DriveCache::NOT_CACHED)
                m_Cache.Insert(request.m_nLBA + n, nOrigin);
            m_Cache.Touch(request.m_nLBA + n);
            continue;
        }
        nOrigin = nRead;
        m_Cache.Insert(request.m_nLBA + n, nRead);
        ++m_Statistics.m_nDiscSectors;
        m_nLastRead = nRead;
        m_nAheadLeft = m_Profile.m_nReadAhead;
    }
}

// By how many frames the drive delivers audio too late (negative: too early) for this command.
int ProfiledDrive::GetReadOffset(const DRIVE_COMMAND& command) const
{
    return (command.m_pCDB[1] & READ_CD_TYPE_MASK) == READ_CD_TYPE_CDDA ? m_Profile.m_nReadOffset : 0;
}

// The number of sectors that are not the image's any more.
int ProfiledDrive::SpoilSectors(const DRIVE_COMMAND& command, const READ_REQUEST& request)
{
    const int nReadOffset = GetReadOffset(command);
    unsigned char* pData = command.m_pData;
    int nWrong = 0;
    unsigned char aryTrue[LY_CD_SECTOR_BYTES];
    for (int n = 0; n < request.m_nSectors; ++n)
    {
        unsigned char* pSector = pData + static_cast<std::ptrdiff_t>(n) * LY_CD_SECTOR_BYTES;
        const int nLBA = request.m_nLBA + n;
        const unsigned long long nOrigin = m_aryOrigins[static_cast<size_t>(n)];
        std::memcpy(aryTrue, pSector, sizeof aryTrue);
        const int nJitter = m_Faults.GetShift(nLBA, nOrigin);
        if (nJitter != 0)
            FillSector(pSector, nLBA, nJitter - nReadOffset);
        (void)m_Faults.Spoil(pSector, nLBA, nOrigin);
        nWrong += std::memcmp(aryTrue, pSector, sizeof aryTrue) != 0 ? 1 : 0;
    }
    return nWrong;
}

// One sector of audio as the image has it; silence, and false, where there is none.
bool ProfiledDrive::ReadAudio(unsigned char* pSector, int nLBA)
{
    unsigned char aryCDB[READ_CD_CDB_BYTES] = {CDB_READ_CD, READ_CD_TYPE_CDDA};
    MMCPut32(aryCDB + 2, static_cast<unsigned int>(nLBA));
    aryCDB[8] = 1;
    aryCDB[9] = READ_CD_USER_DATA;
    int nBytes = LY_CD_SECTOR_BYTES;
    if (RunOnImage({aryCDB, sizeof aryCDB, pSector, nBytes, DRIVE_TRANSFER_IN}).IsGood())
        return true;
    std::memset(pSector, 0, LY_CD_SECTOR_BYTES);
    return false;
}

// Lets the sector begin so many frames late (positive) or early. Data is found by its sync pattern and never shifts.
void ProfiledDrive::FillSector(unsigned char* pSector, int nLBA, int nFrames)
{
    unsigned char aryTwo[2 * LY_CD_SECTOR_BYTES];
    if (!ReadAudio(aryTwo, nLBA))
        return;
    const int nSectors =
        nFrames >= 0 ? nFrames / LY_CD_SECTOR_FRAMES : -((LY_CD_SECTOR_FRAMES - 1 - nFrames) / LY_CD_SECTOR_FRAMES);
    const int nSkip = (nFrames - nSectors * LY_CD_SECTOR_FRAMES) * LY_CD_FRAME_BYTES;
    (void)ReadAudio(aryTwo, nLBA + nSectors);
    (void)ReadAudio(aryTwo + LY_CD_SECTOR_BYTES, nLBA + nSectors + 1);
    std::memcpy(pSector, aryTwo + nSkip, LY_CD_SECTOR_BYTES);
}

// What the drive has read by itself since its last command. It stops at the end of the disc, and at sectors that may
// not be readable.
void ProfiledDrive::ReadAhead(CLOCK::time_point now)
{
    if (m_nAheadLeft < 1 || now < m_AheadSince)
        return;
    const auto idle = std::chrono::duration_cast<DriveTiming::DURATION>(now - m_AheadSince);
    for (int n = m_Timing.GetSectorsIn(idle, m_nAheadLeft); n > 0; --n)
    {
        const int nLBA = m_Timing.GetHeadLBA();
        if (nLBA >= m_nLeadOutLBA || !m_Faults.MayReadAhead(nLBA))
        {
            m_nAheadLeft = 0;
            return;
        }
        if (m_Cache.Find(nLBA) == DriveCache::NOT_CACHED)
            m_Cache.Insert(nLBA, m_nLastRead);
        m_Timing.MoveHead(nLBA + 1);
        --m_nAheadLeft;
        ++m_Statistics.m_nAheadSectors;
    }
}
