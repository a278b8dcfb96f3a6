#include "LyTimer.h"

#include "LyPlatform.h"
#include <sys/time.h>
#include <time.h>

unsigned int GetTickCount()
{
    timeval now;
    gettimeofday(&now, nullptr);
    unsigned long long nMS =
        static_cast<unsigned long long>(now.tv_sec) * 1000 + static_cast<unsigned long long>(now.tv_usec) / 1000;
    return static_cast<unsigned int>(nMS);
}

void Sleep(unsigned int nMS)
{
    timespec time;
    time.tv_sec = static_cast<time_t>(nMS / 1000);
    time.tv_nsec = static_cast<long>(nMS % 1000) * 1'000'000;
    // Deliberate: not repeated when a signal ends it. Every caller polls, and looks again sooner then.
    nanosleep(&time, nullptr);
}

LyTimer::LyTimer()
{
    constexpr double MILLISECONDS_PER_NANOSECOND = 1e-6;
    LyPlatform::TIMEBASE timebase = LyPlatform::GetClockTimebase();
    m_fMSPerTick = static_cast<double>(timebase.nNumerator) / timebase.nDenominator * MILLISECONDS_PER_NANOSECOND;
    m_fStartMS = LyTimer::NowAsMS();
}

void LyTimer::Reset() { m_fStartMS = NowAsMS(); }

double LyTimer::GetElapsedMS(bool bReset)
{
    double fNowMS = NowAsMS();
    double fElapsedMS = fNowMS - m_fStartMS;
    if (bReset)
        m_fStartMS = fNowMS;
    return fElapsedMS;
}

double LyTimer::NowAsMS() { return static_cast<double>(LyPlatform::GetClockTicks()) * m_fMSPerTick; }

LyTimerLowPrecision::LyTimerLowPrecision() { m_fStartMS = LyTimerLowPrecision::NowAsMS(); }

double LyTimerLowPrecision::NowAsMS()
{
    timeval now;
    gettimeofday(&now, nullptr);
    return static_cast<double>(now.tv_sec) * 1000.0 + static_cast<double>(now.tv_usec) / 1000.0;
}
