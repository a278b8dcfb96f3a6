// What CCDRipper remembers of each drive: its model name and the size of its read cache, in the options store.

#include "CDRipper.h"
#include "LyStringFormat.h"

namespace
{
constexpr const wchar_t* LIST_DELIMITER = L",";

LyString GetKey(const LyString& strDrive) { return LyFormatString(L"LastCDROMType-%s", strDrive); }
} // namespace

LyString CCDRipper::LoadLastValue(LyString strKey) { return m_pOptions->Get(strKey, LyString(), 0, LyString(), 0); }

void CCDRipper::GetCDParams(LyString strDrive)
{
    const LyString strValue = LoadLastValue(GetKey(strDrive));
    m_CDParams.InitFromList(strValue, LIST_DELIMITER, false, true);
}

void CCDRipper::PutCDParams(LyString strDrive)
{
    if (m_bNoSave)
        return;
    (void)m_pOptions->Set(GetKey(strDrive), m_CDParams.GetList(LIST_DELIMITER, false, -1, nullptr), 0, L"", 0);
}

bool CCDRipper::GetCDDriveModelName(LyString& strName)
{
    DRIVE_INFO info;
    if (m_pDrive == nullptr || !m_pDrive->GetDriveInfo(info))
        return false;
    strName = info.m_strVendor + info.m_strModel;
    (void)strName.Replace(L',', L' '); // so that the list stays intact
    return true;
}

void CCDRipper::SaveCDModelName(LyString strDrive)
{
    GetCDParams(strDrive);
    if (m_CDParams.GetSize() <= CD_PARAM_MODEL || !m_CDParams[CD_PARAM_MODEL].IsEmpty())
        return;
    LyString strName;
    if (!GetCDDriveModelName(strName))
        return;
    (void)m_CDParams.SetAt(CD_PARAM_MODEL, strName, true);
    PutCDParams(strDrive);
}

int CCDRipper::GetReadCacheSize(LyString strDrive)
{
    GetCDParams(strDrive);
    LyString strName;
    if (GetCDDriveModelName(strName) && m_CDParams.GetSize() > CD_PARAM_MODEL)
    {
        if (m_CDParams[CD_PARAM_MODEL] != strName)
        {
            // Another drive at the same place: the stored size is not its own.
            (void)m_CDParams.SetAt(CD_PARAM_MODEL, strName, true);
            PutCDParams(strDrive);
        }
        else if (m_CDParams.GetSize() > CD_PARAM_CACHE_BYTES && m_CDParams[CD_PARAM_CACHE_BYTES].GetInt() >= 0)
            return m_CDParams[CD_PARAM_CACHE_BYTES].GetInt();
    }
    const int nBytes = m_pDrive->GetReadCacheSize();
    if (nBytes == -1)
        return 0;
    (void)m_CDParams.SetAtGrow(CD_PARAM_CACHE_BYTES, LyString().FromInt(nBytes));
    PutCDParams(strDrive);
    return nBytes;
}
