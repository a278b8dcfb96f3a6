#include "HostError.h"
#include "TempFolder.h"
#include "Verification.h"
#include "VerificationNotes.h"
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>

namespace
{
using NOTES = std::vector<std::string>;

constexpr int END = 1600;
const int s_aryStarts[] = {0, 500, 1010};

CD_LAYOUT GetLayout()
{
    CD_LAYOUT layout;
    for (const int nStart : s_aryStarts)
        layout.Add(nStart);
    layout.Finish(END);
    return layout;
}

// Noise, nLate frames late; track 2 is silent if asked for.
std::vector<uint32_t> MakeAudio(int nLate = 0, bool bSilentTrack2 = false)
{
    std::mt19937 random(5);
    std::vector<uint32_t> aryFrames(static_cast<size_t>(END) * LY_CD_SECTOR_FRAMES);
    for (uint32_t& nFrame : aryFrames)
        nFrame = static_cast<uint32_t>(random());
    if (bSilentTrack2)
        std::fill(aryFrames.begin() + 500 * LY_CD_SECTOR_FRAMES, aryFrames.begin() + 1010 * LY_CD_SECTOR_FRAMES, 0U);
    aryFrames.insert(aryFrames.begin(), static_cast<size_t>(nLate), 0U);
    aryFrames.resize(static_cast<size_t>(END) * LY_CD_SECTOR_FRAMES);
    return aryFrames;
}

DiscChecksums MakeSums(const std::vector<uint32_t>& aryFrames, int nFromSector = 0, int nToSector = END)
{
    DiscChecksums sums;
    EXPECT_TRUE(sums.SetLayout(GetLayout()));
    sums.StartAt(nFromSector);
    sums.Add(aryFrames.data() + nFromSector * LY_CD_SECTOR_FRAMES,
             static_cast<size_t>(nToSector - nFromSector) * LY_CD_SECTOR_BYTES);
    return sums;
}

// What others sent in of the same disc.
ACCURATERIP_BLOCK MakeBlock(const DiscChecksums& sums, int nConfidence, bool bVersion2 = false)
{
    ACCURATERIP_BLOCK block;
    block.m_ID = GetAccurateRipID(GetLayout());
    for (int nTrack = 1; nTrack <= 3; ++nTrack)
    {
        TRACK_CHECKSUMS track;
        EXPECT_TRUE(sums.GetTrack(nTrack, track));
        block.m_aryEntries.push_back(
            {nConfidence + nTrack, bVersion2 ? track.m_nAccurateRip2 : track.m_nAccurateRip1, track.m_nFrame450});
    }
    return block;
}

std::string MakeBytes(const std::vector<ACCURATERIP_BLOCK>& aryBlocks)
{
    const std::vector<uint8_t> ary = MakeAccurateRipAnswer(aryBlocks);
    return {ary.begin(), ary.end()};
}

std::string MakeXML(const DiscChecksums& sums, int nConfidence)
{
    char szEntry[200];
    uint32_t nDisc = 0;
    EXPECT_TRUE(sums.GetDiscCTDB(nDisc));
    TRACK_CHECKSUMS ary[3];
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(sums.GetTrack(i + 1, ary[i]));
    std::snprintf(szEntry, sizeof szEntry,
                  "<ctdb><entry crc32=\"%08x\" confidence=\"%d\" npar=\"8\" stride=\"5880\" toc=\"0:500:1010:1600\" "
                  "trackcrcs=\"%08x %08x %08x\"/></ctdb>",
                  nDisc, nConfidence, ary[0].m_nCTDB, ary[1].m_nCTDB, ary[2].m_nCTDB);
    return szEntry;
}

class VerificationTest : public ::testing::Test
{
protected:
    RIP_VERIFICATION Verify(const std::string& strAnswer, const DiscChecksums& sums)
    {
        return VerifyWithFile(m_Folder.Write("answer", strAnswer), sums, m_Report);
    }
    std::string GetError(const std::string& strFile)
    {
        try
        {
            CheckAnswerFile(strFile);
        }
        catch (const HostError& error)
        {
            const std::string strSentence = error.what();
            EXPECT_TRUE(strSentence.ends_with(".")) << strSentence;
            EXPECT_NE(std::string::npos, strSentence.find(strFile)) << strSentence;
            EXPECT_THROW((void)VerifyWithFile(strFile, DiscChecksums(), m_Report), HostError);
            return strSentence;
        }
        return {};
    }

