#include "MarkupTestSupport.h"
#include <gtest/gtest.h>

namespace
{
std::wstring Repeat(const wchar_t* p, int nTimes)
{
    std::wstring str;
    for (int i = 0; i < nTimes; ++i)
        str += p;
    return str;
}

int ParseNode(const wchar_t* pText, CMarkup::NodePos& node)
{
    CMarkup::TokenPos token(pText, 0);
    const int nType = CMarkup::x_ParseNode(token, node);
    EXPECT_EQ(token.m_nNext, node.m_nStart + node.m_nLength);
    return nType;
}
} // namespace

// ---- Nodes

struct NODE_CASE
{
    const char* pName;
    const wchar_t* pText;
    int nType;
    int nLength;
};

class MarkupNode : public testing::TestWithParam<NODE_CASE>
{
};

const NODE_CASE s_aryNodes[] = {
    {"EndOfDocument", L"", MARKUP_NODE_DOCUMENT_END, 0},
    {"StartTag", L"<a>x", MARKUP_NODE_START_TAG, 3},
    {"CapitalStartTag", L"<Z>x", MARKUP_NODE_START_TAG, 3},
    {"UnderscoreStartTag", L"<_>x", MARKUP_NODE_START_TAG, 3},
    {"ColonStartTag", L"<:>x", MARKUP_NODE_START_TAG, 3},
    {"AboveAsciiStartTag", L"<\u00e9>x", MARKUP_NODE_START_TAG, 3},
    {"Above96StartTag", L"<{>x", MARKUP_NODE_START_TAG, 3},
    {"DoubleQuotedAngle", L"<a b=\"x>y\">x", MARKUP_NODE_START_TAG, 11},
    {"SingleQuotedAngle", L"<a b='x>y'>x", MARKUP_NODE_START_TAG, 11},
    {"OtherQuoteInQuotes", L"<a b='\">'>x", MARKUP_NODE_START_TAG, 10},
    {"EndTag", L"</a >x", MARKUP_NODE_END_TAG, 5},
    {"Instruction", L"<?a b?c ?>x", MARKUP_NODE_INSTRUCTION, 10},
    {"InstructionNeedsBothMarks", L"<?>?>x", MARKUP_NODE_INSTRUCTION, 5},
    {"Comment", L"<!--a>-b-->x", MARKUP_NODE_COMMENT, 11},
    {"CommentNeedsBothMarks", L"<!-->-->x", MARKUP_NODE_COMMENT, 8},
    {"CDATASection", L"<![CDATA[a]>b]]>x", MARKUP_NODE_CDATA, 16},
    {"DocumentType", L"<!DOCTYPE a>x", MARKUP_NODE_DOCUMENT_TYPE, 12},
    {"DocumentTypeWithSections", L"<!DOCTYPE a [<!ENTITY b \"c\"> > ]>x", MARKUP_NODE_DOCUMENT_TYPE, 33},
    {"WhiteSpace", L" \t\r\n<", MARKUP_NODE_WHITE_SPACE, 4},
    {"WhiteSpaceAtTheEnd", L"  ", MARKUP_NODE_WHITE_SPACE, 2},
    {"Text", L" a > b <", MARKUP_NODE_TEXT, 7},
    {"TextAtTheEnd", L"ab", MARKUP_NODE_TEXT, 2},
};

TEST_P(MarkupNode, HasTypeAndLength)
{
    CMarkup::NodePos node;
    EXPECT_EQ(ParseNode(GetParam().pText, node), GetParam().nType);
    EXPECT_EQ(node.m_nNodeType, GetParam().nType);
    EXPECT_EQ(node.m_nStart, 0);
    EXPECT_EQ(node.m_nLength, GetParam().nLength);
    EXPECT_TRUE(node.m_strText.IsEmpty());
}
INSTANTIATE_TEST_SUITE_P(Table, MarkupNode, testing::ValuesIn(s_aryNodes),
                         [](const auto& row) { return row.param.pName; });

struct NODE_ERROR_CASE
{
    const char* pName;
    const wchar_t* pText;
    const wchar_t* pError;
};

