#include "Progress.h"
#include "Text.h"
#include <cstdio>
#include <unistd.h>

namespace
{
constexpr std::chrono::milliseconds QUIET_TIME(1000);
constexpr std::chrono::milliseconds UPDATE_TIME(200);
} // namespace

Progress::Progress(const std::string& strTask, long long nTotal)
    : m_strTask(strTask), m_nTotal(nTotal), m_bTerminal(isatty(STDERR_FILENO) != 0), m_Next(m_Start + QUIET_TIME)
{
}

Progress::~Progress()
{
    if (m_bShown)
        std::fputs("\r\033[K", stderr);
}

void Progress::Set(long long nDone)
{
    if (!m_bTerminal || m_nTotal <= 0 || nDone <= 0)
        return;
    const Clock::time_point now = Clock::now();
    if (now < m_Next)
        return;
    m_Next = now + UPDATE_TIME;
    m_bShown = true;
    const double fDone = static_cast<double>(nDone) / static_cast<double>(m_nTotal);
    const double fElapsed = std::chrono::duration<double>(now - m_Start).count();
    std::fprintf(stderr, "\r%s: %3.0f %%, %s left\033[K", m_strTask.c_str(), fDone * 100,
                 FormatSeconds(fElapsed * (1 - fDone) / fDone).c_str());
}
