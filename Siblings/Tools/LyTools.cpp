#include "LyTools.h"
#include "LyDllApp.h"
#include "LySharedToolsHelper.h"
#include "LyToolsRoot.h"

namespace
{
// The root is the first object of this file to come and the last to go.
LyToolsRoot s_Root;

// The library needs no product to start, and leaves the locale of the process to its host.
class CLyToolsApp : public LyDllApp
{
public:
    ~CLyToolsApp() override { Withdraw(); } // of a host that closes the library without a Detach

    // The foundation inside this library finds the services here, instead of loading this library once more.
    bool InitInstance() override
    {
        g_LySharedToolsHelper.m_pTools.store(&s_Root, std::memory_order_release);
        return InitService();
    }
    bool ExitInstance() override
    {
        s_Root.ReleaseServices();
        Withdraw();
        return LyDllApp::ExitInstance();
    }

private:
    static void Withdraw()
    {
        ILyTools* pOwn = &s_Root;
        (void)g_LySharedToolsHelper.m_pTools.compare_exchange_strong(pOwn, nullptr);
    }
};

CLyToolsApp theApp;
} // namespace

LY_EXPORT ILyTools* GetLyToolsDLL(int nVersion) { return nVersion == LY_TOOLS_INTERFACE_VERSION ? &s_Root : nullptr; }

LY_EXPORT int EnumerateLyOptions(const wchar_t* pStore, LY_OPTION_CALLBACK pCallback, void* pContext)
{
    if (pCallback == nullptr)
        return -1;
    try
    {
        // Nothing is locked while the callback runs: it may read and set options.
        const auto options = s_Root.GetOptionStore()->List(pStore);
        if (!options)
            return -1;
        int nTold = 0;
        for (const OptionStore::OPTION& each : *options)
        {
            nTold++;
            if (!pCallback(pContext, each.m_strStore.c_str(), each.m_strKey.c_str(), each.m_strValue.c_str()))
                break;
        }
        return nTold;
    }
    catch (...)
    {
        return -1;
    }
}
