// LyEvent: a flag that threads can wait for.
//
// Threads: any. The memory must outlive the last waiter.

#pragma once

#include <atomic>
#include <pthread.h>

class LyEvent
{
public:
    explicit LyEvent(bool bAutoReset = false);
    ~LyEvent();
    LyEvent(const LyEvent&) = delete;
    LyEvent& operator=(const LyEvent&) = delete;

    void Set(); // signals, and wakes one waiter
    void Reset();
    bool GetSignalled() const { return m_bSignalled.load(std::memory_order_acquire); }

    // Waits until the event is signalled, at most nMS milliseconds; -1 means without limit. An event that resets
    // itself is not signalled any more afterwards.
    void Wait(int nMS);

    pthread_mutex_t m_Mutex;
    pthread_cond_t m_Condition;
    std::atomic<bool> m_bSignalled{false}; // written under the mutex; polls read it without
    bool m_bAutoReset;                     // set before anyone waits
};
