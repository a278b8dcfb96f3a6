#include "MarkupTestSupport.h"
#include <gtest/gtest.h>

namespace
{
// The text that edits leave must read back as the tree that they left.
void ExpectConsistent(const CMarkup& markup)
{
    EXPECT_TRUE(CheckTree(markup));
    EXPECT_EQ(Outline(CMarkup(markup.GetDoc())), Outline(markup));
}
} // namespace

// ---- Attributes

struct SET_CASE
{
    const char* pName;
    const wchar_t* pBefore;
    const wchar_t* pAttribute;
    const wchar_t* pValue;
    const wchar_t* pAfter;
};

class MarkupSetAttrib : public testing::TestWithParam<SET_CASE>
{
};

const SET_CASE s_arySets[] = {
    {"NewRightBehindTheName", L"<a c='d'/>", L"b", L"1", L"<a b=\"1\" c='d'/>"},
    {"NewInABareTag", L"<a>x</a>", L"b", L"1", L"<a b=\"1\">x</a>"},
    {"NewInABareEmptyElement", L"<a/>", L"b", L"1", L"<a b=\"1\"/>"},
    {"ReplacesOnlyTheValue", L"<a x='0'  b = 'old' c='d'/>", L"b", L"n", L"<a x='0'  b = \"n\" c='d'/>"},
    {"ReplacesInOtherCase", L"<a B='old'/>", L"b", L"n", L"<a B=\"n\"/>"},
    {"ReplacesWithoutQuotes", L"<a b=old c=d>x</a>", L"b", L"n", L"<a b=\"n\" c=d>x</a>"},
    {"KeepsTheSlashOfTheElement", L"<a b=old/>", L"b", L"n", L"<a b=\"n\"/>"},
    {"FillsAMissingValue", L"<a b=>x</a>", L"b", L"n", L"<a b=\"n\">x</a>"},
    {"Escapes", L"<a/>", L"b", L"<&>'\"\x02", L"<a b=\"&lt;&amp;&gt;&apos;&quot;?\"/>"},
    {"NullIsEmpty", L"<a/>", L"b", nullptr, L"<a b=\"\"/>"},
    {"Shorter", L"<a b='a long old value'/>", L"b", L"", L"<a b=\"\"/>"},
};

TEST_P(MarkupSetAttrib, ChangesTheTag)
{
    CMarkup markup(GetParam().pBefore);
    EXPECT_TRUE(markup.x_SetAttrib(1, GetParam().pAttribute, GetParam().pValue));
    EXPECT_EQ(Text(markup.GetDoc()), GetParam().pAfter);
    ExpectConsistent(markup);
}
INSTANTIATE_TEST_SUITE_P(Table, MarkupSetAttrib, testing::ValuesIn(s_arySets),
                         [](const auto& row) { return row.param.pName; });

TEST(MarkupSetAttribute, MovesWhatFollows)
{
    CMarkup markup(L"<r><a><b>1</b></a><c>2</c></r>");
    EXPECT_TRUE(markup.x_SetAttrib(2, L"x", L"yz"));
    EXPECT_EQ(Text(markup.GetDoc()), L"<r><a x=\"yz\"><b>1</b></a><c>2</c></r>");
    EXPECT_EQ(Text(markup.x_GetData(3)), L"1");
    EXPECT_EQ(Text(markup.x_GetData(4)), L"2");
    EXPECT_EQ(Text(markup.x_GetAttrib(2, L"x")), L"yz");
    EXPECT_EQ(markup.x_GetPos(0).m_nLength, markup.GetDoc().GetLength());
    ExpectConsistent(markup);
}

TEST(MarkupSetAttribute, RefusesWhatIsNoNameOrElement)
{
    CMarkup markup(L"<a b='1'/>");
    for (const wchar_t* pName : {L"", L"b c", L"b=", L"b>", L"<b", L"b/", L"b'", L"b\"", L"b[", L"b]"})
        EXPECT_FALSE(markup.x_SetAttrib(1, pName, L"x"));
    EXPECT_FALSE(markup.x_SetAttrib(1, nullptr, L"x"));
    EXPECT_FALSE(markup.x_SetAttrib(0, L"b", L"x"));
    EXPECT_FALSE(markup.x_SetAttrib(2, L"b", L"x"));
    EXPECT_FALSE(CMarkup().x_SetAttrib(1, L"b", L"x"));
    EXPECT_EQ(Text(markup.GetDoc()), L"<a b='1'/>");
}

