// rondel play without -o: what reaches the sound card, and the keys on a terminal.

#include "HostProcess.h"
#include <poll.h>
#include <pty.h>
#include <termios.h>

namespace
{
class RondelListen : public ::testing::Test
{
protected:
    void SetUp() override
    {
        (void)m_Folder.Write("a.bin", MakePatternSectors(0, 1500));
        m_strCue = m_Folder
                       .Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                       "TRACK 02 AUDIO\nINDEX 01 00:10:00\n")
                       .string();
        // A card that writes down what it is to play.
        m_strHeard = m_Folder.Get("heard.raw").string();
        m_strConfig = m_Folder
                          .Write("asound.conf", "pcm.!default {\n type file\n slave.pcm { type null }\n file \"" +
                                                    m_strHeard + "\"\n format raw\n}\n")
                          .string();
        setenv("ALSA_CONFIG_PATH", m_strConfig.c_str(), 1);
    }
    void TearDown() override { unsetenv("ALSA_CONFIG_PATH"); }
    std::string GetHeard() const { return ReadWholeFile(m_strHeard); }

    DiscFolder m_Folder;
    std::string m_strCue;
    std::string m_strHeard;
    std::string m_strConfig;
};

// A host on a terminal of its own.
class TerminalHost
{
public:
    explicit TerminalHost(const std::vector<std::string>& aryArguments)
    {
        m_nProcess = forkpty(&m_nTerminal, nullptr, nullptr, nullptr);
        if (m_nProcess != 0)
            return;
        std::vector<char*> aryPointers = {const_cast<char*>(HostProcess::PROGRAM)};
        for (const std::string& str : aryArguments)
            aryPointers.push_back(const_cast<char*>(str.c_str()));
        aryPointers.push_back(nullptr);
        execv(aryPointers[0], aryPointers.data());
        _exit(127);
    }
    ~TerminalHost() { close(m_nTerminal); }
    TerminalHost(const TerminalHost&) = delete;
    TerminalHost& operator=(const TerminalHost&) = delete;

    void Type(const std::string& strKeys) const
    {
        EXPECT_EQ(static_cast<ssize_t>(strKeys.size()), write(m_nTerminal, strKeys.data(), strKeys.size()));
    }
    // Reads until the terminal shows this text. False if it does not within twenty seconds, or the host ends.
    bool WaitFor(const std::string& strText)
    {
        const auto last = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (m_strShown.find(strText) == std::string::npos)
        {
            pollfd wait{m_nTerminal, POLLIN, 0};
            char szBytes[512];
            if (std::chrono::steady_clock::now() > last)
                return false;
            if (poll(&wait, 1, 100) < 1)
                continue;
            const ssize_t nBytes = read(m_nTerminal, szBytes, sizeof szBytes);
            if (nBytes < 1)
                return false;
            m_strShown.append(szBytes, static_cast<size_t>(nBytes));
        }
        m_strShown.clear();
        return true;
    }
    void Signal(int nSignal) const { kill(m_nProcess, nSignal); }
    // Whether the terminal shows what is typed, line by line, as a shell leaves it to a program.
    bool IsAsItWas() const
    {
        termios settings = {};
        return tcgetattr(m_nTerminal, &settings) == 0 && (settings.c_lflag & ICANON) != 0 &&
               (settings.c_lflag & ECHO) != 0;
    }
    int GetExit()
    {
        (void)WaitFor("\x01"); // until the host lets go of the terminal
        int nStatus = 0;
        (void)waitpid(m_nProcess, &nStatus, 0);
        return WIFSIGNALED(nStatus) ? -WTERMSIG(nStatus) : WEXITSTATUS(nStatus);
    }

private:
    int m_nTerminal = -1;
    pid_t m_nProcess = 0;
    std::string m_strShown;
};
} // namespace

TEST_F(RondelListen, TheSoundCardGetsTheTrack)
{
    const HOST_RESULT result = HostProcess::Run({"play", m_strCue, "1"});
    EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
    EXPECT_EQ("", result.m_strErrors);
    const std::string strTrack = MakePatternSectors(0, 750);
    EXPECT_TRUE(SameBytes(strTrack.substr(0, strTrack.size() / 2304 * 2304), GetHeard()));
}

TEST_F(RondelListen, FromAndToCutTheTrack)
{
    const HOST_RESULT result = HostProcess::Run({"play", m_strCue, "2", "--from", "2", "--to", "4"});
    EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
    EXPECT_TRUE(SameBytes(MakePatternSectors(750 + 150, 150), GetHeard()));
}

TEST_F(RondelListen, AMachineWithoutSoundIsToldWhatToDo)
{
    (void)m_Folder.Write("asound.conf", "\n");
    ExpectSentence(HostProcess::Run({"play", m_strCue, "1"}), 1, {"\"default\"", "--device", "-o FILE.wav"});
    ExpectSentence(HostProcess::Run({"play", m_strCue, "1", "--device", "nowhere"}), 1, {"\"nowhere\""});
}

TEST_F(RondelListen, ATrackThatIsNoneIsToldBeforeTheCardIsOpened)
{
    ExpectSentence(HostProcess::Run({"play", m_strCue, "3"}), 1, {"there is no track 3"});
    EXPECT_FALSE(std::filesystem::exists(m_strHeard));
}

