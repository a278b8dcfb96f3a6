// File names between the outside, where they are bytes, and the inside, where they are wide characters: UTF-8 with all
// its forms of one to four bytes (RFC 3629), whatever the locale. The foundation's own UTF-8 (LyCharacterHelper) stays
// below four.
//
// Every byte string survives the way in and out again, since a file name on POSIX need not be UTF-8: a byte that
// belongs to no valid sequence becomes the lone surrogate U+DC00 + byte, and such a surrogate becomes that byte. Any
// other value that is no character becomes U+FFFD on the way out. Threads: functions without state.

#pragma once

#include <string>
#include <string_view>

namespace UTF8Details
{
constexpr char32_t BYTE_MARK = 0xDC00; // U+DC80 to U+DCFF stand for bytes that are no UTF-8
constexpr char32_t REPLACEMENT = 0xFFFD;
constexpr char32_t LAST_CHARACTER = 0x10FFFF;

constexpr bool IsSurrogate(char32_t n) { return n >= 0xD800 && n <= 0xDFFF; }

// The bytes that a sequence with this first byte has; 0 if none begins with it.
constexpr size_t GetSequenceBytes(unsigned char nFirst)
{
    if (nFirst < 0x80)
        return 1;
    if (nFirst < 0xC2)
        return 0;
    return nFirst < 0xE0 ? 2 : nFirst < 0xF0 ? 3 : nFirst < 0xF5 ? 4 : 0;
}

// The character at the start of the text, and how many bytes it takes: one, for a byte that is no UTF-8.
inline char32_t Decode(std::string_view str, size_t& nBytes)
{
    constexpr char32_t FIRST_OF_LENGTH[] = {0, 0, 0x80, 0x800, 0x10000};
    const unsigned char nFirst = static_cast<unsigned char>(str[0]);
    const char32_t nInvalid = BYTE_MARK + nFirst;
    const size_t nSequence = GetSequenceBytes(nFirst);
    nBytes = 1;
    if (nSequence == 1)
        return nFirst;
    if (nSequence == 0 || nSequence > str.size())
        return nInvalid;
    char32_t n = nFirst & (0xFFU >> (nSequence + 1));
    for (size_t i = 1; i < nSequence; ++i)
    {
        const unsigned char nByte = static_cast<unsigned char>(str[i]);
        if ((nByte & 0xC0) != 0x80)
            return nInvalid;
        n = n << 6 | (nByte & 0x3F);
    }
    if (n < FIRST_OF_LENGTH[nSequence] || IsSurrogate(n) || n > LAST_CHARACTER)
        return nInvalid;
    nBytes = nSequence;
    return n;
}

inline void Append(std::string& str, char32_t n)
{
    if (n >= BYTE_MARK + 0x80 && n <= BYTE_MARK + 0xFF)
    {
        str += static_cast<char>(n - BYTE_MARK);
        return;
    }
    if (IsSurrogate(n) || n > LAST_CHARACTER)
        n = REPLACEMENT;
    if (n < 0x80)
    {
        str += static_cast<char>(n);
        return;
    }
    const int nFollowing = n < 0x800 ? 1 : n < 0x10000 ? 2 : 3;
    str += static_cast<char>((0xFF00U >> (nFollowing + 1) & 0xFFU) | (n >> (6 * nFollowing)));
    for (int i = nFollowing - 1; i >= 0; --i)
        str += static_cast<char>(0x80 | (n >> (6 * i) & 0x3F));
}
} // namespace UTF8Details

inline std::wstring WidenUTF8(std::string_view str)
{
    std::wstring strWide;
    strWide.reserve(str.size());
    for (size_t nBytes = 0; !str.empty(); str.remove_prefix(nBytes))
        strWide += static_cast<wchar_t>(UTF8Details::Decode(str, nBytes));
    return strWide;
}

inline std::string NarrowUTF8(std::wstring_view strWide)
{
    std::string str;
    str.reserve(strWide.size());
    for (const wchar_t c : strWide)
        UTF8Details::Append(str, static_cast<char32_t>(c));
    return str;
}
