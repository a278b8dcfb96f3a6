// The words of a TOC file: names, numbers, strings, braces. Comments run from // to the end of the line.

#pragma once

#include <string>
#include <string_view>

enum TOC_TOKEN_TYPE : unsigned char
{
    TOC_END,    // of the file
    TOC_WORD,   // a keyword, a number, a time; a colon belongs to it, a comma only separates
    TOC_STRING, // in quotation marks; \" and \\ and octal \ooo stand for one byte, any other backslash for itself
    TOC_OPEN,   // {
    TOC_CLOSE,  // }
    TOC_BROKEN  // a string whose second quotation mark is not on the same line
};

struct TOC_TOKEN
{
    TOC_TOKEN_TYPE m_nType = TOC_END;
    std::string m_strText; // of a string, decoded to UTF-8
    int m_nLine = 1;
};

class TocLexer
{
public:
    explicit TocLexer(std::string_view strText) : m_strText(strText) { Next(); }

    const TOC_TOKEN& Peek() const { return m_Token; }
    TOC_TOKEN Take();

private:
    std::string_view m_strText; // what is still to be read
    int m_nLine = 1;
    TOC_TOKEN m_Token;

    void SkipBlanks();
    void Next();
    void ReadString();
};

// True if the text is rather a TOC file than a CUE sheet. Both know the words CATALOG and TRACK, and differ in what
// follows them.
bool LooksLikeTocFile(const std::string& strText, const std::string& strPath);
