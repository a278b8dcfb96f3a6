#include "UrlRequest.h"
#include "UTF8.h"
#include <algorithm>

namespace
{
constexpr size_t MAX_METHOD_CHARS = 32;

// RFC 9110, 5.6.2: what a method or a field name is made of.
bool IsToken(std::string_view str)
{
    const auto isTokenCharacter = [](char c)
    {
        const bool bAlphanumeric = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        return bAlphanumeric || std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
    };
    return !str.empty() && std::ranges::all_of(str, isTokenCharacter);
}

bool HasControlCharacter(std::string_view str)
{
    return std::ranges::any_of(str,
                               [](char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == 0x7F; });
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// The text up to the separator, which goes with it.
template <class VIEW>
VIEW TakePart(VIEW& str, typename VIEW::value_type cSeparator)
{
    const size_t nEnd = std::min(str.find(cSeparator), str.size());
    const VIEW part = str.substr(0, nEnd);
    str.remove_prefix(std::min(nEnd + 1, str.size()));
    return part;
}
} // namespace

void UrlRequest::SetParameters(std::wstring_view strJoined)
{
    m_strMethod.clear();
    SetHeaderLines({});
    while (!strJoined.empty())
    {
        const std::wstring_view strName = TakePart(strJoined, L'|');
        (void)SetParameter(strName, TakePart(strJoined, L'|'));
    }
}

bool UrlRequest::SetParameter(std::wstring_view strName, std::wstring_view strValue)
{
    if (strName == L"HTTPREQUEST_TYPE")
        m_strMethod = NarrowUTF8(strValue);
    else if (strName == L"INFO_HEADERS")
        SetHeaderLines(NarrowUTF8(strValue));
    else
        return false;
    return true;
}

void UrlRequest::SetData(const void* p, int nBytes)
{
    m_strData.clear();
    if (p != nullptr && nBytes > 0)
        m_strData.assign(static_cast<const char*>(p), static_cast<size_t>(nBytes));
}

const std::string& UrlRequest::GetMethod() const
{
    static const std::string s_strGet = "GET";
    static const std::string s_strPost = "POST";
    if (!m_strMethod.empty())
        return m_strMethod;
    return m_strData.empty() ? s_strGet : s_strPost;
}

void UrlRequest::SetHeaderLines(std::string_view strJoined)
{
    m_aryHeaderLines.clear();
    m_strBadLine.clear();
    while (!strJoined.empty())
        AddHeaderLine(TakePart(strJoined, '\n'));
}

void UrlRequest::AddHeaderLine(std::string_view strLine)
{
    if (strLine.empty())
        return;
    const size_t nColon = strLine.find(':');
    if (nColon == std::string_view::npos || !IsToken(strLine.substr(0, nColon)) || HasControlCharacter(strLine))
    {
        if (m_strBadLine.empty())
            m_strBadLine = strLine.substr(0, strLine.find_first_of("\r\t"));
        return;
    }
    const bool bEmpty = strLine.find_first_not_of(" \t", nColon + 1) == std::string_view::npos;
    // The transport takes "Name:" for a wish to send no such field at all.
    m_aryHeaderLines.push_back(bEmpty ? std::string(strLine.substr(0, nColon)) + ';' : std::string(strLine));
}

bool UrlRequest::HasHeader(std::string_view strName) const
{
    const auto hasName = [&](const std::string& strLine)
    {
        return strLine.size() > strName.size() && (strLine[strName.size()] == ':' || strLine[strName.size()] == ';') &&
               std::ranges::equal(std::string_view(strLine).substr(0, strName.size()), strName, {}, Lower, Lower);
    };
    return std::ranges::any_of(m_aryHeaderLines, hasName);
}

std::string UrlRequest::GetRefusal() const
{
    if (!m_strBadLine.empty())
        return "The header line '" + m_strBadLine +
               "' cannot be sent. It needs the form 'Name: value', without control characters.";
    if (!IsToken(GetMethod()) || GetMethod().size() > MAX_METHOD_CHARS)
        return "The request method is none. Use GET, HEAD, POST or another name of letters.";
    return {};
}
