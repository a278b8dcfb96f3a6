// DiscChecksums against the plain reading of the definitions, over random discs in random pieces.

#include "DiscChecksums.h"
#include "PlainSums.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace
{
using Random = std::mt19937;

int Pick(Random& random, int nFrom, int nTo) { return std::uniform_int_distribution<int>(nFrom, nTo)(random); }

// Noise, with stretches of silence and with silent channels in it.
std::vector<uint32_t> MakeFrames(Random& random, int nSectors)
{
    std::vector<uint32_t> aryFrames(static_cast<size_t>(nSectors) * LY_CD_SECTOR_FRAMES);
    int nLeft = 0;
    uint32_t nMask = 0;
    for (uint32_t& nFrame : aryFrames)
    {
        if (nLeft-- == 0)
        {
            const uint32_t aryMasks[] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0, 0xFFFF0000, 0x00030003};
            nMask = aryMasks[Pick(random, 0, 5)];
            nLeft = Pick(random, 1, 3000);
        }
        nFrame = static_cast<uint32_t>(random()) & nMask;
    }
    return aryFrames;
}

PlainDisc MakeDisc(Random& random, const std::vector<int>& aryStarts, int nLeadOut)
{
    return {MakeLayout(aryStarts, nLeadOut), MakeFrames(random, nLeadOut)};
}

// The sectors from nFirst to nEnd, in pieces of up to nMaxBytes bytes.
void AddPieces(DiscChecksums& checksums, const PlainDisc& disc, int nFirst, int nEnd, Random& random, int nMaxBytes)
{
    const uint8_t* p = reinterpret_cast<const uint8_t*>(disc.m_aryFrames.data());
    size_t nAt = static_cast<size_t>(nFirst) * LY_CD_SECTOR_BYTES;
    const size_t nTo = static_cast<size_t>(nEnd) * LY_CD_SECTOR_BYTES;
    checksums.StartAt(nFirst);
    while (nAt < nTo)
    {
        const size_t nBytes = std::min(nTo - nAt, static_cast<size_t>(Pick(random, 0, nMaxBytes)));
        // A copy of its own, so that reading beyond a piece is found.
        const std::vector<uint8_t> aryPiece(p + nAt, p + nAt + nBytes);
        checksums.Add(aryPiece.data(), aryPiece.size());
        nAt += nBytes;
    }
}

void ExpectTracks(const DiscChecksums& checksums, const PlainDisc& disc)
{
    for (int i = 0; i < static_cast<int>(disc.m_Layout.m_aryTracks.size()); ++i)
    {
        TRACK_CHECKSUMS sums;
        ASSERT_TRUE(checksums.GetTrack(disc.Track(i).m_nNumber, sums)) << i;
        EXPECT_TRUE(sums.m_bComplete);
        EXPECT_EQ(disc.CRC32(disc.First(i), disc.End(i)), sums.m_nCRC32) << i;
        EXPECT_EQ(disc.CRC32(disc.First(i), disc.End(i), true), sums.m_nCRC32WithoutNull) << i;
        EXPECT_EQ(disc.AccurateRip(i, 0, false), sums.m_nAccurateRip1) << i;
        EXPECT_EQ(disc.AccurateRip(i, 0, true), sums.m_nAccurateRip2) << i;
        EXPECT_EQ(disc.Frame450(i, 0), sums.m_nFrame450) << i;
        EXPECT_EQ(disc.TrackCTDB(i, 0), sums.m_nCTDB) << i;
    }
    uint32_t nCTDB = 1;
    ASSERT_TRUE(checksums.GetDiscCTDB(nCTDB));
    EXPECT_EQ(disc.DiscCTDB(0), nCTDB);
}

// Of each nStep-th track.
void ExpectOffset(const DiscChecksums& checksums, const PlainDisc& disc, int nOffset, int nStep = 1)
{
    const size_t nAt = static_cast<size_t>(nOffset + checksums.GetMaxOffset());
    for (int i = 0; i < static_cast<int>(disc.m_Layout.m_aryTracks.size()); i += nStep)
    {
        const int nNumber = disc.Track(i).m_nNumber;
        EXPECT_EQ(disc.AccurateRip(i, nOffset, false), checksums.GetAccurateRip1AtOffsets(nNumber)[nAt])
            << i << " " << nOffset;
        EXPECT_EQ(disc.Frame450(i, nOffset), checksums.GetFrame450AtOffsets(nNumber)[nAt]) << i << " " << nOffset;
        EXPECT_EQ(disc.TrackCTDB(i, nOffset), checksums.GetTrackCTDBAtOffsets(nNumber)[nAt]) << i << " " << nOffset;
    }
    EXPECT_EQ(disc.DiscCTDB(nOffset), checksums.GetDiscCTDBAtOffsets()[nAt]) << nOffset;
}

