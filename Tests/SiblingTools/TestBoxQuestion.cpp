#include "BoxQuestion.h"
#include <gtest/gtest.h>

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace
{
BoxQuestion MakeQuestion(std::vector<std::wstring> aryButtons, int nDefault = 1)
{
    BoxQuestion question;
    question.m_aryButtons = std::move(aryButtons);
    question.m_nDefault = nDefault;
    return question;
}

struct LINE_CASE
{
    const wchar_t* pLine;
    int nButton; // of Yes, No, Never, Cancel, of which the third is the default
};

const LINE_CASE s_aryLineCases[] = {
    {L"", 3},   {L"  ", 3}, {L"1", 1},           {L" 2 ", 2}, {L"4", 4},   {L"04", 4},     {L"0", 0},
    {L"5", 0},  {L"-1", 0}, {L"99999999999", 0}, {L"y", 1},   {L"YES", 1}, {L"cAn", 4},    {L"n", 0},
    {L"no", 2}, {L"ne", 3}, {L"yess", 0},        {L"x", 0},   {L"1 2", 0}, {L"\u00e9", 0},
};
} // namespace

TEST(BoxQuestion, ALineNamesAButtonByNumberOrText)
{
    const BoxQuestion question = MakeQuestion({L"Yes", L"No", L"Never", L"Cancel"}, 3);
    for (const LINE_CASE& each : s_aryLineCases)
        EXPECT_EQ(question.FindButton(each.pLine), each.nButton)
            << std::string(each.pLine, each.pLine + wcslen(each.pLine));
}

TEST(BoxQuestion, WithOneButtonEveryLineIsThatButton)
{
    const BoxQuestion question = MakeQuestion({L"OK"});
    for (const wchar_t* pLine : {L"", L"ok", L"7", L"whatever"})
        EXPECT_EQ(question.FindButton(pLine), 1);
}

TEST(BoxQuestion, OnlyItsButtonsAreButtons)
{
    const BoxQuestion question = MakeQuestion({L"Yes", L"No"});
    EXPECT_FALSE(question.IsButton(-1));
    EXPECT_FALSE(question.IsButton(0));
    EXPECT_TRUE(question.IsButton(1));
    EXPECT_TRUE(question.IsButton(2));
    EXPECT_FALSE(question.IsButton(3));
}

TEST(BoxQuestion, IsPrintedAsOneLine)
{
    const struct
    {
        const wchar_t* pCaption;
        const wchar_t* pText;
        const char* pLine;
    } aryCases[] = {
        {L"Drive D:", L"There is no disc.", "Drive D:: There is no disc.\n"},
        {L"", L"There is no disc.", "There is no disc.\n"},
        {L"Drive", L"", "Drive\n"},
        {L"", L"", ""},
        {L"A", L"first\r\nsecond\n\nthird\n", "A: first second third\n"},
        {L"A", L"\x1b[2J", "A: \\x1b[2J\n"},
    };
    for (const auto& each : aryCases)
    {
        BoxQuestion question = MakeQuestion({L"OK"});
        question.m_strCaption = each.pCaption;
        question.m_strText = each.pText;
        CaptureStderr();
        question.Print();
        EXPECT_EQ(GetCapturedStderr(), each.pLine);
    }
}
