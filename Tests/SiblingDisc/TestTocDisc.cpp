#include "ImageFiles.h"
#include "TocDisc.h"
#include <gtest/gtest.h>

namespace
{
constexpr long long SECTOR = LY_CD_SECTOR_BYTES;

class TocDisc : public testing::Test
{
protected:
    MemoryOpener m_Opener;
    SHEET_ERROR m_Error;
    std::string m_strBuffer = std::string(400 * SECTOR, '?');

    std::unique_ptr<DiscImage> Build(const std::string& strToc)
    {
        TOC_SHEET sheet;
        m_Error = SHEET_ERROR();
        EXPECT_TRUE(ParseTocFile(strToc, sheet, m_Error)) << m_Error.m_nLine << ": " << m_Error.m_strText;
        return BuildTocDisc(sheet, "x.toc", m_Opener, m_Error);
    }

    std::string Read(DiscImage& image, int nLBA, int nCount)
    {
        READ_RESULT result = image.ReadSectors(nLBA, nCount, reinterpret_cast<unsigned char*>(m_strBuffer.data()));
        return m_strBuffer.substr(0, static_cast<size_t>(result.m_nSectors) * SECTOR);
    }

    static void ExpectTrack(const DiscImage& image, int nNumber, int nPregap, int nStart, int nSectors)
    {
        const DISC_TRACK* pTrack = image.FindTrack(nNumber);
        ASSERT_NE(nullptr, pTrack) << nNumber;
        EXPECT_EQ(nPregap, pTrack->m_nPregapLBA) << nNumber;
        EXPECT_EQ(nStart, pTrack->m_nStartLBA) << nNumber;
        EXPECT_EQ(nSectors, pTrack->m_nSectors) << nNumber;
    }
};

TEST_F(TocDisc, TracksFromPortionsOfOneFile)
{
    m_Opener.m_Files["data.bin"] = MakeSectors(100, 1);
    auto pImage = Build("CD_DA\nCATALOG \"1234567890123\"\n"
                        "TRACK AUDIO\nISRC \"USS1Z9900001\"\nFILE \"data.bin\" 0 00:00:40\n"
                        "TRACK AUDIO\nFILE \"data.bin\" 00:00:40 00:00:60\nSTART 00:00:10\nINDEX 00:00:05\n");
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 1, -150, 0, 40);
    ExpectTrack(*pImage, 2, 40, 50, 50);
    EXPECT_EQ(std::vector<int>({55}), pImage->FindTrack(2)->m_aryIndexLBAs);
    EXPECT_EQ("1234567890123", pImage->GetMCN());
    EXPECT_EQ("USS1Z9900001", pImage->FindTrack(1)->m_strISRC);
    EXPECT_EQ(100, pImage->GetLeadOutLBA());
    EXPECT_TRUE(Same(MakeSectors(27, 31), Read(*pImage, 30, 27)));
    EXPECT_EQ(1u, m_Opener.m_aryReads.size()); // the portions join: one read
    ASSERT_EQ(1u, m_Opener.m_aryOpened.size());
    EXPECT_EQ(SECTOR_SOURCE_RAW_SWAPPED, m_Opener.m_aryOpened[0].second); // raw samples are big-endian
}

TEST_F(TocDisc, KindsOfAudioFile)
{
    for (const char* pName : {"a.cdr", "a.bin", "a.wav", "a.FLAC", "a"})
        m_Opener.m_Files[pName] = MakeSectors(10, 1);
    ASSERT_TRUE(Build("TRACK AUDIO\nFILE \"a.cdr\" 0\nFILE \"a.bin\" SWAP 0\nFILE \"a.wav\" 0\nFILE \"a.wav\" SWAP 0\n"
                      "FILE \"a.FLAC\" 0\nFILE \"a\" 0\n"));
    std::vector<SECTOR_SOURCE_KIND> aryKinds;
    for (const auto& [strName, nKind] : m_Opener.m_aryOpened)
        aryKinds.push_back(nKind);
    EXPECT_EQ(
        std::vector<SECTOR_SOURCE_KIND>({SECTOR_SOURCE_RAW_SWAPPED, SECTOR_SOURCE_RAW, SECTOR_SOURCE_AUDIO,
                                         SECTOR_SOURCE_AUDIO_SWAPPED, SECTOR_SOURCE_AUDIO, SECTOR_SOURCE_RAW_SWAPPED}),
        aryKinds);
}

TEST_F(TocDisc, PiecesJoinAtAnySample)
{
    m_Opener.m_Files["a.wav"] = std::string(1000, 'a');
    m_Opener.m_Files["b.wav"] = std::string(3000, 'b');
    auto pImage = Build("TRACK AUDIO\nFILE \"a.wav\" 10 200\nSILENCE 100\nFILE \"b.wav\" 0\n");
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 1, -150, 0, 2); // 800 + 400 + 3000 bytes, filled up
    std::string strWanted = std::string(800, 'a') + std::string(400, '\0') + std::string(3000, 'b');
    strWanted.resize(2 * SECTOR, '\0');
    EXPECT_TRUE(Same(strWanted, Read(*pImage, 0, 2)));
}

