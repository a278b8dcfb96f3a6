#include "TocLexer.h"

#include "CueLine.h"
#include "PathResolve.h"
#include "TextDecode.h"
#include <algorithm>

namespace
{
bool IsOctal(char c) { return c >= '0' && c <= '7'; }

// Takes one byte of a string, or one escape, off strText.
char TakeStringByte(std::string_view& strText)
{
    char c = strText[0];
    size_t nUsed = 1;
    if (c == '\\' && strText.size() > 1 && (strText[1] == '"' || strText[1] == '\\'))
    {
        c = strText[1];
        nUsed = 2;
    }
    else if (c == '\\' && strText.size() > 3 && strText[1] <= '3' && IsOctal(strText[1]) && IsOctal(strText[2]) &&
             IsOctal(strText[3]))
    {
        c = static_cast<char>((strText[1] - '0') << 6 | (strText[2] - '0') << 3 | (strText[3] - '0'));
        nUsed = 4;
    }
    strText.remove_prefix(nUsed);
    return c;
}
} // namespace

TOC_TOKEN TocLexer::Take()
{
    TOC_TOKEN token = std::move(m_Token);
    Next();
    return token;
}

void TocLexer::SkipBlanks()
{
    while (!m_strText.empty())
    {
        char c = m_strText[0];
        if (m_strText.starts_with("//"))
        {
            m_strText.remove_prefix(std::min(m_strText.find_first_of("\r\n"), m_strText.size()));
            continue;
        }
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n' && c != ',')
            return;
        // A line ends with a line feed, or with a carriage return that none follows.
        m_nLine += c == '\n' || (c == '\r' && !m_strText.starts_with("\r\n"));
        m_strText.remove_prefix(1);
    }
}

void TocLexer::Next()
{
    SkipBlanks();
    m_Token = TOC_TOKEN();
    m_Token.m_nLine = m_nLine;
    if (m_strText.empty())
        return;
    if (m_strText[0] == '"')
        return ReadString();
    size_t nBytes = 1;
    if (m_strText[0] == '{' || m_strText[0] == '}')
        m_Token.m_nType = m_strText[0] == '{' ? TOC_OPEN : TOC_CLOSE;
    else
    {
        m_Token.m_nType = TOC_WORD;
        nBytes = std::min(m_strText.find_first_of(" \t\r\n,\"{}"), m_strText.size());
        nBytes = std::min(nBytes, m_strText.find("//"));
    }
    m_Token.m_strText = m_strText.substr(0, nBytes);
    m_strText.remove_prefix(nBytes);
}

void TocLexer::ReadString()
{
    std::string strBytes;
    m_strText.remove_prefix(1);
    while (!m_strText.empty() && m_strText[0] != '"' && m_strText[0] != '\n' && m_strText[0] != '\r')
        strBytes += TakeStringByte(m_strText);
    bool bClosed = m_strText.starts_with('"');
    if (bClosed)
        m_strText.remove_prefix(1);
    m_Token.m_nType = bClosed ? TOC_STRING : TOC_BROKEN;
    m_Token.m_strText = DecodeText(strBytes);
}

bool LooksLikeTocFile(const std::string& strText, const std::string& strPath)
{
    static constexpr std::string_view s_aryCueWords[] = {"FILE",      "REM",        "TITLE",
                                                         "PERFORMER", "SONGWRITER", "CDTEXTFILE"};
    static constexpr std::string_view s_aryTocWords[] = {"CD_DA", "CD_ROM", "CD_ROM_XA", "CD_I", "CD_TEXT"};
    std::string_view strRest = strText;
    while (!strRest.empty())
    {
        std::string_view strLine = TakeLine(strRest);
        std::string_view strWord = TakeWord(strLine);
        if (strWord.starts_with("//"))
            return true;
        for (std::string_view str : s_aryTocWords)
            if (strWord == str)
                return true;
        for (std::string_view str : s_aryCueWords)
            if (EqualNoCase(strWord, str))
                return false;
        if (EqualNoCase(strWord, "TRACK"))
            return !strLine.empty() && (strLine[0] < '0' || strLine[0] > '9');
    }
    return EqualNoCase(GetNameExtension(strPath), ".toc");
}
