// The services of the tools library, standing in the test program itself: every log line, translation and message box
// is recorded, and nothing is shown. While an object of this class lives, the Get... accessors find its services.
//
//     RecordingTools tools;
//     ...
//     EXPECT_TRUE(tools.HasLog(L"SendCmd: timed out on errors"));
//
// Threads: any.

#pragma once

#include "ILyMessageBox.h"
#include "ILyTools.h"
#include "ITranslator.h"
#include "LogHelper.h"
#include "LySharedToolsHelper.h"
#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

class RecordingTools final : public ILyTools,
                             public ILogManager,
                             public ITranslator,
                             public ILyMessageBox,
                             public ILyWaitMessage
{
public:
    struct LOG_LINE
    {
        int nArea;
        std::wstring strName;
        std::wstring strText;
    };
    struct WAIT_MESSAGE
    {
        std::wstring strText;
        int nDelayMS;
        bool bCancelButton;
    };
    struct SHOWN_BOX
    {
        std::wstring strText;
        std::wstring strCaption;
    };

    RecordingTools() { g_LySharedToolsHelper.m_pTools = this; }
    ~RecordingTools() { g_LySharedToolsHelper.m_pTools = nullptr; }
    RecordingTools(const RecordingTools&) = delete;
    RecordingTools& operator=(const RecordingTools&) = delete;

    std::vector<std::wstring> GetLog()
    {
        std::lock_guard<std::mutex> lock(m_Lock);
        std::vector<std::wstring> texts;
        for (const LOG_LINE& line : m_Lines)
            texts.push_back(line.strText);
        return texts;
    }
    std::vector<LOG_LINE> GetLogLines()
    {
        std::lock_guard<std::mutex> lock(m_Lock);
        return m_Lines;
    }
    int CountLog(const std::wstring& strText)
    {
        std::vector<std::wstring> texts = GetLog();
        return static_cast<int>(std::count(texts.begin(), texts.end(), strText));
    }
    bool HasLog(const std::wstring& strText) { return CountLog(strText) > 0; }
    bool HasLogFrom(const std::wstring& strName, const std::wstring& strText)
    {
        std::lock_guard<std::mutex> lock(m_Lock);
        return std::any_of(m_Lines.begin(), m_Lines.end(),
                           [&](const LOG_LINE& line) { return line.strName == strName && line.strText == strText; });
    }
    void ForgetLog()
    {
        std::lock_guard<std::mutex> lock(m_Lock);
        m_Lines.clear();
    }

    // What the test sets and reads.
    std::wstring m_strTranslationMark; // put in front of every translated text
    int m_nPollsUntilCancel = -1;      // the wait message says "cancelled" from this poll on; -1: never
    std::vector<WAIT_MESSAGE> m_WaitMessages;
    std::vector<SHOWN_BOX> m_Boxes;
    int m_nPolls = 0;
    int m_nClosedWaitMessages = 0;

    // ILogManager
    void Log(int nArea, const LyString& strName, const wchar_t* pFormat, LyString::CFormatArgument** ppArgs,
             int nArgs) override
    {
        LyString strText;
        strText.FormatV(pFormat, ppArgs, nArgs);
        std::lock_guard<std::mutex> lock(m_Lock);
        m_Lines.push_back({nArea, static_cast<const wchar_t*>(strName), static_cast<const wchar_t*>(strText)});
    }
    void Log(int nArea, const LyString& strName, const char* pText, LyString::CFormatArgument** ppArgs,
             int nArgs) override
    {
        LyString strFormat;
        Log(nArea, strName, strFormat.FromANSI(pText), ppArgs, nArgs);
    }

    // ITranslator
    void Translate(const ILyDllString& strText) override
    {
        std::wstring strTranslated = m_strTranslationMark + strText.Get();
        strText.Set(strTranslated.c_str(), -1);
    }

    // ILyMessageBox
    int Show(LyMessageBoxDescriptor* pDescriptor) override
    {
        m_Boxes.push_back({pDescriptor->m_strText.Get(), pDescriptor->m_strCaption.Get()});
        return 0;
    }
    ILyWaitMessage* CreateWaitMessage(const wchar_t* pText, int nDelayMS, bool bCancelButton,
                                      ILyWaitMessageCallback*) override
    {
        m_WaitMessages.push_back({pText, nDelayMS, bCancelButton});
        return this;
    }
    void FillDefaultButtons(LyMessageBoxDescriptor*) override {}
    void FillDefaultButtonTexts(LyMessageBoxDescriptor*) override {}

    // ILyWaitMessage
    bool GetCancelled() override { return m_nPollsUntilCancel >= 0 && m_nPolls++ >= m_nPollsUntilCancel; }
    void SetProgress(const wchar_t*, const wchar_t*, int) override {}
    void Close() override { m_nClosedWaitMessages++; }

    // ILyTools
    void Attach(long long, HINSTANCE__*) override {}
    void Detach(long long, HINSTANCE__*) override {}
    void NotifyUnload(void*) override {}
    IStringHelper* GetStringHelper(bool) override { return nullptr; }
    ITranslator* GetTranslator(bool) override { return this; }
    IProductInfo* GetProductInfo(bool) override { return nullptr; }
    ILogManager* GetLogManager(bool) override { return this; }
    ILyMessageBox* GetLyMessageBoxHelper(bool) override { return this; }
    IMainThreadMessageManager* GetMainThreadMessageManager(bool) override { return nullptr; }
    IDateTimeHelper* GetDateTimeHelper(bool) override { return nullptr; }
    IFileSystemManager* GetFileSystemManager(bool) override { return nullptr; }
    ISystemPowerManager* GetSystemPowerManager(bool) override { return nullptr; }
    IOptionsHelper* CreateOptionsHelper(const wchar_t*, bool) override { return nullptr; }
    IZLib* CreateZLib() override { return nullptr; }
    void UpdateOptionsHelperTokenReplacer() override {}

    // Places of the tables that nobody calls.
    void Reserved1() override {}
    void Reserved2() override {}
    void Reserved3() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}
    void Reserved9() override {}
    void Reserved10() override {}
    void Reserved11() override {}
    void Reserved12() override {}
    void Reserved13() override {}
    void Reserved14() override {}
    void Reserved15() override {}
    void Reserved18() override {}
    void Reserved20() override {}
    void Reserved22() override {}
    void Reserved24() override {}
    void Reserved25() override {}
    void Reserved26() override {}
    void Reserved28() override {}
    void Reserved29() override {}
    void Reserved30() override {}

private:
    std::mutex m_Lock;
    std::vector<LOG_LINE> m_Lines;
};
