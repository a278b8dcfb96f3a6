// The services of the fake tools library that a real one shows windows or runs a message loop for.

#include "FakeToolsServices.h"
#include "FakeToolsState.h"
#include "ILyMessageBox.h"
#include "LyThread.h"
#include <algorithm>
#include <vector>

namespace
{
class FakeWaitMessage final : public ILyWaitMessage
{
public:
    explicit FakeWaitMessage(ILyWaitMessageCallback* pCallback) : m_pCallback(pCallback) {}

    bool GetCancelled() override
    {
        bool bCancelled;
        {
            FakeStateGuard guard(s_FakeStateLock);
            bCancelled = s_FakeState.bWaitCancelled;
        }
        if (bCancelled && m_pCallback != nullptr)
            (void)m_pCallback->LyWaitMessage_Cancel();
        return bCancelled;
    }
    void SetProgress(const wchar_t* pText, const wchar_t*, int nPercent) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_WAIT_PROGRESS);
        s_FakeState.waitText.Set(pText);
        s_FakeState.nWaitPercent = nPercent;
    }
    void Close() override
    {
        {
            FakeStateGuard guard(s_FakeStateLock);
            s_FakeState.Count(FAKE_COUNT_WAIT_CLOSED);
        }
        delete this;
    }

private:
    ~FakeWaitMessage() = default;

    ILyWaitMessageCallback* m_pCallback;
};

class FakeMessageBox final : public ILyMessageBox
{
public:
    void Reserved1() override {}
    void Reserved2() override {}
    int Show(LyMessageBoxDescriptor* pDescriptor) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_BOX_SHOWN);
        const wchar_t* aryTexts[] = {pDescriptor->m_strText,        pDescriptor->m_strCaption,
                                     pDescriptor->m_strShowOnceKey, pDescriptor->m_strSecondKey,
                                     pDescriptor->m_strThirdKey,    pDescriptor->m_aryTexts[0]};
        for (int nIndex = 0; nIndex < 6; nIndex++)
            s_FakeState.aryBoxTexts[nIndex].Set(aryTexts[nIndex]);
        s_FakeState.bBoxModal = pDescriptor->m_bModal;
        s_FakeState.bBoxRemember = pDescriptor->m_bRemember;
        return s_FakeState.nBoxAnswer;
    }
    ILyWaitMessage* CreateWaitMessage(const wchar_t* pText, int nDelayMS, bool bCancelButton,
                                      ILyWaitMessageCallback* pCallback) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_WAIT_CREATED);
        s_FakeState.waitText.Set(pText);
        s_FakeState.nWaitDelayMS = nDelayMS;
        s_FakeState.bWaitCancelButton = bCancelButton;
        s_FakeState.nWaitPercent = -1;
        return new FakeWaitMessage(pCallback);
    }
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}
    void Reserved9() override {}
    void Reserved10() override {}
    void Reserved11() override {}
    void Reserved12() override {}
    void Reserved13() override {}
    // The second and third key get texts too, so that a test sees them cleared.
    void FillDefaultButtons(LyMessageBoxDescriptor* pDescriptor) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_FILL_BUTTONS);
        pDescriptor->m_strSecondKey.Set(L"second");
        pDescriptor->m_strThirdKey.Set(L"third");
    }
    void FillDefaultButtonTexts(LyMessageBoxDescriptor* pDescriptor) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_FILL_BUTTON_TEXTS);
        pDescriptor->m_aryTexts[0].Set(L"OK");
    }
};

// Posted messages wait until somebody pumps for their callback, on the thread that pumps.
class FakeMessageManager final : public IMainThreadMessageManager
{
public:
    bool RegisterCallback(IMainThreadMessageManagerCallback* pCallback) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_MESSAGE_REGISTER);
        m_aryCallbacks.push_back(pCallback);
        return true;
    }
    void UnregisterCallback(IMainThreadMessageManagerCallback* pCallback) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_MESSAGE_UNREGISTER);
        std::erase(m_aryCallbacks, pCallback);
        std::erase_if(m_aryMessages, [&](const MESSAGE& message) { return message.pCallback == pCallback; });
    }
    bool PostMessage(IMainThreadMessageManagerCallback* pCallback, int nMessage, long long nData) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_MESSAGE_POST);
        if (std::find(m_aryCallbacks.begin(), m_aryCallbacks.end(), pCallback) == m_aryCallbacks.end())
            return false;
        m_aryMessages.push_back({pCallback, nMessage, nData});
        return true;
    }
    void PumpMessages(IMainThreadMessageManagerCallback* pCallback) override
    {
        MESSAGE message;
        {
            FakeStateGuard guard(s_FakeStateLock);
            s_FakeState.Count(FAKE_COUNT_MESSAGE_PUMP);
        }
        while (Take(pCallback, message))
            (void)pCallback->MainThreadMessageManager_ProcessMainThreadMessage(message.nMessage, message.nData);
    }

private:
    struct MESSAGE
    {
        IMainThreadMessageManagerCallback* pCallback;
        int nMessage;
        long long nData;
    };

    bool Take(IMainThreadMessageManagerCallback* pCallback, MESSAGE& message)
    {
        FakeStateGuard guard(s_FakeStateLock);
        auto it = std::find_if(m_aryMessages.begin(), m_aryMessages.end(),
                               [&](const MESSAGE& each) { return each.pCallback == pCallback; });
        if (it == m_aryMessages.end())
            return false;
        message = *it;
        m_aryMessages.erase(it);
        return true;
    }

    std::vector<IMainThreadMessageManagerCallback*> m_aryCallbacks;
    std::vector<MESSAGE> m_aryMessages;
};

FakeMessageBox s_MessageBox;
FakeMessageManager s_MessageManager;
} // namespace

ILyMessageBox* GetFakeMessageBox() { return &s_MessageBox; }
IMainThreadMessageManager* GetFakeMessageManager() { return &s_MessageManager; }
