// rondel fetch: files, and URLs from a real web server; where the bytes go, and what is left when they do not come.

#include "HostProcess.h"
#include "SiblingReader/ScriptedServer.h"
#include <sys/stat.h>

namespace
{
class RondelFetch : public ::testing::Test
{
protected:
    void SetUp() override
    {
        setenv("XDG_CONFIG_HOME", m_Folder.Get("config").c_str(), 1);
        setenv("XDG_DATA_HOME", m_Folder.Get("data").c_str(), 1);
        m_strSource = m_Folder.Write("source.txt", "small\n").string();
    }
    static std::string GetOutput(const std::vector<std::string>& aryArguments)
    {
        const HOST_RESULT result = HostProcess::Run(aryArguments);
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        EXPECT_EQ("", result.m_strErrors);
        return result.m_strOutput;
    }
    std::string Get(const char* pName) const { return m_Folder.Get(pName).string(); }
    // Runs a line of the shell in the test's folder.
    HOST_RESULT RunHere(const std::string& strLine) const
    {
        return HostProcess::RunShell("cd '" + m_Folder.Get("").string() + "' || exit 9; " + strLine);
    }
    size_t CountFiles() const
    {
        size_t nFiles = 0;
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Get("")))
            nFiles += entry.is_regular_file() ? 1 : 0;
        return nFiles;
    }

    DiscFolder m_Folder;
    std::string m_strSource;
};

class RondelFetchURL : public RondelFetch
{
protected:
    void SetUp() override
    {
        RondelFetch::SetUp();
        ASSERT_TRUE(m_Server.GetIsRunning());
        m_Server.Write("small.txt", "hello\n");
    }

    NginxServer m_Server;
};
} // namespace

TEST_F(RondelFetch, FetchCopiesAFileAsTheReaderReadsIt)
{
    const std::string strContent = MakePattern(0, 3000000);
    const auto source = m_Folder.Write("s ource.dat", strContent);
    const auto target = m_Folder.Get("target.dat");
    EXPECT_EQ("", GetOutput({"fetch", source.string(), "-o", target.string()}));
    EXPECT_TRUE(SameBytes(strContent, ReadWholeFile(target)));
    std::string strURL = "file://" + source.string();
    strURL.replace(strURL.find(' '), 1, "%20");
    EXPECT_TRUE(SameBytes(strContent, GetOutput({"fetch", strURL, "-o", "-"})));
}

TEST_F(RondelFetch, FetchFailsWithASentenceAndLeavesNothing)
{
    const std::string strTarget = m_Folder.Get("t").string();
    ExpectSentence(HostProcess::Run({"fetch", m_Folder.Get("none").string(), "-o", strTarget}), 1, {"none"});
    ExpectSentence(HostProcess::Run({"fetch", "gopher://x/y", "-o", strTarget}), 1, {"gopher://x/y"});
    ExpectSentence(HostProcess::Run({"fetch", "http://127.0.0.1:1/x", "-o", strTarget}), 1, {"127.0.0.1"});
    ExpectSentence(HostProcess::Run({"fetch", m_strSource, "-o", m_Folder.Get("no/folder").string()}), 1,
                   {"choose another"});
    EXPECT_FALSE(std::filesystem::exists(strTarget));
    EXPECT_FALSE(std::filesystem::exists(strTarget + ".part"));
}

TEST_F(RondelFetch, TheNameIsTheLastPartOfTheAddressUnlessItIsTaken)
{
    std::filesystem::create_directory(m_Folder.Get("here"));
    EXPECT_EQ("", RunHere("cd here && \"$RONDEL\" fetch ../source.txt").m_strErrors);
    EXPECT_EQ("small\n", ReadWholeFile(Get("here/source.txt")));
    ExpectSentence(RunHere("cd here && \"$RONDEL\" fetch ../source.txt"), 1, {"already there", "-o FILE"});
    ExpectSentence(HostProcess::Run({"fetch", "file:///"}), 1, {"directory", "file"});
}

TEST_F(RondelFetch, ANameThatIsTooLongForAFileIsASentence)
{
    const std::string strLong(300, 'x');
    ExpectSentence(HostProcess::Run({"fetch", "http://127.0.0.1:1/" + strLong}), 1, {"too long", "-o"});
}

