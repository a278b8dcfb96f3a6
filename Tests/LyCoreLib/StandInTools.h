// A tools object that stands in the test program itself and has no service at all. A test derives from it and overrides
// what it wants to be there. It is in force as long as it lives.

#pragma once

#include "ILyTools.h"
#include "LySharedToolsHelper.h"

class StandInTools : public ILyTools
{
public:
    StandInTools() { g_LySharedToolsHelper.m_pTools = this; }
    ~StandInTools() { g_LySharedToolsHelper.m_pTools = nullptr; }
    StandInTools(const StandInTools&) = delete;
    StandInTools& operator=(const StandInTools&) = delete;

    void Attach(long long, HINSTANCE__*) override {}
    void Detach(long long, HINSTANCE__*) override {}
    void Reserved3() override {}
    void NotifyUnload(void*) override {}
    void Reserved5() override {}
    IStringHelper* GetStringHelper(bool) override { return nullptr; }
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
