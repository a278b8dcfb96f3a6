#include "in_Rondel.h"
#include "LySharedToolsHelper.h"
#include "THCDAInputSource.h"

CInRondelApp theApp;

CInRondelApp::~CInRondelApp() = default;

LY_EXPORT ILyAudioInput* GetInputSource(ILyAudioInputOwner* pOwner)
{
    LyStringGlobals::EnsureManager();
    LyStringGlobals::SetLocale(true);
    (void)LoadProductInfo(LyString(), true, false, false, nullptr, 0);
    return new CTHCDAInputSource(pOwner);
}
