#include "LyThread.h"
#include "RawTable.h"
#include "StandInTools.h"
#include <gtest/gtest.h>
#include <string>

namespace
{
// A message manager that keeps one log of all that is asked of it, and delivers at a pump.
class FakeManager : public IMainThreadMessageManager
{
public:
    bool RegisterCallback(IMainThreadMessageManagerCallback*) override
    {
        m_strLog += "register ";
        return m_bRegisterResult;
    }
    void UnregisterCallback(IMainThreadMessageManagerCallback*) override { m_strLog += "unregister "; }
    bool PostMessage(IMainThreadMessageManagerCallback* pCallback, int nMessage, long long nData) override
    {
        m_strLog += "post ";
        m_pCallback = pCallback;
        m_nMessage = nMessage;
        m_nData = nData;
        return m_bPostResult;
    }
    void PumpMessages(IMainThreadMessageManagerCallback* pCallback) override
    {
        m_strLog += "pump ";
        if (m_pCallback == pCallback)
            m_bDelivered = pCallback->MainThreadMessageManager_ProcessMainThreadMessage(m_nMessage, m_nData);
        m_pCallback = nullptr;
    }

    bool m_bRegisterResult = true;
    bool m_bPostResult = true;
    bool m_bDelivered = false;
    std::string m_strLog;
    IMainThreadMessageManagerCallback* m_pCallback = nullptr;
    int m_nMessage = 0;
    long long m_nData = 0;
};

// The tools object, with this one service.
class ManagerTools : public StandInTools
{
public:
    explicit ManagerTools(IMainThreadMessageManager* pManager) : m_pManager(pManager) {}
    IMainThreadMessageManager* GetMainThreadMessageManager(bool) override { return m_pManager; }

    IMainThreadMessageManager* m_pManager;
};

class Poster : public LyThread
{
public:
    Poster() : LyThread(false, true) {}
    ~Poster() override { Stop(-1); }
    bool Thread() override
    {
        m_bPosted = PostToMainThread(5, 0x123456789ALL);
        return true;
    }
    bool ProcessMainThreadMessage(int nMessage, long long nData) override
    {
        m_nMessage = nMessage;
        m_nData = nData;
        return true;
    }
    bool GetRegistered() const { return m_bRegistered; }

    std::atomic<bool> m_bPosted{false};
    int m_nMessage = 0;
    long long m_nData = 0;
};
} // namespace

TEST(LyThreadMessages, WithoutAManagerEverythingGoesOn)
{
    Poster poster;
    ASSERT_TRUE(poster.Start(0, false));
    EXPECT_FALSE(poster.GetRegistered());
    poster.WaitUntilFinished();
    EXPECT_FALSE(poster.m_bPosted);
    poster.PumpMainThreadMessages();
    EXPECT_TRUE(poster.UnregisterForMainThreadMessages(true));
    EXPECT_TRUE(poster.Stop(-1));
}

TEST(LyThreadMessages, StartRegistersOnceAndStopPumpsAndUnregisters)
{
    FakeManager manager;
    ManagerTools tools(&manager);
    Poster poster;
    ASSERT_TRUE(poster.Start(0, false));
    EXPECT_TRUE(poster.GetRegistered());
    EXPECT_TRUE(poster.RegisterForMainThreadMessages());
    poster.WaitUntilFinished();
    EXPECT_TRUE(poster.m_bPosted);
    EXPECT_EQ(manager.m_pCallback, &poster);
    EXPECT_TRUE(poster.Stop(-1));
    EXPECT_EQ(manager.m_strLog, "register post pump unregister ");
    EXPECT_FALSE(poster.GetRegistered());
    EXPECT_TRUE(manager.m_bDelivered);
    EXPECT_EQ(poster.m_nMessage, 5);
    EXPECT_EQ(poster.m_nData, 0x123456789ALL);
}

TEST(LyThreadMessages, StopWithoutPumpOnlyUnregisters)
{
    FakeManager manager;
    ManagerTools tools(&manager);
    Poster poster;
    poster.SetPumpMainThreadMessagesOnStop(false);
    poster.Start(0, false);
    poster.WaitUntilFinished();
    poster.Stop(-1);
    EXPECT_EQ(manager.m_strLog, "register post unregister ");
}

TEST(LyThreadMessages, RefusedRegistrationPostsNothing)
{
    FakeManager manager;
    manager.m_bRegisterResult = false;
    ManagerTools tools(&manager);
    Poster poster;
    ASSERT_TRUE(poster.Start(0, false));
    EXPECT_FALSE(poster.GetRegistered());
    poster.WaitUntilFinished();
    EXPECT_FALSE(poster.m_bPosted);
    poster.PumpMainThreadMessages();
    poster.Stop(-1);
    EXPECT_EQ(manager.m_strLog, "register ");
}

TEST(LyThreadMessages, ResultOfPostIsTheManagers)
{
    FakeManager manager;
    ManagerTools tools(&manager);
    Poster poster;
    ASSERT_TRUE(poster.RegisterForMainThreadMessages());
    EXPECT_TRUE(poster.PostToMainThread(1, 2));
    manager.m_bPostResult = false;
    EXPECT_FALSE(poster.PostToMainThread(1, 2));
    EXPECT_TRUE(poster.UnregisterForMainThreadMessages(false));
}

TEST(LyThreadMessages, ManagerMayGoBeforeTheThread)
{
    FakeManager manager;
    ManagerTools tools(&manager);
    Poster poster;
    ASSERT_TRUE(poster.RegisterForMainThreadMessages());
    tools.m_pManager = nullptr;
    EXPECT_FALSE(poster.PostToMainThread(1, 2));
    EXPECT_TRUE(poster.UnregisterForMainThreadMessages(true));
    EXPECT_FALSE(poster.GetRegistered());
    EXPECT_EQ(manager.m_strLog, "register ");
}

TEST(LyThreadMessages, ThreadThatDoesNotAskIsNotRegistered)
{
    FakeManager manager;
    ManagerTools tools(&manager);
    LyThread thread(true, false);
    thread.Stop(-1);
    EXPECT_EQ(manager.m_strLog, "");
}

TEST(IMainThreadMessageManagerSlots, OperationsStandInTheirOrder)
{
    FakeManager manager;
    IMainThreadMessageManager* pManager = &manager;
    IMainThreadMessageManagerCallback* pNone = nullptr;
    EXPECT_TRUE(CallSlot<bool>(pManager, 0, pNone));
    CallSlot<void>(pManager, 1, pNone);
    EXPECT_TRUE(CallSlot<bool>(pManager, 2, pNone, 3, 4LL));
    CallSlot<void>(pManager, 3, reinterpret_cast<IMainThreadMessageManagerCallback*>(&manager));
    EXPECT_EQ(manager.m_strLog, "register unregister post pump ");
    EXPECT_EQ(manager.m_nMessage, 3);
    EXPECT_EQ(manager.m_nData, 4);
}
