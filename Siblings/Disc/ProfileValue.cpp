#include "ProfileValue.h"
#include "CueLine.h"
#include "TextDecode.h"
#include <algorithm>

namespace
{
constexpr long long DECIMAL_UNIT = 1000000; // six decimals
constexpr size_t DECIMALS = 6;

int GetHexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char cLower = static_cast<char>(c | 0x20);
    return cLower >= 'a' && cLower <= 'f' ? cLower - 'a' + 10 : -1;
}

// One or two hexadecimal digits.
bool ParseHexByte(std::string_view strDigits, unsigned char& nByte)
{
    if (strDigits.empty() || strDigits.size() > 2)
        return false;
    int nValue = 0;
    for (const char c : strDigits)
    {
        if (GetHexDigit(c) < 0)
            return false;
        nValue = nValue << 4 | GetHexDigit(c);
    }
    nByte = static_cast<unsigned char>(nValue);
    return true;
}
} // namespace

std::vector<std::string_view> SplitProfileList(std::string_view strValue, size_t nMax)
{
    std::vector<std::string_view> aryParts;
    while (aryParts.size() + 1 < nMax)
    {
        const size_t nComma = strValue.find(',');
        if (nComma == std::string_view::npos)
            break;
        aryParts.push_back(TrimBlanks(strValue.substr(0, nComma)));
        strValue.remove_prefix(nComma + 1);
    }
    aryParts.push_back(TrimBlanks(strValue));
    return aryParts;
}

bool ParseProfileNumber(std::string_view strValue, long long nMin, long long nMax, long long& nNumber)
{
    const bool bNegative = strValue.starts_with('-');
    if (bNegative)
        strValue.remove_prefix(1);
    constexpr long long ANY = 999999999999999999; // what fits into the digits that are taken
    const long long nValue = ParseDecimal(strValue, ANY);
    if (nValue < 0)
        return false;
    const long long nSigned = bNegative ? -nValue : nValue;
    if (nSigned < nMin || nSigned > nMax)
        return false;
    nNumber = nSigned;
    return true;
}

bool ParseProfileInt(std::string_view strValue, int nMin, int nMax, int& nNumber)
{
    long long nValue = 0;
    if (!ParseProfileNumber(strValue, nMin, nMax, nValue))
        return false;
    nNumber = static_cast<int>(nValue);
    return true;
}

bool ParseProfileDecimal(std::string_view strValue, long long nScale, long long nMax, long long& nNumber)
{
    const size_t nPoint = std::min(strValue.find('.'), strValue.size());
    std::string strDecimals(strValue.substr(std::min(nPoint + 1, strValue.size())));
    if (nPoint < strValue.size() && (strDecimals.empty() || strDecimals.size() > DECIMALS))
        return false;
    strDecimals.resize(DECIMALS, '0');
    // The whole part is small enough for the product to fit.
    const long long nWhole = ParseDecimal(strValue.substr(0, nPoint), DECIMAL_UNIT);
    const long long nPart = ParseDecimal(strDecimals, DECIMAL_UNIT - 1);
    if (nWhole < 0 || nPart < 0)
        return false;
    const long long nValue = (nWhole * DECIMAL_UNIT + nPart) * nScale / DECIMAL_UNIT;
    if (nValue > nMax)
        return false;
    nNumber = nValue;
    return true;
}

bool ParseProfileProbability(std::string_view strValue, unsigned int& nPPM)
{
    constexpr long long PERCENT = CERTAIN_PPM / 100;
    const bool bPercent = strValue.ends_with('%');
    if (bPercent)
        strValue = TrimBlanks(strValue.substr(0, strValue.size() - 1));
    long long nValue = 0;
    if (!ParseProfileDecimal(strValue, bPercent ? PERCENT : CERTAIN_PPM, CERTAIN_PPM, nValue))
        return false;
    nPPM = static_cast<unsigned int>(nValue);
    return true;
}

bool ParseProfileRange(std::string_view strValue, LBA_RANGE& range)
{
    // A minus sign may stand at the start; the next one is the dash between the two.
    const size_t nDash = strValue.find('-', 1);
    const std::string_view strFirst = TrimBlanks(strValue.substr(0, std::min(nDash, strValue.size())));
    const std::string_view strLast =
        nDash < strValue.size() ? TrimBlanks(strValue.substr(nDash + 1)) : std::string_view(strFirst);
    return ParseProfileInt(strFirst, -LY_CD_MSF_OFFSET, DISC_MAX_LBA, range.m_nFirst) &&
           ParseProfileInt(strLast, range.m_nFirst, DISC_MAX_LBA, range.m_nLast);
}

bool ParseProfileTrigger(std::string_view strValue, COMMAND_TRIGGER& when)
{
    constexpr long long MAX_COMMAND = 1000000000;
    const std::string_view strWhole = strValue;
    std::string_view strRest = strValue;
    const std::string_view strWord = TakeWord(strRest);
    when.m_bReads = EqualNoCase(strWord, "read");
    return ParseProfileNumber(when.m_bReads ? TrimBlanks(strRest) : strWhole, 1, MAX_COMMAND, when.m_nCommand);
}

bool ParseProfileSense(std::string_view strValue, DRIVE_SENSE& sense)
{
    constexpr unsigned char LAST_KEY = 15;
    unsigned char aryCodes[3] = {};
    for (int n = 0; n < 3; ++n)
    {
        const size_t nEnd = n < 2 ? strValue.find('/') : strValue.size();
        if (nEnd == std::string_view::npos || !ParseHexByte(strValue.substr(0, nEnd), aryCodes[n]))
            return false;
        strValue.remove_prefix(std::min(nEnd + 1, strValue.size()));
    }
    sense = {aryCodes[0], aryCodes[1], aryCodes[2]};
    return sense.m_nKey >= 1 && sense.m_nKey <= LAST_KEY;
}

bool ParseProfileBytes(std::string_view strValue, size_t nMaxBytes, std::vector<unsigned char>& aryBytes)
{
    aryBytes.clear();
    while (!strValue.empty())
    {
        unsigned char nByte = 0;
        if (strValue.size() < 2 || aryBytes.size() == nMaxBytes || !ParseHexByte(strValue.substr(0, 2), nByte))
            return false;
        aryBytes.push_back(nByte);
        strValue = TrimBlanks(strValue.substr(2));
    }
    return !aryBytes.empty();
}
