// Reading what an element holds, and the ways in which text is written into a document.

#include "LyStringDetails.h"
#include "LyStringWriter.h"
#include "MarkupDetails.h"
#include <cwchar>

using namespace MarkupDetails;

namespace
{
// LyString::Htmlify: 2 has no meaning of its own there, 4 apostrophes, 8 quotes, 16 and 32 control characters to "?".
constexpr int HTMLIFY_DATA = 50;
constexpr int HTMLIFY_ATTRIBUTE = 62;

constexpr wchar_t CDATA_START[] = L"<![CDATA[";
constexpr wchar_t CDATA_END[] = L"]]>";
constexpr int CDATA_START_CHARS = 9;
constexpr int CDATA_END_CHARS = 3;

constexpr int MAX_REFERENCE_CHARS = 7; // between "&#" or "&#x" and ";"

struct ENTITY
{
    const wchar_t* pName; // behind the "&"
    int nLength;
    wchar_t c;
};
constexpr ENTITY s_aryEntities[] = {
    {L"lt;", 3, L'<'}, {L"amp;", 4, L'&'}, {L"gt;", 3, L'>'}, {L"apos;", 5, L'\''}, {L"quot;", 5, L'"'},
};

// What a reference stands for: p and nLength are what follows the "#". 0 if it stands for nothing.
wchar_t ReadCharacterReference(const wchar_t* p, int nLength, int& nUsed)
{
    const bool bHex = nLength > 0 && *p == L'x';
    const int nDigits = bHex ? 1 : 0;
    int nEnd = nDigits;
    while (nEnd < nLength && nEnd - nDigits < MAX_REFERENCE_CHARS && p[nEnd] != L';')
        ++nEnd;
    if (nEnd >= nLength || p[nEnd] != L';')
        return 0;
    LyString strNumber;
    strNumber.Assign(p + nDigits, nEnd - nDigits);
    nUsed = nEnd + 1;
    // Deliberate: any number but 0 is a character, also one that Unicode does not have. Strings hold them all, and what
    // another writer put into a document comes back as it was.
    return bHex ? static_cast<wchar_t>(strNumber.GetHex()) : strNumber.GetInt();
}

// Reads what follows a "&". 0 if it is no entity.
wchar_t ReadEntity(const wchar_t* p, int nLength, int& nUsed)
{
    if (nLength > 0 && *p == L'#')
    {
        const wchar_t c = ReadCharacterReference(p + 1, nLength - 1, nUsed);
        ++nUsed;
        return c;
    }
    for (const ENTITY& entity : s_aryEntities)
    {
        if (entity.nLength > nLength || std::wcsncmp(p, entity.pName, static_cast<size_t>(entity.nLength)) != 0)
            continue;
        nUsed = entity.nLength;
        return entity.c;
    }
    return 0;
}

LyString UnescapeRange(const wchar_t* p, int nStart, int nEnd)
{
    return nEnd > nStart ? CMarkup::UnescapeText(p + nStart, nEnd - nStart) : LyString();
}

// The text without its first nLeft and last nRight characters; empty if it has no more than those.
LyString StripRange(const wchar_t* p, int nStart, int nEnd, int nLeft, int nRight)
{
    LyString str;
    if (nEnd - nStart > nLeft + nRight)
        str.Assign(p + nStart + nLeft, nEnd - nStart - nLeft - nRight);
    return str;
}

LyString GetValue(CMarkup::TokenPos& token, const wchar_t* pName)
{
    if (!CMarkup::x_FindAttrib(token, pName))
        return LyString();
    return UnescapeRange(token.m_pDocument, token.m_nLeft, token.m_nRight);
}

// What a node says, without its marks.
LyString GetNodeText(const wchar_t* p, int nType, int nStart, int nEnd)
{
    switch (nType)
    {
    case MARKUP_NODE_TEXT:
    case MARKUP_NODE_WHITE_SPACE:
        return UnescapeRange(p, nStart, nEnd);
    case MARKUP_NODE_CDATA:
        return StripRange(p, nStart, nEnd, CDATA_START_CHARS, CDATA_END_CHARS);
    case MARKUP_NODE_COMMENT:
        return StripRange(p, nStart, nEnd, 4, 3); // "<!--" and "-->"
    case MARKUP_NODE_INSTRUCTION:
        return StripRange(p, nStart, nEnd, 2, 2); // "<?" and "?>"
    case MARKUP_NODE_DOCUMENT_TYPE:
        return StripRange(p, nStart, nEnd, 2, 1); // "<!" and ">"
    default:
        return LyString();
    }
}

// Text and CDATA sections among other nodes. White space between these belongs to the layout of the document.
LyString JoinText(const CMarkup& markup, int nStart, int nEnd)
{
    LyString str;
    CMarkup::NodePos node;
    CMarkup::TokenPos token(markup.m_strDocument, markup.m_nDocFlags);
    token.m_nNext = nStart;
    while (token.m_nNext < nEnd)
    {
        const int nType = CMarkup::x_ParseNode(token, node);
        if (nType == MARKUP_NODE_DOCUMENT_END)
            break;
        const int nNodeEnd = token.m_nNext < nEnd ? token.m_nNext : nEnd;
        if (nType == MARKUP_NODE_TEXT || nType == MARKUP_NODE_CDATA)
            str += GetNodeText(token.m_pDocument, nType, node.m_nStart, nNodeEnd);
    }
    return str;
}

// Whether there is a current node, and it lies in the document.
bool HasNode(const CMarkup& markup, int nPos)
{
    return nPos == markup.m_nMainPos && markup.m_nNodeLength > 0 && markup.m_nNodeOffset >= 0 &&
           markup.m_nNodeLength <= markup.m_strDocument.GetLength() - markup.m_nNodeOffset;
}

bool HasInstruction(const CMarkup& markup, int nPos)
{
    return markup.m_nNodeType == MARKUP_NODE_INSTRUCTION && HasNode(markup, nPos);
}
} // namespace

