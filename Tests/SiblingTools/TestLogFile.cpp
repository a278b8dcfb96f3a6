#include "LogFile.h"
#include "TempFolder.h"
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <sstream>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
std::string ReadAll(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool Append(LogFile& file, const std::string& strText) { return file.Append(strText.data(), strText.size()); }
} // namespace

TEST(LogFile, IsMadeByTheFirstLineOnly)
{
    TempFolder folder;
    LogFile file(folder.GetPath("a.log"));
    EXPECT_FALSE(std::filesystem::exists(folder.GetPath("a.log")));
    EXPECT_TRUE(Append(file, "one\n"));
    EXPECT_EQ(ReadAll(folder.GetPath("a.log")), "one\n");
}

TEST(LogFile, AppendsToWhatIsThere)
{
    TempFolder folder;
    const std::string strPath = folder.Write("a.log", "old\n");
    {
        LogFile file(strPath);
        EXPECT_TRUE(Append(file, "one\n"));
        EXPECT_TRUE(Append(file, "two\n"));
    }
    EXPECT_EQ(ReadAll(strPath), "old\none\ntwo\n");
}

TEST(LogFile, TurnsOverWhenTheLimitWouldBePassed)
{
    TempFolder folder;
    const std::string strPath = folder.GetPath("a.log");
    LogFile file(strPath, 10, 3);
    for (const char* pLine : {"aaaa\n", "bbbb\n", "cccc\n", "dddd\n", "eeee\n", "ffff\n", "gggg\n"})
        EXPECT_TRUE(Append(file, pLine));
    EXPECT_EQ(ReadAll(strPath), "gggg\n");
    EXPECT_EQ(ReadAll(strPath + ".1"), "eeee\nffff\n");
    EXPECT_EQ(ReadAll(strPath + ".2"), "cccc\ndddd\n");
    EXPECT_FALSE(std::filesystem::exists(strPath + ".3"));
}

TEST(LogFile, KeepsEightMebibytesInEachOfThreeFiles)
{
    TempFolder folder;
    const std::string strPath = folder.GetPath("a.log");
    const std::string strMebibyte(1024 * 1024, 'x');
    LogFile file(strPath);
    for (int n = 0; n < 8 * 3 + 1; ++n)
        EXPECT_TRUE(Append(file, strMebibyte));
    EXPECT_EQ(std::filesystem::file_size(strPath), 1024u * 1024);
    EXPECT_EQ(std::filesystem::file_size(strPath + ".1"), 8u * 1024 * 1024);
    EXPECT_EQ(std::filesystem::file_size(strPath + ".2"), 8u * 1024 * 1024);
    EXPECT_FALSE(std::filesystem::exists(strPath + ".3"));
}

TEST(LogFile, ALineLargerThanTheLimitIsWrittenWhole)
{
    TempFolder folder;
    LogFile file(folder.GetPath("a.log"), 4, 3);
    EXPECT_TRUE(Append(file, "long line\n"));
    EXPECT_TRUE(Append(file, "another\n"));
    EXPECT_EQ(ReadAll(folder.GetPath("a.log")), "another\n");
    EXPECT_EQ(ReadAll(folder.GetPath("a.log.1")), "long line\n");
}

TEST(LogFile, OpensTheFileAnewThatTookItsName)
{
    TempFolder folder;
    const std::string strPath = folder.GetPath("a.log");
    LogFile file(strPath);
    EXPECT_TRUE(Append(file, "one\n"));
    std::filesystem::rename(strPath, strPath + ".away");
    EXPECT_TRUE(Append(file, "two\n"));
    std::filesystem::remove(strPath);
    EXPECT_TRUE(Append(file, "three\n"));
    EXPECT_EQ(ReadAll(strPath + ".away"), "one\n");
    EXPECT_EQ(ReadAll(strPath), "three\n");
}

