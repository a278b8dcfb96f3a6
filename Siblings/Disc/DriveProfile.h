// A drive profile: a small text file that makes an image drive behave like hardware: its names and mode pages, its
// buffer and its speed, and its faults. The manual with all keys is Docs/DRIVES.md.
//
// Shape:   lines "Key = Value", keys in any case; "#" begins a comment. Keys that tell of the drive stand once, keys
//          that tell of a fault as often as needed.
// Units:   logical block addresses, KiB, milliseconds, multiples of the speed of playing, millionths of a probability.
// Errors:  the first line that cannot be understood ends the reading, with a sentence on what is wrong and what to do.
// Threads: plain records and functions without state.

#pragma once

#include "CDUnits.h"
#include "DiscImage.h"
#include "ServiceDrive.h"
#include "SheetText.h"
#include <map>
#include <string>
#include <vector>

constexpr unsigned int CERTAIN_PPM = 1000000; // a probability of one, in millionths

constexpr int PROFILE_MAX_BYTES = 64 * 1024;
constexpr int PROFILE_MAX_FAULTS = 1000; // lines; each command looks at all of them
constexpr int PROFILE_MAX_KIB = 0xFFFF;  // 16 bits in page 2Ah
constexpr int PROFILE_MAX_MS = 60000;    // of one latency, seek or spin-up
constexpr int PROFILE_MAX_IDLE_MS = 3600000;
constexpr int PROFILE_MAX_HANG_MS = 600000;
constexpr int PROFILE_MAX_SPEED = 372; // 65,472 KB/s, the last that 16 bits hold
constexpr int PROFILE_MAX_READ_AHEAD = 10000;
constexpr int PROFILE_MAX_JITTER = LY_CD_SECTOR_FRAMES; // the neighbour's data goes no further
constexpr int PROFILE_CACHE_AS_BUFFER = -1;
constexpr int PROFILE_KB_PER_SPEED = 176; // single speed, as the mode pages count it

// Sectors from the first to the last, both included.
struct LBA_RANGE
{
    int m_nFirst = 0;
    int m_nLast = 0;

    bool Contains(int nLBA) const { return nLBA >= m_nFirst && nLBA <= m_nLast; }
};

// The k-th command, counted from 1 since the first holder came; or the k-th command that reads sectors.
struct COMMAND_TRIGGER
{
    long long m_nCommand = 1;
    bool m_bReads = false;
};

struct UNREADABLE_FAULT
{
    LBA_RANGE m_Range;
    int m_nEvery = 1; // every n-th read of the range fails
    unsigned int m_nPPM = CERTAIN_PPM;
};

struct JITTER_FAULT
{
    LBA_RANGE m_Range;
    int m_nMaxFrames = 0; // a read starts by up to so many sample frames earlier or later
};

struct SILENT_FAULT
{
    LBA_RANGE m_Range;
    int m_nBytes = 0; // wrong bytes in a sector that is hit
    unsigned int m_nPPM = CERTAIN_PPM;
};

struct HANG_FAULT
{
    COMMAND_TRIGGER m_When;
    int m_nMs = 0;
};

struct ATTENTION_FAULT
{
    COMMAND_TRIGGER m_When;
    DRIVE_SENSE m_Sense = {SENSE_UNIT_ATTENTION, ASC_MEDIUM_MAY_HAVE_CHANGED, 0};
    int m_nTimes = 1; // so many commands in a row are told
};

struct CHANGE_FAULT
{
    COMMAND_TRIGGER m_When;
    std::string m_strImage; // as written; absolute once LoadDriveProfile has read it
};

struct FAIL_FAULT
{
    unsigned int m_nPPM = 0;
    bool m_bReads = false; // only commands that read sectors
    DRIVE_SENSE m_Sense;
};

struct DRIVE_PROFILE
{
    std::string m_strImage; // likewise; empty: the image that the profile lies beside
    std::string m_strVendor = "RONDEL";
    std::string m_strModel = "DISC IMAGE";
    std::string m_strRevision = "1.0";
    std::map<int, std::vector<unsigned char>> m_mapModePages; // by page code, whole, in place of the built-in one
    int m_nBufferKiB = -1;                                    // -1: not told, and 0 once the profile has been read
    int m_nCacheKiB = PROFILE_CACHE_AS_BUFFER; // of the buffer, what serves reads; 0: nothing. As large as the buffer
                                               // becomes a size when the profile has been read
    int m_nSegmentKiB = 0;                     // 0: the cache is one window
    int m_nReadAhead = 0;                      // sectors that the drive reads on by itself
    int m_nLatencyMs = 0;
    int m_nSpinUpMs = 0;
    int m_nSpinDownAfterMs = 0; // 0: never
    int m_nSeekMs = 0;          // from the first to the last sector of a full disc
    int m_nSpeed = 0;           // 0: sectors take no time
    int m_nReadOffset =
        0; // frames by which its audio must be corrected: it comes so many too early or, from 1 on, late
    unsigned long long m_nSeed = 0;

    std::vector<UNREADABLE_FAULT> m_aryUnreadable;
    std::vector<LBA_RANGE> m_aryDiffers;
    std::vector<JITTER_FAULT> m_aryJitter;
    std::vector<SILENT_FAULT> m_arySilent;
    std::vector<HANG_FAULT> m_aryHangs;
    std::vector<ATTENTION_FAULT> m_aryAttentions;
    std::vector<COMMAND_TRIGGER> m_aryRemovals;
    std::vector<CHANGE_FAULT> m_aryChanges;
    std::vector<FAIL_FAULT> m_aryFails;
};

// Reads a profile from UTF-8. False, with the first fault.
bool ParseDriveProfile(const std::string& strText, DRIVE_PROFILE& profile, SHEET_ERROR& error);

// Reads the profile of that path, and makes the names of images in it absolute. False, with the sentence.
bool LoadDriveProfile(const std::string& strPath, DRIVE_PROFILE& profile, std::string& strError);
