// The way from a worker to the main thread. Without the tools library there is no message manager, and all of this does
// nothing.

#include "LySharedToolsHelper.h"
#include "LyThread.h"

bool LyThread::MainThreadMessageManager_ProcessMainThreadMessage(int nMessage, long long nData)
{
    return ProcessMainThreadMessage(nMessage, nData);
}

bool LyThread::ProcessMainThreadMessage(int, long long) { return false; }

bool LyThread::RegisterForMainThreadMessages()
{
    if (m_bRegistered)
        return true;
    IMainThreadMessageManager* pManager = GetMainThreadMessageManager(true);
    m_bRegistered = pManager != nullptr && pManager->RegisterCallback(this);
    return m_bRegistered;
}

bool LyThread::UnregisterForMainThreadMessages(bool bPump)
{
    if (!m_bRegistered)
        return true;
    if (bPump)
        PumpMainThreadMessages();
    if (IMainThreadMessageManager* pManager = GetMainThreadMessageManager(false))
        pManager->UnregisterCallback(this);
    m_bRegistered = false;
    return true;
}

bool LyThread::PostToMainThread(int nMessage, long long nData)
{
    if (!m_bRegistered)
        return false;
    IMainThreadMessageManager* pManager = GetMainThreadMessageManager(false);
    return pManager != nullptr && pManager->PostMessage(this, nMessage, nData);
}

void LyThread::PumpMainThreadMessages()
{
    if (!m_bRegistered)
        return;
    if (IMainThreadMessageManager* pManager = GetMainThreadMessageManager(false))
        pManager->PumpMessages(this);
}
