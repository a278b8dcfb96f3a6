// Answers as the databases send them, put together byte by byte and letter by letter from the definitions, for audio
// whose sums are published: nothing of what reads answers took part in making them.

#include "Checksums/PlainSums.h"
#include "TempFolder.h"
#include "Verification.h"
#include <gtest/gtest.h>

namespace
{
using NOTES = std::vector<std::string>;

void AddLittle32(std::string& strBytes, uint32_t n)
{
    for (int i = 0; i < 4; ++i, n >>= 8)
        strBytes += static_cast<char>(n & 0xFF);
}

struct FOREIGN_ENTRY
{
    int nConfidence;
    uint32_t nSum;
    uint32_t nFrame450;
};

std::string MakeBlock(uint32_t nID1, uint32_t nID2, uint32_t nCDDB, const std::vector<FOREIGN_ENTRY>& aryEntries)
{
    std::string strBytes(1, static_cast<char>(aryEntries.size()));
    for (const uint32_t nID : {nID1, nID2, nCDDB})
        AddLittle32(strBytes, nID);
    for (const FOREIGN_ENTRY& entry : aryEntries)
    {
        strBytes += static_cast<char>(entry.nConfidence);
        AddLittle32(strBytes, entry.nSum);
        AddLittle32(strBytes, entry.nFrame450);
    }
    return strBytes;
}

RIP_VERIFICATION Verify(const std::string& strAnswer, const DiscChecksums& sums)
{
    const TempFolder folder;
    return VerifyWithFile(folder.Write("answer", strAnswer), sums, RIP_REPORT());
}

// 136 sectors of published noise: three tracks at 13, 68 and 99. The identifiers by hand:
// 13 + 68 + 99 + 136 = 316; 13 + 2 * 68 + 3 * 99 + 4 * 136 = 990; the starts are at 2, 2 and 3 seconds, whose digits
// make 7, and from 2 to the end at 286 / 75 = 3 seconds there is 1.
constexpr uint32_t NOISE_ID1 = 316;
constexpr uint32_t NOISE_ID2 = 990;
constexpr uint32_t NOISE_CDDB = 0x07000103;

class ForeignAccurateRip : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const std::vector<uint8_t> aryAudio = SubtractiveBytes(2314).Make(136 * LY_CD_SECTOR_BYTES);
        m_Plain.m_Layout = MakeLayout({13, 68, 99}, 136);
        m_Plain.m_aryFrames.resize(136 * LY_CD_SECTOR_FRAMES);
        std::copy(aryAudio.begin(), aryAudio.end(), reinterpret_cast<uint8_t*>(m_Plain.m_aryFrames.data()));
        ASSERT_TRUE(m_Sums.SetLayout(m_Plain.m_Layout));
        m_Sums.StartAt(0);
        m_Sums.Add(aryAudio.data(), aryAudio.size());
    }

    // As most who ripped the disc sent it in: version 2, and in older submissions version 1. The tracks are too short
    // to have a sector 450.
    static std::string MakeVersion2()
    {
        return MakeBlock(NOISE_ID1, NOISE_ID2, NOISE_CDDB,
                         {{200, 3988391122, 0}, {199, 2284845104, 0}, {201, 3841231027, 0}});
    }
    static std::string MakeVersion1()
    {
        return MakeBlock(NOISE_ID1, NOISE_ID2, NOISE_CDDB,
                         {{7, 3727147246, 0}, {8, 2202235240, 0}, {9, 3752629998, 0}});
    }

    PlainDisc m_Plain;
    DiscChecksums m_Sums;
};
} // namespace

TEST_F(ForeignAccurateRip, BothVersionsAreRecognized)
{
    const RIP_VERIFICATION result = Verify(MakeVersion2() + MakeVersion1(), m_Sums);
    ASSERT_TRUE(result.accurateRip.has_value());
    EXPECT_EQ(2, result.accurateRip->m_nBlocks);
    ASSERT_EQ(3U, result.accurateRip->m_aryTracks.size());
    for (int i = 0; i < 3; ++i)
    {
        const ACCURATERIP_TRACK_VERDICT& track = result.accurateRip->m_aryTracks[static_cast<size_t>(i)];
        EXPECT_EQ(7 + i, track.m_nConfidence1) << i;
        EXPECT_EQ(i == 1 ? 199 : i == 0 ? 200 : 201, track.m_nConfidence2) << i;
    }
    EXPECT_EQ((NOTES{"All 3 tracks agree with the database, with 207 submissions or more."}), result.aryNotes);
}