TEST(MarkupSetAttribute, RefusesATagAboveTheLimit)
{
    CMarkup markup(L"<a/>"); // <a b="..."/> has 9 characters beside the value
    const std::wstring strValue(0xfffff - 9, L'v');
    EXPECT_FALSE(markup.x_SetAttrib(1, L"b", (strValue + L"v").c_str()));
    EXPECT_EQ(Text(markup.GetDoc()), L"<a/>");
    EXPECT_TRUE(markup.x_SetAttrib(1, L"b", strValue.c_str()));
    EXPECT_EQ(markup.x_GetPos(1).GetStartTagLength(), 0xfffff);
    EXPECT_FALSE(markup.x_SetAttrib(1, L"c", L""));
    EXPECT_TRUE(markup.x_SetAttrib(1, L"b", L"short"));
    ExpectConsistent(markup);
}

// ---- Elements

struct ADD_CASE
{
    const char* pName;
    const wchar_t* pBefore;
    const wchar_t* pPath; // the main element; null for none
    bool bInto;           // and then into it
    const wchar_t* pValue;
    int nFlags;
    const wchar_t* pAfter;
};

class MarkupAddElem : public testing::TestWithParam<ADD_CASE>
{
};

const ADD_CASE s_aryAdds[] = {
    {"EmptyDocument", L"", nullptr, false, L"v", 0, L"<n>v</n>\r\n"},
    {"WithoutValue", L"", nullptr, false, nullptr, 0, L"<n/>\r\n"},
    {"EmptyValueIsNone", L"", nullptr, false, L"", 0, L"<n/>\r\n"},
    {"BlankInEmptyElement", L"", nullptr, false, nullptr, 4, L"<n />\r\n"},
    {"NoLineEnd", L"", nullptr, false, L"v", 2, L"<n>v</n>"},
    {"NoEndTag", L"", nullptr, false, nullptr, 16, L"<n>\r\n"},
    {"Escaped", L"", nullptr, false, L"<&>'\"", 0, L"<n>&lt;&amp;&gt;'\"</n>\r\n"},
    {"Section", L"", nullptr, false, L"a]]>b", 1, L"<n><![CDATA[a]]]]><![CDATA[>b]]></n>\r\n"},
    {"AfterADeclaration", L"<?xml?>", nullptr, false, L"v", 0, L"<?xml?>\r\n<n>v</n>\r\n"},
    {"BehindMain", L"<r>\r\n<a/>\r\n<b/>\r\n</r>", L"r/a", false, L"v", 0, L"<r>\r\n<a/>\r\n<n>v</n>\r\n<b/>\r\n</r>"},
    {"BehindMainWithoutLineEnds", L"<r>\r\n<a/>\r\n</r>", L"r/a", false, L"v", 2, L"<r>\r\n<a/><n>v</n>\r\n</r>"},
    {"BehindMainInALine", L"<r><a/><b/></r>", L"r/a", false, L"v", 0, L"<r><a/><n>v</n>\r\n<b/></r>"},
    {"InFrontOfMain", L"<r><a/><b/></r>", L"r/b", false, L"v", 0x1000, L"<r><a/><n>v</n>\r\n<b/></r>"},
    {"InFrontOfTheFirst", L"<r><a/></r>", L"r/a", false, L"v", 0x1002, L"<r><n>v</n><a/></r>"},
    {"BehindMainAsAsked", L"<r><a/><b/></r>", L"r/a", false, L"v", 0x2002, L"<r><a/><n>v</n><b/></r>"},
    {"LastInParent", L"<r>\r\n<a/>\r\n</r>", L"r", true, L"v", 0, L"<r>\r\n<a/>\r\n<n>v</n>\r\n</r>"},
    {"LastInParentInALine", L"<r><a/></r>", L"r", true, L"v", 0, L"<r><a/>\r\n<n>v</n>\r\n</r>"},
    {"FirstInParent", L"<r><a/></r>", L"r", true, L"v", 0x1002, L"<r><n>v</n><a/></r>"},
    {"ParentWithoutContent", L"<r></r>", L"r", true, L"v", 0, L"<r>\r\n<n>v</n>\r\n</r>"},
    {"ParentWithoutContentInALine", L"<r></r>", L"r", true, L"v", 2, L"<r><n>v</n></r>"},
    {"OpensAnEmptyParent", L"<r/>", L"r", true, L"v", 0, L"<r>\r\n<n>v</n>\r\n</r>"},
    {"OpensAnEmptyParentInALine", L"<r/>", L"r", true, L"v", 2, L"<r><n>v</n></r>"},
    {"OpensWithAttributes", L"<r a=\"b\" />", L"r", true, L"v", 2, L"<r a=\"b\"><n>v</n></r>"},
    {"OpensTwoSlashes", L"<r//>", L"r", true, L"v", 2, L"<r><n>v</n></r>"},
    {"OpensAParentWithoutEndTag", L"<r><a></r>", L"r/a", true, L"v", 2, L"<r><a><n>v</n></a></r>"},
    {"BehindTextOfTheParent", L"<r>text</r>", L"r", true, L"v", 0, L"<r>text\r\n<n>v</n>\r\n</r>"},
    {"AsChild", L"<r><a/></r>", L"r", false, L"v", 0x4002, L"<r><a/><n>v</n></r>"},
    {"AsChildOfAnEmptyElement", L"<r><a/></r>", L"r/a", false, L"v", 0x4000, L"<r><a>\r\n<n>v</n>\r\n</a></r>"},
};

