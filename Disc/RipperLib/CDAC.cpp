#include "CDAC.h"
#include "CDUnits.h"
#include "wavesave.h"
#include <algorithm>

namespace
{
constexpr int SALVAGE_MAX_ERRORS = 3;
constexpr int SECTION_END_SECTORS = 11; // closer to the end than this an unreadable block is forgiven
constexpr int RUN_OUT_SECTORS = 180;    // ahead of a data track the run-out may be unreadable
} // namespace

CDAC::~CDAC()
{
    for (unsigned char*& pBuffer : m_pBuffers)
    {
        delete[] pBuffer;
        pBuffer = nullptr;
    }
}

void CDAC::Delete(CDAC* pDAC)
{
    if (pDAC == nullptr)
        return;
    pDAC->CDAC::~CDAC();
    ::operator delete(static_cast<void*>(pDAC)); // unsized: the object may be larger than a CDAC
}

int CDAC::Lasterror()
{
    const int nError = m_nLastError;
    m_nLastError = CDAC_NO_ERROR;
    return nError;
}

void CDAC::Copy()
{
    // Taken once, ahead of WriteInit: who raises the maximum from then on lengthens the cache defeat, not the blocks.
    const int nBlockSize = m_pCD != nullptr ? m_pCD->GetMaxSektors() : 0; // an empty list needs no drive
    WriteInit();
    WritePercent(0);
    m_nBufferIndex = 0;
    m_nReserved = 0;
    m_nReReads = 0;
    for (int i = 0; i < m_pSectorList->GetSize() && m_bRunning; ++i)
    {
        if (!CopySection(i, nBlockSize))
        {
            WriteDone();
            return;
        }
    }
    WriteDone();
    if (!m_bRunning)
    {
        m_nLastError = CDAC_STOPPED;
        m_pWaveSave->Stop();
    }
}

// Copies one section. False if the whole copy ends here.
bool CDAC::CopySection(int nIndex, int nBlockSize)
{
    m_nSectorsLeft = m_pSectorList->GetNumSectors(nIndex);
    m_nCurrentSector = m_pSectorList->GetStartSector(nIndex);
    m_nTrack = m_pSectorList->GetTrackNum(nIndex);
    TTrackList infos{};
    infos.nTrackNumber = static_cast<unsigned char>(m_nTrack);
    (void)m_pCD->ReadTrackInfo(infos); // puts the command layer's cursor on this track
    m_nSectionStart = m_nCurrentSector;
    m_nSectionEnd = m_nSectionStart + m_nSectorsLeft;

    // A negative length counts as none, and without a block size there is nothing to read by.
    for (bool bFirst = true; m_nSectorsLeft > 0 && nBlockSize > 0 && m_bRunning; bFirst = false)
    {
        m_nBlockSectors = std::min(m_nSectorsLeft, nBlockSize);
        if (m_pCD->GetMode() == 1)
            (void)SecureRead(m_nCurrentSector, m_nBlockSectors);
        else
            (void)ReadCDDA(m_nCurrentSector, m_nBlockSectors, m_pBuffers[m_nBufferIndex]);
        // Only a section's last block can be shorter, so the block before this one is a full one.
        if (!bFirst)
            WriteBlock(nBlockSize, 1 - m_nBufferIndex);
        if (m_nLastError != CDAC_NO_ERROR && !HandleBlockError())
            return false;
        m_nSectorsLeft -= m_nBlockSectors;
        m_nCurrentSector += m_nBlockSectors;
        m_nBufferIndex = 1 - m_nBufferIndex;
        ReportProgress(nIndex);
    }
    // Deliberate: a stopped copy writes its pending block too, and an empty section writes the block of the section
    // before it once more. Outputs of the player are compared with such files.
    WriteBlock(m_nBlockSectors, 1 - m_nBufferIndex);
    return true;
}

// What becomes of a block that was read with an error. False if the copy ends here; the error that stays is its
// outcome.
bool CDAC::HandleBlockError()
{
    if (m_nLastError == CDAC_FATAL || m_pCD->GetMode() == 1)
        return false;
    unsigned char* pBuffer = m_pBuffers[m_nBufferIndex];
    const int nGot = ReadCDSkipErrors(m_nCurrentSector, m_nBlockSectors, reinterpret_cast<unsigned int*>(pBuffer),
                                      SALVAGE_MAX_ERRORS);
    // Deliberate: what was salvaged is written now, and the whole buffer again as the previous block on the next pass.
    if (nGot != 0)
        WriteBlock(nGot, m_nBufferIndex);
    const bool bSectionEnd = m_nSectorsLeft < SECTION_END_SECTORS;
    const TTrackListNode* pNext = m_pCD->m_AktTrack != nullptr ? m_pCD->m_AktTrack->pNext : nullptr;
    const bool bRunOut = m_nSectorsLeft < RUN_OUT_SECTORS && pNext != nullptr && pNext->Info.bDataTrack != 0;
    if (bSectionEnd || bRunOut)
    {
        m_nLastError = CDAC_NO_ERROR;
        return false;
    }
    if (nGot == 0)
        return false;
    m_nLastError = CDAC_NO_ERROR;
    return true;
}

void CDAC::WriteBlock(int nSectors, int nBuffer)
{
    m_pWaveSave->WriteBuffer(static_cast<long>(nSectors) * LY_CD_SECTOR_FRAMES,
                             reinterpret_cast<unsigned int*>(m_pBuffers[nBuffer]));
}

void CDAC::ReportProgress(int nIndex)
{
    const long long nTotal = m_pSectorList->GetTotalSectors(0);
    const long long nDone = nTotal - m_pSectorList->GetRemainingSectors(nIndex + 1) - m_nSectorsLeft;
    WritePercent(nTotal > 0 ? static_cast<int>(nDone * 100 / nTotal) : 0);
}
