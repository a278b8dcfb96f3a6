#include "LyDisc.h"
#include "DiscManager.h"
#include "LyDllApp.h"
#include "UTF8.h"

namespace
{
// The service needs no product to start, and leaves the locale of the process to its host.
class CLyDiscApp : public LyDllApp
{
public:
    bool InitInstance() override { return LyApp::InitInstance(); }
};

CLyDiscApp theApp;
std::mutex s_Mutex;
std::unique_ptr<DiscManager> s_pManager; // read and written under s_Mutex

wchar_t* Ask(std::string (DiscManager::*pQuestion)(const wchar_t*), const wchar_t* pPath)
{
    std::string strText;
    {
        const std::lock_guard lock(s_Mutex);
        if (s_pManager != nullptr)
            strText = (s_pManager.get()->*pQuestion)(pPath);
    }
    return LyCom::SysAllocString(WidenUTF8(strText).c_str());
}
} // namespace

LY_EXPORT void LyDiscInitialize(long long) {}

LY_EXPORT void LyDiscUninitialize(long long) {}

LY_EXPORT IDiscManager* GetDiscManagerDLL(bool bCreate)
{
    const std::lock_guard lock(s_Mutex);
    if (s_pManager == nullptr && bCreate)
        s_pManager = std::make_unique<DiscManager>();
    return s_pManager.get();
}

LY_EXPORT wchar_t* GetDiscErrorText(const wchar_t* pPath) { return Ask(&DiscManager::GetErrorText, pPath); }

LY_EXPORT wchar_t* GetDiscWarnings(const wchar_t* pPath) { return Ask(&DiscManager::GetWarnings, pPath); }

LY_EXPORT int EnumerateDiscDrives(DISC_DRIVE_CALLBACK, void*) { return 0; }

LY_EXPORT int GetDiscEvidence(const wchar_t*, unsigned long long, DISC_EVIDENCE*, int) { return 0; }
