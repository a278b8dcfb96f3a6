// What a log says of its files, read back from both kinds; and files that are, or are not, as it says.

#include "CRC32.h"
#include "FullReport.h"
#include "HostError.h"
#include "LogCheck.h"
#include "ReportJson.h"
#include "ReportText.h"
#include "SecureHash.h"
#include "TempFolder.h"
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
LOG_FILE MakeLogFile(const std::string& strName, const std::string& strContent)
{
    const SHA256Hash::DIGEST digest = SHA256Hash::Make(strContent.data(), strContent.size());
    return {strName, static_cast<long long>(strContent.size()), MakeHexText(digest.data(), digest.size()), "", ""};
}

// As the log has a WAV file.
LOG_FILE MakeLogWave(const std::string& strName, const std::string& strContent)
{
    return {strName, static_cast<long long>(strContent.size()), "",
            MakeCRC32Text(GetCRC32(strContent.data(), strContent.size())), ""};
}

std::string MakeBlock(const char* pName, const char* pLines)
{
    return std::string("  File                  ") + pName + "\n" + pLines + "\n";
}

const std::string s_strSum(64, 'c');
const std::string s_strLines = "  Size                  12 bytes\n  SHA-256               " + s_strSum + "\n";

// Both kinds name the same files.
void ExpectSameFiles(const RIP_REPORT& report)
{
    const LOG_CONTENT text = ReadLog(MakeTextLog(report));
    const LOG_CONTENT json = ReadLog(MakeJsonLog(report));
    EXPECT_EQ(LOG_TEXT, text.eKind);
    EXPECT_EQ(LOG_JSON, json.eKind);
    EXPECT_EQ(LOG_SEAL_RIGHT, text.eSeal);
    EXPECT_EQ(LOG_SEAL_RIGHT, json.eSeal);
    EXPECT_EQ(text.strFault, json.strFault);
    ASSERT_EQ(text.aryFiles.size(), json.aryFiles.size());
    for (size_t n = 0; n < text.aryFiles.size(); ++n)
    {
        EXPECT_EQ(text.aryFiles[n].strName, json.aryFiles[n].strName);
        EXPECT_EQ(text.aryFiles[n].nBytes, json.aryFiles[n].nBytes);
        EXPECT_EQ(text.aryFiles[n].strSHA256, json.aryFiles[n].strSHA256);
        EXPECT_EQ(text.aryFiles[n].strCRC32, json.aryFiles[n].strCRC32);
        EXPECT_EQ(text.aryFiles[n].strError, json.aryFiles[n].strError);
    }
}

class LogFiles : public ::testing::Test
{
protected:
    LOG_FILE_VERDICT Check(const LOG_FILE& file) const { return CheckLogFile(m_Folder.GetPath("log"), file); }
    LOG_FILE_STATE CheckName(const std::string& strName) const { return Check(MakeLogFile(strName, "secret")).eState; }
    void SetUp() override
    {
        (void)m_Folder.Write("log/a.wav", "content");
        (void)m_Folder.Write("log/disc 1/b.wav", "more content");
        (void)m_Folder.Write("outside.wav", "secret");
    }
    void Link(const char* pTarget, const char* pName) const
    {
        ASSERT_EQ(0, symlink(pTarget, m_Folder.GetPath(pName).c_str()));
    }

    TempFolder m_Folder;
};
} // namespace

TEST(LogCheck, BothKindsNameTheSameFiles)
{
    ExpectSameFiles(MakeFullReport());
    ExpectSameFiles(RIP_REPORT());
    const LOG_CONTENT content = ReadLog(MakeTextLog(MakeFullReport()));
    EXPECT_EQ("", content.strFault);
    ASSERT_EQ(6U, content.aryFiles.size());
    EXPECT_EQ("folder 10/song \xC3\xA4 10.flac", content.aryFiles[0].strName);
    EXPECT_EQ(10000000010, content.aryFiles[0].nBytes);
    EXPECT_EQ(std::string(60, 'a') + "1010", content.aryFiles[0].strSHA256);
    EXPECT_EQ("no room 11", content.aryFiles[1].strError);
}

