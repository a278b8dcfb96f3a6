#include "LyStringArray.h"
#include <cwchar>

namespace
{
// If p points into the text of an element, holds that text, so that overwriting the element leaves it intact, and moves
// p into what is held. The list to be split is often the first element of the array that takes the parts.
void HoldIfElement(const LyStringArray& array, LyString& strHeld, const wchar_t*& p)
{
    const std::less<const wchar_t*> before;
    for (const LyString& str : array)
    {
        const wchar_t* pStart = str;
        if (before(p, pStart) || before(pStart + str.GetLength(), p))
            continue;
        strHeld = str;
        p = static_cast<const wchar_t*>(strHeld) + (p - pStart);
        return;
    }
}
} // namespace

LyStringDelimiterScanner::LyStringDelimiterScanner(const wchar_t* pText, const wchar_t* pDelimiter, bool bTrim)
    : m_pManager(&LyStringGlobals::GetGlobals()), m_pText(pText != nullptr ? pText : L""),
      m_pDelimiter(pDelimiter != nullptr ? pDelimiter : L""),
      m_nDelimiterLength(static_cast<int>(wcslen(m_pDelimiter))), m_bTrim(bTrim), m_pTokenStart(m_pText),
      m_nNextDelimiter(FindDelimiter())
{
}

int LyStringDelimiterScanner::FindDelimiter() const
{
    if (m_nDelimiterLength == 0)
        return -1;
    const wchar_t* p = wcsstr(m_pText, m_pDelimiter);
    return p != nullptr ? static_cast<int>(p - m_pText) : -1;
}

void LyStringDelimiterScanner::SkipSpace()
{
    while (m_pManager->IsSpace(*m_pText))
        ++m_pText;
}

// Delivers the length of the token at m_pTokenStart and moves the text behind it. False if there is none.
//
// Deliberate: trimming works around delimiters only. White space before the first token and behind the last one stays,
// and so does that of a text without a delimiter.
bool LyStringDelimiterScanner::NextToken(int& nLength)
{
    if (m_nState != FIRST_TOKEN && *m_pText == 0)
        return false; // a delimiter that ends the text begins nothing
    m_pTokenStart = m_pText;
    if (m_nNextDelimiter < 0)
    {
        nLength = static_cast<int>(wcslen(m_pText));
        m_pText += nLength;
        m_nState = LAST_TOKEN;
        return true;
    }
    nLength = m_nNextDelimiter;
    m_pText += m_nNextDelimiter + m_nDelimiterLength;
    if (m_bTrim)
    {
        while (nLength > 0 && m_pManager->IsSpace(m_pTokenStart[nLength - 1]))
            --nLength;
        SkipSpace();
    }
    m_nNextDelimiter = FindDelimiter();
    m_nState = m_nNextDelimiter < 0 ? LAST_TOKEN : RUNNING;
    return true;
}

void LyStringDelimiterScanner::FillStringArray(LyStringArray& array, bool bFromStart, bool bSkipEmptyTrailing)
{
    LyString strHeldText;
    LyString strHeldDelimiter;
    HoldIfElement(array, strHeldText, m_pText);
    HoldIfElement(array, strHeldDelimiter, m_pDelimiter);

    int nIndex = bFromStart ? 0 : array.GetSize();
    const bool bNothing = *m_pText == 0 && bSkipEmptyTrailing;
    for (int nLength = 0; !bNothing && NextToken(nLength); ++nIndex)
    {
        if (nIndex >= array.GetSize() && !array.SetSize(nIndex + 1, false, true, true))
            break;
        array[nIndex].FromStringInMemoryFast(m_pTokenStart, nLength);
    }
    (void)array.SetSize(nIndex, true, true, true); // cuts off what was behind the last token
    m_pTokenStart = m_pText = m_pDelimiter = L"";  // what they pointed to may go with the strings held here
    m_nNextDelimiter = -1;
}
