// A disc of three tracks with hidden audio and texts, and rips of it by the program as a user has it.

#pragma once

#include "HostProcess.h"
#include <set>

class RipTest : public ::testing::Test
{
protected:
    explicit RipTest(TEMP_PLACE ePlace = TEMP_ON_DISK) : m_Folder(ePlace) {}

    static constexpr int SECTORS = 1200;
    static constexpr int STARTS[] = {0, 30, 330, 800, SECTORS}; // hidden audio, tracks 1 to 3, the end
    static constexpr const char* TITLES[] = {"Hidden audio", "One", "Two / Zwei", "Last"};

    void SetUp() override
    {
        (void)m_Folder.Write("disc.bin", MakePatternSectors(0, SECTORS));
        m_strCue = m_Folder
                       .Write("disc.cue", "TITLE \"Album\"\nPERFORMER \"Band\"\nFILE \"disc.bin\" BINARY\n"
                                          "TRACK 01 AUDIO\nTITLE \"One\"\nISRC DEABC2400001\n"
                                          "INDEX 00 00:00:00\nINDEX 01 00:00:30\n"
                                          "TRACK 02 AUDIO\nTITLE \"Two / Zwei\"\nPERFORMER \"Guest\"\n"
                                          "INDEX 00 00:04:00\nINDEX 01 00:04:30\n"
                                          "TRACK 03 AUDIO\nTITLE \"Last\"\nINDEX 01 00:10:50\n")
                       .string();
    }

    // Into the folder "out", with plain names.
    std::vector<std::string> MakeCommand(std::vector<std::string> aryArguments)
    {
        aryArguments.insert(aryArguments.begin(), {"rip", m_strCue, "--to", Out("").string(), "--name", "%{track}"});
        return aryArguments;
    }
    HOST_RESULT Rip(const std::vector<std::string>& aryArguments = {})
    {
        return HostProcess::Run(MakeCommand(aryArguments));
    }
    HOST_RESULT RipWell(const std::vector<std::string>& aryArguments = {})
    {
        const HOST_RESULT result = Rip(aryArguments);
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        EXPECT_EQ("", result.m_strErrors);
        return result;
    }
    // A line of the shell that runs the rip with something ahead of it, such as a limit or a timeout.
    HOST_RESULT RipBehind(const std::string& strAhead, const std::vector<std::string>& aryArguments = {})
    {
        std::string strLine = strAhead + " \"$RONDEL\"";
        for (const std::string& str : MakeCommand(aryArguments))
            strLine += " '" + str + "'";
        return HostProcess::RunShell(strLine);
    }
    void WriteProfile(const std::string& strProfile) { (void)m_Folder.Write("disc.cue.drive", strProfile); }
    void RemoveProfile() { std::filesystem::remove(m_Folder.Get("disc.cue.drive")); }

    std::filesystem::path Out(const std::string& strName) const { return m_Folder.Get("out/" + strName); }
    // All there is under "out", relative, with what begins with a dot.
    std::set<std::string> GetOutput() const
    {
        std::set<std::string> setNames;
        if (std::filesystem::exists(Out("")))
            for (const auto& entry : std::filesystem::recursive_directory_iterator(Out("")))
                if (!entry.is_directory())
                    setNames.insert(entry.path().lexically_relative(Out("")).string());
        return setNames;
    }
    static std::string GetPiece(int nPiece)
    {
        return MakePatternSectors(STARTS[nPiece], STARTS[nPiece + 1] - STARTS[nPiece]);
    }
    void ExpectWav(const std::string& strName, const std::string& strSamples) const
    {
        EXPECT_TRUE(SameBytes(strSamples, GetWavSamples(ReadWholeFile(Out(strName))))) << strName;
    }
    void ExpectTracks() const
    {
        for (int n = 1; n <= 3; ++n)
            ExpectWav("0" + std::to_string(n) + ".wav", GetPiece(n));
    }
    nlohmann::json GetLog() const { return nlohmann::json::parse(ReadWholeFile(Out("Album.json")), nullptr, false); }
    // What a decoder makes of a file: raw samples.
    std::string Decode(const std::string& strLine)
    {
        const HOST_RESULT result =
            HostProcess::RunShell("cd '" + Out("").string() + "' && " + strLine + " 2>/dev/null");
        EXPECT_EQ(0, result.m_nExit) << strLine;
        return result.m_strOutput;
    }

    const std::set<std::string> m_setLogs = {"Album.html", "Album.json", "Album.log"};
    DiscFolder m_Folder;
    std::string m_strCue;
};

inline std::set<std::string> Join(std::set<std::string> setNames, const std::set<std::string>& setMore)
{
    setNames.insert(setMore.begin(), setMore.end());
    return setNames;
}
