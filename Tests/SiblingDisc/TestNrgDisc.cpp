#include "DiscImage.h"
#include "ImageFiles.h"
#include "NrgDisc.h"
#include "StrideSource.h"
#include <gtest/gtest.h>

namespace
{
constexpr long long SECTOR = LY_CD_SECTOR_BYTES;

std::string BE(unsigned long long nValue, int nBytes)
{
    std::string str;
    for (int n = nBytes - 1; n >= 0; --n)
        str += static_cast<char>(nValue >> (8 * n));
    return str;
}

std::string Chunk(const std::string& strName, const std::string& strContent)
{
    return strName + BE(strContent.size(), 4) + strContent;
}

std::string BCD(int n) { return std::string(1, static_cast<char>(n / 10 * 16 + n % 10)); }

std::string Cue(int nControl, int nTrack, int nIndex, int nLBA)
{
    const std::string strTrack = nTrack == 0xAA ? "\xAA" : BCD(nTrack);
    return std::string(1, static_cast<char>(nControl << 4 | 1)) + strTrack + BCD(nIndex) + '\0' +
           BE(static_cast<unsigned int>(nLBA), 4);
}

struct DAO_TRACK
{
    int m_nForm;
    int m_nSectorBytes;
    long long m_nPregap;
    long long m_nStart;
    long long m_nEnd;
    std::string m_strISRC = std::string(12, '\0');
};

std::string Dao(int nFirst, const std::vector<DAO_TRACK>& aryTracks, int nOffsetBytes = 8)
{
    std::string str = std::string(4, '\0') + "1234567890123" + std::string(3, '\0') + static_cast<char>(nFirst) +
                      static_cast<char>(nFirst + static_cast<int>(aryTracks.size()) - 1);
    for (const DAO_TRACK& track : aryTracks)
        str += track.m_strISRC + BE(static_cast<unsigned int>(track.m_nSectorBytes), 2) +
               static_cast<char>(track.m_nForm) + std::string(1, '\0') + BE(1, 2) +
               BE(static_cast<unsigned long long>(track.m_nPregap), nOffsetBytes) +
               BE(static_cast<unsigned long long>(track.m_nStart), nOffsetBytes) +
               BE(static_cast<unsigned long long>(track.m_nEnd), nOffsetBytes);
    return str;
}

std::string Footer(long long nChunks) { return "NER5" + BE(static_cast<unsigned long long>(nChunks), 8); }

std::string Finish(const std::string& strSectors, const std::string& strChunks)
{
    return strSectors + strChunks + Chunk("END!", "") + Footer(static_cast<long long>(strSectors.size()));
}

std::string Read(DiscImage& image, int nLBA, int nCount)
{
    std::string strBuffer(static_cast<size_t>(nCount * SECTOR), '?');
    READ_RESULT result = image.ReadSectors(nLBA, nCount, reinterpret_cast<unsigned char*>(strBuffer.data()));
    return strBuffer.substr(0, static_cast<size_t>(result.m_nSectors) * SECTOR);
}

// Two tracks at once: 150 sectors of the first pregap, track 1 of 300 sectors, a pregap of 30, track 2 of 300.
std::string MakeTwoTracks(bool bOld, bool bSecondIndex = true)
{
    const std::string strSectors =
        MakeSectors(150, 0) + MakeSectors(300, 1) + MakeSectors(30, 0x55) + MakeSectors(300, 0x80);
    const int nBytes = bOld ? 4 : 8;
    const std::string strDao = Dao(
        1,
        {{7, 2352, 0, 150 * SECTOR, 450 * SECTOR, "GBAYE6800123"}, {7, 2352, 450 * SECTOR, 480 * SECTOR, 780 * SECTOR}},
        nBytes);
    const std::string strCue = Cue(0, 0, 0, -150) + Cue(0, 1, 0, -150) + Cue(2, 1, 1, 0) + Cue(0, 2, 0, 300) +
                               Cue(2, 2, 1, 330) + (bSecondIndex ? Cue(0, 2, 2, 400) : "") + Cue(0, 0xAA, 1, 630);
    const std::string strMSF = std::string("\x21\x01\x01\x00\x00\x00\x02\x00", 8) +
                               std::string("\x21\x02\x01\x00\x00\x00\x06\x30", 8); // 00:06:30 is LBA 330
    const std::string strChunks =
        bOld ? Chunk("CUES", strMSF) + Chunk("DAOI", strDao) : Chunk("CUEX", strCue) + Chunk("DAOX", strDao);
    const std::string strSession = Chunk("SINF", BE(2, 4));
    if (!bOld)
        return Finish(strSectors, strChunks + strSession + Chunk("MTYP", BE(1, 4)));
    return strSectors + strChunks + strSession + Chunk("END!", "") + "NERO" + BE(strSectors.size(), 4);
}

std::unique_ptr<DiscImage> Open(const TempFolder& folder, const std::string& strContent, std::string& strError)
{
    return DiscImage::Open(folder.Write("a.nrg", strContent), strError);
}
} // namespace

