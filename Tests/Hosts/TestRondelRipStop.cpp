// rondel rip that is broken off: by Ctrl-C, by a kill, by a full disk; and how it goes on.

#include "RipTest.h"
#include "Thinning.h"

namespace
{
// Slow enough for breaking a rip off in a track: the second one takes 1.5 seconds, read once.
constexpr const char* SLOW_DRIVE = "Speed = 4\n";

class RipStopTest : public RipTest
{
protected:
    // Breaks a slow rip off as soon as there is a file of this name.
    HOST_RESULT BreakOff(const std::string& strSignal, const std::string& strFile,
                         std::vector<std::string> aryArguments = {})
    {
        WriteProfile(SLOW_DRIVE);
        aryArguments.insert(aryArguments.end(), {"--mode", "burst"});
        std::string strLine = "env --default-signal=INT,TERM,HUP \"$RONDEL\"";
        for (const std::string& str : MakeCommand(aryArguments))
            strLine += " '" + str + "'";
        strLine += " & p=$!; while [ ! -e '" + Out(strFile).string() +
                   "' ] && kill -0 $p; do sleep 0.02; done; kill -" + strSignal + " $p; wait $p";
        const HOST_RESULT result = HostProcess::RunShell(strLine);
        RemoveProfile();
        return result;
    }
    HOST_RESULT GoOn(std::vector<std::string> aryArguments = {})
    {
        aryArguments.insert(aryArguments.end(), {"--mode", "burst", "--resume"});
        return Rip(aryArguments);
    }
    // Whatever has a final name is whole: a WAV of a track.
    void ExpectOnlyWholeFiles() const
    {
        for (const std::string& strName : GetOutput())
            for (int n = 1; n <= 3; ++n)
                if (strName == "0" + std::to_string(n) + ".wav")
                    ExpectWav(strName, GetPiece(n));
    }
};
} // namespace

TEST_F(RipStopTest, CtrlCKeepsFinishedTracksAndSaysHowToGoOn)
{
    for (const char* pSignal : {"INT", "TERM", "HUP"})
    {
        std::filesystem::remove_all(Out(""));
        const HOST_RESULT result = BreakOff(pSignal, "01.wav");
        EXPECT_EQ(1, result.m_nExit) << pSignal;
        EXPECT_EQ("rondel: the rip was stopped; 1 of 3 pieces finished and kept, so go on with the same command and "
                  "--resume.\n",
                  result.m_strErrors);
        EXPECT_EQ((std::set<std::string>{"01.wav", "Album.unfinished"}), GetOutput());
        ExpectWav("01.wav", GetPiece(1));
    }
    const HOST_RESULT result = GoOn();
    EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
    EXPECT_EQ("", result.m_strErrors);
    EXPECT_NE(std::string::npos, result.m_strOutput.find("Track 1: 00:04.00, taken from before, read once\n"));
    ExpectTracks();
    EXPECT_EQ(Join(m_setLogs, {"01.wav", "02.wav", "03.wav"}), GetOutput());
    const nlohmann::json log = GetLog();
    EXPECT_EQ("taken", log["pieces"][0]["state"]);
    EXPECT_EQ("whole", log["outcome"]);
    // What is known of the disc is what one rip would have found.
    std::filesystem::remove_all(Out(""));
    (void)RipWell({"--mode", "burst"});
    const nlohmann::json whole = GetLog();
    for (size_t n = 0; n < 3; ++n)
    {
        EXPECT_EQ(whole["pieces"][n]["sums"], log["pieces"][n]["sums"]) << n;
        EXPECT_EQ(whole["pieces"][n]["analysis"], log["pieces"][n]["analysis"]) << n;
        EXPECT_EQ(whole["pieces"][n]["files"], log["pieces"][n]["files"]) << n;
    }
    EXPECT_EQ(whole["album"], log["album"]);
    EXPECT_EQ(whole["disc_ctdb"], log["disc_ctdb"]);
    EXPECT_FALSE(log["disc_ctdb"].is_null());
}

TEST_F(RipStopTest, AStopBeforeAnythingIsFinishedLeavesNothing)
{
    const HOST_RESULT result = BreakOff("INT", "Album.unfinished");
    EXPECT_EQ("rondel: the rip was stopped; nothing is finished, so begin anew with the same command.\n",
              result.m_strErrors);
    EXPECT_EQ(1, result.m_nExit);
    EXPECT_TRUE(GetOutput().empty());
}

TEST_F(RipStopTest, AFileThatWasChangedIsReadAgain)
{
    (void)BreakOff("INT", "01.mp3", {"--encoder", "flac", "--encoder", "mp3"});
    ASSERT_TRUE(GetOutput().contains("01.mp3"));
    std::ofstream(Out("01.mp3"), std::ios::app) << "x";
    const HOST_RESULT result = GoOn({"--encoder", "flac", "--encoder", "mp3"});
    EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
    const nlohmann::json log = GetLog();
    EXPECT_EQ("read", log["pieces"][0]["state"]);
    EXPECT_NE(std::string::npos, log["notes"].dump().find("01.mp3 is not there any more as it was written"));
    EXPECT_EQ(log["pieces"][0]["files"][1]["bytes"], std::filesystem::file_size(Out("01.mp3")));
}

