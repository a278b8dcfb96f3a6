#include "MarkupTestSupport.h"
#include <gtest/gtest.h>

namespace
{
constexpr wchar_t LIBRARY[] = L"<library>"
                              L"<disc id='1'><track>a</track><track n='2'>b</track></disc>"
                              L"<note/>"
                              L"<disc id='2'><title/><track>c</track><disc id='3'/></disc>"
                              L"</library>";
} // namespace

// ---- Paths, from the document

struct PATH_CASE
{
    const char* pName;
    const wchar_t* pPath;
    int nPos; // counted in the order of the start tags, from 1
};

class MarkupPath : public testing::TestWithParam<PATH_CASE>
{
};

// library 1, disc 2, track 3, track 4, note 5, disc 6, title 7, track 8, disc 9
const PATH_CASE s_aryPaths[] = {
    {"Null", nullptr, 1},
    {"Empty", L"", 1},
    {"Star", L"*", 1},
    {"Name", L"library", 1},
    {"NameInOtherCase", L"LIBRARY", 1},
    {"ShorterName", L"librar", 0},
    {"LongerName", L"library2", 0},
    {"NameOfAChild", L"disc", 0},
    {"RelativePath", L"library/note", 5},
    {"RelativePathGoesBackUp", L"library/disc/title", 7},
    {"FromTheRoot", L"/library/disc/track", 3},
    {"RootAlone", L"/", 1},
    {"FromTheRootOnly", L"/disc", 0},
    {"StarInPath", L"/library/*/title", 7},
    {"EmptyNameInPath", L"/library//title", 7},
    {"SlashAtTheEnd", L"/library/", 2},
    {"Anywhere", L"//title", 7},
    {"AnywhereTakesTheFirstInTheText", L"//track", 3},
    {"AnywhereAny", L"//", 1},
    {"AnywherePath", L"//disc/disc", 9},
    {"AnywherePathWithStar", L"//disc/*/nothing", 0},
    {"AnywhereNothing", L"//nothing", 0},
    {"First", L"/library/disc[1]", 2},
    {"Second", L"/library/disc[2]", 6},
    {"SecondOfAny", L"/library/*[2]", 5},
    {"Third", L"/library/disc[3]", 0},
    {"Zeroth", L"/library/disc[0]", 0},
    {"HugeNumber", L"/library/disc[99999999999999999999]", 0},
    {"NumberThenPath", L"/library/disc[2]/track", 8},
    {"NumberKeepsToItsOwn", L"/library/disc[1]/title", 0},
    {"AnywhereSecond", L"//track[2]", 4},
    {"AnywhereNumberThenName", L"//disc[2]/track[1]", 8},
    {"Attribute", L"//track[@n]", 4},
    {"AttributeInOtherCase", L"//track[@N]", 4},
    {"AttributeMissing", L"//track[@id]", 0},
    {"AttributeWithoutName", L"//disc[@]", 0},
    {"Child", L"//disc[title]", 6},
    {"ChildInOtherCase", L"//disc[TITLE]", 6},
    {"ChildMissing", L"//disc[note]", 0},
    {"AnyChild", L"/library/*[*]", 2},
    {"AnyChildEmpty", L"/library/*[]", 2},
    {"ChildThenPath", L"/library/disc[title]/disc", 9},
    {"OpenBracket", L"/library/disc[2", 6},
    {"TwoBrackets", L"/library/disc[1][1]", 0},
    {"BlankEndsTheName", L"/library/note and more", 5},
    {"EqualsEndsTheName", L"/library/note=1", 5},
};

TEST_P(MarkupPath, LeadsTo)
{
    CMarkup markup(LIBRARY);
    ASSERT_TRUE(markup.IsWellFormed());
    EXPECT_EQ(markup.x_FindElem(0, 0, GetParam().pPath), GetParam().nPos);
    EXPECT_EQ(markup.FindElem(GetParam().pPath), GetParam().nPos != 0);
    EXPECT_EQ(markup.m_nMainPos, GetParam().nPos);
}
INSTANTIATE_TEST_SUITE_P(Table, MarkupPath, testing::ValuesIn(s_aryPaths),
                         [](const auto& row) { return row.param.pName; });

TEST(MarkupFindElem, GoesOnBehindTheMainElement)
{
    CMarkup markup(LIBRARY);
    ASSERT_TRUE(markup.FindElem(L"library"));
    ASSERT_TRUE(markup.IntoElem());
    EXPECT_TRUE(markup.FindElem(L"disc"));
    EXPECT_EQ(Text(markup.GetAttrib(L"id")), L"1");
    EXPECT_TRUE(markup.FindElem(L"DISC"));
    EXPECT_EQ(Text(markup.GetAttrib(L"id")), L"2");
    EXPECT_FALSE(markup.FindElem(L"disc"));
    EXPECT_EQ(Text(markup.GetAttrib(L"id")), L"2") << "the place stays";
    EXPECT_FALSE(markup.FindElem(L"note")) << "it lies in front";
}

