// Dates taken apart, and dates as text. A day count of another making is the judge.

#include "IDateTimeHelper.h"
#include "LyDateTime.h"
#include "StandInTools.h"
#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>

namespace
{
using BROKEN = LyDateTime::LyBrokenOutDateTime;

constexpr double MS = 1.0 / 86400000.0;
constexpr double SECOND = 1.0 / 86400.0;

// Day 2 is 1 January 1900.
double ToValue(int nYear, unsigned int nMonth, unsigned int nDay)
{
    using namespace std::chrono;
    const sys_days day = year(nYear) / static_cast<int>(nMonth) / static_cast<int>(nDay);
    return 2.0 + static_cast<double>((day - sys_days(year(1900) / 1 / 1)).count());
}

void ExpectDate(const BROKEN& date, int nYear, int nMonth, int nDay, double fValue)
{
    EXPECT_TRUE(date.m_bValid) << fValue;
    EXPECT_EQ(date.m_nYear, nYear - 1900) << fValue;
    EXPECT_EQ(date.m_nMonth, nMonth - 1) << fValue;
    EXPECT_EQ(date.m_nDay, nDay) << fValue;
}

void ExpectNothing(const BROKEN& date)
{
    EXPECT_FALSE(date.m_bValid);
    const int aryFields[] = {date.m_nMillisecond, date.m_nSecond, date.m_nMinute, date.m_nHour,
                             date.m_nDay,         date.m_nMonth,  date.m_nYear};
    for (int nField : aryFields)
        EXPECT_EQ(nField, 0);
}
} // namespace

TEST(LyDateTimeLayout, IsOneNumber)
{
    static_assert(sizeof(LyDateTime) == 8 && std::is_trivially_copyable_v<LyDateTime>);
    EXPECT_EQ(LyDateTime().GetValue(), 0.0);
    EXPECT_EQ(LyDateTime(40178.5).GetValue(), 40178.5);
    EXPECT_EQ(LyDateTime(-1.25).GetValue(), -1.25);
}

TEST(LyDateTimeLayout, BrokenOutFieldsStandInTheirOrder)
{
    static_assert(std::is_standard_layout_v<BROKEN> && sizeof(BROKEN) == 32);
    static_assert(offsetof(BROKEN, m_bValid) == 0 && offsetof(BROKEN, m_nMillisecond) == 4);
    static_assert(offsetof(BROKEN, m_nSecond) == 8 && offsetof(BROKEN, m_nMinute) == 12);
    static_assert(offsetof(BROKEN, m_nHour) == 16 && offsetof(BROKEN, m_nDay) == 20);
    static_assert(offsetof(BROKEN, m_nMonth) == 24 && offsetof(BROKEN, m_nYear) == 28);
    static_assert(std::is_same_v<decltype(BROKEN::m_nYear), int>);
}

struct DAY_CASE
{
    double fValue;
    int nYear;
    int nMonth;
    int nDay;
};

const DAY_CASE s_aryDayCases[] = {
    {2.0, 1900, 1, 1},        {3.0, 1900, 1, 2},         {60.0, 1900, 2, 28},
    {61.0, 1900, 3, 1}, // 1900 has no leap day
    {366.0, 1900, 12, 31},    {367.0, 1901, 1, 1},       {1.0, 1899, 12, 31},
    {0.5, 1899, 12, 31},      {-1.0, 1899, 12, 29},      {-1.25, 1899, 12, 29},
    {18263.0, 1949, 12, 31},  {18264.0, 1950, 1, 1},     {36525.0, 1999, 12, 31},
    {36526.0, 2000, 1, 1},    {36585.0, 2000, 2, 29},    {36586.0, 2000, 3, 1},
    {40178.0, 2009, 12, 31},  {40179.0, 2010, 1, 1},     {25569.0, 1970, 1, 1},
    {146097.0, 2299, 12, 30}, {146098.0, 2299, 12, 31},  {146099.0, 2300, 1, 1},
    {-146095.0, 1500, 1, 1},  {-146096.0, 1499, 12, 31}, {-146097.0, 1499, 12, 30},
    {-693592.0, 1, 1, 2},     {2958465.0, 9999, 12, 31},
};

TEST(LyDateTimeSplit, KnownDays)
{
    for (const DAY_CASE& row : s_aryDayCases)
        ExpectDate(BROKEN(row.fValue, false, true, true), row.nYear, row.nMonth, row.nDay, row.fValue);
}

