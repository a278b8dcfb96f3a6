#include "FakeDiscMedium.h"

#include <algorithm>
#include <cstring>

void FakeDiscMedium::Load(const FAKE_TRACK* pTracks, int nTracks, int nLeadOutSector)
{
    m_Tracks.assign(pTracks, pTracks + nTracks);
    m_nLeadOut = nLeadOutSector;
    m_bLoaded = true;
    m_bTrayOpen = false;
    m_CDText.clear();
}

void FakeDiscMedium::LoadTwelveTracksAndData()
{
    FAKE_TRACK tracks[FakeDisc::TRACKS + 1];
    for (int i = 0; i < FakeDisc::TRACKS; i++)
        tracks[i] = {i + 1, i * FakeDisc::TRACK_SECTORS, 0};
    tracks[FakeDisc::TRACKS] = {FakeDisc::TRACKS + 1, FakeDisc::DATA_START, TRACK_CONTROL_DATA};
    Load(tracks, FakeDisc::TRACKS + 1, FakeDisc::LEAD_OUT);
}

void FakeDiscMedium::Reset()
{
    *this = FakeDiscMedium();
    LoadTwelveTracksAndData();
}

void FakeDiscMedium::SetCDText(const void* pAnswer, int nBytes)
{
    const unsigned char* pBytes = static_cast<const unsigned char*>(pAnswer);
    m_CDText.assign(pBytes, pBytes + nBytes);
}

void FakeDiscMedium::SimulateCache(int nCacheSectors, int nMissMs, int nHitMs)
{
    m_nCacheSectors = nCacheSectors;
    m_nMissMs = nMissMs;
    m_nHitMs = nHitMs;
    m_nCacheStart = m_nCacheEnd = 0;
}

bool FakeDiscMedium::Execute(const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes,
                             FAKE_SENSE& sense, int& nSleepMs)
{
    unsigned char cdb[CDB_MAX_BYTES] = {};
    memcpy(cdb, pCDB, static_cast<size_t>(std::clamp(nCDBBytes, 0, CDB_MAX_BYTES)));
    sense = {SENSE_RESPONSE_CURRENT, SENSE_NOT_READY, ASC_MEDIUM_NOT_PRESENT, 0};
    bool bReady = m_bLoaded && !m_bTrayOpen;
    switch (cdb[0])
    {
    case CDB_START_STOP_UNIT:
        nDataBytes = 0;
        return StartStop(cdb);
    case CDB_PREVENT_ALLOW_MEDIUM_REMOVAL:
    case CDB_SET_CD_SPEED:
        nDataBytes = 0;
        return true;
    case CDB_TEST_UNIT_READY:
        nDataBytes = 0;
        return bReady;
    case CDB_READ_SUB_CHANNEL:
        return bReady && ReadSubChannel(cdb, pData, nDataBytes);
    case CDB_READ_TOC:
        return bReady && ReadTOC(cdb, pData, nDataBytes, sense);
    case CDB_READ_CD:
        return bReady && ReadCD(cdb, pData, nDataBytes, sense, nSleepMs);
    default:
        sense = {SENSE_RESPONSE_CURRENT, SENSE_ILLEGAL_REQUEST, ASC_INVALID_OPCODE, 0};
        return false;
    }
}

bool FakeDiscMedium::StartStop(const unsigned char* pCDB)
{
    if ((pCDB[4] & START_STOP_LOAD_EJECT) != 0)
        m_bTrayOpen = (pCDB[4] & START_STOP_START) == 0;
    return true;
}

bool FakeDiscMedium::Deliver(const std::vector<unsigned char>& answer, int nAllocated, unsigned char* pData,
                             int& nDataBytes)
{
    nDataBytes = std::min({static_cast<int>(answer.size()), nAllocated, nDataBytes});
    if (nDataBytes > 0 && pData)
        memcpy(pData, answer.data(), static_cast<size_t>(nDataBytes));
    return true;
}

bool FakeDiscMedium::ReadSubChannel(const unsigned char* pCDB, unsigned char* pData, int& nDataBytes)
{
    constexpr unsigned char NO_AUDIO_STATUS = 0x15;
    return Deliver({0, NO_AUDIO_STATUS, 0, 12, SUB_CHANNEL_CURRENT_POS, 0x10, 1, 1, 0, 0, 2, 0, 0, 0, 0, 0},
                   static_cast<int>(MMCGet16(pCDB + 7)), pData, nDataBytes);
}

static void AppendDescriptor(std::vector<unsigned char>& toc, unsigned char nControl, int nTrack, int nAddress)
{
    unsigned char descriptor[TOC_DESCRIPTOR_BYTES] = {};
    descriptor[TOC_DESCRIPTOR_OFFSET_CONTROL] = static_cast<unsigned char>(0x10 | nControl);
    descriptor[TOC_DESCRIPTOR_OFFSET_TRACK] = static_cast<unsigned char>(nTrack);
    MMCPut32(descriptor + TOC_DESCRIPTOR_OFFSET_ADDRESS, static_cast<unsigned int>(nAddress));
    toc.insert(toc.end(), descriptor, descriptor + sizeof descriptor);
}

