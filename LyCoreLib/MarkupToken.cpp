// The tokens of a tag: names, attributes and their values.

#include "MarkupDetails.h"
#include <cwchar>

using namespace MarkupDetails;

namespace
{
constexpr wchar_t NAME_ENDS[] = L" \t\n\r<>=\\/?!";

// The end of the text counts as one of the characters.
bool IsOneOf(wchar_t c, const wchar_t* pCharacters) { return std::wcschr(pCharacters, c) != nullptr; }

bool IsValueEnd(wchar_t c) { return IsSpace(c) || c == L'>' || c == 0; }
bool IsTokenEnd(wchar_t c) { return IsValueEnd(c) || c == L'=' || c == L'/' || c == L'?'; }

// Makes a quoted text, or a run to its end, the token. A quote within a run is followed to its other end:
// so a tag ends here at the same ">" at which it ended for the parser, whatever stands in it.
template <class ENDS>
void ReadToken(CMarkup::TokenPos& token, ENDS isEnd)
{
    const wchar_t* const pText = token.m_pDocument;
    int nAt = token.m_nNext;
    token.m_nLeft = nAt;
    token.m_nTokenFlags &= ~MARKUP_TOKEN_QUOTED;
    if (IsQuote(pText[nAt]))
    {
        token.m_nTokenFlags |= MARKUP_TOKEN_QUOTED;
        token.m_nLeft = nAt + 1;
        token.m_nRight = FindClosingQuote(pText, nAt);
        token.m_nNext = token.m_nRight + (pText[token.m_nRight] != 0 ? 1 : 0);
        return;
    }
    while (!isEnd(pText[nAt]))
    {
        if (IsQuote(pText[nAt]))
            nAt = FindClosingQuote(pText, nAt);
        if (pText[nAt] != 0)
            ++nAt;
    }
    token.m_nRight = nAt;
    token.m_nNext = nAt;
}

// Goes to the next name within a tag. False at the end of the tag.
bool ReadAttributeName(CMarkup::TokenPos& token)
{
    const wchar_t* const pText = token.m_pDocument;
    while (pText[token.m_nNext] != 0 && pText[token.m_nNext] != L'>' && IsTokenEnd(pText[token.m_nNext]))
        ++token.m_nNext;
    if (pText[token.m_nNext] == 0 || pText[token.m_nNext] == L'>')
        return false;
    ReadToken(token, IsTokenEnd);
    return true;
}

// Reads the value behind a name. False if no "=" follows.
bool ReadAttributeValue(CMarkup::TokenPos& token)
{
    const int nEquals = SkipSpace(token.m_pDocument, token.m_nNext);
    if (token.m_pDocument[nEquals] != L'=')
        return false;
    token.m_nNext = SkipSpace(token.m_pDocument, nEquals + 1);
    ReadToken(token, IsValueEnd);
    return true;
}
} // namespace

bool CMarkup::TokenPos::Match(const wchar_t* pName) const
{
    const int nLength = GetLength();
    const bool bIgnoreCase = (m_nTokenFlags & MARKUP_IGNORE_CASE) != 0;
    return BeginsWith(pName, m_pDocument + m_nLeft, nLength, bIgnoreCase) && IsOneOf(pName[nLength], L" =/[]");
}

bool CMarkup::x_FindAny(const wchar_t* pText, int& nOffset)
{
    nOffset = SkipSpace(pText, nOffset);
    return pText[nOffset] != 0;
}

bool CMarkup::x_FindName(TokenPos& token)
{
    if (!x_FindAny(token.m_pDocument, token.m_nNext))
    {
        token.m_nLeft = token.m_nRight = token.m_nNext;
        return false;
    }
    token.m_nLeft = token.m_nNext;
    while (!IsOneOf(token.m_pDocument[token.m_nNext], NAME_ENDS))
        ++token.m_nNext;
    if (token.m_nNext == token.m_nLeft)
        ++token.m_nNext; // a separator, which is a token of its own
    token.m_nRight = token.m_nNext;
    return true;
}

bool CMarkup::x_FindAttrib(TokenPos& token, const wchar_t* pName, int n)
{
    const bool bByNumber = pName == nullptr || *pName == 0;
    token.m_nNext = SkipName(token.m_pDocument, token.m_nNext); // the element's
    while (ReadAttributeName(token))
    {
        const TokenPos name = token;
        const bool bQuoted = (token.m_nTokenFlags & MARKUP_TOKEN_QUOTED) != 0;
        const bool bWanted = bByNumber ? n-- == 0 : !bQuoted && token.Match(pName);
        const bool bHasValue = ReadAttributeValue(token);
        if (bWanted && bByNumber)
        {
            token.m_nLeft = name.m_nLeft;
            token.m_nRight = name.m_nRight;
            token.m_nTokenFlags = name.m_nTokenFlags;
            return true;
        }
        if (bWanted && bHasValue)
            return true;
    }
    return false;
}

LyString CMarkup::x_GetToken(const TokenPos& token)
{
    LyString str;
    if (token.GetLength() > 0)
        str.Assign(token.m_pDocument + token.m_nLeft, token.GetLength());
    return str;
}