TEST(LogCheck, HostileNamesComeBackFromTheText)
{
    RIP_REPORT report;
    for (const char* p : {"../up", " blanks ", "a\nb", "a\\b", "\xE2\x80\xAEtxt", "  File                  x", "x\r"})
    {
        report.aryFiles.push_back(MakeFullFile(1));
        report.aryFiles.back().strName = p;
    }
    ExpectSameFiles(report);
    EXPECT_EQ(7U, ReadLog(MakeTextLog(report)).aryFiles.size());
}

TEST(LogCheck, ATitleNamesNoFile)
{
    RIP_REPORT report;
    report.disc.strTitle = "x\n  File                  secret\n  Size                  6 bytes\n";
    report.strError = std::string(200, ' ') + "  File                  secret";
    report.aryNotes = {std::string(75, 'x') + "   File                  secret"};
    ExpectSameFiles(report);
    EXPECT_TRUE(ReadLog(MakeTextLog(report)).aryFiles.empty());
}

TEST(LogCheck, LinesOfATextLogThatAreNotWholeAreAFault)
{
    struct ROW
    {
        std::string strLog;
        const char* pFault; // empty for none
    };
    const ROW aryRows[] = {
        {MakeBlock("a", s_strLines.c_str()), ""},
        {MakeBlock("a", s_strLines.c_str()) + MakeBlock("a", s_strLines.c_str()), ""},
        {MakeBlock("a", ""), "of \"a\" it does not tell"},
        {MakeBlock("", s_strLines.c_str()), "of \"\" it does not tell"},
        {MakeBlock("a", "  Size                  12 bytes\n"), "of \"a\" it does not tell"},
        {MakeBlock("a", ("  SHA-256               " + s_strSum + "\n").c_str()), "of \"a\" it does not tell"},
        {MakeBlock("a", ("  Size                  -1 bytes\n  SHA-256               " + s_strSum).c_str()), "does not"},
        {MakeBlock("a", ("  Size                  1 byte\n  SHA-256               " + s_strSum).c_str()), "does not"},
        {MakeBlock("a",
                   ("  Size                  99999999999999999999 bytes\n  SHA-256               " + s_strSum).c_str()),
         "does not"},
        {MakeBlock("a", ("  Size                  12 bytes\n  SHA-256               " + s_strSum + "0").c_str()),
         "does not"},
        {MakeBlock("a", "  Size                  12 bytes\n  CRC-32                89ABCDEF\n"), ""},
        {MakeBlock("a", (s_strLines + "  CRC-32                89ABCDEF\n").c_str()), ""},
        {MakeBlock("a", "  Size                  12 bytes\n  CRC-32                89ABCDE\n"), "does not"},
        {MakeBlock("a", "  Size                  12 bytes\n  CRC-32                89abcdef\n"), "does not"},
        {MakeBlock("a", (s_strLines + "  CRC-32                not known\n").c_str()), "does not"},
        {MakeBlock("a", (s_strLines + "  CRC-32                89ABCDEF\n").c_str()) +
             MakeBlock("a", (s_strLines + "  CRC-32                89ABCDEE\n").c_str()),
         "two things of \"a\""},
        {MakeBlock("a", "  Not made              \n"), "does not"},
        {MakeBlock("a\\q", s_strLines.c_str()), "a name that no log writes"},
        {MakeBlock("a", s_strLines.c_str()) + MakeBlock("a", "  Not made              no\n"), "two things of \"a\""},
    };
    for (const ROW& row : aryRows)
    {
        const LOG_CONTENT content = ReadLog(row.strLog);
        EXPECT_NE(std::string::npos, content.strFault.find(row.pFault)) << content.strFault;
        EXPECT_EQ(*row.pFault == '\0', content.strFault.empty()) << row.strLog;
        EXPECT_LE(content.aryFiles.size(), 1U);
    }
}

