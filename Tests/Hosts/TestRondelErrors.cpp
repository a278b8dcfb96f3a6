// rondel where something is wrong: always one sentence that names the thing and a way out, and never a wrong file left
// behind.

#include "HostProcess.h"

namespace
{
class RondelErrors : public ::testing::Test
{
protected:
    static constexpr const char* ONE_TRACK = "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n";

    void SetUp() override
    {
        (void)m_Folder.Write("a.bin", MakePatternSectors(0, 700));
        m_strCue = m_Folder
                       .Write("a.cue", std::string(ONE_TRACK) + "TRACK 02 AUDIO\nINDEX 01 00:04:00\nREM SESSION 02\n"
                                                                "FILE \"d.iso\" BINARY\nTRACK 03 MODE1/2048\n"
                                                                "INDEX 01 00:00:00\n")
                       .string();
        (void)m_Folder.Write("d.iso", std::string(300 * 2048, 'd'));
    }
    std::string Get(const char* pName) const { return m_Folder.Get(pName).string(); }
    // Both commands that open a disc say the same of it.
    void ExpectNoDisc(const std::string& strDisc, std::initializer_list<const char*> aryWords) const
    {
        ExpectSentence(HostProcess::Run({"info", strDisc}), 1, aryWords);
        ExpectSentence(HostProcess::Run({"info", "--json", strDisc}), 1, aryWords);
        ExpectSentence(HostProcess::Run({"play", strDisc, "1", "-o", Get("o.wav")}), 1, aryWords);
        EXPECT_FALSE(std::filesystem::exists(Get("o.wav")));
    }
    HOST_RESULT Play(std::vector<std::string> aryArguments) const
    {
        aryArguments.insert(aryArguments.begin(), {"play", m_strCue});
        aryArguments.insert(aryArguments.end(), {"-o", Get("o.wav")});
        return HostProcess::Run(aryArguments);
    }

    DiscFolder m_Folder;
    std::string m_strCue;
};
} // namespace

TEST_F(RondelErrors, ADiscThatIsNotThere)
{
    ExpectNoDisc(Get("none.cue"), {"none.cue", "does not exist", "check its path"});
    ExpectNoDisc(Get("no, such.cue"), {"no, such.cue", "does not exist"});
    ExpectNoDisc(Get("tune \xF0\x9F\x8E\xB5.cue"), {"tune \xF0\x9F\x8E\xB5.cue", "does not exist"});
    ExpectNoDisc("E:", {"E:"});
    ExpectNoDisc("", {});
    ExpectNoDisc(Get(""), {"not a plain file", "name the .cue, .toc, .ccd or .nrg file"});
}

TEST_F(RondelErrors, ASheetThatIsNone)
{
    (void)m_Folder.Write("random.cue", MakePattern(0, 5000));
    ExpectNoDisc(Get("random.cue"), {"random.cue", "open the .cue, .toc, .ccd or .nrg file"});
    (void)m_Folder.Write("text.cue", "This is a letter.\nIt has two lines.\n");
    ExpectNoDisc(Get("text.cue"), {"text.cue"});
    (void)m_Folder.Write("empty.cue", "");
    ExpectNoDisc(Get("empty.cue"), {"empty.cue", "is empty", "copy it again"});
    std::filesystem::resize_file(m_Folder.Write("huge.cue", "x"), 1LL << 33);
    ExpectNoDisc(Get("huge.cue"), {"huge.cue", "too large"});
    ExpectNoDisc(Get("a.bin"), {"a.bin", "too large for the sheet of an image", "open the sheet"});
}

TEST_F(RondelErrors, AnImageThatIsMissingOrEmpty)
{
    (void)m_Folder.Write("lost.cue", "FILE \"gone.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    ExpectNoDisc(Get("lost.cue"), {"lost.cue, line 1", "\"gone.bin\" was not found", "put it beside the sheet"});
    (void)m_Folder.Write("hollow.cue", "FILE \"hollow.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    (void)m_Folder.Write("hollow.bin", "");
    ExpectNoDisc(Get("hollow.cue"), {"hollow.cue, line 1", "hollow.bin", "is empty", "copy it again"});
}

