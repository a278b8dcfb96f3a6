// Reading a document: from the nodes of the text to the tree of position records. One loop with a stack of its own.

#include "LyStringFormat.h"
#include "MarkupDetails.h"
#include "MarkupOpenNames.h"
#include <cwchar>

using namespace MarkupDetails;

namespace
{
constexpr unsigned int ERROR_FLAGS = MARKUP_POSITION_ILL_FORMED | MARKUP_POSITION_ERROR;
constexpr int CHARACTERS_PER_ELEMENT = 64; // the estimate that saves typical documents a growth
constexpr int SPARE_POSITIONS = 8;

class ElementParser
{
public:
    ElementParser(CMarkup& markup, int nParent, CMarkup::TokenPos& token)
        : m_Markup(markup), m_Token(token), m_nParent(nParent), m_nCurrent(nParent),
          m_Names(token.m_pDocument, (token.m_nTokenFlags & MARKUP_IGNORE_CASE) != 0)
    {
    }
    int Run();

private:
    bool OpenElement();
    void EndTag();
    void EndWithoutTags(int nCount, bool bByEndTag);
    int MoveChildrenBehind(int nPos, int nLastChild, int nNewParent);
    int FindOpenElement();
    bool IsNameOf(const CMarkup::NodePos& open) const;
    void Pop();
    void MarkError();
    void Fail(const LyString& strError);
    void DescribeMissingEndTag(bool bByEndTag);