class MarkupNodeError : public testing::TestWithParam<NODE_ERROR_CASE>
{
};

const NODE_ERROR_CASE s_aryNodeErrors[] = {
    {"LoneAngle", L"<", L"tag at offset 0 unterminated"},
    {"LoneDeclaration", L"<!", L"tag at offset 0 unterminated"},
    {"OpenTag", L"<a b", L"Element tag at offset 0 unterminated"},
    {"OpenQuote", L"<a b='>", L"Element tag at offset 0 unterminated"},
    {"OpenEndTag", L"</a", L"Element end tag at offset 0 unterminated"},
    {"OpenSection", L"<![CDATA[a]]", L"CDATA Section at offset 0 unterminated"},
    {"OpenComment", L"<!--a--", L"Comment at offset 0 unterminated"},
    {"OpenInstruction", L"<?a?", L"Processing instruction at offset 0 unterminated"},
    {"OpenDocumentType", L"<!DOCTYPE a [>", L"Doctype at offset 0 unterminated"},
    {"DigitInName", L"<1>", L"Incorrect tag name character at offset 1"},
    {"BlankInName", L"< a>", L"Incorrect tag name character at offset 1"},
    {"OneDash", L"<!-a-->", L"Incorrect comment tag at offset 3"},
    {"NoSection", L"<![INCLUDE[a]]>", L"Incorrect ! tag at offset 3"},
    {"SmallSection", L"<![cdata[a]]>", L"Incorrect ! tag at offset 3"},
    {"NoDocumentType", L"<!ELEMENT a>", L"Incorrect ! tag at offset 2"},
};

TEST_P(MarkupNodeError, IsPutInWords)
{
    CMarkup::NodePos node;
    EXPECT_EQ(ParseNode(GetParam().pText, node), MARKUP_NODE_ERROR);
    EXPECT_EQ(Text(node.m_strText), GetParam().pError);
    EXPECT_GT(node.m_nLength, 0);
}
INSTANTIATE_TEST_SUITE_P(Table, MarkupNodeError, testing::ValuesIn(s_aryNodeErrors),
                         [](const auto& row) { return row.param.pName; });

TEST(MarkupParseNode, GivesTheNameOfATagAndTellsAnEmptyElement)
{
    CMarkup::NodePos node;
    CMarkup::TokenPos token(L"<ab c='d'/></ab>", 0);
    EXPECT_EQ(CMarkup::x_ParseNode(token, node), MARKUP_NODE_START_TAG);
    EXPECT_EQ(node.m_nFlags, MARKUP_NODE_EMPTY_ELEMENT);
    EXPECT_EQ(Text(CMarkup::x_GetToken(token)), L"ab");
    EXPECT_EQ(CMarkup::x_ParseNode(token, node), MARKUP_NODE_END_TAG);
    EXPECT_EQ(Text(CMarkup::x_GetToken(token)), L"ab");
    EXPECT_EQ(CMarkup::x_ParseNode(token, node), MARKUP_NODE_DOCUMENT_END);
}

// ---- Documents

struct DOCUMENT_CASE
{
    const char* pName;
    const wchar_t* pText;
    const wchar_t* pOutline;
    const wchar_t* pError;
};

class MarkupDocument : public testing::TestWithParam<DOCUMENT_CASE>
{
};

