// Editing a document: the text is changed in place, and the offsets behind the change move along.

#include "MarkupDetails.h"
#include <cwchar>

using namespace MarkupDetails;

namespace
{
constexpr wchar_t LINE_END[] = L"\r\n";
constexpr int LINE_END_CHARS = 2;

bool IsLineEnd(wchar_t c) { return c == L'\r' || c == L'\n'; }

// Behind the line end at the offset, if there is one.
int SkipLineEnd(const wchar_t* pText, int nOffset)
{
    if (pText[nOffset] == L'\r')
        ++nOffset;
    return pText[nOffset] == L'\n' ? nOffset + 1 : nOffset;
}

// Moves an element and all within it.
void MoveTree(CMarkup& markup, int nRoot, int nShift)
{
    int nPos = nRoot;
    for (;;)
    {
        MARKUP_POSITION& pos = markup.x_GetPos(nPos);
        pos.m_nStart += nShift;
        if (pos.m_nFirstChild != 0)
        {
            nPos = pos.m_nFirstChild;
            continue;
        }
        while (nPos != nRoot && markup.x_GetPos(nPos).m_nNextSibling == 0)
            nPos = markup.x_GetPos(nPos).m_nParent;
        if (nPos == nRoot)
            return;
        nPos = markup.x_GetPos(nPos).m_nNextSibling;
    }
}

int GetLastChild(const CMarkup& markup, int nParent)
{
    const int nFirst = markup.x_GetPos(nParent).m_nFirstChild;
    return nFirst != 0 ? markup.x_GetPos(nFirst).m_nPreviousSibling : 0;
}

// Turns "<a/>" into "<a></a>", and a "<a>" without an end tag, too. Nothing may stand in it.
bool OpenParent(CMarkup& markup, int nParent)
{
    const int nEnd = markup.x_GetPos(nParent).GetEnd();
    const LyString strEndTag = L"</" + markup.x_GetTagName(nParent) + L">";
    const wchar_t* pText = markup.m_strDocument;
    int nCut = nEnd - 1; // where the marks begin that are replaced
    while (pText[nCut - 1] == L'/' || IsSpace(pText[nCut - 1]))
        --nCut;
    if (strEndTag.GetLength() > MARKUP_POSITION::MAX_END_TAG ||
        !markup.x_DocChange(nCut, nEnd - nCut, L">" + strEndTag))
        return false;
    MARKUP_POSITION& pos = markup.x_GetPos(nParent);
    const int nShift = nCut + 1 + strEndTag.GetLength() - nEnd;
    pos.SetTagLengths(nCut + 1 - pos.m_nStart, strEndTag.GetLength());
    pos.m_nFlags &= ~static_cast<unsigned int>(MARKUP_POSITION_NO_END_TAG);
    pos.m_nLength += nShift;
    markup.x_Adjust(nParent, nShift, true);
    return true;
}

// Where a new child of nParent goes, and what it needs in front.
struct INSERTION
{
    int nOffset = 0;
    int nPrevious = 0; // the child in front of it; 0 if it becomes the first
    bool bLineEnd = false;
};

// At the end of the parent, which has room for content. A line of its own begins there.
INSERTION GetLastPlace(const CMarkup& markup, int nParent)
{
    INSERTION place;
    place.nOffset = markup.x_GetPos(nParent).GetContentEnd();
    place.nPrevious = GetLastChild(markup, nParent);
    const wchar_t* pText = markup.m_strDocument;
    place.bLineEnd = place.nOffset > 0 && !IsLineEnd(pText[place.nOffset - 1]);
    return place;
}

INSERTION GetPlaceInFrontOf(const CMarkup& markup, int nChild)
{
    INSERTION place;
    const MARKUP_POSITION& pos = markup.x_GetPos(nChild);
    place.nOffset = pos.m_nStart;
    if (markup.x_GetPos(pos.m_nParent).m_nFirstChild != nChild)
        place.nPrevious = pos.m_nPreviousSibling;
    return place;
}

// Behind the line end of the child, unless no line ends are wanted.
INSERTION GetPlaceBehind(const CMarkup& markup, int nChild, bool bLineEnds)
{
    INSERTION place;
    place.nOffset = markup.x_GetPos(nChild).GetEnd();
    place.nPrevious = nChild;
    if (bLineEnds)
        place.nOffset = SkipLineEnd(markup.m_strDocument, place.nOffset);
    return place;
}

INSERTION GetPlace(const CMarkup& markup, int nParent, int nRelative, int nFlags)
{
    const bool bInFront = (nFlags & MARKUP_EDIT_IN_FRONT) != 0;
    if (bInFront && nRelative == 0)
        nRelative = markup.x_GetPos(nParent).m_nFirstChild;
    if (nRelative == 0)
        return GetLastPlace(markup, nParent);
    return bInFront ? GetPlaceInFrontOf(markup, nRelative)
                    : GetPlaceBehind(markup, nRelative, (nFlags & MARKUP_EDIT_NO_LINE_END) == 0);
}
} // namespace

