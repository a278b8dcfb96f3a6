#include "ImageDrive.h"
#include "ImageFiles.h"
#include "MMC.h"
#include <array>
#include <gtest/gtest.h>
#include <numeric>

namespace
{
using Bytes = std::vector<unsigned char>;

// A disc of two audio tracks of 30 and 20 sectors with a gap of 5 between, a data track of 10 in a second session, and
// texts. Every byte of the audio is known.
class ImageDriveTest : public ::testing::Test
{
protected:
    static constexpr int AUDIO_SECTORS = 55;
    static constexpr int DATA_SECTORS = 10;
    static constexpr int DATA_START = AUDIO_SECTORS + 11400;

    void SetUp() override
    {
        std::string strAudio(AUDIO_SECTORS * LY_CD_SECTOR_BYTES, '\0');
        for (size_t i = 0; i < strAudio.size(); ++i)
            strAudio[i] = GetAudioByte(i);
        (void)m_Folder.Write("audio.bin", strAudio);
        std::string strData;
        for (int i = 0; i < DATA_SECTORS * 2048; ++i)
            strData += static_cast<char>(i / 2048 + 65);
        (void)m_Folder.Write("data.iso", strData);
        m_pDrive = Load("CATALOG 1234567890123\nTITLE \"Disc\"\nPERFORMER \"Band\"\n"
                        "FILE \"audio.bin\" BINARY\n"
                        "TRACK 01 AUDIO\n TITLE \"One\"\n ISRC ABCDE1234567\n FLAGS DCP\n INDEX 01 00:00:00\n"
                        "TRACK 02 AUDIO\n TITLE \"Two\"\n FLAGS PRE 4CH\n INDEX 00 00:00:30\n INDEX 01 00:00:35\n"
                        "REM SESSION 02\n"
                        "FILE \"data.iso\" BINARY\nTRACK 03 MODE1/2048\n INDEX 01 00:00:00\n");
        ASSERT_NE(nullptr, m_pDrive);
    }
    static char GetAudioByte(size_t i) { return static_cast<char>(i * 7 + i / 2352); }

    std::unique_ptr<ImageDrive> Load(const std::string& strSheet)
    {
        auto pDrive = std::make_unique<ImageDrive>(m_Folder.Write("disc.cue", strSheet));
        std::string strError;
        const bool bAcquired = pDrive->Acquire(strError);
        EXPECT_TRUE(bAcquired) << strError;
        return bAcquired ? std::move(pDrive) : nullptr;
    }
    // Sends a command with a buffer of nRoom bytes full of AAh; m_Data is what came.
    bool Send(Bytes cdb, int nRoom = 0, DRIVE_TRANSFERTYPE eType = DRIVE_TRANSFER_IN)
    {
        m_Buffer.assign(static_cast<size_t>(nRoom), 0xAA);
        int nBytes = nRoom;
        const bool bGood =
            m_pDrive->Execute({cdb.data(), static_cast<int>(cdb.size()), m_Buffer.data(), nBytes, eType}, m_Sense);
        m_Data.assign(m_Buffer.begin(), m_Buffer.begin() + nBytes);
        return bGood;
    }
    bool ReadCD(int nLBA, int nCount, int nRoom, unsigned char nType = READ_CD_TYPE_CDDA,
                unsigned char nSelection = 0x10)
    {
        Bytes cdb(12);
        cdb[0] = CDB_READ_CD;
        cdb[1] = nType;
        MMCPut32(&cdb[2], static_cast<unsigned int>(nLBA));
        MMCPut24(&cdb[6], static_cast<unsigned int>(nCount));
        cdb[9] = nSelection;
        return Send(cdb, nRoom);
    }
    void ExpectSense(int nKey, int nASC, int nASCQ)
    {
        EXPECT_EQ(nKey, m_Sense.m_nKey);
        EXPECT_EQ(nASC, m_Sense.m_nASC);
        EXPECT_EQ(nASCQ, m_Sense.m_nASCQ);
        // Old bytes must never pass for new ones.
        EXPECT_EQ(Bytes(m_Buffer.size()), m_Buffer);
        EXPECT_TRUE(m_Data.empty());
    }
    static Bytes Cut(const Bytes& bytes, size_t nFrom, size_t nCount)
    {
        return {bytes.begin() + static_cast<std::ptrdiff_t>(nFrom),
                bytes.begin() + static_cast<std::ptrdiff_t>(nFrom + nCount)};
    }

