#include "LyStringFormat.h"

namespace
{
// The zero of each script whose decimal digits are read, in ascending order. Unicode 5, general category Nd.
constexpr wchar_t s_cZeros[] = {0x660, 0x6F0, 0x966, 0x9E6, 0xA66,  0xAE6,  0xB66,  0xC66, 0xCE6,
                                0xD66, 0xE50, 0xED0, 0xF20, 0x1040, 0x17E0, 0x1810, 0xFF10};
constexpr unsigned int NO_DIGIT = ~0U;

unsigned int GetForeignDigit(wchar_t c)
{
    for (wchar_t cZero : s_cZeros)
    {
        if (c < cZero)
            break;
        if (c - cZero <= 9)
            return static_cast<unsigned int>(c - cZero);
    }
    return NO_DIGIT;
}

unsigned int GetDigit(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return static_cast<unsigned int>(c - L'0');
    if (c >= L'a' && c <= L'z')
        return static_cast<unsigned int>(c - L'a') + 10;
    if (c >= L'A' && c <= L'Z')
        return static_cast<unsigned int>(c - L'A') + 10;
    return GetForeignDigit(c);
}

const wchar_t* SkipWhiteSpace(const wchar_t* p)
{
    if (*p > L' ' && *p < 0x80)
        return p;
    const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
    while (*p && globals.IsSpace(*p))
        ++p;
    return p;
}
} // namespace

template <class T, int nBase, unsigned long long nMax>
T LyStringToInteger<T, nBase, nMax>::Get(const wchar_t* p, int* pnConsumed)
{
    if (pnConsumed)
        *pnConsumed = 0;
    if (p == nullptr)
        return 0;
    const wchar_t* pStart = p;
    p = SkipWhiteSpace(p);
    bool bNegative = *p == L'-';
    if (bNegative || *p == L'+')
        ++p;
    unsigned long long nValue = 0;
    for (;; ++p)
    {
        unsigned int nDigit = GetDigit(*p);
        if (nDigit >= static_cast<unsigned int>(nBase))
            break;
        if (nValue > (nMax - nDigit) / nBase)
        {
            nValue = nMax;
            break;
        }
        nValue = nValue * nBase + nDigit;
    }
    if (pnConsumed)
        *pnConsumed = static_cast<int>(p - pStart);
    // Deliberate: the sign comes last, so that the least value is -nMax. In unsigned types it wraps.
    return static_cast<T>(bNegative ? 0 - nValue : nValue);
}

template class LyStringToInteger<int, 10, 2147483647ULL>;
template class LyStringToInteger<unsigned int, 16, 4294967295ULL>;
template class LyStringToInteger<unsigned long long, 16, 18446744073709551615ULL>;
