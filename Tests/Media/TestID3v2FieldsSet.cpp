// Fields as they are written: what goes, what comes, and what the answer says.

#include "FieldTags.h"
#include <gtest/gtest.h>

namespace
{
constexpr int BOTH = ID3V2_FIELD_WRITE_23 | ID3V2_FIELD_WRITE_24;

// What Set makes of a value by a user text with those flags, in a tag that may hold an older value.
std::string Written(int nFlags, const LyString& strValue, const char* pOldValue = nullptr)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "TIT2", L"Field", L"", nFlags | BOTH);
    LoadTag(tag, 4, {});
    if (pOldValue != nullptr)
        LoadTag(tag, 4, {{"TIT2", Latin1(pOldValue)}});
    EXPECT_TRUE(tag.Set(L"Field", strValue));
    EXPECT_EQ(tag.m_aryFrames.GetSize(), 1);
    return BodyOf(*tag.m_aryFrames[0]);
}
} // namespace

TEST(ID3v2FieldsSet, PutsANewFrameBehindTheOthersAndMarksTheTag)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"TPE1", Latin1("b")}, {"TALB", Latin1("c")}});
    ASSERT_FALSE(tag.m_bDirty);
    EXPECT_TRUE(tag.Set(L"Artist", L"new"));
    EXPECT_EQ(FramesOf(tag), "TALB:" + Latin1("c") + "TPE1:" + Latin1("new"));
    EXPECT_TRUE(tag.m_bDirty);
    EXPECT_EQ(ValueOf(tag, L"Artist"), L"new") << "the frame is decoded";
}

TEST(ID3v2FieldsSet, AnEmptyValueRemovesAndIsFalse)
{
    CID3v2Tag tag;
    LoadTag(tag, 3, {{"TPE1", Latin1("a")}, {"TIT2", Latin1("b")}, {"TPE1", Latin1("c")}});
    EXPECT_FALSE(tag.Set(L"Artist", L""));
    EXPECT_TRUE(tag.m_bDirty);
    EXPECT_EQ(FramesOf(tag), "TIT2:" + Latin1("b"));
    tag.m_bDirty = false;
    EXPECT_FALSE(tag.Set(L"Artist", L"")) << "nothing is left";
    EXPECT_FALSE(tag.m_bDirty);
}

TEST(ID3v2FieldsSet, RemovesTheFramesOfEveryRowOnce)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "TPE1", L"Field", L"", 0x40000);
    AddRow(tag, "TPE1", L"Field", L"", 0x80000);
    AddRow(tag, "TPE2", L"Field", L"", 0);
    LoadTag(tag, 3, {{"TPE1", Latin1("a")}, {"TPE2", Latin1("b")}, {"TPE3", Latin1("c")}, {"TPE1", Latin1("d")}});
    EXPECT_TRUE(tag.Set(L"Field", L"new"));
    EXPECT_EQ(FramesOf(tag), "TPE3:" + Latin1("c") + "TPE1:" + Latin1("new"));
}

TEST(ID3v2FieldsSet, ARowMayKeepItsFrames)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "TPE1", L"Field", L"", ID3V2_FIELD_KEEP | BOTH);
    LoadTag(tag, 4, {{"TPE1", Latin1("a")}});
    EXPECT_FALSE(tag.Set(L"Field", L""));
    EXPECT_FALSE(tag.m_bDirty);
    EXPECT_TRUE(tag.Set(L"Field", L"b"));
    EXPECT_EQ(FramesOf(tag), "TPE1:" + Latin1("a") + "TPE1:" + Latin1("b"));
}

TEST(ID3v2FieldsSet, AFrameOfARowThatKeepsGoesIfAnotherRowHasIt)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "APIC", L"Field", L"", BOTH, 3);
    AddRow(tag, "APIC", L"Field", L"", ID3V2_FIELD_KEEP);
    LoadTag(tag, 4, {{"APIC", Picture(3, "a")}, {"APIC", Picture(4, "b")}});
    EXPECT_FALSE(tag.Set(L"Field", L""));
    EXPECT_EQ(FramesOf(tag), "APIC:" + Picture(4, "b"));
}

TEST(ID3v2FieldsSet, TheVersionPicksTheRows)
{
    const std::pair<int, const char*> aryCases[] = {{0, "TPE1"}, {2, "TPE1"}, {3, "TPE1"}, {4, "TPE2"}};
    for (const auto& [nVersion, pID] : aryCases)
    {
        CID3v2Tag tag;
        RemoveRows(tag);
        AddRow(tag, "TPE1", L"Field", L"", ID3V2_FIELD_WRITE_23);
        AddRow(tag, "TPE2", L"Field", L"", ID3V2_FIELD_WRITE_24);
        AddRow(tag, "TPE3", L"Field", L"", 0);
        if (nVersion > 0)
            LoadTag(tag, nVersion, {});
        EXPECT_TRUE(tag.Set(L"Field", L"a"));
        EXPECT_EQ(FramesOf(tag), pID + std::string(":") + Latin1("a")) << nVersion;
    }
}

