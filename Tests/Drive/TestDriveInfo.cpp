#include "LySCSIBase.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>

static bool IsZero(const DSENSEMASK& mask)
{
    static const DSENSEMASK s_Zero = {};
    return memcmp(&mask, &s_Zero, sizeof mask) == 0;
}

// nCount bytes that count up from nFirst, as hexadecimal digits.
static std::wstring Digits(int nFirst, int nCount)
{
    std::wstring strDigits;
    for (int n = nFirst; n < nFirst + nCount; n++)
    {
        strDigits += L"0123456789abcdef"[(n >> 4) & 15];
        strDigits += L"0123456789abcdef"[n & 15];
    }
    return strDigits;
}

TEST(DriveInfo, StartsWithItsDefaults)
{
    DRIVE_INFO info;
    EXPECT_TRUE(info.m_strPath.IsEmpty() && info.m_strModel.IsEmpty());
    EXPECT_TRUE(info.m_strVendor.IsEmpty() && info.m_strExtra.IsEmpty());
    EXPECT_TRUE(IsZero(info.m_SenseMask));
    EXPECT_EQ(0, info.m_bStateA);
    EXPECT_EQ(16, info.m_nValueA);
    EXPECT_EQ(16, info.m_nValueB);
    EXPECT_EQ(1, info.m_bStateB);
}

static DRIVE_INFO MakeFilledInfo()
{
    DRIVE_INFO info;
    info.m_strPath = L"E:";
    info.m_strModel = L"model";
    info.m_strVendor = L"vendor";
    info.m_strExtra = L"extra";
    info.m_SenseMask.m_Page4[15] = 0x5A;
    info.m_SenseMask.m_bPage4Valid = true;
    info.m_bStateA = 7;
    info.m_nValueA = -1;
    info.m_nValueB = 99;
    info.m_bStateB = 0;
    return info;
}

TEST(DriveInfo, ResetBringsTheDefaultsBack)
{
    DRIVE_INFO info = MakeFilledInfo();
    info.Reset();
    EXPECT_TRUE(info.m_strPath.IsEmpty() && info.m_strModel.IsEmpty());
    EXPECT_TRUE(info.m_strVendor.IsEmpty() && info.m_strExtra.IsEmpty());
    EXPECT_TRUE(IsZero(info.m_SenseMask));
    EXPECT_EQ(0, info.m_bStateA);
    EXPECT_EQ(16, info.m_nValueA);
    EXPECT_EQ(16, info.m_nValueB);
    EXPECT_EQ(1, info.m_bStateB);
}

TEST(DriveInfo, CopiesEveryField)
{
    const DRIVE_INFO info = MakeFilledInfo();
    DRIVE_INFO assigned;
    assigned = info;
    for (const DRIVE_INFO& copy : {DRIVE_INFO(info), assigned})
    {
        EXPECT_STREQ(L"E:", copy.m_strPath);
        EXPECT_STREQ(L"model", copy.m_strModel);
        EXPECT_STREQ(L"vendor", copy.m_strVendor);
        EXPECT_STREQ(L"extra", copy.m_strExtra);
        EXPECT_EQ(0, memcmp(&copy.m_SenseMask, &info.m_SenseMask, sizeof(DSENSEMASK)));
        EXPECT_EQ(7, copy.m_bStateA);
        EXPECT_EQ(-1, copy.m_nValueA);
        EXPECT_EQ(99, copy.m_nValueB);
        EXPECT_EQ(0, copy.m_bStateB);
    }
}

TEST(PackedData, FillsTheRecordInTheOrderOfItsFields)
{
    DSENSEMASK mask = {};
    mask.InitFromPackedData((Digits(0, 136) + L"0100FF00").c_str());
    EXPECT_EQ(0, mask.m_Page1[0]);
    EXPECT_EQ(11, mask.m_Page1[11]);
    EXPECT_EQ(12, mask.m_CDParamsPage[0]);
    EXPECT_EQ(20, mask.m_CapabilitiesPage[0]);
    EXPECT_EQ(119, mask.m_CapabilitiesPage[99]);
    EXPECT_EQ(120, mask.m_Page4[0]);
    EXPECT_EQ(135, mask.m_Page4[15]);
    EXPECT_TRUE(mask.m_bPage1Valid);
    EXPECT_FALSE(mask.m_bCDParamsValid);
    EXPECT_TRUE(mask.m_bCapabilitiesValid);
    EXPECT_FALSE(mask.m_bPage4Valid);
}

