// Markup, escapes of URLs, counters, names of files.

#include "LyStringFormat.h"
#include "StringTestSupport.h"
#include <gtest/gtest.h>
#include <string>

namespace
{
std::wstring Html(const std::wstring& strText, int nFlags)
{
    LyString str;
    str.FromStringInMemoryFast(strText.data(), static_cast<int>(strText.size()));
    return Contents(str.Htmlify(nFlags));
}

std::wstring Dehex(const wchar_t* pText, wchar_t cEscape = L'%', bool bKeep = false, bool bPlus = false)
{
    LyString str(pText);
    return Contents(str.Dehexify(cEscape, bKeep, bPlus));
}

std::wstring Increment(const wchar_t* pText, bool bRestart = false)
{
    LyString str(pText);
    return Contents(str.IncrementString(bRestart));
}
} // namespace

static_assert(LYSTRING_HTMLIFY_APOSTROPHES == 4 && LYSTRING_HTMLIFY_QUOTES == 8 && LYSTRING_HTMLIFY_CONTROLS == 16);
static_assert(LYSTRING_HTMLIFY_CONTROLS_TO_QUESTION_MARK == 32);

// ---- Htmlify

TEST(LyStringHtmlify, AlwaysEscapesMarkup)
{
    for (int nFlags : {0, 4, 8, 16, 32, 60, 3, -1})
        EXPECT_EQ(Html(L"a<b>&c", nFlags), L"a&lt;b&gt;&amp;c") << nFlags;
    EXPECT_EQ(Html(L"<", 0), L"&lt;");
    EXPECT_EQ(Html(L"&amp;", 0), L"&amp;amp;");
    EXPECT_EQ(Html(L"<<>>", 0), L"&lt;&lt;&gt;&gt;");
}

TEST(LyStringHtmlify, EscapesQuotesByFlags)
{
    EXPECT_EQ(Html(L"'\"", 0), L"'\"");
    EXPECT_EQ(Html(L"'\"", 4), L"&apos;\"");
    EXPECT_EQ(Html(L"'\"", 8), L"'&quot;");
    EXPECT_EQ(Html(L"'\"", 12), L"&apos;&quot;");
    EXPECT_EQ(Html(L"'\"", 48), L"'\"");
}

TEST(LyStringHtmlify, EscapesControlCharactersByFlags)
{
    const std::wstring strControls = L"\x01\x02\x1F\x20\t\n\r\x7F\x80";
    EXPECT_EQ(Html(strControls, 0), strControls);
    EXPECT_EQ(Html(strControls, 16), L"&#x1;&#x2;&#x1f;\x20\t\n\r\x7F\x80");
    EXPECT_EQ(Html(strControls, 48), L"&#x1;??\x20\t\n\r\x7F\x80"); // character 1 keeps its number
    EXPECT_EQ(Html(strControls, 32), strControls);                  // that flag alone does nothing
    EXPECT_EQ(Html(std::wstring(L"a\0b", 3), 16), L"a&#x0;b");
    EXPECT_EQ(Html(std::wstring(L"a\0b", 3), 48), L"a?b");
    EXPECT_EQ(Html(std::wstring(1, -5), 16), std::wstring(1, -5));
}

TEST(LyStringHtmlify, WithNothingToChangeTheStringStaysShared)
{
    LyString str(L"plain 'text' \"here\"\t\x01");
    LyString strCopy(str);
    str.Htmlify(0);
    EXPECT_EQ(TextOf(str), TextOf(strCopy));
    LyString strEmpty;
    EXPECT_STREQ(strEmpty.Htmlify(60), L"");
    str.Htmlify(4);
    EXPECT_STREQ(str, L"plain &apos;text&apos; \"here\"\t\x01");
    EXPECT_STREQ(strCopy, L"plain 'text' \"here\"\t\x01");
}

