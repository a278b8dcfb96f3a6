#include "WaitMessageTestSupport.h"
#include <gmock/gmock.h>
#include <memory>

using testing::HasSubstr;
using testing::Not;

TEST(WaitMessageOnTerminal, MakesRoomForAQuestionAndComesBack)
{
    PtyChild child(
        []
        {
            MessageBoxService service;
            ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, nullptr);
            usleep(100 * 1000);
            LyMessageBoxDescriptor box;
            box.m_nService1 = MESSAGE_BOX_YES_NO;
            service.FillDefaultButtonTexts(&box);
            const int nAnswer = service.Show(&box);
            WaitForCancel(pMessage);
            pMessage->Close();
            return nAnswer;
        });
    EXPECT_TRUE(child.See("Working"));
    EXPECT_TRUE(child.See("[1] "));
    EXPECT_FALSE(child.TakesKeys());
    child.Type("2\n");
    EXPECT_TRUE(child.See("Working  (Esc cancels)"));
    child.Type("q");
    EXPECT_EQ(child.Wait(), 2);
}

TEST(WaitMessageOnTerminal, TheCallbackMayAsk)
{
    PtyChild child(
        []
        {
            MessageBoxService service;
            Callback callback;
            int nAnswer = 0;
            callback.m_Then = [&]
            {
                LyMessageBoxDescriptor box;
                box.m_nService1 = MESSAGE_BOX_YES_NO;
                service.FillDefaultButtonTexts(&box);
                nAnswer = service.Show(&box);
            };
            ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, &callback);
            WaitForCancel(pMessage);
            pMessage->Close(); // waits for the callback
            return nAnswer;
        });
    EXPECT_TRUE(child.See("cancels)"));
    child.Type("q");
    EXPECT_TRUE(child.See("[1] "));
    child.Type("2\n");
    EXPECT_EQ(child.Wait(), 2);
}

TEST(WaitMessageOnTerminal, TheCallbackMayCloseIt)
{
    PtyChild child(
        []
        {
            const size_t nThreads = CountFirstThreads();
            MessageBoxService service;
            Callback callback;
            std::atomic<ILyWaitMessage*> pMessage{nullptr};
            callback.m_Then = [&] { pMessage.load()->Close(); };
            pMessage = service.CreateWaitMessage(L"Working", 100, true, &callback);
            WaitUntil([&] { return callback.m_nCalls == 1 && CountThreads() == nThreads; });
            return CountThreads() == nThreads ? callback.m_nCalls.load() : 99;
        });
    EXPECT_TRUE(child.See("cancels)"));
    child.Type("q");
    EXPECT_EQ(child.Wait(), 1);
}

TEST(WaitMessageOnTerminal, ASecondOneWaitsForItsTurn)
{
    PtyChild child(
        []
        {
            MessageBoxService service;
            ILyWaitMessage* pFirst = service.CreateWaitMessage(L"First", 0, true, nullptr);
            usleep(200 * 1000);
            ILyWaitMessage* pSecond = service.CreateWaitMessage(L"Second", 0, true, nullptr);
            WaitForCancel(pFirst);
            pFirst->Close();
            WaitForCancel(pSecond);
            pSecond->Close();
            return 0;
        });
    EXPECT_TRUE(child.See("First  (Esc cancels)"));
    usleep(300 * 1000); // the second one would be there by now
    child.Type("q");
    EXPECT_TRUE(child.See("\r" + std::string(20, ' ') + "\r")); // the first one goes
    EXPECT_TRUE(child.See("Second  (Esc cancels)"));            // and is drawn once only
    child.Type("q");
    EXPECT_EQ(child.Wait(), 0);
}

TEST(WaitMessageOnTerminal, TheServicesEndEndsItsThreadAndGivesTheTerminalBack)
{
    PtyChild child(
        []
        {
            const size_t nThreads = CountFirstThreads();
            auto pService = std::make_unique<MessageBoxService>();
            ILyWaitMessage* pShown = pService->CreateWaitMessage(L"Working", 0, true, nullptr);
            ILyWaitMessage* pDelayed = pService->CreateWaitMessage(L"Later", LONG_DELAY_MS, true, nullptr);
            WaitUntil(
                []
                {
                    termios mode{};
                    return tcgetattr(0, &mode) == 0 && (mode.c_lflag & ICANON) == 0;
                });
            pService.reset();
            WaitUntil([&] { return CountThreads() == nThreads; });
            termios mode{};
            (void)tcgetattr(0, &mode);
            const bool bBack = CountThreads() == nThreads && (mode.c_lflag & ICANON) != 0;
            pShown->SetProgress(L"Too late", L"", 1);
            pShown->Close();
            pDelayed->Close();
            return bBack ? 0 : 1;
        });
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_THAT(child.ReadToEnd(), Not(HasSubstr("Too late")));
}

TEST(WaitMessageOnTerminal, InTheBackgroundTheKeysAreLeftAlone)
{
    PtyChild child(
        []
        {
            const pid_t nChild = fork();
            if (nChild == 0)
            {
                (void)setpgid(0, 0); // and not tcsetpgrp
                MessageBoxService service;
                ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, nullptr);
                for (int n = 0; n < 30; ++n)
                {
                    pMessage->SetProgress(nullptr, L"", n);
                    usleep(10 * 1000);
                }
                pMessage->Close();
                _exit(5);
            }
            int nStatus = 0;
            (void)waitpid(nChild, &nStatus, WUNTRACED); // a stop would be seen here
            return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 99;
        });
    EXPECT_TRUE(child.See("Working"));
    EXPECT_FALSE(child.TakesKeys());
    EXPECT_EQ(child.Wait(), 5);
    EXPECT_THAT(child.ReadToEnd(), Not(HasSubstr("cancels")));
}

TEST(WaitMessageOnTerminal, OutlivesTheTerminal)
{
    int aryResult[2];
    ASSERT_EQ(pipe(aryResult), 0);
    {
        PtyChild child(
            [&]
            {
                (void)std::signal(SIGHUP, SIG_IGN);
                MessageBoxService service;
                ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, nullptr);
                for (int n = 0; n < 50; ++n)
                {
                    pMessage->SetProgress(nullptr, L"", n);
                    usleep(10 * 1000);
                }
                const char c = pMessage->GetCancelled() ? 1 : 2;
                pMessage->Close();
                (void)!write(aryResult[1], &c, 1);
                return 0;
            });
        EXPECT_TRUE(child.See("cancels)"));
        child.HangUp();
        char c = 0;
        EXPECT_EQ(read(aryResult[0], &c, 1), 1);
        EXPECT_EQ(c, 2);
    }
    close(aryResult[0]);
    close(aryResult[1]);
}
