#include "RipSCSICD.h"
#include "RipSections.h"
#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>

RipSCSICD::RipSCSICD(CTHDriveInterface* pDrive, TDriveInfo& info, LyString strDrive) : CSCSICD(pDrive, info, strDrive)
{
    (void)Lasterror(); // of the table of contents: a rip reads what it is told to read
}

bool RipSCSICD::Prepare(int nCacheSectors, unsigned char* const (&pBuffers)[CDAC::BUFFERS], int nBufferSectors,
                        std::atomic<bool>& bRunning)
{
    m_pRunning = &bRunning;
    m_bDiscGone = false;
    m_bStopWanted = false;
    m_nBufferBytes = static_cast<size_t>(nBufferSectors) * LY_CD_SECTOR_BYTES;
    try
    {
        for (int i = 0; i < CDAC::BUFFERS; ++i)
        {
            m_pBuffers[i] = pBuffers[i];
            m_Notes[i].assign(static_cast<size_t>(nBufferSectors), NOTE_NONE);
        }
        m_Failures.assign(RIP_MAX_SECTORS, 0);
        m_Scratch.resize(LY_CD_MAX_READ_BYTES);
        m_TOC.resize(TOC_BYTES);
        m_OtherTOC.resize(TOC_BYTES);
        FindAudio();
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    catch (const std::length_error&)
    {
        return false;
    }
    if (!ReadTOC(m_TOC))
        m_TOC.clear();
    return m_History.Reset(nCacheSectors, nCacheSectors > 0 ? RIP_MAX_SECTORS : 0);
}

// The stretches of audio, tracks that touch being one.
void RipSCSICD::FindAudio()
{
    m_aryAudio.clear();
    m_nAudioSectors = 0;
    for (const TTrackListNode* pNode = m_FirstTrack; pNode != nullptr; pNode = pNode->pNext)
    {
        const TTrackList& track = pNode->Info;
        const int nSectors = std::min(track.nSectors, RIP_MAX_SECTORS - m_nAudioSectors);
        if (track.bDataTrack != 0 || nSectors < 1 || track.nStartSector > RIP_MAX_SECTORS - nSectors)
            continue;
        if (!m_aryAudio.empty() && m_aryAudio.back().nFirst + m_aryAudio.back().nSectors == track.nStartSector)
            m_aryAudio.back().nSectors += nSectors;
        else
            m_aryAudio.push_back({track.nStartSector, nSectors});
        m_nAudioSectors += nSectors;
    }
}

void RipSCSICD::ReadCDDA(int nSector, int nCount, void* pBuffer)
{
    if (nCount < 1)
        return;
    if (m_bStopWanted)
        *m_pRunning = false;
    unsigned char* pBytes = static_cast<unsigned char*>(pBuffer);
    unsigned char* pNotes = FindNotes(pBytes, nCount);
    const bool bCached = m_History.MayHold(nSector, nCount) && !EmptyCache(nSector, nCount);
    if (pNotes != nullptr)
        std::memset(pNotes, bCached ? NOTE_CACHED : NOTE_NONE, static_cast<size_t>(nCount));
    for (int nDone = 0; nDone < nCount;)
    {
        bool bGivenUp = false;
        const int nStretch = CountStretch(nSector + nDone, nCount - nDone, bGivenUp);
        unsigned char* pPlace = pBytes + static_cast<ptrdiff_t>(nDone) * LY_CD_SECTOR_BYTES;
        if (bGivenUp || !*m_pRunning || !ReadOnce(nSector + nDone, nStretch, pPlace))
            ReadStretch(nSector + nDone, nStretch, pPlace, pNotes != nullptr ? pNotes + nDone : nullptr);
        nDone += nStretch;
    }
    m_nLastReadTick = GetTickCount();
}

// How many sectors from here on have been given up, or have not.
int RipSCSICD::CountStretch(int nSector, int nCount, bool& bGivenUp) const
{
    const auto isGivenUp = [this](int n) {
        return n >= 0 && static_cast<size_t>(n) < m_Failures.size() &&
               m_Failures[static_cast<size_t>(n)] >= MAX_FAILURES;
    };
    bGivenUp = isGivenUp(nSector);
    int nStretch = 1;
    while (nStretch < nCount && isGivenUp(nSector + nStretch) == bGivenUp)
        ++nStretch;
    return nStretch;
}

// Sector by sector what could not be read at once. A stopped copy is not read any further, nor what was given up.
void RipSCSICD::ReadStretch(int nSector, int nCount, unsigned char* pBuffer, unsigned char* pNotes)
{
    for (int i = 0; i < nCount; ++i)
    {
        unsigned char* pPlace = pBuffer + static_cast<ptrdiff_t>(i) * LY_CD_SECTOR_BYTES;
        bool bGivenUp = false;
        (void)CountStretch(nSector + i, 1, bGivenUp);
        if (*m_pRunning && !bGivenUp)
        {
            // One sector alone has just failed.
            const bool bRead = nCount > 1 && ReadOnce(nSector + i, 1, pPlace);
            CountFailure(nSector + i, !bRead);
            if (bRead)
                continue;
        }
        std::memset(pPlace, 0, LY_CD_SECTOR_BYTES);
        if (pNotes != nullptr)
            pNotes[i] |= NOTE_UNREAD;
    }
}

void RipSCSICD::CountFailure(int nSector, bool bFailed)
{
    if (nSector < 0 || static_cast<size_t>(nSector) >= m_Failures.size())
        return;
    unsigned char& nFailures = m_Failures[static_cast<size_t>(nSector)];
    nFailures = static_cast<unsigned char>(bFailed ? std::min(nFailures + 1, MAX_FAILURES) : 0);
}

// READ CD, MMC-3, 6.15: as CSCSICD sends it.
bool RipSCSICD::ReadOnce(int nSector, int nCount, unsigned char* pBuffer)
{
    if (m_pDrive == nullptr)
        return false;
    unsigned char cdb[12] = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 0, 0, 0, 0, 0, READ_CD_USER_DATA, 0, 0};
    MMCPut24(cdb + 3, static_cast<unsigned int>(nSector));
    MMCPut16(cdb + 7, static_cast<unsigned int>(nCount));
    const bool bRead = m_pDrive->SendCmd(DRIVE_TRANSFER_IN, cdb, sizeof cdb, pBuffer, nCount * LY_CD_SECTOR_BYTES,
                                         CTHDriveInterface::CD_TIMEOUT_MS, false);
    if (bRead)
        m_History.OnRead(nSector, nCount);
    LookAtSense(bRead);
    return bRead && !m_bDiscGone;
}

