// Progress on a terminal: shown once a task has run for a second, with the time left. Silent where stderr is no
// terminal.

#pragma once

#include <chrono>
#include <string>

class Progress
{
public:
    Progress(const std::string& strTask, long long nTotal);
    ~Progress(); // takes the line away
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Set(long long nDone);

private:
    using Clock = std::chrono::steady_clock;

    std::string m_strTask;
    long long m_nTotal;
    bool m_bTerminal;
    bool m_bShown = false;
    Clock::time_point m_Start = Clock::now();
    Clock::time_point m_Next;
};
