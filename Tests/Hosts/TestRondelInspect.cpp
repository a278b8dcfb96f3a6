// rondel inspect: what it says of WAV files, against what other programs say, and what it mends.

#include "HostProcess.h"
#include "Media/WavBytes.h"

namespace
{
using nlohmann::json;

class RondelInspect : public ::testing::Test
{
protected:
    void SetUp() override { setenv("XDG_CONFIG_HOME", m_Folder.Get("config").c_str(), 1); }
    std::string Get(const std::string& strName) const { return m_Folder.Get(strName).string(); }
    HOST_RESULT Here(const std::string& strLine) const
    {
        return HostProcess::RunShell("cd '" + Get("") + "' || exit 9; " + strLine);
    }
    json Inspect(const std::string& strName, int nExit, const std::string& strOption = "--json") const
    {
        const HOST_RESULT result = HostProcess::Run({"inspect", "--json", strOption, Get(strName)});
        EXPECT_EQ(nExit, result.m_nExit) << strName << ": " << result.m_strErrors << result.m_strOutput;
        EXPECT_EQ("", result.m_strErrors);
        const json list = json::parse(result.m_strOutput, nullptr, false);
        EXPECT_EQ(1U, list.size()) << list;
        return list[0];
    }
    json InspectBytes(const std::string& strWav, int nExit) const
    {
        (void)m_Folder.Write("bytes.wav", strWav);
        return Inspect("bytes.wav", nExit);
    }
    static std::string GetKinds(const json& file)
    {
        std::string strKinds;
        for (const json& problem : file["problems"])
            strKinds += problem["kind"].get<std::string>() + " ";
        return strKinds;
    }

    DiscFolder m_Folder;
};
} // namespace

TEST_F(RondelInspect, FilesOfOtherProgramsAreAsTheySay)
{
    ASSERT_EQ(0, Here("sox -n -r 44100 -b 16 -c 2 sox.wav synth 2 pluck A3; sox sox.wav -b 8 eight.wav; "
                      "sox sox.wav -e float float.wav; flac -s sox.wav -o x.flac; flac -s -d x.flac -o flac.wav; "
                      "ffmpeg -v error -nostdin -i sox.wav -ar 96000 -ac 6 -c:a pcm_s24le ffmpeg.wav")
                     .m_nExit);
    for (const char* pName : {"sox.wav", "eight.wav", "float.wav", "flac.wav", "ffmpeg.wav"})
    {
        const json file = Inspect(pName, 0);
        const std::string strSaid = Here(std::string("ffprobe -v error -of json -show_streams ") + pName).m_strOutput;
        const json stream = json::parse(strSaid)["streams"][0];
        EXPECT_EQ(stream["sample_rate"], std::to_string(file["format"]["sample_rate"].get<int>())) << pName;
        EXPECT_EQ(stream["channels"], file["format"]["channels"]) << pName;
        EXPECT_EQ(stream["bits_per_sample"], file["format"]["bits"]) << pName;
        EXPECT_EQ(stream["duration_ts"], file["audio"]["blocks"]) << pName;
        EXPECT_NEAR(std::stod(stream["duration"].get<std::string>()) * 1000, file["audio"]["milliseconds"], 1) << pName;
        EXPECT_TRUE(file["dts"].is_null()) << pName;
        EXPECT_EQ("", GetKinds(file)) << pName;
    }
}

TEST_F(RondelInspect, EveryChunkIsListedInItsPlace)
{
    const json file = InspectBytes(MakeRiff(MakeChunk("JUNK", "abc") + MakeFormatChunk({}) +
                                            MakeChunk("data", MakeAudio(8)) + MakeChunk("cue ", "")),
                                   0);
    const json chunks = json::parse(R"([{"id":"JUNK","offset":12,"bytes":3,"whole":true},
        {"id":"fmt ","offset":24,"bytes":16,"whole":true},{"id":"data","offset":48,"bytes":8,"whole":true},
        {"id":"cue ","offset":64,"bytes":0,"whole":true}])");
    EXPECT_EQ(chunks, file["chunks"]) << file;
    EXPECT_EQ(72, file["bytes"]);
    EXPECT_EQ(64, file["root_bytes"]);
    EXPECT_EQ(56, file["audio"]["offset"]);
    EXPECT_EQ(8, file["audio"]["bytes"]);
    EXPECT_EQ(2, file["audio"]["blocks"]);
    EXPECT_EQ(8, file["audio"]["bytes_behind"]);
}

