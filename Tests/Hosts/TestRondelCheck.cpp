// rondel check as users have it: a log and its files, as they were, changed, gone, or made up.

#include "HostProcess.h"
#include "LogSeal.h"
#include "ReportJson.h"
#include "ReportText.h"
#include "SecureHash.h"

namespace
{
class RondelCheck : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_report.strProgram = "rondel 1.0.0";
        m_report.aryPieces.resize(2);
        for (RIP_PIECE& piece : m_report.aryPieces)
            piece.eState = RIP_PIECE_READ;
        AddFile("One/01 - \xC3\x84hre.flac", "the first song", m_report.aryPieces[0].aryFiles);
        AddFile("One/02 - Halm.flac", "the second song", m_report.aryPieces[1].aryFiles);
        AddFile("disc.cue", "the sheet", m_report.aryFiles);
        WriteLogs();
    }
    void AddFile(const std::string& strName, const std::string& strContent, std::vector<RIP_FILE>& aryFiles)
    {
        std::filesystem::create_directories(m_Folder.Get(("rip/" + strName).c_str()).parent_path());
        (void)m_Folder.Write(("rip/" + strName).c_str(), strContent);
        aryFiles.push_back(Describe(strName, strContent));
    }
    static RIP_FILE Describe(const std::string& strName, const std::string& strContent)
    {
        RIP_FILE file;
        file.strName = strName;
        file.nBytes = static_cast<long long>(strContent.size());
        const SHA256Hash::DIGEST digest = SHA256Hash::Make(strContent.data(), strContent.size());
        file.strSHA256 = MakeHexText(digest.data(), digest.size());
        return file;
    }
    void WriteLogs()
    {
        (void)m_Folder.Write("rip/rip.log", MakeTextLog(m_report));
        (void)m_Folder.Write("rip/rip.json", MakeJsonLog(m_report));
    }
    std::string Get(const std::string& strName) const { return m_Folder.Get(strName.c_str()).string(); }

    // Both logs of the rip are checked, and say the same.
    void ExpectBoth(int nExit, std::initializer_list<const char*> aryLines) const
    {
        for (const char* pLog : {"rip/rip.log", "rip/rip.json"})
        {
            const HOST_RESULT result = HostProcess::Run({"check", Get(pLog)});
            EXPECT_EQ(nExit, result.m_nExit) << result.m_strErrors;
            EXPECT_EQ("", result.m_strErrors);
            for (const char* pLine : aryLines)
                EXPECT_NE(std::string::npos, result.m_strOutput.find(pLine)) << pLine << "\n" << result.m_strOutput;
        }
    }

    DiscFolder m_Folder;
    RIP_REPORT m_report;
};
} // namespace

TEST_F(RondelCheck, ARipAsItWas)
{
    for (const char* pLog : {"rip/rip.log", "rip/rip.json"})
    {
        const HOST_RESULT result = HostProcess::Run({"check", Get(pLog)});
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        EXPECT_EQ(Get(pLog) + ": the seal is right\n"
                              "One/01 - \xC3\x84hre.flac: right\n"
                              "One/02 - Halm.flac: right\n"
                              "disc.cue: right\n"
                              "All is right: the log, and 3 files.\n",
                  result.m_strOutput);
    }
}

TEST_F(RondelCheck, FromWithinTheFolderAndThroughALink)
{
    std::filesystem::create_symlink(Get("rip/rip.log"), Get("link"));
    EXPECT_EQ(0, HostProcess::Run({"check", Get("link")}).m_nExit);
    EXPECT_EQ(0, HostProcess::RunShell("cd '" + Get("rip") + "' && \"$RONDEL\" check rip.json").m_nExit);
}

TEST_F(RondelCheck, TheRipMovedElsewhere)
{
    std::filesystem::rename(Get("rip"), Get("music"));
    EXPECT_EQ(0, HostProcess::Run({"check", Get("music/rip.log")}).m_nExit);
}

TEST_F(RondelCheck, AChangedFile)
{
    (void)m_Folder.Write("rip/One/02 - Halm.flac", "the secomd song");
    (void)m_Folder.Write("rip/disc.cue", "the sheet!");
    ExpectBoth(1, {": the seal is right\n", "Halm.flac: CHANGED (its SHA-256 is another)\n",
                   "disc.cue: CHANGED (it has 10 bytes instead of 9)\n", "hre.flac: right\n",
                   "NOT all is right; faults: 2.\n"});
}

TEST_F(RondelCheck, AMissingFile)
{
    std::filesystem::remove(Get("rip/disc.cue"));
    ExpectBoth(1, {"disc.cue: MISSING (it is not there)\n", "NOT all is right; faults: 1.\n"});
    std::filesystem::remove_all(Get("rip/One"));
    ExpectBoth(1, {"NOT all is right; faults: 3.\n"});
}

TEST_F(RondelCheck, AFileThatTheRipCouldNotMake)
{
    m_report.aryFiles[0].strError = "no space left";
    WriteLogs();
    ExpectBoth(0, {"disc.cue: not made, as the log says (no space left)\n", "All is right"});
}