TEST(LogFile, AFileThatIsJustTurnedOverByAnotherGoesOnGrowing)
{
    TempFolder folder;
    const std::string strPath = folder.Write("a.log", "12345678\n");
    const int nOther = open(strPath.c_str(), O_RDONLY);
    ASSERT_EQ(flock(nOther, LOCK_EX), 0);
    LogFile file(strPath, 10, 3);
    EXPECT_TRUE(Append(file, "abcd\n"));
    EXPECT_EQ(ReadAll(strPath), "12345678\nabcd\n");
    close(nOther);
    EXPECT_TRUE(Append(file, "efgh\n"));
    EXPECT_EQ(ReadAll(strPath), "efgh\n");
    EXPECT_EQ(ReadAll(strPath + ".1"), "12345678\nabcd\n");
}

TEST(LogFile, WhatALinkNamesIsNotMoved)
{
    TempFolder folder;
    const std::string strReal = folder.Write("real.log", "12345678\n");
    const std::string strLink = folder.GetPath("link.log");
    std::filesystem::create_symlink(strReal, strLink);
    LogFile file(strLink, 10, 3);
    EXPECT_TRUE(Append(file, "abcd\n"));
    EXPECT_EQ(ReadAll(strReal), "12345678\nabcd\n");
    EXPECT_TRUE(std::filesystem::is_symlink(strLink));
    EXPECT_FALSE(std::filesystem::exists(strLink + ".1"));
}

TEST(LogFile, SaysWhyItCantBeWritten)
{
    TempFolder folder;
    LogFile missing(folder.GetPath("none/a.log"));
    EXPECT_FALSE(Append(missing, "x\n"));
    EXPECT_EQ(errno, ENOENT);
    LogFile directory(folder.GetPath());
    EXPECT_FALSE(Append(directory, "x\n"));
    EXPECT_EQ(errno, EISDIR);
    LogFile full("/dev/full");
    EXPECT_FALSE(Append(full, "x\n"));
    EXPECT_EQ(errno, ENOSPC);
}

// Two processes write and turn over at once. With room for all old files nothing may be missing, torn or out of order.
TEST(LogFile, TwoProcessesTurnOverWithoutLosingALine)
{
    constexpr int LINES = 1500;
    TempFolder folder;
    const std::string strPath = folder.GetPath("a.log");
    pid_t aryChildren[2];
    for (int nChild = 0; nChild < 2; ++nChild)
        if ((aryChildren[nChild] = fork()) == 0)
        {
            LogFile file(strPath, 1000, 400);
            bool bWritten = true;
            for (int n = 0; n < LINES; ++n)
                bWritten =
                    Append(file, std::to_string(nChild) + " " + std::to_string(n) + " of the lines\n") && bWritten;
            _exit(bWritten ? 0 : 1);
        }
    for (pid_t nChild : aryChildren)
    {
        int nStatus = -1;
        ASSERT_EQ(waitpid(nChild, &nStatus, 0), nChild);
        EXPECT_EQ(nStatus, 0);
    }

    std::string strAll;
    int nFiles = 0;
    for (int nAge = 399; nAge >= 0; --nAge)
        if (const std::string strName = nAge > 0 ? strPath + "." + std::to_string(nAge) : strPath;
            std::filesystem::exists(strName))
        {
            ++nFiles;
            strAll += ReadAll(strName);
        }
    EXPECT_GT(nFiles, 3);
    std::istringstream stream(strAll);
    std::map<int, std::vector<int>> seen;
    for (std::string strLine; std::getline(stream, strLine);)
    {
        int nChild = -1;
        int nLine = -1;
        char szRest[16] = {};
        ASSERT_EQ(std::sscanf(strLine.c_str(), "%d %d of the %15[a-z]", &nChild, &nLine, szRest), 3) << strLine;
        EXPECT_STREQ(szRest, "lines");
        seen[nChild].push_back(nLine);
    }
    for (int nChild = 0; nChild < 2; ++nChild)
    {
        ASSERT_EQ(seen[nChild].size(), static_cast<size_t>(LINES));
        for (int n = 0; n < LINES; ++n)
            EXPECT_EQ(seen[nChild][static_cast<size_t>(n)], n);
    }
}
