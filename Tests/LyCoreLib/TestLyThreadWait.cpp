#include "LyThread.h"
#include <functional>
#include <gtest/gtest.h>

namespace
{
// Generous room for a busy machine, and far from every wait that is tested.
constexpr double LONG_MS = 10'000;

class Worker : public LyThread
{
public:
    explicit Worker(std::function<void(Worker&)> body) : m_Body(std::move(body)) {}
    ~Worker() override { Stop(-1); }
    bool Thread() override
    {
        m_Body(*this);
        return true;
    }
    void* GetEvent() { return m_CancelEvent.Get(); }

    std::atomic<bool> m_bReached{false};

private:
    std::function<void(Worker&)> m_Body;
};

double Measure(const std::function<void()>& work)
{
    LyTimer timer;
    work();
    return timer.GetElapsedMS();
}
} // namespace

TEST(LyThreadWait, WithoutAThreadItReturnsAtOnce)
{
    LyThread thread;
    EXPECT_LT(Measure([&] { thread.WaitCheckingCancel(-1, static_cast<LyEvent*>(nullptr)); }), LONG_MS);
    EXPECT_LT(Measure([&] { thread.WaitCheckingCancel(60'000, static_cast<void*>(nullptr)); }), LONG_MS);
}

TEST(LyThreadWait, EndlessWaitOnTheWorkerEndsAtCancelAndAtOnceEverAfter)
{
    double fAgainMS = -1;
    Worker worker(
        [&](Worker& self)
        {
            self.m_bReached = true;
            self.WaitCheckingCancel(-1, nullptr);
            fAgainMS = Measure(
                [&]
                {
                    for (int n = 0; n < 1000; ++n)
                        self.WaitCheckingCancel(-1, nullptr);
                });
        });
    worker.Start(0, false);
    while (!worker.m_bReached)
        Sleep(1);
    Sleep(30);
    EXPECT_TRUE(worker.GetRunning());
    worker.Cancel(true);
    worker.WaitUntilFinished();
    EXPECT_GE(fAgainMS, 0.0);
    EXPECT_LT(fAgainMS, 5000.0); // a poll of 10 ms each would take 10 s
}

TEST(LyThreadWait, TimedWaitOnTheWorkerLastsItsTime)
{
    for (int nMS : {0, 1, 30, 250})
    {
        double fMS = -1;
        Worker worker([&](Worker& self) { fMS = Measure([&] { self.WaitCheckingCancel(nMS, nullptr); }); });
        worker.Start(0, false);
        worker.WaitUntilFinished();
        EXPECT_GE(fMS, nMS - 1.0); // two clocks: the wait goes by the wall clock
        EXPECT_LT(fMS, LONG_MS);
    }
}

TEST(LyThreadWait, TimedWaitOnTheWorkerIsCutShortByCancel)
{
    double fMS = -1;
    Worker worker([&](Worker& self) { fMS = Measure([&] { self.WaitCheckingCancel(60'000, nullptr); }); });
    worker.Start(0, false);
    worker.Stop(-1);
    EXPECT_GE(fMS, 0.0);
    EXPECT_LT(fMS, LONG_MS);
}

TEST(LyThreadWait, NegativeTimeOnTheWorkerIsOver)
{
    double fMS = -1;
    Worker worker([&](Worker& self) { fMS = Measure([&] { self.WaitCheckingCancel(-1999, nullptr); }); });
    worker.Start(0, false);
    worker.WaitUntilFinished();
    EXPECT_GE(fMS, 0.0);
    EXPECT_LT(fMS, LONG_MS);
}

TEST(LyThreadWait, OtherThreadPollsForItsTime)
{
    Worker worker([](Worker& self) { self.WaitCheckingCancel(-1, nullptr); });
    worker.Start(0, false);
    EXPECT_GE(Measure([&] { worker.WaitCheckingCancel(40, nullptr); }), 40.0);
    EXPECT_LT(Measure([&] { worker.WaitCheckingCancel(0, nullptr); }), LONG_MS);
}

TEST(LyThreadWait, OtherThreadSeesTheCancel)
{
    Worker worker([](Worker& self) { self.WaitCheckingCancel(200, nullptr); });
    worker.Start(0, false);
    worker.Cancel(true);
    EXPECT_LT(Measure([&] { worker.WaitCheckingCancel(60'000, nullptr); }), LONG_MS);
}

TEST(LyThreadWait, OtherThreadSeesTheEnd)
{
    Worker worker([](Worker& self) { self.WaitCheckingCancel(50, nullptr); });
    worker.Start(0, false);
    EXPECT_LT(Measure([&] { worker.WaitCheckingCancel(-1, nullptr); }), LONG_MS);
    EXPECT_FALSE(worker.GetRunning());
}

TEST(LyThreadWait, GivenEventEndsTheWaitOfBothSides)
{
    LyEvent event;
    double fMS = -1;
    Worker worker([&](Worker& self) { fMS = Measure([&] { self.WaitCheckingCancel(60'000, &event); }); });
    worker.Start(0, false);
    event.Set();
    EXPECT_LT(Measure([&] { worker.WaitCheckingCancel(60'000, &event); }), LONG_MS);
    worker.WaitUntilFinished();
    EXPECT_GE(fMS, 0.0);
    EXPECT_LT(fMS, LONG_MS);
    EXPECT_TRUE(event.GetSignalled());
}

TEST(LyThreadWait, GivenEventLeavesTheCancelInForce)
{
    LyEvent event;
    Worker worker([&](Worker& self) { self.WaitCheckingCancel(-1, &event); });
    worker.Start(0, false);
    EXPECT_TRUE(worker.Stop(-1));
}

TEST(LyThreadWait, UntypedArgumentIsDropped)
{
    LyEvent event;
    event.Set();
    void* pUntyped = &event;
    double fMS = -1;
    Worker worker([&](Worker& self) { fMS = Measure([&] { self.WaitCheckingCancel(50, pUntyped); }); });
    worker.Start(0, false);
    worker.WaitUntilFinished();
    EXPECT_GE(fMS, 49.0); // the signalled event behind the pointer did not end it
}
