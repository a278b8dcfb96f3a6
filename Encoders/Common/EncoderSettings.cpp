#include "EncoderSettings.h"
#include <algorithm>
#include <charconv>

namespace
{
constexpr std::string_view BLANKS = " \t\r\n";
constexpr std::string_view DIVIDERS = ";\n";

bool IsKeyCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

std::string Quoted(std::string_view str) { return "'" + std::string(str.substr(0, 80)) + "'"; }

bool NeedsQuotes(const std::string& str)
{
    return str.empty() || str.find_first_of(";\n\"") != std::string::npos || EncoderTrim(str).size() != str.size();
}
} // namespace

std::string_view EncoderTrim(std::string_view str)
{
    const size_t nFirst = str.find_first_not_of(BLANKS);
    if (nFirst == std::string_view::npos)
        return {};
    return str.substr(nFirst, str.find_last_not_of(BLANKS) - nFirst + 1);
}

std::string EncoderLower(std::string_view str)
{
    std::string strLower(str);
    for (char& c : strLower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return strLower;
}

bool EncoderParseNumber(std::string_view str, long long nMin, long long nMax, long long& nValue)
{
    long long nParsed = 0;
    const char* pEnd = str.data() + str.size();
    const auto result = std::from_chars(str.data(), pEnd, nParsed);
    if (str.empty() || result.ec != std::errc() || result.ptr != pEnd || nParsed < nMin || nParsed > nMax)
        return false;
    nValue = nParsed;
    return true;
}

bool EncoderSettings::Fail(std::string strError)
{
    if (m_strError.empty())
        m_strError = std::move(strError);
    return false;
}

bool EncoderSettings::Parse(std::string_view strText, std::string_view strRestKey)
{
    m_arySettings.clear();
    m_strError.clear();
    m_strRestKey = strRestKey;
    if (strText.size() > MAX_BYTES)
        return Fail("The settings are too long.");
    for (;;)
    {
        const size_t nNext = strText.find_first_not_of(" \t\r\n;");
        if (nNext == std::string_view::npos)
            return true;
        strText.remove_prefix(nNext);
        if (!ParsePair(strText, strRestKey))
            return false;
    }
}

// The text begins with the pair, and then with what follows it.
bool EncoderSettings::ParsePair(std::string_view& strText, std::string_view strRestKey)
{
    const size_t nEquals = strText.find_first_of("=;\n");
    if (nEquals == std::string_view::npos || strText[nEquals] != '=')
        return Fail("The setting " + Quoted(EncoderTrim(strText.substr(0, nEquals))) + " has no value.");
    ENCODER_SETTING setting;
    setting.strKey = EncoderLower(EncoderTrim(strText.substr(0, nEquals)));
    if (setting.strKey.empty() || !std::all_of(setting.strKey.begin(), setting.strKey.end(), IsKeyCharacter))
        return Fail(Quoted(setting.strKey) + " is no name of a setting.");
    if (Find(setting.strKey) != nullptr)
        return Fail("The setting " + Quoted(setting.strKey) + " is there twice.");
    strText.remove_prefix(nEquals + 1);
    if (!strRestKey.empty() && setting.strKey == strRestKey)
    {
        setting.strValue = EncoderTrim(strText);
        strText = {};
    }
    else if (!ParseValue(strText, setting.strValue))
        return false;
    m_arySettings.push_back(std::move(setting));
    return true;
}

bool EncoderSettings::ParseValue(std::string_view& strText, std::string& strValue)
{
    const size_t nFirst = strText.find_first_not_of(" \t\r");
    if (nFirst != std::string_view::npos && strText[nFirst] == '"')
    {
        strText.remove_prefix(nFirst + 1);
        return ParseQuoted(strText, strValue);
    }
    const size_t nEnd = std::min(strText.find_first_of(DIVIDERS), strText.size());
    strValue = EncoderTrim(strText.substr(0, nEnd));
    strText.remove_prefix(nEnd);
    if (strValue.find('"') != std::string::npos)
        return Fail("A quote stands within the value " + Quoted(strValue) + ".");
    return true;
}

bool EncoderSettings::ParseQuoted(std::string_view& strText, std::string& strValue)
{
    for (;;)
    {
        const size_t nQuote = strText.find('"');
        if (nQuote == std::string_view::npos)
            return Fail("A quote is not closed.");
        strValue += strText.substr(0, nQuote);
        strText.remove_prefix(nQuote + 1);
        if (!strText.starts_with('"'))
            break;
        strValue += '"';
        strText.remove_prefix(1);
    }
    const std::string_view strBehind = strText.substr(0, strText.find_first_of(DIVIDERS));
    if (!EncoderTrim(strBehind).empty())
        return Fail("Text stands behind a closed quote: " + Quoted(EncoderTrim(strBehind)) + ".");
    strText.remove_prefix(strBehind.size());
    return true;
}

const std::string* EncoderSettings::Find(std::string_view strKey) const
{
    for (const ENCODER_SETTING& setting : m_arySettings)
        if (setting.strKey == strKey)
            return &setting.strValue;
    return nullptr;
}

bool EncoderSettings::AllowOnly(std::initializer_list<std::string_view> keys)
{
    for (const ENCODER_SETTING& setting : m_arySettings)
        if (std::find(keys.begin(), keys.end(), setting.strKey) == keys.end())
            return Fail("There is no setting " + Quoted(setting.strKey) + ".");
    return true;
}

bool EncoderSettings::Get(std::string_view strKey, int nMin, int nMax, int& nValue)
{
    const std::string* pText = Find(strKey);
    if (pText == nullptr)
        return true;
    long long nParsed = 0;
    if (!EncoderParseNumber(*pText, nMin, nMax, nParsed))
        return Fail("The setting " + Quoted(strKey) + " is a number from " + std::to_string(nMin) + " to " +
                    std::to_string(nMax) + ", not " + Quoted(*pText) + ".");
    nValue = static_cast<int>(nParsed);
    return true;
}

bool EncoderSettings::Get(std::string_view strKey, bool& bValue)
{
    const std::string* pText = Find(strKey);
    if (pText == nullptr)
        return true;
    const std::string strWord = EncoderLower(*pText);
    for (const char* pYes : {"on", "yes", "true", "1"})
        if (strWord == pYes)
            return bValue = true;
    for (const char* pNo : {"off", "no", "false", "0"})
        if (strWord == pNo)
        {
            bValue = false;
            return true;
        }
    return Fail("The setting " + Quoted(strKey) + " is on or off, not " + Quoted(*pText) + ".");
}

std::string EncoderSettings::ToText() const
{
    std::string strText;
    for (const ENCODER_SETTING& setting : m_arySettings)
    {
        strText += (strText.empty() ? "" : "; ") + setting.strKey + "=";
        if (setting.strKey == m_strRestKey || !NeedsQuotes(setting.strValue))
        {
            strText += setting.strValue;
            continue;
        }
        strText += '"';
        for (char c : setting.strValue)
            strText += c == '"' ? std::string("\"\"") : std::string(1, c);
        strText += '"';
    }
    return strText;
}
