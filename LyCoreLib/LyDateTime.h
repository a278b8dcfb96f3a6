// Date and time, what the processor can do, and the random generator's seed.

#pragma once

#include "LyString.h"
#include <atomic>

// A date and time as one number: days, with the time of day behind the point, on the scale of OLE automation dates
// (2.0 is 1 January 1900, 0:00). 0.0 means no date. As in OLE, the time of day of a number below 0 is what stands
// behind its point without the sign: -1.25 is 6:00 on day -1.
//
// A stored date tells how exact it is by a time of day that nobody means: an unknown month and day is 1 January, at
// midnight; a known day without a time lies 0.1 seconds after midnight; a true midnight lies 0.2 seconds after it.
// Calendar: Gregorian, also before it was introduced. Year 0 stands before year 1, and is a leap year.
// Threads:  a date belongs to one thread at a time.
class LyDateTime
{
public:
    // A date taken apart. Fields that were not asked for are 0.
    struct LyBrokenOutDateTime
    {
        // A date of 0.0, one that is not a number, and one outside the years -32768 to 32767 is not valid, and all its
        // fields are 0. Milliseconds are rounded to the nearest, with bRoundToSeconds to whole seconds; a time that
        // rounds up to midnight is the next day's.
        LyBrokenOutDateTime(const LyDateTime& date, bool bRoundToSeconds, bool bTime, bool bDate);

        bool m_bValid = false;
        int m_nMillisecond = 0;
        int m_nSecond = 0;
        int m_nMinute = 0;
        int m_nHour = 0;
        int m_nDay = 0;   // of the month, 1 to 31
        int m_nMonth = 0; // 0 to 11
        int m_nYear = 0;  // since 1900

    private:
        double SetTime(double fDayFraction, bool bRoundToSeconds);
        bool SetDate(double fDay);
        void SetDateFromYear(int nYear, int nDayOfYear);
    };

    LyDateTime(double fValue = 0.0) : m_fValue(fValue) {}

    double GetValue() const { return m_fValue; }

    LyString GetFloatString() const; // the number; empty for no date

    // "2010-01-02T03:04:05", with bUTC "Z" behind it; empty for no date. With bShowPrecision only what is known:
    // "2010-01-02" for a day without a time, "2010" for a year.
    LyString FormatISO8601(bool bUTC, bool bShowPrecision) const;

    // Takes the date from a text, in the formats of the tools library, to which the flag goes. False, and no date,
    // where it names none or the library is not there.
    bool Parse(const wchar_t* pText, bool bFlag = false);

    // ---- Calendar. Months are 1 to 12 here; any other has no days and is 0 everywhere.
    static bool GetIsLeapYear(int nYear);
    static int GetDayOfWeek(int nYear, int nMonth, int nDay);    // 1 (Sunday) to 7 (Saturday), as OLE counts
    static int GetNumberLeapYearsInRange(int nFirst, int nLast); // both included
    static int GetDaysInMonth(int nMonth, int nYear);
    static int GetDayOfYear(int nYear, int nMonth, int nDay); // 1 for 1 January; the day is not held to the month

private:
    double m_fValue;
};
static_assert(sizeof(LyDateTime) == sizeof(double));
static_assert(sizeof(LyDateTime::LyBrokenOutDateTime) == 8 * sizeof(int));

// What the processor can do, as CPUID tells it (Intel 64 and IA-32 Architectures Software Developer's Manual, volume
// 2A, and AMD64 Architecture Programmer's Manual, volume 3, for the extended leaf). Other processors have no flags but
// VALID.
// Threads: any.
class LyCpu
{
public:
    enum FLAGS : unsigned int
    {
        VALID = 1, // the flags have been found out
        MMX = 2,
        SSE = 4,
        SSE2 = 8,
        SSE3 = 16,
        SSSE3 = 32,
        SSE4A = 64,
        SSE41 = 128,
        SSE42 = 256,
        BITS64 = 1024,
        INTEL_ATOM = 0x10000
    };

    static unsigned int GetFlags(); // found out at the first call
    static bool InternalGetIsIntelAtomProcessor();

private:
    static std::atomic<unsigned int> s_nFlags;
};

class LyMath
{
public:
    // Seeds rand() from the tick count. Two calls in one tick give different seeds.
    static void SeedRandomNumberGenerator();
};
