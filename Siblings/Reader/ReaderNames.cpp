#include "ReaderNames.h"
#include "LyFilename.h"
#include "UTF8.h"
#include <algorithm>

namespace
{
constexpr std::string_view FILE_PREFIX = "file://";
constexpr std::string_view LOCAL_HOST = "localhost/"; // its slash stays as the root of the path

bool IsLetter(wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); }
bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

bool EqualNoCase(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

// RFC 3986, 3.1: a letter, then letters, digits, "+", "-" and "."
bool IsScheme(std::wstring_view str)
{
    return !str.empty() && IsLetter(str[0]) &&
           std::ranges::all_of(str, [](wchar_t c)
                               { return IsLetter(c) || IsDigit(c) || c == L'+' || c == L'-' || c == L'.'; });
}

int GetHexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

std::string RemoveEscapes(std::string_view str)
{
    std::string strBytes;
    strBytes.reserve(str.size());
    for (size_t i = 0; i < str.size(); ++i)
    {
        const int nHigh = str[i] == '%' && i + 2 < str.size() ? GetHexDigit(str[i + 1]) : -1;
        const int nLow = nHigh >= 0 ? GetHexDigit(str[i + 2]) : -1;
        strBytes += nLow >= 0 ? static_cast<char>(nHigh * 16 + nLow) : str[i];
        i += nLow >= 0 ? 2 : 0;
    }
    return strBytes;
}

bool HasPrefix(std::string_view str, std::string_view strPrefix)
{
    return EqualNoCase(str.substr(0, strPrefix.size()), strPrefix);
}

// Where the authority of a URL begins and ends.
struct AUTHORITY
{
    size_t nBegin;
    size_t nEnd;
};

AUTHORITY FindAuthority(std::string_view strURL)
{
    const size_t nScheme = strURL.find("://");
    const size_t nBegin = nScheme == std::string_view::npos ? 0 : nScheme + 3;
    return {nBegin, std::min(strURL.find_first_of("/?#", nBegin), strURL.size())};
}
} // namespace

READER_KIND GetReaderKind(std::wstring_view strName)
{
    if (strName.empty())
        return READER_KIND_NONE;
    const size_t nScheme = strName.find(L"://");
    if (nScheme == std::wstring_view::npos || !IsScheme(strName.substr(0, nScheme)))
        return READER_KIND_LOCAL;
    const std::string strScheme = NarrowUTF8(strName.substr(0, nScheme));
    if (EqualNoCase(strScheme, "file"))
        return READER_KIND_FILE_URL;
    return EqualNoCase(strScheme, "http") || EqualNoCase(strScheme, "https") ? READER_KIND_HTTP : READER_KIND_NONE;
}

std::string GetLocalPath(const wchar_t* pName)
{
    const std::string strName = NarrowUTF8(pName);
    if (HasPrefix(strName, FILE_PREFIX))
    {
        std::string_view strPath = std::string_view(strName).substr(FILE_PREFIX.size());
        if (HasPrefix(strPath, LOCAL_HOST))
            strPath.remove_prefix(LOCAL_HOST.size() - 1);
        return RemoveEscapes(strPath);
    }
    LyString strLocal(pName);
    return LyFilename::ConvertFilenameFromInstallPathRelative(strLocal)
               ? NarrowUTF8(static_cast<const wchar_t*>(strLocal))
               : strName;
}

std::string GetRequestURL(std::wstring_view strURL)
{
    constexpr char HEX_DIGITS[] = "0123456789ABCDEF";
    const std::string strRaw = NarrowUTF8(strURL);
    const size_t nAuthorityEnd = FindAuthority(strRaw).nEnd;
    std::string strSent = strRaw.substr(0, nAuthorityEnd); // a host beyond ASCII is the transport's business
    for (const char c : std::string_view(strRaw).substr(nAuthorityEnd))
    {
        const unsigned char n = static_cast<unsigned char>(c);
        if (n > ' ' && n < 0x7F)
            strSent += c;
        else
            strSent.append({'%', HEX_DIGITS[n >> 4], HEX_DIGITS[n & 15]});
    }
    return strSent;
}

std::string GetHostOfURL(std::string_view strURL)
{
    const AUTHORITY place = FindAuthority(strURL);
    std::string_view strHost = strURL.substr(place.nBegin, place.nEnd - place.nBegin);
    strHost.remove_prefix(strHost.rfind('@') == std::string_view::npos ? 0 : strHost.rfind('@') + 1);
    const size_t nColon = strHost.rfind(':');
    // The colons of an IPv6 address stand in brackets.
    if (nColon != std::string_view::npos && strHost.find(']', nColon) == std::string_view::npos)
        strHost = strHost.substr(0, nColon);
    return std::string(strHost);
}
