// DiscManager: the disc service of this library. A drive is named by its letter or its device node, and a path to a
// disc image is a drive too; a file URL is the path that it names.
//
// Owner:   drives live as long as the service. The image's files are open only while somebody holds the drive, or from
//          GetDrive to the AcquireDrive behind it.
// Paths:   which drive a path names is found out by GetDrive and kept until the next one. While the drive is held, its
//          paths keep naming it, whatever is plugged in or out meanwhile.
// Threads: any. No lock is held while a drive works or a file is opened. Lock order: the list of drives, then the
//          table of drives, then a drive's own.

#pragma once

#include "DriveFinder.h"
#include "DriveLetters.h"
#include "DriveState.h"
#include "Evidence.h"
#include "ServiceDrive.h"
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class DiscManager final : public IDiscManager
{
public:
    // Makes the drive of a path, or null with one sentence; as CreateServiceDrive does.
    using DRIVE_MAKER = std::function<std::unique_ptr<ServiceDrive>(const std::string& strPath, std::string& strError)>;

    DiscManager();
    // Of another world: what there is to find, how it is opened, and which images have a letter.
    DiscManager(std::unique_ptr<DriveFinder> pFinder, DRIVE_MAKER makeDrive, std::function<LETTER_IMAGES()> getImages);

    IDiscDrive* GetDrive(const wchar_t* pPath) override;
    bool AcquireDrive(LyString strPath, bool bAlwaysTrue) override;
    void ReleaseDrive(LyString strPath, bool bAlwaysFalse) override;
    // Every command is recorded. A command that fails leaves the whole data buffer zeroed.
    bool SendCommand(const wchar_t* pPath, unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes,
                     DRIVE_TRANSFERTYPE eType, int nTimeoutMs, unsigned char* pSense, int nSenseBytes) override;

    // Why the path could not be opened the last time, or what could not be read from it; empty if all went well.
    std::string GetErrorText(const wchar_t* pPath);
    // What was tolerated when the path was opened, a sentence to a line; only while somebody holds the drive.
    std::string GetWarnings(const wchar_t* pPath);
    // The drives of the machine, then the images that have a letter. A drive that this process holds is not disturbed;
    // any other is opened and asked whether it is ready.
    std::vector<DRIVE_LISTING> ListDrives();
    // As the export GetDiscEvidence.
    int ReadEvidence(const wchar_t* pPath, unsigned long long nAfter, DISC_EVIDENCE* pRecords, int nRecords);

    void Reserved0() override {}
    void Reserved1() override {}
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}

private:
    struct DRIVE_SLOT
    {
        std::string m_strPath;
        int m_nEvidence = 0; // the drive's number in the evidence
        int m_nHolders = 0;
        std::unique_ptr<ServiceDrive> m_pDrive; // null until GetDrive has opened it; then it stays
    };
    struct ERROR_TEXT
    {
        std::string m_strKey;
        std::string m_strSentence;
    };

    // These take the locks that they need.
    IDiscDrive* OpenDrive(const wchar_t* pPath);
    IDiscDrive* FindHeldDrive(const wchar_t* pPath);
    DRIVE_SLOT* FindSlot(const wchar_t* pPath); // null for a path that GetDrive has not opened
    bool Acquire(const wchar_t* pPath);
    bool Send(ServiceDrive& drive, int nEvidence, const DRIVE_COMMAND& command, SENSE_DATA& sense);
    std::vector<FOUND_DRIVE> RefreshLetters();
    std::vector<DRIVE_LISTING> MakeListings(const std::vector<FOUND_DRIVE>& aryFound);
    void AskState(DRIVE_LISTING& listing);
    void AskReadiness(ServiceDrive& drive, int nEvidence, DRIVE_LISTING& listing);

    // These are called under m_Mutex.
    std::string GetKey(const wchar_t* pPath) const;
    DRIVE_SLOT& MakeSlot(const std::string& strKey);
    void SetError(const std::string& strKey, const std::string& strSentence); // the empty one takes it back
    void ForgetLetterPaths();

    const DRIVE_MAKER m_MakeDrive;
    const std::function<LETTER_IMAGES()> m_GetLetterImages;
    Evidence m_Evidence;

    std::mutex m_ListMutex;                 // for the next three
    std::unique_ptr<DriveFinder> m_pFinder; // made when the drives are first asked for
    std::vector<FOUND_DRIVE> m_aryFound;
    bool m_bFound = false;

    std::mutex m_Mutex; // for all below
    DriveLetters m_Letters;
    std::map<std::string, DRIVE_SLOT> m_mapSlots;                // by absolute path
    std::map<std::wstring, DRIVE_SLOT*, std::less<>> m_mapPaths; // paths as GetDrive was given them
    std::deque<ERROR_TEXT> m_aryErrors;                          // of the last paths that could not be opened
};
