#include "DateParser.h"

#include "DateCalendar.h"
#include <gtest/gtest.h>
#include <string>

namespace
{
constexpr DATE_PRECISION PERIOD = DATE_PRECISION_PERIOD;
constexpr DATE_PRECISION DAY = DATE_PRECISION_DAY;
constexpr DATE_PRECISION TIME = DATE_PRECISION_TIME;

struct GOOD_DATE
{
    const wchar_t* pText;
    DATE_PRECISION ePrecision;
    int nYear;
    int nMonth;
    int nDay;
    int nMilliseconds;
};

constexpr int At(int nHours, int nMinutes, int nSeconds = 0, int nMilliseconds = 0)
{
    return ((nHours * 60 + nMinutes) * 60 + nSeconds) * 1000 + nMilliseconds;
}

const GOOD_DATE s_aryGoodDates[] = {
    // calendar dates
    {L"1999", PERIOD, 1999, 1, 1, 0},
    {L"0001", PERIOD, 1, 1, 1, 0},
    {L"9999", PERIOD, 9999, 1, 1, 0},
    {L"1999-05", PERIOD, 1999, 5, 1, 0},
    {L"1999-05-06", DAY, 1999, 5, 6, 0},
    {L"19990506", DAY, 1999, 5, 6, 0},
    {L"2000-02-29", DAY, 2000, 2, 29, 0},
    {L"1899-12-30", DAY, 1899, 12, 30, 0},
    {L" \t1999-05-06\r\n", DAY, 1999, 5, 6, 0},
    // ordinal and week dates
    {L"1999-126", DAY, 1999, 5, 6, 0},
    {L"1999126", DAY, 1999, 5, 6, 0},
    {L"2000-366", DAY, 2000, 12, 31, 0},
    {L"1999-001", DAY, 1999, 1, 1, 0},
    {L"1999-W18-4", DAY, 1999, 5, 6, 0},
    {L"1999W184", DAY, 1999, 5, 6, 0},
    {L"1999-w18-4", DAY, 1999, 5, 6, 0},
    {L"1999-W18", PERIOD, 1999, 5, 3, 0},
    {L"1999W18", PERIOD, 1999, 5, 3, 0},
    {L"2009-W01-1", DAY, 2008, 12, 29, 0}, // the first week begins in the old year
    {L"2009-W53-7", DAY, 2010, 1, 3, 0},   // and the last one ends in the new
    {L"2020-W53-5", DAY, 2021, 1, 1, 0},   // a leap year that begins on a Wednesday
    // times
    {L"1999-05-06T08", TIME, 1999, 5, 6, At(8, 0)},
    {L"1999-05-06T08:49", TIME, 1999, 5, 6, At(8, 49)},
    {L"1999-05-06T08:49:37", TIME, 1999, 5, 6, At(8, 49, 37)},
    {L"1999-05-06 08:49:37", TIME, 1999, 5, 6, At(8, 49, 37)},
    {L"1999-05-06t08:49:37z", TIME, 1999, 5, 6, At(8, 49, 37)},
    {L"19990506T0849", TIME, 1999, 5, 6, At(8, 49)},
    {L"19990506T084937Z", TIME, 1999, 5, 6, At(8, 49, 37)},
    {L"1999-126T08:49", TIME, 1999, 5, 6, At(8, 49)},
    {L"1999-W18-4T08:49", TIME, 1999, 5, 6, At(8, 49)},
    {L"1999-05-06T08:49:37.5", TIME, 1999, 5, 6, At(8, 49, 37, 500)},
    {L"1999-05-06T08:49:37,123456789999", TIME, 1999, 5, 6, At(8, 49, 37, 123)},
    {L"1999-05-06T08:49.5", TIME, 1999, 5, 6, At(8, 49, 30)},
    {L"1999-05-06T08.25", TIME, 1999, 5, 6, At(8, 15)},
    {L"1999-05-06T00:00:00", TIME, 1999, 5, 6, 0},
    {L"1999-05-06T24:00:00", TIME, 1999, 5, 7, 0},
    {L"1999-12-31T24:00", TIME, 2000, 1, 1, 0},
    {L"2016-12-31T23:59:60Z", TIME, 2016, 12, 31, At(23, 59, 59)}, // a leap second
    // zones
    {L"1999-05-06T08:49+01:30", TIME, 1999, 5, 6, At(7, 19)},
    {L"1999-05-06T08:49+0130", TIME, 1999, 5, 6, At(7, 19)},
    {L"1999-05-06T08:49-01", TIME, 1999, 5, 6, At(9, 49)},
    {L"1999-05-06 08:49:37 -0130", TIME, 1999, 5, 6, At(10, 19, 37)},
    {L"1999-05-06T01:00+02:00", TIME, 1999, 5, 5, At(23, 0)},
    {L"1999-12-31T23:30-01:00", TIME, 2000, 1, 1, At(0, 30)},
    {L"2000-03-01T00:30+01:00", TIME, 2000, 2, 29, At(23, 30)},
    // as in mail and HTTP
    {L"Sun, 06 Nov 1994 08:49:37 GMT", TIME, 1994, 11, 6, At(8, 49, 37)},
    {L"sun, 6 NOVEMBER 1994 08:49 ut", TIME, 1994, 11, 6, At(8, 49)},
    {L"06 Nov 1994 08:49:37 +0100", TIME, 1994, 11, 6, At(7, 49, 37)},
    {L"06 Nov 1994 20:49:37 PST", TIME, 1994, 11, 7, At(4, 49, 37)},
    {L"06 Nov 1994 08:49:37 EDT", TIME, 1994, 11, 6, At(12, 49, 37)},
    {L"06 Nov 1994", DAY, 1994, 11, 6, 0},
    {L"Sun, 06 Nov 94 08:49:37 GMT", TIME, 1994, 11, 6, At(8, 49, 37)},
    {L"Sunday, 06-Nov-94 08:49:37 GMT", TIME, 1994, 11, 6, At(8, 49, 37)},
    {L"Sunday, 06-Nov-69 08:49:37 GMT", TIME, 2069, 11, 6, At(8, 49, 37)},
    {L"Sunday, 06-Nov-70 08:49:37 GMT", TIME, 1970, 11, 6, At(8, 49, 37)},
    {L"Sun Nov  6 08:49:37 1994", TIME, 1994, 11, 6, At(8, 49, 37)},
    {L"Sun Nov 16 08:49:37 1994", TIME, 1994, 11, 16, At(8, 49, 37)},
    {L"Mon, 06 Nov 1994 08:49:37 GMT", TIME, 1994, 11, 6, At(8, 49, 37)}, // it was a Sunday: who cares
};

const wchar_t* const s_aryBadDates[] = {
    L"",
    L" ",
    L"x",
    L"T",
    // no such date
    L"0000",
    L"1999-00",
    L"1999-13",
    L"1999-05-00",
    L"1999-05-32",
    L"1999-02-30",
    L"1900-02-29",
    L"2001-02-29",
    L"1999-000",
    L"1999-366",
    L"2000-367",
    L"1999-W00",
    L"1999-W53",
    L"2000-W53-1",
    L"2009-W54",
    L"1999-W18-0",
    L"1999-W18-8",
    L"30 Feb 1994",
    L"0 Nov 1994",
    L"9999-W52-6", // 1 January 10000
    // no such time
    L"1999-05-06T25:00",
    L"1999-05-06T24:00:01",
    L"1999-05-06T24:01",
    L"1999-05-06T08:60",
    L"1999-05-06T08:49:61",
    L"1999-05-06T08:49+24:00",
    L"1999-05-06T08:49+01:60",
    L"0001-01-01T00:30+01:00",
    L"9999-12-31T23:30-01:00",
    L"9999-12-31T24:00",
    // no such form
    L"99",
    L"199",
    L"199905",
    L"19990",
    L"199905061",
    L"-1999",
    L"+1999",
    L"1999-",
    L"1999-5",
    L"1999-5-6",
    L"1999-05-",
    L"1999-05-6",
    L"1999-0506",
    L"199905-06",
    L"1999/05/06",
    L"1999-W1",
    L"1999-W184",
    L"1999W18-4",
    L"1999T08:49",
    L"1999-05T08:49",
    L"1999-W18T08:49",
    L"1999-05-06T",
    L"1999-05-06TT08:49",
    L"1999-05-06T8:49",
    L"1999-05-06T08:4",
    L"1999-05-06T08:",
    L"1999-05-06T08:4937",
    L"1999-05-06T084",
    L"1999-05-06T08:49:37.",
    L"1999-05-06T08:49:37.x",
    L"1999-05-06T08:49:37+",
    L"1999-05-06T08:49:37+1",
    L"1999-05-06T08:49:37+01:",
    L"1999-05-06T08:49:37 MARS",
    L"1999-05-06T08:49:37Z Z",
    L"1999-05-06Z",
    L"1999-05-06 x",
    L"\u0661\u0669\u0669\u0669", // Arabic digits
    L"Sun",
    L"Sun,",
    L"Sunshine, 06 Nov 1994 08:49:37 GMT",
    L"Sun, 06 Nvo 1994 08:49:37 GMT",
    L"Sun, 006 Nov 1994 08:49:37 GMT",
    L"Sun, 06 Nov 194 08:49:37 GMT",
    L"Sun, 06-Nov 1994 08:49:37 GMT",
    L"Sun, 06 Nov 1994 08:49:37 GMT+1",
    L"Sun, 06 Nov 1994 08:49:37GMT",
    L"Sun Nov  6 08:49:37 94",
    L"Sun Nov  6 08:49:37",
    L"Nov 6 08:49:37 1994",
    L"Sun Nov  6 08:49:37 1994 x",
};
} // namespace

