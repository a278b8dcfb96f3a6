#include "LyApp.h"
#include "LyCoreLib/RawTable.h"
#include "LyDllApp.h"
#include "LyEntryPoint.h"
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{
HINSTANCE__* const HANDLE = reinterpret_cast<HINSTANCE__*>(0x1234);

class CountingApp : public LyApp
{
public:
    bool InitInstance() override
    {
        m_strCalls += "I";
        return m_bStarts;
    }
    bool ExitInstance() override
    {
        m_strCalls += "E";
        return true;
    }
    void Run() override { m_strCalls += "R"; }

    bool m_bStarts = true;
    std::string m_strCalls;
};

class CountingDllApp : public LyDllApp
{
public:
    bool LoadProductInfo() override
    {
        ++m_nProductLoads;
        return m_bProduct;
    }
    int m_nProductLoads = 0;
    bool m_bProduct = true;
};
} // namespace

TEST(LyApp, EveryConstructorMakesItselfTheApplication)
{
    CountingApp first;
    EXPECT_EQ(&first, LyApp::s_pApp);
    CountingApp second;
    EXPECT_EQ(&second, LyApp::s_pApp);
}

TEST(LyApp, NewObjectIsEmpty)
{
    const LyApp app;
    EXPECT_EQ(nullptr, app.m_hInstance);
    EXPECT_EQ(0, app.m_nCmdShow);
    EXPECT_EQ(0, app.m_nExitCode);
    EXPECT_EQ(0, app.m_nAttachCount);
    EXPECT_EQ(0, app.m_CommandLine.GetSize());
    EXPECT_EQ(0, app.m_UniqueList.GetCount());
    EXPECT_EQ(0, app.m_Strings.GetSize());
}

TEST(LyApp, TwoAttachesAndOneDetachLeaveItInitialisedAndTheSecondDetachEndsItOnce)
{
    CountingApp app;
    EXPECT_TRUE(app.DllMain(HANDLE, LyApp::REASON_ATTACH, nullptr));
    EXPECT_EQ(HANDLE, app.m_hInstance);
    EXPECT_TRUE(app.DllMain(nullptr, LyApp::REASON_ATTACH, nullptr));
    EXPECT_EQ(HANDLE, app.m_hInstance); // only the first attach brings a handle
    EXPECT_TRUE(app.DllMain(nullptr, LyApp::REASON_DETACH, nullptr));
    EXPECT_EQ("I", app.m_strCalls);
    EXPECT_TRUE(app.DllMain(nullptr, LyApp::REASON_DETACH, nullptr));
    EXPECT_EQ("IE", app.m_strCalls);
    EXPECT_TRUE(app.DllMain(HANDLE, LyApp::REASON_ATTACH, nullptr));
    EXPECT_EQ("IEI", app.m_strCalls);
}

TEST(LyApp, AFailedStartRunsExitInstanceAndIsNotTriedAgain)
{
    CountingApp app;
    app.m_bStarts = false;
    EXPECT_FALSE(app.DllMain(HANDLE, LyApp::REASON_ATTACH, nullptr));
    EXPECT_EQ("IE", app.m_strCalls);
    EXPECT_EQ(1, app.m_nAttachCount);
    EXPECT_TRUE(app.DllMain(HANDLE, LyApp::REASON_ATTACH, nullptr));
    EXPECT_EQ("IE", app.m_strCalls);
}

TEST(LyApp, OneDetachTooManyIsOnlyANegativeCount)
{
    CountingApp app;
    EXPECT_TRUE(app.DllMain(nullptr, LyApp::REASON_DETACH, nullptr));
    EXPECT_EQ(-1, app.m_nAttachCount);
    EXPECT_EQ("", app.m_strCalls);
    EXPECT_TRUE(app.DllMain(HANDLE, LyApp::REASON_ATTACH, nullptr)); // back to zero, which initialises nothing
    EXPECT_EQ("", app.m_strCalls);
}

TEST(LyApp, OtherReasonsDoNothing)
{
    CountingApp app;
    for (const unsigned int nReason : {2U, 3U, 100U})
        EXPECT_TRUE(app.DllMain(HANDLE, nReason, nullptr));
    EXPECT_EQ(0, app.m_nAttachCount);
    EXPECT_EQ(nullptr, app.m_hInstance);
}

