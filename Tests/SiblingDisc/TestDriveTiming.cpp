#include "DriveTiming.h"
#include "ModePages.h"
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace
{
DriveTiming Make(int nSeekMs, int nSpeed, int nSpinUpMs = 0, int nSpinDownAfterMs = 0)
{
    DRIVE_PROFILE profile;
    profile.m_nLatencyMs = 3;
    profile.m_nSeekMs = nSeekMs;
    profile.m_nSpeed = nSpeed;
    profile.m_nSpinUpMs = nSpinUpMs;
    profile.m_nSpinDownAfterMs = nSpinDownAfterMs;
    DriveTiming timing;
    timing.Reset(profile);
    return timing;
}
} // namespace

TEST(DriveTiming, ATransferTakesItsSectorsAtTheSpeedSet)
{
    DriveTiming timing = Make(0, 10);
    EXPECT_EQ(3ms, timing.GetLatency());
    EXPECT_EQ(1760U, timing.GetSpeed());
    EXPECT_EQ(100ms, timing.ReadFromDisc(0, 75)); // a second of audio at ten times the speed of playing
    timing.SetSpeed(176);
    EXPECT_EQ(1s, timing.ReadFromDisc(0, 75));
    timing.SetSpeed(0xFFFF);
    EXPECT_EQ(1760U, timing.GetSpeed());
    timing.SetSpeed(0);
    EXPECT_EQ(176U, timing.GetSpeed()); // slower than playing no drive turns
}

TEST(DriveTiming, WithoutASpeedSectorsTakeNoTime)
{
    DriveTiming timing = Make(0, 0);
    EXPECT_EQ(IMAGE_DRIVE_MAX_SPEED, timing.GetSpeed());
    EXPECT_EQ(0s, timing.ReadFromDisc(100, 10000));
}

TEST(DriveTiming, ASeekIsScaledByItsDistanceButNeverBelowATenth)
{
    DriveTiming timing = Make(1000, 0);
    EXPECT_EQ(0s, timing.ReadFromDisc(0, 27));
    EXPECT_EQ(0s, timing.ReadFromDisc(27, 27)); // the head is there
    EXPECT_EQ(100ms, timing.ReadFromDisc(55, 1));
    timing.MoveHead(0);
    EXPECT_EQ(500ms, timing.ReadFromDisc(180000, 0)); // half of 80 minutes
    EXPECT_EQ(500ms, timing.ReadFromDisc(0, 0));
    EXPECT_EQ(1s, timing.ReadFromDisc(449000, 0)); // never more than the whole
}

TEST(DriveTiming, TheDiscSpinsUpAfterStandingStill)
{
    DriveTiming timing = Make(0, 0, 2000, 500);
    const DriveTiming::CLOCK::time_point start = DriveTiming::CLOCK::now();
    bool bSpinUp = false;
    EXPECT_EQ(2s, timing.SpinUp(start, bSpinUp));
    EXPECT_TRUE(bSpinUp);
    timing.SetLastUse(start + 2s);
    EXPECT_EQ(0s, timing.SpinUp(start + 2500ms, bSpinUp));
    EXPECT_FALSE(bSpinUp);
    EXPECT_EQ(2s, timing.SpinUp(start + 2501ms, bSpinUp));
    timing.SetLastUse(start + 5s);
    timing.StandStill();
    EXPECT_EQ(2s, timing.SpinUp(start + 5s, bSpinUp));
}

TEST(DriveTiming, SectorsPassUnderTheHeadOnlyWhileTheDiscTurns)
{
    DriveTiming timing = Make(0, 1);
    EXPECT_EQ(0, timing.GetSectorsIn(1s, 1000));
    bool bSpinUp = false;
    (void)timing.SpinUp({}, bSpinUp);
    EXPECT_EQ(75, timing.GetSectorsIn(1s, 1000));
    EXPECT_EQ(50, timing.GetSectorsIn(1s, 50));
    EXPECT_EQ(0, timing.GetSectorsIn(1ms, 1000));
}
