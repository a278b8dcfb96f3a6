#include "LyThread.h"
#include <gtest/gtest.h>

namespace
{
constexpr double LONG_MS = 10'000;
}

TEST(LyEvent, StartsUnsignalledAndManual)
{
    LyEvent event;
    EXPECT_FALSE(event.GetSignalled());
    event.Set();
    EXPECT_TRUE(event.GetSignalled());
    event.Wait(-1);
    event.Wait(0);
    EXPECT_TRUE(event.GetSignalled()); // a wait leaves it signalled
    event.Reset();
    EXPECT_FALSE(event.GetSignalled());
}

TEST(LyEvent, AutoResetIsUnsignalledByAWait)
{
    LyEvent event(true);
    event.Set();
    event.Wait(-1);
    EXPECT_FALSE(event.GetSignalled());
}

TEST(LyEvent, MayBeSetUpByItsMembers)
{
    LyEvent event;
    event.m_bAutoReset = true;
    event.m_bSignalled = true;
    EXPECT_TRUE(event.GetSignalled());
    event.Wait(-1);
    EXPECT_FALSE(event.m_bSignalled);
}

TEST(LyEvent, WaitEndsAfterItsTime)
{
    for (int nMS : {0, 1, 20, 999, 1001}) // the larger ones carry over into the next second
    {
        LyEvent event;
        LyTimer timer;
        event.Wait(nMS);
        EXPECT_GE(timer.GetElapsedMS(false), nMS - 1.0);
        EXPECT_LT(timer.GetElapsedMS(false), LONG_MS);
        EXPECT_FALSE(event.GetSignalled());
    }
}

TEST(LyEvent, TimeInThePastIsOver)
{
    for (int nMS : {-2, -999, -1001, -2147483647 - 1})
    {
        LyEvent event;
        LyTimer timer;
        event.Wait(nMS);
        EXPECT_LT(timer.GetElapsedMS(false), LONG_MS);
    }
}

TEST(LyEvent, SetWakesAWaiterOfAnotherThread)
{
    class Setter : public LyThread
    {
    public:
        explicit Setter(LyEvent& event) : m_Event(event) {}
        ~Setter() override { Stop(-1); }
        bool Thread() override
        {
            Sleep(20);
            m_Event.Set();
            return true;
        }
        LyEvent& m_Event;
    };
    for (int nMS : {-1, 60'000})
    {
        LyEvent event;
        Setter setter(event);
        LyTimer timer;
        setter.Start(0, false);
        event.Wait(nMS);
        EXPECT_TRUE(event.GetSignalled());
        EXPECT_LT(timer.GetElapsedMS(false), LONG_MS);
    }
}