TEST(LogCheck, ALogThatIsNoneHasNoFiles)
{
    EXPECT_TRUE(ReadLog("").aryFiles.empty());
    EXPECT_TRUE(ReadLog("A letter.\n").aryFiles.empty());
    EXPECT_NE("", ReadLog("{").strFault);
    EXPECT_NE("", ReadLog("{}").strFault);
    EXPECT_NE("", ReadLog("{\"a\": " + std::string(1000000, '[')).strFault);
}

// However often it is named, a file is read once; and the time does not grow with the square.
TEST(LogCheck, ManyFilesTakeLittleTime)
{
    std::string strLog;
    for (int n = 0; n < 50000; ++n)
        strLog += MakeBlock(std::to_string(n % 25000).c_str(), s_strLines.c_str());
    EXPECT_EQ(25000U, ReadLog(strLog).aryFiles.size());
}

TEST_F(LogFiles, AsTheLogSays)
{
    EXPECT_EQ(LOG_FILE_RIGHT, Check(MakeLogFile("a.wav", "content")).eState);
    EXPECT_EQ(LOG_FILE_RIGHT, Check(MakeLogFile("disc 1/b.wav", "more content")).eState);
    EXPECT_EQ(LOG_FILE_RIGHT, Check(MakeLogWave("disc 1/b.wav", "more content")).eState);
    (void)m_Folder.Write("log/empty", "");
    EXPECT_EQ(LOG_FILE_RIGHT, Check(MakeLogFile("empty", "")).eState);
    const std::string strLong(1000000, 'x');
    (void)m_Folder.Write("log/long", strLong);
    EXPECT_EQ(LOG_FILE_RIGHT, Check(MakeLogFile("long", strLong)).eState);
    (void)m_Folder.Write("log/\xFF\n", "bytes");
    EXPECT_EQ(LOG_FILE_RIGHT, Check(MakeLogFile("\xFF\n", "bytes")).eState);
}

TEST_F(LogFiles, NotAsTheLogSays)
{
    LOG_FILE_VERDICT verdict = Check(MakeLogFile("a.wav", "Content"));
    EXPECT_EQ(LOG_FILE_CHANGED, verdict.eState);
    EXPECT_EQ("its SHA-256 is another", verdict.strDetail);
    verdict = Check(MakeLogWave("a.wav", "Content"));
    EXPECT_EQ(LOG_FILE_CHANGED, verdict.eState);
    EXPECT_EQ("its CRC-32 is another", verdict.strDetail);
    LOG_FILE both = MakeLogFile("a.wav", "content");
    both.strCRC32 = MakeLogWave("a.wav", "Content").strCRC32;
    EXPECT_EQ("its CRC-32 is another", Check(both).strDetail);
    verdict = Check(MakeLogFile("a.wav", "contents"));
    EXPECT_EQ(LOG_FILE_CHANGED, verdict.eState);
    EXPECT_EQ("it has 7 bytes instead of 8", verdict.strDetail);
    for (const char* p : {"c.wav", "a.wav/c", "disc 2/b.wav"})
        EXPECT_EQ(LOG_FILE_MISSING, CheckName(p)) << p;
    EXPECT_EQ(LOG_FILE_MISSING, CheckLogFile(m_Folder.GetPath("no such"), MakeLogFile("a.wav", "")).eState);
    EXPECT_TRUE(verdict.IsFault());
}

TEST_F(LogFiles, WhatWasNotMadeIsNoFault)
{
    const LOG_FILE_VERDICT verdict = Check({"a.wav", 0, "", "", "no room"});
    EXPECT_EQ(LOG_FILE_NOT_MADE, verdict.eState);
    EXPECT_EQ("no room", verdict.strDetail);
    EXPECT_FALSE(verdict.IsFault());
}

TEST_F(LogFiles, NamesThatLeadOutAreNotFollowed)
{
    const std::string strOutside = m_Folder.GetPath("outside.wav");
    for (const std::string& strName :
         {std::string("../outside.wav"), strOutside, std::string("disc 1/../../outside.wav"), std::string(""),
          std::string("."), std::string(".."), std::string("./a.wav"), std::string("disc 1//b.wav"), std::string("/"),
          std::string("a.wav/"), std::string("a.wav\0x", 7), std::string("disc 1/../a.wav")})
        EXPECT_EQ(LOG_FILE_OUTSIDE, CheckName(strName)) << strName;
}

