#include "SenseData.h"
#include <gtest/gtest.h>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;

struct SENSE_CASE
{
    const char* m_pName;
    Bytes m_Came;
    Bytes m_Fixed; // the first bytes; the rest is zero
};

// Fixed: code, -, key, information x4, additional, specific x4, ASC, ASCQ, unit, key specific x3.
const SENSE_CASE s_aryCases[] = {
    {"FixedCurrent",
     {0x70, 0, 3, 0, 0, 0x12, 0x34, 10, 0, 0, 0, 0, 0x11, 0x05, 0, 0, 0, 0},
     {0x70, 0, 3, 0, 0, 0x12, 0x34, 10, 0, 0, 0, 0, 0x11, 0x05}},
    {"FixedKeepsFlagsAndValidBit",
     {0xF0, 1, 0xE5, 1, 2, 3, 4, 10, 5, 6, 7, 8, 0x64, 0, 9, 0xC0, 1, 2},
     {0xF0, 1, 0xE5, 1, 2, 3, 4, 10, 5, 6, 7, 8, 0x64, 0, 9, 0xC0, 1, 2}},
    {"FixedDeferred",
     {0x71, 0, 4, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x09, 0x01},
     {0x71, 0, 4, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x09, 0x01}},
    {"FixedWithoutCodes", {0x70, 0, 6}, {0x70, 0, 6}},
    {"DescriptorCurrent", {0x72, 2, 0x3A, 0x01, 0, 0, 0, 0}, {0x70, 0, 2, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x3A, 0x01}},
    {"DescriptorDeferred", {0x73, 4, 0x09, 0x02, 0, 0, 0, 0}, {0x71, 0, 4, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x09, 0x02}},
    {"DescriptorKeyOnlyLowBits", {0x72, 0xF6, 0x28, 0, 0, 0, 0, 0}, {0x70, 0, 6, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x28}},
    {"DescriptorHeaderCutBehindCodes", {0x72, 6, 0x29, 1}, {0x70, 0, 6, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x29, 1}},
    {"DescriptorInformation",
     {0x72, 3, 0x11, 5, 0, 0, 0, 12, 0, 10, 0x80, 0, 0, 0, 0, 0, 0, 1, 0xE2, 0x40},
     {0xF0, 0, 3, 0, 1, 0xE2, 0x40, 10, 0, 0, 0, 0, 0x11, 5}},
    {"DescriptorInformationNotValid",
     {0x72, 3, 0x11, 5, 0, 0, 0, 12, 0, 10, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3},
     {0x70, 0, 3, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x11, 5}},
    {"DescriptorInformationTooWide",
     {0x72, 3, 0x11, 5, 0, 0, 0, 12, 0, 10, 0x80, 0, 0, 0, 0, 1, 0, 1, 2, 3},
     {0x70, 0, 3, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x11, 5}},
    {"DescriptorCommandSpecific",
     {0x72, 5, 0x24, 0, 0, 0, 0, 12, 1, 10, 0, 0, 0, 0, 0, 0, 9, 8, 7, 6},
     {0x70, 0, 5, 0, 0, 0, 0, 10, 9, 8, 7, 6, 0x24, 0}},
    {"DescriptorKeySpecific",
     {0x72, 5, 0x24, 0, 0, 0, 0, 8, 2, 6, 0, 0, 0xC0, 0, 9, 0},
     {0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x24, 0, 0, 0xC0, 0, 9}},
    {"DescriptorUnit",
     {0x72, 4, 0x40, 0x80, 0, 0, 0, 4, 3, 2, 0, 0x77},
     {0x70, 0, 4, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x40, 0x80, 0x77}},
    {"DescriptorStreamFlags",
     {0x72, 0, 0, 1, 0, 0, 0, 4, 4, 2, 0, 0xFF},
     {0x70, 0, 0xE0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 1}},
    {"DescriptorBlockLengthFlag",
     {0x72, 5, 0x64, 0, 0, 0, 0, 4, 5, 2, 0, 0xFF},
     {0x70, 0, 0x25, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x64}},
    {"TwoDescriptors",
     {0x72, 5, 0x64, 0, 0, 0, 0, 8, 5, 2, 0, 0x20, 3, 2, 0, 0x42},
     {0x70, 0, 0x25, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x64, 0, 0x42}},
    {"UnknownDescriptorIsStepped",
     {0x72, 5, 0x64, 0, 0, 0, 0, 7, 0x80, 1, 0xFF, 3, 2, 0, 0x42},
     {0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x64, 0, 0x42}},
    {"DescriptorLongerThanTheRest",
     {0x72, 5, 0x64, 0, 0, 0, 0, 4, 3, 0xFF, 0, 0x42},
     {0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x64}},
    {"DescriptorTooShortForItsType",
     {0x72, 5, 0x64, 0, 0, 0, 0, 3, 3, 1, 0x42},
     {0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x64}},
    {"BehindTheAdditionalLengthNothingCounts",
     {0x72, 5, 0x64, 0, 0, 0, 0, 0, 3, 2, 0, 0x42},
     {0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x64}},
};

