#include "LyCoreLib/RawTable.h"
#include "LyCoreLib/StandInTools.h"
#include "MainThreadMessages.h"
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

namespace
{
using MESSAGES = std::vector<std::pair<int, long long>>;

// Notes what it is told, and then does what the test wants.
class Receiver : public IMainThreadMessageManagerCallback
{
public:
    bool MainThreadMessageManager_ProcessMainThreadMessage(int nMessage, long long nData) override
    {
        m_aryMessages.emplace_back(nMessage, nData);
        if (m_Then)
            m_Then(nMessage);
        return true;
    }

    MESSAGES m_aryMessages;
    std::function<void(int nMessage)> m_Then;
};
} // namespace

TEST(MainThreadMessages, OnlyTheRegisteredCanBePostedTo)
{
    MainThreadMessages manager;
    Receiver receiver;
    EXPECT_FALSE(manager.PostMessage(&receiver, 1, 2));
    EXPECT_TRUE(manager.RegisterCallback(&receiver));
    EXPECT_TRUE(manager.PostMessage(&receiver, 1, 2));
    manager.UnregisterCallback(&receiver);
    EXPECT_FALSE(manager.PostMessage(&receiver, 1, 2));
    EXPECT_FALSE(manager.RegisterCallback(nullptr));
    EXPECT_FALSE(manager.PostMessage(nullptr, 1, 2));
    manager.UnregisterCallback(nullptr);
    EXPECT_TRUE(receiver.m_aryMessages.empty());
}

TEST(MainThreadMessages, RegisteringAgainKeepsWhatWaits)
{
    MainThreadMessages manager;
    Receiver receiver;
    EXPECT_TRUE(manager.RegisterCallback(&receiver));
    EXPECT_TRUE(manager.PostMessage(&receiver, 7, 1LL << 40));
    EXPECT_TRUE(manager.RegisterCallback(&receiver));
    manager.PumpMessages(&receiver);
    EXPECT_EQ(receiver.m_aryMessages, (MESSAGES{{7, 1LL << 40}}));
}

TEST(MainThreadMessages, MessagesOfOneCallbackStayInOrder)
{
    MainThreadMessages manager;
    Receiver first;
    Receiver second;
    manager.RegisterCallback(&first);
    manager.RegisterCallback(&second);
    for (int n = 0; n < 3; ++n)
    {
        EXPECT_TRUE(manager.PostMessage(&first, n, 10 * n));
        EXPECT_TRUE(manager.PostMessage(&second, 100 + n, 0));
    }
    manager.PumpMessages(&first);
    EXPECT_EQ(first.m_aryMessages, (MESSAGES{{0, 0}, {1, 10}, {2, 20}}));
    EXPECT_TRUE(second.m_aryMessages.empty());
    manager.PumpMessages(&first);
    EXPECT_EQ(first.m_aryMessages.size(), 3u);
    manager.PumpMessages(&second);
    EXPECT_EQ(second.m_aryMessages, (MESSAGES{{100, 0}, {101, 0}, {102, 0}}));
}

TEST(MainThreadMessages, PumpForAllKeepsTheOrderOfPosting)
{
    MainThreadMessages manager;
    Receiver aryReceivers[3];
    std::vector<int> aryOrder;
    for (Receiver& receiver : aryReceivers)
    {
        receiver.m_Then = [&](int nMessage) { aryOrder.push_back(nMessage); };
        manager.RegisterCallback(&receiver);
    }
    const int aryTargets[] = {2, 0, 1, 0, 2, 2, 1};
    for (int n = 0; n < 7; ++n)
        EXPECT_TRUE(manager.PostMessage(&aryReceivers[aryTargets[n]], n, 0));
    manager.PumpMessages(nullptr);
    EXPECT_EQ(aryOrder, (std::vector<int>{0, 1, 2, 3, 4, 5, 6}));
}

TEST(MainThreadMessages, WhatIsPostedDuringAPumpComesWithTheNext)
{
    MainThreadMessages manager;
    Receiver receiver;
    manager.RegisterCallback(&receiver);
    receiver.m_Then = [&](int nMessage) { EXPECT_TRUE(manager.PostMessage(&receiver, nMessage + 1, 0)); };
    manager.PostMessage(&receiver, 1, 0);
    manager.PumpMessages(nullptr);
    EXPECT_EQ(receiver.m_aryMessages, (MESSAGES{{1, 0}}));
    manager.PumpMessages(&receiver);
    EXPECT_EQ(receiver.m_aryMessages, (MESSAGES{{1, 0}, {2, 0}}));
}

TEST(MainThreadMessages, UnregisteringDropsWhatIsPending)
{
    MainThreadMessages manager;
    Receiver receiver;
    manager.RegisterCallback(&receiver);
    manager.PostMessage(&receiver, 1, 0);
    manager.UnregisterCallback(&receiver);
    manager.PumpMessages(&receiver);
    manager.RegisterCallback(&receiver);
    manager.PumpMessages(nullptr);
    EXPECT_TRUE(receiver.m_aryMessages.empty());
}

