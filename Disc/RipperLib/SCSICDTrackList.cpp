// The table of contents of CSCSICD: READ TOC/PMA/ATIP, format 0 (MMC-3, 6.26), as a doubly linked list with a cursor.

#include "LogHelper.h"
#include "SCSICD.h"
#include "SCSICDTrackListDetails.h"

static_assert(CSCSICD::TOC_BYTES == TOC_HEADER_BYTES + 100 * TOC_DESCRIPTOR_BYTES);

// The descriptor is followed by that of the next track or, behind the last one, of the lead-out.
static TTrackList GetTrack(const unsigned char* pDescriptor, bool bLast)
{
    const unsigned char* pNext = pDescriptor + TOC_DESCRIPTOR_BYTES;
    unsigned int nControl = pDescriptor[TOC_DESCRIPTOR_OFFSET_CONTROL];
    unsigned int nAddress = MMCGet32(pDescriptor + TOC_DESCRIPTOR_OFFSET_ADDRESS);
    unsigned int nSectors = MMCGet32(pNext + TOC_DESCRIPTOR_OFFSET_ADDRESS) - nAddress;
    if (!bLast && (pNext[TOC_DESCRIPTOR_OFFSET_CONTROL] & TRACK_CONTROL_DATA) != 0)
        nSectors -= LY_CD_SESSION_GAP_SECTORS;

    TTrackList track;
    track.nTrackNumber = pDescriptor[TOC_DESCRIPTOR_OFFSET_TRACK];
    track.nStartSector = static_cast<int>(nAddress) < 0 ? 0 : static_cast<int>(nAddress);
    track.nSectors =
        static_cast<int>(nSectors); // from the unclamped addresses, and wrapping: the drive may say anything
    track.nChannels = (nControl & TRACK_CONTROL_FOUR_CHANNELS) != 0 ? 4 : 2;
    track.bPreEmphasis = (nControl & TRACK_CONTROL_PRE_EMPHASIS) != 0;
    track.bDataTrack = (nControl & TRACK_CONTROL_DATA) != 0;
    track.bCopyProhibited = (nControl & TRACK_CONTROL_COPY_PERMITTED) == 0;
    return track;
}

bool ReadTrackList(const unsigned char* pTOC, TTrackListNode*& pFirst, TTrackListNode*& pLast)
{
    pFirst = nullptr;
    pLast = nullptr;
    int nFirst = pTOC[TOC_OFFSET_FIRST_TRACK];
    int nLast = pTOC[TOC_OFFSET_LAST_TRACK];
    if (nFirst == 0 || nLast == 0)
        return false;
    // A track needs its own descriptor and the next one. What a false last track puts beyond the answer is not there.
    for (int nTrack = nFirst; nTrack <= nLast && nTrack <= LY_CD_MAX_TRACKS; nTrack++)
    {
        // Deliberate: the list is indexed by the track number itself, also on a disc that does not start at track 1.
        const unsigned char* pDescriptor = pTOC + TOC_HEADER_BYTES + (nTrack - 1) * TOC_DESCRIPTOR_BYTES;
        TTrackListNode* pNode = new TTrackListNode{GetTrack(pDescriptor, nTrack == nLast), pLast, nullptr};
        (pLast ? pLast->pNext : pFirst) = pNode;
        pLast = pNode;
    }
    return true;
}

void CSCSICD::ReRead()
{
    CLogHelper log(LY_LOG_AREA_DRIVE, "CSCSICD::ReRead", true);
    DeleteTrackList();
    unsigned char toc[TOC_BYTES] = {};
    unsigned char cdb[10] = {CDB_READ_TOC, 0, TOC_FORMAT_TOC, 0, 0, 0, 0, 0, 0, 0};
    MMCPut16(cdb + 7, TOC_BYTES);
    if (!Send(DRIVE_TRANSFER_IN, cdb, sizeof cdb, toc, sizeof toc) || !ReadTrackList(toc, m_FirstTrack, m_AktTrack))
        m_nLastError = ERROR_COMMAND_FAILED;
    if (m_FirstTrack)
        log.Log("setting m_FirstTrack to %x", m_FirstTrack);
}

void CSCSICD::DeleteTrackList()
{
    CLogHelper log(LY_LOG_AREA_DRIVE, "CBaseCD::DeleteTrackList, setting m_FirstTrack to 0", true);
    while (m_FirstTrack)
    {
        TTrackListNode* pNext = m_FirstTrack->pNext;
        delete m_FirstTrack;
        m_FirstTrack = pNext;
    }
    m_AktTrack = nullptr;
}

int CSCSICD::ReadTrackInfo(TTrackList& infos)
{
    CLogHelper log(LY_LOG_AREA_DRIVE, "CBaseCD::ReadTrackInfo", true);
    int nWanted = infos.nTrackNumber;
    if (!m_FirstTrack || nWanted == 0)
    {
        log.Log("return 0 because either m_FirstTrack(%x) or Infos.nTrackNumber(%d) is zero", m_FirstTrack, nWanted);
        return 0;
    }
    // The cursor stays where the walk ends: queries in track order cost one step each.
    if (!m_AktTrack)
        m_AktTrack = m_FirstTrack;
    while (m_AktTrack->Info.nTrackNumber > nWanted && m_AktTrack->pPrevious)
        m_AktTrack = m_AktTrack->pPrevious;
    while (m_AktTrack->Info.nTrackNumber < nWanted && m_AktTrack->pNext)
        m_AktTrack = m_AktTrack->pNext;
    if (m_AktTrack->Info.nTrackNumber != nWanted)
    {
        log.Log("return 0 because m_AktTrack->Info.nTrackNumber != Infos.nTrackNumber, (%d != %d)",
                m_AktTrack->Info.nTrackNumber, nWanted);
        return 0;
    }
    infos = m_AktTrack->Info;
    return 1;
}

int CSCSICD::GetLastTrackNumber()
{
    if (!m_FirstTrack)
        return 0;
    const TTrackListNode* pNode = m_AktTrack ? m_AktTrack : m_FirstTrack;
    while (pNode->pNext)
        pNode = pNode->pNext;
    return pNode->Info.nTrackNumber;
}
