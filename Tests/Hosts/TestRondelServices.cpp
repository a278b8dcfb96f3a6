// rondel drives, options, fetch and the door of a drive: the libraries around the plug-in, from the command line.

#include "HostProcess.h"

namespace
{
using json = nlohmann::json;

class RondelServices : public ::testing::Test
{
protected:
    void SetUp() override
    {
        setenv("XDG_CONFIG_HOME", m_Folder.Get("config").c_str(), 1);
        (void)m_Folder.Write("a.bin", MakePatternSectors(0, 400));
        m_strCue = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n").string();
    }
    static std::string GetOutput(const std::vector<std::string>& aryArguments)
    {
        const HOST_RESULT result = HostProcess::Run(aryArguments);
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        EXPECT_EQ("", result.m_strErrors);
        return result.m_strOutput;
    }
    static json GetJson(const std::vector<std::string>& aryArguments)
    {
        return json::parse(GetOutput(aryArguments), nullptr, false);
    }

    DiscFolder m_Folder;
    std::string m_strCue;
};
} // namespace

TEST_F(RondelServices, OptionsAreSetListedReadAndDeleted)
{
    EXPECT_EQ("No option is set; everything goes by its default.\n", GetOutput({"options", "list"}));
    EXPECT_EQ("", GetOutput({"options", "set", "A Store", "Key", "a value"}));
    EXPECT_EQ("", GetOutput({"options", "set", "Other",
                             "Gr\xC3\xB6\xC3\x9F"
                             "e",
                             "42"}));
    EXPECT_EQ("a value\n", GetOutput({"options", "get", "A Store", "Key"}));
    EXPECT_EQ("A Store\n  Key = a value\nOther\n  Gr\xC3\xB6\xC3\x9F"
              "e = 42\n",
              GetOutput({"options", "list"}));
    EXPECT_EQ("A Store\n  Key = a value\n", GetOutput({"options", "list", "A Store"}));
    EXPECT_EQ("a value", GetJson({"options", "list", "--json"})["A Store"]["Key"]);
    EXPECT_EQ("", GetOutput({"options", "delete", "A Store", "Key"}));
    ExpectSentence(HostProcess::Run({"options", "get", "A Store", "Key"}), 1,
                   {"\"Key\"", "\"A Store\"", "options list"});
}

TEST_F(RondelServices, TheUsageOfOptionsIsOneSentence)
{
    ExpectSentence(HostProcess::Run({"options"}), 2, {"rondel options --help"});
    ExpectSentence(HostProcess::Run({"options", "set", "A Store", "Key"}), 2, {"VALUE"});
    ExpectSentence(HostProcess::Run({"options", "set", "A Store", "", "x"}), 1, {"not empty"});
    ExpectSentence(HostProcess::Run({"options", "set", "", "Key", "x"}), 1, {"not empty"});
}

TEST_F(RondelServices, AnImageGetsALetterByAnOption)
{
    EXPECT_EQ("", GetOutput({"options", "set", "Disc Service", "Letter R", m_strCue}));
    bool bFound = false;
    for (const json& drive : GetJson({"drives", "--json"}))
    {
        if (drive["letter"] != "R:")
            continue;
        bFound = true;
        EXPECT_EQ("image", drive["kind"]);
        EXPECT_EQ("ready", drive["state"]);
        EXPECT_EQ(m_strCue, drive["path"]);
        EXPECT_EQ("DISC IMAGE", drive["model"]);
    }
    EXPECT_TRUE(bFound);
    EXPECT_NE(std::string::npos, GetOutput({"drives"}).find("R:      image   ready"));
    EXPECT_EQ(1U, GetJson({"info", "R:", "--json"})["tracks"].size());
    const auto wav = m_Folder.Get("o.wav");
    EXPECT_EQ("", GetOutput({"play", "r:", "1", "-o", wav.string()}));
    EXPECT_TRUE(SameBytes(MakePatternSectors(0, 75), GetWavSamples(ReadWholeFile(wav)).substr(0, 75 * 2352)));
}

