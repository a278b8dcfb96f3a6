#include "RipReport.h"
#include <algorithm>
#include <climits>

int RIP_PIECE::CountBadSectors() const
{
    std::vector<std::pair<long long, long long>> aryBad; // first and end, which may lie beyond all sectors
    for (const SECURE_RIP_ENTRY& entry : aryEntries)
        if (entry.IsBad())
            aryBad.emplace_back(entry.nSector, static_cast<long long>(entry.nSector) + entry.nSectors);
    std::sort(aryBad.begin(), aryBad.end());
    const long long nPieceEnd = static_cast<long long>(nStart) + nSectors;
    long long nBad = 0;
    long long nCounted = nStart; // sectors ahead of it are
    for (const auto& [nFirst, nEnd] : aryBad)
    {
        nBad += std::max(0LL, std::min(nEnd, nPieceEnd) - std::max(nFirst, nCounted));
        nCounted = std::max(nCounted, nEnd);
    }
    return static_cast<int>(nBad); // not more than the piece has
}

int RIP_REPORT::CountBadSectors() const
{
    long long nBad = 0;
    for (const RIP_PIECE& piece : aryPieces)
        nBad += piece.CountBadSectors();
    return static_cast<int>(std::min<long long>(nBad, INT_MAX));
}
