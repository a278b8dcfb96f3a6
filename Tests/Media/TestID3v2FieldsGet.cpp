// Fields as they are read: which frame counts, and what the flags of its row make of the value.

#include "FieldTags.h"
#include <gtest/gtest.h>

namespace
{
struct VALUE_CASE
{
    const char* pFrame;
    const wchar_t* pField;
};

// Reads one value after another from a row with those flags.
void ExpectValues(int nFlags, const std::vector<VALUE_CASE>& aryCases)
{
    for (const VALUE_CASE& test : aryCases)
    {
        CID3v2Tag tag;
        RemoveRows(tag);
        AddRow(tag, "TIT2", L"Field", L"", nFlags);
        LoadTag(tag, 4, {{"TIT2", Latin1(test.pFrame)}});
        EXPECT_EQ(ValueOf(tag, L"Field"), test.pField) << "frame: " << test.pFrame;
        EXPECT_EQ(Wide(tag.GetSimple(L"Field", 1)), std::wstring(test.pFrame, test.pFrame + strlen(test.pFrame)));
    }
}
} // namespace

TEST(ID3v2FieldsGet, ANameThatNothingHasIsFalseAndMakesTwoRows)
{
    CID3v2Tag tag;
    const int nRows = tag.m_aryFields.GetSize();
    LyPropertyMap map;
    map.SetProperty(L"Old", L"1");
    EXPECT_FALSE(tag.Get(L"Nobody's", map));
    EXPECT_FALSE(map.GetHasProperty(L"Old")) << "the map is emptied";
    EXPECT_EQ(tag.m_aryFields.GetSize(), nRows + 2);
    EXPECT_FALSE(tag.Get(L"Nobody's", map));
    EXPECT_TRUE(tag.Set(L"Nobody's", L"value"));
    EXPECT_EQ(tag.m_aryFields.GetSize(), nRows + 2) << "a later Set finds them";
    EXPECT_EQ(FramesOf(tag), "TXXX:" + Latin1("Nobody's", "value"));
}

TEST(ID3v2FieldsGet, AnUnknownFieldIsReadFromTheCommentOfOlderWriters)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"COMM", Comment("Tune Hearth: Nobody's", "old")}});
    EXPECT_EQ(ValueOf(tag, L"Nobody's"), L"old");
    LoadTag(tag, 4, {{"COMM", Comment("Tune Hearth: Nobody's", "old")}, {"TXXX", Latin1("nobody's", "new")}});
    EXPECT_EQ(ValueOf(tag, L"Nobody's"), L"new") << "user text is asked first";
}

TEST(ID3v2FieldsGet, FillsTheMapWithTheFramesProperties)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"COMM", Comment("", "text")}});
    LyPropertyMap map;
    map.SetProperty(L"Old", L"1");
    EXPECT_TRUE(tag.Get(L"Comment", map));
    EXPECT_FALSE(map.GetHasProperty(L"Old"));
    EXPECT_EQ(map.GetProperty(L"Value"), L"text");
    EXPECT_EQ(map.GetPropertyInt(L"Language ID"), 'e' << 16 | 'n' << 8 | 'g');
    EXPECT_EQ(map.GetPropertyInt(L"Text Encoding", -1), 0);
}

TEST(ID3v2FieldsGet, OnlyTheFirstPairCounts)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "TPE2", L"Field", L"", 0);
    AddRow(tag, "TPE1", L"Field", L"", 0);
    LoadTag(tag, 4, {{"TPE1", Latin1("a")}, {"TPE2", Latin1("b")}, {"TPE2", Latin1("c")}});
    EXPECT_EQ(ValueOf(tag, L"Field"), L"b");
}

TEST(ID3v2FieldsGet, AnOpaqueFrameHasNoValue)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "UFID", L"Field", L"", 0);
    LoadTag(tag, 4, {{"UFID", "abc"}});
    LyPropertyMap map;
    EXPECT_TRUE(tag.Get(L"Field", map));
    EXPECT_FALSE(map.GetHasProperty(L"Value"));
    EXPECT_EQ(ValueOf(tag, L"Field"), L"");
}

