// The front end to the player's log: a scope object that can log the start and the end of a function, and free lines.
//
// There are no levels: the area selects what is written. Without a log service every call ends after one pointer test;
// nothing is formatted, and the tools library is never loaded for it.
// Threads: one object per scope and thread. The log service does its own locking.

#pragma once

#include "LySharedToolsHelper.h"
#include "LyString.h"
#include "LyThread.h"

enum LY_LOG_AREAS : int
{
    LY_LOG_AREA_GENERAL = 1,
    LY_LOG_AREA_DRIVE = 4096
};

// The log service. The order of the operations is their order in the virtual table: other libraries call them there.
// The arguments are borrowed for the length of the call; one of no type counts as missing.
class ILogManager
{
public:
    virtual void Reserved1() {}
    virtual void Reserved2() {}
    virtual void Log(int nArea, const LyString& strName, const wchar_t* pFormat, LyString::CFormatArgument** ppArgs,
                     int nArgs) = 0;
    virtual void Log(int nArea, const LyString& strName, const char* pText, LyString::CFormatArgument** ppArgs,
                     int nArgs) = 0;

protected:
    ~ILogManager() = default;
};

class CLogHelper
{
public:
    using CFormatArgument = LyString::CFormatArgument;

    static constexpr int RESULT_NOT_SET = static_cast<int>(0x8a33f231);

    // With bLogStartFinish the line "Start" is written now, and at the end "Finish" with the milliseconds between.
    CLogHelper(int nArea, const char* pFunctionName, bool bLogStartFinish = false);
    ~CLogHelper();
    CLogHelper(const CLogHelper&) = delete;
    CLogHelper& operator=(const CLogHelper&) = delete;

    void SetResult(int nResult) { m_nResult = nResult; } // goes into the "Finish" line

    void Log(const char* pText);
    void Log(const char* pFormat, CFormatArgument a, CFormatArgument b = {}, CFormatArgument c = {},
             CFormatArgument d = {});
    static void Log(int nArea, const LyString& strName, const wchar_t* pFormat, CFormatArgument a1 = {},
                    CFormatArgument a2 = {}, CFormatArgument a3 = {}, CFormatArgument a4 = {}, CFormatArgument a5 = {},
                    CFormatArgument a6 = {}, CFormatArgument a7 = {}, CFormatArgument a8 = {}, CFormatArgument a9 = {},
                    CFormatArgument a10 = {}, CFormatArgument a11 = {}, CFormatArgument a12 = {},
                    CFormatArgument a13 = {}, CFormatArgument a14 = {}, CFormatArgument a15 = {},
                    CFormatArgument a16 = {}, CFormatArgument a17 = {}, CFormatArgument a18 = {},
                    CFormatArgument a19 = {}, CFormatArgument a20 = {});

    int m_nArea;
    LyString m_strName; // the function's name
    bool m_bLogStartFinish;
    LyTimerLowPrecision m_Timer; // runs since the construction
    int m_nResult = RESULT_NOT_SET;
};
