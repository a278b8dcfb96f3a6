// The rows that every tag has: what fields there are, which frames stand for them, and in which versions.

#include "FieldTags.h"
#include "ID3v2FieldTable.h"
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace
{
constexpr int WRITE_FLAGS = ID3V2_FIELD_WRITE_23 | ID3V2_FIELD_WRITE_24;

// A field, what is set, and the frames that come of it in version 2.3 and in version 2.4.
struct FIELD_CASE
{
    const wchar_t* pName;
    const wchar_t* pValue;
    std::string str23;
    std::string str24;
};

std::string UserText(const char* pDescription, const char* pValue) { return "TXXX:" + Latin1(pDescription, pValue); }
std::string Text(const char* pID, const char* pValue) { return std::string(pID) + ":" + Latin1(pValue); }
FIELD_CASE Same(const wchar_t* pName, const wchar_t* pValue, const std::string& strFrame)
{
    return {pName, pValue, strFrame, strFrame};
}
FIELD_CASE Plain(const wchar_t* pName, const char* pID) { return Same(pName, L"a", Text(pID, "a")); }
FIELD_CASE User(const wchar_t* pName, const char* pDescription)
{
    return Same(pName, L"a", UserText(pDescription, "a"));
}
FIELD_CASE List(const wchar_t* pName, const char* pID)
{
    return {pName, L"a; b", Text(pID, "a; b"), std::string(pID) + ":" + Latin1("a", "b")};
}
FIELD_CASE Address(const wchar_t* pName, const char* pID)
{
    return Same(pName, L"http://a", std::string(pID) + ":" + Bytes("http://a\0"));
}
FIELD_CASE Date(const wchar_t* pName, const char* pDescription23, const char* pID24)
{
    return {pName, L"40304", UserText(pDescription23, "2010-05-06"), Text(pID24, "2010-05-06")};
}

const std::vector<FIELD_CASE> s_Cases = {
    Plain(L"Name", "TIT2"),
    Plain(L"Subtitle", "TIT3"),
    Plain(L"Grouping", "TIT1"),
    Plain(L"Album", "TALB"),
    Plain(L"Conductor", "TPE3"),
    Plain(L"Remixer", "TPE4"),
    Plain(L"Original Artist", "TOPE"),
    Plain(L"Original Album", "TOAL"),
    Plain(L"Original Lyricist", "TOLY"),
    List(L"Artist", "TPE1"),
    List(L"Album Artist", "TPE2"),
    List(L"Composer", "TCOM"),
    List(L"Lyricist", "TEXT"),
    List(L"Genre", "TCON"),
    List(L"Language", "TLAN"),
    {L"Mood", L"a; b", UserText("MOOD", "a; b"), "TMOO:" + Latin1("a", "b")},
    {L"Set Subtitle", L"a", UserText("SETSUBTITLE", "a"), Text("TSST", "a")},
    {L"Produced Notice", L"a", UserText("PRODUCEDNOTICE", "a"), Text("TPRO", "a")},
    Plain(L"Name Sort", "TSOT"),
    Plain(L"Artist Sort", "TSOP"),
    Plain(L"Album Sort", "TSOA"),
    Plain(L"Album Artist Sort", "TSO2"),
    Plain(L"Composer Sort", "TSOC"),
    Date(L"Date", "Date", "TDRC"),
    Date(L"Original Date", "Original Date", "TDOR"),
    Date(L"Release Date", "Release Date", "TDRL"),
    Date(L"Encoding Date", "Encoding Date", "TDEN"),
    {L"Year", L"1999", Text("TYER", "1999"), ""},
    {L"Original Year", L"1999", Text("TORY", "1999"), UserText("Original Year", "1999")},
    Same(L"Track #", L"3/12", Text("TRCK", "3/12")),
    Same(L"Disc #", L"1/2", Text("TPOS", "1/2")),
    Same(L"Comment", L"a", "COMM:" + Bytes("\0\0\0\0\0a\0")),
    Same(L"Lyrics", L"a", "USLT:" + Bytes("\0\0\0\0\0a\0")),
    Plain(L"BPM", "TBPM"),
    Plain(L"Key", "TKEY"),
    Plain(L"Publisher", "TPUB"),
    Plain(L"Copyright", "TCOP"),
    Plain(L"Encoder", "TSSE"),
    Plain(L"Encoded By", "TENC"),
    Plain(L"ISRC", "TSRC"),
    Plain(L"Compilation", "TCMP"),
    Plain(L"Media", "TMED"),
    Plain(L"File Owner", "TOWN"),
    Plain(L"Radio Station", "TRSN"),
    User(L"Catalog Number", "CATALOGNUMBER"),
    User(L"Barcode", "BARCODE"),
    Same(L"Replay Gain Track", L"-6.5", UserText("REPLAYGAIN_TRACK_GAIN", "-6.50 dB")),
    Same(L"Replay Gain Album", L"1.25", UserText("REPLAYGAIN_ALBUM_GAIN", "+1.25 dB")),
    Same(L"Replay Gain Track Peak", L"0.500000", UserText("REPLAYGAIN_TRACK_PEAK", "0.500000")),
    Same(L"Replay Gain Album Peak", L"1.000000", UserText("REPLAYGAIN_ALBUM_PEAK", "1.000000")),
    User(L"Replay Gain Reference", "REPLAYGAIN_REFERENCE_LOUDNESS"),
    Same(L"R128 Track Gain", L"-256", UserText("R128_TRACK_GAIN", "-256")),
    Same(L"R128 Album Gain", L"512", UserText("R128_ALBUM_GAIN", "512")),
    Same(L"Rating", L"4", "POPM:" + Bytes("\0\xC0")),
    User(L"Play Count", "Play Count"),
    Address(L"Artist URL", "WOAR"),
    Address(L"File URL", "WOAF"),
    Address(L"Source URL", "WOAS"),
    Address(L"Commercial URL", "WCOM"),
    Address(L"Copyright URL", "WCOP"),
    Address(L"Payment URL", "WPAY"),
    Address(L"Publisher URL", "WPUB"),
    Address(L"Radio Station URL", "WORS"),
    Same(L"Feed URL", L"http://a", "PCST:" + Bytes("\0\0\0\0") + "WFED:" + Bytes("http://a\0")),
    User(L"Episode URL", "Episode URL"),
    Same(L"iTunes Podcast Flag", L"0", "PCST:" + Bytes("\0\0\0\0")),
    Plain(L"Podcast Category", "TCAT"),
    Plain(L"Podcast Keywords", "TKWD"),
    Plain(L"!@#$% iTunes Podcast Description !@#$%", "TDES"),
    Address(L"!@#$% iTunes Podcast Feed URL !@#$%", "WFED"),
    Plain(L"!@#$% iTunes Podcast Episode URL !@#$%", "TGID"),
    Same(L"!@#$% iTunes Podcast Flag !@#$%", L"0", "PCST:" + Bytes("\0\0\0\0")),
    Same(L"!@#$% iTunes Podcast Date !@#$%", L"40304", UserText("iTunes Podcast Date", "2010-05-06")),
    User(L"MusicBrainz Track Id", "MusicBrainz Track Id"),
    User(L"MusicBrainz Release Track Id", "MusicBrainz Release Track Id"),
    User(L"MusicBrainz Album Id", "MusicBrainz Album Id"),
    User(L"MusicBrainz Release Group Id", "MusicBrainz Release Group Id"),
    User(L"MusicBrainz Artist Id", "MusicBrainz Artist Id"),
    User(L"MusicBrainz Album Artist Id", "MusicBrainz Album Artist Id"),
    User(L"MusicBrainz Work Id", "MusicBrainz Work Id"),
    User(L"MusicBrainz Disc Id", "MusicBrainz Disc Id"),
    User(L"MusicBrainz Album Type", "MusicBrainz Album Type"),
    User(L"MusicBrainz Album Status", "MusicBrainz Album Status"),
    User(L"MusicBrainz Album Release Country", "MusicBrainz Album Release Country"),
    User(L"AcoustID Id", "Acoustid Id"),
    User(L"AcoustID Fingerprint", "Acoustid Fingerprint"),
};

// ID3v2.4.0 only: what a tag of version 2.3 does not get.
const std::set<std::string> s_FramesOf24 = {"TDEN", "TDOR", "TDRC", "TDRL", "TDTG", "TIPL", "TMCL", "TMOO",
                                            "TPRO", "TSST", "ASPI", "EQU2", "RVA2", "SEEK", "SIGN"};
const std::set<std::string> s_FramesOf23 = {"TYER", "TDAT", "TIME", "TORY", "TRDA", "TSIZ", "IPLS", "RVAD", "EQUA"};
} // namespace

