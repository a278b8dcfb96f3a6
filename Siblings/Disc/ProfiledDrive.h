// ProfiledDrive: an image drive that behaves like hardware, as a drive profile tells (DriveProfile.h).
//
// Paths:   "disc.cue.drive" beside "disc.cue" is the profile of that image; or the drive's path is itself a profile, a
//          file ending in ".drive" whose line "Image = ..." names the image.
// Lives:   the first holder has the profile read anew (or Load did, just before), and all counts and the random
//          numbers begin again, so that the same commands meet the same drive.
// Time:    a command takes its time in real sleeps, never longer than its time-out, with no lock held. The drive does
//          one command after the other, as hardware does.
// Errors:  as ImageDrive, and those of the profile. On a failed command the whole data buffer is zeroed.
//            4/08/01 the command ran into its time-out     4/05/00 the drive was removed
// Offset:  the audio of a drive with a read offset is shifted by it, and is not wrong. So it is only where sectors of
//          audio are asked for as such.
// Wrong:   bytes that a fault has changed come with good status, as from hardware. GetStatistics and GetHistory tell.
// Threads: any.

#pragma once

#include "DriveCache.h"
#include "DriveFaults.h"
#include "DriveProfile.h"
#include "DriveTiming.h"
#include "ImageDrive.h"
#include "ServiceDrive.h"
#include "UnreadSectors.h"
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// What the drive did since its first holder came.
struct PROFILED_STATISTICS
{
    long long m_nCommands = 0;
    long long m_nReads = 0;        // commands that read sectors
    long long m_nCachedReads = 0;  // of these, wholly from the cache
    long long m_nFailed = 0;       // commands, for whatever reason
    long long m_nTimeouts = 0;     // of these, those that ran into their time-out
    long long m_nWrongSectors = 0; // delivered with good status and other bytes than the image's
    long long m_nSpinUps = 0;      //
    long long m_nDiscSectors = 0;  // read from the disc for commands
    long long m_nAheadSectors = 0; // read from the disc by the drive itself
    bool m_bRemoved = false;
};

// One command, as the drive saw it.
struct PROFILED_COMMAND
{
    long long m_nNumber = 0; // from 1
    unsigned char m_nOpcode = 0;
    int m_nLBA = 0;     // of reads, otherwise 0
    int m_nSectors = 0; // likewise, as asked for
    bool m_bCached = false;
    int m_nWrongSectors = 0;
    DRIVE_SENSE m_Sense; // good if it ended well
    std::chrono::microseconds m_Duration{};
};

class ProfiledDrive final : public ServiceDrive
{
public:
    static constexpr size_t HISTORY_COMMANDS = 4096;

    // strImagePath may be empty if the profile names the image. Nothing is opened yet.
    ProfiledDrive(std::string strProfilePath, std::string strImagePath);
    ~ProfiledDrive() = default;

    bool Load(std::string& strError) override;
    bool Acquire(std::string& strError) override;
    void Release() override;
    bool Send(const DRIVE_COMMAND& command, SENSE_DATA& sense) override;
    std::string GetReadErrorText() override;
    std::string GetWarnings() override;
    DRIVE_DESCRIPTION GetDescription() override;

    PROFILED_STATISTICS GetStatistics();
    std::vector<PROFILED_COMMAND> GetHistory(); // the last HISTORY_COMMANDS, oldest first

    void AddUser(int nMode) override;
    void RemoveUser(int nMode) override;
    unsigned char GetStateA() override; // 1 while a disc is loaded
    wchar_t* GetVendor() override;
    wchar_t* GetModel() override;
    unsigned char GetStateB() override; // 1: the drive is there; 0: it was removed
    wchar_t* GetPackedCapabilities() override;

private:
    using CLOCK = DriveTiming::CLOCK;

    struct READ_REQUEST // sectors that lie on a disc; none for other commands
    {
        int m_nLBA = 0;
        int m_nSectors = 0;
    };

    bool LoadProfile(std::string& strError);
    void StartAnew();
    void ChangeDisc(const std::string& strImage);
    void ForgetDisc();
    bool TellImage(unsigned char nOpcode, unsigned char nAction);

    static READ_REQUEST GetReadRequest(const DRIVE_COMMAND& command);
    DRIVE_SENSE Serve(const DRIVE_COMMAND& command, PROFILED_COMMAND& record, CLOCK::time_point& end);
    DRIVE_SENSE Dispatch(const DRIVE_COMMAND& command, const READ_REQUEST& request, PROFILED_COMMAND& record);
    DRIVE_SENSE RunOnImage(const DRIVE_COMMAND& command);
    DRIVE_SENSE ModeSense(const DRIVE_COMMAND& command) const;
    void PutNames(const DRIVE_COMMAND& command) const;
    void OnStartStop(unsigned char nAction);
    void Note(const PROFILED_COMMAND& record);

    int FindOrigins(const READ_REQUEST& request);
    DriveTiming::DURATION GetDuration(const DRIVE_COMMAND& command, const READ_REQUEST& request, int nFirstMissing,
                                      CLOCK::time_point start);
    DRIVE_SENSE ServeRead(const DRIVE_COMMAND& command, const READ_REQUEST& request, PROFILED_COMMAND& record);
    DRIVE_SENSE TryDisc(const READ_REQUEST& request);
    void KeepSectors(const READ_REQUEST& request);
    int GetReadOffset(const DRIVE_COMMAND& command) const;
    int SpoilSectors(const DRIVE_COMMAND& command, const READ_REQUEST& request);
    bool ReadAudio(unsigned char* pSector, int nLBA);
    void FillSector(unsigned char* pSector, int nLBA, int nFrames);
    void ReadAhead(CLOCK::time_point now);

    std::mutex m_Mutex; // over everything below; never held over a sleep
    const std::string m_strProfilePath;
    const std::string m_strImagePath; // of a profile beside an image
    DRIVE_PROFILE m_Profile;
    std::string m_strDisc;                // the image that is in the drive
    std::string m_strDiscError;           // why it could not be opened
    int m_nLeadOutLBA = 0;                // of the disc
    std::unique_ptr<ImageDrive> m_pImage; // never null
    DriveCache m_Cache;
    DriveTiming m_Timing;
    DriveFaults m_Faults;
    MODE_STATE m_Mode;
    bool m_bFresh = false; // Load has just begun anew, for the first holder
    int m_nHolders = 0;
    int m_nUsers = 0;
    bool m_bRemoved = false;
    CLOCK::time_point m_BusyUntil{};              // the command at work ends then
    CLOCK::time_point m_AheadSince{};             // from then on the drive has been free to read on
    int m_nAheadLeft = 0;                         // sectors
    unsigned long long m_nLastRead = 0;           // the last read that went to the disc
    std::vector<unsigned long long> m_aryOrigins; // of the sectors of the command at work: the read that fetched each
    UnreadSectors m_Unread;
    PROFILED_STATISTICS m_Statistics;
    std::deque<PROFILED_COMMAND> m_History;
};

// Whether the path is that of a profile, or of an image that has one beside it.
bool HasDriveProfile(const std::string& strPath);

// The drive of such a path. Null, with one sentence, if its profile cannot be used.
std::unique_ptr<ServiceDrive> CreateProfiledDrive(const std::string& strPath, std::string& strError);
