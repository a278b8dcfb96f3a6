// The one gate through which every raw command reaches an optical drive, and the interfaces of the disc service behind
// it.

#pragma once

#include "LySCSIBase.h"
#include "LyString.h"
#include "LyThread.h"
#include "MMC.h"
#include <atomic>

// One drive, as the disc service offers it. The order of the operations is their order in the virtual table.
// Texts are system strings: the caller owns them and frees them with LyCom::SysFreeString.
class IDiscDrive
{
public:
    virtual void Reserved0() {}
    virtual void Reserved1() {}
    virtual void Reserved2() {}
    virtual void Reserved3() {}
    virtual void Reserved4() {}
    virtual void Reserved5() {}
    virtual void AddUser(int nMode) = 0;    // 6: one more user of the drive in this mode
    virtual void RemoveUser(int nMode) = 0; // 7: undoes AddUser; called with the same mode
    virtual unsigned char GetStateA() = 0;  // 8
    virtual wchar_t* GetVendor() = 0;       // 9
    virtual wchar_t* GetModel() = 0;        // 10
    virtual void Reserved11() {}
    virtual unsigned char GetStateB() = 0;        // 12
    virtual wchar_t* GetPackedCapabilities() = 0; // 13: the drive's DSENSEMASK in packed form

protected:
    ~IDiscDrive() = default;
};

// The disc service, as GetDiscManager returns it. The order of the operations is their order in the virtual table.
class IDiscManager
{
public:
    virtual void Reserved0() {}
    virtual void Reserved1() {}
    virtual IDiscDrive* GetDrive(const wchar_t* pPath) = 0; // 2: null if unknown; not owned by the caller
    virtual void Reserved3() {}
    virtual void Reserved4() {}
    virtual void Reserved5() {}
    virtual void Reserved6() {}
    virtual void Reserved7() {}
    virtual bool AcquireDrive(LyString strPath, bool bAlwaysTrue) = 0;  // 8: takes the drive for this process
    virtual void ReleaseDrive(LyString strPath, bool bAlwaysFalse) = 0; // 9: undoes AcquireDrive

    // 10: one command. nDataBytes is the size of the data and may be set to what came. True means that the drive
    // finished with good status; on false pSense holds the sense data that there is, at most nSenseBytes of it.
    virtual bool SendCommand(const wchar_t* pPath, unsigned char* pCDB, int nCDBBytes, unsigned char* pData,
                             int& nDataBytes, DRIVE_TRANSFERTYPE eType, int nTimeoutMs, unsigned char* pSense,
                             int nSenseBytes) = 0;

protected:
    ~IDiscManager() = default;
};

// An open drive: sends commands with a retry policy (RetryPolicy.h), keeps the sense data of the last one, answers
// questions about the drive, and measures its read cache.
//
// Units:   sectors of LY_CD_SECTOR_BYTES, time-outs in milliseconds.
// Errors:  false. After a failed command the sense data says why, if the drive said it.
// Threads: one at a time; there is no lock. The worker thread runs only the cache measurement, and GetReadCacheSize
// keeps
//          its caller until that has ended.
class CTHDriveInterface : public LyThread
{
public:
    static constexpr int CD_TIMEOUT_MS = 10000; // of every command but those that identify a drive
    static constexpr int READ_CACHE_ABANDONED = -1;

    CTHDriveInterface();
    ~CTHDriveInterface() override; // stops the measurement, without limit, and closes
    CTHDriveInterface(const CTHDriveInterface&) = delete;
    CTHDriveInterface& operator=(const CTHDriveInterface&) = delete;

    // Leaves the drive that was open, then takes this one. False leaves the object closed: the disc service does not
    // know the drive or cannot take it, or is not there at all.
    bool Open(LyString strPath, int nMode);
    void Close(); // does nothing with no drive open

    // Sends one command, repeating it as the policy allows, on the caller's thread. It is the caller's duty to have a
    // drive open. bShowError shows the sense text to the user, if there is one. The data length never changes for the
    // caller, however much came.
    bool SendCmd(DRIVE_TRANSFERTYPE eType, const unsigned char* pCDB, int nCDBBytes, unsigned char* pData,
                 int nDataBytes, int nTimeoutMs, bool bShowError);

    bool GetDriveInfo(DRIVE_INFO& info); // always true

    // Answers a numbered question from the mode pages, sending nothing. nValue is set in every case, to 0 at first.
    //
    //   Code          Page 2Ah           Value
    //   1 to 3, 50    byte 2, bits 0-3   reads CD-R, CD-RW, method 2, DVD-ROM
    //   4, 5 and 40   byte 3, bits 0, 1  writes CD-R, CD-RW
    //   49            byte 3, bit 4      writes DVD-R
    //   6 to 12, 41   byte 4, bits 0-7   audio play, composite, digital ports 1 and 2, mode 2 forms 1 and 2,
    //                                    multi-session, buffer underrun protection
    //   13 to 19      byte 5, bits 0-6   CD-DA, CD-DA accurate, R-W, R-W de-interleaved, C2 pointers, ISRC, UPC
    //   20 to 23      byte 6, bits 0-3   lock, lock state, prevent jumper, eject
    //   24            byte 6, bits 5-7   loading mechanism type
    //   25 to 28      byte 7, bits 0-3   separate volume, separate mute, disc present reporting, slot selection
    //   29            bytes 8, 9         maximum read speed as a multiplier
    //   30            bytes 10, 11       number of volume levels
    //   31            bytes 12, 13       buffer size in KiB
    //   32            bytes 14, 15       current read speed in KB/s
    //   48            from byte 30       maximum write speed as a multiplier
    //   33, 34, 35    page 0Dh           seconds per minute, frames per second, inactivity timer multiplier
    //
    // Bit codes are true always, with 0 for a missing page. The others are false without their page; 29 and 48 are also
    // false when the multiplier is 0. Every other code is false.
    bool QueryCDParms(int nCode, unsigned int& nValue);
    static bool QueryCDParms(DSENSEMASK& mask, int nCode, unsigned int& nValue);

    LyString GetLastErrorMsg(); // never empty: says so if there is no sense data
    // False, and the arguments untouched, if there is no sense data.
    bool GetLastErrorCodes(int& nResponseCode, int& nSenseKey, int& nASC, int& nASCQ);

    // Measures the read cache on the worker thread, behind a wait message that the user can cancel. Bytes; 0 if none
    // was found; READ_CACHE_ABANDONED if the user had enough.
    int GetReadCacheSize();
    // Reads nCount sectors from nSector and drops them. True if every piece came, so also for no sectors at all.
    bool ReadCDDATest(int nSector, int nCount);

    bool Thread() override; // the measurement; false if it had nothing to work with

    unsigned char m_Sense[SENSE_BYTES]; // of the last SendCmd: cleared on entry, not between its tries
    DRIVE_INFO m_DriveInfo;
    std::atomic<int> m_nReadCacheSize; // bytes; written by the measurement, read by who waits for it
    int m_nOpenMode;                   // of Open, handed back when the drive is released

private:
    bool GiveUp(const class RetryPolicy& policy, unsigned char nOpcode, bool bShowError);
    void ReadDriveInfo(IDiscDrive* pDrive, const LyString& strPath);
};