TEST(ID3v2FieldTable, EachFieldBecomesItsFrameInBothVersions)
{
    for (const FIELD_CASE& test : s_Cases)
    {
        CID3v2Tag tag;
        const int nRows = tag.m_aryFields.GetSize();
        LoadTag(tag, 3, {});
        EXPECT_EQ(tag.Set(test.pName, test.pValue), !test.str23.empty()) << Wide(test.pName).c_str();
        EXPECT_EQ(FramesOf(tag), test.str23);
        LoadTag(tag, 4, {});
        EXPECT_EQ(tag.Set(test.pName, test.pValue), !test.str24.empty()) << Wide(test.pName).c_str();
        EXPECT_EQ(FramesOf(tag), test.str24);
        EXPECT_EQ(tag.m_aryFields.GetSize(), nRows) << "the table knows it";
    }
}

TEST(ID3v2FieldTable, EachFieldReadsAsItWasSet)
{
    const FieldTools tools;
    for (const FIELD_CASE& test : s_Cases)
    {
        for (const int nVersion : {3, 4})
        {
            CID3v2Tag tag;
            LoadTag(tag, nVersion, {});
            if (!tag.Set(test.pName, test.pValue))
                continue;
            const std::string strFrames = FramesOf(tag);
            LyPropertyMap map;
            ASSERT_TRUE(tag.Get(test.pName, map)) << Wide(test.pName).c_str();
            LyString strRead = map.GetProperty(L"Value");
            if (map.GetHasProperty(L"Value Original"))
                strRead = map.GetProperty(L"Value Original");
            if (strRead.Find(L"40304.") != 0) // a date comes back with the mark of its precision
            {
                EXPECT_EQ(Wide(strRead), test.pValue) << Wide(test.pName).c_str();
            }
            EXPECT_FALSE(tag.Set(test.pName, L""));
            EXPECT_EQ(FramesOf(tag), "") << Wide(test.pName).c_str();
            EXPECT_EQ(tag.Set(test.pName, strRead), true);
            EXPECT_EQ(FramesOf(tag), strFrames) << Wide(test.pName).c_str();
        }
    }
}