const DOCUMENT_CASE s_aryDocuments[] = {
    {"OneElement", L"<a/>", L"a", L""},
    {"Nested", L"<a><b/><c><d></d></c>text</a>", L"a(b c(d))", L""},
    {"EverythingAround", L"<?xml?><!DOCTYPE a><!--x--> <a/>\n", L"a", L""},
    {"EndTagInOtherCase", L"<a><B></b></A>", L"a(B)", L""},
    {"EndTagWithBlanks", L"<a></a\n>", L"a", L""},
    {"Empty", L"", L"", L"Empty document"},
    {"OnlyText", L"hello", L"", L"No root element"},
    {"OnlyComment", L"<!--a-->", L"", L"No root element"},
    {"TwoRoots", L"<a/><b/>", L"a b", L"Root element has sibling"},
    {"InnerNotEnded", L"<a><b></a>", L"a(b!)", L"End tag 'a' at offset 6 does not match start tag 'b' at offset 3"},
    {"TwoNotEnded", L"<a><b><c></a>", L"a(b! c!)", L"End tag 'a' at offset 9 does not match start tag 'c' at offset 6"},
    {"ChildrenMoveUp", L"<a><x/><b><c/><d><e/></a>", L"a(x b! c d! e)",
     L"End tag 'a' at offset 21 does not match start tag 'd' at offset 14"},
    {"GrandchildrenStay", L"<a><b><c><d/></c></a>", L"a(b! c(d))",
     L"End tag 'a' at offset 17 does not match start tag 'b' at offset 3"},
    {"EndOfDocument", L"<a><b>", L"a! b!", L"Element 'b' at offset 3 not ended"},
    {"EndOfDocumentAfterChildren", L"<a><b/><c/>", L"a! b c", L"Element 'a' at offset 0 not ended"},
    {"UnknownEndTag", L"<a></b></a>", L"a", L"No start tag for end tag 'b' at offset 3"},
    {"EndTagAlone", L"</b>", L"", L"No start tag for end tag 'b' at offset 0"},
    {"EndTagWithoutName", L"<a></></a>", L"a", L"No start tag for end tag '' at offset 3"},
    {"LongerNameIsAnother", L"<ab></a></ab>", L"ab", L"No start tag for end tag 'a' at offset 4"},
    {"ShorterNameIsAnother", L"<a></ab></a>", L"a", L"No start tag for end tag 'ab' at offset 3"},
    {"FirstErrorStays", L"<a><1></b><c></a>", L"a(c!)", L"Incorrect tag name character at offset 4"},
    {"TagInsideTag", L"<a><<b/></a>", L"a(b)", L"Incorrect tag name character at offset 4"},
    {"Unterminated", L"<a><b/></a><c", L"a(b)", L"Element tag at offset 11 unterminated"},
    {"ErrorBeforeSibling", L"<a></x></a><b/>", L"a b", L"No start tag for end tag 'x' at offset 3"},
};

TEST_P(MarkupDocument, HasOutlineAndError)
{
    CMarkup markup(GetParam().pText);
    EXPECT_EQ(Outline(markup), GetParam().pOutline);
    EXPECT_EQ(Text(markup.GetError()), GetParam().pError);
    EXPECT_EQ(markup.IsWellFormed(), *GetParam().pError == 0);
    EXPECT_TRUE(CheckTree(markup));
}
INSTANTIATE_TEST_SUITE_P(Table, MarkupDocument, testing::ValuesIn(s_aryDocuments),
                         [](const auto& row) { return row.param.pName; });

TEST(MarkupRecord, TellsWhereAnElementLies)
{
    //             0  3    7    11  15
    CMarkup markup(L"<a><b/> <c>x</c></a>");
    const MARKUP_POSITION& document = markup.x_GetPos(0);
    const MARKUP_POSITION& a = markup.x_GetPos(1);
    const MARKUP_POSITION& b = markup.x_GetPos(2);
    const MARKUP_POSITION& c = markup.x_GetPos(3);
    EXPECT_EQ(document.m_nLength, 20);
    EXPECT_EQ(document.m_nFirstChild, 1) << "the first free position is 1";
    EXPECT_EQ(a.m_nStart, 0);
    EXPECT_EQ(a.m_nLength, 20);
    EXPECT_EQ(a.m_nTags, 3U | 4U << 22);
    EXPECT_EQ(a.m_nFlags, 0x80000U);
    EXPECT_EQ(b.m_nStart, 3);
    EXPECT_EQ(b.m_nLength, 4);
    EXPECT_EQ(b.m_nTags, 4U);
    EXPECT_EQ(b.m_nFlags, 0x80001U);
    EXPECT_EQ(b.m_nParent, 1);
    EXPECT_EQ(b.m_nNextSibling, 3);
    EXPECT_EQ(b.m_nPreviousSibling, 3) << "of a first child this is the last one";
    EXPECT_EQ(c.m_nStart, 8);
    EXPECT_EQ(c.m_nLength, 8);
    EXPECT_EQ(c.m_nFlags, 1U);
    EXPECT_EQ(c.m_nPreviousSibling, 2);
    EXPECT_EQ(c.m_nNextSibling, 0);
}

