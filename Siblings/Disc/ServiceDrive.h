// ServiceDrive: what the disc service holds for each path, be it hardware, a disc image, or an image that behaves like
// hardware. The positions that other libraries call stand in IDiscDrive; what is added here is the service's own.
//
// Owner:   the disc service, as long as it lives. A drive is never removed, since callers keep its address.
// Errors:  false with one English sentence and a way out, or false with sense data in fixed format. A command that
//          fails leaves the whole data buffer zeroed: the layers above look at the bytes only, and old bytes must never
//          pass for new ones.
// Threads: any; each drive does its own locking.

#pragma once

#include "MMC.h"
#include "THDriveInterface.h"
#include <string>

// One command as it arrives. nDataBytes is the size of the buffer and becomes what was transferred.
struct DRIVE_COMMAND
{
    const unsigned char* m_pCDB;
    int m_nCDBBytes;
    unsigned char* m_pData;
    int& m_nDataBytes;
    DRIVE_TRANSFERTYPE m_eType;
    int m_nTimeoutMs = CTHDriveInterface::CD_TIMEOUT_MS;
};

// The codes of an error. Key 0: there is none.
struct DRIVE_SENSE
{
    unsigned char m_nKey = 0;
    unsigned char m_nASC = 0;
    unsigned char m_nASCQ = 0;

    bool IsGood() const { return m_nKey == 0; }
};

// Sense data in fixed format (SPC-3, 4.5.3), as the layers above read it. All zero: there is none.
struct SENSE_DATA
{
    unsigned char m_aryBytes[SENSE_BYTES] = {};

    void Set(const DRIVE_SENSE& sense); // a current error with these codes
    DRIVE_SENSE GetCodes() const;       // the key without the flag bits of its byte
};

// What a list of drives shows.
struct DRIVE_DESCRIPTION
{
    std::string m_strVendor; // UTF-8, without padding
    std::string m_strModel;
    std::string m_strRevision;
    bool m_bImage = false;
};

class ServiceDrive : public IDiscDrive
{
public:
    virtual ~ServiceDrive() = default;

    // Whether the drive can be used at all; what must be opened for that is opened.
    virtual bool Load(std::string& strError) = 0;
    // One more holder within this process. The first one takes the drive from other processes.
    virtual bool Acquire(std::string& strError) = 0;
    // One holder less. The last one gives the drive back with its door unlocked.
    virtual void Release() = 0;
    // Runs one command. On false the sense data says why.
    virtual bool Send(const DRIVE_COMMAND& command, SENSE_DATA& sense) = 0;

    // One sentence on what could not be read since the first holder came; empty if all could.
    virtual std::string GetReadErrorText() = 0;
    // What was tolerated when the drive was opened, a sentence to a line; empty if nothing.
    virtual std::string GetWarnings() = 0;
    virtual DRIVE_DESCRIPTION GetDescription() = 0;

    void Reserved0() override {}
    void Reserved1() override {}
    void Reserved2() override {}
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved11() override {}
};
