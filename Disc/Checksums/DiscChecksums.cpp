#include "DiscChecksums.h"
#include <algorithm>

DiscChecksums::DiscChecksums() : m_SectorShift(LY_CD_SECTOR_BYTES), m_aryPending() {}

bool DiscChecksums::SetLayout(const CD_LAYOUT& layout, int nMaxOffset)
{
    m_Layout = layout;
    m_bValid = layout.IsValid() && nMaxOffset >= 0 && nMaxOffset <= CHECKSUM_MAX_OFFSET;
    m_nMaxOffset = m_bValid ? nMaxOffset : 0;
    m_aryTracks.assign(m_bValid ? layout.m_aryTracks.size() : 0, TRACK());
    m_Windows.Clear();
    m_nPass = 0;
    m_nSector = 0;
    m_nPending = 0;
    if (m_bValid && layout.CountAudioTracks() > 0)
    {
        m_nFirstAudio = static_cast<size_t>(layout.GetFirstAudio());
        m_nLastAudio = static_cast<size_t>(layout.GetLastAudio());
        const STRETCH_OF_FRAMES audio = GetAudioStretch();
        m_nCTDBPrefix = CTDB_PREFIX_FRAMES;
        m_nCTDBSuffix = GetCTDBSuffixFrames(audio.m_nEnd - audio.m_nFirst);
        WantWindows();
    }
    StartAt(m_bValid ? layout.m_aryTracks.front().m_nStart : 0);
    return m_bValid;
}

bool DiscChecksums::SetCTDBMargins(int nPrefixFrames, int nSuffixFrames)
{
    const auto IsMargin = [](int nFrames) { return nFrames >= 0 && nFrames <= CTDB_STRIDE_WORDS; };
    if (!m_bValid || m_Layout.CountAudioTracks() == 0 || !IsMargin(nPrefixFrames) || !IsMargin(nSuffixFrames))
        return false;
    m_nCTDBPrefix = nPrefixFrames;
    m_nCTDBSuffix = nSuffixFrames;
    m_Windows.Clear();
    WantWindows();
    return true;
}

void DiscChecksums::StartAt(int nSector)
{
    if (nSector < 0 || (m_nPass > 0 && nSector == m_nSector && m_nPending == 0))
        return;
    ++m_nPass;
    m_nPassStart = nSector;
    m_nSector = nSector;
    m_nPending = 0;
    m_Prefix = AUDIO_PREFIX();
    m_Current = CURRENT();
    m_nTrack = 0;
}

void DiscChecksums::Add(const void* pData, size_t nBytes)
{
    const uint8_t* p = static_cast<const uint8_t*>(pData);
    if (!m_bValid)
        return;
    if (m_nPending > 0)
    {
        const size_t nTaken = std::min(nBytes, sizeof m_aryPending - m_nPending);
        std::copy_n(p, nTaken, m_aryPending + m_nPending);
        p += nTaken;
        nBytes -= nTaken;
        m_nPending += nTaken;
        if (m_nPending < sizeof m_aryPending)
            return;
        m_nPending = 0;
        AddSector(m_aryPending);
    }
    for (; nBytes >= sizeof m_aryPending; nBytes -= sizeof m_aryPending, p += sizeof m_aryPending)
        AddSector(p);
    std::copy_n(p, nBytes, m_aryPending);
    m_nPending = nBytes;
}

