// rondel info: the listing for people and the one for programs say what is on the disc.

#include "HostProcess.h"

namespace
{
using json = nlohmann::json;

class RondelInfo : public ::testing::Test
{
protected:
    static constexpr const char* MIXED_SHEET =
        "CATALOG 1234567890123\nTITLE \"Whole Disc\"\nPERFORMER \"The Band\"\nFILE \"a.bin\" BINARY\n"
        "TRACK 01 AUDIO\nTITLE \"First\"\nPERFORMER \"The Band\"\nFLAGS DCP\nINDEX 01 00:00:00\n"
        "TRACK 02 AUDIO\nTITLE \"S\xC3\xA9"
        "cond\"\nPERFORMER \"A Guest\"\nFLAGS PRE 4CH\nINDEX 00 00:04:00\n"
        "INDEX 01 00:06:00\nREM SESSION 02\nFILE \"b.iso\" BINARY\nTRACK 03 MODE1/2048\nINDEX 01 00:00:00\n";

    void SetUp() override
    {
        (void)m_Folder.Write("a.bin", MakePatternSectors(0, 1000));
        (void)m_Folder.Write("b.iso", std::string(300 * 2048, 'd'));
        m_Cue = m_Folder.Write("a.cue", MIXED_SHEET);
    }
    static json GetJson(const std::filesystem::path& disc)
    {
        const HOST_RESULT result = HostProcess::Run({"info", "--json", disc.string()});
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        return json::parse(result.m_strOutput, nullptr, false);
    }

    DiscFolder m_Folder;
    std::filesystem::path m_Cue;
};
} // namespace

TEST_F(RondelInfo, JsonTellsEveryTrack)
{
    const json disc = GetJson(m_Cue);
    ASSERT_FALSE(disc.is_discarded());
    EXPECT_EQ(m_Cue.string(), disc["disc"]);
    EXPECT_EQ("Whole Disc", disc["title"]);
    EXPECT_EQ("The Band", disc["performer"]);
    EXPECT_EQ(true, disc["cd_text"]);
    ASSERT_EQ(3U, disc["tracks"].size());
    EXPECT_EQ(json::parse(R"({"number": 1, "start_sector": 0, "sectors": 450, "start": "00:02.00", "length": "00:06.00",
        "type": "audio", "channels": 2, "pre_emphasis": false, "copy_prohibited": false, "title": "First",
        "performer": "The Band"})"),
              disc["tracks"][0]);
    EXPECT_EQ(json::parse(R"({"number": 2, "start_sector": 450, "sectors": 550, "start": "00:08.00",
        "length": "00:07.25", "type": "audio", "channels": 4, "pre_emphasis": true, "copy_prohibited": true,
        "title": "Sécond", "performer": "A Guest"})"),
              disc["tracks"][1]);
    EXPECT_EQ("data", disc["tracks"][2]["type"]);
    EXPECT_EQ(1000 + 11400, disc["tracks"][2]["start_sector"]);
    EXPECT_EQ(300, disc["tracks"][2]["sectors"]);
}

TEST_F(RondelInfo, JsonTellsTheDrive)
{
    const json drive = GetJson(m_Cue)["drive"];
    EXPECT_EQ("RONDEL", drive["vendor"]);
    EXPECT_EQ("DISC IMAGE", drive["model"]);
    EXPECT_EQ(true, drive["capabilities"]["cd_da"]);
    EXPECT_EQ(true, drive["capabilities"]["accurate_stream"]);
    EXPECT_TRUE(drive["capabilities"]["max_read_speed"].is_number());
}

TEST_F(RondelInfo, TextShowsATableOfTheSame)
{
    const HOST_RESULT result = HostProcess::Run({"info", m_Cue.string()});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_EQ("", result.m_strErrors);
    for (const char* pLine :
         {"Whole Disc - The Band\n", "Track  Start     Length    Type   Ch  Pre-emph.  Copy       Title\n",
          "    1  00:02.00  00:06.00  audio   2  no         permitted  First - The Band\n",
          "    2  00:08.00  00:07.25  audio   4  yes        no         S\xC3\xA9"
          "cond - A Guest\n",
          "    3  02:47.25  00:04.00  data    2  no         no         \n", "\nDrive: RONDEL DISC IMAGE\n"})
        EXPECT_NE(std::string::npos, result.m_strOutput.find(pLine)) << pLine << result.m_strOutput;
    EXPECT_TRUE(result.m_strOutput.starts_with("Disc: " + m_Cue.string() + "\n"));
}

