#include "FakeDisc.h"
#include "LyTimer.h"
#include "MemReader.h"
#include "THCDAInputSource.h"
#include <gtest/gtest.h>
#include <vector>

namespace
{
constexpr int REQUEST_BYTES = 2304;

class CDSource : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
    }
    static LyString GetField(ILyAudioInput& input, int nField)
    {
        LyString strText(L"refused");
        (void)input.GetInformation(static_cast<LY_AUDIO_INPUT_INFO_FIELDS>(nField), LyDllString(strText));
        return strText;
    }
    // Pulls until the source gives no more; every byte is compared with the disc's pattern.
    static long long PullAndCompare(ILyAudioInput& input, int nFirstSector, int nRequest)
    {
        std::vector<unsigned char> aryBytes(static_cast<size_t>(nRequest));
        long long nPosition = 0;
        for (int nGot = 0; (nGot = input.GetSamples(aryBytes.data(), nRequest)) > 0;)
        {
            for (int i = 0; i < nGot; ++i, ++nPosition)
            {
                const int nSector = nFirstSector + static_cast<int>(nPosition / LY_CD_SECTOR_BYTES);
                const int nOffset = static_cast<int>(nPosition % LY_CD_SECTOR_BYTES);
                if (aryBytes[static_cast<size_t>(i)] != FakeDisc::AudioByte(nSector, nOffset))
                    return -1 - nPosition;
            }
        }
        return nPosition;
    }

    IFakeDisc* m_pFake = nullptr;
};
} // namespace

TEST_F(CDSource, TellsItsNameAndItsFileTypes)
{
    CTHCDAInputSource source(nullptr);
    EXPECT_STREQ(L"CD audio input plug-in", GetField(source, 2));
    EXPECT_STREQ(L"CDA; CDA File (*.CDA)", GetField(source, 4));
    EXPECT_STREQ(L"4", GetField(source, 24));
    EXPECT_STREQ(L"refused", GetField(source, 3));
}

TEST_F(CDSource, AGoodOpenFillsInTheFormat)
{
    CTHCDAInputSource source(nullptr);
    ASSERT_EQ(0, source.Open(L"cda://E:,5"));
    EXPECT_STREQ(L"1411", GetField(source, 0));
    EXPECT_STREQ(L"44100", GetField(source, 8));
    EXPECT_STREQ(L"2", GetField(source, 9));
    EXPECT_STREQ(L"16", GetField(source, 10));
    EXPECT_STREQ(L"588000", GetField(source, 12)); // 1000 sectors of 588 frames
    EXPECT_STREQ(L"13334", GetField(source, 1));   // (1000 * 1000 + 74) / 75
}

TEST_F(CDSource, AFailedOpenAnswersOneAndLeavesTheFormat)
{
    CTHCDAInputSource source(nullptr);
    EXPECT_EQ(1, source.Open(L"cda://Q:,5"));
    EXPECT_NE(nullptr, source.m_pMemReader);
    EXPECT_EQ(-1, source.m_nBitrate);
    EXPECT_EQ(-1, source.m_nTotalSamples);
    unsigned char aryBytes[16];
    EXPECT_EQ(0, source.GetSamples(aryBytes, 16)); // nobody brings more: the end, not a hang
}

TEST_F(CDSource, AMalformedPathGoesOnAndTheReaderDecides)
{
    CTHCDAInputSource source(nullptr);
    EXPECT_EQ(1, source.Open(L"no path at all"));
    CTHCDAInputSource another(nullptr);
    EXPECT_EQ(1, another.Open(nullptr));
}

TEST_F(CDSource, ABadTrackNumberPlaysTheErrorCodeAsSectors)
{
    CTHCDAInputSource source(nullptr);
    EXPECT_EQ(0, source.Open(L"cda://E:,50"));
    EXPECT_EQ(16 * 588, source.m_nTotalSamples);
}

TEST_F(CDSource, EveryByteOfATrackComesUpToItsLastWholeRequest)
{
    for (const int nRequest : {REQUEST_BYTES, 1000, 65536, 7})
    {
        if (nRequest == 7)
        {
            // Small requests are slow by nature; a short track will do.
            const FAKE_TRACK aryTracks[] = {{1, 0, 2}, {2, 40, 2}};
            m_pFake->LoadDisc(aryTracks, 2, 80);
        }
        CTHCDAInputSource source(nullptr);
        ASSERT_EQ(0, source.Open(L"cda://E:,2"));
        const int nSectors = nRequest == 7 ? 40 : FakeDisc::TRACK_SECTORS;
        const int nFirst = nRequest == 7 ? 40 : FakeDisc::TRACK_SECTORS;
        EXPECT_EQ(nSectors * LY_CD_SECTOR_BYTES / REQUEST_BYTES * REQUEST_BYTES,
                  PullAndCompare(source, nFirst, nRequest));
        unsigned char nByte = 0;
        EXPECT_EQ(0, source.GetSamples(&nByte, 1));
    }
}

