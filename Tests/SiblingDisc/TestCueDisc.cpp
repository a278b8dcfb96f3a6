#include "CueDisc.h"
#include "ImageFiles.h"
#include <gtest/gtest.h>

namespace
{
constexpr long long SECTOR = LY_CD_SECTOR_BYTES;

class CueDisc : public testing::Test
{
protected:
    MemoryOpener m_Opener;
    SHEET_ERROR m_Error;
    std::vector<unsigned char> m_aryBuffer = std::vector<unsigned char>(400 * SECTOR);

    std::unique_ptr<DiscImage> Build(const std::string& strSheet)
    {
        CUE_SHEET sheet;
        m_Error = SHEET_ERROR();
        EXPECT_TRUE(ParseCueSheet(strSheet, sheet, m_Error)) << m_Error.m_nLine << ": " << m_Error.m_strText;
        return BuildCueDisc(sheet, "x.cue", m_Opener, m_Error);
    }

    void AddFile(const std::string& strName, int nSectors, int nValue = 0)
    {
        m_Opener.m_Files[strName] = MakeSectors(nSectors, nValue);
    }

    // The byte that fills the sector in each of its bytes; -1 if it is not filled, -2 if it cannot be read.
    int GetFill(DiscImage& image, int nLBA, int nFirst = 0)
    {
        if (!image.ReadSectors(nLBA, 1, m_aryBuffer.data()).IsGood())
            return -2;
        for (int n = nFirst; n < LY_CD_SECTOR_BYTES; n++)
            if (m_aryBuffer[static_cast<size_t>(n)] != m_aryBuffer[static_cast<size_t>(nFirst)])
                return -1;
        return m_aryBuffer[static_cast<size_t>(nFirst)];
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

TEST_F(CueDisc, OneBinSeveralTracks)
{
    AddFile("a.bin", 60, 100);
    auto pImage = Build("CATALOG 1234567890123\nTITLE Album\nFILE a.bin BINARY\n"
                        "TRACK 01 AUDIO\nFLAGS PRE\nISRC USS1Z9900001\nTITLE One\nINDEX 01 00:00:00\n"
                        "TRACK 02 AUDIO\nINDEX 00 00:00:20\nINDEX 01 00:00:25\nINDEX 02 00:00:30\nINDEX 03 00:00:35\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 0, 20);
    ExpectTrack(*pImage, 2, 20, 25, 35);
    EXPECT_EQ(std::vector<int>({30, 35}), pImage->FindTrack(2)->m_aryIndexLBAs);
    EXPECT_EQ(60, pImage->GetLeadOutLBA());
    EXPECT_EQ("1234567890123", pImage->GetMCN());
    EXPECT_EQ("Album", pImage->GetText().m_strTitle);
    EXPECT_EQ("One", pImage->FindTrack(1)->m_Text.m_strTitle);
    EXPECT_EQ("USS1Z9900001", pImage->FindTrack(1)->m_strISRC);
    EXPECT_EQ(TRACK_CONTROL_PRE_EMPHASIS, pImage->FindTrack(1)->m_nControl);
    ASSERT_EQ(1u, pImage->GetSessions().size());
    EXPECT_EQ(1, pImage->GetSessions()[0].m_nFirstTrack);
    EXPECT_EQ(2, pImage->GetSessions()[0].m_nLastTrack);
    EXPECT_EQ(60, pImage->GetSessions()[0].m_nLeadOutLBA);
    EXPECT_EQ(100, GetFill(*pImage, 0));
    EXPECT_EQ(159, GetFill(*pImage, 59));
    EXPECT_TRUE(pImage->GetWarnings().empty());
}

TEST_F(CueDisc, TracksOfOneFileAreReadInOnePiece)
{
    AddFile("a.bin", 60);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                        "TRACK 02 AUDIO\nINDEX 00 00:00:20\nINDEX 01 00:00:25\n");
    ASSERT_TRUE(pImage);
    EXPECT_TRUE(pImage->ReadSectors(10, 27, m_aryBuffer.data()).IsGood());
    EXPECT_EQ(1u, m_Opener.m_aryReads.size());
    EXPECT_EQ(1u, m_Opener.m_aryOpened.size());
}

TEST_F(CueDisc, OneBinForEachTrack)
{
    AddFile("1.bin", 10, 10);
    AddFile("2.bin", 20, 20);
    auto pImage = Build("FILE 1.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                        "FILE 2.bin BINARY\nTRACK 02 AUDIO\nINDEX 00 00:00:00\nINDEX 01 00:00:02\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 0, 10);
    ExpectTrack(*pImage, 2, 10, 12, 18);
    EXPECT_EQ(19, GetFill(*pImage, 9));
    EXPECT_EQ(20, GetFill(*pImage, 10));
}

TEST_F(CueDisc, GapAtTheEndOfTheFileBefore)
{
    AddFile("1.bin", 10, 10);
    AddFile("2.bin", 20, 20);
    auto pImage = Build("FILE 1.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                        "TRACK 02 AUDIO\nINDEX 00 00:00:07\nFILE 2.bin BINARY\nINDEX 01 00:00:00\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 0, 7);
    ExpectTrack(*pImage, 2, 7, 10, 20);
    EXPECT_EQ(17, GetFill(*pImage, 7));
    EXPECT_EQ(20, GetFill(*pImage, 10));
}

TEST_F(CueDisc, MotorolaIsOpenedSwapped)
{
    AddFile("a.bin", 5);
    ASSERT_TRUE(Build("FILE a.bin MOTOROLA\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"));
    ASSERT_EQ(1u, m_Opener.m_aryOpened.size());
    EXPECT_EQ(SECTOR_SOURCE_RAW_SWAPPED, m_Opener.m_aryOpened[0].second);
}

TEST_F(CueDisc, DataIsNeverSwappedOrDecoded)
{
    AddFile("a.bin", 50);
    ASSERT_TRUE(Build("FILE a.bin MOTOROLA\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"
                      "TRACK 02 AUDIO\nINDEX 01 00:00:20\n"));
    ASSERT_EQ(2u, m_Opener.m_aryOpened.size());
    EXPECT_EQ(SECTOR_SOURCE_DATA, m_Opener.m_aryOpened[0].second);
    EXPECT_EQ(SECTOR_SOURCE_RAW_SWAPPED, m_Opener.m_aryOpened[1].second);
    m_Opener.m_aryOpened.clear();
    ASSERT_TRUE(Build("FILE a.bin BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"
                      "TRACK 02 AUDIO\nINDEX 01 00:00:20\n"));
    ASSERT_EQ(1u, m_Opener.m_aryOpened.size());
    EXPECT_EQ(SECTOR_SOURCE_DATA, m_Opener.m_aryOpened[0].second);
}

TEST_F(CueDisc, HiddenAudioAheadOfTheFirstTrack)
{
    AddFile("a.bin", 60, 1);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 00 00:00:00\nINDEX 01 00:00:33\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 33, 27);
    EXPECT_EQ(0, GetFill(*pImage, -1)); // the pregap that every disc has is in no file
    EXPECT_EQ(1, GetFill(*pImage, 0));  // and the hidden audio starts behind it
    EXPECT_EQ(34, GetFill(*pImage, 33));
    EXPECT_EQ(0, pImage->Locate(32).m_nIndex);
    EXPECT_EQ(1, pImage->Locate(33).m_nIndex);
}

TEST_F(CueDisc, ContentAheadOfTheFirstIndexIsHiddenAudioToo)
{
    AddFile("a.bin", 60, 1);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:33\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 33, 27);
    EXPECT_EQ(1, GetFill(*pImage, 0));
}

TEST_F(CueDisc, PregapOfTheFirstTrackIsSilenceBehindAddressZero)
{
    AddFile("a.bin", 60, 1);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nPREGAP 00:00:33\nINDEX 01 00:00:00\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 33, 60);
    EXPECT_EQ(0, GetFill(*pImage, 32));
    EXPECT_EQ(1, GetFill(*pImage, 33));
    EXPECT_EQ(93, pImage->GetLeadOutLBA());
}

