// What is known about an optical drive: its raw mode pages, the snapshot of an open drive, and the base class of a
// drive object of the disc service.
//
// Layouts are published: the disc service hands them over in the packed text form below.
// Threads: plain data; one thread at a time.

#pragma once

#include "LyString.h"
#include "PropertyMap.h"
#include <cstddef>

// The direction of a command's data, passed on unchanged to the disc service. Only these two values are used.
enum DRIVE_TRANSFERTYPE : int
{
    DRIVE_TRANSFER_NONE = 0, // no data phase
    DRIVE_TRANSFER_IN = 8    // from the drive to the buffer
};

// The raw mode pages of a drive, from their page code byte on (MMC-3, SPC-3), and which of them are there.
//
// Packed form: 280 hexadecimal digits, two a byte, in the order of the members; a flag byte that is not zero is true.
// Reset with DSENSEMASK() or {}: the record is plain and has no constructor.
struct DSENSEMASK
{
    static constexpr int PAGE1_BYTES = 12;
    static constexpr int CD_PARAMS_BYTES = 8;
    static constexpr int CAPABILITIES_BYTES = 100;
    static constexpr int PAGE4_BYTES = 16;

    unsigned char m_Page1[PAGE1_BYTES];                   // carried, never interpreted
    unsigned char m_CDParamsPage[CD_PARAMS_BYTES];        // page 0Dh
    unsigned char m_CapabilitiesPage[CAPABILITIES_BYTES]; // page 2Ah
    unsigned char m_Page4[PAGE4_BYTES];                   // carried, never interpreted
    bool m_bPage1Valid;
    bool m_bCDParamsValid;
    bool m_bCapabilitiesValid;
    bool m_bPage4Valid;

    // Takes the packed form, front to back. A block that does not fit whole is skipped: it keeps its value, and the
    // next block is tried at the same place. Flags whose byte is missing become false.
    void InitFromPackedData(LyString strPacked);

    // Answers one of the numbered questions of CTHDriveInterface::QueryCDParms, which documents them.
    bool QueryParameter(int nCode, unsigned int& nValue) const;
};
static_assert(sizeof(DSENSEMASK) == 140);
static_assert(offsetof(DSENSEMASK, m_CDParamsPage) == 12 && offsetof(DSENSEMASK, m_CapabilitiesPage) == 20);
static_assert(offsetof(DSENSEMASK, m_Page4) == 120 && offsetof(DSENSEMASK, m_bPage1Valid) == 136);
static_assert(offsetof(DSENSEMASK, m_bCDParamsValid) == 137 && offsetof(DSENSEMASK, m_bCapabilitiesValid) == 138);
static_assert(offsetof(DSENSEMASK, m_bPage4Valid) == 139);

// The snapshot of an open drive. Callers copy it freely.
struct DRIVE_INFO
{
    static constexpr int DEFAULT_VALUE = 16;

    LyString m_strPath;   // as given to Open; a text here means that a drive is open
    LyString m_strModel;  // from the disc service
    LyString m_strVendor; // from the disc service
    LyString m_strExtra;  // never filled
    DSENSEMASK m_SenseMask;
    unsigned char m_bStateA; // IDiscDrive::GetStateA; stored, never read
    int m_nValueA;           // handed on to TDriveInfo
    int m_nValueB;
    unsigned char m_bStateB; // IDiscDrive::GetStateB; stored, never read

    DRIVE_INFO();
    DRIVE_INFO(const DRIVE_INFO& info) = default;
    DRIVE_INFO& operator=(const DRIVE_INFO& info) = default;

    // Empty texts, no mode pages, 0 in state A, 16 in both values, 1 in state B.
    void Reset();
};

// Base of a drive object of the disc service: a property map that can ask its drive who it is and what it can do.
//
// Errors: false, with the properties as they were.
// Deliberate: three places of the table belong to operations that nobody calls. They have bodies that do nothing, so
// that a drive object needs to bring only SendCommand; the pure destructor keeps this class abstract.
class LySCSIBase : public LyPropertyMap
{
public:
    static constexpr int INQUIRY_BYTES = 100;
    static constexpr int MODE_SENSE_BYTES = 256;
    static constexpr int IDENTITY_TIMEOUT_MS = 5000;

    LySCSIBase() : m_SenseMask() {}
    LySCSIBase(const LySCSIBase&) = delete;
    LySCSIBase& operator=(const LySCSIBase&) = delete;

    // The order of the operations is their order in the virtual table, behind those of LyPropertyMap.
    virtual ~LySCSIBase() = 0;
    virtual void Reserved1() {}
    virtual void Reserved2() {}

    // Sends one command. nDataLen is the size of the data on entry and may be set to what came. The base refuses.
    virtual bool SendCommand(unsigned char* pCDB, int nCDBLen, unsigned char* pData, int& nDataLen,
                             DRIVE_TRANSFERTYPE eType, int nTimeoutMs, unsigned char* pSense, int nSenseLen);
    virtual void Reserved3() {}

    // MODE SENSE(10) of page 2Ah into m_SenseMask, then the properties "CDR Write", "CDRW Write", "CDR Read",
    // "CDRW Read" (1 or 0), "Max Write Speed", "Max Read Speed" (multipliers) and "Has Burnproof" (1 or 0).
    virtual bool SetDriveProperties();

    // INQUIRY, then the properties "Vendor" and "Model".
    virtual bool SetDriveStrings();

    LyString m_strName; // the drive's name
    DSENSEMASK m_SenseMask;

private:
    bool ReadCapabilitiesPage();
};
