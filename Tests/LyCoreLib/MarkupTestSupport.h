// What the tests and the fuzz targets of CMarkup share: a check that the records and the text agree.

#pragma once

#include "Markup.h"
#include <string>

inline std::wstring Text(const LyString& str)
{
    return {static_cast<const wchar_t*>(str), static_cast<size_t>(str.GetLength())};
}

// Checks the children of one element; counts them.
inline bool CheckChildren(const CMarkup& markup, int nParent, int& nElements)
{
    const MARKUP_POSITION& parent = markup.x_GetPos(nParent);
    const int nContentEnd = parent.GetContentEnd();
    int nFrom = parent.GetContentStart();
    int nPrevious = 0;
    for (int nPos = parent.m_nFirstChild; nPos != 0; nPos = markup.x_GetPos(nPos).m_nNextSibling)
    {
        if (!markup.x_IsElement(nPos))
            return false;
        const MARKUP_POSITION& pos = markup.x_GetPos(nPos);
        const bool bFirst = (pos.m_nFlags & MARKUP_POSITION_FIRST_CHILD) != 0;
        if (pos.m_nParent != nParent || bFirst != (nPrevious == 0) || (!bFirst && pos.m_nPreviousSibling != nPrevious))
            return false;
        if (pos.m_nStart < nFrom || pos.GetEnd() > nContentEnd || markup.m_strDocument[pos.m_nStart] != L'<' ||
            markup.m_strDocument[pos.GetContentStart() - 1] != L'>' || markup.m_strDocument[pos.GetEnd() - 1] != L'>')
            return false;
        if (pos.HasContent() && (markup.m_strDocument[pos.GetContentEnd()] != L'<' ||
                                 markup.m_strDocument[pos.GetContentEnd() + 1] != L'/'))
            return false;
        nFrom = pos.GetEnd();
        nPrevious = nPos;
        ++nElements;
    }
    return parent.m_nFirstChild == 0 || markup.x_GetPos(parent.m_nFirstChild).m_nPreviousSibling == nPrevious;
}

// Whether every record lies within its parent, behind its previous sibling, on tags of the text; and whether every
// position that is in use is in the tree once.
inline bool CheckTree(const CMarkup& markup)
{
    if (markup.m_nAllocated == 0)
        return true;
    if (markup.x_GetPos(0).m_nLength != markup.m_strDocument.GetLength())
        return false;
    int nElements = 0;
    for (int nPos = 0; nPos < markup.m_nFreePos; ++nPos)
    {
        if (!CheckChildren(markup, nPos, nElements))
            return false;
    }
    return markup.m_nDeletedPos != 0 || nElements == markup.m_nFreePos - 1;
}

// The tree in words: "a(b c(d))", with "!" behind an element without an end tag.
inline std::wstring Outline(const CMarkup& markup, int nParent = 0)
{
    std::wstring str;
    for (int nPos = markup.x_GetPos(nParent).m_nFirstChild; nPos != 0; nPos = markup.x_GetPos(nPos).m_nNextSibling)
    {
        if (!str.empty())
            str += L' ';
        str += Text(markup.x_GetTagName(nPos));
        if ((markup.x_GetPos(nPos).m_nFlags & MARKUP_POSITION_NO_END_TAG) != 0)
            str += L'!';
        if (markup.x_GetPos(nPos).m_nFirstChild != 0)
            str += L'(' + Outline(markup, nPos) + L')';
    }
    return str;
}
