#include "DeviceNote.h"
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr size_t MAX_NOTE_BYTES = 256;
constexpr size_t MAX_NAME_CHARACTERS = 64;
constexpr mode_t FOLDER_MODE = 0700;
constexpr mode_t NOTE_MODE = 0600;

std::string GetFolderName()
{
    const char* pRuntime = std::getenv("XDG_RUNTIME_DIR");
    struct stat status;
    // With another user's rights, as under sudo, that user's folder is left alone.
    if (pRuntime != nullptr && pRuntime[0] == '/' && stat(pRuntime, &status) == 0 && status.st_uid == geteuid())
        return std::string(pRuntime) + "/rondel";
    return "/tmp/rondel-" + std::to_string(geteuid());
}

bool IsOwnFolder(int nFolder)
{
    struct stat status;
    return fstat(nFolder, &status) == 0 && status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool WriteAll(int nFile, const std::string& strText)
{
    size_t nDone = 0;
    while (nDone < strText.size())
    {
        const ssize_t nWritten = write(nFile, strText.data() + nDone, strText.size() - nDone);
        if (nWritten < 0 && errno == EINTR)
            continue;
        if (nWritten <= 0)
            return false;
        nDone += static_cast<size_t>(nWritten);
    }
    return true;
}
} // namespace

DeviceNotes::DeviceNotes()
{
    const std::string strFolder = GetFolderName();
    (void)mkdir(strFolder.c_str(), FOLDER_MODE); // it may be there
    m_nFolder = open(strFolder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (m_nFolder >= 0 && !IsOwnFolder(m_nFolder))
    {
        close(m_nFolder);
        m_nFolder = -1;
    }
}

DeviceNotes::~DeviceNotes()
{
    if (m_nFolder >= 0)
        close(m_nFolder);
}

DEVICE_NOTE DeviceNotes::Read(const std::string& strName) const
{
    if (m_nFolder < 0)
        return {};
    const int nFile = openat(m_nFolder, strName.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (nFile < 0)
        return {};
    char szContent[MAX_NOTE_BYTES];
    const ssize_t nRead = read(nFile, szContent, sizeof szContent);
    close(nFile);
    return nRead > 0 ? ReadDeviceNote(std::string(szContent, static_cast<size_t>(nRead))) : DEVICE_NOTE();
}

void DeviceNotes::Write(const std::string& strName) const
{
    if (m_nFolder < 0)
        return;
    // Only who has the lock writes, so the other name is nobody else's.
    const std::string strNew = strName + ".new";
    (void)unlinkat(m_nFolder, strNew.c_str(), 0);
    const int nFile =
        openat(m_nFolder, strNew.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, NOTE_MODE);
    if (nFile < 0)
        return;
    const std::string strLine = std::to_string(getpid()) + " " + GetPrintable(program_invocation_short_name) + "\n";
    const bool bWritten = WriteAll(nFile, strLine);
    close(nFile);
    if (!bWritten || renameat(m_nFolder, strNew.c_str(), m_nFolder, strName.c_str()) != 0)
        (void)unlinkat(m_nFolder, strNew.c_str(), 0);
}

void DeviceNotes::Remove(const std::string& strName) const
{
    if (m_nFolder >= 0)
        (void)unlinkat(m_nFolder, strName.c_str(), 0);
}

std::string GetNoteName(const struct stat& node)
{
    char szName[64];
    std::snprintf(szName, sizeof szName, "drive-%llx-%llx", static_cast<unsigned long long>(node.st_dev),
                  static_cast<unsigned long long>(node.st_ino));
    return szName;
}

std::string GetPrintable(const std::string& strText)
{
    std::string strPrintable;
    for (const char c : strText)
        if (c >= ' ' && c <= '~' && strPrintable.size() < MAX_NAME_CHARACTERS)
            strPrintable += c;
    return strPrintable;
}

DEVICE_NOTE ReadDeviceNote(const std::string& strContent)
{
    const size_t nEnd = strContent.find('\n');
    DEVICE_NOTE note;
    if (nEnd == std::string::npos)
        return note;
    const auto [pEnd, error] = std::from_chars(strContent.data(), strContent.data() + nEnd, note.m_nPid);
    const size_t nDigits = static_cast<size_t>(pEnd - strContent.data());
    if (error != std::errc() || note.m_nPid <= 0 || strContent[nDigits] != ' ')
        return {};
    note.m_strProgram = GetPrintable(strContent.substr(nDigits + 1, nEnd - nDigits - 1));
    return note;
}
