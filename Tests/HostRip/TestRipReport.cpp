#include "RipReport.h"
#include <gtest/gtest.h>

namespace
{
SECURE_RIP_ENTRY MakeEntry(int nSector, int nSectors, int nStatus) { return {1, nSector, nSectors, nStatus, 0, 0, 0}; }
} // namespace

TEST(RipReport, BadSectorsCountOnceAndOnlyInsideThePiece)
{
    RIP_PIECE piece;
    piece.nStart = 100;
    piece.nSectors = 50;
    piece.aryEntries = {MakeEntry(120, 10, SECURE_RIP_LIMIT),  MakeEntry(95, 10, SECURE_RIP_UNREAD),
                        MakeEntry(125, 10, SECURE_RIP_CACHED), MakeEntry(122, 2, SECURE_RIP_DIFFERS),
                        MakeEntry(140, 5, SECURE_RIP_MATCHED), MakeEntry(148, 10, SECURE_RIP_SHORT)};
    EXPECT_EQ(5 + 15 + 2, piece.CountBadSectors());
}

TEST(RipReport, CountsOverAllPieces)
{
    RIP_REPORT report;
    report.aryPieces.resize(2);
    for (RIP_PIECE& piece : report.aryPieces)
    {
        piece.nSectors = 20;
        piece.aryEntries = {MakeEntry(3, 4, SECURE_RIP_NOTHING)};
    }
    EXPECT_EQ(8, report.CountBadSectors());
}