TEST(ID3v2FieldsGet, GetSimpleIsEmptyWithoutAFrame)
{
    CID3v2Tag tag;
    EXPECT_EQ(ValueOf(tag, L"Name"), L"");
    EXPECT_EQ(ValueOf(tag, L""), L"");
    CID3TagBase& base = tag;
    LoadTag(tag, 3, {{"TIT2", Latin1("text")}});
    EXPECT_EQ(base.GetSimple(L"Name"), L"text");
}

TEST(ID3v2FieldsGet, OnlyBitZeroOfRawLeavesTheValueAsItIs)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"TRCK", Latin1("3/12")}});
    EXPECT_EQ(tag.GetSimple(L"Track #", 0), L"3");
    EXPECT_EQ(tag.GetSimple(L"Track #", 1), L"3/12");
    EXPECT_EQ(tag.GetSimple(L"Track #", 2), L"3");
    EXPECT_EQ(tag.GetSimple(L"Track #", 3), L"3/12");
}

TEST(ID3v2FieldsGet, ATotalIsCutAndTheWholeKept)
{
    ExpectValues(ID3V2_FIELD_TOTAL, {{"3/12", L"3"}, {"3", L"3"}, {"/12", L""}, {"1/2/3", L"1"}, {"A/B", L"A"}});
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"TRCK", Latin1("4/12")}, {"TPOS", Latin1("1")}});
    LyPropertyMap map;
    EXPECT_TRUE(tag.Get(L"Track #", map));
    EXPECT_EQ(map.GetProperty(L"Value"), L"4");
    EXPECT_EQ(map.GetProperty(L"Value Original"), L"4/12");
    EXPECT_TRUE(tag.Get(L"Disc #", map));
    EXPECT_EQ(map.GetProperty(L"Value Original"), L"1");
    EXPECT_TRUE(tag.Get(L"Disc #", map, 1));
    EXPECT_FALSE(map.GetHasProperty(L"Value Original"));
}

TEST(ID3v2FieldsGet, GenresInBracketsGetTheirNames)
{
    ExpectValues(ID3V2_FIELD_GENRE, {
                                        {"(12)", L"Other"},
                                        {"(12)Something", L"Other"},
                                        {"(0)", L"Blues"},
                                        {"((12))", L"Other"},
                                        {"(147)", L"Synthpop"},
                                        {"(148)", L"(148)"},
                                        {"(-1)", L"(-1)"},
                                        {"-1", L""},
                                        {"12", L"12"},
                                        {"Rock", L"Rock"},
                                        {"Rock (17)", L"Rock (17)"},
                                        {"", L""},
                                        {"(99999999999)", L"(99999999999)"},
                                        {"(12", L"Other"},
                                        {"(RX)", L"Blues"},       // no number reads as 0
                                        {"(12)5", L"Dance Hall"}, // without its brackets it is 125
                                    });
}

TEST(ID3v2FieldsGet, GenreNamesAreThePublishedListWithTheSystemsSpellings)
{
    const std::pair<int, const wchar_t*> aryCases[] = {
        {0, L"Blues"},
        {7, L"Hip-Hop"},
        {14, L"R&B"},
        {17, L"Rock"},
        {24, L"Soundtrack"},
        {25, L"Euro-Techno"},
        {29, L"Jazz+Funk"},
        {32, L"Classical"},
        {39, L"Noise"},
        {40, L"Alt. Rock"},
        {41, L"Bass"},
        {50, L"Darkwave"},
        {59, L"Gangsta"},
        {62, L"Pop/Funk"},
        {67, L"Psychadelic"},
        {69, L"Showtunes"},
        {78, L"Rock & Roll"},
        {79, L"Hard Rock"},
        {80, L"Folk"},
        {81, L"Folk-Rock"},
        {90, L"Avantgarde"},
        {100, L"Humour"},
        {104, L"Chamber Music"},
        {110, L"Satire"},
        {119, L"Freestyle"},
        {123, L"Acapella"},
        {124, L"Euro-House"},
        {125, L"Dance Hall"},
        {126, L"Goa"},
        {127, L"Drum & Bass"},
        {128, L"Club House"},
        {129, L"Hardcore"},
        {132, L"BritPop"},
        {133, L"Black Punk"},
        {134, L"Polsk Punk"},
        {136, L"Christian Gangsta"},
        {137, L"Heavy Metal"},
        {140, L"Contemporary C"},
        {141, L"Christian Rock"},
        {144, L"Thrash Metal"},
        {145, L"Anime"},
        {146, L"JPop"},
        {147, L"Synthpop"},
    };
    for (const auto& [nGenre, pName] : aryCases)
    {
        CID3v2Tag tag;
        LoadTag(tag, 3, {{"TCON", Latin1("(" + std::to_string(nGenre) + ")")}});
        EXPECT_EQ(ValueOf(tag, L"Genre"), pName) << nGenre;
    }
}

