#include "OptionText.h"
#include "UTF8.h"

namespace
{
constexpr unsigned char SURROGATE_LEAD = 0xED; // with a second byte from 0xA0 up: U+D800 to U+DFFF
constexpr unsigned char SURROGATE_SECOND = 0xA0;
constexpr size_t SURROGATE_BYTES = 3;

unsigned char GetByte(std::string_view str, size_t nIndex) { return static_cast<unsigned char>(str[nIndex]); }

bool BeginsWithSurrogate(std::string_view str)
{
    return str.size() >= SURROGATE_BYTES && GetByte(str, 0) == SURROGATE_LEAD &&
           (GetByte(str, 1) & 0xE0) == SURROGATE_SECOND && (GetByte(str, 2) & 0xC0) == 0x80;
}
} // namespace

std::string EncodeOptionText(std::wstring_view strWide)
{
    std::string str;
    str.reserve(strWide.size());
    for (const wchar_t c : strWide)
    {
        const char32_t n = static_cast<char32_t>(c);
        if (!UTF8Details::IsSurrogate(n))
        {
            UTF8Details::Append(str, n);
            continue;
        }
        str += static_cast<char>(SURROGATE_LEAD);
        str += static_cast<char>(0x80 | (n >> 6 & 0x3F));
        str += static_cast<char>(0x80 | (n & 0x3F));
    }
    return str;
}

std::wstring DecodeOptionText(std::string_view strBytes)
{
    std::wstring strWide;
    strWide.reserve(strBytes.size());
    for (size_t nBytes = 0; !strBytes.empty(); strBytes.remove_prefix(nBytes))
    {
        if (BeginsWithSurrogate(strBytes))
        {
            nBytes = SURROGATE_BYTES;
            strWide +=
                static_cast<wchar_t>(0xD000 | (GetByte(strBytes, 1) & 0x3F) << 6 | (GetByte(strBytes, 2) & 0x3F));
        }
        else
            strWide += static_cast<wchar_t>(UTF8Details::Decode(strBytes, nBytes));
    }
    return strWide;
}
