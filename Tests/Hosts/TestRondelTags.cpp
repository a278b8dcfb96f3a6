// rondel tags: what it shows and sets, judged by other readers of tags.

#include "TagsTest.h"
#include <set>

class RondelTags : public RondelTagsTest
{
};

// ---- Showing

TEST_F(RondelTags, FieldsAndFramesAreShown)
{
    MakeMp3("a.mp3", 3);
    const std::string strText = Tags("a.mp3");
    for (const char* pLine : {"a.mp3\n", "Tag: ID3v2.3, ", "  Name     Old\n", "  Track #  3/12\n", "  Date     1999\n",
                              "  TIT2 (Name): Old\n", "  TRCK (Track #): 3/12\n"})
        EXPECT_NE(std::string::npos, strText.find(pLine)) << pLine << strText;
    EXPECT_EQ(std::string::npos, strText.find("Year ")) << "the date says it";
}

TEST_F(RondelTags, JsonHasFieldsFramesAndInfo)
{
    MakeMp3("a.mp3", 4);
    const json file = Describe("a.mp3");
    EXPECT_EQ(Get("a.mp3"), file["file"]);
    EXPECT_EQ("ID3v2.4", file["form"]);
    EXPECT_EQ("Old", file["fields"]["Name"]);
    EXPECT_TRUE(file["picture"].is_null());
    bool bFound = false;
    for (const json& frame : file["frames"])
        bFound = bFound || (frame["id"] == "TIT2" && frame["value"] == "Old" && frame["bytes"] == 5);
    EXPECT_TRUE(bFound) << file["frames"];
}

TEST_F(RondelTags, AnInfoListIsShownAndStays)
{
    const std::string strList = MakeChunk("LIST", "INFO" + MakeChunk("IART", std::string("Somebody\0", 9)) +
                                                      MakeChunk("ICRD", std::string("1999-05-30\0", 11)));
    (void)m_Folder.Write("a.wav", MakeRiff(MakeFormatChunk({}) + strList + MakeChunk("data", MakeAudio(400))));
    const json file = Describe("a.wav");
    EXPECT_EQ("none", file["form"]);
    EXPECT_EQ("Somebody", file["info"]["Artist"]);
    EXPECT_EQ("1999-05-30", file["info"]["Date"]);
    EXPECT_NE(std::string::npos, Tags("a.wav").find("INFO list"));
    (void)Tags("set a.wav Artist=Another");
    EXPECT_EQ("Another", Describe("a.wav")["fields"]["Artist"]);
    EXPECT_EQ("Somebody", Describe("a.wav")["info"]["Artist"]);
    EXPECT_NE(std::string::npos, Read("a.wav").find(strList));
}

// ---- Setting

TEST_F(RondelTags, WhatIsSetIsReadByOthersInEveryForm)
{
    ASSERT_EQ(0, Here("sox -n -r 44100 -b 16 -c 2 a.wav synth 1 pluck A3; lame --quiet a.wav none.mp3").m_nExit);
    MakeMp3("v3.mp3", 3);
    MakeMp3("v4.mp3", 4);
    for (const char* pName : {"a.wav", "none.mp3", "v3.mp3", "v4.mp3"})
    {
        SCOPED_TRACE(pName);
        const std::string strAudio = GetAudio(pName);
        (void)Tags(std::string("set ") + pName +
                   " Title='Größe 🎵' ARTIST=X albumartist=Y Track=4/10 Disc=1/2 Genre=Jazz Comment=C ISRC=DEA123456789 "
                   "Date=2001-02-03 REPLAYGAIN_TRACK_GAIN='-6.48 dB' 'replay gain track peak=0.5'");
        EXPECT_EQ(strAudio, GetAudio(pName));
        EXPECT_EQ("Größe 🎵", Probe(pName, "title"));
        EXPECT_EQ("4/10", Probe(pName, "track"));
        const std::string strJudged = Judge(pName);
        for (const char* pLine : {"TITLE=Größe 🎵\n", "ARTIST=X\n", "ALBUMARTIST=Y\n", "TRACKNUMBER=4/10\n",
                                  "DISCNUMBER=1/2\n", "GENRE=Jazz\n", "ISRC=DEA123456789\n",
                                  "REPLAYGAIN_TRACK_GAIN=-6.48 dB\n", "REPLAYGAIN_TRACK_PEAK=0.500000\n"})
            EXPECT_NE(std::string::npos, strJudged.find(pLine)) << pLine << strJudged;
        EXPECT_EQ(pName == std::string("v4.mp3") ? "2001-02-03" : "2001", Probe(pName, "date"));
        EXPECT_EQ("2001-02-03", Field(pName, "Date"));
    }
}