TEST(MarkupFindElem, WalksAllChildrenWithoutAName)
{
    CMarkup markup(LIBRARY);
    ASSERT_TRUE(markup.FindElem());
    ASSERT_TRUE(markup.IntoElem());
    std::wstring strNames;
    while (markup.FindElem())
        strNames += Text(markup.GetTagName()) + L' ';
    EXPECT_EQ(strNames, L"disc note disc ");
}

TEST(MarkupFindElem, AnywhereWalksTheWholeDocument)
{
    CMarkup markup(LIBRARY);
    std::wstring strIds;
    while (markup.FindElem(L"//disc"))
        strIds += Text(markup.GetAttrib(L"id"));
    EXPECT_EQ(strIds, L"123");
}

TEST(MarkupFindElem, FromTheRootMindsNoPlace)
{
    CMarkup markup(LIBRARY);
    ASSERT_TRUE(markup.FindElem(L"//title"));
    EXPECT_TRUE(markup.FindElem(L"/library/disc"));
    EXPECT_EQ(markup.m_nMainPos, 2);
}

TEST(MarkupFindElem, NumberedOneMustLieBehind)
{
    CMarkup markup(LIBRARY);
    ASSERT_TRUE(markup.FindElem());
    ASSERT_TRUE(markup.IntoElem());
    EXPECT_TRUE(markup.FindElem(L"disc[2]"));
    EXPECT_FALSE(markup.FindElem(L"disc[1]"));
}

TEST(MarkupFindElem, PathMovesTheParent)
{
    CMarkup markup(LIBRARY);
    ASSERT_TRUE(markup.FindElem(L"/library/disc/track[2]"));
    EXPECT_TRUE(markup.OutOfElem());
    EXPECT_EQ(Text(markup.GetTagName()), L"disc");
}

TEST(MarkupFindElem, WithCaseIfTheDocumentSaysSo)
{
    CMarkup markup;
    markup.m_nDocFlags = 0;
    ASSERT_TRUE(markup.SetDoc(L"<a><Item b='c'/></a>"));
    EXPECT_EQ(markup.x_FindElem(1, 0, L"ITEM"), 0);
    EXPECT_EQ(markup.x_FindElem(1, 0, L"Item"), 2);
    EXPECT_EQ(Text(markup.x_GetAttrib(2, L"B")), L"");
    EXPECT_FALSE(markup.SetDoc(L"<a></A>"));
}

TEST(MarkupFindElem, NamesOfOtherScriptsAreFoundWithoutCase)
{
    CMarkup markup(L"<r><\u00c9l\u00e9ment/></r>");
    EXPECT_EQ(markup.x_FindElem(1, 0, L"\u00c9L\u00e9MENT"), 2);
}

TEST(MarkupFindElem, NothingParsedHoldsNothing)
{
    CMarkup markup;
    EXPECT_FALSE(markup.FindElem());
    EXPECT_FALSE(markup.FindElem(L"//a"));
    EXPECT_EQ(markup.x_FindElem(0, 0, nullptr), 0);
}

TEST(MarkupFindElem, PositionsThatAreNoneFindNothing)
{
    CMarkup markup(L"<a/>");
    EXPECT_EQ(markup.x_FindElem(2, 0, nullptr), 0);
    EXPECT_EQ(markup.x_FindElem(-1, 0, nullptr), 0);
    EXPECT_EQ(markup.x_FindElem(0, 1000000, nullptr), 0);
}

TEST(MarkupFindElem, PathAboveTheLimitLeadsNowhere)
{
    std::wstring strText;
    std::wstring strPath;
    for (int i = 0; i < CMarkup::MAX_STEPS; ++i)
    {
        strText += L"<a>";
        strPath += L"/a";
    }
    CMarkup markup(strText.c_str());
    EXPECT_EQ(markup.x_FindElem(0, 0, strPath.c_str()), 0) << "nothing was ended, so nothing is nested";
    for (int i = 0; i < CMarkup::MAX_STEPS; ++i)
        strText += L"</a>";
    ASSERT_TRUE(markup.SetDoc(strText.c_str()));
    EXPECT_EQ(markup.x_FindElem(0, 0, strPath.c_str()), CMarkup::MAX_STEPS);
    EXPECT_EQ(markup.x_FindElem(0, 0, (strPath + L"/").c_str()), 0);
}

