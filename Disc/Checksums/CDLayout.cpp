#include "CDLayout.h"
#include <cstddef>

void CD_LAYOUT::Add(int nStart, bool bData)
{
    CD_LAYOUT_TRACK track;
    track.m_nNumber = m_aryTracks.empty() ? 1 : m_aryTracks.back().m_nNumber + 1;
    track.m_nStart = nStart;
    track.m_bData = bData;
    m_aryTracks.push_back(track);
}

void CD_LAYOUT::Finish(int nLeadOut)
{
    m_nLeadOut = nLeadOut;
    for (size_t i = 0; i < m_aryTracks.size(); ++i)
    {
        CD_LAYOUT_TRACK& track = m_aryTracks[i];
        const bool bLast = i + 1 == m_aryTracks.size();
        track.m_nEnd = bLast ? nLeadOut : m_aryTracks[i + 1].m_nStart;
        const bool bSessionEnds = !bLast && !track.m_bData && m_aryTracks[i + 1].m_bData;
        if (bSessionEnds && static_cast<long long>(track.m_nEnd) - track.m_nStart > CD_SESSION_GAP_SECTORS)
            track.m_nEnd -= CD_SESSION_GAP_SECTORS;
    }
}

bool CD_LAYOUT::IsValid() const
{
    if (m_aryTracks.empty() || m_aryTracks.size() > LY_CD_MAX_TRACKS || m_nLeadOut > CD_ADDRESS_END)
        return false;
    int nFree = 0;
    int nNumber = m_aryTracks.front().m_nNumber;
    for (const CD_LAYOUT_TRACK& track : m_aryTracks)
    {
        if (track.m_nNumber != nNumber || nNumber < 1 || nNumber > LY_CD_MAX_TRACKS)
            return false;
        if (track.m_nStart < nFree || track.m_nEnd <= track.m_nStart)
            return false;
        nFree = track.m_nEnd;
        ++nNumber;
    }
    return nFree <= m_nLeadOut;
}

int CD_LAYOUT::CountAudioTracks() const
{
    int nTracks = 0;
    for (const CD_LAYOUT_TRACK& track : m_aryTracks)
        nTracks += track.m_bData ? 0 : 1;
    return nTracks;
}

int CD_LAYOUT::FindTrack(int nNumber) const
{
    for (size_t i = 0; i < m_aryTracks.size(); ++i)
    {
        if (m_aryTracks[i].m_nNumber == nNumber)
            return static_cast<int>(i);
    }
    return -1;
}

int CD_LAYOUT::GetFirstAudio() const
{
    for (size_t i = 0; i < m_aryTracks.size(); ++i)
    {
        if (!m_aryTracks[i].m_bData)
            return static_cast<int>(i);
    }
    return -1;
}

int CD_LAYOUT::GetLastAudio() const
{
    for (size_t i = m_aryTracks.size(); i-- > 0;)
    {
        if (!m_aryTracks[i].m_bData)
            return static_cast<int>(i);
    }
    return -1;
}

bool CD_LAYOUT::IsAudioContiguous() const
{
    const int nFirst = GetFirstAudio();
    if (nFirst < 0)
        return false;
    const size_t nLast = static_cast<size_t>(GetLastAudio());
    for (size_t i = static_cast<size_t>(nFirst); i < nLast; ++i)
    {
        if (m_aryTracks[i + 1].m_bData || m_aryTracks[i + 1].m_nStart != m_aryTracks[i].m_nEnd)
            return false;
    }
    return true;
}

bool CD_LAYOUT::HasTrailingData() const { return !m_aryTracks.empty() && m_aryTracks.back().m_bData; }
