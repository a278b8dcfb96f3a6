// rondel play: what comes out is what the image holds.

#include "HostProcess.h"

namespace
{
class RondelPlay : public ::testing::Test
{
protected:
    void SetUp() override
    {
        (void)m_Folder.Write("a.bin", MakePatternSectors(0, 1000));
        m_strCue = m_Folder
                       .Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                       "TRACK 02 AUDIO\nINDEX 00 00:04:00\nINDEX 01 00:06:00\n")
                       .string();
    }
    std::string Play(std::vector<std::string> aryArguments)
    {
        const auto wav = m_Folder.Get("played.wav");
        aryArguments.insert(aryArguments.begin(), {"play", m_strCue});
        aryArguments.insert(aryArguments.end(), {"-o", wav.string()});
        const HOST_RESULT result = HostProcess::Run(aryArguments);
        EXPECT_EQ(0, result.m_nExit);
        EXPECT_EQ("", result.m_strErrors + result.m_strOutput);
        EXPECT_FALSE(std::filesystem::exists(wav.string() + ".part"));
        return GetWavSamples(ReadWholeFile(wav));
    }
    static std::string Cut(const std::string& strSectors)
    {
        return strSectors.substr(0, strSectors.size() / REQUEST_BYTES * REQUEST_BYTES);
    }

    DiscFolder m_Folder;
    std::string m_strCue;
};
} // namespace

TEST_F(RondelPlay, AFileHoldsTheBytesOfTheTrack)
{
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(0, 450)), Play({"1"})));
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(450, 550)), Play({"2"})));
}

TEST_F(RondelPlay, AFileThatIsThereIsReplacedAndALinkIsFollowed)
{
    (void)m_Folder.Write("real.wav", "old");
    std::filesystem::create_symlink("real.wav", m_Folder.Get("played.wav"));
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(0, 450)), Play({"1"})));
    EXPECT_TRUE(std::filesystem::is_symlink(m_Folder.Get("played.wav")));
    EXPECT_EQ(ReadWholeFile(m_Folder.Get("real.wav")), ReadWholeFile(m_Folder.Get("played.wav")));
}

TEST_F(RondelPlay, StandardOutputTakesTheSameWav)
{
    const HOST_RESULT result = HostProcess::Run({"play", m_strCue, "1", "-o", "-"});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_EQ("", result.m_strErrors);
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(0, 450)), GetWavSamples(result.m_strOutput)));
}

TEST_F(RondelPlay, FromAndToCutAStretch)
{
    const std::string strTrack = MakePatternSectors(0, 450);
    const size_t nSecond = LY_CD_SECOND_BYTES;
    EXPECT_TRUE(SameBytes(strTrack.substr(2 * nSecond, nSecond), Play({"1", "--from", "2", "--to", "3"})));
    EXPECT_TRUE(SameBytes(strTrack.substr(0, nSecond), Play({"1", "--to", "00:01"})));
    EXPECT_TRUE(SameBytes(Cut(strTrack.substr(5 * nSecond)), Play({"1", "--from", "0:05"})));
    EXPECT_TRUE(SameBytes(Cut(strTrack.substr(5 * nSecond)), Play({"1", "--from", "5.99", "--to", "99:59"})));
    EXPECT_TRUE(SameBytes(strTrack.substr(0, nSecond / 2), Play({"1", "--to", "0.5"})));
}

TEST_F(RondelPlay, FromAndToWorkOnStandardOutput)
{
    const HOST_RESULT result = HostProcess::Run({"play", m_strCue, "1", "--from", "1", "--to", "2", "-o", "-"});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_TRUE(SameBytes(MakePatternSectors(75, 75), GetWavSamples(result.m_strOutput)));
}

TEST_F(RondelPlay, NamesOfAllKindsPlay)
{
    const std::string strSheet = ReadWholeFile(m_strCue);
    for (const char* pName : {"with blanks", "one, two",
                              "Gr\xC3\xBC\xC3\x9F"
                              "e",
                              "tune \xF0\x9F\x8E\xB5", "caf\xE9"})
    {
        m_strCue = m_Folder.Write(std::string(pName) + ".cue", strSheet).string();
        EXPECT_TRUE(SameBytes(MakePatternSectors(0, 75), Play({"1", "--to", "1"}))) << pName;
        const auto wav = m_Folder.Get(std::string(pName) + ".wav");
        EXPECT_EQ(0, HostProcess::Run({"play", m_strCue, "2", "--to", "1", "-o", wav.string()}).m_nExit);
        EXPECT_TRUE(SameBytes(MakePatternSectors(450, 75), GetWavSamples(ReadWholeFile(wav)))) << pName;
    }
}

TEST_F(RondelPlay, AudioFilesBehindASheetPlayDecoded)
{
    // A FLAC of 300 sectors of the pattern, made by the tool whose format it is.
    (void)m_Folder.Write("raw.pcm", MakePatternSectors(7, 300));
    const HOST_RESULT flac =
        HostProcess::RunShell("cd '" + m_Folder.Get("").string() +
                              "' && flac --silent --force-raw-format --endian=little --sign=signed "
                              "--channels=2 --bps=16 --sample-rate=44100 -o a.flac raw.pcm");
    ASSERT_EQ(0, flac.m_nExit) << "this test needs flac: " << flac.m_strErrors;
    m_strCue = m_Folder.Write("f.cue", "FILE \"a.flac\" WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n").string();
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(7, 300)), Play({"1"})));
}

TEST_F(RondelPlay, AnInterruptLeavesNothing)
{
    (void)m_Folder.Write("slow.drive", "Image = " + m_strCue + "\nSpeed = 1\n");
    const auto wav = m_Folder.Get("i.wav");
    for (const char* pSignal : {"INT", "TERM", "HUP"})
    {
        const HOST_RESULT result =
            HostProcess::RunShell(std::string("timeout --signal=") + pSignal + " 1 \"$RONDEL\" play '" +
                                  m_Folder.Get("slow.drive").string() + "' 1 -o '" + wav.string() + "'");
        EXPECT_EQ(124, result.m_nExit) << result.m_strErrors;
        EXPECT_FALSE(std::filesystem::exists(wav));
        EXPECT_FALSE(std::filesystem::exists(wav.string() + ".part")) << pSignal;
    }
}
