// The Gregorian calendar, taken to hold for all time. Months and days count from 1.

#pragma once

namespace DateCalendar
{
constexpr bool IsLeapYear(int nYear) { return nYear % 4 == 0 && (nYear % 100 != 0 || nYear % 400 == 0); }

// 0 for a month that is none.
constexpr int GetDaysInMonth(int nYear, int nMonth)
{
    constexpr int DAYS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (nMonth < 1 || nMonth > 12)
        return 0;
    return DAYS[nMonth - 1] + (nMonth == 2 && IsLeapYear(nYear) ? 1 : 0);
}

// Of a date of the year 1 or later, the days since 1 January 1970.
constexpr int GetDays(int nYear, int nMonth, int nDay)
{
    constexpr int FIRST_DAY_OF_1970 = 719162; // counted from 1 January of the year 1
    const int nYears = nYear - 1;
    int nDays = nYears * 365 + nYears / 4 - nYears / 100 + nYears / 400 - FIRST_DAY_OF_1970;
    for (int n = 1; n < nMonth; ++n)
        nDays += GetDaysInMonth(nYear, n);
    return nDays + nDay - 1;
}
static_assert(GetDays(1970, 1, 1) == 0 && GetDays(2000, 3, 1) == 11017);

// 0 for a Monday to 6 for a Sunday.
constexpr int GetWeekday(int nDays) { return ((nDays + 3) % 7 + 7) % 7; }
static_assert(GetWeekday(0) == 3 && GetWeekday(-4) == 6);

// ISO 8601: the year has a week 53 if its first day is a Thursday, or if it is a leap year's Wednesday.
constexpr bool IsLongWeekYear(int nYear)
{
    const int nFirst = GetWeekday(GetDays(nYear, 1, 1));
    return nFirst == 3 || (nFirst == 2 && IsLeapYear(nYear));
}
} // namespace DateCalendar