    TempFolder m_Folder;
    std::unique_ptr<ImageDrive> m_pDrive;
    Bytes m_Buffer;
    Bytes m_Data;
    DRIVE_SENSE m_Sense;
};

Bytes TOCCommand(unsigned char nFormat, unsigned char nTrack = 0, unsigned char nMSF = 0, unsigned int nAllocated = 804)
{
    Bytes cdb = {CDB_READ_TOC, nMSF, nFormat, 0, 0, 0, nTrack, 0, 0, 0};
    MMCPut16(&cdb[7], nAllocated);
    return cdb;
}
} // namespace

TEST_F(ImageDriveTest, InquiryTellsADriveForCompactDiscs)
{
    ASSERT_TRUE(Send({CDB_INQUIRY, 0, 0, 0, 100, 0}, 100));
    ASSERT_EQ(36U, m_Data.size());
    EXPECT_EQ(0x05, m_Data[0]);
    EXPECT_EQ(0x80, m_Data[1]);
    EXPECT_EQ("RONDEL  DISC IMAGE      1.0 ", std::string(m_Data.begin() + 8, m_Data.end()));
    ASSERT_TRUE(Send({CDB_INQUIRY, 0, 0, 0, 10, 0}, 100));
    EXPECT_EQ(10U, m_Data.size());
    EXPECT_FALSE(Send({CDB_INQUIRY, 1, 0x80, 0, 100, 0}, 100));
    ExpectSense(5, 0x24, 0);
}

TEST_F(ImageDriveTest, TheTOCListsTracksAndLeadOut)
{
    ASSERT_TRUE(Send(TOCCommand(TOC_FORMAT_TOC), 804));
    const Bytes expected = {0, 34, 1, 3,    0, 0x12, 1, 0, 0,    0,    0, 0,    0,    0x19, 2, 0, 0,    0,
                            0, 35, 0, 0x14, 3, 0,    0, 0, 0x2C, 0xBF, 0, 0x14, 0xAA, 0,    0, 0, 0x2C, 0xC9};
    EXPECT_EQ(DATA_START, 0x2CBF);
    EXPECT_EQ(expected, m_Data);
}

TEST_F(ImageDriveTest, TheTOCStartsAtTheTrackAskedForAndSpeaksMSF)
{
    ASSERT_TRUE(Send(TOCCommand(TOC_FORMAT_TOC, 2, 2), 804));
    ASSERT_EQ(28U, m_Data.size());
    EXPECT_EQ((Bytes{0, 0x19, 2, 0, 0, 0, 2, 35}), Cut(m_Data, 4, 8));
    ASSERT_TRUE(Send(TOCCommand(TOC_FORMAT_TOC, 0xAA), 804));
    EXPECT_EQ(12U, m_Data.size());
    EXPECT_FALSE(Send(TOCCommand(TOC_FORMAT_TOC, 4), 804));
    ExpectSense(5, 0x24, 0);
}

TEST_F(ImageDriveTest, AnswersAreCutToTheAllocationLengthAndToTheBuffer)
{
    ASSERT_TRUE(Send(TOCCommand(TOC_FORMAT_TOC, 0, 0, 4), 804));
    EXPECT_EQ(4U, m_Data.size());
    EXPECT_EQ(34, m_Data[1]); // the length tells all there is
    ASSERT_TRUE(Send(TOCCommand(TOC_FORMAT_TOC), 7));
    EXPECT_EQ(7U, m_Data.size());
}

