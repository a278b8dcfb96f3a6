#include "LyLock.h"

LyLock::LyLock()
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&m_Mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

LyLock::~LyLock() { pthread_mutex_destroy(&m_Mutex); }

// The analysis cannot look into a pthread mutex: these two are what it has to believe.
void LyLock::Lock() LY_NO_THREAD_SAFETY_ANALYSIS
{
    pthread_mutex_lock(&m_Mutex);
    // Only the holder writes, so that a load and a store do; an atomic addition would cost a bus lock.
    m_nLockCount.store(m_nLockCount.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    m_Owner.store(pthread_self(), std::memory_order_relaxed);
}

void LyLock::Unlock() LY_NO_THREAD_SAFETY_ANALYSIS
{
    m_nLockCount.store(m_nLockCount.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
    pthread_mutex_unlock(&m_Mutex);
}

// Deliberate: no lock at all is a valid thing to hold, so that a caller may pass what it has.
LySingleLock::LySingleLock(LyLock* pLock) LY_NO_THREAD_SAFETY_ANALYSIS : m_pLock(pLock)
{
    if (m_pLock)
        m_pLock->Lock();
}

LySingleLock::~LySingleLock() LY_NO_THREAD_SAFETY_ANALYSIS
{
    if (m_pLock)
        m_pLock->Unlock();
}

namespace
{
pthread_mutex_t InterlockMutex = PTHREAD_MUTEX_INITIALIZER;

// The mutex orders the changes made by this library. Each library has a copy of it, though, and a block of characters
// may be shared by two of them, or looked at without it: therefore the change itself is atomic, too.
int AddUnderMutex(volatile int* pValue, int nChange)
{
    pthread_mutex_lock(&InterlockMutex);
    int nNew = __atomic_add_fetch(pValue, nChange, __ATOMIC_ACQ_REL);
    pthread_mutex_unlock(&InterlockMutex);
    return nNew;
}
} // namespace

int LyInterlocked::Increment(volatile int* pValue) { return AddUnderMutex(pValue, 1); }

int LyInterlocked::Decrement(volatile int* pValue) { return AddUnderMutex(pValue, -1); }