    CMarkup& m_Markup;
    CMarkup::TokenPos& m_Token;
    CMarkup::NodePos m_Node;
    CMarkup::NodeStack m_Open;
    int m_nParent;
    int m_nCurrent; // the innermost open element
    int m_nFirst = 0;
    OpenNames m_Names;
    bool m_bNamesCounted = false; // m_Names is kept from the first end tag on that matched nothing
};

int ElementParser::Run()
{
    m_Markup.m_strError.Empty();
    bool bMemory = true;
    while (bMemory)
    {
        const int nType = CMarkup::x_ParseNode(m_Token, m_Node);
        if (nType == MARKUP_NODE_DOCUMENT_END)
            break;
        if (nType == MARKUP_NODE_ERROR)
            Fail(m_Node.m_strText);
        else if (nType == MARKUP_NODE_START_TAG)
            bMemory = OpenElement();
        else if (nType == MARKUP_NODE_END_TAG)
            EndTag();
    }
    if (!bMemory)
        Fail(L"Out of memory");
    EndWithoutTags(m_Open.GetSize(), false);
    return m_nFirst;
}

bool ElementParser::OpenElement()
{
    const bool bEmpty = (m_Node.m_nFlags & MARKUP_NODE_EMPTY_ELEMENT) != 0;
    const int nPos = m_Markup.x_GetFreePos();
    if (nPos == 0 || (!bEmpty && !m_Open.Push(m_Node.m_nStart, m_Node.m_nLength)))
        return false;
    const int nDepth = m_Open.GetSize() - (bEmpty ? 0 : 1) + m_Markup.x_GetPos(m_nParent).GetLevel();
    const int nMaxLevel = MARKUP_POSITION_LEVEL;
    MARKUP_POSITION& pos = m_Markup.x_GetPos(nPos);
    pos = {};
    pos.m_nStart = m_Node.m_nStart;
    pos.m_nLength = m_Node.m_nLength;
    pos.SetTagLengths(m_Node.m_nLength, 0);
    pos.m_nFlags = static_cast<unsigned int>(nDepth < nMaxLevel ? nDepth : nMaxLevel);
    const int nFirstSibling = m_Markup.x_GetPos(m_nCurrent).m_nFirstChild;
    m_Markup.x_LinkElem(m_nCurrent, nFirstSibling ? m_Markup.x_GetPos(nFirstSibling).m_nPreviousSibling : 0, nPos);
    if (m_nFirst == 0)
        m_nFirst = nPos;
    if (bEmpty)
        return true;
    m_nCurrent = nPos;
    if (m_bNamesCounted)
        m_Names.Add(m_Node.m_nStart);
    return true;
}

void ElementParser::EndTag()
{
    const int nDepth = FindOpenElement();
    if (nDepth < 0)
    {
        MarkError();
        if (m_Markup.m_strError.IsEmpty())
            m_Markup.m_strError.Format(L"No start tag for end tag '%s' at offset %d", CMarkup::x_GetToken(m_Token),
                                       m_Node.m_nStart);
        return;
    }
    EndWithoutTags(m_Open.GetSize() - 1 - nDepth, true);
    MARKUP_POSITION& pos = m_Markup.x_GetPos(m_nCurrent);
    pos.m_nLength = m_Token.m_nNext - pos.m_nStart;
    pos.SetTagLengths(pos.GetStartTagLength(), m_Node.m_nLength);
    m_nCurrent = pos.m_nParent;
    Pop();
}

// Closes the innermost nCount elements: they become empty, and their children go to the element around them all. That
// is done in one walk from the inside out: a child changes its parent once, however deep the elements stand.
void ElementParser::EndWithoutTags(int nCount, bool bByEndTag)
{
    if (nCount < 1)
        return;
    DescribeMissingEndTag(bByEndTag);
    int nTarget = m_nCurrent;
    for (int i = 0; i < nCount; ++i)
        nTarget = m_Markup.x_GetPos(nTarget).m_nParent;
    int nLast = 0;  // of all that move
    int nInner = 0; // the element closed before, the last child of this one
    for (int i = 0; i < nCount; ++i)
    {
        const int nOuter = m_Markup.x_GetPos(m_nCurrent).m_nParent;
        const int nLastChild = MoveChildrenBehind(m_nCurrent, nInner, nTarget);
        if (i == 0)
            nLast = nLastChild;
        nInner = m_nCurrent;
        m_nCurrent = nOuter;
        Pop();
    }
    const int nFirst = m_Markup.x_GetPos(nTarget).m_nFirstChild;
    m_Markup.x_GetPos(nFirst).m_nPreviousSibling = nLast;
    m_Markup.x_GetPos(nTarget).m_nFlags |= MARKUP_POSITION_ILL_FORMED;
    m_Markup.x_GetPos(m_nParent).m_nFlags |= MARKUP_POSITION_ILL_FORMED;
}

// Makes an element empty and its children, up to nLastChild (0: to the end of the list), its next siblings.
// Returns the last child, or the element itself if it has none.
int ElementParser::MoveChildrenBehind(int nPos, int nLastChild, int nNewParent)
{
    MARKUP_POSITION& pos = m_Markup.x_GetPos(nPos);
    pos.m_nFlags |= MARKUP_POSITION_NO_END_TAG;
    pos.m_nLength = pos.GetStartTagLength();
    const int nFirst = pos.m_nFirstChild;
    if (nFirst == 0)
        return nPos;
    int nChild = nFirst;
    for (;;)
    {
        MARKUP_POSITION& child = m_Markup.x_GetPos(nChild);
        child.m_nParent = nNewParent;
        if (nChild == nLastChild || child.m_nNextSibling == 0)
            break;
        nChild = child.m_nNextSibling;
    }
    pos.m_nFirstChild = 0;
    pos.m_nNextSibling = nFirst;
    MARKUP_POSITION& first = m_Markup.x_GetPos(nFirst);
    first.m_nPreviousSibling = nPos;
    first.m_nFlags &= ~static_cast<unsigned int>(MARKUP_POSITION_FIRST_CHILD);
    return nChild;
}

// The depth of the innermost open element with the name of the end tag, or -1. What a successful search passes is
// closed by it, so only searches that fail could add up; from the first of these on, the names are counted.
int ElementParser::FindOpenElement()
{
    const int nInnermost = m_Open.GetSize() - 1;
    if (nInnermost >= 0 && IsNameOf(m_Open[nInnermost]))
        return nInnermost;
    if (m_bNamesCounted && !m_Names.Contains(m_Token))
        return -1;
    for (int i = nInnermost - 1; i >= 0; --i)
    {
        if (IsNameOf(m_Open[i]))
            return i;
    }
    if (m_bNamesCounted)
        return -1;
    m_bNamesCounted = true;
    for (int i = 0; i <= nInnermost; ++i)
        m_Names.Add(m_Open[i].m_nStart);
    return -1;
}

bool ElementParser::IsNameOf(const CMarkup::NodePos& open) const
{
    const wchar_t* pName = m_Token.m_pDocument + open.m_nStart + 1;
    const int nLength = m_Token.GetLength();
    const bool bIgnoreCase = (m_Token.m_nTokenFlags & MARKUP_IGNORE_CASE) != 0;
    return BeginsWith(pName, m_Token.m_pDocument + m_Token.m_nLeft, nLength, bIgnoreCase) && IsNameEnd(pName[nLength]);
}

void ElementParser::Pop()
{
    if (m_bNamesCounted)
        m_Names.Remove(m_Open[m_Open.GetSize() - 1].m_nStart);
    m_Open.Pop();
}

void ElementParser::MarkError()
{
    m_Markup.x_GetPos(m_nCurrent).m_nFlags |= ERROR_FLAGS;
    m_Markup.x_GetPos(m_nParent).m_nFlags |= ERROR_FLAGS;
}

// Only the first error is kept in words.
void ElementParser::Fail(const LyString& strError)
{
    MarkError();
    if (m_Markup.m_strError.IsEmpty())
        m_Markup.m_strError = strError;
}

// Of several elements the innermost is named: it is the first that should have been closed.
void ElementParser::DescribeMissingEndTag(bool bByEndTag)
{
    if (!m_Markup.m_strError.IsEmpty())
        return;
    const int nStart = m_Open[m_Open.GetSize() - 1].m_nStart;
    const LyString strName = m_Markup.x_GetTagName(m_nCurrent);
    if (bByEndTag)
        m_Markup.m_strError.Format(L"End tag '%s' at offset %d does not match start tag '%s' at offset %d",
                                   CMarkup::x_GetToken(m_Token), m_Node.m_nStart, strName, nStart);
    else
        m_Markup.m_strError.Format(L"Element '%s' at offset %d not ended", strName, nStart);
}
} // namespace

