// A library with a string manager of its own, which TestLyStringModule loads and unloads. Its strings live in static
// objects, so that they are made before and dropped after everything else in it.

#include "LyString.h"

namespace
{
void (*s_pReport)(const wchar_t*) = nullptr;
void (*s_pReportEnd)(const wchar_t*) = nullptr;

struct LATE_USER
{
    ~LATE_USER()
    {
        LyString str(m_strName);
        str += L" in a static destructor";
        if (s_pReport)
            s_pReport(str);
    }
    LyString m_strName{L"used"};
};

// The lowest priority: constructed before the library's own static objects, and destroyed after them.
__attribute__((init_priority(101))) LATE_USER s_LateUser;
LyString s_strShared(L"text of the module");
LyString s_strLast;

void UseStringsAtTheVeryEnd()
{
    LyString strCopy(L"the last string ");
    strCopy += L"of the library";
    LyString strOther(strCopy);
    strOther.Empty();
    if (s_pReportEnd)
        s_pReportEnd(strCopy);
}
// Behind everything that runs when the library goes, the end of the string manager included. The priorities below 101
// are not open to the destructor attribute.
__attribute__((section(".fini_array.00050"), used)) void (*s_pVeryEnd)() = UseStringsAtTheVeryEnd;

void UseStrings()
{
    for (int i = 0; i < 40; ++i)
    {
        LyString strLine(L"line ");
        strLine += static_cast<wchar_t>(L'0' + i % 10);
        s_strLast = strLine + L" and more";
    }
}
} // namespace

LY_EXPORT void SetReports(void (*pReport)(const wchar_t*), void (*pReportEnd)(const wchar_t*))
{
    s_pReport = pReport;
    s_pReportEnd = pReportEnd;
    UseStrings();
}

LY_EXPORT ILyStringManager* GetModuleManager() { return LyStringGlobals::GetManager(); }

LY_EXPORT LyString* GetModuleString() { return &s_strShared; }

LY_EXPORT void FillString(const ILyDllString* pTarget) { pTarget->Set(L"filled by the module", -1); }
