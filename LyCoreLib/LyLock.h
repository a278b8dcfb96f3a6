// Locks and interlocked counting: the small pieces on which the strings, and everything above them, rest.
//
// Threads: any. LyInterlocked's mutex is the innermost lock of the system: nothing else is ever taken under it.

#pragma once

#include "GlobalMacros.h"
#include <atomic>
#include <pthread.h>

// A recursive mutex. The count and the owner are for debuggers and tests: nothing here decides by them.
class LY_CAPABILITY("mutex") LyLock
{
public:
    LyLock();
    ~LyLock();
    LyLock(const LyLock&) = delete;
    LyLock& operator=(const LyLock&) = delete;

    void Lock() LY_ACQUIRE();
    void Unlock() LY_RELEASE();
    int GetLockCount() const { return m_nLockCount.load(std::memory_order_relaxed); }  // how often it is held now
    pthread_t GetLastOwner() const { return m_Owner.load(std::memory_order_relaxed); } // stays after the release

private:
    pthread_mutex_t m_Mutex;
    std::atomic<int> m_nLockCount{0}; // written only by the holder
    std::atomic<pthread_t> m_Owner{};
};

// Holds a lock for the length of a scope. On a null pointer it does nothing.
class LY_SCOPED_CAPABILITY LySingleLock
{
public:
    explicit LySingleLock(LyLock* pLock) LY_ACQUIRE(pLock);
    ~LySingleLock() LY_RELEASE();
    LySingleLock(const LySingleLock&) = delete;
    LySingleLock& operator=(const LySingleLock&) = delete;

private:
    LyLock* m_pLock; // not owned
};

// Counting that several threads share. Both return the new value.
class LyInterlocked
{
public:
    static int Increment(volatile int* pValue);
    static int Decrement(volatile int* pValue);
};
