#include "RipCopy.h"
#include "CDUnits.h"
#include "LyThread.h"
#include "RipSCSICD.h"
#include "wavesave.h"
#include <cstring>

RIP_PROGRESS RIP_STATE::GetProgress() const
{
    return {m_nPercent, m_nTrack, m_nSector, m_nDone, m_nTotal, m_nReReads, m_nElapsedMs, m_nBlockSectors};
}

RipCopy::RipCopy(RIP_STATE& state, RipSCSICD& cd, CWaveSave& output) : m_pState(&state), m_pRipCD(&cd)
{
    m_pCD = &cd;
    m_pSectorList = &state.m_Sections;
    m_pWaveSave = &output;
    m_bRunning = true;
}

int RipCopy::GetElapsedMs() const { return static_cast<int>((GetTickCount() - m_pState->m_nStartTick) & 0x7FFFFFFF); }

void RipCopy::Log(int nStatus, int nSector, int nSectors, int nRetries)
{
    m_pState->m_Log.Add({m_nTrack, nSector, nSectors, nStatus, nRetries, 0, GetElapsedMs()});
}

void RipCopy::OnSecureReadResult(SECURE_READ_RESULT& result)
{
    m_bReported = true;
    m_pState->m_Log.AddResult(result, m_nTrack, m_nCurrentSector, m_nBlockSectors, GetElapsedMs());
    if (result.nStatus == SECURE_READ_LIMIT)
        LogDifferences();
}

// Which sectors were others in the two latest reads to the last. The whole block stays doubtful all the same.
void RipCopy::LogDifferences()
{
    for (int i = 0; i < m_nBlockSectors; ++i)
    {
        const ptrdiff_t nOffset = static_cast<ptrdiff_t>(i) * LY_CD_SECTOR_BYTES;
        if (std::memcmp(m_pBuffers[m_nBufferIndex] + nOffset, m_pBuffers[COMPARISON_BUFFER] + nOffset,
                        LY_CD_SECTOR_BYTES) != 0)
            Log(SECURE_RIP_DIFFERS, m_nCurrentSector + i, 1);
    }
}

// Comes once before there is a block, and then behind each one.
void RipCopy::WritePercent(int nPercent)
{
    RIP_STATE& state = *m_pState;
    if (m_bInBlocks)
    {
        LogBlock();
        state.m_nTrack = m_nTrack;
        state.m_nSector = m_nCurrentSector;
        state.m_nDone += m_nBlockSectors;
        state.m_nReReads = m_nReReads;
    }
    m_bInBlocks = true;
    state.m_nPercent = nPercent;
    state.m_nElapsedMs = GetElapsedMs();
    EndOnWriteError();
    if (state.m_pProgress != nullptr)
        state.m_pProgress->OnRipProgress(state.GetProgress());
}

// The engine has gone on by one block: that block lies behind the current sector, in the other buffer.
void RipCopy::LogBlock()
{
    const int nFirst = m_nCurrentSector - m_nBlockSectors;
    const int nReReads = m_nReReads - m_nReReadsLogged;
    m_nReReadsLogged = m_nReReads;
    // The engine is silent about a block that was alike in the second comparison.
    if (!m_bReported && nReReads > 0)
        Log(SECURE_RIP_REREAD, nFirst, m_nBlockSectors, nReReads);
    m_bReported = false;
    LogNotes(nFirst, 1 - m_nBufferIndex);
    // A stop cuts the comparing short, and the engine writes what it has.
    if (!m_bRunning && m_pRipCD->GetMode() == COPY_MODE_SECURE)
        Log(SECURE_RIP_UNFINISHED, nFirst, m_nBlockSectors);
    m_pState->m_Log.SetReReads(m_nReReads);
}

// What the drive did not deliver, or not anew, in either of the reads that were compared.
void RipCopy::LogNotes(int nFirst, int nBuffer)
{
    const bool bSecure = m_pRipCD->GetMode() == COPY_MODE_SECURE;
    for (int i = 0; i < m_nBlockSectors; ++i)
    {
        int nNotes = m_pRipCD->GetNotes(nBuffer, i);
        if (bSecure)
            nNotes |= m_pRipCD->GetNotes(COMPARISON_BUFFER, i);
        if ((nNotes & RipSCSICD::NOTE_UNREAD) != 0)
            Log(SECURE_RIP_UNREAD, nFirst + i, 1);
        else if ((nNotes & RipSCSICD::NOTE_CACHED) != 0 && bSecure)
            Log(SECURE_RIP_CACHED, nFirst + i, 1);
    }
}

// The engine does not look at the outcome of a write. A full disk ends a rip here, as a stop does.
void RipCopy::EndOnWriteError()
{
    if (m_pWaveSave->m_nError == WAVESAVE_WRITTEN || m_pState->m_nWriteError != WAVESAVE_WRITTEN)
        return;
    m_pState->m_nWriteError = m_pWaveSave->m_nError;
    StopCopy();
}

void RipCopy::WriteDone()
{
    EndOnWriteError();
    m_pState->m_Log.SetReReads(m_nReReads);
    m_pState->m_nElapsedMs = GetElapsedMs();
    int nEnd = RIP_END_WHOLE;
    if (m_pState->m_nWriteError != WAVESAVE_WRITTEN)
        nEnd = RIP_END_WRITE_FAILED;
    else if (m_pRipCD->GetDiscGone())
        nEnd = RIP_END_DISC_GONE;
    else if (!m_bRunning)
        nEnd = RIP_END_STOPPED;
    else if (m_nLastError != CDAC_NO_ERROR)
        nEnd = RIP_END_READ_FAILED;
    m_pState->m_nEnd = nEnd;
}
