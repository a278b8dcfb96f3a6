#include "OptionAside.h"
#include "OptionDatabase.h"
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int LOCK_ATTEMPTS = 50;
constexpr useconds_t LOCK_PAUSE_US = 100 * 1000;
constexpr int MOST_KEPT = 1000;

// Holds the folder against other processes that want to keep a file aside, for the length of a scope.
class FolderLock
{
public:
    explicit FolderLock(const std::string& strFolder)
        : m_nFolder(open(strFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        for (int nAttempt = 0; m_nFolder >= 0 && nAttempt < LOCK_ATTEMPTS; nAttempt++)
        {
            // A file system that knows no such locks is not a reason to leave the broken file where it is.
            m_bHeld = flock(m_nFolder, LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR);
            if (m_bHeld)
                return;
            (void)usleep(LOCK_PAUSE_US);
        }
    }
    ~FolderLock()
    {
        if (m_nFolder >= 0)
            (void)close(m_nFolder); // which ends the lock
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    bool GetIsHeld() const { return m_bHeld; }

private:
    int m_nFolder;
    bool m_bHeld = false;
};

bool IsThere(const std::string& strFile)
{
    struct stat status;
    return lstat(strFile.c_str(), &status) == 0;
}

std::string FindFreeName(const std::string& strFile)
{
    for (int nNumber = 1; nNumber <= MOST_KEPT; nNumber++)
    {
        std::string strName = strFile + ".damaged-" + std::to_string(nNumber);
        if (!IsThere(strName))
            return strName;
    }
    return {};
}
} // namespace

bool KeepOptionsAside(const std::string& strFile, std::string& strKeptAs)
{
    strKeptAs.clear();
    const FolderLock lock(strFile.substr(0, strFile.rfind('/') + 1));
    if (!lock.GetIsHeld())
        return false;
    if (OptionDatabase(strFile).Open(false) != OPTION_RESULT::Damaged)
        return true;
    const std::string strName = FindFreeName(strFile);
    if (strName.empty())
        return false;
    // The journal goes first: left behind, it would be taken for one of the fresh file.
    for (const char* pSuffix : {"-journal", "-wal", "-shm"})
        (void)std::rename((strFile + pSuffix).c_str(), (strName + pSuffix).c_str());
    if (std::rename(strFile.c_str(), strName.c_str()) != 0)
        return errno == ENOENT;
    strKeptAs = strName;
    return true;
}