TEST_F(ImageDriveTest, FormatOneTellsWhereTheLastSessionBegins)
{
    ASSERT_TRUE(Send(TOCCommand(TOC_FORMAT_SESSIONS), 804));
    EXPECT_EQ((Bytes{0, 10, 1, 2, 0, 0x14, 3, 0, 0, 0, 0x2C, 0xBF}), m_Data);
}

TEST_F(ImageDriveTest, FormatFiveGivesPacksWithTheirCRC)
{
    ASSERT_TRUE(Send(TOCCommand(TOC_FORMAT_CD_TEXT, 0, 0, 36868 & 0xFFFF), 36868));
    ASSERT_GE(m_Data.size(), 4U + 18U);
    EXPECT_EQ(m_Data.size() - 2, MMCGet16(m_Data.data()));
    EXPECT_EQ(0U, (m_Data.size() - 4) % 18);
    EXPECT_EQ((Bytes{0x80, 0, 0, 0, 'D', 'i', 's', 'c', 0, 'O', 'n', 'e', 0, 'T', 'w', 'o'}), Cut(m_Data, 4, 16));
}

TEST_F(ImageDriveTest, OtherTOCFormatsAreRefused)
{
    for (const int nFormat : {2, 3, 4, 6, 15})
    {
        EXPECT_FALSE(Send(TOCCommand(static_cast<unsigned char>(nFormat)), 804)) << nFormat;
        ExpectSense(5, 0x24, 0);
    }
}

TEST_F(ImageDriveTest, SubChannelTellsPositionCatalogueAndISRC)
{
    ASSERT_TRUE(ReadCD(36, 1, 2352));
    ASSERT_TRUE(Send({CDB_READ_SUB_CHANNEL, 2, 0x40, 1, 0, 0, 0, 0, 24, 0}, 24));
    EXPECT_EQ((Bytes{0, 0x15, 0, 12, 1, 0x19, 2, 1, 0, 0, 2, 37, 0, 0, 0, 2}), m_Data);
    ASSERT_TRUE(Send({CDB_READ_SUB_CHANNEL, 0, 0x40, 2, 0, 0, 0, 0, 24, 0}, 24));
    EXPECT_EQ("1234567890123", std::string(m_Data.begin() + 9, m_Data.begin() + 22));
    EXPECT_EQ(0x80, m_Data[8]);
    ASSERT_TRUE(Send({CDB_READ_SUB_CHANNEL, 0, 0x40, 3, 0, 0, 1, 0, 24, 0}, 24));
    EXPECT_EQ("ABCDE1234567", std::string(m_Data.begin() + 9, m_Data.begin() + 21));
    ASSERT_TRUE(Send({CDB_READ_SUB_CHANNEL, 0, 0x40, 3, 0, 0, 2, 0, 24, 0}, 24));
    EXPECT_EQ(0, m_Data[8]); // no ISRC is no valid one
    ASSERT_TRUE(Send({CDB_READ_SUB_CHANNEL, 0, 0, 1, 0, 0, 0, 0, 24, 0}, 24));
    EXPECT_EQ((Bytes{0, 0x15, 0, 0}), m_Data);
    EXPECT_FALSE(Send({CDB_READ_SUB_CHANNEL, 0, 0x40, 3, 0, 0, 9, 0, 24, 0}, 24));
    ExpectSense(5, 0x24, 0);
    EXPECT_FALSE(Send({CDB_READ_SUB_CHANNEL, 0, 0x40, 4, 0, 0, 0, 0, 24, 0}, 24));
}

TEST_F(ImageDriveTest, AudioSectorsComeAsTheImageHoldsThem)
{
    ASSERT_TRUE(ReadCD(20, 27, 27 * 2352));
    ASSERT_EQ(27U * 2352, m_Data.size());
    for (size_t i = 0; i < m_Data.size(); ++i)
        ASSERT_EQ(static_cast<unsigned char>(GetAudioByte(20 * 2352 + i)), m_Data[i]) << i;
    // "Any type" and the whole main channel give the same of audio.
    const Bytes first = m_Data;
    ASSERT_TRUE(ReadCD(20, 27, 27 * 2352, 0, 0xF0));
    EXPECT_EQ(first, m_Data);
}

