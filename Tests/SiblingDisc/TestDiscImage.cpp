#include "DiscImage.h"
#include "ImageFiles.h"
#include "SectorFrame.h"
#include <gtest/gtest.h>

namespace
{
constexpr long long SECTOR = LY_CD_SECTOR_BYTES;

// A disc made by hand: two audio tracks of 10 and 20 sectors in one source, then a hole of 100 sectors and a data track
// of 5 sectors in a second session.
class HandMadeDisc : public testing::Test
{
protected:
    std::vector<MemorySource::READ> m_aryReads;
    std::unique_ptr<DiscImage> m_pImage;
    std::vector<unsigned char> m_aryBuffer = std::vector<unsigned char>(60 * SECTOR, 0xEE);

    void Make(DISC_TRACK_MODE dataMode, int nAudioSectors = 30, int nDataBytes = -1)
    {
        DISC_CONTENT content;
        content.m_aryTracks = {Track(3, 1, -150, 0, 10), Track(4, 1, 10, 12, 18), Track(5, 2, 130, 130, 5)};
        content.m_aryTracks[1].m_aryIndexLBAs = {20, 25};
        content.m_aryTracks[2].m_nControl = TRACK_CONTROL_DATA;
        content.m_aryTracks[2].m_nMode = dataMode;
        content.m_arySessions = {{1, 3, 4, 30, DISC_SESSION_CDDA_OR_CDROM}, {2, 5, 5, 135, DISC_SESSION_CDROM_XA}};
        int nStored = GetStoredBytes(dataMode);
        std::string strData = MakeSectors(5, 0x50, nStored);
        if (nDataBytes >= 0)
            strData.resize(static_cast<size_t>(nDataBytes));
        content.m_arySources.push_back(std::make_unique<MemorySource>(MakeSectors(nAudioSectors, 1), &m_aryReads));
        content.m_arySources.push_back(std::make_unique<MemorySource>(strData, &m_aryReads));
        content.m_aryExtents = {{-150 * SECTOR, 150 * SECTOR, nullptr, 0, 0, DISC_AUDIO},
                                {0, 30 * SECTOR, content.m_arySources[0].get(), 0, 30 * SECTOR, DISC_AUDIO},
                                {130 * SECTOR, 5 * SECTOR, content.m_arySources[1].get(), 0, 5LL * nStored, dataMode}};
        m_pImage = std::make_unique<DiscImage>(std::move(content));
    }

    static DISC_TRACK Track(int nNumber, int nSession, int nPregap, int nStart, int nSectors)
    {
        DISC_TRACK track;
        track.m_nNumber = nNumber;
        track.m_nSession = nSession;
        track.m_nPregapLBA = nPregap;
        track.m_nStartLBA = nStart;
        track.m_nSectors = nSectors;
        return track;
    }

