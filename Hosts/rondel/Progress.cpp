#include "Progress.h"
#include "Text.h"
#include <cstdio>

namespace
{
constexpr std::chrono::milliseconds QUIET_TIME(1000);
constexpr std::chrono::milliseconds UPDATE_TIME(200);
} // namespace

Progress::Progress(const std::string& strTask, long long nTotal)
    : m_strTask(strTask), m_nTotal(nTotal), m_Next(m_Start + QUIET_TIME)
{
}

void Progress::Set(long long nDone)
{
    if (!m_Line.GetIsTerminal() || m_nTotal <= 0 || nDone <= 0)
        return;
    const Clock::time_point now = Clock::now();
    if (now < m_Next)
        return;
    m_Next = now + UPDATE_TIME;
    const double fDone = static_cast<double>(nDone) / static_cast<double>(m_nTotal);
    const double fElapsed = std::chrono::duration<double>(now - m_Start).count();
    char szPercent[16];
    std::snprintf(szPercent, sizeof szPercent, "%3.0f %%", fDone * 100);
    m_Line.Show(m_strTask + ": " + szPercent + ", " + FormatSeconds(fElapsed * (1 - fDone) / fDone) + " left");
}