TEST_F(RondelInspect, TheListingHasTheSameFacts)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(4 * 44100 * 61)));
    const HOST_RESULT result = HostProcess::Run({"inspect", Get("a.wav")});
    EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
    for (const char* pText : {"a.wav", "PCM, 2 channels, 44100 Hz, 16 bits", "1:01, 2690100 blocks", "fmt", "data"})
        EXPECT_NE(std::string::npos, result.m_strOutput.find(pText)) << pText << " in " << result.m_strOutput;
    EXPECT_EQ(std::string::npos, result.m_strOutput.find("Problems"));
}

// ---- Tags and streams

TEST_F(RondelInspect, TagsAreNamedByTheirForm)
{
    const std::string strList = MakeChunk("LIST", "INFO" + MakeChunk("INAM", std::string("Bells\0", 6)));
    const std::string strTag =
        std::string("ID3\x03\0\0\0\0\0\x0E", 10) + "TIT2" + std::string("\0\0\0\x04\0\0\0", 7) + "Ice";
    const std::string strAudio = MakeFormatChunk({}) + MakeChunk("data", MakeAudio(8));
    EXPECT_EQ("none", InspectBytes(MakeRiff(strAudio), 0)["tag"]["form"]);
    const json info = InspectBytes(MakeRiff(strAudio + strList), 0)["tag"];
    EXPECT_EQ("INFO", info["form"]);
    EXPECT_EQ(json::parse(R"(["Name: Bells"])"), info["lines"]);
    const json both = InspectBytes(MakeRiff(strAudio + strList + MakeChunk("id3 ", strTag)), 0)["tag"];
    EXPECT_EQ("ID3v2.3", both["form"]);
    ASSERT_EQ(1u, both["lines"].size());
    EXPECT_NE(std::string::npos, both["lines"][0].get<std::string>().find("Ice"));
}

TEST_F(RondelInspect, ADTSStreamIsFoundWithItsPacking)
{
    ASSERT_EQ(
        0, Here("ffmpeg -v error -nostdin -f lavfi -i sine=d=3:r=44100 -ac 2 -c:a dca -strict -2 -b:a 1411200 -f dts "
                "a.dts")
               .m_nExit);
    std::string strWords = ReadWholeFile(Get("a.dts"));
    EXPECT_EQ("16-bit big-endian", InspectBytes(MakeWav(strWords), 0)["dts"]["packing"]);
    for (size_t n = 0; n + 1 < strWords.size(); n += 2)
        std::swap(strWords[n], strWords[n + 1]);
    const json dts = InspectBytes(MakeWav(std::string(400, '\0') + strWords), 0)["dts"];
    EXPECT_EQ(json::parse(R"({"packing":"16-bit little-endian","offset":400,"frame_bytes":2048})"), dts);
    EXPECT_NE(std::string::npos,
              HostProcess::Run({"inspect", Get("bytes.wav")}).m_strOutput.find("DTS:     16-bit little-endian"));
}

// ---- Problems

namespace
{
struct PROBLEM_CASE
{
    const char* pName;
    std::string strWav;
    const char* pKinds;
    bool bOpens;
};

std::string WithRootSize(std::string strWav, unsigned int nBytes)
{
    return strWav.replace(4, 4, LittleEndian(nBytes, 4));
}
} // namespace

TEST_F(RondelInspect, ProblemsAreFound)
{
    const std::string strFormat = MakeFormatChunk({});
    const std::string strData = MakeChunk("data", MakeAudio(400));
    const std::string strGood = MakeRiff(strFormat + strData);
    const std::string strOdd = MakeRiff(strFormat + strData + MakeChunk("note", "abc"));
    const PROBLEM_CASE aryCases[] = {
        {"RootSize", WithRootSize(strGood, 0), "root_size ", true},
        {"RootSizeOfAStream", WithRootSize(strGood, 0xFFFFFFFF), "root_size ", true},
        {"DataCut", WithRootSize(strGood.substr(0, 300), 292), "chunk_cut missing ", false},
        {"Garbage", MakeRiff(strFormat + strData + "xyz"), "no_chunk ", true},
        {"NoPadByte", WithRootSize(strOdd.substr(0, strOdd.size() - 1), static_cast<unsigned int>(strOdd.size() - 9)),
         "pad_byte ", true},
        {"NoFormat", MakeRiff(strData), "missing ", false},
        {"NoData", MakeRiff(strFormat), "missing ", false},
        {"Nothing", MakeRiff(""), "missing missing ", false},
        {"TwoData", MakeRiff(strFormat + strData + strData), "twice ", true},
        {"ShortFormat", MakeRiff(MakeChunk("fmt ", "short") + strData), "format ", false},
        {"NoChannels", MakeRiff(MakeFormatChunk({1, 0, 44100, 16}) + strData), "format ", true},
        {"BlockAlign", MakeRiff(MakeFormatChunk({1, 2, 44100, 16, 5}) + strData), "format ", true},
        {"PartOfBlock", MakeRiff(strFormat + MakeChunk("data", MakeAudio(402))), "part_of_block ", true},
    };
    for (const PROBLEM_CASE& row : aryCases)
    {
        SCOPED_TRACE(row.pName);
        const json file = InspectBytes(row.strWav, 1);
        EXPECT_EQ(row.pKinds, GetKinds(file)) << file["problems"];
        EXPECT_EQ(row.bOpens, file["opens"].get<bool>());
    }
}