TEST_F(TocDisc, PregapWithinASectorIsRoundedUp)
{
    auto pImage = Build("TRACK AUDIO\nSILENCE 00:00:10\nTRACK AUDIO\nSILENCE 600\nSTART\nSILENCE 00:00:10\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 2, 10, 12, 10); // 600 samples are two sectors; 600 + 5880 are twelve
}

TEST_F(TocDisc, HiddenAudioAheadOfTheFirstTrack)
{
    m_Opener.m_Files["a.bin"] = MakeSectors(60, 1);
    auto pImage = Build("TRACK AUDIO\nFILE \"a.bin\" 0\nSTART 00:00:33\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 33, 27);
    EXPECT_TRUE(Same(MakeSectors(1, 1), Read(*pImage, 0, 1)));
}

TEST_F(TocDisc, MixedModeWithPostGapAndFlags)
{
    m_Opener.m_Files["data_1"] = MakeSectors(20, 1, 2048);
    m_Opener.m_Files["2.wav"] = MakeSectors(30, 50);
    auto pImage = Build("CD_ROM\nTRACK MODE1\nCOPY\nDATAFILE \"data_1\"\nZERO 00:00:10 // post-gap\n"
                        "TRACK AUDIO\nPRE_EMPHASIS\nSILENCE 00:02:00\nSTART\nFILE \"2.wav\" 0\n");
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 1, -150, 0, 30);
    ExpectTrack(*pImage, 2, 30, 180, 30);
    EXPECT_EQ(TRACK_CONTROL_DATA | TRACK_CONTROL_COPY_PERMITTED, pImage->FindTrack(1)->m_nControl);
    EXPECT_EQ(TRACK_CONTROL_PRE_EMPHASIS, pImage->FindTrack(2)->m_nControl);
    std::string strSectors = Read(*pImage, 19, 2);
    EXPECT_EQ(std::string(2048, '\x14'), strSectors.substr(16, 2048));
    EXPECT_EQ(std::string(2048, '\0'), strSectors.substr(SECTOR + 16, 2048)); // the post-gap: an empty sector ...
    EXPECT_EQ(1, strSectors[SECTOR + 15]);                                    // ... of mode 1
    EXPECT_EQ(SECTOR_SOURCE_DATA, m_Opener.m_aryOpened[0].second);
    EXPECT_EQ(DISC_SESSION_CDDA_OR_CDROM, pImage->GetSessions()[0].m_nType);
}

TEST_F(TocDisc, DataLengthsAreBytesOrSectors)
{
    m_Opener.m_Files["d"] = MakeSectors(50, 0, 2336);
    auto pImage =
        Build("CD_ROM_XA\nTRACK MODE2_FORM_MIX\nDATAFILE \"d\" #2336 4672\nDATAFILE \"d\" 00:00:05\nZERO 2337\n");
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 1, -150, 0, 2 + 5 + 2);
    EXPECT_EQ('\x02', Read(*pImage, 1, 1)[16]);
    EXPECT_EQ('\x04', Read(*pImage, 6, 1)[16]);
    EXPECT_EQ(DISC_SESSION_CDROM_XA, pImage->GetSessions()[0].m_nType);
}

TEST_F(TocDisc, FirstTrackMayBeAboveOne)
{
    auto pImage = Build("CD_DA\nFIRST_TRACK_NO 5\nTRACK AUDIO\nSILENCE 0:4:0\nTRACK AUDIO\nSILENCE 0:4:0\n");
    ASSERT_TRUE(pImage);
    EXPECT_EQ(5, pImage->GetFirstTrackNumber());
    ExpectTrack(*pImage, 6, 300, 300, 300);
}

TEST_F(TocDisc, CutFileKeepsItsReadablePart)
{
    m_Opener.m_Files["a.bin"] = MakeSectors(30, 1);
    auto pImage = Build("TRACK AUDIO\nFILE \"a.bin\" 0 00:00:50\nTRACK AUDIO\nFILE \"a.bin\" 00:00:50 00:00:50\n");
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 2, 50, 50, 50);
    EXPECT_TRUE(Same(MakeSectors(5, 26), Read(*pImage, 25, 27)));
    unsigned char aryBuffer[LY_CD_SECTOR_BYTES];
    EXPECT_EQ(READ_UNREADABLE, pImage->ReadSectors(30, 1, aryBuffer).m_nStatus);
    EXPECT_EQ(READ_UNREADABLE, pImage->ReadSectors(99, 1, aryBuffer).m_nStatus);
    EXPECT_EQ(2u, pImage->GetWarnings().size());
}

TEST_F(TocDisc, FaultsNameTheirLineAndAWayOut)
{
    m_Opener.m_Files["a.bin"] = MakeSectors(30, 1);
    const std::tuple<const char*, int, const char*> aryCases[] = {
        {"CD_DA\nTRACK AUDIO\nFILE \"missing.bin\" 0\n", 3, "the file \"missing.bin\" was not found; put it there"},
        {"TRACK AUDIO\nFILE \"a.bin\" 00:01:00\n", 2,
         "the piece starts behind the end of \"a.bin\"; correct its start"},
        {"TRACK AUDIO\nSILENCE 99:59:74\nSILENCE 0:2:0\n", 1, "the disc would be longer than 99:59:74"},
        {"TRACK AUDIO\nSILENCE 999999999999\nSILENCE 999999999999\n", 1, "the disc would be longer than 99:59:74"},
        {"TRACK AUDIO\nSILENCE 0\n", 1, "track 1 has no sectors"},
        {"TRACK AUDIO\nSILENCE 0:1:0\nSTART 0:1:0\n", 1, "track 1 has no sectors"},
        {"TRACK AUDIO\nSILENCE 0:1:0\nINDEX 0:1:0\n", 1, "track 1 has no sectors, or an index behind its end"}};
    for (const auto& [pToc, nLine, pText] : aryCases)
    {
        EXPECT_FALSE(Build(pToc)) << pToc;
        EXPECT_EQ(nLine, m_Error.m_nLine) << pToc;
        EXPECT_EQ(0u, m_Error.m_strText.find(pText)) << m_Error.m_strText;
    }
}
} // namespace
