// READ CD of the drive in software (MMC-3, 6.15): which sectors may be read how, and the reading.
//
//   1  bits 4-2 expected sector type: 0 any, 1 CD-DA, 2 mode 1, 3 mode 2 formless, 4 mode 2 form 1, 5 mode 2 form 2
//   2  start address, 32 bits
//   6  count, 24 bits
//   9  what of the main channel: 80h sync, 60h headers, 10h user data, 08h EDC and ECC, 06h C2 pointers
//  10  bits 2-0 sub-channel

#include "ImageDrive.h"
#include "MMC.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr int SECTOR_TYPE_ANY = 0;
constexpr int SECTOR_TYPE_CDDA = 1;
constexpr int SECTOR_TYPE_MODE1 = 2;
constexpr int SECTOR_TYPE_LAST = 5;
constexpr unsigned char MAIN_CHANNEL = 0xF8;
constexpr unsigned char C2_POINTERS = 0x06;
constexpr unsigned char SUB_CHANNEL = 0x07;
constexpr int USER_DATA_BYTES = 2048; // of mode 1 and of mode 2 form 1 (ECMA-130, 14)
constexpr int MODE1_USER_DATA_OFFSET = 16;
constexpr int MODE2_USER_DATA_OFFSET = 24;

constexpr DRIVE_SENSE GOOD = {};
constexpr DRIVE_SENSE INVALID_FIELD = {SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD_IN_CDB, 0};
constexpr DRIVE_SENSE OUT_OF_RANGE = {SENSE_ILLEGAL_REQUEST, ASC_ADDRESS_OUT_OF_RANGE, 0};
constexpr DRIVE_SENSE WRONG_TYPE = {SENSE_ILLEGAL_REQUEST, ASC_ILLEGAL_MODE_FOR_TRACK, 0};
constexpr DRIVE_SENSE UNREADABLE = {SENSE_MEDIUM_ERROR, ASC_READ_ERROR, 5};

bool IsMode1(DISC_TRACK_MODE nMode) { return nMode == DISC_MODE1_2048 || nMode == DISC_MODE1_2352; }

DRIVE_SENSE ToSense(const READ_RESULT& result)
{
    switch (result.m_nStatus)
    {
    case READ_GOOD:
        return GOOD;
    case READ_UNREADABLE:
        return UNREADABLE;
    default:
        return OUT_OF_RANGE;
    }
}
} // namespace

DRIVE_SENSE ImageDrive::ReadCD(const DRIVE_COMMAND& command)
{
    const unsigned char* pCDB = command.m_pCDB;
    const int nType = pCDB[1] >> 2 & 7;
    const int nLBA = static_cast<int>(MMCGet32(pCDB + 2));
    int nCount = static_cast<int>(MMCGet32(pCDB + 5) & 0xFFFFFFU);
    const int nSelection = pCDB[9] & MAIN_CHANNEL;
    if (nType > SECTOR_TYPE_LAST || (pCDB[9] & C2_POINTERS) != 0 || (pCDB[10] & SUB_CHANNEL) != 0)
        return INVALID_FIELD;
    if (nCount == 0)
    {
        command.m_nDataBytes = 0;
        return GOOD;
    }
    if (nLBA < -LY_CD_MSF_OFFSET || nLBA > DISC_MAX_LBA || nCount > DISC_MAX_LBA - nLBA)
        return OUT_OF_RANGE;
    const DRIVE_SENSE types = CheckSectorTypes(nLBA, nCount, nType, nSelection);
    if (!types.IsGood())
        return types;

    const DISC_TRACK* pTrack = m_pImage->Locate(nLBA).m_pTrack;
    const bool bUserData = nSelection == READ_CD_USER_DATA && pTrack != nullptr && pTrack->IsData();
    const int nSectorBytes = nSelection == 0 ? 0 : bUserData ? USER_DATA_BYTES : LY_CD_SECTOR_BYTES;
    // What does not fit into the caller's buffer stays out of it.
    if (nSectorBytes > 0)
        nCount = std::min(nCount, std::max(0, command.m_nDataBytes) / nSectorBytes);
    if (command.m_pData == nullptr || command.m_eType != DRIVE_TRANSFER_IN || nSectorBytes == 0)
        nCount = 0;
    const DRIVE_SENSE sense =
        bUserData ? ReadUserData(nLBA, nCount, command.m_pData) : ReadWholeSectors(nLBA, nCount, command.m_pData);
    if (!sense.IsGood())
        return sense;
    command.m_nDataBytes = nCount * nSectorBytes;
    m_nHeadLBA = nLBA + nCount;
    return GOOD;
}

