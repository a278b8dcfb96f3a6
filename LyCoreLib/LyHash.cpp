#include "LyHash.h"
#include "LyDateTime.h"
#include "LyStringManager.h"

namespace
{
struct PlainCase
{
    unsigned int operator()(wchar_t c) const { return static_cast<unsigned int>(c); }
};

// Holds the manager, so that a character below 256 costs one look into its table.
struct LowerCase
{
    const LyStringGlobals& globals = LyStringGlobals::GetGlobals();

    unsigned int operator()(wchar_t c) const { return static_cast<unsigned int>(globals.ToLower(c)); }
};

// h * 65599 + c, written with shifts.
template <class H, class FOLD>
H Hash(const wchar_t* p, unsigned int nMask, const FOLD& fold)
{
    H h = 0;
    if (p == nullptr)
        return h;
    for (; *p != 0; ++p)
        h = (fold(*p) & nMask) + (h << 6) + (h << 16) - h;
    return h;
}

template <class H>
H Hash(const wchar_t* p, unsigned int nMask, bool bCaseSensitive)
{
    return bCaseSensitive ? Hash<H>(p, nMask, PlainCase()) : Hash<H>(p, nMask, LowerCase());
}

template <class FOLD>
bool AreEqual(const wchar_t* pFirst, const wchar_t* pSecond, const FOLD& fold)
{
    for (;; ++pFirst, ++pSecond)
    {
        if (*pFirst != *pSecond && fold(*pFirst) != fold(*pSecond))
            return false;
        if (*pFirst == 0)
            return true;
    }
}

constexpr unsigned int WHOLE_CHARACTER = 0xffffffff;
constexpr unsigned int LOW_16_BITS = 0xffff;
} // namespace

// Deliberate: with SSE2 characters are cut to 16 bits, without it they are not. Hashes that other builds of the system
// remember on the same kind of processor must stay the same. Only characters above 0xffff tell the difference.
template <>
unsigned long long LyHash::HashString<wchar_t>(const wchar_t* p, bool bCaseSensitive)
{
    static const bool s_bCutTo16Bits = (LyCpu::GetFlags() & LyCpu::SSE2) != 0;
    return HashString(p, bCaseSensitive, s_bCutTo16Bits);
}

unsigned long long LyHash::HashString(const wchar_t* p, bool bCaseSensitive, bool bCutTo16Bits)
{
    return Hash<unsigned long long>(p, bCutTo16Bits ? LOW_16_BITS : WHOLE_CHARACTER, bCaseSensitive);
}

unsigned int LyHash::HashText(const wchar_t* p, bool bCaseSensitive)
{
    return Hash<unsigned int>(p, WHOLE_CHARACTER, bCaseSensitive);
}

bool LyHash::AreTextsEqual(const wchar_t* pFirst, const wchar_t* pSecond, bool bCaseSensitive)
{
    pFirst = pFirst != nullptr ? pFirst : L"";
    pSecond = pSecond != nullptr ? pSecond : L"";
    return bCaseSensitive ? AreEqual(pFirst, pSecond, PlainCase()) : AreEqual(pFirst, pSecond, LowerCase());
}
