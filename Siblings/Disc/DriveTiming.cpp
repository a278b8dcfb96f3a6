#include "DriveTiming.h"
#include "ModePages.h"
#include <algorithm>
#include <cstdlib>

void DriveTiming::Reset(const DRIVE_PROFILE& profile)
{
    using std::chrono::milliseconds;
    m_Latency = milliseconds(profile.m_nLatencyMs);
    m_SpinUpTime = milliseconds(profile.m_nSpinUpMs);
    m_SpinDownAfter = milliseconds(profile.m_nSpinDownAfterMs);
    m_FullSeek = milliseconds(profile.m_nSeekMs);
    m_bTimed = profile.m_nSpeed > 0;
    m_nMaxKBPerSecond =
        m_bTimed ? static_cast<unsigned int>(profile.m_nSpeed * PROFILE_KB_PER_SPEED) : IMAGE_DRIVE_MAX_SPEED;
    m_nKBPerSecond = m_nMaxKBPerSecond;
    m_bSpinning = false;
    m_nHeadLBA = 0;
    m_LastUse = {};
}

void DriveTiming::SetSpeed(unsigned int nKBPerSecond)
{
    // Slower than playing no drive turns.
    m_nKBPerSecond = std::clamp<unsigned int>(nKBPerSecond, PROFILE_KB_PER_SPEED, m_nMaxKBPerSecond);
}

DriveTiming::DURATION DriveTiming::SpinUp(CLOCK::time_point now, bool& bSpinUp)
{
    if (m_bSpinning && m_SpinDownAfter.count() > 0 && now - m_LastUse > m_SpinDownAfter)
        m_bSpinning = false;
    bSpinUp = !m_bSpinning;
    m_bSpinning = true;
    return bSpinUp ? m_SpinUpTime : DURATION{};
}

DriveTiming::DURATION DriveTiming::ReadFromDisc(int nLBA, int nSectors)
{
    const DURATION time = GetSeek(nLBA) + GetTransfer(nSectors);
    m_nHeadLBA = nLBA + nSectors;
    return time;
}

DriveTiming::DURATION DriveTiming::GetSeek(int nLBA) const
{
    const long long nDistance = std::abs(static_cast<long long>(nLBA) - m_nHeadLBA);
    if (nDistance == 0)
        return {};
    const DURATION part = m_FullSeek * std::min<long long>(nDistance, FULL_STROKE_SECTORS) / FULL_STROKE_SECTORS;
    return std::max(part, m_FullSeek / SHORTEST_SEEK_DIVISOR);
}

DriveTiming::DURATION DriveTiming::GetTransfer(int nSectors) const
{
    constexpr long long US_PER_SECOND = 1000000;
    if (!m_bTimed)
        return {};
    return DURATION(nSectors * US_PER_SECOND * PROFILE_KB_PER_SPEED /
                    (1LL * LY_CD_SECTORS_PER_SECOND * m_nKBPerSecond));
}

int DriveTiming::GetSectorsIn(DURATION time, int nMax) const
{
    if (!m_bSpinning || nMax < 1)
        return 0;
    const DURATION whole = GetTransfer(nMax);
    if (time >= whole)
        return nMax;
    return static_cast<int>(nMax * time.count() / whole.count());
}
