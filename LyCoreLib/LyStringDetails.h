// Text searched and compared with or without case, for the string operations that share it.
//
// Lengths are characters, never negative. Positions count from the start of the text; -1 means not there.

#pragma once

#include "LyStringManager.h"
#include <cwchar>

namespace LyStringDetails
{
// Case folding compares by LyStringGlobals::ToLower, a character at a time.
bool EqualsFolded(const LyStringGlobals& globals, const wchar_t* p1, const wchar_t* p2, int nChars);

// The first and the last place of the pattern, the first one not before nStart. An empty pattern is found at nStart,
// or at the end.
int FindText(const wchar_t* pText, int nTextLength, const wchar_t* pPattern, int nPatternLength, int nStart,
             bool bCaseSensitive);
int ReverseFindText(const wchar_t* pText, int nTextLength, const wchar_t* pPattern, int nPatternLength,
                    bool bCaseSensitive);

// The length of a text, null being empty.
inline int Measure(const wchar_t* p)
{
    size_t nLength = p ? std::wcslen(p) : 0;
    return nLength < LyStringBuffer::MAX_CHARACTERS ? static_cast<int>(nLength) : LyStringBuffer::MAX_CHARACTERS;
}
} // namespace LyStringDetails
