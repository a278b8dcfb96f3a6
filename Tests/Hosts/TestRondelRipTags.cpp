// Tags of ripped files, as other programs read them: texts, numbers, pictures and replay gain.

#include "RipTest.h"
#include <cmath>

namespace
{
class RipTagsTest : public RipTest
{
protected:
    // "name=value" lines of a file's tags, by ffprobe.
    std::string Probe(const std::string& strName)
    {
        return Decode("ffprobe -v error -show_entries format_tags:stream_tags -of default=nw=1 '" + strName + "'");
    }
    void ExpectLines(const std::string& strName, const std::vector<std::string>& aryLines)
    {
        const std::string strTags = Probe(strName);
        for (const std::string& strLine : aryLines)
            EXPECT_NE(std::string::npos, strTags.find("TAG:" + strLine + "\n")) << strLine << " in\n" << strTags;
    }
    // Both logs know the files as they are now.
    void ExpectCheckedLog()
    {
        for (const char* pLog : {"Album.log", "Album.json"})
        {
            const HOST_RESULT result = HostProcess::Run({"check", Out(pLog).string()});
            EXPECT_EQ(0, result.m_nExit) << result.m_strOutput << result.m_strErrors;
        }
    }
    static std::string Gain(const nlohmann::json& loudness)
    {
        char szText[32];
        std::snprintf(szText, sizeof szText, "%.2f dB", loudness["replay_gain_db"].get<double>());
        return szText;
    }
    static std::string Peak(const nlohmann::json& loudness)
    {
        char szText[32];
        std::snprintf(szText, sizeof szText, "%.6f", std::pow(10, loudness["sample_peak_dbfs"].get<double>() / 20));
        return szText;
    }
    // What the log measured, under the names of Vorbis comments.
    std::vector<std::string> GetGainLines(size_t nPiece)
    {
        const nlohmann::json log = GetLog();
        const nlohmann::json& track = log["pieces"][nPiece]["analysis"]["loudness"];
        return {"REPLAYGAIN_TRACK_GAIN=" + Gain(track), "REPLAYGAIN_TRACK_PEAK=" + Peak(track),
                "REPLAYGAIN_ALBUM_GAIN=" + Gain(log["album"]), "REPLAYGAIN_ALBUM_PEAK=" + Peak(log["album"])};
    }
    static std::string MakeOpusLine(const std::string& strName, const nlohmann::json& loudness)
    {
        return strName + "=" + std::to_string(std::lround((loudness["replay_gain_db"].get<double>() - 5) * 256));
    }
};
} // namespace

TEST_F(RipTagsTest, AWavFileHasAllThatIsKnown)
{
    (void)RipWell();
    ExpectTracks();
    ExpectLines("02.wav", {"title=Two / Zwei", "artist=Guest", "album=Album", "album_artist=Band", "track=2/3"});
    ExpectLines("01.wav", {"title=One", "artist=Band", "TSRC=DEABC2400001", "track=1/3"});
    for (size_t n = 0; n < 3; ++n)
        ExpectLines("0" + std::to_string(n + 1) + ".wav", GetGainLines(n));
    ExpectCheckedLog();
}

TEST_F(RipTagsTest, APictureIsInEachFile)
{
    (void)HostProcess::RunShell("ffmpeg -v error -f lavfi -i color=red:s=32x32 -frames:v 1 '" +
                                m_Folder.Get("cover.png").string() + "'");
    (void)RipWell({"--picture", m_Folder.Get("cover.png").string(), "--encoder", "wav", "--encoder", "flac"});
    ExpectTracks();
    for (const char* pName : {"01.wav", "03.wav", "02.flac"})
        EXPECT_EQ("png\n", Decode(std::string("ffprobe -v error -select_streams v -show_entries stream=codec_name -of "
                                              "default=nw=1:nk=1 ") +
                                  pName));
    ExpectCheckedLog();
}

TEST_F(RipTagsTest, APictureThatIsNoneIsRefusedAheadOfTheRip)
{
    const std::string strText = m_Folder.Write("cover.png", "text").string();
    const HOST_RESULT result = Rip({"--picture", strText});
    EXPECT_EQ(1, result.m_nExit);
    EXPECT_NE(std::string::npos, result.m_strErrors.find("is no JPEG, PNG")) << result.m_strErrors;
    EXPECT_TRUE(GetOutput().empty());
}

TEST_F(RipTagsTest, EncodedFilesHaveTheGainOfTrackAndAlbum)
{
    (void)RipWell({"--encoder", "flac", "--encoder", "mp3", "--encoder", "opus"});
    const nlohmann::json log = GetLog();
    for (size_t n = 0; n < 3; ++n)
    {
        const std::string strName = "0" + std::to_string(n + 1);
        ExpectLines(strName + ".flac", GetGainLines(n));
        ExpectLines(strName + ".mp3", GetGainLines(n));
        ExpectLines(strName + ".opus", {MakeOpusLine("R128_TRACK_GAIN", log["pieces"][n]["analysis"]["loudness"]),
                                        MakeOpusLine("R128_ALBUM_GAIN", log["album"])});
        EXPECT_TRUE(
            SameBytes(GetPiece(static_cast<int>(n) + 1),
                      Decode("flac -d -s -c --force-raw-format --endian=little --sign=signed " + strName + ".flac")));
        EXPECT_EQ(GetPiece(static_cast<int>(n) + 1).size(),
                  Decode("lame --quiet --decode -t " + strName + ".mp3 -").size());
    }
    ExpectLines("02.flac", {"TITLE=Two / Zwei"});
    ExpectLines("02.mp3", {"title=Two / Zwei"});
    ExpectLines("02.opus", {"TITLE=Two / Zwei"});
    ExpectCheckedLog();
}

