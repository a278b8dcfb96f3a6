// The calendar, against a day count of another making.

#include "LyDateTime.h"
#include <chrono>
#include <climits>
#include <gtest/gtest.h>

TEST(LyDateTimeCalendar, DaysInMonth)
{
    const int aryDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int nMonth = 1; nMonth <= 12; ++nMonth)
        EXPECT_EQ(LyDateTime::GetDaysInMonth(nMonth, 2023), aryDays[nMonth - 1]) << nMonth;
    EXPECT_EQ(LyDateTime::GetDaysInMonth(2, 1900), 28);
    EXPECT_EQ(LyDateTime::GetDaysInMonth(2, 2000), 29);
    EXPECT_EQ(LyDateTime::GetDaysInMonth(2, 2024), 29);
    EXPECT_EQ(LyDateTime::GetDaysInMonth(1, 2024), 31);
    for (int nMonth : {0, 13, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(LyDateTime::GetDaysInMonth(nMonth, 2000), 0) << nMonth;
    EXPECT_EQ(LyDateTime::GetDaysInMonth(2, INT_MIN), 29) << "-2147483648 is a multiple of 4 and not of 100";
}

TEST(LyDateTimeCalendar, LeapYears)
{
    for (int nYear : {4, 400, 1600, 1904, 1996, 2000, 2004, 2400, 0, -4, -400})
        EXPECT_TRUE(LyDateTime::GetIsLeapYear(nYear)) << nYear;
    for (int nYear : {1, 100, 1700, 1900, 1901, 2001, 2100, -1, -100})
        EXPECT_FALSE(LyDateTime::GetIsLeapYear(nYear)) << nYear;
}

TEST(LyDateTimeCalendar, EveryMonthAgreesWithAnotherCalendar)
{
    using namespace std::chrono;
    for (int nYear = 1; nYear <= 9999; nYear += nYear < 1800 || nYear > 2200 ? 3 : 1)
    {
        for (int nMonth = 1; nMonth <= 12; ++nMonth)
        {
            const sys_days first = year(nYear) / nMonth / 1;
            const year_month_day_last monthEnd = year(nYear) / nMonth / last;
            ASSERT_EQ(LyDateTime::GetDaysInMonth(nMonth, nYear),
                      static_cast<int>(static_cast<unsigned int>(monthEnd.day())));
            ASSERT_EQ(LyDateTime::GetDayOfYear(nYear, nMonth, 1), (first - sys_days(year(nYear) / 1 / 1)).count() + 1);
            ASSERT_EQ(LyDateTime::GetDayOfWeek(nYear, nMonth, 17),
                      static_cast<int>(weekday(first + days(16)).c_encoding()) + 1);
        }
    }
}

TEST(LyDateTimeCalendar, DayOfYear)
{
    EXPECT_EQ(LyDateTime::GetDayOfYear(2023, 1, 1), 1);
    EXPECT_EQ(LyDateTime::GetDayOfYear(2023, 12, 31), 365);
    EXPECT_EQ(LyDateTime::GetDayOfYear(2024, 12, 31), 366);
    EXPECT_EQ(LyDateTime::GetDayOfYear(2024, 2, 29), 60);
    EXPECT_EQ(LyDateTime::GetDayOfYear(2024, 3, 1), 61);
    EXPECT_EQ(LyDateTime::GetDayOfYear(1900, 3, 1), 60);
    EXPECT_EQ(LyDateTime::GetDayOfYear(2023, 0, 1), 0);
    EXPECT_EQ(LyDateTime::GetDayOfYear(2023, 13, 1), 0);
    EXPECT_EQ(LyDateTime::GetDayOfYear(2023, 12, INT_MAX), INT_MAX) << "it sticks at the end of the range";
    EXPECT_EQ(LyDateTime::GetDayOfYear(2023, 1, INT_MIN), INT_MIN);
}

// 1 is Sunday.
TEST(LyDateTimeCalendar, DayOfWeek)
{
    EXPECT_EQ(LyDateTime::GetDayOfWeek(1900, 1, 1), 2);   // Monday
    EXPECT_EQ(LyDateTime::GetDayOfWeek(1970, 1, 1), 5);   // Thursday
    EXPECT_EQ(LyDateTime::GetDayOfWeek(2000, 1, 1), 7);   // Saturday
    EXPECT_EQ(LyDateTime::GetDayOfWeek(2000, 2, 29), 3);  // Tuesday
    EXPECT_EQ(LyDateTime::GetDayOfWeek(2023, 12, 31), 1); // Sunday
    EXPECT_EQ(LyDateTime::GetDayOfWeek(0, 12, 31), 1);    // the day before Monday, 1 January of year 1
    EXPECT_EQ(LyDateTime::GetDayOfWeek(2023, 0, 1), 0);
    EXPECT_EQ(LyDateTime::GetDayOfWeek(2023, 13, 1), 0);
    for (int nExtreme : {INT_MIN, INT_MAX})
    {
        const int nDay = LyDateTime::GetDayOfWeek(nExtreme, 12, nExtreme);
        EXPECT_GE(nDay, 1);
        EXPECT_LE(nDay, 7);
    }
}

TEST(LyDateTimeCalendar, LeapYearsInARange)
{
    EXPECT_EQ(LyDateTime::GetNumberLeapYearsInRange(2000, 2000), 1);
    EXPECT_EQ(LyDateTime::GetNumberLeapYearsInRange(1900, 1900), 0);
    EXPECT_EQ(LyDateTime::GetNumberLeapYearsInRange(1900, 2000), 25);
    EXPECT_EQ(LyDateTime::GetNumberLeapYearsInRange(2001, 2003), 0);
    EXPECT_EQ(LyDateTime::GetNumberLeapYearsInRange(2000, 1999), 0) << "no range";
    EXPECT_EQ(LyDateTime::GetNumberLeapYearsInRange(1, 400), 97);
    EXPECT_EQ(LyDateTime::GetNumberLeapYearsInRange(-3, 0), 1) << "0 is one";
    EXPECT_EQ(LyDateTime::GetNumberLeapYearsInRange(INT_MIN, INT_MAX), 1041529570) << "485 of each 2000 years";
    for (int nFirst = 1890; nFirst < 2110; nFirst += 3)
    {
        int nCount = 0;
        for (int nLast = nFirst; nLast < nFirst + 250; ++nLast)
        {
            nCount += LyDateTime::GetIsLeapYear(nLast);
            ASSERT_EQ(LyDateTime::GetNumberLeapYearsInRange(nFirst, nLast), nCount);
        }
    }
}
