// The CD command layer: what the ripper and the player want from a disc, as command descriptor blocks.

#pragma once

#include "CDUnits.h"
#include "LyArray.h"
#include "LySCSIBase.h"
#include "LyString.h"
#include "THDriveInterface.h"
#include <cstddef>

class CLogHelper;

// One track of the table of contents. Copied by value; 16 bytes.
struct TTrackList
{
    unsigned char nTrackNumber;    // from the table of contents; also the key of ReadTrackInfo
    int nStartSector;              // logical block address, never negative
    int nSectors;                  // length in sectors of LY_CD_SECTOR_BYTES
    unsigned char nChannels;       // 2, or 4
    unsigned char bPreEmphasis;    // 1 or 0, as the two that follow
    unsigned char bDataTrack;      // audio of a mixed disc ends LY_CD_SESSION_GAP_SECTORS ahead of it
    unsigned char bCopyProhibited; // digital copying is not permitted
};
static_assert(sizeof(TTrackList) == 16);
static_assert(offsetof(TTrackList, nStartSector) == 4 && offsetof(TTrackList, nSectors) == 8);
static_assert(offsetof(TTrackList, nChannels) == 12 && offsetof(TTrackList, bCopyProhibited) == 15);

// The gap in front of a data session: run-out, lead-in and pre-gap, 152 seconds in all.
constexpr int LY_CD_SESSION_GAP_SECTORS = 152 * LY_CD_SECTORS_PER_SECOND;
static_assert(LY_CD_SESSION_GAP_SECTORS == 11400);

// A node of the track list, which is linked both ways and owned by its CSCSICD.
struct TTrackListNode
{
    TTrackList Info;
    TTrackListNode* pPrevious;
    TTrackListNode* pNext;
};

// The drive, as the ripper describes it to CSCSICD.
struct TDriveInfo
{
    static constexpr int DRIVE_TYPE = 4;
    static constexpr int VENDOR_CHARS = 9;
    static constexpr int MODEL_CHARS = 17;

    int m_nDriveType;              // always DRIVE_TYPE
    int m_nMaxSektors;             // most sectors to read in one command
    int m_nMode;                   // 1: rip, 0: playback
    char m_szVendor[VENDOR_CHARS]; // as strncpy leaves it: a longer text fills the field and has no terminator
    char m_szModel[MODEL_CHARS];   // likewise
    int m_nDriveValue;             // DRIVE_INFO::m_nValueA
    int m_nCacheSize;              // read cache in bytes, filled in by who measured it
    int m_nReadCompensation;       // read offset compensation

    TDriveInfo(); // as for a closed drive, in mode 0
    TDriveInfo(DRIVE_INFO info, int nMode);
};

struct TDriveStatus
{
    int bMediaLoaded; // 1 or 0
};

// The commands of a CD drive, and its table of contents as a doubly linked list with a cursor.
//
// Units:   sectors of LY_CD_SECTOR_BYTES at logical block addresses, 0 being MSF 00:02:00.
// Errors:  a failed tray, lock, speed or table-of-contents command leaves 1 in m_nLastError, which Lasterror reads and
//          clears. A failed read leaves nothing: see ReadCDDA.
// Owns:    the track list. The drive is borrowed; without one, every command fails.
// Threads: one at a time. Even queries move the cursor.
class CSCSICD
{
public:
    static constexpr int TOC_BYTES = 804; // four of header and room for 100 descriptors of eight
    static constexpr int ERROR_NONE = 0;
    static constexpr int ERROR_COMMAND_FAILED = 1;

    // Asks for the drive's status and reads the table of contents.
    CSCSICD(CTHDriveInterface* pDrive, TDriveInfo& info, LyString strDrive);
    ~CSCSICD(); // not virtual: the table below is published and has no place for it
    CSCSICD(const CSCSICD&) = delete;
    CSCSICD& operator=(const CSCSICD&) = delete;

    // Deletes an object that was made as a CSCSICD, not as something derived from it. Null does nothing.
    static void Delete(CSCSICD* pCD);

    // The order of these operations is their order in the virtual table.

    // Reads nCount sectors, at most 65,535, from nSector into nCount * LY_CD_SECTOR_BYTES bytes.
    // Deliberate: a failed read is not reported. The layers above judge the bytes by comparing reads.
    virtual void ReadCDDA(int nSector, int nCount, void* pBuffer);
    // Whether media is loaded. Deliberate: it always says so in the end; the table of contents then decides.
    virtual TDriveStatus Get_DriveStatus();
    virtual void EjectDisk();
    virtual void LockDoor(int nLock); // 1 locks, 0 unlocks; only the lowest bit counts
    virtual void CloseTray();
    virtual void ReRead(); // replaces the track list; leaves the CD-Text alone
    virtual bool
    ReadCDText(); // fills the four CD-Text members; what an earlier read found stays where it is not replaced
    virtual void SetMaxSektors(int nSectors);
    virtual int GetReadCompensation();
    virtual int GetCacheSize();  // bytes
    virtual int GetMaxSektors(); // sectors
    virtual int GetMode();

    void SetCurrentSpeed(int nMultiplier); // of 1x; 0 is the drive's maximum
    int Lasterror();
    int ReadTrackInfo(TTrackList& infos); // 1, with the track that infos.nTrackNumber names; or 0, infos left alone
    int GetLastTrackNumber();             // 0 without a list
    void DeleteTrackList();

    bool m_bCDTextRead;          // result of the last ReadCDText
    LyString m_strDiscPerformer; // CD-Text, as the three that follow
    LyString m_strDiscTitle;
    LyStringArray m_TrackTitles; // index = track number - 1; gaps are empty
    LyStringArray m_TrackPerformers;
    CTHDriveInterface* m_pDrive; // not owned
    long long m_nLastError;
    TTrackListNode* m_FirstTrack; // null: no table of contents
    TTrackListNode* m_AktTrack;   // cursor
    TDriveInfo m_DriveInfo;
    unsigned int m_nLastReadTick; // GetTickCount at the end of the last ReadCDDA
    LyString m_strDrive;
    int m_nCurrentSpeed; // last multiplier given to SetCurrentSpeed

private:
    bool Send(DRIVE_TRANSFERTYPE eType, const unsigned char* pCDB, int nCDBBytes, unsigned char* pData = nullptr,
              int nDataBytes = 0);
    bool LoadMedium(CLogHelper& log);
    void SendTrayCommand(const unsigned char* pCDB, int nCDBBytes);
};
