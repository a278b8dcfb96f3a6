// The command line of the host: help, version, and what it says to arguments that make no sense.

#include "HostProcess.h"

TEST(RondelUsage, EveryCommandHasHelp)
{
    for (const std::vector<std::string>& aryArguments :
         std::vector<std::vector<std::string>>{{"--help"}, {"info", "--help"}, {"play", "--help"}, {"make-disc", "-h"}})
    {
        const HOST_RESULT result = HostProcess::Run(aryArguments);
        EXPECT_EQ(0, result.m_nExit) << aryArguments[0];
        EXPECT_EQ("", result.m_strErrors);
        EXPECT_NE(std::string::npos, result.m_strOutput.find("rondel")) << result.m_strOutput;
        EXPECT_NE(std::string::npos, result.m_strOutput.find("--help")) << result.m_strOutput;
    }
    const HOST_RESULT all = HostProcess::Run({"--help"});
    for (const char* pCommand : {"info", "play", "make-disc", "Exit codes"})
        EXPECT_NE(std::string::npos, all.m_strOutput.find(pCommand)) << pCommand;
    const HOST_RESULT play = HostProcess::Run({"play", "--help"});
    for (const char* pOption : {"DISC", "TRACK", "--from", "--to", "--output"})
        EXPECT_NE(std::string::npos, play.m_strOutput.find(pOption)) << pOption;
}

TEST(RondelUsage, TheVersionIsOneLine)
{
    const HOST_RESULT result = HostProcess::Run({"--version"});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_TRUE(result.m_strOutput.starts_with("rondel ")) << result.m_strOutput;
    EXPECT_EQ(1, std::count(result.m_strOutput.begin(), result.m_strOutput.end(), '\n'));
}

namespace
{
struct USAGE_CASE
{
    std::vector<std::string> aryArguments;
    std::initializer_list<const char*> aryWords;
};

const USAGE_CASE s_aryCases[] = {
    {{}, {"required", "'rondel --help'"}},
    {{"dance"}, {"dance", "'rondel --help'"}},
    {{"info"}, {"DISC", "'rondel info --help'"}},
    {{"info", "a.cue", "b.cue"}, {"b.cue", "'rondel info --help'"}},
    {{"info", "--xml", "a.cue"}, {"--xml", "'rondel info --help'"}},
    {{"play", "a.cue"}, {"TRACK", "'rondel play --help'"}},
    {{"play", "a.cue", "text"}, {"'text' is no track number", "1 to 99"}},
    {{"play", "a.cue", "1x"}, {"'1x' is no track number"}},
    {{"play", "a.cue", "1.5"}, {"'1.5' is no track number"}},
    {{"play", "a.cue", ""}, {"'' is no track number"}},
    {{"play", "a.cue", "99999999999999999999"}, {"'99999999999999999999' is no track number"}},
    {{"play", "a.cue", "1", "-o"}, {"output", "'rondel play --help'"}},
    {{"make-disc", "a.wav"}, {"output", "'rondel make-disc --help'"}},
    {{"make-disc", "-o", "a.cue"}, {"FILES", "'rondel make-disc --help'"}},
    {{"make-disc", "-o", "a.cue", "--gap", "text", "a.wav"}, {"--gap", "text"}},
    {{"rip", "a.cue", "--tracks", "1", "--tracks", "2"}, {"rondel: --tracks may be given once, not 2 times;"}},
    {{"rip", "a.cue", "--tracks", "0"}, {"rondel: --tracks takes numbers"}},
    {{"tags", ""}, {"the name of a file is empty"}},
    {{"tags", "set", "", "Title=x"}, {"the name of a file is empty"}},
    {{"encode", "a.wav", "", "--encoder", "flac"}, {"the name of a file is empty"}},
    {{"check", ""}, {"the name of a file is empty"}},
    {{"tags", "set", "a.wav"}, {"nothing is to be changed", "'rondel tags set --help'"}},
    {{"options", "get", "store"}, {"KEY", "'rondel options get --help'"}},
};
} // namespace

TEST(RondelUsage, AWrongCommandLineIsCodeTwoAndOneSentence)
{
    for (const USAGE_CASE& row : s_aryCases)
        ExpectSentence(HostProcess::Run(row.aryArguments), 2, row.aryWords);
}

TEST(RondelUsage, HelpOfACommandIsOfThatCommand)
{
    for (const char* pCommand : {"drives", "info", "play", "eject", "close", "lock", "unlock", "options", "fetch"})
    {
        const HOST_RESULT result = HostProcess::Run({pCommand, "--help"});
        EXPECT_EQ(0, result.m_nExit) << pCommand;
        EXPECT_EQ("", result.m_strErrors);
        EXPECT_NE(std::string::npos, result.m_strOutput.find(std::string("rondel ") + pCommand)) << pCommand;
        EXPECT_EQ(std::string::npos, result.m_strOutput.find("make-disc")) << result.m_strOutput;
    }
}
