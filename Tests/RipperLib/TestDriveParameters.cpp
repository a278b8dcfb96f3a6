#include "MMC.h"
#include "RecordingTools.h"
#include "THDriveInterface.h"
#include <cstring>
#include <gtest/gtest.h>

struct QUERY
{
    bool bResult;
    unsigned int nValue;
    bool operator==(const QUERY& other) const { return bResult == other.bResult && nValue == other.nValue; }
};

static std::ostream& operator<<(std::ostream& out, const QUERY& query)
{
    return out << (query.bResult ? "true, " : "false, ") << query.nValue;
}

static QUERY Query(DSENSEMASK& mask, int nCode)
{
    QUERY query = {false, 0xDEAD};
    query.bResult = CTHDriveInterface::QueryCDParms(mask, nCode, query.nValue);
    return query;
}

static DSENSEMASK MakeValidMask()
{
    DSENSEMASK mask = {};
    mask.m_bCapabilitiesValid = true;
    mask.m_bCDParamsValid = true;
    return mask;
}

struct BIT_CASE
{
    int nCode;
    int nByte;
    int nBit;
};

static const BIT_CASE s_aryBitCases[] = {
    {1, 2, 0},  {2, 2, 1},  {3, 2, 2},  {50, 2, 3}, {4, 3, 0},  {5, 3, 1},  {40, 3, 1}, {49, 3, 4},
    {6, 4, 0},  {7, 4, 1},  {8, 4, 2},  {9, 4, 3},  {10, 4, 4}, {11, 4, 5}, {12, 4, 6}, {41, 4, 7},
    {13, 5, 0}, {14, 5, 1}, {15, 5, 2}, {16, 5, 3}, {17, 5, 4}, {18, 5, 5}, {19, 5, 6}, {20, 6, 0},
    {21, 6, 1}, {22, 6, 2}, {23, 6, 3}, {25, 7, 0}, {26, 7, 1}, {27, 7, 2}, {28, 7, 3},
};

TEST(BitCodes, ReadTheirBitAndNoOther)
{
    for (const BIT_CASE& bit : s_aryBitCases)
    {
        SCOPED_TRACE(bit.nCode);
        unsigned char nMask = static_cast<unsigned char>(1 << bit.nBit);
        DSENSEMASK mask = MakeValidMask();
        mask.m_CapabilitiesPage[bit.nByte] = nMask;
        EXPECT_EQ((QUERY{true, 1}), Query(mask, bit.nCode));
        memset(mask.m_CapabilitiesPage, 0xFF, sizeof mask.m_CapabilitiesPage);
        mask.m_CapabilitiesPage[bit.nByte] = static_cast<unsigned char>(~nMask);
        EXPECT_EQ((QUERY{true, 0}), Query(mask, bit.nCode));
    }
}

TEST(BitCodes, AreTrueWithZeroWithoutThePage)
{
    for (const BIT_CASE& bit : s_aryBitCases)
    {
        SCOPED_TRACE(bit.nCode);
        DSENSEMASK mask = {};
        memset(mask.m_CapabilitiesPage, 0xFF, sizeof mask.m_CapabilitiesPage);
        EXPECT_EQ((QUERY{true, 0}), Query(mask, bit.nCode));
    }
}

TEST(UnknownCodes, AreFalseWithZero)
{
    DSENSEMASK mask;
    memset(&mask, 1, sizeof mask);
    const int aryCodes[] = {36, 37, 38, 39, 42, 43, 44, 45, 46, 47, 0, -1, 51, 100, 256 + 1, 0x7FFFFFFF, -0x7FFFFFFF};
    for (int nCode : aryCodes)
        EXPECT_EQ((QUERY{false, 0}), Query(mask, nCode)) << nCode;
}

struct NUMBER_CASE
{
    int nCode;
    int nByte; // where 0x1234 is put
    unsigned int nValue;
};

static const NUMBER_CASE s_aryNumberCases[] = {
    {29, 8, 26}, // 4660 / 176 = 26.48
    {30, 10, 0x1234},
    {31, 12, 0x1234},
    {32, 14, 0x1234},
};

TEST(NumberCodes, AreBigEndian)
{
    for (const NUMBER_CASE& number : s_aryNumberCases)
    {
        DSENSEMASK mask = MakeValidMask();
        mask.m_CapabilitiesPage[number.nByte] = 0x12;
        mask.m_CapabilitiesPage[number.nByte + 1] = 0x34;
        EXPECT_EQ((QUERY{true, number.nValue}), Query(mask, number.nCode)) << number.nCode;
        mask.m_bCapabilitiesValid = false;
        EXPECT_EQ((QUERY{false, 0}), Query(mask, number.nCode)) << number.nCode;
    }
}

TEST(NumberCodes, LoadingMechanismIsThreeBits)
{
    DSENSEMASK mask = MakeValidMask();
    mask.m_CapabilitiesPage[6] = 0xBF;
    EXPECT_EQ((QUERY{true, 5}), Query(mask, 24));
    mask.m_bCapabilitiesValid = false;
    EXPECT_EQ((QUERY{false, 0}), Query(mask, 24));
}

TEST(NumberCodes, ZeroIsAnAnswer)
{
    DSENSEMASK mask = MakeValidMask();
    for (int nCode : {24, 30, 31, 32, 33, 34, 35})
        EXPECT_EQ((QUERY{true, 0}), Query(mask, nCode)) << nCode;
}

