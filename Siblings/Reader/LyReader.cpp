#include "LyReader.h"
#include "CurlSession.h"
#include "FileReader.h"
#include "LyDllApp.h"
#include "ReaderGuard.h"
#include "ReaderNames.h"
#include "UrlReader.h"

namespace
{
// The library needs no product to start, and leaves the locale of the process to its host.
class CLyReaderApp : public LyDllApp
{
public:
    bool InitInstance() override { return InitService(); }
    // No reader is alive now.
    bool ExitInstance() override
    {
        CurlLibrary::Release();
        return LyDllApp::ExitInstance();
    }
};

CLyReaderApp theApp;

ILyReader* MakeReader(const wchar_t* pPath)
{
    switch (GetReaderKind(pPath))
    {
    case READER_KIND_LOCAL:
    case READER_KIND_FILE_URL:
        return new FileReader(GetLocalPath(pPath));
    case READER_KIND_HTTP:
        return new UrlReader(GetRequestURL(pPath));
    case READER_KIND_NONE:
        break;
    }
    return nullptr;
}
} // namespace

LY_EXPORT void LyReaderInitialize(long long) {}

LY_EXPORT void LyReaderUninitialize(long long) { CurlLibrary::Release(); }

LY_EXPORT ILyReader* CreateGenericReaderDLL(const wchar_t* pPath)
{
    if (pPath == nullptr)
        return nullptr;
    return Guarded(static_cast<ILyReader*>(nullptr), [pPath] { return MakeReader(pPath); });
}
