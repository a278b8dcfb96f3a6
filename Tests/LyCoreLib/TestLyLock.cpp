#include "LyLock.h"
#include <gtest/gtest.h>
#include <thread>
#include <vector>

TEST(LyLock, CountsHowOftenItIsHeld)
{
    LyLock lock;
    EXPECT_EQ(lock.GetLockCount(), 0);
    lock.Lock();
    EXPECT_EQ(lock.GetLockCount(), 1);
    lock.Unlock();
    EXPECT_EQ(lock.GetLockCount(), 0);
}

namespace
{
int CountWithOneMore(LyLock& lock)
{
    LySingleLock holder(&lock);
    return lock.GetLockCount();
}
} // namespace

TEST(LyLock, IsRecursive)
{
    LyLock lock;
    LySingleLock holder(&lock);
    EXPECT_EQ(CountWithOneMore(lock), 2);
    EXPECT_EQ(lock.GetLockCount(), 1);
}

TEST(LyLock, RemembersTheLastOwnerAfterTheRelease)
{
    LyLock lock;
    {
        LySingleLock holder(&lock);
        EXPECT_TRUE(pthread_equal(lock.GetLastOwner(), pthread_self()));
    }
    EXPECT_EQ(lock.GetLockCount(), 0);
    EXPECT_TRUE(pthread_equal(lock.GetLastOwner(), pthread_self()));
    pthread_t other{};
    std::thread thread(
        [&]
        {
            LySingleLock holder(&lock);
            other = pthread_self();
        });
    thread.join();
    EXPECT_TRUE(pthread_equal(lock.GetLastOwner(), other));
}

TEST(LyLock, KeepsOtherThreadsOut)
{
    LyLock lock;
    int nShared = 0;
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < 4; ++i)
        aryThreads.emplace_back(
            [&]
            {
                for (int n = 0; n < 5000; ++n)
                {
                    LySingleLock holder(&lock);
                    ++nShared;
                }
            });
    for (auto& thread : aryThreads)
        thread.join();
    EXPECT_EQ(nShared, 20000);
    EXPECT_EQ(lock.GetLockCount(), 0);
}

TEST(LySingleLock, OfNothingDoesNothing) { LySingleLock holder(nullptr); }

TEST(LySingleLock, IsOnePointerWide) { static_assert(sizeof(LySingleLock) == sizeof(LyLock*)); }

TEST(LyInterlocked, AnswersTheNewValue)
{
    volatile int nValue = 41;
    EXPECT_EQ(LyInterlocked::Increment(&nValue), 42);
    EXPECT_EQ(LyInterlocked::Increment(&nValue), 43);
    EXPECT_EQ(LyInterlocked::Decrement(&nValue), 42);
    EXPECT_EQ(nValue, 42);
    nValue = 0;
    EXPECT_EQ(LyInterlocked::Decrement(&nValue), -1);
}

TEST(LyInterlocked, LosesNoStepBetweenThreads)
{
    volatile int nValue = 0;
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < 4; ++i)
        aryThreads.emplace_back(
            [&]
            {
                for (int n = 0; n < 5000; ++n)
                {
                    LyInterlocked::Increment(&nValue);
                    LyInterlocked::Increment(&nValue);
                    LyInterlocked::Decrement(&nValue);
                }
            });
    for (auto& thread : aryThreads)
        thread.join();
    EXPECT_EQ(LyInterlocked::Decrement(&nValue), 19999);
}
