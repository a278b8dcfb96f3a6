#include "TextLines.h"
#include "CDUnits.h"
#include "CRC32.h"
#include "LogEscapes.h"
#include "Text.h"
#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <vector>

namespace
{
bool IsCharacterStart(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

// The bytes of a text that stand in so many columns, broken behind a blank or a colon if it can be.
size_t FindBreak(const std::string& str, size_t nFrom, size_t nColumns)
{
    size_t nBreak = std::string::npos;
    for (size_t n = nFrom, nColumn = 0; n < str.size(); ++n)
    {
        if (nColumn >= nColumns && nBreak != std::string::npos && IsCharacterStart(str[n]))
            return nBreak;
        nColumn += IsCharacterStart(str[n]) ? 1 : 0;
        if (str[n] == ' ' || str[n] == ':')
            nBreak = n + 1;
    }
    return str.size();
}
} // namespace

std::string MakeLabel(const char* pLabel)
{
    std::string strLabel = std::string(TEXT_LABEL_COLUMN, ' ') + pLabel;
    strLabel.resize(std::max(TEXT_VALUE_COLUMN, strLabel.size() + 1), ' ');
    return strLabel;
}

void TextLines::Title(const std::string& str)
{
    if (!m_strText.empty())
        Empty();
    Line(str);
    Empty();
}

void TextLines::Line(const std::string& strRow)
{
    m_strText.append(strRow.substr(0, strRow.find_last_not_of(' ') + 1)) += '\n';
}

void TextLines::Empty() { m_strText += '\n'; }

void TextLines::Field(const char* pLabel, const std::string& strValue)
{
    const std::string strEscaped = EscapeForLine(strValue);
    for (size_t nFrom = 0, nEnd = 0; nFrom < strEscaped.size(); nFrom = nEnd)
    {
        nEnd = FindBreak(strEscaped, nFrom, TEXT_COLUMNS - TEXT_VALUE_COLUMN);
        const std::string strLabel = nFrom == 0 ? MakeLabel(pLabel) : std::string(TEXT_VALUE_COLUMN, ' ');
        Line(strLabel + strEscaped.substr(nFrom, nEnd - nFrom));
    }
}

void TextLines::Unbroken(const char* pLabel, const std::string& strValue)
{
    m_strText.append(MakeLabel(pLabel)).append(EscapeForLine(strValue)) += '\n';
}

std::string FormatText(const char* pFormat, ...)
{
    va_list arguments;
    va_start(arguments, pFormat);
    va_list again;
    va_copy(again, arguments);
    const int nLength = std::vsnprintf(nullptr, 0, pFormat, arguments);
    va_end(arguments);
    std::string str(static_cast<size_t>(std::max(nLength, 0)), '\0');
    (void)std::vsnprintf(str.data(), str.size() + 1, pFormat, again);
    va_end(again);
    return str;
}

std::string FormatReal(double f, const char* pUnit, int nDecimals)
{
    return FormatText("%.*f %s", nDecimals, f, pUnit);
}

std::string FormatSum(unsigned int nSum) { return nSum != 0 ? MakeCRC32Text(nSum) : "not known"; }

std::string FormatSpeed(int nSectors, double fSeconds)
{
    if (!(fSeconds > 0) || nSectors < 1)
        return {};
    return FormatText("%.1fx", nSectors / fSeconds / LY_CD_SECTORS_PER_SECOND);
}

std::string FormatDuration(double fSeconds)
{
    constexpr double LONGEST = 1e9;
    return FormatSeconds(fSeconds > 0 ? std::min(fSeconds, LONGEST) : 0.0);
}