TEST_F(RondelFetch, AFolderIsRefusedAndNothingIsLeftBesideIt)
{
    std::filesystem::create_directory(m_Folder.Get("dir"));
    ExpectSentence(HostProcess::Run({"fetch", m_strSource, "-o", Get("dir")}), 1, {"folder"});
    EXPECT_EQ(1U, CountFiles());
}

TEST_F(RondelFetch, WhatIsNoFileStaysWhatItIsAndALinkIsFollowed)
{
    std::filesystem::create_symlink("behind.txt", m_Folder.Get("link"));
    EXPECT_EQ("", GetOutput({"fetch", m_strSource, "-o", Get("link")}));
    EXPECT_TRUE(std::filesystem::is_symlink(m_Folder.Get("link")));
    EXPECT_EQ("small\n", ReadWholeFile(Get("behind.txt")));
    ASSERT_EQ(0, mkfifo(Get("pipe").c_str(), 0600));
    const HOST_RESULT result = RunHere("cat pipe & \"$RONDEL\" fetch source.txt -o pipe; wait");
    EXPECT_EQ("small\n", result.m_strOutput);
    EXPECT_EQ("", result.m_strErrors);
    EXPECT_TRUE(std::filesystem::is_fifo(m_Folder.Get("pipe")));
    // A link to a device: should it ever be replaced, it is the link that goes.
    std::filesystem::create_symlink("/dev/full", m_Folder.Get("full"));
    ExpectSentence(HostProcess::Run({"fetch", m_strSource, "-o", Get("full")}), 1, {"No space left", "-o"});
    EXPECT_TRUE(std::filesystem::is_character_file(m_Folder.Get("full")));
}

TEST_F(RondelFetch, AFileOfSomebodyElseUnderTheTemporaryNameIsNotTouched)
{
    (void)m_Folder.Write("target.part", "mine");
    EXPECT_EQ("", GetOutput({"fetch", m_strSource, "-o", Get("target")}));
    EXPECT_EQ("small\n", ReadWholeFile(Get("target")));
    EXPECT_EQ("mine", ReadWholeFile(Get("target.part")));
    EXPECT_EQ(3U, CountFiles());
}

TEST_F(RondelFetch, AProgramThatHasGoneIsASentence)
{
    (void)m_Folder.Write("big", std::string(4000000, 'x'));
    const HOST_RESULT result = RunHere("\"$RONDEL\" fetch big -o - | head -c 10 >head");
    EXPECT_TRUE(result.m_strErrors.starts_with("rondel: the program that takes the data has ended early"))
        << result.m_strErrors;
}

TEST_F(RondelFetch, APartIsNamedByItsFirstByteAndItsLength)
{
    const std::string strContent = MakePattern(0, 3000000);
    const std::string strSource = m_Folder.Write("big.dat", strContent).string();
    const struct
    {
        std::vector<std::string> aryOptions;
        size_t nFirst;
        size_t nBytes;
    } aryCases[] = {
        {{"--limit", "100"}, 0, 100},
        {{"--limit", "1048577"}, 0, 1048577},
        {{"--limit", "9000000"}, 0, 3000000},
        {{"--from", "2999999"}, 2999999, 1},
        {{"--from", "1500000", "--limit", "7"}, 1500000, 7},
        {{"--from", "3000001"}, 0, 0},
    };
    for (const auto& row : aryCases)
    {
        std::vector<std::string> aryArguments = {"fetch", strSource, "-o", Get("part")};
        aryArguments.insert(aryArguments.end(), row.aryOptions.begin(), row.aryOptions.end());
        EXPECT_EQ("", GetOutput(aryArguments));
        EXPECT_TRUE(SameBytes(strContent.substr(row.nFirst, row.nBytes), ReadWholeFile(Get("part"))));
    }
    for (const char* pOption : {"--limit=0", "--limit=-1", "--from=-1", "--limit=x"})
        ExpectSentence(HostProcess::Run({"fetch", strSource, pOption, "-o", Get("t")}), 2, {"--"});
}

TEST_F(RondelFetch, ASourceWithoutALengthMayBeEmpty)
{
    EXPECT_EQ("", GetOutput({"fetch", "/dev/null", "-o", Get("nothing")}));
    EXPECT_TRUE(std::filesystem::exists(m_Folder.Get("nothing")));
    EXPECT_EQ("", RunHere("printf abc | \"$RONDEL\" fetch /dev/stdin -o piped").m_strErrors);
    EXPECT_EQ("abc", ReadWholeFile(Get("piped")));
    ExpectSentence(HostProcess::Run({"fetch", "/dev/null", "--from", "5", "-o", Get("t")}), 1, {"/dev/null"});
}

