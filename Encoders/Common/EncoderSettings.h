// The settings of an encoder as text: "key=value; key=value".
//
//   text   pairs, divided by ";" or a line feed; empty ones do not count
//   key    letters, digits, "-" and "_"; upper and lower case are the same
//   value  up to the next divider, without the blanks around it; or "in quotes", where anything may stand and a quote
//          is written twice
//
// An encoder may name one key whose value is all the rest of the text as it stands: a command line needs no second
// layer of quotes.
//
// Errors: false, and an English sentence in GetError(); what was asked for keeps its value. The first error stays.

#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

struct ENCODER_SETTING
{
    std::string strKey; // lower case
    std::string strValue;

    bool operator==(const ENCODER_SETTING&) const = default;
};

class EncoderSettings
{
public:
    static constexpr size_t MAX_BYTES = 0x10000; // of a text

    // Replaces what was there. A key that comes twice, a pair without "=" and an open quote are errors.
    bool Parse(std::string_view strText, std::string_view strRestKey = {});

    const std::string* Find(std::string_view strKey) const; // null if it is not there; the key in lower case
    bool AllowOnly(std::initializer_list<std::string_view> keys);
    // A key that is not there is no error.
    bool Get(std::string_view strKey, int nMin, int nMax, int& nValue);
    bool Get(std::string_view strKey, bool& bValue); // on, off, yes, no, true, false, 1, 0

    const std::vector<ENCODER_SETTING>& GetAll() const { return m_arySettings; }
    std::string ToText() const; // which parses to the same settings
    const std::string& GetError() const { return m_strError; }
    bool Fail(std::string strError); // always false

private:
    bool ParsePair(std::string_view& strText, std::string_view strRestKey);
    bool ParseValue(std::string_view& strText, std::string& strValue);
    bool ParseQuoted(std::string_view& strText, std::string& strValue);

    std::vector<ENCODER_SETTING> m_arySettings;
    std::string m_strRestKey;
    std::string m_strError;
};

std::string_view EncoderTrim(std::string_view str); // without the blanks, tabs and line ends around it
std::string EncoderLower(std::string_view str);     // of ASCII letters, whatever the locale
// All of the text is a number of this range, in decimal digits with a sign at most.
bool EncoderParseNumber(std::string_view str, long long nMin, long long nMax, long long& nValue);
