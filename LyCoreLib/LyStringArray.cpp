#include "LyStringArray.h"
#include "LyHash.h"
#include "LyMap.h"
#include <cwchar>

namespace
{
// From this many strings on, remembering hashes is faster than comparing all pairs.
constexpr int MIN_COUNT_FOR_HASHES = 17;

const wchar_t* Characters(const LyString& str) { return str; }

// Strings that share their block are equal without a look at the text.
bool AreEqual(const LyString& strFirst, const LyString& strSecond, bool bCaseSensitive)
{
    const wchar_t* pFirst = strFirst;
    const wchar_t* pSecond = strSecond;
    if (pFirst == pSecond)
        return true;
    return bCaseSensitive ? wcscmp(pFirst, pSecond) == 0 : LyHash::AreTextsEqual(pFirst, pSecond, false);
}
} // namespace

void LyStringArray::InitFromList(const wchar_t* pList, const wchar_t* pDelimiter, bool bTrim, bool bSkipEmptyTrailing)
{
    LyStringDelimiterScanner(pList, pDelimiter, bTrim).FillStringArray(*this, true, bSkipEmptyTrailing);
}

LyString LyStringArray::GetList(const wchar_t* pDelimiter, bool bReverse, int nMaxItems, bool* pbTruncated) const
{
    const bool bTruncated = nMaxItems >= 0 && m_nCount > nMaxItems;
    if (pbTruncated != nullptr)
        *pbTruncated = bTruncated;
    const int nDelimiter = pDelimiter != nullptr ? static_cast<int>(wcslen(pDelimiter)) : 0;
    return Join(pDelimiter, nDelimiter, bTruncated ? nMaxItems : m_nCount, bReverse);
}

LyString LyStringArray::GetList(wchar_t cDelimiter, bool bReverse) const
{
    return Join(&cDelimiter, 1, m_nCount, bReverse);
}

// The first nItems strings. Empty if the text would be too long for a string.
LyString LyStringArray::Join(const wchar_t* pDelimiter, int nDelimiter, int nItems, bool bReverse) const
{
    if (nItems < 1)
        return LyString();
    if (nItems == 1)
        return m_pData[0];
    long long nTotal = static_cast<long long>(nItems) * nDelimiter;
    for (int i = 0; i < nItems; ++i)
        nTotal += m_pData[i].GetLength();
    if (nTotal >= INT_MAX)
        return LyString();

    LyString strList;
    wchar_t* pStart = strList.GetBuffer(static_cast<int>(nTotal), true, false);
    wchar_t* p = pStart;
    for (int i = 0; i < nItems; ++i)
    {
        const LyString& strItem = m_pData[bReverse ? nItems - 1 - i : i];
        p = wmemcpy(p, strItem, static_cast<size_t>(strItem.GetLength())) + strItem.GetLength();
        if (nDelimiter > 0)
            p = wmemcpy(p, pDelimiter, static_cast<size_t>(nDelimiter)) + nDelimiter;
    }
    strList.ReleaseBuffer(static_cast<int>(nTotal) - nDelimiter);
    return strList;
}

bool LyStringArray::ContainsString(const LyString& str, bool bCaseSensitive) const
{
    return FindStringHelper(str, bCaseSensitive, true, false) >= 0;
}

int LyStringArray::FindString(const LyString& str, bool bCaseSensitive, bool bWholeString) const
{
    return FindStringHelper(str, bCaseSensitive, bWholeString, false);
}

int LyStringArray::FindStringHelper(const LyString& str, bool bCaseSensitive, bool bWholeString,
                                    bool bCompareLeft) const
{
    if (bWholeString && !bCompareLeft)
        return FindWhole(str, bCaseSensitive);
    for (int i = 0; i < m_nCount; ++i)
    {
        const LyString& strItem = m_pData[i];
        bool bFound = false;
        if (bCompareLeft)
            bFound = strItem.CompareLeft(str, bCaseSensitive, 0) == 0;
        else
            bFound = (bCaseSensitive ? strItem.Find(Characters(str)) : strItem.FindNoCase(str)) >= 0;
        if (bFound)
            return i;
    }
    return -1;
}

int LyStringArray::FindWhole(const LyString& str, bool bCaseSensitive) const
{
    for (int i = 0; i < m_nCount; ++i)
    {
        if (AreEqual(m_pData[i], str, bCaseSensitive))
            return i;
    }
    return -1;
}

int LyStringArray::RemoveString(const LyString& str, bool bCaseSensitive)
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): str may be an element and go in the middle of this
    const LyString strWanted(str);
    int nRemoved = 0;
    for (int i = m_nCount - 1; i >= 0; --i)
    {
        if (!AreEqual(m_pData[i], strWanted, bCaseSensitive))
            continue;
        RemoveAt(i, 1);
        ++nRemoved;
    }
    return nRemoved;
}

void LyStringArray::RemoveDuplicates()
{
    if (m_nCount < 2)
        return;
    if (m_nCount < MIN_COUNT_FOR_HASHES)
        RemoveDuplicatesByPairs();
    else
        RemoveDuplicatesByHash();
}

void LyStringArray::RemoveDuplicatesByPairs()
{
    for (int i = m_nCount - 1; i >= 1; --i)
    {
        int j = i - 1;
        while (j >= 0 && !AreEqual(m_pData[i], m_pData[j], false))
            --j;
        if (j >= 0)
            RemoveAt(i, 1);
    }
}

// Deliberate: strings with the same 64 bit hash count as equal and their texts are not compared. That is the price of
// one look at each string.
void LyStringArray::RemoveDuplicatesByHash()
{
    LyStringCRCUniqueList<false> listSeen;
    LyNumberArray<int> aryDuplicates;
    for (int i = 0; i < m_nCount; ++i)
    {
        if (!listSeen.Add(m_pData[i]))
            aryDuplicates.Add(i);
    }
    for (int i = aryDuplicates.GetSize() - 1; i >= 0; --i)
        RemoveAt(aryDuplicates[i], 1);
}
