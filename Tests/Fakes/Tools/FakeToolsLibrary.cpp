// The exports of the fake tools library, and its root object.

#include "FakeEvents.h"
#include "FakeToolsServices.h"
#include "FakeToolsState.h"
#include "ILyTools.h"

namespace
{
void Record(const char* pEvent)
{
    if (s_FakeState.nContext != 0)
        reinterpret_cast<IFakeEvents*>(s_FakeState.nContext)->Record(pEvent);
}

template <class SERVICE>
SERVICE* Serve(FAKE_TOOLS_SERVICE eService, bool bCreate, SERVICE* pService)
{
    FakeStateGuard guard(s_FakeStateLock);
    FakeService& state = s_FakeState.aryServices[eService];
    if (state.bOnDemand && bCreate)
        state = {true, false};
    return state.bThere ? pService : nullptr;
}

class FakeToolsRoot final : public ILyTools
{
public:
    void Attach(long long nContext, HINSTANCE__* hApplication) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_ROOT_ATTACH);
        s_FakeState.nContext = nContext;
        s_FakeState.pApplicationHandle = hApplication;
        Record("tools attach");
    }
    void Detach(long long nContext, HINSTANCE__* hApplication) override
    {
        bool bSame = nContext == s_FakeState.nContext && hApplication == s_FakeState.pApplicationHandle;
        Record(bSame ? "tools detach" : "tools detach with other values");
    }
    void Reserved3() override {}
    void NotifyUnload(void* pApplication) override
    {
        s_FakeState.Count(FAKE_COUNT_NOTIFY_UNLOAD);
        s_FakeState.pNotifiedApplication = pApplication;
        Record("tools notify");
    }
    void Reserved5() override {}
    IStringHelper* GetStringHelper(bool bCreate) override
    {
        return Serve(FAKE_STRING_HELPER, bCreate, GetFakeStringHelper());
    }
    void Reserved7() override {}
    ITranslator* GetTranslator(bool bCreate) override { return Serve(FAKE_TRANSLATOR, bCreate, GetFakeTranslator()); }
    void Reserved9() override {}
    IProductInfo* GetProductInfo(bool bCreate) override
    {
        return Serve(FAKE_PRODUCT_INFO, bCreate, GetFakeProductInfo());
    }
    ILogManager* GetLogManager(bool bCreate) override { return Serve(FAKE_LOG_MANAGER, bCreate, GetFakeLogManager()); }
    ILyMessageBox* GetLyMessageBoxHelper(bool bCreate) override
    {
        return Serve(FAKE_MESSAGE_BOX, bCreate, GetFakeMessageBox());
    }
    void Reserved13() override {}
    void Reserved14() override {}
    void Reserved15() override {}
    IMainThreadMessageManager* GetMainThreadMessageManager(bool bCreate) override
    {
        return Serve(FAKE_MESSAGE_MANAGER, bCreate, GetFakeMessageManager());
    }
    IDateTimeHelper* GetDateTimeHelper(bool bCreate) override
    {
        return Serve(FAKE_DATE_TIME_HELPER, bCreate, GetFakeDateTimeHelper());
    }
    void Reserved18() override {}
    IFileSystemManager* GetFileSystemManager(bool bCreate) override
    {
        return Serve(FAKE_FILE_SYSTEM_MANAGER, bCreate, GetFakeFileSystemManager());
    }
    void Reserved20() override {}
    ISystemPowerManager* GetSystemPowerManager(bool bCreate) override
    {
        return Serve(FAKE_POWER_MANAGER, bCreate, GetFakePowerManager());
    }
    void Reserved22() override {}
    IOptionsHelper* CreateOptionsHelper(const wchar_t* pName, bool bCreate) override
    {
        return CreateFakeOptions(pName, bCreate);
    }
    void Reserved24() override {}
    void Reserved25() override {}
    void Reserved26() override {}
    IZLib* CreateZLib() override { return CreateFakeZLib(); }
    void Reserved28() override {}
    void Reserved29() override {}
    void Reserved30() override {}
    void UpdateOptionsHelperTokenReplacer() override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_TOKEN_REPLACER);
    }
};
FakeToolsRoot s_Root;
} // namespace

LY_EXPORT bool Attach(HINSTANCE__*)
{
    s_FakeState.Count(FAKE_COUNT_LIBRARY_ATTACH);
    return true;
}

LY_EXPORT void Detach()
{
    s_FakeState.Count(FAKE_COUNT_LIBRARY_DETACH);
    Record("tools library detach");
}

LY_EXPORT ILyTools* GetLyToolsDLL(int nVersion) { return nVersion == LY_TOOLS_INTERFACE_VERSION ? &s_Root : nullptr; }

LY_EXPORT IFakeToolsControl* GetFakeToolsControl() { return GetFakeToolsControlObject(); }
