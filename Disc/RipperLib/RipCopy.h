// RipCopy: the copy engine of a rip job. It turns what the engine tells into progress and into the job's log.
//
// Life:    made by the job, deleted by the controller as a CDAC, so that it owns nothing: all that lives longer stands
//          in a RIP_STATE of the job.
// Threads: the rip's worker. The fields of RIP_STATE that others read are atomic.

#pragma once

#include "CDAC.h"
#include "SecureRipLog.h"
#include <atomic>

class RipSCSICD;

// What CSCSICD::GetMode answers to the engine.
enum RIP_MODE : int
{
    COPY_MODE_BURST = 0,
    COPY_MODE_SECURE = 1
};

// How far a rip is. Kept by the job; any thread may ask.
struct RIP_PROGRESS
{
    int nPercent = 0;
    int nTrack = 0;        // that is being read
    int nSector = 0;       // behind the last block
    int nDone = 0;         // sectors of the whole list
    int nTotal = 0;        //
    int nReReads = 0;      // reads repeated for a mismatch
    int nElapsedMs = 0;    // when the last block ended
    int nBlockSectors = 0; // the most that one block takes
};

// Hears of each block, on the rip's thread, which waits for it.
class IRipProgress
{
public:
    virtual void OnRipProgress(const RIP_PROGRESS& progress) = 0;

protected:
    ~IRipProgress() = default;
};

// Why a rip ended before its list did.
enum RIP_END : int
{
    RIP_END_WHOLE = 0,       // it did not
    RIP_END_STOPPED = 1,     // by Stop
    RIP_END_READ_FAILED = 2, // the engine gave up
    RIP_END_WRITE_FAILED = 3,
    RIP_END_DISC_GONE = 4 // taken out or changed, or the drive with it
};

// What a running rip shares with its job.
struct RIP_STATE
{
    SecureRipLog m_Log;
    RipSectorList m_Sections; // as the job was given them
    IRipProgress* m_pProgress = nullptr;
    unsigned int m_nStartTick = 0;
    std::atomic<int> m_nPercent{0};
    std::atomic<int> m_nTrack{0};
    std::atomic<int> m_nSector{0};
    std::atomic<int> m_nDone{0};
    std::atomic<int> m_nTotal{0};
    std::atomic<int> m_nReReads{0};
    std::atomic<int> m_nElapsedMs{0};
    std::atomic<int> m_nBlockSectors{0};
    std::atomic<int> m_nWriteError{0}; // WAVESAVE_RESULT of the write that ended the rip
    std::atomic<int> m_nEnd{RIP_END_WHOLE};

    RIP_PROGRESS GetProgress() const;
};

class RipCopy final : public CDAC
{
public:
    RipCopy(RIP_STATE& state, RipSCSICD& cd, CWaveSave& output);

    void WritePercent(int nPercent) override;
    void WriteDone() override;
    void OnSecureReadResult(SECURE_READ_RESULT& result) override;

private:
    void LogBlock();
    void LogNotes(int nFirst, int nBuffer);
    void LogDifferences();
    void EndOnWriteError();
    void Log(int nStatus, int nSector, int nSectors, int nRetries = 0);
    int GetElapsedMs() const;

    RIP_STATE* m_pState;
    RipSCSICD* m_pRipCD;
    int m_nReReadsLogged = 0; // of the copy, up to the last block
    bool m_bReported = false; // the engine has told of this block
    bool m_bInBlocks = false; // the first block has begun
};
