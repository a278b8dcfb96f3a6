#include "StopSignals.h"
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

namespace
{
// Both come one directly behind the other, as from a terminal, or from a program that tells the group, too.
void RaiseTogether(int nFirst, int nSecond)
{
    sigset_t both;
    sigset_t before;
    sigemptyset(&both);
    sigaddset(&both, nFirst);
    sigaddset(&both, nSecond);
    pthread_sigmask(SIG_BLOCK, &both, &before);
    (void)raise(nFirst);
    (void)raise(nSecond);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}
} // namespace

TEST(StopSignals, TheFirstIsAWish)
{
    const StopSignals signals;
    EXPECT_FALSE(signals.GetStopWanted());
    (void)raise(SIGTERM);
    EXPECT_TRUE(signals.GetStopWanted());
}

TEST(StopSignals, OneThatIsToldTwiceAtOnceIsOne)
{
    const StopSignals signals;
    RaiseTogether(SIGINT, SIGTERM);
    EXPECT_TRUE(signals.GetStopWanted());
}

TEST(StopSignals, ALaterOneEndsTheProgram)
{
    EXPECT_EXIT(
        {
            const StopSignals signals;
            (void)raise(SIGTERM);
            usleep(700 * 1000);
            (void)raise(SIGTERM);
        },
        testing::KilledBySignal(SIGTERM), "");
}

TEST(StopSignals, BehindTheObjectTheyAreWhatTheyWere)
{
    EXPECT_EXIT(
        {
            {
                const StopSignals signals;
                (void)raise(SIGINT);
            }
            (void)raise(SIGHUP);
        },
        testing::KilledBySignal(SIGHUP), "");
}
