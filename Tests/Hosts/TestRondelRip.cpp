// rondel rip: what comes out is what the disc holds, in every mode and by every encoder.

#include "RipTest.h"

TEST_F(RipTest, TracksBecomeWavFilesInEitherMode)
{
    for (const char* pMode : {"secure", "burst"})
    {
        const HOST_RESULT result = RipWell({"--mode", pMode, "--overwrite"});
        ExpectTracks();
        EXPECT_EQ(Join(m_setLogs, {"01.wav", "02.wav", "03.wav"}), GetOutput());
        EXPECT_NE(std::string::npos, result.m_strOutput.find("Track 3: 00:05.25, "));
        EXPECT_EQ(std::string(pMode) == "secure", result.m_strOutput.find(", right\n") != std::string::npos);
        EXPECT_EQ(std::string(pMode) == "burst", result.m_strOutput.find(", read once\n") != std::string::npos);
        EXPECT_NE(std::string::npos, result.m_strOutput.find("Log: "));
        const nlohmann::json log = GetLog();
        EXPECT_EQ(pMode, log["mode"]);
        EXPECT_EQ("whole", log["outcome"]);
        EXPECT_EQ(3U, log["pieces"].size());
        EXPECT_EQ("DEABC2400001", log["pieces"][0]["isrc"]);
        EXPECT_EQ("Guest", log["pieces"][1]["performer"]);
    }
}

TEST_F(RipTest, NamesComeFromTheTexts)
{
    EXPECT_EQ(0, HostProcess::Run({"rip", m_strCue, "--to", Out("").string()}).m_nExit);
    EXPECT_EQ((std::set<std::string>{"Band/Album/01 One.wav", "Band/Album/02 Two - Zwei.wav", "Band/Album/03 Last.wav",
                                     "Band/Album/Album.html", "Band/Album/Album.json", "Band/Album/Album.log"}),
              GetOutput());
    ExpectWav("Band/Album/02 Two - Zwei.wav", GetPiece(2));
}

TEST_F(RipTest, FoldersOfTheirOwnForTracksHaveTheReportAboveThem)
{
    EXPECT_EQ(0,
              HostProcess::Run({"rip", m_strCue, "--to", Out("").string(), "--name", "X/%{artist}/%{title}"}).m_nExit);
    EXPECT_EQ((std::set<std::string>{"X/Band/One.wav", "X/Band/Last.wav", "X/Guest/Two - Zwei.wav", "X/Album.html",
                                     "X/Album.json", "X/Album.log"}),
              GetOutput());
    EXPECT_EQ("Guest/Two - Zwei.wav",
              nlohmann::json::parse(ReadWholeFile(Out("X/Album.json")))["pieces"][1]["files"][0]["name"]);
}

TEST_F(RipTest, SeveralEncodersWorkFromOneReading)
{
    (void)RipWell({"--encoder", "wav", "--encoder", "flac:level=8", "--encoder", "mp3:cbr=320", "--encoder", "opus",
                   "--encoder", "cmd.raw=input=raw; command=cat", "--hidden"});
    EXPECT_EQ(3U + 4 * 5, GetOutput().size());
    ExpectTracks();
    ExpectWav("00.wav", GetPiece(0));
    for (int n = 0; n < 4; ++n)
    {
        const std::string strName = "0" + std::to_string(n);
        EXPECT_TRUE(SameBytes(GetPiece(n), ReadWholeFile(Out(strName + ".raw")))) << n;
        EXPECT_TRUE(SameBytes(GetPiece(n), Decode("flac -d -s -c --force-raw-format --endian=little --sign=signed '" +
                                                  strName + ".flac'")))
            << n;
        // The gapless header gives back the exact number of samples.
        EXPECT_EQ(GetPiece(n).size(), Decode("lame --quiet --decode -t '" + strName + ".mp3' -").size()) << n;
        // At 48 kHz; a decoder may round the last frame up.
        const double fOpus = static_cast<double>(Decode("ffmpeg -v error -i '" + strName + ".opus' -f s16le -").size());
        EXPECT_NEAR(static_cast<double>(GetPiece(n).size()) * 48000 / 44100, fOpus, 4) << n;
    }
    const nlohmann::json log = GetLog();
    for (const nlohmann::json& piece : log["pieces"])
        for (const nlohmann::json& file : piece["files"])
        {
            const std::string strFile = ReadWholeFile(Out(file["name"].get<std::string>()));
            EXPECT_EQ(strFile.size(), file["bytes"].get<size_t>());
            const bool bWAV = file["encoder"] == "wav";
            EXPECT_EQ(bWAV ? 0U : 64U, file["sha256"].get<std::string>().size());
            EXPECT_EQ(bWAV ? 8U : 0U, file["crc32"].get<std::string>().size());
        }
}