TEST_F(RondelInspect, WhatIsNoWavFileIsASentence)
{
    const auto write = [&](const std::string& str) { return m_Folder.Write("x.wav", str).string(); };
    const std::string strGood = MakeWav(MakeAudio(8));
    ExpectSentence(HostProcess::Run({"inspect", write("")}), 1, {"x.wav", "no WAV file"});
    ExpectSentence(HostProcess::Run({"inspect", write("RIFF")}), 1, {"x.wav", "no WAV file"});
    ExpectSentence(HostProcess::Run({"inspect", write(std::string(5000, 'x'))}), 1, {"x.wav", "no WAV file"});
    ExpectSentence(HostProcess::Run({"inspect", write("RIFX" + strGood.substr(4))}), 1, {"x.wav", "no WAV file"});
    ExpectSentence(HostProcess::Run({"inspect", Get("none.wav")}), 1, {"none.wav"});
    ExpectSentence(HostProcess::Run({"inspect", Get("")}), 1, {});
    ASSERT_EQ(0, Here("ffmpeg -v error -nostdin -f lavfi -i sine=d=1 -rf64 always rf64.wav").m_nExit);
    ExpectSentence(HostProcess::Run({"inspect", Get("rf64.wav")}), 1, {"rf64.wav", "RF64", "4 GiB"});
    ExpectSentence(HostProcess::Run({"inspect"}), 2, {"FILE", "'rondel inspect --help'"});
}

TEST_F(RondelInspect, AFileCutAnywhereIsSurvived)
{
    const std::string strWav = MakeRiff(MakeFormatChunk({}) + MakeChunk("LIST", "INFO" + MakeChunk("INAM", "ab")) +
                                        MakeChunk("data", MakeAudio(8)));
    for (size_t n = 0; n < strWav.size(); n += 3)
    {
        const HOST_RESULT result = HostProcess::Run({"inspect", m_Folder.Write("x.wav", strWav.substr(0, n)).string()});
        EXPECT_EQ(1, result.m_nExit) << n << ": " << result.m_strErrors;
    }
}

TEST_F(RondelInspect, NamesOfChunksDoNotSteerTheTerminal)
{
    (void)m_Folder.Write("x.wav", MakeRiff(MakeFormatChunk({}) + MakeChunk("data", "") + MakeChunk("\x1B[2J", "")));
    const HOST_RESULT result = HostProcess::Run({"inspect", Get("x.wav")});
    EXPECT_EQ(std::string::npos, result.m_strOutput.find('\x1B')) << result.m_strOutput;
    EXPECT_FALSE(Inspect("x.wav", 0).is_discarded());
}

TEST_F(RondelInspect, SeveralFilesStandInTheirOrderAndOneThatFailsIsALine)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(8)));
    (void)m_Folder.Write("b.wav", WithRootSize(MakeWav(MakeAudio(16)), 77));
    (void)m_Folder.Write("none.txt", "text");
    const HOST_RESULT shown = Here("\"$RONDEL\" inspect a.wav none.txt b.wav 2>&1");
    EXPECT_EQ(1, shown.m_nExit);
    const size_t nFirst = shown.m_strOutput.find("a.wav\n");
    const size_t nFailed = shown.m_strOutput.find("\nrondel: none.txt ");
    const size_t nLast = shown.m_strOutput.find("\n\nb.wav\n");
    EXPECT_TRUE(nFirst == 0 && nFirst < nFailed && nFailed < nLast && nLast != std::string::npos) << shown.m_strOutput;

    const HOST_RESULT listed = Here("\"$RONDEL\" inspect --json --repair a.wav none.txt b.wav");
    EXPECT_EQ(1, listed.m_nExit) << "one could not be read";
    ExpectSentence({1, "", listed.m_strErrors}, 1, {"none.txt", "no WAV file"});
    const json list = json::parse(listed.m_strOutput, nullptr, false);
    ASSERT_EQ(2U, list.size());
    EXPECT_EQ(Get("a.wav"), list[0]["file"]);
    EXPECT_EQ(Get("b.wav"), list[1]["file"]);
    EXPECT_TRUE(list[1]["repaired"].get<bool>());
    EXPECT_EQ(0, Here("\"$RONDEL\" inspect a.wav b.wav").m_nExit);
}

