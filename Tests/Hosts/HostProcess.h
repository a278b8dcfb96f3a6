// The host program as a user has it: a process with arguments, two streams and an exit code.

#pragma once

#include "CDA/PlayerDisc.h"
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

struct HOST_RESULT
{
    int m_nExit = -1; // the exit code; minus the signal, where one ended it; -1000 where it had to be stopped
    std::string m_strOutput;
    std::string m_strErrors;
};

inline std::string ReadWholeFile(const std::filesystem::path& path) { return ReadBlocks(path); }

class HostProcess
{
public:
    static constexpr const char* PROGRAM = RONDEL_BIN_DIR "/rondel";
    static constexpr int STOPPED = -1000;
    static constexpr std::chrono::seconds LONGEST_RUN{120};

    // Runs the host with these arguments. Where no other place is named, its output is gathered.
    static HOST_RESULT Run(const std::vector<std::string>& aryArguments, const std::string& strOutputTo = "")
    {
        std::vector<std::string> aryCommand = {PROGRAM};
        aryCommand.insert(aryCommand.end(), aryArguments.begin(), aryArguments.end());
        return RunCommand(aryCommand, strOutputTo);
    }
    // Runs a line of the shell; "$RONDEL" in it is the host.
    static HOST_RESULT RunShell(const std::string& strLine)
    {
        return RunCommand({"/bin/sh", "-c", "RONDEL='" + std::string(PROGRAM) + "'; " + strLine});
    }
    static HOST_RESULT RunCommand(const std::vector<std::string>& aryCommand, const std::string& strOutputTo = "")
    {
        const DiscFolder folder;
        const std::string strOutput = strOutputTo.empty() ? folder.Get("out").string() : strOutputTo;
        const std::string strErrors = folder.Get("err").string();
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, strOutput.c_str(), O_WRONLY | O_CREAT, 0644);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, strErrors.c_str(), O_WRONLY | O_CREAT, 0644);
        std::vector<char*> aryPointers;
        for (const std::string& str : aryCommand)
            aryPointers.push_back(const_cast<char*>(str.c_str()));
        aryPointers.push_back(nullptr);
        HOST_RESULT result;
        pid_t nProcess = 0;
        const int nFault = posix_spawn(&nProcess, aryPointers[0], &actions, nullptr, aryPointers.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        EXPECT_EQ(0, nFault) << aryCommand[0];
        if (nFault == 0)
            result.m_nExit = WaitForEnd(nProcess);
        if (strOutputTo.empty())
            result.m_strOutput = ReadWholeFile(strOutput);
        result.m_strErrors = ReadWholeFile(strErrors);
        return result;
    }

private:
    static int WaitForEnd(pid_t nProcess)
    {
        int nStatus = 0;
        const auto last = std::chrono::steady_clock::now() + LONGEST_RUN;
        while (waitpid(nProcess, &nStatus, WNOHANG) == 0)
        {
            if (std::chrono::steady_clock::now() > last)
            {
                kill(nProcess, SIGKILL);
                (void)waitpid(nProcess, &nStatus, 0);
                return STOPPED;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return WIFSIGNALED(nStatus) ? -WTERMSIG(nStatus) : WEXITSTATUS(nStatus);
    }
};

// A failure as users are to see it: one line on stderr that begins with the program's name, ends as a sentence does,
// and holds all these words; nothing on stdout.
inline void ExpectSentence(const HOST_RESULT& result, int nExit, std::initializer_list<const char*> aryWords)
{
    const std::string& strLine = result.m_strErrors;
    EXPECT_EQ(nExit, result.m_nExit) << strLine;
    EXPECT_EQ("", result.m_strOutput);
    EXPECT_TRUE(strLine.starts_with("rondel: ")) << strLine;
    EXPECT_TRUE(strLine.ends_with(".\n")) << strLine;
    EXPECT_EQ(1, std::count(strLine.begin(), strLine.end(), '\n')) << strLine;
    for (const char* pWord : aryWords)
        EXPECT_NE(std::string::npos, strLine.find(pWord)) << "no \"" << pWord << "\" in: " << strLine;
}

// The samples of a WAV with the canonical header of 44 bytes, whose sizes must be right. A tag may follow.
inline std::string GetWavSamples(const std::string& strWav)
{
    constexpr size_t HEADER_BYTES = 44;
    const auto number = [&](size_t nAt)
    {
        size_t n = 0;
        for (size_t i = 4; i-- > 0;)
            n = n << 8 | static_cast<unsigned char>(strWav[nAt + i]);
        return n;
    };
    if (strWav.size() < HEADER_BYTES)
        return "no WAV";
    EXPECT_EQ("RIFF", strWav.substr(0, 4));
    EXPECT_EQ("WAVEfmt ", strWav.substr(8, 8));
    EXPECT_EQ("data", strWav.substr(36, 4));
    EXPECT_EQ(strWav.size() - 8, number(4));
    const size_t nEnd = HEADER_BYTES + number(40);
    EXPECT_LE(nEnd, strWav.size());
    if (nEnd < strWav.size())
    {
        EXPECT_EQ("id3 ", strWav.substr(nEnd, 4));
        EXPECT_EQ(strWav.size() - nEnd - 8, number(nEnd + 4));
    }
    return strWav.substr(HEADER_BYTES, number(40));
}