class NrgDisc : public testing::TestWithParam<bool>
{
};

TEST_P(NrgDisc, TracksAtOnce)
{
    TempFolder folder;
    std::string strError;
    auto pImage = Open(folder, MakeTwoTracks(GetParam()), strError);
    ASSERT_TRUE(pImage) << strError;
    ASSERT_EQ(2u, pImage->GetTracks().size());
    const DISC_TRACK& first = pImage->GetTracks()[0];
    const DISC_TRACK& second = pImage->GetTracks()[1];
    EXPECT_EQ(0, first.m_nStartLBA);
    EXPECT_EQ(300, first.m_nSectors);
    EXPECT_EQ("GBAYE6800123", first.m_strISRC);
    EXPECT_EQ(TRACK_CONTROL_COPY_PERMITTED, first.m_nControl);
    EXPECT_EQ(300, second.m_nPregapLBA);
    EXPECT_EQ(330, second.m_nStartLBA);
    EXPECT_EQ(300, second.m_nSectors);
    EXPECT_EQ(GetParam() ? std::vector<int>() : std::vector<int>({400}), second.m_aryIndexLBAs);
    EXPECT_EQ("1234567890123", pImage->GetMCN());
    EXPECT_EQ(630, pImage->GetLeadOutLBA());
    EXPECT_TRUE(pImage->GetWarnings().empty()) << pImage->GetWarnings()[0];
    EXPECT_TRUE(Same(MakeSectors(300, 1), Read(*pImage, 0, 300)));
    EXPECT_TRUE(Same(MakeSectors(30, 0x55) + MakeSectors(300, 0x80), Read(*pImage, 300, 330)));
}
INSTANTIATE_TEST_SUITE_P(Versions, NrgDisc, testing::Bool(), [](const auto& row) { return row.param ? "Old" : "New"; });

TEST(NrgDiscForms, TrackByTrack)
{
    const std::string strSectors = MakeSectors(100, 1) + MakeSectors(50, 0x40);
    const std::string strEtn = BE(0, 8) + BE(100 * SECTOR, 8) + BE(7, 4) + BE(0, 4) + BE(0, 8) + BE(100 * SECTOR, 8) +
                               BE(50 * SECTOR, 8) + BE(7, 4) + BE(100, 4) + BE(0, 8);
    TempFolder folder;
    std::string strError;
    auto pImage = Open(folder, Finish(strSectors, Chunk("ETN2", strEtn) + Chunk("SINF", BE(2, 4))), strError);
    ASSERT_TRUE(pImage) << strError;
    ASSERT_EQ(2u, pImage->GetTracks().size());
    EXPECT_EQ(100, pImage->GetTracks()[1].m_nStartLBA);
    EXPECT_TRUE(Same(MakeSectors(50, 0x40), Read(*pImage, 100, 50)));
}