TEST_F(RondelServices, ALettersImageIsFoundFromOtherFolders)
{
    const std::string strFolder = m_Folder.Get("").string();
    const auto set = [&](const std::string& strStore, const std::string& strKey, const std::string& strValue)
    {
        EXPECT_EQ(0, HostProcess::RunShell("cd '" + strFolder + "' && \"$RONDEL\" options set '" + strStore + "' '" +
                                           strKey + "' '" + strValue + "'")
                         .m_nExit);
        return GetOutput({"options", "get", strStore, strKey});
    };
    EXPECT_EQ(m_strCue + "\n", set("Disc Service", "Letter H", "a.cue"));
    EXPECT_EQ(1U, GetJson({"info", "H:", "--json"})["tracks"].size());
    EXPECT_EQ(m_strCue + "\n", set("disc service", "letter h", "a.cue")) << "names of options have no case";
    // What is yet to come, or is no path of this folder.
    EXPECT_EQ(m_Folder.Get("later.cue").string() + "\n", set("Disc Service", "Letter I", "later.cue"));
    for (const std::string strOther : {"/dev/sr0", "file:///a/b.cue", "E:", ""})
        EXPECT_EQ(strOther + "\n", set("Disc Service", "Letter I", strOther));
    // Others are no paths.
    EXPECT_EQ("a.cue\n", set("Disc Service", "Letter", "a.cue"));
    EXPECT_EQ("a.cue\n", set("Disc Service", "Letter HH", "a.cue"));
    EXPECT_EQ("a.cue\n", set("Other", "Letter H", "a.cue"));
}

TEST_F(RondelServices, ALetterThatNobodyHasIsASentence)
{
    ExpectSentence(HostProcess::Run({"info", "Q:"}), 1, {"Q:", "rondel drives"});
}

TEST_F(RondelServices, AMachineWithoutDrivesSaysWhatElseIsADrive)
{
    if (!GetJson({"drives", "--json"}).empty())
        GTEST_SKIP() << "this machine has drives";
    EXPECT_NE(std::string::npos, GetOutput({"drives"}).find("Letter D"));
}

TEST_F(RondelServices, TheMeasuredCacheIsRemembered)
{
    (void)m_Folder.Write("a.cue.drive", "Buffer = 64\nCache = 64\nSpeed = 8\nSeek = 20\nVendor = ACME\nModel = CD 1\n");
    json disc = GetJson({"info", m_strCue, "--json"});
    EXPECT_TRUE(disc["remembered"].empty());
    disc = GetJson({"info", m_strCue, "--json", "--measure-cache"});
    ASSERT_EQ(5U, disc["remembered"].size());
    EXPECT_EQ("ACMECD 1", disc["remembered"][2]);
    const int nBytes = std::stoi(disc["remembered"][4].get<std::string>());
    EXPECT_GT(nBytes, 0);
    EXPECT_LE(nBytes, 64 * 1024 + 2352);
    EXPECT_EQ(disc["remembered"], GetJson({"info", m_strCue, "--json"})["remembered"]);
    EXPECT_NE(std::string::npos, GetOutput({"info", m_strCue}).find("Remembered: ACMECD 1, read cache of "));
}

TEST_F(RondelServices, TheTrayOfAnImageOpensAndCloses)
{
    for (const char* pCommand : {"eject", "close", "unlock"})
        EXPECT_EQ("", GetOutput({pCommand, m_strCue})) << pCommand;
    ExpectSentence(HostProcess::Run({"eject", "Q:"}), 1, {"Q:"});
}

TEST_F(RondelServices, ALockLastsAsLongAsTheProgram)
{
    const HOST_RESULT result = HostProcess::RunShell("timeout --signal=INT 1 \"$RONDEL\" lock '" + m_strCue + "'");
    EXPECT_NE(std::string::npos, result.m_strOutput.find("is locked until this program ends")) << result.m_strErrors;
    EXPECT_EQ(124, result.m_nExit); // of timeout, which ended it
}

// As after the change of a disc: the drive refuses one command, whichever it is, to tell of it.
TEST_F(RondelServices, ADriveThatHasSomethingToTellIsAskedAgain)
{
    for (const char* pFault : {"UnitAttention = 1\n", "UnitAttention = 2\n", "UnitAttention = 3\n",
                               "UnitAttention = 3, 6/29/00, 3\n", "UnitAttention = 4\n"})
    {
        (void)m_Folder.Write("a.cue.drive", pFault);
        for (const char* pCommand : {"eject", "close", "unlock"})
            EXPECT_EQ("", GetOutput({pCommand, m_strCue})) << pCommand << " " << pFault;
    }
}

TEST_F(RondelServices, ATrayThatDoesNotMoveIsASentenceInTheUsersLanguageAsFarAsTheDriveSpeaks)
{
    (void)m_Folder.Write("a.cue.drive", "FailRate = 100%, 5/53/02\n");
    ExpectSentence(HostProcess::Run({"eject", m_strCue}), 1, {"door is locked", "rondel unlock"});
    (void)m_Folder.Write("a.cue.drive", "FailRate = 100%, 4/44/00\n");
    ExpectSentence(HostProcess::RunShell("LC_ALL=C exec \"$RONDEL\" eject '" + m_strCue + "'"), 1,
                   {"(Internal target failure)"});
    ExpectSentence(HostProcess::RunShell("LC_ALL=C.UTF-8 LANGUAGE=de exec \"$RONDEL\" eject '" + m_strCue + "'"), 1,
                   {"(Interner Fehler des Ger\xC3\xA4ts)"});
}
