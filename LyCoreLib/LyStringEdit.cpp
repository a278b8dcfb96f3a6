#include "LyString.h"
#include "LyStringDetails.h"
#include <cctype>
#include <cwchar>
#include <new>

// ---- Removing

// What remains is moved to the front of a block that is owned, and copied out of one that is shared.
void LyString::KeepRange(int nStart, int nCount)
{
    Assign(m_pText + nStart, nCount);
    ReleaseBuffer(nCount);
}

int LyString::Remove(wchar_t c)
{
    int nFirst = Find(c, 0);
    if (nFirst < 0 || GetBuffer(-1, false, true) == nullptr)
        return 0;
    int nLength = GetLength();
    int nKept = nFirst;
    for (int i = nFirst + 1; i < nLength; ++i)
    {
        if (m_pText[i] != c)
            m_pText[nKept++] = m_pText[i];
    }
    ReleaseBuffer(nKept);
    return nLength - nKept;
}

void LyString::RemoveLeft(int nCount) { RemoveLeftAndRight(nCount, 0); }

void LyString::RemoveRight(int nCount) { RemoveLeftAndRight(0, nCount); }

void LyString::RemoveLeftAndRight(int nLeft, int nRight)
{
    if (nLeft < 0)
        nLeft = 0;
    if (nRight < 0)
        nRight = 0;
    if (nLeft == 0 && nRight == 0)
        return;
    int nLength = GetLength();
    if (nLeft >= nLength || nRight >= nLength - nLeft)
        Empty();
    else
        KeepRange(nLeft, nLength - nLeft - nRight);
}

bool LyString::RemoveLeft(const wchar_t* p, bool bCaseSensitive)
{
    if (CompareLeft(p, bCaseSensitive, -1) != 0)
        return false;
    RemoveLeft(LyStringDetails::Measure(p));
    return true;
}

bool LyString::RemoveBefore(wchar_t c, bool bRemoveCharacterToo)
{
    int nFound = Find(c, 0);
    if (nFound < 0)
        return false;
    RemoveLeft(bRemoveCharacterToo ? nFound + 1 : nFound);
    return true;
}

bool LyString::RemoveAfter(wchar_t c, bool bRemoveCharacterToo, int nStart)
{
    return RemoveAfterIndex(Find(c, nStart), bRemoveCharacterToo);
}

bool LyString::RemoveAfterIndex(int nIndex, bool bRemoveCharacterToo)
{
    int nLength = GetLength();
    if (nIndex < 0 || nIndex >= nLength)
        return false;
    RemoveRight(nLength - nIndex - (bRemoveCharacterToo ? 0 : 1));
    return true;
}

bool LyString::RemoveAfterReverse(wchar_t c, bool bRemoveCharacterToo)
{
    return RemoveAfterIndex(ReverseFind(c), bRemoveCharacterToo);
}

// ---- Editing

int LyString::Insert(int nIndex, wchar_t c)
{
    int nLength = GetLength();
    if (nIndex < 0 || nIndex > nLength || nLength == LyStringBuffer::MAX_CHARACTERS ||
        GetBuffer(nLength + 1, false, true) == nullptr)
        return nLength;
    nLength = GetLength();
    if (nIndex > nLength)
        nIndex = nLength;
    std::wmemmove(m_pText + nIndex + 1, m_pText + nIndex, static_cast<size_t>(nLength - nIndex));
    m_pText[nIndex] = c;
    ReleaseBuffer(nLength + 1);
    return nLength + 1;
}

LyString& LyString::Trim()
{
    const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
    int nEnd = GetLength();
    while (nEnd > 0 && globals.IsSpace(m_pText[nEnd - 1]))
        --nEnd;
    int nStart = 0;
    while (nStart < nEnd && globals.IsSpace(m_pText[nStart]))
        ++nStart;
    RemoveLeftAndRight(nStart, GetLength() - nEnd);
    return *this;
}

LyString& LyString::TrimLeft(wchar_t c)
{
    int nStart = 0;
    while (nStart < GetLength() && m_pText[nStart] == c)
        ++nStart;
    RemoveLeft(nStart);
    return *this;
}

namespace
{
// tolower is defined for the values of an unsigned char only; it leaves all others as they are.
wchar_t ToLowerNarrow(wchar_t c)
{
    return c >= 0 && c < LyStringGlobals::CHARACTER_TABLE_SIZE ? static_cast<wchar_t>(std::tolower(c)) : c;
}
} // namespace

LyString& LyString::Lower()
{
    const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
    int nLength = GetLength();
    int nFirst = 0;
    while (nFirst < nLength && globals.ToLower(m_pText[nFirst]) == m_pText[nFirst])
        ++nFirst;
    if (nFirst == nLength || GetBuffer(-1, false, true) == nullptr)
        return *this;
    m_pText[nFirst] = static_cast<wchar_t>(globals.ToLower(m_pText[nFirst]));
    // Deliberate: behind the first change it is tolower and not the table, so that characters of 256 and above keep
    // their case there. Lowered names are stored and compared in this form.
    for (int i = nFirst + 1; i < nLength; ++i)
        m_pText[i] = ToLowerNarrow(m_pText[i]);
    ReleaseBuffer(nLength);
    return *this;
}

template <class T>
T* LyString::RemovePrematureNulls(const T* p, int nLength)
{
    size_t nChars = p && nLength > 0 ? static_cast<size_t>(nLength) : 0;
    T* pResult = new (std::nothrow) T[nChars + 1];
    if (pResult == nullptr)
        return nullptr;
    T* pOut = pResult;
    for (size_t i = 0; i < nChars; ++i)
    {
        if (p[i] != 0)
            *pOut++ = p[i];
    }
    *pOut = 0;
    return pResult;
}

template char* LyString::RemovePrematureNulls<char>(const char*, int);
template unsigned short* LyString::RemovePrematureNulls<unsigned short>(const unsigned short*, int);
template wchar_t* LyString::RemovePrematureNulls<wchar_t>(const wchar_t*, int);