TEST(ID3v2FieldTable, EveryFieldOfTheTableIsTested)
{
    std::set<std::wstring> aryTested = {L"Image File"}; // needs a file
    for (const FIELD_CASE& test : s_Cases)
        aryTested.insert(test.pName);
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
        EXPECT_EQ(aryTested.count(row.pName), 1u) << Wide(row.pName).c_str();
}

TEST(ID3v2FieldTable, ANewTagHoldsTheRowsInOrder)
{
    const CID3v2Tag tag;
    const auto rows = GetID3v2FieldRows();
    ASSERT_EQ(tag.m_aryFields.GetSize(), static_cast<int>(rows.size()));
    for (int i = 0; i < tag.m_aryFields.GetSize(); ++i)
    {
        const CID3v2Field& field = *tag.m_aryFields[i];
        const ID3V2_FIELD_ROW& row = rows[static_cast<size_t>(i)];
        EXPECT_EQ(std::string(field.m_ID, 4), row.pID);
        EXPECT_EQ(field.m_strName, row.pName);
        EXPECT_EQ(field.m_strDescription, row.pDescription);
        EXPECT_EQ(field.m_nFlags, row.nFlags);
        EXPECT_EQ(field.m_nPictureType, row.nPictureType);
    }
}

TEST(ID3v2FieldTable, RowsOfANameStandTogether)
{
    std::set<std::wstring> arySeen;
    std::wstring strLast;
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
    {
        const bool bNew = row.pName != strLast && arySeen.insert(row.pName).second;
        EXPECT_EQ(bNew, row.pName != strLast) << Wide(row.pName).c_str();
        strLast = row.pName;
    }
}

TEST(ID3v2FieldTable, EachVersionGetsItsOwnFrames)
{
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
    {
        ASSERT_EQ(strlen(row.pID), 4u);
        CID3v2FrameHeader header;
        memcpy(header.m_ID, row.pID, sizeof header.m_ID);
        EXPECT_TRUE(header.GetIsValidID(false)) << row.pID;
        EXPECT_FALSE((row.nFlags & ID3V2_FIELD_WRITE_23) != 0 && s_FramesOf24.count(row.pID) != 0) << row.pID;
        EXPECT_FALSE((row.nFlags & ID3V2_FIELD_WRITE_24) != 0 && s_FramesOf23.count(row.pID) != 0) << row.pID;
    }
}