TEST_F(CueDisc, PregapAndPostgapMoveWhatFollows)
{
    AddFile("a.bin", 60, 1);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nPOSTGAP 00:00:05\n"
                        "TRACK 02 AUDIO\nPREGAP 00:00:10\nINDEX 00 00:00:20\nINDEX 01 00:00:22\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 0, 25); // 20 and the post-gap of 5
    ExpectTrack(*pImage, 2, 25, 37, 38);  // 10 of silence, 2 of the file
    EXPECT_EQ(20, GetFill(*pImage, 19));
    EXPECT_EQ(0, GetFill(*pImage, 20));
    EXPECT_EQ(0, GetFill(*pImage, 34));
    EXPECT_EQ(21, GetFill(*pImage, 35));
    EXPECT_EQ(75, pImage->GetLeadOutLBA());
}

TEST_F(CueDisc, FirstTrackMayBeAboveOne)
{
    AddFile("a.bin", 60);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 08 AUDIO\nINDEX 01 00:00:00\nTRACK 09 AUDIO\nINDEX 01 00:00:30\n");
    ASSERT_TRUE(pImage);
    EXPECT_EQ(8, pImage->GetFirstTrackNumber());
    EXPECT_EQ(9, pImage->GetLastTrackNumber());
    ExpectTrack(*pImage, 9, 30, 30, 30);
}

