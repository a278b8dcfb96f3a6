// ImageDrive: an MMC drive in software. Its disc is an image; its commands are those of a read-only CD drive.
//
// Answers: INQUIRY, TEST UNIT READY, REQUEST SENSE, MODE SENSE(10), READ TOC/PMA/ATIP (formats 0, 1, 5), READ
// SUB-CHANNEL,
//          READ CD, START STOP UNIT with a tray, PREVENT ALLOW MEDIUM REMOVAL, SET CD SPEED.
// Errors:  a command that fails leaves sense data in fixed format and the whole data buffer zeroed: the layers above
// look
//          at the bytes only, and old bytes must never pass for new ones.
//            5/20/00 unknown command     5/21/00 address out of range    5/24/00 bad field in the command
//            5/53/02 locked door         5/64/00 not the expected type   5/39/00 saved mode pages
//            2/3A/01 no disc, tray closed  2/3A/02 tray open             3/11/05 a sector that the image does not hold
//            6/28/00 once, after a disc was loaded by command
// Threads: any; each operation takes the drive's own lock. One sector goes from the image's file straight into the
//          caller's buffer.

#pragma once

#include "DiscImage.h"
#include "ModePages.h"
#include "ServiceDrive.h"
#include <functional>
#include <mutex>
#include <string>
#include <vector>

class ImageDrive final : public ServiceDrive
{
public:
    static constexpr const char* VENDOR = "RONDEL";
    static constexpr const char* MODEL = "DISC IMAGE";
    static constexpr const char* REVISION = "1.0";

    // How the disc comes into the drive; null, with one sentence, if it cannot.
    using OPENER = std::function<std::unique_ptr<DiscImage>(std::string& strError)>;

    explicit ImageDrive(const std::string& strImagePath);
    ImageDrive(std::string strName, OPENER open); // a disc of another making; the name is only for messages

    // Opens the image, if it is not open. False, with one sentence, if it cannot be.
    bool Load(std::string& strError) override;
    // One more user of the disc. The first one opens the image, unless Load has just done so, and forgets earlier read
    // errors.
    bool Acquire(std::string& strError) override;
    // One user less. The last one closes the image and unlocks the door.
    void Release() override;
    // One sentence on the sectors that could not be read since the first user came; empty if there were none.
    std::string GetReadErrorText() override;
    // What was tolerated when the image was opened, a sentence to a line; empty if nothing, or without a disc.
    std::string GetWarnings() override;
    DRIVE_DESCRIPTION GetDescription() override;

    // Runs one command. On false the sense says why.
    bool Execute(const DRIVE_COMMAND& command, DRIVE_SENSE& sense);
    bool Send(const DRIVE_COMMAND& command, SENSE_DATA& sense) override; // the same, with whole sense data

    void AddUser(int nMode) override;
    void RemoveUser(int nMode) override;
    unsigned char GetStateA() override; // 1 while a disc is loaded
    wchar_t* GetVendor() override;
    wchar_t* GetModel() override;
    unsigned char GetStateB() override; // 1: the drive is there
    wchar_t* GetPackedCapabilities() override;

private:
    DRIVE_SENSE Dispatch(const DRIVE_COMMAND& command);
    DRIVE_SENSE CheckMedium();
    DRIVE_SENSE Inquiry(const DRIVE_COMMAND& command);
    DRIVE_SENSE RequestSense(const DRIVE_COMMAND& command);
    DRIVE_SENSE ModeSense(const DRIVE_COMMAND& command);
    DRIVE_SENSE ReadTOC(const DRIVE_COMMAND& command);
    DRIVE_SENSE ReadSubChannel(const DRIVE_COMMAND& command);
    DRIVE_SENSE ReadCD(const DRIVE_COMMAND& command);
    DRIVE_SENSE StartStop(const DRIVE_COMMAND& command);
    DRIVE_SENSE SetSpeed(const DRIVE_COMMAND& command);
    DRIVE_SENSE CheckSectorTypes(int nLBA, int nCount, int nType, int nSelection) const;
    DRIVE_SENSE ReadWholeSectors(int nLBA, int nCount, unsigned char* pData);
    DRIVE_SENSE ReadUserData(int nLBA, int nCount, unsigned char* pData);
    void NoteUnreadable(int nLBA, int nCount);

    std::mutex m_Mutex;
    const std::string m_strImagePath;
    const OPENER m_Open;
    std::unique_ptr<DiscImage> m_pImage; // null while nobody uses the drive
    bool m_bOpenedAhead = false;         // by Load, for the first holder
    int m_nHolders = 0;
    int m_nUsers = 0;
    bool m_bTrayOpen = false;
    bool m_bUnitAttention = false; // a disc was loaded; the next command that needs it is told
    MODE_STATE m_Mode;
    int m_nHeadLBA = 0; // behind the last sector read
    int m_nUnreadable = 0;
    int m_nFirstUnreadable = 0;
};
