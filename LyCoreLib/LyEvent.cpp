#include "LyEvent.h"

#include <sys/time.h>

namespace
{
// The moment nMS from now, on the wall clock, which is the clock of condition variables.
timespec GetDeadline(int nMS)
{
    constexpr long NANOSECONDS = 1'000'000'000;
    timeval now;
    gettimeofday(&now, nullptr);
    timespec deadline;
    deadline.tv_sec = now.tv_sec + nMS / 1000;
    deadline.tv_nsec = static_cast<long>(now.tv_usec) * 1000 + static_cast<long>(nMS % 1000) * 1'000'000;
    if (deadline.tv_nsec >= NANOSECONDS)
    {
        ++deadline.tv_sec;
        deadline.tv_nsec -= NANOSECONDS;
    }
    else if (deadline.tv_nsec < 0)
    {
        --deadline.tv_sec;
        deadline.tv_nsec += NANOSECONDS;
    }
    return deadline;
}
} // namespace

LyEvent::LyEvent(bool bAutoReset) : m_bAutoReset(bAutoReset)
{
    pthread_mutex_init(&m_Mutex, nullptr);
    pthread_cond_init(&m_Condition, nullptr);
}

LyEvent::~LyEvent()
{
    pthread_cond_destroy(&m_Condition);
    pthread_mutex_destroy(&m_Mutex);
}

void LyEvent::Set()
{
    pthread_mutex_lock(&m_Mutex);
    m_bSignalled.store(true, std::memory_order_release);
    pthread_cond_signal(&m_Condition);
    pthread_mutex_unlock(&m_Mutex);
}

void LyEvent::Reset()
{
    pthread_mutex_lock(&m_Mutex);
    m_bSignalled.store(false, std::memory_order_release);
    pthread_mutex_unlock(&m_Mutex);
}

void LyEvent::Wait(int nMS)
{
    pthread_mutex_lock(&m_Mutex);
    if (nMS == -1)
    {
        while (!GetSignalled())
            pthread_cond_wait(&m_Condition, &m_Mutex);
    }
    else if (!GetSignalled())
    {
        // Any result but 0 ends the wait: a time-out is one of them.
        timespec deadline = GetDeadline(nMS);
        while (!GetSignalled() && pthread_cond_timedwait(&m_Condition, &m_Mutex, &deadline) == 0)
        {
        }
    }
    if (m_bAutoReset)
        m_bSignalled.store(false, std::memory_order_release);
    pthread_mutex_unlock(&m_Mutex);
}
