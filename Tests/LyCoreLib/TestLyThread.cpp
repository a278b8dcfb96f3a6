#include "LyThread.h"
#include <gtest/gtest.h>
#include <unistd.h>

namespace
{
// Runs until it is cancelled, and notes what it saw of itself.
class Worker : public LyThread
{
public:
    Worker() = default;
    ~Worker() override { Stop(-1); }

    bool Setup() override
    {
        m_SetupThread = pthread_self();
        m_nRunCountInSetup = GetRunCount();
        m_pEventInSetup = m_CancelEvent;
        return m_bSetupResult;
    }
    bool StartThread(int nPriority) override { return m_bStartResult && LyThread::StartThread(nPriority); }
    bool Thread() override
    {
        m_bKnowsItself = GetRunning() && pthread_equal(GetThreadId(), pthread_self()) &&
                         pthread_equal(m_hThread.load(), pthread_self());
        m_bCancelledAtStart = GetCancel();
        m_bReached = true;
        WaitCheckingCancel(m_nWaitMS, nullptr);
        return m_bThreadResult;
    }
    void CleanupThread(void* hThread) override
    {
        m_bCleanupBeforeEnd = GetRunning() && m_bReturnValue == m_bThreadResult &&
                              hThread == reinterpret_cast<void*>(pthread_self()) && GetThreadId() == pthread_self();
    }
    LyEvent* GetEvent() { return m_CancelEvent; }
    void WaitUntilReached()
    {
        while (!m_bReached.exchange(false))
            Sleep(1);
    }

    bool m_bSetupResult = true;
    bool m_bStartResult = true;
    bool m_bThreadResult = true;
    int m_nWaitMS = -1;
    pthread_t m_SetupThread{};
    int m_nRunCountInSetup = -1;
    LyEvent* m_pEventInSetup = nullptr;
    std::atomic<bool> m_bReached{false};
    std::atomic<bool> m_bKnowsItself{false};
    std::atomic<bool> m_bCancelledAtStart{false};
    std::atomic<bool> m_bCleanupBeforeEnd{false};
};

class InstantWorker : public LyThread
{
public:
    ~InstantWorker() override { Stop(-1); }
    bool Thread() override { return true; }
};
} // namespace

TEST(LyThreadStop, NeverStartedIsTrueAtOnceAndTouchesNothing)
{
    Worker worker;
    EXPECT_TRUE(worker.Stop(-1));
    EXPECT_FALSE(worker.GetCancel());
    EXPECT_EQ(worker.GetEvent(), nullptr);
}

TEST(LyThreadStart, MakesTheWorkerKnowItselfBeforeItRuns)
{
    for (int n = 0; n < 50; ++n)
    {
        Worker worker;
        ASSERT_TRUE(worker.Start(0, false));
        EXPECT_TRUE(worker.GetRunning());
        EXPECT_NE(worker.GetThreadId(), pthread_t{});
        worker.WaitUntilReached();
        ASSERT_TRUE(worker.Stop(-1));
        EXPECT_TRUE(worker.m_bKnowsItself);
        EXPECT_FALSE(worker.m_bCancelledAtStart);
        EXPECT_FALSE(worker.GetRunning());
        EXPECT_EQ(worker.GetThreadId(), pthread_t{});
    }
}

TEST(LyThreadStart, RunningThreadIsNotRestarted)
{
    Worker worker;
    ASSERT_TRUE(worker.Start(0, false));
    pthread_t id = worker.GetThreadId();
    EXPECT_TRUE(worker.Start(0, false));
    EXPECT_EQ(worker.GetRunCount(), 1);
    EXPECT_TRUE(pthread_equal(worker.GetThreadId(), id));
    EXPECT_FALSE(worker.GetCancel());
}