TEST_F(ImageDriveTest, TheFirstPregapIsSilence)
{
    ASSERT_TRUE(ReadCD(-150, 2, 2 * 2352));
    EXPECT_EQ(Bytes(2 * 2352), m_Data);
}

TEST_F(ImageDriveTest, WhatDoesNotFitIntoTheBufferStaysOutOfIt)
{
    ASSERT_TRUE(ReadCD(0, 3, 2 * 2352 + 100));
    EXPECT_EQ(2U * 2352, m_Data.size());
    EXPECT_EQ(Bytes(100, 0xAA), Cut(m_Buffer, 2 * 2352, 100));
    ASSERT_TRUE(ReadCD(0, 0, 100));
    EXPECT_TRUE(m_Data.empty());
}

TEST_F(ImageDriveTest, DataSectorsComeWholeOrAsUserData)
{
    ASSERT_TRUE(ReadCD(DATA_START + 1, 1, 2352, 0, 0xF8));
    ASSERT_EQ(2352U, m_Data.size());
    EXPECT_EQ((Bytes{0, 0xFF, 0xFF}), Cut(m_Data, 0, 3));
    EXPECT_EQ(Bytes(2048, 'B'), Cut(m_Data, 16, 2048));
    ASSERT_TRUE(ReadCD(DATA_START, 2, 2 * 2352, 0x08, 0x10));
    ASSERT_EQ(2U * 2048, m_Data.size());
    EXPECT_EQ(Bytes(2048, 'A'), Cut(m_Data, 0, 2048));
    EXPECT_EQ(Bytes(2048, 'B'), Cut(m_Data, 2048, 2048));
}

struct REFUSED_READ
{
    const char* pWhy;
    int nLBA;
    int nCount;
    unsigned char nType;
    unsigned char nSelection;
    int nASC;
};

const REFUSED_READ s_aryRefused[] = {
    {"ahead of the first pregap", -151, 1, 4, 0x10, 0x21},
    {"behind the lead-out", 11465, 1, 4, 0x10, 0x21},
    {"across the lead-out", 11460, 10, 0, 0xF8, 0x21},
    {"in the gap between the sessions", 100, 1, 4, 0x10, 0x21},
    {"the highest address", 0x7FFFFFFF, 1, 4, 0x10, 0x21},
    {"a count that overflows", 5, 0xFFFFFF, 4, 0x10, 0x21},
    {"audio from a data track", 11455, 1, 4, 0x10, 0x64},
    {"data from an audio track", 0, 1, 0x08, 0x10, 0x64},
    {"mode 2 from a mode 1 track", 11455, 1, 0x0C, 0x10, 0x64},
    {"a sector type that does not exist", 0, 1, 0x18, 0x10, 0x24},
    {"C2 pointers", 0, 1, 4, 0x12, 0x24},
};

TEST_F(ImageDriveTest, ReadsThatCannotBeServedAreRefusedAndZeroTheBuffer)
{
    for (const REFUSED_READ& row : s_aryRefused)
    {
        EXPECT_FALSE(ReadCD(row.nLBA, row.nCount, 27 * 2352, row.nType, row.nSelection)) << row.pWhy;
        EXPECT_EQ(row.nASC, m_Sense.m_nASC) << row.pWhy;
        ExpectSense(5, row.nASC, 0);
    }
    Bytes cdb = {CDB_READ_CD, 4, 0, 0, 0, 0, 0, 0, 1, 0x10, 2, 0};
    EXPECT_FALSE(Send(cdb, 2352)); // with sub-channel
    ExpectSense(5, 0x24, 0);
}

