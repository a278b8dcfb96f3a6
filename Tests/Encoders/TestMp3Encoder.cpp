// enc_mp3, judged by other decoders.

#include "EncoderBytesInMemory.h"
#include "EncoderTestSupport.h"
#include "Mp3Check.h"

namespace
{
class Mp3Encoder : public EncoderTest
{
protected:
    void OpenMp3(const std::string& strSettings = "effort=9") { Open("mp3", strSettings, "out.mp3"); }
    long long CountDecoded(int nChannels)
    {
        (void)Run("lame --quiet --decode out.mp3 out.wav");
        EXPECT_EQ(0, m_nStatus);
        return (static_cast<long long>(ReadFile(m_Folder.GetPath("out.wav")).size()) - 44) / (2 * nChannels);
    }
};

struct MP3_CASE
{
    const char* pSettings;
    int nRate, nChannels, nFrames, nBits;
};
const MP3_CASE s_aryCases[] = {
    {"", 44100, 2, 44100, 16},
    {"vbr=0", 44100, 2, 100001, 16},
    {"vbr=9; effort=9", 44100, 2, 588 * 75, 16},
    {"cbr=320; effort=9", 44100, 2, 50000, 16},
    {"cbr=128; effort=9", 48000, 1, 33333, 16},
    {"abr=190; effort=9", 44100, 2, 70000, 16},
    {"effort=9", 44100, 2, 1, 16},
    {"effort=9", 44100, 2, 1151, 16},
    {"effort=9", 44100, 2, 1153, 24},
    {"effort=9", 22050, 2, 30000, 16},
    {"effort=9", 32000, 2, 30000, 32},
    {"cbr=64; effort=9", 8000, 1, 20000, 16},
};
} // namespace

TEST_F(Mp3Encoder, DecodesToExactlyAsMuch)
{
    const bool bFFmpeg = HasProgram("ffmpeg");
    for (const MP3_CASE& row : s_aryCases)
    {
        for (bool bExpected : {false, true})
        {
            SCOPED_TRACE(std::string(row.pSettings) + " " + std::to_string(row.nRate) + " " +
                         std::to_string(row.nFrames));
            OpenMp3(row.pSettings);
            Set("Sample Rate", std::to_string(row.nRate));
            Set("Channels", std::to_string(row.nChannels));
            Set("Bits", std::to_string(row.nBits));
            Set("Expected Frames", bExpected ? std::to_string(row.nFrames) : "0");
            ASSERT_TRUE(Encode(MakeMusic(row.nFrames, row.nChannels, row.nBits))) << Get("Last Error");
            EXPECT_EQ(row.nFrames, CountDecoded(row.nChannels));
            if (bFFmpeg)
            {
                EXPECT_EQ(static_cast<size_t>(row.nFrames * row.nChannels * 2),
                          Run("ffmpeg -v error -nostdin -i out.mp3 -f s16le -").size());
            }
        }
    }
}

TEST_F(Mp3Encoder, SoundsAsItDid)
{
    OpenMp3("cbr=320");
    const std::string strMusic = MakeMusic(50000);
    ASSERT_TRUE(Encode(strMusic));
    ASSERT_EQ(50000, CountDecoded(2));
    const std::string strDecoded = ReadFile(m_Folder.GetPath("out.wav")).substr(44);
    double fSignal = 0;
    double fError = 0;
    for (size_t i = 0; i + 1 < strMusic.size(); i += 2)
    {
        short nBefore = 0;
        short nAfter = 0;
        memcpy(&nBefore, strMusic.data() + i, 2);
        memcpy(&nAfter, strDecoded.data() + i, 2);
        fSignal += double(nBefore) * nBefore;
        fError += double(nBefore - nAfter) * (nBefore - nAfter);
    }
    EXPECT_LT(fError, fSignal / 300) << "in place, and 25 dB below";
}

