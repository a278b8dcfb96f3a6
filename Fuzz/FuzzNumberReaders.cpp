// Integers and decimal numbers read from hostile text, and written back.
//
// Input: the text, four bytes for each character where the first byte is odd, else one.

#include "FuzzCheck.h"
#include "LyStringFormat.h"
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace
{
LyString GetText(const uint8_t* pData, size_t nBytes)
{
    LyString str;
    if (pData[0] & 1)
    {
        wchar_t c;
        for (size_t i = 1; i + sizeof c <= nBytes; i += sizeof c)
        {
            std::memcpy(&c, pData + i, sizeof c);
            str += c;
        }
        return str;
    }
    for (size_t i = 1; i < nBytes; ++i)
        str += static_cast<wchar_t>(pData[i]);
    return str;
}

void CheckIntegers(const LyString& str)
{
    int nConsumed = -1;
    const int nValue = LyStringToInteger<int, 10, 2147483647ULL>::Get(str, &nConsumed);
    Check(nConsumed >= 0 && nConsumed <= str.GetLength());
    Check(nValue == str.GetInt() && nValue >= -2147483647);
    LyString strWritten;
    strWritten.FromInt(nValue);
    Check(strWritten.GetInt() == nValue);

    const unsigned int nHex = str.GetHex();
    strWritten.Format(L"%h", nHex);
    Check(strWritten.GetHex() == nHex);
    const void* p = str.GetPointer();
    strWritten.FromPointer(p);
    // A pointer that looks like a negative int is written as one.
    Check(strWritten.GetPointer() == p || static_cast<int64_t>(reinterpret_cast<uintptr_t>(p)) < 0);
}

void CheckDecimals(const LyString& str, bool bAnySeparator, bool bAllowExponent)
{
    for (int nMaxChars : {0, 1, str.GetLength() / 2, str.GetLength(), 0x7fffffff})
    {
        int nConsumed = -1;
        const double f = LyString::GetDouble(str, &nConsumed, bAnySeparator, nMaxChars, bAllowExponent);
        Check(nConsumed >= 0 && nConsumed <= str.GetLength() && nConsumed <= nMaxChars);
        Check(!std::isnan(f));
        for (int nDecimals : {-1, 0, 3, 99})
        {
            LyString strWritten;
            strWritten.FromDecimal(f, nDecimals, bAllowExponent, nConsumed, bAnySeparator);
            Check(!strWritten.IsEmpty() && strWritten.GetLength() <= LyStringFormat::MAX_DECIMAL_CHARS);
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 1)
        return 0;
    const LyString str = GetText(pData, nBytes);
    CheckIntegers(str);
    CheckDecimals(str, (pData[0] & 2) != 0, (pData[0] & 4) != 0);
    return 0;
}
