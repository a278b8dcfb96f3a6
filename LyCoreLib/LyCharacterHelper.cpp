#include "LyStringFormat.h"

#include "LyUTF8Details.h"
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>

using namespace LyUTF8Details;

namespace
{
constexpr wchar_t ANSI_END = 256;

size_t MeasureWide(const wchar_t* p, int nLength)
{
    if (p == nullptr || nLength < -1)
        return 0;
    return nLength == -1 ? std::wcslen(p) : static_cast<size_t>(nLength);
}

size_t CountUTF8Bytes(const wchar_t* p, size_t nChars)
{
    size_t nBytes = 0;
    for (size_t i = 0; i < nChars; ++i)
    {
        auto c = static_cast<uint32_t>(p[i]);
        nBytes += 1 + size_t{c >= ONE_BYTE_END} + size_t{c >= TWO_BYTES_END};
    }
    return nBytes;
}

unsigned char* WriteUTF8(const wchar_t* p, size_t nChars, unsigned char* pOut)
{
    for (size_t i = 0; i < nChars; ++i)
    {
        auto c = static_cast<uint32_t>(p[i]);
        if (c < ONE_BYTE_END)
        {
            *pOut++ = static_cast<unsigned char>(c);
            continue;
        }
        if (c < TWO_BYTES_END)
        {
            *pOut++ = static_cast<unsigned char>(UTF8_LEAD_OF_2 | (c >> 6));
        }
        else
        {
            *pOut++ = static_cast<unsigned char>(UTF8_LEAD_OF_3 | (c >> 12));
            *pOut++ = static_cast<unsigned char>(UTF8_CONTINUATION | ((c >> 6) & 0x3F));
        }
        *pOut++ = static_cast<unsigned char>(UTF8_CONTINUATION | (c & 0x3F));
    }
    return pOut;
}

int ToCount(size_t nBytes) { return nBytes <= INT_MAX ? static_cast<int>(nBytes) : -1; }
} // namespace

char* LyCharacterHelper::GetANSIFromUTFN(const wchar_t* p, unsigned int)
{
    size_t nChars = MeasureWide(p, -1);
    char* pResult = new (std::nothrow) char[nChars + 1];
    if (pResult == nullptr)
        return nullptr;
    for (size_t i = 0; i < nChars; ++i)
        pResult[i] = p[i] >= 0 && p[i] < ANSI_END ? static_cast<char>(p[i]) : '?';
    pResult[nChars] = 0;
    return pResult;
}

char* LyCharacterHelper::GetUTF8FromUTFN(const wchar_t* p, int nLength)
{
    size_t nChars = MeasureWide(p, nLength);
    char* pResult = new (std::nothrow) char[CountUTF8Bytes(p, nChars) + 1];
    if (pResult)
        *WriteUTF8(p, nChars, reinterpret_cast<unsigned char*>(pResult)) = 0;
    return pResult;
}

int LyCharacterHelper::GetUTF8Bytes(const wchar_t* p, bool bWithTerminator, int nLength)
{
    return ToCount(CountUTF8Bytes(p, MeasureWide(p, nLength)) + size_t{bWithTerminator});
}

int LyCharacterHelper::DecodeUTFNToUTF8(const wchar_t* p, unsigned char* pOut, bool bTerminate, int nLength)
{
    if (pOut == nullptr)
        return 0;
    unsigned char* pEnd = WriteUTF8(p, MeasureWide(p, nLength), pOut);
    if (bTerminate)
        *pEnd++ = 0;
    return ToCount(static_cast<size_t>(pEnd - pOut));
}

int LyCharacterHelper::GetUTF8Characters(const unsigned char* p, int nBytes)
{
    if (p == nullptr || nBytes < -1)
        return 0;
    size_t nRest = nBytes == -1 ? std::strlen(reinterpret_cast<const char*>(p)) : static_cast<size_t>(nBytes);
    size_t nChars = 0;
    while (nRest > 0)
    {
        if (nRest >= PLAIN_RUN_BYTES && IsPlainRun(p))
        {
            p += PLAIN_RUN_BYTES;
            nRest -= PLAIN_RUN_BYTES;
            nChars += PLAIN_RUN_BYTES;
            continue;
        }
        auto nSequence = static_cast<size_t>(GetSequenceBytes(p, nRest, 1));
        p += nSequence;
        nRest -= nSequence;
        ++nChars;
    }
    return ToCount(nChars);
}

int LyCharacterHelper::GetUTF8CharacterBytes(const unsigned char* p, int nValueIfBad)
{
    return p ? GetSequenceBytes(p, MAX_SEQUENCE_BYTES, nValueIfBad) : nValueIfBad;
}
