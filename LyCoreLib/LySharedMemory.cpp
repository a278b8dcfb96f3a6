#include "LyFile.h"
#include "LyPlatform.h"

#include <climits>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{
// Whole pages; 0 if the size would pass the range of int.
int RoundUpToPages(int nBytes)
{
    const long long nPage = getpagesize();
    long long nRounded = (nBytes + nPage - 1) / nPage * nPage;
    return nRounded <= INT_MAX ? static_cast<int>(nRounded) : 0;
}

// A block that ends before the mapping does would be mapped, and then end the process at the first touch behind it.
bool IsLargeEnough(int nDescriptor, int nBytes)
{
    struct stat status;
    return fstat(nDescriptor, &status) == 0 && status.st_size >= nBytes;
}
} // namespace

LySharedMemory::~LySharedMemory() { Free(); }

bool LySharedMemory::Allocate(const wchar_t* pName, int nBytes)
{
    constexpr mode_t PERMISSIONS = 0666;
    Free();
    if (nBytes < 1 || pName == nullptr || pName[0] == 0)
        return false;
    nBytes = RoundUpToPages(nBytes);
    if (nBytes == 0)
        return false;
    m_strName = pName[0] == L'/' ? LyString(pName) : L"/" + LyString(pName);

    LyStringUTF8 name(m_strName);
    m_nDescriptor = shm_open(name, O_RDWR, PERMISSIONS);
    bool bNew = m_nDescriptor == -1;
    if (bNew)
        m_nDescriptor = shm_open(name, O_RDWR | O_CREAT, PERMISSIONS);
    if (m_nDescriptor != -1)
        Map(nBytes, bNew);
    if (m_pAddress == nullptr)
        Free();
    return m_pAddress != nullptr;
}

void LySharedMemory::Map(int nBytes, bool bNew)
{
    // Only a new block is sized: the others use theirs already.
    if (bNew && ftruncate(m_nDescriptor, nBytes) != 0)
        return;
    if (!IsLargeEnough(m_nDescriptor, nBytes))
        return;
    void* p = mmap(nullptr, static_cast<size_t>(nBytes), PROT_READ | PROT_WRITE, MAP_SHARED, m_nDescriptor, 0);
    if (p == MAP_FAILED)
        return;
    m_pAddress = p;
    m_nMappedBytes = nBytes;
}

bool LySharedMemory::GetIsOlderThanProcess() const
{
    constexpr double CLOCK_GRAIN_SECONDS = 2; // files and processes are stamped by different clocks
    struct stat status;
    if (m_nDescriptor == -1 || fstat(m_nDescriptor, &status) != 0)
        return false;
    return status.st_uid != geteuid() ||
           static_cast<double>(status.st_mtime) + CLOCK_GRAIN_SECONDS < LyPlatform::GetProcessStartSeconds();
}

void LySharedMemory::Free()
{
    if (m_pAddress != nullptr)
        munmap(m_pAddress, static_cast<size_t>(m_nMappedBytes));
    m_pAddress = nullptr;
    m_nMappedBytes = 0;
    if (m_nDescriptor != -1)
        close(m_nDescriptor);
    m_nDescriptor = -1;
    // Deliberate: whoever frees first removes the name, also where others still hold the block or where the block could
    // not be had. So a name never outlives its users, and a later Allocate makes a new block.
    if (!m_strName.IsEmpty())
        shm_unlink(LyStringUTF8(m_strName));
    m_strName.Empty();
}
