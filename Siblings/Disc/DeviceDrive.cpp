#include "DeviceDrive.h"
#include "DeviceError.h"
#include "SenseData.h"
#include "SGOutcome.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace
{
constexpr int OWN_TIMEOUT_MS = 5000;   // of the commands that are not the caller's
constexpr int MAX_UNIT_ATTENTIONS = 3; // a drive may have several to tell, one at a time
constexpr int OPEN_FLAGS = O_NONBLOCK | O_CLOEXEC | O_NOCTTY;

wchar_t* MakeSystemString(const std::string& strASCII)
{
    return LyCom::SysAllocString(std::wstring(strASCII.begin(), strASCII.end()).c_str());
}
} // namespace

DeviceDrive::DeviceDrive(std::string strNode, DEVICE_CALLS calls)
    : m_strNode(std::move(strNode)), m_Calls(std::move(calls))
{
}

DeviceDrive::~DeviceDrive()
{
    const std::lock_guard lock(m_Mutex);
    Close();
}

bool DeviceDrive::Load(std::string& strError)
{
    const std::lock_guard lock(m_Mutex);
    if (m_nHolders > 0)
    {
        if (m_bGone)
            strError = GetDeviceErrorText(m_strNode, ENODEV);
        return !m_bGone;
    }
    if (m_nDescriptor >= 0 && IsSameNode())
        return true;
    if (!Open(strError))
        return false;
    std::string strHolder = FindDeviceHolder(m_nDescriptor, m_strNode);
    if (!strHolder.empty())
        strError = std::move(strHolder);
    else if (Identify(strError))
        return m_bOpenedAhead = true;
    Close();
    return false;
}

bool DeviceDrive::Acquire(std::string& strError)
{
    const std::lock_guard lock(m_Mutex);
    if (m_nHolders > 0)
    {
        if (m_bGone)
            strError = GetDeviceErrorText(m_strNode, ENODEV);
        m_nHolders += m_bGone ? 0 : 1;
        return !m_bGone;
    }
    // What Load has just opened is the drive. Otherwise it is opened anew: it may be another one than last time.
    const bool bOpened = std::exchange(m_bOpenedAhead, false) && IsSameNode();
    if (!bOpened && !Open(strError))
        return false;
    if (!m_Lock.Take(m_nDescriptor, m_strNode, strError) || (!bOpened && !Identify(strError)))
    {
        Close();
        return false;
    }
    if (m_Lock.WasLeft())
        UnlockDoor();
    BeginHold();
    return true;
}

void DeviceDrive::Release()
{
    const std::lock_guard lock(m_Mutex);
    if (m_nHolders == 0 || --m_nHolders > 0)
        return;
    Close();
}

// For reading and writing if that is allowed, since the kernel lets SET CD SPEED and PREVENT ALLOW MEDIUM REMOVAL
// through on such a descriptor only.
bool DeviceDrive::Open(std::string& strError)
{
    Close();
    int nDescriptor = m_Calls.m_Open(m_strNode.c_str(), O_RDWR | OPEN_FLAGS);
    const bool bReadOnly = nDescriptor == -EACCES || nDescriptor == -EROFS || nDescriptor == -EPERM;
    if (bReadOnly)
        nDescriptor = m_Calls.m_Open(m_strNode.c_str(), O_RDONLY | OPEN_FLAGS);
    if (nDescriptor < 0)
    {
        strError = GetDeviceErrorText(m_strNode, -nDescriptor);
        return false;
    }
    m_nDescriptor = nDescriptor;
    if (!m_Calls.m_IsDevice(nDescriptor))
    {
        Close();
        strError = GetDeviceErrorText(m_strNode, ENOTTY);
        return false;
    }
    const std::lock_guard lock(m_FactsMutex);
    m_strWarnings = bReadOnly ? GetReadOnlyText(m_strNode, GetDeviceRights(m_strNode)) : std::string();
    return true;
}

// Gives back all that is taken. Nothing to do while the drive is closed.
void DeviceDrive::Close()
{
    if (m_nDescriptor >= 0)
    {
        if (m_bDoorLocked && !m_bGone)
            UnlockDoor();
        m_Lock.Give();
        close(m_nDescriptor);
    }
    m_nDescriptor = -1;
    m_bOpenedAhead = false;
    m_bDoorLocked = false;
    m_bAttention = false;
    m_bGone = false;
    const std::lock_guard lock(m_FactsMutex);
    m_strWarnings.clear();
}

