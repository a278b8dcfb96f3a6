// RipSCSICD: the command layer that a rip reads through. It does what CSCSICD does, and takes note of what CSCSICD
// drops on purpose: which sectors of which buffer the drive has really delivered.
//
// Failed:  a read of several sectors that fails is done again sector by sector. What still fails is silence in the
//          buffer, and is noted. The copy engine hears of no error: it would pack what is left at the start of the
//          block, and no sector of it would be where it belongs. A sector that failed MAX_FAILURES times in a row is
//          not asked for again in this rip: with a real drive each time takes seconds.
// Cached:  before a read that the drive's cache might serve with bytes that it served before, as many sectors as the
//          cache holds are read at the other end of the disc. Blocks of a rip are so large that this is rarely needed
//          (RipJob.h). Where the disc is too small for it, the sectors are noted.
// Gone:    when the disc is taken out, or another one comes in, or the drive is unplugged, the copy is stopped.
// Stopped: a copy that is stopped reads nothing more: what is left of its block is noted as not read.
//
// Owner:   the rip job. The drive is borrowed. This class has a destructor of its own: it is never handed to a
//          controller, which would delete it as a CSCSICD.
// Threads: as CSCSICD; what it notes is read on the same thread.

#pragma once

#include "CDAC.h"
#include "ReadHistory.h"
#include "SCSICD.h"
#include <atomic>
#include <vector>

class RipSCSICD final : public CSCSICD
{
public:
    enum NOTE : unsigned char
    {
        NOTE_NONE = 0,
        NOTE_UNREAD = 1, // the drive refused the sector
        NOTE_CACHED = 2  // it may have come out of the cache, as an earlier read got it
    };

    static constexpr int MAX_FAILURES = 4; // two comparisons and more; each has repetitions of its own

    RipSCSICD(CTHDriveInterface* pDrive, TDriveInfo& info, LyString strDrive);
    ~RipSCSICD() = default;

    // Everything that a rip needs is allocated here. The buffers are those of the engine, nBufferSectors each; the
    // flag is the engine's. False if there is no memory.
    bool Prepare(int nCacheSectors, unsigned char* const (&pBuffers)[CDAC::BUFFERS], int nBufferSectors,
                 std::atomic<bool>& bRunning);

    void ReadCDDA(int nSector, int nCount, void* pBuffer) override;

    // What is noted of the sector at that place of a buffer, as it was last read: NOTE bits.
    unsigned char GetNotes(int nBuffer, int nPlace) const;
    bool GetDiscGone() const { return m_bDiscGone; }
    void RequestStop() { m_bStopWanted = true; } // any thread; takes effect at the next read

private:
    struct EXTENT
    {
        int nFirst;
        int nSectors;
    };
    typedef std::vector<unsigned char> BYTES;

    bool ReadOnce(int nSector, int nCount, unsigned char* pBuffer);
    void ReadStretch(int nSector, int nCount, unsigned char* pBuffer, unsigned char* pNotes);
    int CountStretch(int nSector, int nCount, bool& bGivenUp) const;
    void CountFailure(int nSector, bool bFailed);
    void LookAtSense(bool bRead);
    bool ReadTOC(BYTES& toc);
    bool EmptyCache(int nSector, int nCount);
    int ReadPiece(int nPosition, int nAvoidFirst, int nAvoidEnd, int& nRead);
    void FindAudio();
    unsigned char* FindNotes(const unsigned char* pBuffer, int nCount);

    ReadHistory m_History;
    BYTES m_TOC;      // as the disc answered when the rip was prepared
    BYTES m_OtherTOC; // to compare with
    BYTES m_Failures; // by sector: how often in a row it failed alone; MAX_FAILURES at most
    std::vector<EXTENT> m_aryAudio;
    int m_nAudioSectors = 0;
    const unsigned char* m_pBuffers[CDAC::BUFFERS] = {}; // of the engine
    size_t m_nBufferBytes = 0;
    BYTES m_Notes[CDAC::BUFFERS];
    BYTES m_Scratch; // what is read only to push something else out
    std::atomic<bool>* m_pRunning = nullptr;
    std::atomic<bool> m_bStopWanted{false};
    bool m_bDiscGone = false;
};
