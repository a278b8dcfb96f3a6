#include "LyTools.h"
#include "LyDllApp.h"

namespace
{
// The library needs no product to start, and leaves the locale of the process to its host.
class CLyToolsApp : public LyDllApp
{
public:
    bool InitInstance() override { return LyApp::InitInstance(); }
};

CLyToolsApp theApp;
} // namespace

LY_EXPORT ILyTools* GetLyToolsDLL(int) { return nullptr; }

LY_EXPORT int EnumerateLyOptions(const wchar_t*, LY_OPTION_CALLBACK, void*) { return -1; }
