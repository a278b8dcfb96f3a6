/* A disc service in plain C: two tables of functions, and one drive, "plain", with a disc of two audio tracks. Track 1
   is sectors 0 to 199, track 2 sectors 200 to 999. Every frame of four bytes holds its number on the disc. */

#include <stdbool.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#define EXPORT __attribute__((visibility("default")))

enum
{
    SECTOR_BYTES = 2352,
    SECTOR_FRAMES = 588,
    SENSE_BYTES = 32,
    CDB_START_STOP_UNIT = 0x1B,
    CDB_READ_SUB_CHANNEL = 0x42,
    CDB_READ_TOC = 0x43,
    CDB_SET_CD_SPEED = 0xBB,
    CDB_READ_CD = 0xBE,
    OPEN_MODE = 2
};

typedef void (*OPERATION)(void);

/* An object is a table of operations and nothing else. */
typedef struct
{
    const OPERATION* pTable;
} OBJECT;

/* How many users and holders the drive has. At the end both are 0 again. */
static int s_nUsers;
static int s_nHolders;

static bool GetIsPlain(const wchar_t* pDrive) { return wcscmp(pDrive, L"plain") == 0; }

/* System strings come from malloc: the plug-in frees them. */
static wchar_t* MakeText(const wchar_t* pText)
{
    const size_t nChars = wcslen(pText) + 1;
    wchar_t* const pCopy = (wchar_t*)malloc(nChars * sizeof(wchar_t));
    return pCopy == NULL ? NULL : wmemcpy(pCopy, pText, nChars);
}

static void Unlisted(void) { abort(); }

static void AddUser(OBJECT* pDrive, int nMode)
{
    (void)pDrive;
    if (nMode == OPEN_MODE)
        s_nUsers++;
}

static void RemoveUser(OBJECT* pDrive, int nMode)
{
    (void)pDrive;
    if (nMode == OPEN_MODE)
        s_nUsers--;
}

static unsigned char GetState(OBJECT* pDrive)
{
    (void)pDrive;
    return 1;
}

static wchar_t* GetVendor(OBJECT* pDrive)
{
    (void)pDrive;
    return MakeText(L"PLAIN");
}

static wchar_t* GetModel(OBJECT* pDrive)
{
    (void)pDrive;
    return MakeText(L"C DRIVE");
}

static wchar_t* GetPackedCapabilities(OBJECT* pDrive)
{
    (void)pDrive;
    return MakeText(L"");
}

static const OPERATION s_aryDriveTable[] = {
    Unlisted,
    Unlisted,
    Unlisted,
    Unlisted,
    Unlisted,
    Unlisted,
    (OPERATION)AddUser,
    (OPERATION)RemoveUser,
    (OPERATION)GetState,
    (OPERATION)GetVendor,
    (OPERATION)GetModel,
    Unlisted,
    (OPERATION)GetState,
    (OPERATION)GetPackedCapabilities,
};
static OBJECT s_Drive = {s_aryDriveTable};

static OBJECT* GetDrive(OBJECT* pManager, const wchar_t* pDrive)
{
    (void)pManager;
    return GetIsPlain(pDrive) ? &s_Drive : NULL;
}

/* A string by value comes as the address of a string, which is the address of its characters. */
static bool AcquireDrive(OBJECT* pManager, wchar_t* const* pstrDrive, bool bAlwaysTrue)
{
    (void)pManager;
    if (!bAlwaysTrue || !GetIsPlain(*pstrDrive))
        return false;
    s_nHolders++;
    return true;
}

static void ReleaseDrive(OBJECT* pManager, wchar_t* const* pstrDrive, bool bAlwaysFalse)
{
    (void)pManager;
    if (!bAlwaysFalse && GetIsPlain(*pstrDrive))
        s_nHolders--;
}

static bool ReadTOC(unsigned char* pData, int nDataBytes)
{
    /* For each track and the lead-out: control, number, address. */
    static const unsigned char s_aryTOC[] = {0, 26,   1,    2,                /* length, first, last */
                                             0, 0x10, 1,    0, 0, 0, 0, 0,    /* track 1 from 0 */
                                             0, 0x10, 2,    0, 0, 0, 0, 200,  /* track 2 from 200 */
                                             0, 0x10, 0xAA, 0, 0, 0, 3, 232}; /* lead-out at 1000 */
    if (nDataBytes < (int)sizeof s_aryTOC)
        return false;
    memcpy(pData, s_aryTOC, sizeof s_aryTOC);
    return true;
}

static bool ReadCD(const unsigned char* pCDB, unsigned char* pData, int nDataBytes)
{
    const int nSector = pCDB[2] << 24 | pCDB[3] << 16 | pCDB[4] << 8 | pCDB[5];
    const int nSectors = pCDB[6] << 16 | pCDB[7] << 8 | pCDB[8];
    if (nDataBytes < nSectors * SECTOR_BYTES)
        return false;
    for (int i = 0; i < nSectors * SECTOR_FRAMES; i++)
    {
        const int nFrame = nSector * SECTOR_FRAMES + i;
        memcpy(pData + (size_t)i * sizeof nFrame, &nFrame, sizeof nFrame);
    }
    return true;
}

static bool Refuse(unsigned char* pSense)
{
    pSense[0] = 0x70;
    pSense[2] = 5;     /* illegal request */
    pSense[12] = 0x20; /* invalid command operation code */
    return false;
}

static bool SendCommand(OBJECT* pManager, const wchar_t* pDrive, unsigned char* pCDB, int nCDBBytes,
                        unsigned char* pData, int* pnDataBytes, int nType, int nTimeoutMs, unsigned char* pSense,
                        int nSenseBytes)
{
    (void)pManager;
    (void)nCDBBytes;
    (void)nType;
    (void)nTimeoutMs;
    if (nSenseBytes != SENSE_BYTES || !GetIsPlain(pDrive))
        return false;
    switch (pCDB[0])
    {
    case CDB_READ_TOC:
        return pCDB[2] == 0 ? ReadTOC(pData, *pnDataBytes) : Refuse(pSense);
    case CDB_READ_CD:
        return ReadCD(pCDB, pData, *pnDataBytes);
    case CDB_READ_SUB_CHANNEL:
    case CDB_SET_CD_SPEED:
    case CDB_START_STOP_UNIT:
        return true;
    default:
        return Refuse(pSense);
    }
}

static const OPERATION s_aryManagerTable[] = {
    Unlisted,
    Unlisted,
    (OPERATION)GetDrive,
    Unlisted,
    Unlisted,
    Unlisted,
    Unlisted,
    Unlisted,
    (OPERATION)AcquireDrive,
    (OPERATION)ReleaseDrive,
    (OPERATION)SendCommand,
};
static OBJECT s_Manager = {s_aryManagerTable};

EXPORT OBJECT* GetDiscManagerDLL(bool bCreate) { return bCreate ? &s_Manager : NULL; }

EXPORT void LyDiscUninitialize(long long nContext)
{
    (void)nContext;
    if (s_nUsers != 0 || s_nHolders != 0)
        abort();
}
