#include "RipReport.h"
#include <climits>
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

TEST(RipReport, BadStretchesAreApartAndInsideThePiece)
{
    RIP_PIECE piece;
    piece.nStart = 100;
    piece.nSectors = 50;
    piece.aryEntries = {MakeEntry(145, 100, SECURE_RIP_SHORT), MakeEntry(110, 5, SECURE_RIP_LIMIT),
                        MakeEntry(115, 5, SECURE_RIP_LIMIT),   MakeEntry(90, 5, SECURE_RIP_UNREAD),
                        MakeEntry(121, 0, SECURE_RIP_UNREAD),  MakeEntry(122, 1, SECURE_RIP_REREAD),
                        MakeEntry(95, 6, SECURE_RIP_UNREAD)};
    EXPECT_EQ((std::vector<std::pair<int, int>>{{100, 101}, {110, 120}, {145, 150}}), piece.GetBadStretches());
}

TEST(RipReport, NumbersBeyondAllSectorsDoNotOverflow)
{
    RIP_PIECE piece;
    piece.nStart = INT_MAX - 10;
    piece.nSectors = INT_MAX;
    piece.aryEntries = {MakeEntry(INT_MAX - 5, INT_MAX, SECURE_RIP_LIMIT)};
    EXPECT_EQ(5, piece.CountBadSectors());
    piece.nStart = INT_MIN;
    piece.aryEntries = {MakeEntry(INT_MIN, INT_MAX, SECURE_RIP_LIMIT), MakeEntry(-100, INT_MAX, SECURE_RIP_LIMIT)};
    EXPECT_EQ(INT_MAX, piece.CountBadSectors());
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