TEST_F(CueDisc, NinetyNineTracksInSeventyNineMinutes)
{
    constexpr int nSectors = 79 * 60 * 75;
    m_Opener.m_Sizes["a.wav"] = nSectors * SECTOR;
    std::string strSheet = "FILE a.wav WAVE\n";
    for (int n = 0; n < 99; n++)
        strSheet += "TRACK " + std::to_string(n + 1) + " AUDIO\nINDEX 01 " + FormatSheetTime(n * 3500) + "\n";
    auto pImage = Build(strSheet);
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ASSERT_EQ(99u, pImage->GetTracks().size());
    ExpectTrack(*pImage, 99, 98 * 3500, 98 * 3500, nSectors - 98 * 3500);
    EXPECT_EQ((nSectors - 1) & 0xFF, GetFill(*pImage, nSectors - 1));
    EXPECT_EQ(-2, GetFill(*pImage, nSectors));
}

TEST_F(CueDisc, LongestDiscEndsAtTheLastTime)
{
    m_Opener.m_Sizes["a.wav"] = 449849 * SECTOR; // 99:59:74 less the two seconds ahead of address 0
    EXPECT_TRUE(Build("FILE a.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"));
    m_Opener.m_Sizes["a.wav"]++;
    EXPECT_FALSE(Build("FILE a.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"));
    EXPECT_EQ("the disc would be longer than 99:59:74, which no disc can be; split the sheet into several discs",
              m_Error.m_strText);
    m_Opener.m_Sizes["a.wav"] = 0x7FFFFFFFFFFFFFFF;
    EXPECT_FALSE(Build("FILE a.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"));
}

TEST_F(CueDisc, MixedModeInOneBinKeepsEachSectorSize)
{
    m_Opener.m_Files["a.bin"] = MakeSectors(10, 1, 2048) + MakeSectors(5, 50) + MakeSectors(4, 90, 2336);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n"
                        "TRACK 02 AUDIO\nINDEX 01 00:00:10\nTRACK 03 MODE2/2336\nINDEX 01 00:00:15\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 0, 10);
    ExpectTrack(*pImage, 2, 10, 10, 5);
    ExpectTrack(*pImage, 3, 15, 15, 4);
    ASSERT_TRUE(pImage->ReadSectors(9, 1, m_aryBuffer.data()).IsGood());
    EXPECT_EQ(10, m_aryBuffer[16]);
    EXPECT_EQ(10, m_aryBuffer[16 + 2047]);
    EXPECT_EQ(50, GetFill(*pImage, 10));
    EXPECT_EQ(93, GetFill(*pImage, 18, 16));
    EXPECT_EQ(DISC_SESSION_CDROM_XA, pImage->GetSessions()[0].m_nType);
    // One command over all three kinds.
    std::vector<DISC_TRACK_MODE> aryForms(19);
    EXPECT_EQ(19, pImage->ReadSectors(0, 19, m_aryBuffer.data(), aryForms.data()).m_nSectors);
    EXPECT_EQ(DISC_MODE1_2048, aryForms[9]);
    EXPECT_EQ(DISC_AUDIO, aryForms[10]);
    EXPECT_EQ(DISC_MODE2_2336, aryForms[15]);
}