    TempFolder m_Folder;
    RIP_REPORT m_Report;
    const std::vector<uint32_t> m_aryAudio = MakeAudio();
    const DiscChecksums m_Sums = MakeSums(m_aryAudio);
};
} // namespace

TEST_F(VerificationTest, TheContentTellsWhichDatabaseItIsOf)
{
    const RIP_VERIFICATION accurateRip = Verify(MakeBytes({MakeBlock(m_Sums, 10)}), m_Sums);
    EXPECT_EQ("AccurateRip", accurateRip.strKind);
    EXPECT_EQ(m_Folder.GetPath("answer"), accurateRip.strFile);
    EXPECT_TRUE(accurateRip.accurateRip.has_value() && !accurateRip.ctdb.has_value());
    const RIP_VERIFICATION ctdb = Verify(MakeXML(m_Sums, 10), m_Sums);
    EXPECT_EQ("CTDB", ctdb.strKind);
    EXPECT_TRUE(!ctdb.accurateRip.has_value() && ctdb.ctdb.has_value());
}

TEST_F(VerificationTest, AnAnswerForSixtyTracksIsNoXML)
{
    // Its first byte is "<".
    ACCURATERIP_BLOCK block;
    block.m_ID = {60, 0x00894540, 0x10, 0x20};
    block.m_aryEntries.resize(60);
    EXPECT_EQ("AccurateRip", Verify(MakeBytes({block}), m_Sums).strKind);
}

TEST_F(VerificationTest, AllTracksAgree)
{
    const RIP_VERIFICATION result = Verify(MakeBytes({MakeBlock(m_Sums, 10), MakeBlock(m_Sums, 20, true)}), m_Sums);
    ASSERT_EQ(3U, result.accurateRip->m_aryTracks.size());
    EXPECT_EQ(11, result.accurateRip->m_aryTracks[0].m_nConfidence1);
    EXPECT_EQ(21, result.accurateRip->m_aryTracks[0].m_nConfidence2);
    EXPECT_EQ((NOTES{"All 3 tracks agree with the database, with 32 submissions or more."}), result.aryNotes);
}

TEST_F(VerificationTest, AnotherPressingAgreesAtAnOffset)
{
    const DiscChecksums late = MakeSums(MakeAudio(12));
    const RIP_VERIFICATION result = Verify(MakeBytes({MakeBlock(m_Sums, 10)}), late);
    EXPECT_EQ(
        (NOTES{"No track agrees as it was read.",
               "At an offset of +12 frames, tracks 1 to 3 agree: the disc is of another pressing, or the drive has "
               "a read offset that is not corrected."}),
        result.aryNotes);
    const RIP_VERIFICATION ctdb = Verify(MakeXML(m_Sums, 10), late);
    EXPECT_EQ(
        (NOTES{"At an offset of +12 frames the disc as a whole agrees with 10 of 10 submissions.",
               "No track agrees as it was read.",
               "At an offset of +12 frames, tracks 1 to 3 agree: the disc is of another pressing, or the drive has "
               "a read offset that is not corrected."}),
        ctdb.aryNotes);
}

TEST_F(VerificationTest, ADamagedTrackAgreesNowhere)
{
    std::vector<uint32_t> aryDamaged = m_aryAudio;
    aryDamaged[600 * LY_CD_SECTOR_FRAMES] ^= 1;
    const DiscChecksums damaged = MakeSums(aryDamaged);
    EXPECT_EQ(
        (NOTES{"Tracks 1 and 3 agree with the database, with 11 submissions or more.", "Track 2 agrees at no offset."}),
        Verify(MakeBytes({MakeBlock(m_Sums, 10)}), damaged).aryNotes);
    EXPECT_EQ(
        (NOTES{"The disc as a whole agrees at no offset.",
               "The database has data to repair this disc with, which other programs can use.",
               "Tracks 1 and 3 agree with the database, with 10 submissions or more.", "Track 2 agrees at no offset."}),
        Verify(MakeXML(m_Sums, 10), damaged).aryNotes);
}

