// The read offset of a drive model, from the option that tells it to the corrected samples.

#include "DriveFactory.h"
#include "OffsetDrive.h"
#include "ProfiledDiscs.h"
#include "ReadOffsetLookup.h"
#include "ReadOffsetOption.h"
#include "Tools/FakeTools.h"

namespace
{
constexpr const wchar_t* STORE = L"Disc Service";
constexpr const wchar_t* OFFSET_KEY = L"Read Offset ACME CD 24X";
constexpr const wchar_t* OVER_READ_KEY = L"Over-Read ACME CD 24X";

DRIVE_DESCRIPTION GetAcme() { return {"ACME", "CD 24X", "1.0", false}; }

class OffsetWiringTest : public ::testing::Test
{
protected:
    static constexpr int SECTORS = 60;

    void SetUp() override
    {
        ASSERT_TRUE(m_Tools.GetIsLoaded());
        m_strAudio = ToBytes(MakeFrames(SECTORS * LY_CD_SECTOR_FRAMES));
        const std::string strSilence(m_strAudio.size(), '\0');
        m_strBetweenSilence = strSilence + m_strAudio + strSilence;
        (void)m_Folder.Write("disc.bin", m_strAudio);
        (void)m_Folder.Write("disc.cue", "FILE \"disc.bin\" BINARY\nTRACK 01 AUDIO\n INDEX 01 00:00:00\n");
    }
    void Open(const std::string& strProfile)
    {
        (void)m_Folder.Write("disc.cue.drive", "Vendor = ACME\nModel = CD 24X\n" + strProfile);
        std::string strError;
        m_pDrive = CreateServiceDrive(m_Folder.GetPath("disc.cue"), strError);
        ASSERT_NE(nullptr, m_pDrive) << strError;
        ASSERT_TRUE(m_pDrive->Load(strError) && m_pDrive->Acquire(strError)) << strError;
    }
    std::string Read(int nLBA, int nCount, unsigned char nType = READ_CD_TYPE_CDDA)
    {
        std::vector<unsigned char> cdb = {CDB_READ_CD, nType, 0, 0, 0, 0, 0, 0, 0, READ_CD_USER_DATA, 0, 0};
        MMCPut32(&cdb[2], static_cast<unsigned int>(nLBA));
        MMCPut24(&cdb[6], static_cast<unsigned int>(nCount));
        std::string strData(static_cast<size_t>(nCount) * LY_CD_SECTOR_BYTES, '\xAA');
        int nBytes = static_cast<int>(strData.size());
        SENSE_DATA sense;
        EXPECT_TRUE(m_pDrive->Send({cdb.data(), static_cast<int>(cdb.size()),
                                    reinterpret_cast<unsigned char*>(strData.data()), nBytes, DRIVE_TRANSFER_IN},
                                   sense));
        return strData;
    }
    // What the disc has so many frames behind the sector, silence ahead of it and behind it.
    std::string GetTruth(int nLBA, int nCount, int nFrames = 0) const
    {
        const int nAt = (SECTORS + nLBA) * LY_CD_SECTOR_BYTES + nFrames * LY_CD_FRAME_BYTES;
        return m_strBetweenSilence.substr(static_cast<size_t>(nAt), static_cast<size_t>(nCount) * LY_CD_SECTOR_BYTES);
    }

    FakeTools m_Tools;
    TempFolder m_Folder;
    std::string m_strAudio;
    std::string m_strBetweenSilence;
    std::unique_ptr<ServiceDrive> m_pDrive;
};

struct OFFSET_TEXT
{
    const wchar_t* m_pText;
    int m_nFrames; // NONE for a text that is none
};
constexpr int NONE = 1000000;
} // namespace

