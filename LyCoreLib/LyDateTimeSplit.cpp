// A date taken apart into year, month, day and the time of day.

#include "LyDateTime.h"

#include <cmath>

namespace
{
constexpr int MS_PER_SECOND = 1000;
constexpr int SECONDS_PER_MINUTE = 60;
constexpr int MINUTES_PER_HOUR = 60;
constexpr int HOURS_PER_DAY = 24;
constexpr double SECONDS_PER_DAY = 86400.0;
constexpr int MS_PER_DAY = 86'400'000;

// Days are counted so that 1 is 1 January 1900, which is day 2 of OLE.
constexpr double OLE_OFFSET = 1.0;
constexpr int FIRST_YEAR = 1900;
constexpr int CYCLE_YEARS = 400; // after which the Gregorian calendar repeats
constexpr int CYCLE_DAYS = 146097;
constexpr int MONTHS = 12;

// Years that hosts and files can hold in 16 bits, counted since 1900.
constexpr int YEAR_BIAS = 34668;
constexpr unsigned int MAX_BIASED_YEAR = 65535;
// Days that are far beyond them, and still no danger to an int.
constexpr double DAY_LIMIT = 20'000'000.0;

// Places to start from, so that dates of today need few steps.
struct SHORTCUT
{
    int nFirstDay; // 1 January
    int nYear;
};
constexpr SHORTCUT SHORTCUTS[] = {{40178, 2010}, {36525, 2000}, {18263, 1950}};

int GetDaysInYear(int nYear) { return LyDateTime::GetIsLeapYear(nYear) ? 366 : 365; }

int GetDaysInDecade(int nYear) { return 3650 + LyDateTime::GetNumberLeapYearsInRange(nYear, nYear + 9); }
} // namespace

LyDateTime::LyBrokenOutDateTime::LyBrokenOutDateTime(const LyDateTime& date, bool bRoundToSeconds, bool bTime,
                                                     bool bDate)
{
    double fDay = date.GetValue();
    if (fDay == 0.0 || !(std::fabs(fDay) < DAY_LIMIT))
        return;
    // The day is counted before the time rounds up: towards zero, as OLE does below zero.
    double fCount = std::trunc(fDay - OLE_OFFSET);
    double fDaysMore = bTime ? SetTime(std::fabs(fDay - std::trunc(fDay)), bRoundToSeconds) : 0.0;
    // Also where only the time is asked for: a date is valid or not, whoever looks at which part of it.
    m_bValid = SetDate(fCount + fDaysMore);
    if (!m_bValid)
        m_nMillisecond = m_nSecond = m_nMinute = m_nHour = 0;
    if (!m_bValid || !bDate)
        m_nDay = m_nMonth = m_nYear = 0;
}

// The days by which the time of day has rounded up: 0 or 1.
double LyDateTime::LyBrokenOutDateTime::SetTime(double fDayFraction, bool bRoundToSeconds)
{
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): the fraction is never below zero, where adding a half goes wrong
    int nMS = static_cast<int>(fDayFraction * SECONDS_PER_DAY * MS_PER_SECOND + 0.5);
    if (bRoundToSeconds)
        nMS = (nMS + MS_PER_SECOND / 2) / MS_PER_SECOND * MS_PER_SECOND;
    const int nDaysMore = nMS / MS_PER_DAY;
    nMS -= nDaysMore * MS_PER_DAY;
    m_nMillisecond = nMS % MS_PER_SECOND;
    const int nSeconds = nMS / MS_PER_SECOND;
    m_nSecond = nSeconds % SECONDS_PER_MINUTE;
    const int nMinutes = nSeconds / SECONDS_PER_MINUTE;
    m_nMinute = nMinutes % MINUTES_PER_HOUR;
    m_nHour = nMinutes / MINUTES_PER_HOUR % HOURS_PER_DAY;
    return nDaysMore;
}

// False if the year is out of range.
bool LyDateTime::LyBrokenOutDateTime::SetDate(double fDay)
{
    int nDay = static_cast<int>(fDay);
    int nYear = FIRST_YEAR;
    if (nDay >= CYCLE_DAYS || nDay <= -CYCLE_DAYS)
    {
        nYear += nDay / CYCLE_DAYS * CYCLE_YEARS;
        nDay %= CYCLE_DAYS;
    }
    for (const SHORTCUT& shortcut : SHORTCUTS)
    {
        if (nDay < shortcut.nFirstDay)
            continue;
        nYear += shortcut.nYear - FIRST_YEAR;
        nDay -= shortcut.nFirstDay - 1;
        break;
    }
    for (; nDay < 1; nDay += GetDaysInDecade(nYear))
        nYear -= 10;
    for (int nDays; nDay > (nDays = GetDaysInDecade(nYear)); nYear += 10)
        nDay -= nDays;
    for (int nDays; nDay > (nDays = GetDaysInYear(nYear)); ++nYear)
        nDay -= nDays;
    if (static_cast<unsigned int>(nYear - FIRST_YEAR + YEAR_BIAS) > MAX_BIASED_YEAR)
        return false;
    SetDateFromYear(nYear, nDay);
    return true;
}

void LyDateTime::LyBrokenOutDateTime::SetDateFromYear(int nYear, int nDayOfYear)
{
    int nMonth = 1;
    for (int nDays; nMonth < MONTHS && nDayOfYear > (nDays = GetDaysInMonth(nMonth, nYear)); ++nMonth)
        nDayOfYear -= nDays;
    m_nDay = nDayOfYear;
    m_nMonth = nMonth - 1;
    m_nYear = nYear - FIRST_YEAR;
}