LyString CMarkup::x_GetTagName(int nPos) const
{
    if (HasInstruction(*this, nPos))
    {
        const LyString strNode = x_GetData(nPos);
        TokenPos token(strNode, m_nDocFlags);
        (void)x_FindName(token); // without one the token is empty
        return x_GetToken(token);
    }
    return x_IsElement(nPos) ? x_GetToken(GetNameToken(*this, nPos)) : LyString();
}

LyString CMarkup::x_GetAttrib(int nPos, const wchar_t* pName) const
{
    if (pName == nullptr || *pName == 0)
        return LyString();
    if (HasInstruction(*this, nPos))
    {
        const LyString strNode = x_GetData(nPos); // it ends where it ends, whatever quotes are open
        TokenPos token(strNode, m_nDocFlags);
        return GetValue(token, pName);
    }
    if (!x_IsElement(nPos))
        return LyString();
    TokenPos token(m_strDocument, m_nDocFlags);
    token.m_nNext = x_GetPos(nPos).m_nStart + 1;
    return GetValue(token, pName);
}

LyString CMarkup::x_GetData(int nPos) const
{
    if (HasNode(*this, nPos))
        return GetNodeText(m_strDocument, m_nNodeType, m_nNodeOffset, m_nNodeOffset + m_nNodeLength);
    if (!x_IsElement(nPos))
        return LyString();
    const MARKUP_POSITION& pos = x_GetPos(nPos);
    const int nStart = pos.GetContentStart();
    const int nEnd = pos.GetContentEnd();
    if (pos.m_nFirstChild != 0 || !pos.HasContent() || nEnd <= nStart)
        return LyString();
    const wchar_t* pContent = m_strDocument + nStart;
    if (std::wmemchr(pContent, L'<', static_cast<size_t>(nEnd - nStart)) != nullptr)
        return JoinText(*this, nStart, nEnd);
    return UnescapeText(pContent, nEnd - nStart);
}

LyString CMarkup::EscapeText(const wchar_t* pText, int nFlags)
{
    LyString str(pText);
    str.Htmlify((nFlags & MARKUP_EDIT_ATTRIBUTE) != 0 ? HTMLIFY_ATTRIBUTE : HTMLIFY_DATA);
    return str;
}

LyString CMarkup::UnescapeText(const wchar_t* pText, int nLength)
{
    LyString str;
    if (pText == nullptr)
        return str;
    if (nLength < 0)
        nLength = LyStringDetails::Measure(pText);
    const wchar_t* const pEnd = pText + nLength;
    const wchar_t* pAnd = std::wmemchr(pText, L'&', static_cast<size_t>(nLength));
    if (pAnd == nullptr)
    {
        str.Assign(pText, nLength);
        return str;
    }
    LyStringWriter writer(str, nLength);
    while (pAnd != nullptr)
    {
        int nUsed = 0;
        const wchar_t c = ReadEntity(pAnd + 1, static_cast<int>(pEnd - pAnd) - 1, nUsed);
        writer.Put(pText, static_cast<int>(pAnd - pText));
        writer.Put(c != 0 ? c : L'&');
        pText = pAnd + 1 + (c != 0 ? nUsed : 0);
        pAnd = std::wmemchr(pText, L'&', static_cast<size_t>(pEnd - pText));
    }
    writer.Put(pText, static_cast<int>(pEnd - pText));
    writer.Finish();
    return str;
}

// An end mark within the text is cut in two, and each half goes to a section of its own.
LyString CMarkup::x_EncodeCDATASection(const wchar_t* pText)
{
    LyString str(pText);
    str.Replace(CDATA_END, L"]]]]><![CDATA[>");
    return CDATA_START + str + CDATA_END;
}
