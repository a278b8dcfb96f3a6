#include "LyThread.h"

#include "LyPlatform.h"
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <new>

LyThread::LyThread(bool bStartNow, bool bRegisterForMainThreadMessages)
    : m_bRegisterOnStart(bRegisterForMainThreadMessages)
{
    if (bStartNow)
        LyThread::Start(NORMAL_PRIORITY, false);
}

LyThread::~LyThread()
{
    LyThread::Stop(-1);
    m_CancelEvent.Release();
}

bool LyThread::Start(int nPriority, bool bForceRestart)
{
    if (GetRunning() && !bForceRestart)
        return true;
    Stop(-1);
    Cancel(false);
    if (!Setup())
        return false;
    if (m_bRegisterOnStart)
        RegisterForMainThreadMessages();
    LyEvent* pEvent = new (std::nothrow) LyEvent;
    m_CancelEvent.Set(pEvent, true, false);
    if (pEvent == nullptr || !StartThread(nPriority))
        return false;
    ++m_nRunCount;
    return true;
}

bool LyThread::Stop(int nTimeoutMS)
{
    if (m_nRunCount < 1)
        return true;
    if (!m_bCancel)
        Cancel(true);
    WaitForEnd(nTimeoutMS == -1 ? m_nTimeoutMS : nTimeoutMS);
    UnregisterForMainThreadMessages(m_bPumpMainThreadMessagesOnStop);
    bool bResult = m_bReturnValue;
    m_CancelEvent.Release();
    m_hThread = pthread_t{};
    m_hThreadId = pthread_t{};
    m_bReturnValue = false;
    return bResult;
}

void LyThread::WaitForEnd(int nTimeoutMS)
{
    unsigned int nStartTick = GetTickCount();
    while (m_hThread.load(std::memory_order_acquire) != pthread_t{})
    {
        // The tick count wraps, so the difference is taken first and then read as signed.
        int nPassedMS = static_cast<int>(GetTickCount() - nStartTick);
        if (nTimeoutMS >= 0 && nPassedMS > nTimeoutMS && GetAllowHardKill())
            HardKill();
        else
            Sleep(static_cast<unsigned int>(std::max(m_nStopLoopSleepMS, 0)));
    }
}

// Deliberate: nothing ends the thread by force, it is only forgotten. A thread that is killed would leave its locks
// taken and its drive command unanswered. The detached worker runs on until it sees its cancel flag.
void LyThread::HardKill()
{
    pthread_t hThread = m_hThread.exchange(pthread_t{});
    m_hThreadId = pthread_t{};
    std::fprintf(stderr, "Hard Killing Thread %x\n", static_cast<unsigned int>(uintptr_t(hThread)));
}

bool LyThread::Cancel(bool bCancel)
{
    m_bCancel.store(bCancel, std::memory_order_release);
    // Deliberate: the event is signalled for false too, and stays signalled. Start brings a new one.
    if (LyEvent* pEvent = m_CancelEvent)
        pEvent->Set();
    return true;
}

// Deliberate: callers may ask, but a running thread keeps the priority that it was started with.
int LyThread::SetPriority(int) { return 0; }

bool LyThread::GetRunning() { return m_hThread.load(std::memory_order_acquire) != pthread_t{}; }

void LyThread::WaitUntilFinished()
{
    constexpr unsigned int POLL_MS = 10;
    while (m_hThread.load(std::memory_order_acquire) != pthread_t{})
        Sleep(POLL_MS);
}

void LyThread::WaitCheckingCancel(int nMS, LyEvent* pEvent)
{
    if (!GetRunning())
        return;
    LyEvent* pCancelEvent = m_CancelEvent;
    if (pEvent == nullptr && pCancelEvent != nullptr && pthread_equal(pthread_self(), m_hThreadId))
    {
        pCancelEvent->Wait(nMS);
        return;
    }
    constexpr unsigned int POLL_MS = 10;
    LyTimer timer;
    while (nMS < 0 || timer.GetElapsedMS(false) < nMS)
    {
        if (m_bCancel.load(std::memory_order_acquire) || !GetRunning())
            return;
        if (pEvent != nullptr && pEvent->GetSignalled())
            return;
        Sleep(POLL_MS);
    }
}

void LyThread::WaitCheckingCancel(int nMS, void*)
{
    if (GetRunning())
        WaitCheckingCancel(nMS, static_cast<LyEvent*>(nullptr));
}

bool LyThread::GetReturnValue() { return m_bReturnValue.load(std::memory_order_acquire); }

pthread_t LyThread::GetThreadId() { return m_hThreadId.load(std::memory_order_acquire); }

bool LyThread::GetCancel() { return m_bCancel.load(std::memory_order_acquire); }

// Deliberate: null. The event lives only from Start to Stop, so that it is not handed out.
LyEvent* LyThread::GetCancelEvent() { return nullptr; }

bool LyThread::GetAllowHardKill() { return true; }

int LyThread::GetRunCount() { return m_nRunCount; }

void LyThread::SetTimeout(int nTimeoutMS) { m_nTimeoutMS = nTimeoutMS; }

void LyThread::SetPumpCOMMessagesOnStop(bool bPump) { m_bPumpCOMMessagesOnStop = bPump; }

void LyThread::SetWaitForStopLoopSleepMS(int nSleepMS) { m_nStopLoopSleepMS = nSleepMS; }

void LyThread::SetAssertOnHardKill(bool bAssert) { m_bAssertOnHardKill = bAssert; }

void LyThread::SetPumpMainThreadMessagesOnStop(bool bPump) { m_bPumpMainThreadMessagesOnStop = bPump; }

void LyThread::SetUsesCOM(bool bUsesCOM) { m_bUsesCOM = bUsesCOM; }

bool LyThread::Thread()
{
    constexpr unsigned int POLL_MS = 100;
    while (!GetCancel())
        Sleep(POLL_MS);
    return true;
}

bool LyThread::Setup() { return true; }

void LyThread::CleanupThread(void*) {}

int LyProcess::GetCurrentProcessId() { return LyPlatform::GetProcessId(); }

pthread_t LyProcess::GetCurrentThreadId() { return LyPlatform::GetThreadId(); }
