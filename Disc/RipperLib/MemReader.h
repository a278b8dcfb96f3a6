// CMemReader: decouples the player's pull from the drive. A worker thread keeps a ring of 3.6 seconds filled from one
// track; the player's side copies out of it in any size.
//
//   drive --(worker: up to 27 sectors a read, straight into the ring)--> m_pRing --(player: memcpy)--> GetSamples
//
// Units:   bytes, but for the 27 sectors. Ring offsets are 0 to RING_BYTES - 1; equal offsets mean an empty ring. The
//          worker always leaves at least one sector free, so the ring never looks empty when it is full.
// Errors:  read answers all that was asked for or 0, nothing in between. A failed drive read lets the ring drain first.
// Threads: one worker and one player. The worker writes m_nWritePos, m_nRingBase, m_bTrackDone, m_nReadError and
//          m_nReadStartTick; the player writes m_nReadPos and, in seek, all of them. m_Lock is held over a drive read
//          and in seek; read takes no lock.

#pragma once

#include "CDRipper.h"
#include "CDUnits.h"
#include "LyThread.h"

class CMemReader : public LyThread
{
public:
    static constexpr int RING_SECTORS = 10 * LY_CD_MAX_READ_SECTORS;
    static constexpr int RING_BYTES = RING_SECTORS * LY_CD_SECTOR_BYTES;
    static constexpr unsigned int HANG_LIMIT_MS = 10000; // a drive read that takes longer is given up by the player
    static constexpr unsigned int IDLE_SLEEP_MS = 20;
    static constexpr unsigned int SEEK_SLEEP_MS = 1; // while a seek takes the lock
    static_assert(RING_BYTES == 635040);

    CMemReader();
    ~CMemReader() override;

    // Opens the drive for playback and starts the worker on the track. 0, or the error code of CCDRipper::OpenDrive.
    // A reader that runs leaves its track first.
    int start(const wchar_t* pDrive, int nTrack, int nPriority, int& nTrackBytes, int nReadSpeed);
    // Moves to a byte position of the track; waits for a drive read in progress. At or behind the end it does nothing.
    int seek(int nPosition);
    int read(int nBytes, char* pBuffer);
    int stop(); // waits without limit

    bool Thread() override;
    bool ProcessMainThreadMessage(int nMessage, long long nData) override;

    CCDRipper* m_pRipper = nullptr;  // owned, made with the reader
    std::atomic<int> m_nWritePos{0}; // ring offset of the next byte to store, a multiple of LY_CD_SECTOR_BYTES
    std::atomic<int> m_nReadPos{0};  // ring offset of the next byte to hand out
    int m_nTrack = 0;
    int m_nTrackBytes = 0;
    std::atomic<bool> m_bTrackDone{false};         // the last sector of the track is in the ring
    unsigned char* m_pRing = nullptr;              // owned, array
    std::atomic<int> m_nRingBase{0};               // byte position in the track of ring offset 0
    std::atomic<int> m_nReadError{0};              // last result of ReadSectors; non-zero stops the worker's reading
    std::atomic<unsigned int> m_nReadStartTick{0}; // when the read in progress began; 0 when none is
    LyLock m_Lock;
    std::atomic<bool> m_bSeekWaits{false}; // for the read in progress; no further one begins before it

private:
    void LeaveTrack();
    int GetNextReadSectors() const;
    bool FillOnce();
    void ReadIntoRing(int nSectors);
    bool GetIsHanging() const;
    int CopyOut(char* pBuffer, int nBytes, int nAvailable);
};