TEST_F(ImageDriveTest, SectorsThatTheImageDoesNotHoldAreUnreadableAndRemembered)
{
    (void)m_Folder.Write("short.bin", std::string(10 * 2352 + 100, 'x'));
    m_pDrive = Load("FILE \"audio.bin\" BINARY\nTRACK 01 AUDIO\n INDEX 01 00:00:00\n");
    EXPECT_EQ("", m_pDrive->GetReadErrorText());
    // The file is cut while it is in use.
    std::filesystem::resize_file(m_Folder.GetPath("audio.bin"), 20 * 2352 + 5);
    EXPECT_TRUE(ReadCD(0, 20, 20 * 2352));
    EXPECT_FALSE(ReadCD(15, 10, 10 * 2352));
    ExpectSense(3, 0x11, 5);
    const std::string strText = m_pDrive->GetReadErrorText();
    EXPECT_NE(std::string::npos, strText.find("disc.cue: 10 sectors from 00:02.15 on could not be read")) << strText;
    EXPECT_FALSE(ReadCD(15, 10, 10 * 2352));
    EXPECT_EQ(strText, m_pDrive->GetReadErrorText()); // a repeated command is no further loss
}

TEST_F(ImageDriveTest, UnknownCommandsAreRefused)
{
    for (int nOpcode = 0; nOpcode < 256; ++nOpcode)
    {
        switch (nOpcode)
        {
        case CDB_TEST_UNIT_READY:
        case CDB_REQUEST_SENSE:
        case CDB_INQUIRY:
        case CDB_START_STOP_UNIT:
        case CDB_PREVENT_ALLOW_MEDIUM_REMOVAL:
        case CDB_READ_SUB_CHANNEL:
        case CDB_READ_TOC:
        case CDB_MODE_SENSE_10:
        case CDB_SET_CD_SPEED:
        case CDB_READ_CD:
            continue;
        default:
            Bytes cdb(16);
            cdb[0] = static_cast<unsigned char>(nOpcode);
            EXPECT_FALSE(Send(cdb, 64)) << nOpcode;
            ExpectSense(5, 0x20, 0);
        }
    }
}

TEST_F(ImageDriveTest, ACommandThatIsTooShortIsRefused)
{
    EXPECT_FALSE(Send({CDB_READ_CD, 4, 0, 0, 0, 0, 0, 0, 1, 0x10, 0}, 2352));
    ExpectSense(5, 0x24, 0);
    EXPECT_FALSE(Send({CDB_READ_TOC, 0, 0}, 804));
    ExpectSense(5, 0x24, 0);
    EXPECT_FALSE(Send({}, 10));
    ExpectSense(5, 0x20, 0);
}

TEST_F(ImageDriveTest, WithoutABufferNothingIsTransferred)
{
    int nBytes = 100;
    const Bytes cdb = TOCCommand(TOC_FORMAT_TOC);
    EXPECT_TRUE(m_pDrive->Execute({cdb.data(), 10, nullptr, nBytes, DRIVE_TRANSFER_IN}, m_Sense));
    EXPECT_EQ(0, nBytes);
    ASSERT_TRUE(Send(cdb, 100, DRIVE_TRANSFER_NONE));
    EXPECT_TRUE(m_Data.empty());
}

TEST_F(ImageDriveTest, TheTrayOpensUnlessLockedAndALoadedDiscIsAnnouncedOnce)
{
    const Bytes ready = {CDB_TEST_UNIT_READY, 0, 0, 0, 0, 0};
    const Bytes eject = {CDB_START_STOP_UNIT, 0, 0, 0, 2, 0};
    const Bytes load = {CDB_START_STOP_UNIT, 0, 0, 0, 3, 0};
    EXPECT_TRUE(Send(ready));
    EXPECT_EQ(1, m_pDrive->GetStateA());
    ASSERT_TRUE(Send({CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 1, 0}));
    EXPECT_FALSE(Send(eject));
    ExpectSense(5, 0x53, 2);
    ASSERT_TRUE(Send({CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 0, 0}));
    ASSERT_TRUE(Send(eject));
    EXPECT_EQ(0, m_pDrive->GetStateA());
    for (const Bytes& cdb : {ready, TOCCommand(0), Bytes{CDB_START_STOP_UNIT, 0, 0, 0, 1, 0}})
    {
        EXPECT_FALSE(Send(cdb, 804));
        ExpectSense(2, 0x3A, 2);
    }
    EXPECT_FALSE(ReadCD(0, 1, 2352));
    ExpectSense(2, 0x3A, 2);
    EXPECT_TRUE(Send({CDB_INQUIRY, 0, 0, 0, 36, 0}, 36)); // answered without a disc
    ASSERT_TRUE(Send(load));
    EXPECT_FALSE(Send(ready));
    ExpectSense(6, 0x28, 0);
    EXPECT_TRUE(Send(ready));
    EXPECT_TRUE(Send(load)); // nothing to load
    EXPECT_TRUE(Send(ready));
}