TEST_F(RondelTags, OtherFramesStayAsTheyAre)
{
    MakeMp3("a.mp3", 3);
    const std::string strBefore = Judge("a.mp3");
    (void)Tags("set a.mp3 Album=New");
    EXPECT_EQ("ALBUM=New\n" + strBefore, Judge("a.mp3"));
}

struct VALUE_CASE
{
    const char* pSet;
    const char* pField;
    const char* pValue; // that is shown then
};

TEST_F(RondelTags, ValuesComeOutAsTheFieldHasThem)
{
    const VALUE_CASE aryCases[] = {
        {"Track=4", "Track #", "4/12"}, // the old total stays
        {"Track=4/10", "Track #", "4/10"},
        {"Year=2001", "Date", "2001"},
        {"Date=2001", "Date", "2001"},
        {"Date=2001-02-03", "Date", "2001-02-03"},
        {"Date=2001-02-03T04:05:06", "Date", "2001-02-03T04:05:06"},
        {"'Original Date=1971-06-05'", "Original Date", "1971-06-05"},
        {"REPLAYGAIN_TRACK_GAIN=3", "Replay Gain Track", "+3.00 dB"},
        {"REPLAYGAIN_TRACK_GAIN=0", "Replay Gain Track", "+0.00 dB"}, // where the field alone would be empty
        {"Rating=4", "Rating", "4"},
        {"Lyrics='one\ntwo'", "Lyrics", "one\ntwo"},
        {"MUSICBRAINZ_ALBUM_ID=x", "MusicBrainz Album Id", "x"},
        {"'Artist URL=https://example.org/'", "Artist URL", "https://example.org/"},
    };
    for (const int nVersion : {3, 4})
    {
        for (const VALUE_CASE& row : aryCases)
        {
            SCOPED_TRACE(std::to_string(nVersion) + row.pSet);
            MakeMp3("a.mp3", nVersion);
            (void)Tags(std::string("set a.mp3 ") + row.pSet);
            EXPECT_EQ(row.pValue, Field("a.mp3", row.pField));
            std::filesystem::remove(m_Folder.Get("a.mp3"));
        }
    }
}

TEST_F(RondelTags, SeveralValuesAreSeveralInVersion24AndOneTextInVersion23)
{
    MakeMp3("v3.mp3", 3);
    MakeMp3("v4.mp3", 4);
    (void)Tags("set v3.mp3 v4.mp3 Artist='A; B'");
    EXPECT_NE(std::string::npos, Judge("v3.mp3").find("ARTIST=A; B\n")) << Judge("v3.mp3");
    EXPECT_NE(std::string::npos, Judge("v4.mp3").find("ARTIST=A|B\n")) << Judge("v4.mp3");
    EXPECT_EQ("A; B", Field("v4.mp3", "Artist"));
}

TEST_F(RondelTags, ANewYearTakesThePlaceOfAnOldDate)
{
    MakeMp3("a.mp3", 3);
    (void)Tags("set a.mp3 Date=2001-02-03");
    (void)Tags("set a.mp3 Year=1985");
    EXPECT_EQ("1985", Field("a.mp3", "Date"));
    EXPECT_EQ(std::string::npos, Read("a.mp3").find("2001"));
    (void)Tags("set a.mp3 --remove Date");
    EXPECT_EQ("(none)", Field("a.mp3", "Date"));
    EXPECT_EQ("", Probe("a.mp3", "date"));
}

TEST_F(RondelTags, FieldsAreRemoved)
{
    MakeMp3("a.mp3", 3);
    const std::string strAudio = GetAudio("a.mp3");
    (void)Tags("set a.mp3 --remove Track --remove ARTIST Comment= --remove 'Never There'");
    EXPECT_EQ("", Probe("a.mp3", "track") + Probe("a.mp3", "artist"));
    EXPECT_EQ("Old", Probe("a.mp3", "title"));
    EXPECT_EQ(strAudio, GetAudio("a.mp3"));
}