TEST_F(RipTest, EncodersAreGivenTheTexts)
{
    (void)RipWell({"--encoder", "flac", "--tracks", "1-2"});
    const std::string strTags = Decode("metaflac --export-tags-to=- 01.flac 02.flac");
    for (const char* pTag : {"TITLE=One", "ARTIST=Band", "ALBUM=Album", "ALBUMARTIST=Band", "ISRC=DEABC2400001",
                             "TITLE=Two / Zwei", "ARTIST=Guest"})
        EXPECT_NE(std::string::npos, strTags.find(pTag)) << pTag << " in\n" << strTags;
    EXPECT_EQ(std::string::npos, Decode("metaflac --export-tags-to=- 02.flac").find("ISRC")); // of the track before
    EXPECT_NE(std::string::npos, strTags.find("TRACKNUMBER=2")) << strTags;
}

TEST_F(RipTest, ASumOfEachFileIsRightByAnotherTool)
{
    (void)RipWell({"--tracks", "2", "--encoder", "wav", "--encoder", "flac"});
    const nlohmann::json files = GetLog()["pieces"][0]["files"];
    // The end of a gzip file: CRC-32 and length of what it holds (RFC 1952, 2.3.1).
    EXPECT_EQ(files[0]["crc32"].get<std::string>() + "\n",
              Decode("gzip -1 -c 02.wav | tail -c 8 | od -A n -t x4 -N 4 | tr -d ' ' | tr a-f A-F"));
    EXPECT_EQ(files[1]["sha256"].get<std::string>(), Decode("sha256sum 02.flac").substr(0, 64));
}

TEST_F(RipTest, TracksAreChosen)
{
    (void)RipWell({"--tracks", "3,1"});
    EXPECT_EQ(Join(m_setLogs, {"01.wav", "03.wav"}), GetOutput());
    ExpectWav("01.wav", GetPiece(1));
    ExpectWav("03.wav", GetPiece(3));
}

TEST_F(RipTest, ARangeOfSectorsIsOneFile)
{
    (void)RipWell({"--range", "10-899"}); // hidden audio, two tracks, and part of the third
    EXPECT_EQ(Join(m_setLogs, {"00.wav"}), GetOutput());
    ExpectWav("00.wav", MakePatternSectors(10, 890));
    EXPECT_EQ(0, GetLog()["pieces"][0]["track"]);
}

TEST_F(RipTest, AnImageIsOneFileWhoseSheetIsTheDiscAgain)
{
    (void)RipWell({"--image", "--hidden"});
    EXPECT_EQ(Join(m_setLogs, {"Album.wav", "Album.cue"}), GetOutput());
    ExpectWav("Album.wav", MakePatternSectors(0, SECTORS));
    const nlohmann::json disc = nlohmann::json::parse(HostProcess::Run({"info", "--json", m_strCue}).m_strOutput);
    const nlohmann::json image =
        nlohmann::json::parse(HostProcess::Run({"info", "--json", Out("Album.cue").string()}).m_strOutput);
    EXPECT_EQ(disc["tracks"], image["tracks"]);
    EXPECT_EQ(disc["title"], image["title"]);
    EXPECT_EQ(disc["performer"], image["performer"]);
}

