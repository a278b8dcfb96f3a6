#include "TerminalTurns.h"
#include <algorithm>

void TerminalTurns::BeginQuestion()
{
    std::unique_lock lock(m_Mutex);
    ++m_nQuestions;
    if (m_pInside != nullptr)
        m_pInside->Wake();
    m_Changed.wait(lock, [this] { return !m_bAsking && m_pInside == nullptr; });
    m_bAsking = true;
}

void TerminalTurns::EndQuestion()
{
    std::lock_guard lock(m_Mutex);
    m_bAsking = false;
    --m_nQuestions;
    m_Changed.notify_all();
    WakeAll();
}

void TerminalTurns::Add(Sleeper* pSleeper)
{
    std::lock_guard lock(m_Mutex);
    m_arySleepers.push_back(pSleeper);
}

void TerminalTurns::Remove(Sleeper* pSleeper)
{
    std::unique_lock lock(m_Mutex);
    m_Changed.wait(lock, [&] { return m_pSilencing != pSleeper; });
    std::erase(m_arySleepers, pSleeper);
}

bool TerminalTurns::TryEnter(Sleeper* pSleeper)
{
    std::lock_guard lock(m_Mutex);
    if (m_nQuestions > 0 || m_pInside != nullptr)
        return false;
    m_pInside = pSleeper;
    return true;
}

bool TerminalTurns::GetMustLeave()
{
    std::lock_guard lock(m_Mutex);
    return m_nQuestions > 0;
}

void TerminalTurns::Leave(Sleeper* pSleeper)
{
    std::lock_guard lock(m_Mutex);
    if (m_pInside != pSleeper)
        return;
    m_pInside = nullptr;
    m_Changed.notify_all();
    if (m_nQuestions == 0)
        WakeAll();
}

// A sleeper that ends its thread may still enter and leave: the lock is not held meanwhile.
void TerminalTurns::SilenceAll()
{
    std::unique_lock lock(m_Mutex);
    while (!m_arySleepers.empty())
    {
        m_pSilencing = m_arySleepers.back();
        m_arySleepers.pop_back();
        lock.unlock();
        m_pSilencing->Silence();
        lock.lock();
        m_pSilencing = nullptr;
        m_Changed.notify_all();
    }
}

void TerminalTurns::WakeAll()
{
    for (Sleeper* pSleeper : m_arySleepers)
        pSleeper->Wake();
}