TEST(SenseData, EveryFormBecomesFixed)
{
    for (const SENSE_CASE& row : s_aryCases)
    {
        // A block of its exact size: one byte more would be seen.
        const Bytes came = row.m_Came;
        SENSE_DATA fixed;
        fixed.Set({9, 9, 9});
        EXPECT_TRUE(ReadSenseData(came.data(), static_cast<int>(came.size()), fixed)) << row.m_pName;
        Bytes expected = row.m_Fixed;
        expected.resize(SENSE_BYTES);
        EXPECT_EQ(expected, Bytes(fixed.m_aryBytes, fixed.m_aryBytes + SENSE_BYTES)) << row.m_pName;
    }
}

TEST(SenseData, FixedIsPassedThroughToItsLastByte)
{
    Bytes came(SENSE_BYTES);
    for (int i = 0; i < SENSE_BYTES; ++i)
        came[static_cast<size_t>(i)] = static_cast<unsigned char>(0x70 + i);
    SENSE_DATA fixed;
    ASSERT_TRUE(ReadSenseData(came.data(), SENSE_BYTES, fixed));
    EXPECT_EQ(came, Bytes(fixed.m_aryBytes, fixed.m_aryBytes + SENSE_BYTES));
}

TEST(SenseData, OtherBytesAreNone)
{
    const Bytes aryCases[] = {{},        {0x70},       {0x70, 0},    {0x72},         {0x72, 3, 0x11},
                              {0, 0, 3}, {0x7F, 0, 3}, {0x6F, 0, 3}, {0x74, 0, 3, 3}};
    for (const Bytes& came : aryCases)
    {
        SENSE_DATA fixed;
        fixed.Set({9, 9, 9});
        EXPECT_FALSE(ReadSenseData(came.data(), static_cast<int>(came.size()), fixed)) << came.size();
        EXPECT_EQ(Bytes(SENSE_BYTES), Bytes(fixed.m_aryBytes, fixed.m_aryBytes + SENSE_BYTES));
    }
    SENSE_DATA fixed;
    EXPECT_FALSE(ReadSenseData(nullptr, 18, fixed));
    EXPECT_FALSE(ReadSenseData(reinterpret_cast<const unsigned char*>("p"), -1, fixed));
}

TEST(SenseData, DeferredIsToldFromCurrent)
{
    for (const auto& [nCode, bDeferred] : {std::pair{0x70, false}, {0xF0, false}, {0x71, true}, {0xF1, true}})
    {
        SENSE_DATA fixed;
        fixed.m_aryBytes[0] = static_cast<unsigned char>(nCode);
        EXPECT_EQ(bDeferred, IsDeferred(fixed)) << nCode;
    }
}
} // namespace