struct DISC_CASE
{
    const char* m_pName;
    std::vector<int> m_aryStarts;
    int m_nLeadOut;
};

const DISC_CASE s_aryDiscs[] = {
    {"OneSector", {0}, 1},
    {"FiveSectors", {0}, 5},
    {"SixSectors", {0}, 6},
    {"ElevenSectors", {3}, 14}, // one frame more than both margins of AccurateRip leave out, and less than CTDB's
    {"TwoTracksOfOneSector", {0, 1}, 2},
    {"ShortFirstAndLast", {0, 4, 60}, 66},
    {"HiddenAudio", {40, 75, 110}, 150},
    {"JustNoSector450", {0, 450}, 900},
    {"JustSector450", {7, 458}, 920},
};
} // namespace

TEST(DiscChecksums, EqualThePlainSumsWhateverThePieces)
{
    Random random(4);
    for (const DISC_CASE& row : s_aryDiscs)
    {
        SCOPED_TRACE(row.m_pName);
        const PlainDisc disc = MakeDisc(random, row.m_aryStarts, row.m_nLeadOut);
        for (int nMaxBytes : {9, 2351, 63504})
        {
            DiscChecksums checksums;
            ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
            AddPieces(checksums, disc, 0, row.m_nLeadOut, random, nMaxBytes);
            ExpectTracks(checksums, disc);
        }
    }
}

TEST(DiscChecksums, EqualThePlainSumsAtEveryKindOfOffset)
{
    Random random(5);
    for (const DISC_CASE& row : s_aryDiscs)
    {
        SCOPED_TRACE(row.m_pName);
        const PlainDisc disc = MakeDisc(random, row.m_aryStarts, row.m_nLeadOut);
        DiscChecksums checksums;
        ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
        AddPieces(checksums, disc, 0, row.m_nLeadOut, random, 63504);
        const std::vector<int> aryAll = {0, -1, 2940, -2940, 5879, -5879, Pick(random, -5879, 5879)};
        for (int nOffset : Thinning::Some<std::vector<int>>(aryAll, {-1, 2940, -5879, aryAll.back()}))
            ExpectOffset(checksums, disc, nOffset);
    }
}

TEST(DiscChecksums, EqualThePlainSumsOnNinetyNineTracks)
{
    Random random(6);
    std::vector<int> aryStarts;
    int nStart = Pick(random, 0, 30);
    for (int i = 0; i < LY_CD_MAX_TRACKS; ++i)
    {
        aryStarts.push_back(nStart);
        nStart += Pick(random, 1, 25);
    }
    const PlainDisc disc = MakeDisc(random, aryStarts, nStart);
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
    AddPieces(checksums, disc, 0, nStart, random, 63504);
    ExpectTracks(checksums, disc);
    ExpectOffset(checksums, disc, 77, Thinning::Some(1, 14)); // the first and the last track, too
}

TEST(DiscChecksums, OffsetsMayBeLeftOut)
{
    Random random(7);
    const PlainDisc disc = MakeDisc(random, {2, 480}, 960);
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout, 0));
    AddPieces(checksums, disc, 2, 960, random, 63504);
    ExpectTracks(checksums, disc);
    ExpectOffset(checksums, disc, 0);
    EXPECT_EQ(1U, checksums.GetAccurateRip1AtOffsets(1).size());
}

TEST(DiscChecksums, AnAudioShiftedByTheOffsetHasTheSumsOfTheTrueOne)
{
    Random random(8);
    const PlainDisc disc = MakeDisc(random, {20, 60}, 120);
    PlainDisc late = disc; // its audio comes 30 frames too late
    std::rotate(late.m_aryFrames.begin(), late.m_aryFrames.end() - 30, late.m_aryFrames.end());
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(late.m_Layout));
    AddPieces(checksums, late, 0, 120, random, 63504);
    const size_t nAt = CHECKSUM_MAX_OFFSET + 30;
    EXPECT_EQ(disc.AccurateRip(0, 0, false), checksums.GetAccurateRip1AtOffsets(1)[nAt]);
    EXPECT_EQ(disc.AccurateRip(1, 0, false), checksums.GetAccurateRip1AtOffsets(2)[nAt]);
    EXPECT_EQ(disc.DiscCTDB(0), checksums.GetDiscCTDBAtOffsets()[nAt]);
}

