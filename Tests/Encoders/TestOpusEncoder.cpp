// enc_opus, judged by other decoders.

#include "EncoderBytesInMemory.h"
#include "EncoderTestSupport.h"
#include "OggOpusCheck.h"

namespace
{
class OpusEncoder : public EncoderTest
{
protected:
    void OpenOpus(const std::string& strSettings = "complexity=0") { Open("opus", strSettings, "out.opus"); }
};

struct OPUS_CASE
{
    const char* pSettings;
    int nRate, nChannels, nBits, nFrames;
    int nSamples; // at 48 kHz, rounded up
};
const OPUS_CASE s_aryCases[] = {
    {"", 44100, 2, 16, 44100, 48000},
    {"bitrate=96; vbr=off; complexity=0", 44100, 2, 16, 147, 160},
    {"vbr=constrained; complexity=0", 44100, 2, 16, 1, 2},
    {"complexity=0", 44100, 2, 16, 100001, 108845}, // 108844.98
    {"complexity=0", 48000, 1, 24, 12345, 12345},
    {"complexity=0", 96000, 2, 32, 20001, 10001},
    {"complexity=0", 8000, 2, 16, 8001, 48006},
    {"complexity=0", 48000, 6, 16, 24000, 24000},
};
} // namespace

TEST_F(OpusEncoder, DecodesToExactlyAsMuch)
{
    const bool bFFmpeg = HasProgram("ffmpeg");
    for (const OPUS_CASE& row : s_aryCases)
    {
        SCOPED_TRACE(std::string(row.pSettings) + " " + std::to_string(row.nRate) + " " + std::to_string(row.nFrames));
        OpenOpus(row.pSettings);
        Set("Sample Rate", std::to_string(row.nRate));
        Set("Channels", std::to_string(row.nChannels));
        Set("Bits", std::to_string(row.nBits));
        ASSERT_TRUE(Encode(MakeMusic(row.nFrames, row.nChannels, row.nBits))) << Get("Last Error");
        const size_t nBytes = static_cast<size_t>(row.nSamples * row.nChannels * 2);
        EXPECT_EQ(nBytes, Run("opusdec --quiet --rate 48000 out.opus - 2>/dev/null").size());
        if (bFFmpeg)
        {
            EXPECT_EQ(nBytes, Run("ffmpeg -v error -nostdin -i out.opus -f s16le -").size());
        }
    }
}

TEST_F(OpusEncoder, TagsAndPictureAreReadByOthers)
{
    OpenOpus();
    Set("Tag Title", "Größe 音");
    Set("Tag Track", "3");
    Set("Tag Ripper=Note", "kept");
    Set("Picture", WritePicture());
    ASSERT_TRUE(Encode(MakeMusic(30000))) << Get("Last Error");
    const std::string strInfo = Run("opusinfo out.opus 2>&1");
    for (const char* pLine : {"TITLE=Größe 音\n", "TRACKNUMBER=3\n", "RIPPER_NOTE=kept\n", "METADATA_BLOCK_PICTURE"})
        EXPECT_NE(std::string::npos, strInfo.find(pLine)) << pLine << strInfo;
    EXPECT_EQ(std::string::npos, strInfo.find("WARNING")) << strInfo;
}

TEST_F(OpusEncoder, TheCheckSeesAFileThatIsCutOrChanged)
{
    OpenOpus();
    Set("Sample Rate", "48000");
    ASSERT_TRUE(Encode(MakeMusic(100000)));
    const std::string strFile = ReadOutput();
    ASSERT_EQ("",
              [&]
              {
                  EncoderBytesInMemory file(strFile);
                  return CheckOggOpus(file, 100000);
              }());
    EncoderBytesInMemory other(strFile);
    EXPECT_NE("", CheckOggOpus(other, 99999));
    for (size_t nBytes = 0; nBytes < strFile.size(); nBytes += 53)
    {
        EncoderBytesInMemory cut(strFile.substr(0, nBytes));
        EXPECT_NE("", CheckOggOpus(cut, 100000)) << nBytes;
        EncoderBytesInMemory changed(strFile);
        changed.m_strData[nBytes] = static_cast<char>(changed.m_strData[nBytes] ^ 4);
        EXPECT_NE("", CheckOggOpus(changed, 100000)) << nBytes;
    }
}