TEST_F(RondelInfo, ADiscWithoutTextSaysSo)
{
    const auto cue = m_Folder.Write("plain.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    const json disc = GetJson(cue);
    EXPECT_EQ(false, disc["cd_text"]);
    EXPECT_EQ("", disc["title"]);
    EXPECT_EQ("", disc["tracks"][0]["title"]);
    EXPECT_NE(std::string::npos,
              HostProcess::Run({"info", cue.string()}).m_strOutput.find("No CD-Text for the disc\n"));
}

TEST_F(RondelInfo, NinetyNineTracksAreListed)
{
    std::string strSheet = "FILE \"a.bin\" BINARY\n";
    for (int nTrack = 1; nTrack <= 99; ++nTrack)
        strSheet += "TRACK " + std::to_string(nTrack) + " AUDIO\nINDEX 01 " + FormatSheetTime((nTrack - 1) * 10) + "\n";
    const json disc = GetJson(m_Folder.Write("many.cue", strSheet));
    ASSERT_EQ(99U, disc["tracks"].size());
    EXPECT_EQ(980, disc["tracks"][98]["start_sector"]);
    EXPECT_EQ(20, disc["tracks"][98]["sectors"]);
}

TEST_F(RondelInfo, ADiscThatDoesNotBeginWithTrackOneIsListedAsItIs)
{
    for (const int nFirst : {2, 60, 98})
    {
        const std::string strFirst = std::to_string(nFirst);
        const std::string strSecond = std::to_string(nFirst + 1);
        const auto cue = m_Folder.Write("late.cue", "FILE \"a.bin\" BINARY\nTRACK " + strFirst +
                                                        " AUDIO\nTITLE \"First\"\nINDEX 01 00:00:10\nTRACK " +
                                                        strSecond + " AUDIO\nINDEX 01 00:04:00\n");
        const json tracks = GetJson(cue)["tracks"];
        ASSERT_EQ(2U, tracks.size()) << tracks;
        EXPECT_EQ(nFirst, tracks[0]["number"]);
        EXPECT_EQ("First", tracks[0]["title"]);
        EXPECT_EQ(10, tracks[0]["start_sector"]);
        EXPECT_EQ(290, tracks[0]["sectors"]);
        EXPECT_EQ(nFirst + 1, tracks[1]["number"]);
        EXPECT_EQ(300, tracks[1]["start_sector"]);
        EXPECT_EQ(700, tracks[1]["sectors"]);
        // The plug-in's list is without it.
        const HOST_RESULT played = HostProcess::Run({"play", cue.string(), strFirst, "-o", m_Folder.Get("o.wav")});
        ExpectSentence(played, 1, {"cannot be played", "'rondel rip'"});
    }
    const auto cue = m_Folder.Write("one.cue", "FILE \"a.bin\" BINARY\nTRACK 07 AUDIO\nINDEX 01 00:00:00\n");
    const json tracks = GetJson(cue)["tracks"];
    ASSERT_EQ(1U, tracks.size());
    EXPECT_EQ(7, tracks[0]["number"]);
    EXPECT_EQ(1000, tracks[0]["sectors"]);
}

TEST_F(RondelInfo, TextsOfTheDiscDoNotMoveTheCursor)
{
    const auto cue = m_Folder.Write("evil.cue", "TITLE \"Disc\x1B[2J\"\nFILE \"a.bin\" BINARY\nTRACK 01 AUDIO\n"
                                                "TITLE \"a\x1B]0;b\x07\"\nPERFORMER \"\xE2\x80\xAEnur\"\n"
                                                "INDEX 01 00:00:00\n");
    const HOST_RESULT result = HostProcess::Run({"info", cue.string()});
    EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
    for (const char c : {'\x1B', '\x07', '\xAE'})
        EXPECT_EQ(std::string::npos, result.m_strOutput.find(c)) << result.m_strOutput;
    EXPECT_NE(std::string::npos, result.m_strOutput.find("a\\x1B]0;b\\x07")) << result.m_strOutput;
}

TEST_F(RondelInfo, NamesOfAllKindsAreFound)
{
    for (const char* pName : {"with blanks.cue", "one, two.cue", "per%2Ccent.cue",
                              "Gr\xC3\xBC\xC3\x9F"
                              "e.cue",
                              "tune \xF0\x9F\x8E\xB5.cue", "\xE6\x97\xA5\xE6\x9C\xAC.cue", "100%, no less.cue"})
    {
        const auto cue = m_Folder.Write(pName, MIXED_SHEET);
        EXPECT_EQ(cue.string(), GetJson(cue)["disc"]);
    }
    // A name that is no UTF-8 is found, and shown with a stand-in.
    const auto latin = m_Folder.Write("caf\xE9.cue", MIXED_SHEET);
    EXPECT_EQ(3U, GetJson(latin)["tracks"].size());
}

TEST_F(RondelInfo, WhatWasToleratedIsNoted)
{
    const auto cue = m_Folder.Write("odd.cue", "FILE \"odd.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    (void)m_Folder.Write("odd.bin", std::string(500000, 'x'));
    const HOST_RESULT result = HostProcess::Run({"info", cue.string()});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_EQ("rondel: note: " + cue.string() +
                  ", line 1: the file \"odd.bin\" ends within a sector; it may have been " +
                  "cut off, so compare it with where it came from.\n",
              result.m_strErrors);
}
