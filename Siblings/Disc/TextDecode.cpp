#include "TextDecode.h"

#include <cstdint>

namespace
{
constexpr char32_t REPLACEMENT_CHARACTER = 0xFFFD;
constexpr char32_t LAST_CHARACTER = 0x10FFFF;

bool IsSurrogate(char32_t nCharacter) { return nCharacter >= 0xD800 && nCharacter <= 0xDFFF; }

// The length that a lead byte announces, 0 for a byte that cannot lead.
size_t SequenceLength(unsigned char nLead)
{
    if (nLead < 0x80)
        return 1;
    if (nLead >= 0xC2 && nLead <= 0xDF)
        return 2;
    if (nLead >= 0xE0 && nLead <= 0xEF)
        return 3;
    return nLead >= 0xF0 && nLead <= 0xF4 ? 4 : 0;
}

// Reads one character at nPos and moves on. False, and nPos stays, where the bytes are malformed.
bool ReadUTF8(std::string_view strBytes, size_t& nPos, char32_t& nCharacter)
{
    static constexpr char32_t s_aryLeast[] = {0, 0, 0x80, 0x800, 0x10000}; // below these a form is overlong
    unsigned char nLead = static_cast<unsigned char>(strBytes[nPos]);
    size_t nLength = SequenceLength(nLead);
    if (nLength == 0 || strBytes.size() - nPos < nLength)
        return false;
    nCharacter = nLength == 1 ? nLead : nLead & (0x7Fu >> nLength);
    for (size_t n = 1; n < nLength; n++)
    {
        unsigned char nByte = static_cast<unsigned char>(strBytes[nPos + n]);
        if ((nByte & 0xC0) != 0x80)
            return false;
        nCharacter = nCharacter << 6 | (nByte & 0x3Fu);
    }
    if (nCharacter < s_aryLeast[nLength] || nCharacter > LAST_CHARACTER || IsSurrogate(nCharacter))
        return false;
    nPos += nLength;
    return true;
}

// Windows-1252, 80h to 9Fh. 0 where the code page leaves a byte free; it keeps its own value then.
constexpr uint16_t s_aryWindows1252[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                           0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                           0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                           0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

std::string UTF16ToUTF8(std::string_view strBytes, bool bBigEndian)
{
    auto unit = [&](size_t n)
    {
        auto nFirst = static_cast<unsigned char>(strBytes[2 * n]);
        auto nSecond = static_cast<unsigned char>(strBytes[2 * n + 1]);
        return static_cast<char32_t>(bBigEndian ? nFirst << 8 | nSecond : nSecond << 8 | nFirst);
    };
    std::string strText;
    size_t nUnits = strBytes.size() / 2;
    for (size_t n = 0; n < nUnits; n++)
    {
        char32_t nCharacter = unit(n);
        bool bHigh = nCharacter >= 0xD800 && nCharacter <= 0xDBFF;
        if (bHigh && n + 1 < nUnits && unit(n + 1) >= 0xDC00 && unit(n + 1) <= 0xDFFF)
            nCharacter = 0x10000 + ((nCharacter - 0xD800) << 10) + (unit(++n) - 0xDC00);
        AppendUTF8(strText, nCharacter);
    }
    return strText;
}

char32_t FoldCharacter(char32_t n)
{
    if ((n >= 'A' && n <= 'Z') || (n >= 0xC0 && n <= 0xDE && n != 0xD7)) // ASCII, Latin-1 without the times sign
        return n + 0x20;
    // Latin Extended-A: pairs, the capital even in most of it, odd in two stretches; Y with dots goes to Latin-1.
    if ((n >= 0x139 && n <= 0x148) || (n >= 0x179 && n <= 0x17E))
        return n + (n & 1);
    if (n == 0x178)
        return 0xFF;
    if (n >= 0x100 && n <= 0x177 && n != 0x130 && n != 0x131 && n != 0x138 && n != 0x149)
        return n | 1;
    if (n >= 0x391 && n <= 0x3A9) // Greek without accents
        return n + 0x20;
    if (n >= 0x410 && n <= 0x42F) // Cyrillic
        return n + 0x20;
    return n >= 0x400 && n <= 0x40F ? n + 0x50 : n;
}
} // namespace

bool IsValidUTF8(std::string_view strBytes)
{
    char32_t nCharacter = 0;
    for (size_t nPos = 0; nPos < strBytes.size();)
        if (!ReadUTF8(strBytes, nPos, nCharacter))
            return false;
    return true;
}

void AppendUTF8(std::string& strText, char32_t nCharacter)
{
    if (nCharacter > LAST_CHARACTER || IsSurrogate(nCharacter))
        nCharacter = REPLACEMENT_CHARACTER;
    if (nCharacter < 0x80)
    {
        strText += static_cast<char>(nCharacter);
        return;
    }
    int nTrailing = nCharacter < 0x800 ? 1 : nCharacter < 0x10000 ? 2 : 3;
    static constexpr char32_t s_aryLead[] = {0, 0xC0, 0xE0, 0xF0};
    strText += static_cast<char>(s_aryLead[nTrailing] | nCharacter >> (6 * nTrailing));
    while (nTrailing-- > 0)
        strText += static_cast<char>(0x80 | (nCharacter >> (6 * nTrailing) & 0x3F));
}

std::string Latin1ToUTF8(std::string_view strBytes)
{
    std::string strText;
    strText.reserve(strBytes.size() + strBytes.size() / 8);
    for (char c : strBytes)
    {
        char32_t nCharacter = static_cast<unsigned char>(c);
        if (nCharacter >= 0x80 && nCharacter < 0xA0 && s_aryWindows1252[nCharacter - 0x80] != 0)
            nCharacter = s_aryWindows1252[nCharacter - 0x80];
        AppendUTF8(strText, nCharacter);
    }
    return strText;
}

std::string DecodeText(std::string_view strBytes)
{
    if (strBytes.starts_with("\xEF\xBB\xBF"))
        strBytes.remove_prefix(3);
    else if (strBytes.starts_with("\xFF\xFE"))
        return UTF16ToUTF8(strBytes.substr(2), false);
    else if (strBytes.starts_with("\xFE\xFF"))
        return UTF16ToUTF8(strBytes.substr(2), true);
    return IsValidUTF8(strBytes) ? std::string(strBytes) : Latin1ToUTF8(strBytes);
}

std::string FoldCase(std::string_view strText)
{
    std::string strFolded;
    strFolded.reserve(strText.size());
    for (size_t nPos = 0; nPos < strText.size();)
    {
        char32_t nCharacter = 0;
        if (ReadUTF8(strText, nPos, nCharacter))
            AppendUTF8(strFolded, FoldCharacter(nCharacter));
        else
            strFolded += strText[nPos++];
    }
    return strFolded;
}

bool EqualNoCase(std::string_view strA, std::string_view strB)
{
    auto small = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c; };
    if (strA.size() != strB.size())
        return false;
    for (size_t n = 0; n < strA.size(); n++)
        if (small(strA[n]) != small(strB[n]))
            return false;
    return true;
}