TEST(ID3v2FieldTable, ANameWritesOneFrameInAVersion)
{
    std::map<std::pair<std::wstring, int>, int> aryCounts;
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
    {
        for (const int nFlag : {ID3V2_FIELD_WRITE_23, ID3V2_FIELD_WRITE_24})
            aryCounts[{row.pName, nFlag}] += (row.nFlags & nFlag) != 0;
    }
    for (const auto& [key, nCount] : aryCounts)
    {
        const bool bYear24 = key.first == L"Year" && key.second == ID3V2_FIELD_WRITE_24;
        EXPECT_EQ(nCount, bYear24 ? 0 : 1) << Wide(key.first.c_str()).c_str();
    }
}

TEST(ID3v2FieldTable, WhatIsWrittenHasAPlaceInTheOrder)
{
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
    {
        EXPECT_EQ((row.nFlags & WRITE_FLAGS) != 0, (row.nFlags & ID3V2_FIELD_ORDERED) != 0) << row.pID;
        EXPECT_NE(CID3v2Frame::GetFrameType(row.pID), ID3V2_FRAME_TYPE_OPAQUE) << row.pID << " has no values";
        EXPECT_NE(CID3v2Frame::GetFrameType(row.pID), ID3V2_FRAME_TYPE_PRIVATE) << "belongs to others";
    }
}

TEST(ID3v2FieldTable, FieldsAreFoundWhereOthersWriteThem)
{
    const struct
    {
        const wchar_t* pName;
        const char* pID;
        std::string strBody;
        const wchar_t* pValue;
    } aryCases[] = {
        {L"Album Artist", "TXXX", Latin1("album artist", "a"), L"a"},
        {L"Album Artist", "TXXX", Latin1("AlbumArtist", "a"), L"a"},
        {L"Comment", "TXXX", Latin1("comment", "a"), L"a"},
        {L"Comment", "TDES", Latin1("a"), L"a"},
        {L"Lyrics", "USLT", Comment("any", "a"), L"a"},
        {L"Lyrics", "TXXX", Latin1("lyrics", "a"), L"a"},
        {L"Lyrics", "TXXX", Latin1("UnsyncedLyrics", "a"), L"a"},
        {L"Episode URL", "TGID", Latin1("a"), L"a"},
        {L"Replay Gain Track", "TXXX", Latin1("replaygain_track_gain", "-1.50 dB"), L"-1.5"},
        {L"AcoustID Id", "TXXX", Latin1("ACOUSTID ID", "a"), L"a"},
    };
    for (const auto& test : aryCases)
    {
        CID3v2Tag tag;
        LoadTag(tag, 4, {{test.pID, test.strBody}});
        EXPECT_EQ(ValueOf(tag, test.pName), test.pValue) << test.pID;
        EXPECT_TRUE(tag.Set(test.pName, L"1"));
        EXPECT_EQ(tag.m_aryFrames.GetSize(), 1) << "what is written takes its place";
    }
}

TEST(ID3v2FieldTable, ACommentOfAPurposeIsNoComment)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"COMM", Comment("iTunNORM", "0000")}});
    EXPECT_EQ(ValueOf(tag, L"Comment"), L"");
    EXPECT_TRUE(tag.Set(L"Comment", L"a"));
    EXPECT_EQ(tag.m_aryFrames.GetSize(), 2);
}

TEST(ID3v2FieldTable, TheCoverIsShownFirstAndOtherPicturesStay)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"APIC", Picture(4, "back")}, {"APIC", Picture(0, "other")}, {"APIC", Picture(3, "front")}});
    LyBuffer image;
    ASSERT_TRUE(image.FromStringBase64(tag.GetSimple(L"Image File")));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(image.GetData()), 5), "front");
    EXPECT_FALSE(tag.Set(L"Image File", L""));
    EXPECT_EQ(FramesOf(tag), "APIC:" + Picture(4, "back"));
    EXPECT_EQ(tag.GetSimple(L"Image File"), L"YmFjaw==") << "a picture is better than none";
}

TEST(ID3v2FieldTable, APictureOfVersion22IsTheCover)
{
    for (const char cType : {'\xFF', '\x89'})
    {
        CID3v2Tag tag;
        LoadTag(tag, 3, {{"APIC", Picture(cType, "image")}});
        EXPECT_EQ(tag.GetSimple(L"Image File"), L"aW1hZ2U=");
        EXPECT_FALSE(tag.Set(L"Image File", L""));
        EXPECT_EQ(FramesOf(tag), "");
    }
}

