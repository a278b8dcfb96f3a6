#include "AccurateRipVerify.h"
#include "PlainSums.h"
#include <gtest/gtest.h>

namespace
{
std::vector<ACCURATERIP_BLOCK> Parse(const std::vector<uint8_t>& ary, ACCURATERIP_ANSWER_ERROR nExpected,
                                     size_t nExpectedOffset)
{
    std::vector<ACCURATERIP_BLOCK> aryBlocks(3);
    size_t nOffset = 77;
    EXPECT_EQ(nExpected, ParseAccurateRipAnswer(ary.data(), ary.size(), aryBlocks, nOffset));
    EXPECT_EQ(nExpectedOffset, nOffset);
    return aryBlocks;
}

// A block of one track, and one of two.
const std::vector<uint8_t> s_aryTwoBlocks = {
    1,   0x78, 0x91, 0x1B, 0,    0x4E, 0xE2, 0x4B, 1, 0x0F, 0x2D, 0x0D, 0xB4, // as the identifiers are printed
    200, 1,    2,    3,    4,    5,    6,    7,    8,                         //
    2,   1,    0,    0,    0,    2,    0,    0,    0, 3,    0,    0,    0,    //
    255, 0xFF, 0,    0,    0x80, 0,    0,    0,    0, 0,    0,    0,    0,    0, 9, 0, 0, 0};

class VerifyAudio : public testing::Test
{
protected:
    void SetUp() override
    {
        m_Disc.m_Layout = MakeLayout({0, 470}, 960);
        SubtractiveBytes bytes(1);
        m_Disc.m_aryFrames.resize(960 * LY_CD_SECTOR_FRAMES);
        for (uint32_t& nFrame : m_Disc.m_aryFrames)
            nFrame = nFrame << 8 | bytes.Next() * 0x01010101U;
        ASSERT_TRUE(m_Checksums.SetLayout(m_Disc.m_Layout));
        m_Checksums.Add(m_Disc.m_aryFrames.data(), m_Disc.m_aryFrames.size() * LY_CD_FRAME_BYTES);
    }

    ACCURATERIP_BLOCK Block(ACCURATERIP_ENTRY first, ACCURATERIP_ENTRY second) const
    {
        return {GetAccurateRipID(m_Disc.m_Layout), {first, second}};
    }

    PlainDisc m_Disc;
    DiscChecksums m_Checksums;
};
} // namespace

TEST(AccurateRipAnswer, ReadsEveryField)
{
    const auto aryBlocks = Parse(s_aryTwoBlocks, ACCURATERIP_ANSWER_OK, s_aryTwoBlocks.size());
    ASSERT_EQ(2U, aryBlocks.size());
    EXPECT_EQ((ACCURATERIP_ID{1, 0x001B9178, 0x014BE24E, 0xB40D2D0F}), aryBlocks[0].m_ID);
    ASSERT_EQ(1U, aryBlocks[0].m_aryEntries.size());
    EXPECT_EQ(200, aryBlocks[0].m_aryEntries[0].m_nConfidence);
    EXPECT_EQ(0x04030201U, aryBlocks[0].m_aryEntries[0].m_nSum);
    EXPECT_EQ(0x08070605U, aryBlocks[0].m_aryEntries[0].m_nFrame450);
    ASSERT_EQ(2U, aryBlocks[1].m_aryEntries.size());
    EXPECT_EQ(0x800000FFU, aryBlocks[1].m_aryEntries[0].m_nSum);
    EXPECT_EQ(9U, aryBlocks[1].m_aryEntries[1].m_nFrame450);
    EXPECT_EQ(s_aryTwoBlocks, MakeAccurateRipAnswer(aryBlocks));
}

TEST(AccurateRipAnswer, IsRefusedAsAWholeWhereverItIsCutOff)
{
    for (size_t nBytes = 1; nBytes < s_aryTwoBlocks.size(); ++nBytes)
    {
        if (nBytes == 22) // whole blocks
            continue;
        const std::vector<uint8_t> ary(s_aryTwoBlocks.begin(), s_aryTwoBlocks.begin() + static_cast<long>(nBytes));
        EXPECT_TRUE(Parse(ary, ACCURATERIP_ANSWER_CUT_OFF, nBytes < 22 ? 0 : 22).empty()) << nBytes;
    }
}