// ---- The repair

TEST_F(RondelInspect, TheRootSizeIsMendedAndNothingElse)
{
    const std::string strGood =
        MakeRiff(MakeFormatChunk({}) + MakeChunk("data", MakeAudio(400)) + MakeChunk("LIST", "INFO"));
    (void)m_Folder.Write("a.wav", WithRootSize(strGood, 77));
    const json before = Inspect("a.wav", 1);
    EXPECT_EQ("root_size ", GetKinds(before));
    EXPECT_EQ(WithRootSize(strGood, 77), ReadWholeFile(Get("a.wav"))) << "only on request";
    const json file = Inspect("a.wav", 0, "--repair");
    EXPECT_TRUE(file["repaired"].get<bool>());
    EXPECT_EQ("", GetKinds(file));
    EXPECT_TRUE(SameBytes(strGood, ReadWholeFile(Get("a.wav"))));
    EXPECT_FALSE(Inspect("a.wav", 0, "--repair")["repaired"].get<bool>()) << "there is nothing left to mend";
    EXPECT_TRUE(SameBytes(strGood, ReadWholeFile(Get("a.wav"))));
}

TEST_F(RondelInspect, AFileIsMendedByItsURL)
{
    const std::string strGood = MakeWav(MakeAudio(400));
    (void)m_Folder.Write("a.wav", WithRootSize(strGood, 77));
    EXPECT_EQ(0, HostProcess::Run({"inspect", "--repair", "file://" + Get("a.wav")}).m_nExit);
    EXPECT_TRUE(SameBytes(strGood, ReadWholeFile(Get("a.wav"))));
}

TEST_F(RondelInspect, AReadOnlyFileIsNotMended)
{
    const std::string strBad = WithRootSize(MakeWav(MakeAudio(400)), 77);
    (void)m_Folder.Write("a.wav", strBad);
    ASSERT_EQ(0, Here("chmod 444 a.wav").m_nExit);
    const HOST_RESULT result = HostProcess::Run({"inspect", "--repair", Get("a.wav")});
    EXPECT_EQ(1, result.m_nExit);
    EXPECT_EQ("", result.m_strOutput);
    if (geteuid() == 0) // others are told by the system
        ExpectSentence(result, 1, {"a.wav", "is read-only", "chmod"});
    EXPECT_TRUE(SameBytes(strBad, ReadWholeFile(Get("a.wav"))));
}

TEST_F(RondelInspect, OtherProblemsStayAfterARepair)
{
    const std::string strCut = MakeWav(MakeAudio(400)).substr(0, 300);
    (void)m_Folder.Write("a.wav", strCut);
    const json file = Inspect("a.wav", 1, "--repair");
    EXPECT_TRUE(file["repaired"].get<bool>());
    EXPECT_EQ("chunk_cut missing ", GetKinds(file));
    EXPECT_TRUE(SameBytes(WithRootSize(strCut, 292), ReadWholeFile(Get("a.wav"))));
}

// The size has 32 bits: what it would be cut to is no better than what is there.
TEST_F(RondelInspect, AFileBeyond4GiBIsNotMended)
{
    const std::string strHead = WithRootSize(MakeRiff(MakeFormatChunk({})) + "data" + LittleEndian(0xFFFFFF00, 4), 77);
    std::filesystem::resize_file(m_Folder.Write("a.wav", strHead), 0x100000100);
    EXPECT_EQ("root_size ", GetKinds(Inspect("a.wav", 1)).substr(0, 10));
    ExpectSentence(HostProcess::Run({"inspect", "--repair", Get("a.wav")}), 1, {"a.wav", "4 GiB"});
    EXPECT_EQ(0, Here("head -c " + std::to_string(strHead.size()) + " a.wav >head").m_nExit);
    EXPECT_TRUE(SameBytes(strHead, ReadWholeFile(Get("head"))));
}
