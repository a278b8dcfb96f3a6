// Whole rips on drives with random faults: every sector that is delivered is right, or is named in the log.
//
// RONDEL_CAMPAIGN_SEEDS sets how many drives there are (50 without it; the long form takes 2000), and
// RONDEL_CAMPAIGN_FIRST the first seed, to repeat one.

#include "ProfiledRip.h"
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>

namespace
{
constexpr int DEFAULT_SEEDS = 50;

int GetNumber(const char* pVariable, int nDefault)
{
    const char* pValue = std::getenv(pVariable);
    return pValue != nullptr && std::atoi(pValue) > 0 ? std::atoi(pValue) : nDefault;
}

class Dice
{
public:
    explicit Dice(unsigned int nSeed) : m_Engine(nSeed) {}
    int Below(int nLimit) { return static_cast<int>(m_Engine() % static_cast<unsigned int>(nLimit)); }
    bool OneIn(int n) { return Below(n) == 0; }

private:
    std::mt19937 m_Engine;
};

struct DRIVE
{
    std::string m_strProfile;
    int m_nCacheSectors = 0;
    bool m_bCalm = true; // nothing is wrong with it
};

std::string GetRange(Dice& dice, int nMost)
{
    const int nFirst = dice.Below(ProfiledRip::SECTORS - nMost);
    return std::to_string(nFirst) + "-" + std::to_string(nFirst + dice.Below(nMost));
}

void AddFaults(Dice& dice, std::string& strProfile)
{
    for (int n = dice.Below(3); n > 0; --n)
        strProfile += "Unreadable = " + GetRange(dice, 4) +
                      (dice.OneIn(3)   ? ""
                       : dice.OneIn(2) ? ", every " + std::to_string(2 + dice.Below(3))
                                       : ", 50%") +
                      "\n";
    for (int n = dice.Below(2); n > 0; --n)
        strProfile += "Differs = " + GetRange(dice, 10) + "\n";
    // Four wrong bytes at least: two reads with the same single wrong byte are alike, and nobody can tell.
    for (int n = dice.Below(4); n > 0; --n)
        strProfile += "SilentErrors = " + GetRange(dice, 60) + ", " + std::to_string(4 + dice.Below(50)) + ", " +
                      std::to_string(1 + dice.Below(60)) + "%\n";
    if (dice.OneIn(4))
        strProfile += "FailRate = read 1%, 4/44/00\n";
    if (dice.OneIn(4))
        strProfile += "UnitAttention = read " + std::to_string(1 + dice.Below(80)) +
                      (dice.OneIn(2) ? ", 6/29/00\n" : ", 6/28/00, 3\n");
    if (dice.OneIn(8))
        strProfile += "Remove = read " + std::to_string(1 + dice.Below(80)) + "\n";
}

DRIVE MakeDrive(unsigned int nSeed)
{
    Dice dice(nSeed);
    DRIVE drive;
    const int nKiB = dice.OneIn(4) ? 0 : 8 + dice.Below(700);
    drive.m_nCacheSectors = nKiB * 1024 / LY_CD_SECTOR_BYTES;
    drive.m_strProfile = "Seed = " + std::to_string(nSeed) + "\nBuffer = " + std::to_string(nKiB) + "\n";
    if (dice.OneIn(3))
        drive.m_strProfile += "ReadAhead = " + std::to_string(1 + dice.Below(60)) + "\n";
    const std::string strCalm = drive.m_strProfile;
    if (!dice.OneIn(6))
        AddFaults(dice, drive.m_strProfile);
    drive.m_bCalm = drive.m_strProfile == strCalm;
    return drive;
}

struct TALLY
{
    std::atomic<int> m_nWhole{0}; // drives whose disc came without a doubt
    std::atomic<int> m_nWrong{0}; // sectors, as the three that follow
    std::atomic<int> m_nNamed{0};
    std::atomic<int> m_nReReads{0};
};

void RipOne(ProfiledRip& rip, int nSeed, TALLY& tally)
{
    const DRIVE drive = MakeDrive(static_cast<unsigned int>(nSeed));
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

// Many at a time: a drive that fails mostly sleeps.
TEST(RipCampaign, EverySectorIsRightOrNamed)
{
    constexpr int THREADS = 16;
    const int nFirst = GetNumber("RONDEL_CAMPAIGN_FIRST", 1);
    const int nSeeds = GetNumber("RONDEL_CAMPAIGN_SEEDS", DEFAULT_SEEDS);
    ProfiledRip::UseBuiltService();
    TALLY tally;
    std::atomic<int> nNext{nFirst};
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < THREADS; ++i)
        aryThreads.emplace_back(
            [&]
            {
                ProfiledRip rip;
                for (int nSeed = nNext++; nSeed < nFirst + nSeeds; nSeed = nNext++)
                    RipOne(rip, nSeed, tally);
            });
    for (std::thread& thread : aryThreads)
        thread.join();
    std::printf("%d drives: %d whole, %d sectors wrong, %d named, %d re-reads\n", nSeeds, tally.m_nWhole.load(),
                tally.m_nWrong.load(), tally.m_nNamed.load(), tally.m_nReReads.load());
    // The campaign has met something.
    if (nSeeds >= DEFAULT_SEEDS)
    {
        EXPECT_GT(tally.m_nWhole, nSeeds / 10);
        EXPECT_GT(tally.m_nWrong, nSeeds / 2);
        EXPECT_GT(tally.m_nReReads, nSeeds);
    }
}
