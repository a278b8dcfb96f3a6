#include "FileReader.h"
#include "ReaderGuard.h"
#include "SigPipeBlock.h"
#include "UTF8.h"
#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <poll.h>
#include <unistd.h>

namespace
{
// A Close waits for one piece at most.
constexpr size_t PIECE_BYTES = 4 * 1024 * 1024;
constexpr size_t PASS_OVER_BYTES = 16 * 1024;
} // namespace

FileReader::~FileReader() { CloseDescriptor(); }

bool FileReader::Create()
{
    return Guarded(false, [&] { return OpenAs(true); });
}

bool FileReader::Open()
{
    return Guarded(false, [&] { return OpenAs(false); });
}

void FileReader::Close()
{
    m_bClosing = true;
    m_Wake.Wake();
    const std::lock_guard lock(m_Operation);
    CloseDescriptor();
}

void FileReader::CloseDescriptor()
{
    m_bOpen = false;
    if (m_nDescriptor >= 0)
        close(m_nDescriptor);
    m_nDescriptor = -1;
    m_nPosition = 0;
}

// One call to the system; of a stream, when there is something to be had.
ssize_t FileReader::ReadPiece(unsigned char* p, size_t nBytes)
{
    nBytes = std::min(nBytes, PIECE_BYTES);
    if (!m_bStream)
        return pread(m_nDescriptor, p, nBytes, m_nPosition);
    return m_Wake.Wait(m_nDescriptor, POLLIN, -1) ? read(m_nDescriptor, p, nBytes) : 0;
}

int FileReader::ReadBytes(unsigned char* p, int nBytes)
{
    int nDone = 0;
    while (nDone < nBytes && !m_bClosing)
    {
        const ssize_t nRead = ReadPiece(p + nDone, static_cast<size_t>(nBytes - nDone));
        if (nRead > 0)
        {
            nDone += static_cast<int>(nRead);
            m_nPosition += nRead;
        }
        else if (nRead == 0)
            break;
        else if (errno != EINTR && errno != EAGAIN)
        {
            (void)Refuse("read", errno);
            break;
        }
    }
    return nDone;
}

int FileReader::Read(void* p, int nBytes)
{
    const std::lock_guard lock(m_Operation);
    if (p == nullptr || nBytes < 1 || !GetIsOpen())
        return 0;
    return ReadBytes(static_cast<unsigned char*>(p), nBytes);
}

ssize_t FileReader::WritePiece(const unsigned char* p, size_t nBytes)
{
    nBytes = std::min(nBytes, PIECE_BYTES);
    if (!m_bStream)
        return pwrite(m_nDescriptor, p, nBytes, m_nPosition);
    const SigPipeBlock block;
    return m_Wake.Wait(m_nDescriptor, POLLOUT, -1) ? write(m_nDescriptor, p, nBytes) : 0;
}

int FileReader::Write(const void* p, int nBytes)
{
    const std::lock_guard lock(m_Operation);
    int nDone = 0;
    while (p != nullptr && nDone < nBytes && GetIsOpen())
    {
        const ssize_t nWritten =
            WritePiece(static_cast<const unsigned char*>(p) + nDone, static_cast<size_t>(nBytes - nDone));
        if (nWritten > 0)
        {
            nDone += static_cast<int>(nWritten);
            m_nPosition += nWritten;
        }
        else if (nWritten == 0)
            break;
        else if (errno != EINTR && errno != EAGAIN)
        {
            (void)Refuse("write", errno);
            break;
        }
    }
    return nDone;
}

long long FileReader::GetPosition()
{
    const std::lock_guard lock(m_Operation);
    return m_nPosition;
}

long long FileReader::Seek(long long nOffset, int nOrigin)
{
    const std::lock_guard lock(m_Operation);
    if (!GetIsOpen() || nOrigin < 0 || nOrigin > 2)
        return -1;
    const long long nFrom = nOrigin == 0 ? 0 : nOrigin == 1 ? m_nPosition : GetLengthOfOpenFile();
    long long nTarget;
    if (nFrom < 0 || __builtin_add_overflow(nFrom, nOffset, &nTarget) || nTarget < 0)
        return -1;
    if (m_bStream)
        return PassOver(nTarget);
    return m_nPosition = nTarget;
}

// The way forward in a stream; -1 if that is not where it goes, or if it ends before.
long long FileReader::PassOver(long long nTarget)
{
    unsigned char aryDropped[PASS_OVER_BYTES];
    while (m_nPosition < nTarget)
    {
        const int nWanted = static_cast<int>(std::min<long long>(nTarget - m_nPosition, PASS_OVER_BYTES));
        if (ReadBytes(aryDropped, nWanted) < nWanted)
            return -1;
    }
    return m_nPosition == nTarget ? nTarget : -1;
}

void FileReader::SetEndOfFile()
{
    const std::lock_guard lock(m_Operation);
    if (!GetIsOpen() || m_bStream)
        return;
    while (ftruncate(m_nDescriptor, m_nPosition) != 0)
        if (errno != EINTR)
        {
            (void)Refuse("cut", errno);
            return;
        }
}

wchar_t* FileReader::GetInfo(const wchar_t* pName)
{
    return Guarded(static_cast<wchar_t*>(nullptr),
                   [&]
                   {
                       const bool bError = pName != nullptr && std::wcscmp(pName, L"Error") == 0;
                       return MakeSystemString(bError ? WidenUTF8(m_strError) : std::wstring());
                   });
}

void FileReader::SetProperty(const wchar_t* pName, const wchar_t* pValue)
{
    if (pName != nullptr && std::wcscmp(pName, L"READ_ONLY") == 0)
        m_bReadOnly = pValue != nullptr && std::wcscmp(pValue, L"1") == 0;
}
