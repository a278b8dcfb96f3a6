// Writing numbers, and the readers that stand on LyStringToInteger.

#include "LyStringFormat.h"
#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cwchar>
#include <iterator>
#include <limits>

namespace
{
constexpr int MIN_ROOM = 8;              // the writers refuse to begin with less
constexpr int MAX_BINARY_DIGITS = 64;    // of 64 bits in base 2
constexpr int MAX_UNSIGNED_BASE = 16;    // of FromUIntStatic
constexpr int MAX_SIGNED_BASE = 36;      // of FromIntStatic: all digits and letters
constexpr int INTEGER_BUFFER_CHARS = 31; // of the form that writes into a string
constexpr double TWO_POWER_64 = 18446744073709551616.0;

constexpr unsigned long long s_nPowersOfTen[] = {1ULL,
                                                 10ULL,
                                                 100ULL,
                                                 1000ULL,
                                                 10000ULL,
                                                 100000ULL,
                                                 1000000ULL,
                                                 10000000ULL,
                                                 100000000ULL,
                                                 1000000000ULL,
                                                 10000000000ULL,
                                                 100000000000ULL,
                                                 1000000000000ULL,
                                                 10000000000000ULL,
                                                 100000000000000ULL,
                                                 1000000000000000ULL,
                                                 10000000000000000ULL,
                                                 100000000000000000ULL,
                                                 1000000000000000000ULL,
                                                 10000000000000000000ULL}; // the last one in 64 bits
// The search for the fraction's end goes one digit beyond the limit.
static_assert(std::size(s_nPowersOfTen) > LyStringFormat::MAX_DECIMAL_DIGITS + 1);

bool HasRoom(const wchar_t* pBuffer, int nBufferChars, int nPosition)
{
    return pBuffer && nPosition >= 0 && nPosition < nBufferChars && nBufferChars - nPosition >= MIN_ROOM;
}

// Writes exactly nDigits digits that end at pEnd. A base that the compiler knows is divided by multiplication.
template <int nKnownBase>
void DigitsBackward(wchar_t* pEnd, unsigned long long nValue, int nDigits, int nAnyBase, const wchar_t* pLetters)
{
    const auto nBase = static_cast<unsigned long long>(nKnownBase ? nKnownBase : nAnyBase);
    for (; nDigits > 0; --nDigits)
    {
        *--pEnd = pLetters[nValue % nBase];
        nValue /= nBase;
    }
}

void WriteDigitsOf(wchar_t* pOut, unsigned long long nValue, int nDigits, int nBase, bool bLowerCase)
{
    const wchar_t* pLetters =
        bLowerCase ? L"0123456789abcdefghijklmnopqrstuvwxyz" : L"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    if (nBase == 10)
        DigitsBackward<10>(pOut + nDigits, nValue, nDigits, nBase, pLetters);
    else if (nBase == 16)
        DigitsBackward<16>(pOut + nDigits, nValue, nDigits, nBase, pLetters);
    else
        DigitsBackward<0>(pOut + nDigits, nValue, nDigits, nBase, pLetters);
}

// The digits without leading zeros; one for 0.
int CountDigits(unsigned long long nValue, int nBase)
{
    if (nBase == 10)
    {
        // 1233 / 4096 is the logarithm of 2: the count is exact, or one too small. 0 has a digit, too.
        int nDigits = static_cast<int>(std::bit_width(nValue | 1)) * 1233 >> 12;
        return nDigits + (nDigits == 0 || nValue >= s_nPowersOfTen[nDigits]);
    }
    int nDigits = 1;
    for (const auto nUnsignedBase = static_cast<unsigned int>(nBase); nValue >= nUnsignedBase; nValue /= nUnsignedBase)
        ++nDigits;
    return nDigits;
}

// There is room for "0x" and more. The last character of the buffer is kept: if digits are left when it is reached,
// it becomes "?".
void WriteDigits(wchar_t* pBuffer, int nBufferChars, int& nPosition, unsigned long long nValue, int nMinDigits,
                 int nBase, int nFlags)
{
    if (nBase == 16 && (nFlags & LYSTRING_NUMBER_HEX_PREFIX))
    {
        pBuffer[nPosition++] = L'0';
        pBuffer[nPosition++] = L'x';
    }
    const bool bLowerCase = (nFlags & LYSTRING_NUMBER_LOWER_CASE) != 0;
    const int nDigits = CountDigits(nValue, nBase);
    const int nFree = nBufferChars - nPosition - 1;
    wchar_t* pOut = pBuffer + nPosition;
    if (nMinDigits > nDigits)
    {
        int nFill = std::min(nMinDigits - nDigits, nFree);
        pOut = std::fill_n(pOut, nFill, nFlags & LYSTRING_NUMBER_LEADING_BLANKS ? L' ' : L'0');
    }
    int nLeft = nFree - static_cast<int>(pOut - pBuffer - nPosition);
    if (nDigits <= nLeft)
    {
        WriteDigitsOf(pOut, nValue, nDigits, nBase, bLowerCase);
        pOut += nDigits;
    }
    else
    {
        wchar_t digits[MAX_BINARY_DIGITS];
        WriteDigitsOf(digits, nValue, nDigits, nBase, bLowerCase);
        pOut = std::copy_n(digits, nLeft, pOut);
        *pOut++ = L'?';
    }
    nPosition = static_cast<int>(pOut - pBuffer);
}

// A decimal number taken apart: whole part, and nDigits digits of nDecimals, all of them behind the point.
struct DECIMAL_PARTS
{
    unsigned long long nInteger;
    unsigned long long nDecimals;
    int nDigits;
};

// fFraction is below 1. nDecimals of -1, and every other negative count, asks for as many digits as there may be.
void RoundFraction(DECIMAL_PARTS& parts, double fFraction, int nDecimals, bool bFixedDecimals)
{
    int nLimit =
        nDecimals < 0 ? LyStringFormat::MAX_DECIMAL_DIGITS : std::min(nDecimals, LyStringFormat::MAX_DECIMAL_DIGITS);
    int nDigits = 0;
    double fProduct = fFraction;
    while (nDigits <= nLimit && fProduct != std::floor(fProduct))
        fProduct = fFraction * static_cast<double>(s_nPowersOfTen[++nDigits]);
    auto nProduct = static_cast<unsigned long long>(fProduct);

    if (bFixedDecimals && nDigits < nLimit)
    {
        nProduct *= s_nPowersOfTen[nLimit - nDigits];
        nDigits = nLimit;
    }
    if (nDigits > nLimit)
    {
        unsigned long long nPower = s_nPowersOfTen[nDigits - nLimit];
        nProduct = (nProduct + nPower / 2) / nPower;
        nDigits = nLimit;
    }
    if (nProduct >= s_nPowersOfTen[nDigits])
    {
        ++parts.nInteger;
        nProduct = 0;
    }
    for (; !bFixedDecimals && nDigits > 0 && nProduct % 10 == 0; --nDigits)
        nProduct /= 10;
    parts.nDecimals = nProduct;
    parts.nDigits = nDigits;
}

// Not a number counts as 0, and what 64 bits cannot hold as the most that they can.
DECIMAL_PARTS TakeApart(double fValue, int nDecimals, bool bFixedDecimals)
{
    DECIMAL_PARTS parts = {0, 0, 0};
    if (std::isnan(fValue))
        fValue = 0.0;
    if (fValue >= TWO_POWER_64)
    {
        fValue = 0.0; // no fraction
        parts.nInteger = std::numeric_limits<unsigned long long>::max();
    }
    else
    {
        parts.nInteger = static_cast<unsigned long long>(fValue);
        fValue -= static_cast<double>(parts.nInteger);
    }
    if (fValue != 0.0 || (nDecimals != -1 && bFixedDecimals))
        RoundFraction(parts, fValue, nDecimals, bFixedDecimals);
    return parts;
}
} // namespace

