#include "DiscImage.h"

#include "SectorFrame.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr long long MAX_PIECE_BYTES = 400000LL * LY_CD_SECTOR_BYTES; // one step of a read: fits an int, and any disc

// All of these answer how many bytes of the disc, from nPosition on, now stand at pBuffer.

int ReadAudio(const DISC_EXTENT& extent, long long nPosition, unsigned char* pBuffer, int nBytes)
{
    long long nWithin = nPosition - extent.m_nPosition;
    int nStored = static_cast<int>(std::clamp<long long>(extent.m_nSourceBytes - nWithin, 0, nBytes));
    int nRead = nStored > 0 ? extent.m_pSource->Read(extent.m_nSourceOffset + nWithin, pBuffer, nStored) : 0;
    if (nRead < nStored)
        return nRead;
    memset(pBuffer + nStored, 0, static_cast<size_t>(nBytes - nStored));
    return nBytes;
}

int ReadData(const DISC_EXTENT& extent, long long nPosition, unsigned char* pBuffer, int nBytes)
{
    const int nSectorBytes = GetStoredBytes(extent.m_nMode);
    const int nSectors = nBytes / LY_CD_SECTOR_BYTES;
    const int nAll = nSectors * nSectorBytes;
    long long nWithin = (nPosition - extent.m_nPosition) / LY_CD_SECTOR_BYTES * nSectorBytes;
    int nStored = static_cast<int>(std::clamp<long long>(extent.m_nSourceBytes - nWithin, 0, nAll));
    unsigned char* pPacked = pBuffer + static_cast<ptrdiff_t>(nSectors) * (LY_CD_SECTOR_BYTES - nSectorBytes);
    int nRead = nStored > 0 ? extent.m_pSource->Read(extent.m_nSourceOffset + nWithin, pPacked, nStored) : 0;
    int nGood = nRead / nSectorBytes;
    if (nRead == nStored)
    {
        memset(pPacked + nStored, 0, static_cast<size_t>(nAll - nStored));
        nGood = nSectors;
    }
    SpreadSectors(pBuffer, nSectors, nGood, static_cast<int>(nPosition / LY_CD_SECTOR_BYTES), extent.m_nMode);
    return nGood * LY_CD_SECTOR_BYTES;
}

int ReadExtent(const DISC_EXTENT& extent, long long nPosition, unsigned char* pBuffer, int nBytes)
{
    if (extent.m_nMode != DISC_AUDIO && extent.m_pSource != nullptr)
        return ReadData(extent, nPosition, pBuffer, nBytes);
    if (extent.m_pSource != nullptr)
        return ReadAudio(extent, nPosition, pBuffer, nBytes);
    if (extent.m_nMode == DISC_AUDIO)
        memset(pBuffer, 0, static_cast<size_t>(nBytes));
    else
        FillEmptySectors(pBuffer, nBytes / LY_CD_SECTOR_BYTES, static_cast<int>(nPosition / LY_CD_SECTOR_BYTES),
                         extent.m_nMode);
    return nBytes;
}
} // namespace

DiscImage::DiscImage(DISC_CONTENT content) : m_Content(std::move(content)) {}

int DiscImage::GetFirstTrackNumber() const { return GetTracks().empty() ? 0 : GetTracks().front().m_nNumber; }

int DiscImage::GetLastTrackNumber() const { return GetTracks().empty() ? 0 : GetTracks().back().m_nNumber; }

int DiscImage::GetLeadOutLBA() const { return GetSessions().empty() ? 0 : GetSessions().back().m_nLeadOutLBA; }

const DISC_TRACK* DiscImage::FindTrack(int nNumber) const
{
    if (nNumber < GetFirstTrackNumber() || nNumber > GetLastTrackNumber() || GetTracks().empty())
        return nullptr;
    return &GetTracks()[static_cast<size_t>(nNumber - GetFirstTrackNumber())];
}

DISC_PLACE DiscImage::Locate(int nLBA) const
{
    auto behind = std::upper_bound(GetTracks().begin(), GetTracks().end(), nLBA,
                                   [](int n, const DISC_TRACK& track) { return n < track.m_nPregapLBA; });
    if (behind == GetTracks().begin() || nLBA >= (behind - 1)->GetEndLBA())
        return {};
    DISC_PLACE place{&*(behind - 1), 0};
    if (nLBA < place.m_pTrack->m_nStartLBA)
        return place;
    place.m_nIndex = 1;
    for (int nIndexLBA : place.m_pTrack->m_aryIndexLBAs)
        place.m_nIndex += nIndexLBA <= nLBA;
    return place;
}

bool DiscImage::FindExtent(long long nPosition)
{
    const std::vector<DISC_EXTENT>& aryExtents = m_Content.m_aryExtents;
    auto holds = [&](size_t n)
    { return n < aryExtents.size() && aryExtents[n].m_nPosition <= nPosition && nPosition < aryExtents[n].GetEnd(); };
    if (holds(m_nExtent))
        return true;
    if (holds(m_nExtent + 1))
    {
        m_nExtent++;
        return true;
    }
    auto behind = std::upper_bound(aryExtents.begin(), aryExtents.end(), nPosition,
                                   [](long long n, const DISC_EXTENT& extent) { return n < extent.m_nPosition; });
    if (behind == aryExtents.begin())
        return false;
    m_nExtent = static_cast<size_t>(behind - aryExtents.begin()) - 1;
    return holds(m_nExtent);
}

READ_STATUS DiscImage::GetHoleStatus(long long nPosition) const
{
    const std::vector<DISC_EXTENT>& aryExtents = m_Content.m_aryExtents;
    bool bOutside =
        aryExtents.empty() || nPosition < aryExtents.front().m_nPosition || nPosition >= aryExtents.back().GetEnd();
    return bOutside ? READ_OUTSIDE : READ_BETWEEN;
}

READ_RESULT DiscImage::ReadSectors(int nLBA, int nCount, unsigned char* pBuffer, DISC_TRACK_MODE* pForms)
{
    if (nCount < 0 || (nCount > 0 && pBuffer == nullptr))
        return {READ_BAD_ARGUMENT, 0};
    const long long nStart = static_cast<long long>(nLBA) * LY_CD_SECTOR_BYTES;
    const long long nEnd = nStart + static_cast<long long>(nCount) * LY_CD_SECTOR_BYTES;
    READ_STATUS status = READ_GOOD;
    long long nPosition = nStart;
    while (nPosition < nEnd && status == READ_GOOD)
    {
        if (!FindExtent(nPosition))
        {
            status = GetHoleStatus(nPosition);
            break;
        }
        const DISC_EXTENT& extent = m_Content.m_aryExtents[m_nExtent];
        int nBytes = static_cast<int>(std::min({nEnd - nPosition, extent.GetEnd() - nPosition, MAX_PIECE_BYTES}));
        int nGot = ReadExtent(extent, nPosition, pBuffer + (nPosition - nStart), nBytes);
        if (pForms != nullptr)
            for (long long n = (nPosition - nStart) / LY_CD_SECTOR_BYTES;
                 n * LY_CD_SECTOR_BYTES < nPosition - nStart + nGot; n++)
                pForms[n] = extent.m_nMode;
        nPosition += nGot;
        if (nGot < nBytes)
            status = READ_UNREADABLE;
    }
    return {status, static_cast<int>((nPosition - nStart) / LY_CD_SECTOR_BYTES)};
}