// ---- Into and out

TEST(MarkupIntoElem, MakesTheMainElementTheParent)
{
    CMarkup markup(L"<a><b><c/></b></a>");
    EXPECT_FALSE(markup.IntoElem()) << "there is no main element yet";
    EXPECT_EQ(markup.m_nParentPos, 0);
    ASSERT_TRUE(markup.FindElem());
    markup.m_nNodeLength = 3;
    EXPECT_TRUE(markup.IntoElem());
    EXPECT_EQ(markup.m_nParentPos, 1);
    EXPECT_EQ(markup.m_nMainPos, 0);
    EXPECT_EQ(markup.m_nNodeLength, 0) << "the current node goes";
    EXPECT_FALSE(markup.IntoElem());
    EXPECT_EQ(markup.m_nParentPos, 1);
}

TEST(MarkupOutOfElem, KeepsTheOldMainElementAsChild)
{
    CMarkup markup(L"<a><b/><c/></a>");
    EXPECT_FALSE(markup.OutOfElem());
    ASSERT_TRUE(markup.FindElem());
    ASSERT_TRUE(markup.IntoElem());
    ASSERT_TRUE(markup.FindElem(L"b"));
    EXPECT_TRUE(markup.OutOfElem());
    EXPECT_EQ(markup.m_nMainPos, 1);
    EXPECT_EQ(markup.m_nParentPos, 0);
    EXPECT_EQ(markup.m_nChildPos, 2);
    EXPECT_TRUE(markup.IntoElem()) << "and back to where it was";
    EXPECT_EQ(Text(markup.GetTagName()), L"b");
    EXPECT_TRUE(markup.FindElem(L"c"));
}

// ---- Tokens

struct MATCH_CASE
{
    const wchar_t* pName;
    bool bMatch;
};

TEST(MarkupTokenPos, StartsOnAnEmptyDocumentIgnoringCase)
{
    CMarkup::TokenPos token;
    EXPECT_EQ(0, token.GetLength());
    EXPECT_EQ(MARKUP_IGNORE_CASE, token.m_nTokenFlags);
    EXPECT_FALSE(CMarkup::x_FindName(token));
    EXPECT_FALSE(CMarkup::x_FindAttrib(token, L"a"));
    CMarkup::TokenPos null(nullptr);
    EXPECT_FALSE(CMarkup::x_FindAttrib(null, L"a"));
    EXPECT_EQ(0, CMarkup::x_GetToken(null).GetLength());
}

TEST(MarkupTokenPos, MatchesANameThatEnds)
{
    const MATCH_CASE aryCases[] = {{L"ab", true},   {L"AB", true},   {L"ab c", true}, {L"ab=1", true},
                                   {L"ab/c", true}, {L"ab[1", true}, {L"ab]", true},  {L"abc", false},
                                   {L"a", false},   {L"ab>", false}, {L"", false}};
    CMarkup::TokenPos token(L"<ab>", MARKUP_IGNORE_CASE);
    token.m_nLeft = 1;
    token.m_nRight = 3;
    for (const MATCH_CASE& row : aryCases)
        EXPECT_EQ(token.Match(row.pName), row.bMatch) << std::wstring(row.pName).c_str();
    token.m_nTokenFlags = 0;
    EXPECT_TRUE(token.Match(L"ab"));
    EXPECT_FALSE(token.Match(L"Ab"));
}

TEST(MarkupFindAny, SkipsWhiteSpace)
{
    int nOffset = 0;
    EXPECT_TRUE(CMarkup::x_FindAny(L" \t\n\rx", nOffset));
    EXPECT_EQ(nOffset, 4);
    nOffset = 0;
    EXPECT_FALSE(CMarkup::x_FindAny(L"  ", nOffset));
    EXPECT_EQ(nOffset, 2);
}

TEST(MarkupFindName, RunsToASeparator)
{
    for (const wchar_t c : std::wstring(L" \t\n\r<>=\\/?!"))
    {
        const std::wstring strText = std::wstring(L" ab") + c + L"d";
        CMarkup::TokenPos token(strText.c_str(), 0);
        EXPECT_TRUE(CMarkup::x_FindName(token));
        EXPECT_EQ(Text(CMarkup::x_GetToken(token)), L"ab");
        EXPECT_TRUE(CMarkup::x_FindName(token));
        EXPECT_FALSE(CMarkup::x_GetToken(token).IsEmpty()) << "at least one character";
    }
    CMarkup::TokenPos token(L"  ", 0);
    EXPECT_FALSE(CMarkup::x_FindName(token));
    EXPECT_TRUE(CMarkup::x_GetToken(token).IsEmpty());
}

