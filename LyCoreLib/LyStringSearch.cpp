#include "LyString.h"
#include "LyStringDetails.h"
#include <cwchar>
#include <string_view>

using namespace LyStringDetails;

// ---- The search beneath

bool LyStringDetails::EqualsFolded(const LyStringGlobals& globals, const wchar_t* p1, const wchar_t* p2, int nChars)
{
    for (int i = 0; i < nChars; ++i)
    {
        if (p1[i] != p2[i] && globals.ToLower(p1[i]) != globals.ToLower(p2[i]))
            return false;
    }
    return true;
}

namespace
{
// A pattern that is tried at many places without regard to case: its first character is folded once.
class FoldedPattern
{
public:
    FoldedPattern(const wchar_t* pPattern, int nLength)
        : m_Globals(LyStringGlobals::GetGlobals()), m_pPattern(pPattern), m_nLength(nLength),
          m_nFirst(nLength > 0 ? m_Globals.ToLower(*pPattern) : 0)
    {
    }
    bool StandsAt(const wchar_t* p) const
    {
        return m_nLength == 0 ||
               (m_Globals.ToLower(*p) == m_nFirst && EqualsFolded(m_Globals, p + 1, m_pPattern + 1, m_nLength - 1));
    }

private:
    const LyStringGlobals& m_Globals;
    const wchar_t* m_pPattern;
    int m_nLength;
    int m_nFirst;
};
} // namespace

int LyStringDetails::FindText(const wchar_t* pText, int nTextLength, const wchar_t* pPattern, int nPatternLength,
                              int nStart, bool bCaseSensitive)
{
    int nLast = nTextLength - nPatternLength;
    if (nStart < 0 || nStart > nLast)
        return -1;
    if (bCaseSensitive)
    {
        std::wstring_view text(pText, static_cast<size_t>(nTextLength));
        size_t nFound = text.find(pPattern, static_cast<size_t>(nStart), static_cast<size_t>(nPatternLength));
        return nFound == std::wstring_view::npos ? -1 : static_cast<int>(nFound);
    }
    FoldedPattern pattern(pPattern, nPatternLength);
    while (nStart <= nLast && !pattern.StandsAt(pText + nStart))
        ++nStart;
    return nStart <= nLast ? nStart : -1;
}

int LyStringDetails::ReverseFindText(const wchar_t* pText, int nTextLength, const wchar_t* pPattern, int nPatternLength,
                                     bool bCaseSensitive)
{
    auto nPatternChars = static_cast<size_t>(nPatternLength);
    int i = nTextLength - nPatternLength;
    if (bCaseSensitive)
    {
        while (i >= 0 && std::wcsncmp(pText + i, pPattern, nPatternChars) != 0)
            --i;
    }
    else
    {
        FoldedPattern pattern(pPattern, nPatternLength);
        while (i >= 0 && !pattern.StandsAt(pText + i))
            --i;
    }
    return i < 0 ? -1 : i;
}

// ---- Parts

LyString LyString::Left(int nCount) const
{
    if (nCount >= GetLength())
        return *this;
    return {LyStringGlobals::GetManager()->NewLyStringBuffer(m_pText, nCount < 0 ? 0 : nCount, -1, false, true, true),
            ADOPT_TEXT};
}

LyString LyString::Mid(int nStart) const { return Mid(nStart, GetLength()); }

LyString LyString::Mid(int nStart, int nCount) const
{
    if (nStart < 1)
        return Left(nCount);
    int nLength = GetLength();
    if (nStart > nLength)
        nStart = nLength;
    if (nCount > nLength - nStart)
        nCount = nLength - nStart;
    return {LyStringGlobals::GetManager()->NewLyStringBuffer(m_pText + nStart, nCount < 0 ? 0 : nCount, -1, false, true,
                                                             true),
            ADOPT_TEXT};
}

// ---- Searching

int LyString::Find(const wchar_t* p, int nStart) const
{
    if (p == nullptr)
        return -1;
    return FindText(m_pText, GetLength(), p, Measure(p), nStart < 0 ? 0 : nStart, true);
}

int LyString::Find(wchar_t c, int nStart) const
{
    if (nStart < 0)
        nStart = 0;
    int nLength = GetLength();
    if (nStart >= nLength)
        return -1;
    const wchar_t* p = std::wmemchr(m_pText + nStart, c, static_cast<size_t>(nLength - nStart));
    return p ? static_cast<int>(p - m_pText) : -1;
}

int LyString::ReverseFind(wchar_t c) const
{
    int i = GetLength() - 1;
    while (i >= 0 && m_pText[i] != c)
        --i;
    return i;
}

int LyString::ReverseFind(const wchar_t* p, bool bCaseSensitive) const
{
    return p ? ReverseFindText(m_pText, GetLength(), p, Measure(p), bCaseSensitive) : -1;
}

int LyString::GetSubAppearanceCount(const wchar_t* p, bool bCaseSensitive) const
{
    int nLength = GetLength();
    int nPatternLength = Measure(p);
    if (nPatternLength == 0 || nPatternLength > nLength)
        return 0;
    int nCount = 0;
    int nFound = FindText(m_pText, nLength, p, nPatternLength, 0, bCaseSensitive);
    while (nFound >= 0)
    {
        ++nCount;
        nFound = FindText(m_pText, nLength, p, nPatternLength, nFound + nPatternLength, bCaseSensitive);
    }
    return nCount;
}

// ---- Comparing

int LyString::CompareLeft(const wchar_t* p, bool bCaseSensitive, int nValueIfEmpty) const
{
    if (p == nullptr || *p == 0)
        return nValueIfEmpty;
    if (bCaseSensitive)
        return std::wcsncmp(m_pText, p, std::wcslen(p));
    const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
    // The terminator of a shorter string differs from the character of p, so that nothing is read behind it.
    for (const wchar_t* pText = m_pText; *p; ++p, ++pText)
    {
        int nText = globals.ToLower(*pText);
        int nOther = globals.ToLower(*p);
        if (nText != nOther)
            return nText < nOther ? -1 : 1;
    }
    return 0;
}

bool LyString::BeginsWith(const wchar_t* p, bool bIgnoreCase) const { return CompareLeft(p, !bIgnoreCase, 0) == 0; }

namespace
{
bool SameCharacter(wchar_t c1, wchar_t c2, bool bIgnoreCase)
{
    return c1 == c2 || (bIgnoreCase && EqualsFolded(LyStringGlobals::GetGlobals(), &c1, &c2, 1));
}
} // namespace

bool LyString::BeginsWith(wchar_t c, bool bIgnoreCase) const { return SameCharacter(m_pText[0], c, bIgnoreCase); }

bool LyString::EndsWith(wchar_t c, bool bIgnoreCase) const
{
    return SameCharacter(IsEmpty() ? L'\0' : m_pText[GetLength() - 1], c, bIgnoreCase);
}
