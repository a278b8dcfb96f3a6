// How a FileReader comes by its descriptor, and what it says when it does not.

#include "FileReader.h"
#include "ReaderGuard.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace
{
constexpr mode_t PERMISSIONS = 0644;
constexpr int PIPE_RETRY_MS = 20;
// A pipe without another end must not hold up open(), and no terminal becomes the process's own. Programs that the host
// starts have no business with its files. Files themselves take no notice of O_NONBLOCK.
constexpr int COMMON_FLAGS = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

int OpenUninterrupted(const std::string& strPath, int nFlags)
{
    int nDescriptor;
    do
    {
        nDescriptor = open(strPath.c_str(), nFlags | COMMON_FLAGS, PERMISSIONS);
    } while (nDescriptor < 0 && errno == EINTR);
    return nDescriptor;
}

bool IsPipe(const std::string& strPath)
{
    struct stat status;
    return stat(strPath.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

// Errors that are gone with less access.
bool IsAboutAccess(int nError)
{
    return nError == EACCES || nError == EROFS || nError == EPERM || nError == ETXTBSY || nError == EISDIR;
}

const char* GetWayOut(int nError)
{
    switch (nError)
    {
    case ENOENT:
    case ENOTDIR:
        return "Check the name and that its folder exists.";
    case EACCES:
    case EPERM:
        return "Check its permissions and those of its folder.";
    case EISDIR:
        return "Name a file in it.";
    case EROFS:
        return "Choose another place for it.";
    case ENOSPC:
    case EDQUOT:
        return "Make room, or choose another place for it.";
    case EBADF:
        return "It was opened for the other direction; open it again without READ_ONLY and check its permissions.";
    default:
        return "Check the disk that it is on.";
    }
}
} // namespace

bool FileReader::Refuse(const char* pWhat, int nError)
{
    Guarded(
        [&]
        {
            std::string strShown = m_strPath;
            std::ranges::replace(strShown, '\0', '?'); // the sentence would end there
            m_strError = std::string("Cannot ") + pWhat + " '" + strShown +
                         "': " + std::generic_category().message(nError) + ". " + GetWayOut(nError);
        });
    return false;
}

bool FileReader::OpenAs(bool bCreate)
{
    const std::lock_guard lock(m_Operation);
    CloseDescriptor();
    m_bClosing = false;
    m_strError.clear();
    const char* pWhat = bCreate ? "create" : "open";
    // A name with a null byte, which an escape can hold, would open another file.
    if (m_strPath.empty() || m_strPath.find('\0') != std::string::npos)
        return Refuse(pWhat, ENOENT);
    if (bCreate && m_bReadOnly)
        return Refuse(pWhat, EBADF);
    const int nDescriptor = OpenDescriptor(bCreate);
    if (nDescriptor < 0 || !Adopt(nDescriptor))
        return Refuse(pWhat, errno);
    return m_bOpen = true;
}

int FileReader::OpenDescriptor(bool bCreate)
{
    // A pipe that this process could write to itself would never come to its end.
    if (IsPipe(m_strPath))
        return bCreate ? OpenPipeForWriting() : OpenUninterrupted(m_strPath, O_RDONLY);
    const int nCreation = bCreate ? O_CREAT | O_TRUNC : 0;
    if (!m_bReadOnly)
    {
        const int nDescriptor = OpenUninterrupted(m_strPath, O_RDWR | nCreation);
        if (nDescriptor >= 0 || !IsAboutAccess(errno))
            return nDescriptor;
    }
    return OpenUninterrupted(m_strPath, (bCreate ? O_WRONLY : O_RDONLY) | nCreation);
}

// Waits until somebody reads the pipe, or Close comes.
int FileReader::OpenPipeForWriting()
{
    if (!m_Wake.Make())
        return -1;
    int nDescriptor = OpenUninterrupted(m_strPath, O_WRONLY);
    while (nDescriptor < 0 && errno == ENXIO && !m_bClosing)
    {
        (void)m_Wake.Wait(-1, 0, PIPE_RETRY_MS);
        nDescriptor = OpenUninterrupted(m_strPath, O_WRONLY);
    }
    return nDescriptor;
}

// Takes the descriptor over, or closes it and leaves the reason in errno.
bool FileReader::Adopt(int nDescriptor)
{
    struct stat status;
    int nError = fstat(nDescriptor, &status) != 0 ? errno : 0;
    if (nError == 0 && S_ISDIR(status.st_mode))
        nError = EISDIR;
    if (nError == 0)
    {
        m_bStream = !S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode);
        // A Wake that came since Make was called for this Open must not be forgotten by another.
        if (m_bStream && !m_bClosing && !m_Wake.Make())
            nError = errno;
    }
    if (nError != 0)
    {
        close(nDescriptor);
        errno = nError;
        return false;
    }
    m_nDescriptor = nDescriptor;
    return true;
}

long long FileReader::GetLength()
{
    const std::lock_guard lock(m_Operation);
    return GetIsOpen() ? GetLengthOfOpenFile() : -1;
}

long long FileReader::GetLengthOfOpenFile() const
{
    struct stat status;
    if (m_bStream || fstat(m_nDescriptor, &status) != 0)
        return -1;
    return S_ISBLK(status.st_mode) ? lseek(m_nDescriptor, 0, SEEK_END) : status.st_size;
}