TEST_F(ImageDriveTest, AnImageThatIsGoneIsATrayWithoutADisc)
{
    ASSERT_TRUE(Send({CDB_START_STOP_UNIT, 0, 0, 0, 2, 0}));
    std::filesystem::remove(m_Folder.GetPath("disc.cue"));
    EXPECT_FALSE(Send({CDB_START_STOP_UNIT, 0, 0, 0, 3, 0}));
    ExpectSense(2, 0x3A, 1);
    EXPECT_FALSE(Send({CDB_TEST_UNIT_READY, 0, 0, 0, 0, 0}));
    ExpectSense(2, 0x3A, 1);
}

TEST_F(ImageDriveTest, ModeSenseGivesTheCapabilities)
{
    Bytes cdb = {CDB_MODE_SENSE_10, 0, 0x2A, 0, 0, 0, 0, 1, 0, 0};
    ASSERT_TRUE(Send(cdb, 256));
    ASSERT_EQ(8U + 32U, m_Data.size());
    EXPECT_EQ(38U, MMCGet16(m_Data.data()));
    EXPECT_EQ(0, m_Data[7]); // no block descriptors
    const Bytes page = Cut(m_Data, 8, 32);
    EXPECT_EQ(0x2A, page[0]);
    EXPECT_EQ(30, page[1]);
    EXPECT_EQ(0x07, page[2]);
    EXPECT_EQ(0x63, page[5]);
    EXPECT_EQ(48U * 176, MMCGet16(&page[8]));
    EXPECT_EQ(48U * 176, MMCGet16(&page[14]));
    EXPECT_EQ(0, page[6] & 2);
    // Speed and lock show in the page.
    ASSERT_TRUE(Send({CDB_SET_CD_SPEED, 0, 0x02, 0xB1, 0, 0, 0, 0, 0, 0, 0, 0}, 0, DRIVE_TRANSFER_NONE));
    ASSERT_TRUE(Send({CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 1, 0}));
    ASSERT_TRUE(Send(cdb, 256));
    EXPECT_EQ(689U, MMCGet16(&m_Data[8 + 14]));
    EXPECT_EQ(2, m_Data[8 + 6] & 2);
}

TEST_F(ImageDriveTest, ModeSenseKnowsAllPagesAndWhatCanBeChanged)
{
    ASSERT_TRUE(Send({CDB_MODE_SENSE_10, 0, 0x3F, 0, 0, 0, 0, 1, 0, 0}, 256));
    EXPECT_EQ(8U + 12 + 8 + 16 + 32, m_Data.size());
    ASSERT_TRUE(Send({CDB_MODE_SENSE_10, 0, 0x40 | 0x2A, 0, 0, 0, 0, 1, 0, 0}, 256));
    EXPECT_EQ(Bytes(30), Cut(m_Data, 10, 30));
    EXPECT_FALSE(Send({CDB_MODE_SENSE_10, 0, 0xC0 | 0x2A, 0, 0, 0, 0, 1, 0, 0}, 256));
    ExpectSense(5, 0x39, 0);
    EXPECT_FALSE(Send({CDB_MODE_SENSE_10, 0, 0x08, 0, 0, 0, 0, 1, 0, 0}, 256));
    ExpectSense(5, 0x24, 0);
}