void DiscChecksums::AddSector(const uint8_t* pSector)
{
    if (m_nSector >= m_Layout.m_nLeadOut)
        return; // drives may be read into the lead-out, but no sum reaches there
    while (m_nTrack < m_aryTracks.size() && m_Layout.m_aryTracks[m_nTrack].m_nEnd <= m_nSector)
        ++m_nTrack;
    const CD_LAYOUT_TRACK* pTrack = m_nTrack < m_aryTracks.size() ? &m_Layout.m_aryTracks[m_nTrack] : nullptr;
    const bool bInTrack = pTrack && !pTrack->m_bData && m_nSector >= pTrack->m_nStart;
    if (bInTrack && m_nSector == pTrack->m_nStart)
    {
        m_Current = CURRENT();
        m_Current.m_bFromStart = true;
        m_Current.m_Start = m_Prefix;
    }
    m_Windows.Add(m_nPass, m_nSector, m_Prefix, pSector);

    const uint32_t nSectorIndex = bInTrack ? static_cast<uint32_t>(m_nSector - pTrack->m_nStart) : 0;
    const uint32_t nIndex = nSectorIndex * LY_CD_SECTOR_FRAMES + 1;
    const FRAME_SUMS sums = CountSector(pSector, bInTrack ? nIndex : 0);
    // The same frames by their place on the disc instead of their index in the track.
    const uint32_t nPlace = static_cast<uint32_t>(m_nSector) * LY_CD_SECTOR_FRAMES;
    m_Prefix.m_nWords += sums.m_nWords;
    m_Prefix.m_nPlaces += sums.m_nLow + (nPlace - (bInTrack ? nIndex : 0)) * sums.m_nWords;
    const uint32_t nCRC = AddToCRC32Register(0, pSector, LY_CD_SECTOR_BYTES);
    m_Prefix.m_nCRC = m_SectorShift(m_Prefix.m_nCRC) ^ nCRC;
    if (bInTrack && m_Current.m_bFromStart)
    {
        uint32_t& nWithoutNull = m_Current.m_nWithoutNull;
        constexpr size_t SAMPLES = 2 * LY_CD_SECTOR_FRAMES;
        // Without null samples this is the same sector.
        nWithoutNull = HasNullSample(pSector, SAMPLES) ? AddToCRC32RegisterWithoutNull(nWithoutNull, pSector, SAMPLES)
                                                       : m_SectorShift(nWithoutNull) ^ nCRC;
    }
    ++m_nSector;
    if (bInTrack && m_nSector == pTrack->m_nEnd && m_Current.m_bFromStart)
        FinishTrack();
}

FRAME_SUMS DiscChecksums::CountSector(const uint8_t* pSector, uint32_t nIndex)
{
    FRAME_SUMS sums;
    sums.Add(pSector, LY_CD_SECTOR_FRAMES, nIndex);
    if (nIndex == 0 || !m_Current.m_bFromStart)
        return sums;
    const int64_t nFirst = static_cast<int64_t>(m_nSector) * LY_CD_SECTOR_FRAMES;
    const STRETCH_OF_FRAMES counted = GetAccurateRipStretch(m_nTrack);
    const int64_t nFrom = std::max(nFirst, counted.m_nFirst);
    const int64_t nTo = std::min(nFirst + LY_CD_SECTOR_FRAMES, counted.m_nEnd);
    if (nTo - nFrom == LY_CD_SECTOR_FRAMES)
    {
        m_Current.m_Sums.m_nLow += sums.m_nLow;
        m_Current.m_Sums.m_nHigh += sums.m_nHigh;
    }
    else if (nFrom < nTo)
    {
        m_Current.m_Sums.Add(pSector + (nFrom - nFirst) * LY_CD_FRAME_BYTES, static_cast<size_t>(nTo - nFrom),
                             nIndex + static_cast<uint32_t>(nFrom - nFirst));
    }
    return sums;
}

void DiscChecksums::FinishTrack()
{
    TRACK& track = m_aryTracks[m_nTrack];
    TRACK_CHECKSUMS& sums = track.m_Sums;
    track.m_nPass = m_nPass;
    sums.m_bComplete = true;
    const uint64_t nBytes = static_cast<uint64_t>(m_Layout.m_aryTracks[m_nTrack].GetSectors()) * LY_CD_SECTOR_BYTES;
    sums.m_nCRC32 = GetCRC32Between(m_Current.m_Start.m_nCRC, m_Prefix.m_nCRC, CRC32Shift(nBytes));
    sums.m_nCRC32WithoutNull = ~m_Current.m_nWithoutNull;
    sums.m_nAccurateRip1 = m_Current.m_Sums.m_nLow;
    sums.m_nAccurateRip2 = m_Current.m_Sums.m_nLow + m_Current.m_Sums.m_nHigh;
    const STRETCH_OF_FRAMES sector450 = GetFrame450Stretch(m_nTrack);
    sums.m_nFrame450 = GetSumOf(m_nPass, sector450, sector450.m_nFirst - 1);
    sums.m_nCTDB = GetCRC32Of(m_nPass, GetTrackCTDBStretch(m_nTrack));
    track.m_nDiscPart = GetCRC32Of(m_nPass, GetDiscPartStretch(m_nTrack));
    m_Current = CURRENT();
}
