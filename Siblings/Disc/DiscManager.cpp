#include "DiscManager.h"
#include "DriveFactory.h"
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
    std::string strError;
    std::unique_ptr<ServiceDrive> pDrive = strKey.empty() ? nullptr : CreateServiceDrive(strKey, strError);
    if (pDrive == nullptr || !pDrive->Load(strError))
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
    ServiceDrive* pDrive = FindDrive(strKey);
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
    if (ServiceDrive* pDrive = FindDrive(GetImagePath(strPath)))
        pDrive->Release();
}

bool DiscManager::SendCommand(const wchar_t* pPath, unsigned char* pCDB, int nCDBBytes, unsigned char* pData,
                              int& nDataBytes, DRIVE_TRANSFERTYPE eType, int nTimeoutMs, unsigned char* pSense,
                              int nSenseBytes)
{
    ServiceDrive* pDrive = nullptr;
    {
        // The usual path was seen before and costs one look-up, no conversion. Drives are never removed.
        const std::lock_guard lock(m_Mutex);
        const auto pKey = m_mapKeys.find(std::wstring_view(pPath != nullptr ? pPath : L""));
        pDrive = FindDrive(pKey != m_mapKeys.end() ? pKey->second : GetImagePath(pPath));
    }
    SENSE_DATA sense;
    if (pDrive != nullptr && pDrive->Send({pCDB, nCDBBytes, pData, nDataBytes, eType, nTimeoutMs}, sense))
        return true;
    if (pDrive == nullptr)
    {
        sense.Set({SENSE_NOT_READY, ASC_MEDIUM_NOT_PRESENT, 0});
        if (pData != nullptr && nDataBytes > 0)
            std::memset(pData, 0, static_cast<size_t>(nDataBytes));
    }
    if (pSense != nullptr && nSenseBytes > 0)
        std::memcpy(pSense, sense.m_aryBytes, static_cast<size_t>(std::min(nSenseBytes, SENSE_BYTES)));
    return false;
}

std::string DiscManager::GetErrorText(const wchar_t* pPath)
{
    const std::lock_guard lock(m_Mutex);
    const std::string strKey = GetImagePath(pPath);
    if (m_strErrorKey == strKey && !m_strError.empty())
        return m_strError;
    ServiceDrive* pDrive = FindDrive(strKey);
    return pDrive != nullptr ? pDrive->GetReadErrorText() : std::string();
}

std::string DiscManager::GetWarnings(const wchar_t* pPath)
{
    const std::lock_guard lock(m_Mutex);
    ServiceDrive* pDrive = FindDrive(GetImagePath(pPath));
    return pDrive != nullptr ? pDrive->GetWarnings() : std::string();
}

ServiceDrive* DiscManager::FindDrive(const std::string& strKey)
{
    const auto pFound = m_mapDrives.find(strKey);
    return pFound != m_mapDrives.end() ? pFound->second.get() : nullptr;
}

void DiscManager::SetError(const std::string& strKey, const std::string& strError)
{
    m_strErrorKey = strKey;
    m_strError = strError;
}