TEST_P(MarkupAddElem, ChangesTheDocument)
{
    CMarkup markup(GetParam().pBefore);
    if (GetParam().pPath != nullptr)
    {
        ASSERT_TRUE(markup.FindElem(GetParam().pPath));
    }
    if (GetParam().bInto)
    {
        ASSERT_TRUE(markup.IntoElem());
    }
    ASSERT_TRUE(markup.x_AddElem(L"n", GetParam().pValue, GetParam().nFlags));
    EXPECT_EQ(Text(markup.GetDoc()), GetParam().pAfter);
    const int nNew = (GetParam().nFlags & 0x4000) != 0 ? markup.m_nChildPos : markup.m_nMainPos;
    EXPECT_EQ(Text(markup.x_GetTagName(nNew)), L"n");
    EXPECT_EQ(Text(markup.x_GetData(nNew)), GetParam().pValue != nullptr ? GetParam().pValue : L"");
    ExpectConsistent(markup);
}
INSTANTIATE_TEST_SUITE_P(Table, MarkupAddElem, testing::ValuesIn(s_aryAdds),
                         [](const auto& row) { return row.param.pName; });

TEST(MarkupAddElement, RefusesWhatCannotBe)
{
    CMarkup markup(L"<a/>");
    for (const wchar_t* pName : {L"", L"1", L"-a", L"a b", L"a>", L"a/", L"a<", L"a=b", L"a'b", L"a[b]", L"?a", L"!a"})
        EXPECT_FALSE(markup.x_AddElem(pName, nullptr, 0));
    EXPECT_FALSE(markup.x_AddElem(nullptr, nullptr, 0));
    EXPECT_FALSE(markup.x_AddElem(L"b", L"value", 16)) << "no end tag, so no value";
    EXPECT_FALSE(markup.x_AddElem(L"b", nullptr, 0x4000)) << "no main element to be its parent";
    EXPECT_EQ(Text(markup.GetDoc()), L"<a/>");
    EXPECT_TRUE(CheckTree(markup));
}

TEST(MarkupAddElement, RefusesAnEndTagAboveTheLimit)
{
    CMarkup markup;
    const std::wstring strName(1021, L'n');
    EXPECT_FALSE(markup.x_AddElem(strName.c_str(), L"v", 0));
    EXPECT_TRUE(markup.x_AddElem(strName.c_str(), nullptr, 0));
    EXPECT_TRUE(markup.IntoElem());
    const LyString strBefore = markup.GetDoc();
    EXPECT_FALSE(markup.x_AddElem(L"a", nullptr, 0)) << "its parent cannot be given an end tag";
    EXPECT_EQ(markup.GetDoc(), strBefore);
    EXPECT_TRUE(CheckTree(markup));
    EXPECT_TRUE(markup.OutOfElem());
    EXPECT_TRUE(markup.x_AddElem(strName.substr(1).c_str(), L"v", 0)) << "the refused position is used again";
    EXPECT_EQ(markup.m_nMainPos, 2);
    ExpectConsistent(markup);
}