TEST(LyThreadStart, ForcedRestartStopsTheOldRunAndClearsTheCancel)
{
    Worker worker;
    ASSERT_TRUE(worker.Start(0, false));
    worker.WaitUntilReached();
    ASSERT_TRUE(worker.Start(0, true));
    EXPECT_EQ(worker.GetRunCount(), 2);
    EXPECT_TRUE(worker.m_bCleanupBeforeEnd); // of the first run
    EXPECT_FALSE(worker.GetCancel());
    EXPECT_TRUE(worker.GetRunning());
    EXPECT_FALSE(worker.GetEvent()->GetSignalled());
    worker.WaitUntilReached();
    EXPECT_FALSE(worker.m_bCancelledAtStart);
}

TEST(LyThreadStart, RunsAgainAfterStop)
{
    Worker worker;
    for (int n = 1; n <= 3; ++n)
    {
        ASSERT_TRUE(worker.Start(0, false));
        EXPECT_EQ(worker.GetRunCount(), n);
        EXPECT_TRUE(worker.Stop(-1));
    }
}

TEST(LyThreadStart, SetupRunsOnTheStarterBeforeAnythingIsCreated)
{
    Worker worker;
    ASSERT_TRUE(worker.Start(0, false));
    EXPECT_TRUE(pthread_equal(worker.m_SetupThread, pthread_self()));
    EXPECT_EQ(worker.m_nRunCountInSetup, 0);
    EXPECT_EQ(worker.m_pEventInSetup, nullptr);
    EXPECT_NE(worker.GetEvent(), nullptr);
}

TEST(LyThreadStart, RefusedSetupStartsNothing)
{
    Worker worker;
    worker.m_bSetupResult = false;
    EXPECT_FALSE(worker.Start(0, false));
    EXPECT_EQ(worker.GetRunCount(), 0);
    EXPECT_EQ(worker.GetEvent(), nullptr);
    EXPECT_FALSE(worker.GetRunning());
}

TEST(LyThreadStart, FailedThreadLeavesTheRunCount)
{
    Worker worker;
    worker.m_bStartResult = false;
    EXPECT_FALSE(worker.Start(0, false));
    EXPECT_EQ(worker.GetRunCount(), 0);
    EXPECT_FALSE(worker.GetRunning());
}

TEST(LyThreadStart, WorkerThatEndsAtOnceHasStarted)
{
    InstantWorker worker;
    for (int n = 0; n < 200; ++n)
    {
        ASSERT_TRUE(worker.Start(0, true));
        worker.WaitUntilFinished();
    }
    EXPECT_EQ(worker.GetRunCount(), 200);
}

TEST(LyThreadStart, OwnerMayDestroyTheObjectOnceTheHandleIsClear)
{
    for (int n = 0; n < 200; ++n)
    {
        auto* pWorker = new InstantWorker;
        pWorker->SetWaitForStopLoopSleepMS(0);
        ASSERT_TRUE(pWorker->Start(0, false));
        delete pWorker;
    }
}

TEST(LyThreadStart, ConstructorStartsAtOnce)
{
    LyThread thread(true, false);
    EXPECT_TRUE(thread.GetRunning());
    EXPECT_EQ(thread.GetRunCount(), 1);
    EXPECT_TRUE(thread.Stop(-1));
    EXPECT_FALSE(thread.GetRunning());
}

TEST(LyThreadStart, CleanupRunsOnTheWorkerBetweenItsBodyAndItsEnd)
{
    Worker worker;
    worker.Start(0, false);
    worker.Stop(-1);
    EXPECT_TRUE(worker.m_bCleanupBeforeEnd);
}

TEST(LyThreadResult, FalseIsKeptUntilStopAndReturnedByIt)
{
    Worker worker;
    worker.m_bThreadResult = false;
    worker.Start(0, false);
    worker.Cancel(true);
    worker.WaitUntilFinished();
    EXPECT_FALSE(worker.GetReturnValue());
    EXPECT_FALSE(worker.Stop(-1));
}

TEST(LyThreadResult, TrueIsKeptUntilStopAndThenCleared)
{
    Worker worker;
    worker.m_nWaitMS = 1;
    EXPECT_FALSE(worker.GetReturnValue());
    worker.Start(0, false);
    worker.WaitUntilFinished();
    EXPECT_FALSE(worker.GetRunning());
    EXPECT_TRUE(worker.GetReturnValue());
    EXPECT_TRUE(worker.Stop(-1));
    EXPECT_FALSE(worker.GetReturnValue());
    EXPECT_FALSE(worker.Stop(-1)); // a second one finds nothing noted
}