TEST_F(RipTagsTest, SomeTracksHaveNoAlbumGain)
{
    (void)RipWell(
        {"--tracks", "1,3", "--encoder", "wav", "--encoder", "flac", "--encoder", "mp3", "--encoder", "opus"});
    for (const char* pName : {"01.wav", "03.wav", "01.flac", "03.mp3", "01.opus"})
    {
        const std::string strTags = Probe(pName);
        EXPECT_NE(std::string::npos, strTags.find("_TRACK_GAIN=")) << pName;
        EXPECT_EQ(std::string::npos, strTags.find("_ALBUM_")) << pName << strTags;
    }
    const nlohmann::json log = GetLog();
    EXPECT_TRUE(log["album"].is_null() && log["album_dr"].is_null());
    EXPECT_TRUE(log["selection"]["integrated_lufs"].is_number());
    EXPECT_TRUE(log["selection"]["replay_gain_db"].is_null());
    const std::string strText = ReadWholeFile(Out("Album.log"));
    const std::string strWhole = strText.substr(strText.find("The whole rip"));
    EXPECT_NE(std::string::npos, strWhole.find("  Measured over         what was ripped, not the whole album"));
    EXPECT_NE(std::string::npos, strWhole.find("  Loudness   "));
    EXPECT_EQ(std::string::npos, strWhole.find("ReplayGain"));
    ExpectCheckedLog();
}

TEST_F(RipTagsTest, AllTracksByTheirNumbersAreTheAlbum)
{
    (void)RipWell({"--tracks", "1-3"});
    ExpectLines("03.wav", GetGainLines(2));
    EXPECT_TRUE(GetLog()["selection"].is_null());
    EXPECT_EQ(std::string::npos, ReadWholeFile(Out("Album.log")).find("Measured over"));
}

TEST_F(RipTagsTest, ARangeHasNoGain)
{
    (void)RipWell({"--range", "100-399"});
    for (const std::string& strName : GetOutput())
        EXPECT_TRUE(!strName.ends_with(".wav") || Probe(strName).find("ALBUM_GAIN") == std::string::npos) << strName;
    EXPECT_TRUE(GetLog()["album"].is_null());
}

// The foundation's text cannot say such a name, since its UTF-8 has three bytes at most.
TEST_F(RipTagsTest, ANameWithACharacterOfFourBytesHasItsGain)
{
    const std::string strName = "tune \xF0\x9F\x8E\xB5 0";
    const HOST_RESULT result =
        HostProcess::Run({"rip", m_strCue, "--to", Out("").string(), "--name", "tune \xF0\x9F\x8E\xB5 %{track}",
                          "--encoder", "wav", "--encoder", "mp3"});
    EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
    for (size_t n = 0; n < 3; ++n)
        for (const char* pSuffix : {".wav", ".mp3"})
            ExpectLines(strName + std::to_string(n + 1) + pSuffix, GetGainLines(n));
    ExpectCheckedLog();
}

TEST_F(RipTagsTest, WhatACommandMakesIsLeftAlone)
{
    (void)RipWell({"--encoder", "cmd.flac=flac --silent - -o %o"});
    EXPECT_EQ(std::string::npos, Probe("01.flac").find("REPLAYGAIN"));
    ExpectCheckedLog();
}

TEST_F(RipTagsTest, WithoutAnalysisThereIsNoGain)
{
    (void)RipWell({"--no-analysis", "--encoder", "wav", "--encoder", "flac"});
    ExpectLines("01.wav", {"title=One"});
    for (const char* pName : {"01.wav", "01.flac"})
        EXPECT_EQ(std::string::npos, Probe(pName).find("GAIN")) << pName;
    ExpectCheckedLog();
}

TEST_F(RipTagsTest, AnImageHasTheAlbum)
{
    (void)RipWell({"--image"});
    ExpectLines("Album.wav", {"title=Album", "artist=Band", "REPLAYGAIN_ALBUM_GAIN=" + Gain(GetLog()["album"])});
    EXPECT_EQ(std::string::npos, Probe("Album.wav").find("TRACK_GAIN"));
    ExpectCheckedLog();
}

TEST_F(RipTagsTest, AStoppedRipHasTagsAndGetsTheAlbumsGainWhenItGoesOn)
{
    WriteProfile("Speed = 4\n");
    std::string strLine = "env --default-signal=INT \"$RONDEL\"";
    for (const std::string& str : MakeCommand({"--mode", "burst", "--encoder", "wav", "--encoder", "flac"}))
        strLine += " '" + str + "'";
    strLine += " & p=$!; while [ ! -e '" + Out("01.flac").string() +
               "' ] && kill -0 $p; do sleep 0.02; done; kill -INT $p; wait $p";
    EXPECT_EQ(1, HostProcess::RunShell(strLine).m_nExit);
    RemoveProfile();
    ExpectLines("01.wav", {"title=One", "track=1/3"});
    EXPECT_NE(std::string::npos, Probe("01.wav").find("REPLAYGAIN_TRACK_GAIN"));
    EXPECT_NE(std::string::npos, Probe("01.flac").find("REPLAYGAIN_TRACK_GAIN"));
    EXPECT_EQ(std::string::npos, Probe("01.wav").find("REPLAYGAIN_ALBUM_GAIN"));
    (void)RipWell({"--mode", "burst", "--encoder", "wav", "--encoder", "flac", "--resume"});
    EXPECT_EQ("taken", GetLog()["pieces"][0]["state"]);
    ExpectTracks();
    for (size_t n = 0; n < 3; ++n)
        for (const char* pSuffix : {".wav", ".flac"})
            ExpectLines("0" + std::to_string(n + 1) + pSuffix, GetGainLines(n));
    ExpectCheckedLog();
}