const std::string ENHANCED_CD = "REM SESSION 01\nFILE a.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                "TRACK 02 AUDIO\nINDEX 01 00:01:00\nREM SESSION 02\nFILE d.bin BINARY\n"
                                "TRACK 03 MODE2/2352\n";

// Lead-out 6750, lead-in 4500 and pregap 150 lie between the end of the audio and the start of the data.
TEST_F(CueDisc, EnhancedCDStartsItsDataBehindTheSessionGap)
{
    AddFile("a.wav", 200, 1);
    AddFile("d.bin", 20, 1);
    auto pImage = Build(ENHANCED_CD + "INDEX 01 00:00:00\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 2, 75, 75, 125);
    ExpectTrack(*pImage, 3, 200 + 11250, 200 + 11400, 20);
    EXPECT_EQ(2, pImage->FindTrack(3)->m_nSession);
    ASSERT_EQ(2u, pImage->GetSessions().size());
    EXPECT_EQ(200, pImage->GetSessions()[0].m_nLeadOutLBA);
    EXPECT_EQ(1, pImage->GetSessions()[0].m_nFirstTrack);
    EXPECT_EQ(2, pImage->GetSessions()[0].m_nLastTrack);
    EXPECT_EQ(DISC_SESSION_CDDA_OR_CDROM, pImage->GetSessions()[0].m_nType);
    EXPECT_EQ(11620, pImage->GetSessions()[1].m_nLeadOutLBA);
    EXPECT_EQ(3, pImage->GetSessions()[1].m_nFirstTrack);
    EXPECT_EQ(DISC_SESSION_CDROM_XA, pImage->GetSessions()[1].m_nType);
    EXPECT_EQ(11620, pImage->GetLeadOutLBA());
    EXPECT_EQ(READ_BETWEEN, pImage->ReadSectors(200, 1, m_aryBuffer.data()).m_nStatus);
    EXPECT_EQ(READ_BETWEEN, pImage->ReadSectors(11449, 1, m_aryBuffer.data()).m_nStatus);
    EXPECT_EQ(0, GetFill(*pImage, 11450, 16)); // the pregap: empty data sectors
    EXPECT_EQ(2, m_aryBuffer[15]);
    EXPECT_EQ(1, GetFill(*pImage, 11600));
}

TEST_F(CueDisc, PregapOfTheDataSessionIsNeverCountedTwice)
{
    AddFile("a.wav", 200, 1);
    AddFile("d.bin", 400, 1);
    struct GAP_CASE
    {
        const char* m_pLines;
        int m_nStart; // of the data track
    };
    const GAP_CASE aryCases[] = {
        {"PREGAP 00:02:00\nINDEX 01 00:00:00\n", 200 + 11400},
        {"PREGAP 00:01:00\nINDEX 01 00:00:00\n", 200 + 11400},
        {"PREGAP 00:04:00\nINDEX 01 00:00:00\n", 200 + 11250 + 300},
        {"INDEX 00 00:00:00\nINDEX 01 00:02:00\n", 200 + 11400},
        {"INDEX 00 00:00:00\nINDEX 01 00:01:00\n", 200 + 11400},
        {"INDEX 00 00:00:00\nINDEX 01 00:03:00\n", 200 + 11250 + 225},
        {"INDEX 01 00:02:00\n", 200 + 11400}, // content ahead of the first index
        {"PREGAP 00:01:00\nINDEX 00 00:00:00\nINDEX 01 00:01:00\n", 200 + 11400},
    };
    for (const GAP_CASE& row : aryCases)
    {
        auto pImage = Build(ENHANCED_CD + row.m_pLines);
        ASSERT_TRUE(pImage);
        EXPECT_EQ(row.m_nStart, pImage->FindTrack(3)->m_nStartLBA) << row.m_pLines;
        EXPECT_EQ(200 + 11250, pImage->FindTrack(3)->m_nPregapLBA) << row.m_pLines;
    }
}

TEST_F(CueDisc, SessionsOfOneBinHaveTheirGapToo)
{
    AddFile("a.bin", 400, 1);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nREM SESSION 02\n"
                        "TRACK 02 MODE1/2352\nINDEX 00 00:01:25\nINDEX 01 00:03:25\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 0, 100);
    ExpectTrack(*pImage, 2, 100 + 11250, 100 + 11400, 150);
    EXPECT_EQ(101, GetFill(*pImage, 11350));
}

TEST_F(CueDisc, ThirdSessionFollowsAShorterLeadOut)
{
    AddFile("a.bin", 300, 1);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nREM SESSION 02\n"
                        "TRACK 02 MODE1/2352\nINDEX 01 00:01:25\nREM SESSION 03\n"
                        "TRACK 03 MODE1/2352\nINDEX 01 00:02:50\n");
    ASSERT_TRUE(pImage);
    EXPECT_EQ(100 + 11400, pImage->FindTrack(2)->m_nStartLBA);
    EXPECT_EQ(100 + 11400 + 100 + 2250 + 4500 + 150, pImage->FindTrack(3)->m_nStartLBA);
    EXPECT_EQ(3u, pImage->GetSessions().size());
}