TEST(ParseDate, KnowsItsForms)
{
    for (const GOOD_DATE& each : s_aryGoodDates)
    {
        ParsedDate date;
        ASSERT_TRUE(ParseDate(each.pText, date)) << each.pText;
        EXPECT_EQ(date.ePrecision, each.ePrecision) << each.pText;
        EXPECT_EQ(date.nDays, DateCalendar::GetDays(each.nYear, each.nMonth, each.nDay)) << each.pText;
        EXPECT_EQ(date.nMilliseconds, each.nMilliseconds) << each.pText;
    }
}

TEST(ParseDate, RefusesEverythingElseAndLeavesTheDate)
{
    for (const wchar_t* pText : s_aryBadDates)
    {
        ParsedDate date{DATE_PRECISION_DAY, 17, 23};
        EXPECT_FALSE(ParseDate(pText, date)) << pText;
        EXPECT_TRUE(date.ePrecision == DAY && date.nDays == 17 && date.nMilliseconds == 23) << pText;
    }
}

TEST(ParseDate, LongDigitsAndLongTextsAreNoDates)
{
    ParsedDate date;
    EXPECT_FALSE(ParseDate(std::wstring(100000, L'9'), date));
    EXPECT_FALSE(ParseDate(std::wstring(100000, L' '), date));
    EXPECT_TRUE(ParseDate(L"1999-05-06T08:49:37." + std::wstring(100000, L'9'), date));
    EXPECT_EQ(date.nMilliseconds, At(8, 49, 37, 999));
}

TEST(ParseDate, AZeroInTheTextIsNoDate)
{
    ParsedDate date;
    EXPECT_FALSE(ParseDate(std::wstring_view(L"1999\0", 5), date));
}

// Python's ordinals of the same days, less that of 1 January 1970.
TEST(DateCalendar, CountsDays)
{
    EXPECT_EQ(DateCalendar::GetDays(1, 1, 1), -719162);
    EXPECT_EQ(DateCalendar::GetDays(1900, 1, 1), -25567);
    EXPECT_EQ(DateCalendar::GetDays(1900, 3, 1), -25508);
    EXPECT_EQ(DateCalendar::GetDays(2000, 2, 29), 11016);
    EXPECT_EQ(DateCalendar::GetDays(2024, 12, 31), 20088);
    EXPECT_EQ(DateCalendar::GetDays(9999, 12, 31), 2932896);
    EXPECT_EQ(DateCalendar::GetDaysInMonth(1999, 0), 0);
    EXPECT_EQ(DateCalendar::GetDaysInMonth(1999, 13), 0);
}