TEST_F(ForeignAccurateRip, AnotherPressingIsFoundAtItsOffset)
{
    // All that the answer has is of a pressing on which the same audio lies 30 frames earlier.
    const std::string strAnswer = MakeBlock(NOISE_ID1, NOISE_ID2, NOISE_CDDB,
                                            {{50, m_Plain.AccurateRip(0, 30, false), 0},
                                             {51, m_Plain.AccurateRip(1, 30, false), 0},
                                             {52, m_Plain.AccurateRip(2, 30, false), 0}});
    const RIP_VERIFICATION result = Verify(strAnswer, m_Sums);
    for (const ACCURATERIP_TRACK_VERDICT& track : result.accurateRip->m_aryTracks)
    {
        EXPECT_FALSE(track.IsAccurate()) << track.m_nTrack;
        EXPECT_EQ(30, track.m_nOtherOffset) << track.m_nTrack;
        EXPECT_EQ(49 + track.m_nTrack, track.m_nOtherConfidence);
    }
    ASSERT_EQ(2U, result.aryNotes.size());
    EXPECT_TRUE(result.aryNotes[1].starts_with("At an offset of +30 frames, tracks 1 to 3 agree:"));
}

TEST_F(ForeignAccurateRip, TracksThatNobodySentInAreNoMatch)
{
    const std::string strAnswer =
        MakeBlock(NOISE_ID1, NOISE_ID2, NOISE_CDDB, {{7, 3727147246, 0}, {0, 0, 0}, {9, 3752629998, 0}});
    const RIP_VERIFICATION result = Verify(strAnswer, m_Sums);
    EXPECT_EQ((NOTES{"Tracks 1 and 3 agree with the database, with 7 submissions or more.",
                     "Track 2 has no sum in the answer."}),
              result.aryNotes);
}

TEST_F(ForeignAccurateRip, BlocksOfADiscWithTheSameTwoIdentifiersCountForNothing)
{
    const std::string strForeign = MakeBlock(NOISE_ID1, NOISE_ID2, NOISE_CDDB + 1,
                                             {{99, 3727147246, 0}, {99, 2202235240, 0}, {99, 3752629998, 0}});
    const RIP_VERIFICATION result = Verify(strForeign + MakeVersion1(), m_Sums);
    EXPECT_EQ(1, result.accurateRip->m_nForeignBlocks);
    ASSERT_EQ(2U, result.aryNotes.size());
    EXPECT_EQ("1 of the 2 pressings in the answer is of another disc and counted for nothing.", result.aryNotes[0]);
    EXPECT_EQ(7, result.accurateRip->m_aryTracks[0].m_nConfidence1);
}

// Fifteen tracks, whose identifiers and sums are published: frame k of the disc has the value k + 1. Tracks 1 and 2 are
// ripped, and the sum over sector 450 alone is that of 588 such frames.
TEST(ForeignAccurateRipOfFifteen, TwoOfFifteenTracksAreCompared)
{
    constexpr uint32_t FIRST = 33;
    constexpr uint32_t THIRD = 7390;
    const CD_LAYOUT layout = MakeLayout(
        {33, 5225, 7390, 23380, 35608, 49820, 69508, 87733, 106333, 139495, 157863, 198495, 213368, 225320, 234103},
        253038);
    DiscChecksums sums;
    ASSERT_TRUE(sums.SetLayout(layout));
    std::vector<uint32_t> aryFrames(static_cast<size_t>(THIRD - FIRST) * LY_CD_SECTOR_FRAMES);
    for (size_t i = 0; i < aryFrames.size(); ++i)
        aryFrames[i] = FIRST * LY_CD_SECTOR_FRAMES + static_cast<uint32_t>(i) + 1;
    sums.StartAt(FIRST);
    sums.Add(aryFrames.data(), aryFrames.size() * sizeof(uint32_t));

    uint32_t nFrame450 = 0;
    for (uint32_t i = 1; i <= LY_CD_SECTOR_FRAMES; ++i)
        nFrame450 += ((FIRST + 450) * LY_CD_SECTOR_FRAMES + i) * i;
    std::vector<FOREIGN_ENTRY> aryEntries(15, FOREIGN_ENTRY{3, 0x12345678, 0});
    aryEntries[0] = {4, 0x8FBB68BA, nFrame450};
    aryEntries[1] = {5, 0x60F64E9A, 0};
    const std::string strAnswer = MakeBlock(0x001B9178, 0x014BE24E, 0xB40D2D0F, aryEntries);
    EXPECT_EQ(148U, strAnswer.size());
    const RIP_VERIFICATION result = Verify(strAnswer, sums);
    EXPECT_EQ(4, result.accurateRip->m_aryTracks[0].m_nConfidence2);
    EXPECT_EQ(5, result.accurateRip->m_aryTracks[1].m_nConfidence1);
    ASSERT_EQ(2U, result.aryNotes.size());
    EXPECT_EQ("Tracks 1 and 2 agree with the database, with 4 submissions or more.", result.aryNotes[0]);
    EXPECT_EQ("Tracks 3 to 15 were not read whole, and were not compared.", result.aryNotes[1]);
    EXPECT_TRUE(std::any_of(result.accurateRip->m_aryMatches.begin(), result.accurateRip->m_aryMatches.end(),
                            [](const ACCURATERIP_MATCH& match) {
                                return match.m_nTrack == 1 && match.m_nKind == ACCURATERIP_MATCH_FRAME_450 &&
                                       match.m_nOffset == 0;
                            }));
}

