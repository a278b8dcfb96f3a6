// The commands of CSCSICD. The track list stands in SCSICDTrackList.cpp, CD-Text in SCSICDText.cpp.

#include "SCSICD.h"

#include "LogHelper.h"
#include <cstring>
#include <new>

TDriveInfo::TDriveInfo() : TDriveInfo(DRIVE_INFO(), 0) {}

TDriveInfo::TDriveInfo(DRIVE_INFO info, int nMode)
    : m_nDriveType(DRIVE_TYPE), m_nMaxSektors(LY_CD_MAX_READ_SECTORS), m_nMode(nMode), m_szVendor(), m_szModel(),
      m_nDriveValue(info.m_nValueA), m_nCacheSize(0), m_nReadCompensation(0)
{
    // The fields are fixed: as strncpy does, a text is padded with zeros, or fills its field to the last byte.
    LyStringANSI vendor(info.m_strVendor);
    LyStringANSI model(info.m_strModel);
    memcpy(m_szVendor, vendor.Get(), strnlen(vendor, sizeof m_szVendor));
    memcpy(m_szModel, model.Get(), strnlen(model, sizeof m_szModel));
}

CSCSICD::CSCSICD(CTHDriveInterface* pDrive, TDriveInfo& info, LyString strDrive)
    : m_bCDTextRead(false), m_pDrive(pDrive), m_nLastError(ERROR_NONE), m_FirstTrack(nullptr), m_AktTrack(nullptr),
      m_DriveInfo(info), m_nLastReadTick(0), m_strDrive(strDrive), m_nCurrentSpeed(0)
{
    CLogHelper log(LY_LOG_AREA_DRIVE, "CSCSICD::CSCSICD, setting m_FirstTrack to 0", true);
    if (CSCSICD::Get_DriveStatus().bMediaLoaded)
        CSCSICD::ReRead();
    m_nCurrentSpeed = 0;
}

CSCSICD::~CSCSICD() { DeleteTrackList(); }

void CSCSICD::Delete(CSCSICD* pCD)
{
    if (!pCD)
        return;
    pCD->CSCSICD::~CSCSICD();
    ::operator delete(pCD);
}

bool CSCSICD::Send(DRIVE_TRANSFERTYPE eType, const unsigned char* pCDB, int nCDBBytes, unsigned char* pData,
                   int nDataBytes)
{
    return m_pDrive &&
           m_pDrive->SendCmd(eType, pCDB, nCDBBytes, pData, nDataBytes, CTHDriveInterface::CD_TIMEOUT_MS, false);
}

void CSCSICD::SendTrayCommand(const unsigned char* pCDB, int nCDBBytes)
{
    if (!Send(DRIVE_TRANSFER_NONE, pCDB, nCDBBytes))
        m_nLastError = ERROR_COMMAND_FAILED;
}

// READ CD, MMC-3, 6.15: audio sectors only, user data only, so that a sector is exactly LY_CD_SECTOR_BYTES.
void CSCSICD::ReadCDDA(int nSector, int nCount, void* pBuffer)
{
    unsigned char cdb[12] = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 0, 0, 0, 0, 0, READ_CD_USER_DATA, 0, 0};
    MMCPut24(cdb + 3, static_cast<unsigned int>(nSector));
    MMCPut16(cdb + 7, static_cast<unsigned int>(nCount));
    unsigned int nBytes = static_cast<unsigned int>(nCount) * LY_CD_SECTOR_BYTES;
    // Deliberate: a failed READ CD is not reported, and m_nLastError stays as it is. The layers above judge the bytes
    // by comparing reads.
    (void)Send(DRIVE_TRANSFER_IN, cdb, sizeof cdb, static_cast<unsigned char*>(pBuffer), static_cast<int>(nBytes));
    m_nLastReadTick = GetTickCount();
}

struct SENSE_CODES
{
    int nResponseCode = 0;
    int nSenseKey = 0;
    int nASC = 0;
    int nASCQ = 0;
};

static SENSE_CODES GetSenseCodes(CTHDriveInterface* pDrive)
{
    SENSE_CODES codes;
    if (pDrive)
        (void)pDrive->GetLastErrorCodes(codes.nResponseCode, codes.nSenseKey, codes.nASC, codes.nASCQ); // or zeros
    return codes;
}

