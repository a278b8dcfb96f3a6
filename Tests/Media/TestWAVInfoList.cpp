// The INFO list of a wave file.

#include "Tools/FakeTools.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <gtest/gtest.h>

using namespace WaveFiles;

namespace
{
class WAVInfoListTest : public ::testing::Test
{
protected:
    bool Parse(const std::string& strBody)
    {
        LyBuffer buffer;
        buffer.FromBuffer(strBody.data(), static_cast<int>(strBody.size()));
        return m_List.Parse(buffer);
    }
    LyString Get(const wchar_t* pField)
    {
        LyString strValue = L"(as before)";
        (void)m_List.Get(pField, strValue);
        return strValue;
    }
    CWAVInfoListChunk m_List;
};

std::string Terminated(std::string str)
{
    str += '\0';
    return str;
}
} // namespace

struct ID_CASE
{
    const char* pID;
    const wchar_t* pField;
};

TEST_F(WAVInfoListTest, EveryIdentifierHasItsField)
{
    const ID_CASE aryCases[] = {
        {"IARL", L"Archival Location"},
        {"IART", L"Artist"},
        {"ICMS", L"Commissioned"},
        {"ICMT", L"Comment"},
        {"ICOP", L"Copyright"},
        {"ICRP", L"Cropped"},
        {"IDIM", L"Dimensions"},
        {"IDPI", L"Dot Per Inch"},
        {"IENG", L"Engineer"},
        {"IGNR", L"Genre"},
        {"IKEY", L"Keywords"},
        {"ILGT", L"Lightness"},
        {"IMED", L"Medium"},
        {"INAM", L"Name"},
        {"IPLT", L"Palette Setting"},
        {"IPRD", L"Album"},
        {"ISBJ", L"Subject"},
        {"ISFT", L"Software"},
        {"ISHP", L"Sharpness"},
        {"ISRC", L"Source"},
        {"ISRF", L"Source Form"},
        {"ITCH", L"Technician"},
        {"ITRK", L"Track #"},
        {"TORG", L"Publisher"},
        {"IXYZ", L"IXYZ"},
        {"abcd", L"abcd"},
        {"\xC4\xD6\xDC ", L"\u00C4\u00D6\u00DC "},
    };
    std::string strBody = "INFO";
    for (const ID_CASE& row : aryCases)
        strBody += InfoItem(row.pID, Terminated(std::string("of ") + row.pID));
    EXPECT_TRUE(Parse(strBody));
    EXPECT_EQ(27, m_List.GetCount());
    for (const ID_CASE& row : aryCases)
        EXPECT_EQ(LyString(L"of ") + LyString().FromANSI(row.pID), Get(row.pField)) << row.pID;
}

TEST_F(WAVInfoListTest, IdentifiersAreComparedByteForByteAndFieldsWithoutCase)
{
    EXPECT_TRUE(Parse("INFO" + InfoItem("iart", Terminated("x"))));
    EXPECT_TRUE(Get(L"Artist").IsEmpty());
    EXPECT_STREQ(L"x", Get(L"IART"));
}

TEST_F(WAVInfoListTest, ALaterItemReplacesAnEarlierOneOfTheSameField)
{
    EXPECT_TRUE(Parse("INFO" + InfoItem("INAM", Terminated("one")) + InfoItem("Name", Terminated("two"))));
    EXPECT_EQ(1, m_List.GetCount());
    EXPECT_STREQ(L"two", Get(L"Name"));
}

struct LIST_CASE
{
    const char* pName;
    std::string strBody;
    bool bResult;
    int nCount;
};

TEST_F(WAVInfoListTest, EndsWhereItDoesNotFit)
{
    const std::string strItem = InfoItem("IART", Terminated("Me!"));
    const LIST_CASE aryCases[] = {
        {"nothing", "", false, 0},
        {"three bytes", "INF", false, 0},
        {"another type", "adtl" + strItem, false, 0},
        {"in lower case", "info" + strItem, false, 0},
        {"the type alone", "INFO", true, 0},
        {"a whole item", "INFO" + strItem, true, 1},
        {"seven bytes more", "INFO" + strItem + std::string("INAM\0\0\0", 7), true, 1},
        {"an item that is too long", "INFO" + strItem + "INAM" + Number(2) + "x", true, 1},
        {"an odd item without its pad byte", "INFO" + strItem + "INAM" + Number(3) + "abc", true, 1},
        {"the same with it", "INFO" + strItem + "INAM" + Number(3) + Terminated("abc"), true, 2},
        {"the largest size", "INFO" + strItem + "INAM" + Number(0xFFFFFFFF) + "abcd", true, 1},
        {"one that is negative in 32 bits", "INFO" + strItem + "INAM" + Number(0x80000000) + "abcd", true, 1},
        {"an empty item at the end", "INFO" + strItem + "INAM" + Number(0), true, 2},
    };
    for (const LIST_CASE& row : aryCases)
    {
        EXPECT_EQ(row.bResult, Parse(row.strBody)) << row.pName;
        EXPECT_EQ(row.nCount, m_List.GetCount()) << row.pName;
    }
}

