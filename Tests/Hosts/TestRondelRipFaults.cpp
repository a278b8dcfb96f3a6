// rondel rip on drives with faults, and with wishes that cannot be met: what is wrong is named, in one sentence.

#include "RipTest.h"

TEST_F(RipTest, SectorsThatCannotBeReadAreSilenceAndStandInTheLog)
{
    WriteProfile("Unreadable = 400-402\nUnreadable = 1199\n");
    for (const char* pMode : {"secure", "burst"})
    {
        const HOST_RESULT result = Rip({"--mode", pMode, "--overwrite", "--cache", "0"});
        EXPECT_EQ(1, result.m_nExit);
        EXPECT_EQ("rondel: 4 sectors of the disc could not be read beyond doubt; " + Out("Album.log").string() +
                      " names them, so clean the disc and rip those tracks again.\n",
                  result.m_strErrors);
        ExpectWav("01.wav", GetPiece(1));
        const std::string strSilence(3 * LY_CD_SECTOR_BYTES, '\0');
        ExpectWav("02.wav", MakePatternSectors(330, 70) + strSilence + MakePatternSectors(403, 397));
        ExpectWav("03.wav", MakePatternSectors(800, 399) + strSilence.substr(0, LY_CD_SECTOR_BYTES));
        EXPECT_EQ(Join(m_setLogs, {"01.wav", "02.wav", "03.wav"}), GetOutput());
        const nlohmann::json log = GetLog();
        EXPECT_EQ("doubtful", log["outcome"]);
        EXPECT_EQ(0, log["pieces"][0]["bad_sectors"]);
        EXPECT_EQ(3, log["pieces"][1]["bad_sectors"]);
        EXPECT_EQ(400, log["pieces"][1]["entries"][0]["sector"]);
        EXPECT_EQ("unread", log["pieces"][1]["entries"][0]["status"]);
        EXPECT_EQ(1, log["pieces"][2]["bad_sectors"]);
        EXPECT_NE(std::string::npos, result.m_strOutput.find("Track 2: 00:06.20, "));
        EXPECT_NE(std::string::npos, result.m_strOutput.find(", 3 doubtful sectors\n"));
    }
}

TEST_F(RipTest, WhatDiffersBetweenReadsIsReadAgainOrDoubted)
{
    WriteProfile("Seed = 3\nSilentErrors = 500, 4, 30%\nDiffers = 900\n");
    const HOST_RESULT result = Rip({"--cache", "0"});
    EXPECT_EQ(1, result.m_nExit);
    const nlohmann::json log = GetLog();
    EXPECT_GT(log["re_reads"], 10);
    EXPECT_EQ(0, log["pieces"][0]["bad_sectors"]);
    EXPECT_GT(log["pieces"][2]["bad_sectors"], 0);
    // Each sector is right, or named.
    for (int nPiece = 1; nPiece <= 3; ++nPiece)
    {
        const std::string strGot = GetWavSamples(ReadWholeFile(Out("0" + std::to_string(nPiece) + ".wav")));
        std::set<int> setNamed;
        for (const nlohmann::json& entry : log["pieces"][static_cast<size_t>(nPiece - 1)]["entries"])
            for (int n = 0; entry["bad"].get<bool>() && n < entry["sectors"]; ++n)
                setNamed.insert(entry["sector"].get<int>() + n);
        ASSERT_EQ(GetPiece(nPiece).size(), strGot.size());
        for (int n = STARTS[nPiece]; n < STARTS[nPiece + 1]; ++n)
            EXPECT_TRUE(
                setNamed.contains(n) ||
                MakePatternSectors(n, 1) ==
                    strGot.substr(static_cast<size_t>(n - STARTS[nPiece]) * LY_CD_SECTOR_BYTES, LY_CD_SECTOR_BYTES))
                << n;
    }
}

