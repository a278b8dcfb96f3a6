// What the tests of the wait message share.

#pragma once

#include "MessageBoxService.h"
#include "PtyChild.h"
#include <atomic>
#include <filesystem>
#include <functional>
#include <iterator>
#include <thread>

constexpr int LONG_DELAY_MS = 3600 * 1000;

class Callback : public ILyWaitMessageCallback
{
public:
    bool LyWaitMessage_Cancel() override
    {
        if (m_Then)
            m_Then();
        ++m_nCalls;
        return true;
    }

    std::atomic<int> m_nCalls{0};
    std::function<void()> m_Then;
};

inline void WaitUntil(const std::function<bool()>& isDone)
{
    for (int nTry = 0; nTry < PtyChild::PATIENCE_MS / 5 && !isDone(); ++nTry)
        usleep(5 * 1000);
}

inline void WaitForCancel(ILyWaitMessage* pMessage)
{
    WaitUntil([&] { return pMessage->GetCancelled(); });
}

inline size_t CountThreads()
{
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
}

// The threads before anything is done. A sanitizer may have one of its own, from the first thread on.
inline size_t CountFirstThreads()
{
    std::thread([] {}).join();
    usleep(50 * 1000); // a joined thread is listed for a moment more
    return CountThreads();
}