TEST(AccurateRipAnswer, RefusesWhatNoDatabaseSays)
{
    EXPECT_TRUE(Parse({}, ACCURATERIP_ANSWER_EMPTY, 0).empty());
    EXPECT_TRUE(Parse(std::vector<uint8_t>(2000, 0), ACCURATERIP_ANSWER_BAD_COUNT, 0).empty());
    EXPECT_TRUE(Parse(std::vector<uint8_t>(2000, 100), ACCURATERIP_ANSWER_BAD_COUNT, 0).empty());
    EXPECT_EQ(1U, Parse(std::vector<uint8_t>(13 + 99 * 9, 99), ACCURATERIP_ANSWER_OK, 13 + 99 * 9).size());
    std::vector<uint8_t> ary(22, 1);
    ary.push_back(0);
    EXPECT_TRUE(Parse(ary, ACCURATERIP_ANSWER_BAD_COUNT, 22).empty());
    EXPECT_EQ(1000U, Parse(std::vector<uint8_t>(22 * 1000, 1), ACCURATERIP_ANSWER_OK, 22000).size());
    EXPECT_TRUE(Parse(std::vector<uint8_t>(22 * 1001, 1), ACCURATERIP_ANSWER_TOO_MANY, 22000).empty());
}

TEST_F(VerifyAudio, BothVersionsAreFoundAtOffsetZero)
{
    const auto verdict = VerifyAccurateRip(
        m_Checksums, {Block({7, m_Disc.AccurateRip(0, 0, false), 0}, {8, m_Disc.AccurateRip(1, 0, true), 0}),
                      Block({5, m_Disc.AccurateRip(0, 0, true), 0}, {6, 1, m_Disc.Frame450(1, 0)})});
    EXPECT_EQ(2, verdict.m_nBlocks);
    ASSERT_EQ(2U, verdict.m_aryTracks.size());
    EXPECT_EQ(7, verdict.m_aryTracks[0].m_nConfidence1);
    EXPECT_EQ(5, verdict.m_aryTracks[0].m_nConfidence2);
    EXPECT_EQ(12, verdict.m_aryTracks[0].m_nSubmissions);
    EXPECT_EQ(0, verdict.m_aryTracks[1].m_nConfidence1);
    EXPECT_EQ(8, verdict.m_aryTracks[1].m_nConfidence2);
    EXPECT_EQ(14, verdict.m_aryTracks[1].m_nSubmissions);
    EXPECT_TRUE(verdict.m_aryTracks[0].IsAccurate() && verdict.m_aryTracks[1].IsAccurate());
    ASSERT_EQ(4U, verdict.m_aryMatches.size());
    EXPECT_EQ(ACCURATERIP_MATCH_FRAME_450, verdict.m_aryMatches[3].m_nKind);
    EXPECT_EQ(1, verdict.m_aryMatches[3].m_nBlock);
}

TEST_F(VerifyAudio, AnotherPressingIsFoundAtItsOffset)
{
    const auto verdict = VerifyAccurateRip(
        m_Checksums, {Block({7, m_Disc.AccurateRip(0, 664, false), m_Disc.Frame450(0, 664)},
                            {9, m_Disc.AccurateRip(1, -2940, false), 0}),
                      Block({7, m_Disc.AccurateRip(0, -12, false), 0}, {3, m_Disc.AccurateRip(1, 2940, false), 0})});
    EXPECT_EQ(-12, verdict.m_aryTracks[0].m_nOtherOffset); // as many as at 664, and nearer
    EXPECT_EQ(7, verdict.m_aryTracks[0].m_nOtherConfidence);
    EXPECT_EQ(-2940, verdict.m_aryTracks[1].m_nOtherOffset);
    EXPECT_EQ(9, verdict.m_aryTracks[1].m_nOtherConfidence);
    EXPECT_FALSE(verdict.m_aryTracks[0].IsAccurate());
    ASSERT_EQ(5U, verdict.m_aryMatches.size());
    EXPECT_EQ(-12, verdict.m_aryMatches[0].m_nOffset);
    EXPECT_EQ(664, verdict.m_aryMatches[1].m_nOffset);
    EXPECT_EQ(664, verdict.m_aryMatches[2].m_nOffset);
}