TEST_F(RondelTags, WithItsLastFieldATagGoes)
{
    const std::string strWav = MakeWav(MakeAudio(4000));
    (void)m_Folder.Write("a.wav", strWav);
    (void)Tags("set a.wav Title=X");
    EXPECT_EQ("TITLE=X\n", Judge("a.wav"));
    (void)Tags("set a.wav Title=");
    EXPECT_TRUE(SameBytes(strWav, Read("a.wav")));
    ASSERT_EQ(0, Here("lame --quiet a.wav a.mp3").m_nExit);
    const std::string strMp3 = Read("a.mp3");
    (void)Tags("set a.mp3 Title=X");
    EXPECT_EQ(strMp3, Read("a.mp3").substr(4096)) << "the frames stay, byte for byte";
    (void)Tags("set a.mp3 --remove Title");
    EXPECT_TRUE(SameBytes(strMp3, Read("a.mp3")));
}

TEST_F(RondelTags, WhatComesAndGoesAtOnceMakesNoTag)
{
    const std::string strWav = MakeWav(MakeAudio(400));
    (void)m_Folder.Write("a.wav", strWav);
    (void)Tags("set a.wav Title=X --remove Title");
    EXPECT_TRUE(SameBytes(strWav, Read("a.wav")));
}

TEST_F(RondelTags, ATextOfItsOwnIsKeptWithANote)
{
    MakeMp3("a.mp3", 3);
    const HOST_RESULT result = Here("\"$RONDEL\" tags set a.mp3 Titel=X");
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_EQ("rondel: note: a.mp3: \"Titel\" is no field that is known, and is kept as a text of its own.\n",
              result.m_strErrors);
    EXPECT_EQ("X", Probe("a.mp3", "Titel"));
    (void)Tags("set a.mp3 TITEL=Y");
    EXPECT_EQ("Y", Field("a.mp3", "Titel")) << "the same one, in another case, and known by now";
}

TEST_F(RondelTags, APictureIsTheCoverWhateverItsFileIsCalled)
{
    MakeMp3("a.mp3", 4);
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(4000)));
    MakePicture("cover.png");
    std::filesystem::rename(m_Folder.Get("cover.png"), m_Folder.Get("cover.jpg"));
    (void)Tags("set a.mp3 a.wav --picture cover.jpg");
    for (const char* pName : {"a.mp3", "a.wav"})
    {
        const std::string strPicture = Describe(pName)["picture"];
        EXPECT_EQ("image/png, " + std::to_string(Read("cover.jpg").size()) + " bytes", strPicture);
        EXPECT_NE(std::string::npos, Read(pName).find(Read("cover.jpg")));
    }
    EXPECT_EQ("png", Here("ffprobe -v error -select_streams v -show_entries stream=codec_name -of csv=p=0 a.mp3 | "
                          "tr -d '\\n,'")
                         .m_strOutput);
    const std::string strBefore = Read("a.mp3");
    (void)Tags("set a.mp3 --picture cover.jpg");
    EXPECT_EQ(strBefore, Read("a.mp3")) << "it is there already";
    (void)Tags("set a.mp3 --remove Picture");
    EXPECT_TRUE(Describe("a.mp3")["picture"].is_null());
}

// ---- JSON and the dry run

TEST_F(RondelTags, WhatIsPrintedAsJsonCanBeSetAgain)
{
    MakeMp3("a.mp3", 3);
    MakeMp3("b.mp3", 4);
    const std::string strOld = Read("a.mp3") + Read("b.mp3");
    (void)Tags("--json a.mp3 b.mp3 > t.json");
    (void)Tags("set a.mp3 b.mp3 --from-json t.json");
    EXPECT_TRUE(SameBytes(strOld, Read("a.mp3") + Read("b.mp3"))) << "nothing was to change";
    json list = json::parse(Read("t.json"));
    list[1]["fields"]["Name"] = "Edited";
    list[1]["fields"]["Artist"] = nullptr;
    (void)m_Folder.Write("t.json", list.dump());
    (void)Tags("set a.mp3 b.mp3 --from-json t.json Album=Both");
    EXPECT_EQ("Old", Field("a.mp3", "Name"));
    EXPECT_EQ("Edited", Field("b.mp3", "Name"));
    EXPECT_EQ("(none)", Field("b.mp3", "Artist"));
    EXPECT_EQ("Both", Field("a.mp3", "Album"));
    MakeMp3("c.mp3", 3);
    ExpectSentence(Here("\"$RONDEL\" tags set c.mp3 --from-json t.json"), 1, {"c.mp3", "t.json"});
}