// Whether the node is still that of the drive that is open. A drive that was unplugged and comes back has a new one.
bool DeviceDrive::IsSameNode() const
{
    struct stat opened;
    struct stat there;
    return !m_bGone && fstat(m_nDescriptor, &opened) == 0 && stat(m_strNode.c_str(), &there) == 0 &&
           opened.st_dev == there.st_dev && opened.st_ino == there.st_ino;
}

bool DeviceDrive::Identify(std::string& strError)
{
    DEVICE_IDENTITY identity;
    SENSE_DATA sense;
    m_nLastErrno = 0;
    const bool bAnswered = ReadIdentity([&](const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nBytes)
                                        { return Ask(pCDB, nCDBBytes, pData, nBytes, sense); },
                                        identity);
    const bool bOptical = bAnswered && identity.m_nQualifier == 0 && identity.m_nDeviceType == DEVICE_TYPE_OPTICAL;
    if (m_bGone)
        strError = GetDeviceErrorText(m_strNode, ENODEV);
    else if (!bAnswered && m_nLastErrno != 0)
        strError = GetDeviceErrorText(m_strNode, m_nLastErrno);
    else if (!bAnswered)
        strError = "The drive " + m_strNode + " does not answer (" + GetCodesText(sense.GetCodes()) +
                   "); check its cable, or switch it off and on.";
    else if (!bOptical)
        strError = m_strNode + " is no optical drive (device type " + std::to_string(identity.m_nDeviceType) +
                   "); choose one of those that 'rondel drives' lists.";
    if (m_bGone || !bOptical)
        return false;
    const std::lock_guard lock(m_FactsMutex);
    m_Identity = std::move(identity);
    return true;
}

bool DeviceDrive::Send(const DRIVE_COMMAND& command, SENSE_DATA& sense)
{
    const std::lock_guard lock(m_Mutex);
    const bool bGood = !TakeAttention(command, sense) && Transfer(command, sense);
    NoteRead(command, bGood, sense);
    if (bGood && command.m_pCDB[0] == CDB_PREVENT_ALLOW_MEDIUM_REMOVAL)
        m_bDoorLocked = (command.m_pCDB[4] & 1) != 0;
    return bGood;
}

bool DeviceDrive::Transfer(const DRIVE_COMMAND& command, SENSE_DATA& sense)
{
    if (m_nDescriptor < 0 || m_bGone)
        return FailCommand(command, SENSE_DRIVE_GONE, sense);
    int nErrno = 0;
    const bool bGood = SendBySG(m_Calls, m_nDescriptor, command, sense, nErrno);
    if (nErrno != 0)
        m_nLastErrno = nErrno;
    if (IsGoneErrno(nErrno))
    {
        m_bGone = true;
        m_bWentAway = m_nHolders > 0;
    }
    return bGood;
}

// A command of our own with data to come or none. The drive may have something to tell first.
bool DeviceDrive::Ask(const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes,
                      SENSE_DATA& sense)
{
    const int nRoom = nDataBytes;
    for (int nTries = 0;; ++nTries)
    {
        nDataBytes = nRoom;
        const DRIVE_TRANSFERTYPE eType = nRoom > 0 ? DRIVE_TRANSFER_IN : DRIVE_TRANSFER_NONE;
        if (Transfer({pCDB, nCDBBytes, pData, nDataBytes, eType, OWN_TIMEOUT_MS}, sense))
            return true;
        if (sense.GetCodes().m_nKey != SENSE_UNIT_ATTENTION || nTries == MAX_UNIT_ATTENTIONS)
            return false;
    }
}

void DeviceDrive::UnlockDoor()
{
    const unsigned char aryCDB[6] = {CDB_PREVENT_ALLOW_MEDIUM_REMOVAL};
    int nDataBytes = 0;
    SENSE_DATA sense;
    // A drive that does not do it has no say in it: the kernel unlocks the door when the node is closed.
    (void)Ask(aryCDB, sizeof aryCDB, nullptr, nDataBytes, sense);
    m_bDoorLocked = false;
}