TEST(ReadOffsetOption, AWholeNumberOfFramesWithASignOrWithout)
{
    for (const OFFSET_TEXT& row : {OFFSET_TEXT{L"6", 6},
                                   {L"+6", 6},
                                   {L"-582", -582},
                                   {L" 30 ", 30},
                                   {L"0", 0},
                                   {L"-0", 0},
                                   {L"44100", 44100},
                                   {L"-44100", -44100},
                                   {L"44101", NONE},
                                   {L"", NONE},
                                   {L"-", NONE},
                                   {L"6.5", NONE},
                                   {L"--6", NONE},
                                   {L"+-6", NONE},
                                   {L"6 frames", NONE},
                                   {L"99999999999999999999", NONE},
                                   {L"six", NONE}})
        EXPECT_EQ(row.m_nFrames, ParseReadOffset(row.m_pText).value_or(NONE)) << NarrowUTF8(row.m_pText);
}

TEST(ReadOffsetOption, TheKeyNamesVendorAndModelWithoutPadding)
{
    EXPECT_EQ(L"Read Offset ACME CD 24X", GetReadOffsetKey("ACME    ", " CD 24X  "));
    EXPECT_EQ(L"Over-Read ACME CD 24X", GetOverReadKey("ACME", "CD 24X"));
    EXPECT_EQ(L"Read Offset CD 24X", GetReadOffsetKey("", "CD 24X"));
    EXPECT_EQ(L"Read Offset", GetReadOffsetKey("", " "));
}

TEST(ReadOffsetLookup, TheOptionOfTheModelCounts)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    EXPECT_EQ(0, LookUpReadOffset(GetAcme()).m_nFrames);
    tools->SetOption(STORE, OFFSET_KEY, L"-582");
    EXPECT_EQ(-582, LookUpReadOffset(GetAcme()).m_nFrames);
    EXPECT_FALSE(LookUpReadOffset(GetAcme()).m_bOverRead);
    EXPECT_EQ(0, LookUpReadOffset({"ACME", "CD 32X", "1.0", false}).m_nFrames);
    for (const wchar_t* pTrue : {L"true", L"True", L"1"})
    {
        tools->SetOption(STORE, OVER_READ_KEY, pTrue);
        EXPECT_TRUE(LookUpReadOffset(GetAcme()).m_bOverRead);
    }
    tools->SetOption(STORE, OVER_READ_KEY, L"false");
    EXPECT_FALSE(LookUpReadOffset(GetAcme()).m_bOverRead);
    EXPECT_EQ("", LookUpReadOffset(GetAcme()).m_strWarning);
}

TEST(ReadOffsetLookup, AValueThatIsNoneIsNoCorrectionAndIsToldOf)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetOption(STORE, OFFSET_KEY, L"a few");
    EXPECT_EQ(0, LookUpReadOffset(GetAcme()).m_nFrames);
    EXPECT_EQ(
        "The option \"Read Offset ACME CD 24X\" of \"Disc Service\" is \"a few\" and was left out of account; set "
        "it to a whole number of sample frames, as +6 or -582.",
        LookUpReadOffset(GetAcme()).m_strWarning);
    tools->SetOption(STORE, OFFSET_KEY, L"6");
    tools->SetOption(STORE, OVER_READ_KEY, L"perhaps");
    EXPECT_EQ(6, LookUpReadOffset(GetAcme()).m_nFrames);
    EXPECT_FALSE(LookUpReadOffset(GetAcme()).m_bOverRead);
    EXPECT_NE(std::string::npos, LookUpReadOffset(GetAcme()).m_strWarning.find("set it to true or false."));
}

TEST_F(OffsetWiringTest, WithoutACorrectionTheAudioComesShifted)
{
    for (const int nOffset : {6, -6, 588, -1200})
    {
        Open("ReadOffset = " + std::to_string(nOffset) + "\n");
        EXPECT_TRUE(Same(GetTruth(10, 5, -nOffset), Read(10, 5))) << nOffset;
        EXPECT_TRUE(Same(GetTruth(0, 2, -nOffset), Read(0, 2))) << nOffset;
        EXPECT_TRUE(Same(GetTruth(SECTORS - 2, 2, -nOffset), Read(SECTORS - 2, 2))) << nOffset;
        EXPECT_TRUE(Same(GetTruth(10, 5), Read(10, 5, 0))) << "not asked for as audio";
    }
}

