// enc_pipe: programs of every kind of behaviour.

#include "EncoderTestSupport.h"
#include <csignal>
#include <cstring>

namespace
{
class PipeEncoder : public EncoderTest
{
protected:
    void OpenPipe(const std::string& strCommand, const std::string& strOther = "input=raw")
    {
        Open("pipe", strOther + "; command=" + strCommand, "out.bin");
    }
    // A program of the test's own, which a shell runs because its first line says so.
    std::string WriteScript(const std::string& strBody) const
    {
        const std::string strPath = m_Pictures.Write("script", "#!/bin/sh\n" + strBody + "\n");
        std::filesystem::permissions(strPath, std::filesystem::perms(0755));
        return strPath;
    }
    void ExpectFailure(int nError, const char* pInText)
    {
        EXPECT_EQ(nError, GetError());
        EXPECT_NE(std::string::npos, Get("Last Error").find(pInText)) << Get("Last Error");
        EXPECT_EQ("error-1 finished ", m_Events.m_strEvents);
        EXPECT_EQ("", ListFolder());
    }
};
} // namespace

TEST_F(PipeEncoder, StandardOutputIsTheFileWhereTheCommandNamesNone)
{
    OpenPipe("cat");
    const std::string strMusic = MakeMusic(100000);
    ASSERT_TRUE(Encode(strMusic)) << Get("Last Error");
    EXPECT_TRUE(strMusic == ReadOutput());
}

TEST_F(PipeEncoder, TheProgramMayMakeTheFileItself)
{
    OpenPipe("tee %o");
    const std::string strMusic = MakeMusic(100000);
    ASSERT_TRUE(Encode(strMusic)) << Get("Last Error");
    EXPECT_TRUE(strMusic == ReadOutput());
    EXPECT_EQ("out.bin", ListFolder());
}

TEST_F(PipeEncoder, TheHeaderIsThatOfAWAVFile)
{
    Open("pipe", "command=cat", "out.wav");
    Set("Expected Frames", "3000");
    const std::string strMusic = MakeMusic(3000);
    ASSERT_TRUE(Encode(strMusic));
    const std::string strFile = ReadOutput();
    ASSERT_EQ(44u + 12000u, strFile.size());
    const unsigned char aryHeader[44] = {
        'R', 'I',  'F',  'F', 0x04, 0x2F, 0,    0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' ', 16,  0,    0,    0, 1, 0, 2,
        0,   0x44, 0xAC, 0,   0,    0x10, 0xB1, 2, 0,   4,   0,   16,  0,   'd', 'a', 't', 'a', 0xE0, 0x2E, 0, 0};
    EXPECT_EQ(0, memcmp(aryHeader, strFile.data(), sizeof aryHeader));
    EXPECT_TRUE(strMusic == strFile.substr(44));
    Open("pipe", "command=cat");
    ASSERT_TRUE(Encode(strMusic));
    EXPECT_EQ("\xFF\xFF\xFF\xFF", ReadOutput().substr(4, 4)) << "a length that is not known";
    EXPECT_EQ("\xFF\xFF\xFF\xFF", ReadOutput().substr(40, 4));
}

TEST_F(PipeEncoder, AnotherEncoderMakesTheFile)
{
    Open("pipe", "command=flac --silent --totally-silent -o %o -", "out.flac");
    const std::string strMusic = MakeMusic(50000);
    Set("Expected Frames", "50000");
    ASSERT_TRUE(Encode(strMusic)) << Get("Last Error");
    EXPECT_TRUE(strMusic == Run("flac -d -s -c --force-raw-format --endian=little --sign=signed out.flac"));
}

TEST_F(PipeEncoder, ArgumentsReachTheProgramAsTheyAre)
{
    OpenPipe(WriteScript("cat >/dev/null; for a; do printf '<%s>' \"$a\"; done") +
             " 'one $HOME `x` \\' \"two \\\" %{Title}\" three\\ 3 \"\" %% %r/%c/%b ; * %{None} '%p'");
    Set("Tag Title", "a b; $(touch hacked) \"q\" %o");
    Set("Picture", WritePicture());
    ASSERT_TRUE(Encode(MakeMusic(100))) << Get("Last Error");
    EXPECT_EQ("<one $HOME `x` \\><two \" a b; $(touch hacked) \"q\" %o><three 3><><%><44100/2/16><;><*><><" +
                  m_Pictures.GetPath("cover.png") + ">",
              ReadOutput());
}

TEST_F(PipeEncoder, CommandsThatAreNoneAreRefused)
{
    const std::pair<const char*, const char*> s_aryBad[] = {
        {"input=raw", "'command' is missing"}, {"command=", "names no program"},
        {"command=cat 'x", "not closed"},      {"command=cat \"x", "not closed"},
        {"command=cat x\\", "backslash"},      {"command=cat %x", "placeholder"},
        {"command=cat %", "placeholder"},      {"command=cat %{Title", "placeholder"},
        {"command=''", "names no program"},    {"input=mp3; command=cat", "wav or raw"},
        {"timeout=x; command=cat", "timeout"},
    };
    for (const auto& [pSettings, pInText] : s_aryBad)
    {
        SCOPED_TRACE(pSettings);
        m_Events.m_strEvents.clear();
        Open("pipe", pSettings);
        EXPECT_FALSE(Encode(MakeMusic(100)));
        ExpectFailure(ENCODER_REFUSED, pInText);
    }
}

