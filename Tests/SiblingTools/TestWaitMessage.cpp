#include "WaitMessageTestSupport.h"
#include <algorithm>
#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::Not;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace
{
const std::string ESCAPE = "\x1b";
const std::string UP_ARROW = "\x1b[A";

// Shows one message until it is cancelled: 1 if it was, and 2 more if the callback was told exactly once.
int ShowUntilCancelled()
{
    MessageBoxService service;
    Callback callback;
    ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, &callback);
    WaitForCancel(pMessage);
    const bool bCancelled = pMessage->GetCancelled();
    pMessage->Close();
    return (bCancelled ? 1 : 0) + (callback.m_nCalls == 1 ? 2 : 0);
}

// Shows a message with this text and progress until a byte comes on the input, which the message does not take.
int ShowUntilLine(const wchar_t* pText, const wchar_t* pSecondText, int nPercent)
{
    MessageBoxService service;
    ILyWaitMessage* pMessage = service.CreateWaitMessage(L"First", 0, false, nullptr);
    pMessage->SetProgress(pText, pSecondText, nPercent);
    char c = 0;
    (void)!read(0, &c, 1);
    pMessage->Close();
    return 0;
}
} // namespace

TEST(WaitMessage, WithoutATerminalIsSilentAndNeverCancelled)
{
    const size_t nThreads = CountThreads();
    MessageBoxService service;
    Callback callback;
    CaptureStderr();
    ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, &callback);
    ASSERT_NE(pMessage, nullptr);
    for (int n = 0; n < 5; ++n)
    {
        pMessage->SetProgress(L"Working", L"", 20 * n);
        EXPECT_FALSE(pMessage->GetCancelled());
        usleep(10 * 1000);
    }
    EXPECT_EQ(CountThreads(), nThreads);
    pMessage->Close();
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(callback.m_nCalls, 0);
}

TEST(WaitMessage, TakesAnyArguments)
{
    MessageBoxService service;
    CaptureStderr();
    ILyWaitMessage* pMessage = service.CreateWaitMessage(nullptr, -5, true, nullptr);
    ASSERT_NE(pMessage, nullptr);
    pMessage->SetProgress(nullptr, nullptr, -2147483647);
    pMessage->SetProgress(L"", L"", 2147483647);
    pMessage->Close();
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(WaitMessageOnTerminal, AppearsWithItsTextAndTheKeyThatCancels)
{
    PtyChild child(ShowUntilCancelled);
    EXPECT_TRUE(child.See("Working  (Esc cancels)"));
    EXPECT_TRUE(child.WaitForMode(true));
    child.Type(ESCAPE);
    EXPECT_EQ(child.Wait(), 3);
    EXPECT_THAT(child.ReadToEnd(), testing::EndsWith("\r" + std::string(22, ' ') + "\r")); // the line went
}

TEST(WaitMessageOnTerminal, EscapeAndQCancel)
{
    for (const std::string& strKeys : {ESCAPE, std::string("q"), std::string("Q"), "xy" + ESCAPE, ESCAPE + ESCAPE,
                                       UP_ARROW + "q", "\x1bOP" + ESCAPE})
    {
        PtyChild child(ShowUntilCancelled);
        EXPECT_TRUE(child.See("cancels)"));
        child.Type(strKeys);
        EXPECT_EQ(child.Wait(), 3);
    }
}

TEST(WaitMessageOnTerminal, OtherKeysDoNotCancel)
{
    PtyChild child(
        []
        {
            MessageBoxService service;
            ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, nullptr);
            usleep(500 * 1000);
            const bool bCancelled = pMessage->GetCancelled();
            pMessage->Close();
            return bCancelled ? 1 : 0;
        });
    EXPECT_TRUE(child.See("cancels)"));
    for (const std::string& strKeys : {std::string("x\n "), UP_ARROW, std::string("\x1bOQ"), std::string("\x1bx")})
        child.Type(strKeys);
    EXPECT_EQ(child.Wait(), 0);
}

TEST(WaitMessageOnTerminal, TheKeyForInterruptStillEndsTheProgram)
{
    PtyChild child(ShowUntilCancelled);
    EXPECT_TRUE(child.See("cancels)"));
    child.Type("\x03");
    EXPECT_EQ(child.Wait(), -1);
}

TEST(WaitMessageOnTerminal, TheModeIsBackAfterACancelAndAfterClose)
{
    for (bool bCancel : {true, false})
    {
        int aryGo[2];
        ASSERT_EQ(pipe(aryGo), 0);
        PtyChild child(
            [&]
            {
                MessageBoxService service;
                ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, nullptr);
                char c = 0;
                (void)!read(aryGo[0], &c, 1);
                pMessage->Close();
                (void)!read(aryGo[0], &c, 1);
                return 0;
            });
        EXPECT_TRUE(child.WaitForMode(true));
        if (bCancel)
            child.Type("q");
        else
            (void)!write(aryGo[1], "", 1);
        EXPECT_TRUE(child.WaitForMode(false));
        (void)!write(aryGo[1], "12", 2);
        EXPECT_EQ(child.Wait(), 0);
        close(aryGo[0]);
        close(aryGo[1]);
    }
}

