// Editing a document: new elements and attributes as text.

#include "MarkupDetails.h"
#include <cwchar>

using namespace MarkupDetails;

namespace
{
constexpr int END_TAG_MARKS = 3; // "</" and ">"

// Whether it is read back as one name, by the parser and in paths.
bool IsName(const wchar_t* pName)
{
    return pName != nullptr && *pName != 0 && pName[std::wcscspn(pName, L" \t\n\r<>=\\/?!\"'[]")] == 0;
}

// A new element in words, and how long its tags are.
struct NEW_ELEMENT
{
    LyString strText;
    int nStartTag = 0;
    int nEndTag = 0;
};

NEW_ELEMENT WriteElement(const wchar_t* pName, const wchar_t* pValue, int nFlags)
{
    NEW_ELEMENT element;
    const LyString strName(pName);
    if (pValue != nullptr && *pValue != 0)
    {
        const LyString strValue = (nFlags & MARKUP_EDIT_CDATA) != 0 ? CMarkup::x_EncodeCDATASection(pValue)
                                                                    : CMarkup::EscapeText(pValue, nFlags);
        element.nStartTag = strName.GetLength() + 2; // "<" and ">"
        element.nEndTag = strName.GetLength() + END_TAG_MARKS;
        element.strText = L"<" + strName + L">" + strValue + L"</" + strName + L">";
        return element;
    }
    const wchar_t* pEnd = L"/>";
    if ((nFlags & MARKUP_EDIT_NO_END_TAG) != 0)
        pEnd = L">";
    else if ((nFlags & MARKUP_EDIT_BLANK_IN_EMPTY) != 0)
        pEnd = L" />";
    element.strText = L"<" + strName + pEnd;
    element.nStartTag = element.strText.GetLength();
    return element;
}
// Which part of the text a new value takes the place of, and what is written there.
struct ATTRIBUTE_CHANGE
{
    int nOffset;
    int nReplaced;
    LyString strText;
};

// Only the value of an attribute that is there is replaced, with its quotes; a new one goes right behind the tag name.
ATTRIBUTE_CHANGE GetChange(const CMarkup& markup, int nPos, const wchar_t* pName, const wchar_t* pValue)
{
    const LyString strValue = L"\"" + CMarkup::EscapeText(pValue, MARKUP_EDIT_ATTRIBUTE) + L"\"";
    CMarkup::TokenPos token(markup.m_strDocument, markup.m_nDocFlags);
    token.m_nNext = markup.x_GetPos(nPos).m_nStart + 1;
    const int nNameEnd = SkipName(token.m_pDocument, token.m_nNext);
    if (!CMarkup::x_FindAttrib(token, pName))
        return {nNameEnd, 0, L" " + LyString(pName) + L"=" + strValue};
    if ((token.m_nTokenFlags & MARKUP_TOKEN_QUOTED) != 0)
        return {token.m_nLeft - 1, token.GetLength() + 2, strValue};
    // The slash that makes the element empty reads as part of a value without quotes, but it stays.
    const bool bSlash = token.GetLength() > 0 && token.m_pDocument[token.m_nRight] == L'>' &&
                        token.m_pDocument[token.m_nRight - 1] == L'/';
    return {token.m_nLeft, token.GetLength() - (bSlash ? 1 : 0), strValue};
}

unsigned int GetChildLevel(const CMarkup& markup, int nParent)
{
    const unsigned int nMaxLevel = MARKUP_POSITION_LEVEL;
    const unsigned int nLevel = markup.x_GetPos(nParent).m_nFlags & nMaxLevel;
    return nParent == 0 ? 0 : nLevel < nMaxLevel ? nLevel + 1 : nMaxLevel;
}
} // namespace

bool CMarkup::x_SetAttrib(int nPos, const wchar_t* pName, const wchar_t* pValue)
{
    if (!x_IsElement(nPos) || !IsName(pName))
        return false;
    const ATTRIBUTE_CHANGE change = GetChange(*this, nPos, pName, pValue);
    const int nShift = change.strText.GetLength() - change.nReplaced;
    MARKUP_POSITION& pos = x_GetPos(nPos);
    const int nTag = pos.GetStartTagLength();
    if (nShift > MARKUP_POSITION::MAX_START_TAG - nTag ||
        !x_DocChange(change.nOffset, change.nReplaced, change.strText))
        return false;
    pos.SetTagLengths(nTag + nShift, pos.GetEndTagLength());
    pos.m_nLength += nShift;
    x_Adjust(nPos, nShift, false);
    return true;
}

bool CMarkup::x_AddElem(const wchar_t* pName, const wchar_t* pValue, int nFlags)
{
    const bool bChild = (nFlags & MARKUP_EDIT_AS_CHILD) != 0;
    const bool bValue = pValue != nullptr && *pValue != 0;
    const bool bNoEndTag = (nFlags & MARKUP_EDIT_NO_END_TAG) != 0;
    if (!IsName(pName) || !IsNameStart(*pName) || (bValue && bNoEndTag) || (bChild && m_nMainPos == 0))
        return false;
    const NEW_ELEMENT element = WriteElement(pName, pValue, nFlags);
    if (element.nStartTag > MARKUP_POSITION::MAX_START_TAG || element.nEndTag > MARKUP_POSITION::MAX_END_TAG)
        return false;
    const int nPos = x_GetFreePos();
    if (nPos == 0)
        return false;
    MARKUP_POSITION& pos = x_GetPos(nPos);
    pos = {};
    const int nParent = bChild ? m_nMainPos : m_nParentPos;
    int nPrevious = bChild ? m_nChildPos : m_nMainPos;
    NodePos node;
    node.m_nFlags = nFlags;
    node.m_strText = element.strText;
    if (!x_InsertNew(nParent, nPrevious, node))
    {
        pos.m_nNextSibling = m_nDeletedPos;
        m_nDeletedPos = nPos;
        return false;
    }
    pos.m_nStart = node.m_nStart;
    pos.m_nLength = node.m_nLength;
    pos.SetTagLengths(element.nStartTag, element.nEndTag);
    pos.m_nFlags = GetChildLevel(*this, nParent) | (bNoEndTag ? MARKUP_POSITION_NO_END_TAG : 0U);
    x_LinkElem(nParent, nPrevious, nPos);
    m_nChildPos = bChild ? nPos : 0;
    m_nMainPos = bChild ? m_nMainPos : nPos;
    return true;
}
