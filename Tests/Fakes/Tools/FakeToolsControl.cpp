#include "FakeToolsState.h"

FakeToolsState s_FakeState;
std::recursive_mutex s_FakeStateLock;

namespace
{
class FakeToolsControl final : public IFakeToolsControl
{
public:
    void Reset() override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState = FakeToolsState();
    }
    int GetCount(FAKE_TOOLS_COUNTER eCounter) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        return s_FakeState.aryCounts[eCounter];
    }
    void SetServiceThere(FAKE_TOOLS_SERVICE eService, bool bThere) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.aryServices[eService] = {bThere, false};
    }
    void SetServiceOnDemand(FAKE_TOOLS_SERVICE eService) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.aryServices[eService] = {false, true};
    }

    long long GetContext() override { return s_FakeState.nContext; }
    const void* GetApplicationHandle() override { return s_FakeState.pApplicationHandle; }
    const void* GetNotifiedApplication() override { return s_FakeState.pNotifiedApplication; }

    int GetLogLineCount() override
    {
        FakeStateGuard guard(s_FakeStateLock);
        return static_cast<int>(s_FakeState.aryLog.size());
    }
    FAKE_LOG_LINE GetLogLine(int nIndex) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        if (nIndex < 0 || nIndex >= GetLogLineCount())
            return {-1, L"", L"", false};
        const FakeLogLine& line = s_FakeState.aryLog[static_cast<size_t>(nIndex)];
        return {line.nArea, line.strName.c_str(), line.strText.c_str(), line.bNarrow};
    }

    void SetOption(const wchar_t* pStore, const wchar_t* pKey, const wchar_t* pValue) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.options[{pStore, pKey}] = pValue;
    }
    const wchar_t* GetOption(const wchar_t* pStore, const wchar_t* pKey) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        auto it = s_FakeState.options.find({pStore, pKey});
        return it != s_FakeState.options.end() ? it->second.c_str() : nullptr;
    }
    FAKE_OPTIONS_CALL GetLastOptionsCall() override
    {
        FakeStateGuard guard(s_FakeStateLock);
        return {s_FakeState.strLastStore.c_str(), s_FakeState.bLastCreate,
                s_FakeState.lastKey.Get(),        s_FakeState.nLastA,
                s_FakeState.lastB.Get(),          s_FakeState.nLastC};
    }

    void SetTranslation(const wchar_t* pText, const wchar_t* pTranslation) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.translations[pText] = pTranslation;
    }

    void SetBoxAnswer(int nAnswer) override { s_FakeState.nBoxAnswer = nAnswer; }
    FAKE_BOX GetLastBox() override
    {
        const FakeText* pTexts = s_FakeState.aryBoxTexts;
        return {pTexts[0].Get(), pTexts[1].Get(), s_FakeState.bBoxModal,    pTexts[2].Get(),
                pTexts[3].Get(), pTexts[4].Get(), s_FakeState.bBoxRemember, pTexts[5].Get()};
    }
    void SetWaitCancelled(bool bCancelled) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.bWaitCancelled = bCancelled;
    }
    FAKE_WAIT_MESSAGE GetLastWaitMessage() override
    {
        FakeStateGuard guard(s_FakeStateLock);
        return {s_FakeState.waitText.Get(), s_FakeState.nWaitDelayMS, s_FakeState.bWaitCancelButton,
                s_FakeState.nWaitPercent};
    }

    void SetHasProduct(bool bHasProduct) override { s_FakeState.bHasProduct = bHasProduct; }
    void SetAppdataDirectory(const wchar_t* pPath) override { s_FakeState.appdataDirectory.Set(pPath); }
    FAKE_PRODUCT_CALL GetLastProductLoad() override
    {
        return {s_FakeState.productName.Get(), s_FakeState.bProductFirst, s_FakeState.bProductSecond,
                s_FakeState.productText.Get(), s_FakeState.nProductNumber};
    }

    int GetLastFileExistsFlags() override { return s_FakeState.nFileExistsFlags; }
    void SetFileExistsAlways(bool bExists) override { s_FakeState.bFileExistsAlways = bExists; }

    void SetPowerEntry(long long nEntry) override { s_FakeState.nPowerEntry = nEntry; }
    const wchar_t* GetLastPowerName() override { return s_FakeState.powerName.Get(); }
    long long GetLastReleasedEntry() override { return s_FakeState.nReleasedEntry; }

    void SetDate(double fDate) override { s_FakeState.fDate = fDate; }
};
FakeToolsControl s_Control;
} // namespace

IFakeToolsControl* GetFakeToolsControlObject() { return &s_Control; }
