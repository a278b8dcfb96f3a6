// The text of settings, the splitting of commands, tags and pictures.

#include "EncoderCommand.h"
#include "EncoderPCM.h"
#include "EncoderPicture.h"
#include "EncoderSettings.h"
#include "EncoderTags.h"
#include <gtest/gtest.h>

namespace
{
struct SETTINGS_CASE
{
    const char* pText;
    const char* pCanonical; // null: an error
};
const SETTINGS_CASE s_arySettings[] = {
    {"", ""},
    {" ; ;\n", ""},
    {"a=1", "a=1"},
    {" A-b_9 =  two words ;c= ", "a-b_9=two words; c=\"\""},
    {"a=1;b=2\nc=3\r\n", "a=1; b=2; c=3"},
    {"a=\"x;y\"\"z\" ; b=\" \"", "a=\"x;y\"\"z\"; b=\" \""},
    {"a=b=c", "a=b=c"},
    {"rest=a;b=\"c", "rest=a;b=\"c"},
    {"a=1; REST =  x \"y\" ; ", "a=1; rest=x \"y\" ;"},
    {"a", nullptr},
    {"a;b=1", nullptr},
    {"=1", nullptr},
    {"a b=1", nullptr},
    {"a=1;A=2", nullptr},
    {"a=\"x", nullptr},
    {"a=\"x\"y", nullptr},
    {"a=x\"y\"", nullptr},
    {"\xC3\xA4=1", nullptr},
};

std::string Join(const std::vector<std::string>& aryArguments)
{
    std::string strAll;
    for (const std::string& strArgument : aryArguments)
        strAll += "<" + strArgument + ">";
    return strAll;
}
} // namespace

TEST(EncoderSettings, ReadsAndWritesItsText)
{
    for (const SETTINGS_CASE& row : s_arySettings)
    {
        SCOPED_TRACE(row.pText);
        EncoderSettings settings;
        ASSERT_EQ(row.pCanonical != nullptr, settings.Parse(row.pText, "rest"));
        EXPECT_EQ(row.pCanonical == nullptr, !settings.GetError().empty());
        if (row.pCanonical == nullptr)
            continue;
        EXPECT_EQ(row.pCanonical, settings.ToText());
        EncoderSettings again;
        ASSERT_TRUE(again.Parse(settings.ToText(), "rest"));
        EXPECT_EQ(settings.GetAll(), again.GetAll());
    }
    EncoderSettings settings;
    EXPECT_FALSE(settings.Parse("a=" + std::string(EncoderSettings::MAX_BYTES, 'x')));
}

TEST(EncoderSettings, AnswersNumbersAndSwitchesAndKeepsTheFirstError)
{
    EncoderSettings settings;
    ASSERT_TRUE(settings.Parse("n=5; bad=5x; on=YES; off=0; word=maybe"));
    int nValue = 7;
    bool bValue = false;
    EXPECT_TRUE(settings.Get("none", 0, 9, nValue));
    EXPECT_EQ(7, nValue);
    EXPECT_TRUE(settings.Get("n", 0, 9, nValue));
    EXPECT_EQ(5, nValue);
    EXPECT_TRUE(settings.Get("on", bValue) && bValue);
    EXPECT_TRUE(settings.Get("off", bValue) && !bValue);
    EXPECT_FALSE(settings.Get("n", 6, 9, nValue));
    EXPECT_FALSE(settings.Get("bad", 0, 9, nValue));
    EXPECT_FALSE(settings.Get("word", bValue));
    EXPECT_EQ(5, nValue);
    EXPECT_EQ("The setting 'n' is a number from 6 to 9, not '5'.", settings.GetError());
    EXPECT_FALSE(settings.AllowOnly({"n", "bad", "on", "off"}));
    EXPECT_TRUE(settings.AllowOnly({"n", "bad", "on", "off", "word"}));
}

TEST(EncoderCommand, SplitsWithoutAShell)
{
    const std::pair<const char*, const char*> s_aryRows[] = {
        {"a b\tc\n", "<a><b><c>"},
        {"a 'b c' \"d e\"", "<a><b c><d e>"},
        {"a '' \"\"", "<a><><>"},
        {"a b'c'\"d\"e", "<a><bcde>"},
        {"a '\\n' \"\\n\" \\n", "<a><\\n><\\n><n>"},
        {"a \"\\\"\\\\\" \\ ", "<a><\"\\>< >"},
        {"a $HOME * ; | > &", "<a><$HOME><*><;><|><>><&>"},
    };
    for (const auto& [pCommand, pArguments] : s_aryRows)
    {
        std::vector<std::string> aryArguments;
        std::string strError;
        EXPECT_TRUE(EncoderSplitCommand(pCommand, aryArguments, strError)) << pCommand;
        EXPECT_EQ(pArguments, Join(aryArguments));
    }
    for (const char* pBad : {"", "  ", "''", "a '", "a \"\\\"", "a \\"})
    {
        std::vector<std::string> aryArguments;
        std::string strError;
        EXPECT_FALSE(EncoderSplitCommand(pBad, aryArguments, strError)) << pBad;
        EXPECT_FALSE(strError.empty());
    }
}