// The drive reads at single speed, so that there is time to press keys.
TEST_F(RondelListen, KeysPauseSeekChangeTheTrackAndQuit)
{
    (void)m_Folder.Write("a.cue.drive", "Speed = 1\n");
    TerminalHost host({"play", m_strCue, "1"});
    ASSERT_TRUE(host.WaitFor("Track 1  0:01 of 0:10"));
    host.Type(" ");
    ASSERT_TRUE(host.WaitFor("paused"));
    host.Type(" ");
    ASSERT_TRUE(host.WaitFor("Track 1  0:02 of 0:10"));
    host.Type("\x1B[D");
    ASSERT_TRUE(host.WaitFor("Track 1  0:00 of 0:10"));
    host.Type("n");
    ASSERT_TRUE(host.WaitFor("Track 2  0:00 of 0:10"));
    host.Type("p");
    ASSERT_TRUE(host.WaitFor("Track 1  0:00 of 0:10"));
    host.Type("q");
    EXPECT_EQ(0, host.GetExit());
}

TEST_F(RondelListen, AnInterruptEndsItAsQuittingDoes)
{
    (void)m_Folder.Write("a.cue.drive", "Speed = 1\n");
    TerminalHost host({"play", m_strCue, "1"});
    ASSERT_TRUE(host.WaitFor("Track 1  0:0"));
    host.Type("\x03");
    EXPECT_EQ(0, host.GetExit());
}

TEST_F(RondelListen, NextBehindTheLastTrackEnds)
{
    (void)m_Folder.Write("a.cue.drive", "Speed = 1\n");
    TerminalHost host({"play", m_strCue, "2"});
    ASSERT_TRUE(host.WaitFor("Track 2  0:0"));
    host.Type("n");
    EXPECT_EQ(0, host.GetExit());
}

// Keys that are held down come several at a time.
TEST_F(RondelListen, KeysThatComeAtOnceAllCountAndUnknownOnesDoNothing)
{
    (void)m_Folder.Write("a.cue.drive", "Speed = 1\n");
    TerminalHost host({"play", m_strCue, "1"});
    ASSERT_TRUE(host.WaitFor("Track 1  0:01 of 0:10"));
    host.Type("\x1B[A\x1B[1;5C\x1BOHxy\x1Bz "); // up, Ctrl-right, home, letters, Alt-z; then a pause
    ASSERT_TRUE(host.WaitFor("paused"));
    host.Type("  n"); // on, off, and away
    ASSERT_TRUE(host.WaitFor("Track 2  0:00 of 0:10"));
    host.Type("\x1B[D\x1B[D\x1B[Dp");
    ASSERT_TRUE(host.WaitFor("Track 1  0:00 of 0:10"));
    host.Type("\x1B"); // Esc alone
    EXPECT_EQ(0, host.GetExit());
    EXPECT_TRUE(host.IsAsItWas());
}

TEST_F(RondelListen, WhateverEndsItLeavesTheTerminalAsItWas)
{
    (void)m_Folder.Write("a.cue.drive", "Speed = 1\n");
    for (const int nSignal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
    {
        TerminalHost host({"play", m_strCue, "1"});
        ASSERT_TRUE(host.WaitFor("Track 1  0:00"));
        EXPECT_FALSE(host.IsAsItWas());
        host.Signal(nSignal);
        EXPECT_EQ(0, host.GetExit()) << nSignal;
        EXPECT_TRUE(host.IsAsItWas()) << nSignal;
    }
}

TEST_F(RondelListen, ASecondInterruptEndsItWhileTheDriveHangs)
{
    (void)m_Folder.Write("a.cue.drive", "Speed = 4\nHang = read 5, 30\n");
    TerminalHost host({"play", m_strCue, "1"});
    ASSERT_TRUE(host.WaitFor("Track 1  0:0"));
    std::this_thread::sleep_for(std::chrono::seconds(3)); // what was read ahead is heard, and the drive hangs
    const auto start = std::chrono::steady_clock::now();
    host.Type("\x03");
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    host.Type("\x03");
    EXPECT_EQ(-SIGINT, host.GetExit());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_TRUE(host.IsAsItWas());
}

TEST_F(RondelListen, WhatTheDriveCouldNotReadIsToldAtTheEnd)
{
    (void)m_Folder.Write("a.cue.drive", "Unreadable = 100\n");
    ExpectSentence(HostProcess::Run({"play", m_strCue, "1"}), 1, {"27 sectors", "3/11/05", "a.cue.drive"});
    ExpectSentence(HostProcess::Run({"play", m_strCue, "1", "-o", m_Folder.Get("o.wav").string()}), 1,
                   {"27 sectors", "3/11/05"});
    EXPECT_EQ("", HostProcess::Run({"play", m_strCue, "2"}).m_strErrors);
    (void)m_Folder.Write("a.cue.drive", "Remove = read 6\n");
    ExpectSentence(HostProcess::Run({"play", m_strCue, "1"}), 1, {"went away"});
    (void)m_Folder.Write("a.cue.drive", "Remove = 2\n");
    ExpectSentence(HostProcess::Run({"info", m_strCue}), 1, {"went away"});
}

TEST_F(RondelListen, WhatWasToleratedOfTheDiscIsNoted)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 1500) + "xyz");
    const HOST_RESULT result = HostProcess::Run({"play", m_strCue, "1"});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_TRUE(result.m_strErrors.starts_with("rondel: note: ")) << result.m_strErrors;
}