TEST_F(VerificationTest, SectorFourHundredAndFiftyIsAHint)
{
    std::vector<uint32_t> aryDamaged = MakeAudio(12);
    aryDamaged[600 * LY_CD_SECTOR_FRAMES] ^= 1; // of track 2, which has its sector 450 elsewhere
    const NOTES aryNotes = Verify(MakeBytes({MakeBlock(m_Sums, 10)}), MakeSums(aryDamaged)).aryNotes;
    ASSERT_EQ(4U, aryNotes.size());
    EXPECT_EQ(
        "Of track 2 sector 450 alone agrees at an offset of +12 frames: it may be of another pressing, or damaged "
        "elsewhere.",
        aryNotes[2]);
}

TEST_F(VerificationTest, ZeroIsNeverAMatch)
{
    const DiscChecksums silent = MakeSums(MakeAudio(0, true));
    const RIP_VERIFICATION result = Verify(MakeBytes({MakeBlock(silent, 10)}), silent);
    EXPECT_FALSE(result.accurateRip->m_aryTracks[1].IsAccurate());
    EXPECT_EQ((NOTES{"Tracks 1 and 3 agree with the database, with 11 submissions or more.",
                     "Track 2 is silent where the sum is made, which never counts as a match."}),
              result.aryNotes);
}

TEST_F(VerificationTest, OtherDiscsAreNotComparedWith)
{
    ACCURATERIP_BLOCK foreign = MakeBlock(m_Sums, 10);
    ++foreign.m_ID.m_nID1;
    EXPECT_EQ((NOTES{"The answer is of another disc, and nothing was compared."}),
              Verify(MakeBytes({foreign}), m_Sums).aryNotes);
    EXPECT_EQ((NOTES{"1 of the 2 pressings in the answer is of another disc and counted for nothing.",
                     "All 3 tracks agree with the database, with 11 submissions or more."}),
              Verify(MakeBytes({foreign, MakeBlock(m_Sums, 10)}), m_Sums).aryNotes);
    EXPECT_EQ((NOTES{"The database does not know this disc."}), Verify("<ctdb/>", m_Sums).aryNotes);
    EXPECT_EQ((NOTES{"The answer is of another disc, and nothing was compared."}),
              Verify("<ctdb><entry crc32='1' toc='0:1:2'/></ctdb>", m_Sums).aryNotes);
}

TEST_F(VerificationTest, WhatWasNotReadIsNotCompared)
{
    const DiscChecksums part = MakeSums(m_aryAudio, 500, END);
    EXPECT_EQ((NOTES{"Tracks 2 and 3 agree with the database, with 12 submissions or more.",
                     "Track 1 was not read whole, and was not compared."}),
              Verify(MakeBytes({MakeBlock(m_Sums, 10)}), part).aryNotes);
    EXPECT_EQ((NOTES{"The answer has no sums of tracks."}),
              Verify("<ctdb><entry crc32='1' confidence='3'/></ctdb>", part).aryNotes);
}

TEST_F(VerificationTest, TracksOfAnEarlierRipCountAsTheyWere)
{
    m_Report.disc.layout = GetLayout();
    for (int nTrack = 1; nTrack <= 2; ++nTrack)
    {
        RIP_PIECE& piece = m_Report.aryPieces.emplace_back();
        piece.nTrack = nTrack;
        piece.eState = RIP_PIECE_TAKEN;
        ASSERT_TRUE(m_Sums.GetTrack(nTrack, piece.sums));
    }
    m_Report.aryPieces[1].sums.m_nAccurateRip1 ^= 1;
    m_Report.aryPieces[1].sums.m_nAccurateRip2 ^= 1;
    m_Report.aryPieces[1].sums.m_nCTDB ^= 1;
    const NOTES aryWanted = {"Track 1 agrees with the database, with 11 submissions.", "Track 2 agrees at no offset.",
                             "Track 3 was not read whole, and was not compared.",
                             "Track 2 comes from the rip that was broken off, and was compared at no other offset."};
    const std::string strAnswer = MakeBytes({MakeBlock(m_Sums, 10)});
    EXPECT_EQ(aryWanted, Verify(strAnswer, DiscChecksums()).aryNotes); // which nobody fed
    DiscChecksums unfed;
    ASSERT_TRUE(unfed.SetLayout(GetLayout()));
    const RIP_VERIFICATION result = Verify(strAnswer, unfed);
    EXPECT_EQ(aryWanted, result.aryNotes);
    EXPECT_EQ(11, result.accurateRip->m_aryTracks[0].m_nConfidence1);
    EXPECT_EQ("Track 1 agrees with the database, with 10 submissions.", Verify(MakeXML(m_Sums, 10), unfed).aryNotes[0]);
    ASSERT_TRUE(m_Sums.GetDiscCTDB(m_Report.nDiscCTDB));
    EXPECT_EQ("The disc as a whole agrees with 10 of 10 submissions.", Verify(MakeXML(m_Sums, 10), unfed).aryNotes[0]);
}

