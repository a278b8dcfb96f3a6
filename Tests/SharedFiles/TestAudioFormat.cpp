#include "AudioFormat.h"

#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
constexpr _GUID PCM = {1, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
constexpr _GUID IEEE_FLOAT = {3, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x47}};
constexpr _GUID TAG_7 = {7, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
constexpr _GUID TAG_80 = {80, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
constexpr _GUID TAG_146 = {146, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
constexpr _GUID FLOAT_OF_OTHERS = {3, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
constexpr _GUID NONE = {};

std::vector<unsigned int> Speakers(const CAudioFormat& format)
{
    std::vector<unsigned int> arySpeakers;
    for (const AUDIO_CHANNEL& channel : format.m_Channels)
    {
        if (channel.bUsed)
            arySpeakers.push_back(channel.nSpeaker);
    }
    return arySpeakers;
}
} // namespace

TEST(AudioFormatLayout, IsTheWaveFormatRecordWithItsExtension)
{
    EXPECT_EQ(offsetof(CAudioFormat, wFormatTag), 0U);
    EXPECT_EQ(offsetof(CAudioFormat, nChannels), 2U);
    EXPECT_EQ(offsetof(CAudioFormat, nSamplesPerSec), 4U);
    EXPECT_EQ(offsetof(CAudioFormat, nAvgBytesPerSec), 8U);
    EXPECT_EQ(offsetof(CAudioFormat, nBlockAlign), 12U);
    EXPECT_EQ(offsetof(CAudioFormat, wBitsPerSample), 14U);
    EXPECT_EQ(offsetof(CAudioFormat, cbSize), 16U);
    EXPECT_EQ(offsetof(CAudioFormat, wValidBitsPerSample), 18U);
    EXPECT_EQ(offsetof(CAudioFormat, dwChannelMask), 20U);
    EXPECT_EQ(offsetof(CAudioFormat, SubFormat), 24U);
    EXPECT_EQ(offsetof(CAudioFormat, m_Channels), 40U);
    EXPECT_EQ(offsetof(CAudioFormat, m_nFlags), 1448U);
    EXPECT_EQ(sizeof(CAudioFormat), 1452U);
}

TEST(AudioFormatLayout, AChannelIs44BytesOfWhichTheLast32AreZero)
{
    EXPECT_EQ(sizeof(AUDIO_CHANNEL), 44U);
    EXPECT_EQ(offsetof(AUDIO_CHANNEL, nSpeaker), 0U);
    EXPECT_EQ(offsetof(AUDIO_CHANNEL, bUsed), 4U);
    EXPECT_EQ(offsetof(AUDIO_CHANNEL, fLevel), 8U);
    EXPECT_EQ(offsetof(AUDIO_CHANNEL, aryReserved), 12U);
    CAudioFormat format;
    std::memset(static_cast<void*>(&format), 0xEE, sizeof format);
    format.SetFormat(16, 44100, 2);
    const unsigned char aryZero[32] = {};
    for (const AUDIO_CHANNEL& channel : format.m_Channels)
        EXPECT_EQ(std::memcmp(channel.aryReserved, aryZero, sizeof aryZero), 0);
}

TEST(AudioFormatLayout, ACopyIsTheSameBytes)
{
    CAudioFormat format;
    format.SetFormat(24, 96000, 6, true);
    CAudioFormat copy;
    std::memcpy(static_cast<void*>(&copy), &format, sizeof copy);
    EXPECT_EQ(Speakers(copy), Speakers(format));
    EXPECT_EQ(copy.nAvgBytesPerSec, 96000U * 18);
    EXPECT_EQ(CAudioFormat(copy).nAvgBytesPerSec, 96000U * 18);
}

TEST(AudioFormatGUID, ValuesAreThoseOfTheTable)
{
    EXPECT_TRUE(LY_GUID_PCM == PCM);
    EXPECT_TRUE(LY_GUID_MULAW == TAG_7);
    EXPECT_TRUE(LY_GUID_MPEG == TAG_80);
    EXPECT_TRUE(LY_GUID_DOLBY_SPDIF == TAG_146);
    EXPECT_TRUE(LY_GUID_NULL == NONE);
}

TEST(AudioFormatGUID, FloatEndsIn47AndNotAsTheOthersDo)
{
    EXPECT_EQ(LY_GUID_IEEE_FLOAT.Data4[7], 0x47);
    EXPECT_TRUE(LY_GUID_IEEE_FLOAT == IEEE_FLOAT);
    EXPECT_FALSE(LY_GUID_IEEE_FLOAT == FLOAT_OF_OTHERS);
}

TEST(AudioFormatGUID, TheUsualFloatIdentifierIsAForeignOne)
{
    CAudioFormat format;
    format.SetFormat(32, 44100, 2, false, FLOAT_OF_OTHERS, true);
    EXPECT_TRUE(format.SubFormat == FLOAT_OF_OTHERS);
    EXPECT_EQ(format.wFormatTag, 1);
    EXPECT_EQ(format.m_nFlags & 4U, 0U); // the samples are float all the same
}

struct FORMAT_ROW
{
    const char* pName;
    int nBits;
    int nRate;
    int nChannels;
    bool bExtensible;
    _GUID subFormat;
    int nTag;
    int nBlockAlign;
    unsigned int nBytesPerSecond;
    int nContainerBits;
    int nValidBits;
    _GUID result;
    unsigned int nFlags;
};

const FORMAT_ROW s_aryFormats[] = {
    {"CD", 16, 44100, 2, false, NONE, 1, 4, 176400, 16, 16, PCM, 4},
    {"FloatByDepth32", 32, 48000, 2, false, NONE, 3, 8, 384000, 32, 32, IEEE_FLOAT, 0},
    {"FloatByDepth64", 64, 48000, 1, false, NONE, 3, 8, 384000, 64, 64, IEEE_FLOAT, 0},
    {"IntegerByFlag", 32 | 0x10000, 48000, 2, false, NONE, 1, 8, 384000, 32, 32, PCM, 4},
    {"IntegerBySubFormat", 32, 48000, 2, false, PCM, 1, 8, 384000, 32, 32, PCM, 4},
    {"FlagBeatsTheFloatSubFormat", 64 | 0x10000, 48000, 2, false, IEEE_FLOAT, 1, 16, 768000, 64, 64, PCM, 4},
    {"NoFloatOf16Bits", 16, 44100, 2, false, IEEE_FLOAT, 1, 4, 176400, 16, 16, PCM, 4},
    {"Padding4Of24", 24 | 0x40000, 44100, 2, false, NONE, 1, 6, 264600, 24, 20, PCM, 4},
    {"TwelveBitsLieInSixteen", 12, 44100, 2, false, NONE, 1, 4, 176400, 16, 12, PCM, 4},
    {"OneBitStaysOne", 1, 64, 2, false, NONE, 1, 0, 16, 1, 1, PCM, 4},
    {"ZeroBits", 0, 44100, 2, false, NONE, 1, 0, 0, 0, 0, PCM, 4},
    {"Extensible", 16, 44100, 2, true, NONE, 0xFFFE, 4, 176400, 16, 16, PCM, 4},
    {"ExtensibleFloat", 32, 44100, 2, true, NONE, 0xFFFE, 8, 352800, 32, 32, IEEE_FLOAT, 0},
    {"Tag7", 8, 8000, 1, false, TAG_7, 7, 1, 8000, 8, 8, TAG_7, 4},
    {"Tag80", 16, 44100, 2, false, TAG_80, 80, 4, 176400, 16, 16, TAG_80, 4},
    {"Tag146", 16, 48000, 2, false, TAG_146, 146, 4, 192000, 16, 16, TAG_146, 4},
    {"ForeignAt32IsFloatUnderTag1", 32, 48000, 2, false, TAG_7, 7, 8, 384000, 32, 32, TAG_7, 0},
    {"Flag8", 16 | 0x20000, 44100, 2, false, NONE, 1, 4, 176400, 16, 16, PCM, 4 | 8},
    {"Flag16", 16 | 0x800000, 44100, 2, false, NONE, 1, 4, 176400, 16, 16, PCM, 4 | 16},
    {"BlockAlignKeepsSixteenBits", 16, 1, 0x8001, false, NONE, 1, 2, 2, 16, 16, PCM, 4},
    {"DepthBeyondSixteenBitsIsCut", 0xFFFF, 8, 1, false, NONE, 1, 0, 0, 0, 0xFFFF, PCM, 4},
};

TEST(AudioFormatSetFormat, GivesTheFieldsOfTheTable)
{
    for (const FORMAT_ROW& row : s_aryFormats)
    {
        SCOPED_TRACE(row.pName);
        CAudioFormat format;
        format.SetFormat(row.nBits, row.nRate, row.nChannels, row.bExtensible, row.subFormat, true);
        EXPECT_EQ(format.wFormatTag, row.nTag);
        EXPECT_EQ(format.nChannels, row.nChannels & 0xFFFF);
        EXPECT_EQ(format.nSamplesPerSec, static_cast<unsigned int>(row.nRate));
        EXPECT_EQ(format.nBlockAlign, row.nBlockAlign);
        EXPECT_EQ(format.nAvgBytesPerSec, row.nBytesPerSecond);
        EXPECT_EQ(format.wBitsPerSample, row.nContainerBits);
        EXPECT_EQ(format.wValidBitsPerSample, row.nValidBits);
        EXPECT_EQ(format.cbSize, row.bExtensible ? 22 : 0);
        EXPECT_TRUE(format.SubFormat == row.result);
        EXPECT_EQ(format.m_nFlags, row.nFlags);
    }
}

TEST(AudioFormatSetFormat, OtherFlagsStay)
{
    CAudioFormat format;
    format.m_nFlags = 0xFFFFFFFF;
    format.SetFormat(32, 44100, 2);
    EXPECT_EQ(format.m_nFlags, 0xFFFFFFFF & ~(4U | 8U | 16U));
    format.SetFormat(16 | 0x820000, 44100, 2);
    EXPECT_EQ(format.m_nFlags, 0xFFFFFFFF);
}

TEST(AudioFormatSetFormat, WithoutRebuildTheChannelsAndTheMaskStay)
{
    CAudioFormat format;
    format.SetFormat(16, 44100, 6);
    format.dwChannelMask = 0x3F;
    format.SetFormat(16, 44100, 2, false, _GUID(), false);
    EXPECT_EQ(format.dwChannelMask, 0x3FU);
    EXPECT_EQ(Speakers(format).size(), 6U);
    EXPECT_EQ(format.nChannels, 2);
    format.SetFormat(16, 44100, 2, false, _GUID(), true);
    EXPECT_EQ(format.dwChannelMask, 0U);
    EXPECT_EQ(Speakers(format), (std::vector<unsigned int>{2, 3}));
}

TEST(AudioFormatSetFormat, HostileNumbersAreSurvived)
{
    CAudioFormat format;
    for (const int nBits : {-1, 0, 1, 7, 31, 65535, INT_MAX, INT_MIN})
    {
        for (const int nChannels : {-1, 0, 1, 33, 65535, INT_MAX, INT_MIN})
            format.SetFormat(nBits, -1, nChannels, true);
    }
    EXPECT_EQ(format.nSamplesPerSec, 0xFFFFFFFF);
}

struct PADDING_TEST_ROW
{
    int nBits;
    int nPadding;
};

const PADDING_TEST_ROW s_aryPaddings[] = {
    {16, 0},
    {0x40000 | 7, 0},
    {0x40000 | 8, 4},
    {0x40000 | 24, 4},
    {0x80000 | 8, 0},
    {0x80000 | 9, 8},
    {0x80000 | 32, 8},
    {0x100000 | 15, 0},
    {0x100000 | 16, 12},
    {0x200000 | 15, 0},
    {0x200000 | 16, 14},
    {0x400000 | 16, 0},
    {0x400000 | 17, 16},
    {0x400000 | 32, 16},
    {0x7C0000 | 32, 4},        // the first flag that applies
    {0x780000 | 32, 8},        //
    {0x700000 | 32, 12},       //
    {0x600000 | 32, 14},       //
    {0x7C0000 | 8, 4},         //
    {0x780000 | 8, 0},         // each needs its depth
    {0x40000 | 0x80000 | 7, 0} //
};

TEST(AudioFormatPadding, FirstFlagWhoseDepthAllowsItCounts)
{
    for (const PADDING_TEST_ROW& row : s_aryPaddings)
        EXPECT_EQ(CAudioFormat::GetPaddingBitsFromBitDepth(row.nBits), row.nPadding) << std::hex << row.nBits;
}

TEST(AudioFormatChannels, SpeakersFollowTheCount)
{
    const std::vector<std::vector<unsigned int>> aryTables = {
        {},
        {1},
        {2, 3},
        {2, 3, 5},
        {2, 3, 6, 7},
        {2, 3, 4, 6, 7},
        {2, 3, 4, 5, 6, 7},
        {2, 3, 4, 5, 6, 7, 10},
        {2, 3, 4, 5, 8, 9, 6, 7},
        {2, 3, 4, 5, 8, 9, 6, 7, 13},
        {2, 3, 4, 5, 8, 9, 6, 7, 13, 14},
    };
    for (size_t nChannels = 0; nChannels < aryTables.size(); ++nChannels)
    {
        CAudioFormat format;
        format.SetFormat(16, 44100, static_cast<int>(nChannels));
        EXPECT_EQ(Speakers(format), aryTables[nChannels]) << nChannels;
    }
}

TEST(AudioFormatChannels, NoMoreThan32EntriesAreFilled)
{
    for (const int nChannels : {32, 33, 65535})
    {
        CAudioFormat format;
        format.SetFormat(16, 44100, nChannels);
        EXPECT_EQ(format.nChannels, nChannels);
        ASSERT_EQ(Speakers(format).size(), 32U);
        EXPECT_EQ(Speakers(format)[31], 36U);
        EXPECT_EQ(format.m_nFlags, 4U); // what lies behind the table is whole
    }
}

TEST(AudioFormatChannels, LowFrequencyIsRaisedExceptAmongThree)
{
    for (int nChannels = 1; nChannels <= 9; ++nChannels)
    {
        CAudioFormat format;
        format.SetFormat(16, 44100, nChannels);
        for (const AUDIO_CHANNEL& channel : format.m_Channels)
            EXPECT_EQ(channel.fLevel, channel.nSpeaker == 5 && nChannels != 3 ? 10.0F : 0.0F) << nChannels;
    }
}

TEST(AudioFormatChannels, LayoutPutsTheBackCentreOfSevenFirst)
{
    CAudioFormat format;
    format.SetFormat(16, 44100, 7);
    format.SetChannelsInfo(7, 0x700);
    EXPECT_EQ(Speakers(format), (std::vector<unsigned int>{2, 3, 4, 5, 10, 6, 7}));
    EXPECT_EQ(format.m_Channels[3].fLevel, 10.0F);
    format.SetChannelsInfo(7, 0xFFFFFFFF);
    EXPECT_EQ(format.m_Channels[4].nSpeaker, 10U);
    format.SetChannelsInfo(7, 0x600); // all three bits or none
    EXPECT_EQ(Speakers(format), (std::vector<unsigned int>{2, 3, 4, 5, 6, 7, 10}));
    format.SetFormat(16, 44100, 8);
    format.SetChannelsInfo(8, 0x700);
    EXPECT_EQ(Speakers(format), (std::vector<unsigned int>{2, 3, 4, 5, 8, 9, 6, 7}));
}

TEST(AudioFormatChannels, TheRecordsOwnCountDecides)
{
    CAudioFormat format;
    format.SetFormat(16, 44100, 2);
    format.SetChannelsInfo(6, 0);
    EXPECT_EQ(Speakers(format), (std::vector<unsigned int>{2, 3}));
}

TEST(AudioFormatSizes, FollowBitsChannelsAndRate)
{
    CAudioFormat format;
    format.wBitsPerSample = 12; // an eighth of it, cut
    format.nChannels = 3;
    format.nSamplesPerSec = 1000;
    format.UpdateSizesFromFormat();
    EXPECT_EQ(format.nBlockAlign, 3);
    EXPECT_EQ(format.nAvgBytesPerSec, 3000U);
    format.wBitsPerSample = 1;
    format.nSamplesPerSec = 2822400;
    format.nChannels = 2;
    format.UpdateSizesFromFormat();
    EXPECT_EQ(format.nBlockAlign, 0);
    EXPECT_EQ(format.nAvgBytesPerSec, 705600U);
}
