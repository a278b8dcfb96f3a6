#include "OneLineText.h"
#include <cstdio>
#include <cwchar>

namespace
{
constexpr char32_t REPLACEMENT_CHARACTER = 0xFFFD;
constexpr char32_t LAST_CHARACTER = 0x10FFFF;

struct RANGE
{
    char32_t nFirst;
    char32_t nLast;
};

// What ends a line, turns the direction of what follows, or is a command of a terminal (Unicode: general category Cc,
// Zl and Zp, and the bidirectional controls of UAX 9).
constexpr RANGE s_aryControls[] = {
    {0x00, 0x1F}, {0x7F, 0x9F}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069},
};

// East Asian Width W and F (UAX 11), in whole blocks.
constexpr RANGE s_aryWide[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E}, {0x3041, 0xA4CF},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};

constexpr RANGE s_aryJoining[] = {{0x0300, 0x036F}, {0x200B, 0x200D}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}};

template <size_t COUNT>
bool IsIn(const RANGE (&aryRanges)[COUNT], char32_t c)
{
    for (const RANGE& range : aryRanges)
        if (c >= range.nFirst && c <= range.nLast)
            return true;
    return false;
}

void AppendEscaped(std::string& strOut, char32_t c)
{
    if (c == L'\n' || c == L'\r' || c == L'\t')
    {
        strOut += c == L'\n' ? "\\n" : c == L'\r' ? "\\r" : "\\t";
        return;
    }
    char szEscape[16];
    std::snprintf(szEscape, sizeof szEscape, c < 0x100 ? "\\x%02x" : "\\u%04x", static_cast<unsigned>(c));
    strOut += szEscape;
}

// RFC 3629, with the four-byte form that a terminal expects and the strings of the system do not have.
void AppendUTF8(std::string& strOut, char32_t c)
{
    auto tail = [&](int nShift) { strOut += static_cast<char>(0x80 | (c >> nShift & 0x3F)); };
    if (c < 0x80)
        strOut += static_cast<char>(c);
    else if (c < 0x800)
    {
        strOut += static_cast<char>(0xC0 | c >> 6);
        tail(0);
    }
    else if (c < 0x10000)
    {
        strOut += static_cast<char>(0xE0 | c >> 12);
        tail(6);
        tail(0);
    }
    else
    {
        strOut += static_cast<char>(0xF0 | c >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}
} // namespace

bool IsControlCharacter(wchar_t c) { return IsIn(s_aryControls, static_cast<char32_t>(c)); }

int GetColumns(wchar_t cWide)
{
    const char32_t c = static_cast<char32_t>(cWide);
    return IsIn(s_aryJoining, c) ? 0 : IsIn(s_aryWide, c) ? 2 : 1;
}

void AppendOneLine(std::string& strOut, const wchar_t* pText, size_t nChars)
{
    for (size_t n = 0; n < nChars; ++n)
    {
        char32_t c = static_cast<char32_t>(pText[n]);
        if (c > LAST_CHARACTER || (c >= 0xD800 && c <= 0xDFFF)) // half of a surrogate pair
            c = REPLACEMENT_CHARACTER;
        if (IsIn(s_aryControls, c))
            AppendEscaped(strOut, c);
        else
            AppendUTF8(strOut, c);
    }
}

void AppendOneLine(std::string& strOut, const wchar_t* pText)
{
    if (pText != nullptr)
        AppendOneLine(strOut, pText, std::wcslen(pText));
}
