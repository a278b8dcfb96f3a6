#include "PartialFile.h"
#include "HostError.h"
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int SLOTS = 4; // files in the making at a time
constexpr int MAX_TRIES = 100;
constexpr int MAX_LINKS = 40; // as the kernel has it
constexpr int ENDING_SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};

// The names stand where a signal handler may read them at any time.
struct SLOT
{
    std::atomic<bool> bUsed{false}; // the name is whole, and its file is to go
    char szPath[PATH_MAX] = {};
};
SLOT s_arySlots[SLOTS];

void RemoveAll(int nSignal)
{
    for (const SLOT& slot : s_arySlots)
        if (slot.bUsed)
            (void)unlink(slot.szPath);
    (void)std::signal(nSignal, SIG_DFL);
    (void)std::raise(nSignal); // comes as soon as this handler is left
}

// Only signals that would end the program: one that is ignored (by nohup) or handled by others stays so.
void CatchSignals()
{
    for (const int nSignal : ENDING_SIGNALS)
    {
        struct sigaction action = {};
        if (sigaction(nSignal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
            continue;
        action.sa_handler = RemoveAll;
        (void)sigaction(nSignal, &action, nullptr);
    }
}

int FindFreeSlot()
{
    for (int nSlot = 0; nSlot < SLOTS; ++nSlot)
        if (!s_arySlots[nSlot].bUsed)
            return nSlot;
    return -1;
}

void Use(SLOT& slot, const std::string& strName)
{
    strName.copy(slot.szPath, strName.size());
    slot.szPath[strName.size()] = '\0';
    slot.bUsed = true;
}

void RemoveAndFree(SLOT& slot)
{
    (void)unlink(slot.szPath);
    slot.bUsed = false;
}
} // namespace

PartialFile::PartialFile(const std::string& strPath) : m_strPath(strPath)
{
    CatchSignals();
    if (!Create())
        m_nSlot = -1;
}

bool PartialFile::Create()
{
    m_nSlot = FindFreeSlot();
    if (m_nSlot < 0)
    {
        errno = EMFILE;
        return false;
    }
    SLOT& slot = s_arySlots[m_nSlot];
    for (int nTry = 0; nTry < MAX_TRIES; ++nTry)
    {
        const std::string strName = m_strPath + ".part" + (nTry == 0 ? std::string() : std::to_string(nTry));
        if (strName.size() >= sizeof slot.szPath)
        {
            errno = ENAMETOOLONG;
            return false;
        }
        // What somebody else keeps or writes under such a name is not touched.
        m_nDescriptor = open(strName.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_nDescriptor < 0 && errno == EEXIST)
            continue;
        if (m_nDescriptor < 0)
            return false;
        Use(slot, strName);
        return true;
    }
    return false;
}

PartialFile::~PartialFile()
{
    if (m_nDescriptor >= 0)
        close(m_nDescriptor);
    if (m_nSlot >= 0)
        RemoveAndFree(s_arySlots[m_nSlot]);
}

std::string PartialFile::GetWorkingPath() const { return m_nSlot >= 0 ? s_arySlots[m_nSlot].szPath : ""; }

std::string PartialFile::GetPartialPath() const { return m_nSlot < 0 ? std::string() : s_arySlots[m_nSlot].szPath; }

int PartialFile::TakeDescriptor()
{
    const int nDescriptor = m_nDescriptor;
    m_nDescriptor = -1;
    return nDescriptor;
}

bool PartialFile::Finish()
{
    if (m_nSlot < 0 || std::rename(s_arySlots[m_nSlot].szPath, m_strPath.c_str()) != 0)
        return false;
    s_arySlots[m_nSlot].bUsed = false;
    m_nSlot = -1;
    return true;
}

PassingName::PassingName(const std::string& strPath)
{
    CatchSignals();
    const int nSlot = FindFreeSlot();
    if (nSlot < 0 || strPath.size() >= sizeof s_arySlots[nSlot].szPath)
        return;
    Use(s_arySlots[nSlot], strPath);
    m_nSlot = nSlot;
}

PassingName::~PassingName()
{
    if (m_nSlot >= 0)
        RemoveAndFree(s_arySlots[m_nSlot]);
}

void RequireWritable(const std::string& strPath, const std::string& strName)
{
    constexpr mode_t ANY_WRITE = S_IWUSR | S_IWGRP | S_IWOTH;
    struct stat status = {};
    if (stat(strPath.c_str(), &status) != 0)
        return; // whoever opens it tells why it cannot be, or knows it under another form of its name
    if ((status.st_mode & ANY_WRITE) == 0 || access(strPath.c_str(), W_OK) != 0)
        throw HostError(strName + " is read-only; allow writing to it with chmod first.");
}

OUTPUT_PLACE FindOutputPlace(const std::string& strPath)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(strPath, error);
    if (std::filesystem::is_directory(status))
        throw HostError(strPath + " is a folder; name a file in it.");
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        return {strPath, false};
    std::filesystem::path target = strPath;
    for (int nLink = 0; nLink < MAX_LINKS && std::filesystem::is_symlink(target, error); ++nLink)
    {
        // Also where it leads to a file that is yet to come. An absolute path takes the place of what is ahead of it.
        const std::filesystem::path next = std::filesystem::read_symlink(target, error);
        if (error)
            break;
        target = target.parent_path() / next;
    }
    return {target.string(), true};
}
