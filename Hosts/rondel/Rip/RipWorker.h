// RipWorker: a thread of its own for what may take longer than reading: encoders, and writing files. Tasks run one
// after the other in the order in which they came. Who brings more than the queue may hold waits until there is room:
// a slow encoder holds up the reading no earlier than that.
//
// Units:   bytes that a task keeps; a task of 0 bytes never waits.
// Errors:  a task may not throw.
// Threads: Add and Wait by any one at a time; the tasks on the worker's.

#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

class RipWorker
{
public:
    static constexpr size_t MAX_BYTES = 8 * 1024 * 1024; // 47 seconds of a disc

    static constexpr int FOREVER = -1; // milliseconds

    explicit RipWorker(size_t nMaxBytes = MAX_BYTES);
    ~RipWorker(); // runs what was added
    RipWorker(const RipWorker&) = delete;
    RipWorker& operator=(const RipWorker&) = delete;

    void Add(std::function<void()> task, size_t nBytes = 0);
    bool Wait(int nMs); // true once all that was added has run

private:
    struct TASK
    {
        std::function<void()> run;
        size_t nBytes;
    };

    void Run();

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::deque<TASK> m_Tasks; // the first one is running
    const size_t m_nMaxBytes;
    size_t m_nBytes = 0; // of all tasks
    bool m_bEnd = false;
    std::thread m_Thread; // the last member: it uses the others
};
