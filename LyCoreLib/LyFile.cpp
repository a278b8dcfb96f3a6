#include "LyFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace
{
int GetOpenFlags(unsigned int nAccess, CreationModes eMode)
{
    int nFlags = O_RDONLY;
    if ((nAccess & LY_FILE_READ_WRITE) == LY_FILE_READ_WRITE)
        nFlags = O_RDWR;
    else if (nAccess & LY_FILE_WRITE)
        nFlags = O_WRONLY;
    switch (eMode)
    {
    case LY_FILE_CREATE_ALWAYS:
        return nFlags | O_CREAT | O_TRUNC;
    case LY_FILE_CREATE_NEW:
        return nFlags | O_CREAT | O_EXCL;
    case LY_FILE_OPEN_OR_CREATE:
        return nFlags | O_CREAT;
    case LY_FILE_OPEN_EXISTING:
        break;
    case LY_FILE_TRUNCATE_EXISTING:
        return nFlags | O_TRUNC;
    }
    return nFlags;
}

int OpenDescriptor(const LyFilename& filename, int nFlags)
{
    constexpr mode_t PERMISSIONS = 0644;
    LyStringUTF8 name(filename.GetFilenameForUseWithOperatingSystem());
    int nDescriptor;
    do
    {
        // A program that the process starts has no business with its files.
        nDescriptor = open(name, nFlags | O_CLOEXEC, PERMISSIONS);
    } while (nDescriptor == -1 && errno == EINTR);
    return nDescriptor;
}

// Moves nBytes through read or write, however often it must be called: a signal or a full pipe may cut each call
// short. False after an error; nDone has what went before it.
template <class CALL>
bool Transfer(CALL call, unsigned int nBytes, unsigned int& nDone)
{
    while (nDone < nBytes)
    {
        ssize_t nMoved = call(nDone, static_cast<size_t>(nBytes - nDone));
        if (nMoved == 0)
            return true; // the end of the file
        if (nMoved > 0)
            nDone += static_cast<unsigned int>(nMoved);
        else if (errno != EINTR)
            return false;
    }
    return true;
}
} // namespace

LyFile::LyFile(const LyFilename& filename, unsigned int nAccess, unsigned int nShare, CreationModes eMode)
    : m_Filename(filename), m_nAccess(nAccess), m_nShare(nShare), m_eCreationMode(eMode)
{
}

LyFile::~LyFile() { Close(); }

bool LyFile::Open(const LyFilename& filename, unsigned int nAccess, unsigned int nShare, CreationModes eMode)
{
    m_Filename = filename;
    m_nAccess = nAccess;
    m_nShare = nShare;
    m_eCreationMode = eMode;
    return Open();
}

bool LyFile::Open()
{
    Close();
    m_nDescriptor = OpenDescriptor(m_Filename, GetOpenFlags(m_nAccess, m_eCreationMode));
    if (m_nDescriptor == -1)
        return false;
    m_bOpen = true;
    if ((m_nAccess & LY_FILE_WRITE) && !(m_nShare & LY_FILE_SHARE_WRITE) && !LockForWriting())
        Close();
    return m_bOpen;
}

// A write lock on the whole file, for this process. False if another one has it.
bool LyFile::LockForWriting()
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 0; // to the end, wherever it will be
    if (fcntl(m_nDescriptor, F_SETLK, &lock) != -1)
        return true;
    // Deliberate: a file system that cannot lock must not stop a save.
    const int nError = errno;
    return nError == ENOTSUP || nError == ENOLCK || nError == EOPNOTSUPP;
}

void LyFile::Close()
{
    if (m_bOpen)
        close(m_nDescriptor);
    m_bOpen = false;
    m_nDescriptor = -1;
}

long long LyFile::SetPosition(long long nOffset, unsigned int nOrigin)
{
    constexpr int WHENCE[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (!m_bOpen || nOrigin >= sizeof WHENCE / sizeof WHENCE[0])
        return -1;
    return lseek(m_nDescriptor, nOffset, WHENCE[nOrigin]);
}

long long LyFile::GetLength() const
{
    struct stat status;
    if (m_bOpen)
        return fstat(m_nDescriptor, &status) == 0 ? status.st_size : -1;
    return LyFileInfo(m_Filename).GetFileSize();
}

bool LyFile::Write(const void* pData, unsigned int nBytes)
{
    unsigned int nWritten = 0;
    return Write(pData, nBytes, nWritten) && nWritten == nBytes;
}

bool LyFile::Write(const void* pData, unsigned int nBytes, unsigned int& nWritten)
{
    nWritten = 0;
    if (!m_bOpen || (pData == nullptr && nBytes > 0))
        return false;
    const char* p = static_cast<const char*>(pData);
    return Transfer([=, this](unsigned int nAt, size_t n) { return write(m_nDescriptor, p + nAt, n); }, nBytes,
                    nWritten);
}

bool LyFile::Read(void* pData, unsigned int nBytes, unsigned int& nRead)
{
    nRead = 0;
    if (!m_bOpen || (pData == nullptr && nBytes > 0))
        return false;
    char* p = static_cast<char*>(pData);
    return Transfer([=, this](unsigned int nAt, size_t n) { return read(m_nDescriptor, p + nAt, n); }, nBytes, nRead);
}
