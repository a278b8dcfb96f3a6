#include "DeviceLock.h"
#include "DeviceNote.h"
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>
#include <unistd.h>

namespace
{
constexpr auto PATIENCE = std::chrono::seconds(2); // with those who only look
constexpr auto PAUSE = std::chrono::milliseconds(20);

struct LOCK_HOLDER
{
    int m_nPid = 0; // 0: cannot be told
    bool m_bShared = false;
};

// One line of /proc/locks: "1: FLOCK  ADVISORY  WRITE 1234 00:06:345 0 EOF". Those who wait have "->" behind the
// number.
bool ReadLockLine(const std::string& strLine, const struct stat& node, LOCK_HOLDER& holder)
{
    char szMode[8];
    int nPid = 0;
    unsigned int nMajor = 0;
    unsigned int nMinor = 0;
    unsigned long nInode = 0;
    if (std::sscanf(strLine.c_str(), "%*d: FLOCK %*s %7s %d %x:%x:%lu", szMode, &nPid, &nMajor, &nMinor, &nInode) != 5)
        return false;
    if (makedev(nMajor, nMinor) != node.st_dev || nInode != node.st_ino)
        return false;
    holder = {nPid, std::string(szMode) == "READ"};
    return true;
}

bool FindHolder(const struct stat& node, LOCK_HOLDER& holder)
{
    std::ifstream locks("/proc/locks");
    for (std::string strLine; std::getline(locks, strLine);)
        if (ReadLockLine(strLine, node, holder))
            return true;
    return false;
}

std::string GetProgramName(int nPid)
{
    std::ifstream comm("/proc/" + std::to_string(nPid) + "/comm");
    std::string strName;
    std::getline(comm, strName);
    return GetPrintable(strName);
}

std::string GetRefusal(const std::string& strNode, const struct stat& node)
{
    LOCK_HOLDER holder;
    const DEVICE_NOTE note = DeviceNotes().Read(GetNoteName(node));
    const bool bFound = FindHolder(node, holder) && holder.m_nPid > 0;
    const int nPid = bFound ? holder.m_nPid : note.m_nPid;
    std::string strName = nPid == note.m_nPid ? note.m_strProgram : std::string();
    if (strName.empty() && nPid > 0)
        strName = GetProgramName(nPid);
    if (strName.empty())
        strName = "another program";
    return strNode + " is held by " + strName + (nPid > 0 ? " (process " + std::to_string(nPid) + ")" : "") +
           "; stop it or choose another drive.";
}

// Whether the one who has the lock is soon through with it: a shared lock only looks, and one that is not in the list
// has just gone.
bool IsWorthWaiting(const struct stat& node)
{
    LOCK_HOLDER holder;
    if (FindHolder(node, holder))
        return holder.m_bShared;
    return DeviceNotes().Read(GetNoteName(node)).m_nPid == 0;
}

// 0, or the errno. EWOULDBLOCK: somebody has it.
int LockPatiently(int nDescriptor, const struct stat& node)
{
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    for (;;)
    {
        if (flock(nDescriptor, LOCK_EX | LOCK_NB) == 0)
            return 0;
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK)
            return errno;
        if (std::chrono::steady_clock::now() >= deadline || !IsWorthWaiting(node))
            return EWOULDBLOCK;
        std::this_thread::sleep_for(PAUSE);
    }
}
} // namespace

bool DeviceLock::Take(int nDescriptor, const std::string& strNode, std::string& strError)
{
    Give();
    struct stat node = {};
    (void)fstat(nDescriptor, &node); // what is open can be asked
    const int nErrno = LockPatiently(nDescriptor, node);
    if (nErrno == EWOULDBLOCK)
    {
        strError = GetRefusal(strNode, node);
        return false;
    }
    m_nDescriptor = nDescriptor;
    m_bUnsupported = nErrno != 0;
    m_strNote = GetNoteName(node);
    const DeviceNotes notes;
    m_bLeft = !m_bUnsupported && notes.Read(m_strNote).m_nPid != 0;
    if (!m_bUnsupported)
        notes.Write(m_strNote);
    return true;
}

void DeviceLock::Give()
{
    if (m_nDescriptor < 0)
        return;
    // The note first: behind the lock's end it may be the next holder's.
    if (!m_bUnsupported)
        DeviceNotes().Remove(m_strNote);
    // A child process may have a copy of the descriptor, so closing it is not enough.
    (void)flock(m_nDescriptor, LOCK_UN);
    m_nDescriptor = -1;
    m_bLeft = false;
    m_bUnsupported = false;
}

std::string FindDeviceHolder(int nDescriptor, const std::string& strNode)
{
    // A shared lock for a moment disturbs nobody who looks, and whoever takes the drive just then waits for it.
    while (flock(nDescriptor, LOCK_SH | LOCK_NB) != 0)
    {
        if (errno == EINTR)
            continue;
        struct stat node = {};
        if (errno != EWOULDBLOCK || fstat(nDescriptor, &node) != 0)
            return {};
        return GetRefusal(strNode, node);
    }
    (void)flock(nDescriptor, LOCK_UN);
    return {};
}

std::string FindDeviceHolder(const std::string& strNode)
{
    const int nDescriptor = open(strNode.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (nDescriptor < 0)
        return {};
    std::string strHolder = FindDeviceHolder(nDescriptor, strNode);
    close(nDescriptor);
    return strHolder;
}