TEST_F(RondelFetch, WithoutTheReaderLibraryItSaysWhatIsMissing)
{
    std::filesystem::copy(RONDEL_BIN_DIR "/rondel", m_Folder.Get("rondel"));
    ExpectSentence(HostProcess::RunCommand({Get("rondel"), "fetch", m_strSource, "-o", Get("t")}), 1,
                   {"libLyReader.dylib"});
}

TEST_F(RondelFetchURL, AUrlIsCopiedByteForByte)
{
    const std::string strContent = MakePattern(0, 3000000);
    m_Server.Write("big.bin", strContent);
    EXPECT_EQ("", GetOutput({"fetch", m_Server.GetURL("/files/big.bin"), "-o", Get("big.bin")}));
    EXPECT_TRUE(SameBytes(strContent, ReadWholeFile(Get("big.bin"))));
    EXPECT_EQ("hello\n", GetOutput({"fetch", m_Server.GetURL("/files/small.txt"), "-o", "-"}));
    EXPECT_EQ("hello\n", GetOutput({"fetch", m_Server.GetURL("/redirect"), "-o", "-"}));
    EXPECT_EQ("", RunHere("\"$RONDEL\" fetch '" + m_Server.GetURL("/files/small.txt?a=b#c") + "'").m_strErrors);
    EXPECT_EQ("hello\n", ReadWholeFile(Get("small.txt")));
}

TEST_F(RondelFetchURL, WhatComesPackedIsUnpackedInTheFile)
{
    std::string strText;
    for (int nLine = 0; strText.size() < 300000; ++nLine)
        strText += "line " + std::to_string(nLine) + "\n";
    m_Server.Write("page.txt", strText);
    const HOST_RESULT result =
        HostProcess::Run({"fetch", "--headers", m_Server.GetURL("/gzip/page.txt"), "-o", Get("page")});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_NE(std::string::npos, result.m_strErrors.find("Content-Encoding: gzip\n")) << result.m_strErrors;
    EXPECT_TRUE(SameBytes(strText, ReadWholeFile(Get("page"))));
    EXPECT_EQ(2U, CountFiles()) << "the source and the page";
    // A program and a part get what was not packed in the first place.
    EXPECT_TRUE(SameBytes(strText, GetOutput({"fetch", m_Server.GetURL("/gzip/page.txt"), "-o", "-"})));
    EXPECT_EQ("", GetOutput({"fetch", m_Server.GetURL("/gzip/page.txt"), "--limit", "9", "-o", Get("page")}));
    EXPECT_EQ("line 0\nli", ReadWholeFile(Get("page")));
}

TEST_F(RondelFetchURL, WhatComesPackedUnaskedNeedsAFileAndTheWholeOfIt)
{
    const ScriptedServer server(
        [](const ScriptedServer::Connection& connection, const std::string&)
        { connection.Send("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\nabcd"); });
    ExpectSentence(HostProcess::Run({"fetch", server.GetURL("/x"), "-o", "-"}), 1, {"packed", "-o FILE"});
    ExpectSentence(HostProcess::Run({"fetch", server.GetURL("/x"), "-o", Get("t"), "--from", "1"}), 1, {"packed"});
    ExpectSentence(HostProcess::Run({"fetch", server.GetURL("/x"), "-o", Get("t")}), 1, {"could not be unpacked"});
    EXPECT_EQ(1U, CountFiles());
}

