// LyThread: the base class of every worker thread, and what goes with it.
//
// A worker derives from LyThread and overrides Thread(). It is never ended by force: Cancel raises a flag that Thread()
// polls (GetCancel, WaitCheckingCancel), and Stop waits until it has returned.
//
// Life:    not started (run count 0), running (handle set), ended (handle null, the result kept until Stop), and
//          running again after another Start.
// Owner:   one thread starts, stops and destroys the object. A derived class stops its worker in its own destructor:
//          when the destructor of LyThread runs, the derived members are gone.
// Threads: Cancel and all Get operations may be called from any thread while the owner is not in Start, Stop or the
//          destructor; PostToMainThread from the worker.
// Times:   milliseconds. -1 is "without limit".
// Errors:  false. A priority that the system does not grant is no error.

#pragma once

#include "LyEvent.h"
#include "LyLock.h"
#include "LyPtr.h"
#include "LyTimer.h"
#include <atomic>
#include <cstddef>
#include <pthread.h>

// What the main thread message manager calls, on the main thread, for each posted message.
class IMainThreadMessageManagerCallback
{
public:
    virtual bool MainThreadMessageManager_ProcessMainThreadMessage(int nMessage, long long nData) = 0;

protected:
    ~IMainThreadMessageManagerCallback() = default;
};

// The service of the tools library that carries messages to the main thread: GetMainThreadMessageManager gives it.
// The order of the operations is their order in the virtual table.
class IMainThreadMessageManager
{
public:
    virtual bool RegisterCallback(IMainThreadMessageManagerCallback* pCallback) = 0;
    virtual void UnregisterCallback(IMainThreadMessageManagerCallback* pCallback) = 0;
    virtual bool PostMessage(IMainThreadMessageManagerCallback* pCallback, int nMessage, long long nData) = 0;
    virtual void PumpMessages(IMainThreadMessageManagerCallback* pCallback) = 0; // delivers what is waiting for it

protected:
    ~IMainThreadMessageManager() = default;
};

// The order of the virtual operations is their order in the virtual table; derived classes add theirs at the end.
class LyThread : public IMainThreadMessageManagerCallback
{
public:
    static constexpr int LOWEST_PRIORITY = -15;
    static constexpr int NORMAL_PRIORITY = 0;
    static constexpr int REAL_TIME_PRIORITY = 15; // the highest

    LyThread(bool bStartNow = false, bool bRegisterForMainThreadMessages = false);
    LyThread(const LyThread&) = delete;
    LyThread& operator=(const LyThread&) = delete;

    bool MainThreadMessageManager_ProcessMainThreadMessage(int nMessage, long long nData) override;
    virtual ~LyThread();

    // True also if it ran already; with bForceRestart the old run is stopped first.
    virtual bool Start(int nPriority = NORMAL_PRIORITY, bool bForceRestart = false);
    // Cancels and waits; -1 takes the time-out of SetTimeout. After a time-out the thread is only abandoned ("hard
    // kill"), if GetAllowHardKill says so. Returns what Thread() returned; true if there never was a run.
    virtual bool Stop(int nTimeoutMS = -1);
    virtual bool Cancel(bool bCancel = true); // true, always
    virtual void PumpMainThreadMessages();
    virtual int SetPriority(int nPriority); // changes nothing; 0
    virtual bool GetRunning();
    virtual void WaitUntilFinished();
    // Sleeps, but ends at a cancel, at the thread's end, or when pEvent is signalled. Without pEvent, and on the worker
    // itself, it blocks at no cost and wakes at once; otherwise it polls every 10 ms. At once if nothing runs.
    virtual void WaitCheckingCancel(int nMS, LyEvent* pEvent);
    virtual void WaitCheckingCancel(int nMS, void* pUnused); // as the former with a null event
    virtual bool GetReturnValue();                           // what Thread() returned, until Stop
    virtual pthread_t GetThreadId();                         // 0 if it does not run
    virtual bool GetCancel();
    virtual LyEvent* GetCancelEvent();
    virtual bool GetAllowHardKill();
    virtual int GetRunCount(); // how many times it was started
    virtual void SetTimeout(int nTimeoutMS);
    virtual void SetPumpCOMMessagesOnStop(bool bPump);
    virtual void SetWaitForStopLoopSleepMS(int nSleepMS);
    virtual void SetAssertOnHardKill(bool bAssert);
    virtual void SetPumpMainThreadMessagesOnStop(bool bPump);
    virtual void SetUsesCOM(bool bUsesCOM);
    virtual bool Thread(); // the worker's body; this one waits for the cancel
    virtual bool ProcessMainThreadMessage(int nMessage, long long nData);
    virtual bool Setup(); // on the starting thread, before anything is created; false refuses the start
    virtual bool StartThread(int nPriority);
    virtual void CleanupThread(void* hThread); // on the worker, after Thread() returned
    // The very last, on the worker. The object may be gone by then: an override must not touch it.
    virtual void EndThread();

