// The border of the library: what the standard library throws (no memory, above all) ends here as an answer.

#pragma once

#include "LyPtr.h"
#include <string>

template <class RESULT, class CALL>
RESULT Guarded(RESULT resultOnFailure, CALL call) noexcept
{
    try
    {
        return call();
    }
    catch (...)
    {
        return resultOnFailure;
    }
}

template <class CALL>
void Guarded(CALL call) noexcept
{
    try
    {
        call();
    }
    catch (...)
    {
        return; // the object is as it was, or says that it is not open
    }
}

inline wchar_t* MakeSystemString(const std::wstring& str) { return LyCom::SysAllocString(str.c_str()); }
