#include "LyDllApp.h"
#include "LyDateTime.h"
#include "LySharedToolsHelper.h"

bool LyDllApp::InitInstance()
{
    if (!LyApp::InitInstance())
        return false;
    LyStringGlobals::EnsureManager();
    LyStringGlobals::SetLocale(true);
    LyMath::SeedRandomNumberGenerator();
    return LoadProductInfo();
}

bool LyDllApp::ExitInstance()
{
    g_LySharedToolsHelper.UnloadLySharedLibs(true);
    return LyApp::ExitInstance();
}

bool LyDllApp::LoadProductInfo() { return ::LoadProductInfo(LyString(), true, false, false, nullptr, 0); }

bool LyDllApp::InitializePlatform() { return true; }

void LyDllApp::UninitializePlatform() {}