TEST_F(ImageDriveTest, PackedCapabilitiesAre280DigitsThatTheDriveLayerReads)
{
    wchar_t* pText = m_pDrive->GetPackedCapabilities();
    const LyString strPacked(pText);
    LyCom::SysFreeString(pText);
    EXPECT_EQ(280, strPacked.GetLength());
    DSENSEMASK mask{};
    mask.InitFromPackedData(strPacked);
    EXPECT_TRUE(mask.m_bPage1Valid && mask.m_bCDParamsValid && mask.m_bCapabilitiesValid && mask.m_bPage4Valid);
    EXPECT_EQ(0x01, mask.m_Page1[0]);
    EXPECT_EQ(0x0D, mask.m_CDParamsPage[0]);
    EXPECT_EQ(0x2A, mask.m_CapabilitiesPage[0]);
    EXPECT_EQ(0x0E, mask.m_Page4[0]);
}

TEST_F(ImageDriveTest, RequestSenseHasNothingLeftToTell)
{
    EXPECT_FALSE(Send({0xFF, 0}, 4));
    ASSERT_TRUE(Send({CDB_REQUEST_SENSE, 0, 0, 0, 18, 0}, 18));
    EXPECT_EQ(0x70, m_Data[0]);
    EXPECT_EQ(0, m_Data[2]);
}

TEST_F(ImageDriveTest, WhatLoadOpenedServesTheFirstHolderOnly)
{
    int nOpened = 0;
    const std::string strCue = m_Folder.GetPath("disc.cue");
    ImageDrive drive(strCue,
                     [&](std::string& strError)
                     {
                         ++nOpened;
                         return DiscImage::Open(strCue, strError);
                     });
    std::string strError;
    ASSERT_TRUE(drive.Load(strError));
    ASSERT_TRUE(drive.Load(strError));
    ASSERT_TRUE(drive.Acquire(strError));
    ASSERT_TRUE(drive.Acquire(strError));
    ASSERT_TRUE(drive.Load(strError));
    EXPECT_EQ(1, nOpened);
    drive.Release();
    drive.Release();
    // The file may be another one by now.
    ASSERT_TRUE(drive.Acquire(strError));
    EXPECT_EQ(2, nOpened);
    drive.Release();
    ASSERT_TRUE(drive.Load(strError));
    ASSERT_TRUE(drive.Acquire(strError));
    EXPECT_EQ(3, nOpened);
}

TEST_F(ImageDriveTest, ADiscThatWasTakenOutBehindLoadIsOpenedAnew)
{
    ImageDrive drive(m_Folder.GetPath("disc.cue"));
    std::string strError;
    ASSERT_TRUE(drive.Load(strError));
    const unsigned char aryEject[6] = {CDB_START_STOP_UNIT, 0, 0, 0, START_STOP_LOAD_EJECT, 0};
    int nBytes = 0;
    ASSERT_TRUE(drive.Execute({aryEject, 6, nullptr, nBytes, DRIVE_TRANSFER_NONE}, m_Sense));
    EXPECT_EQ(0, drive.GetStateA());
    ASSERT_TRUE(drive.Acquire(strError));
    EXPECT_EQ(1, drive.GetStateA());
}

TEST_F(ImageDriveTest, TheImageIsOpenOnlyWhileSomebodyHoldsTheDrive)
{
    std::string strError;
    ASSERT_TRUE(m_pDrive->Acquire(strError));
    m_pDrive->Release();
    EXPECT_TRUE(Send({CDB_TEST_UNIT_READY, 0, 0, 0, 0, 0}));
    ASSERT_TRUE(Send({CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0, 0, 0, 1, 0}));
    m_pDrive->Release();
    EXPECT_FALSE(Send({CDB_TEST_UNIT_READY, 0, 0, 0, 0, 0}));
    ExpectSense(2, 0x3A, 1);
    m_pDrive->Release(); // one too many is harmless
    ASSERT_TRUE(m_pDrive->Acquire(strError));
    EXPECT_TRUE(Send({CDB_START_STOP_UNIT, 0, 0, 0, 2, 0})); // the door was left unlocked
}