// The server has the file packed, and gives it as it lies there.
TEST_F(RondelFetchURL, WhatComesPackedAndDamagedIsAnErrorAndLeavesNothing)
{
    std::string strText;
    for (int nLine = 0; strText.size() < 200000; ++nLine)
        strText += std::to_string(nLine * 7919 % 10007) + " bottles\n";
    (void)m_Folder.Write("page", strText);
    ASSERT_EQ(0, RunHere("gzip -9 page").m_nExit);
    const std::string strPacked = ReadWholeFile(Get("page.gz"));
    std::filesystem::remove(m_Folder.Get("page.gz"));
    const auto Flip = [&](size_t nByte)
    {
        std::string strDamaged = strPacked;
        strDamaged[nByte] = static_cast<char>(strDamaged[nByte] ^ 0x20);
        return strDamaged;
    };
    const std::pair<const char*, std::string> aryDamages[] = {
        {"CutInTheMiddle", strPacked.substr(0, strPacked.size() / 2)},
        {"CutInItsSum", strPacked.substr(0, strPacked.size() - 5)},
        {"CutBehindItsHeader", strPacked.substr(0, 15)},
        {"WrongByteInTheMiddle", Flip(strPacked.size() / 2)},
        {"WrongSum", Flip(strPacked.size() - 8)},
        {"WrongLength", Flip(strPacked.size() - 1)},
        {"SecondMemberCut", strPacked + strPacked.substr(0, strPacked.size() / 3)},
    };
    const std::string strURL = m_Server.GetURL("/packed/page");
    for (const auto& [pName, strDamaged] : aryDamages)
    {
        m_Server.Write("page.gz", strDamaged);
        ExpectSentence(HostProcess::Run({"fetch", strURL, "-o", Get("t")}), 1, {"/packed/page", "damaged"});
        EXPECT_EQ(1U, CountFiles()) << pName;
        (void)m_Folder.Write("t", "what was there");
        ExpectSentence(HostProcess::Run({"fetch", strURL, "-o", Get("t")}), 1, {"damaged"});
        EXPECT_EQ("what was there", ReadWholeFile(Get("t"))) << pName;
        EXPECT_EQ(2U, CountFiles()) << pName;
        std::filesystem::remove(m_Folder.Get("t"));
    }
    m_Server.Write("page.gz", strPacked + strPacked);
    EXPECT_EQ("", GetOutput({"fetch", strURL, "-o", Get("t")}));
    EXPECT_TRUE(SameBytes(strText + strText, ReadWholeFile(Get("t"))));
}

TEST_F(RondelFetchURL, PartsComeWithAndWithoutRanges)
{
    const std::string strContent = MakePattern(0, 1000000);
    m_Server.Write("big.bin", strContent);
    for (const char* pPath : {"/files/big.bin", "/noranges/big.bin"})
    {
        EXPECT_TRUE(SameBytes(strContent.substr(700000, 1000), GetOutput({"fetch", m_Server.GetURL(pPath), "-o", "-",
                                                                          "--from", "700000", "--limit", "1000"})));
    }
}

TEST_F(RondelFetchURL, AnAnswerThatBreaksOffLeavesNothing)
{
    for (const char* pAnswer : {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\nConnection: close\r\n\r\nabc",
                                "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n"})
    {
        const ScriptedServer server([pAnswer](const ScriptedServer::Connection& connection, const std::string&)
                                    { connection.Send(pAnswer); });
        ExpectSentence(HostProcess::Run({"fetch", server.GetURL("/x"), "-o", Get("t")}), 1, {"127.0.0.1"});
    }
    EXPECT_EQ(1U, CountFiles());
}

TEST_F(RondelFetchURL, IfNewerLeavesACurrentCopyAlone)
{
    const std::string strURL = m_Server.GetURL("/files/small.txt");
    const auto fetch = [&] { return GetOutput({"fetch", strURL, "--if-newer", "-o", Get("small.txt")}); };
    EXPECT_EQ("", fetch());
    EXPECT_EQ("hello\n", ReadWholeFile(Get("small.txt"))) << "there was none";
    (void)m_Folder.Write("small.txt", "copied");
    EXPECT_EQ("", fetch());
    EXPECT_EQ("copied", ReadWholeFile(Get("small.txt"))) << "as long, and newer";
    EXPECT_EQ("", RunHere("\"$RONDEL\" fetch --if-newer " + strURL).m_strErrors) << "its own name is no hindrance";
    EXPECT_EQ("copied", ReadWholeFile(Get("small.txt")));
    using namespace std::chrono_literals;
    std::filesystem::last_write_time(m_Folder.Get("small.txt"), std::filesystem::file_time_type::clock::now() - 24h);
    EXPECT_EQ("", fetch());
    EXPECT_EQ("hello\n", ReadWholeFile(Get("small.txt"))) << "older";
    (void)m_Folder.Write("small.txt", "of another length");
    EXPECT_EQ("", fetch());
    EXPECT_EQ("hello\n", ReadWholeFile(Get("small.txt")));
    EXPECT_EQ(2U, CountFiles());
    ExpectSentence(HostProcess::Run({"fetch", strURL, "--if-newer", "-o", "-"}), 1, {"--if-newer", "-o FILE"});
}