TEST_F(VerificationTest, AMatchInSpiteOfDoubtIsTold)
{
    RIP_PIECE& piece = m_Report.aryPieces.emplace_back();
    piece.nTrack = 3;
    piece.nStart = 1010;
    piece.nSectors = 590;
    piece.aryEntries = {{3, 1100, 4, SECURE_RIP_LIMIT, 16, 4, 0}};
    EXPECT_EQ("Track 3 agrees although sectors of it are to be doubted.",
              Verify(MakeBytes({MakeBlock(m_Sums, 10)}), m_Sums).aryNotes.back());
}

TEST_F(VerificationTest, WhatIsNoAnswerIsRefused)
{
    const std::string strGood = MakeBytes({MakeBlock(m_Sums, 10)});
    const auto Error = [&](const std::string& str) { return GetError(m_Folder.Write("bad", str)); };
    EXPECT_EQ("", Error(strGood));
    EXPECT_EQ("", Error(MakeXML(m_Sums, 1)));
    EXPECT_NE(std::string::npos, Error("").find("it is empty"));
    EXPECT_NE(std::string::npos, Error(strGood.substr(0, 20)).find("the block at byte 0 is cut off"));
    EXPECT_NE(std::string::npos, Error(strGood + '\x64').find("number of tracks at byte 40"));
    EXPECT_NE(std::string::npos, Error("<html/>").find("is no answer of CTDB: it is XML, but has no entries"));
    EXPECT_NE(std::string::npos, Error(std::string(ANSWER_MAX_BYTES + 1, '<')).find("too large"));
    EXPECT_NE(std::string::npos, GetError(m_Folder.GetPath("gone")).find("not there"));
    EXPECT_NE(std::string::npos, GetError(m_Folder.GetPath()).find("no plain file"));
    const std::string strPipe = m_Folder.GetPath("pipe");
    ASSERT_EQ(0, mkfifo(strPipe.c_str(), 0600));
    EXPECT_NE(std::string::npos, GetError(strPipe).find("no plain file")); // and does not wait for a writer
}

TEST(VerificationNotes, TracksAreListedAsPeopleDo)
{
    EXPECT_EQ("track 3", ListTracks({3}));
    EXPECT_EQ("tracks 3 and 4", ListTracks({3, 4}));
    EXPECT_EQ("tracks 3 to 5", ListTracks({3, 4, 5}));
    EXPECT_EQ("tracks 1, 3 to 5, 8 and 9", ListTracks({1, 3, 4, 5, 8, 9}));
    EXPECT_EQ("tracks 1 to 3 and 7", ListTracks({1, 2, 3, 7}));
}

TEST(VerificationNotes, OffsetsHaveASign)
{
    EXPECT_EQ("+6 frames", FormatOffset(6));
    EXPECT_EQ("-1 frame", FormatOffset(-1));
    EXPECT_EQ("0 frames", FormatOffset(0));
}

TEST(VerificationNotes, EachOffsetHasASentence)
{
    std::vector<COMPARED_TRACK> aryTracks(4);
    for (int i = 0; i < 4; ++i)
        aryTracks[static_cast<size_t>(i)] = {i + 1, true, false, true, false, false, 0, i < 2 ? 667 : -6, 3, 0};
    aryTracks[3].nOtherConfidence = 0;
    aryTracks[3].bClaimed = false;
    const NOTES aryNotes = MakeTrackNotes(aryTracks);
    ASSERT_EQ(4U, aryNotes.size());
    EXPECT_TRUE(aryNotes[1].starts_with("At an offset of -6 frames, track 3 agrees:"));
    EXPECT_TRUE(aryNotes[2].starts_with("At an offset of +667 frames, tracks 1 and 2 agree:"));
    EXPECT_EQ("Track 4 has no sum in the answer.", aryNotes[3]);
}
