// What a player hears of drives that misbehave in the middle of a track: the built plug-in on the built disc service.

#include "PluginAsPlayer.h"
#include "ServiceFolder.h"
#include <chrono>
#include <climits>
#include <memory>

using namespace std::chrono_literals;

namespace
{
constexpr int TRACK_SECTORS = 1200;
constexpr int GOOD_READS = 19;
constexpr int GOOD_SECTORS = GOOD_READS * LY_CD_MAX_READ_SECTORS; // 513
constexpr unsigned int KEY_UNIT_ATTENTION = 6;

class DriveBehaviourPlay : public ::testing::Test
{
protected:
    using CLOCK = std::chrono::steady_clock;

    // One player for all tests: it settles once where its libraries lie.
    static void SetUpTestSuite()
    {
        const ServiceFolder folder;
        s_pPlugin = std::make_unique<PlayerPlugin>();
        ASSERT_TRUE(s_pPlugin->Attach());
    }
    static void TearDownTestSuite()
    {
        s_pPlugin->Detach();
        s_pPlugin.reset();
    }
    void SetUp() override { m_Disc = m_Folder.WriteDisc("disc", MakePatternSectors(0, TRACK_SECTORS)); }

    // Plays the track to its end, and closes it.
    std::string Play(const std::string& strProfile)
    {
        ServiceFolder::WriteProfile(m_Disc, strProfile);
        PlayerSource source = s_pPlugin->GetSource();
        if (source.Open(m_Disc, 1) != 0)
            return "did not open";
        const CLOCK::time_point start = CLOCK::now();
        std::string strPlayed = source.Pull(LLONG_MAX);
        m_Took = CLOCK::now() - start;
        m_aryEvidence = ReadEvidence(m_Disc);
        return strPlayed;
    }
    static std::string Whole() { return MakePattern(0, GetPlayedBytes(TRACK_SECTORS)); }
    // The first nSectors of the track, then silence to its end.
    static std::string SilentFrom(int nSectors)
    {
        std::string strBytes = MakePatternSectors(0, nSectors);
        strBytes.resize(static_cast<size_t>(GetPlayedBytes(TRACK_SECTORS)));
        return strBytes;
    }
    long long CountFailedReads(int nKey) const
    {
        return std::count_if(m_aryEvidence.begin(), m_aryEvidence.end(),
                             [nKey](const DISC_EVIDENCE& record) {
                                 return record.m_nOpcode == CDB_READ_CD && !record.m_bGood &&
                                        record.m_nSenseKey == nKey;
                             });
    }

    ServiceFolder m_Folder;
    std::filesystem::path m_Disc;
    static inline std::unique_ptr<PlayerPlugin> s_pPlugin;
    CLOCK::duration m_Took{};
    std::vector<DISC_EVIDENCE> m_aryEvidence;
};
} // namespace

TEST_F(DriveBehaviourPlay, ADriveInOrderPlaysTheWholeTrack)
{
    EXPECT_TRUE(SameBytes(Whole(), Play("Vendor = ACME\nBuffer = 128\nLatency = 1\nSeek = 20\nSpinUp = 50\n")));
}

TEST_F(DriveBehaviourPlay, AHangOfMoreThanTenSecondsEndsTheTrackBehindWhatWasRead)
{
    // Nothing of the twentieth read comes within its time-out of ten seconds, and the reading side gives up then. That
    // the second attempt hangs, too, leaves no doubt which of the two ends first.
    EXPECT_TRUE(
        SameBytes(MakePattern(0, GetPlayedBytes(GOOD_SECTORS)), Play("Hang = read 20, 60\nHang = read 21, 60\n")));
    EXPECT_GE(m_Took, 10s);
    EXPECT_LT(m_Took, 60s); // nobody waited for the end of the hang
}

TEST_F(DriveBehaviourPlay, AShortHangIsNotHeard)
{
    EXPECT_TRUE(SameBytes(Whole(), Play("Hang = read 20, 1.5\n")));
    EXPECT_GE(m_Took, 1500ms);
}

TEST_F(DriveBehaviourPlay, ADriveThatIsUnpluggedPlaysSilenceToTheEndOfTheTrack)
{
    EXPECT_TRUE(SameBytes(SilentFrom(GOOD_SECTORS), Play("Remove = read 20\n")));
    EXPECT_GT(CountFailedReads(4), 0);
    EXPECT_TRUE(SameBytes(Whole(), Play(""))); // plugged in again
}

TEST_F(DriveBehaviourPlay, ADriveThatIsUnpluggedAtTheFirstCommandGivesAFewSectorsOfSilence)
{
    const std::string strPlayed = Play("Remove = 1\n");
    EXPECT_TRUE(SameBytes(std::string(strPlayed.size(), '\0'), strPlayed));
    EXPECT_EQ(static_cast<size_t>(GetPlayedBytes(16)), strPlayed.size()); // the error code counts as sectors
}

TEST_F(DriveBehaviourPlay, AChangedDiscIsNoticedByOneUnitAttentionAndPlaysOn)
{
    const std::string strOther = MakePatternSectors(100000, TRACK_SECTORS);
    (void)m_Folder.WriteDisc("other", strOther);
    const std::string strWanted =
        (MakePatternSectors(0, GOOD_SECTORS) + strOther.substr(static_cast<size_t>(GOOD_SECTORS) * LY_CD_SECTOR_BYTES))
            .substr(0, static_cast<size_t>(GetPlayedBytes(TRACK_SECTORS)));
    EXPECT_TRUE(SameBytes(strWanted, Play("ChangeDisc = read 20, other.cue\n")));
    EXPECT_EQ(1, CountFailedReads(KEY_UNIT_ATTENTION));
}

TEST_F(DriveBehaviourPlay, AShorterDiscPlaysAsFarAsItGoes)
{
    (void)m_Folder.WriteDisc("other", MakePatternSectors(0, 27 * 25));
    EXPECT_TRUE(SameBytes(SilentFrom(27 * 25), Play("ChangeDisc = read 20, other.cue\n")));
    EXPECT_GT(CountFailedReads(5), 0);
}

TEST_F(DriveBehaviourPlay, UnitAttentionInTheMiddleIsNotHeard)
{
    EXPECT_TRUE(SameBytes(Whole(), Play("UnitAttention = read 20, 6/29/00, 4\n")));
    EXPECT_EQ(4, CountFailedReads(KEY_UNIT_ATTENTION));
}

TEST_F(DriveBehaviourPlay, AnUnreadableSectorSilencesTheReadThatHoldsIt)
{
    std::string strWanted = Whole();
    std::fill_n(strWanted.begin() + 27LL * 10 * LY_CD_SECTOR_BYTES, 27 * LY_CD_SECTOR_BYTES, '\0');
    EXPECT_TRUE(SameBytes(strWanted, Play("Unreadable = 280\n")));
    EXPECT_EQ(2, CountFailedReads(3));
}

TEST_F(DriveBehaviourPlay, ASectorThatReadsTheSecondTimeIsNotHeard)
{
    // Each of the two stretches lies in one read, the first of its kind.
    EXPECT_TRUE(SameBytes(Whole(), Play("Unreadable = 279-290, every 2\nUnreadable = 310-320, every 2\n")));
    EXPECT_EQ(0, CountFailedReads(3));
    EXPECT_TRUE(
        SameBytes(Whole(), Play("Unreadable = 290-300, every 2\n"))); // 290 to 296 in one read, the rest after it
    EXPECT_EQ(1, CountFailedReads(3));
}
