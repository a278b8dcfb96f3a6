#include "DiscManager.h"
#include "MMC.h"
#include "UTF8.h"
#include <cstring>
#include <cwchar>
#include <filesystem>

namespace
{
constexpr const char* FILE_URL = "file://";

int GetHexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char cLower = static_cast<char>(c | 0x20);
    return cLower >= 'a' && cLower <= 'f' ? cLower - 'a' + 10 : -1;
}

std::string ReadEscapes(const std::string& strURL)
{
    std::string str;
    for (size_t i = 0; i < strURL.size(); ++i)
    {
        const int nHigh = strURL[i] == '%' && i + 2 < strURL.size() ? GetHexValue(strURL[i + 1]) : -1;
        const int nLow = nHigh >= 0 ? GetHexValue(strURL[i + 2]) : -1;
        if (nLow < 0)
        {
            str += strURL[i];
            continue;
        }
        str += static_cast<char>(nHigh << 4 | nLow);
        i += 2;
    }
    return str;
}

void PutSense(const DRIVE_SENSE& sense, unsigned char* pSense, int nSenseBytes)
{
    if (pSense == nullptr || nSenseBytes < 1)
        return;
    unsigned char arySense[SENSE_BYTES] = {};
    arySense[SENSE_OFFSET_RESPONSE_CODE] = SENSE_RESPONSE_CURRENT;
    arySense[SENSE_OFFSET_KEY] = sense.m_nKey;
    arySense[SENSE_OFFSET_ADDITIONAL_LENGTH] = 10;
    arySense[SENSE_OFFSET_ASC] = sense.m_nASC;
    arySense[SENSE_OFFSET_ASCQ] = sense.m_nASCQ;
    std::memcpy(pSense, arySense, static_cast<size_t>(std::min(nSenseBytes, SENSE_BYTES)));
}
} // namespace

std::string GetImagePath(const wchar_t* pPath)
{
    std::string strPath = NarrowUTF8(pPath != nullptr ? pPath : L"");
    if (strPath.starts_with(FILE_URL))
        strPath = ReadEscapes(strPath.substr(std::strlen(FILE_URL)));
    if (strPath.empty())
        return {};
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(strPath, error);
    return error ? strPath : absolute.lexically_normal().string();
}

IDiscDrive* DiscManager::GetDrive(const wchar_t* pPath)
{
    const std::lock_guard lock(m_Mutex);
    const std::string strKey = GetImagePath(pPath);
    if (const auto pFound = m_mapDrives.find(strKey); pFound != m_mapDrives.end())
        return pFound->second.get();
    auto pDrive = std::make_unique<ImageDrive>(strKey);
    std::string strError;
    if (strKey.empty() || !pDrive->Load(strError))
    {
        SetError(strKey, strError);
        return nullptr;
    }
    m_mapKeys[pPath] = strKey;
    return (m_mapDrives[strKey] = std::move(pDrive)).get();
}

bool DiscManager::AcquireDrive(LyString strPath, bool)
{
    const std::lock_guard lock(m_Mutex);
    const std::string strKey = GetImagePath(strPath);
    ImageDrive* pDrive = FindDrive(strKey);
    std::string strError;
    if (pDrive != nullptr && pDrive->Acquire(strError))
    {
        if (m_strErrorKey == strKey)
            m_strErrorKey.clear();
        return true;
    }
    SetError(strKey, strError);
    return false;
}

void DiscManager::ReleaseDrive(LyString strPath, bool)
{
    const std::lock_guard lock(m_Mutex);
    if (ImageDrive* pDrive = FindDrive(GetImagePath(strPath)))
        pDrive->Release();
}

bool DiscManager::SendCommand(const wchar_t* pPath, unsigned char* pCDB, int nCDBBytes, unsigned char* pData,
                              int& nDataBytes, DRIVE_TRANSFERTYPE eType, int, unsigned char* pSense, int nSenseBytes)
{
    ImageDrive* pDrive = nullptr;
    {
        // The usual path was seen before and costs one look-up, no conversion. Drives are never removed.
        const std::lock_guard lock(m_Mutex);
        const auto pKey = m_mapKeys.find(std::wstring_view(pPath != nullptr ? pPath : L""));
        pDrive = FindDrive(pKey != m_mapKeys.end() ? pKey->second : GetImagePath(pPath));
    }
    DRIVE_SENSE sense{SENSE_NOT_READY, ASC_MEDIUM_NOT_PRESENT, 0};
    if (pDrive != nullptr && pDrive->Execute({pCDB, nCDBBytes, pData, nDataBytes, eType}, sense))
        return true;
    if (pDrive == nullptr && pData != nullptr && nDataBytes > 0)
        std::memset(pData, 0, static_cast<size_t>(nDataBytes));
    PutSense(sense, pSense, nSenseBytes);
    return false;
}

std::string DiscManager::GetErrorText(const wchar_t* pPath)
{
    const std::lock_guard lock(m_Mutex);
    const std::string strKey = GetImagePath(pPath);
    if (m_strErrorKey == strKey && !m_strError.empty())
        return m_strError;
    ImageDrive* pDrive = FindDrive(strKey);
    return pDrive != nullptr ? pDrive->GetReadErrorText() : std::string();
}

std::string DiscManager::GetWarnings(const wchar_t* pPath)
{
    const std::lock_guard lock(m_Mutex);
    ImageDrive* pDrive = FindDrive(GetImagePath(pPath));
    return pDrive != nullptr ? pDrive->GetWarnings() : std::string();
}

ImageDrive* DiscManager::FindDrive(const std::string& strKey)
{
    const auto pFound = m_mapDrives.find(strKey);
    return pFound != m_mapDrives.end() ? pFound->second.get() : nullptr;
}

void DiscManager::SetError(const std::string& strKey, const std::string& strError)
{
    m_strErrorKey = strKey;
    m_strError = strError;
}
