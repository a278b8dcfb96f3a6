#include "LyString.h"
#include "LyStringDetails.h"
#include <cwchar>

namespace
{
struct MARKER
{
    explicit MARKER(const wchar_t* p) : pText(p ? p : L""), nLength(LyStringDetails::Measure(p)) {}

    bool StandsAt(const wchar_t* p, int nRemaining, bool bCaseSensitive) const
    {
        if (nLength > nRemaining)
            return false;
        return bCaseSensitive ? std::wmemcmp(p, pText, static_cast<size_t>(nLength)) == 0
                              : LyStringDetails::EqualsFolded(LyStringGlobals::GetGlobals(), p, pText, nLength);
    }

    const wchar_t* pText;
    int nLength;
};

// Where the closing marker of the span stands whose text begins at nPosition, or -1.
int FindNestedEnd(const wchar_t* pText, int nLength, int nPosition, const MARKER& begin, const MARKER& end,
                  bool bCaseSensitive)
{
    int nDepth = 1;
    while (nPosition <= nLength)
    {
        const wchar_t* p = pText + nPosition;
        int nRemaining = nLength - nPosition;
        // An empty opening marker would stand everywhere, and the scan would never get on.
        if (begin.nLength > 0 && begin.StandsAt(p, nRemaining, bCaseSensitive))
        {
            ++nDepth;
            nPosition += begin.nLength;
        }
        else if (end.StandsAt(p, nRemaining, bCaseSensitive))
        {
            if (nDepth == 1)
                return nPosition;
            --nDepth;
            nPosition += end.nLength;
        }
        else
            ++nPosition;
    }
    return -1;
}
} // namespace

bool LyString::GetSpanOffsets(int& nStart, int& nEnd, const wchar_t* pBegin, const wchar_t* pEnd, bool bCaseSensitive,
                              int nSearchFrom, bool bIncludeMarkers, ERecursiveSpanModes eRecursion,
                              bool bEndOfStringClosesSpan) const
{
    MARKER begin(pBegin);
    MARKER end(pEnd);
    int nLength = GetLength();
    nStart = -1;
    nEnd = -1;
    int nOpening = LyStringDetails::FindText(m_pText, nLength, begin.pText, begin.nLength,
                                             nSearchFrom < 0 ? 0 : nSearchFrom, bCaseSensitive);
    if (nOpening < 0)
        return false;
    int nInside = nOpening + begin.nLength;
    int nClosing = eRecursion == RECURSIVE_SPAN_NONE
                       ? LyStringDetails::FindText(m_pText, nLength, end.pText, end.nLength, nInside, bCaseSensitive)
                       : FindNestedEnd(m_pText, nLength, nInside, begin, end, bCaseSensitive);
    if (nClosing < 0 && !bEndOfStringClosesSpan)
        return false;
    nStart = bIncludeMarkers ? nOpening : nInside;
    if (nClosing < 0)
        nEnd = nLength;
    else
        nEnd = bIncludeMarkers ? nClosing + end.nLength : nClosing;
    return true;
}

LyString LyString::GetSpan(const wchar_t* pBegin, const wchar_t* pEnd, bool bCaseSensitive, int nSearchFrom,
                           bool bIncludeMarkers, ERecursiveSpanModes eRecursion, bool bEndOfStringClosesSpan) const
{
    int nStart;
    int nEnd;
    if (!GetSpanOffsets(nStart, nEnd, pBegin, pEnd, bCaseSensitive, nSearchFrom, bIncludeMarkers, eRecursion,
                        bEndOfStringClosesSpan))
        return {};
    return Mid(nStart, nEnd - nStart);
}
