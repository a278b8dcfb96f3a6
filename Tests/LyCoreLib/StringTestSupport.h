// What the tests of the strings share: a look at the block behind a string, strings of a foreign manager, and calls
// through the raw virtual table.

#pragma once

#include "LyString.h"
#include <cstring>
#include <ostream>
#include <string>

inline LyStringBuffer* BlockOf(const LyString& str)
{
    return LyStringBuffer::FromCharacters(const_cast<wchar_t*>(static_cast<const wchar_t*>(str)));
}

inline const wchar_t* TextOf(const LyString& str) { return str; }

inline std::wstring Contents(const LyString& str) { return {TextOf(str), static_cast<size_t>(str.GetLength())}; }

// A string as another library would have made it: its block belongs to the given manager and is exactly full.
class ForeignString
{
public:
    ForeignString(ILyStringManager& manager, const wchar_t* pText)
    {
        wchar_t* pCharacters = manager.NewLyStringBuffer(pText, -1, -1, false, true, true);
        std::memcpy(static_cast<void*>(&m_str), &pCharacters, sizeof pCharacters);
    }
    LyString& Get() { return m_str; }

private:
    LyString m_str; // the shared empty string that it held is not counted
};

// Calls the operation in the given place of an object's virtual table, counted from 0.
template <class RESULT, class... ARGUMENTS>
__attribute__((no_sanitize("undefined"))) RESULT CallSlot(const void* pObject, int nSlot, ARGUMENTS... arguments)
{
    auto** ppTable = *static_cast<void** const*>(pObject);
    return reinterpret_cast<RESULT (*)(const void*, ARGUMENTS...)>(ppTable[nSlot])(pObject, arguments...);
}
