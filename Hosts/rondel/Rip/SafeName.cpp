// NameTemplate: what makes a text a component of a name on every file system.

#include "NameTemplate.h"
#include "NameTemplateDetails.h"
#include "UTF8.h"
#include <algorithm>
#include <iterator>
#include <string_view>

using namespace NameTemplateDetails;

namespace
{
struct REPLACED
{
    char32_t nCharacter;
    char32_t nBy;
};
// What FAT, exFAT, NTFS and HFS+ refuse, or take for something else, in printable ASCII.
const REPLACED s_aryReplaced[] = {{'/', '-'}, {'\\', '-'}, {':', '-'}, {'|', '-'}, {'"', '\''},
                                  {'<', '('}, {'>', ')'},  {'?', '_'}, {'*', '_'}};

// Devices, whatever stands behind a dot (Win32 naming of files). The first three of the last row are digits in Latin-1.
const char* const s_aryDevices[] = {"CON", "PRN", "AUX", "NUL", "CLOCK$", "CONIN$", "CONOUT$"};
const char* const s_aryPorts[] = {"COM", "LPT"};
const char* const s_aryPortNumbers[] = {"0", "1", "2", "3",        "4",        "5",       "6",
                                        "7", "8", "9", "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};

constexpr char32_t DROPPED = 0;

bool IsLineEnd(char32_t n) { return (n >= '\t' && n <= '\r') || n == 0x85 || n == 0x2028 || n == 0x2029; }
bool IsControl(char32_t n) { return n < 0x20 || (n >= 0x7F && n <= 0x9F); }
bool IsNoCharacter(char32_t n)
{
    return UTF8Details::IsSurrogate(n) || (n & 0xFFFE) == 0xFFFE || (n >= 0xFDD0 && n <= 0xFDEF);
}
// They turn what is shown around, so that a name looks like another one; and the byte order mark.
bool IsDirection(char32_t n)
{
    return n == 0x061C || n == 0x200E || n == 0x200F || (n >= 0x202A && n <= 0x202E) || (n >= 0x2066 && n <= 0x2069) ||
           n == 0xFEFF;
}
bool IsBlank(char32_t n)
{
    return n == ' ' || n == 0xA0 || n == 0x1680 || (n >= 0x2000 && n <= 0x200B) || n == 0x202F || n == 0x205F ||
           n == 0x3000;
}

// What stands for the character; DROPPED for nothing.
char32_t Replace(char32_t n)
{
    if (IsLineEnd(n))
        return ' ';
    if (IsControl(n))
        return '_';
    if (IsNoCharacter(n))
        return UTF8Details::REPLACEMENT;
    if (IsDirection(n))
        return DROPPED;
    const auto p = std::find_if(std::begin(s_aryReplaced), std::end(s_aryReplaced),
                                [n](const REPLACED& replaced) { return replaced.nCharacter == n; });
    return p != std::end(s_aryReplaced) ? p->nBy : n;
}

void Trim(std::u32string& str)
{
    const auto isOutside = [](char32_t n) { return n == '.' || IsBlank(n); };
    str.erase(std::find_if_not(str.rbegin(), str.rend(), isOutside).base(), str.end());
    str.erase(str.begin(), std::find_if_not(str.begin(), str.end(), isOutside));
}

bool IsDevice(const std::string& strName)
{
    std::string strBase = strName.substr(0, strName.find('.'));
    strBase.erase(strBase.find_last_not_of(' ') + 1);
    for (char& c : strBase)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    const auto isBase = [&](std::string_view str) { return strBase == str; };
    const auto isNumber = [&](const char* p) { return std::string_view(strBase).substr(3) == p; };
    if (std::any_of(std::begin(s_aryDevices), std::end(s_aryDevices), isBase))
        return true;
    const bool bPort = strBase.starts_with(s_aryPorts[0]) || strBase.starts_with(s_aryPorts[1]);
    return bPort && std::any_of(std::begin(s_aryPortNumbers), std::end(s_aryPortNumbers), isNumber);
}

size_t CountBytes(char32_t n) { return n < 0x80 ? 1 : n < 0x800 ? 2 : n < 0x10000 ? 3 : 4; }
} // namespace

namespace NameTemplateDetails
{
std::u32string Decode(std::string_view str)
{
    std::u32string strText;
    strText.reserve(str.size());
    for (size_t nBytes = 0; !str.empty(); str.remove_prefix(nBytes))
        strText += UTF8Details::Decode(str, nBytes);
    return strText;
}

std::string Encode(const std::u32string& strText)
{
    std::string str;
    for (const char32_t n : strText)
        UTF8Details::Append(str, n);
    return str;
}

bool IsMark(char32_t n)
{
    return (n >= 0x0300 && n <= 0x036F) || (n >= 0x1AB0 && n <= 0x1AFF) || (n >= 0x1DC0 && n <= 0x1DFF) ||
           (n >= 0x20D0 && n <= 0x20FF) || (n >= 0x3099 && n <= 0x309A) || (n >= 0xFE00 && n <= 0xFE0F) ||
           (n >= 0xFE20 && n <= 0xFE2F) || (n >= 0x1160 && n <= 0x11FF);
}

void Cut(std::u32string& str, size_t nMaxBytes)
{
    size_t nBytes = 0;
    size_t nKept = 0;
    while (nKept < str.size() && nBytes + CountBytes(str[nKept]) <= nMaxBytes)
        nBytes += CountBytes(str[nKept++]);
    if (nKept == str.size())
        return;
    // An accent does not lose its letter; a text of nothing but accents is cut anywhere.
    size_t nWhole = nKept;
    while (nWhole > 0 && IsMark(str[nWhole]))
        --nWhole;
    str.resize(nWhole > 0 ? nWhole : nKept);
    Trim(str);
}
} // namespace NameTemplateDetails

std::string MakeSafeName(const std::string& strText, size_t nMaxBytes)
{
    std::u32string strSafe;
    for (const char32_t nOld : Decode(strText))
    {
        const char32_t n = Replace(nOld);
        const bool bSecondBlank = n == ' ' && !strSafe.empty() && strSafe.back() == ' ';
        if (n != DROPPED && !bSecondBlank)
            strSafe += n;
    }
    Trim(strSafe);
    Cut(strSafe, nMaxBytes);
    if (IsDevice(Encode(strSafe)))
    {
        Cut(strSafe, nMaxBytes - 1);
        strSafe.insert(strSafe.begin(), '_');
    }
    return strSafe.empty() ? "_" : Encode(strSafe);
}
