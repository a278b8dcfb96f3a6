// The exports of the disc service library, libLyDisc.dylib, beside the Attach and Detach of every library.
//
// Paths:   a drive path is a letter with a colon ("E:"), a device node ("/dev/sr0"), a disc image, a drive profile, or
//          a file URL of one of these.
// Threads: any, between Attach and Detach.

#pragma once

#include "LyEntryPoint.h"
#include "THDriveInterface.h"

LY_EXPORT void LyDiscInitialize(long long nContext);
LY_EXPORT void LyDiscUninitialize(long long nContext);

// The one service of the library. With bCreate false it is null until somebody has created it.
LY_EXPORT IDiscManager* GetDiscManagerDLL(bool bCreate);

// One English sentence: why this path could not be opened the last time, or which of its sectors could not be read
// since it was acquired. Empty if all went well. A system string that the caller frees.
LY_EXPORT wchar_t* GetDiscErrorText(const wchar_t* pPath);

// What was tolerated or left out when the disc of this path was opened, an English sentence to a line; empty if
// nothing, or while nobody holds the drive. A system string that the caller frees.
LY_EXPORT wchar_t* GetDiscWarnings(const wchar_t* pPath);

enum DISC_DRIVE_STATE : int
{
    DISC_DRIVE_READY = 0,     // with a disc
    DISC_DRIVE_NO_DISC = 1,   // tray closed
    DISC_DRIVE_TRAY_OPEN = 2, //
    DISC_DRIVE_HELD = 3,      // another program holds it; the reason names it
    DISC_DRIVE_UNUSABLE = 4,  // the reason says why, and what to do
    DISC_DRIVE_BECOMING = 5   // a disc is being spun up
};

// One drive as a list shows it. The texts belong to the service and hold during the call that hands the record over.
struct DISC_DRIVE_ENTRY
{
    const wchar_t* m_pPath;   // the device node or the image
    const wchar_t* m_pLetter; // "E:", or empty
    const wchar_t* m_pVendor; // may be empty
    const wchar_t* m_pModel;
    const wchar_t* m_pRevision;
    const wchar_t* m_pReason; // why it cannot be used, one sentence; or empty
    int m_nState;             // DISC_DRIVE_STATE
    bool m_bImage;            // an image in place of hardware
};

// Tells the callback of each drive: those of the machine first, then the images that have a letter. It ends early when
// the callback answers false. The number of drives told of.
using DISC_DRIVE_CALLBACK = bool (*)(void* pContext, const DISC_DRIVE_ENTRY* pEntry);
LY_EXPORT int EnumerateDiscDrives(DISC_DRIVE_CALLBACK pCallback, void* pContext);

// One command that went to a drive, as the service's ring of the last commands holds it.
struct DISC_EVIDENCE
{
    unsigned long long m_nNumber; // counts from 1 over all drives of the service
    long long m_nStartUS;         // when it was sent, microseconds since 1970-01-01 UTC
    int m_nDurationUS;            // until the answer, microseconds
    int m_nLBA;                   // of READ commands: the first sector; otherwise 0
    int m_nSectors;               // of READ commands: how many; otherwise 0
    int m_nDataBytes;             // what was transferred
    unsigned char m_nOpcode;      // CDB_OPCODE
    bool m_bGood;                 // ended with good status; otherwise the three codes say why
    unsigned char m_nSenseKey;
    unsigned char m_nASC;
    unsigned char m_nASCQ;
    unsigned char m_aryReserved[3];
};
static_assert(sizeof(DISC_EVIDENCE) == 40);

// Copies what the ring holds of the drive's commands with a number above nAfter, oldest first, at most nRecords. Null
// for pPath takes every drive. The count copied; 0 if there is nothing new.
LY_EXPORT int GetDiscEvidence(const wchar_t* pPath, unsigned long long nAfter, DISC_EVIDENCE* pRecords, int nRecords);