// Texts under names of their own, and comments in languages, as another program writes them.
TEST_F(RondelTags, WhatOthersWroteIsNotRewrittenByItsOwnJson)
{
    MakeMp3("a.mp3", 3);
    ASSERT_EQ(0, Here("id3v2 -D a.mp3 && id3v2 --TXXX Nope:x -c first:one:ger -c second:two:eng -g 17 a.mp3").m_nExit);
    MakeMp3("b.mp3", 4);
    ASSERT_EQ(0, Here("ffmpeg -v error -nostdin -i b.mp3 -c copy -metadata Nope=x -metadata 'Gr\xC3\xB6\xC3\x9F"
                      "e'=y -id3v2_version 4 c.mp3")
                     .m_nExit);
    for (const char* pName : {"a.mp3", "b.mp3", "c.mp3"})
    {
        const std::string strOld = Read(pName);
        (void)Tags(std::string("--json ") + pName + " > t.json");
        EXPECT_EQ(std::string(pName) + ": no change\n",
                  Tags(std::string("set ") + pName + " --from-json t.json --dry-run"));
        (void)Tags(std::string("set ") + pName + " --from-json t.json");
        EXPECT_TRUE(SameBytes(strOld, Read(pName))) << pName;
    }
    EXPECT_EQ("x", Field("c.mp3", "Nope"));
    EXPECT_EQ("x", Field("a.mp3", "Nope"));
    std::set<std::string> setLanguages;
    const json described = Describe("a.mp3");
    for (const json& frame : described["frames"])
        if (frame["id"] == "COMM")
            setLanguages.insert(frame["language"]);
    EXPECT_EQ((std::set<std::string>{"eng", "ger"}), setLanguages);
}

TEST_F(RondelTags, APlainObjectIsForEveryFile)
{
    MakeMp3("a.mp3", 3);
    MakeMp3("b.mp3", 4);
    (void)m_Folder.Write("t.json", "{\"title\": \"Both\", \"Track\": 7, \"Comment\": null}");
    (void)Tags("set a.mp3 b.mp3 --from-json t.json");
    for (const char* pName : {"a.mp3", "b.mp3"})
        EXPECT_EQ("Both 7/12 (none)",
                  Field(pName, "Name") + " " + Field(pName, "Track #") + " " + Field(pName, "Comment"));
}

TEST_F(RondelTags, ADryRunPrintsTheDifferenceAndWritesNothing)
{
    MakeMp3("a.mp3", 3);
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(400)));
    const std::string strOld = Read("a.mp3") + Read("a.wav");
    const std::string strList = List();
    EXPECT_EQ("a.mp3\n  - Name: Old\n  + Name: New\n  - Artist: Somebody\n"
              "a.wav\n  + Name: New\n",
              Tags("set a.mp3 a.wav Title=New --remove Artist --dry-run"));
    EXPECT_EQ("a.mp3: no change\n", Tags("set a.mp3 Title=Old --dry-run"));
    EXPECT_TRUE(SameBytes(strOld, Read("a.mp3") + Read("a.wav")));
    EXPECT_EQ(strList, List());
}

// ---- The command line

TEST_F(RondelTags, AWrongCommandLineIsCodeTwo)
{
    MakeMp3("a.mp3", 3);
    ExpectSentence(Here("\"$RONDEL\" tags"), 2, {"FILE", "'rondel tags --help'"});
    ExpectSentence(Here("\"$RONDEL\" tags set Title=X"), 2, {"FILE"});
    ExpectSentence(Here("\"$RONDEL\" tags set a.mp3"), 2, {"nothing is to be changed"});
    ExpectSentence(Here("\"$RONDEL\" tags set a.mp3 =X"), 2, {"=X"});
    for (const char* pText : {"--remove", "--picture", "--from-json", "--dry-run"})
        EXPECT_NE(std::string::npos, Tags("set --help").find(pText)) << pText;
}

TEST_F(RondelTags, NamesThatNoFileCanHaveAreSentences)
{
    MakeMp3("a.mp3", 3);
    const std::string strLong(300, 'x');
    ExpectSentence(Here("\"$RONDEL\" tags set a.mp3 --from-json " + strLong), 1, {"JSON file", "cannot be read"});
    ExpectSentence(Here("\"$RONDEL\" tags set a.mp3 --picture " + strLong), 1, {"picture"});
    ExpectSentence(Here("\"$RONDEL\" tags " + strLong), 1, {"too long"});
}

TEST_F(RondelTags, AFileWithAnEqualsSignIsNamedWithItsFolder)
{
    MakeMp3("a=b.mp3", 3);
    (void)Tags("set ./a=b.mp3 Title=X=Y");
    EXPECT_EQ("X=Y", Probe("a=b.mp3", "title"));
}
