// The scanner of CMarkup: where one node of the text ends and what it is. One pass over its characters.

#include "LyStringFormat.h"
#include "MarkupDetails.h"
#include <cwchar>

using namespace MarkupDetails;

namespace
{
bool IsLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

class NodeReader
{
public:
    NodeReader(CMarkup::TokenPos& token, CMarkup::NodePos& node)
        : m_Token(token), m_Node(node), m_pText(token.m_pDocument), m_nStart(token.m_nNext), m_nAt(token.m_nNext)
    {
    }

    int Read()
    {
        m_Node.m_nFlags = 0;
        int nType = MARKUP_NODE_DOCUMENT_END;
        if (m_pText[m_nAt] == L'<')
            nType = ReadMarkup();
        else if (m_pText[m_nAt] != 0)
            nType = ReadText();
        m_Node.m_nNodeType = nType;
        m_Node.m_nStart = m_nStart;
        m_Node.m_nLength = m_nAt - m_nStart;
        m_Token.m_nNext = m_nAt;
        return nType;
    }

private:
    int ReadText();
    int ReadMarkup();
    int ReadStartTag();
    int ReadEndTag();
    int ReadDeclaration();
    int ReadDocumentType();
    int ReadUntil(const wchar_t* pMark, int nFrom, int nType, const wchar_t* pWhat);
    void ReadName(int nFrom);
    int Incorrect(const wchar_t* pWhat, int nOffset);
    int Unterminated(const wchar_t* pWhat);

    CMarkup::TokenPos& m_Token;
    CMarkup::NodePos& m_Node;
    const wchar_t* m_pText;
    int m_nStart;
    int m_nAt; // behind what was read
};

int NodeReader::ReadText()
{
    m_nAt = SkipSpace(m_pText, m_nAt);
    if (m_pText[m_nAt] == 0 || m_pText[m_nAt] == L'<')
        return MARKUP_NODE_WHITE_SPACE;
    const wchar_t* pFrom = m_pText + m_nAt;
    const wchar_t* pEnd = std::wcschr(pFrom, L'<');
    m_nAt += pEnd != nullptr ? static_cast<int>(pEnd - pFrom) : static_cast<int>(std::wcslen(pFrom));
    return MARKUP_NODE_TEXT;
}

int NodeReader::ReadMarkup()
{
    const wchar_t c = m_pText[++m_nAt];
    if (IsNameStart(c))
        return ReadStartTag();
    switch (c)
    {
    case L'/':
        return ReadEndTag();
    case L'?':
        return ReadUntil(L"?>", m_nStart + 2, MARKUP_NODE_INSTRUCTION, L"Processing instruction");
    case L'!':
        return ReadDeclaration();
    case 0:
        return Unterminated(L"tag");
    default:
        return Incorrect(L"tag name character", m_nAt);
    }
}

void NodeReader::ReadName(int nFrom)
{
    m_Token.m_nLeft = nFrom;
    m_Token.m_nRight = SkipName(m_pText, nFrom);
    m_nAt = m_Token.m_nRight;
}

// Quotes are followed, so that an attribute value may hold a ">".
int NodeReader::ReadStartTag()
{
    ReadName(m_nAt);
    for (; m_pText[m_nAt] != L'>'; ++m_nAt)
    {
        if (m_pText[m_nAt] > L'>')
            continue; // all letters, the most of a tag
        if (IsQuote(m_pText[m_nAt]))
            m_nAt = FindClosingQuote(m_pText, m_nAt);
        if (m_pText[m_nAt] == 0)
            return Unterminated(L"Element tag");
    }
    if (m_pText[m_nAt - 1] == L'/')
        m_Node.m_nFlags = MARKUP_NODE_EMPTY_ELEMENT;
    ++m_nAt;
    if (m_nAt - m_nStart > MARKUP_POSITION::MAX_START_TAG)
        return Incorrect(L"tag length", m_nStart);
    return MARKUP_NODE_START_TAG;
}

int NodeReader::ReadEndTag()
{
    ReadName(m_nStart + 2);
    while (m_pText[m_nAt] != L'>')
    {
        if (m_pText[m_nAt] == 0)
            return Unterminated(L"Element end tag");
        ++m_nAt;
    }
    ++m_nAt;
    if (m_nAt - m_nStart > MARKUP_POSITION::MAX_END_TAG)
        return Incorrect(L"tag length", m_nStart);
    return MARKUP_NODE_END_TAG;
}

int NodeReader::ReadUntil(const wchar_t* pMark, int nFrom, int nType, const wchar_t* pWhat)
{
    const wchar_t* pFound = std::wcsstr(m_pText + nFrom, pMark);
    if (pFound == nullptr)
    {
        m_nAt = nFrom;
        return Unterminated(pWhat);
    }
    m_nAt = static_cast<int>(pFound - m_pText) + static_cast<int>(std::wcslen(pMark));
    return nType;
}

int NodeReader::ReadDeclaration()
{
    m_nAt = m_nStart + 2;
    switch (m_pText[m_nAt])
    {
    case L'-':
        ++m_nAt;
        if (m_pText[m_nAt] == L'-')
            return ReadUntil(L"-->", m_nAt + 1, MARKUP_NODE_COMMENT, L"Comment");
        return m_pText[m_nAt] != 0 ? Incorrect(L"comment tag", m_nAt) : Unterminated(L"Comment");
    case L'[':
        ++m_nAt;
        if (IsLetter(m_pText[m_nAt]) && m_pText[m_nAt] != L'C')
            return Incorrect(L"! tag", m_nAt);
        return ReadUntil(L"]]>", m_nAt, MARKUP_NODE_CDATA, L"CDATA Section");
    case L'D':
        return ReadDocumentType();
    case 0:
        return Unterminated(L"tag");
    default:
        return Incorrect(L"! tag", m_nAt);
    }
}

// The internal subset stands in brackets and holds declarations in angles of their own.
int NodeReader::ReadDocumentType()
{
    int nAngles = 0;
    int nBrackets = 0;
    for (; m_pText[m_nAt] != 0; ++m_nAt)
    {
        const wchar_t c = m_pText[m_nAt];
        if (c == L'<')
            ++nAngles;
        else if (c == L'[')
            ++nBrackets;
        else if (c == L']' && nBrackets > 0)
            --nBrackets;
        else if (c == L'>' && nAngles > 0)
            --nAngles;
        else if (c == L'>' && nBrackets == 0)
        {
            ++m_nAt;
            return MARKUP_NODE_DOCUMENT_TYPE;
        }
    }
    return Unterminated(L"Doctype");
}

// Reading goes on where it stopped. A text full of errors is read quickly: only the first message is made.
int NodeReader::Incorrect(const wchar_t* pWhat, int nOffset)
{
    if (m_Node.m_strText.IsEmpty())
        m_Node.m_strText.Format(L"Incorrect %s at offset %d", pWhat, nOffset);
    return MARKUP_NODE_ERROR;
}

// Takes the rest of the text.
int NodeReader::Unterminated(const wchar_t* pWhat)
{
    m_nAt += static_cast<int>(std::wcslen(m_pText + m_nAt));
    if (m_Node.m_strText.IsEmpty())
        m_Node.m_strText.Format(L"%s at offset %d unterminated", pWhat, m_nStart);
    return MARKUP_NODE_ERROR;
}
} // namespace

int CMarkup::x_ParseNode(TokenPos& token, NodePos& node) { return NodeReader(token, node).Read(); }