bool CMarkup::x_InsertNew(int nParent, int& nRelative, NodePos& node)
{
    if (m_nAllocated == 0 && !x_AllocPosArray(0))
        return false;
    if ((nParent != 0 && !x_IsElement(nParent)) || (nRelative != 0 && !x_IsElement(nRelative)))
        return false;
    if (nParent != 0 && !x_GetPos(nParent).HasContent() && !OpenParent(*this, nParent))
        return false;
    const INSERTION place = GetPlace(*this, nParent, nRelative, node.m_nFlags);
    const bool bLineEnds = (node.m_nFlags & MARKUP_EDIT_NO_LINE_END) == 0;
    const int nInFront = bLineEnds && place.bLineEnd ? LINE_END_CHARS : 0;
    const LyString strText = (nInFront != 0 ? LINE_END : L"") + node.m_strText + (bLineEnds ? LINE_END : L"");
    if (!x_DocChange(place.nOffset, 0, strText))
        return false;
    node.m_nStart = place.nOffset + nInFront;
    node.m_nLength = node.m_strText.GetLength();
    nRelative = place.nPrevious;
    x_AdjustForNode(nParent, nRelative, strText.GetLength());
    return true;
}

void CMarkup::x_LinkElem(int nParent, int nPrevious, int nPos)
{
    MARKUP_POSITION& pos = x_GetPos(nPos);
    MARKUP_POSITION& parent = x_GetPos(nParent);
    pos.m_nParent = nParent;
    if (nPrevious != 0)
    {
        MARKUP_POSITION& previous = x_GetPos(nPrevious);
        pos.m_nNextSibling = previous.m_nNextSibling;
        pos.m_nPreviousSibling = nPrevious;
        previous.m_nNextSibling = nPos;
        x_GetPos(pos.m_nNextSibling != 0 ? pos.m_nNextSibling : parent.m_nFirstChild).m_nPreviousSibling = nPos;
        return;
    }
    const int nNext = parent.m_nFirstChild;
    pos.m_nFlags |= MARKUP_POSITION_FIRST_CHILD;
    pos.m_nNextSibling = nNext;
    pos.m_nPreviousSibling = nPos;
    parent.m_nFirstChild = nPos;
    if (nNext == 0)
        return;
    MARKUP_POSITION& next = x_GetPos(nNext);
    pos.m_nPreviousSibling = next.m_nPreviousSibling;
    next.m_nPreviousSibling = nPos;
    next.m_nFlags &= ~static_cast<unsigned int>(MARKUP_POSITION_FIRST_CHILD);
}

bool CMarkup::x_DocChange(int nOffset, int nReplaced, const LyString& strText)
{
    const int nOld = m_strDocument.GetLength();
    if (nOffset < 0 || nOffset > nOld || nReplaced < 0 || nReplaced > nOld - nOffset)
        return false;
    if (&strText == &m_strDocument)
        return x_DocChange(nOffset, nReplaced, LyString(strText));
    const int nInserted = strText.GetLength();
    const long long nNew = static_cast<long long>(nOld) - nReplaced + nInserted;
    if (nNew > LyStringBuffer::MAX_CHARACTERS)
        return false;
    wchar_t* pText = m_strDocument.GetBuffer(static_cast<int>(nNew > nOld ? nNew : nOld), false, true);
    if (pText == nullptr)
        return false;
    const int nRest = nOld - nOffset - nReplaced;
    std::wmemmove(pText + nOffset + nInserted, pText + nOffset + nReplaced, static_cast<size_t>(nRest));
    std::wmemcpy(pText + nOffset, strText, static_cast<size_t>(nInserted));
    m_strDocument.ReleaseBuffer(static_cast<int>(nNew));
    m_nNodeLength = 0; // the current node may have moved
    return true;
}

void CMarkup::x_Adjust(int nPos, int nShift, bool bBehind)
{
    if (!bBehind)
    {
        for (int nChild = x_GetPos(nPos).m_nFirstChild; nChild != 0; nChild = x_GetPos(nChild).m_nNextSibling)
            MoveTree(*this, nChild, nShift);
    }
    if (nPos != 0)
        x_AdjustForNode(x_GetPos(nPos).m_nParent, nPos, nShift);
    else
        x_GetPos(0).m_nLength += nShift;
}

void CMarkup::x_AdjustForNode(int nParent, int nPos, int nShift)
{
    if (nShift == 0)
        return;
    int nNext = nPos != 0 ? x_GetPos(nPos).m_nNextSibling : x_GetPos(nParent).m_nFirstChild;
    for (;;)
    {
        for (; nNext != 0; nNext = x_GetPos(nNext).m_nNextSibling)
            MoveTree(*this, nNext, nShift);
        MARKUP_POSITION& parent = x_GetPos(nParent);
        parent.m_nLength += nShift;
        if (nParent == 0)
            return;
        nNext = parent.m_nNextSibling;
        nParent = parent.m_nParent;
    }
}
