#include "LyCoreLib/RawTable.h"
#include "LyCoreLib/StandInTools.h"
#include "MessageBoxService.h"
#include "OptionsHelper.h"
#include "PtyChild.h"
#include <fcntl.h>
#include <gmock/gmock.h>
#include <thread>

using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace
{
using MEMORY = std::map<std::wstring, std::wstring>;

void Connect(MessageBoxService& service, MEMORY& memory)
{
    service.SetMemory([&memory](const wchar_t* pKey) { return memory.contains(pKey) ? memory[pKey] : std::wstring(); },
                      [&memory](const wchar_t* pKey, const wchar_t* pValue) { memory[pKey] = pValue; });
}

struct Box : LyMessageBoxDescriptor
{
    Box(MessageBoxService& service, int nButtons, const wchar_t* pKey = L"", bool bKeepAnswer = false)
    {
        m_strText.Set(L"Go on?");
        m_strCaption.Set(L"Drive");
        service.FillDefaultButtons(this);
        m_nService1 = nButtons;
        service.FillDefaultButtonTexts(this);
        m_strShowOnceKey.Set(pKey);
        m_bRemember = bKeepAnswer;
    }
};

// What is printed where nobody can be asked, and the answer.
std::pair<std::string, int> ShowUnasked(MessageBoxService& service, LyMessageBoxDescriptor& box)
{
    CaptureStderr();
    const int nAnswer = service.Show(&box);
    return {GetCapturedStderr(), nAnswer};
}

const std::string PRINTED = "Drive: Go on?\n";
} // namespace

TEST(MessageBoxService, DefaultButtonsAreAPlainOK)
{
    MessageBoxService service;
    LyMessageBoxDescriptor box;
    box.m_aryTexts[1].Set(L"from before");
    service.FillDefaultButtons(&box);
    service.FillDefaultButtonTexts(&box);
    EXPECT_EQ(box.m_nService1, MESSAGE_BOX_OK);
    EXPECT_EQ(box.m_nService5, 1);
    EXPECT_STREQ(box.m_aryTexts[0], L"OK");
    EXPECT_STREQ(box.m_aryTexts[1], L"");
}

TEST(MessageBoxService, EachSetOfButtonsHasItsTexts)
{
    const struct
    {
        int nSet;
        std::vector<std::wstring> aryTexts;
    } aryCases[] = {
        {MESSAGE_BOX_OK, {L"OK"}},
        {MESSAGE_BOX_OK_CANCEL, {L"OK", L"Cancel"}},
        {MESSAGE_BOX_YES_NO, {L"Yes", L"No"}},
        {MESSAGE_BOX_YES_NO_CANCEL, {L"Yes", L"No", L"Cancel"}},
        {4, {L"OK"}},
        {-1, {L"OK"}},
    };
    MessageBoxService service;
    for (const auto& each : aryCases)
    {
        Box box(service, each.nSet);
        for (size_t n = 0; n < each.aryTexts.size(); ++n)
            EXPECT_EQ(std::wstring(box.m_aryTexts[n]), each.aryTexts[n]) << each.nSet;
        EXPECT_STREQ(box.m_aryTexts[each.aryTexts.size()], L"");
    }
}

TEST(MessageBoxService, ButtonTextsAreTranslated)
{
    MessageBoxService service;
    service.SetTranslation([](const wchar_t* pText) { return std::wstring(pText) == L"Yes" ? L"Ja" : L""; });
    Box box(service, MESSAGE_BOX_YES_NO);
    EXPECT_STREQ(box.m_aryTexts[0], L"Ja");
    EXPECT_STREQ(box.m_aryTexts[1], L"No"); // what has no translation stays
}

TEST(MessageBoxService, WithoutATerminalTheTextIsPrintedAndTheDefaultAnswers)
{
    MessageBoxService service;
    const struct
    {
        int nDefault;
        int nAnswer;
    } aryCases[] = {{1, 1}, {2, 2}, {3, 3}, {0, 1}, {4, 1}, {-1, 1}, {2147483647, 1}};
    for (const auto& each : aryCases)
    {
        Box box(service, MESSAGE_BOX_YES_NO_CANCEL);
        box.m_nService5 = each.nDefault;
        EXPECT_EQ(ShowUnasked(service, box), std::make_pair(PRINTED, each.nAnswer)) << each.nDefault;
    }
}

