// Any number is a date or none; what is one stays within its ranges, and agrees with the calendar.

#include "FuzzCheck.h"
#include "LyDateTime.h"
#include <cmath>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    double fValue;
    if (nBytes < sizeof fValue + 1)
        return 0;
    std::memcpy(&fValue, pData, sizeof fValue);
    const bool bRound = (pData[sizeof fValue] & 1) != 0;
    const LyDateTime date(fValue);
    const LyDateTime::LyBrokenOutDateTime broken(date, bRound, true, true);
    const bool bEmpty = date.FormatISO8601(bRound, false).IsEmpty();
    (void)date.FormatISO8601(bRound, true);
    (void)date.GetFloatString();
    const LyDateTime::LyBrokenOutDateTime rounded(date, true, true, true);
    Check(bEmpty != rounded.m_bValid);
    if (!broken.m_bValid)
        return 0;

    const int nYear = broken.m_nYear + 1900;
    Check(nYear >= -32768 && nYear <= 32767 && broken.m_nMonth >= 0 && broken.m_nMonth <= 11);
    Check(broken.m_nDay >= 1 && broken.m_nDay <= LyDateTime::GetDaysInMonth(broken.m_nMonth + 1, nYear));
    Check(broken.m_nHour >= 0 && broken.m_nHour <= 23 && broken.m_nMinute >= 0 && broken.m_nMinute <= 59);
    Check(broken.m_nSecond >= 0 && broken.m_nSecond <= 59);
    Check(broken.m_nMillisecond >= 0 && broken.m_nMillisecond <= (bRound ? 0 : 999));
    // Day 0 of the split's count was a Sunday, 31 December 1899.
    const LyDateTime::LyBrokenOutDateTime day(date, false, false, true);
    const auto nDays = static_cast<long long>(std::trunc(fValue - 1.0));
    const int nWeekday = LyDateTime::GetDayOfWeek(day.m_nYear + 1900, day.m_nMonth + 1, day.m_nDay);
    Check(!day.m_bValid || (nDays % 7 + 7) % 7 + 1 == nWeekday);
    return 0;
}
