#include "RipFiles.h"
#include "CDUnits.h"
#include "CRC32.h"
#include "SecureHash.h"
#include "WAVCreator.h"
#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <functional>
#include <mutex>
#include <unistd.h>
#include <vector>

namespace
{
constexpr size_t READ_BYTES = 256 * 1024;     // at a time
constexpr size_t READ_PART_BYTES = 16 * 1024; // of a header or a tag
constexpr const char* WAV_ENCODER = "wav";    // in a record

bool WriteAll(int nDescriptor, const std::string& strText)
{
    for (size_t nDone = 0; nDone < strText.size();)
    {
        const ssize_t nPart = write(nDescriptor, strText.data() + nDone, strText.size() - nDone);
        if (nPart < 0 && errno != EINTR)
            return false;
        nDone += nPart > 0 ? static_cast<size_t>(nPart) : 0;
    }
    return true;
}

bool ReadParts(const std::string& strPath, const std::function<void(const char*, size_t)>& take)
{
    const int nDescriptor = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (nDescriptor < 0)
        return false;
    std::vector<char> aryPart(READ_BYTES);
    ssize_t nPart = 0;
    while ((nPart = read(nDescriptor, aryPart.data(), aryPart.size())) > 0 || (nPart < 0 && errno == EINTR))
        if (nPart > 0)
            take(aryPart.data(), static_cast<size_t>(nPart));
    const int nError = errno;
    (void)close(nDescriptor);
    errno = nError;
    return nPart == 0;
}
// Adds what stands from there on, nMost bytes at most. How many there were; -1 with errno.
long long AddStretch(int nDescriptor, long long nFrom, long long nMost, uint32_t& nRegister)
{
    char aryPart[READ_PART_BYTES];
    long long nDone = 0;
    while (nDone < nMost)
    {
        const auto nWanted = static_cast<size_t>(std::min<long long>(nMost - nDone, sizeof aryPart));
        const ssize_t nPart = pread(nDescriptor, aryPart, nWanted, nFrom + nDone);
        if (nPart < 0 && errno == EINTR)
            continue;
        if (nPart < 0)
            return -1;
        if (nPart == 0)
            break;
        nRegister = AddToCRC32Register(nRegister, aryPart, static_cast<size_t>(nPart));
        nDone += nPart;
    }
    return nDone;
}
} // namespace

std::unique_ptr<PartialFile> CreatePartialFile(const std::string& strPath)
{
    static std::mutex s_Creation;
    const std::lock_guard lock(s_Creation);
    errno = 0;
    return std::make_unique<PartialFile>(strPath);
}

bool WriteTextFile(const std::string& strPath, const std::string& strText)
{
    const std::unique_ptr<PartialFile> pPartial = CreatePartialFile(strPath);
    if (!pPartial->GetIsOpen())
        return false;
    const int nDescriptor = pPartial->TakeDescriptor();
    bool bGood = WriteAll(nDescriptor, strText) && (fsync(nDescriptor) == 0 || errno == EINVAL);
    int nError = errno;
    if (close(nDescriptor) != 0 && bGood)
    {
        bGood = false;
        nError = errno;
    }
    if (bGood)
        return pPartial->Finish();
    errno = nError;
    return false;
}

bool ReadTextFile(const std::string& strPath, std::string& strText)
{
    strText.clear();
    return ReadParts(strPath, [&](const char* p, size_t nBytes) { strText.append(p, nBytes); });
}

bool FillInFile(const std::string& strPath, RIP_FILE& file)
{
    const bool bWAV = file.strEncoder == WAV_ENCODER;
    SHA256Hash hash;
    uint32_t nRegister = CRC32_START;
    long long nAll = 0;
    const bool bRead = ReadParts(strPath,
                                 [&](const char* p, size_t nBytes)
                                 {
                                     if (bWAV)
                                         nRegister = AddToCRC32Register(nRegister, p, nBytes);
                                     else
                                         hash.Add(p, nBytes);
                                     nAll += static_cast<long long>(nBytes);
                                 });
    if (!bRead)
        return false;
    const SHA256Hash::DIGEST digest = hash.Finish();
    file.nBytes = nAll;
    file.strSHA256 = bWAV ? "" : MakeHexText(digest.data(), digest.size());
    file.strCRC32 = bWAV ? MakeCRC32Text(~nRegister) : "";
    return true;
}

bool SumUpWaveFile(const std::string& strPath, uint32_t nAudioCRC32, long long nFrames, RIP_FILE& file)
{
    const long long nAudioBytes = nFrames * LY_CD_FRAME_BYTES;
    const int nDescriptor = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (nDescriptor < 0)
        return false;
    uint32_t nHead = CRC32_START;
    uint32_t nTag = CRC32_START;
    const long long nHeadBytes = AddStretch(nDescriptor, 0, CWAVCreator::HEADER_BYTES, nHead);
    const long long nTagBytes = AddStretch(nDescriptor, CWAVCreator::HEADER_BYTES + nAudioBytes, LLONG_MAX, nTag);
    const int nError = errno;
    (void)close(nDescriptor);
    errno = nError;
    if (nHeadBytes < 0 || nTagBytes < 0)
        return false;
    uint32_t nSum = CombineCRC32(~nHead, nAudioCRC32, static_cast<uint64_t>(nAudioBytes));
    nSum = CombineCRC32(nSum, ~nTag, static_cast<uint64_t>(nTagBytes));
    file.nBytes = nHeadBytes + nAudioBytes + nTagBytes;
    file.strSHA256.clear();
    file.strCRC32 = MakeCRC32Text(nSum);
    return true;
}
