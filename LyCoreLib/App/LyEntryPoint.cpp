#include "LyEntryPoint.h"
#include "LyApp.h"

LY_EXPORT bool Attach(HINSTANCE__* hInstance)
{
    return LyApp::s_pApp != nullptr && LyApp::s_pApp->DllMain(hInstance, LyApp::REASON_ATTACH, nullptr);
}

LY_EXPORT void Detach()
{
    if (LyApp::s_pApp != nullptr)
        (void)LyApp::s_pApp->DllMain(nullptr, LyApp::REASON_DETACH, nullptr);
}
