// Streams that an independent encoder has made are found in every packing; the packings of this test are judged by an
// independent decoder.

#include "DTSHelper.h"
#include "Media/DTSStreams.h"
#include "TempFolder.h"
#include <gtest/gtest.h>

namespace
{
struct STREAM
{
    const char* pName;
    const char* pArguments; // of the encoder
    int nFrameBytes;
    bool bFills14Bits; // its frames end with a word of 14 bits
};

// bytes of a frame = bits per second * 512 samples / samples per second / 8. As on discs and film sound tracks.
const STREAM s_aryStreams[] = {
    {"StereoOfADisc14Bit", "-ar 44100 -ac 2 -b:a 1234800", 1792, true},
    {"StereoOfADisc16Bit", "-ar 44100 -ac 2 -b:a 1411200", 2048, false},
    {"SurroundOfADisc", "-ar 44100 -af 'aformat=channel_layouts=5.1(side)' -b:a 1234800", 1792, true},
    {"SurroundOfADisc16Bit", "-ar 44100 -af 'aformat=channel_layouts=5.1(side)' -b:a 1411200", 2048, false},
    {"StereoAtHalfTheRate", "-ar 44100 -ac 2 -b:a 768000", 1116, false},
    {"SurroundAt48kHz", "-ar 48000 -af 'aformat=channel_layouts=5.1(side)' -b:a 1509000", 2012, false},
};

std::string Read(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class DTSStreams : public ::testing::Test
{
protected:
    // A tone that glides, and noise.
    std::string Encode(const STREAM& stream) const
    {
        const std::string strPath = m_Folder.GetPath("stream.dts");
        const std::string strCommand =
            "ffmpeg -v error -nostdin -y -f lavfi -i 'aevalsrc=0.6*sin(900*t*t)|0.3*random(0):s=44100:d=4' " +
            std::string(stream.pArguments) + " -c:a dca -strict -2 -f dts " + strPath;
        EXPECT_EQ(0, std::system(strCommand.c_str())) << strCommand;
        return Read(strPath);
    }
    // What a decoder makes of a stream: the check sum of its samples.
    std::string Decode(const std::string& strStream) const
    {
        const std::string strSums = m_Folder.GetPath("sums");
        const std::string strCommand = "ffmpeg -v error -nostdin -y -f dts -i " +
                                       m_Folder.Write("judged.dts", strStream) + " -c:a pcm_s24le -f md5 " + strSums;
        EXPECT_EQ(0, std::system(strCommand.c_str())) << strCommand;
        return Read(strSums);
    }

    TempFolder m_Folder;
};

bool HasPacking(const STREAM& stream, DTS_STREAM_TYPE eType)
{
    return stream.bFills14Bits || eType == DTS_STREAM_16_BIT_LITTLE_ENDIAN || eType == DTS_STREAM_16_BIT_BIG_ENDIAN;
}

void ExpectFound(const STREAM& stream, const std::string& strData, DTS_STREAM_TYPE eType, int nAhead)
{
    DTSHelper helper;
    const std::string strFirst = strData.substr(0, DTSHelper::MAX_TEST_BYTES);
    ASSERT_TRUE(helper.Analyze(ToBuffer(strFirst))) << stream.pName << " in packing " << eType << " at " << nAhead;
    EXPECT_EQ(eType, helper.m_nStreamType) << stream.pName;
    EXPECT_EQ(nAhead, helper.m_nFirstFrameOffset) << stream.pName;
    EXPECT_EQ(stream.nFrameBytes, helper.m_FirstFrameHeader.m_nFrameBytes) << stream.pName;
    EXPECT_EQ(16, helper.m_FirstFrameHeader.m_nSampleBlocks) << stream.pName;
    EXPECT_EQ(1, helper.m_FirstFrameHeader.m_nFrameType) << stream.pName;
    EXPECT_EQ(32, helper.m_FirstFrameHeader.m_nDeficitSamples) << stream.pName;
    EXPECT_FALSE(helper.m_FirstFrameHeader.m_bCRCPresent) << stream.pName;
}
} // namespace

TEST_F(DTSStreams, OfAnEncoderAreFoundInEveryPacking)
{
    for (const STREAM& stream : s_aryStreams)
    {
        const std::string strStream = Encode(stream);
        ASSERT_LT(100000u, strStream.size()) << stream.pName;
        for (const DTS_STREAM_TYPE eType : ALL_DTS_PACKINGS)
        {
            if (!HasPacking(stream, eType))
                continue;
            const std::string strPacked = PackDTS(strStream, eType);
            for (const int nAhead : {0, 1, 4, 1000, 100001})
                ExpectFound(stream, std::string(static_cast<size_t>(nAhead), '\0') + strPacked, eType, nAhead);
        }
    }
}

// A file may have been cut from a longer one: the first frame is not whole, and is passed over.
TEST_F(DTSStreams, CutWithinAFrameAreFoundFromTheNextOn)
{
    const STREAM& stream = s_aryStreams[0];
    const std::string strStream = Encode(stream);
    for (const DTS_STREAM_TYPE eType : ALL_DTS_PACKINGS)
    {
        const std::string strPacked = PackDTS(strStream, eType);
        const bool b14Bit = eType == DTS_STREAM_14_BIT_LITTLE_ENDIAN || eType == DTS_STREAM_14_BIT_BIG_ENDIAN;
        const int nPackedFrameBytes = b14Bit ? 2048 : 1792;
        ExpectFound(stream, strPacked.substr(400), eType, nPackedFrameBytes - 400);
    }
}

// A stream as it goes to an amplifier: bursts with a header of 8 bytes ahead of each frame.
TEST_F(DTSStreams, InBurstsOfADigitalOutputAreFound)
{
    const STREAM& stream = s_aryStreams[1];
    (void)Encode(stream);
    const std::string strBursts = m_Folder.GetPath("bursts.raw");
    ASSERT_EQ(0, std::system(("ffmpeg -v error -nostdin -y -f dts -i " + m_Folder.GetPath("stream.dts") +
                              " -c:a copy -f spdif " + strBursts)
                                 .c_str()));
    const std::string strData = Read(strBursts).substr(0, DTSHelper::MAX_TEST_BYTES);
    DTSHelper helper;
    EXPECT_TRUE(helper.Analyze(ToBuffer(strData)));
    EXPECT_EQ(DTS_STREAM_16_BIT_LITTLE_ENDIAN, helper.m_nStreamType);
}

TEST_F(DTSStreams, AreDecodedByOthersAsTheyArePackedHere)
{
    for (const STREAM& stream : {s_aryStreams[0], s_aryStreams[2]})
    {
        const std::string strStream = Encode(stream);
        const std::string strSum = Decode(strStream);
        ASSERT_EQ(0u, strSum.find("MD5=")) << strSum;
        for (const DTS_STREAM_TYPE eType : ALL_DTS_PACKINGS)
            EXPECT_EQ(strSum, Decode(PackDTS(strStream, eType))) << stream.pName << " in packing " << eType;
    }
}
