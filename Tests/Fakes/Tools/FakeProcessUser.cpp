// A plug-in that uses the whole foundation while it is attached, to be loaded and unloaded many times over.

#include "LogHelper.h"
#include "LyFileSystem.h"
#include "OptionsHelper.h"
#include "ProcessInfo.h"

LY_EXPORT bool Attach(HINSTANCE__*)
{
    CLogHelper log(LY_LOG_AREA_GENERAL, "Attach", true);
    COptionsHelper options(L"Properties", true);
    LyString strText = options.Get(L"Key", L"default");
    TranslateString(strText);
    return !LyFileSystem::GetDirectoryInstall().IsEmpty() && GetProcessInfo(true) != nullptr;
}

LY_EXPORT void Detach() {}
