// Other people's programs read the same disc images as judges: what is on them, and every sample. A judge that is not
// installed is a failure: a test that asks nobody proves nothing.

#include "HostProcess.h"
#include <regex>

namespace
{
using json = nlohmann::json;

struct JUDGED_SHEET
{
    const char* pName;
    const char* pSheet; // of one file "a.bin" of 1000 sectors
};

const JUDGED_SHEET s_arySheets[] = {
    {"OneTrack", "TRACK 01 AUDIO\nINDEX 01 00:00:00\n"},
    {"ThreeTracks", "TRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:04:10\nTRACK 03 AUDIO\n"
                    "INDEX 01 00:08:74\n"},
    {"Pregaps", "TRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 00 00:04:00\nINDEX 01 00:06:00\n"
                "INDEX 02 00:07:00\nTRACK 03 AUDIO\nINDEX 00 00:08:00\nINDEX 01 00:08:37\n"},
    {"Flags", "TRACK 01 AUDIO\nFLAGS DCP\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nFLAGS PRE\nINDEX 01 00:04:00\n"
              "TRACK 03 AUDIO\nFLAGS 4CH\nINDEX 01 00:08:00\n"},
    {"DataFirst", "TRACK 01 MODE1/2352\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 00 00:04:00\nINDEX 01 00:06:00\n"
                  "TRACK 03 AUDIO\nINDEX 01 00:10:00\n"},
};

class RondelJudges : public ::testing::Test
{
protected:
    void SetUp() override { (void)m_Folder.Write("a.bin", MakePatternSectors(0, 1000)); }
    // The judges look for a sheet's BIN under the sheet's own name.
    std::string WriteSheet(const char* pSheet) const
    {
        return m_Folder.Write("a.cue", std::string("FILE \"a.bin\" BINARY\n") + pSheet).string();
    }
    static json GetTracks(const std::string& strCue)
    {
        const HOST_RESULT result = HostProcess::Run({"info", "--json", strCue});
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        return json::parse(result.m_strOutput)["tracks"];
    }
    static void RequireJudge(const std::string& strProgram)
    {
        ASSERT_EQ(0, HostProcess::RunShell("command -v " + strProgram).m_nExit)
            << strProgram << " is not installed; this test cannot do without it";
    }

    DiscFolder m_Folder;
};

// The lines of cd-info's track list: "  2: 00:08:00  000450 audio  false  no    2        no". Its lead-out is "170:".
std::vector<std::string> ParseJudgement(const std::string& strOutput, int& nLeadOut)
{
    static const std::regex s_track(
        R"( *(\d+): \d\d:\d\d:\d\d +(\d+) (audio|data) +\S+ +(yes|no)(?: +(\d) +(yes|no))?.*)");
    static const std::regex s_leadOut(R"(170: \d\d:\d\d:\d\d +(\d+) leadout.*)");
    std::vector<std::string> aryLines;
    std::istringstream stream(strOutput);
    for (std::string strLine; std::getline(stream, strLine);)
    {
        std::smatch match;
        if (std::regex_match(strLine, match, s_leadOut))
            nLeadOut = std::stoi(match[1]);
        else if (std::regex_match(strLine, match, s_track))
            aryLines.push_back(match[1].str() + " from " + std::to_string(std::stoi(match[2])) + " " + match[3].str() +
                               (match[3] == "audio" ? ", copy " + match[4].str() + ", channels " + match[5].str() +
                                                          ", pre-emphasis " + match[6].str()
                                                    : ""));
    }
    return aryLines;
}

std::string Describe(const json& track)
{
    std::string str = std::to_string(track["number"].get<int>()) + " from " +
                      std::to_string(track["start_sector"].get<int>()) + " " + track["type"].get<std::string>();
    if (track["type"] == "audio")
        str += std::string(", copy ") + (track["copy_prohibited"].get<bool>() ? "no" : "yes") + ", channels " +
               std::to_string(track["channels"].get<int>()) + ", pre-emphasis " +
               (track["pre_emphasis"].get<bool>() ? "yes" : "no");
    return str;
}
} // namespace

TEST_F(RondelJudges, CdInfoListsTheSameTracks)
{
    RequireJudge("cd-info");
    for (const JUDGED_SHEET& row : s_arySheets)
    {
        const std::string strCue = WriteSheet(row.pSheet);
        const HOST_RESULT judge =
            HostProcess::RunShell("cd '" + m_Folder.Get("").string() +
                                  "' && cd-info --no-device-info --no-cddb --no-analyze --cue-file=a.cue");
        int nLeadOut = 0;
        std::vector<std::string> aryOurs;
        const json tracks = GetTracks(strCue);
        for (const json& track : tracks)
            aryOurs.push_back(Describe(track));
        EXPECT_EQ(ParseJudgement(judge.m_strOutput, nLeadOut), aryOurs) << row.pName << "\n" << judge.m_strOutput;
        const json& last = tracks.back();
        EXPECT_EQ(nLeadOut, last["start_sector"].get<int>() + last["sectors"].get<int>()) << row.pName;
    }
}

TEST_F(RondelJudges, CdParanoiaReadsTheSameSamples)
{
    RequireJudge("cd-paranoia");
    for (const JUDGED_SHEET& row : s_arySheets)
    {
        const std::string strCue = WriteSheet(row.pSheet);
        for (const json& track : GetTracks(strCue))
        {
            if (track["type"] != "audio")
                continue;
            const std::string strTrack = std::to_string(track["number"].get<int>());
            const HOST_RESULT judge = HostProcess::RunShell("cd '" + m_Folder.Get("").string() +
                                                            "' && rm -f judge.pcm && cd-paranoia -Z -q -c -d " +
                                                            "a.cue -r " + strTrack + " judge.pcm");
            const std::string strJudge = ReadWholeFile(m_Folder.Get("judge.pcm"));
            ASSERT_EQ(track["sectors"].get<size_t>() * LY_CD_SECTOR_BYTES, strJudge.size())
                << row.pName << ", track " << strTrack << judge.m_strErrors;
            const HOST_RESULT ours = HostProcess::Run({"play", strCue, strTrack, "-o", "-"});
            EXPECT_TRUE(SameBytes(strJudge.substr(0, strJudge.size() / REQUEST_BYTES * REQUEST_BYTES),
                                  GetWavSamples(ours.m_strOutput)))
                << row.pName << ", track " << strTrack << ours.m_strErrors;
        }
    }
}
