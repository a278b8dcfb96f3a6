// DeviceDrive: an optical drive behind a device node ("/dev/sr0"). Every command goes to the hardware by SG_IO as it
// came; nothing is sent twice and nothing is added, so retries are the caller's. This is the Linux side.
//
// Open:    from Load to the Acquire behind it, and while somebody holds the drive. For reading and writing; where only
//          reading is allowed, GetWarnings tells what is lost.
// Lock:    while somebody holds the drive, no other process gets it; the refusal names the holder (see DeviceLock.h).
// Door:    the last Release unlocks it if it was locked through this object. After a kill the kernel does, and whoever
//          takes the drive next does it once more.
// Gone:    a drive that vanishes fails the command with 4/05/00, and all after it at once, until it is acquired anew.
// Errors:  false with sense data in fixed format (see SGOutcome.h); the whole data buffer is zeroed.
// Threads: any. Commands go one after the other; what the drive said before is told without waiting for them.

#pragma once

#include "DeviceIdentity.h"
#include "DeviceLock.h"
#include "ServiceDrive.h"
#include "SGTransport.h"
#include "UnreadSectors.h"
#include <atomic>
#include <mutex>
#include <string>

class DeviceDrive final : public ServiceDrive
{
public:
    explicit DeviceDrive(std::string strNode, DEVICE_CALLS calls = DEVICE_CALLS());
    ~DeviceDrive() override; // gives back what is held
    DeviceDrive(const DeviceDrive&) = delete;
    DeviceDrive& operator=(const DeviceDrive&) = delete;

    // Opens the drive and asks what it is. False for what is no optical drive, and for one that another program holds:
    // that one is not disturbed with commands.
    bool Load(std::string& strError) override;
    bool Acquire(std::string& strError) override;
    void Release() override;
    bool Send(const DRIVE_COMMAND& command, SENSE_DATA& sense) override;

    std::string GetReadErrorText() override;
    std::string GetWarnings() override;
    DRIVE_DESCRIPTION GetDescription() override;

    void AddUser(int nMode) override;
    void RemoveUser(int nMode) override;
    // 1 with a disc in, by TEST UNIT READY. A unit attention that this takes from the drive is given to the next
    // command.
    unsigned char GetStateA() override;
    wchar_t* GetVendor() override;
    wchar_t* GetModel() override;
    unsigned char GetStateB() override; // 1 while the drive is there
    wchar_t* GetPackedCapabilities() override;

private:
    // These are called under m_Mutex.
    bool Open(std::string& strError);
    void Close();
    bool IsSameNode() const;
    bool Identify(std::string& strError);
    bool Transfer(const DRIVE_COMMAND& command, SENSE_DATA& sense);
    bool Ask(const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes, SENSE_DATA& sense);
    bool IsReady();
    void UnlockDoor();
    bool TakeAttention(const DRIVE_COMMAND& command, SENSE_DATA& sense);
    void NoteRead(const DRIVE_COMMAND& command, bool bGood, const SENSE_DATA& sense);
    void BeginHold();

    const std::string m_strNode;
    const DEVICE_CALLS m_Calls;
    std::atomic<bool> m_bGone{false};     // until the drive is closed
    std::atomic<bool> m_bWentAway{false}; // the same, until the next first holder
    std::atomic<int> m_nUsers{0};

    std::mutex m_Mutex; // of the commands
    int m_nDescriptor = -1;
    bool m_bOpenedAhead = false; // by Load, for the first holder
    bool m_bDoorLocked = false;  // through this object
    int m_nHolders = 0;
    int m_nLastErrno = 0; // of the last command that the kernel refused
    DeviceLock m_Lock;
    bool m_bAttention = false; // taken from the drive by GetStateA, for the next command
    SENSE_DATA m_Attention;

    std::mutex m_FactsMutex; // of the following; taken inside m_Mutex, never around it
    DEVICE_IDENTITY m_Identity;
    UnreadSectors m_Unread;
    std::string m_strWarnings;
};