// ---- Writing

void LyString::FromUIntStatic(wchar_t* pBuffer, int nBufferChars, int& nPosition, unsigned long long nValue,
                              int nMinDigits, int nBase, int nFlags)
{
    if (!HasRoom(pBuffer, nBufferChars, nPosition) || nBase < 2 || nBase > MAX_UNSIGNED_BASE)
        return;
    if (nFlags & LYSTRING_NUMBER_PLUS_SIGN)
        pBuffer[nPosition++] = L'+';
    WriteDigits(pBuffer, nBufferChars, nPosition, nValue, nMinDigits, nBase, nFlags);
}

void LyString::FromIntStatic(wchar_t* pBuffer, int nBufferChars, int& nPosition, long long nValue, int nMinDigits,
                             int nBase, int nFlags)
{
    if (!HasRoom(pBuffer, nBufferChars, nPosition) || nBase < 2 || nBase > MAX_SIGNED_BASE)
        return;
    auto nMagnitude = static_cast<unsigned long long>(nValue);
    if (nValue < 0)
    {
        pBuffer[nPosition++] = L'-';
        nMagnitude = 0 - nMagnitude;
    }
    else if (nValue > 0 && (nFlags & LYSTRING_NUMBER_PLUS_SIGN))
    {
        pBuffer[nPosition++] = L'+';
    }
    WriteDigits(pBuffer, nBufferChars, nPosition, nMagnitude, nMinDigits, nBase, nFlags);
}