TEST(MessageBoxService, NothingToShowIsNoBox)
{
    MessageBoxService service;
    EXPECT_EQ(service.Show(nullptr), 0);
    service.FillDefaultButtons(nullptr);
    service.FillDefaultButtonTexts(nullptr);
}

TEST(MessageBoxService, ABoxWithoutButtonsHasOne)
{
    MessageBoxService service;
    LyMessageBoxDescriptor box; // neither filled in nor with a text
    EXPECT_EQ(ShowUnasked(service, box), std::make_pair(std::string(), 1));
    LyCom::SysFreeString(box.m_strCaption.m_pText);
    box.m_strCaption.m_pText = nullptr;
    EXPECT_EQ(ShowUnasked(service, box).second, 1);
    for (LyXString& text : box.m_aryTexts)
        text.Set(L"x"); // no empty one ends them
    box.m_nService5 = LyMessageBoxDescriptor::TEXT_COUNT;
    EXPECT_EQ(ShowUnasked(service, box).second, 256);
}

TEST(MessageBoxService, AKeyIsShownOnce)
{
    MessageBoxService service;
    MEMORY memory;
    Connect(service, memory);
    for (bool bRemember : {false, true})
    {
        memory.clear();
        Box box(service, MESSAGE_BOX_OK, L"NoDisc", bRemember);
        EXPECT_EQ(ShowUnasked(service, box), std::make_pair(PRINTED, 1));
        EXPECT_EQ(memory, (MEMORY{{L"NoDisc", bRemember ? L"1" : L"shown"}}));
        EXPECT_EQ(ShowUnasked(service, box), std::make_pair(std::string(), 1));
        Box other(service, MESSAGE_BOX_OK, L"AnotherKey", bRemember);
        EXPECT_EQ(ShowUnasked(service, other), std::make_pair(PRINTED, 1));
    }
}

TEST(MessageBoxService, WithoutAKeyItIsShownEachTimeAndNothingIsKept)
{
    MessageBoxService service;
    MEMORY memory;
    Connect(service, memory);
    Box box(service, MESSAGE_BOX_OK, L"", true);
    EXPECT_EQ(ShowUnasked(service, box).first, PRINTED);
    EXPECT_EQ(ShowUnasked(service, box).first, PRINTED);
    EXPECT_TRUE(memory.empty());
}

TEST(MessageBoxService, WithoutAMemoryAKeyLastsAsLongAsTheService)
{
    for (int nService = 0; nService < 2; ++nService)
    {
        MessageBoxService service;
        Box box(service, MESSAGE_BOX_OK, L"NoDisc");
        EXPECT_EQ(ShowUnasked(service, box).first, PRINTED);
        EXPECT_EQ(ShowUnasked(service, box).first, "");
    }
}

TEST(MessageBoxService, AChoiceThatNobodyMadeIsNotKept)
{
    MessageBoxService service;
    MEMORY memory;
    Connect(service, memory);
    Box box(service, MESSAGE_BOX_YES_NO, L"Choice", true);
    EXPECT_EQ(ShowUnasked(service, box).first, PRINTED);
    EXPECT_EQ(ShowUnasked(service, box).first, PRINTED);
    EXPECT_TRUE(memory.empty());
}

TEST(MessageBoxService, AKeptAnswerComesBackIfItIsWantedAndStillAButton)
{
    const struct
    {
        const wchar_t* pKept;
        bool bRemember;
        int nAnswer; // of two buttons, of which the first is the default
    } aryCases[] = {
        {L"2", true, 2},         {L"1", true, 1},      {L"2", false, 1},
        {L"shown", true, 1},     {L"shown", false, 1}, {L"3", true, 1},
        {L"0", true, 1},         {L"-2", true, 1},     {L"99999999999999999999", true, 1},
        {L"no number", true, 1},
    };
    for (const auto& each : aryCases)
    {
        MessageBoxService service;
        MEMORY memory{{L"Key", each.pKept}};
        Connect(service, memory);
        Box box(service, MESSAGE_BOX_YES_NO, L"Key", each.bRemember);
        EXPECT_EQ(ShowUnasked(service, box), std::make_pair(std::string(), each.nAnswer));
        EXPECT_EQ(memory, (MEMORY{{L"Key", each.pKept}}));
    }
}