TEST(MarkupAddElement, SetsFlagsAndLevel)
{
    CMarkup markup(L"<r><a/></r>");
    ASSERT_TRUE(markup.FindElem(L"r/a"));
    ASSERT_TRUE(markup.x_AddElem(L"n", nullptr, 16));
    EXPECT_EQ(markup.x_GetPos(markup.m_nMainPos).m_nFlags, 0x100001U);
    EXPECT_EQ(markup.x_GetPos(markup.m_nMainPos).m_nPreviousSibling, 2);
    EXPECT_EQ(markup.x_GetPos(2).m_nPreviousSibling, markup.m_nMainPos) << "the last one";
    ASSERT_TRUE(markup.x_AddElem(L"m", nullptr, 0x1000));
    EXPECT_EQ(Outline(markup), L"r(a m n!)");
}

TEST(MarkupAddElement, BuildsADocument)
{
    CMarkup markup;
    EXPECT_TRUE(markup.AddElem(L"disc"));
    EXPECT_TRUE(markup.SetAttrib(L"id", L"7"));
    EXPECT_TRUE(markup.IntoElem());
    EXPECT_TRUE(markup.AddElem(L"track", L"one"));
    EXPECT_TRUE(markup.AddElem(L"track", L"two"));
    EXPECT_TRUE(markup.SetAttrib(L"n", L"2"));
    EXPECT_TRUE(markup.OutOfElem());
    EXPECT_EQ(Text(markup.GetTagName()), L"disc");
    EXPECT_EQ(Text(markup.GetDoc()), L"<disc id=\"7\">\r\n"
                                     L"<track>one</track>\r\n"
                                     L"<track n=\"2\">two</track>\r\n"
                                     L"</disc>\r\n");
    EXPECT_TRUE(markup.IsWellFormed());
    ExpectConsistent(markup);
}

TEST(MarkupAddElement, SectionReadsBackUnchanged)
{
    const wchar_t* const pValue = L"a]]>b]]]>c<d>&amp;]]>";
    CMarkup markup;
    ASSERT_TRUE(markup.AddElem(L"a", pValue, 1));
    EXPECT_EQ(Text(markup.GetData()), pValue);
    CMarkup again(markup.GetDoc());
    ASSERT_TRUE(again.FindElem(L"a"));
    EXPECT_EQ(Text(again.GetData()), pValue);
}

TEST(MarkupAddElement, ValueMayComeFromTheDocument)
{
    CMarkup markup(L"<abcdefgh/>");
    ASSERT_TRUE(markup.FindElem());
    const wchar_t* pDocument = markup.GetDoc();
    EXPECT_TRUE(markup.AddElem(L"n", pDocument));
    EXPECT_TRUE(markup.SetAttrib(L"m", markup.GetDoc()));
    EXPECT_EQ(Text(markup.GetData()), L"<abcdefgh/>");
    ExpectConsistent(markup);
}

TEST(MarkupAddElement, ManyElementsCrossSegments)
{
    CMarkup markup;
    ASSERT_TRUE(markup.AddElem(L"r"));
    ASSERT_TRUE(markup.IntoElem());
    for (int i = 0; i < 70000; ++i)
        ASSERT_TRUE(markup.AddElem(L"a"));
    EXPECT_EQ(markup.m_nMainPos, 70001);
    EXPECT_TRUE(CheckTree(markup));
}

// ---- The pieces

TEST(MarkupDocChange, ReplacesARange)
{
    CMarkup markup(L"<a>text</a>");
    EXPECT_TRUE(markup.x_DocChange(3, 4, L"other text"));
    EXPECT_EQ(Text(markup.GetDoc()), L"<a>other text</a>");
    EXPECT_TRUE(markup.x_DocChange(0, 0, L"x"));
    EXPECT_TRUE(markup.x_DocChange(markup.GetDoc().GetLength(), 0, L"y"));
    EXPECT_TRUE(markup.x_DocChange(4, 10, L""));
    EXPECT_EQ(Text(markup.GetDoc()), L"x<a></a>y");
    EXPECT_TRUE(markup.x_DocChange(1, 7, markup.m_strDocument)) << "the document within itself";
    EXPECT_EQ(Text(markup.GetDoc()), L"xx<a></a>yy");
}

