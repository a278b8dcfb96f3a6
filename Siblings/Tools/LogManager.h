// The log. Off by default; the environment variable RONDEL_LOG switches areas on and says where they go (LogSetting.h).
//
// A line:  2024-05-06T07:08:09.123Z 7f12a4b0c6c0 4096 CDRipper: text
//          UTC time, thread id in hexadecimal, area, the name that the caller gave ("-" for none), the text.
//          Line breaks at the end of a text go; control characters inside it are written as "\n" or "\x1b", so that a
//          call is one line, and nothing that a disc says reaches a terminal as a command.
// Cost:    an area that is off costs the test whether it is on: no formatting, no system call. Only the first line
//          opens the file.
// Errors:  a log that can't be written is given up with one sentence on the standard error stream. A setting of another
//          form is told there with the form that it should have, and nothing is logged.
// Threads: any. Nothing throws.

#pragma once

#include "LogFile.h"
#include "LogHelper.h"
#include "LogSetting.h"
#include <atomic>
#include <memory>
#include <mutex>
#include <string>

class LogManager final : public ILogManager
{
public:
    LogManager(); // as the environment says; harmless if that switches nothing on
    explicit LogManager(LogSetting setting, long long nMaxFileBytes = LogFile::MAX_BYTES);

    // Whether the environment switches any area on. A library without a wanted log needs no log manager at all.
    static bool IsWanted();

    void Reserved1() override {}
    void Reserved2() override {}
    // The formats of LyStringFormat. Without arguments the text is taken as it stands.
    void Log(int nArea, const LyString& strName, const wchar_t* pFormat, LyString::CFormatArgument** ppArgs,
             int nArgs) override;
    void Log(int nArea, const LyString& strName, const char* pText, LyString::CFormatArgument** ppArgs,
             int nArgs) override;

    bool IsOn(int nArea) const { return !m_bGivenUp.load(std::memory_order_relaxed) && m_Setting.IsOn(nArea); }

private:
    static LogSetting ReadEnvironment();
    void WriteRecord(int nArea, const LyString& strName, const wchar_t* pFormat, LyString::CFormatArgument** ppArgs,
                     int nArgs);
    void WriteLine(const std::string& strLine);
    void GiveUp(int nError);

    const LogSetting m_Setting;
    std::atomic<bool> m_bGivenUp{false};
    std::mutex m_Mutex; // guards the file
    std::unique_ptr<LogFile> m_pFile;
};
