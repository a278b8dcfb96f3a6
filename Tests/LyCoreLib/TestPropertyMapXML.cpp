#include "LyStringFormat.h"
#include "Markup.h"
#include "PropertyMap.h"
#include <gtest/gtest.h>
#include <string>

namespace
{
std::wstring Text(const LyString& str)
{
    return {static_cast<const wchar_t*>(str), static_cast<size_t>(str.GetLength())};
}

LyPropertyMap OneEntry(const wchar_t* pKey, const wchar_t* pValue)
{
    LyPropertyMap map;
    map.SetProperty(pKey, pValue, false);
    return map;
}
} // namespace

TEST(PropertyMapXMLSave, WritesExactlyTheseBytes)
{
    EXPECT_EQ(Text(OneEntry(L"Speed", L"16").SavePropertiesXML(L"Props", false, 1.0)),
              L"<Props version=\"1.0\">\r\n<Item Name=\"Speed\">16</Item>\r\n</Props>");
}

TEST(PropertyMapXMLSave, VersionHasOneDecimal)
{
    struct
    {
        double fVersion;
        const wchar_t* pText;
    } const aryCases[] = {{1, L"1.0"}, {2.5, L"2.5"}, {10.25, L"10.3"}, {0, L"0.0"}};
    for (const auto& row : aryCases)
        EXPECT_EQ(Text(LyPropertyMap().SavePropertiesXML(L"R", false, row.fVersion)),
                  std::wstring(L"<R version=\"") + row.pText + L"\">\r\n</R>");
}

TEST(PropertyMapXMLSave, EmptyMapIsARootElementOrNothing)
{
    EXPECT_EQ(Text(LyPropertyMap().SavePropertiesXML(L"Props", false, 1.0)), L"<Props version=\"1.0\">\r\n</Props>");
    EXPECT_EQ(Text(LyPropertyMap().SavePropertiesXML(L"Props", true, 1.0)), L"");
    EXPECT_NE(Text(OneEntry(L"a", L"b").SavePropertiesXML(L"Props", true, 1.0)), L"");
}

TEST(PropertyMapXMLSave, EscapesKeysAndValues)
{
    EXPECT_EQ(Text(OneEntry(L"a<'\">&", L"b<'\">&\x02").SavePropertiesXML(L"R", false, 1.0)),
              L"<R version=\"1.0\">\r\n"
              L"<Item Name=\"a&lt;&apos;&quot;&gt;&amp;\">b&lt;'\"&gt;&amp;?</Item>\r\n"
              L"</R>");
}

TEST(PropertyMapXMLSave, EmptyValueIsAnEmptyElement)
{
    EXPECT_EQ(Text(OneEntry(L"a", L"").SavePropertiesXML(L"R", false, 1.0)),
              L"<R version=\"1.0\">\r\n<Item Name=\"a\"/>\r\n</R>");
}

TEST(PropertyMapXMLSave, GoesToTheCurrentPositionOfADocument)
{
    CMarkup markup(L"<r>\r\n<a/>\r\n<b/>\r\n</r>");
    ASSERT_TRUE(markup.FindElem(L"r/a"));
    OneEntry(L"Speed", L"16").SavePropertiesExistingXML(markup);
    EXPECT_EQ(Text(markup.GetDoc()), L"<r>\r\n<a/>\r\n<Item Name=\"Speed\">16</Item>\r\n<b/>\r\n</r>");
    EXPECT_TRUE(markup.IsWellFormed());
}

TEST(PropertyMapXMLSave, OrderIsThatOfTheOtherForms)
{
    LyPropertyMap map;
    for (int i = 0; i < 40; ++i)
        map.SetPropertyInt(LyFormatString(L"Key%d", i), i);
    CMarkup markup(map.SavePropertiesXML(L"R", false, 1.0));
    ASSERT_TRUE(markup.IsWellFormed());
    ASSERT_TRUE(markup.FindElem());
    ASSERT_TRUE(markup.IntoElem());
    std::wstring strOrder;
    while (markup.FindElem(L"Item"))
        strOrder += Text(markup.GetAttrib(L"Name")) + L": " + Text(markup.GetData()) + L";";
    EXPECT_EQ(strOrder, Text(map.DumpProperties(L"", L";")));
}

TEST(PropertyMapXMLLoad, RestoresWhatWasSaved)
{
    LyPropertyMap map;
    for (int i = 0; i < 40; ++i)
        map.SetPropertyInt(LyFormatString(L"Key%d", i), i);
    map.SetProperty(L"<odd & key>", L"]]> & <b attr='x'> \"\r\n\t ", false);
    map.SetProperty(L"blank", L"   ", false);
    map.SetProperty(L"empty", L"", false);
    map.SetProperty(L"one", L"\x01", false);
    LyPropertyMap again;
    again.SetProperty(L"old", L"1", false);
    EXPECT_TRUE(again.LoadPropertiesXML(map.SavePropertiesXML(L"Props", false, 1.0), L"Props", 1.0));
    EXPECT_EQ(again.m_pProperties->GetCount(), map.m_pProperties->GetCount());
    EXPECT_TRUE(again.CompareProperties(map));
    EXPECT_TRUE(again.GetHasProperty(L"empty"));
}

TEST(PropertyMapXMLLoad, ControlCharactersBecomeQuestionMarks)
{
    LyPropertyMap map = OneEntry(L"a", L"x\x02\x1fy");
    EXPECT_TRUE(map.LoadPropertiesXML(map.SavePropertiesXML(L"R", false, 1.0), L"R", 1.0));
    EXPECT_EQ(Text(map.GetProperty(L"a", nullptr)), L"x??y");
}