TEST_F(RipTest, ADiscThatIsTakenOutEndsTheRip)
{
    (void)m_Folder.Write("other.bin", MakePatternSectors(77, 300));
    (void)m_Folder.Write("other.cue", "FILE \"other.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    WriteProfile("ChangeDisc = 40, " + m_Folder.Get("other.cue").string() + "\n");
    for (const char* pMode : {"burst", "secure"})
    {
        std::filesystem::remove_all(Out(""));
        const HOST_RESULT result = Rip({"--mode", pMode, "--cache", "0"});
        EXPECT_EQ(1, result.m_nExit);
        EXPECT_TRUE(result.m_strErrors.starts_with("rondel: the disc was taken out or changed")) << result.m_strErrors;
        for (const std::string& strName : GetOutput())
            if (strName.ends_with(".wav"))
                ExpectWav(strName, GetPiece(strName[1] - '0'));
        EXPECT_FALSE(GetOutput().contains("03.wav"));
        EXPECT_FALSE(GetOutput().contains("Album.log"));
    }
}

TEST_F(RipTest, FoldersThatNothingCameToStandInAreNotLeft)
{
    // The first track gets its file, and the second one's folder the user's own.
    (void)m_Folder.Write("other.bin", MakePatternSectors(77, 300));
    (void)m_Folder.Write("other.cue", "FILE \"other.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    WriteProfile("ChangeDisc = 40, " + m_Folder.Get("other.cue").string() + "\n");
    (void)m_Folder.Write("out/03/mine", "mine");
    const HOST_RESULT result = HostProcess::Run(
        {"rip", m_strCue, "--to", Out("").string(), "--name", "%{track}/deep/%{track}", "--mode", "burst"});
    EXPECT_TRUE(result.m_strErrors.starts_with("rondel: the disc was taken out or changed")) << result.m_strErrors;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Out("")))
        EXPECT_FALSE(entry.is_directory() && std::filesystem::is_empty(entry.path())) << entry.path();
    EXPECT_TRUE(std::filesystem::exists(Out("01/deep/01.wav")));
    EXPECT_EQ("mine", ReadWholeFile(Out("03/mine")));

    // Not the first ones either, if a later one cannot be made.
    (void)m_Folder.Write("new/02", "no folder");
    ExpectSentence(
        HostProcess::Run({"rip", m_strCue, "--to", m_Folder.Get("new").string(), "--name", "%{track}/%{track}"}), 1,
        {"02 cannot be made", "--to"});
    EXPECT_FALSE(std::filesystem::exists(m_Folder.Get("new/01")));
    ExpectSentence(HostProcess::Run({"rip", m_strCue, "--to", m_Folder.Get("new/02/a/b").string()}), 1,
                   {"cannot be made", "--to"});
}

TEST_F(RipTest, AProfileAndTheCacheStandInTheReport)
{
    WriteProfile("Vendor = ACME\nModel = CD 24X\nRevision = 7.1\nBuffer = 64\nSpeed = 160\n");
    (void)RipWell({"--cache", "28"});
    const nlohmann::json drive = GetLog()["drive"];
    EXPECT_EQ("ACME", drive["vendor"]);
    EXPECT_EQ("CD 24X", drive["model"]);
    EXPECT_EQ("7.1", drive["revision"]);
    EXPECT_EQ("disc.cue.drive", drive["profile"]);
    EXPECT_EQ(28, drive["cache_sectors"]);
    EXPECT_EQ(false, drive["cache_measured"]);
    EXPECT_EQ(true, drive["image"]);
}

TEST_F(RipTest, TheReportNamesTheDiscAsItsFileIsNamed)
{
    (void)m_Folder.Write("100%, no less.cue.drive", "Speed = 160\n");
    m_strCue = m_Folder.Write("100%, no less.cue", ReadWholeFile(m_strCue)).string();
    (void)RipWell({"--cache", "0"});
    const nlohmann::json drive = GetLog()["drive"];
    EXPECT_EQ(m_strCue, drive["path"]);
    EXPECT_EQ("100%, no less.cue.drive", drive["profile"]);
    EXPECT_EQ(true, drive["image"]);
}

TEST_F(RipTest, FilesThatAreThereAreNotReplacedUnlessItIsAskedFor)
{
    (void)m_Folder.Write("out/03.wav", "mine");
    ExpectSentence(Rip(), 1, {"03.wav exists already", "--to", "--overwrite"});
    EXPECT_EQ((std::set<std::string>{"03.wav"}), GetOutput());
    EXPECT_EQ("mine", ReadWholeFile(Out("03.wav")));
    (void)RipWell({"--overwrite"});
    ExpectTracks();
    ExpectSentence(Rip({"--tracks", "2"}), 1, {"02.wav exists already"});
    std::filesystem::remove(Out("02.wav"));
    ExpectSentence(Rip({"--tracks", "2"}), 1, {"Album.log exists already"});
}

