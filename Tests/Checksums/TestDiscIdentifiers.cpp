#include "DiscIdentifiers.h"
#include "PlainSums.h"
#include <gtest/gtest.h>

namespace
{
const std::vector<int> s_aryFifteen = {33,     5225,   7390,   23380,  35608,  49820,  69508, 87733,
                                       106333, 139495, 157863, 198495, 213368, 225320, 234103};

CD_LAYOUT MixedLayout(const std::vector<std::pair<int, bool>>& aryTracks, int nLeadOut)
{
    CD_LAYOUT layout;
    for (const auto& [nStart, bData] : aryTracks)
        layout.Add(nStart, bData);
    layout.Finish(nLeadOut);
    return layout;
}
} // namespace

TEST(DiscIdentifiers, HaveThePublishedValues)
{
    EXPECT_EQ("001b9178-014be24e-b40d2d0f", GetAccurateRipText(MakeLayout(s_aryFifteen, 253038)));
    EXPECT_EQ("0008100c-001ac008-190dcc03", GetAccurateRipText(MakeLayout({32, 96985, 166422}, 264957)));
}

TEST(DiscIdentifiers, PathBeginsWithTheLowestDigits)
{
    EXPECT_EQ("/accuraterip/8/7/1/dBAR-015-001b9178-014be24e-b40d2d0f.bin",
              GetAccurateRipPath(MakeLayout(s_aryFifteen, 253038)));
}

TEST(DiscIdentifiers, AStartAtZeroCountsAsOneInTheSecondSum)
{
    const ACCURATERIP_ID id = GetAccurateRipID(MakeLayout({0, 1000}, 3000));
    EXPECT_EQ(2, id.m_nTracks);
    EXPECT_EQ(4000U, id.m_nID1);
    EXPECT_EQ(1U + 2000U + 9000U, id.m_nID2);
    // 2 and 15 seconds: digits 2 + 1 + 5; 42 - 2 seconds; two tracks.
    EXPECT_EQ(0x08002802U, id.m_nCDDB);
}

TEST(DiscIdentifiers, DataTracksCountForTheCDDBIdentifierOnly)
{
    const ACCURATERIP_ID id = GetAccurateRipID(MixedLayout({{0, false}, {1000, false}, {20000, true}}, 30000));
    EXPECT_EQ(2, id.m_nTracks);
    EXPECT_EQ(31000U, id.m_nID1);
    EXPECT_EQ(1U + 2000U + 90000U, id.m_nID2);
    EXPECT_EQ(3U, id.m_nCDDB & 0xFF);
    // Audio tracks are counted from 1, behind a data track as well.
    EXPECT_EQ(1000U + 60000U, GetAccurateRipID(MixedLayout({{0, true}, {1000, false}}, 30000)).m_nID2);
}

TEST(DiscIdentifiers, MusicBrainzHasThePublishedValue)
{
    // The example of MusicBrainz' description: offsets with the 150 sectors of the pause.
    const CD_LAYOUT layout =
        MakeLayout({150 - 150, 15363 - 150, 32314 - 150, 46592 - 150, 63414 - 150, 80489 - 150}, 95462 - 150);
    EXPECT_EQ("49HHV7Eb8UKF3aQiNmu1GR8vKTY-", GetMusicBrainzID(layout));
}

TEST(DiscIdentifiers, MusicBrainzLeavesOutDataAtTheEnd)
{
    const CD_LAYOUT enhanced = MixedLayout({{0, false}, {15000, false}, {80000, true}}, 100000);
    EXPECT_EQ(GetMusicBrainzID(MakeLayout({0, 15000}, 80000 - CD_SESSION_GAP_SECTORS)), GetMusicBrainzID(enhanced));
    EXPECT_NE(GetMusicBrainzID(MakeLayout({0, 15000}, 80000)), GetMusicBrainzID(enhanced));
}

