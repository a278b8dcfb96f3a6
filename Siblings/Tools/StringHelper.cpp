#include "StringHelper.h"

#include <cstddef>
#include <cwchar>
#include <cwctype>

namespace
{
constexpr wchar_t FIRST_BEYOND_ASCII = 0x80;
constexpr wchar_t CAPITAL_I_WITH_DOT = 0x130;
constexpr wchar_t SMALL_DOTLESS_I = 0x131;

// Simple case folding (Unicode, CaseFolding.txt, states C and S). The way over
// the capital brings the characters together that share one, such as the two
// small sigmas.
wchar_t FoldWide(wchar_t c, locale_t hLocale)
{
    // These two fold in Turkic languages alone.
    if (c == CAPITAL_I_WITH_DOT || c == SMALL_DOTLESS_I)
        return c;
    const wint_t n = static_cast<wint_t>(c);
    if (hLocale == locale_t{})
        return static_cast<wchar_t>(towlower(towupper(n)));
    return static_cast<wchar_t>(towlower_l(towupper_l(n, hLocale), hLocale));
}

wchar_t Fold(wchar_t c, locale_t hLocale)
{
    if (c >= 0 && c < FIRST_BEYOND_ASCII)
        return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c;
    return FoldWide(c, hLocale);
}

bool BeginsWithFolded(const wchar_t* pText, const wchar_t* pPattern, locale_t hLocale)
{
    for (; *pPattern != 0; ++pText, ++pPattern)
    {
        if (*pText != *pPattern && (*pText == 0 || Fold(*pText, hLocale) != Fold(*pPattern, hLocale)))
            return false;
    }
    return true;
}

// The sign of the first difference; a text that ends stands before one that
// goes on.
template <class KEY>
int CompareBy(const wchar_t* pFirst, const wchar_t* pSecond, KEY key)
{
    for (;; ++pFirst, ++pSecond)
    {
        const char32_t nFirst = static_cast<char32_t>(key(*pFirst));
        const char32_t nSecond = static_cast<char32_t>(key(*pSecond));
        if (nFirst != nSecond)
            return nFirst < nSecond ? -1 : 1;
        if (*pFirst == 0 || *pSecond == 0)
            return 0;
    }
}
} // namespace

StringHelper::~StringHelper()
{
    if (m_hLocale != locale_t{})
        freelocale(m_hLocale);
}

// The user's locale folds ASCII alone if it is "C", and the letter i in its own
// way if it is Turkish.
locale_t StringHelper::GetFoldingLocale()
{
    std::call_once(m_Once, [this] { m_hLocale = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{}); });
    return m_hLocale;
}

int StringHelper::FindNoCase(const wchar_t* pText, const wchar_t* pPattern, int nStart)
{
    if (pText == nullptr || pPattern == nullptr)
        return -1;
    const ptrdiff_t nFirst = nStart > 0 ? nStart : 0;
    if (wcsnlen(pText, static_cast<size_t>(nFirst)) < static_cast<size_t>(nFirst))
        return -1;
    if (*pPattern == 0)
        return static_cast<int>(nFirst);
    const locale_t hLocale = GetFoldingLocale();
    const wchar_t cFirst = Fold(*pPattern, hLocale);
    for (const wchar_t* p = pText + nFirst; *p != 0; ++p)
    {
        if (Fold(*p, hLocale) == cFirst && BeginsWithFolded(p + 1, pPattern + 1, hLocale))
            return static_cast<int>(p - pText);
    }
    return -1;
}

int StringHelper::Compare(const wchar_t* pFirst, const wchar_t* pSecond, int nFlags)
{
    if (pFirst == nullptr)
        pFirst = L"";
    if (pSecond == nullptr)
        pSecond = L"";
    const auto byCodePoint = [](wchar_t c) { return c; };
    if ((nFlags & LY_STRING_COMPARE_IGNORE_CASE) == 0)
        return CompareBy(pFirst, pSecond, byCodePoint);
    const locale_t hLocale = GetFoldingLocale();
    const int nOrder = CompareBy(pFirst, pSecond, [hLocale](wchar_t c) { return Fold(c, hLocale); });
    if (nOrder != 0 || (nFlags & LY_STRING_COMPARE_STABLE) == 0)
        return nOrder;
    return CompareBy(pFirst, pSecond, byCodePoint);
}
