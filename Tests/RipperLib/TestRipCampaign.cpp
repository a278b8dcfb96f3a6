// Whole rips on drives with random faults (FaultyDrive.h): every sector that is delivered is right, or is named in the
// log.

#include "FaultyDrive.h"
#include "ProfiledRip.h"
#include <atomic>
#include <cstdio>
#include <memory>

namespace
{
struct TALLY
{
    std::atomic<int> m_nWhole{0}; // drives whose disc came without a doubt
    std::atomic<int> m_nWrong{0}; // sectors, as the three that follow
    std::atomic<int> m_nNamed{0};
    std::atomic<int> m_nReReads{0};
};

void RipOne(ProfiledRip& rip, int nSeed, TALLY& tally)
{
    const FAULTY_DRIVE drive = FaultyDriveMaker(static_cast<unsigned int>(nSeed), ProfiledRip::SECTORS).Make();
    const std::string strWhich = "seed " + std::to_string(nSeed) + "\n" + drive.m_strProfile;
    CCDRipper ripper;
    ASSERT_EQ(0, rip.Open(ripper, drive.m_strProfile)) << strWhich;
    RipJob job(ripper);
    RIP_OPTIONS options;
    options.m_nCacheSectors = drive.m_nCacheSectors;
    const std::vector<int> aryPost = rip.Run(job, ripper, options);
    ASSERT_EQ(4U, aryPost.size()) << strWhich;
    const SecureRipLog& log = job.GetLog();
    const bool bFinished = aryPost[0] == CDRIPPER_RIP_FINISHED;
    EXPECT_EQ(0, rip.CountBelievedWrong(log)) << strWhich << log.GetText();
    EXPECT_EQ(bFinished, rip.GetDelivered() == ProfiledRip::SECTORS) << strWhich;
    EXPECT_EQ(bFinished, job.GetEnd() == RIP_END_WHOLE) << strWhich;
    EXPECT_TRUE(!drive.m_bCalm || log.GetSize() == 0) << strWhich << log.GetText();
    tally.m_nWhole += log.CountBadSectors() == 0 && bFinished ? 1 : 0;
    tally.m_nNamed += log.CountBadSectors();
    tally.m_nWrong += rip.CountWrong();
    tally.m_nReReads += log.GetReReads();
}
} // namespace

TEST(RipCampaign, EverySectorIsRightOrNamed)
{
    constexpr int THREADS = 16;
    const int nSeeds = GetCampaignSeeds();
    ProfiledRip::UseBuiltService();
    TALLY tally;
    RunCampaign(THREADS,
                [&] { return [&, pRip = std::make_unique<ProfiledRip>()](int n) { RipOne(*pRip, n, tally); }; });
    std::printf("%d drives: %d whole, %d sectors wrong, %d named, %d re-reads\n", nSeeds, tally.m_nWhole.load(),
                tally.m_nWrong.load(), tally.m_nNamed.load(), tally.m_nReReads.load());
    // The campaign has met something.
    if (nSeeds >= CAMPAIGN_SEEDS)
    {
        EXPECT_GT(tally.m_nWhole, nSeeds / 10);
        EXPECT_GT(tally.m_nWrong, nSeeds / 2);
        EXPECT_GT(tally.m_nReReads, nSeeds);
    }
}
