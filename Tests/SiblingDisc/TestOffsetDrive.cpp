#include "CDUnits.h"
#include "ImageDrive.h"
#include "MMC.h"
#include "OffsetDrive.h"
#include "ProfiledDiscs.h"

namespace
{
constexpr int SECTORS = 100;
constexpr int DATA_SECTORS = 20;

// What it is around: counts and limits what it passes on, and can fail.
class InnerDrive final : public ServiceDrive
{
public:
    InnerDrive(const std::string& strImage, std::vector<std::pair<int, int>>& aryReads)
        : m_Image(strImage), m_aryReads(aryReads)
    {
    }
    bool Load(std::string& strError) override { return m_Image.Load(strError); }
    bool Acquire(std::string& strError) override { return m_Image.Acquire(strError); }
    void Release() override { m_Image.Release(); }
    bool Send(const DRIVE_COMMAND& command, SENSE_DATA& sense) override
    {
        const bool bRead = command.m_pCDB != nullptr && command.m_nCDBBytes >= 12 && command.m_pCDB[0] == CDB_READ_CD;
        m_nTOCs += command.m_pCDB != nullptr && command.m_nCDBBytes > 0 && command.m_pCDB[0] == CDB_READ_TOC ? 1 : 0;
        if (bRead)
        {
            const int nFirst = static_cast<int>(MMCGet32(command.m_pCDB + 2));
            const int nCount = static_cast<int>(MMCGet32(command.m_pCDB + 5) & 0xFFFFFF);
            m_aryReads.push_back({nFirst, nCount});
            if (m_nBad >= nFirst && m_nBad < nFirst + nCount)
                return Fail(command, sense, {SENSE_MEDIUM_ERROR, ASC_READ_ERROR, 5});
        }
        if (m_FailNext.m_nKey != 0)
        {
            const DRIVE_SENSE fail = std::exchange(m_FailNext, {});
            return Fail(command, sense, fail);
        }
        return m_Image.Send(command, sense);
    }
    std::string GetReadErrorText() override { return "read error"; }
    std::string GetWarnings() override { return "warning"; }
    DRIVE_DESCRIPTION GetDescription() override { return {"ACME", "X1", "2.0", false}; }
    void AddUser(int nMode) override { m_nUsers += nMode; }
    void RemoveUser(int nMode) override { m_nUsers -= nMode; }
    unsigned char GetStateA() override { return 7; }
    wchar_t* GetVendor() override { return LyCom::SysAllocString(L"ACME"); }
    wchar_t* GetModel() override { return LyCom::SysAllocString(L"X1"); }
    unsigned char GetStateB() override { return 9; }
    wchar_t* GetPackedCapabilities() override { return LyCom::SysAllocString(L"00"); }

    int m_nBad = -1000;
    int m_nTOCs = 0;
    int m_nUsers = 0;
    DRIVE_SENSE m_FailNext;

private:
    static bool Fail(const DRIVE_COMMAND& command, SENSE_DATA& sense, DRIVE_SENSE codes)
    {
        command.m_nDataBytes = 0;
        sense.Set(codes);
        return false;
    }
    ImageDrive m_Image;
    std::vector<std::pair<int, int>>& m_aryReads;
};

class OffsetDriveTest : public ::testing::Test
{
protected:
    typedef std::vector<unsigned char> Bytes;