    void ExpectRead(int nLBA, int nCount, READ_STATUS status, int nSectors)
    {
        READ_RESULT result = m_pImage->ReadSectors(nLBA, nCount, m_aryBuffer.data());
        EXPECT_EQ(status, result.m_nStatus) << nLBA << ", " << nCount;
        EXPECT_EQ(nSectors, result.m_nSectors) << nLBA << ", " << nCount;
        EXPECT_EQ(status == READ_GOOD, result.IsGood());
    }
    const unsigned char* GetSector(int n) const { return m_aryBuffer.data() + n * SECTOR; }
    bool IsFilled(int nSector, int nFirst, int nEnd, int nValue) const
    {
        return std::all_of(GetSector(nSector) + nFirst, GetSector(nSector) + nEnd,
                           [&](unsigned char c) { return c == nValue; });
    }
    std::string GetHeader(int nSector) const { return {reinterpret_cast<const char*>(GetSector(nSector)), 16}; }
};

TEST_F(HandMadeDisc, TellsItsTracks)
{
    Make(DISC_MODE2_2352);
    EXPECT_EQ(3, m_pImage->GetFirstTrackNumber());
    EXPECT_EQ(5, m_pImage->GetLastTrackNumber());
    EXPECT_EQ(135, m_pImage->GetLeadOutLBA());
    EXPECT_EQ(nullptr, m_pImage->FindTrack(2));
    ASSERT_NE(nullptr, m_pImage->FindTrack(4));
    EXPECT_EQ(12, m_pImage->FindTrack(4)->m_nStartLBA);
    EXPECT_EQ(nullptr, m_pImage->FindTrack(6));
    EXPECT_TRUE(m_pImage->FindTrack(5)->IsData());
    EXPECT_FALSE(m_pImage->FindTrack(4)->IsData());
}

TEST_F(HandMadeDisc, LocatesEverySector)
{
    struct PLACE_CASE
    {
        int m_nLBA;
        int m_nTrack; // 0: none
        int m_nIndex;
    };
    const PLACE_CASE aryCases[] = {{-151, 0, 0}, {-150, 3, 0}, {-1, 3, 0},  {0, 3, 1},    {9, 3, 1},
                                   {10, 4, 0},   {11, 4, 0},   {12, 4, 1},  {19, 4, 1},   {20, 4, 2},
                                   {24, 4, 2},   {25, 4, 3},   {29, 4, 3},  {30, 0, 0},   {129, 0, 0},
                                   {130, 5, 1},  {134, 5, 1},  {135, 0, 0}, {99999, 0, 0}};
    Make(DISC_MODE2_2352);
    for (const PLACE_CASE& row : aryCases)
    {
        DISC_PLACE place = m_pImage->Locate(row.m_nLBA);
        EXPECT_EQ(row.m_nTrack, place.m_pTrack != nullptr ? place.m_pTrack->m_nNumber : 0) << row.m_nLBA;
        EXPECT_EQ(row.m_nIndex, place.m_nIndex) << row.m_nLBA;
    }
}

TEST_F(HandMadeDisc, OneCommandIsOneReadIntoTheCallersBuffer)
{
    Make(DISC_MODE2_2352);
    ExpectRead(2, 27, READ_GOOD, 27);
    ASSERT_EQ(1u, m_aryReads.size());
    EXPECT_EQ(2 * SECTOR, m_aryReads[0].m_nOffset);
    EXPECT_EQ(27 * SECTOR, m_aryReads[0].m_nBytes);
    EXPECT_EQ(m_aryBuffer.data(), m_aryReads[0].m_pBuffer);
    for (int n = 0; n < 27; n++)
        EXPECT_TRUE(IsFilled(n, 0, 2352, 3 + n)) << n;
    EXPECT_TRUE(IsFilled(27, 0, 2352, 0xEE)); // and not a byte more
}

TEST_F(HandMadeDisc, FirstPregapIsSilence)
{
    Make(DISC_MODE2_2352);
    ExpectRead(-2, 3, READ_GOOD, 3);
    EXPECT_TRUE(IsFilled(0, 0, 2352, 0));
    EXPECT_TRUE(IsFilled(1, 0, 2352, 0));
    EXPECT_TRUE(IsFilled(2, 0, 2352, 1));
}

TEST_F(HandMadeDisc, ReadsEndWhereTheSectorsDo)
{
    Make(DISC_MODE2_2352);
    ExpectRead(-151, 2, READ_OUTSIDE, 0);
    ExpectRead(28, 5, READ_BETWEEN, 2);
    ExpectRead(30, 1, READ_BETWEEN, 0);
    ExpectRead(129, 2, READ_BETWEEN, 0);
    ExpectRead(133, 3, READ_OUTSIDE, 2);
    ExpectRead(135, 1, READ_OUTSIDE, 0);
    ExpectRead(2147483647, 1, READ_OUTSIDE, 0);
    ExpectRead(-2147483647 - 1, 1, READ_OUTSIDE, 0);
    ExpectRead(5, 0, READ_GOOD, 0);
}

TEST_F(HandMadeDisc, BadArgumentsAreRefused)
{
    Make(DISC_MODE2_2352);
    EXPECT_EQ(READ_BAD_ARGUMENT, m_pImage->ReadSectors(0, -1, m_aryBuffer.data()).m_nStatus);
    EXPECT_EQ(READ_BAD_ARGUMENT, m_pImage->ReadSectors(0, 1, nullptr).m_nStatus);
    EXPECT_EQ(READ_GOOD, m_pImage->ReadSectors(0, 0, nullptr).m_nStatus);
}

TEST_F(HandMadeDisc, CutSourceIsUnreadableFromTheCutOn)
{
    Make(DISC_MODE2_2352, 20);
    ExpectRead(15, 10, READ_UNREADABLE, 5);
    ExpectRead(20, 1, READ_UNREADABLE, 0);
    ExpectRead(19, 1, READ_GOOD, 1);
    EXPECT_TRUE(IsFilled(0, 0, 2352, 20));
}

TEST_F(HandMadeDisc, CutDataIsUnreadableFromTheCutOn)
{
    Make(DISC_MODE1_2048, 30, 2048 * 2 + 2047);
    ExpectRead(130, 5, READ_UNREADABLE, 2);
    EXPECT_TRUE(IsFilled(0, 16, 16 + 2048, 0x50));
    EXPECT_TRUE(IsFilled(1, 16, 16 + 2048, 0x51));
    ExpectRead(132, 1, READ_UNREADABLE, 0);
}

TEST_F(HandMadeDisc, FormsTellWhatTheImageStores)
{
    Make(DISC_MODE2_2336);
    std::vector<DISC_TRACK_MODE> aryForms(40, DISC_MODE1_2352);
    EXPECT_EQ(1, m_pImage->ReadSectors(29, 2, m_aryBuffer.data(), aryForms.data()).m_nSectors);
    EXPECT_EQ(DISC_AUDIO, aryForms[0]);
    EXPECT_EQ(DISC_MODE1_2352, aryForms[1]); // not read, not touched
    EXPECT_EQ(5, m_pImage->ReadSectors(130, 5, m_aryBuffer.data(), aryForms.data()).m_nSectors);
    EXPECT_EQ(DISC_MODE2_2336, aryForms[0]);
    EXPECT_EQ(DISC_MODE2_2336, aryForms[4]);
    EXPECT_EQ(DISC_MODE1_2352, aryForms[5]);
}

struct FORM_CASE
{
    DISC_TRACK_MODE m_nMode;
    int m_nOffset;
    int m_nBytes;
    char m_nHeaderMode;
};

// LBA 131 is MSF 00:03:56, which stands in the header in BCD.
TEST_F(HandMadeDisc, DataSectorsComeWholeInEveryForm)
{
    const FORM_CASE aryCases[] = {{DISC_MODE1_2048, 16, 2048, 1},
                                  {DISC_MODE2_2336, 16, 2336, 2},
                                  {DISC_MODE2_2048, 24, 2048, 2},
                                  {DISC_MODE2_2324, 24, 2324, 2}};
    for (const FORM_CASE& row : aryCases)
    {
        Make(row.m_nMode);
        EXPECT_EQ(row.m_nBytes, GetStoredBytes(row.m_nMode));
        EXPECT_EQ(row.m_nOffset, GetStoredOffset(row.m_nMode));
        m_aryReads.clear();
        ExpectRead(131, 4, READ_GOOD, 4);
        EXPECT_EQ(1u, m_aryReads.size()) << row.m_nBytes;
        std::string strHeader("\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0\x00\x03\x56", 15);
        EXPECT_EQ(strHeader + row.m_nHeaderMode, GetHeader(0)) << row.m_nBytes;
        EXPECT_EQ('\x59', GetHeader(3)[14]);
        for (int n = 0; n < 4; n++)
        {
            EXPECT_TRUE(IsFilled(n, row.m_nOffset, row.m_nOffset + row.m_nBytes, 0x51 + n))
                << row.m_nBytes << ", " << n;
            EXPECT_TRUE(IsFilled(n, row.m_nOffset + row.m_nBytes, 2352, 0)) << row.m_nBytes << ", " << n;
        }
        EXPECT_TRUE(IsFilled(4, 0, 2352, 0xEE)) << row.m_nBytes; // and not a byte more
        std::fill(m_aryBuffer.begin(), m_aryBuffer.end(), static_cast<unsigned char>(0xEE));
    }
}

TEST_F(HandMadeDisc, SubheadersTellTheForm)
{
    Make(DISC_MODE2_2048);
    ExpectRead(130, 1, READ_GOOD, 1);
    EXPECT_EQ(0, memcmp(GetSector(0) + 16, "\0\0\x08\0\0\0\x08\0", 8));
    Make(DISC_MODE2_2324);
    ExpectRead(130, 1, READ_GOOD, 1);
    EXPECT_EQ(0, memcmp(GetSector(0) + 16, "\0\0\x20\0\0\0\x20\0", 8));
}

TEST_F(HandMadeDisc, WholeDataSectorsComeAsTheyAre)
{
    Make(DISC_MODE2_2352);
    ExpectRead(132, 1, READ_GOOD, 1);
    EXPECT_TRUE(IsFilled(0, 0, 2352, 0x52));
}

TEST(SectorFrame, EmptyDataSectorsHaveFrames)
{
    std::vector<unsigned char> aryBuffer(2 * SECTOR, 0xEE);
    FillEmptySectors(aryBuffer.data(), 2, 0, DISC_MODE1_2352);
    EXPECT_EQ(0xFF, aryBuffer[1]);
    EXPECT_EQ(0x02, aryBuffer[13]); // MSF 00:02:00
    EXPECT_EQ(1, aryBuffer[15]);
    EXPECT_EQ(0x01, aryBuffer[SECTOR + 14]);
    EXPECT_EQ(0, aryBuffer[16]);
    EXPECT_EQ(0, aryBuffer[2351]);
    FillEmptySectors(aryBuffer.data(), 2, 0, DISC_AUDIO);
    EXPECT_EQ(std::vector<unsigned char>(2 * SECTOR, 0), aryBuffer);
}

TEST(DiscImage, ReadsAcrossBordersWithinASector)
{
    DISC_CONTENT content;
    content.m_arySources.push_back(std::make_unique<MemorySource>(std::string(1000, 'a')));
    content.m_arySources.push_back(std::make_unique<MemorySource>(std::string(5000, 'b')));
    content.m_aryExtents = {{0, 1000, content.m_arySources[0].get(), 0, 1000, DISC_AUDIO},
                            {1000, 200, nullptr, 0, 0, DISC_AUDIO},
                            {1200, 2 * SECTOR - 1200, content.m_arySources[1].get(), 4, 2000, DISC_AUDIO}};
    DiscImage image(std::move(content));
    std::string strBuffer(2 * SECTOR, '?');
    READ_RESULT result = image.ReadSectors(0, 2, reinterpret_cast<unsigned char*>(strBuffer.data()));
    EXPECT_EQ(2, result.m_nSectors);
    std::string strWanted = std::string(1000, 'a') + std::string(200, '\0') + std::string(2000, 'b');
    strWanted.resize(2 * SECTOR, '\0'); // what an extent does not take from its source is silent
    EXPECT_TRUE(Same(strWanted, strBuffer));
}

TEST(DiscImage, DiscWithoutAnythingAnswersAll)
{
    DiscImage image{DISC_CONTENT()};
    unsigned char aryBuffer[LY_CD_SECTOR_BYTES];
    EXPECT_EQ(0, image.GetFirstTrackNumber());
    EXPECT_EQ(0, image.GetLastTrackNumber());
    EXPECT_EQ(0, image.GetLeadOutLBA());
    EXPECT_EQ(nullptr, image.FindTrack(0));
    EXPECT_EQ(nullptr, image.Locate(0).m_pTrack);
    EXPECT_EQ(READ_OUTSIDE, image.ReadSectors(0, 1, aryBuffer).m_nStatus);
}
} // namespace