TEST(MainThreadMessages, ADeliveredMessageMayUnregisterItsOwnCallback)
{
    MainThreadMessages manager;
    Receiver receiver;
    manager.RegisterCallback(&receiver);
    receiver.m_Then = [&](int) { manager.UnregisterCallback(&receiver); };
    manager.PostMessage(&receiver, 1, 0);
    manager.PostMessage(&receiver, 2, 0);
    manager.PumpMessages(&receiver);
    EXPECT_EQ(receiver.m_aryMessages, (MESSAGES{{1, 0}}));
}

TEST(MainThreadMessages, ADeliveredMessageMayUnregisterAnother)
{
    MainThreadMessages manager;
    Receiver first;
    Receiver second;
    manager.RegisterCallback(&first);
    manager.RegisterCallback(&second);
    first.m_Then = [&](int) { manager.UnregisterCallback(&second); };
    manager.PostMessage(&first, 1, 0);
    manager.PostMessage(&second, 2, 0);
    manager.PostMessage(&first, 3, 0);
    manager.PumpMessages(nullptr);
    EXPECT_EQ(first.m_aryMessages, (MESSAGES{{1, 0}, {3, 0}}));
    EXPECT_TRUE(second.m_aryMessages.empty());
}

TEST(MainThreadMessages, ADeliveredMessageMayPumpForItself)
{
    MainThreadMessages manager;
    Receiver receiver;
    manager.RegisterCallback(&receiver);
    size_t nInside = 0;
    receiver.m_Then = [&](int nMessage)
    {
        if (nMessage != 1)
            return;
        manager.PumpMessages(&receiver);
        nInside = receiver.m_aryMessages.size();
    };
    for (int n = 1; n <= 3; ++n)
        manager.PostMessage(&receiver, n, 0);
    manager.PumpMessages(&receiver);
    EXPECT_EQ(nInside, 3u);
    EXPECT_EQ(receiver.m_aryMessages, (MESSAGES{{1, 0}, {2, 0}, {3, 0}}));
}

TEST(MainThreadMessages, WhatACallbackThrowsEndsOnlyItsOwnDelivery)
{
    MainThreadMessages manager;
    Receiver receiver;
    manager.RegisterCallback(&receiver);
    receiver.m_Then = [](int nMessage)
    {
        if (nMessage == 1)
            throw std::runtime_error("refused");
    };
    manager.PostMessage(&receiver, 1, 0);
    manager.PostMessage(&receiver, 2, 0);
    manager.PumpMessages(&receiver);
    EXPECT_EQ(receiver.m_aryMessages.size(), 2u);
    std::async(std::launch::async, [&] { manager.UnregisterCallback(&receiver); }).wait(); // no delivery is left open
}

