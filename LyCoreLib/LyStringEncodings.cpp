// Narrow and foreign text to wide text, and back.

#include "LyStringDetails.h"
#include "LyStringFormat.h"
#include "LyUTF8Details.h"
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

namespace
{
// Text up to this length is decoded beside the string: that takes no counting of its characters.
constexpr size_t SHORT_TEXT_BYTES = 128;

constexpr uint32_t BYTE_ORDER_MARK = 0xFEFF;
constexpr uint32_t SWAPPED_MARK = 0xFFFE;        // as a unit of 16 bits, and as this system takes one of 32
constexpr uint32_t SWAPPED_MARK_32 = 0xFFFE0000; // as a unit of 32 bits whose bytes are swapped

uint32_t SwapBytes(uint16_t n) { return static_cast<uint32_t>(n >> 8 | (n & 0xFF) << 8); }
uint32_t SwapBytes(uint32_t n) { return n >> 24 | (n >> 8 & 0xFF00) | (n << 8 & 0xFF0000) | n << 24; }

bool IsSwappedMark(uint16_t nUnit) { return nUnit == SWAPPED_MARK; }
bool IsSwappedMark(uint32_t nUnit) { return nUnit == SWAPPED_MARK || nUnit == SWAPPED_MARK_32; }

// The units in front of the first zero. -1 asks for all of them, otherwise nLength is the limit.
template <class UNIT>
int MeasureUnits(const UNIT* p, int nLength)
{
    size_t nLimit = nLength == -1 ? LyStringBuffer::MAX_CHARACTERS : nLength < 0 ? 0 : static_cast<size_t>(nLength);
    size_t nUnits = 0;
    while (nUnits < nLimit && p[nUnits] != 0)
        ++nUnits;
    return static_cast<int>(nUnits);
}

// Takes a mark of byte order off. A plain mark leaves the order as the caller said.
template <class UNIT, class SAME_SIZE>
void CheckByteOrder(const UNIT*& p, int& nUnits, bool& bSwapBytes)
{
    if (nUnits < 1)
        return;
    auto nMark = static_cast<SAME_SIZE>(*p);
    if (IsSwappedMark(nMark))
        bSwapBytes = true;
    else if (nMark != BYTE_ORDER_MARK)
        return;
    ++p;
    --nUnits;
}

template <class UNIT, class SAME_SIZE>
void CopyUnits(wchar_t* pOut, const UNIT* p, int nUnits, bool bSwapBytes)
{
    for (int i = 0; i < nUnits; ++i)
    {
        auto nUnit = static_cast<SAME_SIZE>(p[i]);
        pOut[i] = static_cast<wchar_t>(bSwapBytes ? SwapBytes(nUnit) : nUnit);
    }
}

// Decodes the character at p and steps behind it. nAvailable is what may be looked at.
inline wchar_t DecodeNext(const unsigned char*& p, size_t nAvailable)
{
    if (*p < LyUTF8Details::ONE_BYTE_END)
        return *p++;
    int nBytes = LyUTF8Details::GetSequenceBytes(p, nAvailable, 1);
    wchar_t c = LyUTF8Details::DecodeSequence(p, nBytes);
    p += nBytes;
    return c;
}

// Decodes from p on until the bytes or the room come to an end. Returns the end of what was written.
wchar_t* DecodeUTF8(const unsigned char*& p, const unsigned char* pEnd, wchar_t* pOut, const wchar_t* pOutEnd)
{
    constexpr ptrdiff_t nRun = LyUTF8Details::PLAIN_RUN_BYTES;
    constexpr ptrdiff_t nSequence = LyUTF8Details::MAX_SEQUENCE_BYTES;
    // As long as a whole run fits on both sides, no single character needs a look at the ends.
    while (pEnd - p >= nRun + nSequence && pOutEnd - pOut >= nRun)
    {
        const unsigned char* pRunEnd = p + nRun;
        if (LyUTF8Details::IsPlainRun(p))
        {
            for (int i = 0; i < nRun; ++i)
                pOut[i] = p[i];
            pOut += nRun;
            p = pRunEnd;
            continue;
        }
        while (p < pRunEnd)
            *pOut++ = DecodeNext(p, nSequence);
    }
    while (p < pEnd && pOut < pOutEnd)
        *pOut++ = DecodeNext(p, static_cast<size_t>(pEnd - p));
    return pOut;
}

// The characters of text without defects; each byte that continues nothing is one more.
size_t CountLeads(const unsigned char* p, size_t nBytes)
{
    size_t nLeads = 0;
    for (size_t i = 0; i < nBytes; ++i)
        nLeads += !LyUTF8Details::IsContinuation(p[i]);
    return nLeads;
}
} // namespace

// ---- ANSI