TEST_F(CueDisc, RemarksMaySetTheLengthsOfTheSessionGap)
{
    AddFile("a.wav", 200, 1);
    AddFile("d.bin", 20, 1);
    auto pImage = Build("FILE a.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nREM LEAD-OUT 00:10:00\n"
                        "REM SESSION 02\nREM LEAD-IN 00:20:00\nREM PREGAP 00:04:00\nFILE d.bin BINARY\n"
                        "TRACK 02 MODE1/2352\nINDEX 01 00:00:00\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 2, 200 + 750 + 1500, 200 + 750 + 1500 + 300, 20);
}

TEST_F(CueDisc, AudioWithinASessionNeedsNoGap)
{
    AddFile("a.bin", 300, 1);
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                        "TRACK 02 MODE1/2352\nINDEX 00 00:01:25\nINDEX 01 00:03:25\n");
    ASSERT_TRUE(pImage);
    EXPECT_EQ(1u, pImage->GetSessions().size());
    ExpectTrack(*pImage, 2, 100, 250, 50);
}

TEST_F(CueDisc, LastPartOfASectorIsFilledWithSilence)
{
    m_Opener.m_Files["1.wav"] = std::string(3 * SECTOR + 1000, 'a');
    m_Opener.m_Files["2.wav"] = std::string(2 * SECTOR, 'b');
    auto pImage = Build("FILE 1.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                        "FILE 2.wav WAVE\nTRACK 02 AUDIO\nINDEX 01 00:00:00\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 0, 4);
    ExpectTrack(*pImage, 2, 4, 4, 2);
    ASSERT_TRUE(pImage->ReadSectors(3, 2, m_aryBuffer.data()).IsGood());
    std::string strGot(reinterpret_cast<char*>(m_aryBuffer.data()), 2 * SECTOR);
    EXPECT_TRUE(Same(std::string(1000, 'a') + std::string(SECTOR - 1000, '\0') + std::string(SECTOR, 'b'), strGot));
}

TEST_F(CueDisc, LastPartOfADataSectorIsFilledWithZeros)
{
    m_Opener.m_Files["a.iso"] = std::string(2048 + 1000, 'a');
    auto pImage = Build("FILE a.iso BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n");
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 1, -150, 0, 2);
    ASSERT_TRUE(pImage->ReadSectors(1, 1, m_aryBuffer.data()).IsGood());
    EXPECT_EQ('a', m_aryBuffer[16 + 999]);
    EXPECT_EQ(0, m_aryBuffer[16 + 1000]);
}

