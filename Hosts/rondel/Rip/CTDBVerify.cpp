#include "CTDBVerify.h"
#include <algorithm>
#include <cstdlib>
#include <map>
#include <string_view>

namespace
{
// The submissions of one part, by their sums, so that each of thousands of offsets is looked up in a few steps.
class Claims
{
public:
    void Add(uint32_t nSum, int nConfidence)
    {
        if (nSum != 0)
            m_mapConfidences[nSum] += nConfidence;
    }
    int Find(uint32_t nSum) const // 0 is never there
    {
        const auto it = m_mapConfidences.find(nSum);
        return it != m_mapConfidences.end() ? it->second : 0;
    }
    int CountAll() const
    {
        int nAll = 0;
        for (const auto& [nSum, nConfidence] : m_mapConfidences)
            nAll += nConfidence;
        return nAll;
    }

private:
    std::map<uint32_t, int> m_mapConfidences;
};

uint32_t FindKnown(const std::vector<CTDB_KNOWN_SUM>& aryKnown, int nTrack)
{
    for (const CTDB_KNOWN_SUM& known : aryKnown)
        if (known.m_nTrack == nTrack)
            return known.m_nSum;
    return 0;
}

// nSum is the one at offset 0, arySums those at all offsets, both as far as they are known.
void Compare(const Claims& claims, uint32_t nSum, const std::vector<uint32_t>& arySums, CTDB_PART_VERDICT& verdict)
{
    verdict.m_nSubmissions = claims.CountAll();
    verdict.m_bKnown = nSum != 0;
    verdict.m_nConfidence = claims.Find(nSum);
    const int nMax = static_cast<int>(arySums.size() / 2);
    for (int nOffset = -nMax; nOffset <= nMax && !arySums.empty(); ++nOffset)
    {
        const int nConfidence = nOffset != 0 ? claims.Find(arySums[static_cast<size_t>(nOffset + nMax)]) : 0;
        const bool bNearer = std::abs(nOffset) < std::abs(verdict.m_nOtherOffset);
        if (nConfidence == 0 || nConfidence < verdict.m_nOtherConfidence ||
            (nConfidence == verdict.m_nOtherConfidence && !bNearer))
            continue;
        verdict.m_nOtherOffset = nOffset;
        verdict.m_nOtherConfidence = nConfidence;
    }
}

CTDB_PART_VERDICT VerifyDisc(const DiscChecksums& sums, const std::vector<const CTDB_ENTRY*>& aryOurs,
                             const std::vector<CTDB_KNOWN_SUM>& aryKnown)
{
    CTDB_PART_VERDICT verdict;
    Claims claims;
    for (const CTDB_ENTRY* pEntry : aryOurs)
        claims.Add(pEntry->m_nSum, pEntry->m_nConfidence);
    uint32_t nSum = 0;
    if (!sums.GetDiscCTDB(nSum))
        nSum = FindKnown(aryKnown, 0);
    Compare(claims, nSum, sums.GetDiscCTDBAtOffsets(), verdict);
    return verdict;
}

CTDB_PART_VERDICT VerifyTrack(const DiscChecksums& sums, int nTrack, size_t nIndex,
                              const std::vector<const CTDB_ENTRY*>& aryOurs,
                              const std::vector<CTDB_KNOWN_SUM>& aryKnown)
{
    CTDB_PART_VERDICT verdict;
    verdict.m_nTrack = nTrack;
    Claims claims;
    for (const CTDB_ENTRY* pEntry : aryOurs)
        if (nIndex < pEntry->m_aryTracks.size())
            claims.Add(pEntry->m_aryTracks[nIndex], pEntry->m_nConfidence);
    TRACK_CHECKSUMS track;
    const uint32_t nSum = sums.GetTrack(nTrack, track) ? track.m_nCTDB : FindKnown(aryKnown, nTrack);
    Compare(claims, nSum, sums.GetTrackCTDBAtOffsets(nTrack), verdict);
    return verdict;
}

struct TOC_PLACE
{
    int m_nStart = 0;
    bool m_bData = false;
};

// False for what is no table of contents.
bool ParseTOC(std::string_view str, std::vector<TOC_PLACE>& aryPlaces)
{
    for (bool bMore = true; bMore;)
    {
        const size_t nColon = str.find(':');
        bMore = nColon != std::string_view::npos;
        std::string_view strPlace = str.substr(0, nColon);
        TOC_PLACE place;
        place.m_bData = strPlace.starts_with('-');
        if (place.m_bData)
            strPlace.remove_prefix(1);
        if (strPlace.empty() || aryPlaces.size() > CTDB_MAX_TRACKS)
            return false;
        for (const char c : strPlace)
        {
            if (c < '0' || c > '9' || place.m_nStart > CD_ADDRESS_END)
                return false;
            place.m_nStart = place.m_nStart * 10 + (c - '0');
        }
        aryPlaces.push_back(place);
        str.remove_prefix(bMore ? nColon + 1 : str.size());
    }
    return aryPlaces.size() > 1;
}
} // namespace

bool IsSameCTDBTOC(const std::string& strTOC, const CD_LAYOUT& layout)
{
    std::vector<TOC_PLACE> aryPlaces;
    // What cannot be read tells nothing: the sums decide.
    if (!ParseTOC(strTOC, aryPlaces))
        return true;
    const std::vector<CD_LAYOUT_TRACK>& aryTracks = layout.m_aryTracks;
    if (aryPlaces.size() != aryTracks.size() + 1)
        return false;
    for (size_t i = 0; i < aryTracks.size(); ++i)
    {
        const int nNext = i + 1 < aryTracks.size() ? aryTracks[i + 1].m_nStart : layout.m_nLeadOut;
        if (aryPlaces[i].m_bData != aryTracks[i].m_bData ||
            aryPlaces[i + 1].m_nStart - aryPlaces[i].m_nStart != nNext - aryTracks[i].m_nStart)
            return false;
    }
    return true;
}

CTDB_VERDICT VerifyCTDB(const DiscChecksums& sums, const std::vector<CTDB_ENTRY>& aryEntries,
                        const std::vector<CTDB_KNOWN_SUM>& aryKnown)
{
    CTDB_VERDICT verdict;
    const CD_LAYOUT& layout = sums.GetLayout();
    if (!layout.IsValid() || layout.CountAudioTracks() == 0)
        return verdict;
    const auto nAudioTracks = static_cast<size_t>(layout.CountAudioTracks());
    std::vector<const CTDB_ENTRY*> aryOurs;
    for (const CTDB_ENTRY& entry : aryEntries)
    {
        const bool bCount = entry.m_aryTracks.empty() || entry.m_aryTracks.size() == nAudioTracks;
        if (bCount && IsSameCTDBTOC(entry.m_strTOC, layout))
            aryOurs.push_back(&entry);
    }
    verdict.m_nEntries = static_cast<int>(aryOurs.size());
    verdict.m_nForeignEntries = static_cast<int>(aryEntries.size() - aryOurs.size());
    for (const CTDB_ENTRY* pEntry : aryOurs)
        verdict.m_nParity = std::max(verdict.m_nParity, pEntry->m_nParity);
    verdict.m_Disc = VerifyDisc(sums, aryOurs, aryKnown);
    size_t nIndex = 0;
    for (const CD_LAYOUT_TRACK& track : layout.m_aryTracks)
        if (!track.m_bData)
            verdict.m_aryTracks.push_back(VerifyTrack(sums, track.m_nNumber, nIndex++, aryOurs, aryKnown));
    return verdict;
}
