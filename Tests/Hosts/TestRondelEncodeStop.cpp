// rondel encode, stopped and killed in the middle; its progress on a terminal; the tags that go with the audio.

#include "HostProcess.h"
#include "Media/WavBytes.h"

namespace
{
class RondelEncodeMore : public ::testing::Test
{
protected:
    void SetUp() override { setenv("XDG_CONFIG_HOME", m_Folder.Get("config").c_str(), 1); }
    std::string Get(const std::string& strName) const { return m_Folder.Get(strName).string(); }
    HOST_RESULT Here(const std::string& strLine) const
    {
        return HostProcess::RunShell("cd '" + Get("") + "' || exit 9; " + strLine);
    }
    size_t CountFiles() const
    {
        size_t nFiles = 0;
        for (const auto& entry : std::filesystem::directory_iterator(Get("")))
            nFiles += entry.is_regular_file() ? 1u : 0u;
        return nFiles;
    }

    DiscFolder m_Folder;
};

// A program that takes a while, and says that it has begun.
constexpr const char* SLOW =
    "--encoder \"cmd.raw=sh -c 'touch begun; for i in 1 2 3 4 5 6 7 8; do head -c 300000; sleep "
    "0.3; done >%o; cat >>%o'\"";
constexpr const char* UNTIL_BEGUN = "n=0; while [ ! -e begun ] && [ $n -lt 500 ]; do sleep 0.02; n=$((n+1)); done; ";

// An ID3v2.3 tag with text frames in Latin-1.
std::string MakeTag(const std::vector<std::pair<std::string, std::string>>& aryFrames)
{
    std::string strFrames;
    for (const auto& [strId, strText] : aryFrames)
        strFrames +=
            strId + std::string(3, '\0') + static_cast<char>(strText.size() + 1) + std::string(3, '\0') + strText;
    return "ID3" + std::string("\x03\0\0\0\0\0", 6) + static_cast<char>(strFrames.size()) + strFrames;
}
} // namespace

TEST_F(RondelEncodeMore, ASignalLeavesNothingIncomplete)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(3000000)));
    (void)m_Folder.Write("b.wav", MakeWav(MakeAudio(4000)));
    for (const char* pSignal : {"INT", "TERM", "HUP"})
    {
        std::filesystem::remove(m_Folder.Get("begun"));
        const HOST_RESULT result = Here("env --default-signal=INT \"$RONDEL\" encode a.wav b.wav " + std::string(SLOW) +
                                        " & p=$!; " + UNTIL_BEGUN + "kill -" + pSignal + " $p; wait $p");
        ExpectSentence(result, 1, {"stopped", "0 of 2 files", "nothing incomplete"});
        EXPECT_EQ(3u, CountFiles()) << pSignal << ": both files, and the mark";
    }
}

TEST_F(RondelEncodeMore, AfterAKillNothingHasItsFinalName)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(3000000)));
    (void)Here("\"$RONDEL\" encode a.wav " + std::string(SLOW) + " & p=$!; " + UNTIL_BEGUN + "kill -KILL $p; wait $p");
    EXPECT_TRUE(std::filesystem::exists(m_Folder.Get("begun")));
    EXPECT_FALSE(std::filesystem::exists(m_Folder.Get("a.raw")));
}

TEST_F(RondelEncodeMore, ProgressIsShownOnATerminal)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(3000000)));
    const HOST_RESULT result =
        Here("script -qec \"'$RONDEL' encode a.wav --encoder 'cmd.raw=sh -c \\\"for i in 1 2 3 4 5 6 "
             "7 8; do head -c 300000; sleep 0.3; done >%o; cat >>%o\\\"'\" /dev/null");
    EXPECT_EQ(0, result.m_nExit) << result.m_strOutput;
    EXPECT_NE(std::string::npos, result.m_strOutput.find("a.wav: ")) << result.m_strOutput;
    EXPECT_NE(std::string::npos, result.m_strOutput.find(" %, ")) << result.m_strOutput;
    EXPECT_TRUE(std::filesystem::exists(m_Folder.Get("a.raw")));
}

TEST_F(RondelEncodeMore, TagsGoWithTheAudio)
{
    const std::string strTag = MakeTag({{"TIT2", "Song"}, {"TPE1", "Singer"}, {"TALB", "Disc"}, {"TRCK", "3/12"}});
    (void)m_Folder.Write(
        "a.wav", MakeRiff(MakeFormatChunk({}) + MakeChunk("data", MakeAudio(4000)) + MakeChunk("id3 ", strTag)));
    EXPECT_EQ("", Here("\"$RONDEL\" encode a.wav --encoder flac").m_strErrors);
    const std::string strTags = Here("metaflac --export-tags-to=- a.flac").m_strOutput;
    for (const char* pLine : {"TITLE=Song\n", "ARTIST=Singer\n", "ALBUM=Disc\n", "TRACKNUMBER=3"})
        EXPECT_NE(std::string::npos, strTags.find(pLine)) << pLine << " in " << strTags;
    EXPECT_EQ("", Here("\"$RONDEL\" encode a.wav --encoder flac -o bare.flac --no-tags").m_strErrors);
    EXPECT_EQ("", Here("metaflac --export-tags-to=- bare.flac").m_strOutput);
}

