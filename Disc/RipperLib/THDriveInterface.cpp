#include "THDriveInterface.h"

#include "LogHelper.h"
#include "LySharedToolsHelper.h"
#include "OptionsHelper.h"
#include "RetryPolicy.h"
#include "SCSIError.h"
#include <cstring>

static const wchar_t* LOG_NAME = L"CTHDriveInterface::SendCmd";

CTHDriveInterface::CTHDriveInterface() : LyThread(false, false), m_Sense(), m_nReadCacheSize(0), m_nOpenMode(0) {}

CTHDriveInterface::~CTHDriveInterface()
{
    CTHDriveInterface::Stop(-1);
    Close();
}

bool CTHDriveInterface::Open(LyString strPath, int nMode)
{
    Close();
    m_nOpenMode = nMode;
    IDiscManager* pManager = GetDiscManager(true);
    IDiscDrive* pDrive = pManager ? pManager->GetDrive(strPath) : nullptr;
    if (!pDrive)
        return false;
    pDrive->AddUser(nMode);
    if (!pManager->AcquireDrive(strPath, true))
    {
        pDrive->RemoveUser(nMode);
        return false;
    }
    ReadDriveInfo(pDrive, strPath);
    return true;
}

void CTHDriveInterface::ReadDriveInfo(IDiscDrive* pDrive, const LyString& strPath)
{
    m_DriveInfo.m_bStateB = pDrive->GetStateB();
    m_DriveInfo.m_bStateA = pDrive->GetStateA();
    m_DriveInfo.m_strPath = strPath;
    m_DriveInfo.m_strModel.FromBSTR(pDrive->GetModel(), true);
    m_DriveInfo.m_strVendor.FromBSTR(pDrive->GetVendor(), true);
    LyString strPacked;
    strPacked.FromBSTR(pDrive->GetPackedCapabilities(), true);
    m_DriveInfo.m_SenseMask.InitFromPackedData(strPacked);
}

void CTHDriveInterface::Close()
{
    const LyString& strPath = m_DriveInfo.m_strPath;
    IDiscManager* pManager = strPath.IsEmpty() ? nullptr : GetDiscManager(true);
    if (pManager)
    {
        pManager->ReleaseDrive(strPath, false);
        if (IDiscDrive* pDrive = pManager->GetDrive(strPath))
            pDrive->RemoveUser(m_nOpenMode);
    }
    m_DriveInfo.Reset();
}

bool CTHDriveInterface::SendCmd(DRIVE_TRANSFERTYPE eType, const unsigned char* pCDB, int nCDBBytes,
                                unsigned char* pData, int nDataBytes, int nTimeoutMs, bool bShowError)
{
    memset(m_Sense, 0, sizeof m_Sense);
    IDiscManager* pManager = GetDiscManager(true);
    if (!pManager || !pCDB || nCDBBytes < 1)
        return false; // nothing was sent, so there is nothing to repeat and nothing to say

    for (RetryPolicy policy(pCDB[0], nTimeoutMs);; Sleep(RetryPolicy::PAUSE_MS))
    {
        int nBytes = nDataBytes;
        if (pManager->SendCommand(m_DriveInfo.m_strPath, const_cast<unsigned char*>(pCDB), nCDBBytes, pData, nBytes,
                                  eType, policy.GetTimeoutMs(), m_Sense, sizeof m_Sense))
            return true;
        RetryPolicy::VERDICT eVerdict = policy.OnFailure(m_Sense, GetTickCount());
        if (eVerdict == RetryPolicy::SEND_AGAIN)
            continue;
        if (eVerdict == RetryPolicy::TIMED_OUT)
            CLogHelper::Log(LY_LOG_AREA_DRIVE, LOG_NAME, L"SendCmd: timed out on errors");
        return GiveUp(policy, pCDB[0], bShowError);
    }
}

bool CTHDriveInterface::GiveUp(const RetryPolicy& policy, unsigned char nOpcode, bool bShowError)
{
    CLogHelper::Log(LY_LOG_AREA_DRIVE, LOG_NAME, L"SendCmd failed: numTries=%d, cmd=%xh, internal buffer full=%s\n",
                    policy.GetTries(), nOpcode, policy.GetBufferFull() ? L"Yes" : L"No");
    if (bShowError && m_Sense[SENSE_OFFSET_KEY] != SENSE_NONE)
        (void)IMB(GetLastErrorMsg(), TranslateString(L"Information"), LyString(), false, false); // nothing to choose
    return false;
}

bool CTHDriveInterface::GetDriveInfo(DRIVE_INFO& info)
{
    info = m_DriveInfo;
    return true;
}

bool CTHDriveInterface::QueryCDParms(int nCode, unsigned int& nValue)
{
    return QueryCDParms(m_DriveInfo.m_SenseMask, nCode, nValue);
}

bool CTHDriveInterface::QueryCDParms(DSENSEMASK& mask, int nCode, unsigned int& nValue)
{
    return mask.QueryParameter(nCode, nValue);
}

LyString CTHDriveInterface::GetLastErrorMsg()
{
    if (m_Sense[SENSE_OFFSET_KEY] == SENSE_NONE)
        return TranslateString(L"No error information is available.");
    return CSCSIError::GetErrorString(m_Sense[SENSE_OFFSET_KEY], m_Sense[SENSE_OFFSET_ASC], m_Sense[SENSE_OFFSET_ASCQ]);
}

bool CTHDriveInterface::GetLastErrorCodes(int& nResponseCode, int& nSenseKey, int& nASC, int& nASCQ)
{
    if (m_Sense[SENSE_OFFSET_KEY] == SENSE_NONE)
        return false;
    nResponseCode = m_Sense[SENSE_OFFSET_RESPONSE_CODE];
    nSenseKey = m_Sense[SENSE_OFFSET_KEY];
    nASC = m_Sense[SENSE_OFFSET_ASC];
    nASCQ = m_Sense[SENSE_OFFSET_ASCQ];
    return true;
}
