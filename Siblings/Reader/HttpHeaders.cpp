#include "HttpHeaders.h"
#include "UTF8.h"
#include <algorithm>
#include <charconv>

namespace
{
constexpr int FIRST_FINAL_STATUS = 200; // below are interim answers

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool EqualNoCase(std::string_view a, std::string_view b) { return std::ranges::equal(a, b, {}, Lower, Lower); }

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view Trim(std::string_view str)
{
    while (!str.empty() && IsBlank(str.front()))
        str.remove_prefix(1);
    while (!str.empty() && IsBlank(str.back()))
        str.remove_suffix(1);
    return str;
}

std::string_view RemoveLineEnd(std::string_view str)
{
    if (str.ends_with('\n'))
        str.remove_suffix(1);
    if (str.ends_with('\r'))
        str.remove_suffix(1);
    return str;
}

// A number of digits alone, taken off the front. False if there is none, or it is too large.
bool TakeNumber(std::string_view& str, long long& nValue)
{
    if (str.empty() || str[0] < '0' || str[0] > '9')
        return false;
    const auto result = std::from_chars(str.data(), str.data() + str.size(), nValue);
    if (result.ec != std::errc())
        return false;
    str.remove_prefix(static_cast<size_t>(result.ptr - str.data()));
    return true;
}

bool TakeText(std::string_view& str, std::string_view strExpected)
{
    if (!EqualNoCase(str.substr(0, strExpected.size()), strExpected))
        return false;
    str.remove_prefix(strExpected.size());
    return true;
}

bool IsRedirect(int nStatus) { return nStatus >= 300 && nStatus < 400; }
} // namespace

bool HttpHeaders::AddLine(std::string_view strLine)
{
    if (strLine.size() > MAX_BYTES - m_nTotalBytes)
        return false;
    m_nTotalBytes += strLine.size();
    strLine = RemoveLineEnd(strLine);
    // Behind the final header there are trailers alone, however they begin.
    if ((m_bComplete || m_strText.empty()) && !GetIsFinal() && IsStatusLine(strLine))
        BeginAnswer(strLine);
    else if (m_bComplete || m_strText.empty())
        return true; // a trailer, or no answer at all
    else if (strLine.empty())
    {
        m_bComplete = true;
        return true;
    }
    const bool bFolded = IsBlank(strLine.front());
    if (bFolded)
    {
        m_strText.back() = ' '; // the line end of the line that goes on
        strLine = Trim(strLine);
    }
    for (const char c : strLine)
        m_strText += static_cast<unsigned char>(c) < ' ' || c == 0x7F ? ' ' : c;
    m_strText += '\n';
    return true;
}

bool HttpHeaders::IsStatusLine(std::string_view strLine)
{
    return strLine.starts_with("HTTP/") || strLine.starts_with("ICY ");
}

void HttpHeaders::BeginAnswer(std::string_view strLine)
{
    m_strText.clear();
    m_bComplete = false;
    m_nStatus = 0;
    constexpr size_t STATUS_DIGITS = 3;
    const std::string_view strRest = Trim(strLine.substr(std::min(strLine.find(' '), strLine.size())));
    std::string_view strDigits = strRest.substr(0, STATUS_DIGITS);
    long long nStatus = 0;
    if (strDigits.size() == STATUS_DIGITS && TakeNumber(strDigits, nStatus) && strDigits.empty())
        m_nStatus = static_cast<int>(nStatus);
}

void HttpHeaders::Clear() { *this = HttpHeaders(); }

bool HttpHeaders::GetIsFinal() const
{
    return m_bComplete && m_nStatus >= FIRST_FINAL_STATUS && !(IsRedirect(m_nStatus) && !GetValue("Location").empty());
}

// The field's line without its name, or a view without data.
std::string_view HttpHeaders::FindField(std::string_view strName) const
{
    const std::string_view strText = m_strText;
    // The first line is the status.
    for (size_t nLine = strText.find('\n'); nLine != std::string_view::npos; nLine = strText.find('\n', nLine + 1))
    {
        const std::string_view strRest = strText.substr(nLine + 1);
        if (strRest.size() > strName.size() && strRest[strName.size()] == ':' &&
            EqualNoCase(strRest.substr(0, strName.size()), strName))
            return strRest.substr(strName.size() + 1, strRest.find('\n') - strName.size() - 1);
    }
    return {};
}

std::string HttpHeaders::GetValue(std::string_view strName) const { return std::string(Trim(FindField(strName))); }

bool HttpHeaders::HasValue(std::string_view strName) const { return FindField(strName).data() != nullptr; }

bool HttpHeaders::GetAcceptsRanges() const
{
    const std::string strUnits = GetValue("Accept-Ranges");
    for (std::string_view str = strUnits; !str.empty();)
    {
        const size_t nComma = std::min(str.find(','), str.size());
        if (EqualNoCase(Trim(str.substr(0, nComma)), "bytes"))
            return true;
        str.remove_prefix(std::min(nComma + 1, str.size()));
    }
    return false;
}

// RFC 9110, 14.4: bytes 200-999/1000, or a star for the total.
bool HttpHeaders::GetContentRange(CONTENT_RANGE& range) const
{
    const std::string strValue = GetValue("Content-Range");
    std::string_view str = strValue;
    CONTENT_RANGE found;
    if (!TakeText(str, "bytes ") || !TakeNumber(str, found.nFirst) || !TakeText(str, "-") ||
        !TakeNumber(str, found.nLast) || !TakeText(str, "/"))
        return false;
    if (str != "*" && (!TakeNumber(str, found.nTotal) || !str.empty()))
        return false;
    if (found.nLast < found.nFirst || (found.nTotal >= 0 && found.nLast >= found.nTotal))
        return false;
    range = found;
    return true;
}

std::string HttpHeaders::GetValidator() const
{
    std::string strTag = GetValue("ETag");
    return strTag.starts_with('"') ? strTag : GetValue("Last-Modified"); // a weak tag begins with W/
}

bool HttpHeaders::GetIsSameEntity(const HttpHeaders& other) const
{
    for (const char* pName : {"ETag", "Last-Modified"})
        if (HasValue(pName) && other.HasValue(pName) && GetValue(pName) != other.GetValue(pName))
            return false;
    return true;
}

std::string HttpHeaders::GetContentEncoding() const
{
    std::string strEncoding = GetValue("Content-Encoding");
    return EqualNoCase(strEncoding, "identity") ? std::string() : strEncoding;
}

std::wstring HttpHeaders::Widen(std::string_view str)
{
    std::wstring strWide = WidenUTF8(str);
    const auto isByteMark = [](wchar_t c)
    {
        return static_cast<char32_t>(c) >= UTF8Details::BYTE_MARK &&
               static_cast<char32_t>(c) <= UTF8Details::BYTE_MARK + 0xFF;
    };
    if (std::ranges::none_of(strWide, isByteMark))
        return strWide;
    strWide.clear();
    for (const char c : str)
        strWide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return strWide;
}
