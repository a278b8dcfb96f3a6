#include "Text.h"
#include "CDUnits.h"
#include "UTF8.h"
#include <cmath>
#include <cstdio>
#include <cstdlib>

LyString Widen(const std::string& str) { return LyString(WidenUTF8(str).c_str()); }

std::string Narrow(const wchar_t* p) { return p != nullptr ? NarrowUTF8(p) : std::string(); }

std::string CountOf(long long nCount, const char* pWhat)
{
    return std::to_string(nCount) + " " + pWhat + (nCount == 1 ? "" : "s");
}

std::string FormatMSF(int nSectors)
{
    char szText[32];
    const int nSeconds = nSectors / LY_CD_SECTORS_PER_SECOND;
    std::snprintf(szText, sizeof szText, "%02d:%02d.%02d", nSeconds / 60, nSeconds % 60,
                  nSectors % LY_CD_SECTORS_PER_SECOND);
    return szText;
}

std::string FormatSeconds(double fSeconds)
{
    char szText[32];
    const long nSeconds = std::lround(fSeconds);
    std::snprintf(szText, sizeof szText, "%ld:%02ld", nSeconds / 60, nSeconds % 60);
    return szText;
}

std::optional<double> ParseTime(const std::string& str)
{
    // What else a number may look like to the library (an exponent, hexadecimal digits) is no time.
    if (str.find_first_not_of("0123456789.:") != std::string::npos)
        return std::nullopt;
    double fSeconds = 0;
    int nFields = 0;
    const char* p = str.c_str();
    for (;; ++p)
    {
        if (*p < '0' || *p > '9')
            return std::nullopt;
        char* pEnd = nullptr;
        const double fField = std::strtod(p, &pEnd);
        const bool bWhole = fField == std::floor(fField);
        if (fField > 1e6 || (nFields > 0 && fField >= 60))
            return std::nullopt;
        fSeconds = fSeconds * 60 + fField;
        ++nFields;
        p = pEnd;
        if (*p == '\0')
            return fSeconds;
        if (*p != ':' || !bWhole || nFields == 3)
            return std::nullopt;
    }
}
