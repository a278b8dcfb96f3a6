#include "DescriptorReader.h"
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

DescriptorReader::~DescriptorReader()
{
    if (m_nDescriptor >= 0)
        close(m_nDescriptor);
}

bool DescriptorReader::Check(bool bGood)
{
    if (!bGood && m_nError == 0)
        m_nError = errno != 0 ? errno : EIO;
    return bGood;
}

// Not every file system can do it; what cannot is no failure.
bool DescriptorReader::Synchronise() { return Check(fsync(m_nDescriptor) == 0 || errno == EINVAL); }

int DescriptorReader::Read(void* p, int nBytes)
{
    int nDone = 0;
    while (nDone < nBytes)
    {
        const ssize_t nPart = read(m_nDescriptor, static_cast<char*>(p) + nDone, static_cast<size_t>(nBytes - nDone));
        if (nPart < 0 && errno == EINTR)
            continue;
        if (!Check(nPart >= 0) || nPart == 0)
            break;
        nDone += static_cast<int>(nPart);
    }
    return nDone;
}

int DescriptorReader::Write(const void* p, int nBytes)
{
    int nDone = 0;
    while (nDone < nBytes)
    {
        const ssize_t nPart =
            write(m_nDescriptor, static_cast<const char*>(p) + nDone, static_cast<size_t>(nBytes - nDone));
        if (nPart < 0 && errno == EINTR)
            continue;
        if (!Check(nPart > 0))
            break;
        nDone += static_cast<int>(nPart);
    }
    return nDone;
}

long long DescriptorReader::GetLength()
{
    struct stat status = {};
    return Check(fstat(m_nDescriptor, &status) == 0) ? status.st_size : 0;
}

long long DescriptorReader::GetPosition() { return lseek(m_nDescriptor, 0, SEEK_CUR); }

long long DescriptorReader::Seek(long long nOffset, int nOrigin)
{
    return lseek(m_nDescriptor, nOffset, nOrigin == 0 ? SEEK_SET : SEEK_CUR);
}

void DescriptorReader::SetEndOfFile() { (void)Check(ftruncate(m_nDescriptor, GetPosition()) == 0); }
