#include "CTDBAnswer.h"
#include "CTDBVerify.h"
#include <cstdio>
#include <gtest/gtest.h>
#include <random>

namespace
{
std::vector<CTDB_ENTRY> Parse(const std::string& strText)
{
    std::vector<CTDB_ENTRY> aryEntries;
    std::string strReason;
    EXPECT_TRUE(ParseCTDBAnswer(strText, aryEntries, strReason)) << strReason;
    EXPECT_EQ("", strReason);
    return aryEntries;
}

std::string GetReason(const std::string& strText)
{
    std::vector<CTDB_ENTRY> aryEntries(1);
    std::string strReason;
    EXPECT_FALSE(ParseCTDBAnswer(strText, aryEntries, strReason)) << strText;
    EXPECT_TRUE(aryEntries.empty());
    return strReason;
}

// Three tracks of noise with a pause of two sectors ahead of them, and data behind them if asked for.
constexpr int FIRST = 2;
constexpr int END = 92;
const int s_aryStarts[] = {FIRST, 32, 60};

CD_LAYOUT GetLayout()
{
    CD_LAYOUT layout;
    for (const int nStart : s_aryStarts)
        layout.Add(nStart);
    layout.Finish(END);
    return layout;
}

// The audio of the disc, nLate frames late.
DiscChecksums MakeSums(int nLate = 0)
{
    std::mt19937 random(7);
    std::vector<uint32_t> aryFrames(static_cast<size_t>(END) * LY_CD_SECTOR_FRAMES);
    for (uint32_t& nFrame : aryFrames)
        nFrame = static_cast<uint32_t>(random());
    std::vector<uint32_t> aryLate(aryFrames.size());
    for (size_t i = 0; i < aryLate.size(); ++i)
    {
        const size_t nFrom = i - static_cast<size_t>(nLate);
        aryLate[i] = nFrom < aryFrames.size() ? aryFrames[nFrom] : 0;
    }
    DiscChecksums sums;
    EXPECT_TRUE(sums.SetLayout(GetLayout()));
    sums.Add(aryLate.data(), aryLate.size() * sizeof(uint32_t));
    return sums;
}

CTDB_ENTRY MakeEntry(const DiscChecksums& sums, int nConfidence)
{
    CTDB_ENTRY entry;
    EXPECT_TRUE(sums.GetDiscCTDB(entry.m_nSum));
    entry.m_nConfidence = nConfidence;
    for (int nTrack = 1; nTrack <= 3; ++nTrack)
    {
        TRACK_CHECKSUMS track;
        EXPECT_TRUE(sums.GetTrack(nTrack, track));
        entry.m_aryTracks.push_back(track.m_nCTDB);
    }
    return entry;
}
} // namespace

TEST(CTDBAnswer, EntriesAreReadWithAllTheyTell)
{
    const std::vector<CTDB_ENTRY> aryEntries = Parse(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ctdb xmlns=\"urn:x\">\n"
        "<entry id=\"24\" crc32=\"00fF8a87\" confidence=\"120\" npar=\"8\" stride=\"5880\" hasparity=\"http://x/24\" "
        "toc=\"0:11703:-24218:40000\" trackcrcs=\"bbd5e1be 1\n 0 FFFFFFFF\"/>\n"
        "<other crc32=\"zz\"/><entry crc32=\"1\"><entry crc32=\"inner\"/></entry>\n</ctdb>\n");
    ASSERT_EQ(2U, aryEntries.size());
    EXPECT_EQ(0x00FF8A87U, aryEntries[0].m_nSum);
    EXPECT_EQ(120, aryEntries[0].m_nConfidence);
    EXPECT_EQ(8, aryEntries[0].m_nParity);
    EXPECT_EQ(5880, aryEntries[0].m_nStride);
    EXPECT_EQ("0:11703:-24218:40000", aryEntries[0].m_strTOC);
    EXPECT_EQ((std::vector<uint32_t>{0xBBD5E1BE, 1, 0, 0xFFFFFFFF}), aryEntries[0].m_aryTracks);
    EXPECT_EQ(1U, aryEntries[1].m_nSum);
    EXPECT_EQ(0, aryEntries[1].m_nConfidence + aryEntries[1].m_nParity + aryEntries[1].m_nStride);
    EXPECT_TRUE(aryEntries[1].m_aryTracks.empty() && aryEntries[1].m_strTOC.empty());
}

TEST(CTDBAnswer, PrefixesMarksAndOtherRootsDoNotMatter)
{
    EXPECT_EQ(1U, Parse("<c:ctdb xmlns:c='urn:x'><c:Entry crc32='1'/></c:ctdb>").size());
    EXPECT_EQ(1U, Parse("\xEF\xBB\xBF \n<ctdb><entry crc32='1'/></ctdb>").size());
    EXPECT_EQ(1U, Parse("<answer><entry crc32='1'/></answer>").size());
}

