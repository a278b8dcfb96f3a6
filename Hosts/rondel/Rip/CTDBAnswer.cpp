#include "CTDBAnswer.h"
#include "Markup.h"
#include "Text.h"
#include <algorithm>
#include <string_view>

namespace
{
constexpr int MAX_NUMBER = 1000000; // far more than anybody sent in; a thousand of them fit an int
constexpr size_t MAX_SUM_DIGITS = 8;
constexpr const char* BLANKS = " \t\r\n";
constexpr const char* BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr const char* ROOT = "ctdb";
constexpr const char* ENTRY = "entry";

int GetDigit(char c)
{
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

bool ParseSum(std::string_view str, uint32_t& nSum)
{
    nSum = 0;
    for (const char c : str)
    {
        if (GetDigit(c) < 0)
            return false;
        nSum = nSum << 4 | static_cast<uint32_t>(GetDigit(c));
    }
    return !str.empty() && str.size() <= MAX_SUM_DIGITS;
}

// Nothing at all is 0: the attribute may be missing.
bool ParseNumber(std::string_view str, int& n)
{
    n = 0;
    for (const char c : str)
    {
        if (c < '0' || c > '9')
            return false;
        n = n * 10 + (c - '0');
        if (n > MAX_NUMBER)
            return false;
    }
    return true;
}

bool ParseSums(std::string_view str, std::vector<uint32_t>& arySums)
{
    for (;;)
    {
        str.remove_prefix(std::min(str.find_first_not_of(BLANKS), str.size()));
        if (str.empty())
            return true;
        const std::string_view strSum = str.substr(0, str.find_first_of(BLANKS));
        uint32_t nSum = 0;
        if (arySums.size() == CTDB_MAX_TRACKS || !ParseSum(strSum, nSum))
            return false;
        arySums.push_back(nSum);
        str.remove_prefix(strSum.size());
    }
}

// The name without the prefix of its namespace, in lower case.
std::string GetLocalName(const CMarkup& document)
{
    std::string strName = Narrow(document.GetTagName());
    strName.erase(0, strName.rfind(':') + 1);
    for (char& c : strName)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return strName;
}

std::string GetAttribute(const CMarkup& document, const wchar_t* pName) { return Narrow(document.GetAttrib(pName)); }

// The attribute that cannot be understood; null if all can.
const char* ReadEntry(const CMarkup& document, CTDB_ENTRY& entry)
{
    if (!ParseSum(GetAttribute(document, L"crc32"), entry.m_nSum))
        return "crc32";
    if (!ParseNumber(GetAttribute(document, L"confidence"), entry.m_nConfidence))
        return "confidence";
    if (!ParseNumber(GetAttribute(document, L"npar"), entry.m_nParity))
        return "npar";
    if (!ParseNumber(GetAttribute(document, L"stride"), entry.m_nStride))
        return "stride";
    if (!ParseSums(GetAttribute(document, L"trackcrcs"), entry.m_aryTracks))
        return "trackcrcs";
    entry.m_strTOC = GetAttribute(document, L"toc");
    return nullptr;
}

bool ReadEntries(CMarkup& document, std::vector<CTDB_ENTRY>& aryEntries, std::string& strReason)
{
    const bool bNamed = GetLocalName(document) == ROOT;
    (void)document.IntoElem(); // there is one, and it becomes the parent
    while (document.FindElem())
    {
        if (GetLocalName(document) != ENTRY)
            continue;
        if (aryEntries.size() == CTDB_MAX_ENTRIES)
        {
            strReason = "it has more than " + std::to_string(CTDB_MAX_ENTRIES) + " entries";
            return false;
        }
        const char* pBad = ReadEntry(document, aryEntries.emplace_back());
        if (pBad == nullptr)
            continue;
        strReason = "the " + std::string(pBad) + " of its entry " + std::to_string(aryEntries.size()) + " is none";
        return false;
    }
    if (bNamed || !aryEntries.empty())
        return true;
    strReason = "it is XML, but has no entries";
    return false;
}
} // namespace

bool LooksLikeXML(const std::string& strText)
{
    std::string_view str = strText;
    if (str.starts_with(BYTE_ORDER_MARK))
        str.remove_prefix(std::string_view(BYTE_ORDER_MARK).size());
    const size_t nFirst = str.find_first_not_of(BLANKS);
    return nFirst != std::string_view::npos && str[nFirst] == '<' && str.find('\0') == std::string_view::npos;
}

bool ParseCTDBAnswer(const std::string& strText, std::vector<CTDB_ENTRY>& aryEntries, std::string& strReason)
{
    aryEntries.clear();
    strReason.clear();
    CMarkup document;
    const bool bMarked = strText.starts_with(BYTE_ORDER_MARK);
    if (!LooksLikeXML(strText))
        strReason = "it is no XML";
    else if (!document.SetDoc(Widen(bMarked ? strText.substr(std::string_view(BYTE_ORDER_MARK).size()) : strText)) ||
             !document.FindElem())
        strReason = "its XML is damaged";
    else if (ReadEntries(document, aryEntries, strReason))
        return true;
    aryEntries.clear();
    return false;
}
