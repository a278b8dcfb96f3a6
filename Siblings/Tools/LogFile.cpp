#include "LogFile.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace
{
constexpr mode_t FILE_MODE = 0644; // what the user's mask leaves of it
} // namespace

LogFile::LogFile(std::string strPath, long long nMaxBytes, int nKeptFiles)
    : m_strPath(std::move(strPath)), m_nMaxBytes(nMaxBytes), m_nKeptFiles(std::max(nKeptFiles, 2))
{
}

LogFile::~LogFile() { Close(); }

bool LogFile::Append(const char* pText, size_t nBytes)
{
    struct stat status = {};
    if (!IsCurrent(status))
    {
        Close();
        if (!Open() || fstat(m_nFile, &status) != 0)
            return false;
    }
    if (IsFull(status, nBytes) && !TurnOver(nBytes))
        return false;
    return Write(m_nFile, pText, nBytes);
}

bool LogFile::Write(int nFile, const char* pText, size_t nBytes)
{
    while (nBytes > 0)
    {
        const ssize_t nWritten = write(nFile, pText, nBytes);
        if (nWritten == 0)
            errno = EIO;
        if (nWritten == 0 || (nWritten < 0 && errno != EINTR))
            return false;
        if (nWritten > 0)
        {
            pText += nWritten;
            nBytes -= static_cast<size_t>(nWritten);
        }
    }
    return true;
}

bool LogFile::Open()
{
    m_nFile = open(m_strPath.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, FILE_MODE);
    struct stat status = {};
    if (m_nFile < 0 || fstat(m_nFile, &status) != 0)
        return false;
    m_nDevice = status.st_dev;
    m_nNode = status.st_ino;
    return true;
}

void LogFile::Close()
{
    if (m_nFile >= 0)
        close(m_nFile);
    m_nFile = -1;
}

bool LogFile::IsCurrent(struct stat& status) const
{
    return m_nFile >= 0 && stat(m_strPath.c_str(), &status) == 0 && status.st_dev == m_nDevice &&
           status.st_ino == m_nNode;
}

bool LogFile::IsFull(const struct stat& status, size_t nMoreBytes) const
{
    return S_ISREG(status.st_mode) && status.st_size > 0 &&
           status.st_size + static_cast<long long>(nMoreBytes) > m_nMaxBytes;
}

// False if there is no file to write to afterwards. A file that can't be renamed, or that another process is just
// renaming, goes on growing: a line is worth more than the limit.
bool LogFile::TurnOver(size_t nMoreBytes)
{
    // What a link names is somebody else's to move: it may be the output of the process.
    struct stat status = {};
    if (lstat(m_strPath.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return true;
    if (flock(m_nFile, LOCK_EX | LOCK_NB) != 0)
        return true;
    // The lock belongs to the file, not to its name. Somebody else may have been faster.
    if (IsCurrent(status) && IsFull(status, nMoreBytes))
        for (int nAge = m_nKeptFiles - 1; nAge > 0; --nAge)
            (void)rename(GetOldName(nAge - 1).c_str(), GetOldName(nAge).c_str()); // not every age is there yet
    if (IsCurrent(status))
        return flock(m_nFile, LOCK_UN) == 0;
    Close(); // and with it the lock
    return Open();
}

std::string LogFile::GetOldName(int nAge) const
{
    return nAge == 0 ? m_strPath : m_strPath + "." + std::to_string(nAge);
}