TEST(MarkupFindName, SeparatorIsATokenOfOneCharacter)
{
    CMarkup::TokenPos token(L" a=b =/c", 0);
    for (const wchar_t* pToken : {L"a", L"=", L"b", L"=", L"/", L"c"})
    {
        EXPECT_TRUE(CMarkup::x_FindName(token));
        EXPECT_EQ(Text(CMarkup::x_GetToken(token)), pToken);
    }
    EXPECT_FALSE(CMarkup::x_FindName(token));
}

// ---- Attributes

struct ATTRIBUTE_CASE
{
    const char* pName;
    const wchar_t* pTag;
    const wchar_t* pValue; // of the attribute "b"; null if it is not found
};

class MarkupAttribute : public testing::TestWithParam<ATTRIBUTE_CASE>
{
};

const ATTRIBUTE_CASE s_aryAttributes[] = {
    {"DoubleQuotes", L"<a b=\"c d\">", L"c d"},
    {"SingleQuotes", L"<a b='c\"d'>", L"c\"d"},
    {"BlanksAroundEquals", L"<a b \t=\r\n 'c'>", L"c"},
    {"WithoutQuotes", L"<a b=c/d=e>", L"c/d=e"},
    {"WithoutQuotesToABlank", L"<a b=c d=e>", L"c"},
    {"WithoutQuotesTakesTheSlash", L"<a b=c/>", L"c/"},
    {"OtherCase", L"<a B='c'>", L"c"},
    {"Second", L"<a x='b' b='c'>", L"c"},
    {"AfterOneWithoutValue", L"<a x b='c'>", L"c"},
    {"EmptyElement", L"<a b='c'/>", L"c"},
    {"SlashBetween", L"<a x='1'/b='c'>", L"c"},
    {"ElementOfThatName", L"<b b='c'>", L"c"},
    {"OnlyElementOfThatName", L"<b x='c'>", nullptr},
    {"OnlyValueOfThatName", L"<a x='b'>", nullptr},
    {"QuotedNameIsNone", L"<a 'b'='c'>", nullptr},
    {"WithoutValue", L"<a b>", nullptr},
    {"WithoutValueBeforeAnother", L"<a b x='1'>", nullptr},
    {"LongerName", L"<a bc='c'>", nullptr},
    {"BehindTheTag", L"<a x='1'>b='c'", nullptr},
    {"AngleInValue", L"<a x='>' b='c>d'>", L"c>d"},
    {"EmptyValue", L"<a b=''>", L""},
    {"NoValueBehindEquals", L"<a b=>", L""},
    {"QuoteWithinAValue", L"<a x=1\">\" b='c'>", L"c"},
    {"QuoteWithinAName", L"<a x\"=\"y b='c'>d\">", L"c"},
};

TEST_P(MarkupAttribute, HasValue)
{
    CMarkup::TokenPos token(GetParam().pTag, MARKUP_IGNORE_CASE);
    token.m_nNext = 1;
    ASSERT_EQ(CMarkup::x_FindAttrib(token, L"b"), GetParam().pValue != nullptr);
    if (GetParam().pValue != nullptr)
    {
        EXPECT_EQ(Text(CMarkup::x_GetToken(token)), GetParam().pValue);
    }
}
INSTANTIATE_TEST_SUITE_P(Table, MarkupAttribute, testing::ValuesIn(s_aryAttributes),
                         [](const auto& row) { return row.param.pName; });

TEST(MarkupFindAttrib, TellsAQuotedValue)
{
    CMarkup::TokenPos token(L"<a b='c' d=e>", 0);
    token.m_nNext = 1;
    EXPECT_TRUE(CMarkup::x_FindAttrib(token, L"b"));
    EXPECT_EQ(token.m_nTokenFlags, 0x8000);
    token.m_nNext = 1;
    EXPECT_TRUE(CMarkup::x_FindAttrib(token, L"d"));
    EXPECT_EQ(token.m_nTokenFlags, 0);
}

TEST(MarkupFindAttrib, CountsNames)
{
    const wchar_t* aryNames[] = {L"b", L"d", L"f"};
    for (int i = 0; i < 4; ++i)
    {
        CMarkup::TokenPos token(L"<a b='1' d f=2>", 0);
        token.m_nNext = 1;
        ASSERT_EQ(CMarkup::x_FindAttrib(token, nullptr, i), i < 3);
        if (i < 3)
        {
            EXPECT_EQ(Text(CMarkup::x_GetToken(token)), aryNames[i]);
        }
    }
}