TEST(DiscChecksums, TracksMayComeAloneAndInAnyOrder)
{
    Random random(9);
    const PlainDisc disc = MakeDisc(random, {0, 500, 530}, 990);
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
    uint32_t nCTDB = 0;
    AddPieces(checksums, disc, 530, 990, random, 9999);
    AddPieces(checksums, disc, 0, 500, random, 9999);
    EXPECT_FALSE(checksums.GetDiscCTDB(nCTDB));
    AddPieces(checksums, disc, 500, 530, random, 9999);
    ExpectTracks(checksums, disc);
    // Track 1 and 2 met in the last two passes, but track 3 came apart from them.
    EXPECT_TRUE(checksums.GetDiscCTDBAtOffsets().empty());
    // Audio beyond the ends of a track that came alone is not known.
    const std::vector<uint32_t> arySums = checksums.GetAccurateRip1AtOffsets(3);
    EXPECT_EQ(disc.AccurateRip(2, 0, false), arySums[CHECKSUM_MAX_OFFSET]);
    EXPECT_EQ(disc.AccurateRip(2, 2940, false), arySums[CHECKSUM_MAX_OFFSET + 2940]);
    EXPECT_EQ(0U, arySums[CHECKSUM_MAX_OFFSET - 1]);
}

TEST(DiscChecksums, StartingWhereOneStandsInterruptsNothing)
{
    Random random(10);
    const PlainDisc disc = MakeDisc(random, {0, 50}, 100);
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
    AddPieces(checksums, disc, 0, 25, random, 9999);
    AddPieces(checksums, disc, 25, 50, random, 9999);
    AddPieces(checksums, disc, 50, 100, random, 9999);
    ExpectTracks(checksums, disc);
    ExpectOffset(checksums, disc, -17);
}

TEST(DiscChecksums, ATrackWithAGapHasNoSums)
{
    Random random(11);
    const PlainDisc disc = MakeDisc(random, {0, 50}, 100);
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
    AddPieces(checksums, disc, 0, 30, random, 9999);
    AddPieces(checksums, disc, 31, 100, random, 9999);
    TRACK_CHECKSUMS sums;
    sums.m_nCRC32 = 1;
    EXPECT_FALSE(checksums.GetTrack(1, sums));
    EXPECT_EQ(0U, sums.m_nCRC32);
    EXPECT_TRUE(checksums.GetAccurateRip1AtOffsets(1).empty());
    EXPECT_TRUE(checksums.GetFrame450AtOffsets(1).empty());
    EXPECT_TRUE(checksums.GetTrackCTDBAtOffsets(1).empty());
    EXPECT_TRUE(checksums.GetDiscCTDBAtOffsets().empty());
    EXPECT_TRUE(checksums.GetTrack(2, sums));
    EXPECT_EQ(disc.AccurateRip(1, 0, true), sums.m_nAccurateRip2);
    EXPECT_FALSE(checksums.GetTrack(0, sums));
    EXPECT_FALSE(checksums.GetTrack(3, sums));
}

TEST(DiscChecksums, ASecondReadingReplacesTheFirst)
{
    Random random(12);
    const PlainDisc disc = MakeDisc(random, {0, 50}, 100);
    PlainDisc bad = disc;
    bad.m_aryFrames[60 * LY_CD_SECTOR_FRAMES] ^= 1;
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
    AddPieces(checksums, bad, 0, 100, random, 9999);
    for (int nTime = 0; nTime < 7; ++nTime)
        AddPieces(checksums, disc, 50, 100, random, 9999);
    ExpectTracks(checksums, disc);
}

