// The main-thread message manager: a queue that a host pumps on the thread of its choice.
//
// Life:    a callback registers itself, is posted messages from any thread, and is told of each of them on the thread
//          that pumps. Whoever unregisters it may destroy it at once: what waited for it is dropped, and a delivery to
//          it that another thread is in the middle of is waited for.
// Order:   the messages of one callback come in the order in which they were posted, one at a time, whoever pumps.
// Threads: any, for every operation. No lock is held during a delivery, so that a callback may post, pump, register and
//          unregister itself or others. Two deliveries that unregister each other's callbacks wait for ever.
// Errors:  false; nothing throws, and what a callback throws is swallowed.

#pragma once

#include "LyThread.h"
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

class MainThreadMessages final : public IMainThreadMessageManager
{
public:
    bool RegisterCallback(IMainThreadMessageManagerCallback* pCallback) override; // again: still true. False for null.
    void UnregisterCallback(IMainThreadMessageManagerCallback* pCallback) override;
    bool PostMessage(IMainThreadMessageManagerCallback* pCallback, int nMessage, long long nData) override;
    // Delivers what waits for the callback when it is called; what is posted meanwhile comes with the next pump. Null
    // delivers to all, in the order of posting. A delivery to the callback on another thread is waited for, unless this
    // thread is delivering too, or pumps for all: then that thread goes on with it.
    void PumpMessages(IMainThreadMessageManagerCallback* pCallback) override;

private:
    struct MESSAGE
    {
        uint64_t nNumber; // counts all messages, in the order of posting
        int nMessage;
        long long nData;
    };
    // Kept apart from the registration, which may go and come again in the middle of a delivery.
    struct DELIVERY
    {
        std::thread::id thread;
        int nDepth; // a delivered message may pump for the same callback
    };
    using QUEUES = std::map<IMainThreadMessageManagerCallback*, std::deque<MESSAGE>>;

    bool IsDeliveredElsewhere(IMainThreadMessageManagerCallback* pCallback) const;
    bool IsDelivering() const; // this thread, to anybody
    QUEUES::iterator FindNext(IMainThreadMessageManagerCallback* pCallback, uint64_t nEnd,
                              std::unique_lock<std::mutex>& lock);
    void Deliver(QUEUES::iterator it, std::unique_lock<std::mutex>& lock);

    std::mutex m_Mutex; // guards all that follows
    std::condition_variable m_DeliveryEnded;
    QUEUES m_Queues; // of the callbacks that are registered
    std::map<IMainThreadMessageManagerCallback*, DELIVERY> m_Deliveries;
    uint64_t m_nNextNumber = 0;
};
