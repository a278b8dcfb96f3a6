#include "DriveCache.h"
#include <gtest/gtest.h>

namespace
{
void Read(DriveCache& cache, int nFirst, int nCount, unsigned long long nRead)
{
    for (int n = nFirst; n < nFirst + nCount; ++n)
    {
        if (cache.Find(n) == DriveCache::NOT_CACHED)
            cache.Insert(n, nRead);
        else
            cache.Touch(n);
    }
}

int CountHeld(const DriveCache& cache, int nFirst, int nCount)
{
    int nHeld = 0;
    for (int n = nFirst; n < nFirst + nCount; ++n)
        nHeld += cache.Find(n) != DriveCache::NOT_CACHED ? 1 : 0;
    return nHeld;
}
} // namespace

TEST(DriveCache, WithoutASizeNothingIsHeld)
{
    DriveCache cache;
    cache.Insert(1, 1);
    EXPECT_EQ(DriveCache::NOT_CACHED, cache.Find(1));
    cache.Reset(0, 0);
    cache.Insert(1, 1);
    EXPECT_EQ(DriveCache::NOT_CACHED, cache.Find(1));
}

TEST(DriveCache, ARangeThatFitsStaysAndTellsItsRead)
{
    DriveCache cache;
    cache.Reset(10, 0);
    Read(cache, 100, 10, 7);
    EXPECT_EQ(10, CountHeld(cache, 100, 10));
    EXPECT_EQ(7U, cache.Find(100));
    Read(cache, 100, 10, 8);
    EXPECT_EQ(7U, cache.Find(100)); // it was not fetched again
}

TEST(DriveCache, ARangeThatIsLargerPushesItselfOut)
{
    DriveCache cache;
    cache.Reset(10, 0);
    Read(cache, 100, 11, 1);
    EXPECT_EQ(DriveCache::NOT_CACHED, cache.Find(100));
    EXPECT_EQ(10, CountHeld(cache, 101, 10));
    // Read from its start, each sector is pushed out just ahead of its turn.
    for (int n = 100; n < 111; ++n)
    {
        EXPECT_EQ(DriveCache::NOT_CACHED, cache.Find(n)) << n;
        cache.Insert(n, 2);
    }
}

TEST(DriveCache, ASegmentGivesWayToANewRun)
{
    DriveCache cache;
    cache.Reset(10, 5);
    Read(cache, 100, 3, 1);
    Read(cache, 200, 3, 2);
    EXPECT_EQ(6, CountHeld(cache, 100, 3) + CountHeld(cache, 200, 3));
    cache.Touch(100); // so that the other one is unused for longer
    Read(cache, 300, 3, 3);
    EXPECT_EQ(3, CountHeld(cache, 100, 3));
    EXPECT_EQ(0, CountHeld(cache, 200, 3));
    Read(cache, 103, 3, 4); // goes on with the first run, of which the first sector leaves
    EXPECT_EQ(DriveCache::NOT_CACHED, cache.Find(100));
    EXPECT_EQ(5, CountHeld(cache, 101, 5));
    EXPECT_EQ(3, CountHeld(cache, 300, 3));
}

TEST(DriveCache, ClearForgetsEverything)
{
    DriveCache cache;
    cache.Reset(10, 5);
    Read(cache, 1, 8, 1);
    cache.Clear();
    EXPECT_EQ(0, CountHeld(cache, 1, 8));
    Read(cache, 1, 5, 2);
    EXPECT_EQ(2U, cache.Find(5));
}
