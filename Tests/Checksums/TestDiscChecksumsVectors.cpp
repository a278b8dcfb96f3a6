// Published values, each of which can be had again from a generator or from counting.

#include "DiscChecksums.h"
#include "PlainSums.h"
#include "SecureHash.h"
#include <cstring>
#include <gtest/gtest.h>

namespace
{
TRACK_CHECKSUMS GetSums(const DiscChecksums& checksums, int nTrack)
{
    TRACK_CHECKSUMS sums;
    EXPECT_TRUE(checksums.GetTrack(nTrack, sums)) << nTrack;
    return sums;
}

// Audio in which frame k of the disc has the value k + 1.
void AddCounting(DiscChecksums& checksums, int nFirst, int nEnd)
{
    std::vector<uint32_t> arySector(LY_CD_SECTOR_FRAMES);
    checksums.StartAt(nFirst);
    for (int nSector = nFirst; nSector < nEnd; ++nSector)
    {
        for (size_t i = 0; i < arySector.size(); ++i)
            arySector[i] = static_cast<uint32_t>(nSector) * LY_CD_SECTOR_FRAMES + static_cast<uint32_t>(i) + 1;
        checksums.Add(arySector.data(), LY_CD_SECTOR_BYTES);
    }
}
} // namespace

class NoiseVector : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_Checksums.SetLayout(MakeLayout({13, 68, 99}, 136)));
        m_aryAudio = SubtractiveBytes(2314).Make(136 * LY_CD_SECTOR_BYTES);
    }

    DiscChecksums m_Checksums;
    std::vector<uint8_t> m_aryAudio;
};

TEST_F(NoiseVector, AudioIsThePublishedOne)
{
    const SHA1Hash::DIGEST digest = SHA1Hash::Make(m_aryAudio.data(), m_aryAudio.size());
    EXPECT_EQ("aaf1efcf4df5632da18f8e87b6c7ae94b3b9b5ff", MakeHexText(digest.data(), digest.size()));
    EXPECT_EQ("81510e1b4fa5e74f", MakeHexText(m_aryAudio.data(), 8));
}

TEST_F(NoiseVector, TracksHaveThePublishedSums)
{
    m_Checksums.StartAt(0);
    m_Checksums.Add(m_aryAudio.data(), m_aryAudio.size());
    const struct
    {
        int m_nTrack;
        uint32_t m_nVersion1, m_nVersion2, m_nCRC32;
    } aryRows[] = {
        {1, 3727147246, 3988391122, 321342250},
        {2, 2202235240, 2284845104, 37001035},
        {3, 3752629998, 3841231027, 516255430},
    };
    for (const auto& row : aryRows)
    {
        const TRACK_CHECKSUMS sums = GetSums(m_Checksums, row.m_nTrack);
        EXPECT_EQ(row.m_nVersion1, sums.m_nAccurateRip1) << row.m_nTrack;
        EXPECT_EQ(row.m_nVersion2, sums.m_nAccurateRip2) << row.m_nTrack;
        EXPECT_EQ(row.m_nCRC32, sums.m_nCRC32) << row.m_nTrack;
    }
}

TEST_F(NoiseVector, TracksHaveThePublishedCTDBSumsWithMarginsOfFiveSectors)
{
    ASSERT_TRUE(m_Checksums.SetCTDBMargins(2940, 2940));
    m_Checksums.StartAt(13); // nothing ahead of track 1 is needed
    m_Checksums.Add(m_aryAudio.data() + 13 * LY_CD_SECTOR_BYTES, m_aryAudio.size() - 13 * LY_CD_SECTOR_BYTES);
    EXPECT_EQ(4209773141U, GetSums(m_Checksums, 1).m_nCTDB);
    EXPECT_EQ(37001035U, GetSums(m_Checksums, 2).m_nCTDB);
    EXPECT_EQ(1024656428U, GetSums(m_Checksums, 3).m_nCTDB);
}

TEST_F(NoiseVector, WholeAudioHasThePublishedCRC32WithAndWithoutNullSamples)
{
    AudioCRC32 crc;
    crc.Add(m_aryAudio.data(), m_aryAudio.size());
    EXPECT_EQ(3791227907U, crc.Get());
    EXPECT_EQ(404551290U, crc.GetWithoutNull());
}

TEST(TenMinuteVector, DiscHasThePublishedCTDBSum)
{
    constexpr int SECTORS = 45000;
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(MakeLayout({0}, SECTORS)));
    SubtractiveBytes bytes(2423);
    for (int nSector = 0; nSector < SECTORS; ++nSector)
    {
        const std::vector<uint8_t> arySector = bytes.Make(LY_CD_SECTOR_BYTES);
        checksums.Add(arySector.data(), arySector.size());
    }
    uint32_t nCTDB = 0;
    ASSERT_TRUE(checksums.GetDiscCTDB(nCTDB));
    EXPECT_EQ(2278257733U, nCTDB);
    EXPECT_EQ(2278257733U, GetSums(checksums, 1).m_nCTDB);
    EXPECT_EQ(2278257733U, checksums.GetDiscCTDBAtOffsets()[CHECKSUM_MAX_OFFSET]);
}

TEST(CountingVector, TracksHaveThePublishedAccurateRipSums)
{
    const CD_LAYOUT layout = MakeLayout(
        {33, 5225, 7390, 23380, 35608, 49820, 69508, 87733, 106333, 139495, 157863, 198495, 213368, 225320, 234103},
        253038);
    const struct
    {
        int m_nTrack;
        uint32_t m_nVersion1, m_nVersion2;
    } aryRows[] = {
        {1, 0x0AF18BB6, 0x8FBB68BA},
        {2, 0x60F64E9A, 0x8D040A9A},
        {14, 0x3EF9CE06, 0x8348C62F},
        {15, 0x6B74EFB4, 0x9A458AF6}, // the last one: its last 2940 frames left out
    };
    DiscChecksums checksums;
    ASSERT_TRUE(checksums.SetLayout(layout));
    for (const auto& row : aryRows)
    {
        const CD_LAYOUT_TRACK& track = layout.m_aryTracks[static_cast<size_t>(row.m_nTrack) - 1];
        AddCounting(checksums, track.m_nStart, track.m_nEnd);
        const TRACK_CHECKSUMS sums = GetSums(checksums, row.m_nTrack);
        EXPECT_EQ(row.m_nVersion1, sums.m_nAccurateRip1) << row.m_nTrack;
        EXPECT_EQ(row.m_nVersion2, sums.m_nAccurateRip2) << row.m_nTrack;
    }
}