TEST(CTDBAnswer, ADiscThatIsNotKnownHasNoEntries)
{
    EXPECT_EQ(0U, Parse("<ctdb/>").size());
    EXPECT_EQ(0U, Parse("<ctdb></ctdb>").size());
}

TEST(CTDBAnswer, WhatIsDamagedIsRefusedAsAWhole)
{
    const auto WithEntry = [](const std::string& str)
    { return "<ctdb><entry crc32=\"1\"/><entry crc32=\"2\" " + str + "/></ctdb>"; };
    for (const auto& [strText, strReason] : std::vector<std::pair<std::string, std::string>>{
             {"", "no XML"},
             {"plain text", "no XML"},
             {std::string("<ctdb>\0</ctdb>", 14), "no XML"},
             {"<", "damaged"},
             {"<ctdb><entry crc32=\"1\"/>", "damaged"},
             {"<ctdb><entry crc32=\"1\"></ctdb>", "damaged"},
             {"<html><body>Not found</body></html>", "no entries"},
             {"<ctdb><entry/></ctdb>", "crc32 of its entry 1"},
             {"<ctdb><entry crc32=\"123456789\"/></ctdb>", "crc32 of its entry 1"},
             {"<ctdb><entry crc32=\"0x12\"/></ctdb>", "crc32 of its entry 1"},
             {WithEntry("confidence=\"-1\""), "confidence of its entry 2"},
             {WithEntry("confidence=\"1000001\""), "confidence of its entry 2"},
             {WithEntry("npar=\"8.0\""), "npar of its entry 2"},
             {WithEntry("stride=\"x\""), "stride of its entry 2"},
             {WithEntry("trackcrcs=\"1 2 g\""), "trackcrcs of its entry 2"},
             {WithEntry("trackcrcs=\"1,2\""), "trackcrcs of its entry 2"}})
        EXPECT_NE(std::string::npos, GetReason(strText).find(strReason)) << strText << ": " << GetReason(strText);
}

TEST(CTDBAnswer, LimitsHold)
{
    std::string strMany = "<ctdb>";
    for (size_t i = 0; i < CTDB_MAX_ENTRIES; ++i)
        strMany += "<entry crc32='1'/>";
    EXPECT_EQ(CTDB_MAX_ENTRIES, Parse(strMany + "</ctdb>").size());
    EXPECT_EQ("it has more than 1000 entries", GetReason(strMany + "<entry crc32='1'/></ctdb>"));
    std::string strTracks;
    for (size_t i = 0; i < CTDB_MAX_TRACKS; ++i)
        strTracks += " 1";
    EXPECT_EQ(99U, Parse("<ctdb><entry crc32='1' trackcrcs='" + strTracks + "'/></ctdb>")[0].m_aryTracks.size());
    EXPECT_NE("", GetReason("<ctdb><entry crc32='1' trackcrcs='" + strTracks + " 1'/></ctdb>"));
}

TEST(CTDBVerify, TheSumsAsReadAgreeWithWhatWasSentIn)
{
    const DiscChecksums sums = MakeSums();
    CTDB_ENTRY other = MakeEntry(sums, 50);
    other.m_nSum ^= 1;
    other.m_aryTracks[1] ^= 1;
    const CTDB_VERDICT verdict = VerifyCTDB(sums, {MakeEntry(sums, 7), other, MakeEntry(sums, 2)});
    EXPECT_EQ(3, verdict.m_nEntries);
    EXPECT_EQ(0, verdict.m_nForeignEntries);
    EXPECT_TRUE(verdict.m_Disc.m_bKnown);
    EXPECT_EQ(9, verdict.m_Disc.m_nConfidence);
    EXPECT_EQ(59, verdict.m_Disc.m_nSubmissions);
    ASSERT_EQ(3U, verdict.m_aryTracks.size());
    EXPECT_EQ(59, verdict.m_aryTracks[0].m_nConfidence);
    EXPECT_EQ(9, verdict.m_aryTracks[1].m_nConfidence);
    EXPECT_EQ(59, verdict.m_aryTracks[2].m_nConfidence);
    EXPECT_EQ(2, verdict.m_aryTracks[1].m_nTrack);
    for (const CTDB_PART_VERDICT& track : verdict.m_aryTracks)
        EXPECT_EQ(0, track.m_nOtherOffset);
}

TEST(CTDBVerify, ARipThatCameLateAgreesAtThatOffset)
{
    const std::vector<CTDB_ENTRY> aryTrue = {MakeEntry(MakeSums(), 4)};
    for (const int nLate : {1, 30, 5879, -1, -667})
    {
        const CTDB_VERDICT verdict = VerifyCTDB(MakeSums(nLate), aryTrue);
        EXPECT_EQ(0, verdict.m_Disc.m_nConfidence);
        EXPECT_EQ(nLate, verdict.m_Disc.m_nOtherOffset);
        EXPECT_EQ(4, verdict.m_Disc.m_nOtherConfidence);
        for (const CTDB_PART_VERDICT& track : verdict.m_aryTracks)
            EXPECT_EQ(nLate, track.m_nOtherOffset) << track.m_nTrack;
    }
}

