// Dates as text, and text as dates.

#include "LyDateTime.h"
#include "IDateTimeHelper.h"
#include "LySharedToolsHelper.h"
#include "LyStringFormat.h"

#include <cmath>

namespace
{
// The marks of precision, as fractions of a day (LyDateTime.h tells what they mean). A day's fraction is not exact in
// a number that has the days in front, so the marks are found within a tolerance.
constexpr double TOLERANCE = 1.1574074074074073e-7;      // 10 milliseconds
constexpr double NO_TIME_MARK = 1.1574074074074074e-6;   // 0.1 seconds
constexpr double MIDNIGHT_MARK = 2.3148148148148148e-6;  // 0.2 seconds
constexpr double ANY_TIME_ABOVE = 1.1574074074074073e-5; // 1 second
constexpr int FIRST_YEAR = 1900;                         // of LyBrokenOutDateTime
constexpr int DECIMALS_AS_NEEDED = -1;                   // of LyString::FromDecimal

bool IsNear(double fFraction, double fMark) { return std::fabs(fFraction - fMark) < TOLERANCE; }

bool GetHasTime(double fFraction) { return fFraction > ANY_TIME_ABOVE || IsNear(fFraction, MIDNIGHT_MARK); }

bool GetIsYearOnly(const LyDateTime::LyBrokenOutDateTime& date, double fFraction)
{
    return date.m_nMonth == 0 && date.m_nDay == 1 && !IsNear(fFraction, NO_TIME_MARK);
}
} // namespace

LyString LyDateTime::GetFloatString() const
{
    LyString str;
    if (m_fValue != 0.0)
        str.FromDecimal(m_fValue, DECIMALS_AS_NEEDED, false, 0, 0);
    return str;
}

LyString LyDateTime::FormatISO8601(bool bUTC, bool bShowPrecision) const
{
    const LyBrokenOutDateTime date(*this, true, true, true);
    if (!date.m_bValid)
        return LyString();
    const int nYear = FIRST_YEAR + date.m_nYear;
    const double fFraction = std::fabs(m_fValue - std::trunc(m_fValue));
    if (!bShowPrecision || GetHasTime(fFraction))
    {
        return LyFormatString(L"%04d-%02d-%02d", nYear, date.m_nMonth + 1, date.m_nDay) +
               LyFormatString(L"T%02d:%02d:%02d%s", date.m_nHour, date.m_nMinute, date.m_nSecond, bUTC ? L"Z" : L"");
    }
    if (GetIsYearOnly(date, fFraction))
        return LyString().FromInt(nYear);
    return LyFormatString(L"%04d-%02d-%02d", nYear, date.m_nMonth + 1, date.m_nDay);
}

bool LyDateTime::Parse(const wchar_t* pText, bool bFlag)
{
    m_fValue = 0.0;
    if (pText == nullptr || *pText == 0)
        return false;
    if (IDateTimeHelper* pHelper = GetDateTimeHelper(true))
        m_fValue = pHelper->Parse(pText, bFlag);
    if (!std::isfinite(m_fValue))
        m_fValue = 0.0;
    return m_fValue != 0.0;
}