// Every month's ends in years 1 to 9999, and every day around the places where the split takes a short way.
TEST(LyDateTimeSplit, AgreesWithAnotherCalendar)
{
    using namespace std::chrono;
    auto Check = [](double fValue)
    {
        const sys_days day = sys_days(year(1900) / 1 / 1) + days(static_cast<int>(fValue) - 2);
        const year_month_day date(day);
        const BROKEN broken(fValue, false, true, true);
        ASSERT_TRUE(broken.m_bValid) << fValue;
        ASSERT_EQ(broken.m_nYear + 1900, static_cast<int>(date.year())) << fValue;
        ASSERT_EQ(broken.m_nMonth + 1, static_cast<int>(static_cast<unsigned int>(date.month()))) << fValue;
        ASSERT_EQ(broken.m_nDay, static_cast<int>(static_cast<unsigned int>(date.day()))) << fValue;
    };
    for (int nYear = 1; nYear <= 9999; nYear += nYear < 1800 || nYear > 2500 ? 7 : 1)
    {
        for (unsigned int nMonth = 1; nMonth <= 12; ++nMonth)
        {
            const double fFirst = ToValue(nYear, nMonth, 1);
            Check(fFirst);
            Check(fFirst + 27);
            Check(fFirst - 1);
        }
    }
    for (double fAround : {-292192.0, -146095.0, 18263.0, 36525.0, 40178.0, 146096.0, 292194.0, 365 * 200.0})
    {
        for (int n = -400; n <= 400; ++n)
            Check(fAround + n);
    }
}

