#include "DateTimeHelper.h"

#include "DateParser.h"
#include <algorithm>

namespace
{
constexpr int DAYS_TO_1970 = 25569; // the day number of 1 January 1970; that of 1 January 1900 is 2
constexpr int DAY_MARK_MS = 100;
constexpr int MIDNIGHT_MARK_MS = 200;

// The first second of the day belongs to the marks. A reader tells a time from a mark by what lies above a whole
// second, and knows a mark to within 10 ms: the time of exactly one second keeps the double of that from it, which no
// reader of whole seconds sees.
constexpr int FIRST_TIME_MS = 1000;
constexpr int FIRST_SAFE_TIME_MS = 1020;

int GetMarkedMilliseconds(const ParsedDate& date)
{
    switch (date.ePrecision)
    {
    case DATE_PRECISION_PERIOD:
        return 0;
    case DATE_PRECISION_DAY:
        return DAY_MARK_MS;
    case DATE_PRECISION_TIME:
        break;
    }
    // Deliberate: a time within the first second is a midnight. Anything else there would be read as a mark.
    return date.nMilliseconds < FIRST_TIME_MS ? MIDNIGHT_MARK_MS : std::max(date.nMilliseconds, FIRST_SAFE_TIME_MS);
}
} // namespace

double DateTimeHelper::Parse(const wchar_t* pText, bool)
{
    ParsedDate date;
    if (pText == nullptr || !ParseDate(pText, date))
        return 0.0;
    const double fDay = date.nDays + DAYS_TO_1970;
    const double fTime = static_cast<double>(GetMarkedMilliseconds(date)) / ParsedDate::DAY_MS;
    // Up to day 0 the time stands behind the point with the sign of the day, and so it leads away from zero.
    return fDay <= 0 ? fDay - fTime : fDay + fTime;
}
