#include "PowerManager.h"

#include "FakeLogin.h"
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

namespace
{
int GetFirstHalf(long long nEntry) { return static_cast<int>(nEntry & 0xffffffff); }
int GetSecondHalf(long long nEntry) { return static_cast<int>(nEntry >> 32); }

void Release(PowerManager& manager, long long nEntry) { manager.Release(GetFirstHalf(nEntry), GetSecondHalf(nEntry)); }

int CountDescriptors()
{
    int nDescriptors = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        nDescriptors += entry.is_symlink() ? 1 : 0;
    return nDescriptors;
}
} // namespace

TEST(PowerManager, HoldsTheLockUntilItIsReleased)
{
    const PrivateBus bus;
    ASSERT_TRUE(bus.IsUp());
    const FakeLogin login(FAKE_LOGIN_GRANTS);
    ASSERT_TRUE(login.IsUp());
    PowerManager manager;
    const int nBefore = CountDescriptors();
    const long long nEntry = manager.Acquire(L"CD ripping", 1, 0);
    EXPECT_NE(GetFirstHalf(nEntry), 0);
    EXPECT_EQ(login.ReadLine(), "inhibit sleep:idle Rondel CD ripping block");
    EXPECT_EQ(CountDescriptors(), nBefore + 1); // the lock alone: no connection stays
    manager.Release(GetFirstHalf(nEntry) + 1, GetSecondHalf(nEntry));
    manager.Release(GetFirstHalf(nEntry), GetSecondHalf(nEntry) + 1);
    manager.Release(0, 0);
    EXPECT_EQ(CountDescriptors(), nBefore + 1); // nobody else's entry
    Release(manager, nEntry);
    EXPECT_EQ(login.ReadLine(), "released");
    EXPECT_EQ(CountDescriptors(), nBefore);
    Release(manager, nEntry); // twice does no harm
}

TEST(PowerManager, HoldsAreIndependentAndEndWithTheManager)
{
    const PrivateBus bus;
    ASSERT_TRUE(bus.IsUp());
    const FakeLogin login(FAKE_LOGIN_GRANTS);
    ASSERT_TRUE(login.IsUp());
    const int nBefore = CountDescriptors();
    {
        PowerManager manager;
        const long long nFirst = manager.Acquire(L"one", 1, 0);
        const long long nSecond = manager.Acquire(L"two", 1, 0);
        EXPECT_NE(nFirst, nSecond);
        EXPECT_EQ(login.ReadLine(), "inhibit sleep:idle Rondel one block");
        EXPECT_EQ(login.ReadLine(), "inhibit sleep:idle Rondel two block");
        Release(manager, nFirst);
        EXPECT_EQ(login.ReadLine(), "released");
        EXPECT_EQ(CountDescriptors(), nBefore + 1);
    }
    EXPECT_EQ(login.ReadLine(), "released");
    EXPECT_EQ(CountDescriptors(), nBefore);
}

TEST(PowerManager, ReasonIsUTF8WhateverTheName)
{
    const PrivateBus bus;
    ASSERT_TRUE(bus.IsUp());
    const FakeLogin login(FAKE_LOGIN_GRANTS);
    ASSERT_TRUE(login.IsUp());
    PowerManager manager;
    EXPECT_NE(manager.Acquire(L"Größe", 1, 0), 0);
    EXPECT_EQ(login.ReadLine(), "inhibit sleep:idle Rondel Gr\xC3\xB6\xC3\x9F"
                                "e block");
    const wchar_t szBytes[] = {L'a', static_cast<wchar_t>(0xDCFF), static_cast<wchar_t>(0x7fffffff), 0};
    EXPECT_NE(manager.Acquire(szBytes, 1, 0), 0);
    EXPECT_EQ(login.ReadLine(), "inhibit sleep:idle Rondel a\xEF\xBF\xBD\xEF\xBF\xBD block");
    EXPECT_NE(manager.Acquire(nullptr, 1, 0), 0);
    EXPECT_EQ(login.ReadLine(), "inhibit sleep:idle Rondel Audio CD block");
    EXPECT_NE(manager.Acquire(L"", 0, 7), 0);
    EXPECT_EQ(login.ReadLine(), "inhibit sleep:idle Rondel Audio CD block");
}

TEST(PowerManager, SeveralThreadsMayAcquireAndRelease)
{
    const PrivateBus bus;
    ASSERT_TRUE(bus.IsUp());
    const FakeLogin login(FAKE_LOGIN_GRANTS);
    ASSERT_TRUE(login.IsUp());
    const int nBefore = CountDescriptors();
    PowerManager manager;
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < 4; ++i)
    {
        aryThreads.emplace_back(
            [&manager]
            {
                const long long nEntry = manager.Acquire(L"thread", 1, 0);
                EXPECT_NE(GetFirstHalf(nEntry), 0);
                Release(manager, nEntry);
            });
    }
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ(CountDescriptors(), nBefore);
}

TEST(PowerManager, RefusalHoldsNothingAndSaysNothing)
{
    const PrivateBus bus;
    ASSERT_TRUE(bus.IsUp());
    for (const FAKE_LOGIN_ANSWER eAnswer : {FAKE_LOGIN_REFUSES, FAKE_LOGIN_ANSWERS_A_NUMBER})
    {
        const FakeLogin login(eAnswer);
        ASSERT_TRUE(login.IsUp());
        PowerManager manager;
        const int nBefore = CountDescriptors();
        testing::internal::CaptureStderr();
        EXPECT_EQ(manager.Acquire(L"CD ripping", 1, 0), 0);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(CountDescriptors(), nBefore);
    }
}

TEST(PowerManager, BusWithoutALoginManagerHoldsNothing)
{
    const PrivateBus bus;
    ASSERT_TRUE(bus.IsUp());
    PowerManager manager;
    EXPECT_EQ(manager.Acquire(L"CD ripping", 1, 0), 0);
}

TEST(PowerManager, WithoutABusNothingIsHeldOrSaid)
{
    const SystemBusAddress address; // where nobody listens
    PowerManager manager;
    const int nBefore = CountDescriptors();
    testing::internal::CaptureStderr();
    EXPECT_EQ(manager.Acquire(L"CD ripping", 1, 0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(CountDescriptors(), nBefore);
    manager.Release(1, 0);
}

TEST(PowerManager, SilentLoginManagerIsGivenUp)
{
    const PrivateBus bus;
    ASSERT_TRUE(bus.IsUp());
    const FakeLogin login(FAKE_LOGIN_KEEPS_SILENT);
    ASSERT_TRUE(login.IsUp());
    PowerManager manager;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(manager.Acquire(L"CD ripping", 1, 0), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
}

// The kernel takes the connection, but nobody ever answers.
TEST(PowerManager, BusThatNeverAnswersIsGivenUp)
{
    const SystemBusAddress address;
    const int nSocket = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    ASSERT_LT(address.GetSocketPath().size(), sizeof name.sun_path);
    address.GetSocketPath().copy(name.sun_path, sizeof name.sun_path - 1);
    ASSERT_EQ(bind(nSocket, reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    ASSERT_EQ(listen(nSocket, 8), 0);
    PowerManager manager;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(manager.Acquire(L"CD ripping", 1, 0), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    close(nSocket);
}
