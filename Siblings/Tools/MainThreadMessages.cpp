#include "MainThreadMessages.h"
#include "LyForeignCall.h"
#include <algorithm>

bool MainThreadMessages::RegisterCallback(IMainThreadMessageManagerCallback* pCallback)
{
    if (pCallback == nullptr)
        return false;
    return LyForeignCall(
        [&]
        {
            std::lock_guard lock(m_Mutex);
            m_Queues.try_emplace(pCallback);
        });
}

void MainThreadMessages::UnregisterCallback(IMainThreadMessageManagerCallback* pCallback)
{
    std::unique_lock lock(m_Mutex);
    m_Queues.erase(pCallback);
    m_DeliveryEnded.wait(lock, [&] { return !IsDeliveredElsewhere(pCallback); });
}

bool MainThreadMessages::PostMessage(IMainThreadMessageManagerCallback* pCallback, int nMessage, long long nData)
{
    bool bPosted = false;
    (void)LyForeignCall( // where there is no memory, nothing is posted
        [&]
        {
            std::lock_guard lock(m_Mutex);
            auto it = m_Queues.find(pCallback);
            if (it == m_Queues.end())
                return;
            it->second.push_back({m_nNextNumber, nMessage, nData});
            ++m_nNextNumber;
            bPosted = true;
        });
    return bPosted;
}

void MainThreadMessages::PumpMessages(IMainThreadMessageManagerCallback* pCallback)
{
    std::unique_lock lock(m_Mutex);
    const uint64_t nEnd = m_nNextNumber;
    for (auto it = FindNext(pCallback, nEnd, lock); it != m_Queues.end(); it = FindNext(pCallback, nEnd, lock))
        Deliver(it, lock);
}

bool MainThreadMessages::IsDeliveredElsewhere(IMainThreadMessageManagerCallback* pCallback) const
{
    auto it = m_Deliveries.find(pCallback);
    return it != m_Deliveries.end() && it->second.thread != std::this_thread::get_id();
}

bool MainThreadMessages::IsDelivering() const
{
    return std::any_of(m_Deliveries.begin(), m_Deliveries.end(),
                       [](const auto& each) { return each.second.thread == std::this_thread::get_id(); });
}

// The queue whose first message comes next; the end if there is none before nEnd.
MainThreadMessages::QUEUES::iterator MainThreadMessages::FindNext(IMainThreadMessageManagerCallback* pCallback,
                                                                  uint64_t nEnd, std::unique_lock<std::mutex>& lock)
{
    auto waiting = [&](const auto& queue) { return !queue.second.empty() && queue.second.front().nNumber < nEnd; };
    if (pCallback == nullptr)
    {
        auto next = m_Queues.end();
        for (auto it = m_Queues.begin(); it != m_Queues.end(); ++it)
            if (waiting(*it) && !IsDeliveredElsewhere(it->first) &&
                (next == m_Queues.end() || it->second.front().nNumber < next->second.front().nNumber))
                next = it;
        return next;
    }
    // A thread that delivers itself must not wait: the other one may be waiting for it.
    if (!IsDelivering())
        m_DeliveryEnded.wait(lock, [&] { return !IsDeliveredElsewhere(pCallback); });
    else if (IsDeliveredElsewhere(pCallback))
        return m_Queues.end();
    auto it = m_Queues.find(pCallback);
    return it != m_Queues.end() && waiting(*it) ? it : m_Queues.end();
}

// The iterator is of no use afterwards: the callback may have unregistered itself.
void MainThreadMessages::Deliver(QUEUES::iterator it, std::unique_lock<std::mutex>& lock)
{
    IMainThreadMessageManagerCallback* pCallback = it->first;
    const MESSAGE message = it->second.front();
    DELIVERY* pDelivery = nullptr;
    // Without memory for the note of it the message is lost, for nobody could wait for its delivery.
    (void)LyForeignCall(
        [&] {
            pDelivery = &m_Deliveries.try_emplace(pCallback, DELIVERY{std::this_thread::get_id(), 0}).first->second;
        });
    it->second.pop_front();
    if (pDelivery == nullptr)
        return;
    ++pDelivery->nDepth;
    lock.unlock();
    (void)LyForeignCall(
        [&] { (void)pCallback->MainThreadMessageManager_ProcessMainThreadMessage(message.nMessage, message.nData); });
    lock.lock();
    if (--pDelivery->nDepth > 0)
        return;
    m_Deliveries.erase(pCallback);
    m_DeliveryEnded.notify_all();
}
