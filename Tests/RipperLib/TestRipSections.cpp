// What there is to rip on a disc.

#include "RipJobTest.h"
#include "RipSections.h"

namespace
{
class RipSectionsTest : public RipJobTest
{
protected:
    std::vector<std::vector<int>> GetSections() const
    {
        std::vector<std::vector<int>> ary;
        for (int i = 0; i < m_List.GetSize(); ++i)
            ary.push_back({m_List.GetTrackNum(i), m_List.GetStartSector(i), m_List.GetNumSectors(i)});
        return ary;
    }
    CSCSICD& GetCD() { return *m_Ripper.m_pReader->m_pCD; }
};
} // namespace

TEST_F(RipSectionsTest, TracksAreTheAudioTracksOfTheDisc)
{
    Open();
    EXPECT_TRUE(AddTrackSection(m_List, GetCD(), 5));
    EXPECT_TRUE(AddTrackSection(m_List, GetCD(), 1));
    for (const int nTrack : {13, 0, -1, 14, 256 + 5, 100}) // 13 is data
        EXPECT_FALSE(AddTrackSection(m_List, GetCD(), nTrack)) << nTrack;
    EXPECT_EQ((std::vector<std::vector<int>>{{5, 4000, 1000}, {1, 0, 1000}}), GetSections());
    EXPECT_FALSE(AddHiddenSection(m_List, GetCD())); // track 1 starts at 0
    m_List.RemoveAll(true);
    EXPECT_TRUE(AddDiscSections(m_List, GetCD()));
    EXPECT_EQ(12, m_List.GetSize());
    EXPECT_EQ(12000, m_List.GetTotalSectors(0));
}

TEST_F(RipSectionsTest, HiddenAudioLiesAheadOfTrackOne)
{
    const FAKE_TRACK aryTracks[] = {{1, 500, 0}, {2, 700, 0}};
    m_pFake->LoadDisc(aryTracks, 2, 900);
    Open();
    EXPECT_TRUE(AddHiddenSection(m_List, GetCD()));
    EXPECT_TRUE(AddRangeSections(m_List, GetCD(), 450, 300));
    EXPECT_EQ((std::vector<std::vector<int>>{{0, 0, 500}, {0, 450, 50}, {1, 500, 200}, {2, 700, 50}}), GetSections());
    EXPECT_FALSE(AddRangeSections(m_List, GetCD(), 800, 101));
    EXPECT_FALSE(AddRangeSections(m_List, GetCD(), -1, 10));
    EXPECT_FALSE(AddRangeSections(m_List, GetCD(), 0, 0));
    EXPECT_FALSE(AddRangeSections(m_List, GetCD(), 0x7FFFFFFF, 0x7FFFFFFF));
    EXPECT_EQ(4, m_List.GetSize());
    RipJob job(m_Ripper);
    EXPECT_EQ(FINISHED, Run(job));
    EXPECT_EQ(800, GetDelivered());
}

TEST_F(RipSectionsTest, ARangeDoesNotGoOverData)
{
    const FAKE_TRACK aryTracks[] = {{1, 0, TRACK_CONTROL_DATA}, {2, 700, 0}};
    m_pFake->LoadDisc(aryTracks, 2, 900);
    Open();
    EXPECT_FALSE(AddHiddenSection(m_List, GetCD()));
    EXPECT_FALSE(AddRangeSections(m_List, GetCD(), 690, 20));
    EXPECT_TRUE(AddRangeSections(m_List, GetCD(), 700, 200));
    EXPECT_FALSE(AddTrackSection(m_List, GetCD(), 1));
    EXPECT_EQ((std::vector<std::vector<int>>{{2, 700, 200}}), GetSections());
}
