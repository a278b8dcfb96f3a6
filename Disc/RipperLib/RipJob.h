// RipJob: starts a rip on a controller, and keeps what is to be known of it: how far it is, how it ended, and the log
// of the sectors that are not above doubt.
//
//     RipJob job(ripper);                                        // a drive is open
//     AddTrackSection(list, *ripper.m_pReader->m_pCD, 5);
//     job.StartWAV(list, L"05.wav", &owner, RIP_OPTIONS());      // owner.Post(1151 or 1152, ...) tells of the end
//     ripper.Stop();                                             // waits for it
//     job.GetLog().CountBadSectors();
//
// Secure mode and the drive's cache. The engine believes a block that was read twice alike, which proves nothing if
// the second read came out of the cache. It offers two ways around that, and both go by the maximum of the command
// layer (SetMaxSektors):
//   1. A maximum above the size of the blocks makes it read from the start of the section in between. For a full block
//      that costs a cache of reading for each block. With 2 MiB, that is 35 times the time of reading twice.
//   2. The maximum that is in force at the start of the copy is the size of the blocks. A block that is larger than the
//      cache pushes its own start out before it ends, and costs nothing beyond being read twice.
// So the maximum is set to the cache and 27 sectors more: a read asks for up to 27 at once, and must find none of them
// in the cache. Full blocks then defeat the cache by themselves, and a section's shorter last block by way 1. Only in
// a section that is not as large itself neither is enough; there the command layer reads at the other end of the disc
// (RipSCSICD.h).
//
// Units:   sectors of LY_CD_SECTOR_BYTES.
// Errors:  RIP_START codes; below 17 they are those of the controller. A rip that was refused changes nothing.
// Owner:   the job must outlive the rip: its destructor stops it. The controller must outlive the job. The output goes
//          to the controller, which deletes it at the end.
// Threads: Start by the thread that owns the controller. Everything that asks may be called from any.

#pragma once

#include "CDRipper.h"
#include "RipCopy.h"
#include "RipSCSICD.h"
#include <memory>

enum RIP_START : int
{
    RIP_STARTED = 0,
    RIP_NOT_INITIALIZED = CDRIPPER_NOT_INITIALIZED,
    RIP_NO_DRIVE = CDRIPPER_NO_DRIVE,
    RIP_RUNNING = CDRIPPER_RIP_RUNNING, // or one has ended, and its thread not quite; CCDRipper::Stop waits for that
    RIP_BAD_LIST = CDRIPPER_BAD_TRACK,  // a section lies outside any disc
    RIP_NO_OUTPUT = 17,                 // there is none, or its file cannot be written
    RIP_NO_MEMORY = 18,
    RIP_NO_THREAD = 19
};

struct RIP_OPTIONS
{
    static constexpr int CACHE_AS_MEASURED = -1;
    static constexpr int MAX_CACHE_SECTORS = 64 * 1024 * 1024 / LY_CD_SECTOR_BYTES; // far more than drives have

    bool m_bSecure = true;                   // every block is read until two reads are alike
    int m_nCacheSectors = CACHE_AS_MEASURED; // of the drive; 0: it has none
    IRipProgress* m_pProgress = nullptr;     // not owned
};

class RipJob
{
public:
    explicit RipJob(CCDRipper& ripper) : m_Ripper(ripper) {}
    ~RipJob();
    RipJob(const RipJob&) = delete;
    RipJob& operator=(const RipJob&) = delete;

    // Starts a rip of the list into an output that is ready. The owner may be null. The output is taken only if the rip
    // starts.
    int Start(const RipSectorList& list, std::unique_ptr<CWaveSave>& pOutput, IRipOwner* pOwner,
              const RIP_OPTIONS& options);
    // The same into a new WAV file of 16-bit stereo, past the controller's analyser.
    int StartWAV(const RipSectorList& list, const wchar_t* pPath, IRipOwner* pOwner, const RIP_OPTIONS& options);
    bool Stop() { return m_Ripper.Stop(); } // waits; true if the rip ended with an error, as a stopped one does
    // Stops the rip without waiting for it. May also be called by who hears of the progress.
    void RequestStop();

    RIP_PROGRESS GetProgress() const { return m_State.GetProgress(); }
    SecureRipLog& GetLog() { return m_State.m_Log; }
    int GetEnd() const { return m_State.m_nEnd; }               // RIP_END, once the owner has heard of the end
    int GetWriteError() const { return m_State.m_nWriteError; } // WAVESAVE_RESULT
    // The cache that the rip reckons with, in sectors: the one told, or measured, or else the buffer that the drive
    // declares, since a cache that was not found may still be there.
    int GetCacheSectors() const { return m_nCacheSectors; }
    // Whether the drive says that its reads begin where they should (MMC-3, page 2Ah). One that does not may deliver
    // the same wrong bytes twice.
    bool GetAccurateStream() const { return m_bAccurateStream; }

private:
    int CheckStart(const RipSectorList& list, const CWaveSave* pOutput) const;
    int FindCacheSectors(const RIP_OPTIONS& options);
    int Prepare(const RipSectorList& list, CWaveSave& output, const RIP_OPTIONS& options, CDAC*& pDAC);

    CCDRipper& m_Ripper;
    RIP_STATE m_State;
    std::unique_ptr<RipSCSICD> m_pCD;
    int m_nCacheSectors = 0;
    bool m_bAccurateStream = false;
    bool m_bStarted = false;
};