TEST(NrgDiscForms, ASecondSessionLiesWhereItsFirstTrackDoes)
{
    const std::string strSectors =
        MakeSectors(150, 0) + MakeSectors(300, 1) + MakeSectors(150, 0) + MakeSectors(60, 9, 2048);
    const long long nSecond = 450 * SECTOR;
    const std::string strChunks = Chunk("CUEX", Cue(0, 1, 1, 0)) +
                                  Chunk("DAOX", Dao(1, {{7, 2352, 0, 150 * SECTOR, nSecond}})) +
                                  Chunk("SINF", BE(1, 4)) + Chunk("CUEX", Cue(4, 2, 1, 11700)) +
                                  Chunk("DAOX", Dao(2, {{0, 2048, nSecond + 150 * SECTOR, nSecond + 150 * SECTOR,
                                                         nSecond + 150 * SECTOR + 60 * 2048LL}})) +
                                  Chunk("SINF", BE(1, 4));
    TempFolder folder;
    std::string strError;
    auto pImage = Open(folder, Finish(strSectors, strChunks), strError);
    ASSERT_TRUE(pImage) << strError;
    ASSERT_EQ(2u, pImage->GetSessions().size());
    EXPECT_EQ(300, pImage->GetSessions()[0].m_nLeadOutLBA);
    const DISC_TRACK& second = pImage->GetTracks()[1];
    EXPECT_EQ(11700, second.m_nStartLBA);
    EXPECT_EQ(11550, second.m_nPregapLBA);
    EXPECT_EQ(60, second.m_nSectors);
    EXPECT_TRUE(second.IsData());
    EXPECT_EQ(std::string(2048, '\x0A'), Read(*pImage, 11701, 1).substr(16, 2048));
}

TEST(NrgDiscForms, SubChannelsBehindEachSectorArePassedOver)
{
    std::string strSectors;
    for (int n = 0; n < 40; ++n)
        strSectors += MakeSectors(1, 1 + n) + std::string(96, '\x77');
    const std::string strChunks = Chunk("DAOX", Dao(1, {{16, 2448, 0, 0, 40 * 2448LL}}));
    TempFolder folder;
    std::string strError;
    auto pImage = Open(folder, Finish(strSectors, strChunks), strError);
    ASSERT_TRUE(pImage) << strError;
    EXPECT_EQ(40, pImage->GetLeadOutLBA());
    EXPECT_TRUE(Same(MakeSectors(40, 1), Read(*pImage, 0, 40)));
}

TEST(NrgDiscForms, CDTextComesAsItIs)
{
    std::string strPack = "\x80";
    strPack.resize(18);
    const std::string strChunks =
        Chunk("DAOX", Dao(1, {{7, 2352, 0, 0, 40 * SECTOR}})) + Chunk("CDTX", strPack + std::string(18, '\0'));
    TempFolder folder;
    std::string strError;
    auto pImage = Open(folder, Finish(MakeSectors(40, 1), strChunks), strError);
    ASSERT_TRUE(pImage) << strError;
    EXPECT_EQ(18u, pImage->GetCDTextPacks().size());
}

TEST(NrgDiscForms, FaultsAreSentences)
{
    const std::string strSectors = MakeSectors(40, 1);
    const std::pair<std::string, const char*> CASES[] = {
        {"", "describes no track"},
        {Chunk("DAOX", Dao(1, {{7, 2352, 0, 0, 4000 * SECTOR}})), "track 1 lies beyond the file"},
        {Chunk("DAOX", Dao(1, {{7, 2352, 50, 0, 100}})), "track 1 lies beyond the file"},
        {Chunk("DAOX", Dao(1, {{9, 2352, 0, 0, 100}})), "unknown form (9, 2352 bytes)"},
        {Chunk("DAOX", Dao(1, {{7, 2048, 0, 0, 100}})), "unknown form (7, 2048 bytes)"},
        {Chunk("DAOX", Dao(0, {{7, 2352, 0, 0, SECTOR}})), "track 0 does not follow"},
        {Chunk("DAOX", "short"), "is cut short"},
        {"DAOX" + BE(0x7FFFFFFF, 4), "a chunk at the end of the file goes beyond it"},
    };
    TempFolder folder;
    for (const auto& [strChunks, pSentence] : CASES)
    {
        std::string strError;
        EXPECT_FALSE(Open(folder, Finish(strSectors, strChunks), strError));
        EXPECT_NE(std::string::npos, strError.find(pSentence)) << strError;
        EXPECT_EQ(0u, strError.find(folder.GetPath("a.nrg"))) << strError;
    }
}