int CMarkup::x_ParseElem(int nParent, TokenPos& token) { return ElementParser(*this, nParent, token).Run(); }

bool CMarkup::SetDoc(const wchar_t* pDocument)
{
    m_strDocument = pDocument;
    m_strError.Empty();
    return x_ParseDoc();
}

bool CMarkup::SetDoc(const LyString& strDocument)
{
    m_strDocument = strDocument;
    // A zero would end the text for the parser and not for those who edit it.
    if (const int nLength = static_cast<int>(std::wcslen(m_strDocument)); nLength < m_strDocument.GetLength())
        m_strDocument.RemoveRight(m_strDocument.GetLength() - nLength);
    m_strError.Empty();
    return x_ParseDoc();
}

bool CMarkup::x_ParseDoc()
{
    const LyString strOldError = m_strError;
    m_strError.Empty();
    m_nParentPos = m_nMainPos = m_nChildPos = 0;
    m_nNodeType = m_nNodeOffset = m_nNodeLength = 0;
    m_nFreePos = 1;
    m_nDeletedPos = 0;
    delete[] m_pSavedPositions;
    m_pSavedPositions = nullptr;
    const int nLength = m_strDocument.GetLength();
    if (!x_AllocPosArray(nLength / CHARACTERS_PER_ELEMENT + SPARE_POSITIONS))
        return false;
    x_GetPos(0) = {};
    if (nLength == 0)
    {
        m_strError = L"Empty document";
    }
    else
    {
        TokenPos token(m_strDocument, m_nDocFlags);
        const int nRoot = x_ParseElem(0, token);
        x_GetPos(0).m_nLength = nLength;
        if (m_strError.IsEmpty() && nRoot == 0)
            m_strError = L"No root element";
        else if (m_strError.IsEmpty() && x_GetPos(nRoot).m_nNextSibling != 0)
            m_strError = L"Root element has sibling";
    }
    if (!strOldError.IsEmpty())
        m_strError = m_strError.IsEmpty() ? strOldError : strOldError + L", " + m_strError;
    return IsWellFormed();
}

bool CMarkup::IsWellFormed() const
{
    if (m_nAllocated == 0 || (x_GetPos(0).m_nFlags & ERROR_FLAGS) != 0)
        return false;
    const int nRoot = x_GetPos(0).m_nFirstChild;
    return nRoot != 0 && x_GetPos(nRoot).m_nNextSibling == 0;
}
