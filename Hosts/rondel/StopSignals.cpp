#include "StopSignals.h"
#include <atomic>
#include <csignal>

namespace
{
constexpr int STOP_SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int SIGNALS = sizeof STOP_SIGNALS / sizeof STOP_SIGNALS[0];

std::atomic<bool> s_bStopWanted{false};
static_assert(std::atomic<bool>::is_always_lock_free); // a handler may touch it
struct sigaction s_aryBefore[SIGNALS];

void RestoreAll()
{
    for (int i = 0; i < SIGNALS; ++i)
        (void)sigaction(STOP_SIGNALS[i], &s_aryBefore[i], nullptr);
}

void OnSignal(int nSignal)
{
    if (!s_bStopWanted.exchange(true))
        return;
    RestoreAll();
    (void)std::raise(nSignal); // comes as soon as this handler is left
}
} // namespace

StopSignals::StopSignals()
{
    s_bStopWanted = false;
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