// Ten minutes of published noise, whose sum is 87CB7445h. The same disc twice: the second time a pressing with a longer
// pause ahead of it, for which the question was asked with fuzzy=1. The third is damaged, the fourth another disc.
TEST(ForeignCTDB, EntriesWithParityAndMetadataAreCompared)
{
    constexpr int SECTORS = 45000;
    DiscChecksums sums;
    ASSERT_TRUE(sums.SetLayout(MakeLayout({0}, SECTORS)));
    SubtractiveBytes bytes(2423);
    for (int nSector = 0; nSector < SECTORS; ++nSector)
    {
        const std::vector<uint8_t> arySector = bytes.Make(LY_CD_SECTOR_BYTES);
        sums.Add(arySector.data(), arySector.size());
    }
    const RIP_VERIFICATION result = Verify(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
        "<ctdb xmlns=\"http://www.example.org/ns/mmd-1.0#\" xmlns:ext=\"http://www.example.org/ns/ext-1.0#\">\r\n"
        "  <entry confidence=\"17\" crc32=\"87cb7445\" id=\"1041\" npar=\"16\" stride=\"5880\"\r\n"
        "    hasparity=\"http://www.example.org/parity/1041\" parity=\"4nJ+Vv/aLg4J2Q==\" toc=\"0:45000\"\r\n"
        "    trackcrcs=\"87cb7445\" />\r\n"
        "  <entry confidence=\"2\" crc32=\"87CB7445\" id=\"1042\" npar=\"8\" stride=\"5880\" toc=\"32:45032\" "
        "trackcrcs=\"87CB7445\"><parity>4nJ+Vv/aLg4J2Q==</parity></entry>\r\n"
        "  <entry confidence=\"1\" crc32=\"b1d0fe\" id=\"1043\" npar=\"8\" stride=\"5880\" toc=\"0:45000\" "
        "trackcrcs=\"00b1d0fe\" />\r\n"
        "  <entry confidence=\"9\" crc32=\"87cb7445\" id=\"7\" npar=\"8\" stride=\"5880\" toc=\"0:44999\" />\r\n"
        "  <metadata source=\"none\" artist=\"A &amp; B\"><track name=\"&lt;1&gt;\" /></metadata>\r\n"
        "</ctdb>\r\n",
        sums);
    ASSERT_TRUE(result.ctdb.has_value());
    EXPECT_EQ(3, result.ctdb->m_nEntries);
    EXPECT_EQ(1, result.ctdb->m_nForeignEntries);
    EXPECT_EQ(16, result.ctdb->m_nParity);
    EXPECT_EQ(19, result.ctdb->m_Disc.m_nConfidence);
    EXPECT_EQ(20, result.ctdb->m_Disc.m_nSubmissions);
    ASSERT_EQ(1U, result.ctdb->m_aryTracks.size());
    EXPECT_EQ(19, result.ctdb->m_aryTracks[0].m_nConfidence);
    EXPECT_EQ((NOTES{"1 of the 4 entries in the answer is of another disc and counted for nothing.",
                     "The disc as a whole agrees with 19 of 20 submissions.",
                     "Track 1 agrees with the database, with 19 submissions."}),
              result.aryNotes);
}
