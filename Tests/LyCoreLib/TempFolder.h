// A folder for one test, gone with all that is in it when the test ends.

#pragma once

#include "LyString.h"
#include <cstdlib>
#include <filesystem>

class TempFolder
{
public:
    TempFolder() { (void)mkdtemp(m_aryPath); }
    ~TempFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_aryPath, error);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The full name of something in the folder; of the empty name, the folder with a trailing slash.
    LyString GetName(const wchar_t* pName) const
    {
        LyString str;
        for (const char* p = m_aryPath; *p != 0; ++p)
            str += static_cast<wchar_t>(*p);
        return str + L"/" + pName;
    }

private:
    char m_aryPath[32] = "/tmp/TestLyCoreLib.XXXXXX";
};