TEST(MarkupRecord, OnlyChildIsItsOwnPrevious)
{
    CMarkup markup(L"<a><b/></a>");
    EXPECT_EQ(markup.x_GetPos(1).m_nPreviousSibling, 1);
    EXPECT_EQ(markup.x_GetPos(2).m_nPreviousSibling, 2);
}

TEST(MarkupRecord, ElementWithoutEndTagIsCutToItsStartTag)
{
    CMarkup markup(L"<a><b c='d'><e/>text</a>");
    const MARKUP_POSITION& b = markup.x_GetPos(2);
    EXPECT_EQ(b.m_nFlags & 0x100000U, 0x100000U);
    EXPECT_EQ(b.m_nLength, 9);
    EXPECT_EQ(b.m_nFirstChild, 0);
    EXPECT_EQ(markup.x_GetPos(3).m_nParent, 1);
    EXPECT_EQ(markup.x_GetPos(0).m_nFlags & 0x200000U, 0x200000U);
    EXPECT_EQ(markup.x_GetPos(1).m_nFlags & 0x200000U, 0x200000U);
}

TEST(MarkupRecord, ErrorIsMarkedWhereItStands)
{
    CMarkup markup(L"<a><b><1></b><c/></a>");
    EXPECT_NE(markup.x_GetPos(2).m_nFlags & 0x800000U, 0U);
    EXPECT_EQ(markup.x_GetPos(3).m_nFlags & 0x800000U, 0U);
    EXPECT_NE(markup.x_GetPos(0).m_nFlags & 0x800000U, 0U);
}

TEST(MarkupRecord, LevelSticksAtItsLargestValue)
{
    const int nDepth = 0x10005;
    CMarkup markup((Repeat(L"<a>", nDepth) + Repeat(L"</a>", nDepth)).c_str());
    EXPECT_TRUE(markup.IsWellFormed());
    EXPECT_EQ(markup.x_GetPos(1).GetLevel(), 0);
    EXPECT_EQ(markup.x_GetPos(0x10000).GetLevel(), 0xffff);
    EXPECT_EQ(markup.x_GetPos(nDepth).GetLevel(), 0xffff);
    EXPECT_EQ(markup.x_GetPos(nDepth).m_nFlags, 0x8ffffU);
}

