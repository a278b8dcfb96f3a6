#include "RipReport.h"
#include <algorithm>
#include <climits>

std::vector<std::pair<int, int>> RIP_PIECE::GetBadStretches() const
{
    // What is computed may lie beyond all sectors.
    const long long nPieceEnd = std::min<long long>(static_cast<long long>(nStart) + nSectors, INT_MAX);
    std::vector<std::pair<int, int>> aryBad;
    for (const SECURE_RIP_ENTRY& entry : aryEntries)
    {
        const int nFirst = std::max(entry.nSector, nStart);
        const auto nEnd = static_cast<int>(std::min(static_cast<long long>(entry.nSector) + entry.nSectors, nPieceEnd));
        if (entry.IsBad() && nFirst < nEnd)
            aryBad.emplace_back(nFirst, nEnd);
    }
    std::sort(aryBad.begin(), aryBad.end());
    std::vector<std::pair<int, int>> aryApart;
    for (const auto& [nFirst, nEnd] : aryBad)
    {
        if (!aryApart.empty() && nFirst <= aryApart.back().second)
            aryApart.back().second = std::max(aryApart.back().second, nEnd);
        else
            aryApart.emplace_back(nFirst, nEnd);
    }
    return aryApart;
}

int RIP_PIECE::CountBadSectors() const
{
    long long nBad = 0;
    for (const auto& [nFirst, nEnd] : GetBadStretches())
        nBad += static_cast<long long>(nEnd) - nFirst;
    return static_cast<int>(std::min<long long>(nBad, INT_MAX));
}

int RIP_REPORT::CountBadSectors() const
{
    long long nBad = 0;
    for (const RIP_PIECE& piece : aryPieces)
        nBad += piece.CountBadSectors();
    return static_cast<int>(std::min<long long>(nBad, INT_MAX));
}

bool RIP_REPORT::HasAllAudio() const
{
    const auto isRipped = [this](const CD_LAYOUT_TRACK& track)
    {
        return std::any_of(aryPieces.begin(), aryPieces.end(),
                           [&track](const RIP_PIECE& piece)
                           {
                               // A track of an enhanced disc has another end in the layout than in the plan.
                               if (piece.nTrack != 0)
                                   return piece.nTrack == track.m_nNumber;
                               return piece.nStart <= track.m_nStart &&
                                      static_cast<long long>(piece.nStart) + piece.nSectors >= track.m_nEnd;
                           });
    };
    const std::vector<CD_LAYOUT_TRACK>& aryTracks = disc.layout.m_aryTracks;
    return disc.layout.CountAudioTracks() > 0 &&
           std::all_of(aryTracks.begin(), aryTracks.end(),
                       [&](const CD_LAYOUT_TRACK& track)
                       { return track.m_bData || track.GetSectors() < 1 || isRipped(track); });
}
