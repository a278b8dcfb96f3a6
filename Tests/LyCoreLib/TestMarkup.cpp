#include "MarkupTestSupport.h"
#include <gtest/gtest.h>

// ---- Escaping

struct ESCAPE_CASE
{
    const wchar_t* pText;
    const wchar_t* pData;
    const wchar_t* pAttribute;
};

TEST(MarkupEscapeText, WritesDataAndAttributes)
{
    const ESCAPE_CASE aryCases[] = {
        {L"plain", L"plain", L"plain"},
        {L"<&>", L"&lt;&amp;&gt;", L"&lt;&amp;&gt;"},
        {L"\"'", L"\"'", L"&quot;&apos;"},
        {L"a\tb\r\nc", L"a\tb\r\nc", L"a\tb\r\nc"},
        {L"a\x02\x1f", L"a??", L"a??"},
        {L"\x01", L"&#x1;", L"&#x1;"},
        {L"", L"", L""},
    };
    for (const ESCAPE_CASE& row : aryCases)
    {
        EXPECT_EQ(Text(CMarkup::EscapeText(row.pText, 0)), row.pData);
        EXPECT_EQ(Text(CMarkup::EscapeText(row.pText, 0x100)), row.pAttribute);
    }
    EXPECT_TRUE(CMarkup::EscapeText(nullptr, 0).IsEmpty());
}

struct UNESCAPE_CASE
{
    const wchar_t* pText;
    const wchar_t* pResult;
};

TEST(MarkupUnescapeText, ReadsNamesAndReferences)
{
    const UNESCAPE_CASE aryCases[] = {
        {L"", L""},
        {L"plain", L"plain"},
        {L"&lt;&amp;&gt;&apos;&quot;", L"<&>'\""},
        {L"&#65;", L"A"},
        {L"&#x41;", L"A"},
        {L"x&#x10ffff;y", L"x\U0010ffffy"},
        {L"&#0000065;", L"A"},
        {L"&#00000065;", L"&#00000065;"}, // more than 7 characters
        {L"&#x0000041;", L"A"},
        {L"&#x00000041;", L"&#x00000041;"},
        {L"&#0;", L"&#0;"},
        {L"&#;", L"&#;"},
        {L"&#x;", L"&#x;"},
        {L"&#65", L"&#65"},
        {L"&bogus;", L"&bogus;"},
        {L"&LT;", L"&LT;"},
        {L"&lt", L"&lt"},
        {L"&", L"&"},
        {L"&&lt;", L"&<"},
        {L"&amp;lt;", L"&lt;"},
        {L"a&b&lt;c&", L"a&b<c&"},
    };
    for (const UNESCAPE_CASE& row : aryCases)
        EXPECT_EQ(Text(CMarkup::UnescapeText(row.pText)), row.pResult);
    EXPECT_TRUE(CMarkup::UnescapeText(nullptr).IsEmpty());
}

TEST(MarkupUnescapeText, AnyNumberButZeroIsACharacter)
{
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"&#x110000;")), std::wstring(1, 0x110000));
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"&#9999999;")), std::wstring(1, 9999999));
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"a&#xfffffff;b")), (std::wstring{L'a', 0xfffffff, L'b'}));
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"&#-5;")), std::wstring(1, -5));
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"&#x0;&#-0;")), L"&#x0;&#-0;");
}

TEST(MarkupUnescapeText, MindsTheLength)
{
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"&lt;&lt;", 4)), L"<");
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"&lt;&lt;", 6)), L"<&l");
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"&#65;", 4)), L"&#65");
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"&#65;", 1)), L"&");
    EXPECT_EQ(Text(CMarkup::UnescapeText(L"abc", 0)), L"");
}

TEST(MarkupEncodeCDATASection, SplitsTheEndMark)
{
    EXPECT_EQ(Text(CMarkup::x_EncodeCDATASection(L"a<b")), L"<![CDATA[a<b]]>");
    EXPECT_EQ(Text(CMarkup::x_EncodeCDATASection(L"a]]>b")), L"<![CDATA[a]]]]><![CDATA[>b]]>");
    EXPECT_EQ(Text(CMarkup::x_EncodeCDATASection(L"")), L"<![CDATA[]]>");
}

// ---- Reading an element

TEST(MarkupGetAttrib, ReadsTheValueUnescaped)
{
    CMarkup markup(L"<a b=\"1 &lt; 2\" c='x>y'><d e=f/></a>");
    EXPECT_EQ(Text(markup.x_GetAttrib(1, L"b")), L"1 < 2");
    EXPECT_EQ(Text(markup.x_GetAttrib(1, L"C")), L"x>y");
    EXPECT_EQ(Text(markup.x_GetAttrib(1, L"e")), L"");
    EXPECT_EQ(Text(markup.x_GetAttrib(1, nullptr)), L"");
    EXPECT_EQ(Text(markup.x_GetAttrib(0, L"b")), L"");
    EXPECT_EQ(Text(markup.x_GetAttrib(7, L"b")), L"");
    EXPECT_EQ(Text(markup.x_GetAttrib(-7, L"b")), L"");
}