TEST(MessageBoxService, AMemoryThatFailsRemembersNothing)
{
    MessageBoxService service;
    service.SetMemory([](const wchar_t*) -> std::wstring { throw 1; }, [](const wchar_t*, const wchar_t*) { throw 2; });
    Box box(service, MESSAGE_BOX_OK, L"Key");
    EXPECT_EQ(ShowUnasked(service, box), std::make_pair(PRINTED, 1));
    EXPECT_EQ(ShowUnasked(service, box), std::make_pair(PRINTED, 1));
}

TEST(MessageBoxService, ThreadsShowAKeyOnce)
{
    MessageBoxService service;
    MEMORY memory;
    Connect(service, memory);
    CaptureStderr();
    std::vector<std::thread> aryThreads;
    for (int n = 0; n < 4; ++n)
        aryThreads.emplace_back(
            [&]
            {
                Box box(service, MESSAGE_BOX_OK, L"Key");
                EXPECT_EQ(service.Show(&box), 1);
            });
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ(GetCapturedStderr(), PRINTED);
}

TEST(MessageBoxService, OperationsStandInTheirSlots)
{
    MessageBoxService service;
    ILyMessageBox* pService = &service;
    LyMessageBoxDescriptor box;
    LyMessageBoxDescriptor* pBox = &box;
    box.m_nService1 = MESSAGE_BOX_YES_NO;
    CallSlot<void>(pService, 14, pBox); // the fifteenth
    EXPECT_STREQ(box.m_aryTexts[1], L"No");
    CallSlot<void>(pService, 13, pBox);
    EXPECT_EQ(box.m_nService1, MESSAGE_BOX_OK);
    box.m_nService5 = 2;
    CaptureStderr();
    EXPECT_EQ(CallSlot<int>(pService, 2, pBox), 2);
    const wchar_t* pText = L"text";
    ILyWaitMessageCallback* pCallback = nullptr;
    auto* pMessage = CallSlot<ILyWaitMessage*>(pService, 3, pText, 0, true, pCallback);
    EXPECT_EQ(GetCapturedStderr(), "");
    ASSERT_NE(pMessage, nullptr);
    EXPECT_FALSE(CallSlot<bool>(pMessage, 0));
    CallSlot<void>(pMessage, 1, pText, pText, 50);
    CallSlot<void>(pMessage, 2);
}

namespace
{
class BoxTools : public StandInTools
{
public:
    ILyMessageBox* GetLyMessageBoxHelper(bool) override { return &m_Service; }

    MessageBoxService m_Service;
};
} // namespace

TEST(MessageBoxService, ServesTheFrontEnd)
{
    BoxTools tools;
    CaptureStderr();
    EXPECT_EQ(IMB(L"There is no disc.", L"Drive", L"Key", true, false), 1);
    EXPECT_EQ(IMB(L"There is no disc.", L"Drive", L"Key", true, false), 1);
    EXPECT_EQ(IMB(L"Each time.", L"Drive", L"", false, false), 1);
    EXPECT_EQ(IMB(L"Each time.", L"Drive", L"", false, false), 1);
    EXPECT_EQ(GetCapturedStderr(), "Drive: There is no disc.\nDrive: Each time.\nDrive: Each time.\n");
}

namespace
{
int AskThreeButtons()
{
    MessageBoxService service;
    Box box(service, MESSAGE_BOX_YES_NO_CANCEL);
    box.m_nService5 = 3;
    return service.Show(&box);
}
} // namespace

TEST(MessageBoxOnTerminal, AsksWithNumberedButtons)
{
    const struct
    {
        const char* pTyped;
        int nAnswer;
    } aryCases[] = {{"\r", 3}, {"\n", 3}, {"2\n", 2}, {"y\n", 1}, {"No\n", 2}, {"\x04", 3}};
    for (const auto& each : aryCases)
    {
        PtyChild child(AskThreeButtons);
        EXPECT_TRUE(child.See("Drive\r\nGo on?\r\n  1  Yes\r\n  2  No\r\n  3  Cancel\r\n[3] "));
        child.Type(each.pTyped);
        EXPECT_EQ(child.Wait(), each.nAnswer) << each.pTyped;
    }
}