TEST(LyStringHtmlify, LongTextsGrow)
{
    std::wstring strExpected;
    for (int i = 0; i < 10000; ++i)
        strExpected += L"&quot;";
    EXPECT_EQ(Html(std::wstring(10000, L'"'), 8), strExpected);
    EXPECT_EQ(Html(std::wstring(10000, L'x') + L"<" + std::wstring(10000, L'y'), 8),
              std::wstring(10000, L'x') + L"&lt;" + std::wstring(10000, L'y'));
}

// ---- Dehexify

TEST(LyStringDehexify, TurnsTriplesIntoCharacters)
{
    EXPECT_EQ(Dehex(L""), L"");
    EXPECT_EQ(Dehex(L"abc"), L"abc");
    EXPECT_EQ(Dehex(L"a%20b"), L"a b");
    EXPECT_EQ(Dehex(L"%41%42%43"), L"ABC");
    EXPECT_EQ(Dehex(L"%4a%4A"), L"JJ");
    EXPECT_EQ(Dehex(L"=41%41", L'='), L"A%41");
    EXPECT_EQ(Dehex(L"a%00b"), std::wstring(L"a\0b", 3));
}

TEST(LyStringDehexify, IncompleteTriplesStay)
{
    for (const wchar_t* pText : {L"%", L"%4", L"a%4", L"%G1", L"%1G", L"%%", L"% 41", L"100%", L"%\xFF14\xFF11"})
        EXPECT_EQ(Dehex(pText), pText);
    EXPECT_EQ(Dehex(L"%%41"), L"%A");
    EXPECT_EQ(Dehex(L"%4%41"), L"%4A");
}

TEST(LyStringDehexify, PlusIsABlankOnlyIfAsked)
{
    EXPECT_EQ(Dehex(L"a+b%2Bc", L'%', false, false), L"a+b+c");
    EXPECT_EQ(Dehex(L"a+b%2Bc", L'%', false, true), L"a b+c");
    EXPECT_EQ(Dehex(L"+", L'%', false, true), L" ");
    EXPECT_EQ(Dehex(L"+41+", L'+', false, true), L"A ");
}

TEST(LyStringDehexify, TheResultIsNotDecodedAgain)
{
    EXPECT_EQ(Dehex(L"%2541", L'%', false), L"%41");
    EXPECT_EQ(Dehex(L"%2541", L'%', true), L"%41");
    EXPECT_EQ(Dehex(L"%25%41", L'%', true), L"%A");
    EXPECT_EQ(Dehex(L"%2525", L'%', true), L"%25");
}

// Digits behind a decoded escape character could only be an escape if that character is a digit itself.
TEST(LyStringDehexify, KeepsUpToThreeDigitsBehindAnEscapedEscape)
{
    EXPECT_EQ(Dehex(L"A41A42x", L'A', false), L"ABx");
    EXPECT_EQ(Dehex(L"A41A42x", L'A', true), L"AA42x");
    EXPECT_EQ(Dehex(L"A41A42A42", L'A', true), L"AA42B"); // three, not more
    EXPECT_EQ(Dehex(L"A411xA42", L'A', true), L"A1xB");
    EXPECT_EQ(Dehex(L"A41", L'A', true), L"A");
    EXPECT_EQ(Dehex(L"A41A4", L'A', true), L"AA4");
}

TEST(LyStringDehexify, TopBitsMakeItUTF8)
{
    EXPECT_EQ(Dehex(L"%C3%A4"), L"\xE4");
    EXPECT_EQ(Dehex(L"a%E2%82%ACb"), L"a\x20AC"
                                     L"b");
    EXPECT_EQ(Dehex(L"%E4"), L"\xE4"); // no sequence: stands for itself
    EXPECT_EQ(Dehex(L"\xC3\xA4%41"), L"\xC3\xA4"
                                     L"A");           // no decoded value has the bit
    EXPECT_EQ(Dehex(L"\xC3\xA4%C3%A4"), L"\xE4\xE4"); // the whole result is read
    EXPECT_EQ(Dehex(L"\x20AC%C3%A4"), L"\xAC\xE4");   // and each character is a byte
    EXPECT_EQ(Dehex(L"%7F"), L"\x7F");
}

