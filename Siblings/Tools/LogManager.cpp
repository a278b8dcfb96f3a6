#include "LogManager.h"
#include "LyForeignCall.h"
#include "LyString.h"
#include "OneLineText.h"
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace
{
void PrintError(const std::string& strSentence)
{
    (void)LogFile::Write(STDERR_FILENO, strSentence.data(), strSentence.size()); // there is no other place to tell it
}

// The library is asked for its log at several places; the user is told once of each setting.
void ComplainOnce(const std::string& strValue)
{
    static std::mutex s_Mutex;
    static std::string s_strLast;
    std::lock_guard lock(s_Mutex);
    if (strValue == s_strLast)
        return;
    s_strLast = strValue;
    PrintError("Rondel: nothing is logged, because RONDEL_LOG is not of the form AREAS:TARGET, such as "
               "\"4096:stderr\", \"4096,1:/tmp/rondel.log\" or \"all:rondel.log\".\n");
}

// ISO 8601 with milliseconds, the thread and the area.
void AppendHead(std::string& strLine, int nArea)
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const long long nMs = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    const std::time_t nSeconds = static_cast<std::time_t>(nMs / 1000);
    std::tm time = {};
    gmtime_r(&nSeconds, &time);
    char szTime[32];
    (void)std::strftime(szTime, sizeof szTime, "%Y-%m-%dT%H:%M:%S", &time);
    char szHead[96];
    std::snprintf(szHead, sizeof szHead, "%s.%03dZ %llx %d ", szTime, static_cast<int>(nMs % 1000),
                  (unsigned long long)LyProcess::GetCurrentThreadId(), nArea); // an integer or a pointer, by platform
    strLine += szHead;
}

int GetLengthWithoutEnd(const LyString& strText)
{
    int nLength = strText.GetLength();
    while (nLength > 0 && (strText[nLength - 1] == L'\n' || strText[nLength - 1] == L'\r'))
        --nLength;
    return nLength;
}
} // namespace

LogManager::LogManager() : LogManager(ReadEnvironment()) {}

LogManager::LogManager(LogSetting setting, long long nMaxFileBytes) : m_Setting(std::move(setting))
{
    if (m_Setting.IsAnyOn() && !m_Setting.m_strFile.empty())
        m_pFile = std::make_unique<LogFile>(m_Setting.m_strFile, nMaxFileBytes);
}

bool LogManager::IsWanted()
{
    bool bWanted = false;
    (void)LyForeignCall([&] { bWanted = ReadEnvironment().IsAnyOn(); });
    return bWanted;
}

LogSetting LogManager::ReadEnvironment()
{
    LogSetting setting;
    const char* pValue = std::getenv(LogSetting::VARIABLE);
    if (!setting.Parse(pValue) && pValue != nullptr)
        ComplainOnce(pValue);
    return setting;
}

void LogManager::Log(int nArea, const LyString& strName, const wchar_t* pFormat, LyString::CFormatArgument** ppArgs,
                     int nArgs)
{
    if (!IsOn(nArea))
        return;
    (void)LyForeignCall([&] { WriteRecord(nArea, strName, pFormat, ppArgs, nArgs); });
}

void LogManager::Log(int nArea, const LyString& strName, const char* pText, LyString::CFormatArgument** ppArgs,
                     int nArgs)
{
    if (!IsOn(nArea))
        return;
    (void)LyForeignCall(
        [&]
        {
            LyString strFormat;
            strFormat.FromANSI(pText);
            WriteRecord(nArea, strName, strFormat, ppArgs, nArgs);
        });
}

void LogManager::WriteRecord(int nArea, const LyString& strName, const wchar_t* pFormat,
                             LyString::CFormatArgument** ppArgs, int nArgs)
{
    LyString strText;
    if (ppArgs != nullptr && nArgs > 0 && pFormat != nullptr)
        strText.FormatV(pFormat, ppArgs, nArgs);
    else
        strText = pFormat;
    std::string strLine;
    AppendHead(strLine, nArea);
    AppendOneLine(strLine, strName.IsEmpty() ? L"-" : static_cast<const wchar_t*>(strName));
    strLine += ": ";
    AppendOneLine(strLine, strText, static_cast<size_t>(GetLengthWithoutEnd(strText)));
    strLine += '\n';
    WriteLine(strLine);
}

void LogManager::WriteLine(const std::string& strLine)
{
    std::lock_guard lock(m_Mutex);
    if (m_bGivenUp)
        return;
    const bool bWritten = m_pFile ? m_pFile->Append(strLine.data(), strLine.size())
                                  : LogFile::Write(STDERR_FILENO, strLine.data(), strLine.size());
    if (!bWritten)
        GiveUp(errno);
}

void LogManager::GiveUp(int nError)
{
    m_bGivenUp = true;
    std::string strSentence = "Rondel: logging stops, because ";
    strSentence += m_pFile ? m_pFile->GetPath() : "the standard error stream";
    PrintError(strSentence + " can't be written: " + std::generic_category().message(nError) + ".\n");
    m_pFile.reset();
}