// The second question, for a drive that did not answer the first: can it load what is in the tray?
bool CSCSICD::LoadMedium(CLogHelper& log)
{
    SENSE_CODES codes = GetSenseCodes(m_pDrive);
    log.Log("reading sub-channel failed, error codes: responseCode=%d, senseKey=%d, ASC=%d, ASCQ=%d",
            codes.nResponseCode, codes.nSenseKey, codes.nASC, codes.nASCQ);
    const unsigned char cdb[6] = {CDB_START_STOP_UNIT, 0, 0, 0, START_STOP_LOAD_EJECT | START_STOP_START, 0};
    bool bLoaded = Send(DRIVE_TRANSFER_IN, cdb, sizeof cdb);
    log.Log("after trying start/stop command with 'load medium' flag set, bMediaLoaded=%d", bLoaded);
    if (!bLoaded)
    {
        codes = GetSenseCodes(m_pDrive);
        log.Log("error codes: responseCode=%d, senseKey=%d, ASC=%d, ASCQ=%d", codes.nResponseCode, codes.nSenseKey,
                codes.nASC, codes.nASCQ);
    }
    return bLoaded;
}

TDriveStatus CSCSICD::Get_DriveStatus()
{
    constexpr int SUB_CHANNEL_BYTES = 24;
    constexpr int SUB_CHANNEL_LENGTH_OFFSET = 2; // big-endian: bytes of sub-channel data behind the header

    CLogHelper log(LY_LOG_AREA_DRIVE, "CSCSICD::Get_DriveStatus", true);
    unsigned char cdb[10] = {CDB_READ_SUB_CHANNEL, SUB_CHANNEL_MSF, SUB_CHANNEL_SUBQ, SUB_CHANNEL_CURRENT_POS};
    MMCPut16(cdb + 7, SUB_CHANNEL_BYTES);
    unsigned char data[SUB_CHANNEL_BYTES] = {};
    bool bResult = Send(DRIVE_TRANSFER_IN, cdb, sizeof cdb, data, sizeof data);
    bool bMediaLoaded = bResult && MMCGet16(data + SUB_CHANNEL_LENGTH_OFFSET) != 0;
    log.Log("after reading sub-channel data, bResult=%d, bMediaLoaded=%d", bResult, bMediaLoaded);
    if (!bResult)
        bMediaLoaded = LoadMedium(log);
    if (!bMediaLoaded)
    {
        // Deliberate: a drive without a usable answer is tried all the same; the table of contents decides.
        log.Log("bMediaLoaded=false, switch to true because at this point we'll assume medium is loaded...");
        bMediaLoaded = true;
    }
    return TDriveStatus{bMediaLoaded};
}

void CSCSICD::EjectDisk()
{
    const unsigned char cdb[6] = {CDB_START_STOP_UNIT, 0, 0, 0, START_STOP_LOAD_EJECT, 0};
    SendTrayCommand(cdb, sizeof cdb);
}

void CSCSICD::CloseTray()
{
    const unsigned char cdb[6] = {CDB_START_STOP_UNIT, 0, 0, 0, START_STOP_LOAD_EJECT | START_STOP_START, 0};
    SendTrayCommand(cdb, sizeof cdb);
}

void CSCSICD::LockDoor(int nLock)
{
    unsigned char cdb[6] = {CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 0, 0};
    cdb[4] = static_cast<unsigned char>(nLock & 1);
    SendTrayCommand(cdb, sizeof cdb);
}

// SET CD SPEED, MMC-3, 6.43: the read speed in KB/s; the write speed stays 0.
void CSCSICD::SetCurrentSpeed(int nMultiplier)
{
    constexpr int SPEED_UNIT_BYTES = 1024;

    m_nLastError = ERROR_NONE;
    m_nCurrentSpeed = nMultiplier;
    unsigned int nSpeed = SET_CD_SPEED_MAXIMUM;
    if (nMultiplier != 0)
    {
        // Signed 32-bit arithmetic that wraps: what leaves the field is cut off anyway.
        int nBytesPerSecond = static_cast<int>(static_cast<unsigned int>(nMultiplier) * LY_CD_SECOND_BYTES);
        nSpeed = static_cast<unsigned int>(nBytesPerSecond / SPEED_UNIT_BYTES);
    }
    unsigned char cdb[12] = {CDB_SET_CD_SPEED};
    MMCPut16(cdb + 2, nSpeed);
    SendTrayCommand(cdb, sizeof cdb);
}

int CSCSICD::Lasterror()
{
    int nError = static_cast<int>(m_nLastError);
    m_nLastError = ERROR_NONE;
    return nError;
}

void CSCSICD::SetMaxSektors(int nSectors) { m_DriveInfo.m_nMaxSektors = nSectors; }

int CSCSICD::GetReadCompensation() { return m_DriveInfo.m_nReadCompensation; }

int CSCSICD::GetCacheSize() { return m_DriveInfo.m_nCacheSize; }

int CSCSICD::GetMaxSektors() { return m_DriveInfo.m_nMaxSektors; }

int CSCSICD::GetMode() { return m_DriveInfo.m_nMode; }
