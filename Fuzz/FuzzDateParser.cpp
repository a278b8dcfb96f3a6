// Dates from hostile text, one byte for each character. What is a date must survive its own full form.

#include "DateParser.h"
#include "DateTimeHelper.h"
#include "FuzzCheck.h"
#include "LyDateTime.h"
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    std::wstring strText;
    for (size_t i = 0; i < nBytes; ++i)
        strText += static_cast<wchar_t>(pData[i]);
    ParsedDate date;
    const bool bDate = ParseDate(strText, date);
    Check(date.nMilliseconds >= 0 && date.nMilliseconds < ParsedDate::DAY_MS);

    DateTimeHelper helper;
    const double fDays = helper.Parse(strText.c_str(), false);
    Check(fDays == helper.Parse(strText.c_str(), true));
    if (strText.find(L'\0') == std::wstring::npos)
        Check(bDate == (fDays != 0.0));
    if (fDays == 0.0)
        return 0;
    const LyString strFull = LyDateTime(fDays).FormatISO8601(true, false);
    const LyString strKnown = LyDateTime(fDays).FormatISO8601(false, true);
    // Rounding to whole seconds may lead out of the last year.
    if (strFull.GetLength() != 20)
        return 0;
    if (fDays > 0) // below that, the numbers of two neighbouring moments may be far apart
        Check(std::fabs(helper.Parse(strFull, false) - fDays) < 1.5 / 86400);
    // A year before 1000 is written with fewer digits than a year that is read has.
    if (strKnown.GetLength() >= 4)
        Check(LyDateTime(helper.Parse(strKnown, false)).FormatISO8601(false, true) == strKnown);
    return 0;
}