TEST_F(PipeEncoder, AMissingProgramIsAMissingFile)
{
    for (const std::string& strCommand : {std::string("/no/such/program"), std::string("rondel-no-such-program"),
                                          m_Pictures.Write("data", "not to be run"), std::string("/tmp")})
    {
        SCOPED_TRACE(strCommand);
        m_Events.m_strEvents.clear();
        OpenPipe(strCommand);
        EXPECT_FALSE(Encode(MakeMusic(100)));
        ExpectFailure(ENCODER_MISSING_FILE, "does not start");
    }
}

TEST_F(PipeEncoder, AStatusOfTheProgramIsToldWithItsLastWords)
{
    OpenPipe(WriteScript("cat; echo first >&2; echo 'the last words' >&2; exit 3"));
    EXPECT_FALSE(Encode(MakeMusic(100)));
    ExpectFailure(ENCODER_PIPE, "ended with status 3: the last words");
}

TEST_F(PipeEncoder, AProgramThatEndsEarlyIsTold)
{
    OpenPipe(WriteScript("head -c 1000; exit 3"));
    EXPECT_FALSE(Encode(MakeMusic(1000000)));
    ExpectFailure(ENCODER_PIPE, "ended with status 3");
    m_Events.m_strEvents.clear();
    OpenPipe("head -c 1000");
    EXPECT_FALSE(Encode(MakeMusic(1000000)));
    ExpectFailure(ENCODER_PIPE, "before it had all of the audio");
}

TEST_F(PipeEncoder, AProgramThatIsKilledIsTold)
{
    OpenPipe(WriteScript("kill -9 $$"));
    EXPECT_FALSE(Encode(MakeMusic(1000000)));
    ExpectFailure(ENCODER_PIPE, "signal 9");
}

TEST_F(PipeEncoder, AProgramThatClosesItsInputIsEnded)
{
    OpenPipe(WriteScript("exec 0<&-; exec sleep 1000"));
    EXPECT_FALSE(Encode(MakeMusic(1000000)));
    ExpectFailure(ENCODER_PIPE, "takes no more audio");
}

TEST_F(PipeEncoder, AProgramThatTakesNothingIsEndedInTime)
{
    OpenPipe("sleep 1000", "input=raw; timeout=1");
    EXPECT_FALSE(Encode(MakeMusic(1000000)));
    ExpectFailure(ENCODER_PIPE, "for too long");
    m_Events.m_strEvents.clear();
    OpenPipe("sleep 1000", "input=raw; timeout=1");
    EXPECT_FALSE(Encode(MakeMusic(100)));
    ExpectFailure(ENCODER_PIPE, "does not end");
}

TEST_F(PipeEncoder, AProgramThatWritesNoFileIsTold)
{
    OpenPipe(WriteScript("cat >/dev/null # $1") + " %o");
    EXPECT_FALSE(Encode(MakeMusic(100)));
    ExpectFailure(ENCODER_OUTPUT_WRITE, "was not written");
    m_Events.m_strEvents.clear();
    OpenPipe(WriteScript("cat >/dev/null"));
    EXPECT_FALSE(Encode(MakeMusic(100)));
    ExpectFailure(ENCODER_OUTPUT_WRITE, "was not written");
}

TEST_F(PipeEncoder, MuchTalkDoesNotStopIt)
{
    OpenPipe(WriteScript("i=0; while [ $i -lt 3000 ]; do echo 'a line of sixty-four characters, as a program would say "
                         "it to its users' >&2; i=$((i+1)); done; cat"));
    const std::string strMusic = MakeMusic(200000);
    ASSERT_TRUE(Encode(strMusic)) << Get("Last Error");
    EXPECT_TRUE(strMusic == ReadOutput());
}

TEST_F(PipeEncoder, AProgramThatClosesItsStandardErrorIsFollowed)
{
    OpenPipe(WriteScript("exec 2>&-; cat"));
    ASSERT_TRUE(Encode(MakeMusic(200000))) << Get("Last Error");
}

TEST_F(PipeEncoder, StopEndsAProgramThatDoesNotWantTo)
{
    const std::string strPidFile = m_Pictures.GetPath("pid");
    OpenPipe(WriteScript("trap '' TERM; echo $$ > " + strPidFile + "; cat; while :; do sleep 1; done"));
    ASSERT_TRUE(Feed(MakeMusic(100000)));
    m_Plugin.Stop();
    EXPECT_EQ("finished ", m_Events.m_strEvents);
    EXPECT_EQ("", ListFolder());
    const std::string strPid = ReadFile(strPidFile);
    ASSERT_FALSE(strPid.empty());
    EXPECT_EQ(-1, kill(std::stoi(strPid), 0));
}

TEST_F(PipeEncoder, ItsFilesAndSignalsAreItsOwn)
{
    const int nOpen = fcntl(STDIN_FILENO, F_DUPFD, 50); // without O_CLOEXEC: a host's file
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    // In the shell's place: a shell that waits for a program blocks signals of its own for a moment.
    OpenPipe(
        WriteScript("cat >/dev/null; ls /proc/$$/fd | tr '\\n' ' '; exec grep -E 'SigBlk|SigIgn' /proc/self/status"));
    ASSERT_TRUE(Encode(MakeMusic(100))) << Get("Last Error");
    pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
    close(nOpen);
    const std::string strSaid = ReadOutput();
    EXPECT_EQ(std::string::npos, strSaid.find(" " + std::to_string(nOpen) + " ")) << strSaid;
    EXPECT_NE(std::string::npos, strSaid.find("SigBlk:\t0000000000000000")) << strSaid;
    const size_t nIgnored = strSaid.find("SigIgn:\t");
    ASSERT_NE(std::string::npos, nIgnored);
    EXPECT_EQ(0u, std::stoull(strSaid.substr(nIgnored + 8), nullptr, 16) & (1u << (SIGPIPE - 1))) << strSaid;
}