TEST_F(RipStopTest, SumsOfTracksThatAreNoLongerThereAsTheyWereReadRemain)
{
    (void)BreakOff("INT", "01.mp3", {"--encoder", "mp3"});
    EXPECT_EQ(0, GoOn({"--encoder", "mp3"}).m_nExit);
    const nlohmann::json log = GetLog();
    EXPECT_EQ("taken", log["pieces"][0]["state"]);
    EXPECT_FALSE(log["pieces"][0]["sums"]["crc32"].is_null());
    EXPECT_FALSE(log["album"].is_null());
}

TEST_F(RipStopTest, AnImageBeginsAnew)
{
    const HOST_RESULT result = BreakOff("INT", "Album.wav.part", {"--image"});
    EXPECT_EQ(1, result.m_nExit);
    EXPECT_TRUE(GetOutput().empty());
    EXPECT_EQ(0, GoOn({"--image"}).m_nExit);
    ExpectWav("Album.wav", GetPiece(1) + GetPiece(2) + GetPiece(3));
}

TEST_F(RipStopTest, AnotherDiscAndOtherWishesAreRefused)
{
    (void)BreakOff("INT", "01.wav");
    const std::string strState = ReadWholeFile(Out("Album.unfinished"));
    ExpectSentence(GoOn({"--tracks", "1-2"}), 1, {"was asked for otherwise", "rondel rip", "--resume", "--overwrite"});
    ExpectSentence(GoOn({"--encoder", "wav", "--encoder", "flac"}), 1, {"was asked for otherwise"});
    ExpectSentence(Rip({"--resume", "--mode", "secure"}), 1, {"was asked for otherwise"});
    ExpectSentence(Rip({"--mode", "burst"}), 1, {"broken off", "--resume", "--overwrite"});
    const std::string strSheet = ReadWholeFile(m_strCue);
    (void)m_Folder.Write("disc.cue", strSheet + "TRACK 04 AUDIO\nINDEX 01 00:15:00\n");
    ExpectSentence(GoOn(), 1, {"of another disc", "--to"});
    (void)m_Folder.Write("disc.cue", strSheet);
    (void)m_Folder.Write("out/Album.unfinished", "{" + strState);
    ExpectSentence(GoOn(), 1, {"damaged", "--overwrite"});
    (void)m_Folder.Write("out/Album.unfinished", strState);
    EXPECT_EQ(0, GoOn().m_nExit);
    ExpectTracks();
}

TEST_F(RipStopTest, ResumingWithNothingToResumeIsAWholeRip)
{
    EXPECT_EQ(0, GoOn().m_nExit);
    ExpectTracks();
}

TEST_F(RipStopTest, AKillAtAnyMomentLeavesNothingThatLooksWholeAndIsNot)
{
    for (const char* pSeconds : Thinning::Some<std::vector<const char*>>({"0.3", "0.7", "1.1", "1.5"}, {"0.3", "1.1"}))
    {
        WriteProfile("Speed = 8\n");
        (void)RipBehind(std::string("timeout --signal=KILL ") + pSeconds,
                        {"--mode", "burst", "--overwrite", "--encoder", "wav", "--encoder", "flac"});
        RemoveProfile();
        ExpectOnlyWholeFiles();
        EXPECT_EQ(0, GoOn({"--encoder", "wav", "--encoder", "flac"}).m_nExit) << pSeconds;
        ExpectTracks();
        std::filesystem::remove_all(Out(""));
    }
}

TEST_F(RipStopTest, TheSecondCtrlCDoesNotWaitForADriveThatHangs)
{
    WriteProfile("Hang = read 5, 30\n");
    const auto start = std::chrono::steady_clock::now();
    const HOST_RESULT result = RipBehind("timeout --signal=INT 8 timeout --preserve-status --foreground --signal=INT 1",
                                         {"--mode", "burst", "--cache", "0"});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(25));
    for (const std::string& strName : GetOutput())
        EXPECT_EQ("Album.unfinished", strName) << result.m_strErrors;
}

TEST_F(RipStopTest, AFullDiskEndsWithASentenceAndNothingIncomplete)
{
    // A file of track 2 has 1105440 bytes; the shell counts in blocks of 512.
    for (const char* pEncoder : {"wav", "flac"})
    {
        const HOST_RESULT result = RipBehind("ulimit -f 1900;", {"--encoder", pEncoder});
        const std::string strName = std::string("02.") + pEncoder;
        EXPECT_EQ(1, result.m_nExit) << pEncoder;
        EXPECT_TRUE(result.m_strErrors.starts_with("rondel: " + strName)) << result.m_strErrors;
        EXPECT_NE(std::string::npos, result.m_strErrors.find("--resume.\n")) << result.m_strErrors;
        EXPECT_EQ(1, std::count(result.m_strErrors.begin(), result.m_strErrors.end(), '\n'));
        const std::set<std::string> setOutput = GetOutput();
        EXPECT_TRUE(setOutput.contains(std::string("01.") + pEncoder));
        EXPECT_TRUE(setOutput.contains("Album.unfinished"));
        for (const std::string& str : setOutput) // an encoder may be so far behind that the third track came in, too
            EXPECT_TRUE(str[0] != '.' && str[1] != '2' && !str.ends_with(".part")) << str;
        EXPECT_EQ(0, Rip({"--encoder", pEncoder, "--resume"}).m_nExit);
        std::filesystem::remove_all(Out(""));
    }
}