TEST_F(RipTest, ImagesOfSeveralEncodersHaveASheetEach)
{
    (void)RipWell({"--image", "--encoder", "wav", "--encoder", "flac", "--tracks", "2-3"});
    EXPECT_EQ(Join(m_setLogs, {"Album.wav", "Album.flac", "Album.wav.cue", "Album.flac.cue"}), GetOutput());
    ExpectWav("Album.wav", GetPiece(2) + GetPiece(3));
    m_strCue = Out("Album.flac.cue").string();
    const HOST_RESULT again = HostProcess::Run({"rip", m_strCue, "--to", Out("again").string(), "--name", "%{track}"});
    EXPECT_EQ(0, again.m_nExit) << again.m_strErrors;
    ExpectWav("again/01.wav", GetPiece(2));
    ExpectWav("again/02.wav", GetPiece(3));
}

TEST_F(RipTest, TheSheetOfAnImageCountsFromOneWhateverWasLeftOut)
{
    (void)RipWell({"--image", "--tracks", "1,3"});
    ExpectWav("Album.wav", GetPiece(1) + GetPiece(3));
    const nlohmann::json image =
        nlohmann::json::parse(HostProcess::Run({"info", "--json", Out("Album.cue").string()}).m_strOutput);
    ASSERT_EQ(2U, image["tracks"].size());
    EXPECT_EQ(2, image["tracks"][1]["number"]);
    EXPECT_EQ("Last", image["tracks"][1]["title"]);
}

TEST_F(RipTest, DataTracksAreLeftOutWithANote)
{
    (void)m_Folder.Write("data.bin", std::string(100 * 2352, 'x'));
    m_strCue = m_Folder
                   .Write("mixed.cue", "FILE \"data.bin\" BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"
                                       "FILE \"disc.bin\" BINARY\nTRACK 02 AUDIO\nINDEX 01 00:00:00\n")
                   .string();
    (void)RipWell();
    EXPECT_EQ((std::set<std::string>{"02.wav", "rip.html", "rip.json", "rip.log"}), GetOutput());
    ExpectWav("02.wav", MakePatternSectors(0, SECTORS));
    EXPECT_NE(std::string::npos, ReadWholeFile(Out("rip.log")).find("Track 1 is a data track and was left out."));
}

TEST_F(RipTest, WithoutAnalysisNothingIsMeasured)
{
    (void)RipWell({"--no-analysis"});
    ExpectTracks();
    const nlohmann::json log = GetLog();
    EXPECT_TRUE(log["pieces"][0]["analysis"].is_null());
    EXPECT_TRUE(log["album"].is_null());
    (void)RipWell({"--overwrite"});
    EXPECT_TRUE(GetLog()["album"].is_object());
}

TEST_F(RipTest, TheReportIsThereInItsThreeForms)
{
    (void)RipWell();
    const std::string strText = ReadWholeFile(Out("Album.log"));
    EXPECT_NE(std::string::npos, strText.find("Command               rondel rip "));
    EXPECT_NE(std::string::npos, strText.find("Band"));
    EXPECT_NE(std::string::npos, ReadWholeFile(Out("Album.html")).find("<html"));
    EXPECT_EQ("0:0", std::to_string(GetLog()["bad_sectors"].get<int>()) + ":" +
                         std::to_string(GetLog()["re_reads"].get<int>()));
    EXPECT_NE("00000000", GetLog()["disc_ctdb"]);
}

TEST_F(RipTest, ATerminalShowsHowFarItIs)
{
    WriteProfile("Speed = 8\n");
    const HOST_RESULT result = HostProcess::RunShell("script -qec \"'$RONDEL' rip '" + m_strCue +
                                                     "' --mode burst --to '" + Out("").string() + "'\" /dev/null");
    EXPECT_EQ(0, result.m_nExit);
    for (const char* pText : {"\rTrack 1: ", " %, all: ", "x, ", " left\033[K", "\r\033[KTrack 3: 00:05.25, "})
        EXPECT_NE(std::string::npos, result.m_strOutput.find(pText)) << pText;
}