struct LOAD_CASE
{
    const char* pName;
    const wchar_t* pXML;
    bool bResult;
    const wchar_t* pDump; // of a map that held old = 1
};

class PropertyMapXMLLoads : public testing::TestWithParam<LOAD_CASE>
{
};

const LOAD_CASE s_aryLoads[] = {
    {"EmptyTextChangesNothing", L"", true, L"old: 1;"},
    {"MissingRoot", L"<Other version=\"1.0\"><Item Name='a'>b</Item></Other>", false, L"old: 1;"},
    {"NoXML", L"hello", false, L"old: 1;"},
    {"OtherVersion", L"<Props version=\"2.0\"><Item Name='a'>b</Item></Props>", false, L"old: 1;"},
    {"NoVersion", L"<Props><Item Name='a'>b</Item></Props>", false, L"old: 1;"},
    {"VersionByValue", L"<Props version='1'><Item Name='a'>b</Item></Props>", true, L"a: b;"},
    {"VersionWithComma", L"<Props version='1,0'><Item Name='a'>b</Item></Props>", true, L"a: b;"},
    {"VersionWithExponent", L"<Props version='10e-1'><Item Name='a'>b</Item></Props>", true, L"a: b;"},
    {"WithoutCase", L"<PROPS VERSION='1.0'><ITEM NAME='a'>b</ITEM></PROPS>", true, L"a: b;"},
    {"NoItems", L"<Props version='1.0'/>", true, L""},
    {"OtherElementsAreSkipped", L"<Props version='1.0'><x/><Item Name='a'>b</Item><y/></Props>", true, L"a: b;"},
    {"ItemWithoutName", L"<Props version='1.0'><Item>b</Item></Props>", true, L": b;"},
    {"LastOfSeveralWins", L"<Props version='1.0'><Item Name='a'>b</Item><Item Name='A'>c</Item></Props>", true,
     L"a: c;"},
    {"RootBehindOthers", L"<?xml?><x/><Props version='1.0'><Item Name='a'>b</Item></Props>", true, L"a: b;"},
    {"IllFormedGivesWhatIsReached", L"<Props version='1.0'><Item Name='a'>b</Item><x></Props>", true, L"a: b;"},
    {"RootNotEnded", L"<Props version='1.0'><Item Name='a'>b</Item>", true, L""},
    {"SectionAsValue", L"<Props version='1.0'><Item Name='a'><![CDATA[<b>]]></Item></Props>", true, L"a: <b>;"},
};

TEST_P(PropertyMapXMLLoads, GivesResultAndEntries)
{
    LyPropertyMap map = OneEntry(L"old", L"1");
    EXPECT_EQ(map.LoadPropertiesXML(GetParam().pXML, L"Props", 1.0), GetParam().bResult);
    EXPECT_EQ(Text(map.DumpProperties(L"", L";")), GetParam().pDump);
}
INSTANTIATE_TEST_SUITE_P(Table, PropertyMapXMLLoads, testing::ValuesIn(s_aryLoads),
                         [](const auto& row) { return row.param.pName; });

TEST(PropertyMapXMLLoad, ReadsFromTheCurrentPositionOfADocument)
{
    CMarkup markup(L"<r><Item Name='a'>1</Item><b><Item Name='c'>2</Item></b></r>");
    ASSERT_TRUE(markup.FindElem(L"r/b"));
    ASSERT_TRUE(markup.IntoElem());
    LyPropertyMap map = OneEntry(L"old", L"1");
    map.LoadPropertiesExistingXML(markup);
    EXPECT_EQ(Text(map.DumpProperties(L"", L";")), L"c: 2;");
}

namespace
{
class CountingMap final : public LyPropertyMap
{
public:
    mutable int m_nSaves = 0;
    int m_nLoads = 0;

    void SavePropertiesExistingXML(CMarkup& markup) const override
    {
        ++m_nSaves;
        LyPropertyMap::SavePropertiesExistingXML(markup);
    }
    void LoadPropertiesExistingXML(CMarkup& markup) override
    {
        ++m_nLoads;
        LyPropertyMap::LoadPropertiesExistingXML(markup);
    }
};
} // namespace

TEST(PropertyMapXML, GoesThroughTheVirtualOperations)
{
    CountingMap map;
    EXPECT_TRUE(map.LoadPropertiesXML(map.SavePropertiesXML(L"R", false, 1.0), L"R", 1.0));
    EXPECT_EQ(map.m_nSaves, 1);
    EXPECT_EQ(map.m_nLoads, 1);
    EXPECT_FALSE(map.LoadPropertiesXML(L"<R version='2.0'/>", L"R", 1.0));
    EXPECT_EQ(map.m_nLoads, 1);
    (void)map.SavePropertiesXML(L"R", true, 1.0);
    EXPECT_EQ(map.m_nSaves, 1) << "an empty map is not written";
}

TEST(PropertyMapXML, ManyEntriesTakeLittleTime)
{
    LyPropertyMap map;
    for (int i = 0; i < 20000; ++i)
        map.SetPropertyInt(LyFormatString(L"Key%d", i), i);
    LyPropertyMap again;
    EXPECT_TRUE(again.LoadPropertiesXML(map.SavePropertiesXML(L"R", false, 1.0), L"R", 1.0));
    EXPECT_TRUE(again.CompareProperties(map));
}
