#include "RipFiles.h"
#include "SecureHash.h"
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <mutex>
#include <unistd.h>
#include <vector>

namespace
{
constexpr size_t READ_BYTES = 256 * 1024; // at a time

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
    SHA256Hash hash;
    long long nAll = 0;
    const bool bRead = ReadParts(strPath,
                                 [&](const char* p, size_t nBytes)
                                 {
                                     hash.Add(p, nBytes);
                                     nAll += static_cast<long long>(nBytes);
                                 });
    if (!bRead)
        return false;
    const SHA256Hash::DIGEST digest = hash.Finish();
    file.nBytes = nAll;
    file.strSHA256 = MakeHexText(digest.data(), digest.size());
    return true;
}
