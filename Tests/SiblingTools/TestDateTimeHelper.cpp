#include "DateTimeHelper.h"

#include "DateCalendar.h"
#include "LyDateTime.h"
#include <cmath>
#include <gtest/gtest.h>

namespace
{
constexpr double SECOND = 1.0 / 86400.0;
constexpr double EXACT = 1e-10; // a hundredth of a millisecond

struct DAY_CASE
{
    const wchar_t* pText;
    double fDays;
};

const DAY_CASE s_aryDayCases[] = {
    {L"1900", 2.0},
    {L"1900-01-01", 2.0 + 0.1 * SECOND},
    {L"1900-01-01T00:00:00", 2.0 + 0.2 * SECOND},
    {L"1900-01-01T12:00:00", 2.5},
    {L"2000", 36526.0},
    {L"2010-01-01", 40179.0 + 0.1 * SECOND},
    {L"1970-01-01T06:00:00Z", 25569.25},
    {L"1970-01-01T06:00:00+06:00", 25569.0 + 0.2 * SECOND}, // midnight in UTC
    {L"1970-01-01T24:00", 25570.0 + 0.2 * SECOND},
    {L"1970-05", 25569.0 + 120},
    {L"Sun, 06 Nov 1994 06:00:00 GMT", 34644.25},
    // Below zero the time counts away from zero.
    {L"1899-12-31", 1.0 + 0.1 * SECOND},
    {L"1899-12-30", -0.1 * SECOND},
    {L"1899-12-29T06:00", -1.25},
    {L"1899-12-29", -1.0 - 0.1 * SECOND},
    {L"1800", -36522.0},
    {L"0001", -693593.0},
};

struct ROUND_TRIP
{
    const wchar_t* pText;
    const wchar_t* pShown; // null: the same
};

const ROUND_TRIP s_aryRoundTrips[] = {
    {L"1999Z", L""},
    {L"1999", nullptr},
    {L"2000", nullptr},
    {L"9999", nullptr},
    {L"1000", nullptr},
    {L"1999-01-01", nullptr},
    {L"1999-05-06", nullptr},
    {L"1899-12-31", nullptr},
    {L"1899-12-30", nullptr},
    {L"1899-12-29", nullptr},
    {L"1600-02-29", nullptr},
    {L"0001-01-02", nullptr},
    {L"9999-12-31", nullptr},
    {L"1999-01-01T00:00:00", nullptr},
    {L"1999-05-06T00:00:00", nullptr},
    {L"1999-05-06T00:00:01", nullptr}, // as near to a mark as a time can come
    {L"1999-01-01T00:00:01", nullptr},
    {L"1999-05-06T00:00:02", nullptr},
    {L"1999-05-06T12:34:56", nullptr},
    {L"1999-05-06T23:59:59", nullptr},
    {L"1850-05-06T12:34:56", nullptr},
    {L"1850-05-06T00:00:00", nullptr},
    {L"9999-12-31T23:59:59", nullptr},
    {L"1999-05-06T00:00:00.7", L"1999-05-06T00:00:00"},
    {L"1999-05-06T08:49:37.4", L"1999-05-06T08:49:37"},
    {L"1999-05-06T01:00:00+02:00", L"1999-05-05T23:00:00"},
    {L"19990506T084937Z", L"1999-05-06T08:49:37"},
    {L"1999-W18-4", L"1999-05-06"},
    // A month has no mark of its own: January shows as its year, any other as its first day.
    {L"1999-01", L"1999"},
    {L"1999-05", L"1999-05-01"},
    {L"2000-02-30", L""},
    {L"nonsense", L""},
};
} // namespace

TEST(DateTimeHelperParse, GivesDays)
{
    DateTimeHelper helper;
    for (const DAY_CASE& each : s_aryDayCases)
        EXPECT_NEAR(helper.Parse(each.pText, false), each.fDays, EXACT) << each.pText;
}

TEST(DateTimeHelperParse, YearAloneIsAWholeNumber)
{
    DateTimeHelper helper;
    for (const wchar_t* pText : {L"1900", L"2000", L"1850", L"0001", L"9999"})
    {
        const double fDays = helper.Parse(pText, false);
        EXPECT_EQ(fDays, std::trunc(fDays)) << pText;
        EXPECT_NE(fDays, 0.0);
    }
}

TEST(DateTimeHelperParse, GivesBackWhatWasParsed)
{
    DateTimeHelper helper;
    for (const ROUND_TRIP& each : s_aryRoundTrips)
    {
        const LyDateTime date(helper.Parse(each.pText, false));
        EXPECT_STREQ(static_cast<const wchar_t*>(date.FormatISO8601(false, true)),
                     each.pShown != nullptr ? each.pShown : each.pText);
    }
}

TEST(DateTimeHelperParse, EachDayOfManyYearsComesBack)
{
    DateTimeHelper helper;
    for (const int nYear : {1600, 1700, 1898, 1899, 1900, 1949, 1950, 1999, 2000, 2009, 2010, 2024, 2400})
    {
        for (int nMonth = 1; nMonth <= 12; ++nMonth)
        {
            for (int nDay = 1; nDay <= DateCalendar::GetDaysInMonth(nYear, nMonth); ++nDay)
            {
                wchar_t szText[32];
                ASSERT_GT(swprintf(szText, 32, L"%04d-%02d-%02dT00:00:01", nYear, nMonth, nDay), 0);
                EXPECT_EQ(LyDateTime(helper.Parse(szText, false)).FormatISO8601(false, true), szText);
                szText[10] = 0;
                EXPECT_EQ(LyDateTime(helper.Parse(szText, false)).FormatISO8601(false, true), szText);
            }
        }
    }
}

TEST(DateTimeHelperParse, EachSecondOfADayComesBack)
{
    DateTimeHelper helper;
    for (int nSecond = 0; nSecond < 86400; ++nSecond)
    {
        wchar_t szText[32];
        ASSERT_GT(swprintf(szText, 32, L"2024-02-29T%02d:%02d:%02d", nSecond / 3600, nSecond / 60 % 60, nSecond % 60),
                  0);
        ASSERT_EQ(LyDateTime(helper.Parse(szText, false)).FormatISO8601(false, true), szText);
    }
}

TEST(DateTimeHelperParse, NoDateIsZero)
{
    DateTimeHelper helper;
    for (const wchar_t* pText : {L"", L"soon", L"1999-02-30", L"1999-05-06T25:00", L"0000"})
        EXPECT_EQ(helper.Parse(pText, false), 0.0) << pText;
    EXPECT_EQ(helper.Parse(nullptr, false), 0.0);
}

TEST(DateTimeHelperParse, TheFlagChangesNothing)
{
    DateTimeHelper helper;
    for (const DAY_CASE& each : s_aryDayCases)
        EXPECT_EQ(helper.Parse(each.pText, true), helper.Parse(each.pText, false)) << each.pText;
}
