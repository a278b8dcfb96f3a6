#include "RipReport.h"
#include <algorithm>

int RIP_PIECE::CountBadSectors() const
{
    std::vector<std::pair<int, int>> aryBad; // first and end
    for (const SECURE_RIP_ENTRY& entry : aryEntries)
        if (entry.IsBad())
            aryBad.emplace_back(entry.nSector, entry.nSector + entry.nSectors);
    std::sort(aryBad.begin(), aryBad.end());
    int nBad = 0;
    int nCounted = nStart; // sectors ahead of it are
    for (const auto& [nFirst, nEnd] : aryBad)
    {
        nBad += std::max(0, std::min(nEnd, nStart + nSectors) - std::max(nFirst, nCounted));
        nCounted = std::max(nCounted, nEnd);
    }
    return nBad;
}

int RIP_REPORT::CountBadSectors() const
{
    int nBad = 0;
    for (const RIP_PIECE& piece : aryPieces)
        nBad += piece.CountBadSectors();
    return nBad;
}