TEST_F(OffsetWiringTest, WithTheCorrectionItIsTheDiscs)
{
    for (const int nOffset : {6, 30, 667, -6, -582, -1164})
    {
        m_Tools->SetOption(STORE, OFFSET_KEY, std::to_wstring(nOffset).c_str());
        Open("ReadOffset = " + std::to_string(nOffset) + "\n");
        EXPECT_TRUE(Same(GetTruth(10, 27), Read(10, 27))) << nOffset;
        // At one end of the disc the drive's own samples end too early: there is silence.
        const size_t nLost = static_cast<size_t>(std::abs(nOffset)) * LY_CD_FRAME_BYTES;
        std::string strTruth = GetTruth(0, SECTORS);
        strTruth.replace(nOffset > 0 ? strTruth.size() - nLost : 0, nLost, nLost, '\0');
        EXPECT_TRUE(Same(strTruth, Read(0, SECTORS))) << nOffset;
    }
}

TEST_F(OffsetWiringTest, ADriveThatReadsBeyondTheEndsLosesNothing)
{
    m_Tools->SetOption(STORE, OFFSET_KEY, L"-30");
    m_Tools->SetOption(STORE, OVER_READ_KEY, L"true");
    Open("ReadOffset = -30\n");
    EXPECT_TRUE(Same(GetTruth(0, SECTORS), Read(0, SECTORS)));
}

TEST_F(OffsetWiringTest, FaultsAndTheOffsetGoTogether)
{
    m_Tools->SetOption(STORE, OFFSET_KEY, L"100");
    Open("ReadOffset = 100\nJitter = 0-59, 50\nSeed = 3\n");
    bool bShifted = false;
    for (int n = 0; n < 20; ++n)
    {
        const std::string strGot = Read(20, 1);
        int nFound = NONE;
        // Two reads of the drive make up the sector, each with a shift of its own; the first one brings its start.
        for (int nShift = -50; nShift <= 50; ++nShift)
            if (GetTruth(20, 1, nShift).substr(0, 400) == strGot.substr(0, 400))
                nFound = nShift;
        EXPECT_NE(NONE, nFound);
        bShifted |= nFound != 0;
    }
    EXPECT_TRUE(bShifted);
}

TEST_F(OffsetWiringTest, AShiftedSectorIsNotAWrongOne)
{
    Open("ReadOffset = 6\nDiffers = 30\n");
    (void)Read(10, 20);
    (void)Read(30, 1);
    const auto& drive = dynamic_cast<const OffsetDrive&>(*m_pDrive);
    auto& inner = const_cast<ProfiledDrive&>(dynamic_cast<const ProfiledDrive&>(drive.GetInner()));
    EXPECT_EQ(1, inner.GetStatistics().m_nWrongSectors);
}

TEST_F(OffsetWiringTest, WhatIsSetLaterCountsForTheNextHolder)
{
    Open("ReadOffset = 6\n");
    m_Tools->SetOption(STORE, OFFSET_KEY, L"6");
    EXPECT_TRUE(Same(GetTruth(10, 1, -6), Read(10, 1)));
    std::string strError;
    ASSERT_TRUE(m_pDrive->Acquire(strError)); // a second holder meanwhile
    EXPECT_TRUE(Same(GetTruth(10, 1, -6), Read(10, 1)));
    m_pDrive->Release();
    m_pDrive->Release();
    ASSERT_TRUE(m_pDrive->Acquire(strError));
    EXPECT_TRUE(Same(GetTruth(10, 1), Read(10, 1)));
}

TEST_F(OffsetWiringTest, AWarningStandsBesideThoseOfTheDrive)
{
    m_Tools->SetOption(STORE, OFFSET_KEY, L"x");
    Open("");
    EXPECT_EQ(0U, m_pDrive->GetWarnings().find("The option \"Read Offset ACME CD 24X\""));
    EXPECT_TRUE(Same(GetTruth(10, 1), Read(10, 1)));
}