TEST_F(RondelCheck, AChangedLog)
{
    for (const char* pLog : {"rip/rip.log", "rip/rip.json"})
    {
        std::string strLog = ReadWholeFile(Get(pLog));
        strLog.replace(strLog.find("1.0.0"), 5, "1.0.1");
        (void)m_Folder.Write(pLog, strLog);
    }
    ExpectBoth(1, {": the SEAL IS WRONG: the log has changed", "disc.cue: right\n", "faults: 1.\n"});
}

TEST_F(RondelCheck, ACutLog)
{
    for (const char* pLog : {"rip/rip.log", "rip/rip.json"})
    {
        const std::string strLog = ReadWholeFile(Get(pLog));
        for (const size_t nBytes : {strLog.size() - 1, strLog.size() / 2, size_t{1}, size_t{0}})
        {
            (void)m_Folder.Write(pLog, strLog.substr(0, nBytes));
            const HOST_RESULT result = HostProcess::Run({"check", Get(pLog)});
            EXPECT_EQ(1, result.m_nExit) << nBytes;
            EXPECT_NE(std::string::npos, result.m_strOutput.find(": the SEAL IS MISSING")) << result.m_strOutput;
        }
    }
}

TEST_F(RondelCheck, ForgedPathsAreNotFollowed)
{
    const std::string strSecret = "secret";
    (void)m_Folder.Write("secret", strSecret);
    std::filesystem::create_symlink("../secret", Get("rip/link"));
    std::filesystem::create_symlink("/dev/zero", Get("rip/zero"));
    m_report.aryFiles.clear();
    for (const std::string& strName :
         {std::string("../secret"), Get("secret"), std::string("One/../../secret"), std::string("link")})
        m_report.aryFiles.push_back(Describe(strName, strSecret));
    m_report.aryFiles.push_back(Describe("zero", ""));
    WriteLogs();
    ExpectBoth(1, {"../secret: OUTSIDE (its name leads out", "One/../../secret: OUTSIDE (its name leads out",
                   "link: OUTSIDE (a link leads out", "zero: OUTSIDE (a link leads out", ": the seal is right\n",
                   "faults: 5.\n"});
}

TEST_F(RondelCheck, PipesAreNotWaitedFor)
{
    ASSERT_EQ(0, mkfifo(Get("rip/pipe").c_str(), 0644));
    m_report.aryFiles = {Describe("pipe", ""), Describe("One", "")};
    WriteLogs();
    ExpectBoth(1, {"pipe: UNREADABLE (it is no plain file)\n", "One: UNREADABLE (it is no plain file)\n"});
    ExpectSentence(HostProcess::Run({"check", Get("rip/pipe")}), 1, {"pipe cannot be checked (it is no plain file)"});
}

TEST_F(RondelCheck, NamesDoNotReachTheTerminal)
{
    m_report.aryFiles = {Describe("a\x1B[2J\nb: right", "")};
    WriteLogs();
    ExpectBoth(1, {"\na\\x1B[2J\\x0Ab: right: MISSING (it is not there)\n"});
}

TEST_F(RondelCheck, TheListingForPrograms)
{
    std::filesystem::remove(Get("rip/disc.cue"));
    const HOST_RESULT result = HostProcess::Run({"check", "--json", Get("rip/rip.log")});
    EXPECT_EQ(1, result.m_nExit);
    const nlohmann::json listing = nlohmann::json::parse(result.m_strOutput);
    EXPECT_EQ(Get("rip/rip.log"), listing["log"]);
    EXPECT_EQ("text", listing["kind"]);
    EXPECT_EQ("right", listing["seal"]);
    EXPECT_EQ("", listing["fault"]);
    ASSERT_EQ(3U, listing["files"].size());
    EXPECT_EQ("One/02 - Halm.flac", listing["files"][1]["name"]);
    EXPECT_EQ("right", listing["files"][1]["state"]);
    EXPECT_EQ("missing", listing["files"][2]["state"]);
    EXPECT_EQ(false, listing["right"]);
    (void)m_Folder.Write("rip/disc.cue", "the sheet");
    const HOST_RESULT right = HostProcess::Run({"check", Get("rip/rip.json"), "--json"});
    EXPECT_EQ(0, right.m_nExit);
    EXPECT_EQ(true, nlohmann::json::parse(right.m_strOutput)["right"]);
}

TEST_F(RondelCheck, WhatIsNoLog)
{
    ExpectSentence(HostProcess::Run({"check", Get("none.log")}), 1, {"none.log cannot be checked (No such file"});
    ExpectSentence(HostProcess::Run({"check", Get("rip")}), 1, {"(it is no plain file)"});
    ExpectSentence(HostProcess::Run({"check", "/dev/zero"}), 1, {"(it is no plain file)"});
    ExpectSentence(HostProcess::Run({"check"}), 2, {"LOG is required", "rondel check --help"});
    (void)m_Folder.Write("rip/letter.txt", "Dear collector,\n");
    (void)m_Folder.Write("rip/other.json", SealJsonLog("{\"format\": \"letter\"}"));
    EXPECT_EQ(1, HostProcess::Run({"check", Get("rip/letter.txt")}).m_nExit);
    const HOST_RESULT other = HostProcess::Run({"check", Get("rip/other.json")});
    EXPECT_EQ(1, other.m_nExit);
    EXPECT_NE(std::string::npos, other.m_strOutput.find("it is of another kind")) << other.m_strOutput;
}