bool DeviceDrive::IsReady()
{
    const unsigned char aryCDB[6] = {CDB_TEST_UNIT_READY};
    for (int nTries = 0; nTries <= MAX_UNIT_ATTENTIONS; ++nTries)
    {
        int nDataBytes = 0;
        SENSE_DATA sense;
        if (Transfer({aryCDB, sizeof aryCDB, nullptr, nDataBytes, DRIVE_TRANSFER_NONE, OWN_TIMEOUT_MS}, sense))
            return true;
        if (sense.GetCodes().m_nKey != SENSE_UNIT_ATTENTION)
            return false;
        m_bAttention = true;
        m_Attention = sense;
    }
    return false;
}

// Fails the command with the unit attention that it would have met, had nobody asked for the drive's state before. The
// commands that no unit attention holds up are let through (SPC-3, 6.4, 6.27).
bool DeviceDrive::TakeAttention(const DRIVE_COMMAND& command, SENSE_DATA& sense)
{
    if (!m_bAttention || command.m_pCDB == nullptr || command.m_nCDBBytes < 1)
        return false;
    if (command.m_pCDB[0] == CDB_INQUIRY || command.m_pCDB[0] == CDB_REQUEST_SENSE ||
        command.m_pCDB[0] == CDB_GET_EVENT_STATUS)
        return false;
    m_bAttention = false;
    (void)FailCommand(command, {}, sense);
    sense = m_Attention;
    return true;
}

void DeviceDrive::NoteRead(const DRIVE_COMMAND& command, bool bGood, const SENSE_DATA& sense)
{
    const std::lock_guard lock(m_FactsMutex);
    m_Unread.Note(command, bGood, sense.GetCodes());
}

void DeviceDrive::BeginHold()
{
    m_nHolders = 1;
    m_bWentAway = false;
    const std::lock_guard lock(m_FactsMutex);
    m_Unread.Clear();
    if (m_Lock.IsUnsupported())
        m_strWarnings += (m_strWarnings.empty() ? "" : "\n") + m_strNode +
                         " cannot be locked here; see to it that no other program uses the drive.";
}

std::string DeviceDrive::GetReadErrorText()
{
    if (m_bWentAway)
        return m_strNode + " went away while it was in use; check its cable and its power, then open it again.";
    const std::lock_guard lock(m_FactsMutex);
    return m_Unread.GetText(m_strNode);
}

std::string DeviceDrive::GetWarnings()
{
    const std::lock_guard lock(m_FactsMutex);
    return m_strWarnings;
}

DRIVE_DESCRIPTION DeviceDrive::GetDescription()
{
    const std::lock_guard lock(m_FactsMutex);
    return m_Identity.m_Description;
}

void DeviceDrive::AddUser(int) { ++m_nUsers; }

void DeviceDrive::RemoveUser(int)
{
    int nUsers = m_nUsers;
    while (nUsers > 0 && !m_nUsers.compare_exchange_weak(nUsers, nUsers - 1))
    {
    }
}

unsigned char DeviceDrive::GetStateA()
{
    const std::lock_guard lock(m_Mutex);
    std::string strError;
    const bool bForThis = m_nDescriptor < 0;
    // A drive that another program holds is not disturbed.
    if (bForThis && (!Open(strError) || !FindDeviceHolder(m_nDescriptor, m_strNode).empty()))
    {
        Close();
        return 0;
    }
    const bool bReady = IsReady();
    if (bForThis)
        Close();
    return bReady ? 1 : 0;
}

unsigned char DeviceDrive::GetStateB()
{
    struct stat status;
    return !m_bGone && stat(m_strNode.c_str(), &status) == 0 ? 1 : 0;
}

wchar_t* DeviceDrive::GetVendor() { return MakeSystemString(GetDescription().m_strVendor); }

wchar_t* DeviceDrive::GetModel() { return MakeSystemString(GetDescription().m_strModel); }

wchar_t* DeviceDrive::GetPackedCapabilities()
{
    const std::lock_guard lock(m_FactsMutex);
    return MakeSystemString(GetPackedText(m_Identity));
}