bool FakeDiscMedium::ReadTOC(const unsigned char* pCDB, unsigned char* pData, int& nDataBytes, FAKE_SENSE& sense)
{
    int nAllocated = static_cast<int>(MMCGet16(pCDB + 7));
    if (pCDB[2] == TOC_FORMAT_CD_TEXT && !m_CDText.empty())
        return Deliver(m_CDText, nAllocated, pData, nDataBytes);
    if (pCDB[2] != TOC_FORMAT_TOC || m_Tracks.empty())
    {
        sense = {SENSE_RESPONSE_CURRENT, SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD_IN_CDB, 0};
        return false;
    }
    std::vector<unsigned char> toc(TOC_HEADER_BYTES);
    for (const FAKE_TRACK& track : m_Tracks)
        AppendDescriptor(toc, track.nControl, track.nNumber, track.nStartSector);
    AppendDescriptor(toc, m_Tracks.back().nControl, TOC_LEAD_OUT_TRACK, m_nLeadOut);
    MMCPut16(toc.data(), static_cast<unsigned int>(toc.size()) - 2);
    toc[TOC_OFFSET_FIRST_TRACK] = static_cast<unsigned char>(m_Tracks.front().nNumber);
    toc[TOC_OFFSET_LAST_TRACK] = static_cast<unsigned char>(m_Tracks.back().nNumber);
    return Deliver(toc, nAllocated, pData, nDataBytes);
}

bool FakeDiscMedium::IsDataSector(int nSector) const
{
    bool bData = false;
    for (const FAKE_TRACK& track : m_Tracks)
    {
        if (track.nStartSector <= nSector)
            bData = (track.nControl & TRACK_CONTROL_DATA) != 0;
    }
    return bData;
}

bool FakeDiscMedium::CheckSectors(int nSector, int nCount, FAKE_SENSE& sense)
{
    if (nSector < 0 || nCount < 0 || nSector > m_nLeadOut - nCount)
    {
        sense = {SENSE_RESPONSE_CURRENT, SENSE_ILLEGAL_REQUEST, ASC_ADDRESS_OUT_OF_RANGE, 0};
        return false;
    }
    if (nCount > 0 && (IsDataSector(nSector) || IsDataSector(nSector + nCount - 1)))
    {
        sense = {SENSE_RESPONSE_CURRENT, SENSE_ILLEGAL_REQUEST, ASC_ILLEGAL_MODE_FOR_TRACK, 0};
        return false;
    }
    auto failing = m_Failing.lower_bound(nSector);
    if (failing == m_Failing.end() || failing->first >= nSector + nCount)
        return true;
    if (failing->second > 0 && --failing->second == 0)
        m_Failing.erase(failing);
    sense = {SENSE_RESPONSE_CURRENT, SENSE_MEDIUM_ERROR, ASC_READ_ERROR, 5};
    return false;
}

bool FakeDiscMedium::ReadCD(const unsigned char* pCDB, unsigned char* pData, int& nDataBytes, FAKE_SENSE& sense,
                            int& nSleepMs)
{
    int nSector = static_cast<int>(MMCGet32(pCDB + 2));
    int nCount = pCDB[6] << 16 | static_cast<int>(MMCGet16(pCDB + 7));
    nSleepMs = GetLatency(nSector, nCount);
    if (!CheckSectors(nSector, nCount, sense))
        return false;
    std::vector<unsigned char> answer(static_cast<size_t>(nCount) * LY_CD_SECTOR_BYTES);
    size_t nAt = 0;
    for (int nRead = nSector; nRead < nSector + nCount; nRead++)
    {
        for (int nOffset = 0; nOffset < LY_CD_SECTOR_BYTES; nOffset++)
            answer[nAt++] = FakeDisc::AudioByte(nRead, nOffset);
    }
    for (auto disturbed = m_Disturbed.lower_bound(nSector);
         disturbed != m_Disturbed.end() && disturbed->first < nSector + nCount; ++disturbed)
    {
        if (disturbed->second <= 0)
            continue;
        disturbed->second--;
        m_nDisturbances = m_nDisturbances % 255 + 1; // never 0, and different from read to read
        answer[static_cast<size_t>(disturbed->first - nSector) * LY_CD_SECTOR_BYTES] ^=
            static_cast<unsigned char>(m_nDisturbances);
    }
    return Deliver(answer, static_cast<int>(answer.size()), pData, nDataBytes);
}

// A read-ahead cache that holds one run of sectors, the latest that were read.
int FakeDiscMedium::GetLatency(int nSector, int nCount)
{
    if (m_nCacheSectors <= 0 || nCount <= 0)
        return 0;
    int nEnd = nSector + nCount;
    if (nSector >= m_nCacheStart && nEnd <= m_nCacheEnd)
        return m_nHitMs;
    if (nSector != m_nCacheEnd)
        m_nCacheStart = nSector;
    m_nCacheEnd = nEnd;
    m_nCacheStart = std::max(m_nCacheStart, m_nCacheEnd - m_nCacheSectors);
    return m_nMissMs;
}