TEST_F(CDSource, ASeekLandsOnTheWholeSecond)
{
    CTHCDAInputSource source(nullptr);
    ASSERT_EQ(0, source.Open(L"cda://E:,3"));
    EXPECT_EQ(0, source.SetInformation(LY_AUDIO_INPUT_INFO_POSITION, L"1999"));
    std::vector<unsigned char> aryBytes(REQUEST_BYTES);
    ASSERT_EQ(REQUEST_BYTES, source.GetSamples(aryBytes.data(), REQUEST_BYTES));
    for (int i = 0; i < REQUEST_BYTES; ++i)
        ASSERT_EQ(FakeDisc::AudioByte(2 * FakeDisc::TRACK_SECTORS + 75, i), aryBytes[static_cast<size_t>(i)]);
}

TEST_F(CDSource, ASeekBehindTheEndOnlyEmptiesTheFramesBuffer)
{
    CTHCDAInputSource source(nullptr);
    ASSERT_EQ(0, source.Open(L"cda://E:,1"));
    std::vector<unsigned char> aryBytes(100);
    ASSERT_EQ(100, source.GetSamples(aryBytes.data(), 100));
    EXPECT_EQ(0, source.SetInformation(LY_AUDIO_INPUT_INFO_POSITION, L"99999999"));
    ASSERT_EQ(1, source.GetSamples(aryBytes.data(), 1));
    // The rest of the first refill is gone; the ring goes on where it was.
    EXPECT_EQ(FakeDisc::AudioByte(0, REQUEST_BYTES), aryBytes[0]);
}

TEST_F(CDSource, ASeekFromTheEndPlaysAgain)
{
    CTHCDAInputSource source(nullptr);
    ASSERT_EQ(0, source.Open(L"cda://E:,1"));
    ASSERT_GT(PullAndCompare(source, 0, 65536), 0);
    EXPECT_TRUE(source.m_bEndOfData);
    EXPECT_EQ(0, source.SetInformation(LY_AUDIO_INPUT_INFO_POSITION, L"0"));
    EXPECT_FALSE(source.m_bEndOfData);
    EXPECT_EQ(1000 * LY_CD_SECTOR_BYTES / REQUEST_BYTES * REQUEST_BYTES, PullAndCompare(source, 0, 65536));
}

TEST_F(CDSource, StrangePositionsAreHarmless)
{
    CTHCDAInputSource source(nullptr);
    ASSERT_EQ(0, source.Open(L"cda://E:,1"));
    for (const wchar_t* pText : {L"", L"text", L"-5000", L"2147483647", L"99999999999999999999", L"-2147483648"})
        EXPECT_EQ(0, source.SetInformation(LY_AUDIO_INPUT_INFO_POSITION, pText));
    EXPECT_EQ(0, source.SetInformation(LY_AUDIO_INPUT_INFO_POSITION, nullptr));
    unsigned char nByte = 0;
    EXPECT_EQ(1, source.GetSamples(&nByte, 1));
    EXPECT_EQ(FakeDisc::AudioByte(0, 0), nByte);
}

TEST_F(CDSource, OtherFieldsAndAllCommandsAreRefused)
{
    CTHCDAInputSource source(nullptr);
    EXPECT_EQ(-1, source.SetInformation(LY_AUDIO_INPUT_INFO_POSITION, L"0")); // never opened
    ASSERT_EQ(0, source.Open(L"cda://E:,1"));
    EXPECT_EQ(-1, source.SetInformation(LY_AUDIO_INPUT_INFO_BITRATE, L"1"));
    EXPECT_EQ(-1, source.DoCommand(LY_AUDIO_INPUT_COMMAND_CLOSE_READER, 0, 0));
}

TEST_F(CDSource, SamplesOfASourceThatWasNeverOpenedAreMinusOne)
{
    CTHCDAInputSource source(nullptr);
    unsigned char nByte = 0;
    EXPECT_EQ(-1, source.AddDataToBuffer());
    EXPECT_EQ(-1, source.GetSamples(&nByte, 1));
}

TEST_F(CDSource, ATrackFileOpensTheTrackOfItsName)
{
    m_pFake->AddDrive(L"/", FakeDisc::VENDOR, FakeDisc::MODEL, nullptr);
    CTHCDAInputSource source(nullptr);
    ASSERT_EQ(0, source.Open(L"/media/cdrom/Track04.cda"));
    unsigned char nByte = 0;
    ASSERT_EQ(1, source.GetSamples(&nByte, 1));
    EXPECT_EQ(FakeDisc::AudioByte(3 * FakeDisc::TRACK_SECTORS, 0), nByte);
}

TEST_F(CDSource, TheDriveRunsAtItsMaximumAndIsReadInPiecesOf27)
{
    {
        CTHCDAInputSource source(nullptr);
        ASSERT_EQ(0, source.Open(L"cda://E:,1"));
        EXPECT_GT(PullAndCompare(source, 0, 65536), 0);
    }
    FAKE_COMMAND speed{};
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_SET_CD_SPEED, 0, speed));
    EXPECT_EQ(0xFF, speed.cdb[2]);
    EXPECT_EQ(0xFF, speed.cdb[3]);
    FAKE_COMMAND read{};
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_READ_CD, 0, read));
    EXPECT_EQ(27 * LY_CD_SECTOR_BYTES, read.nDataBytes);
    EXPECT_FALSE(m_pFake->GetAcquired(FakeDisc::DRIVE));
}
