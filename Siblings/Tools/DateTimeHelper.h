// The date-time service: texts to the days of LyDateTime.
//
// The fraction of the day says how much of the date is known, as
// LyDateTime::FormatISO8601 reads it: exactly 0 for a year, 0.1 seconds for a
// day without a time, 0.2 seconds for a true midnight.
//
// Threads: any.

#pragma once

#include "IDateTimeHelper.h"

class DateTimeHelper final : public IDateTimeHelper
{
public:
    // The forms of DateParser.h; 0.0 for all others. A text with a zone gives
    // UTC, one without is taken as it stands, so that no answer depends on where
    // the machine is; the flag changes nothing.
    //
    // A month has no mark of its own. It is its first day with the fraction 0:
    // nothing says that the day is known, and January shows as its year. A week
    // is its Monday, in the same way.
    double Parse(const wchar_t* pText, bool bFlag) override;
};