TEST_F(VerifyAudio, BlocksOfAnotherDiscAreNotLookedAt)
{
    ACCURATERIP_BLOCK foreign = Block({7, m_Disc.AccurateRip(0, 0, false), 0}, {8, 1, 0});
    foreign.m_ID.m_nID2 ^= 1;
    ACCURATERIP_BLOCK shorter = Block({7, m_Disc.AccurateRip(0, 0, false), 0}, {8, 1, 0});
    shorter.m_aryEntries.pop_back();
    const auto verdict = VerifyAccurateRip(m_Checksums, {foreign, shorter});
    EXPECT_EQ(0, verdict.m_nBlocks);
    EXPECT_EQ(2, verdict.m_nForeignBlocks);
    EXPECT_TRUE(verdict.m_aryMatches.empty());
    EXPECT_EQ(0, verdict.m_aryTracks[0].m_nSubmissions);
}

TEST_F(VerifyAudio, ATrackThatWasNotRippedIsNotKnown)
{
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(m_Disc.m_Layout));
    checksums.StartAt(470);
    checksums.Add(m_Disc.m_aryFrames.data() + 470 * LY_CD_SECTOR_FRAMES, 490 * LY_CD_SECTOR_BYTES);
    const auto verdict = VerifyAccurateRip(
        checksums, {Block({7, m_Disc.AccurateRip(0, 0, false), 0}, {8, m_Disc.AccurateRip(1, 0, false), 0})});
    EXPECT_FALSE(verdict.m_aryTracks[0].m_bKnown || verdict.m_aryTracks[0].IsAccurate());
    EXPECT_TRUE(verdict.m_aryTracks[1].m_bKnown && verdict.m_aryTracks[1].IsAccurate());
}

TEST(VerifyAccurateRip, ASumOfZeroIsNeverAMatch)
{
    DiscChecksums checksums;
    const CD_LAYOUT layout = MakeLayout({0}, 500);
    ASSERT_TRUE(checksums.SetLayout(layout));
    const std::vector<uint8_t> arySilence(500 * LY_CD_SECTOR_BYTES);
    checksums.Add(arySilence.data(), arySilence.size());
    const auto verdict = VerifyAccurateRip(checksums, {{GetAccurateRipID(layout), {{200, 0, 0}}}});
    EXPECT_EQ(1, verdict.m_nBlocks);
    EXPECT_TRUE(verdict.m_aryMatches.empty());
    EXPECT_TRUE(verdict.m_aryTracks[0].m_bKnown);
    EXPECT_FALSE(verdict.m_aryTracks[0].IsAccurate());
    EXPECT_EQ(0, verdict.m_aryTracks[0].m_nSubmissions);
}

TEST(VerifyAccurateRip, AudioThatRepeatsItselfIsNotListedWithoutEnd)
{
    DiscChecksums checksums;
    const CD_LAYOUT layout = MakeLayout({0}, 500);
    ASSERT_TRUE(checksums.SetLayout(layout));
    const std::vector<uint8_t> aryTone(500 * LY_CD_SECTOR_BYTES, 0x55); // the same frame again and again
    checksums.Add(aryTone.data(), aryTone.size());
    TRACK_CHECKSUMS sums;
    ASSERT_TRUE(checksums.GetTrack(1, sums));
    const auto verdict =
        VerifyAccurateRip(checksums, {{GetAccurateRipID(layout), {{200, sums.m_nAccurateRip1, sums.m_nFrame450}}}});
    EXPECT_EQ(200, verdict.m_aryTracks[0].m_nConfidence1);
    EXPECT_EQ(2U + ACCURATERIP_MAX_OTHER_MATCHES, verdict.m_aryMatches.size());
    EXPECT_EQ(1, std::abs(verdict.m_aryTracks[0].m_nOtherOffset));
}

TEST(VerifyAccurateRip, WithoutALayoutSaysNothing)
{
    EXPECT_TRUE(VerifyAccurateRip(DiscChecksums(), {ACCURATERIP_BLOCK()}).m_aryTracks.empty());
}
