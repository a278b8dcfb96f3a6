#include "CRC32.h"
#include "HostError.h"
#include "LogCheck.h"
#include "SecureHash.h"
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr size_t BLOCK_BYTES = 1 << 16;

class Descriptor
{
public:
    explicit Descriptor(int n) : m_n(n) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_n; }
    bool GetIsOpen() const { return m_n >= 0; }
    void Set(int n)
    {
        Close();
        m_n = n;
    }

private:
    void Close() const
    {
        if (m_n >= 0)
            (void)close(m_n);
    }

    int m_n;
};

LOG_FILE_VERDICT Blame(int nError)
{
    if (nError == ENOENT || nError == ENOTDIR)
        return {LOG_FILE_MISSING, "it is not there"};
    return {LOG_FILE_UNREADABLE, std::string("it cannot be read (") + std::strerror(nError) + ")"};
}

// No folder above, no place from the root, nothing that means another name than it says.
bool IsInside(std::string_view name)
{
    if (name.empty() || name.find('\0') != std::string_view::npos)
        return false;
    while (true)
    {
        const size_t nEnd = std::min(name.find('/'), name.size());
        const std::string_view part = name.substr(0, nEnd);
        if (part.empty() || part == "." || part == "..")
            return false;
        if (nEnd == name.size())
            return true;
        name.remove_prefix(nEnd + 1);
    }
}

// The name behind all links; empty with errno.
std::string GetRealPath(const std::string& strPath)
{
    const std::unique_ptr<char, decltype(&std::free)> pPath(realpath(strPath.c_str(), nullptr), &std::free);
    return pPath != nullptr ? pPath.get() : "";
}

bool IsPlainFile(int nFolder, const char* pName)
{
    struct stat status
    {
    };
    return fstatat(nFolder, pName, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode);
}

// Opens a plain file below a folder, following no link at all: the names are those behind the links already, and a link
// that somebody has put there since leads nowhere. What is no plain file is not opened, since opening alone may do
// something to a device, or wait for a pipe. -1 with errno; 0 there means no plain file.
int OpenBelow(const std::string& strFolder, const std::string& strName)
{
    Descriptor folder(open(strFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    size_t nStart = 0;
    for (size_t nEnd; folder.GetIsOpen() && (nEnd = strName.find('/', nStart)) != std::string::npos; nStart = nEnd + 1)
        folder.Set(openat(folder.Get(), strName.substr(nStart, nEnd - nStart).c_str(),
                          O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.GetIsOpen())
        return -1;
    const char* pName = strName.c_str() + nStart;
    errno = 0;
    if (!IsPlainFile(folder.Get(), pName))
        return -1;
    return openat(folder.Get(), pName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

// Reads to the end, or to one block behind nMost. -1 with errno.
template <class TAKE>
long long ReadAll(int nDescriptor, long long nMost, TAKE Take)
{
    const std::unique_ptr<char[]> pBlock = std::make_unique_for_overwrite<char[]>(BLOCK_BYTES);
    long long nTotal = 0;
    while (nTotal <= nMost)
    {
        const ssize_t nGot = read(nDescriptor, pBlock.get(), BLOCK_BYTES);
        if (nGot == 0)
            break;
        if (nGot < 0 && errno != EINTR)
            return -1;
        if (nGot < 0)
            continue;
        Take(pBlock.get(), static_cast<size_t>(nGot));
        nTotal += nGot;
    }
    return nTotal;
}

// The sums that the log has of a file, made again.
class FileSums
{
public:
    explicit FileSums(const LOG_FILE& file) : m_file(file) {}

    void Add(const char* p, size_t nBytes)
    {
        if (!m_file.strSHA256.empty())
            m_hash.Add(p, nBytes);
        if (!m_file.strCRC32.empty())
            m_nRegister = AddToCRC32Register(m_nRegister, p, nBytes);
    }
    std::string Compare() // what is another, in words; empty if nothing
    {
        const SHA256Hash::DIGEST digest = m_hash.Finish();
        if (!m_file.strSHA256.empty() && MakeHexText(digest.data(), digest.size()) != m_file.strSHA256)
            return "its SHA-256 is another";
        if (!m_file.strCRC32.empty() && MakeCRC32Text(~m_nRegister) != m_file.strCRC32)
            return "its CRC-32 is another";
        return {};
    }

private:
    const LOG_FILE& m_file;
    SHA256Hash m_hash;
    uint32_t m_nRegister = CRC32_START;
};

LOG_FILE_VERDICT Compare(int nDescriptor, const LOG_FILE& file)
{
    struct stat status
    {
    };
    if (fstat(nDescriptor, &status) != 0)
        return Blame(errno);
    if (!S_ISREG(status.st_mode))
        return {LOG_FILE_UNREADABLE, "it is no plain file"};
    long long nBytes = status.st_size;
    FileSums sums(file);
    if (nBytes == file.nBytes)
        nBytes = ReadAll(nDescriptor, nBytes, [&sums](const char* p, size_t n) { sums.Add(p, n); });
    if (nBytes < 0)
        return Blame(errno);
    if (nBytes != file.nBytes)
        return {LOG_FILE_CHANGED,
                "it has " + std::to_string(nBytes) + " bytes instead of " + std::to_string(file.nBytes)};
    const std::string strDifference = sums.Compare();
    return {strDifference.empty() ? LOG_FILE_RIGHT : LOG_FILE_CHANGED, strDifference};
}
} // namespace

LOG_FILE_VERDICT CheckLogFile(const std::string& strFolder, const LOG_FILE& file)
{
    if (!file.strError.empty())
        return {LOG_FILE_NOT_MADE, file.strError};
    if (!IsInside(file.strName))
        return {LOG_FILE_OUTSIDE, "its name leads out of the log's folder, and it is not looked at"};
    std::string strRoot = GetRealPath(strFolder);
    if (strRoot.empty())
        return Blame(errno);
    const std::string strReal = GetRealPath(strRoot + "/" + file.strName);
    if (strReal.empty())
        return Blame(errno);
    if (!strRoot.ends_with('/'))
        strRoot += '/';
    if (!strReal.starts_with(strRoot))
        return {LOG_FILE_OUTSIDE, "a link leads out of the log's folder, and it is not looked at"};
    const Descriptor descriptor(OpenBelow(strRoot, strReal.substr(strRoot.size())));
    if (!descriptor.GetIsOpen())
        return errno != 0 ? Blame(errno) : LOG_FILE_VERDICT{LOG_FILE_UNREADABLE, "it is no plain file"};
    return Compare(descriptor.Get(), file);
}

std::string LoadLog(const std::string& strPath)
{
    const auto Fail = [&strPath](const std::string& strWhy)
    { throw HostError(strPath + " cannot be checked (" + strWhy + "); name the log that a rip has written."); };
    const Descriptor descriptor(open(strPath.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status
    {
    };
    if (!descriptor.GetIsOpen() || fstat(descriptor.Get(), &status) != 0)
        Fail(std::strerror(errno));
    if (!S_ISREG(status.st_mode))
        Fail("it is no plain file");
    std::string strLog;
    constexpr long long MOST = LOG_MAX_BYTES;
    const long long nBytes =
        ReadAll(descriptor.Get(), MOST, [&strLog](const char* p, size_t n) { strLog.append(p, n); });
    if (nBytes < 0)
        Fail(std::strerror(errno));
    if (nBytes > MOST)
        Fail("it is too large for a log");
    return strLog;
}
