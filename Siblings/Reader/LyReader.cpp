#include "LyReader.h"
#include "LyDllApp.h"

namespace
{
// The library needs no product to start, and leaves the locale of the process to its host.
class CLyReaderApp : public LyDllApp
{
public:
    bool InitInstance() override { return LyApp::InitInstance(); }
};

CLyReaderApp theApp;
} // namespace

LY_EXPORT void LyReaderInitialize(long long) {}

LY_EXPORT void LyReaderUninitialize(long long) {}

LY_EXPORT ILyReader* CreateGenericReaderDLL(const wchar_t*) { return nullptr; }
