#include "DiscTracks.h"
#include "MMC.h"
#include "SCSICDTrackListDetails.h"
#include "Text.h"
#include <cstring>

namespace
{
constexpr int FIRST_TRACK = 1; // with which nearly all discs begin

// READ TOC/PMA/ATIP, format 0 (MMC-3, 6.26), with the entries of the tracks, and of the lead-out behind them, moved to
// the places of their numbers.
bool ReadMovedTOC(CSCSICD& cd, unsigned char (&aryTOC)[CSCSICD::TOC_BYTES])
{
    unsigned char cdb[10] = {CDB_READ_TOC, 0, TOC_FORMAT_TOC};
    MMCPut16(cdb + 7, sizeof aryTOC);
    if (cd.m_pDrive == nullptr || !cd.m_pDrive->SendCmd(DRIVE_TRANSFER_IN, cdb, sizeof cdb, aryTOC, sizeof aryTOC,
                                                        CTHDriveInterface::CD_TIMEOUT_MS, false))
        return false;
    const int nFirst = aryTOC[TOC_OFFSET_FIRST_TRACK];
    const int nLast = aryTOC[TOC_OFFSET_LAST_TRACK];
    unsigned char* pEntries = aryTOC + TOC_HEADER_BYTES;
    if (nFirst <= FIRST_TRACK || nLast < nFirst || nLast > LY_CD_MAX_TRACKS ||
        pEntries[TOC_DESCRIPTOR_OFFSET_TRACK] != nFirst)
        return false;
    // All places from 1 to the last track's and the lead-out's are in the answer.
    const int nEntries = nLast - nFirst + 2;
    std::memmove(pEntries + (nFirst - FIRST_TRACK) * TOC_DESCRIPTOR_BYTES, pEntries,
                 static_cast<size_t>(nEntries) * TOC_DESCRIPTOR_BYTES);
    return true;
}
} // namespace

void CorrectTrackList(CSCSICD& cd)
{
    if (cd.m_FirstTrack == nullptr || cd.m_FirstTrack->Info.nTrackNumber == FIRST_TRACK)
        return;
    unsigned char aryTOC[CSCSICD::TOC_BYTES] = {};
    TTrackListNode* pFirst = nullptr;
    TTrackListNode* pLast = nullptr;
    if (!ReadMovedTOC(cd, aryTOC) || !ReadTrackList(aryTOC, pFirst, pLast))
        return;
    cd.DeleteTrackList();
    cd.m_FirstTrack = pFirst;
    cd.m_AktTrack = pLast;
}

std::vector<TTrackList> GetTrackList(const CSCSICD& cd)
{
    std::vector<TTrackList> aryTracks;
    for (const TTrackListNode* pNode = cd.m_FirstTrack; pNode != nullptr; pNode = pNode->pNext)
        aryTracks.push_back(pNode->Info);
    return aryTracks;
}

std::string GetTrackText(const LyStringArray& aryTexts, int nTrack)
{
    return nTrack >= 1 && nTrack <= aryTexts.GetSize() ? Narrow(aryTexts[nTrack - 1]) : std::string();
}