TEST_F(RipTest, ADiscThatDoesNotBeginWithTrackOneIsRippedWhole)
{
    m_strCue = m_Folder
                   .Write("late.cue", "FILE \"disc.bin\" BINARY\nTRACK 02 AUDIO\nINDEX 01 00:00:30\n"
                                      "TRACK 03 AUDIO\nINDEX 01 00:04:30\nTRACK 04 AUDIO\nINDEX 01 00:10:50\n")
                   .string();
    (void)RipWell();
    EXPECT_EQ((std::set<std::string>{"02.wav", "03.wav", "04.wav", "rip.html", "rip.json", "rip.log"}), GetOutput());
    for (int n = 1; n <= 3; ++n)
        ExpectWav("0" + std::to_string(n + 1) + ".wav", GetPiece(n));
    const nlohmann::json log = nlohmann::json::parse(ReadWholeFile(Out("rip.json")));
    EXPECT_EQ(2, log["disc"]["tracks"][0]["number"]);
    EXPECT_EQ(3U, log["disc"]["tracks"].size());
    EXPECT_EQ(true, log["pieces"][0]["sums"]["complete"]);
    EXPECT_EQ(SECTORS, log["disc"]["lead_out"]);
}

TEST_F(RipTest, ALinkThatLeadsNowhereIsNotReplacedUnlessItIsAskedFor)
{
    std::filesystem::create_directories(Out(""));
    std::filesystem::create_symlink("nowhere", Out("02.wav"));
    ExpectSentence(Rip(), 1, {"02.wav exists already", "--overwrite"});
    EXPECT_TRUE(std::filesystem::is_symlink(Out("02.wav")));
}

TEST_F(RipTest, AnAnswerThatIsGoneAtTheEndCostsOnlyTheComparison)
{
    const std::string strAnswer = m_Folder.Write("answer.xml", "<ctdb/>").string();
    const HOST_RESULT result = RipWell({"--verify-with", strAnswer, "--encoder",
                                        "cmd.raw=sh -c \"rm -f '" + strAnswer + "'; cat > %o\"", "--tracks", "1"});
    EXPECT_NE(std::string::npos, result.m_strOutput.find("Not compared: ")) << result.m_strOutput;
    const nlohmann::json log = GetLog();
    EXPECT_EQ("whole", log["outcome"]);
    EXPECT_TRUE(log["verifications"].empty());
    EXPECT_NE(std::string::npos, log["notes"].dump().find("Not compared: the answer " + strAnswer)) << log["notes"];
}

TEST_F(RipTest, WhatCannotBeDoneIsRefusedBeforeTheDiscIsRead)
{
    (void)m_Folder.Write("file", "x");
    const std::string strFile = m_Folder.Get("file").string();
    const auto rip = [&](const std::vector<std::string>& aryArguments)
    {
        std::vector<std::string> aryCommand = {"rip", m_strCue, "--name", "%{track}"};
        aryCommand.insert(aryCommand.end(), aryArguments.begin(), aryArguments.end());
        return HostProcess::Run(aryCommand);
    };
    const std::string strOut = Out("").string();
    ExpectSentence(rip({"--to", strOut, "--encoder", "vorbis"}), 1,
                   {"no encoder 'vorbis'", "wav", "flac", "cmd=COMMAND"});
    ExpectSentence(rip({"--to", strOut, "--encoder", "flac:level=9"}), 1, {"'flac' cannot work so", "level"});
    ExpectSentence(rip({"--to", strOut, "--encoder", "wav", "--encoder", "wav"}), 1, {"both", ".wav"});
    ExpectSentence(rip({"--to", strOut, "--encoder", "cmd.json=cat", "--image"}), 1, {"Album.json"});
    ExpectSentence(rip({"--to", strOut, "--encoder", "cmd.unfinished=cat", "--image"}), 1, {"Album.unfinished"});
    ExpectSentence(rip({"--to", strOut, "--tracks", "9"}), 1, {"no track 9", "1 to 3"});
    ExpectSentence(rip({"--to", strOut, "--range", "1000-1200"}), 1, {"1000 to 1200", "'rondel info'"});
    ExpectSentence(rip({"--to", strOut, "--picture", strFile + "2"}), 1, {"the picture", "is not there"});
    ExpectSentence(rip({"--to", strOut, "--verify-with", strFile}), 1, {"file"});
    ExpectSentence(rip({"--to", strFile}), 1, {"file", "--to"});
    EXPECT_TRUE(GetOutput().empty());
    ExpectSentence(HostProcess::Run({"rip", m_Folder.Get("none.cue").string()}), 1, {"none.cue"});
}

