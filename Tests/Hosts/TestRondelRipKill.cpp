// rondel rip that is killed at each call that changes a file or a folder, its own and its encoders': what has a final
// name is whole, --resume brings what an undisturbed rip would have brought, and nothing stays in the making.

#include "KillProcessTree.h"
#include "LogSeal.h"
#include "RipTest.h"
#include <map>

namespace
{
constexpr const char* FOREIGN = "mine";

class RipKillTest : public RipTest
{
protected:
    using FILES = std::map<std::string, std::string>; // content by name

    RipKillTest() : RipTest(TEMP_IN_MEMORY) {}

    // Three tracks of less than half a second.
    void SetUp() override
    {
        (void)m_Folder.Write("disc.bin", MakePatternSectors(0, 90));
        m_strCue = m_Folder
                       .Write("disc.cue", "TITLE \"Album\"\nFILE \"disc.bin\" BINARY\n"
                                          "TRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:00:30\n"
                                          "TRACK 03 AUDIO\nINDEX 01 00:00:60\n")
                       .string();
        // The leak check at the end of a process does not work under a tracer.
        setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
    }
    void TearDown() override { unsetenv("ASAN_OPTIONS"); }

    FILES ReadAll() const
    {
        FILES files;
        for (const std::string& strName : GetOutput())
            files[strName] = ReadWholeFile(Out(strName));
        return files;
    }
    // Files of other programs that bear such names as a rip's in the making, and one of a rip that was killed here.
    void PutForeignFiles() const
    {
        std::filesystem::create_directories(Out(""));
        for (const char* pName : {"02.wav.part", "03.flac.part7", ".rondel-mine.part", "Album.log.partial"})
            (void)m_Folder.Write(std::string("out/") + pName, FOREIGN);
        (void)m_Folder.Write("out/.rondel-0123456789abcdef.part.flac", "of an encoder");
    }
    [[noreturn]] void BecomeRip(const std::vector<std::string>& aryArguments)
    {
        std::vector<std::string> aryCommand = MakeCommand(aryArguments);
        aryCommand.insert(aryCommand.begin(), HostProcess::PROGRAM);
        std::vector<char*> aryPointers;
        for (std::string& str : aryCommand)
            aryPointers.push_back(str.data());
        aryPointers.push_back(nullptr);
        const int nNull = open("/dev/null", O_RDWR);
        for (const int nStream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            (void)dup2(nNull, nStream);
        (void)execv(HostProcess::PROGRAM, aryPointers.data());
        _exit(127);
    }

    static bool IsReport(const std::string& strName)
    {
        return strName.ends_with(".log") || strName.ends_with(".json") || strName.ends_with(".unfinished");
    }
    static size_t GetNumber(const std::string& str, size_t nAt)
    {
        size_t n = 0;
        for (size_t i = 4; i-- > 0;)
            n = n << 8 | static_cast<unsigned char>(str[nAt + i]);
        return n;
    }
    // A WAV file gets its tag behind its audio in the end: with it or without, or with a part of it behind all that the
    // header speaks of, all its audio is there.
    static bool IsWholeWAV(const std::string& strContent, const std::string& strWanted)
    {
        constexpr size_t RIFF_BYTES = 8; // with the size, which tells of the tag
        constexpr size_t HEADER_BYTES = 44;
        const size_t nAudioEnd = HEADER_BYTES + GetNumber(strWanted, HEADER_BYTES - 4);
        return strContent.size() >= nAudioEnd && GetNumber(strContent, 4) + RIFF_BYTES <= strContent.size() &&
               strContent.compare(RIFF_BYTES, nAudioEnd - RIFF_BYTES, strWanted, RIFF_BYTES, nAudioEnd - RIFF_BYTES) ==
                   0;
    }
    // Whether a file of that name is all that it looks like. Times differ in reports, not in what is ripped.
    bool IsWhole(const std::string& strName, const std::string& strContent) const
    {
        if (strName.find(".part") != std::string::npos)
            return true;
        if (IsReport(strName))
            return CheckSeal(strContent) == LOG_SEAL_RIGHT;
        if (strName.ends_with(".html"))
            return strContent.ends_with("</html>\n");
        const auto it = m_Wanted.find(strName);
        if (it == m_Wanted.end())
            return false;
        return strName.ends_with(".wav") ? IsWholeWAV(strContent, it->second) : it->second == strContent;
    }
    void ExpectAllIsWhole(int nCall) const
    {
        for (const auto& [strName, strContent] : ReadAll())
            EXPECT_TRUE(IsWhole(strName, strContent)) << strName << " at call " << nCall;
    }
    void ExpectNothingElse(int nCall) const
    {
        std::set<std::string> setNames;
        for (const auto& [strName, strContent] : m_Wanted)
            setNames.insert(strName);
        for (const auto& [strName, strContent] : ReadAll())
        {
            EXPECT_TRUE(setNames.contains(strName) || strContent == FOREIGN) << strName << " at call " << nCall;
            const bool bReport = IsReport(strName) || strName.ends_with(".html");
            EXPECT_TRUE(bReport || !setNames.contains(strName) || SameBytes(m_Wanted.at(strName), strContent))
                << strName << " at call " << nCall;
            setNames.erase(strName);
        }
        EXPECT_TRUE(setNames.empty()) << *setNames.begin() << " at call " << nCall;
        for (const char* pName : {"02.wav.part", "03.flac.part7", ".rondel-mine.part", "Album.log.partial"})
            EXPECT_EQ(FOREIGN, ReadWholeFile(Out(pName))) << pName << " at call " << nCall;
    }
    // After a kill: what is there is whole; the rip goes on unless it was over.
    void Check(const std::vector<std::string>& aryArguments, int nCall)
    {
        ExpectAllIsWhole(nCall);
        const std::set<std::string> setOutput = GetOutput();
        if (!setOutput.contains("Album.log") || setOutput.contains("Album.unfinished"))
        {
            std::vector<std::string> aryResume = aryArguments;
            aryResume.push_back("--resume");
            const HOST_RESULT result = Rip(aryResume);
            EXPECT_EQ(0, result.m_nExit) << result.m_strErrors << " at call " << nCall;
        }
        ExpectAllIsWhole(nCall);
        ExpectNothingElse(nCall);
    }
    // Rips with these words; killed at every so many of those calls.
    void Run(std::vector<std::string> aryArguments, int nEvery = 1)
    {
        aryArguments.insert(aryArguments.end(), {"--mode", "burst", "--no-analysis"});
        (void)RipWell(aryArguments);
        m_Wanted = ReadAll();
        const auto Prepare = [&]
        {
            std::filesystem::remove_all(Out(""));
            PutForeignFiles();
        };
        int nKills = -1; // the last round is complete
        const auto CountAndCheck = [&](int nCall)
        {
            ++nKills;
            Check(aryArguments, nCall);
        };
        const int nCalls =
            KillTreeAtEachCall([&] { BecomeRip(aryArguments); }, CountAndCheck, Prepare, nEvery, 2000, KILL_AT_CHANGES);
        if (nCalls == KILL_NOT_ALLOWED)
            GTEST_SKIP() << "nobody may trace a process here";
        EXPECT_GT(nCalls, 30);
        std::printf("killed at %d of %d calls\n", nKills, nCalls);
    }

    // Kills a rip as soon as it has come to a place, and then each rip that goes on from there, which goes on once
    // more.
    void RunFrom(const std::function<bool()>& isThere)
    {
        const std::vector<std::string> aryArguments = {"--mode", "burst", "--no-analysis", "--encoder", "wav"};
        (void)RipWell(aryArguments);
        m_Wanted = ReadAll();
        std::filesystem::remove_all(Out(""));
        PutForeignFiles();
        const int nKilled = KillTreeAsSoonAs([&] { BecomeRip(aryArguments); },
                                             [&] { return GetOutput().contains("Album.unfinished") && isThere(); });
        if (nKilled == KILL_NOT_ALLOWED)
            GTEST_SKIP() << "nobody may trace a process here";
        ASSERT_EQ(1, nKilled);
        const std::filesystem::path kept = m_Folder.Get("kept");
        std::filesystem::copy(Out(""), kept, std::filesystem::copy_options::recursive);
        std::vector<std::string> aryResume = aryArguments;
        aryResume.push_back("--resume");
        const auto Prepare = [&]
        {
            std::filesystem::remove_all(Out(""));
            std::filesystem::copy(kept, Out(""), std::filesystem::copy_options::recursive);
        };
        EXPECT_GT(KillTreeAtEachCall([&] { BecomeRip(aryResume); }, [&](int nCall) { Check(aryArguments, nCall); },
                                     Prepare, 1, 2000, KILL_AT_CHANGES),
                  10);
    }

    FILES m_Wanted; // of an undisturbed rip
};
} // namespace

TEST_F(RipKillTest, TracksInTwoForms) { Run({"--encoder", "wav", "--encoder", "flac"}); }

TEST_F(RipKillTest, AnImageInTwoForms) { Run({"--image", "--encoder", "wav", "--encoder", "flac"}); }

TEST_F(RipKillTest, AnEncoderThatIsAnotherProgram)
{
    Run({"--encoder", "cmd.raw=input=raw; command=dd bs=50000 status=none of=%o", "--tracks", "1-2"}, 2);
}

TEST_F(RipKillTest, ARipThatGoesOn)
{
    RunFrom([this] { return GetOutput().contains("02.wav") && !GetOutput().contains("03.wav"); });
}

// Files that have their tags already get them anew.
TEST_F(RipKillTest, ARipThatGoesOnBehindTags)
{
    constexpr size_t UNTAGGED_BYTES = 44 + 30 * 2352;
    RunFrom([this] { return ReadWholeFile(Out("02.wav")).size() > UNTAGGED_BYTES; });
}