TEST(MessageBoxOnTerminal, AsksAgainAfterAnAnswerThatIsNone)
{
    PtyChild child(AskThreeButtons);
    EXPECT_TRUE(child.See("[3] "));
    child.Type("7\n");
    EXPECT_TRUE(child.See("[3] "));
    child.Type("maybe\n");
    EXPECT_TRUE(child.See("[3] "));
    child.Type("1\n");
    EXPECT_EQ(child.Wait(), 1);
}

TEST(MessageBoxOnTerminal, OneButtonWaitsForEnter)
{
    PtyChild child(
        []
        {
            MessageBoxService service;
            Box box(service, MESSAGE_BOX_OK);
            box.m_strText.Set(L"first\nsecond\x1b[2J");
            return service.Show(&box);
        });
    EXPECT_TRUE(child.See("Drive\r\nfirst\r\nsecond\\x1b[2J\r\n[OK] "));
    child.Type("\n");
    EXPECT_EQ(child.Wait(), 1);
}

TEST(MessageBoxOnTerminal, ALineIsShownEvenIfTheHostTakesKeysOnly)
{
    PtyChild child(
        []
        {
            termios mode{};
            (void)tcgetattr(0, &mode);
            mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
            (void)tcsetattr(0, TCSANOW, &mode);
            const int nAnswer = AskThreeButtons();
            (void)tcgetattr(0, &mode);
            return (mode.c_lflag & (ICANON | ECHO)) == 0 ? nAnswer : 99; // as the host had it
        });
    EXPECT_TRUE(child.See("[3] "));
    child.Type("2\n");
    EXPECT_TRUE(child.See("2\r\n"));
    EXPECT_EQ(child.Wait(), 2);
}

TEST(MessageBoxOnTerminal, AnAnswerIsKept)
{
    PtyChild child(
        []
        {
            MessageBoxService service;
            Box kept(service, MESSAGE_BOX_YES_NO, L"Kept", true);
            Box once(service, MESSAGE_BOX_YES_NO, L"Once", false);
            int nAnswers = 0;
            for (int n = 0; n < 2; ++n)
                for (Box* pBox : {&kept, &once})
                    nAnswers = 3 * nAnswers + service.Show(pBox);
            return nAnswers;
        });
    child.Type("2\n2\n");
    EXPECT_EQ(child.Wait(), ((2 * 3 + 2) * 3 + 2) * 3 + 1); // the second time: the kept one, and the default
}

TEST(MessageBoxOnTerminal, NobodyIsAskedWhenTheInputComesFromElsewhere)
{
    PtyChild child(
        []
        {
            (void)dup2(open("/dev/null", O_RDONLY), 0);
            return AskThreeButtons();
        });
    EXPECT_EQ(child.Wait(), 3);
    EXPECT_THAT(child.ReadToEnd(), HasSubstr("Drive: Go on?\r\n"));
}

TEST(MessageBoxOnTerminal, NobodyIsAskedInTheBackground)
{
    PtyChild child(
        []
        {
            const pid_t nChild = fork();
            if (nChild == 0)
            {
                (void)setpgid(0, 0); // and not tcsetpgrp
                _exit(AskThreeButtons());
            }
            int nStatus = 0;
            (void)waitpid(nChild, &nStatus, WUNTRACED);
            return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 99;
        });
    EXPECT_EQ(child.Wait(), 3);
}

TEST(MessageBoxOnTerminal, TheUserWhoLeavesTakesTheDefault)
{
    int aryResult[2];
    ASSERT_EQ(pipe(aryResult), 0);
    {
        PtyChild child(
            [&]
            {
                (void)std::signal(SIGHUP, SIG_IGN);
                const char nAnswer = static_cast<char>(AskThreeButtons());
                (void)!write(aryResult[1], &nAnswer, 1);
                return 0;
            });
        EXPECT_TRUE(child.See("[3] "));
        child.HangUp();
        char nAnswer = 0;
        EXPECT_EQ(read(aryResult[0], &nAnswer, 1), 1);
        EXPECT_EQ(nAnswer, 3);
    }
    close(aryResult[0]);
    close(aryResult[1]);
}
