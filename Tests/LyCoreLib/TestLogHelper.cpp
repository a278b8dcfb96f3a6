#include "LogHelper.h"
#include "Tools/FakeTools.h"
#include <cwchar>
#include <gtest/gtest.h>

namespace
{
constexpr int AREA = 4096;

// True for "Finish (", digits, " ms)" with the given beginning.
bool IsFinishLine(const wchar_t* pText, const wchar_t* pBegin)
{
    LyString strText(pText);
    if (!strText.RemoveLeft(pBegin, true))
        return false;
    int nDigits = 0;
    while (strText[nDigits] >= L'0' && strText[nDigits] <= L'9')
        nDigits++;
    return nDigits > 0 && strText.Mid(nDigits) == L" ms)";
}
} // namespace

TEST(LogHelper, WithoutToolsNothingHappensAndNothingIsLoaded)
{
    GetProcessInfo(true)->SetSharedLibraryPath(FakeTools::GetDirectory());
    {
        CLogHelper log(AREA, "Silence", true);
        log.Log("text");
        log.Log("format %d", 1);
        CLogHelper::Log(AREA, L"Silence", L"text %d", 1);
    }
    EXPECT_EQ(nullptr, GetLyTools(false));
}

TEST(LogHelper, LogDoesNotMakeTheServiceComeUp)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetServiceOnDemand(FAKE_LOG_MANAGER);
    {
        CLogHelper log(AREA, "Silence", true);
        log.Log("text");
        CLogHelper::Log(AREA, L"Silence", L"text");
    }
    EXPECT_EQ(nullptr, GetLogManager(false));
    EXPECT_EQ(0, tools->GetLogLineCount());
}

TEST(LogHelper, StartAndFinishStayOutUnlessAskedFor)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    {
        CLogHelper log(AREA, "CMemReader::start", false);
        log.SetResult(3);
    }
    EXPECT_EQ(0, tools->GetLogLineCount());
}

TEST(LogHelper, StartAndFinishAreWrittenWithMilliseconds)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    {
        CLogHelper log(AREA, "Copy", true);
        ASSERT_EQ(1, tools->GetLogLineCount());
    }
    ASSERT_EQ(2, tools->GetLogLineCount());
    FAKE_LOG_LINE start = tools->GetLogLine(0);
    EXPECT_EQ(AREA, start.nArea);
    EXPECT_STREQ(L"Copy", start.pName);
    EXPECT_STREQ(L"Start", start.pText);
    EXPECT_TRUE(start.bNarrow);
    FAKE_LOG_LINE finish = tools->GetLogLine(1);
    EXPECT_STREQ(L"Copy", finish.pName);
    EXPECT_TRUE(IsFinishLine(finish.pText, L"Finish (")) << LyStringANSI(finish.pText).Get();
}

TEST(LogHelper, ResultStandsInTheFinishLine)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    {
        CLogHelper log(1, "Copy", true);
        EXPECT_EQ(static_cast<int>(0x8a33f231), log.m_nResult) << "no result yet";
        log.SetResult(-5);
    }
    EXPECT_TRUE(IsFinishLine(tools->GetLogLine(1).pText, L"Finish (result: -5) ("));
}

TEST(LogHelper, MillisecondsAreTruncated)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    {
        CLogHelper log(1, "Sleep", true);
        Sleep(30);
    }
    LyString strFinish(tools->GetLogLine(1).pText);
    EXPECT_EQ(-1, strFinish.Find(L".", 0));
    strFinish.RemoveLeft(L"Finish (", true);
    EXPECT_GE(strFinish.GetInt(), 29);
}

TEST(LogHelper, TextsStayNarrowAndAreNotReadAsFormats)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    CLogHelper log(7, "N\xe4me", false); // each byte is one character
    log.Log("100%d \xfc");
    log.Log("%d %s %s", 5, L"wide", LyString(L"string"));
    ASSERT_EQ(2, tools->GetLogLineCount());
    EXPECT_EQ(7, tools->GetLogLine(0).nArea);
    EXPECT_STREQ(L"N\u00e4me", tools->GetLogLine(0).pName);
    EXPECT_STREQ(L"100%d \u00fc", tools->GetLogLine(0).pText);
    EXPECT_STREQ(L"5 wide string", tools->GetLogLine(1).pText);
    EXPECT_TRUE(tools->GetLogLine(0).bNarrow);
    EXPECT_TRUE(tools->GetLogLine(1).bNarrow);
}

TEST(LogHelper, StaticFormIsWideAndTakesTwentyValues)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    CLogHelper::Log(1, L"Static", L"text");
    CLogHelper::Log(2, L"Static", L"%d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %d", 1, 2, 3, 4, 5, 6, 7,
                    8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20);
    ASSERT_EQ(2, tools->GetLogLineCount());
    EXPECT_EQ(1, tools->GetLogLine(0).nArea);
    EXPECT_STREQ(L"text", tools->GetLogLine(0).pText);
    EXPECT_FALSE(tools->GetLogLine(0).bNarrow);
    EXPECT_EQ(2, tools->GetLogLine(1).nArea);
    EXPECT_STREQ(L"1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20", tools->GetLogLine(1).pText);
}

TEST(LogHelper, ServiceOperationsStandInTheThirdAndFourthPlace)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    void* pManager = GetLogManager(true);
    void** pTable = *static_cast<void***>(pManager);
    LyString strName(L"Raw");
    using WIDE = void (*)(void*, int, const LyString&, const wchar_t*, LyString::CFormatArgument**, int);
    using NARROW = void (*)(void*, int, const LyString&, const char*, LyString::CFormatArgument**, int);
    reinterpret_cast<WIDE>(pTable[2])(pManager, 3, strName, L"wide", nullptr, 0);
    reinterpret_cast<NARROW>(pTable[3])(pManager, 4, strName, "narrow", nullptr, 0);
    ASSERT_EQ(2, tools->GetLogLineCount());
    EXPECT_STREQ(L"wide", tools->GetLogLine(0).pText);
    EXPECT_FALSE(tools->GetLogLine(0).bNarrow);
    EXPECT_STREQ(L"narrow", tools->GetLogLine(1).pText);
    EXPECT_TRUE(tools->GetLogLine(1).bNarrow);
}