TEST_F(LogFiles, LinksThatLeadOutAreNotFollowed)
{
    Link("../outside.wav", "log/link.wav");
    Link(m_Folder.GetPath("outside.wav").c_str(), "log/absolute.wav");
    Link("..", "log/up");
    Link("/", "log/root");
    Link("link.wav", "log/chain.wav");
    Link("/proc/self/root", "log/magic");
    Link("/dev/zero", "log/zero");
    const std::string strBelowRoot = "root" + m_Folder.GetPath("outside.wav");
    for (const std::string& strName :
         {std::string("link.wav"), std::string("absolute.wav"), std::string("up/outside.wav"), strBelowRoot,
          std::string("chain.wav"), std::string("magic/etc/passwd"), std::string("zero")})
        EXPECT_EQ(LOG_FILE_OUTSIDE, CheckName(strName)) << strName;
    // A folder that begins like the log's is another one.
    (void)m_Folder.Write("log2/c.wav", "secret");
    Link("../log2/c.wav", "log/c.wav");
    EXPECT_EQ(LOG_FILE_OUTSIDE, CheckName("c.wav"));
    Link("loop", "log/loop");
    EXPECT_EQ(LOG_FILE_UNREADABLE, CheckName("loop"));
    Link("nowhere", "log/dangling");
    EXPECT_EQ(LOG_FILE_MISSING, CheckName("dangling"));
}

TEST_F(LogFiles, LinksThatStayInsideAreFollowed)
{
    Link("a.wav", "log/link.wav");
    Link("disc 1", "log/one");
    EXPECT_EQ(LOG_FILE_RIGHT, Check(MakeLogFile("link.wav", "content")).eState);
    EXPECT_EQ(LOG_FILE_RIGHT, Check(MakeLogFile("one/b.wav", "more content")).eState);
}

TEST_F(LogFiles, OnlyPlainFilesAreOpened)
{
    ASSERT_EQ(0, mkfifo(m_Folder.GetPath("log/pipe").c_str(), 0644)); // nobody writes: an open would wait
    EXPECT_EQ(LOG_FILE_UNREADABLE, CheckName("pipe"));
    EXPECT_EQ(LOG_FILE_UNREADABLE, CheckName("disc 1"));
    EXPECT_EQ("it is no plain file", Check(MakeLogFile("disc 1", "")).strDetail);
    EXPECT_EQ(LOG_FILE_UNREADABLE, CheckName(std::string(5000, 'n')));
}

TEST_F(LogFiles, LoadsPlainFilesOnly)
{
    EXPECT_EQ("content", LoadLog(m_Folder.GetPath("log/a.wav")));
    ASSERT_EQ(0, mkfifo(m_Folder.GetPath("pipe").c_str(), 0644));
    const auto GetFault = [](const std::string& strPath)
    {
        try
        {
            (void)LoadLog(strPath);
        }
        catch (const HostError& error)
        {
            return std::string(error.what());
        }
        return std::string("no fault");
    };
    EXPECT_NE(std::string::npos, GetFault(m_Folder.GetPath("pipe")).find("(it is no plain file)"));
    EXPECT_NE(std::string::npos, GetFault(m_Folder.GetPath("log")).find("(it is no plain file)"));
    EXPECT_NE(std::string::npos, GetFault("/dev/zero").find("(it is no plain file)"));
    EXPECT_NE(std::string::npos, GetFault(m_Folder.GetPath("none")).find("No such file"));
    (void)m_Folder.Write("huge", "");
    ASSERT_EQ(0, truncate(m_Folder.GetPath("huge").c_str(), 1LL << 40));
    EXPECT_NE(std::string::npos, GetFault(m_Folder.GetPath("huge")).find("(it is too large for a log)"));
}
