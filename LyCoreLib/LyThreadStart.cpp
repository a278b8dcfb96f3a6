// The two ends of a worker: how it is created, and what the new thread does before and after Thread().

#include "LyPlatform.h"
#include "LyThread.h"
#include <algorithm>

namespace
{
using END_THREAD = void (*)(LyThread*);

// The address of EndThread() as the object's class has it. The call comes after the handle was cleared, when the object
// may be gone, so the table is read before. EndThread is the operation 30 of the table, which begins with the slot of
// the interface and has one entry for each of the two destructors.
END_THREAD GetEndThread(LyThread* pThread)
{
    constexpr int END_THREAD_SLOT = 30 - 1;
    const END_THREAD* pTable = *reinterpret_cast<const END_THREAD* const*>(pThread);
    return pTable[END_THREAD_SLOT];
}

int LimitPriority(int nPriority)
{
    return std::clamp(nPriority, LyThread::LOWEST_PRIORITY, LyThread::REAL_TIME_PRIORITY);
}
} // namespace

bool LyThread::StartThread(int nPriority)
{
    if (CreateThread(nPriority, true))
        return true;
    // A plain user may not ask for every kind of scheduling. A start never fails because of that.
    return nPriority != NORMAL_PRIORITY && CreateThread(nPriority, false);
}

bool LyThread::CreateThread(int nPriority, bool bWithPriority)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return false;
    if (bWithPriority)
        s_SetThreadAttributePriority(&attributes, nPriority);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);

    // The worker waits for this lock, so that handle, id and priority are in place before Thread() runs. It also keeps
    // a worker that ends at once from clearing the handle before the result of the start has been decided.
    bool bStarted = false;
    {
        LySingleLock lock(&m_Lock);
        pthread_t hThread{};
        if (pthread_create(&hThread, &attributes, StaticThread, this) == 0)
        {
            m_hThread.store(hThread, std::memory_order_release);
            m_hThreadId.store(hThread, std::memory_order_release);
            s_SetMachThreadPriority(hThread, nPriority);
            bStarted = true;
        }
    }
    pthread_attr_destroy(&attributes);
    return bStarted;
}

void* LyThread::StaticThread(void* pParameter)
{
    // From the moment at which the handle is cleared, the owner may destroy the object and unload this library, while
    // the worker still runs the last lines below.
    LyPlatform::HoldLibraryUntilThreadEnds();
    LyThread* pThread = static_cast<LyThread*>(pParameter);
    const pthread_t hThread = pthread_self();
    {
        LySingleLock lock(&pThread->m_Lock);
    }
    void* pPool = LyPlatform::BeginAutoreleasePool();
    bool bResult = pThread->Thread();
    // A hard kill took the handle away: from then on this run does not speak for the object, which may have another.
    if (pThread->m_hThread.load(std::memory_order_acquire) == hThread)
        pThread->m_bReturnValue.store(bResult, std::memory_order_release);
    LyPlatform::EndAutoreleasePool(pPool);
    pThread->CleanupThread(reinterpret_cast<void*>(hThread));

    END_THREAD pEndThread = GetEndThread(pThread);
    pthread_t hExpected = hThread;
    pThread->m_hThreadId.compare_exchange_strong(hExpected, pthread_t{});
    hExpected = hThread;
    pThread->m_hThread.compare_exchange_strong(hExpected, pthread_t{});
    // Nothing of the object is touched from here on.
    pEndThread(pThread);
    return nullptr;
}

void LyThread::EndThread() { pthread_exit(nullptr); }

void LyThread::s_SetThreadAttributePriority(pthread_attr_t* pAttributes, int nPriority)
{
    LyPlatform::SetThreadAttributePriority(pAttributes, LimitPriority(nPriority));
}

void LyThread::s_SetMachThreadPriority(pthread_t hThread, int nPriority)
{
    LyPlatform::SetStartedThreadPriority(hThread, LimitPriority(nPriority));
}