TEST(ID3v2FieldsGet, APeakLosesTheNameOfItsField)
{
    const FieldTools tools;
    ExpectValues(ID3V2_FIELD_PEAK, {{"0.988", L"0.988"},
                                    {"replaygain_track_peak 0.988", L" 0.988"},
                                    {"ReplayGain_Track_Peak=1", L"=1"},
                                    {"replaygain_track_peakreplaygain_track_peak", L""},
                                    {"", L""}});
}

TEST(ID3v2FieldsGet, APeakLosesTheNameWithoutTheTextServiceToo)
{
    ExpectValues(ID3V2_FIELD_PEAK, {{"REPLAYGAIN_TRACK_PEAK 0.5", L" 0.5"}, {"xreplaygain_track_peaky", L"xy"}});
}

TEST(ID3v2FieldsGet, AGainIsANumberWithoutUnit)
{
    ExpectValues(ID3V2_FIELD_GAIN, {{"-6.50 dB", L"-6.5"},
                                    {"+3.25 DB", L"3.25"},
                                    {"-6,25 dB", L"-6.25"},
                                    {"replaygain_track_gain -1.5 db", L"-1.5"},
                                    {"REPLAYGAIN_TRACK_GAIN: 2", L"0"}, // a colon begins no number
                                    {"2", L"2"},
                                    {"loud", L"0"},
                                    {"", L""}});
}

TEST(ID3v2FieldsGet, ADateIsANumberOfDays)
{
    const FieldTools tools;
    ExpectValues(ID3V2_FIELD_DATE, {{"1900", L"2"}, {"2010", L"40179"}, {"yesterday", L""}, {"", L""}});
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"TDRC", Latin1("2010-05-06T12:00:00")}});
    EXPECT_EQ(ValueOf(tag, L"Date"), L"40304.5");
}

TEST(ID3v2FieldsGet, ADateIsEmptyWithoutTheDateService) { ExpectValues(ID3V2_FIELD_DATE, {{"2010", L""}}); }

TEST(ID3v2FieldsGet, Base64IsReadAsText)
{
    ExpectValues(ID3V2_FIELD_BASE64, {{"QUJD", L"ABC"},           // without a terminator
                                      {"QUJDAA==", L"ABC"},       // with one
                                      {"w7xiZXIA", L"\u00FCber"}, // UTF-8
                                      {"", L""}});
}

TEST(ID3v2FieldsGet, FlagsWorkOnWhatTheOneBeforeHasLeft)
{
    ExpectValues(ID3V2_FIELD_TOTAL | ID3V2_FIELD_GENRE, {{"(12)/(13)", L"Other"}});
    ExpectValues(ID3V2_FIELD_PEAK | ID3V2_FIELD_GAIN, {{"replaygain_track_peak 0.50", L"0.5"}});
    const FieldTools tools;
    ExpectValues(ID3V2_FIELD_TOTAL | ID3V2_FIELD_DATE, {{"1900/2", L"2"}});
}

TEST(ID3v2FieldsGet, FlagsOfOthersChangeNothing)
{
    ExpectValues(ID3V2_FIELD_LIST | ID3V2_FIELD_ORDERED | ID3V2_FIELD_KEEP | 0xC0000,
                 {{"(12)", L"(12)"}, {"a;b", L"a;b"}, {"1/2", L"1/2"}});
}
