// The Gregorian calendar.

#include "LyDateTime.h"

#include <algorithm>
#include <climits>

namespace
{
constexpr int MONTHS = 12;
constexpr int FEBRUARY = 2;
constexpr int DAYS_PER_WEEK = 7;
constexpr int DAYS_BEFORE_MONTH[MONTHS + 1] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

bool IsMonth(int nMonth) { return nMonth >= 1 && nMonth <= MONTHS; }

// Rounded down, below zero too.
constexpr long long DivideDown(long long n, long long nBy) { return n / nBy - (n % nBy < 0 ? 1 : 0); }

// Leap years in the years up to nYear, counted from some year in the far past: only differences mean anything.
long long CountLeapYears(long long nYear)
{
    return DivideDown(nYear, 4) - DivideDown(nYear, 100) + DivideDown(nYear, 400);
}

long long GetLongDayOfYear(int nYear, int nMonth, int nDay)
{
    const bool bLeapDay = nMonth > FEBRUARY && LyDateTime::GetIsLeapYear(nYear);
    return static_cast<long long>(DAYS_BEFORE_MONTH[nMonth - 1]) + nDay + bLeapDay;
}
} // namespace

bool LyDateTime::GetIsLeapYear(int nYear) { return nYear % 4 == 0 && (nYear % 100 != 0 || nYear % 400 == 0); }

int LyDateTime::GetDayOfWeek(int nYear, int nMonth, int nDay)
{
    if (!IsMonth(nMonth))
        return 0;
    // 1 January of year 1 was a Monday, and a year of 365 days moves the next one on by a day.
    const long long nYearsBefore = static_cast<long long>(nYear) - 1;
    const long long nDays = nYearsBefore + CountLeapYears(nYearsBefore) + GetLongDayOfYear(nYear, nMonth, nDay);
    return static_cast<int>(nDays - DivideDown(nDays, DAYS_PER_WEEK) * DAYS_PER_WEEK) + 1;
}

int LyDateTime::GetNumberLeapYearsInRange(int nFirst, int nLast)
{
    if (nFirst > nLast)
        return 0;
    return static_cast<int>(CountLeapYears(nLast) - CountLeapYears(static_cast<long long>(nFirst) - 1));
}

int LyDateTime::GetDaysInMonth(int nMonth, int nYear)
{
    if (!IsMonth(nMonth))
        return 0;
    const bool bLeapDay = nMonth == FEBRUARY && GetIsLeapYear(nYear);
    return DAYS_BEFORE_MONTH[nMonth] - DAYS_BEFORE_MONTH[nMonth - 1] + bLeapDay;
}

int LyDateTime::GetDayOfYear(int nYear, int nMonth, int nDay)
{
    if (!IsMonth(nMonth))
        return 0;
    return static_cast<int>(std::clamp<long long>(GetLongDayOfYear(nYear, nMonth, nDay), INT_MIN, INT_MAX));
}