LyString& LyString::FromANSI(const char* p, int nLength, bool bStopAtNull)
{
    size_t nBytes = 0;
    if (p && nLength == -1)
        nBytes = std::strlen(p);
    else if (p && nLength > 0)
        nBytes = bStopAtNull ? strnlen(p, static_cast<size_t>(nLength)) : static_cast<size_t>(nLength);
    wchar_t* pOut = nullptr;
    if (nBytes > 0 && nBytes <= LyStringBuffer::MAX_CHARACTERS)
        pOut = GetBuffer(static_cast<int>(nBytes), true, false);
    if (pOut == nullptr)
    {
        Empty();
        return *this;
    }
    for (size_t i = 0; i < nBytes; ++i)
        pOut[i] = static_cast<unsigned char>(p[i]);
    ReleaseBuffer(static_cast<int>(nBytes));
    return *this;
}

void LyString::GetANSI(LyPtr<char, char>& text, unsigned int nCodePage) const
{
    text.Set(LyCharacterHelper::GetANSIFromUTFN(m_pText, nCodePage), true, true);
}

// ---- UTF-8

LyString& LyString::FromUTF8(const unsigned char* p)
{
    size_t nBytes = p ? std::strlen(reinterpret_cast<const char*>(p)) : 0;
    const unsigned char* pEnd = p + nBytes;
    if (nBytes <= SHORT_TEXT_BYTES)
    {
        wchar_t text[SHORT_TEXT_BYTES];
        wchar_t* pTextEnd = DecodeUTF8(p, pEnd, text, std::end(text));
        return FromStringInMemoryFast(text, static_cast<int>(pTextEnd - text));
    }
    size_t nRoom = nBytes <= INT_MAX ? CountLeads(p, nBytes) : nBytes;
    wchar_t* pText =
        nRoom <= LyStringBuffer::MAX_CHARACTERS ? GetBuffer(static_cast<int>(nRoom), true, false) : nullptr;
    if (pText == nullptr)
    {
        Empty();
        return *this;
    }
    int nChars = static_cast<int>(DecodeUTF8(p, pEnd, pText, pText + nRoom) - pText);
    ReleaseBuffer(nChars);
    if (p == pEnd)
        return *this;
    int nMore = LyCharacterHelper::GetUTF8Characters(p, static_cast<int>(pEnd - p));
    pText = nMore <= LyStringBuffer::MAX_CHARACTERS - nChars ? GetBuffer(nChars + nMore, true, true) : nullptr;
    if (pText == nullptr)
        return *this; // as much as there is memory for
    DecodeUTF8(p, pEnd, pText + nChars, pText + nChars + nMore);
    ReleaseBuffer(nChars + nMore);
    return *this;
}

LyString& LyString::FromUTF8(const LyString& str)
{
    auto nChars = static_cast<size_t>(str.GetLength());
    std::unique_ptr<unsigned char[]> bytes(new (std::nothrow) unsigned char[nChars + 1]);
    for (size_t i = 0; bytes && i < nChars; ++i)
        bytes[i] = static_cast<unsigned char>(str.m_pText[i]);
    if (bytes)
        bytes[nChars] = 0;
    return FromUTF8(bytes.get());
}

// ---- UTF-16 and UTF-32

LyString& LyString::FromUTFN(const wchar_t* p, int nLength, bool bCheckBOM, bool bSwapBytes)
{
    return FromUTF32(p, nLength, bCheckBOM, bSwapBytes);
}

LyString& LyString::FromUTF32(const wchar_t* p, int nLength, bool bCheckBOM, bool bSwapBytes)
{
    int nUnits = p ? MeasureUnits(p, nLength) : 0;
    if (bCheckBOM)
        CheckByteOrder<wchar_t, uint32_t>(p, nUnits, bSwapBytes);
    if (!bSwapBytes)
        return FromStringInMemoryFast(p, nUnits);
    LyString strResult; // the source may be this string
    wchar_t* pOut = nUnits > 0 ? strResult.GetBuffer(nUnits, true, false) : nullptr;
    if (pOut)
    {
        CopyUnits<wchar_t, uint32_t>(pOut, p, nUnits, true);
        strResult.ReleaseBuffer(nUnits);
    }
    return *this = std::move(strResult);
}

LyString& LyString::FromUTF16(const unsigned short* p, int nLength, bool bCheckBOM, bool bSwapBytes)
{
    int nUnits = p ? MeasureUnits(p, nLength) : 0;
    if (bCheckBOM)
        CheckByteOrder<unsigned short, uint16_t>(p, nUnits, bSwapBytes);
    wchar_t* pOut = nUnits > 0 ? GetBuffer(nUnits, true, false) : nullptr;
    if (pOut == nullptr)
    {
        Empty();
        return *this;
    }
    CopyUnits<unsigned short, uint16_t>(pOut, p, nUnits, bSwapBytes);
    ReleaseBuffer(nUnits);
    return *this;
}