TEST(DiscChecksums, DataTracksHaveNoSums)
{
    Random random(13);
    PlainDisc disc;
    disc.m_Layout.Add(0, true);
    disc.m_Layout.Add(40);
    disc.m_Layout.Add(80);
    disc.m_Layout.Add(11600, true);
    disc.m_Layout.Finish(12000);
    disc.m_aryFrames = MakeFrames(random, 200);
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
    AddPieces(checksums, disc, 0, 200, random, 63504);
    TRACK_CHECKSUMS sums;
    EXPECT_FALSE(checksums.GetTrack(1, sums));
    EXPECT_FALSE(checksums.GetTrack(4, sums));
    for (int i : {1, 2}) // the first and the last audio track, which leave out frames at the session's ends
    {
        ASSERT_TRUE(checksums.GetTrack(i + 1, sums));
        EXPECT_EQ(disc.AccurateRip(i, 0, false), sums.m_nAccurateRip1);
        EXPECT_EQ(disc.TrackCTDB(i, 0), sums.m_nCTDB);
    }
    uint32_t nCTDB = 0;
    ASSERT_TRUE(checksums.GetDiscCTDB(nCTDB));
    EXPECT_EQ(disc.DiscCTDB(0), nCTDB);
}

TEST(DiscChecksums, AudioBeyondTheLeadOutIsIgnored)
{
    Random random(14);
    PlainDisc disc = MakeDisc(random, {0, 50}, 100);
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
    AddPieces(checksums, disc, 0, 100, random, 9999);
    const std::vector<uint8_t> aryMore(7 * LY_CD_SECTOR_BYTES, 0x55);
    checksums.Add(aryMore.data(), aryMore.size());
    ExpectTracks(checksums, disc);
    // Ahead of the disc, and behind it, there is nothing to take instead.
    EXPECT_EQ(0U, checksums.GetAccurateRip1AtOffsets(1).front());
    EXPECT_EQ(0U, checksums.GetAccurateRip1AtOffsets(2).back());
}

TEST(DiscChecksums, SilenceHasAccurateRipSumsOfZero)
{
    PlainDisc disc{MakeLayout({0}, 500), std::vector<uint32_t>(500 * LY_CD_SECTOR_FRAMES)};
    Random random(15);
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(disc.m_Layout));
    AddPieces(checksums, disc, 0, 500, random, 63504);
    TRACK_CHECKSUMS sums;
    ASSERT_TRUE(checksums.GetTrack(1, sums));
    EXPECT_EQ(0U, sums.m_nAccurateRip1);
    EXPECT_EQ(0U, sums.m_nAccurateRip2);
    EXPECT_EQ(0U, sums.m_nFrame450);
    EXPECT_EQ(0U, sums.m_nCRC32WithoutNull); // of nothing
    EXPECT_EQ(disc.CRC32(0, 500 * LY_CD_SECTOR_FRAMES), sums.m_nCRC32);
}

TEST(DiscChecksums, WhatCannotBeLaidOutHasNothing)
{
    DiscChecksums checksums;
    const std::vector<uint8_t> aryAudio(LY_CD_SECTOR_BYTES);
    checksums.Add(aryAudio.data(), aryAudio.size());
    EXPECT_FALSE(checksums.SetLayout(CD_LAYOUT()));
    EXPECT_FALSE(checksums.SetLayout(MakeLayout({0}, 9), -1));
    EXPECT_FALSE(checksums.SetLayout(MakeLayout({0}, 9), CHECKSUM_MAX_OFFSET + 1));
    EXPECT_FALSE(checksums.SetCTDBMargins(0, 0));
    checksums.StartAt(-1);
    checksums.Add(aryAudio.data(), aryAudio.size());
    TRACK_CHECKSUMS sums;
    uint32_t nCTDB = 1;
    EXPECT_FALSE(checksums.GetTrack(1, sums));
    EXPECT_FALSE(checksums.GetDiscCTDB(nCTDB));
    EXPECT_EQ(0U, nCTDB);
    ASSERT_TRUE(checksums.SetLayout(MakeLayout({0}, 9)));
    EXPECT_FALSE(checksums.SetCTDBMargins(-1, 0));
    EXPECT_FALSE(checksums.SetCTDBMargins(0, CTDB_STRIDE_WORDS + 1));
}

TEST(CTDBSuffix, IsHalfAStrideAndHalfOfWhatAStrideLeaves)
{
    const struct
    {
        int64_t m_nTotal;
        int m_nSuffix;
    } aryRows[] = {{0, 5880}, {588, 6468}, {5879, 11759}, {5880, 5880}, {5881, 5881}, {26460000, 5880}};
    for (const auto& row : aryRows)
        EXPECT_EQ(row.m_nSuffix, GetCTDBSuffixFrames(row.m_nTotal)) << row.m_nTotal;
}
