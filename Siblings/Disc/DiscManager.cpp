#include "DiscManager.h"
#include "DriveFactory.h"
#include "DriveWatch.h"
#include "MMC.h"
#include <algorithm>
#include <cstring>
#include <exception>

namespace
{
constexpr size_t MAX_ERROR_TEXTS = 64; // of different paths; the oldest is forgotten

// Nothing that the standard library throws, for want of memory mostly, leaves this library.
template <class RESULT, class WORK>
RESULT Guard(RESULT failure, WORK work)
{
    try
    {
        return work();
    }
    catch (const std::exception&)
    {
        return failure;
    }
}

void CopySense(const SENSE_DATA& sense, unsigned char* pSense, int nSenseBytes)
{
    if (pSense != nullptr && nSenseBytes > 0)
        std::memcpy(pSense, sense.m_aryBytes, static_cast<size_t>(std::min(nSenseBytes, SENSE_BYTES)));
}

void ZeroData(unsigned char* pData, int nBytes)
{
    if (pData != nullptr && nBytes > 0)
        std::memset(pData, 0, static_cast<size_t>(nBytes));
}
} // namespace

DiscManager::DiscManager() : DiscManager(nullptr, CreateServiceDrive, ReadLetterImages) {}

DiscManager::DiscManager(std::unique_ptr<DriveFinder> pFinder, DRIVE_MAKER makeDrive,
                         std::function<LETTER_IMAGES()> getImages)
    : m_MakeDrive(std::move(makeDrive)), m_GetLetterImages(std::move(getImages)), m_pFinder(std::move(pFinder))
{
}

IDiscDrive* DiscManager::GetDrive(const wchar_t* pPath)
{
    return Guard<IDiscDrive*>(nullptr,
                              [&]
                              {
                                  IDiscDrive* pDrive = FindHeldDrive(pPath);
                                  return pDrive != nullptr ? pDrive : OpenDrive(pPath);
                              });
}

// A path of a drive that is held names that drive for as long.
IDiscDrive* DiscManager::FindHeldDrive(const wchar_t* pPath)
{
    const std::lock_guard lock(m_Mutex);
    const auto pKnown = m_mapPaths.find(std::wstring_view(pPath != nullptr ? pPath : L""));
    return pKnown != m_mapPaths.end() && pKnown->second->m_nHolders > 0 ? pKnown->second->m_pDrive.get() : nullptr;
}

IDiscDrive* DiscManager::OpenDrive(const wchar_t* pPath)
{
    const std::wstring strPath = pPath != nullptr ? pPath : L"";
    const int nLetter = GetDriveLetter(strPath);
    if (nLetter != NO_DRIVE_LETTER)
        (void)RefreshLetters();
    std::string strKey;
    {
        const std::lock_guard lock(m_Mutex);
        strKey = GetKey(pPath);
        const auto pSlot = m_mapSlots.find(strKey);
        if (pSlot != m_mapSlots.end() && pSlot->second.m_pDrive != nullptr)
            return (m_mapPaths[strPath] = &pSlot->second)->m_pDrive.get();
    }
    std::string strError;
    std::unique_ptr<ServiceDrive> pDrive;
    if (strKey.empty())
        strError = "No drive is named; 'rondel drives' lists those that are there.";
    else if (strKey == GetLetterText(nLetter))
        strError = strKey + " is no drive here; 'rondel drives' lists them.";
    else
        pDrive = m_MakeDrive(strKey, strError);
    const bool bLoaded = pDrive != nullptr && pDrive->Load(strError);

    const std::lock_guard lock(m_Mutex);
    SetError(strKey, bLoaded ? std::string() : strError);
    if (!bLoaded)
    {
        (void)m_mapPaths.erase(strPath);
        return nullptr;
    }
    DRIVE_SLOT& slot = MakeSlot(strKey);
    // Another thread may have been first; its drive is in use by now.
    if (slot.m_pDrive == nullptr)
        slot.m_pDrive = std::move(pDrive);
    return (m_mapPaths[strPath] = &slot)->m_pDrive.get();
}

bool DiscManager::AcquireDrive(LyString strPath, bool)
{
    return Guard(false, [&] { return Acquire(strPath); });
}

bool DiscManager::Acquire(const wchar_t* pPath)
{
    DRIVE_SLOT* pSlot = FindSlot(pPath);
    if (pSlot == nullptr)
        return false;
    std::string strError;
    const bool bAcquired = pSlot->m_pDrive->Acquire(strError);
    const std::lock_guard lock(m_Mutex);
    pSlot->m_nHolders += bAcquired ? 1 : 0;
    SetError(pSlot->m_strPath, bAcquired ? std::string() : strError);
    return bAcquired;
}

void DiscManager::ReleaseDrive(LyString strPath, bool)
{
    (void)Guard(false,
                [&]
                {
                    DRIVE_SLOT* pSlot = FindSlot(strPath);
                    if (pSlot == nullptr)
                        return false;
                    pSlot->m_pDrive->Release();
                    const std::lock_guard lock(m_Mutex);
                    pSlot->m_nHolders = std::max(0, pSlot->m_nHolders - 1);
                    return true;
                });
}