TEST(ID3v2FieldsSet, ATagThatFailedToLoadHasNoVersion)
{
    CID3v2Tag tag;
    LyBuffer buffer;
    ASSERT_TRUE(buffer.FromBuffer("ID3\x09\0\0\0\0\0\0", 10));
    ASSERT_FALSE(tag.Load(buffer, 0));
    EXPECT_TRUE(tag.Set(L"Year", L"1999"));
    EXPECT_EQ(FramesOf(tag), "TYER:" + Latin1("1999"));
}

TEST(ID3v2FieldsSet, ARowForEachFrameOfTheName)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "TPE1", L"Field", L"", BOTH);
    AddRow(tag, "TXXX", L"Field", L"Mark", BOTH);
    EXPECT_TRUE(tag.Set(L"Field", L"a"));
    EXPECT_EQ(FramesOf(tag), "TPE1:" + Latin1("a") + "TXXX:" + Latin1("Mark", "a"));
}

TEST(ID3v2FieldsSet, ANameWithoutARowOfTheVersionCountsAsUnknown)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "TPE1", L"Field", L"", ID3V2_FIELD_WRITE_23);
    LoadTag(tag, 4, {{"TPE1", Latin1("a")}});
    EXPECT_TRUE(tag.Set(L"Field", L"b"));
    EXPECT_EQ(FramesOf(tag), "TXXX:" + Latin1("Field", "b"));
    EXPECT_EQ(tag.m_aryFields.GetSize(), 3);
    EXPECT_TRUE(tag.Set(L"Field", L"c"));
    EXPECT_EQ(FramesOf(tag), "TXXX:" + Latin1("Field", "c"));
    EXPECT_EQ(tag.m_aryFields.GetSize(), 3) << "the rows are made once";
}

TEST(ID3v2FieldsSet, AnUnknownNameReplacesTheCommentOfOlderWriters)
{
    CID3v2Tag tag;
    LoadTag(tag, 3, {{"COMM", Comment("Tune Hearth: Nobody's", "old")}});
    EXPECT_TRUE(tag.Set(L"Nobody's", L"new"));
    EXPECT_EQ(FramesOf(tag), "TXXX:" + Latin1("Nobody's", "new"));
}

TEST(ID3v2FieldsSet, SizesAreWrittenAsTheVersionHasThem)
{
    const std::pair<int, std::string> aryCases[] = {{3, Bytes("\0\0\0\xCA")}, {4, Bytes("\0\0\x01\x4A")}};
    for (const auto& [nVersion, strSize] : aryCases)
    {
        CID3v2Tag tag;
        LoadTag(tag, nVersion, {});
        LyString strValue;
        strValue.AppendLeft(L'x', 200);
        EXPECT_TRUE(tag.Set(L"Name", strValue));
        const CID3v2FrameHeader& header = tag.m_aryFrames[0]->m_Header;
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(header.m_Size), 4), strSize);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(header.m_Flags), 2), Bytes("\0\0"));
    }
}

TEST(ID3v2FieldsSet, FeedURLTakesThePodcastFlagAlong)
{
    CID3v2Tag tag;
    EXPECT_TRUE(tag.Set(L"Feed URL", L"http://a/b"));
    EXPECT_EQ(ValueOf(tag, L"Feed URL"), L"http://a/b");
    EXPECT_EQ(ValueOf(tag, L"iTunes Podcast Flag"), L"0");
    EXPECT_EQ(FramesOf(tag), "PCST:" + Bytes("\0\0\0\0") + "WFED:" + Bytes("http://a/b\0"));
    EXPECT_FALSE(tag.Set(L"Feed URL", L""));
    EXPECT_EQ(FramesOf(tag), "");
    EXPECT_TRUE(tag.Set(L"feed url", L"http://a/b"));
    EXPECT_EQ(ValueOf(tag, L"iTunes Podcast Flag"), L"") << "the name counts with its case";
}

TEST(ID3v2FieldsSet, ATrackNumberKeepsItsOldTotal)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"TRCK", Latin1("3/12")}});
    EXPECT_TRUE(tag.Set(L"Track #", L"4"));
    EXPECT_EQ(FramesOf(tag), "TRCK:" + Latin1("4/12"));
    LyPropertyMap map;
    EXPECT_TRUE(tag.Get(L"Track #", map));
    EXPECT_EQ(map.GetProperty(L"Value"), L"4");
    EXPECT_EQ(map.GetProperty(L"Value Original"), L"4/12");
}

TEST(ID3v2FieldsSet, TotalsAreNumbers)
{
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL, L"4"), Latin1("4"));
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL, L"4/10"), Latin1("4/10"));
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL, L"4", "3"), Latin1("4"));
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL, L"4", "3/"), Latin1("4/0"));
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL, L"4", "3/012"), Latin1("4/12"));
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL, L"4", "3/7/9"), Latin1("4/7"));
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL, L"4/10", "3/12"), Latin1("4/10/12")) << "a total of one's own stays in front";
}

