// Dates as people and programs write them.
//
//   ISO 8601   1999   1999-05   1999-05-06   19990506   1999-126   1999126
//   1999-W18   1999-W18-4   1999W184
//              a day may be followed by "T" or a blank and a time: 08   08:49
//              08:49:37   084937, the last part with a fraction behind a point
//              or comma, and a zone: Z   +01   +0130   +01:30. 24:00 is the end
//              of the day.
//   RFC 1123   Sun, 06 Nov 1994 08:49:37 GMT
//   RFC 850    Sunday, 06-Nov-94 08:49:37 GMT
//   asctime    Sun Nov  6 08:49:37 1994
//
// The forms with the month's name may leave out the day of the week, the
// seconds, the time and the zone; they know the zones' names of RFC 822. The
// day of the week is not checked against the date. A year of two digits lies in
// 1970 to 2069 (RFC 6265, 5.1.1). Letters may have either case; blanks around
// the text do not count.
//
// Errors:  a text in none of these forms, and a date or time that does not
// exist, is no date.

#pragma once

#include <string_view>

// How much of the date the text gives.
enum DATE_PRECISION
{
    DATE_PRECISION_PERIOD, // a year, month or week; the date is its first day
    DATE_PRECISION_DAY,
    DATE_PRECISION_TIME
};

struct ParsedDate
{
    static constexpr int FIRST_YEAR = 1;
    static constexpr int LAST_YEAR = 9999;
    static constexpr int DAY_MS = 24 * 60 * 60 * 1000;

    DATE_PRECISION ePrecision = DATE_PRECISION_PERIOD;
    int nDays = 0;         // since 1 January 1970, UTC if the text names a zone
    int nMilliseconds = 0; // since midnight, 0 to DAY_MS - 1
};

// False leaves the date as it is. The date lies in FIRST_YEAR to LAST_YEAR.
bool ParseDate(std::wstring_view strText, ParsedDate& date);