TEST(DiscIdentifiers, CTDBNamesStartsAndMarksData)
{
    EXPECT_EQ("32:96985:166422:264957", GetCTDBText(MakeLayout({32, 96985, 166422}, 264957)));
    const CD_LAYOUT layout = MixedLayout({{0, false}, {20000, true}}, 30000);
    EXPECT_EQ("0:-20000:30000", GetCTDBText(layout));
    EXPECT_EQ("lookup2.php?version=3&ctdb=1&fuzzy=1&metadata=none&toc=0:-20000:30000", GetCTDBQuery(layout));
}

TEST(DiscIdentifiers, ALayoutThatIsNotValidHasNone)
{
    const CD_LAYOUT layout = MakeLayout({10, 5}, 20);
    EXPECT_EQ(ACCURATERIP_ID(), GetAccurateRipID(layout));
    EXPECT_EQ(0U, GetCDDBID(layout));
    EXPECT_TRUE(GetAccurateRipText(layout).empty() && GetAccurateRipPath(layout).empty());
    EXPECT_TRUE(GetCDDBText(layout).empty() && GetMusicBrainzID(layout).empty());
    EXPECT_TRUE(GetCTDBText(layout).empty() && GetCTDBQuery(layout).empty());
}

TEST(CDLayout, EndsFollowFromStarts)
{
    const CD_LAYOUT layout = MixedLayout({{0, true}, {100, false}, {20000, false}, {40000, true}}, 50000);
    const int aryEnds[] = {100, 20000, 40000 - CD_SESSION_GAP_SECTORS, 50000};
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(aryEnds[i], layout.m_aryTracks[i].m_nEnd) << i;
    EXPECT_EQ(1, layout.GetFirstAudio());
    EXPECT_EQ(2, layout.GetLastAudio());
    EXPECT_EQ(2, layout.CountAudioTracks());
    EXPECT_TRUE(layout.IsAudioContiguous() && layout.HasTrailingData() && layout.IsValid());
    EXPECT_EQ(3, layout.FindTrack(4));
    EXPECT_EQ(-1, layout.FindTrack(5));
    // Too short to hold a session's gap: the same session.
    EXPECT_EQ(11400, MixedLayout({{0, false}, {11400, true}}, 20000).m_aryTracks[0].m_nEnd);
    EXPECT_FALSE(MixedLayout({{0, false}, {100, true}, {200, false}}, 300).IsAudioContiguous());
    EXPECT_EQ(-1, MixedLayout({{0, true}}, 9).GetFirstAudio());
    EXPECT_EQ(-1, MixedLayout({{0, true}}, 9).GetLastAudio());
}

TEST(CDLayout, RefusesWhatNoDiscIs)
{
    std::vector<int> aryMany(100);
    for (int i = 0; i < 100; ++i)
        aryMany[static_cast<size_t>(i)] = i;
    const struct
    {
        const char* m_pName;
        CD_LAYOUT m_Layout;
        bool m_bValid;
    } aryRows[] = {
        {"NoTrack", MakeLayout({}, 100), false},
        {"OneSector", MakeLayout({0}, 1), true},
        {"EmptyTrack", MakeLayout({5}, 5), false},
        {"Descending", MakeLayout({10, 5}, 20), false},
        {"Negative", MakeLayout({-1}, 20), false},
        {"HundredTracks", MakeLayout(aryMany, 200), false},
        {"LastAddress", MakeLayout({0}, 449850), true},
        {"BeyondTheLastAddress", MakeLayout({0}, 449851), false},
        {"Huge", MakeLayout({-2147483647 - 1, 2147483647}, 2147483647), false},
    };
    for (const auto& row : aryRows)
        EXPECT_EQ(row.m_bValid, row.m_Layout.IsValid()) << row.m_pName;
    CD_LAYOUT layout = MakeLayout({0, 10}, 20);
    layout.m_aryTracks[1].m_nNumber = 3;
    EXPECT_FALSE(layout.IsValid());
    layout.m_aryTracks[0].m_nNumber = 2; // a disc may begin with any number
    EXPECT_TRUE(layout.IsValid());
    layout.m_aryTracks[0].m_nNumber = 99;
    layout.m_aryTracks[1].m_nNumber = 100;
    EXPECT_FALSE(layout.IsValid());
}
