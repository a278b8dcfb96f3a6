// A rip holds the machine awake from its start to its end.

#include "CDRipper.h"
#include "SystemPowerManagerEntry.h"
#include "Tools/FakeTools.h"
#include <gtest/gtest.h>

namespace
{
constexpr long long ENTRY = 0x0000000200000007LL; // the halves 7 and 2
constexpr long long NO_ENTRY = 0x0000000200000000LL;
} // namespace

TEST(SystemPowerManagerEntry, HoldsNothingByDefaultOrWithoutTheService)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    {
        const CSystemPowerManagerEntry nothing;
        EXPECT_EQ(0, nothing.m_nFirst);
        EXPECT_EQ(0, nothing.m_nSecond);
    }
    tools->SetServiceThere(FAKE_POWER_MANAGER, false);
    {
        const CSystemPowerManagerEntry entry(L"name");
    }
    EXPECT_EQ(0, tools->GetCount(FAKE_COUNT_POWER_ACQUIRE));
    EXPECT_EQ(0, tools->GetCount(FAKE_COUNT_POWER_RELEASE));
}

TEST(SystemPowerManagerEntry, GivesBackBothHalvesOfWhatItAcquired)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetPowerEntry(ENTRY);
    {
        const CSystemPowerManagerEntry entry(L"name");
        EXPECT_EQ(7, entry.m_nFirst);
        EXPECT_EQ(2, entry.m_nSecond);
        EXPECT_STREQ(L"name", tools->GetLastPowerName());
        EXPECT_EQ(0, tools->GetCount(FAKE_COUNT_POWER_RELEASE));
    }
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_POWER_RELEASE));
    EXPECT_EQ(ENTRY, tools->GetLastReleasedEntry());
}

TEST(SystemPowerManagerEntry, AnEntryWhoseFirstHalfIsZeroIsNotGivenBack)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetPowerEntry(NO_ENTRY);
    {
        const CSystemPowerManagerEntry entry(L"name");
    }
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_POWER_ACQUIRE));
    EXPECT_EQ(0, tools->GetCount(FAKE_COUNT_POWER_RELEASE));
}

TEST(SystemPowerManagerEntry, ARipHoldsOneUnderItsTranslatedName)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetTranslation(L"CD ripping", L"Kopieren");
    tools->SetPowerEntry(ENTRY);
    CCDRipper ripper;
    EXPECT_FALSE(ripper.Thread()); // nothing to rip is no error
    EXPECT_STREQ(L"Kopieren", tools->GetLastPowerName());
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_POWER_RELEASE));
}
