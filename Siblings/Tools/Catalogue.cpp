#include "Catalogue.h"

#include "UTF8.h"
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr uint32_t MAGIC = 0x950412de;
constexpr uint32_t LAST_MAJOR_REVISION = 1;
constexpr size_t REVISION_OFFSET = 4;
constexpr size_t COUNT_OFFSET = 8;
constexpr size_t ORIGINALS_OFFSET = 12;
constexpr size_t TRANSLATIONS_OFFSET = 16;
constexpr size_t HEADER_BYTES = 28;
constexpr size_t ROW_BYTES = 8; // length and offset

uint32_t ReadNative(const std::string& strBytes, size_t nOffset)
{
    uint32_t n;
    std::memcpy(&n, strBytes.data() + nOffset, sizeof n);
    return n;
}

bool IsUTF8(std::string_view str)
{
    for (size_t nBytes = 0; !str.empty(); str.remove_prefix(nBytes))
    {
        if (UTF8Details::IsSurrogate(UTF8Details::Decode(str, nBytes)))
            return false;
    }
    return true;
}

// The header is a list of lines in the manner of mail; one of them names the
// character set.
bool IsCharsetUTF8(std::string_view strHeader)
{
    constexpr std::string_view KEY = "charset=";
    const size_t nKey = strHeader.find(KEY);
    if (nKey == std::string_view::npos)
        return false;
    std::string_view strName = strHeader.substr(nKey + KEY.size());
    strName = strName.substr(0, strName.find_first_of(" \t\r\n;"));
    return strName.size() == 5 && strncasecmp(strName.data(), "UTF-8", 5) == 0;
}

// A file of at most nMaxBytes, whole. Zero, or the number of the error.
int ReadFile(int nDescriptor, size_t nMaxBytes, std::string& strBytes)
{
    struct stat status;
    if (fstat(nDescriptor, &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode) || status.st_size < 0)
        return EINVAL;
    if (static_cast<uint64_t>(status.st_size) > nMaxBytes)
        return EFBIG;
    strBytes.resize(static_cast<size_t>(status.st_size));
    size_t nDone = 0;
    while (nDone < strBytes.size())
    {
        const ssize_t nRead = read(nDescriptor, strBytes.data() + nDone, strBytes.size() - nDone);
        if (nRead < 0 && errno != EINTR)
            return errno;
        if (nRead == 0)
            break;
        if (nRead > 0)
            nDone += static_cast<size_t>(nRead);
    }
    strBytes.resize(nDone);
    return 0;
}
} // namespace

Catalogue::LOAD_RESULT Catalogue::Open(const std::string& strPath, std::string& strReason)
{
    const int nDescriptor = open(strPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    int nError = nDescriptor >= 0 ? 0 : errno;
    if (nError == ENOENT || nError == ENOTDIR)
        return NOT_THERE;
    std::string strBytes;
    if (nDescriptor >= 0)
    {
        nError = ReadFile(nDescriptor, MAX_BYTES, strBytes);
        (void)close(nDescriptor); // nothing was written
    }
    if (nError != 0)
    {
        strReason = strerror(nError);
        return BROKEN;
    }
    return Load(std::move(strBytes), strReason) ? LOADED : BROKEN;
}

bool Catalogue::Load(std::string strBytes, std::string& strReason)
{
    m_strBytes = std::move(strBytes);
    m_nTexts = 0;
    const char* pReason = Check();
    if (pReason == nullptr)
        return true;
    strReason = pReason;
    m_strBytes.clear();
    m_nTexts = 0;
    return false;
}

uint32_t Catalogue::ReadNumber(size_t nOffset) const
{
    const uint32_t n = ReadNative(m_strBytes, nOffset);
    return m_bSwapped ? __builtin_bswap32(n) : n;
}

const char* Catalogue::Check()
{
    if (m_strBytes.size() < HEADER_BYTES)
        return "it is too short";
    const uint32_t nMagic = ReadNative(m_strBytes, 0);
    m_bSwapped = nMagic == __builtin_bswap32(MAGIC);
    if (nMagic != MAGIC && !m_bSwapped)
        return "it is no message catalogue";
    if (ReadNumber(REVISION_OFFSET) >> 16 > LAST_MAJOR_REVISION)
        return "its revision is not known";
    const uint32_t nTexts = ReadNumber(COUNT_OFFSET);
    m_nOriginals = ReadNumber(ORIGINALS_OFFSET);
    m_nTranslations = ReadNumber(TRANSLATIONS_OFFSET);
    const uint64_t nTableBytes = uint64_t{nTexts} * ROW_BYTES;
    if (m_nOriginals + nTableBytes > m_strBytes.size() || m_nTranslations + nTableBytes > m_strBytes.size())
        return "its tables do not fit into it";
    m_nTexts = nTexts;
    return CheckTexts();
}

const char* Catalogue::CheckTexts() const
{
    for (uint32_t nIndex = 0; nIndex < m_nTexts; ++nIndex)
    {
        if (!IsTextInside(m_nOriginals, nIndex) || !IsTextInside(m_nTranslations, nIndex))
            return "a text does not lie in it";
        if (!IsUTF8(GetText(m_nTranslations, nIndex)))
            return "a text is no UTF-8";
        if (nIndex > 0 && GetText(m_nOriginals, nIndex - 1) >= GetText(m_nOriginals, nIndex))
            return "its texts are not sorted";
    }
    return IsCharsetUTF8(Find({})) ? nullptr : "its character set is not UTF-8";
}

bool Catalogue::IsTextInside(size_t nTable, uint32_t nIndex) const
{
    const size_t nRow = nTable + nIndex * ROW_BYTES;
    const uint64_t nEnd = uint64_t{ReadNumber(nRow)} + ReadNumber(nRow + 4);
    return nEnd < m_strBytes.size() && m_strBytes[nEnd] == 0;
}

// A text with a plural holds its forms in a row, each with a zero byte behind
// it. The first one is the singular.
std::string_view Catalogue::GetText(size_t nTable, uint32_t nIndex) const
{
    const size_t nRow = nTable + nIndex * ROW_BYTES;
    const std::string_view str(m_strBytes.data() + ReadNumber(nRow + 4), ReadNumber(nRow));
    return str.substr(0, str.find('\0'));
}

std::string_view Catalogue::Find(std::string_view strOriginal) const
{
    uint32_t nLow = 0;
    uint32_t nHigh = m_nTexts;
    while (nLow < nHigh)
    {
        const uint32_t nMiddle = nLow + (nHigh - nLow) / 2;
        const int nOrder = strOriginal.compare(GetText(m_nOriginals, nMiddle));
        if (nOrder == 0)
            return GetText(m_nTranslations, nMiddle);
        (nOrder < 0 ? nHigh : nLow) = nOrder < 0 ? nMiddle : nMiddle + 1;
    }
    return {};
}

std::pair<std::string_view, std::string_view> Catalogue::GetAt(int nIndex) const
{
    if (nIndex < 0 || nIndex >= GetCount())
        return {};
    const uint32_t n = static_cast<uint32_t>(nIndex);
    return {GetText(m_nOriginals, n), GetText(m_nTranslations, n)};
}