// Whether the disc is still there, and still the same. A unit attention also stands behind a command that was repeated
// and then went well.
void RipSCSICD::LookAtSense(bool bRead)
{
    int nResponseCode = 0;
    int nKey = SENSE_NONE;
    int nASC = ASC_NONE;
    int nASCQ = 0;
    if (!m_pDrive->GetLastErrorCodes(nResponseCode, nKey, nASC, nASCQ))
        return;
    constexpr int ASC_NO_RESPONSE = 0x05; // SPC-3, annex D: the logical unit does not respond to selection
    const bool bTakenOut = !bRead && ((nKey == SENSE_NOT_READY && nASC == ASC_MEDIUM_NOT_PRESENT) ||
                                      (nKey == SENSE_HARDWARE_ERROR && nASC == ASC_NO_RESPONSE));
    // A shorter disc does not have the sector at all, and says that in place of the unit attention ahead of it.
    const bool bPutIn = (nKey == SENSE_UNIT_ATTENTION && nASC == ASC_MEDIUM_MAY_HAVE_CHANGED) ||
                        (nKey == SENSE_ILLEGAL_REQUEST && nASC == ASC_ADDRESS_OUT_OF_RANGE);
    if (!bTakenOut && !(bPutIn && !(ReadTOC(m_OtherTOC) && m_OtherTOC == m_TOC)))
        return;
    m_bDiscGone = true;
    *m_pRunning = false;
}

