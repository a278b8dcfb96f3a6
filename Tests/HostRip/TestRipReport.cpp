#include "RipMeter.h"
#include "RipReport.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
struct PIECE_ROW
{
    int nTrack;
    int nStart;
    int nSectors;
};

// Tracks 1 and 2 with audio, 3 with data, 4 with audio; hidden audio ahead of track 1.
RIP_REPORT MakeRipOf(const std::vector<PIECE_ROW>& aryRows)
{
    RIP_REPORT report;
    report.disc.layout.m_aryTracks = {
        {1, 150, 1000, false}, {2, 1000, 2000, false}, {3, 2000, 3000, true}, {4, 3000, 4000, false}};
    report.disc.layout.m_nLeadOut = 4000;
    for (const PIECE_ROW& row : aryRows)
    {
        RIP_PIECE piece;
        piece.nTrack = row.nTrack;
        piece.nStart = row.nStart;
        piece.nSectors = row.nSectors;
        piece.eState = RIP_PIECE_READ;
        piece.analysis.emplace();
        piece.analysis->loudness.fSamplePeak = piece.analysis->loudness.fTruePeak = -row.nTrack;
        piece.analysis->nDR = 10 + row.nTrack;
        piece.series.aryMomentary.assign(static_cast<size_t>(row.nSectors) / 8, -20.0F);
        piece.series.aryShortTerm.assign(static_cast<size_t>(row.nSectors) / 8, -20.0F);
        report.aryPieces.push_back(piece);
    }
    return report;
}

const PIECE_ROW FIRST = {1, 150, 850};
const PIECE_ROW SECOND = {2, 1000, 1000};
const PIECE_ROW FOURTH = {4, 3000, 1000};
const PIECE_ROW HIDDEN = {0, 0, 150};

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

TEST(RipAlbum, IsAllTracksWithAudio)
{
    const struct
    {
        const char* pName;
        std::vector<PIECE_ROW> aryRows;
        bool bAlbum;
    } aryCases[] = {
        {"all", {FIRST, SECOND, FOURTH}, true},
        {"all, and the hidden audio", {HIDDEN, FIRST, SECOND, FOURTH}, true},
        {"one is missing", {FIRST, FOURTH}, false},
        {"only hidden audio", {HIDDEN}, false},
        {"a range over a track, and one within another", {{0, 100, 950}}, false},
        {"a range over all", {{0, 100, 3900}}, true},
        {"a range that ends too soon", {{0, 100, 3899}}, false},
        // The layout of an enhanced disc ends a track earlier or later than the plan does.
        {"the number counts, not the length", {{1, 150, 800}, SECOND, FOURTH}, true},
    };
    for (const auto& row : aryCases)
        EXPECT_EQ(row.bAlbum, MakeRipOf(row.aryRows).HasAllAudio()) << row.pName;
    EXPECT_FALSE(RIP_REPORT().HasAllAudio()) << "nothing is known of the disc";
}

TEST(RipAlbum, IsMeasuredOfAllTracks)
{
    RIP_REPORT report = MakeRipOf({FIRST, SECOND, FOURTH});
    report.aryPieces[1].eState = RIP_PIECE_TAKEN; // the state of the rip knows its loudness
    MeasureAlbum(report);
    ASSERT_TRUE(report.album);
    EXPECT_NEAR(-20, report.album->fIntegrated, 0.01);
    EXPECT_NEAR(2, report.album->fReplayGain.value_or(0), 0.01); // to -18
    EXPECT_EQ(-1, report.album->fSamplePeak);
    EXPECT_EQ(12, report.nAlbumDR.value_or(0)); // of 11, 12 and 14
    EXPECT_FALSE(report.selection || report.nSelectionDR);
}

TEST(RipAlbum, SomeTracksAreASelectionWithoutAGain)
{
    RIP_REPORT report = MakeRipOf({SECOND, FOURTH});
    report.album.emplace();
    report.nAlbumDR = 1;
    MeasureAlbum(report);
    EXPECT_FALSE(report.album || report.nAlbumDR);
    ASSERT_TRUE(report.selection);
    EXPECT_NEAR(-20, report.selection->fIntegrated, 0.01);
    EXPECT_FALSE(report.selection->fReplayGain);
    EXPECT_EQ(-2, report.selection->fTruePeak);
    EXPECT_EQ(13, report.nSelectionDR.value_or(0));
}

TEST(RipAlbum, ATrackThatWasNotMeasuredLeavesItOut)
{
    for (const bool bSeries : {false, true}) // without a series, or without anything
    {
        RIP_REPORT report = MakeRipOf({FIRST, SECOND, FOURTH});
        if (bSeries)
            report.aryPieces[1].series = {};
        else
            report.aryPieces[1].analysis.reset();
        MeasureAlbum(report);
        EXPECT_FALSE(report.album || report.nAlbumDR || report.selection || report.nSelectionDR) << bSeries;
    }
}
