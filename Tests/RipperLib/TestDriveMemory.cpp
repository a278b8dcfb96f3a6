#include "CDRipper.h"
#include "FakeDisc.h"
#include "Tools/FakeTools.h"
#include <gtest/gtest.h>

namespace
{
constexpr const wchar_t* STORE = L"CD Reader";
constexpr const wchar_t* KEY = L"LastCDROMType-E:";

class DriveMemoryTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_Tools.GetIsLoaded());
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
        // A drive without a buffer measures 0 at once.
        DSENSEMASK mask = FakeDisc::DefaultMask();
        mask.m_CapabilitiesPage[12] = mask.m_CapabilitiesPage[13] = 0;
        m_pFake->AddDrive(FakeDisc::DRIVE, FakeDisc::VENDOR, FakeDisc::MODEL, FakeDisc::Pack(mask));
    }
    LyString GetStored() { return m_Tools->GetOption(STORE, KEY); }
    void Store(const wchar_t* pValue) { m_Tools->SetOption(STORE, KEY, pValue); }

    FakeTools m_Tools;
    IFakeDisc* m_pFake = nullptr;
};
} // namespace

TEST_F(DriveMemoryTest, ANewDriveIsMeasuredAndRememberedWithItsName)
{
    CCDRipper ripper;
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, false));
    EXPECT_STREQ(L",,ACMECD-ROM X1,,0", GetStored());
    EXPECT_EQ(0, ripper.m_pReader->m_pDriveInfo->m_nCacheSize);
}

TEST_F(DriveMemoryTest, NothingIsWrittenWithNoSave)
{
    CCDRipper ripper;
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, true));
    EXPECT_EQ(0, m_Tools->GetCount(FAKE_COUNT_OPTIONS_SET));
    Store(L"a,b,,d");
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, true));
    EXPECT_STREQ(L"a,b,,d", GetStored());
}

TEST_F(DriveMemoryTest, PlaybackDoesNotMeasure)
{
    Store(L"a,b,,d,1000");
    CCDRipper ripper;
    (void)ripper.SetCopyMode(COPY_MODE_PLAYBACK);
    ASSERT_EQ(0, ripper.OpenDrive(FakeDisc::DRIVE, false));
    EXPECT_EQ(0, ripper.m_pReader->m_pDriveInfo->m_nCacheSize);
    // The model name is filled in all the same.
    EXPECT_STREQ(L"a,b,ACMECD-ROM X1,d,1000", GetStored());
}

struct MEMORY_CASE
{
    const wchar_t* pStored;
    int nSize; // answered
    const wchar_t* pAfter;
    const wchar_t* pWhy;
};

const MEMORY_CASE s_aryCases[] = {
    {L"a,b,ACMECD-ROM X1,d,5000", 5000, L"a,b,ACMECD-ROM X1,d,5000", L"known drive: no measurement"},
    {L"a,b,ACMECD-ROM X1,d,0", 0, L"a,b,ACMECD-ROM X1,d,0", L"a stored 0 is a valid size"},
    {L"a,b,ACMECD-ROM X1,d,-1", 0, L"a,b,ACMECD-ROM X1,d,0", L"a negative size is measured anew"},
    {L"a,b,Other Drive,d,5000", 0, L"a,b,ACMECD-ROM X1,d,0", L"the size belongs to another drive"},
    {L"a,b,acmecd-rom x1,d,5000", 0, L"a,b,ACMECD-ROM X1,d,0", L"names are compared with case"},
    {L"a,b,ACMECD-ROM X1", 0, L"a,b,ACMECD-ROM X1,,0", L"three elements grow to five"},
    {L"a,b,ACMECD-ROM X1,d", 0, L"a,b,ACMECD-ROM X1,d,0", L"four elements grow to five"},
    {L"", 0, L",,,,0", L"an unknown drive gets its name later"},
    {L"a,b", 0, L"a,b,,,0", L"too short a list holds no name"},
};

TEST_F(DriveMemoryTest, TheStoredListDecidesWhetherToMeasure)
{
    for (const MEMORY_CASE& row : s_aryCases)
    {
        Store(row.pStored);
        CCDRipper ripper;
        ASSERT_TRUE(ripper.m_pDrive->Open(FakeDisc::DRIVE, 2));
        EXPECT_EQ(row.nSize, ripper.GetReadCacheSize(FakeDisc::DRIVE)) << LyStringUTF8(row.pWhy);
        EXPECT_STREQ(row.pAfter, GetStored()) << LyStringUTF8(row.pWhy);
    }
}

TEST_F(DriveMemoryTest, TheModelNameIsVendorAndProductWithBlanksForCommas)
{
    m_pFake->AddDrive(L"F:", L"A,B", L"C,D", nullptr);
    CCDRipper ripper;
    ASSERT_TRUE(ripper.m_pDrive->Open(L"F:", 2));
    LyString strName;
    EXPECT_TRUE(ripper.GetCDDriveModelName(strName));
    EXPECT_STREQ(L"A BC D", strName);
}

TEST_F(DriveMemoryTest, TheNameIsFilledInOnlyWhereItIsMissing)
{
    CCDRipper ripper;
    ASSERT_TRUE(ripper.m_pDrive->Open(FakeDisc::DRIVE, 2));
    Store(L"a,b,Other,d");
    ripper.SaveCDModelName(FakeDisc::DRIVE);
    EXPECT_STREQ(L"a,b,Other,d", GetStored());
    Store(L"a,b,,d");
    ripper.SaveCDModelName(FakeDisc::DRIVE);
    EXPECT_STREQ(L"a,b,ACMECD-ROM X1,d", GetStored());
    Store(L"a,b");
    ripper.SaveCDModelName(FakeDisc::DRIVE);
    EXPECT_STREQ(L"a,b", GetStored());
}

TEST_F(DriveMemoryTest, AnUnknownKeyLoadsAsEmpty)
{
    CCDRipper ripper;
    EXPECT_STREQ(L"", ripper.LoadLastValue(L"LastCDROMType-Z:"));
    ripper.GetCDParams(L"Z:");
    EXPECT_EQ(0, ripper.m_CDParams.GetSize());
}
