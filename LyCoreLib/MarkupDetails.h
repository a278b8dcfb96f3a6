// What the parts of CMarkup share: the characters that names and white space are made of.

#pragma once

#include "Markup.h"

namespace MarkupDetails
{
inline bool IsSpace(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r'; }

// Where the name in a tag ends. The end of the text ends it, too. Most characters are letters, above all of these.
inline bool IsNameEnd(wchar_t c) { return c <= L'>' && (IsSpace(c) || c == L'/' || c == L'>' || c == 0); }

// Deliberate: everything above the accent grave begins a name, so that names of all scripts are read.
inline bool IsNameStart(wchar_t c) { return (c >= L'A' && c <= L'Z') || c == L'_' || c == L':' || c > L'`'; }

inline int SkipName(const wchar_t* pText, int nOffset)
{
    while (!IsNameEnd(pText[nOffset]))
        ++nOffset;
    return nOffset;
}

inline int SkipSpace(const wchar_t* pText, int nOffset)
{
    while (IsSpace(pText[nOffset]))
        ++nOffset;
    return nOffset;
}

inline bool IsQuote(wchar_t c) { return c == L'"' || c == L'\''; }

// From an opening quote to its closing one; to the end of the text if there is none.
inline int FindClosingQuote(const wchar_t* pText, int nOffset)
{
    const wchar_t cQuote = pText[nOffset++];
    while (pText[nOffset] != 0 && pText[nOffset] != cQuote)
        ++nOffset;
    return nOffset;
}

// Whether p1 begins with the nChars characters of p2, which has no zero among them.
inline bool BeginsWith(const wchar_t* p1, const wchar_t* p2, int nChars, bool bIgnoreCase)
{
    for (int i = 0; i < nChars; ++i)
    {
        if (p1[i] == p2[i])
            continue;
        if (!bIgnoreCase)
            return false;
        const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
        if (globals.ToLower(p1[i]) != globals.ToLower(p2[i]))
            return false;
    }
    return true;
}

// The name of the element at nPos as a token.
inline CMarkup::TokenPos GetNameToken(const CMarkup& markup, int nPos)
{
    CMarkup::TokenPos token(markup.m_strDocument, markup.m_nDocFlags);
    token.m_nLeft = markup.x_GetPos(nPos).m_nStart + 1;
    token.m_nRight = SkipName(token.m_pDocument, token.m_nLeft);
    token.m_nNext = token.m_nRight;
    return token;
}
} // namespace MarkupDetails
