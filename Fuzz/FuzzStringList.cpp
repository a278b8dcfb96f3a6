// Lists of strings from hostile text: cutting, joining, searching, removing.
//
// Input: a byte of flags, a byte whose low two bits are the length of the delimiter, the delimiter, the text; one byte
// for each character.

#include "FuzzCheck.h"
#include "LyArray.h"
#include <cstddef>
#include <cstdint>

namespace
{
bool AreSame(const LyStringArray& aryFirst, const LyStringArray& arySecond)
{
    if (aryFirst.GetSize() != arySecond.GetSize())
        return false;
    for (int i = 0; i < aryFirst.GetSize(); ++i)
    {
        if (aryFirst[i] != arySecond[i])
            return false;
    }
    return true;
}

// Joining gives the text back, but for a delimiter at its end.
void CheckJoined(const LyStringArray& ary, const LyString& strText, const LyString& strDelimiter)
{
    const LyString strJoined = ary.GetList(strDelimiter);
    Check(strJoined == strText || (!strDelimiter.IsEmpty() && strJoined + strDelimiter == strText));
}

void CheckRemovals(LyStringArray& ary)
{
    LyStringArray aryUnique(ary);
    aryUnique.RemoveDuplicates();
    Check(aryUnique.GetSize() <= ary.GetSize());
    for (int i = 0; i < aryUnique.GetSize(); ++i)
        Check(aryUnique.FindString(aryUnique[i], false, true) == i);
    for (const LyString& str : ary)
        Check(aryUnique.ContainsString(str, false));
    while (ary.GetSize() > 0)
    {
        const int nBefore = ary.GetSize();
        const int nRemoved = ary.RemoveString(ary[nBefore / 2], false);
        Check(nRemoved >= 1 && ary.GetSize() == nBefore - nRemoved);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 2)
        return 0;
    const bool bTrim = (pData[0] & 1) != 0;
    const bool bSkipEmpty = (pData[0] & 2) != 0;
    const size_t nDelimiter = pData[1] & 3;
    LyString strDelimiter;
    LyString strText;
    for (size_t i = 2; i < nBytes && pData[i] != 0; ++i)
        (i - 2 < nDelimiter ? strDelimiter : strText) += static_cast<wchar_t>(pData[i]);

    LyStringArray ary;
    ary.InitFromList(strText, strDelimiter, bTrim, bSkipEmpty);
    if (!bTrim)
        CheckJoined(ary, strText, strDelimiter);

    LyStringArray aryOwn;
    aryOwn.Add(strText);
    strText.Empty(); // only the list holds the text now
    aryOwn.InitFromList(aryOwn[0], strDelimiter, bTrim, bSkipEmpty);
    Check(AreSame(ary, aryOwn));

    bool bTruncated = false;
    const int nMost = pData[0] >> 2;
    (void)ary.GetList(strDelimiter, true, nMost, &bTruncated);
    Check(bTruncated == (ary.GetSize() > nMost));
    CheckRemovals(ary);
    return 0;
}