TEST(WaitMessageOnTerminal, WithoutACancelButtonTheKeysAreLeftAlone)
{
    PtyChild child([] { return ShowUntilLine(L"Working", L"", -1); });
    EXPECT_TRUE(child.See("Working"));
    EXPECT_FALSE(child.TakesKeys());
    child.Type("q\n"); // goes to the program
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_THAT(child.ReadToEnd(), Not(HasSubstr("cancels")));
}

TEST(WaitMessageOnTerminal, ShowsTextsAndPercentage)
{
    const struct
    {
        const wchar_t* pText;
        const wchar_t* pSecondText;
        int nPercent;
        const char* pLine;
        unsigned short nColumns;
    } aryCases[] = {
        {L"Reading", L"", 25, "Reading  25%", 80},
        {L"Reading", nullptr, 0, "Reading  0%", 80},
        {L"Reading", L"track 3", 101, "Reading  track 3  100%", 80},
        {L"Reading", L"track 3", -7, "Reading  track 3", 80},
        {nullptr, L"", 1, "First  1%", 80},
        {L"", L"track 3", 1, "track 3  1%", 80},
        {L"a\nb\x1b[2J", L"", 1, "a b [2J  1%", 80},
        {L"01234567890123456789", L"", 50, "01234567890123  50%", 20}, // one column stays free
        {L"\u65e5\u65e5\u65e5\u65e5\u65e5", L"", 5, "\xe6\x97\xa5\xe6\x97\xa5  5%", 10},
        {L"Reading", L"", 50, "  5", 4},
    };
    for (const auto& each : aryCases)
    {
        SCOPED_TRACE(each.pLine);
        PtyChild child([&] { return ShowUntilLine(each.pText, each.pSecondText, each.nPercent); }, each.nColumns);
        EXPECT_TRUE(child.See(std::string("\r") + each.pLine));
        child.Type("\n");
        EXPECT_EQ(child.Wait(), 0);
    }
}

TEST(WaitMessageOnTerminal, IsNotSeenBeforeItsDelayIsOver)
{
    PtyChild child(
        []
        {
            MessageBoxService service;
            ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", LONG_DELAY_MS, true, nullptr);
            for (int n = 0; n < 20; ++n)
            {
                pMessage->SetProgress(L"Working", L"", n);
                usleep(10 * 1000);
            }
            pMessage->Close(); // does not wait for the delay
            return 0;
        });
    child.Type("q");
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(child.ReadToEnd(), "q"); // the terminal's own echo: the keys were nobody's
}

TEST(WaitMessageOnTerminal, AppearsAfterItsDelay)
{
    PtyChild child(
        []
        {
            const auto begin = std::chrono::steady_clock::now();
            MessageBoxService service;
            ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 300, true, nullptr);
            WaitForCancel(pMessage); // which takes a key, and keys are taken only when it is seen
            pMessage->Close();
            return std::chrono::steady_clock::now() - begin >= std::chrono::milliseconds(300) ? 0 : 1;
        });
    EXPECT_TRUE(child.See("Working"));
    EXPECT_TRUE(child.WaitForMode(true));
    child.Type("q");
    EXPECT_EQ(child.Wait(), 0);
}

TEST(WaitMessageOnTerminal, DrawsAFewOfManyChangesAndTheLastOneInAnyCase)
{
    constexpr int CHANGES = 20000;
    PtyChild child(
        []
        {
            MessageBoxService service;
            ILyWaitMessage* pMessage = service.CreateWaitMessage(L"Working", 0, true, nullptr);
            for (int n = 0; n <= CHANGES; ++n)
                pMessage->SetProgress(std::to_wstring(n).c_str(), L"step", n * 100 / CHANGES);
            WaitForCancel(pMessage);
            pMessage->Close();
            return 0;
        });
    EXPECT_TRUE(child.See("20000  step  100%"));
    child.Type("q");
    EXPECT_EQ(child.Wait(), 0);
    const std::string& strScreen = child.ReadToEnd();
    EXPECT_LT(std::count(strScreen.begin(), strScreen.end(), '%'), CHANGES / 10);
}

TEST(WaitMessageOnTerminal, AShorterTextLeavesNothingOfALongerOne)
{
    PtyChild child(
        []
        {
            MessageBoxService service;
            ILyWaitMessage* pMessage = service.CreateWaitMessage(L"a long text", 0, true, nullptr);
            usleep(300 * 1000);
            pMessage->SetProgress(L"short", L"", -1);
            WaitForCancel(pMessage);
            pMessage->Close();
            return 0;
        });
    EXPECT_TRUE(child.See("\ra long text  (Esc cancels)"));
    EXPECT_TRUE(child.See("\rshort  (Esc cancels)      "));
    child.Type("q");
    EXPECT_EQ(child.Wait(), 0);
}
