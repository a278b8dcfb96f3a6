#include "ImageFiles.h"
#include <cmath>
#include <gtest/gtest.h>

namespace
{
constexpr int FRAMES = 3000; // a little more than five sectors

std::string ReadBytes(SectorSource& source, long long nFrame, int nFrames, int nMisalign = 0)
{
    std::vector<unsigned char> aryBuffer(static_cast<size_t>(nFrames) * LY_CD_FRAME_BYTES + 8, 0xEE);
    int nRead = source.Read(nFrame * LY_CD_FRAME_BYTES, aryBuffer.data() + nMisalign, nFrames * LY_CD_FRAME_BYTES);
    return {reinterpret_cast<char*>(aryBuffer.data()) + nMisalign, static_cast<size_t>(nRead)};
}

std::string Slice(const std::vector<short>& arySamples, int nFrame, int nFrames)
{
    return ToBytes(arySamples)
        .substr(static_cast<size_t>(nFrame) * LY_CD_FRAME_BYTES, static_cast<size_t>(nFrames) * LY_CD_FRAME_BYTES);
}

class AudioFileSource : public testing::Test
{
protected:
    TempFolder m_Folder;
    std::string m_strError;
    std::string m_strWarning;

    std::unique_ptr<SectorSource> Open(const std::string& strName, bool bSwap = false)
    {
        return OpenAudioFileSource(m_Folder.GetPath(strName), bSwap, m_strError, m_strWarning);
    }
    bool ErrorHas(const char* pText) const { return m_strError.find(pText) != std::string::npos; }
};

TEST_F(AudioFileSource, SixteenBitsComeThroughExactly)
{
    const std::pair<const char*, int> aryFormats[] = {
        {"a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16},   {"a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
        {"a.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16}, {"a.aifc", SF_FORMAT_AIFF | SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE},
        {"a.w64", SF_FORMAT_W64 | SF_FORMAT_PCM_16},   {"a.caf", SF_FORMAT_CAF | SF_FORMAT_ALAC_16}};
    std::vector<short> aryFrames = MakeFrames(FRAMES);
    aryFrames[0] = 32767;
    aryFrames[1] = -32768;
    for (const auto& [pName, nFormat] : aryFormats)
    {
        WriteAudioFile(m_Folder.GetPath(pName), nFormat, aryFrames);
        auto pSource = Open(pName);
        ASSERT_TRUE(pSource) << m_strError;
        EXPECT_EQ(FRAMES * LY_CD_FRAME_BYTES, pSource->GetBytes()) << pName;
        EXPECT_TRUE(Same(ToBytes(aryFrames), ReadBytes(*pSource, 0, FRAMES))) << pName;
        EXPECT_EQ("", m_strWarning) << pName;
    }
}

TEST_F(AudioFileSource, ReadsInOrderAndOutOfOrder)
{
    std::vector<short> aryFrames = MakeFrames(FRAMES);
    for (int nFormat : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16})
    {
        WriteAudioFile(m_Folder.GetPath("a"), nFormat, aryFrames);
        auto pSource = Open("a");
        ASSERT_TRUE(pSource) << m_strError;
        EXPECT_TRUE(Same(Slice(aryFrames, 0, 588), ReadBytes(*pSource, 0, 588)));
        EXPECT_TRUE(Same(Slice(aryFrames, 588, 588), ReadBytes(*pSource, 588, 588)));
        EXPECT_TRUE(Same(Slice(aryFrames, 2000, 100), ReadBytes(*pSource, 2000, 100)));
        EXPECT_TRUE(Same(Slice(aryFrames, 17, 3), ReadBytes(*pSource, 17, 3)));
        EXPECT_TRUE(Same(Slice(aryFrames, 20, 588), ReadBytes(*pSource, 20, 588)));
    }
}

TEST_F(AudioFileSource, GivesWhatIsThereAtTheEnd)
{
    std::vector<short> aryFrames = MakeFrames(FRAMES);
    WriteAudioFile(m_Folder.GetPath("a.flac"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, aryFrames);
    auto pSource = Open("a.flac");
    ASSERT_TRUE(pSource);
    EXPECT_TRUE(Same(Slice(aryFrames, FRAMES - 10, 10), ReadBytes(*pSource, FRAMES - 10, 588)));
    EXPECT_EQ("", ReadBytes(*pSource, FRAMES, 588));
    EXPECT_EQ("", ReadBytes(*pSource, 1000000000000, 588));
    EXPECT_EQ("", ReadBytes(*pSource, -1, 588));
    EXPECT_TRUE(Same(Slice(aryFrames, 5, 5), ReadBytes(*pSource, 5, 5))); // and goes on working
}

TEST_F(AudioFileSource, BufferMayStandAtAnOddAddress)
{
    std::vector<short> aryFrames = MakeFrames(FRAMES);
    WriteAudioFile(m_Folder.GetPath("a.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, aryFrames);
    auto pSource = Open("a.wav");
    ASSERT_TRUE(pSource);
    EXPECT_TRUE(Same(ToBytes(aryFrames), ReadBytes(*pSource, 0, FRAMES, 1)));
}

TEST_F(AudioFileSource, MonoIsDoubled)
{
    std::vector<short> aryMono;
    std::vector<short> aryStereo;
    for (int n = 0; n < FRAMES; n++)
    {
        aryMono.push_back(static_cast<short>(n - 1000));
        aryStereo.insert(aryStereo.end(), 2, aryMono.back());
    }
    WriteAudioFile(m_Folder.GetPath("a.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, aryMono, 1);
    auto pSource = Open("a.wav");
    ASSERT_TRUE(pSource) << m_strError;
    EXPECT_EQ(FRAMES * LY_CD_FRAME_BYTES, pSource->GetBytes());
    EXPECT_TRUE(Same(ToBytes(aryStereo), ReadBytes(*pSource, 0, FRAMES)));
    EXPECT_TRUE(Same(Slice(aryStereo, 600, 7), ReadBytes(*pSource, 600, 7)));
}

TEST_F(AudioFileSource, TwentyFourBitsLoseTheirLowBitsWithAWarning)
{
    SF_INFO info = {};
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_24;
    info.channels = 2;
    info.samplerate = LY_CD_SAMPLE_RATE;
    SNDFILE* pFile = sf_open(m_Folder.GetPath("a.wav").c_str(), SFM_WRITE, &info);
    const int arySamples[] = {0x12345600, -0x12345600, 0x7FFFFF00, 0x0000FF00}; // 32 bits, of which 24 are written
    (void)sf_write_int(pFile, arySamples, 4);
    (void)sf_close(pFile);
    auto pSource = Open("a.wav");
    ASSERT_TRUE(pSource) << m_strError;
    EXPECT_TRUE(Same(ToBytes({0x1234, -0x1235, 0x7FFF, 0}), ReadBytes(*pSource, 0, 2)));
    EXPECT_NE(std::string::npos, m_strWarning.find("more than 16 bits")) << m_strWarning;
}

TEST_F(AudioFileSource, FloatingPointIsRoundedAndClipped)
{
    SF_INFO info = {};
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    info.channels = 2;
    info.samplerate = LY_CD_SAMPLE_RATE;
    SNDFILE* pFile = sf_open(m_Folder.GetPath("a.wav").c_str(), SFM_WRITE, &info);
    const float arySamples[] = {0.5f, -1.0f, 1.0f, -3.0f, 1234.0f / 32768.0f, 1234.6f / 32768.0f};
    (void)sf_write_float(pFile, arySamples, 6);
    (void)sf_close(pFile);
    auto pSource = Open("a.wav");
    ASSERT_TRUE(pSource) << m_strError;
    EXPECT_TRUE(Same(ToBytes({16384, -32768, 32767, -32768, 1234, 1235}), ReadBytes(*pSource, 0, 3)));
    EXPECT_NE(std::string::npos, m_strWarning.find("floating-point")) << m_strWarning;
}

TEST_F(AudioFileSource, LossyFileHasItsLengthAndSounds)
{
    std::vector<short> arySine;
    for (int n = 0; n < 44100; n++)
        arySine.insert(arySine.end(), 2, static_cast<short>(std::lrint(10000.0 * std::sin(n * 0.05))));
    WriteAudioFile(m_Folder.GetPath("a.ogg"), SF_FORMAT_OGG | SF_FORMAT_VORBIS, arySine);
    auto pSource = Open("a.ogg");
    ASSERT_TRUE(pSource) << m_strError;
    EXPECT_EQ(44100 * LY_CD_FRAME_BYTES, pSource->GetBytes());
    std::string strBytes = ReadBytes(*pSource, 10000, 588);
    ASSERT_EQ(static_cast<size_t>(LY_CD_SECTOR_BYTES), strBytes.size());
    int nPeak = 0;
    for (size_t n = 0; n < strBytes.size(); n += 2)
    {
        short nSample = 0;
        memcpy(&nSample, strBytes.data() + n, sizeof nSample);
        nPeak = std::max<int>(nPeak, nSample);
    }
    EXPECT_NEAR(10000, nPeak, 1000);
}

TEST_F(AudioFileSource, ByteOrderCanBeTurnedRound)
{
    std::vector<short> aryFrames = MakeFrames(600);
    WriteAudioFile(m_Folder.GetPath("a.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, aryFrames);
    auto pSource = Open("a.wav", true);
    ASSERT_TRUE(pSource);
    EXPECT_TRUE(Same(SwapPairs(ToBytes(aryFrames)), ReadBytes(*pSource, 0, 600)));
}

TEST_F(AudioFileSource, WrongFormatIsRefusedWithTheReason)
{
    WriteAudioFile(m_Folder.GetPath("rate.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, MakeFrames(100), 2, 48000);
    EXPECT_FALSE(Open("rate.wav"));
    EXPECT_TRUE(ErrorHas("rate.wav\" has 48000 samples per second and a disc has 44100; convert")) << m_strError;
    WriteAudioFile(m_Folder.GetPath("six.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, MakeFrames(300), 6);
    EXPECT_FALSE(Open("six.wav"));
    EXPECT_TRUE(ErrorHas("has 6 channels")) << m_strError;
    WriteAudioFile(m_Folder.GetPath("none.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, {});
    EXPECT_FALSE(Open("none.wav"));
    EXPECT_TRUE(ErrorHas("holds no audio")) << m_strError;
}

TEST_F(AudioFileSource, WhatIsNoAudioFileIsRefused)
{
    m_Folder.Write("text.wav", "This is not an audio file at all, whatever its name may say.");
    m_Folder.Write("empty.wav", "");
    EXPECT_FALSE(Open("text.wav"));
    EXPECT_TRUE(ErrorHas("text.wav\" cannot be decoded (")) << m_strError;
    EXPECT_TRUE(ErrorHas("; convert it to FLAC or WAV")) << m_strError;
    EXPECT_FALSE(Open("empty.wav"));
    EXPECT_TRUE(ErrorHas("empty.wav\" is empty; ")) << m_strError;
    EXPECT_FALSE(Open("."));
    EXPECT_TRUE(ErrorHas("is not a plain file")) << m_strError;
    EXPECT_FALSE(Open("missing.wav"));
    EXPECT_TRUE(ErrorHas("missing.wav")) << m_strError;
}

TEST_F(AudioFileSource, CutFLACGivesItsFirstPart)
{
    std::vector<short> aryFrames;
    unsigned nRandom = 1;
    for (int n = 0; n < 2 * 44100; n++) // noise, so that the file is as long as its samples
        aryFrames.push_back(static_cast<short>((nRandom = nRandom * 1103515245u + 12345u) >> 16));
    WriteAudioFile(m_Folder.GetPath("a.flac"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, aryFrames);
    std::filesystem::resize_file(m_Folder.GetPath("a.flac"),
                                 std::filesystem::file_size(m_Folder.GetPath("a.flac")) / 2);
    auto pSource = Open("a.flac");
    ASSERT_TRUE(pSource) << m_strError;
    EXPECT_TRUE(Same(Slice(aryFrames, 0, 588), ReadBytes(*pSource, 0, 588)));
    EXPECT_GT(588u * LY_CD_FRAME_BYTES, ReadBytes(*pSource, 44100 - 588, 588).size());
    EXPECT_TRUE(Same(Slice(aryFrames, 588, 588), ReadBytes(*pSource, 588, 588))); // the good part stays good
}
} // namespace
