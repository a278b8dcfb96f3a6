// A drive that keeps wrong bytes in its cache and serves them again: what two reads that are alike are worth.

#include "ProfiledRip.h"
#include "Thinning.h"

namespace
{
// A cache of 100 sectors, and wrong bytes in a hundredth of all sectors, others after each read of the disc.
constexpr int CACHE_SECTORS = 100;
const std::string LIAR = "Buffer = 230\nSeed = 11\nSilentErrors = 0-999, 8, 1%\n";

class LyingDriveTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ProfiledRip::UseBuiltService(); }
    void Run(const std::string& strProfile, int nCacheSectors)
    {
        CCDRipper ripper;
        ASSERT_EQ(0, m_Rip.Open(ripper, strProfile));
        RipJob job(ripper);
        RIP_OPTIONS options;
        options.m_nCacheSectors = nCacheSectors;
        ASSERT_EQ((std::vector<int>{CDRIPPER_RIP_FINISHED, 0, 0, 0}), m_Rip.Run(job, ripper, options));
        ASSERT_EQ(ProfiledRip::SECTORS, m_Rip.GetDelivered());
        m_nCacheSectors = job.GetCacheSectors();
        m_nBelievedWrong = m_Rip.CountBelievedWrong(job.GetLog());
        m_nLogged = job.GetLog().GetSize();
        m_bAccurate = job.GetAccurateStream();
    }
    ProfiledRip m_Rip;
    int m_nCacheSectors = 0;
    int m_nBelievedWrong = 0;
    int m_nLogged = 0;
    bool m_bAccurate = false;
};
} // namespace

TEST_F(LyingDriveTest, WithoutItsCacheBeingKnownItIsBelieved)
{
    Run(LIAR, 0);
    EXPECT_GT(m_nBelievedWrong, 0);
    EXPECT_EQ(0, m_nLogged); // every comparison was of a read with itself
}

TEST_F(LyingDriveTest, WithItsCacheKnownItIsUnmasked)
{
    Run(LIAR, CACHE_SECTORS);
    EXPECT_EQ(0, m_nBelievedWrong);
    EXPECT_GT(m_nLogged, 0);
}

TEST_F(LyingDriveTest, OfADriveThatWasNotMeasuredTheBufferItDeclaresIsEnough)
{
    Run(LIAR, RIP_OPTIONS::CACHE_AS_MEASURED);
    EXPECT_EQ((230 * 1024 + LY_CD_SECTOR_BYTES - 1) / LY_CD_SECTOR_BYTES, m_nCacheSectors);
    EXPECT_EQ(0, m_nBelievedWrong);
}

// From the measurement to the rip, as a user does it. The disc is slow, so that the cache can be told from it.
TEST_F(LyingDriveTest, ItsMeasuredCacheUnmasksIt)
{
    CCDRipper ripper;
    ASSERT_EQ(0, m_Rip.Open(ripper, LIAR + "Cache = 120\nSeek = 200\nSpeed = 300\n", true));
    RipJob job(ripper);
    ASSERT_EQ((std::vector<int>{CDRIPPER_RIP_FINISHED, 0, 0, 0}), m_Rip.Run(job, ripper, RIP_OPTIONS()));
    EXPECT_EQ(120 * 1024 / LY_CD_SECTOR_BYTES, job.GetCacheSectors());
    EXPECT_EQ(0, m_Rip.CountBelievedWrong(job.GetLog()));
    EXPECT_GT(job.GetLog().GetReReads(), 0);
}

TEST_F(LyingDriveTest, EverySizeOfCacheUpToTheDiscIsDefeated)
{
    for (int nKiB = 4; nKiB < 2000; nKiB += Thinning::Some(131, 499))
    {
        Run("Buffer = " + std::to_string(nKiB) + "\nSilentErrors = 0-999, 8, 1%\n", nKiB * 1024 / LY_CD_SECTOR_BYTES);
        EXPECT_EQ(0, m_nBelievedWrong) << nKiB;
    }
}

TEST_F(LyingDriveTest, ADriveWithoutAnAccurateStreamSaysSo)
{
    Run("Buffer = 64\n", 27);
    EXPECT_TRUE(m_bAccurate);
    Run("Buffer = 64\nJitter = 0-999, 400\n", 27);
    EXPECT_FALSE(m_bAccurate);
}
