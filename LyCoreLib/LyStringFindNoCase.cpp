#include "IStringHelper.h"
#include "LySharedToolsHelper.h"
#include "LyString.h"
#include "LyStringDetails.h"

// The service of the tools library knows more about languages than a table does. Without it the manager's own folding
// serves, so that the search is never sensitive to case.
int LyString::FindNoCase(const wchar_t* p, int nStart, bool bReturnEnd) const
{
    int nLength = GetLength();
    if (nStart < 0)
        nStart = 0;
    if (p == nullptr || nStart > nLength)
        return -1;
    int nPatternLength = LyStringDetails::Measure(p);
    IStringHelper* pHelper = nPatternLength > 0 ? GetStringHelper(true) : nullptr;
    int nFound = pHelper ? pHelper->FindNoCase(m_pText, p, nStart)
                         : LyStringDetails::FindText(m_pText, nLength, p, nPatternLength, nStart, false);
    if (nFound < nStart || nFound > nLength)
        return -1;
    if (!bReturnEnd)
        return nFound;
    // The place that a service names need not have room for the whole pattern.
    return nPatternLength < nLength - nFound ? nFound + nPatternLength : nLength;
}
