#include "DeviceIdentity.h"
#include "ScriptedKernel.h"
#include <gtest/gtest.h>

namespace
{
constexpr int FLAGS_OFFSET = 136;

class DeviceIdentityTest : public ::testing::Test
{
protected:
    bool Read()
    {
        return ReadIdentity(
            [this](const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nBytes)
            {
                m_aryCDBs.emplace_back(pCDB, pCDB + nCDBBytes);
                const Bytes answer = pCDB[0] == CDB_INQUIRY ? m_Inquiry : m_mapPages[pCDB[2]];
                nBytes = static_cast<int>(std::min<size_t>(answer.size(), static_cast<size_t>(nBytes)));
                std::copy_n(answer.begin(), nBytes, pData);
                return !answer.empty();
            },
            m_Identity);
    }
    Bytes GetPacked(int nFrom, int nBytes) const
    {
        return Bytes(m_Identity.m_aryPacked + nFrom, m_Identity.m_aryPacked + nFrom + nBytes);
    }
    static Bytes GetBehindHeader(const Bytes& answer)
    {
        return Bytes(answer.begin() + MODE_HEADER_BYTES, answer.end());
    }

    Bytes m_Inquiry = ScriptedKernel::MakeInquiry();
    std::map<int, Bytes> m_mapPages = {{0x01, ScriptedKernel::MakePage(0x01)},
                                       {0x0D, ScriptedKernel::MakePage(0x0D)},
                                       {0x2A, ScriptedKernel::MakePage(0x2A)},
                                       {0x0E, ScriptedKernel::MakePage(0x0E)}};
    std::vector<Bytes> m_aryCDBs;
    DEVICE_IDENTITY m_Identity;
};

TEST_F(DeviceIdentityTest, AsksOnceForTheNamesAndForEachPage)
{
    ASSERT_TRUE(Read());
    const std::vector<Bytes> aryExpected = {{0x12, 0, 0, 0, 36, 0},
                                            {0x5A, 0, 0x01, 0, 0, 0, 0, 1, 0, 0},
                                            {0x5A, 0, 0x0D, 0, 0, 0, 0, 1, 0, 0},
                                            {0x5A, 0, 0x2A, 0, 0, 0, 0, 1, 0, 0},
                                            {0x5A, 0, 0x0E, 0, 0, 0, 0, 1, 0, 0}};
    EXPECT_EQ(aryExpected, m_aryCDBs);
}

TEST_F(DeviceIdentityTest, NamesAreTrimmed)
{
    ASSERT_TRUE(Read());
    EXPECT_EQ("ACME", m_Identity.m_Description.m_strVendor);
    EXPECT_EQ("CD-READER 3000", m_Identity.m_Description.m_strModel);
    EXPECT_EQ("1.07", m_Identity.m_Description.m_strRevision);
    EXPECT_FALSE(m_Identity.m_Description.m_bImage);
    EXPECT_EQ(5, m_Identity.m_nDeviceType);
    EXPECT_EQ(0, m_Identity.m_nQualifier);
}

TEST_F(DeviceIdentityTest, NamesHoldPrintableCharactersOnly)
{
    std::copy_n("  A\0\033\xE4"
                "B ",
                8, m_Inquiry.begin() + INQUIRY_OFFSET_VENDOR);
    std::fill_n(m_Inquiry.begin() + INQUIRY_OFFSET_PRODUCT, INQUIRY_PRODUCT_BYTES, static_cast<unsigned char>(0));
    m_Inquiry.resize(34); // the revision is cut
    ASSERT_TRUE(Read());
    EXPECT_EQ("A   B", m_Identity.m_Description.m_strVendor);
    EXPECT_EQ("", m_Identity.m_Description.m_strModel);
    EXPECT_EQ("1.", m_Identity.m_Description.m_strRevision);
}

TEST_F(DeviceIdentityTest, OtherKindsAreNotAskedForPages)
{
    for (const int nFirst : {0x00, 0x01, 0x04, 0x07, 0x1F, 0x7F})
    {
        m_aryCDBs.clear();
        m_Inquiry[0] = static_cast<unsigned char>(nFirst);
        EXPECT_TRUE(Read());
        EXPECT_EQ(nFirst & 0x1F, m_Identity.m_nDeviceType);
        EXPECT_EQ(nFirst >> 5, m_Identity.m_nQualifier);
        EXPECT_EQ(1u, m_aryCDBs.size());
    }
}

TEST_F(DeviceIdentityTest, NoAnswerToInquiryIsAFailure)
{
    m_Inquiry.clear();
    EXPECT_FALSE(Read());
    EXPECT_EQ(1u, m_aryCDBs.size());
}

TEST_F(DeviceIdentityTest, PagesStandInTheirRecordsWithTheirFlags)
{
    ASSERT_TRUE(Read());
    EXPECT_EQ(GetBehindHeader(m_mapPages[0x01]), GetPacked(0, 12));
    EXPECT_EQ(GetBehindHeader(m_mapPages[0x0D]), GetPacked(12, 8));
    EXPECT_EQ(GetBehindHeader(m_mapPages[0x2A]), GetPacked(20, 32));
    EXPECT_EQ(Bytes(68), GetPacked(52, 68));
    EXPECT_EQ(GetBehindHeader(m_mapPages[0x0E]), GetPacked(120, 16));
    EXPECT_EQ(Bytes(4, 1), GetPacked(FLAGS_OFFSET, 4));
}

TEST_F(DeviceIdentityTest, MissingPagesAreZeroWithFlagZero)
{
    m_mapPages.erase(0x0D);
    m_mapPages.erase(0x0E);
    ASSERT_TRUE(Read());
    EXPECT_EQ(Bytes(8), GetPacked(12, 8));
    EXPECT_EQ(Bytes(16), GetPacked(120, 16));
    EXPECT_EQ((Bytes{1, 0, 1, 0}), GetPacked(FLAGS_OFFSET, 4));
}

TEST_F(DeviceIdentityTest, PackedTextHas280Digits)
{
    ASSERT_TRUE(Read());
    const std::string strText = GetPackedText(m_Identity);
    EXPECT_EQ(280u, strText.size());
    EXPECT_EQ("010A030405060708090A0B0C", strText.substr(0, 24)); // page 01h of the scripted drive
    EXPECT_EQ("0D060F1011121314", strText.substr(24, 16));
    EXPECT_EQ("2A1E2C2D", strText.substr(40, 8));
    EXPECT_EQ("01010101", strText.substr(272));
    EXPECT_EQ(std::string(280, '0'), GetPackedText({}));
}

struct PAGE_CASE
{
    const char* m_pName;
    Bytes m_Answer;
    bool m_bThere;
    Bytes m_Record; // of eight bytes
};

// Header: length of what follows, x, x, x, x, length of the block descriptors.
const PAGE_CASE s_aryPages[] = {
    {"Plain", {0, 14, 0, 0, 0, 0, 0, 0, 0x0D, 6, 1, 2, 3, 4, 5, 6}, true, {0x0D, 6, 1, 2, 3, 4, 5, 6}},
    {"SavableBitIsKept", {0, 14, 0, 0, 0, 0, 0, 0, 0x8D, 6, 1, 2, 3, 4, 5, 6}, true, {0x8D, 6, 1, 2, 3, 4, 5, 6}},
    {"BehindABlockDescriptor",
     {0, 22, 0, 0, 0, 0, 0, 8, 9, 9, 9, 9, 9, 9, 9, 9, 0x0D, 6, 1, 2, 3, 4, 5, 6},
     true,
     {0x0D, 6, 1, 2, 3, 4, 5, 6}},
    {"BehindAnotherPage",
     {0, 17, 0, 0, 0, 0, 0, 0, 0x01, 1, 9, 0x0D, 6, 1, 2, 3, 4, 5, 6},
     true,
     {0x0D, 6, 1, 2, 3, 4, 5, 6}},
    {"ShorterThanTheRecord", {0, 10, 0, 0, 0, 0, 0, 0, 0x0D, 2, 1, 2}, true, {0x0D, 2, 1, 2, 0, 0, 0, 0}},
    {"LongerThanTheRecord",
     {0, 18, 0, 0, 0, 0, 0, 0, 0x0D, 10, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10},
     true,
     {0x0D, 10, 1, 2, 3, 4, 5, 6}},
    {"CutByTheTransfer", {0, 14, 0, 0, 0, 0, 0, 0, 0x0D, 6, 1, 2}, true, {0x0D, 6, 1, 2, 0, 0, 0, 0}},
    {"CutByTheModeDataLength", {0, 9, 0, 0, 0, 0, 0, 0, 0x0D, 6, 1, 2, 3, 4, 5, 6}, true, {0x0D, 6, 1, 0, 0, 0, 0, 0}},
    {"AnotherPageOnly", {0, 10, 0, 0, 0, 0, 0, 0, 0x0E, 2, 1, 2}, false, Bytes(8)},
    {"SubPageHasAnotherHeader", {0, 14, 0, 0, 0, 0, 0, 0, 0x4D, 6, 1, 2, 3, 4, 5, 6}, false, Bytes(8)},
    {"DescriptorsBeyondTheAnswer", {0, 14, 0, 0, 0, 0, 0xFF, 0xFF, 0x0D, 6, 1, 2, 3, 4, 5, 6}, false, Bytes(8)},
    {"DescriptorsUpToTheEnd", {0, 14, 0, 0, 0, 0, 0, 8, 0x0D, 6, 1, 2, 3, 4, 5, 6}, false, Bytes(8)},
    {"DescriptorsLeaveOneByte", {0, 14, 0, 0, 0, 0, 0, 7, 0x0D, 6, 1, 2, 3, 4, 5, 0x0D}, false, Bytes(8)},
    {"LengthZero", {0, 0, 0, 0, 0, 0, 0, 0, 0x0D, 6, 1, 2, 3, 4, 5, 6}, false, Bytes(8)},
    {"HeaderCut", {0, 14, 0, 0, 0, 0, 0}, false, Bytes(8)},
    {"HeaderOnly", {0, 14, 0, 0, 0, 0, 0, 0}, false, Bytes(8)},
    {"Nothing", {}, false, Bytes(8)},
};

TEST(ModePage, IsFoundWithinWhatCame)
{
    for (const PAGE_CASE& row : s_aryPages)
    {
        const Bytes answer = row.m_Answer; // of its exact size: one byte more would be seen
        Bytes record(8);
        EXPECT_EQ(row.m_bThere, TakeModePage(answer.data(), static_cast<int>(answer.size()), 0x0D, record.data(), 8))
            << row.m_pName;
        EXPECT_EQ(row.m_Record, record) << row.m_pName;
    }
}
} // namespace
