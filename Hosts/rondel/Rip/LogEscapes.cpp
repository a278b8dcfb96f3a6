#include "LogEscapes.h"
#include "UTF8.h"

namespace
{
constexpr char HEX_DIGITS[] = "0123456789ABCDEF";
constexpr size_t ESCAPED_BYTES = 4; // \xHH

struct CHARACTER_RANGE
{
    char32_t nFirst;
    char32_t nLast;
};

// What moves the cursor, turns the direction of writing or cannot be seen (Unicode 15: categories Cc, Cf, Zl and Zp,
// but for the joiners that scripts are written with). Bytes that are no UTF-8 come out of the decoder as surrogates.
constexpr CHARACTER_RANGE UNSEEN[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F}, {0x00AD, 0x00AD}, {0x061C, 0x061C},   {0x180E, 0x180E},
    {0x200B, 0x200B}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x206F},   {0xD800, 0xDFFF},
    {0xFEFF, 0xFEFF}, {0xFFF0, 0xFFFB}, {0xFFFE, 0xFFFF}, {0xE0000, 0xE0FFF},
};

bool IsUnseen(char32_t n)
{
    for (const CHARACTER_RANGE& range : UNSEEN)
        if (n >= range.nFirst && n <= range.nLast)
            return true;
    return false;
}

int GetDigit(char c)
{
    const std::string_view digits = HEX_DIGITS;
    const size_t n = digits.find(c);
    return n == std::string_view::npos ? -1 : static_cast<int>(n);
}
} // namespace

std::string EscapeForLine(std::string_view str)
{
    std::string strLine;
    strLine.reserve(str.size());
    for (size_t nBytes = 0; !str.empty(); str.remove_prefix(nBytes))
    {
        const char32_t n = UTF8Details::Decode(str, nBytes);
        if (n == '\\')
            strLine += "\\\\";
        else if (!IsUnseen(n))
            strLine += str.substr(0, nBytes);
        else
            for (const char c : str.substr(0, nBytes))
            {
                const unsigned char nByte = static_cast<unsigned char>(c);
                strLine.append("\\x") += HEX_DIGITS[nByte >> 4];
                strLine += HEX_DIGITS[nByte & 15];
            }
    }
    return strLine;
}

std::optional<std::string> UnescapeLine(std::string_view str)
{
    std::string strText;
    strText.reserve(str.size());
    for (size_t n = 0; n < str.size(); ++n)
    {
        if (str[n] != '\\')
        {
            strText += str[n];
        }
        else if (str.substr(n, 2) == "\\\\")
        {
            strText += str[n++];
        }
        else
        {
            if (str.substr(n, 2) != "\\x" || str.size() - n < ESCAPED_BYTES)
                return std::nullopt;
            strText += static_cast<char>(GetDigit(str[n + 2]) << 4 | GetDigit(str[n + 3]));
            n += ESCAPED_BYTES - 1;
        }
    }
    // Wrong digits, and what needs no escape or is without the one it needs, all show here.
    if (EscapeForLine(strText) != str)
        return std::nullopt;
    return strText;
}
