#include "LyPlatform.h"
#include "LyTimer.h"
#include "RawTable.h"
#include <csignal>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <type_traits>

namespace
{
// A timer whose clock the test moves.
class FakeClockTimer : public LyTimer
{
public:
    double NowAsMS() override { return m_fNowMS; }
    double m_fNowMS = 0.0;
};

double GetWallClockMS()
{
    timeval now;
    gettimeofday(&now, nullptr);
    return static_cast<double>(now.tv_sec) * 1000.0 + static_cast<double>(now.tv_usec) / 1000.0;
}
} // namespace

TEST(LyTimer, ElapsedIsNowLessStart)
{
    FakeClockTimer timer;
    timer.m_fNowMS = 1000.0;
    timer.Reset();
    EXPECT_EQ(timer.GetElapsedMS(false), 0.0);
    timer.m_fNowMS = 1250.5;
    EXPECT_EQ(timer.GetElapsedMS(false), 250.5);
    EXPECT_EQ(timer.GetElapsedMS(false), 250.5);
    EXPECT_EQ(timer.GetElapsedMS(true), 250.5);
    EXPECT_EQ(timer.GetElapsedMS(false), 0.0);
    timer.m_fNowMS = 1251.5;
    EXPECT_EQ(timer.GetElapsedMS(false), 1.0);
}

TEST(LyTimer, RunsFromItsConstruction)
{
    LyTimer timer;
    Sleep(20);
    double fMS = timer.GetElapsedMS(false);
    EXPECT_GE(fMS, 20.0);
    EXPECT_LT(fMS, 20'000.0);
}

TEST(LyTimer, CountsTheTicksOfThePlatformInMilliseconds)
{
    LyTimer timer;
    LyPlatform::TIMEBASE timebase = LyPlatform::GetClockTimebase();
    double fMSPerTick = static_cast<double>(timebase.nNumerator) / timebase.nDenominator * 1e-6;
    double fBefore = static_cast<double>(LyPlatform::GetClockTicks()) * fMSPerTick;
    double fNow = timer.NowAsMS();
    double fAfter = static_cast<double>(LyPlatform::GetClockTicks()) * fMSPerTick;
    EXPECT_LE(fBefore, fNow);
    EXPECT_LE(fNow, fAfter);
}

TEST(LyTimer, OperationsStandInTheirOrder)
{
    FakeClockTimer timer;
    LyTimer* pTimer = &timer;
    timer.m_fNowMS = 40.0;
    CallSlot<void>(pTimer, 0); // Reset
    timer.m_fNowMS = 42.0;
    EXPECT_EQ(CallSlot<double>(pTimer, 1, true), 2.0); // GetElapsedMS
    EXPECT_EQ(CallSlot<double>(pTimer, 1, false), 0.0);
    EXPECT_EQ(CallSlot<double>(pTimer, 2), 42.0); // NowAsMS
    static_assert(!std::has_virtual_destructor_v<LyTimer>);
    static_assert(sizeof(LyTimer) == sizeof(void*) + 2 * sizeof(double));
}

TEST(LyTimer, StartStandsBeforeTheTickLength)
{
    struct Fields : LyTimer
    {
        bool Check() const
        {
            return reinterpret_cast<const char*>(&m_fStartMS) - reinterpret_cast<const char*>(this) == sizeof(void*) &&
                   &m_fMSPerTick == &m_fStartMS + 1;
        }
    };
    EXPECT_TRUE(Fields().Check());
}

TEST(LyTimerLowPrecision, GoesByTheWallClock)
{
    LyTimerLowPrecision timer;
    double fBefore = GetWallClockMS();
    double fNow = timer.NowAsMS();
    double fAfter = GetWallClockMS();
    EXPECT_LE(fBefore, fNow);
    EXPECT_LE(fNow, fAfter);
}

TEST(LyTimerLowPrecision, MeasuresAndResetsAsItsBase)
{
    LyTimerLowPrecision timer;
    LyTimer* pTimer = &timer;
    EXPECT_LT(pTimer->GetElapsedMS(false), 20'000.0); // it started now, not in 1970
    Sleep(20);
    EXPECT_GE(pTimer->GetElapsedMS(true), 19.0);
    pTimer->Reset();
    EXPECT_LT(pTimer->GetElapsedMS(false), 20'000.0);
    EXPECT_EQ(sizeof(LyTimerLowPrecision), sizeof(LyTimer));
}

TEST(GetTickCount, IsTheWallClockInMillisecondsWrappedTo32Bits)
{
    auto nBefore = static_cast<unsigned int>(static_cast<unsigned long long>(GetWallClockMS()));
    unsigned int nNow = GetTickCount();
    auto nAfter = static_cast<unsigned int>(static_cast<unsigned long long>(GetWallClockMS()));
    EXPECT_LE(static_cast<int>(nBefore - nNow), 0);
    EXPECT_LE(static_cast<int>(nNow - nAfter), 0);
    static_assert(sizeof(GetTickCount()) == 4);
}

TEST(Sleep, LastsItsTime)
{
    for (unsigned int nMS : {0u, 1u, 15u, 1005u})
    {
        LyTimer timer;
        Sleep(nMS);
        double fMS = timer.GetElapsedMS(false);
        EXPECT_GE(fMS, nMS);
        EXPECT_LT(fMS, nMS + 20'000.0);
    }
}

// One call of the system sleep: whoever polls looks again sooner when a signal comes.
TEST(Sleep, IsEndedByASignal)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    struct sigaction former;
    ASSERT_EQ(sigaction(SIGALRM, &action, &former), 0);
    // It comes again and again, in case that the first one is early.
    itimerval interval = {{0, 50'000}, {0, 50'000}};
    setitimer(ITIMER_REAL, &interval, nullptr);
    LyTimer timer;
    Sleep(60'000);
    EXPECT_LT(timer.GetElapsedMS(false), 30'000.0);
    interval = {};
    setitimer(ITIMER_REAL, &interval, nullptr);
    sigaction(SIGALRM, &former, nullptr);
}