TEST(LyApp, ManyThreadsAttachingStartItOnce)
{
    CountingApp app;
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < 8; ++i)
        aryThreads.emplace_back([&app] { (void)app.DllMain(HANDLE, LyApp::REASON_ATTACH, nullptr); });
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ("I", app.m_strCalls);
    EXPECT_EQ(8, app.m_nAttachCount);
}

TEST(LyApp, CommandLineMainRunsBetweenStartAndEnd)
{
    CountingApp app;
    app.m_nExitCode = 5;
    EXPECT_EQ(5, app.CommandLineMain());
    EXPECT_EQ("IRE", app.m_strCalls);
    CountingApp failing;
    failing.m_bStarts = false;
    EXPECT_EQ(0, failing.CommandLineMain());
    EXPECT_EQ("IE", failing.m_strCalls);
}

TEST(LyApp, WinMainKeepsItsArguments)
{
    CountingApp app;
    EXPECT_EQ(0, app.WinMain(HANDLE, nullptr, 3));
    EXPECT_EQ(HANDLE, app.m_hInstance);
    EXPECT_EQ(3, app.m_nCmdShow);
    EXPECT_EQ("IE", app.m_strCalls);
}

TEST(LyApp, StubsAnswerThroughTheirSlots)
{
    LyDllApp app;
    const LyApp* pApp = &app;
    const LyString strURL(L"x://");
    // 0 and 1 the destructor, 2 DllMain, 3 WinMain, 4 CommandLineMain, 5 InitInstance, 6 ExitInstance
    (void)CallSlot<int>(pApp, 7);                                      // Run
    EXPECT_TRUE((CallSlot<bool>(pApp, 8)));                            // StopRun
    EXPECT_FALSE((CallSlot<bool, const LyString*>(pApp, 9, &strURL))); // OnURLProtocol
    EXPECT_FALSE((CallSlot<bool>(pApp, 10)));                          // GetHandleMediaKeys
    EXPECT_FALSE((CallSlot<bool>(pApp, 11)));                          // GetHandleAppleRemote
    EXPECT_FALSE((CallSlot<bool>(pApp, 12, 1, 2)));                    // OnMediaKey
    EXPECT_FALSE((CallSlot<bool>(pApp, 13)));                          // OnOpenFiles
    for (const int nSlot : {14, 16, 17, 18}) // CreateMacMenu, OnMediaServer..., OnUSBDeviceChange
        (void)CallSlot<int>(pApp, nSlot);
    LyPoint point;
    (void)CallSlot<int, int, LyPoint*>(pApp, 15, 1, &point); // MacMenuClick
    EXPECT_TRUE((CallSlot<bool>(pApp, 19)));                 // GetShowPlatformCrashDialog
    EXPECT_TRUE((CallSlot<bool>(pApp, 20)));                 // LoadProductInfo
    EXPECT_TRUE((CallSlot<bool>(pApp, 21)));                 // InitializePlatform
    (void)CallSlot<int>(pApp, 22);                           // UninitializePlatform
}

TEST(LyDllApp, StartAnswersWhatTheProductInformationAnswers)
{
    CountingDllApp app;
    EXPECT_TRUE(app.InitInstance());
    app.m_bProduct = false;
    EXPECT_FALSE(app.InitInstance());
    EXPECT_EQ(2, app.m_nProductLoads);
    EXPECT_EQ(LyStringGlobals::INITIALIZED, LyStringGlobals::s_nInitialized);
    EXPECT_TRUE(app.ExitInstance());
}

TEST(LyEntryPoint, AttachAndDetachReachTheApplication)
{
    CountingApp app;
    EXPECT_TRUE(Attach(HANDLE));
    Detach();
    EXPECT_EQ("IE", app.m_strCalls);
    app.m_bStarts = false;
    EXPECT_FALSE(Attach(HANDLE));
    LyApp::s_pApp = nullptr;
    EXPECT_FALSE(Attach(HANDLE));
    Detach();
}
