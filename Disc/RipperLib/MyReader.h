// MyReader: the state of the open drive and of the rip that CCDRipper holds.
//
// Owner:   m_pDriveInfo and m_pCD go with it. m_pWaveSave and m_pDAC do not: they are gone by then, since the rip's own
//          thread deletes them at the end of each rip.
// Threads: m_bRipping is tested by playback reads while the rip's thread sets it, without a lock.

#pragma once

#include "Dac32.h"
#include "wavesave.h"
#include <atomic>

// The party that is told of a rip's end. Called on the rip's thread.
class IRipOwner
{
public:
    virtual void Post(int nMessage, int nFirst, int nSecond, int nThird) = 0;

protected:
    ~IRipOwner() = default;
};

struct MyReader
{
    MyReader() = default;
    ~MyReader()
    {
        delete m_pDriveInfo;
        CSCSICD::Delete(m_pCD);
    }
    MyReader(const MyReader&) = delete;
    MyReader& operator=(const MyReader&) = delete;

    bool m_bInitialized = false;              // Init has run
    bool m_bDriveOpen = false;                // OpenDrive has succeeded
    std::atomic<bool> m_bThreadActive{false}; // cleared when a rip ends
    std::atomic<bool> m_bRipping{false};      // CDAC::Copy runs: no OpenDrive, no sector reads
    CSCSICD* m_pCD = nullptr;                 // owned
    TDriveInfo* m_pDriveInfo = nullptr;       // owned
    CWaveSave* m_pWaveSave = nullptr;         // owned by the rip's thread
    CDAC* m_pDAC = nullptr;                   // owned by the rip's thread
    IRipOwner* m_pOwner = nullptr;            // not owned
    LyString m_strName;
};
