// The power manager: an inhibitor lock of the login manager against sleep and
// idling.
//
// The lock is a file descriptor that org.freedesktop.login1 hands out over the
// system bus (org.freedesktop.login1(5), Inhibit) and that holds until it is
// closed, at the latest by the end of the process.
//
// Errors:  without a bus, without the login manager, or if it refuses or keeps
// silent for TIMEOUT_US, nothing is held,
//          and nobody is told: the machine then sleeps when it likes.
// Threads: any. A request to the bus holds up nobody but its own thread.

#pragma once

#include "ISystemPowerManager.h"
#include <cstdint>
#include <map>
#include <mutex>

class PowerManager final : public ISystemPowerManager
{
public:
    static constexpr uint64_t TIMEOUT_US = 2'000'000; // for all that the bus is asked

    PowerManager() = default;
    ~PowerManager(); // ends all holds
    PowerManager(const PowerManager&) = delete;
    PowerManager& operator=(const PowerManager&) = delete;

    // The name is shown to the user as the reason. Every mode keeps the machine
    // from sleeping and idling alike.
    long long Acquire(const wchar_t* pName, int nMode, int nFlags) override;
    void Release(int nFirstHalf,
                 int nSecondHalf) override; // what is not held is passed over

private:
    std::mutex m_Mutex;
    uint64_t m_nLastEntry = 0;          // under m_Mutex
    std::map<uint64_t, int> m_mapHolds; // under m_Mutex: entry to descriptor
};
