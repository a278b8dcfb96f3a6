#include "SectorFrame.h"

#include <cstring>

namespace
{
constexpr int SYNC_BYTES = 12;
constexpr int SUBHEADER_BYTES = 4;
constexpr int USER_DATA_OFFSET_XA = DISC_SUBHEADER_SECTOR_OFFSET + 2 * SUBHEADER_BYTES;
constexpr unsigned char SUBMODE_DATA = 0x08;
constexpr unsigned char SUBMODE_FORM_2 = 0x20;

unsigned char ToBCD(int n) { return static_cast<unsigned char>(n / 10 << 4 | n % 10); }

void WriteFrame(unsigned char* pSector, int nLBA, DISC_TRACK_MODE mode)
{
    memset(pSector, 0xFF, SYNC_BYTES);
    pSector[0] = pSector[SYNC_BYTES - 1] = 0;
    int nFrames = nLBA + LY_CD_MSF_OFFSET;
    unsigned char* pHeader = pSector + SYNC_BYTES;
    pHeader[0] = ToBCD(nFrames / LY_CD_SECTORS_PER_SECOND / 60 % 100);
    pHeader[1] = ToBCD(nFrames / LY_CD_SECTORS_PER_SECOND % 60);
    pHeader[2] = ToBCD(nFrames % LY_CD_SECTORS_PER_SECOND);
    pHeader[3] = mode == DISC_MODE1_2048 || mode == DISC_MODE1_2352 ? 1 : 2;
    if (GetStoredOffset(mode) != USER_DATA_OFFSET_XA)
        return;
    unsigned char* pSubheader = pSector + DISC_SUBHEADER_SECTOR_OFFSET; // file, channel, submode, coding; twice
    memset(pSubheader, 0, 2 * SUBHEADER_BYTES);
    pSubheader[2] = pSubheader[SUBHEADER_BYTES + 2] = mode == DISC_MODE2_2324 ? SUBMODE_FORM_2 : SUBMODE_DATA;
}
} // namespace

int GetStoredBytes(DISC_TRACK_MODE mode)
{
    switch (mode)
    {
    case DISC_MODE1_2048:
    case DISC_MODE2_2048:
        return 2048;
    case DISC_MODE2_2324:
        return 2324;
    case DISC_MODE2_2336:
        return 2336;
    case DISC_AUDIO:
    case DISC_MODE1_2352:
    case DISC_MODE2_2352:
        break;
    }
    return LY_CD_SECTOR_BYTES;
}

int GetStoredOffset(DISC_TRACK_MODE mode)
{
    if (mode == DISC_MODE2_2048 || mode == DISC_MODE2_2324)
        return USER_DATA_OFFSET_XA;
    return GetStoredBytes(mode) == LY_CD_SECTOR_BYTES ? 0 : DISC_SUBHEADER_SECTOR_OFFSET;
}

void SpreadSectors(unsigned char* pBuffer, int nRoom, int nSectors, int nLBA, DISC_TRACK_MODE mode)
{
    const int nStored = GetStoredBytes(mode);
    const int nOffset = GetStoredOffset(mode);
    if (nStored == LY_CD_SECTOR_BYTES)
        return;
    // Front to back: whole sector n ends where stored sector n + 1 starts, or before, so nothing unread is overwritten.
    const unsigned char* pFrom = pBuffer + static_cast<ptrdiff_t>(nRoom) * (LY_CD_SECTOR_BYTES - nStored);
    for (int n = 0; n < nSectors; n++, pFrom += nStored, pBuffer += LY_CD_SECTOR_BYTES)
    {
        memmove(pBuffer + nOffset, pFrom, static_cast<size_t>(nStored));
        memset(pBuffer + nOffset + nStored, 0, static_cast<size_t>(LY_CD_SECTOR_BYTES - nOffset - nStored));
        WriteFrame(pBuffer, nLBA + n, mode);
    }
}

void FillEmptySectors(unsigned char* pBuffer, int nSectors, int nLBA, DISC_TRACK_MODE mode)
{
    memset(pBuffer, 0, static_cast<size_t>(nSectors) * LY_CD_SECTOR_BYTES);
    if (mode == DISC_AUDIO)
        return;
    for (int n = 0; n < nSectors; n++)
        WriteFrame(pBuffer + static_cast<ptrdiff_t>(n) * LY_CD_SECTOR_BYTES, nLBA + n, mode);
}