    // For whoever only looks: the same operations.
    bool GetRunning() const { return const_cast<LyThread*>(this)->GetRunning(); }
    bool GetReturnValue() const { return const_cast<LyThread*>(this)->GetReturnValue(); }
    pthread_t GetThreadId() const { return const_cast<LyThread*>(this)->GetThreadId(); }
    bool GetCancel() const { return const_cast<LyThread*>(this)->GetCancel(); }
    int GetRunCount() const { return const_cast<LyThread*>(this)->GetRunCount(); }

    // A literal null as the event: the form with an event is meant.
    void WaitCheckingCancel(int nMS, std::nullptr_t = nullptr)
    {
        WaitCheckingCancel(nMS, static_cast<LyEvent*>(nullptr));
    }

    // Messages to the main thread. All of them do nothing while there is no message manager.
    bool RegisterForMainThreadMessages();
    bool UnregisterForMainThreadMessages(bool bPump); // true
    bool PostToMainThread(int nMessage, long long nData);

    // Priorities run from LOWEST_PRIORITY to REAL_TIME_PRIORITY; what lies outside counts as the nearest.
    static void s_SetThreadAttributePriority(pthread_attr_t* pAttributes, int nPriority);
    static void s_SetMachThreadPriority(pthread_t hThread, int nPriority); // for a started thread

protected:
    std::atomic<pthread_t> m_hThread{};   // non-null while it runs; the worker's very last word to its owner
    std::atomic<pthread_t> m_hThreadId{}; // a copy of it, for identity tests
    std::atomic<bool> m_bCancel{false};
    LyLock m_Lock;                         // only for the hand-over from creator to worker
    LyPtr<LyEvent, LyEvent> m_CancelEvent; // new for each run; signalled by every Cancel and never reset
    int m_nTimeoutMS = -1;                 // for a Stop without a time-out of its own
    int m_nStopLoopSleepMS = 20;           // how often Stop looks
    std::atomic<int> m_nRunCount{0};       // also read by workers
    std::atomic<bool> m_bReturnValue{false};
    std::atomic<bool> m_bRegistered{false}; // with the main thread message manager
    bool m_bRegisterOnStart;
    bool m_bAssertOnHardKill = true;       // stored for callers; nothing here reads it
    bool m_bPumpCOMMessagesOnStop = false; // stored for callers; nothing here reads it
    bool m_bPumpMainThreadMessagesOnStop = true;
    bool m_bUsesCOM = false; // stored for callers; nothing here reads it

private:
    static void* StaticThread(void* pThread);
    bool CreateThread(int nPriority, bool bWithPriority);
    void WaitForEnd(int nTimeoutMS);
    void HardKill();
};
static_assert(sizeof(std::atomic<pthread_t>) == sizeof(pthread_t) && sizeof(std::atomic<bool>) == sizeof(bool));

class LyProcess
{
public:
    static int GetCurrentProcessId();
    static pthread_t GetCurrentThreadId();
};
