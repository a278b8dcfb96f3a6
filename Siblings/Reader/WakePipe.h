// Wakes a thread that waits for a descriptor with poll(): the other half of the wait.
//
// Threads: Wake from any; the rest from the thread that waits.

#pragma once

#include <mutex>

class WakePipe
{
public:
    WakePipe() = default;
    ~WakePipe();
    WakePipe(const WakePipe&) = delete;
    WakePipe& operator=(const WakePipe&) = delete;

    bool Make(); // once is enough; forgets an earlier Wake. False if the process has no descriptor left
    void Wake();
    // Waits for the events of a descriptor (-1: for a Wake alone), for ever with -1. True if they came, false after a
    // Wake, the time or an error.
    bool Wait(int nDescriptor, short nEvents, int nTimeoutMS) const;

private:
    std::mutex m_Mutex; // Wake may come while the pipe is made
    int m_nRead = -1;
    int m_nWrite = -1; // under m_Mutex
};