TEST_F(WAVInfoListTest, ParsingEmptiesTheMapFirst)
{
    EXPECT_TRUE(Parse("INFO" + InfoItem("IART", Terminated("Me"))));
    EXPECT_FALSE(Parse("adtl"));
    EXPECT_EQ(0, m_List.GetCount());
}

TEST_F(WAVInfoListTest, ATextOfEvenSizeWithoutATerminatorLosesItsLastCharacter)
{
    EXPECT_TRUE(Parse("INFO" + InfoItem("IART", "abcd") + InfoItem("INAM", "abc") +
                      InfoItem("IGNR", Terminated("abc")) + InfoItem("ICMT", "") + InfoItem("ISFT", "x")));
    EXPECT_STREQ(L"abc", Get(L"Artist"));
    EXPECT_STREQ(L"abc", Get(L"Name")) << "of an odd size: the pad byte is the terminator";
    EXPECT_STREQ(L"abc", Get(L"Genre"));
    EXPECT_STREQ(L"", Get(L"Comment"));
    EXPECT_STREQ(L"x", Get(L"Software"));
    EXPECT_EQ(5, m_List.GetCount()) << "an empty item is an entry";
}

TEST_F(WAVInfoListTest, TheEncodingIsFoundOut)
{
    EXPECT_TRUE(Parse("INFO" + InfoItem("IART", Terminated("M\xFCller")) +
                      InfoItem("INAM", Terminated("M\xC3\xBCller \xE2\x82\xAC")) +
                      InfoItem("IGNR", std::string("\xFF\xFEM\0\xFC\0\xAC\x20\0\0", 10)) +
                      InfoItem("ICMT", Terminated("\xEF\xBB\xBF\xC3\xBC"))));
    EXPECT_STREQ(L"M\u00FCller", Get(L"Artist")) << "one byte to a character";
    EXPECT_STREQ(L"M\u00FCller \u20AC", Get(L"Name")) << "UTF-8";
    EXPECT_STREQ(L"M\u00FC\u20AC", Get(L"Genre")) << "UTF-16 with a mark";
    EXPECT_STREQ(L"\u00FC", Get(L"Comment")) << "UTF-8 with a mark";
}

TEST_F(WAVInfoListTest, GetIsTrueForATextThatIsThere)
{
    EXPECT_TRUE(Parse("INFO" + InfoItem("IART", Terminated("Me")) + InfoItem("INAM", "")));
    LyString strValue = L"before";
    EXPECT_TRUE(m_List.Get(L"aRTIST", strValue));
    EXPECT_STREQ(L"Me", strValue);
    EXPECT_FALSE(m_List.Get(L"Name", strValue));
    EXPECT_TRUE(strValue.IsEmpty());
    strValue = L"before";
    EXPECT_FALSE(m_List.Get(L"Nothing", strValue));
    EXPECT_TRUE(strValue.IsEmpty());
}

TEST_F(WAVInfoListTest, ADateIsStoredAsANumber)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetDate(36526.5);
    EXPECT_TRUE(Parse("INFO" + InfoItem("ICRD", Terminated("2000-01-01T12:00:00"))));
    EXPECT_STREQ(L"36526.5", Get(L"Date"));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_DATE_PARSE));
    EXPECT_TRUE(Parse("INFO" + InfoItem("ICRD", "")));
    EXPECT_STREQ(L"", Get(L"Date"));
    tools->SetDate(0);
    EXPECT_TRUE(Parse("INFO" + InfoItem("ICRD", Terminated("no date"))));
    EXPECT_STREQ(L"", Get(L"Date"));
    EXPECT_TRUE(m_List.Contains(L"Date"));
}

TEST_F(WAVInfoListTest, IsShownALineForEachEntry)
{
    EXPECT_TRUE(m_List.GetTagFormatString().IsEmpty());
    EXPECT_TRUE(Parse("INFO" + InfoItem("IART", Terminated("Me")) + InfoItem("INAM", Terminated("Title"))));
    LyString strExpected, strField, strText;
    for (LyPOSITION position = m_List.GetStartPosition(); m_List.GetNextAssoc(position, strField, strText);)
        strExpected += LyString(L"\r\n  ") + strField + L": " + strText;
    EXPECT_EQ(strExpected, m_List.GetTagFormatString()) << "in the order of the map";
    EXPECT_GE(strExpected.Find(L"\r\n  Artist: Me"), 0);
    EXPECT_GE(strExpected.Find(L"\r\n  Name: Title"), 0);
}

TEST_F(WAVInfoListTest, ABodyCutAnywhereIsNoFault)
{
    const std::string strBody =
        "INFO" + InfoItem("IART", "abc") + InfoItem("ICRD", Terminated("2000")) + InfoItem("IXYZ", "abcdef");
    for (size_t n = 0; n < strBody.size(); ++n)
        EXPECT_EQ(n >= 4, Parse(strBody.substr(0, n))) << n;
}