TEST(MarkupSetDoc, TakesAnotherDocument)
{
    CMarkup markup(L"<a><b/></a>");
    EXPECT_TRUE(markup.FindElem());
    EXPECT_FALSE(markup.SetDoc(L"<x>"));
    EXPECT_EQ(Text(markup.GetError()), L"Element 'x' at offset 0 not ended");
    EXPECT_TRUE(markup.SetDoc(L"<y/>"));
    EXPECT_TRUE(markup.GetError().IsEmpty());
    EXPECT_TRUE(markup.FindElem(L"y")) << "the search begins again";
    EXPECT_FALSE(markup.SetDoc(static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(Text(markup.GetError()), L"Empty document");
}

TEST(MarkupSetDoc, SharesTheText)
{
    const LyString strText(L"<a>some text</a>");
    CMarkup markup(strText);
    EXPECT_EQ(static_cast<const wchar_t*>(markup.GetDoc()), static_cast<const wchar_t*>(strText));
    EXPECT_TRUE(markup.FindElem());
    EXPECT_TRUE(markup.SetAttrib(L"b", L"c"));
    EXPECT_EQ(Text(strText), L"<a>some text</a>");
}

TEST(MarkupSetDoc, ZeroEndsTheText)
{
    LyString strText;
    wchar_t* p = strText.GetBuffer(8, true, false);
    std::wmemcpy(p, L"<a/>\0<b/", 8);
    strText.ReleaseBuffer(8);
    CMarkup markup(strText);
    EXPECT_TRUE(markup.IsWellFormed());
    EXPECT_EQ(Text(markup.GetDoc()), L"<a/>");
}

TEST(MarkupSetDoc, NothingParsedIsNotWellFormed)
{
    CMarkup markup;
    EXPECT_FALSE(markup.IsWellFormed());
    EXPECT_TRUE(markup.GetError().IsEmpty());
}

TEST(MarkupParseDoc, JoinsAnOldErrorAndTheNewOne)
{
    CMarkup markup(L"<a>");
    markup.m_strDocument = L"<a/><b/>";
    EXPECT_FALSE(markup.x_ParseDoc());
    EXPECT_EQ(Text(markup.GetError()), L"Element 'a' at offset 0 not ended, Root element has sibling");
}

TEST(MarkupParseDoc, ReleasesSavedPositionsAndPlace)
{
    CMarkup markup(L"<a><b/></a>");
    EXPECT_TRUE(markup.FindElem());
    EXPECT_TRUE(markup.IntoElem());
    markup.m_pSavedPositions = new int[4];
    EXPECT_TRUE(markup.x_ParseDoc());
    EXPECT_EQ(markup.m_pSavedPositions, nullptr);
    EXPECT_EQ(markup.m_nParentPos, 0);
}

TEST(MarkupParseElem, AddsToAnElement)
{
    CMarkup markup(L"<a><b/></a>");
    CMarkup::TokenPos token(L"<c><d/></c>", MARKUP_IGNORE_CASE);
    const int nPos = markup.x_ParseElem(1, token);
    EXPECT_EQ(nPos, 3);
    EXPECT_EQ(markup.x_GetPos(3).m_nParent, 1);
    EXPECT_EQ(markup.x_GetPos(2).m_nNextSibling, 3);
    EXPECT_EQ(markup.x_GetPos(4).m_nParent, 3);
}

// ---- Position records

TEST(MarkupPositions, FirstEstimateGoesByTheLength)
{
    CMarkup markup((L"<a>" + std::wstring(633, L'x') + L"</a>").c_str());
    EXPECT_EQ(markup.m_nAllocated, 640 / 64 + 8);
}

TEST(MarkupPositions, GrowByHalfAndFillSegments)
{
    CMarkup markup;
    EXPECT_TRUE(markup.x_AllocPosArray(100));
    EXPECT_EQ(markup.m_nAllocated, 100);
    EXPECT_EQ(markup.m_nSegmentCapacity, 4) << "2n + 4";
    EXPECT_TRUE(markup.x_AllocPosArray(0));
    EXPECT_EQ(markup.m_nAllocated, 150);
    EXPECT_TRUE(markup.x_AllocPosArray(50)) << "there is room already";
    EXPECT_EQ(markup.m_nAllocated, 150);
    EXPECT_TRUE(markup.x_AllocPosArray(4 * 65536 + 1));
    EXPECT_EQ(markup.m_nAllocated, 4 * 65536 + 1);
    EXPECT_EQ(markup.m_nSegmentCapacity, 12);
    EXPECT_EQ(&markup.x_GetPos(65536), markup.m_ppSegments[1]);
    EXPECT_EQ(&markup.x_GetPos(65535), markup.m_ppSegments[0] + 65535);
}

TEST(MarkupPositions, DeletedOnesComeFirst)
{
    CMarkup markup(L"<a/>");
    EXPECT_EQ(markup.x_GetFreePos(), 2);
    EXPECT_EQ(markup.x_GetFreePos(), 3);
    markup.x_GetPos(2).m_nNextSibling = 0;
    markup.m_nDeletedPos = 2;
    EXPECT_EQ(markup.x_GetFreePos(), 2);
    EXPECT_EQ(markup.x_GetFreePos(), 4);
}

// ---- Hostile documents

TEST(MarkupHostile, MillionOpenElements)
{
    CMarkup markup(Repeat(L"<a>", 1000000).c_str());
    EXPECT_EQ(Text(markup.GetError()), L"Element 'a' at offset 2999997 not ended");
    EXPECT_TRUE(CheckTree(markup));
    EXPECT_EQ(markup.x_GetPos(1000000).m_nParent, 0);
    EXPECT_EQ(markup.x_GetPos(1000000).m_nPreviousSibling, 999999);
}

TEST(MarkupHostile, MillionClosedElements)
{
    CMarkup markup((Repeat(L"<a>", 1000000) + Repeat(L"</a>", 1000000)).c_str());
    EXPECT_TRUE(markup.IsWellFormed());
    EXPECT_TRUE(CheckTree(markup));
    EXPECT_EQ(markup.x_FindElem(0, 0, L"//b"), 0);
}

TEST(MarkupHostile, ManyEndTagsThatMatchNothing)
{
    CMarkup markup((Repeat(L"<a><bc>", 200000) + Repeat(L"</b></cd>", 200000) + L"</BC>").c_str());
    EXPECT_EQ(Text(markup.GetError()), L"No start tag for end tag 'b' at offset 1400000");
    EXPECT_TRUE(CheckTree(markup));
}

TEST(MarkupHostile, EachEndTagClosesSomeOpenElements)
{
    CMarkup markup((Repeat(L"<p><q><r/>", 100000) + Repeat(L"</p>", 100000)).c_str());
    EXPECT_EQ(Outline(CMarkup(L"<p><q><r/><p><q><r/></p></p>")), L"p(q! r p(q! r))");
    EXPECT_TRUE(CheckTree(markup));
    EXPECT_EQ(markup.x_GetPos(1).m_nLength, 1400000);
}

TEST(MarkupHostile, TextFullOfErrors)
{
    CMarkup markup((L"<a>" + Repeat(L"<1", 300000) + L"</a>").c_str());
    EXPECT_EQ(Text(markup.GetError()), L"Incorrect tag name character at offset 4");
    EXPECT_EQ(Outline(markup), L"a");
}

// ---- Tags at the limits of the record

TEST(MarkupTagLength, StartTagAtTheLimitIsKept)
{
    const std::wstring strTag = L"<b c=\"" + std::wstring(0xfffff - 8, L'x') + L"\">";
    ASSERT_EQ(strTag.size(), 0xfffffU);
    CMarkup markup((L"<a>" + strTag + L"</b></a>").c_str());
    EXPECT_TRUE(markup.IsWellFormed());
    EXPECT_EQ(markup.x_GetPos(2).GetStartTagLength(), 0xfffff);
    EXPECT_EQ(markup.x_GetAttrib(2, L"c").GetLength(), 0xfffff - 8);
}

TEST(MarkupTagLength, LongerStartTagIsAnErrorAndPassedOver)
{
    const std::wstring strTag = L"<b c=\"" + std::wstring(0xfffff - 7, L'x') + L"\"/>";
    CMarkup markup((L"<a>" + strTag + L"<c/></a>").c_str());
    EXPECT_EQ(Text(markup.GetError()), L"Incorrect tag length at offset 3");
    EXPECT_EQ(Outline(markup), L"a(c)");
    EXPECT_TRUE(CheckTree(markup));
}

TEST(MarkupTagLength, EndTagAtTheLimitIsKept)
{
    const std::wstring strName(1020, L'n');
    CMarkup markup((L"<" + strName + L">x</" + strName + L">").c_str());
    EXPECT_TRUE(markup.IsWellFormed());
    EXPECT_EQ(markup.x_GetPos(1).GetEndTagLength(), 1023);
    EXPECT_EQ(Text(markup.x_GetData(1)), L"x");
}

TEST(MarkupTagLength, LongerEndTagIsAnErrorAndPassedOver)
{
    CMarkup markup((L"<a><b>x</b" + std::wstring(1020, L' ') + L"></a>").c_str());
    EXPECT_EQ(Text(markup.GetError()), L"Incorrect tag length at offset 7");
    EXPECT_EQ(Outline(markup), L"a(b!)");
    EXPECT_TRUE(CheckTree(markup));
}