struct DATA_CASE
{
    const wchar_t* pElement;
    const wchar_t* pData;
};

TEST(MarkupGetData, ReadsTextAndSections)
{
    const DATA_CASE aryCases[] = {
        {L"<a>text</a>", L"text"},
        {L"<a>  </a>", L"  "},
        {L"<a>1 &lt; 2</a>", L"1 < 2"},
        {L"<a/>", L""},
        {L"<a></a>", L""},
        {L"<a>text<b/></a>", L""}, // an element with children has no data
        {L"<a><![CDATA[<&lt;>]]></a>", L"<&lt;>"},
        {L"<a>\r\n<![CDATA[x]]>\r\n</a>", L"x"},
        {L"<a>&lt;<![CDATA[<]]>&gt;</a>", L"<<>"},
        {L"<a>x<!--y-->z<?q?></a>", L"xz"},
        {L"<a><![C]]></a>", L""}, // shorter than its marks
        {L"<a>1 < 2</a>", L"1  2"},
    };
    for (const DATA_CASE& row : aryCases)
        EXPECT_EQ(Text(CMarkup(row.pElement).x_GetData(1)), row.pData);
    CMarkup markup(L"<a>b</a>");
    EXPECT_TRUE(markup.x_GetData(0).IsEmpty());
    EXPECT_TRUE(markup.x_GetData(99).IsEmpty());
    EXPECT_TRUE(CMarkup().x_GetData(1).IsEmpty());
}

TEST(MarkupGetData, ElementWithoutEndTagIsEmpty)
{
    CMarkup markup(L"<a><b>text</a>");
    EXPECT_EQ(Text(markup.x_GetData(2)), L"");
    EXPECT_EQ(Text(markup.x_GetTagName(2)), L"b");
}

struct NODE_DATA_CASE
{
    const wchar_t* pNode;
    const wchar_t* pData;
};

TEST(MarkupGetData, ReadsTheCurrentNodeWithoutItsMarks)
{
    const NODE_DATA_CASE aryCases[] = {
        {L"a&amp;b", L"a&b"},
        {L"<![CDATA[a&amp;b]]>", L"a&amp;b"},
        {L"<!--a-->", L"a"},
        {L"<?a b?>", L"a b"},
        {L"<!DOCTYPE a>", L"DOCTYPE a"},
        {L"<!---->", L""},
        {L"<![C]]>", L""},
        {L" ", L" "},
    };
    for (const NODE_DATA_CASE& row : aryCases)
    {
        CMarkup markup((std::wstring(row.pNode) + L"<r/>").c_str());
        CMarkup::TokenPos token(markup.GetDoc(), 0);
        CMarkup::NodePos node;
        markup.m_nNodeType = CMarkup::x_ParseNode(token, node);
        markup.m_nNodeOffset = node.m_nStart;
        markup.m_nNodeLength = node.m_nLength;
        EXPECT_EQ(Text(markup.x_GetData(0)), row.pData);
        EXPECT_TRUE(markup.FindElem());
        EXPECT_EQ(Text(markup.GetData()), L"") << "finding an element ends the current node";
    }
}

TEST(MarkupGetData, NodeOutsideTheDocumentIsNone)
{
    CMarkup markup(L"<a/>");
    markup.m_nNodeType = MARKUP_NODE_TEXT;
    markup.m_nNodeOffset = 3;
    markup.m_nNodeLength = 2;
    EXPECT_EQ(Text(markup.x_GetData(0)), L"");
    markup.m_nNodeOffset = -1;
    EXPECT_EQ(Text(markup.x_GetData(0)), L"");
}

TEST(MarkupGetAttrib, ReadsTheCurrentInstruction)
{
    CMarkup markup(L"<?xml version=\"1.0\" encoding='UTF-8\"?><a version='2'/>");
    markup.m_nNodeType = MARKUP_NODE_INSTRUCTION;
    markup.m_nNodeLength = markup.GetDoc().Find(L"<a");
    EXPECT_EQ(Text(markup.x_GetAttrib(0, L"version")), L"1.0");
    EXPECT_EQ(Text(markup.x_GetAttrib(0, L"encoding")), L"UTF-8\"") << "it ends with the instruction";
    EXPECT_EQ(Text(markup.x_GetTagName(0)), L"xml");
    EXPECT_EQ(Text(markup.x_GetAttrib(1, L"version")), L"2");
}

TEST(MarkupLimits, RecordIsThirtyTwoBytes)
{
    EXPECT_EQ(sizeof(MARKUP_POSITION), 32U);
    EXPECT_EQ(CMarkup().m_nDocFlags, 8);
}
