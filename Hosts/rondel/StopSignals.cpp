#include "StopSignals.h"
#include <atomic>
#include <csignal>
#include <ctime>

namespace
{
constexpr int STOP_SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int SIGNALS = sizeof STOP_SIGNALS / sizeof STOP_SIGNALS[0];

constexpr long long SAME_WISH_MS = 500; // a program that ends another tells it, and its whole group a moment later

// A handler may touch them.
std::atomic<bool> s_bStopWanted{false};
constexpr long long NONE_YET = -1;
std::atomic<long long> s_nFirstMs{NONE_YET};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<long long>::is_always_lock_free);
struct sigaction s_aryBefore[SIGNALS];

void RestoreAll()
{
    for (int i = 0; i < SIGNALS; ++i)
        (void)sigaction(STOP_SIGNALS[i], &s_aryBefore[i], nullptr);
}

long long GetMilliseconds()
{
    timespec now = {};
    (void)clock_gettime(CLOCK_MONOTONIC, &now); // may be called in a handler
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

void OnSignal(int nSignal)
{
    s_bStopWanted = true;
    const long long nNow = GetMilliseconds();
    long long nFirst = NONE_YET;
    // In one step: another signal may come between any two.
    if (s_nFirstMs.compare_exchange_strong(nFirst, nNow) || nNow - nFirst < SAME_WISH_MS)
        return;
    RestoreAll();
    (void)std::raise(nSignal); // comes as soon as this handler is left
}
} // namespace

StopSignals::StopSignals()
{
    s_bStopWanted = false;
    s_nFirstMs = NONE_YET;
    (void)std::signal(SIGXFSZ, SIG_IGN);
    (void)std::signal(SIGPIPE, SIG_IGN);
    for (int i = 0; i < SIGNALS; ++i)
        (void)sigaction(STOP_SIGNALS[i], nullptr, &s_aryBefore[i]);
    for (int i = 0; i < SIGNALS; ++i)
    {
        if (s_aryBefore[i].sa_handler == SIG_IGN)
            continue;
        struct sigaction action = {};
        action.sa_handler = OnSignal;
        action.sa_flags = SA_RESTART;
        (void)sigaction(STOP_SIGNALS[i], &action, nullptr);
    }
}

StopSignals::~StopSignals() { RestoreAll(); }

bool StopSignals::GetStopWanted() const { return s_bStopWanted; }
