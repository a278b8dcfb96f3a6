// The disc service's list of drives: what is there, which letter it has, and in what state it is.

#include "DeviceLock.h"
#include "DiscManager.h"
#include "DriveWatch.h"
#include "MMC.h"
#include <algorithm>

namespace
{
constexpr int READY_TIMEOUT_MS = 3000; // of one question while a list is made
constexpr int MAX_UNIT_ATTENTIONS = 3; // a drive may have several to tell, one at a time

std::vector<std::string> GetNodes(const std::vector<FOUND_DRIVE>& aryFound)
{
    std::vector<std::string> aryNodes;
    aryNodes.reserve(aryFound.size());
    for (const FOUND_DRIVE& drive : aryFound)
        aryNodes.push_back(drive.m_strNode);
    return aryNodes;
}

// What the drive says of itself goes before what the kernel has noted.
void Describe(DRIVE_LISTING& listing, DRIVE_DESCRIPTION description)
{
    description.m_bImage = description.m_bImage || listing.m_Description.m_bImage;
    if (!description.m_strModel.empty() || !description.m_strVendor.empty())
        listing.m_Description = std::move(description);
}
} // namespace

// Brings letters up to date and returns the drives that are there. The options are read outside of every lock, since
// their library has locks of its own.
std::vector<FOUND_DRIVE> DiscManager::RefreshLetters()
{
    const LETTER_IMAGES images = m_GetLetterImages();
    const std::lock_guard listLock(m_ListMutex);
    if (m_pFinder == nullptr)
        m_pFinder = std::make_unique<DriveWatch>();
    if (m_pFinder->HasChanged() || !m_bFound)
        m_aryFound = m_pFinder->Find();
    m_bFound = true;
    const std::lock_guard lock(m_Mutex);
    const auto isHeld = [this](const std::string& strPath)
    {
        const auto pSlot = m_mapSlots.find(strPath);
        return pSlot != m_mapSlots.end() && pSlot->second.m_nHolders > 0;
    };
    if (m_Letters.Update(GetNodes(m_aryFound), images, isHeld))
        ForgetLetterPaths();
    return m_aryFound;
}

// Letters name other drives now, except where somebody holds the drive.
void DiscManager::ForgetLetterPaths()
{
    std::erase_if(m_mapPaths, [](const auto& entry)
                  { return GetDriveLetter(entry.first) != NO_DRIVE_LETTER && entry.second->m_nHolders == 0; });
}

std::vector<DRIVE_LISTING> DiscManager::ListDrives()
{
    std::vector<DRIVE_LISTING> aryListings = MakeListings(RefreshLetters());
    for (DRIVE_LISTING& listing : aryListings)
        AskState(listing);
    return aryListings;
}

std::vector<DRIVE_LISTING> DiscManager::MakeListings(const std::vector<FOUND_DRIVE>& aryFound)
{
    const std::lock_guard lock(m_Mutex);
    std::vector<DRIVE_LISTING> aryListings;
    for (const FOUND_DRIVE& drive : aryFound)
    {
        DRIVE_LISTING listing;
        listing.m_strPath = drive.m_strNode;
        listing.m_strLetter = GetLetterText(m_Letters.Find(drive.m_strNode));
        listing.m_Description = {drive.m_strVendor, drive.m_strModel, drive.m_strRevision, false};
        aryListings.push_back(std::move(listing));
    }
    const std::vector<std::string> aryNodes = GetNodes(aryFound);
    for (int nLetter = 0; nLetter < DRIVE_LETTERS; ++nLetter)
    {
        const std::string& strPath = m_Letters.GetPath(nLetter);
        if (!m_Letters.IsByOption(nLetter) || std::find(aryNodes.begin(), aryNodes.end(), strPath) != aryNodes.end())
            continue;
        DRIVE_LISTING listing;
        listing.m_strPath = strPath;
        listing.m_strLetter = GetLetterText(nLetter);
        listing.m_Description.m_bImage = true;
        aryListings.push_back(std::move(listing));
    }
    return aryListings;
}

void DiscManager::AskState(DRIVE_LISTING& listing)
{
    ServiceDrive* pHeld = nullptr;
    int nEvidence = 0;
    {
        const std::lock_guard lock(m_Mutex);
        const DRIVE_SLOT& slot = MakeSlot(listing.m_strPath);
        nEvidence = slot.m_nEvidence;
        pHeld = slot.m_nHolders > 0 ? slot.m_pDrive.get() : nullptr;
    }
    if (pHeld != nullptr)
    {
        // A command would take away the unit attention that is meant for the holder.
        Describe(listing, pHeld->GetDescription());
        listing.m_eState = pHeld->GetStateA() != 0 ? DISC_DRIVE_READY : DISC_DRIVE_NO_DISC;
        return;
    }
    // A drive of its own for the question: afterwards nothing stays open, and nobody's drive has changed.
    const std::unique_ptr<ServiceDrive> pDrive = m_MakeDrive(listing.m_strPath, listing.m_strReason);
    if (pDrive == nullptr)
        return;
    const bool bLoaded = pDrive->Load(listing.m_strReason);
    Describe(listing, pDrive->GetDescription());
    if (bLoaded)
        AskReadiness(*pDrive, nEvidence, listing);
    else if (!listing.m_Description.m_bImage && !FindDeviceHolder(listing.m_strPath).empty())
        listing.m_eState = DISC_DRIVE_HELD; // the reason that Load gave names the holder
}

void DiscManager::AskReadiness(ServiceDrive& drive, int nEvidence, DRIVE_LISTING& listing)
{
    const unsigned char aryCDB[6] = {CDB_TEST_UNIT_READY};
    for (int nTries = 0;; ++nTries)
    {
        SENSE_DATA sense;
        int nDataBytes = 0;
        const DRIVE_COMMAND command = {aryCDB,     sizeof aryCDB,       nullptr,
                                       nDataBytes, DRIVE_TRANSFER_NONE, READY_TIMEOUT_MS};
        const bool bGood = Send(drive, nEvidence, command, sense);
        if (!bGood && sense.GetCodes().m_nKey == SENSE_UNIT_ATTENTION && nTries < MAX_UNIT_ATTENTIONS)
            continue;
        JudgeReadiness(listing, bGood, sense.GetCodes());
        return;
    }
}

int DiscManager::ReadEvidence(const wchar_t* pPath, unsigned long long nAfter, DISC_EVIDENCE* pRecords, int nRecords)
{
    int nEvidence = Evidence::EVERY_DRIVE;
    if (pPath != nullptr)
    {
        const std::lock_guard lock(m_Mutex);
        const auto pSlot = m_mapSlots.find(GetKey(pPath));
        if (pSlot == m_mapSlots.end())
            return 0;
        nEvidence = pSlot->second.m_nEvidence;
    }
    return m_Evidence.Read(nEvidence, nAfter, pRecords, nRecords);
}