    void SetUp() override
    {
        m_strAudio = ToBytes(MakeFrames(SECTORS * LY_CD_SECTOR_FRAMES));
        (void)m_Folder.Write("disc.bin", m_strAudio);
        m_strCue = m_Folder.Write("disc.cue", "FILE \"disc.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    }
    void Open(int nFrames, bool bOverRead = false)
    {
        auto pInner = std::make_unique<InnerDrive>(m_strCue, m_aryReads);
        m_pInner = pInner.get();
        m_pDrive = std::make_unique<OffsetDrive>(std::move(pInner), READ_OFFSET{nFrames, bOverRead});
        std::string strError;
        ASSERT_TRUE(m_pDrive->Load(strError)) << strError;
        ASSERT_TRUE(m_pDrive->Acquire(strError)) << strError;
    }
    bool Send(Bytes cdb, int nRoom)
    {
        m_Data.assign(static_cast<size_t>(nRoom), 0xAA);
        int nBytes = nRoom;
        SENSE_DATA sense;
        const bool bGood =
            m_pDrive->Send({cdb.data(), static_cast<int>(cdb.size()), nRoom > 0 ? m_Data.data() : nullptr, nBytes,
                            nRoom > 0 ? DRIVE_TRANSFER_IN : DRIVE_TRANSFER_NONE},
                           sense);
        m_Sense = sense.GetCodes();
        m_nBytes = nBytes;
        return bGood;
    }
    bool Read(int nLBA, int nCount, int nRoomSectors = -1, unsigned char nType = READ_CD_TYPE_CDDA)
    {
        Bytes cdb = {CDB_READ_CD, nType, 0, 0, 0, 0, 0, 0, 0, READ_CD_USER_DATA, 0, 0};
        MMCPut32(&cdb[2], static_cast<unsigned int>(nLBA));
        MMCPut24(&cdb[6], static_cast<unsigned int>(nCount));
        m_aryReads.clear();
        return Send(cdb, (nRoomSectors < 0 ? nCount : nRoomSectors) * LY_CD_SECTOR_BYTES);
    }
    // What stands that many frames behind the place, with silence outside the disc.
    std::string GetShifted(int nLBA, int nCount, int nFrames) const
    {
        std::string str;
        const long long nStart = (static_cast<long long>(nLBA) * LY_CD_SECTOR_FRAMES + nFrames) * LY_CD_FRAME_BYTES;
        for (long long n = nStart; n < nStart + static_cast<long long>(nCount) * LY_CD_SECTOR_BYTES; ++n)
            str += n >= 0 && n < static_cast<long long>(m_strAudio.size()) ? m_strAudio[static_cast<size_t>(n)] : '\0';
        return str;
    }
    std::string GetData() const
    {
        return {reinterpret_cast<const char*>(m_Data.data()), static_cast<size_t>(m_nBytes)};
    }

    typedef std::vector<std::pair<int, int>> READS;
    TempFolder m_Folder;
    std::string m_strAudio;
    std::string m_strCue;
    READS m_aryReads;
    InnerDrive* m_pInner = nullptr;
    std::unique_ptr<OffsetDrive> m_pDrive;
    Bytes m_Data;
    int m_nBytes = 0;
    DRIVE_SENSE m_Sense;
};
} // namespace

TEST_F(OffsetDriveTest, SectorsAreCutOutOfTheirNeighboursAndSilenceIsBeyondTheEnds)
{
    for (const int nFrames : {1, 6, 587, 588, 589, 667, 1776, -1, -6, -582, -588, -1164, -1200, 44100, -44100})
    {
        Open(nFrames);
        EXPECT_EQ(nFrames, m_pDrive->GetOffset().m_nFrames);
        for (const auto& [nLBA, nCount] : READS{{0, 1}, {0, 27}, {50, 1}, {40, 27}, {99, 1}, {80, 20}, {0, 100}})
        {
            ASSERT_TRUE(Read(nLBA, nCount)) << nFrames << " " << nLBA;
            EXPECT_EQ(nCount * LY_CD_SECTOR_BYTES, m_nBytes);
            EXPECT_TRUE(Same(GetShifted(nLBA, nCount, nFrames), GetData())) << nFrames << " " << nLBA << " " << nCount;
            for (const auto& read : m_aryReads)
            {
                EXPECT_LE(read.second, LY_CD_MAX_READ_SECTORS);
                EXPECT_GE(read.first, 0); // nothing is asked for outside the disc
                EXPECT_LE(read.first + read.second, SECTORS);
            }
        }
    }
}

TEST_F(OffsetDriveTest, WithoutAnOffsetEverythingGoesThrough)
{
    for (const int nFrames : {0, READ_OFFSET::MAX_FRAMES + 1, -READ_OFFSET::MAX_FRAMES - 1})
    {
        Open(nFrames);
        EXPECT_EQ(0, m_pDrive->GetOffset().m_nFrames);
        ASSERT_TRUE(Read(10, 27));
        EXPECT_EQ((READS{{10, 27}}), m_aryReads);
        EXPECT_TRUE(Same(GetShifted(10, 27, 0), GetData()));
        EXPECT_EQ(0, m_pInner->m_nTOCs);
    }
}

TEST_F(OffsetDriveTest, EveryReadGoesToTheDriveAnew)
{
    Open(30);
    for (int n = 0; n < 3; ++n)
    {
        ASSERT_TRUE(Read(10, 27));
        EXPECT_EQ((READS{{10, 27}, {37, 1}}), m_aryReads);
    }
    EXPECT_EQ(1, m_pInner->m_nTOCs);
    Open(588);
    ASSERT_TRUE(Read(10, 27)); // whole sectors need no neighbour
    EXPECT_EQ((READS{{11, 27}}), m_aryReads);
}

TEST_F(OffsetDriveTest, OnlyPlainReadsOfAudioAreShifted)
{
    Open(6);
    ASSERT_TRUE(Read(10, 2, -1, 0)); // sectors of any type
    EXPECT_TRUE(Same(GetShifted(10, 2, 0), GetData()));
    // C2 pointers, a sub-channel, no main channel: as the drive does it.
    for (const Bytes& tail : {Bytes{0x12, 0}, Bytes{0x10, 1}, Bytes{0, 0}})
    {
        Bytes cdb = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 0, 10, 0, 0, 1, tail[0], tail[1], 0};
        m_aryReads.clear();
        (void)Send(cdb, LY_CD_SECTOR_BYTES);
        EXPECT_EQ((READS{{10, 1}}), m_aryReads);
    }
    EXPECT_TRUE(Read(10, 0, 1));
    EXPECT_EQ((READS{{10, 0}}), m_aryReads);
    Bytes cdb = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 0, 10, 0, 0, 1, READ_CD_WHOLE_SECTOR, 0, 0};
    ASSERT_TRUE(Send(cdb, LY_CD_SECTOR_BYTES)); // the same for audio
    EXPECT_TRUE(Same(GetShifted(10, 1, 6), GetData()));
    EXPECT_FALSE(Send({CDB_READ_CD, READ_CD_TYPE_CDDA}, LY_CD_SECTOR_BYTES)); // cut off
    EXPECT_FALSE(Send({}, 0));
    EXPECT_TRUE(Send({CDB_TEST_UNIT_READY, 0, 0, 0, 0, 0}, 0));
}