// A save removes the fields of podcasts where there is no feed. What is no podcast's must not go with them.
TEST(ID3v2FieldTable, ASaveWithoutAFeedLeavesTheFramesOfThePublishedStandard)
{
    const std::vector<std::string> aryIDs = {"TALB", "TBPM", "TCOM", "TCON", "TCOP", "TDEN", "TDLY", "TDOR", "TDRC",
                                             "TDRL", "TDTG", "TENC", "TEXT", "TFLT", "TIPL", "TIT1", "TIT2", "TIT3",
                                             "TKEY", "TLAN", "TLEN", "TMCL", "TMED", "TMOO", "TOAL", "TOFN", "TOLY",
                                             "TOPE", "TOWN", "TPE1", "TPE2", "TPE3", "TPE4", "TPOS", "TPRO", "TPUB",
                                             "TRCK", "TRSN", "TRSO", "TSOA", "TSOP", "TSOT", "TSRC", "TSSE", "TSST"};
    TestFrames aryFrames;
    for (const std::string& strID : aryIDs)
        aryFrames.emplace_back(strID, Latin1("a"));
    for (const char* pID : {"WCOM", "WCOP", "WOAF", "WOAR", "WOAS", "WORS", "WPAY", "WPUB"})
        aryFrames.emplace_back(pID, Bytes("http://a\0"));
    aryFrames.emplace_back("PCNT", Bytes("\0\0\0\1"));
    CID3v2Tag tag;
    LoadTag(tag, 4, aryFrames);
    LyBuffer buffer;
    EXPECT_TRUE(tag.SaveToBuffer(buffer, 0));
    EXPECT_EQ(tag.m_aryFrames.GetSize(), static_cast<int>(aryFrames.size()));
}

TEST(ID3v2FieldTable, ASaveKeepsThePodcastOfOthers)
{
    CID3v2Tag tag;
    LoadTag(tag, 3,
            {{"WFED", Bytes("http://feed\0")},
             {"TGID", Latin1("http://episode")},
             {"TDES", Latin1("About it")},
             {"PCST", Bytes("\0\0\0\0")}});
    LyBuffer buffer;
    EXPECT_TRUE(tag.SaveToBuffer(buffer, 0));
    CID3v2Tag saved;
    ASSERT_TRUE(saved.Load(buffer, 0));
    EXPECT_EQ(saved.m_aryFrames.GetSize(), 4);
    EXPECT_EQ(ValueOf(saved, L"Feed URL"), L"http://feed");
    EXPECT_EQ(ValueOf(saved, L"Episode URL"), L"http://episode");
    EXPECT_EQ(ValueOf(saved, L"Comment"), L"About it");
    EXPECT_EQ(ValueOf(saved, L"iTunes Podcast Flag"), L"0");
}

TEST(ID3v2FieldTable, APodcastCarriesItsFieldsTwiceAndLosesThemWithItsFeed)
{
    const FieldTools tools;
    CID3v2Tag tag;
    LoadTag(tag, 4, {});
    EXPECT_TRUE(tag.Set(L"Feed URL", L"http://feed"));
    EXPECT_TRUE(tag.Set(L"Episode URL", L"http://episode"));
    EXPECT_TRUE(tag.Set(L"Comment", L"About it"));
    EXPECT_TRUE(tag.Set(L"Date", L"40304"));
    LyBuffer buffer;
    EXPECT_TRUE(tag.SaveToBuffer(buffer, 0));
    EXPECT_EQ(ValueOf(tag, L"!@#$% iTunes Podcast Description !@#$%"), L"About it");
    EXPECT_EQ(ValueOf(tag, L"!@#$% iTunes Podcast Feed URL !@#$%"), L"http://feed");
    EXPECT_EQ(ValueOf(tag, L"!@#$% iTunes Podcast Episode URL !@#$%"), L"http://episode");
    EXPECT_EQ(ValueOf(tag, L"!@#$% iTunes Podcast Flag !@#$%"), L"0");
    EXPECT_EQ(ValueOf(tag, L"!@#$% iTunes Podcast Date !@#$%"), ValueOf(tag, L"Date"));
    EXPECT_FALSE(tag.Set(L"Feed URL", L""));
    EXPECT_TRUE(tag.SaveToBuffer(buffer, 0));
    EXPECT_EQ(tag.m_aryFrames.GetSize(), 3) << "date, comment and episode";
    EXPECT_EQ(ValueOf(tag, L"Episode URL"), L"http://episode");
    EXPECT_EQ(ValueOf(tag, L"Comment"), L"About it");
}