TEST(LyThreadCancel, IsTrueAndSetsTheFlag)
{
    Worker worker;
    EXPECT_TRUE(worker.Cancel(true));
    EXPECT_TRUE(worker.GetCancel());
    EXPECT_TRUE(worker.Cancel(false));
    EXPECT_FALSE(worker.GetCancel());
}

TEST(LyThreadCancel, FalseSignalsTheEventTooAndOnlyStartResetsIt)
{
    Worker worker;
    worker.Start(0, false);
    EXPECT_FALSE(worker.GetEvent()->GetSignalled());
    worker.Cancel(false);
    EXPECT_TRUE(worker.GetEvent()->GetSignalled());
    worker.WaitUntilFinished(); // its wait for the event has ended
    EXPECT_TRUE(worker.GetEvent()->GetSignalled());
    worker.Start(0, false);
    EXPECT_FALSE(worker.GetEvent()->GetSignalled());
}

TEST(LyThreadCancel, StopFreesTheEvent)
{
    Worker worker;
    worker.Start(0, false);
    EXPECT_EQ(worker.GetCancelEvent(), nullptr); // it is never handed out
    worker.Stop(-1);
    EXPECT_TRUE(worker.GetCancel());
    EXPECT_EQ(worker.GetEvent(), nullptr);
}

TEST(LyThreadBase, BodyWaitsForTheCancelAndReturnsTrue)
{
    LyThread thread(false, false);
    ASSERT_TRUE(thread.Start(0, false));
    Sleep(50);
    EXPECT_TRUE(thread.GetRunning());
    thread.Cancel(true);
    thread.WaitUntilFinished();
    EXPECT_TRUE(thread.GetReturnValue());
}

TEST(LyThreadBase, AnswersOfTheBaseClass)
{
    LyThread thread;
    EXPECT_FALSE(thread.GetRunning());
    EXPECT_FALSE(thread.GetReturnValue());
    EXPECT_FALSE(thread.GetCancel());
    EXPECT_EQ(thread.GetRunCount(), 0);
    EXPECT_EQ(thread.GetThreadId(), pthread_t{});
    EXPECT_EQ(thread.GetCancelEvent(), nullptr);
    EXPECT_TRUE(thread.GetAllowHardKill());
    EXPECT_TRUE(thread.Setup());
    EXPECT_EQ(thread.ProcessMainThreadMessage(7, 8), 0);
    EXPECT_EQ(thread.SetPriority(15), 0);
    thread.CleanupThread(nullptr);
    thread.WaitUntilFinished();
}

TEST(LyThreadBase, SetPriorityOfARunningThreadChangesNothing)
{
    class PriorityWorker : public Worker
    {
    public:
        ~PriorityWorker() override { Stop(-1); }
        bool Thread() override
        {
            int nPolicy;
            sched_param parameter;
            pthread_getschedparam(pthread_self(), &nPolicy, &parameter);
            m_nBefore = nPolicy * 1000 + parameter.sched_priority;
            WaitCheckingCancel(-1, nullptr);
            pthread_getschedparam(pthread_self(), &nPolicy, &parameter);
            m_nAfter = nPolicy * 1000 + parameter.sched_priority;
            return true;
        }
        int m_nBefore = -1;
        int m_nAfter = -2;
    };
    PriorityWorker worker;
    worker.Start(0, false);
    EXPECT_EQ(worker.SetPriority(15), 0);
    worker.Stop(-1);
    EXPECT_EQ(worker.m_nBefore, worker.m_nAfter);
}

TEST(LyProcess, TellsProcessAndThread)
{
    EXPECT_EQ(LyProcess::GetCurrentProcessId(), getpid());
    EXPECT_TRUE(pthread_equal(LyProcess::GetCurrentThreadId(), pthread_self()));
}
