// Progress on a terminal: shown once a task has run for a second, with the time left. Silent where stderr is no
// terminal.

#pragma once

#include "StatusLine.h"
#include <chrono>
#include <string>

class Progress
{
public:
    Progress(const std::string& strTask, long long nTotal);

    void Set(long long nDone);

private:
    using Clock = std::chrono::steady_clock;

    std::string m_strTask;
    long long m_nTotal;
    StatusLine m_Line;
    Clock::time_point m_Start = Clock::now();
    Clock::time_point m_Next;
};
