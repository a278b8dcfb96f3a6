#include "EncoderOutput.h"
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace
{
constexpr mode_t FILE_MODE = 0666; // less the umask
constexpr int MAX_NAMES = 16;      // each is one of 2^64
constexpr size_t MAX_SUFFIX = 16;

std::string GetFolder(const std::string& strPath)
{
    const size_t nSlash = strPath.rfind('/');
    return nSlash == std::string::npos ? "./" : strPath.substr(0, nSlash + 1);
}

// Programs choose a format by the suffix, so the temporary name has it, too.
std::string GetSuffix(const std::string& strPath)
{
    const std::string strName = strPath.substr(strPath.rfind('/') + 1);
    const size_t nDot = strName.rfind('.');
    if (nDot == std::string::npos || nDot == 0 || strName.size() - nDot > MAX_SUFFIX)
        return {};
    return strName.substr(nDot);
}

std::string MakeTemporaryName(const std::string& strTarget)
{
    std::random_device random;
    const uint64_t nNumber = (static_cast<uint64_t>(random()) << 32) | random();
    std::string strNumber(16, '0');
    for (size_t i = 0; i < strNumber.size(); ++i)
        strNumber[i] = "0123456789abcdef"[(nNumber >> (4 * i)) & 15];
    return GetFolder(strTarget) + ".rondel-" + strNumber + ".part" + GetSuffix(strTarget);
}

bool IsFull(int nSystemError) { return nSystemError == ENOSPC || nSystemError == EDQUOT; }
} // namespace

bool EncoderOutput::FailBySystem(int nError, const std::string& strPath)
{
    const int nSystemError = errno;
    m_nError = IsFull(nSystemError) ? ENCODER_DISK_FULL : nError;
    std::array<char, 256> aryText{};
    m_strDetail = strPath + ": " + strerror_r(nSystemError, aryText.data(), aryText.size());
    return false;
}

bool EncoderOutput::Open(const std::string& strTarget)
{
    Discard();
    m_nError = ENCODER_OK;
    m_strDetail.clear();
    m_nPosition = 0;
    m_strTarget = strTarget;
    struct stat status;
    if (strTarget.empty() || strTarget.back() == '/' ||
        (stat(strTarget.c_str(), &status) == 0 && !S_ISREG(status.st_mode)))
    {
        m_nError = ENCODER_OUTPUT_OPEN;
        m_strDetail = "'" + strTarget + "' is no name for a file.";
        return false;
    }
    for (int i = 0; i < MAX_NAMES && m_nFile < 0; ++i)
    {
        std::string strTemporary = MakeTemporaryName(strTarget);
        m_nFile = open(strTemporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, FILE_MODE);
        if (m_nFile >= 0)
            m_strTemporary = std::move(strTemporary);
        else if (errno != EEXIST && errno != EINTR)
            break;
    }
    return m_nFile >= 0 || FailBySystem(ENCODER_OUTPUT_OPEN, strTarget);
}

bool EncoderOutput::OpenForOther(const std::string& strTarget)
{
    if (!Open(strTarget))
        return false;
    (void)close(m_nFile); // nothing was written that could be lost
    m_nFile = -1;
    (void)unlink(m_strTemporary.c_str()); // many programs refuse to replace a file
    return true;
}

bool EncoderOutput::Write(const void* pData, size_t nBytes)
{
    if (!WriteAt(m_nPosition, pData, nBytes))
        return false;
    m_nPosition += nBytes;
    return true;
}

bool EncoderOutput::WriteAt(uint64_t nOffset, const void* pData, size_t nBytes)
{
    const char* p = static_cast<const char*>(pData);
    while (nBytes > 0)
    {
        const ssize_t nWritten = pwrite(m_nFile, p, nBytes, static_cast<off_t>(nOffset));
        if (nWritten < 0 && errno == EINTR)
            continue;
        if (nWritten <= 0)
            return FailBySystem(ENCODER_OUTPUT_WRITE, m_strTarget);
        p += nWritten;
        nOffset += static_cast<uint64_t>(nWritten);
        nBytes -= static_cast<size_t>(nWritten);
    }
    return true;
}

uint64_t EncoderOutput::GetLength()
{
    struct stat status;
    return fstat(m_nFile, &status) == 0 && status.st_size > 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

size_t EncoderOutput::ReadAt(uint64_t nOffset, void* pData, size_t nBytes)
{
    size_t nDone = 0;
    while (nDone < nBytes)
    {
        const ssize_t nRead =
            pread(m_nFile, static_cast<char*>(pData) + nDone, nBytes - nDone, static_cast<off_t>(nOffset + nDone));
        if (nRead < 0 && errno == EINTR)
            continue;
        if (nRead <= 0)
            break;
        nDone += static_cast<size_t>(nRead);
    }
    return nDone;
}

// What another program has written must be a file with something in it.
bool EncoderOutput::CheckWritten()
{
    if (m_nFile < 0)
        m_nFile = open(m_strTemporary.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
    struct stat status;
    if (m_nFile >= 0 && fstat(m_nFile, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0)
        return true;
    m_nError = ENCODER_OUTPUT_WRITE;
    m_strDetail = m_strTarget + ": the file was not written.";
    return false;
}

bool EncoderOutput::Commit()
{
    bool bDone = CheckWritten();
    // The name must not reach the disk ahead of the bytes. A file system without this has nothing to wait for.
    if (bDone && fdatasync(m_nFile) != 0 && errno != EINVAL && errno != ENOSYS)
        bDone = FailBySystem(ENCODER_OUTPUT_WRITE, m_strTarget);
    if (m_nFile >= 0 && close(std::exchange(m_nFile, -1)) != 0 && bDone)
        bDone = FailBySystem(ENCODER_OUTPUT_WRITE, m_strTarget);
    if (bDone && rename(m_strTemporary.c_str(), m_strTarget.c_str()) != 0)
        bDone = FailBySystem(ENCODER_OUTPUT_OPEN, m_strTarget);
    if (bDone)
        m_strTemporary.clear();
    Discard();
    return bDone;
}

void EncoderOutput::Discard()
{
    if (m_nFile >= 0)
        (void)close(m_nFile); // the file goes
    m_nFile = -1;
    if (!m_strTemporary.empty())
        (void)unlink(m_strTemporary.c_str()); // where it is gone already, nothing is left to do
    m_strTemporary.clear();
}