TEST(MarkupDocChange, RefusesARangeOutside)
{
    CMarkup markup(L"<a/>");
    EXPECT_FALSE(markup.x_DocChange(-1, 0, L"x"));
    EXPECT_FALSE(markup.x_DocChange(5, 0, L"x"));
    EXPECT_FALSE(markup.x_DocChange(2, 3, L"x"));
    EXPECT_FALSE(markup.x_DocChange(2, -1, L"x"));
    EXPECT_EQ(Text(markup.GetDoc()), L"<a/>");
}

TEST(MarkupAdjust, MovesContentOnlyWhenAsked)
{
    //             0  3  6   10  14
    CMarkup markup(L"<r><a><b/></a><c/></r>");
    markup.x_Adjust(2, 5, true);
    EXPECT_EQ(markup.x_GetPos(3).m_nStart, 6);
    EXPECT_EQ(markup.x_GetPos(4).m_nStart, 19);
    EXPECT_EQ(markup.x_GetPos(1).m_nLength, 27);
    EXPECT_EQ(markup.x_GetPos(0).m_nLength, 27);
    EXPECT_EQ(markup.x_GetPos(2).m_nLength, 11) << "its own length is the caller's";
    markup.x_Adjust(2, -5, false);
    EXPECT_EQ(markup.x_GetPos(3).m_nStart, 1);
    EXPECT_EQ(markup.x_GetPos(4).m_nStart, 14);
}

TEST(MarkupAdjustForNode, MovesChildrenBehind)
{
    CMarkup markup(L"<r><a/><b/></r>");
    markup.x_AdjustForNode(1, 0, 2);
    EXPECT_EQ(markup.x_GetPos(2).m_nStart, 5);
    EXPECT_EQ(markup.x_GetPos(3).m_nStart, 9);
    EXPECT_EQ(markup.x_GetPos(1).m_nLength, 17);
    markup.x_AdjustForNode(1, 2, 1);
    EXPECT_EQ(markup.x_GetPos(2).m_nStart, 5);
    EXPECT_EQ(markup.x_GetPos(3).m_nStart, 10);
}

TEST(MarkupInsertNew, TellsWhereTheTextWent)
{
    CMarkup markup(L"<r></r>");
    CMarkup::NodePos node;
    node.m_strText = L"<!--c-->";
    int nRelative = 0;
    EXPECT_TRUE(markup.x_InsertNew(1, nRelative, node));
    EXPECT_EQ(Text(markup.GetDoc()), L"<r>\r\n<!--c-->\r\n</r>");
    EXPECT_EQ(node.m_nStart, 5);
    EXPECT_EQ(node.m_nLength, 8);
    EXPECT_EQ(nRelative, 0);
    EXPECT_FALSE(markup.x_InsertNew(9, nRelative, node));
    nRelative = 9;
    EXPECT_FALSE(markup.x_InsertNew(1, nRelative, node));
    EXPECT_TRUE(CheckTree(markup));
}

TEST(MarkupLinkElem, JoinsTheLists)
{
    CMarkup markup(L"<r><a/><c/></r>");
    const int nPos = markup.x_GetFreePos();
    markup.x_GetPos(nPos) = {};
    markup.x_LinkElem(1, 2, nPos);
    EXPECT_EQ(markup.x_GetPos(2).m_nNextSibling, nPos);
    EXPECT_EQ(markup.x_GetPos(nPos).m_nNextSibling, 3);
    EXPECT_EQ(markup.x_GetPos(3).m_nPreviousSibling, nPos);
    const int nFirst = markup.x_GetFreePos();
    markup.x_GetPos(nFirst) = {};
    markup.x_LinkElem(1, 0, nFirst);
    EXPECT_EQ(markup.x_GetPos(1).m_nFirstChild, nFirst);
    EXPECT_EQ(markup.x_GetPos(nFirst).m_nPreviousSibling, 3);
    EXPECT_EQ(markup.x_GetPos(nFirst).m_nFlags, 0x80000U);
    EXPECT_EQ(markup.x_GetPos(2).m_nFlags & 0x80000U, 0U);
}
