#include "AccurateRipVerify.h"
#include <algorithm>
#include <cstdlib>
#include <map>

namespace
{
// A sum that the answer has for a track. Sorted, so that each of thousands of offsets is looked up in a few steps.
struct CLAIM
{
    uint32_t m_nSum;
    int m_nBlock;
    int m_nConfidence;

    bool operator<(const CLAIM& other) const
    {
        return m_nSum != other.m_nSum ? m_nSum < other.m_nSum : m_nBlock < other.m_nBlock;
    }
};

class Claims
{
public:
    void Add(uint32_t nSum, int nBlock, int nConfidence)
    {
        if (nSum != 0)
            m_aryClaims.push_back({nSum, nBlock, nConfidence});
    }
    void Sort() { std::sort(m_aryClaims.begin(), m_aryClaims.end()); }
    bool IsEmpty() const { return m_aryClaims.empty(); }

    template <class FOUND>
    void Find(uint32_t nSum, FOUND Found) const
    {
        auto it = std::lower_bound(m_aryClaims.begin(), m_aryClaims.end(), CLAIM{nSum, 0, 0});
        for (; it != m_aryClaims.end() && it->m_nSum == nSum; ++it)
            Found(*it);
    }

private:
    std::vector<CLAIM> m_aryClaims;
};

class TrackVerifier
{
public:
    TrackVerifier(const DiscChecksums& checksums, int nTrack, std::vector<ACCURATERIP_MATCH>& aryMatches)
        : m_Checksums(checksums), m_aryMatches(aryMatches)
    {
        m_Verdict.m_nTrack = nTrack;
    }

    void AddEntry(const ACCURATERIP_ENTRY& entry, int nBlock)
    {
        m_Sums.Add(entry.m_nSum, nBlock, entry.m_nConfidence);
        m_Frames450.Add(entry.m_nFrame450, nBlock, entry.m_nConfidence);
        m_Verdict.m_nSubmissions += entry.m_nSum != 0 ? entry.m_nConfidence : 0;
    }

    ACCURATERIP_TRACK_VERDICT Verify()
    {
        m_Sums.Sort();
        m_Frames450.Sort();
        TRACK_CHECKSUMS sums;
        m_Verdict.m_bKnown = m_Checksums.GetTrack(m_Verdict.m_nTrack, sums);
        if (!m_Verdict.m_bKnown)
            return m_Verdict;
        std::vector<uint32_t> arySums;
        std::vector<uint32_t> aryFrames450;
        if (!m_Sums.IsEmpty())
            arySums = m_Checksums.GetAccurateRip1AtOffsets(m_Verdict.m_nTrack);
        if (!m_Frames450.IsEmpty())
            aryFrames450 = m_Checksums.GetFrame450AtOffsets(m_Verdict.m_nTrack);
        const int nMax = m_Checksums.GetMaxOffset();
        // At offset 0 the sums themselves are surer than what follows from windows.
        Look(m_Sums, sums.m_nAccurateRip1, ACCURATERIP_MATCH_VERSION_1, 0);
        if (sums.m_nAccurateRip2 != sums.m_nAccurateRip1)
            Look(m_Sums, sums.m_nAccurateRip2, ACCURATERIP_MATCH_VERSION_2, 0);
        Look(m_Frames450, sums.m_nFrame450, ACCURATERIP_MATCH_FRAME_450, 0);
        for (int nOffset = -nMax; nOffset <= nMax; ++nOffset)
        {
            const size_t i = static_cast<size_t>(nOffset + nMax);
            if (nOffset == 0)
                continue;
            Look(m_Sums, At(arySums, i), ACCURATERIP_MATCH_VERSION_1, nOffset);
            Look(m_Frames450, At(aryFrames450, i), ACCURATERIP_MATCH_FRAME_450, nOffset);
        }
        FindOtherOffset();
        return m_Verdict;
    }

private:
    static uint32_t At(const std::vector<uint32_t>& ary, size_t i) { return i < ary.size() ? ary[i] : 0; }

    void Look(const Claims& claims, uint32_t nSum, ACCURATERIP_MATCH_KIND nKind, int nOffset)
    {
        if (nSum == 0)
            return;
        const auto Found = [&](const CLAIM& claim)
        {
            if (nOffset == 0 || m_nOtherMatches++ < ACCURATERIP_MAX_OTHER_MATCHES)
                m_aryMatches.push_back({m_Verdict.m_nTrack, claim.m_nBlock, claim.m_nConfidence, nKind, nOffset});
            Count(claim, nKind, nOffset);
        };
        claims.Find(nSum, Found);
    }

    void Count(const CLAIM& claim, ACCURATERIP_MATCH_KIND nKind, int nOffset)
    {
        if (nKind == ACCURATERIP_MATCH_FRAME_450)
            return;
        if (nOffset != 0)
            m_OtherOffsets[nOffset] += claim.m_nConfidence;
        else
            (nKind == ACCURATERIP_MATCH_VERSION_1 ? m_Verdict.m_nConfidence1 : m_Verdict.m_nConfidence2) +=
                claim.m_nConfidence;
    }

    void FindOtherOffset()
    {
        for (const auto& [nOffset, nConfidence] : m_OtherOffsets)
        {
            const bool bNearer = std::abs(nOffset) < std::abs(m_Verdict.m_nOtherOffset);
            if (nConfidence < m_Verdict.m_nOtherConfidence ||
                (nConfidence == m_Verdict.m_nOtherConfidence && m_Verdict.m_nOtherOffset != 0 && !bNearer))
                continue;
            m_Verdict.m_nOtherOffset = nOffset;
            m_Verdict.m_nOtherConfidence = nConfidence;
        }
    }

    const DiscChecksums& m_Checksums;
    std::vector<ACCURATERIP_MATCH>& m_aryMatches;
    ACCURATERIP_TRACK_VERDICT m_Verdict;
    Claims m_Sums;
    Claims m_Frames450;
    long long m_nOtherMatches = 0;
    std::map<int, int> m_OtherOffsets; // to the submissions that agree there
};
} // namespace

ACCURATERIP_VERDICT VerifyAccurateRip(const DiscChecksums& checksums, const std::vector<ACCURATERIP_BLOCK>& aryBlocks)
{
    ACCURATERIP_VERDICT verdict;
    const CD_LAYOUT& layout = checksums.GetLayout();
    const ACCURATERIP_ID id = GetAccurateRipID(layout);
    if (id.m_nTracks == 0)
        return verdict;
    const auto IsOurs = [&](const ACCURATERIP_BLOCK& block)
    { return block.m_ID == id && block.m_aryEntries.size() == static_cast<size_t>(id.m_nTracks); };
    for (const ACCURATERIP_BLOCK& block : aryBlocks)
        ++(IsOurs(block) ? verdict.m_nBlocks : verdict.m_nForeignBlocks);
    size_t nEntry = 0;
    for (const CD_LAYOUT_TRACK& track : layout.m_aryTracks)
    {
        if (track.m_bData)
            continue;
        TrackVerifier verifier(checksums, track.m_nNumber, verdict.m_aryMatches);
        for (size_t nBlock = 0; nBlock < aryBlocks.size(); ++nBlock)
        {
            if (IsOurs(aryBlocks[nBlock]))
                verifier.AddEntry(aryBlocks[nBlock].m_aryEntries[nEntry], static_cast<int>(nBlock));
        }
        verdict.m_aryTracks.push_back(verifier.Verify());
        ++nEntry;
    }
    return verdict;
}
