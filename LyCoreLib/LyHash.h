// Hashes and comparisons of text, as the maps use them.
//
// The recurrence is h = h * 65599 + c from 0, over the characters up to the terminator; null and empty give 0. Folding
// takes each character to lower case: by the string manager's table below 256, by the C library above.

#pragma once

class LyHash
{
public:
    // The 64 bit hash. On a processor with SSE2 only the low 16 bits of each character go in, on others the whole.
    // Defined for wchar_t.
    template <class C>
    static unsigned long long HashString(const C* p, bool bCaseSensitive);

    // The same with the cut told, for either kind of processor.
    static unsigned long long HashString(const wchar_t* p, bool bCaseSensitive, bool bCutTo16Bits);

    // The 32 bit hash by which a map picks a bucket; no character is cut.
    static unsigned int HashText(const wchar_t* p, bool bCaseSensitive);

    // Character by character, to the end of the first text; a null text is an empty one.
    static bool AreTextsEqual(const wchar_t* pFirst, const wchar_t* pSecond, bool bCaseSensitive);
};

template <>
unsigned long long LyHash::HashString<wchar_t>(const wchar_t* p, bool bCaseSensitive);
