// Documents from hostile text: parsing, moving, paths, reading, editing, and texts through escaping and back.
//
// Input: one byte for each character. What follows the first zero is the value and the path of the operations.

#include "FuzzCheck.h"
#include "Tests/LyCoreLib/MarkupTestSupport.h"
#include <cstddef>
#include <cstdint>

namespace
{
constexpr int MAX_EDITED = 40; // elements; the text of each edit is moved

LyString ToText(const uint8_t*& pData, const uint8_t* pEnd)
{
    LyString str;
    while (pData < pEnd && *pData != 0)
        str += static_cast<wchar_t>(*pData++);
    if (pData < pEnd)
        ++pData;
    return str;
}

void ReadEverything(CMarkup& markup, const LyString& strName)
{
    for (int nPos = -1; nPos <= markup.m_nFreePos; ++nPos)
    {
        (void)markup.x_GetTagName(nPos);
        (void)markup.x_GetData(nPos);
        (void)markup.x_GetAttrib(nPos, strName);
        for (int i = 0; i < 3 && markup.x_IsElement(nPos); ++i)
        {
            CMarkup::TokenPos token(markup.GetDoc(), markup.m_nDocFlags);
            token.m_nNext = markup.x_GetPos(nPos).m_nStart + 1;
            if (CMarkup::x_FindAttrib(token, nullptr, i))
                (void)CMarkup::x_GetToken(token);
            Check(token.m_nNext < markup.x_GetPos(nPos).GetContentStart());
        }
    }
}

void CheckNodes(const LyString& strText)
{
    CMarkup::TokenPos token(strText, 0);
    CMarkup::NodePos node;
    int nEnd = 0;
    while (CMarkup::x_ParseNode(token, node) != MARKUP_NODE_DOCUMENT_END)
    {
        Check(node.m_nStart == nEnd && node.m_nLength > 0);
        nEnd = token.m_nNext;
    }
    Check(nEnd == strText.GetLength());
}

// After each edit the records fit the text, and what was written reads back.
void Edit(CMarkup& markup, const LyString& strValue, const LyString& strPath, int nFlags)
{
    if (markup.m_nFreePos > MAX_EDITED)
        return;
    LyString strSaved = strValue; // control characters change on their way, and only once
    strSaved = CMarkup::UnescapeText(CMarkup::EscapeText(strSaved, MARKUP_EDIT_ATTRIBUTE), -1);
    Check(CMarkup::UnescapeText(CMarkup::EscapeText(strSaved, 0), -1) == strSaved);
    const int nLast = markup.m_nFreePos;
    for (int nPos = 1; nPos < nLast; ++nPos)
    {
        Check(markup.x_SetAttrib(nPos, L"Name", strValue) && markup.x_GetAttrib(nPos, L"name") == strSaved);
        Check(CheckTree(markup));
        markup.m_nMainPos = nPos;
        markup.m_nParentPos = markup.x_GetPos(nPos).m_nParent;
        markup.m_nChildPos = 0;
        if (markup.x_AddElem(L"n", strValue, nFlags & ~MARKUP_EDIT_NO_END_TAG))
        {
            const int nNew = (nFlags & MARKUP_EDIT_AS_CHILD) != 0 ? markup.m_nChildPos : markup.m_nMainPos;
            Check(markup.x_GetData(nNew) == ((nFlags & MARKUP_EDIT_CDATA) != 0 ? strValue : strSaved));
        }
        Check(CheckTree(markup));
    }
    (void)markup.x_AddElem(strPath, nullptr, nFlags);
    Check(CheckTree(markup));
    CMarkup again(markup.GetDoc());
    Check(CheckTree(again));
    if (markup.GetError().IsEmpty())
        Check(again.m_nFreePos == markup.m_nFreePos);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 2)
        return 0;
    const int nFlags = (pData[0] & 0x17) | (pData[1] & 0x70) << 8;
    const uint8_t* pEnd = pData + nBytes;
    pData += 2;
    const LyString strText = ToText(pData, pEnd);
    const LyString strValue = ToText(pData, pEnd);
    const LyString strPath = ToText(pData, pEnd);

    CMarkup markup(strText);
    Check(CheckTree(markup));
    Check(!markup.IsWellFormed() || markup.GetError().IsEmpty());
    CheckNodes(strText);
    ReadEverything(markup, strValue);
    for (int i = 0; i < 100 && markup.FindElem(strPath); ++i)
        (void)((i & 1) != 0 ? markup.IntoElem() : markup.OutOfElem());
    Edit(markup, strValue, strPath, nFlags);
    return 0;
}