TEST_F(RondelErrors, AnImageThatIsCutPlaysWhatItHasAndSaysWhatItHasNot)
{
    std::filesystem::resize_file(Get("a.bin"), 200 * LY_CD_SECTOR_BYTES);
    ExpectSentence(Play({"1"}), 1, {"a.cue", "from 00:04", "could not be read and are silence", "get a complete copy"});
    const std::string strSamples = GetWavSamples(ReadWholeFile(Get("o.wav")));
    ASSERT_EQ(static_cast<size_t>(GetPlayedBytes(300)), strSamples.size());
    const size_t nWhole = 200 / 27 * 27 * LY_CD_SECTOR_BYTES; // reads that the file serves whole
    EXPECT_TRUE(SameBytes(MakePatternSectors(0, 200).substr(0, nWhole), strSamples.substr(0, nWhole)));
    ExpectSentence(Play({"2"}), 1, {"a.cue", "could not be read and are silence", "get a complete copy"});
    // A stretch ahead of the damage is whole, and only what was noticed on the way is told.
    const HOST_RESULT whole = Play({"1", "--to", "1"});
    EXPECT_TRUE(SameBytes(MakePatternSectors(0, 75), GetWavSamples(ReadWholeFile(Get("o.wav")))));
    EXPECT_NE(std::string::npos, whole.m_strErrors.find("a.cue")) << whole.m_strErrors;
}

TEST_F(RondelErrors, AnImageThatIsCutWithinASectorIsNoted)
{
    std::filesystem::resize_file(Get("a.bin"), 500 * LY_CD_SECTOR_BYTES + 1000);
    ExpectSentence(Play({"2"}), 0, {"a.cue, line 1", "\"a.bin\" ends within a sector", "compare it"});
}

TEST_F(RondelErrors, ATrackThatIsNotThere)
{
    for (const char* pTrack : {"0", "4", "99", "100", "-1", "65537", "999999999"})
    {
        const std::string strWords = std::string("there is no track ") + pTrack;
        ExpectSentence(Play({pTrack}), 1, {strWords.c_str(), "the disc has tracks 1 to 3", "choose one of them"});
    }
    EXPECT_FALSE(std::filesystem::exists(Get("o.wav")));
}

TEST_F(RondelErrors, ADataTrack)
{
    ExpectSentence(Play({"3"}), 1, {"track 3 is a data track and has no audio", "choose another"});
    EXPECT_FALSE(std::filesystem::exists(Get("o.wav")));
}

TEST_F(RondelErrors, TimesThatMakeNoSense)
{
    ExpectSentence(Play({"1", "--from", "4"}), 1, {"--from 4 lies behind the end", "0:04", "give an earlier time"});
    ExpectSentence(Play({"1", "--from", "99:59"}), 1, {"--from 99:59 lies behind the end"});
    ExpectSentence(Play({"1", "--from", "3", "--to", "3"}), 1,
                   {"--to 3 does not lie behind --from", "give a later time"});
    ExpectSentence(Play({"1", "--to", "0"}), 1, {"--to 0 does not lie behind --from"});
    for (const char* pTime : {"text", "1:60", "1:", ":1", "1:2:3:4", "-5", "1e9", "1,5", "nan", "inf", "0x10"})
    {
        ExpectSentence(Play({"1", std::string("--from=") + pTime}), 1,
                       {"--from takes a time as mm:ss or seconds", pTime});
        ExpectSentence(Play({"1", std::string("--to=") + pTime}), 1, {"--to takes a time as mm:ss or seconds", pTime});
    }
    EXPECT_FALSE(std::filesystem::exists(Get("o.wav")));
}

