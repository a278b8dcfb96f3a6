// enc_flac, judged by the programs of FLAC itself.

#include "EncoderTestSupport.h"

namespace
{
class FlacEncoder : public EncoderTest
{
protected:
    void OpenFlac(const std::string& strSettings = "level=1") { Open("flac", strSettings, "out.flac"); }
    std::string Decode() { return Run("flac -d -s -c --force-raw-format --endian=little --sign=signed out.flac"); }
};

struct FORMAT_CASE
{
    int nRate, nChannels, nBits;
    const char* pSettings;
};
const FORMAT_CASE s_aryFormats[] = {
    {44100, 2, 16, "level=0"}, {44100, 2, 16, "level=8"}, {44100, 2, 16, ""},       {48000, 1, 16, "level=5"},
    {96000, 2, 24, "level=3"}, {192000, 6, 24, ""},       {8000, 8, 16, "level=2"}, {88201, 2, 24, "level=1"},
};
} // namespace

TEST_F(FlacEncoder, DecodesBitForBit)
{
    for (const FORMAT_CASE& format : s_aryFormats)
    {
        SCOPED_TRACE(std::to_string(format.nRate) + " " + format.pSettings);
        OpenFlac(format.pSettings);
        Set("Sample Rate", std::to_string(format.nRate));
        Set("Channels", std::to_string(format.nChannels));
        Set("Bits", std::to_string(format.nBits));
        const std::string strMusic = MakeMusic(30011, format.nChannels, format.nBits);
        ASSERT_TRUE(Encode(strMusic)) << Get("Last Error");
        EXPECT_TRUE(strMusic == Decode());
        EXPECT_EQ(0, m_nStatus);
        EXPECT_EQ("", Run("flac -t -s out.flac 2>&1"));
        EXPECT_EQ("out.flac", ListFolder());
    }
}

// libFLAC writes 32 bits, which the program of the same version does not decode to raw everywhere; it tests them.
TEST_F(FlacEncoder, ThirtyTwoBitsAreTestedGood)
{
    OpenFlac();
    Set("Bits", "32");
    ASSERT_TRUE(Encode(MakeMusic(10000, 2, 32))) << Get("Last Error");
    EXPECT_EQ("", Run("flac -t -s out.flac 2>&1"));
    EXPECT_EQ("32\n", Run("metaflac --show-bps out.flac"));
}

TEST_F(FlacEncoder, PiecesMayDivideAFrame)
{
    const std::string strMusic = MakeMusic(5000);
    for (int nPiece : {1, 3, 5, 4097})
    {
        OpenFlac();
        ASSERT_TRUE(Encode(strMusic, nPiece)) << Get("Last Error");
        EXPECT_TRUE(strMusic == Decode()) << nPiece;
    }
}

TEST_F(FlacEncoder, AudioThatEndsWithinAFrameIsRefused)
{
    OpenFlac();
    EXPECT_FALSE(Encode(MakeMusic(5000) + "xyz"));
    EXPECT_EQ(ENCODER_INPUT_READ, GetError());
    EXPECT_EQ("", ListFolder());
}

TEST_F(FlacEncoder, TheSumIsThatOfTheAudio)
{
    OpenFlac();
    const std::string strMusic = MakeMusic(20000);
    ASSERT_TRUE(Encode(strMusic));
    (void)m_Folder.Write("raw", strMusic);
    EXPECT_EQ(Run("md5sum < raw | cut -c1-32"), Run("metaflac --show-md5sum out.flac"));
    EXPECT_EQ("20000\n", Run("metaflac --show-total-samples out.flac"));
}

TEST_F(FlacEncoder, TheSeekTableHasAPointForEachStep)
{
    for (const char* pExpected : {"0", "220500"})
    {
        OpenFlac("level=0;seek=1");
        Set("Expected Frames", pExpected);
        ASSERT_TRUE(Encode(MakeMusic(220500))) << Get("Last Error");
        const std::string strList = Run("metaflac --list --block-type=SEEKTABLE out.flac | grep -v PLACEHOLDER | "
                                        "grep -c sample_number");
        EXPECT_EQ("5\n", strList) << pExpected;
        // The point of a second is the frame of 1152 that holds it: 44100 = 38 * 1152 + 324.
        EXPECT_EQ("1\n",
                  Run("metaflac --list --block-type=SEEKTABLE out.flac | grep -c 'point 1: sample_number=43776,'"));
        EXPECT_EQ("", Run("flac -t -s out.flac 2>&1"));
        EXPECT_EQ("", Run("flac -d -s -f --skip=44100 --until=44200 -o part.wav out.flac 2>&1 && rm part.wav"));
    }
    OpenFlac("seek=0");
    ASSERT_TRUE(Encode(MakeMusic(5000)));
    EXPECT_EQ("", Run("metaflac --list --block-type=SEEKTABLE out.flac"));
}

TEST_F(FlacEncoder, TagsAreVorbisComments)
{
    OpenFlac();
    Set("Tag Title", "Größe; \"x\" = 音🎵");
    Set("Tag Album Artist", "Both");
    Set("Tag Track", "3");
    Set("Tag AccurateRip Result", "v2 200");
    Set("Tag Bytes", "a\xFF\xC3z");
    Set("Tag Genre", "gone");
    Set("Tag genre", "");
    Set("tag artist", "first");
    Set("Tag ARTIST", "second");
    ASSERT_TRUE(Encode(MakeMusic(5000)));
    EXPECT_EQ("TITLE=Größe; \"x\" = 音🎵\nALBUMARTIST=Both\nTRACKNUMBER=3\nACCURATERIP RESULT=v2 "
              "200\nBYTES=a\uFFFD\uFFFDz\nARTIST=second\n",
              Run("metaflac --no-utf8-convert --export-tags-to=- out.flac"));
    EXPECT_EQ("second", Get("Tag Artist"));
}

TEST_F(FlacEncoder, ThePictureIsABlockWithItsSize)
{
    OpenFlac();
    const std::string strPicture = WritePicture();
    Set("Picture", strPicture);
    ASSERT_TRUE(Encode(MakeMusic(5000))) << Get("Last Error");
    EXPECT_EQ(ReadFile(strPicture), Run("metaflac --export-picture-to=- out.flac"));
    const std::string strList = Run("metaflac --list --block-type=PICTURE out.flac");
    for (const char* pLine : {"type: 3 (Cover (front))", "MIME type: image/png", "width: 1", "height: 1", "depth: 24"})
        EXPECT_NE(std::string::npos, strList.find(pLine)) << pLine;
    EXPECT_EQ("", Run("flac -t -s out.flac 2>&1"));
}

TEST_F(FlacEncoder, PaddingIsAsSet)
{
    OpenFlac("padding=1234");
    ASSERT_TRUE(Encode(MakeMusic(5000)));
    EXPECT_EQ("  length: 1234\n", Run("metaflac --list --block-type=PADDING out.flac | grep length"));
}