TEST(ID3v2FieldsSet, GainsHaveSignDecimalsAndUnit)
{
    EXPECT_EQ(Written(ID3V2_FIELD_GAIN, L"-6.5"), Latin1("-6.50 dB"));
    EXPECT_EQ(Written(ID3V2_FIELD_GAIN, L"3.256"), Latin1("+3.26 dB"));
    EXPECT_EQ(Written(ID3V2_FIELD_GAIN, L"3,25"), Latin1("+3.25 dB"));
    EXPECT_EQ(Written(ID3V2_FIELD_GAIN, L"+2 dB"), Latin1("+2.00 dB"));
    EXPECT_EQ(Written(ID3V2_FIELD_GAIN, L"0"), Latin1("")) << "a frame that says nothing";
    EXPECT_EQ(Written(ID3V2_FIELD_GAIN, L"loud"), Latin1(""));
}

TEST(ID3v2FieldsSet, PeaksHaveSixDecimals)
{
    EXPECT_EQ(Written(ID3V2_FIELD_PEAK, L"0.988553"), Latin1("0.988553"));
    EXPECT_EQ(Written(ID3V2_FIELD_PEAK, L"0,5"), Latin1("0.500000"));
    EXPECT_EQ(Written(ID3V2_FIELD_PEAK, L"1.23456789"), Latin1("1.234568"));
    EXPECT_EQ(Written(ID3V2_FIELD_PEAK, L"x"), Latin1("0.000000"));
}

TEST(ID3v2FieldsSet, Base64HoldsUTF8WithItsTerminator)
{
    EXPECT_EQ(Written(ID3V2_FIELD_BASE64, L"ABC"), Latin1("QUJDAA=="));
    // The value, and not what is written for it, picks the encoding.
    const std::string strUTF16 = Written(ID3V2_FIELD_BASE64, L"\u00FCber");
    EXPECT_EQ(strUTF16.substr(0, 5), Bytes("\x01\xFF\xFEw\0"));
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "TIT2", L"Field", L"", ID3V2_FIELD_BASE64 | BOTH);
    EXPECT_TRUE(tag.Set(L"Field", L"\u00FCber\u4E2D"));
    EXPECT_EQ(tag.GetSimple(L"Field"), L"\u00FCber\u4E2D");
}

TEST(ID3v2FieldsSet, TheFirstFlagDecides)
{
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL | ID3V2_FIELD_GAIN, L"4", "3/9"), Latin1("4/9"));
    EXPECT_EQ(Written(ID3V2_FIELD_TOTAL | ID3V2_FIELD_GAIN, L"4"), Latin1("4")) << "also where it changes nothing";
    EXPECT_EQ(Written(ID3V2_FIELD_GAIN | ID3V2_FIELD_PEAK, L"1"), Latin1("+1.00 dB"));
    EXPECT_EQ(Written(ID3V2_FIELD_PEAK | ID3V2_FIELD_DATE, L"40179"), Latin1("40179.000000"));
    EXPECT_EQ(Written(ID3V2_FIELD_DATE | ID3V2_FIELD_BASE64, L"40179"), Latin1("2010"));
    EXPECT_EQ(Written(ID3V2_FIELD_GENRE, L"Other"), Latin1("Other")) << "genres are text";
}

TEST(ID3v2FieldsSet, AListIsSplitAtSemicolons)
{
    EXPECT_EQ(Written(ID3V2_FIELD_LIST, L"a;b"), Latin1("a", "b"));
    EXPECT_EQ(Written(ID3V2_FIELD_LIST, L"a; b ;c"), Latin1("a", "b") + Bytes("c\0"));
    EXPECT_EQ(Written(ID3V2_FIELD_LIST, L"a"), Latin1("a"));
    EXPECT_EQ(Written(ID3V2_FIELD_LIST, L"a;"), Latin1("a"));
    EXPECT_EQ(Written(0, L"a; b"), Latin1("a; b"));
}

TEST(ID3v2FieldsSet, AListIsSplitFromTheValueAsItWasGiven)
{
    EXPECT_EQ(Written(ID3V2_FIELD_LIST | ID3V2_FIELD_GAIN, L"1;2"), Latin1("1", "2"));
}

TEST(ID3v2FieldsSet, AListReadsAsItWasSet)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {});
    EXPECT_TRUE(tag.Set(L"Artist", L"One; Two; Three"));
    EXPECT_EQ(ValueOf(tag, L"Artist"), L"One; Two; Three");
    EXPECT_TRUE(tag.Set(L"Artist", tag.GetSimple(L"Artist")));
    EXPECT_EQ(FramesOf(tag), "TPE1:" + Latin1("One", "Two") + Bytes("Three\0"));
}

TEST(ID3v2FieldsSet, ATextOfTheFrameThatGoesMayBeGiven)
{
    CID3v2Tag tag;
    LoadTag(tag, 3, {{"TIT2", Latin1("A name as long as it takes")}});
    const LyString* pValue = tag.m_aryFrames[0]->m_Properties.m_pProperties->FindValue(L"Value");
    ASSERT_NE(pValue, nullptr);
    EXPECT_TRUE(tag.Set(L"Name", *pValue));
    EXPECT_EQ(ValueOf(tag, L"Name"), L"A name as long as it takes");
}
