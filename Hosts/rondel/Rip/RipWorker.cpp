#include "RipWorker.h"
#include <chrono>

RipWorker::RipWorker(size_t nMaxBytes) : m_nMaxBytes(nMaxBytes), m_Thread([this] { Run(); }) {}

RipWorker::~RipWorker()
{
    {
        const std::lock_guard lock(m_Mutex);
        m_bEnd = true;
    }
    m_Changed.notify_all();
    m_Thread.join();
}

void RipWorker::Add(std::function<void()> task, size_t nBytes)
{
    std::unique_lock lock(m_Mutex);
    // What is larger than all that may wait passes once the queue is empty.
    if (nBytes > 0)
        m_Changed.wait(lock, [&] { return m_Tasks.empty() || m_nBytes + nBytes <= m_nMaxBytes; });
    m_Tasks.push_back({std::move(task), nBytes});
    m_nBytes += nBytes;
    m_Changed.notify_all();
}

bool RipWorker::Wait(int nMs)
{
    const auto isDone = [this] { return m_Tasks.empty(); };
    std::unique_lock lock(m_Mutex);
    if (nMs != FOREVER)
        return m_Changed.wait_for(lock, std::chrono::milliseconds(nMs), isDone);
    m_Changed.wait(lock, isDone);
    return true;
}

void RipWorker::Run()
{
    std::unique_lock lock(m_Mutex);
    for (;;)
    {
        m_Changed.wait(lock, [&] { return m_bEnd || !m_Tasks.empty(); });
        if (m_Tasks.empty())
            return;
        TASK& task = m_Tasks.front(); // others are only added behind it
        lock.unlock();
        task.run();
        task.run = nullptr; // what it keeps goes now
        lock.lock();
        m_nBytes -= task.nBytes;
        m_Tasks.pop_front();
        m_Changed.notify_all();
    }
}