bool RipSCSICD::ReadTOC(BYTES& toc)
{
    unsigned char cdb[10] = {CDB_READ_TOC};
    MMCPut16(cdb + 7, TOC_BYTES);
    std::fill(toc.begin(), toc.end(), static_cast<unsigned char>(0));
    return m_pDrive != nullptr && m_pDrive->SendCmd(DRIVE_TRANSFER_IN, cdb, sizeof cdb, toc.data(), TOC_BYTES,
                                                    CTHDriveInterface::CD_TIMEOUT_MS, false);
}

// Reads other audio until the cache cannot hold these sectors any more: what is farthest away, since a rip comes there
// latest. One read more than the cache holds, so that the next time the start of that stretch is not in it. False if
// the disc has too little else.
bool RipSCSICD::EmptyCache(int nSector, int nCount)
{
    const int nWanted = m_History.GetCacheSectors() + LY_CD_MAX_READ_SECTORS;
    const bool bFirstHalf =
        !m_aryAudio.empty() &&
        nSector < (m_aryAudio.front().nFirst + m_aryAudio.back().nFirst + m_aryAudio.back().nSectors) / 2;
    const int nStart = bFirstHalf ? std::max(0, m_nAudioSectors - nWanted) : 0;
    int nRead = 0;
    for (int nWalked = 0; nWalked < m_nAudioSectors && nRead < nWanted && *m_pRunning;)
        nWalked += ReadPiece((nStart + nWalked) % m_nAudioSectors, nSector, nSector + nCount, nRead);
    return !m_History.MayHold(nSector, nCount);
}

// Reads a piece of the audio from that position on, counted over all stretches, unless the cache may serve it. What is
// to be avoided is left out. Answers how far the walk goes on; nRead grows by what came from the disc.
int RipSCSICD::ReadPiece(int nPosition, int nAvoidFirst, int nAvoidEnd, int& nRead)
{
    auto pExtent = m_aryAudio.begin();
    while (nPosition >= pExtent->nSectors)
    {
        nPosition -= pExtent->nSectors;
        ++pExtent;
    }
    const int nFirst = pExtent->nFirst + nPosition;
    int nCount = std::min(LY_CD_MAX_READ_SECTORS, pExtent->nSectors - nPosition);
    if (nFirst >= nAvoidFirst && nFirst < nAvoidEnd)
        return std::min(nCount, nAvoidEnd - nFirst);
    if (nFirst < nAvoidFirst)
        nCount = std::min(nCount, nAvoidFirst - nFirst);
    if (!m_History.MayHold(nFirst, nCount) && ReadOnce(nFirst, nCount, m_Scratch.data()))
        nRead += nCount;
    return nCount;
}

unsigned char* RipSCSICD::FindNotes(const unsigned char* pBuffer, int nCount)
{
    const size_t nBytes = static_cast<size_t>(nCount) * LY_CD_SECTOR_BYTES;
    for (int i = 0; i < CDAC::BUFFERS; ++i)
    {
        const std::less_equal<> notBehind;
        if (m_pBuffers[i] != nullptr && notBehind(m_pBuffers[i], pBuffer) &&
            notBehind(pBuffer + nBytes, m_pBuffers[i] + m_nBufferBytes))
            return m_Notes[i].data() + (pBuffer - m_pBuffers[i]) / LY_CD_SECTOR_BYTES;
    }
    return nullptr;
}

unsigned char RipSCSICD::GetNotes(int nBuffer, int nPlace) const
{
    const BYTES& notes = m_Notes[nBuffer];
    const bool bThere = nPlace >= 0 && static_cast<size_t>(nPlace) < notes.size();
    return bThere ? notes[static_cast<size_t>(nPlace)] : static_cast<unsigned char>(NOTE_NONE);
}