// Each number is one that some file could have; only their sum is none. Seen by the sanitizer of undefined behaviour.
TEST(NrgDiscForms, AStretchWhoseEndIsNoNumberLiesBeyondTheFile)
{
    constexpr long long HUGE_FILE = 1LL << 62;
    for (const long long nStart : {HUGE_FILE, HUGE_FILE + 1, 0x7FFFFFFFFFFFFFFFLL})
    {
        const std::string strEtn =
            BE(static_cast<unsigned long long>(nStart), 8) + BE(HUGE_FILE, 8) + BE(7, 4) + BE(0, 4) + BE(0, 8);
        const std::string strChunks = Chunk("ETN2", strEtn);
        NRG_SHEET sheet;
        SHEET_ERROR error;
        EXPECT_FALSE(ParseNrgChunks({strChunks.begin(), strChunks.end()}, HUGE_FILE, sheet, error));
        EXPECT_EQ(0u, error.m_strText.find("track 1 lies beyond the file")) << error.m_strText;
    }
}

TEST(NrgDiscForms, AFileWithoutItsEndIsNoImage)
{
    TempFolder folder;
    std::string strError;
    const std::string strWhole = MakeTwoTracks(false);
    EXPECT_FALSE(Open(folder, strWhole.substr(0, strWhole.size() - 4), strError));
    EXPECT_NE(std::string::npos, strError.find("the end of the NRG image is missing")) << strError;
}

TEST(ChdImage, IsToldHowToConvertIt)
{
    TempFolder folder;
    std::string strError;
    const std::string strPath = folder.Write("a.chd", "MComprHD" + std::string(200, '\0'));
    EXPECT_FALSE(DiscImage::Open(strPath, strError));
    EXPECT_EQ(strPath + ": CHD images are not read; convert it with 'chdman extractcd -i IMAGE.chd -o IMAGE.cue' and "
                        "open the CUE sheet.",
              strError);
}

TEST(StrideSource, KeepsTheFirstBytesOfEachRecord)
{
    MemorySource source("xxABCd..EFGh..IJ");
    auto pStride = MakeStrideSource(source, 2, 6, 3);
    EXPECT_EQ(6, pStride->GetBytes()); // two whole records
    unsigned char aryBuffer[8] = {};
    EXPECT_EQ(4, pStride->Read(1, aryBuffer, 4));
    EXPECT_EQ("BCEF", std::string(reinterpret_cast<char*>(aryBuffer), 4));
    EXPECT_EQ(0, pStride->Read(-1, aryBuffer, 4));
    EXPECT_EQ(2, pStride->Read(6, aryBuffer, 4)); // what is there of a third
}

// Another project's reader of the same format as a judge, where it is installed. It knows no higher indexes.
TEST(NrgDiscForms, IsLaidOutAsCdInfoDoes)
{
    if (system("command -v cd-info >/dev/null") != 0)
        GTEST_SKIP() << "cd-info is not installed";
    TempFolder folder;
    std::string strError;
    auto pImage = Open(folder, MakeTwoTracks(false, false), strError);
    ASSERT_TRUE(pImage) << strError;
    const std::string strCommand =
        "cd " + folder.GetPath() + " && cd-info --no-device-info --no-cddb --nrg-file=a.nrg 2>&1";
    std::string strVerdict;
    FILE* pPipe = popen(strCommand.c_str(), "r");
    char szPart[512];
    while (pPipe != nullptr && fgets(szPart, sizeof szPart, pPipe) != nullptr)
        strVerdict += szPart;
    if (pPipe != nullptr)
        (void)pclose(pPipe);
    EXPECT_NE(std::string::npos, strVerdict.find("1: 00:02:00  000000 audio")) << strVerdict;
    EXPECT_NE(std::string::npos, strVerdict.find("2: 00:06:30  000330 audio")) << strVerdict;
    EXPECT_NE(std::string::npos, strVerdict.find("170: 00:10:30  000630 leadout")) << strVerdict;
}
