#include "BoxQuestion.h"
#include "LyString.h"
#include "OneLineText.h"
#include "Terminal.h"
#include <algorithm>
#include <cwctype>

namespace
{
// The lines of a text, each with what control characters it has written out.
std::vector<std::string> SplitLines(const std::wstring& strText)
{
    std::vector<std::string> aryLines;
    size_t nStart = 0;
    while (nStart < strText.size())
    {
        const size_t nBreak = std::min(strText.find(L'\n', nStart), strText.size());
        size_t nEnd = nBreak;
        if (nEnd > nStart && strText[nEnd - 1] == L'\r')
            --nEnd;
        std::string strLine;
        AppendOneLine(strLine, strText.data() + nStart, nEnd - nStart);
        aryLines.push_back(strLine);
        nStart = nBreak + 1;
    }
    return aryLines;
}

std::string JoinLines(const std::wstring& strText)
{
    std::string strJoined;
    for (const std::string& strLine : SplitLines(strText))
        if (!strLine.empty())
            strJoined += (strJoined.empty() ? "" : " ") + strLine;
    return strJoined;
}

std::wstring Fold(std::wstring strText)
{
    const size_t nFirst = std::min(strText.find_first_not_of(L" \t\r"), strText.size());
    const size_t nLast = strText.find_last_not_of(L" \t\r");
    strText = strText.substr(nFirst, nLast == std::wstring::npos ? 0 : nLast - nFirst + 1);
    const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
    for (wchar_t& c : strText)
        c = static_cast<wchar_t>(globals.ToLower(c));
    return strText;
}

// 0 if it is no number of few digits.
long ReadNumber(const std::wstring& strText)
{
    constexpr size_t MAX_DIGITS = 4;
    if (strText.empty() || strText.size() > MAX_DIGITS ||
        strText.find_first_not_of(L"0123456789") != std::wstring::npos)
        return 0;
    return std::stol(strText);
}
} // namespace

int BoxQuestion::Ask() const
{
    Terminal terminal;
    if (!terminal.Open(Terminal::MODE_LINES))
        return m_nDefault;
    Terminal::Write(BuildQuestion());
    while (true)
    {
        Terminal::Write(BuildPrompt());
        std::string strBytes;
        if (!terminal.ReadLine(strBytes))
        {
            Terminal::Write("\n");
            return m_nDefault;
        }
        LyString strLine;
        strLine.FromUTF8(reinterpret_cast<const unsigned char*>(strBytes.c_str()));
        if (const int nButton = FindButton(static_cast<const wchar_t*>(strLine)); nButton != 0)
            return nButton;
    }
}

void BoxQuestion::Print() const
{
    std::string strLine = JoinLines(m_strCaption);
    const std::string strText = JoinLines(m_strText);
    if (!strLine.empty() && !strText.empty())
        strLine += ": ";
    strLine += strText;
    if (!strLine.empty())
        Terminal::Write(strLine + "\n");
}

int BoxQuestion::FindButton(std::wstring strLine) const
{
    strLine = Fold(strLine);
    // With one button there is nothing to choose: whatever was typed has seen it.
    if (strLine.empty() || m_aryButtons.size() == 1)
        return m_nDefault;
    if (const long nNumber = ReadNumber(strLine); IsButton(nNumber))
        return static_cast<int>(nNumber);
    int nFound = 0;
    int nHits = 0;
    for (size_t n = 0; n < m_aryButtons.size(); ++n)
    {
        const std::wstring strButton = Fold(m_aryButtons[n]);
        if (strButton == strLine)
            return static_cast<int>(n) + 1;
        if (strButton.compare(0, strLine.size(), strLine) != 0)
            continue;
        nFound = static_cast<int>(n) + 1;
        ++nHits;
    }
    return nHits == 1 ? nFound : 0;
}

std::string BoxQuestion::BuildQuestion() const
{
    std::string strQuestion;
    for (const std::wstring* pText : {&m_strCaption, &m_strText})
        for (const std::string& strLine : SplitLines(*pText))
            strQuestion += strLine + "\n";
    if (m_aryButtons.size() == 1)
        return strQuestion;
    for (size_t n = 0; n < m_aryButtons.size(); ++n)
    {
        strQuestion += "  " + std::to_string(n + 1) + "  ";
        AppendOneLine(strQuestion, m_aryButtons[n].c_str());
        strQuestion += "\n";
    }
    return strQuestion;
}

std::string BoxQuestion::BuildPrompt() const
{
    if (m_aryButtons.size() > 1)
        return "[" + std::to_string(m_nDefault) + "] ";
    std::string strPrompt = "[";
    AppendOneLine(strPrompt, m_aryButtons.front().c_str());
    return strPrompt + "] ";
}