TEST_F(OffsetDriveTest, WhatDoesNotFitStaysOut)
{
    Open(6);
    ASSERT_TRUE(Read(10, 20, 3));
    EXPECT_EQ(3 * LY_CD_SECTOR_BYTES, m_nBytes);
    EXPECT_TRUE(Same(GetShifted(10, 3, 6), GetData()));
    ASSERT_TRUE(Read(10, 0xFFFFFF, 2));
    EXPECT_EQ(2 * LY_CD_SECTOR_BYTES, m_nBytes);
}

TEST_F(OffsetDriveTest, ADamagedSectorFailsTheReadsThatItCovers)
{
    Open(6);
    m_pInner->m_nBad = 20;
    for (const int nLBA : {19, 20})
    {
        EXPECT_FALSE(Read(nLBA, 1));
        EXPECT_EQ(SENSE_MEDIUM_ERROR, m_Sense.m_nKey);
        EXPECT_EQ(0, m_nBytes);
        EXPECT_EQ(Bytes(LY_CD_SECTOR_BYTES), m_Data); // zeroed
    }
    EXPECT_TRUE(Read(18, 1));
    EXPECT_TRUE(Read(21, 1));
}

TEST_F(OffsetDriveTest, OutsideTheDiscTheDriveRefuses)
{
    Open(6);
    EXPECT_FALSE(Read(SECTORS, 1));
    EXPECT_EQ(SENSE_ILLEGAL_REQUEST, m_Sense.m_nKey);
    EXPECT_EQ(Bytes(LY_CD_SECTOR_BYTES), m_Data);
    EXPECT_FALSE(Read(SECTORS - 1, 2));
    EXPECT_EQ(SENSE_ILLEGAL_REQUEST, m_Sense.m_nKey);
    EXPECT_FALSE(Read(0x7FFFFFFF, 1));
    EXPECT_FALSE(Read(-2000000000, 1));
}

TEST_F(OffsetDriveTest, ADriveThatCanOverReadIsAsked)
{
    Open(6, true);
    ASSERT_TRUE(Read(99, 1));
    EXPECT_EQ((READS{{99, 1}, {100, 1}, {100, 1}}), m_aryReads); // this one cannot after all
    EXPECT_TRUE(Same(GetShifted(99, 1, 6), GetData()));
    Open(-6, true);
    ASSERT_TRUE(Read(0, 1));
    EXPECT_EQ((std::pair<int, int>{-1, 1}), m_aryReads[0]);
    EXPECT_TRUE(Same(GetShifted(0, 1, -6), GetData())); // the image's first pregap is silence
    m_pInner->m_nBad = -1;
    ASSERT_TRUE(Read(0, 1));
    EXPECT_TRUE(Same(GetShifted(0, 1, -6), GetData()));
}

