#include "ReadHistory.h"
#include <climits>
#include <gtest/gtest.h>

TEST(ReadHistoryTest, ASectorIsGoneWhenTheCacheIsFullOfOthers)
{
    ReadHistory history;
    ASSERT_TRUE(history.Reset(100, 1000));
    EXPECT_EQ(100, history.GetCacheSectors());
    EXPECT_FALSE(history.MayHold(0, 1000));
    history.OnRead(10, 27); // 10 to 36
    EXPECT_TRUE(history.MayHold(36, 1));
    EXPECT_TRUE(history.MayHold(0, 11));
    EXPECT_FALSE(history.MayHold(37, 500));
    EXPECT_FALSE(history.MayHold(0, 10));
    history.OnRead(200, 99);
    EXPECT_TRUE(history.MayHold(10, 27)); // 36 was the last: 99 came behind it
    EXPECT_FALSE(history.MayHold(10, 26));
    history.OnRead(500, 1);
    EXPECT_FALSE(history.MayHold(10, 27));
}

TEST(ReadHistoryTest, ABlockOf27MoreThanTheCacheIsGoneWhereItIsReadAgain)
{
    ReadHistory history;
    ASSERT_TRUE(history.Reset(100, 1000));
    for (int nPass = 0; nPass < 3; ++nPass)
        for (int n = 0; n < 127; n += 27)
        {
            const int nCount = n + 27 <= 127 ? 27 : 127 - n;
            EXPECT_FALSE(history.MayHold(300 + n, nCount)) << nPass << " " << n;
            history.OnRead(300 + n, nCount);
        }
}

TEST(ReadHistoryTest, WithoutACacheNothingIsHeld)
{
    ReadHistory history;
    for (const int nCache : {0, -5})
    {
        ASSERT_TRUE(history.Reset(nCache, 1000));
        history.OnRead(10, 27);
        EXPECT_FALSE(history.MayHold(10, 27));
    }
}

TEST(ReadHistoryTest, SectorsThatNoDiscHasAreNeverHeld)
{
    ReadHistory history;
    ASSERT_TRUE(history.Reset(10, 100));
    history.OnRead(-3, 5);
    history.OnRead(98, 5);
    EXPECT_TRUE(history.MayHold(-3, 5)); // 0 and 1
    EXPECT_FALSE(history.MayHold(-3, 3));
    EXPECT_TRUE(history.MayHold(98, 1));
    EXPECT_FALSE(history.MayHold(100, 20));
    EXPECT_FALSE(history.MayHold(INT_MAX - 5, 4));
    EXPECT_FALSE(history.MayHold(5, -1));
}
