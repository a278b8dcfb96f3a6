#include "OffsetWindows.h"
#include "CRC32.h"
#include <algorithm>
#include <cstring>
#include <new>

// A disc is read in one pass, or track by track; more than a few visits to the same window are repetitions.
static constexpr size_t MAX_STRETCHES = 4;

void AUDIO_PREFIX::AddFrame(uint32_t nWord, int64_t nFrame)
{
    m_nWords += nWord;
    m_nPlaces += nWord * static_cast<uint32_t>(nFrame);
    m_nCRC = AddToCRC32Register(m_nCRC, &nWord, sizeof nWord);
}

void OffsetWindows::Clear() { *this = OffsetWindows(); }

void OffsetWindows::Want(int64_t nFirst, int64_t nLast)
{
    nFirst = std::max<int64_t>(nFirst, 0);
    if (nLast < nFirst)
        return;
    WINDOW window;
    // A place on the edge of two sectors is known from either: one of them may not come.
    window.m_nFirstSector = static_cast<int>(std::max<int64_t>(nFirst - 1, 0) / LY_CD_SECTOR_FRAMES);
    window.m_nEndSector = static_cast<int>(nLast / LY_CD_SECTOR_FRAMES) + 1;
    m_aryWindows.push_back(window);
}

void OffsetWindows::Prepare()
{
    std::sort(m_aryWindows.begin(), m_aryWindows.end(),
              [](const WINDOW& a, const WINDOW& b) { return a.m_nFirstSector < b.m_nFirstSector; });
    std::vector<WINDOW> aryJoined;
    for (const WINDOW& window : m_aryWindows)
    {
        if (!aryJoined.empty() && window.m_nFirstSector <= aryJoined.back().m_nEndSector)
            aryJoined.back().m_nEndSector = std::max(aryJoined.back().m_nEndSector, window.m_nEndSector);
        else
            aryJoined.push_back(window);
    }
    m_aryWindows.swap(aryJoined);
}

void OffsetWindows::Add(int nPass, int nSector, const AUDIO_PREFIX& prefix, const uint8_t* pSector)
{
    if (nPass != m_nPass)
    {
        m_nPass = nPass;
        m_nNext = 0;
    }
    while (m_nNext < m_aryWindows.size() && m_aryWindows[m_nNext].m_nEndSector <= nSector)
        ++m_nNext;
    if (m_nNext == m_aryWindows.size() || m_aryWindows[m_nNext].m_nFirstSector > nSector)
        return;
    STRETCH* pStretch = FindStretch(m_aryWindows[m_nNext], nPass, nSector, prefix);
    if (!pStretch || pStretch->m_bBroken)
        return;
    // The room was made when the stretch began.
    pStretch->m_aryAudio.insert(pStretch->m_aryAudio.end(), pSector, pSector + LY_CD_SECTOR_BYTES);
    ++pStretch->m_nSectors;
}

OffsetWindows::STRETCH* OffsetWindows::FindStretch(WINDOW& window, int nPass, int nSector, const AUDIO_PREFIX& prefix)
{
    if (!window.m_aryStretches.empty() && window.m_aryStretches.back().m_nPass == nPass)
        return &window.m_aryStretches.back();
    STRETCH* pStretch = nullptr;
    try
    {
        if (window.m_aryStretches.size() == MAX_STRETCHES)
            window.m_aryStretches.erase(window.m_aryStretches.begin());
        window.m_aryStretches.reserve(MAX_STRETCHES);
        pStretch = &window.m_aryStretches.emplace_back();
        pStretch->m_nPass = nPass;
        pStretch->m_nFirstSector = nSector;
        pStretch->m_Prefix = prefix;
        pStretch->m_Prefix.m_bKnown = true;
        pStretch->m_aryAudio.reserve(static_cast<size_t>(window.m_nEndSector - nSector) * LY_CD_SECTOR_BYTES);
    }
    catch (const std::bad_alloc&)
    {
        if (pStretch)
            pStretch->m_bBroken = true;
    }
    return pStretch;
}

const OffsetWindows::WINDOW* OffsetWindows::FindWindow(int64_t nFirst, int64_t nLast) const
{
    for (const WINDOW& window : m_aryWindows)
    {
        if (nLast < static_cast<int64_t>(window.m_nFirstSector) * LY_CD_SECTOR_FRAMES)
            return nullptr;
        if (std::max<int64_t>(nFirst, 0) <= static_cast<int64_t>(window.m_nEndSector) * LY_CD_SECTOR_FRAMES)
            return &window;
    }
    return nullptr;
}

std::vector<AUDIO_PREFIX> OffsetWindows::GetPrefixes(int nPass, int64_t nFirst, int64_t nLast) const
{
    std::vector<AUDIO_PREFIX> aryPrefixes(static_cast<size_t>(std::max<int64_t>(nLast - nFirst + 1, 1)));
    const WINDOW* pWindow = FindWindow(nFirst, nLast);
    if (!pWindow)
        return aryPrefixes;
    for (const STRETCH& stretch : pWindow->m_aryStretches)
    {
        if (stretch.m_nPass != nPass || stretch.m_bBroken)
            continue;
        AUDIO_PREFIX prefix = stretch.m_Prefix;
        int64_t nFrame = static_cast<int64_t>(stretch.m_nFirstSector) * LY_CD_SECTOR_FRAMES;
        const int64_t nEnd = nFrame + static_cast<int64_t>(stretch.m_nSectors) * LY_CD_SECTOR_FRAMES;
        const uint8_t* p = stretch.m_aryAudio.data();
        for (; nFrame <= std::min(nEnd, nLast); ++nFrame, p += LY_CD_FRAME_BYTES)
        {
            if (nFrame >= nFirst)
                aryPrefixes[static_cast<size_t>(nFrame - nFirst)] = prefix;
            if (nFrame == nEnd)
                break;
            uint32_t nWord = 0;
            std::memcpy(&nWord, p, sizeof nWord);
            prefix.AddFrame(nWord, nFrame);
        }
    }
    return aryPrefixes;
}