TEST_F(Mp3Encoder, OtherRatesAndChannelsAreRefused)
{
    for (const auto& [pRate, pChannels] : {std::pair("96000", "2"), std::pair("44100", "3"), std::pair("44099", "2")})
    {
        OpenMp3();
        Set("Sample Rate", pRate);
        Set("Channels", pChannels);
        EXPECT_FALSE(Encode(MakeMusic(5000, 6)));
        EXPECT_EQ(ENCODER_REFUSED, GetError());
        EXPECT_EQ("", ListFolder());
    }
    OpenMp3("vbr=2; cbr=320");
    EXPECT_NE(std::string::npos, Get("Last Error").find("Only one")) << Get("Last Error");
}

TEST_F(Mp3Encoder, TagsAndPictureAreReadByOthers)
{
    if (!HasProgram("ffprobe"))
        GTEST_SKIP() << "ffprobe is not here";
    OpenMp3();
    const std::string strPicture = WritePicture();
    Set("Picture", strPicture);
    for (const auto& [pName, pValue] :
         {std::pair("Tag Title", "Größe 音 \U0001F3B5"), std::pair("Tag Artist", "Plain"),
          std::pair("Tag Album Artist", "All"), std::pair("Tag Track", "3/12"), std::pair("Tag Disc", "1/2"),
          std::pair("Tag Date", "1999"), std::pair("Tag Genre", "A Genre of its own"),
          std::pair("Tag Comment", "Wörter"), std::pair("Tag ISRC", "DEA123456789"),
          std::pair("Tag Ripper Note", "kept"), std::pair("Tag BPM", "120"),
          std::pair("Tag MusicBrainz Album Id", "1-2-3")})
        Set(pName, pValue);
    ASSERT_TRUE(Encode(MakeMusic(30000))) << Get("Last Error");
    const std::string strTags = Run("ffprobe -v error -show_entries format_tags -of default=nk=0:nw=1 out.mp3");
    for (const char* pLine :
         {"TAG:title=Größe 音 \U0001F3B5\n", "TAG:artist=Plain\n", "TAG:album_artist=All\n", "TAG:track=3/12\n",
          "TAG:disc=1/2\n", "TAG:date=1999\n", "TAG:genre=A Genre of its own\n", "TAG:comment=Wörter\n",
          "TAG:TSRC=DEA123456789\n", "TAG:RIPPER NOTE=kept\n", "TAG:TBPM=120\n", "TAG:MusicBrainz Album Id=1-2-3\n"})
        EXPECT_NE(std::string::npos, strTags.find(pLine)) << pLine << strTags;
    EXPECT_TRUE(ReadFile(strPicture) == Run("ffmpeg -v error -nostdin -i out.mp3 -map 0:v -c copy -f image2pipe -"))
        << "the picture";
    EXPECT_EQ("Cover (front)\n", Run("ffprobe -v error -select_streams v -show_entries stream_tags=comment "
                                     "-of default=nk=1:nw=1 out.mp3"));
    EXPECT_EQ(30000, CountDecoded(2));
}

TEST_F(Mp3Encoder, TheCheckSeesAFileThatIsCutOrChanged)
{
    OpenMp3("cbr=128; effort=9");
    ASSERT_TRUE(Encode(MakeMusic(30000)));
    const std::string strFile = ReadOutput();
    const uint64_t nAudio = strFile.find('\xFF'); // the tag has no such byte: it is empty
    ASSERT_EQ("",
              [&]
              {
                  EncoderBytesInMemory file(strFile);
                  return CheckMp3(file, nAudio, 30000);
              }());
    EncoderBytesInMemory other(strFile);
    EXPECT_NE("", CheckMp3(other, nAudio, 29999));
    for (size_t nBytes = 0; nBytes < strFile.size(); nBytes += 97)
    {
        EncoderBytesInMemory cut(strFile.substr(0, nBytes));
        EXPECT_NE("", CheckMp3(cut, nAudio, 30000)) << nBytes;
    }
    EncoderBytesInMemory longer(strFile + std::string(500, 'x'));
    EXPECT_NE("", CheckMp3(longer, nAudio, 30000));
}