void LyString::FromIntStatic(LyString& strOut, long long nValue, int nMinDigits, int nBase, int nFlags)
{
    wchar_t text[INTEGER_BUFFER_CHARS];
    int nLength = 0;
    FromIntStatic(text, INTEGER_BUFFER_CHARS, nLength, nValue, nMinDigits, nBase, nFlags);
    strOut.FromStringInMemoryFast(text, nLength);
}

void LyStringFormat::WriteDecimal(wchar_t* pBuffer, int nBufferChars, int& nPosition, double fValue, int nDecimals,
                                  bool bFixedDecimals, int nMinIntegerDigits, int nFlags)
{
    if (!HasRoom(pBuffer, nBufferChars, nPosition))
        return;
    int nStart = nPosition;
    if (fValue < 0)
        pBuffer[nPosition++] = L'-';
    else if (nFlags & LYSTRING_NUMBER_PLUS_SIGN)
        pBuffer[nPosition++] = L'+';
    DECIMAL_PARTS parts = TakeApart(std::fabs(fValue), nDecimals, bFixedDecimals);
    WriteDigits(pBuffer, nBufferChars, nPosition, parts.nInteger, nMinIntegerDigits, 10,
                nFlags & LYSTRING_NUMBER_LEADING_BLANKS);
    if (parts.nDigits < 1 || nPosition - nStart >= MAX_DECIMAL_FILLED || !HasRoom(pBuffer, nBufferChars, nPosition))
        return;
    pBuffer[nPosition++] = nFlags & LYSTRING_NUMBER_LOWER_CASE ? L'.' : LyString::GetDecimalPointCharacter();
    WriteDigits(pBuffer, nBufferChars, nPosition, parts.nDecimals, parts.nDigits, 10, 0);
}

void LyString::FromDecimalStatic(LyString& strOut, double fValue, int nDecimals, bool bFixedDecimals,
                                 int nMinIntegerDigits, int nFlags)
{
    wchar_t text[LyStringFormat::MAX_DECIMAL_CHARS];
    int nLength = 0;
    LyStringFormat::WriteDecimal(text, LyStringFormat::MAX_DECIMAL_CHARS, nLength, fValue, nDecimals, bFixedDecimals,
                                 nMinIntegerDigits, nFlags);
    strOut.FromStringInMemoryFast(text, nLength);
}

LyString& LyString::FromInt(int nValue, int nMinDigits, int nBase, int nFlags)
{
    FromIntStatic(*this, nValue, nMinDigits, nBase, nFlags);
    return *this;
}

LyString& LyString::FromDecimal(double fValue, int nDecimals, bool bFixedDecimals, int nMinIntegerDigits, int nFlags)
{
    FromDecimalStatic(*this, fValue, nDecimals, bFixedDecimals, nMinIntegerDigits, nFlags);
    return *this;
}

LyString& LyString::FromPointer(const void* p) { return Format(L"%p", p); }

LyString& LyString::FromBSTR(const wchar_t* p, bool bFree)
{
    *this = p;
    if (bFree)
        LyCom::SysFreeString(const_cast<wchar_t*>(p)); // the caller gave it away
    return *this;
}

LyString& LyString::FromStringInMemoryFast(const wchar_t* p, int nLength)
{
    if (p && nLength > 0)
        Assign(p, nLength);
    else
        Empty();
    return *this;
}

// ---- Reading

int LyString::GetInt() const { return LyStringToInteger<int, 10, 2147483647ULL>::Get(m_pText, nullptr); }

namespace
{
const wchar_t* SkipHexPrefix(const wchar_t* p) { return p[0] == L'0' && p[1] == L'x' ? p + 2 : p; }
} // namespace

unsigned int LyString::GetHex() const
{
    return LyStringToInteger<unsigned int, 16, 4294967295ULL>::Get(SkipHexPrefix(m_pText), nullptr);
}

void* LyString::GetPointer() const
{
    auto nAddress =
        LyStringToInteger<unsigned long long, 16, 18446744073709551615ULL>::Get(SkipHexPrefix(m_pText), nullptr);
    return reinterpret_cast<void*>(nAddress);
}

// Deliberate: the first call decides for the process, so that what is written can be read back after a change of the
// C library's locale. Threads that come together store the same value.
wchar_t LyString::GetDecimalPointCharacter()
{
    static std::atomic<wchar_t> s_cDecimalPoint{0};
    wchar_t c = s_cDecimalPoint.load(std::memory_order_relaxed);
    if (c)
        return c;
    wchar_t text[8] = {};
    (void)std::swprintf(text, std::size(text), L"%.1f", 1.1); // on failure the text holds neither character
    c = text[1] == L',' ? L',' : L'.';
    s_cDecimalPoint.store(c, std::memory_order_relaxed);
    return c;
}
