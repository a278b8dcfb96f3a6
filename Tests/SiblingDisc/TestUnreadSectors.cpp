#include "UnreadSectors.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
TEST(UnreadSectors, EachCountsOnce)
{
    UnreadSectors sectors;
    EXPECT_EQ(0, sectors.GetCount());
    EXPECT_EQ(0, sectors.GetFirst());
    sectors.Add(100, 27);
    sectors.Add(100, 27); // tried again
    EXPECT_EQ(27, sectors.GetCount());
    sectors.Add(120, 10); // 120 to 129
    EXPECT_EQ(30, sectors.GetCount());
    sectors.Add(130, 5); // touches
    sectors.Add(-3, 2);
    EXPECT_EQ(37, sectors.GetCount());
    EXPECT_EQ(-3, sectors.GetFirst());
    sectors.Add(-10, 1000); // covers all
    EXPECT_EQ(1000, sectors.GetCount());
    sectors.Clear();
    EXPECT_EQ(0, sectors.GetCount());
}

TEST(UnreadSectors, WhatCouldBeReadAfterAllCountsNoMore)
{
    UnreadSectors sectors;
    sectors.Remove(0, 10);
    sectors.Add(100, 30);
    sectors.Remove(110, 5); // a hole: 100 to 109, 115 to 129
    EXPECT_EQ(25, sectors.GetCount());
    sectors.Remove(90, 12); // 102 on
    EXPECT_EQ(102, sectors.GetFirst());
    EXPECT_EQ(23, sectors.GetCount());
    sectors.Remove(130, 10); // only touches
    EXPECT_EQ(23, sectors.GetCount());
    sectors.Add(200, 1);
    sectors.Remove(105, 200); // over several
    EXPECT_EQ(3, sectors.GetCount());
    sectors.Remove(102, 3);
    EXPECT_EQ(0, sectors.GetCount());
}

TEST(UnreadSectors, ImpossibleRangesDoNoHarm)
{
    UnreadSectors sectors;
    sectors.Add(5, 0);
    sectors.Add(5, -7);
    EXPECT_EQ(0, sectors.GetCount());
    sectors.Add(INT_MAX, INT_MAX);
    sectors.Add(INT_MIN, 1);
    EXPECT_EQ(1LL + INT_MAX, sectors.GetCount());
    EXPECT_EQ(INT_MIN, sectors.GetFirst());
    sectors.Remove(INT_MIN, INT_MAX);
    sectors.Remove(5, -1);
    EXPECT_EQ(INT_MAX, sectors.GetCount());
}

TEST(UnreadSectors, NumberOfPlacesIsBounded)
{
    UnreadSectors sectors;
    for (int i = 0; i < 10000; ++i)
        sectors.Add(2 * i, 1);
    EXPECT_EQ(static_cast<long long>(UnreadSectors::MAX_RANGES), sectors.GetCount());
    sectors.Remove(0, 20000);
    EXPECT_EQ(0, sectors.GetCount());
}
} // namespace
