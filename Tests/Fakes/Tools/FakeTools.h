// Loads the fake tools library for the length of a scope, and gives its control.
//
//   FakeTools tools;
//   tools->SetOption(L"Properties", L"Key", L"Value");

#pragma once

#include "FakeToolsControl.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"

class FakeTools
{
public:
    explicit FakeTools(const wchar_t* pDirectory = GetDirectory())
    {
        g_LySharedToolsHelper.UnloadLyToolsLib();
        GetProcessInfo(true)->SetSharedLibraryPath(pDirectory);
        if (GetLyTools(true) != nullptr)
            m_pControl = GetControl();
    }
    ~FakeTools() { g_LySharedToolsHelper.UnloadLySharedLibs(false); }
    FakeTools(const FakeTools&) = delete;
    FakeTools& operator=(const FakeTools&) = delete;

    bool GetIsLoaded() const { return m_pControl != nullptr; }
    IFakeToolsControl* operator->() const { return m_pControl; }
    IFakeToolsControl* Get() const { return m_pControl; }

    static const wchar_t* GetDirectory()
    {
        static const LyString s_strDirectory = LyString().FromANSI(RONDEL_FAKES_DIR "/tools/");
        return s_strDirectory;
    }

    // Of the tools library that is loaded now; null if it is no fake.
    static IFakeToolsControl* GetControl()
    {
        auto pEntry = reinterpret_cast<IFakeToolsControl* (*)()>(
            g_LySharedToolsHelper.m_ToolsLibrary.GetProcAddress("GetFakeToolsControl"));
        return pEntry != nullptr ? pEntry() : nullptr;
    }

private:
    IFakeToolsControl* m_pControl = nullptr;
};