bool DiscManager::SendCommand(const wchar_t* pPath, unsigned char* pCDB, int nCDBBytes, unsigned char* pData,
                              int& nDataBytes, DRIVE_TRANSFERTYPE eType, int nTimeoutMs, unsigned char* pSense,
                              int nSenseBytes)
{
    const int nRoom = nDataBytes;
    SENSE_DATA sense;
    const auto send = [&]
    {
        const DRIVE_SLOT* pSlot = FindSlot(pPath);
        if (pSlot == nullptr)
        {
            sense.Set({SENSE_NOT_READY, ASC_MEDIUM_NOT_PRESENT, 0});
            return false;
        }
        const DRIVE_COMMAND command = {pCDB, nCDBBytes, pData, nDataBytes, eType, nTimeoutMs};
        return Send(*pSlot->m_pDrive, pSlot->m_nEvidence, command, sense);
    };
    if (Guard(false, send))
        return true;
    // Each kind of drive does this by itself, too: old bytes must never pass for new ones. Data on its way to the
    // drive stays, since it may be sent again.
    if (eType == DRIVE_TRANSFER_NONE || eType == DRIVE_TRANSFER_IN)
        ZeroData(pData, nRoom);
    CopySense(sense, pSense, nSenseBytes);
    return false;
}

bool DiscManager::Send(ServiceDrive& drive, int nEvidence, const DRIVE_COMMAND& command, SENSE_DATA& sense)
{
    const EVIDENCE_START start = EVIDENCE_START::Now();
    const bool bGood = drive.Send(command, sense);
    m_Evidence.Record(nEvidence, start, command, bGood, sense);
    return bGood;
}

std::string DiscManager::GetErrorText(const wchar_t* pPath)
{
    ServiceDrive* pDrive = nullptr;
    {
        const std::lock_guard lock(m_Mutex);
        const std::string strKey = GetKey(pPath);
        for (const ERROR_TEXT& error : m_aryErrors)
            if (error.m_strKey == strKey)
                return error.m_strSentence;
        const auto pSlot = m_mapSlots.find(strKey);
        pDrive = pSlot != m_mapSlots.end() ? pSlot->second.m_pDrive.get() : nullptr;
    }
    return pDrive != nullptr ? pDrive->GetReadErrorText() : std::string();
}

std::string DiscManager::GetWarnings(const wchar_t* pPath)
{
    const DRIVE_SLOT* pSlot = FindSlot(pPath);
    return pSlot != nullptr ? pSlot->m_pDrive->GetWarnings() : std::string();
}

// The usual path was seen before and costs one look-up, no conversion.
DiscManager::DRIVE_SLOT* DiscManager::FindSlot(const wchar_t* pPath)
{
    const std::lock_guard lock(m_Mutex);
    const auto pKnown = m_mapPaths.find(std::wstring_view(pPath != nullptr ? pPath : L""));
    if (pKnown != m_mapPaths.end())
        return pKnown->second;
    const auto pSlot = m_mapSlots.find(GetKey(pPath));
    return pSlot != m_mapSlots.end() && pSlot->second.m_pDrive != nullptr ? &pSlot->second : nullptr;
}

// The absolute path that a path names. A letter that nobody has stays as it is: "E:".
std::string DiscManager::GetKey(const wchar_t* pPath) const
{
    const auto pKnown = m_mapPaths.find(std::wstring_view(pPath != nullptr ? pPath : L""));
    if (pKnown != m_mapPaths.end() && pKnown->second->m_nHolders > 0)
        return pKnown->second->m_strPath;
    const int nLetter = GetDriveLetter(pPath);
    if (nLetter == NO_DRIVE_LETTER)
        return GetDeviceNode(GetImagePath(pPath));
    const std::string& strPath = m_Letters.GetPath(nLetter);
    return strPath.empty() ? GetLetterText(nLetter) : strPath;
}

DiscManager::DRIVE_SLOT& DiscManager::MakeSlot(const std::string& strKey)
{
    DRIVE_SLOT& slot = m_mapSlots[strKey];
    if (slot.m_nEvidence == 0)
    {
        slot.m_strPath = strKey;
        slot.m_nEvidence = static_cast<int>(std::min<size_t>(m_mapSlots.size(), Evidence::MAX_DRIVES));
    }
    return slot;
}

void DiscManager::SetError(const std::string& strKey, const std::string& strSentence)
{
    std::erase_if(m_aryErrors, [&](const ERROR_TEXT& error) { return error.m_strKey == strKey; });
    if (strSentence.empty())
        return;
    if (m_aryErrors.size() == MAX_ERROR_TEXTS)
        m_aryErrors.pop_front();
    m_aryErrors.push_back({strKey, strSentence});
}