TEST(CTDBVerify, TheOffsetWithMostSubmissionsIsTheOne)
{
    CTDB_ENTRY near = MakeEntry(MakeSums(10), 3);
    const DiscChecksums sums = MakeSums();
    EXPECT_EQ(-10,
              VerifyCTDB(sums, {near, MakeEntry(MakeSums(20), 5), MakeEntry(MakeSums(12), 5)}).m_Disc.m_nOtherOffset +
                  2); // -12: as many as -20, and nearer
}

TEST(CTDBVerify, NothingAgreesWithASumOfZero)
{
    CTDB_ENTRY entry;
    entry.m_nConfidence = 9;
    entry.m_aryTracks = {0, 0, 0};
    DiscChecksums nothing;
    ASSERT_TRUE(nothing.SetLayout(GetLayout()));
    for (const DiscChecksums& sums : {nothing, MakeSums()})
    {
        const CTDB_VERDICT verdict = VerifyCTDB(sums, {entry}, {{0, 0}, {1, 0}});
        EXPECT_EQ(1, verdict.m_nEntries);
        EXPECT_EQ(0, verdict.m_Disc.m_nConfidence + verdict.m_Disc.m_nOtherConfidence);
        EXPECT_EQ(0, verdict.m_Disc.m_nSubmissions);
        for (const CTDB_PART_VERDICT& track : verdict.m_aryTracks)
            EXPECT_EQ(0, track.m_nConfidence + track.m_nOtherConfidence + track.m_nSubmissions);
    }
}

TEST(CTDBVerify, SumsKnownFromElsewhereCountAtOffsetZero)
{
    const CTDB_ENTRY entry = MakeEntry(MakeSums(), 6);
    DiscChecksums nothing;
    ASSERT_TRUE(nothing.SetLayout(GetLayout()));
    const CTDB_VERDICT verdict = VerifyCTDB(nothing, {entry}, {{2, entry.m_aryTracks[1]}, {0, entry.m_nSum}});
    EXPECT_EQ(6, verdict.m_Disc.m_nConfidence);
    EXPECT_FALSE(verdict.m_aryTracks[0].m_bKnown);
    EXPECT_TRUE(verdict.m_aryTracks[1].m_bKnown);
    EXPECT_EQ(6, verdict.m_aryTracks[1].m_nConfidence);
    EXPECT_EQ(6, verdict.m_aryTracks[0].m_nSubmissions);
}

TEST(CTDBVerify, EntriesOfAnotherDiscAreNotLookedAt)
{
    const DiscChecksums sums = MakeSums();
    CTDB_ENTRY foreign = MakeEntry(sums, 6);
    foreign.m_strTOC = "0:30:59:90";
    CTDB_ENTRY fewer = MakeEntry(sums, 6);
    fewer.m_aryTracks.pop_back();
    const CTDB_VERDICT verdict = VerifyCTDB(sums, {foreign, fewer});
    EXPECT_EQ(0, verdict.m_nEntries);
    EXPECT_EQ(2, verdict.m_nForeignEntries);
    EXPECT_EQ(0, verdict.m_Disc.m_nConfidence + verdict.m_Disc.m_nSubmissions);
    EXPECT_EQ(0, VerifyCTDB(DiscChecksums(), {foreign}).m_nForeignEntries); // there is no disc to compare
}

TEST(CTDBVerify, ADiscIsKnownByTheLengthsOfItsTracks)
{
    const CD_LAYOUT layout = GetLayout();
    for (const char* pSame :
         {"2:32:60:92", "0:30:58:90", "152:182:210:242", "", "unreadable", "2", "2:32:60:92:", "2::"})
        EXPECT_TRUE(IsSameCTDBTOC(pSame, layout)) << pSame;
    for (const char* pOther : {"2:32:92", "2:32:60:93", "2:33:60:92", "2:32:-60:92", "2:32:60:80:92", "2:92"})
        EXPECT_FALSE(IsSameCTDBTOC(pOther, layout)) << pOther;
    CD_LAYOUT enhanced;
    enhanced.Add(0);
    enhanced.Add(20000, true);
    enhanced.Finish(30000);
    EXPECT_TRUE(IsSameCTDBTOC("0:-20000:30000", enhanced));
    EXPECT_FALSE(IsSameCTDBTOC("0:20000:30000", enhanced));
}

TEST(CTDBVerify, TheMostParityIsTold)
{
    const DiscChecksums sums = MakeSums();
    CTDB_ENTRY one = MakeEntry(sums, 1);
    CTDB_ENTRY two = one;
    one.m_nParity = 8;
    two.m_nParity = 16;
    EXPECT_EQ(16, VerifyCTDB(sums, {one, two}).m_nParity);
}
