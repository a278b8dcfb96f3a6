// DiscChecksums: which frames each of its sums is over, and what is asked of it afterwards.

#include "DiscChecksums.h"
#include <algorithm>

static int64_t FramesOf(int nSectors) { return static_cast<int64_t>(nSectors) * LY_CD_SECTOR_FRAMES; }

DiscChecksums::STRETCH_OF_FRAMES DiscChecksums::GetTrackStretch(size_t nTrack) const
{
    const CD_LAYOUT_TRACK& track = m_Layout.m_aryTracks[nTrack];
    return {FramesOf(track.m_nStart), FramesOf(track.m_nEnd)};
}

DiscChecksums::STRETCH_OF_FRAMES DiscChecksums::GetAudioStretch() const
{
    return {GetTrackStretch(m_nFirstAudio).m_nFirst, GetTrackStretch(m_nLastAudio).m_nEnd};
}

DiscChecksums::STRETCH_OF_FRAMES DiscChecksums::GetAccurateRipStretch(size_t nTrack) const
{
    STRETCH_OF_FRAMES stretch = GetTrackStretch(nTrack);
    if (nTrack == m_nFirstAudio)
        stretch.m_nFirst += ACCURATERIP_FIRST_FRAME - 1;
    if (nTrack == m_nLastAudio)
        stretch.m_nEnd -= ACCURATERIP_LAST_FRAMES;
    return stretch;
}

DiscChecksums::STRETCH_OF_FRAMES DiscChecksums::GetFrame450Stretch(size_t nTrack) const
{
    if (m_Layout.m_aryTracks[nTrack].GetSectors() <= FRAME450_SECTOR)
        return {};
    const int64_t nFirst = GetTrackStretch(nTrack).m_nFirst + FramesOf(FRAME450_SECTOR);
    return {nFirst, nFirst + LY_CD_SECTOR_FRAMES};
}

DiscChecksums::STRETCH_OF_FRAMES DiscChecksums::GetDiscCTDBStretch() const
{
    const STRETCH_OF_FRAMES audio = GetAudioStretch();
    return {audio.m_nFirst + m_nCTDBPrefix, audio.m_nEnd - m_nCTDBSuffix};
}

DiscChecksums::STRETCH_OF_FRAMES DiscChecksums::GetTrackCTDBStretch(size_t nTrack) const
{
    // Deliberate: a first track shorter than the prefix does not pass the rest of it on to the second track, nor a last
    // one to the track ahead of it: for the sum of a track, only the first and the last one have a margin.
    STRETCH_OF_FRAMES stretch = GetTrackStretch(nTrack);
    if (nTrack == m_nFirstAudio)
        stretch.m_nFirst += m_nCTDBPrefix;
    if (nTrack == m_nLastAudio)
        stretch.m_nEnd -= m_nCTDBSuffix;
    return stretch;
}

DiscChecksums::STRETCH_OF_FRAMES DiscChecksums::GetDiscPartStretch(size_t nTrack) const
{
    const STRETCH_OF_FRAMES disc = GetDiscCTDBStretch();
    const STRETCH_OF_FRAMES track = GetTrackStretch(nTrack);
    return {std::max(disc.m_nFirst, track.m_nFirst), std::min(disc.m_nEnd, track.m_nEnd)};
}

void DiscChecksums::WantEdges(const STRETCH_OF_FRAMES& stretch)
{
    if (stretch.IsEmpty())
        return;
    m_Windows.Want(stretch.m_nFirst - m_nMaxOffset, stretch.m_nFirst + m_nMaxOffset);
    m_Windows.Want(stretch.m_nEnd - m_nMaxOffset, stretch.m_nEnd + m_nMaxOffset);
}

void DiscChecksums::WantWindows()
{
    for (size_t i = 0; i < m_aryTracks.size(); ++i)
    {
        if (m_Layout.m_aryTracks[i].m_bData)
            continue;
        WantEdges(GetAccurateRipStretch(i));
        WantEdges(GetFrame450Stretch(i));
        WantEdges(GetTrackCTDBStretch(i));
        WantEdges(GetDiscPartStretch(i));
    }
    m_Windows.Prepare();
}

int DiscChecksums::FindCompleteTrack(int nNumber) const
{
    const int nTrack = m_bValid ? m_Layout.FindTrack(nNumber) : -1;
    return nTrack >= 0 && m_aryTracks[static_cast<size_t>(nTrack)].m_Sums.m_bComplete ? nTrack : -1;
}

bool DiscChecksums::GetTrack(int nNumber, TRACK_CHECKSUMS& sums) const
{
    const int nTrack = FindCompleteTrack(nNumber);
    sums = nTrack >= 0 ? m_aryTracks[static_cast<size_t>(nTrack)].m_Sums : TRACK_CHECKSUMS();
    return nTrack >= 0;
}

bool DiscChecksums::GetDiscCTDB(uint32_t& nCTDB) const
{
    nCTDB = 0;
    if (!m_bValid || !m_Layout.IsAudioContiguous())
        return false;
    uint32_t nCRC = 0; // of nothing
    for (size_t i = m_nFirstAudio; i <= m_nLastAudio; ++i)
    {
        if (!m_aryTracks[i].m_Sums.m_bComplete)
            return false;
        const STRETCH_OF_FRAMES part = GetDiscPartStretch(i);
        if (!part.IsEmpty())
            nCRC = CombineCRC32(nCRC, m_aryTracks[i].m_nDiscPart,
                                static_cast<uint64_t>(part.m_nEnd - part.m_nFirst) * LY_CD_FRAME_BYTES);
    }
    nCTDB = nCRC;
    return true;
}