TEST_F(RipTest, AWrongCommandLineIsCodeTwo)
{
    const std::vector<std::vector<std::string>> aryWrong = {
        {"rip"},
        {"rip", "a.cue", "--tracks", "x"},
        {"rip", "a.cue", "--tracks", "1", "--range", "0-5"},
        {"rip", "a.cue", "--hidden", "--range", "0-5"},
        {"rip", "a.cue", "--range", "5"},
        {"rip", "a.cue", "--mode", "fast"},
        {"rip", "a.cue", "--encoder", ""},
        {"rip", "a.cue", "--encoder", "wav:x=1"},
        {"rip", "a.cue", "--encoder", "cmd="},
        {"rip", "a.cue", "--name", "%{nonsense}"},
        {"rip", "a.cue", "--cache", "-1"},
        {"rip", "a.cue", "--speed", "0"},
    };
    for (const std::vector<std::string>& aryArguments : aryWrong)
        ExpectSentence(HostProcess::Run(aryArguments), 2, {"'rondel rip --help'"});
}

TEST_F(RipTest, AnEncoderThatFailsLeavesTheOthersAndIsTriedAgain)
{
    // It refuses the second track, by its length.
    const std::string strCommand = "cmd.bin=sh -c \"cat > %o; test $(wc -c < %o) -ne 1105484\"";
    const HOST_RESULT result = Rip({"--encoder", "wav", "--encoder", strCommand});
    EXPECT_EQ(1, result.m_nExit);
    EXPECT_TRUE(result.m_strErrors.starts_with("rondel: 02.bin could not be encoded (")) << result.m_strErrors;
    EXPECT_NE(std::string::npos, result.m_strErrors.find("; 2 of 3 pieces finished and kept")) << result.m_strErrors;
    EXPECT_EQ((std::set<std::string>{"01.wav", "01.bin", "02.wav", "03.wav", "03.bin", "Album.unfinished"}),
              GetOutput());
    ExpectTracks();
    EXPECT_EQ(1, Rip({"--encoder", "wav", "--encoder", strCommand, "--resume"}).m_nExit);
}

TEST_F(RipTest, AnEncoderWhoseProgramIsMissingEndsTheRip)
{
    const HOST_RESULT result = Rip({"--encoder", "cmd.mp3=/nonexistent/lame - %o"});
    ExpectSentence({result.m_nExit, "", result.m_strErrors}, 1, {"01.mp3 could not be encoded", "/nonexistent/lame"});
    EXPECT_TRUE(GetOutput().empty());
}

TEST_F(RipTest, APictureGoesToTheEncoders)
{
    const std::string strPicture = m_Folder.Get("cover.png").string();
    ASSERT_EQ(
        0,
        HostProcess::RunShell("ffmpeg -v error -f lavfi -i color=red:s=8x8 -frames:v 1 '" + strPicture + "'").m_nExit);
    (void)RipWell({"--encoder", "flac", "--encoder", "wav", "--picture", strPicture, "--tracks", "1"});
    EXPECT_EQ(ReadWholeFile(strPicture), Decode("metaflac --export-picture-to=- 01.flac"));
}

TEST_F(RipTest, SumsAreComparedWithASavedAnswer)
{
    (void)RipWell();
    nlohmann::json log = GetLog();
    const auto put = [](std::string& str, uint32_t n)
    {
        for (int i = 0; i < 4; ++i)
            str += static_cast<char>(n >> (8 * i));
    };
    // One block: tracks, three identifiers; for each track a confidence, a sum and the sum of sector 450.
    std::string strAnswer(1, '\3');
    unsigned int aryID[3] = {};
    ASSERT_EQ(3, std::sscanf(log["disc"]["accuraterip_id"].get<std::string>().c_str(), "%x-%x-%x", &aryID[0], &aryID[1],
                             &aryID[2]));
    for (const unsigned int nID : aryID)
        put(strAnswer, nID);
    for (const nlohmann::json& piece : log["pieces"])
    {
        strAnswer += '\7';
        put(strAnswer,
            static_cast<uint32_t>(std::stoul(piece["sums"]["accuraterip_2"].get<std::string>(), nullptr, 16)));
        put(strAnswer, 0);
    }
    const std::string strFile = m_Folder.Write("answer.bin", strAnswer).string();
    const HOST_RESULT result = RipWell({"--overwrite", "--verify-with", strFile});
    EXPECT_NE(std::string::npos, result.m_strOutput.find("AccurateRip: ")) << result.m_strOutput;
    log = GetLog();
    ASSERT_EQ(1U, log["verifications"].size());
    for (const nlohmann::json& track : log["verifications"][0]["accuraterip"]["tracks"])
        EXPECT_EQ(7, track["confidence_2"]);
}