TEST_F(RondelEncodeMore, OwnTextsWithNamesOfFieldsGiveWay)
{
    const std::string strTag = MakeTag({{"TXXX", std::string("TITLE\0junk", 10)},
                                        {"TIT2", "T"},
                                        {"TYER", "2020"},
                                        {"TXXX", std::string("YEAR\0001999", 9)},
                                        {"TXXX", std::string("replaygain_x\0y", 14)}});
    (void)m_Folder.Write(
        "a.wav", MakeRiff(MakeFormatChunk({}) + MakeChunk("data", MakeAudio(4000)) + MakeChunk("id3 ", strTag)));
    for (const char* pEncoder : {"flac", "mp3", "opus"})
    {
        EXPECT_EQ("", Here("\"$RONDEL\" encode a.wav --encoder " + std::string(pEncoder)).m_strErrors);
        const std::string strTags =
            Here("ffprobe -v error -show_entries format_tags:stream_tags -of default=nw=1 a." + std::string(pEncoder))
                .m_strOutput;
        for (const char* pJunk : {"junk", "1999"})
            EXPECT_EQ(std::string::npos, strTags.find(pJunk)) << strTags;
        for (const char* pValue : {"=T\n", "=2020"})
            EXPECT_NE(std::string::npos, strTags.find(pValue)) << strTags;
        const bool bGain = strTags.find("=y\n") != std::string::npos;
        EXPECT_EQ(pEncoder != std::string("opus"), bGain) << strTags;
    }
}

TEST_F(RondelEncodeMore, AnInfoListGoesWithTheAudio)
{
    ASSERT_EQ(0, Here("ffmpeg -v error -nostdin -f lavfi -i sine=d=1 -metadata title='Das L\xC3\xA4uten' -metadata "
                      "artist=Me -metadata track=7 -metadata date=2001 a.wav")
                     .m_nExit);
    EXPECT_EQ("", Here("\"$RONDEL\" encode a.wav --encoder flac").m_strErrors);
    const std::string strTags = Here("metaflac --no-utf8-convert --export-tags-to=- a.flac").m_strOutput;
    for (const char* pLine : {"TITLE=Das L\xC3\xA4uten\n", "ARTIST=Me\n", "TRACKNUMBER=7\n", "DATE=2001\n"})
        EXPECT_NE(std::string::npos, strTags.find(pLine)) << pLine << " in " << strTags;
}

TEST_F(RondelEncodeMore, APictureGoesWithTheAudio)
{
    ASSERT_EQ(0, Here("ffmpeg -v error -nostdin -f lavfi -i color=red:s=8x8 -frames:v 1 cover.png").m_nExit);
    const std::string strPicture = ReadWholeFile(Get("cover.png"));
    const std::string strBody = std::string(1, '\0') + "image/png" + std::string("\0\x03\0", 3) + strPicture;
    const size_t n = strBody.size();
    std::string strTag = "APIC" + std::string(2, '\0') + static_cast<char>(n >> 8) + static_cast<char>(n) +
                         std::string(2, '\0') + strBody;
    const size_t nTag = strTag.size();
    strTag =
        "ID3" + std::string("\x03\0\0\0\0", 5) + static_cast<char>(nTag >> 7) + static_cast<char>(nTag & 127) + strTag;
    (void)m_Folder.Write(
        "a.wav", MakeRiff(MakeFormatChunk({}) + MakeChunk("data", MakeAudio(4000)) + MakeChunk("id3 ", strTag)));
    EXPECT_EQ("", Here("\"$RONDEL\" encode a.wav --encoder flac").m_strErrors);
    EXPECT_EQ(0, Here("metaflac --export-picture-to=out.png a.flac").m_nExit);
    EXPECT_TRUE(SameBytes(strPicture, ReadWholeFile(Get("out.png"))));
}

TEST_F(RondelEncodeMore, ADTSStreamIsKeptWithoutLossAndWithANote)
{
    ASSERT_EQ(
        0, Here("ffmpeg -v error -nostdin -f lavfi -i sine=d=3:r=44100 -ac 2 -c:a dca -strict -2 -b:a 1411200 -f dts "
                "a.dts")
               .m_nExit);
    std::string strWords = ReadWholeFile(Get("a.dts"));
    for (size_t n = 0; n + 1 < strWords.size(); n += 2)
        std::swap(strWords[n], strWords[n + 1]);
    (void)m_Folder.Write("a.wav", MakeWav(strWords));
    EXPECT_EQ("rondel: note: a.wav holds a DTS stream; only an encoder without loss keeps it.\n",
              Here("\"$RONDEL\" encode a.wav --encoder flac").m_strErrors);
    EXPECT_EQ(0, Here("flac -s -d --force-raw-format --endian=little --sign=signed a.flac -o b.raw").m_nExit);
    EXPECT_TRUE(SameBytes(strWords, ReadWholeFile(Get("b.raw"))));
}