// The server tells whole seconds, the file system parts of them. Within one second a copy is not older.
TEST_F(RondelFetchURL, IfNewerTakesEqualSecondsForCurrent)
{
    const struct
    {
        const char* pServer;
        const char* pCopy;
        bool bCurrent;
    } aryCases[] = {
        {"2024-05-06 07:08:09", "2024-05-06 07:08:09", true},
        {"2024-05-06 07:08:09.9", "2024-05-06 07:08:09.1", true},
        {"2024-05-06 07:08:09.1", "2024-05-06 07:08:09.9", true},
        {"2024-05-06 07:08:09", "2024-05-06 07:08:08.999", false},
        {"2024-05-06 00:00:00.5", "2024-05-06 00:00:00", true}, // a midnight has a mark
        {"2024-05-06 00:00:01", "2024-05-06 00:00:00.9", false},
        {"2024-05-06 00:00:01", "2024-05-06 00:00:01", true},
        {"2024-01-01 00:00:00", "2024-01-01 00:00:00", true}, // and so has the first day of a year
        {"2024-01-01 00:00:00", "2023-12-31 23:59:59.9", false},
    };
    const std::string strServed = m_Server.GetFolder().GetPath("files/small.txt");
    for (const char* pZone : {"UTC", "America/St_Johns", "Asia/Kathmandu"})
        for (const auto& row : aryCases)
        {
            (void)m_Folder.Write("small.txt", "copied");
            const std::string strTouch = std::string("touch -d '") + row.pServer + " UTC' '" + strServed +
                                         "'; touch -d '" + row.pCopy + " UTC' small.txt; ";
            const HOST_RESULT result = RunHere(strTouch + "export TZ=" + pZone + "; \"$RONDEL\" fetch --if-newer '" +
                                               m_Server.GetURL("/files/small.txt") + "' -o small.txt");
            EXPECT_EQ("", result.m_strErrors);
            EXPECT_EQ(row.bCurrent ? "copied" : "hello\n", ReadWholeFile(Get("small.txt")))
                << row.pServer << ", " << row.pCopy << ", " << pZone;
        }
}

TEST_F(RondelFetchURL, HeadersGoToStandardError)
{
    const HOST_RESULT result = HostProcess::Run({"fetch", "--headers", m_Server.GetURL("/files/small.txt"), "-o", "-"});
    EXPECT_EQ("hello\n", result.m_strOutput);
    EXPECT_TRUE(result.m_strErrors.starts_with("HTTP/1.1 200 OK\n")) << result.m_strErrors;
    EXPECT_NE(std::string::npos, result.m_strErrors.find("Content-Length: 6\n"));
}

TEST_F(RondelFetchURL, WhatTheServerRefusesIsASentenceAndLeavesNothing)
{
    const std::pair<const char*, const char*> aryRefused[] = {{"/none", "404"},
                                                              {"/status/500", "500"},
                                                              {"/loop", "redirect"},
                                                              {"/tofile", "not followed"},
                                                              {"/toftp", "ftp"}};
    for (const auto& [pPath, pWord] : aryRefused)
        ExpectSentence(HostProcess::Run({"fetch", m_Server.GetURL(pPath), "-o", Get("t")}), 1, {"127.0.0.1", pWord});
    ExpectSentence(HostProcess::Run({"fetch", m_Server.GetURL("/"), "--timeout", "0", "-o", Get("t")}), 2,
                   {"--timeout"});
    EXPECT_EQ(1U, CountFiles());
}

TEST_F(RondelFetchURL, AnInterruptLeavesNothing)
{
    m_Server.Write("slow.bin", std::string(4000000, 'x'));
    for (const char* pSignal : {"INT", "TERM", "HUP"})
    {
        const HOST_RESULT result =
            RunHere(std::string("timeout --signal=") + pSignal + " 1 \"$RONDEL\" fetch '" +
                    m_Server.GetURL("/slow/slow.bin") + "' -o t & sleep 0.5; ls t.part && wait $!");
        EXPECT_EQ(124, result.m_nExit) << result.m_strErrors;
        EXPECT_EQ("t.part\n", result.m_strOutput);
        EXPECT_EQ(1U, CountFiles()) << pSignal;
    }
}

TEST_F(RondelFetchURL, ACertificateThatNobodyVouchesForIsRefused)
{
    const NginxServer server(true);
    ASSERT_TRUE(server.GetIsRunning());
    ExpectSentence(HostProcess::Run({"fetch", server.GetURL("/files/x"), "-o", Get("t")}), 1, {"certificate"});
}
