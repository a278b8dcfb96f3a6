// A folder for one test whose names are strings of the system.

#pragma once

#include "LyString.h"
#include "TempFolder.h"

class LyTempFolder : public TempFolder
{
public:
    // The full name of something in the folder; of the empty name, the folder with a trailing slash.
    LyString GetName(const wchar_t* pName) const
    {
        LyString str;
        for (char c : GetPath())
            str += static_cast<wchar_t>(c);
        return str + L"/" + pName;
    }
};