// Whether all sectors are of the type that the command expects, and the parts asked for can be given: of audio all
// there is, of data the whole sector or the user data.
DRIVE_SENSE ImageDrive::CheckSectorTypes(int nLBA, int nCount, int nType, int nSelection) const
{
    for (const DISC_TRACK& track : m_pImage->GetTracks())
    {
        if (track.GetEndLBA() <= nLBA || track.m_nPregapLBA >= nLBA + nCount)
            continue;
        if (track.m_nNumber == m_pImage->GetFirstTrackNumber() && !track.IsData() && nType <= SECTOR_TYPE_CDDA)
            continue;
        const bool bAudioWanted = nType == SECTOR_TYPE_CDDA;
        const bool bMode1Wanted = nType == SECTOR_TYPE_MODE1;
        if (!track.IsData())
        {
            if (nType != SECTOR_TYPE_ANY && !bAudioWanted)
                return WRONG_TYPE;
            continue;
        }
        // A pregap ahead of a data track belongs to it only where the image says so; audio reads stop at its start.
        if (bAudioWanted || (nType != SECTOR_TYPE_ANY && bMode1Wanted != IsMode1(track.m_nMode)))
            return WRONG_TYPE;
        if (nSelection != 0 && nSelection != MAIN_CHANNEL && nSelection != READ_CD_USER_DATA &&
            nSelection != READ_CD_WHOLE_SECTOR)
            return INVALID_FIELD;
    }
    return GOOD;
}

DRIVE_SENSE ImageDrive::ReadWholeSectors(int nLBA, int nCount, unsigned char* pData)
{
    if (nCount == 0)
        return GOOD;
    const READ_RESULT result = m_pImage->ReadSectors(nLBA, nCount, pData);
    if (result.m_nStatus == READ_UNREADABLE)
        NoteUnreadable(nLBA, nCount);
    return ToSense(result);
}

DRIVE_SENSE ImageDrive::ReadUserData(int nLBA, int nCount, unsigned char* pData)
{
    unsigned char arySector[LY_CD_SECTOR_BYTES];
    for (int i = 0; i < nCount; ++i)
    {
        const DRIVE_SENSE sense = ReadWholeSectors(nLBA + i, 1, arySector);
        if (!sense.IsGood())
            return sense;
        const DISC_TRACK* pTrack = m_pImage->Locate(nLBA + i).m_pTrack;
        const bool bMode2 = pTrack != nullptr && !IsMode1(pTrack->m_nMode);
        std::memcpy(pData + static_cast<std::ptrdiff_t>(i) * USER_DATA_BYTES,
                    arySector + (bMode2 ? MODE2_USER_DATA_OFFSET : MODE1_USER_DATA_OFFSET), USER_DATA_BYTES);
    }
    return GOOD;
}

void ImageDrive::NoteUnreadable(int nLBA, int nCount)
{
    // A command that the host repeats is one loss, not several.
    if (m_nUnreadable > 0 && nLBA >= m_nFirstUnreadable && nLBA < m_nFirstUnreadable + m_nUnreadable)
        return;
    if (m_nUnreadable == 0)
        m_nFirstUnreadable = nLBA;
    m_nFirstUnreadable = std::min(m_nFirstUnreadable, nLBA);
    m_nUnreadable += nCount;
}