TEST(LyDateTimeSplit, DaysBelowZeroCountDown)
{
    using namespace std::chrono;
    // -1 is 29 December 1899; the day count goes down with the number, whatever stands behind the point.
    for (int n = 1; n < 800'000; n += n < 2000 ? 1 : 97)
    {
        const sys_days day = sys_days(year(1899) / 12 / 30) - days(n);
        const year_month_day date(day);
        const BROKEN broken(-n - 0.75, false, true, true);
        ASSERT_EQ(broken.m_nYear + 1900, static_cast<int>(date.year())) << n;
        ASSERT_EQ(broken.m_nMonth + 1, static_cast<int>(static_cast<unsigned int>(date.month()))) << n;
        ASSERT_EQ(broken.m_nDay, static_cast<int>(static_cast<unsigned int>(date.day()))) << n;
        ASSERT_EQ(broken.m_nHour, 18) << n;
    }
}

struct TIME_CASE
{
    double fFraction;
    bool bRound;
    int nHour;
    int nMinute;
    int nSecond;
    int nMillisecond;
};

const TIME_CASE s_aryTimeCases[] = {
    {0.0, false, 0, 0, 0, 0},
    {0.5, false, 12, 0, 0, 0},
    {0.25, true, 6, 0, 0, 0},
    {1 * MS, false, 0, 0, 0, 1},
    {0.4 * MS, false, 0, 0, 0, 0},
    {0.6 * MS, false, 0, 0, 0, 1},
    {499 * MS, true, 0, 0, 0, 0},
    {499 * MS, false, 0, 0, 0, 499},
    {500 * MS, true, 0, 0, 1, 0},
    {12345678 * MS, false, 3, 25, 45, 678},
    {12345678 * MS, true, 3, 25, 46, 0},
    {86399999 * MS, false, 23, 59, 59, 999},
    {86399499 * MS, true, 23, 59, 59, 0},
};

TEST(LyDateTimeSplit, Times)
{
    for (const TIME_CASE& row : s_aryTimeCases)
    {
        const BROKEN broken(2.0 + row.fFraction, row.bRound, true, true);
        EXPECT_EQ(broken.m_nHour, row.nHour) << row.fFraction;
        EXPECT_EQ(broken.m_nMinute, row.nMinute) << row.fFraction;
        EXPECT_EQ(broken.m_nSecond, row.nSecond) << row.fFraction;
        EXPECT_EQ(broken.m_nMillisecond, row.nMillisecond) << row.fFraction;
        ExpectDate(broken, 1900, 1, 1, row.fFraction);
    }
}

TEST(LyDateTimeSplit, TimeThatRoundsUpToMidnightIsTheNextDays)
{
    const double fValue = ToValue(1999, 12, 31) + 86399'700 * MS;
    BROKEN broken(fValue, true, true, true);
    ExpectDate(broken, 2000, 1, 1, fValue);
    EXPECT_EQ(broken.m_nHour, 0);
    broken = BROKEN(fValue, false, true, true);
    ExpectDate(broken, 1999, 12, 31, fValue);
    EXPECT_EQ(broken.m_nMillisecond, 700);
    broken = BROKEN(fValue, true, false, true);
    ExpectDate(broken, 1999, 12, 31, fValue);
}

TEST(LyDateTimeSplit, OnlyWhatIsAskedFor)
{
    const double fValue = 40179.5;
    BROKEN broken(fValue, false, true, false);
    EXPECT_TRUE(broken.m_bValid);
    EXPECT_EQ(broken.m_nHour, 12);
    EXPECT_EQ(broken.m_nDay, 0);
    EXPECT_EQ(broken.m_nYear, 0);
    broken = BROKEN(fValue, false, false, true);
    EXPECT_EQ(broken.m_nHour, 0);
    ExpectDate(broken, 2010, 1, 1, fValue);
    EXPECT_TRUE(BROKEN(fValue, false, false, false).m_bValid);
}

TEST(LyDateTimeSplit, NoDateIsNotValid)
{
    using LIMITS = std::numeric_limits<double>;
    for (double fValue : {0.0, -0.0, 1e9, -1e9, 1e300, -1e300, LIMITS::infinity(), -LIMITS::infinity(),
                          LIMITS::quiet_NaN(), LIMITS::max(), LIMITS::lowest()})
    {
        ExpectNothing(BROKEN(fValue, false, true, true));
        ExpectNothing(BROKEN(fValue, true, true, false));
        ExpectNothing(BROKEN(fValue, true, false, false));
    }
    EXPECT_TRUE(BROKEN(LIMITS::denorm_min(), false, true, true).m_bValid);
}

TEST(LyDateTimeSplit, YearsOf16Bits)
{
    const double fLast = ToValue(32767, 12, 31);
    ExpectDate(BROKEN(fLast, false, true, true), 32767, 12, 31, fLast);
    ExpectNothing(BROKEN(fLast + 1, false, true, true));
    ExpectNothing(BROKEN(fLast + 0.9999999, true, true, true)); // rounds up
    const double fFirst = ToValue(-32767, 1, 1) - 366;          // 1 January -32768, a leap year
    ExpectDate(BROKEN(fFirst, false, true, true), -32768, 1, 1, fFirst);
    ExpectNothing(BROKEN(fFirst - 1, false, true, true));
}

// ---- Text

struct ISO_CASE
{
    const char* pTest;
    double fValue;
    bool bUTC;
    bool bPrecision;
    const wchar_t* pText;
};

const double DAY = 40179.0;     // 1 January 2010
const double OTHER_DAY = 40300; // 2 May 2010

const ISO_CASE s_aryISOCases[] = {
    {"NoDate", 0.0, true, true, L""},
    {"NoDateFull", 0.0, false, false, L""},
    {"OutOfRange", 1e12, false, false, L""},
    {"Full", OTHER_DAY + 12345 * SECOND, false, false, L"2010-05-02T03:25:45"},
    {"FullUTC", OTHER_DAY + 12345 * SECOND, true, false, L"2010-05-02T03:25:45Z"},
    {"FullAtMidnight", DAY, false, false, L"2010-01-01T00:00:00"},
    {"FullNextDay", DAY + 86399.7 * SECOND, false, false, L"2010-01-02T00:00:00"},
    {"EarlyYear", ToValue(987, 6, 5), false, false, L"0987-06-05T00:00:00"},

    {"TimeIsReal", OTHER_DAY + 12345 * SECOND, true, true, L"2010-05-02T03:25:45Z"},
    {"YearOnly", DAY, true, true, L"2010"},
    {"DayOfFirstJanuary", DAY + 0.1 * SECOND, true, true, L"2010-01-01"},
    {"MidnightOfFirstJanuary", DAY + 0.2 * SECOND, true, true, L"2010-01-01T00:00:00Z"},
    {"OtherDay", OTHER_DAY, true, true, L"2010-05-02"},
    {"OtherDayMarked", OTHER_DAY + 0.1 * SECOND, true, true, L"2010-05-02"},
    {"MidnightOfOtherDay", OTHER_DAY + 0.2 * SECOND, false, true, L"2010-05-02T00:00:00"},

    {"BelowTheDayMark", DAY + 0.085 * SECOND, false, true, L"2010"},
    {"NearTheDayMark", DAY + 0.095 * SECOND, false, true, L"2010-01-01"},
    {"AboveTheDayMark", DAY + 0.115 * SECOND, false, true, L"2010"},
    {"BelowTheMidnightMark", DAY + 0.185 * SECOND, false, true, L"2010"},
    {"NearTheMidnightMark", DAY + 0.205 * SECOND, false, true, L"2010-01-01T00:00:00"},
    {"AboveTheMidnightMark", DAY + 0.215 * SECOND, false, true, L"2010"},
    {"UnderASecond", DAY + 0.99 * SECOND, false, true, L"2010"},
    {"OverASecond", DAY + 1.01 * SECOND, false, true, L"2010-01-01T00:00:01"},
    {"UnderASecondOfOtherDay", OTHER_DAY + 0.99 * SECOND, false, true, L"2010-05-02"},
};

TEST(LyDateTimeText, ISO8601)
{
    for (const ISO_CASE& row : s_aryISOCases)
        EXPECT_STREQ(LyDateTime(row.fValue).FormatISO8601(row.bUTC, row.bPrecision), row.pText) << row.pTest;
}

TEST(LyDateTimeText, FloatString)
{
    EXPECT_STREQ(LyDateTime().GetFloatString(), L"");
    EXPECT_STREQ(LyDateTime(40178.0).GetFloatString(), L"40178");
    EXPECT_STREQ(LyDateTime(40178.25).GetFloatString(), L"40178.25");
    EXPECT_STREQ(LyDateTime(-1.5).GetFloatString(), L"-1.5");
}

namespace
{
class DateTools final : public StandInTools, public IDateTimeHelper
{
public:
    IDateTimeHelper* GetDateTimeHelper(bool bCreate) override { return m_bThere && bCreate ? this : nullptr; }
    double Parse(const wchar_t* pText, bool bFlag) override
    {
        m_strText = pText;
        m_bFlag = bFlag;
        ++m_nCalls;
        return m_fAnswer;
    }

    bool m_bThere = true;
    double m_fAnswer = 0.0;
    std::wstring m_strText;
    bool m_bFlag = false;
    int m_nCalls = 0;
};
} // namespace

TEST(LyDateTimeParse, IsTheServicesWork)
{
    DateTools tools;
    tools.m_fAnswer = 40000.5;
    LyDateTime date(1.0);
    EXPECT_TRUE(date.Parse(L"some day", true));
    EXPECT_EQ(date.GetValue(), 40000.5);
    EXPECT_EQ(tools.m_strText, L"some day");
    EXPECT_TRUE(tools.m_bFlag);
    EXPECT_TRUE(date.Parse(L"x", false));
    EXPECT_FALSE(tools.m_bFlag);
    tools.m_fAnswer = -3.0;
    EXPECT_TRUE(date.Parse(L"long ago"));
    EXPECT_EQ(date.GetValue(), -3.0);
}

TEST(LyDateTimeParse, NothingIsNoDate)
{
    DateTools tools;
    tools.m_fAnswer = 40000.5;
    for (const wchar_t* pText : {static_cast<const wchar_t*>(nullptr), L""})
    {
        LyDateTime date(1.0);
        EXPECT_FALSE(date.Parse(pText, true));
        EXPECT_EQ(date.GetValue(), 0.0);
    }
    EXPECT_EQ(tools.m_nCalls, 0);
    for (double fAnswer : {0.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
    {
        tools.m_fAnswer = fAnswer;
        LyDateTime date(1.0);
        EXPECT_FALSE(date.Parse(L"x", true));
        EXPECT_EQ(date.GetValue(), 0.0);
    }
}

TEST(LyDateTimeParse, NoServiceIsNoDate)
{
    LyDateTime date(1.0);
    EXPECT_FALSE(date.Parse(L"2010-01-01", true));
    EXPECT_EQ(date.GetValue(), 0.0);
    DateTools tools;
    tools.m_bThere = false;
    date = LyDateTime(1.0);
    EXPECT_FALSE(date.Parse(L"2010-01-01", true));
    EXPECT_EQ(date.GetValue(), 0.0);
}