TEST_F(OffsetDriveTest, ANeighbourThatIsNoAudioIsSilence)
{
    (void)m_Folder.Write("mixed.bin", std::string(DATA_SECTORS * LY_CD_SECTOR_BYTES, 'd') + m_strAudio);
    m_strCue = m_Folder.Write("mixed.cue", "FILE \"mixed.bin\" BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"
                                           "TRACK 02 AUDIO\nINDEX 01 00:00:20\n");
    Open(-100);
    ASSERT_TRUE(Read(DATA_SECTORS, 2));
    EXPECT_TRUE(Same(GetShifted(0, 2, -100), GetData()));
    EXPECT_FALSE(Read(DATA_SECTORS - 1, 1)); // asked for as audio, which it is not
    EXPECT_EQ(SENSE_ILLEGAL_REQUEST, m_Sense.m_nKey);
}

TEST_F(OffsetDriveTest, TheLeadOutIsAskedForAgainWhenTheDiscMayBeAnother)
{
    Open(6);
    EXPECT_TRUE(Read(0, 1));
    EXPECT_TRUE(Read(1, 1));
    EXPECT_EQ(1, m_pInner->m_nTOCs);
    m_pInner->m_FailNext = {SENSE_UNIT_ATTENTION, ASC_MEDIUM_MAY_HAVE_CHANGED, 0};
    EXPECT_FALSE(Read(2, 1));
    EXPECT_EQ(SENSE_UNIT_ATTENTION, m_Sense.m_nKey);
    EXPECT_TRUE(Read(2, 1));
    EXPECT_EQ(2, m_pInner->m_nTOCs);
    EXPECT_TRUE(Send({CDB_START_STOP_UNIT, 0, 0, 0, 0, 0}, 0));
    m_pInner->m_FailNext = {SENSE_NOT_READY, ASC_MEDIUM_NOT_PRESENT, 0}; // hits the table of contents
    EXPECT_FALSE(Read(2, 1));
    EXPECT_EQ(SENSE_NOT_READY, m_Sense.m_nKey);
    EXPECT_EQ(Bytes(LY_CD_SECTOR_BYTES), m_Data);
    EXPECT_TRUE(Read(2, 1));
    EXPECT_EQ(4, m_pInner->m_nTOCs);
}

TEST_F(OffsetDriveTest, EverythingElseIsTheOtherDrives)
{
    Open(6);
    EXPECT_EQ("read error", m_pDrive->GetReadErrorText());
    EXPECT_EQ("warning", m_pDrive->GetWarnings());
    EXPECT_EQ("X1", m_pDrive->GetDescription().m_strModel);
    m_pDrive->AddUser(2);
    EXPECT_EQ(2, m_pInner->m_nUsers);
    m_pDrive->RemoveUser(2);
    EXPECT_EQ(0, m_pInner->m_nUsers);
    EXPECT_EQ(7, m_pDrive->GetStateA());
    EXPECT_EQ(9, m_pDrive->GetStateB());
    for (wchar_t* pText : {m_pDrive->GetVendor(), m_pDrive->GetModel(), m_pDrive->GetPackedCapabilities()})
    {
        EXPECT_NE(nullptr, pText);
        LyCom::SysFreeString(pText);
    }
}

TEST_F(OffsetDriveTest, TheOffsetIsLookedUpForTheModelWhenTheFirstHolderComes)
{
    auto pInner = std::make_unique<InnerDrive>(m_strCue, m_aryReads);
    int nAsked = 0;
    OffsetDrive drive(std::move(pInner),
                      [&nAsked](const DRIVE_DESCRIPTION& description) {
                          return READ_OFFSET{description.m_strModel == "X1" ? ++nAsked : 0, false};
                      });
    std::string strError;
    EXPECT_EQ(0, drive.GetOffset().m_nFrames);
    ASSERT_TRUE(drive.Acquire(strError));
    ASSERT_TRUE(drive.Acquire(strError));
    EXPECT_EQ(1, drive.GetOffset().m_nFrames);
    drive.Release();
    drive.Release();
    ASSERT_TRUE(drive.Acquire(strError));
    EXPECT_EQ(2, drive.GetOffset().m_nFrames);
    drive.Release();
}