TEST(EncoderTags, AreNamedAsTheFormatsNameThem)
{
    EXPECT_EQ("TRACKNUMBER", EncoderVorbisName("Track"));
    EXPECT_EQ("ALBUMARTIST", EncoderVorbisName("album artist"));
    EXPECT_EQ("DATE", EncoderVorbisName("Year"));
    EXPECT_EQ("MY NAME", EncoderVorbisName("My Name"));
    EXPECT_EQ("A_B__", EncoderVorbisName("a=b\xC3\xA4"));
    EXPECT_EQ("MUSICBRAINZ_ALBUMID", EncoderVorbisName("MusicBrainz Album Id"));
    EXPECT_EQ("TITLESORT", EncoderVorbisName("Title Sort"));
    EXPECT_STREQ("TSOT", EncoderID3Frame("titlesort"));
    EXPECT_STREQ("TXXX:MusicBrainz Album Id", EncoderID3Frame("MusicBrainz Album Id"));
    EXPECT_STREQ("TPE2", EncoderID3Frame("Album Artist"));
    EXPECT_EQ(nullptr, EncoderID3Frame("Comment"));
    EXPECT_EQ(nullptr, EncoderID3Frame("My Name"));
}

TEST(EncoderTags, NamesOfOneTagReplaceEachOther)
{
    EncoderTags tags;
    tags.Set("YEAR", "1999");
    tags.Set("Own", "1");
    tags.Set("Organization", "another's");
    tags.Set("Date", "2020-05-30");
    tags.Set("o w n", "2");
    tags.Set("Publisher", "P");
    ASSERT_EQ(3U, tags.GetAll().size());
    EXPECT_EQ("Date", tags.GetAll()[0].strName);
    EXPECT_EQ("2020-05-30", *tags.Find("Year"));
    EXPECT_EQ("2", *tags.Find("OWN"));
    EXPECT_EQ("Publisher", tags.GetAll()[2].strName); // which has a frame in ID3v2
    tags.Set("year", "");
    EXPECT_EQ(nullptr, tags.Find("Date"));
}

TEST(EncoderPicture, TellsSizeAndKind)
{
    ENCODER_PICTURE picture;
    picture.strData =
        std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\1\2\0\0\0\3\4\3\0\0\0----\0\0\0\6PLTE----------", 51);
    ASSERT_TRUE(picture.Identify());
    EXPECT_STREQ("image/png", picture.pMime);
    EXPECT_EQ(258u, picture.nWidth);
    EXPECT_EQ(3u, picture.nHeight);
    EXPECT_EQ(24u, picture.nDepth);
    EXPECT_EQ(2u, picture.nColours);
    picture.strData = std::string("\xFF\xD8\xFF\xE0\0\4ab\xFF\xFF\xC2\0\x11\x08\1\0\2\0\3---------", 28);
    ASSERT_TRUE(picture.Identify());
    EXPECT_STREQ("image/jpeg", picture.pMime);
    EXPECT_EQ(512u, picture.nWidth);
    EXPECT_EQ(256u, picture.nHeight);
    EXPECT_EQ(24u, picture.nDepth);
    const std::string strJPEG = picture.strData;
    for (size_t n = 0; n < strJPEG.size(); ++n)
    {
        picture.strData = strJPEG.substr(0, n);
        EXPECT_FALSE(picture.Identify()) << n;
    }
}

TEST(EncoderPCM, UnpacksEachWidth)
{
    const unsigned char aryData[] = {0x00, 0x00, 0x80, 0xFF, 0xFF, 0x7F, 0x01, 0x00, 0x00, 0xFF, 0xFF, 0xFF};
    int aryInts[6];
    float aryFloats[6];
    EncoderUnpack(aryData, 4, 24, aryInts);
    EXPECT_EQ((std::vector<int>{-8388608, 8388607, 1, -1}), std::vector<int>(aryInts, aryInts + 4));
    EncoderUnpack(aryData, 6, 16, aryInts);
    EXPECT_EQ((std::vector<int>{0, -128, 32767, 1, -256, -1}), std::vector<int>(aryInts, aryInts + 6));
    EncoderUnpack(aryData, 3, 32, aryInts);
    EXPECT_EQ((std::vector<int>{-8388608, 98303, -256}), std::vector<int>(aryInts, aryInts + 3));
    EncoderUnpack(aryData, 4, 24, aryFloats);
    EXPECT_EQ(-1.0f, aryFloats[0]);
    EXPECT_EQ(8388607.0f / 8388608.0f, aryFloats[1]);
}