uint32_t DiscChecksums::GetCRC32Of(int nPass, const STRETCH_OF_FRAMES& stretch) const
{
    if (stretch.IsEmpty())
        return 0;
    const AUDIO_PREFIX from = m_Windows.GetPrefix(nPass, stretch.m_nFirst);
    const AUDIO_PREFIX to = m_Windows.GetPrefix(nPass, stretch.m_nEnd);
    const CRC32Shift shift(static_cast<uint64_t>(stretch.m_nEnd - stretch.m_nFirst) * LY_CD_FRAME_BYTES);
    return from.m_bKnown && to.m_bKnown ? GetCRC32Between(from.m_nCRC, to.m_nCRC, shift) : 0;
}

// A frame's index is its place less nZero, the place of index 0.
static uint32_t GetSumBetween(const AUDIO_PREFIX& from, const AUDIO_PREFIX& to, int64_t nZero)
{
    return to.m_nPlaces - from.m_nPlaces - static_cast<uint32_t>(nZero) * (to.m_nWords - from.m_nWords);
}

uint32_t DiscChecksums::GetSumOf(int nPass, const STRETCH_OF_FRAMES& stretch, int64_t nIndexZero) const
{
    if (stretch.IsEmpty())
        return 0;
    const AUDIO_PREFIX from = m_Windows.GetPrefix(nPass, stretch.m_nFirst);
    const AUDIO_PREFIX to = m_Windows.GetPrefix(nPass, stretch.m_nEnd);
    return from.m_bKnown && to.m_bKnown ? GetSumBetween(from, to, nIndexZero) : 0;
}

std::vector<uint32_t> DiscChecksums::GetSumsAtOffsets(int nPass, const STRETCH_OF_FRAMES& stretch,
                                                      int64_t nIndexZero) const
{
    std::vector<uint32_t> arySums(static_cast<size_t>(2 * m_nMaxOffset + 1));
    if (stretch.IsEmpty())
        return arySums;
    const auto aryFrom = m_Windows.GetPrefixes(nPass, stretch.m_nFirst - m_nMaxOffset, stretch.m_nFirst + m_nMaxOffset);
    const auto aryTo = m_Windows.GetPrefixes(nPass, stretch.m_nEnd - m_nMaxOffset, stretch.m_nEnd + m_nMaxOffset);
    for (size_t i = 0; i < arySums.size(); ++i)
    {
        const int64_t nOffset = static_cast<int64_t>(i) - m_nMaxOffset;
        if (aryFrom[i].m_bKnown && aryTo[i].m_bKnown)
            arySums[i] = GetSumBetween(aryFrom[i], aryTo[i], nIndexZero + nOffset);
    }
    return arySums;
}

std::vector<uint32_t> DiscChecksums::GetCRC32AtOffsets(int nPass, const STRETCH_OF_FRAMES& stretch) const
{
    std::vector<uint32_t> arySums(static_cast<size_t>(2 * m_nMaxOffset + 1));
    if (stretch.IsEmpty())
        return arySums;
    const auto aryFrom = m_Windows.GetPrefixes(nPass, stretch.m_nFirst - m_nMaxOffset, stretch.m_nFirst + m_nMaxOffset);
    const auto aryTo = m_Windows.GetPrefixes(nPass, stretch.m_nEnd - m_nMaxOffset, stretch.m_nEnd + m_nMaxOffset);
    const CRC32Shift shift(static_cast<uint64_t>(stretch.m_nEnd - stretch.m_nFirst) * LY_CD_FRAME_BYTES);
    for (size_t i = 0; i < arySums.size(); ++i)
    {
        if (aryFrom[i].m_bKnown && aryTo[i].m_bKnown)
            arySums[i] = GetCRC32Between(aryFrom[i].m_nCRC, aryTo[i].m_nCRC, shift);
    }
    return arySums;
}

std::vector<uint32_t> DiscChecksums::GetAccurateRip1AtOffsets(int nNumber) const
{
    const int nTrack = FindCompleteTrack(nNumber);
    if (nTrack < 0)
        return {};
    const size_t i = static_cast<size_t>(nTrack);
    return GetSumsAtOffsets(m_aryTracks[i].m_nPass, GetAccurateRipStretch(i), GetTrackStretch(i).m_nFirst - 1);
}

std::vector<uint32_t> DiscChecksums::GetFrame450AtOffsets(int nNumber) const
{
    const int nTrack = FindCompleteTrack(nNumber);
    if (nTrack < 0)
        return {};
    const STRETCH_OF_FRAMES stretch = GetFrame450Stretch(static_cast<size_t>(nTrack));
    return GetSumsAtOffsets(m_aryTracks[static_cast<size_t>(nTrack)].m_nPass, stretch, stretch.m_nFirst - 1);
}

std::vector<uint32_t> DiscChecksums::GetTrackCTDBAtOffsets(int nNumber) const
{
    const int nTrack = FindCompleteTrack(nNumber);
    if (nTrack < 0)
        return {};
    const size_t i = static_cast<size_t>(nTrack);
    return GetCRC32AtOffsets(m_aryTracks[i].m_nPass, GetTrackCTDBStretch(i));
}

std::vector<uint32_t> DiscChecksums::GetDiscCTDBAtOffsets() const
{
    uint32_t nCTDB = 0;
    if (!GetDiscCTDB(nCTDB))
        return {};
    for (size_t i = m_nFirstAudio; i <= m_nLastAudio; ++i)
    {
        if (m_aryTracks[i].m_nPass != m_aryTracks[m_nFirstAudio].m_nPass)
            return {};
    }
    return GetCRC32AtOffsets(m_aryTracks[m_nFirstAudio].m_nPass, GetDiscCTDBStretch());
}