TEST(PackedData, EmptyTextLeavesEverythingZero)
{
    DSENSEMASK mask = {};
    mask.InitFromPackedData(L"");
    EXPECT_TRUE(IsZero(mask));
}

TEST(PackedData, TenBytesSkipTheFirstBlockAndFillTheSecondFromTheStart)
{
    DSENSEMASK mask = {};
    mask.InitFromPackedData(Digits(1, 10).c_str());
    EXPECT_EQ(0, mask.m_Page1[0]);
    EXPECT_EQ(1, mask.m_CDParamsPage[0]);
    EXPECT_EQ(8, mask.m_CDParamsPage[7]);
    EXPECT_TRUE(mask.m_bPage1Valid); // the two bytes behind are taken for flags
    EXPECT_TRUE(mask.m_bCDParamsValid);
    EXPECT_FALSE(mask.m_bCapabilitiesValid);
    EXPECT_FALSE(mask.m_bPage4Valid);
}

struct PACKED_CASE
{
    const char* pName;
    int nBytes; // 1, 2, 3 ...
    int nPage1; // first byte of each block; 0: untouched
    int nCDParams;
    int nCapabilities;
    int nPage4;
    int nFlags; // how many of the flags are set
};

static const PACKED_CASE s_aryPackedCases[] = {
    {"Nothing", 0, 0, 0, 0, 0, 0},
    {"SevenBytesAreAllFlags", 7, 0, 0, 0, 0, 4},
    {"EightBytesAreTheSecondBlock", 8, 0, 1, 0, 0, 0},
    {"ElevenBytesLeaveThreeFlags", 11, 0, 1, 0, 0, 3},
    {"TwelveBytesAreTheFirstBlock", 12, 1, 0, 0, 0, 0},
    {"NineteenBytesLeaveFourFlags", 19, 1, 0, 0, 0, 4},
    {"TwentyBytesAreTwoBlocks", 20, 1, 13, 0, 0, 0},
    {"ThirtySixBytesPutTheFourthBlockBehindTheSecond", 36, 1, 13, 0, 21, 0},
    {"OneHundredAndNineteenBytesMissTheThirdBlock", 119, 1, 13, 0, 21, 4},
    {"OneHundredAndTwentyBytes", 120, 1, 13, 21, 0, 0},
    {"OneHundredAndThirtySixBytes", 136, 1, 13, 21, 121, 0},
    {"OneFlagMissing", 139, 1, 13, 21, 121, 3},
    {"Whole", 140, 1, 13, 21, 121, 4},
    {"WhatFollowsIsIgnored", 150, 1, 13, 21, 121, 4},
};

class PackedDataOfLength : public testing::TestWithParam<PACKED_CASE>
{
};

TEST_P(PackedDataOfLength, FillsTheBlocksThatFit)
{
    const PACKED_CASE& packed = GetParam();
    DSENSEMASK mask = {};
    mask.InitFromPackedData(Digits(1, packed.nBytes).c_str());
    EXPECT_EQ(packed.nPage1, mask.m_Page1[0]);
    EXPECT_EQ(packed.nCDParams, mask.m_CDParamsPage[0]);
    EXPECT_EQ(packed.nCapabilities, mask.m_CapabilitiesPage[0]);
    EXPECT_EQ(packed.nPage4, mask.m_Page4[0]);
    int nFlags = mask.m_bPage1Valid + mask.m_bCDParamsValid + mask.m_bCapabilitiesValid + mask.m_bPage4Valid;
    EXPECT_EQ(packed.nFlags, nFlags);
}

INSTANTIATE_TEST_SUITE_P(Lengths, PackedDataOfLength, testing::ValuesIn(s_aryPackedCases),
                         [](const auto& row) { return row.param.pName; });

TEST(PackedData, SkippedBlocksKeepTheirValueAndMissingFlagsBecomeFalse)
{
    DSENSEMASK mask;
    memset(&mask, 1, sizeof mask);
    mask.InitFromPackedData(L"zz"); // no digits at all
    EXPECT_EQ(1, mask.m_Page1[0]);
    EXPECT_EQ(1, mask.m_CapabilitiesPage[99]);
    EXPECT_FALSE(mask.m_bPage1Valid || mask.m_bCDParamsValid || mask.m_bCapabilitiesValid || mask.m_bPage4Valid);
}