TEST_F(RondelErrors, AnOutputThatCannotBeWritten)
{
    const auto play = [&](const std::string& strOutput) {
        return HostProcess::Run({"play", m_strCue, "1", "-o", strOutput});
    };
    ExpectSentence(play(Get("no/such/folder.wav")), 1, {"folder.wav cannot be written", "choose a folder"});
    ExpectSentence(play(Get("")), 1, {"is a folder", "name a file in it"});
    ExpectSentence(play(Get("a.bin") + "/x.wav"), 1, {"x.wav cannot be written", "choose a folder"});
}

TEST_F(RondelErrors, AFullDisk)
{
    struct stat before = {};
    ASSERT_EQ(0, stat("/dev/full", &before));
    ExpectSentence(HostProcess::Run({"play", m_strCue, "1", "-o", "/dev/full"}), 1,
                   {"could not be written to its end", "No space left on device", "choose another place"});
    struct stat after = {};
    ASSERT_EQ(0, stat("/dev/full", &after));
    EXPECT_EQ(before.st_ino, after.st_ino); // a device stays the device that it is
    ExpectSentence(HostProcess::Run({"play", m_strCue, "1", "-o", "-"}, "/dev/full"), 1,
                   {"could not be written to its end", "No space left on device", "-o FILE.wav"});
    // The largest size of a file stands in for the end of a disk: 100 blocks of 512 bytes.
    ExpectSentence(HostProcess::RunShell("trap '' XFSZ; ulimit -f 100; exec \"$RONDEL\" play '" + m_strCue +
                                         "' 1 -o '" + Get("o.wav") + "'"),
                   1, {"o.wav could not be written to its end", "is the disk full?", "another place"});
    EXPECT_FALSE(std::filesystem::exists(Get("o.wav")));
    EXPECT_FALSE(std::filesystem::exists(Get("o.wav.part")));
}

TEST_F(RondelErrors, APipeWhoseReaderHasGone)
{
    const HOST_RESULT result = HostProcess::RunShell(
        "{ \"$RONDEL\" play '" + m_strCue + "' 1 -o -; echo \"code $?\" >&2; } | head -c 100 >'" + Get("head") + "'");
    EXPECT_NE(std::string::npos, result.m_strErrors.find("\ncode 1\n")) << result.m_strErrors;
    EXPECT_TRUE(
        result.m_strErrors.starts_with("rondel: the program that takes the audio has ended early; start it again"))
        << result.m_strErrors;
    EXPECT_EQ(2, std::count(result.m_strErrors.begin(), result.m_strErrors.end(), '\n'));
    EXPECT_EQ(100U, std::filesystem::file_size(Get("head")));
}

TEST_F(RondelErrors, AListingThatCannotBeWritten)
{
    for (const char* pForm : {"info", "--json"})
    {
        const HOST_RESULT result = HostProcess::Run({"info", pForm[0] == '-' ? pForm : "--", m_strCue}, "/dev/full");
        ExpectSentence(result, 1, {"could not be written", "No space left on device"});
    }
}

TEST_F(RondelErrors, AHostWithoutItsLibraries)
{
    std::filesystem::create_directories(Get("alone"));
    std::filesystem::copy(HostProcess::PROGRAM, Get("alone/rondel"));
    ExpectSentence(HostProcess::RunCommand({Get("alone/rondel"), "info", m_strCue}), 1,
                   {"libLyDisc.dylib", "belongs beside the program"});
    std::filesystem::create_symlink(RONDEL_BIN_DIR "/libLyDisc.dylib", Get("alone/libLyDisc.dylib"));
    EXPECT_EQ(0, HostProcess::RunCommand({Get("alone/rondel"), "info", m_strCue}).m_nExit);
    ExpectSentence(HostProcess::RunCommand({Get("alone/rondel"), "play", m_strCue, "1", "-o", Get("o.wav")}), 1,
                   {"in_Rondel.so", "belongs beside the program"});
    (void)m_Folder.Write("alone/in_Rondel.so", "This is not a library.\n");
    ExpectSentence(HostProcess::RunCommand({Get("alone/rondel"), "play", m_strCue, "1", "-o", Get("o.wav")}), 1,
                   {"in_Rondel.so"});
}
