// A tools library in the test program itself that has the string helper and nothing else. While an object of this
// class lives, GetStringHelper finds the helper.

#pragma once

#include "ILyTools.h"
#include "IStringHelper.h"
#include "LySharedToolsHelper.h"
#include <algorithm>
#include <cwctype>
#include <string>

// Finds without regard to case, or gives the answer that it was told to give.
class FakeStringHelper final : public IStringHelper
{
public:
    static constexpr int SEARCH = -2;

    int FindNoCase(const wchar_t* pText, const wchar_t* pPattern, int nStart) override
    {
        ++m_nCalls;
        if (m_nAnswer != SEARCH)
            return m_nAnswer;
        size_t nFound = Fold(pText).find(Fold(pPattern), static_cast<size_t>(nStart));
        return nFound == std::wstring::npos ? -1 : static_cast<int>(nFound);
    }
    int Compare(const wchar_t*, const wchar_t*, int) override { return 0; }

    int m_nAnswer = SEARCH;
    int m_nCalls = 0;

private:
    static std::wstring Fold(std::wstring str)
    {
        std::transform(str.begin(), str.end(), str.begin(),
                       [](wchar_t c) { return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c))); });
        return str;
    }
};

class FakeStringTools final : public ILyTools
{
public:
    FakeStringTools() { g_LySharedToolsHelper.m_pTools = this; }
    ~FakeStringTools() { g_LySharedToolsHelper.m_pTools = nullptr; }
    FakeStringTools(const FakeStringTools&) = delete;
    FakeStringTools& operator=(const FakeStringTools&) = delete;

    IStringHelper* GetStringHelper(bool) override { return &m_Helper; }

    FakeStringHelper m_Helper;

private:
    void Attach(long long, HINSTANCE__*) override {}
    void Detach(long long, HINSTANCE__*) override {}
    void Reserved3() override {}
    void NotifyUnload(void*) override {}
    void Reserved5() override {}
    void Reserved7() override {}
    ITranslator* GetTranslator(bool) override { return nullptr; }
    void Reserved9() override {}
    IProductInfo* GetProductInfo(bool) override { return nullptr; }
    ILogManager* GetLogManager(bool) override { return nullptr; }
    ILyMessageBox* GetLyMessageBoxHelper(bool) override { return nullptr; }
    void Reserved13() override {}
    void Reserved14() override {}
    void Reserved15() override {}
    IMainThreadMessageManager* GetMainThreadMessageManager(bool) override { return nullptr; }
    IDateTimeHelper* GetDateTimeHelper(bool) override { return nullptr; }
    void Reserved18() override {}
    IFileSystemManager* GetFileSystemManager(bool) override { return nullptr; }
    void Reserved20() override {}
    ISystemPowerManager* GetSystemPowerManager(bool) override { return nullptr; }
    void Reserved22() override {}
    IOptionsHelper* CreateOptionsHelper(const wchar_t*, bool) override { return nullptr; }
    void Reserved24() override {}
    void Reserved25() override {}
    void Reserved26() override {}
    IZLib* CreateZLib() override { return nullptr; }
    void Reserved28() override {}
    void Reserved29() override {}
    void Reserved30() override {}
    void UpdateOptionsHelperTokenReplacer() override {}
};
