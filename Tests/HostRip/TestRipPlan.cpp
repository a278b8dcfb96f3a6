// What a rip is to read: track lists, ranges, hidden audio, data tracks.

#include "HostError.h"
#include "RipPlan.h"
#include <gtest/gtest.h>

namespace
{
struct LIST_CASE
{
    const char* pText;
    std::vector<int> aryTracks; // none: refused
};

const LIST_CASE s_aryLists[] = {
    {"1", {1}},
    {"99", {99}},
    {"1-3,7", {1, 2, 3, 7}},
    {"7,1-3", {1, 2, 3, 7}},
    {"2,2,1-2", {1, 2}},
    {"5-5", {5}},
    {"007", {7}},
    {"", {}},
    {"0", {}},
    {"100", {}},
    {"3-1", {}},
    {"1-", {}},
    {"-3", {}},
    {"1,,2", {}},
    {"1,", {}},
    {",1", {}},
    {"1 2", {}},
    {"a", {}},
    {"1-2-3", {}},
    {"1-100", {}},
    {"99999999999999999999", {}},
};

struct RANGE_CASE
{
    const char* pText;
    int nFirst; // -1: refused
    int nLast;
};

const RANGE_CASE s_aryRanges[] = {
    {"0-749", 0, 749}, {"5-5", 5, 5},    {"5", -1, 0},    {"9-5", -1, 0},          {"-5", -1, 0},
    {"5-", -1, 0},     {"", -1, 0},      {"1-2x", -1, 0}, {"1,2", -1, 0},          {"1-2-3", -1, 0},
    {" 1-2", -1, 0},   {"0x1-2", -1, 0}, {"+1-2", -1, 0}, {"1-9999999999", -1, 0},
};

TTrackList MakeTrack(int nNumber, int nStart, int nSectors, bool bData = false)
{
    TTrackList track{};
    track.nTrackNumber = static_cast<unsigned char>(nNumber);
    track.nStartSector = nStart;
    track.nSectors = nSectors;
    track.bDataTrack = bData ? 1 : 0;
    return track;
}

// Hidden audio, three tracks, and data at the end.
std::vector<TTrackList> MakeTracks()
{
    std::vector<TTrackList> aryTracks = {MakeTrack(1, 30, 420), MakeTrack(2, 450, 550), MakeTrack(3, 1000, 500),
                                         MakeTrack(4, 12900, 300, true)};
    aryTracks[1].bPreEmphasis = 1;
    return aryTracks;
}

std::string GetPieces(const RIP_PLAN& plan)
{
    std::string strText;
    for (const RIP_PIECE& piece : plan.aryPieces)
        strText += std::to_string(piece.nTrack) + ":" + std::to_string(piece.nStart) + "+" +
                   std::to_string(piece.nSectors) + (piece.bPreEmphasis ? "e " : " ");
    return strText;
}

std::string GetRefusal(const RIP_CHOICE& choice, const std::vector<TTrackList>& aryTracks = MakeTracks())
{
    try
    {
        (void)MakeRipPlan(aryTracks, choice);
    }
    catch (const HostError& error)
    {
        return error.what();
    }
    return {};
}
} // namespace

TEST(RipPlan, TrackListsAreReadOrRefused)
{
    for (const LIST_CASE& row : s_aryLists)
    {
        std::vector<int> aryTracks;
        const std::string strFault = ParseTrackList(row.pText, aryTracks);
        EXPECT_EQ(row.aryTracks.empty(), !strFault.empty()) << row.pText;
        EXPECT_EQ(row.aryTracks, aryTracks) << row.pText;
    }
}

TEST(RipPlan, RangesAreReadOrRefused)
{
    for (const RANGE_CASE& row : s_aryRanges)
    {
        int nFirst = 0;
        int nLast = 0;
        const std::string strFault = ParseSectorRange(row.pText, nFirst, nLast);
        EXPECT_EQ(row.nFirst < 0, !strFault.empty()) << row.pText;
        if (row.nFirst < 0)
            continue;
        EXPECT_EQ(row.nFirst, nFirst) << row.pText;
        EXPECT_EQ(row.nLast, nLast) << row.pText;
    }
}

TEST(RipPlan, WithoutAChoiceAllAudioTracksAreReadAndDataIsNoted)
{
    const RIP_PLAN plan = MakeRipPlan(MakeTracks(), {});
    EXPECT_EQ("1:30+420 2:450+550e 3:1000+500 ", GetPieces(plan));
    ASSERT_EQ(1U, plan.aryNotes.size());
    EXPECT_EQ("Track 4 is a data track and was left out.", plan.aryNotes[0]);
}

TEST(RipPlan, TracksComeInTheOrderOfTheDisc)
{
    EXPECT_EQ("1:30+420 3:1000+500 ", GetPieces(MakeRipPlan(MakeTracks(), {"3,1", "", false})));
    EXPECT_EQ(1U, MakeRipPlan(MakeTracks(), {"3-4", "", false}).aryNotes.size());
}

TEST(RipPlan, HiddenAudioIsAPieceOfItsOwnAheadOfTheTracks)
{
    EXPECT_EQ("0:0+30 2:450+550e ", GetPieces(MakeRipPlan(MakeTracks(), {"2", "", true})));
    std::vector<TTrackList> aryTracks = MakeTracks();
    aryTracks[0].nStartSector = 0;
    EXPECT_NE("", GetRefusal({"", "", true}, aryTracks));
    aryTracks = MakeTracks();
    aryTracks[0].bDataTrack = 1;
    EXPECT_NE("", GetRefusal({"", "", true}, aryTracks));
}

TEST(RipPlan, ARangeIsOnePieceWithoutATrack)
{
    const RIP_PLAN plan = MakeRipPlan(MakeTracks(), {"", "10-1200", false});
    EXPECT_EQ("0:10+1191 ", GetPieces(plan));
    EXPECT_EQ("Sectors 10 to 1200", plan.aryPieces[0].strTitle);
}

TEST(RipPlan, WhatIsNotThereIsRefusedWithAWayOut)
{
    EXPECT_EQ("there is no track 7: the disc has tracks 1 to 4; choose from them with --tracks.",
              GetRefusal({"1,7", "", false}));
    EXPECT_EQ("none of the tracks asked for has audio; look at the disc with 'rondel info'.",
              GetRefusal({"4", "", false}));
    EXPECT_NE("", GetRefusal({}, {}));
    EXPECT_NE("", GetRefusal({"x", "", false}));
    EXPECT_NE("", GetRefusal({"", "x", false}));
    EXPECT_NE("", GetRefusal({}, {MakeTrack(1, 0, 0)}));
}