TEST(MainThreadMessages, UnregisteringWaitsForADeliveryOnAnotherThread)
{
    MainThreadMessages manager;
    Receiver receiver;
    std::promise<void> begun;
    std::promise<void> goOn;
    std::atomic<bool> bDelivered{false};
    receiver.m_Then = [&](int)
    {
        begun.set_value();
        goOn.get_future().wait();
        bDelivered = true;
    };
    manager.RegisterCallback(&receiver);
    manager.PostMessage(&receiver, 1, 0);
    auto pump = std::async(std::launch::async, [&] { manager.PumpMessages(nullptr); });
    begun.get_future().wait();
    auto unregister = std::async(std::launch::async,
                                 [&]
                                 {
                                     manager.UnregisterCallback(&receiver);
                                     return bDelivered.load();
                                 });
    EXPECT_EQ(unregister.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    goOn.set_value();
    EXPECT_TRUE(unregister.get());
    pump.wait();
}

// The callback goes and comes again in the middle of a delivery: the delivery is the same one.
TEST(MainThreadMessages, UnregisteringWaitsAlsoForADeliveryOfAnEarlierRegistration)
{
    MainThreadMessages manager;
    Receiver receiver;
    std::promise<void> begun;
    std::promise<void> goOn;
    std::atomic<bool> bDelivered{false};
    receiver.m_Then = [&](int)
    {
        manager.UnregisterCallback(&receiver);
        manager.RegisterCallback(&receiver);
        begun.set_value();
        goOn.get_future().wait();
        bDelivered = true;
    };
    manager.RegisterCallback(&receiver);
    manager.PostMessage(&receiver, 1, 0);
    auto pump = std::async(std::launch::async, [&] { manager.PumpMessages(&receiver); });
    begun.get_future().wait();
    auto unregister = std::async(std::launch::async,
                                 [&]
                                 {
                                     manager.UnregisterCallback(&receiver);
                                     return bDelivered.load();
                                 });
    EXPECT_EQ(unregister.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    goOn.set_value();
    EXPECT_TRUE(unregister.get());
    pump.wait();
}

TEST(MainThreadMessages, OneMessageOfACallbackIsDeliveredAtATime)
{
    MainThreadMessages manager;
    Receiver receiver; // its list is no safe one: two deliveries at once would be a race
    manager.RegisterCallback(&receiver);
    constexpr int MESSAGE_COUNT = 400;
    auto post = std::async(std::launch::async,
                           [&]
                           {
                               for (int n = 0; n < MESSAGE_COUNT; ++n)
                                   manager.PostMessage(&receiver, n, 0);
                           });
    std::vector<std::future<void>> aryPumps;
    for (int n = 0; n < 3; ++n)
        aryPumps.push_back(std::async(std::launch::async,
                                      [&, n]
                                      {
                                          for (int i = 0; i < 200; ++i)
                                              manager.PumpMessages(n == 0 ? nullptr : &receiver);
                                      }));
    post.wait();
    for (auto& pump : aryPumps)
        pump.wait();
    manager.PumpMessages(&receiver);
    ASSERT_EQ(receiver.m_aryMessages.size(), static_cast<size_t>(MESSAGE_COUNT));
    for (int n = 0; n < MESSAGE_COUNT; ++n)
        EXPECT_EQ(receiver.m_aryMessages[static_cast<size_t>(n)].first, n);
}

TEST(MainThreadMessages, CallbacksMayComeAndGoWhileOthersArePumped)
{
    MainThreadMessages manager;
    std::atomic<bool> bEnd{false};
    auto pump = std::async(std::launch::async,
                           [&]
                           {
                               while (!bEnd)
                                   manager.PumpMessages(nullptr);
                           });
    auto work = [&]
    {
        for (int n = 0; n < 300; ++n)
        {
            Receiver receiver; // gone right behind its end of registration
            manager.RegisterCallback(&receiver);
            for (int nMessage = 0; nMessage < 4; ++nMessage)
                manager.PostMessage(&receiver, nMessage, n);
            manager.UnregisterCallback(&receiver);
            for (size_t nMessage = 0; nMessage < receiver.m_aryMessages.size(); ++nMessage)
                EXPECT_EQ(receiver.m_aryMessages[nMessage].first, static_cast<int>(nMessage));
        }
    };
    auto first = std::async(std::launch::async, work);
    work();
    first.wait();
    bEnd = true;
    pump.wait();
}

TEST(MainThreadMessages, OperationsStandInTheirSlots)
{
    MainThreadMessages manager;
    IMainThreadMessageManager* pManager = &manager;
    Receiver receiver;
    IMainThreadMessageManagerCallback* pCallback = &receiver;
    EXPECT_TRUE(CallSlot<bool>(pManager, 0, pCallback));
    EXPECT_TRUE(CallSlot<bool>(pManager, 2, pCallback, 5, 6LL));
    CallSlot<void>(pManager, 3, pCallback);
    EXPECT_EQ(receiver.m_aryMessages, (MESSAGES{{5, 6}}));
    CallSlot<void>(pManager, 1, pCallback);
    EXPECT_FALSE(CallSlot<bool>(pManager, 2, pCallback, 5, 6LL));
}

namespace
{
class MessageTools : public StandInTools
{
public:
    IMainThreadMessageManager* GetMainThreadMessageManager(bool) override { return &m_Manager; }

    MainThreadMessages m_Manager;
};

class PostingWorker : public LyThread
{
public:
    PostingWorker() : LyThread(false, true) {}
    ~PostingWorker() override { Stop(-1); }
    bool Thread() override
    {
        for (int n = 0; n < 50; ++n)
            m_nPosted += PostToMainThread(n, 2 * n) ? 1 : 0;
        return true;
    }
    bool ProcessMainThreadMessage(int nMessage, long long nData) override
    {
        EXPECT_EQ(pthread_self(), m_MainThread);
        m_aryMessages.emplace_back(nMessage, nData);
        return true;
    }

    const pthread_t m_MainThread = pthread_self();
    std::atomic<int> m_nPosted{0};
    MESSAGES m_aryMessages;
};
} // namespace

TEST(MainThreadMessages, CarriesTheMessagesOfAWorker)
{
    MessageTools tools;
    PostingWorker worker;
    ASSERT_TRUE(worker.Start());
    while (worker.GetRunning())
        tools.m_Manager.PumpMessages(nullptr);
    tools.m_Manager.PumpMessages(nullptr);
    EXPECT_EQ(worker.m_nPosted, 50);
    ASSERT_EQ(worker.m_aryMessages.size(), 50u);
    for (int n = 0; n < 50; ++n)
        EXPECT_EQ(worker.m_aryMessages[static_cast<size_t>(n)], (std::pair<int, long long>(n, 2 * n)));
}

TEST(MainThreadMessages, AStoppedWorkerIsGivenTheRestAndNothingMore)
{
    MessageTools tools;
    PostingWorker worker;
    ASSERT_TRUE(worker.Start());
    worker.WaitUntilFinished();
    EXPECT_TRUE(worker.Stop());
    EXPECT_EQ(worker.m_aryMessages.size(), 50u); // pumped by Stop
    EXPECT_FALSE(tools.m_Manager.PostMessage(&worker, 1, 0));
}
