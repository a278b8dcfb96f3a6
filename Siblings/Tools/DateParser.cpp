#include "DateParser.h"

#include "DateCalendar.h"
#include "DateScanner.h"
#include <array>

using namespace DateCalendar;

namespace
{
constexpr int MINUTE_MS = 60 * 1000;
constexpr int HOUR_MS = 60 * MINUTE_MS;

struct NAMED_ZONE
{
    std::wstring_view strName;
    int nHours;
};
constexpr NAMED_ZONE NAMED_ZONES[] = {
    {L"gmt", 0},  {L"utc", 0},  {L"ut", 0},   {L"z", 0},    {L"est", -5}, {L"edt", -4},
    {L"cst", -6}, {L"cdt", -5}, {L"mst", -7}, {L"mdt", -6}, {L"pst", -8}, {L"pdt", -7},
};
constexpr std::array<std::wstring_view, 12> MONTHS = {L"january",   L"february", L"march",    L"april",
                                                      L"may",       L"june",     L"july",     L"august",
                                                      L"september", L"october",  L"november", L"december"};
constexpr std::array<std::wstring_view, 7> WEEKDAYS = {L"monday", L"tuesday",  L"wednesday", L"thursday",
                                                       L"friday", L"saturday", L"sunday"};

// What a text says, before it is known whether there is such a date.
struct Fields
{
    int nDays = 0; // of the date, since 1970
    DATE_PRECISION ePrecision = DATE_PRECISION_PERIOD;
    int nMilliseconds = 0; // of the time, up to DAY_MS itself
    int nZoneMinutes = 0;  // ahead of UTC
};

bool SetDate(Fields& fields, int nYear, int nMonth, int nDay, DATE_PRECISION ePrecision)
{
    if (nYear < ParsedDate::FIRST_YEAR || nYear > ParsedDate::LAST_YEAR || nDay < 1 ||
        nDay > GetDaysInMonth(nYear, nMonth))
        return false;
    fields.nDays = GetDays(nYear, nMonth, nDay);
    fields.ePrecision = ePrecision;
    return true;
}

bool SetOrdinalDate(Fields& fields, int nYear, int nDayOfYear)
{
    if (nDayOfYear < 1 || nDayOfYear > (IsLeapYear(nYear) ? 366 : 365) || !SetDate(fields, nYear, 1, 1, {}))
        return false;
    fields.nDays += nDayOfYear - 1;
    fields.ePrecision = DATE_PRECISION_DAY;
    return true;
}

// ISO 8601: week 1 is the one with 4 January, and a week begins on Monday, its day 1.
bool SetWeekDate(Fields& fields, int nYear, int nWeek, int nWeekday, DATE_PRECISION ePrecision)
{
    if (nWeek < 1 || nWeek > (IsLongWeekYear(nYear) ? 53 : 52) || nWeekday < 1 || nWeekday > 7 ||
        !SetDate(fields, nYear, 1, 4, ePrecision))
        return false;
    const int nMondayOffset = GetWeekday(fields.nDays); // of 4 January, in its week
    fields.nDays += (nWeek - 1) * 7 - nMondayOffset + nWeekday - 1;
    return true;
}

// [-]Www[[-]D], behind the year
bool ScanWeek(DateScanner& scanner, bool bDashed, int nYear, Fields& fields)
{
    int nWeek = 0;
    int nWeekday = 1;
    if (!scanner.TakeDigits(2, nWeek))
        return false;
    const bool bDay = bDashed ? scanner.TakeCharacter(L'-') : scanner.CountDigits() > 0;
    if (bDay && !scanner.TakeDigits(1, nWeekday))
        return false;
    return SetWeekDate(fields, nYear, nWeek, nWeekday, bDay ? DATE_PRECISION_DAY : DATE_PRECISION_PERIOD);
}

// MM, MM-DD or DDD, behind the year and a dash
bool ScanDashedRest(DateScanner& scanner, int nYear, Fields& fields)
{
    int nMonth = 0;
    int nDay = 0;
    if (scanner.CountDigits() == 3)
        return scanner.TakeDigits(3, nDay) && SetOrdinalDate(fields, nYear, nDay);
    if (!scanner.TakeDigits(2, nMonth))
        return false;
    if (!scanner.TakeCharacter(L'-'))
        return SetDate(fields, nYear, nMonth, 1, DATE_PRECISION_PERIOD);
    return scanner.TakeDigits(2, nDay) && SetDate(fields, nYear, nMonth, nDay, DATE_PRECISION_DAY);
}

bool ScanISODate(DateScanner& scanner, Fields& fields)
{
    int nYear = 0;
    int nMonth = 0;
    int nDay = 0;
    const int nDigits = scanner.CountDigits();
    if (!scanner.TakeDigits(4, nYear))
        return false;
    if (nDigits == 8)
        return scanner.TakeDigits(2, nMonth) && scanner.TakeDigits(2, nDay) &&
               SetDate(fields, nYear, nMonth, nDay, DATE_PRECISION_DAY);
    if (nDigits == 7)
        return scanner.TakeDigits(3, nDay) && SetOrdinalDate(fields, nYear, nDay);
    if (nDigits != 4)
        return false;
    const bool bDashed = scanner.TakeCharacter(L'-');
    if (scanner.TakeCharacter(L'w'))
        return ScanWeek(scanner, bDashed, nYear, fields);
    return bDashed ? ScanDashedRest(scanner, nYear, fields) : SetDate(fields, nYear, 1, 1, DATE_PRECISION_PERIOD);
}

// hh, hh:mm, hh:mm:ss, hhmm or hhmmss; a fraction belongs to the last part.
bool ScanTime(DateScanner& scanner, Fields& fields)
{
    constexpr int UNITS[] = {HOUR_MS, MINUTE_MS, 1000};
    int aryParts[3] = {};
    int nParts = 0;
    const bool bColons = scanner.CountDigits() <= 2;
    do
    {
        if (!scanner.TakeDigits(2, aryParts[nParts++]))
            return false;
    } while (nParts < 3 && (bColons ? scanner.TakeCharacter(L':') : scanner.CountDigits() > 0));
    int nTime = 0;
    if (!scanner.TakeFraction(UNITS[nParts - 1], nTime) || aryParts[1] > 59 || aryParts[2] > 60)
        return false;
    // Deliberate: a leap second counts as the second before it. The days here have no room for it.
    aryParts[2] = aryParts[2] == 60 ? 59 : aryParts[2];
    nTime += aryParts[0] * HOUR_MS + aryParts[1] * MINUTE_MS + aryParts[2] * 1000;
    if (aryParts[0] > 24 || nTime > ParsedDate::DAY_MS)
        return false;
    fields.nMilliseconds = nTime;
    fields.ePrecision = DATE_PRECISION_TIME;
    return true;
}

// +hh, +hhmm, +hh:mm and the same with "-"; Z, or a name. False leaves the scanner anywhere.
bool ScanZone(DateScanner& scanner, Fields& fields)
{
    const bool bBehind = scanner.TakeCharacter(L'-');
    if (bBehind || scanner.TakeCharacter(L'+'))
    {
        int nHours = 0;
        int nMinutes = 0;
        if (!scanner.TakeDigits(2, nHours))
            return false;
        if ((scanner.TakeCharacter(L':') || scanner.CountDigits() > 0) && !scanner.TakeDigits(2, nMinutes))
            return false;
        fields.nZoneMinutes = (bBehind ? -1 : 1) * (nHours * 60 + nMinutes);
        return nHours < 24 && nMinutes < 60;
    }
    const std::wstring_view strName = scanner.TakeLetters();
    for (const NAMED_ZONE& zone : NAMED_ZONES)
    {
        if (DateScanner::IsSame(strName, zone.strName))
        {
            fields.nZoneMinutes = zone.nHours * 60;
            return true;
        }
    }
    return false;
}

bool ScanISO(DateScanner scanner, Fields& fields)
{
    if (!ScanISODate(scanner, fields))
        return false;
    if (scanner.IsAtEnd())
        return true;
    if (fields.ePrecision != DATE_PRECISION_DAY || (!scanner.TakeCharacter(L't') && !scanner.TakeBlanks()))
        return false;
    if (!ScanTime(scanner, fields))
        return false;
    scanner.TakeBlanks();
    return scanner.IsAtEnd() || (ScanZone(scanner, fields) && scanner.IsAtEnd());
}

// The number of the name, counted from 1, written out or in its first three letters; 0 for another word.
template <size_t COUNT>
int FindName(std::wstring_view strWord, const std::array<std::wstring_view, COUNT>& aryNames)
{
    for (size_t n = 0; n < COUNT; ++n)
    {
        if (DateScanner::IsSame(strWord, aryNames[n]) || DateScanner::IsSame(strWord, aryNames[n].substr(0, 3)))
            return static_cast<int>(n) + 1;
    }
    return 0;
}

bool ScanYear(DateScanner& scanner, int& nYear)
{
    constexpr int FIRST_OF_1900 = 70;
    const int nDigits = scanner.CountDigits();
    if ((nDigits != 2 && nDigits != 4) || !scanner.TakeDigits(nDigits, nYear))
        return false;
    if (nDigits == 2)
        nYear += nYear < FIRST_OF_1900 ? 2000 : 1900;
    return true;
}

bool ScanDayNumber(DateScanner& scanner, int& nDay)
{
    const int nDigits = scanner.CountDigits();
    return nDigits >= 1 && nDigits <= 2 && scanner.TakeDigits(nDigits, nDay);
}

// 06 Nov 1994 08:49:37 GMT, or with dashes between the parts of the date.
bool ScanMail(DateScanner& scanner, Fields& fields)
{
    int nDay = 0;
    int nYear = 0;
    if (!ScanDayNumber(scanner, nDay))
        return false;
    const bool bDashes = scanner.TakeCharacter(L'-');
    if (!bDashes && !scanner.TakeBlanks())
        return false;
    const int nMonth = FindName(scanner.TakeLetters(), MONTHS);
    if (nMonth == 0 || !(bDashes ? scanner.TakeCharacter(L'-') : scanner.TakeBlanks()) || !ScanYear(scanner, nYear) ||
        !SetDate(fields, nYear, nMonth, nDay, DATE_PRECISION_DAY))
        return false;
    if (scanner.IsAtEnd())
        return true;
    if (!scanner.TakeBlanks() || !ScanTime(scanner, fields))
        return false;
    return scanner.IsAtEnd() || (scanner.TakeBlanks() && ScanZone(scanner, fields) && scanner.IsAtEnd());
}

// 6 08:49:37 1994, behind the day of the week and the month.
bool ScanAsctime(DateScanner& scanner, int nMonth, Fields& fields)
{
    int nDay = 0;
    int nYear = 0;
    return scanner.TakeBlanks() && ScanDayNumber(scanner, nDay) && scanner.TakeBlanks() && ScanTime(scanner, fields) &&
           scanner.TakeBlanks() && scanner.CountDigits() == 4 && ScanYear(scanner, nYear) &&
           SetDate(fields, nYear, nMonth, nDay, DATE_PRECISION_TIME) && scanner.IsAtEnd();
}

bool ScanNamed(DateScanner scanner, Fields& fields)
{
    const std::wstring_view strWeekday = scanner.TakeLetters();
    if (strWeekday.empty())
        return ScanMail(scanner, fields);
    if (FindName(strWeekday, WEEKDAYS) == 0)
        return false;
    if (scanner.TakeCharacter(L','))
    {
        scanner.TakeBlanks();
        return ScanMail(scanner, fields);
    }
    if (!scanner.TakeBlanks())
        return false;
    const int nMonth = FindName(scanner.TakeLetters(), MONTHS);
    return nMonth != 0 && ScanAsctime(scanner, nMonth, fields);
}

// The zone, or the end of a day, may lead to a neighbouring day, and out of the calendar.
bool Finish(const Fields& fields, ParsedDate& date)
{
    constexpr int LAST_DAYS = GetDays(ParsedDate::LAST_YEAR, 12, 31);
    constexpr int FIRST_DAYS = GetDays(ParsedDate::FIRST_YEAR, 1, 1);
    int nDays = fields.nDays;
    int nTime = fields.nMilliseconds - fields.nZoneMinutes * MINUTE_MS;
    while (nTime < 0)
    {
        --nDays;
        nTime += ParsedDate::DAY_MS;
    }
    nDays += nTime / ParsedDate::DAY_MS;
    if (nDays < FIRST_DAYS || nDays > LAST_DAYS)
        return false;
    date = {fields.ePrecision, nDays, nTime % ParsedDate::DAY_MS};
    return true;
}
} // namespace

bool ParseDate(std::wstring_view strText, ParsedDate& date)
{
    const DateScanner scanner(strText);
    Fields fields;
    return (ScanISO(scanner, fields) || ScanNamed(scanner, fields)) && Finish(fields, date);
}