TEST(CDParameters, ComeFromTheirOwnPage)
{
    DSENSEMASK mask = {};
    mask.m_bCDParamsValid = true;
    const unsigned char page[8] = {0x0D, 6, 0, 0xFB, 0x00, 0x3C, 0x01, 0x4B};
    memcpy(mask.m_CDParamsPage, page, sizeof page);
    EXPECT_EQ((QUERY{true, 60}), Query(mask, 33));
    EXPECT_EQ((QUERY{true, 0x14B}), Query(mask, 34));
    EXPECT_EQ((QUERY{true, 0x0B}), Query(mask, 35));
    mask.m_bCDParamsValid = false;
    mask.m_bCapabilitiesValid = true;
    for (int nCode : {33, 34, 35})
        EXPECT_EQ((QUERY{false, 0}), Query(mask, nCode)) << nCode;
}

struct SPEED_CASE
{
    unsigned int nSpeed; // KB/s
    QUERY expected;
};

static const SPEED_CASE s_arySpeedCases[] = {
    {7056, {true, 40}}, {176, {true, 1}}, {88, {true, 1}}, {87, {false, 0}}, {0, {false, 0}}, {65535, {true, 372}},
};

TEST(SpeedCodes, AreRoundedMultipliers)
{
    for (const SPEED_CASE& speed : s_arySpeedCases)
    {
        DSENSEMASK mask = MakeValidMask();
        MMCPut16(mask.m_CapabilitiesPage + 8, speed.nSpeed);
        EXPECT_EQ(speed.expected, Query(mask, 29)) << speed.nSpeed;
        mask.m_CapabilitiesPage[1] = 34;
        MMCPut16(mask.m_CapabilitiesPage + 30, 1);
        MMCPut16(mask.m_CapabilitiesPage + 34, speed.nSpeed);
        EXPECT_EQ(speed.expected, Query(mask, 48)) << speed.nSpeed;
    }
}

static DSENSEMASK MakeWriteSpeeds(int nPageLength, unsigned int nCount)
{
    DSENSEMASK mask = MakeValidMask();
    mask.m_CapabilitiesPage[1] = static_cast<unsigned char>(nPageLength);
    MMCPut16(mask.m_CapabilitiesPage + 30, nCount);
    MMCPut16(mask.m_CapabilitiesPage + 34, 4 * 176);
    MMCPut16(mask.m_CapabilitiesPage + 38, 16 * 176);
    MMCPut16(mask.m_CapabilitiesPage + 42, 8 * 176);
    MMCPut16(mask.m_CapabilitiesPage + 46, 52 * 176);
    return mask;
}

TEST(WriteSpeed, IsTheLargestOfTheCountedDescriptors)
{
    DSENSEMASK mask = MakeWriteSpeeds(46, 3);
    EXPECT_EQ((QUERY{true, 16}), Query(mask, 48));
    mask = MakeWriteSpeeds(46, 1);
    EXPECT_EQ((QUERY{true, 4}), Query(mask, 48));
}

TEST(WriteSpeed, NeedsALongPageAndACount)
{
    DSENSEMASK mask = MakeWriteSpeeds(18, 3);
    EXPECT_EQ((QUERY{false, 0}), Query(mask, 48));
    mask = MakeWriteSpeeds(31, 3);
    EXPECT_EQ((QUERY{false, 0}), Query(mask, 48));
    mask = MakeWriteSpeeds(32, 3);
    EXPECT_EQ((QUERY{true, 16}), Query(mask, 48));
    mask = MakeWriteSpeeds(46, 0);
    EXPECT_EQ((QUERY{false, 0}), Query(mask, 48));
}

TEST(WriteSpeed, HostileCountStopsAtTheEndOfThePage)
{
    DSENSEMASK mask = MakeWriteSpeeds(255, 0xFFFF);
    EXPECT_EQ((QUERY{true, 52}), Query(mask, 48));
    MMCPut16(mask.m_CapabilitiesPage + 98, 72 * 176); // the last whole number of the page
    EXPECT_EQ((QUERY{true, 72}), Query(mask, 48));
    memset(mask.m_Page4, 0xFF, sizeof mask.m_Page4); // behind the page
    EXPECT_EQ((QUERY{true, 72}), Query(mask, 48));
}

TEST(WriteSpeed, IsLogged)
{
    RecordingTools tools;
    DSENSEMASK mask = MakeWriteSpeeds(46, 3);
    (void)Query(mask, 48);
    ASSERT_EQ(1U, tools.GetLogLines().size());
    EXPECT_EQ(L"returning max write speed multiplier of 16", tools.GetLogLines()[0].strText);
    EXPECT_EQ(4096, tools.GetLogLines()[0].nArea);
}

TEST(DriveInterfaceQuery, AnswersFromItsOwnSnapshot)
{
    CTHDriveInterface drive;
    unsigned int nValue = 99;
    EXPECT_TRUE(drive.QueryCDParms(1, nValue));
    EXPECT_EQ(0U, nValue);
    nValue = 99;
    EXPECT_FALSE(drive.QueryCDParms(31, nValue));
    EXPECT_EQ(0U, nValue);
    drive.m_DriveInfo.m_SenseMask.m_bCapabilitiesValid = true;
    MMCPut16(drive.m_DriveInfo.m_SenseMask.m_CapabilitiesPage + 12, 512);
    EXPECT_TRUE(drive.QueryCDParms(31, nValue));
    EXPECT_EQ(512U, nValue);
}