TEST(LyStringDehexify, WithNothingToChangeTheStringStaysShared)
{
    LyString str(L"a+b%x");
    LyString strCopy(str);
    str.Dehexify(L'%', false, false);
    EXPECT_EQ(TextOf(str), TextOf(strCopy));
    str.Dehexify(L'%', false, true);
    EXPECT_STREQ(str, L"a b%x");
    EXPECT_STREQ(strCopy, L"a+b%x");
}

// ---- IncrementString

struct INCREMENT_CASE
{
    const wchar_t* pText;
    const wchar_t* pNext;
    const wchar_t* pRestarted;
};

const INCREMENT_CASE s_aryIncrementCases[] = {
    {L"Disc", L"Disc (1)", L"Disc (1)"},
    {L"Disc (1)", L"Disc (2)", L"Disc (2)"},
    {L"Disc (2)", L"Disc (3)", L"Disc (1)"},
    {L"Disc(9)", L"Disc(10)", L"Disc(1)"},
    {L"Disc  (1)", L"Disc  (2)", L"Disc  (2)"}, // one blank goes and comes back
    {L"Disc (9999)", L"Disc (10000)", L"Disc (1)"},
    {L"Disc (10000)", L"Disc (10000) (1)", L"Disc (10000) (1)"}, // five digits are no counter
    {L"Disc (0)", L"Disc (0) (1)", L"Disc (0) (1)"},
    {L"Disc (01)", L"Disc (01) (1)", L"Disc (01) (1)"},
    {L"Disc ()", L"Disc () (1)", L"Disc () (1)"},
    {L"Disc (1a)", L"Disc (1a) (1)", L"Disc (1a) (1)"},
    {L"Disc (-1)", L"Disc (-1) (1)", L"Disc (-1) (1)"},
    {L"Disc ( 1)", L"Disc ( 1) (1)", L"Disc ( 1) (1)"},
    {L"Disc (1) ", L"Disc (1)  (1)", L"Disc (1)  (1)"},
    {L"Disc 1)", L"Disc 1) (1)", L"Disc 1) (1)"},
    {L"(Live) Disc", L"(Live) Disc (1)", L"(Live) Disc (1)"},
    {L"Disc (1) (2)", L"Disc (1) (3)", L"Disc (1) (1)"},
    {L"(1)", L"(2)", L"(2)"},
    {L" (1)", L" (2)", L" (2)"},
    {L")", L") (1)", L") (1)"},
    {L"", L" (1)", L" (1)"},
    {L"Disc (\x661)", L"Disc (\x661) (1)", L"Disc (\x661) (1)"}, // only plain digits
    {L"100% (1)", L"100% (2)", L"100% (2)"},
    {L"%s%d", L"%s%d (1)", L"%s%d (1)"}, // the base is not a format
};

TEST(LyStringIncrementString, CountsUp)
{
    for (const INCREMENT_CASE& row : s_aryIncrementCases)
    {
        EXPECT_EQ(Increment(row.pText, false), row.pNext);
        EXPECT_EQ(Increment(row.pText, true), row.pRestarted);
    }
}

// ---- Names of files

TEST(LyStringFilename, OperationsWorkOnTheString)
{
    LyString str(L"/music//");
    EXPECT_STREQ(str.FixDirectoryPath(L'/'), L"/music/");
    EXPECT_STREQ(str.AddDirectory(L"disc"), L"/music/disc/");
    str = L"/music/a.wav";
    EXPECT_STREQ(str.IncrementFilename(false), L"/music/a (1).wav");
    EXPECT_STREQ(str.IncrementFilename(false), L"/music/a (2).wav");
    EXPECT_STREQ(str.IncrementFilename(true), L"/music/a (1).wav");
    str = L"C:\\music";
    EXPECT_STREQ(str.FixDirectoryPath(L'\\'), L"C:\\music\\");
    LyString strEmpty;
    EXPECT_STREQ(strEmpty.FixDirectoryPath(), L"");
}