TEST_F(CueDisc, CutBinKeepsItsReadablePart)
{
    m_Opener.m_Files["a.bin"] = std::string(150 * SECTOR + 100, 'a'); // cut in track 2; tracks 3 and 4 are lost
    auto pImage = Build("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:01:25\n"
                        "TRACK 03 AUDIO\nINDEX 01 00:02:50\nTRACK 04 AUDIO\nINDEX 01 00:04:00\n");
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 2, 100, 100, 100);
    ExpectTrack(*pImage, 3, 200, 200, 100);
    ExpectTrack(*pImage, 4, 300, 300, 300); // nobody knows how long it was: the least that a track may have
    READ_RESULT result = pImage->ReadSectors(140, 27, m_aryBuffer.data());
    EXPECT_EQ(READ_UNREADABLE, result.m_nStatus);
    EXPECT_EQ(10, result.m_nSectors);
    EXPECT_EQ('a', GetFill(*pImage, 149));
    EXPECT_EQ(-2, GetFill(*pImage, 150)); // of which 100 bytes are there
    EXPECT_EQ(-2, GetFill(*pImage, 599));
    EXPECT_EQ(READ_OUTSIDE, pImage->ReadSectors(600, 1, m_aryBuffer.data()).m_nStatus);
    ASSERT_EQ(1u, pImage->GetWarnings().size());
    EXPECT_EQ("x.cue, line 9: the file ends before this index; what is missing cannot be read, so copy the file again "
              "from where it came from.",
              pImage->GetWarnings()[0]);
}

TEST_F(CueDisc, FaultsNameTheirLineAndAWayOut)
{
    struct FAULT_CASE
    {
        const char* m_pSheet;
        int m_nLine;
        const char* m_pText;
    };
    const FAULT_CASE aryCases[] = {
        {"REM\nFILE missing.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n", 2,
         "the file \"missing.bin\" was not found; put it there"},
        {"FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:50\nTRACK 02 AUDIO\nINDEX 01 00:00:40\n", 5,
         "the time 00:00:40 lies before 00:00:50, where the index ahead of it is; correct the INDEX line"},
        {"FILE a.bin WAVE\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n", 2,
         "track 1 is a data track, but its file is an audio file; declare the file as BINARY"},
        {"FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:00:00\n", 2,
         "track 1 has no sectors, or an index behind its end; correct its times"}};
    AddFile("a.bin", 100);
    for (const FAULT_CASE& row : aryCases)
    {
        EXPECT_FALSE(Build(row.m_pSheet));
        EXPECT_EQ(row.m_nLine, m_Error.m_nLine) << row.m_pText;
        EXPECT_EQ(row.m_pText, m_Error.m_strText);
    }
}

TEST_F(CueDisc, FileWithoutAnIndexIsLeftOut)
{
    AddFile("a.bin", 100);
    auto pImage = Build("FILE unused.bin BINARY\nFILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ASSERT_EQ(1u, pImage->GetWarnings().size());
    EXPECT_EQ("x.cue, line 1: no INDEX lies in this file; it was left out.", pImage->GetWarnings()[0]);
}

TEST_F(CueDisc, CDTextFileGivesItsPacks)
{
    std::string strPacks;
    for (int n = 0; n < 3; n++)
        strPacks += std::string("\x80\0\0\0", 4) + "Title of 12." + "cc";
    std::string strHeader{0, 3 * 18 + 2, 0, 0};
    AddFile("a.bin", 100);
    for (const std::string& strContent : {strPacks, strPacks + '\0', strHeader + strPacks})
    {
        m_Opener.m_Files["a.cdt"] = strContent;
        auto pImage = Build("CDTEXTFILE \"a.cdt\"\nFILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
        ASSERT_TRUE(pImage);
        EXPECT_EQ(std::vector<unsigned char>(strPacks.begin(), strPacks.end()), pImage->GetCDTextPacks());
        EXPECT_TRUE(pImage->GetWarnings().empty());
    }
}

TEST_F(CueDisc, BadCDTextFileIsLeftOut)
{
    AddFile("a.bin", 100);
    m_Opener.m_Files["empty.cdt"] = "";
    m_Opener.m_Files["odd.cdt"] = std::string(19, '\x80');
    m_Opener.m_Files["type.cdt"] = std::string(18, 'x');
    m_Opener.m_Files["header.cdt"] = std::string{0, 3, 0, 0} + std::string(18, '\x80');
    for (const char* pName : {"missing.cdt", "empty.cdt", "odd.cdt", "type.cdt", "header.cdt"})
    {
        auto pImage =
            Build(std::string("CDTEXTFILE ") + pName + "\nFILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
        ASSERT_TRUE(pImage);
        EXPECT_TRUE(pImage->GetCDTextPacks().empty()) << pName;
        EXPECT_EQ(1u, pImage->GetWarnings().size()) << pName;
    }
}
} // namespace
