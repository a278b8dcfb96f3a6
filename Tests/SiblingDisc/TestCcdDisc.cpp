#include "CcdDisc.h"
#include "CRC16.h"
#include "ImageFiles.h"
#include <gtest/gtest.h>

namespace
{
constexpr long long SECTOR = LY_CD_SECTOR_BYTES;

struct POINT
{
    int m_nSession;
    int m_nPoint;
    int m_nControl;
    int m_nPLBA;
    int m_nPSec = 0;
};

std::string MakeCcd(const std::vector<POINT>& aryPoints, const std::string& strDisc = "",
                    const std::string& strRest = "")
{
    std::string str = "[CloneCD]\r\nVersion=3\r\n[Disc]\r\nTocEntries=" + std::to_string(aryPoints.size()) + "\r\n" +
                      strDisc + "[Session 1]\r\nPreGapMode=1\r\n";
    for (size_t n = 0; n < aryPoints.size(); ++n)
    {
        char szPoint[16];
        snprintf(szPoint, sizeof szPoint, "0x%02x", static_cast<unsigned int>(aryPoints[n].m_nPoint));
        str += "[Entry " + std::to_string(n) + "]\r\nSession=" + std::to_string(aryPoints[n].m_nSession) +
               "\r\nPoint=" + szPoint + "\r\nADR=0x01\r\nControl=0x0" + std::to_string(aryPoints[n].m_nControl) +
               "\r\nTrackNo=0\r\nPMin=0\r\nPSec=" + std::to_string(aryPoints[n].m_nPSec) +
               "\r\nPLBA=" + std::to_string(aryPoints[n].m_nPLBA) + "\r\n";
    }
    return str + strRest;
}

// The usual three points of a lead-in, and the tracks of one session.
std::vector<POINT> OneSession(const std::vector<int>& aryStarts, int nLeadOut, int nControl = 0)
{
    std::vector<POINT> aryPoints = {{1, 0xA0, nControl, 0}, {1, 0xA1, nControl, 0}, {1, 0xA2, nControl, nLeadOut}};
    for (size_t n = 0; n < aryStarts.size(); ++n)
        aryPoints.push_back({1, static_cast<int>(n) + 1, nControl, aryStarts[n]});
    return aryPoints;
}

// One sector's sub-channels, of which only Q is filled.
std::string MakeSub(const std::vector<unsigned char>& aryQ, bool bGoodCRC = true)
{
    std::string str(96, '\0');
    unsigned char q[12] = {};
    std::copy(aryQ.begin(), aryQ.end(), q);
    const unsigned int nCRC = GetCRC16(q, 10) ^ (bGoodCRC ? 0U : 1U);
    q[10] = static_cast<unsigned char>(nCRC >> 8);
    q[11] = static_cast<unsigned char>(nCRC & 255);
    return str.replace(12, 12, reinterpret_cast<const char*>(q), 12);
}

class CcdDisc : public testing::Test
{
protected:
    MemoryOpener m_Opener;
    SHEET_ERROR m_Error;
    std::string m_strBuffer = std::string(400 * SECTOR, '?');

    std::unique_ptr<DiscImage> Build(const std::string& strCcd)
    {
        CCD_SHEET sheet;
        m_Error = SHEET_ERROR();
        EXPECT_TRUE(LooksLikeCcdFile(strCcd));
        if (!ParseCcdFile(strCcd, sheet, m_Error))
            return nullptr;
        return BuildCcdDisc(sheet, "folder/x.ccd", m_Opener, m_Error);
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
} // namespace

TEST_F(CcdDisc, TracksStandInTheImageByTheirAddress)
{
    m_Opener.m_Files["x.img"] = MakeSectors(100, 1);
    auto pImage = Build(MakeCcd(OneSession({0, 40}, 100)));
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 1, -150, 0, 40);
    ExpectTrack(*pImage, 2, 40, 40, 60);
    EXPECT_EQ(100, pImage->GetLeadOutLBA());
    EXPECT_TRUE(Same(MakeSectors(27, 31), Read(*pImage, 30, 27)));
    EXPECT_TRUE(pImage->GetWarnings().empty());
}

TEST_F(CcdDisc, TrackSectionsTellIndexesModesAndISRCs)
{
    m_Opener.m_Files["x.img"] = MakeSectors(100, 1);
    auto pImage = Build(MakeCcd(OneSession({0, 40}, 100), "CATALOG=1234567890123\r\n",
                                "[TRACK 1]\nMODE=0\nINDEX 1=0\nISRC=GBAYE6800123\n"
                                "[TRACK 2]\nMODE=0\nINDEX 0=33\nINDEX 1=40\nINDEX 2=50\nINDEX 3=60\n"));
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 1, -150, 0, 33);
    ExpectTrack(*pImage, 2, 33, 40, 60);
    EXPECT_EQ(std::vector<int>({50, 60}), pImage->FindTrack(2)->m_aryIndexLBAs);
    EXPECT_EQ("GBAYE6800123", pImage->FindTrack(1)->m_strISRC);
    EXPECT_EQ("1234567890123", pImage->GetMCN());
}

TEST_F(CcdDisc, AudioAheadOfTheFirstTrackIsThere)
{
    m_Opener.m_Files["x.img"] = MakeSectors(60, 1);
    auto pImage = Build(MakeCcd(OneSession({20}, 60)));
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ExpectTrack(*pImage, 1, -150, 20, 40);
    EXPECT_TRUE(Same(MakeSectors(25, 1), Read(*pImage, 0, 25)));
}

TEST_F(CcdDisc, DataTracksHaveTheModeOfTheirSectors)
{
    std::string strImage = MakeSectors(100, 1);
    strImage[15] = 1;
    strImage[static_cast<size_t>(40 * SECTOR + 15)] = 2;
    m_Opener.m_Files["x.img"] = strImage;
    auto pImage = Build(MakeCcd(OneSession({0, 40}, 100, 4)));
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    EXPECT_EQ(DISC_MODE1_2352, pImage->FindTrack(1)->m_nMode);
    EXPECT_EQ(DISC_MODE2_2352, pImage->FindTrack(2)->m_nMode);
    EXPECT_TRUE(pImage->FindTrack(1)->IsData());
}

TEST_F(CcdDisc, ScrambledDataIsTold)
{
    m_Opener.m_Files["x.img"] = MakeSectors(100, 1);
    auto pImage = Build(MakeCcd(OneSession({0}, 100, 4), "DataTracksScrambled=1\n"));
    ASSERT_TRUE(pImage);
    ASSERT_EQ(1u, pImage->GetWarnings().size());
    EXPECT_NE(std::string::npos, pImage->GetWarnings()[0].find("is scrambled"));
}

// Session 1 of 100 sectors, 11,400 sectors between, session 2 of 50 sectors.
class CcdSessions : public CcdDisc, public testing::WithParamInterface<int>
{
};

TEST_P(CcdSessions, WhatStandsBetweenSessionsFollowsFromTheLengthOfTheImage)
{
    const int nStart2 = 100 + 11400;
    const std::string strGap = MakeSectors(GetParam(), 0x70);
    m_Opener.m_Files["x.img"] = MakeSectors(100, 1) + strGap + MakeSectors(50, 0x40);
    std::vector<POINT> aryPoints = OneSession({0}, 100);
    for (const POINT& point : std::vector<POINT>{{2, 0xA0, 0, 0, 0x20}, {2, 0xA2, 0, nStart2 + 50}, {2, 2, 0, nStart2}})
        aryPoints.push_back(point);
    auto pImage = Build(MakeCcd(aryPoints));
    ASSERT_TRUE(pImage) << m_Error.m_strText;
    ASSERT_EQ(2u, pImage->GetSessions().size());
    EXPECT_EQ(100, pImage->GetSessions()[0].m_nLeadOutLBA);
    EXPECT_EQ(DISC_SESSION_CDROM_XA, pImage->GetSessions()[1].m_nType);
    ExpectTrack(*pImage, 1, -150, 0, 100);
    ExpectTrack(*pImage, 2, nStart2 - 150, nStart2, 50);
    EXPECT_TRUE(Same(MakeSectors(50, 0x40), Read(*pImage, nStart2, 50)));
    EXPECT_TRUE(Same(MakeSectors(100, 1), Read(*pImage, 0, 100)));
    EXPECT_EQ("", Read(*pImage, 5000, 1));
    EXPECT_TRUE(pImage->GetWarnings().empty());
}
INSTANTIATE_TEST_SUITE_P(Stored, CcdSessions, testing::Values(0, 150, 11400));

TEST_F(CcdDisc, PacksOfCDTextGetTheirCheckSum)
{
    m_Opener.m_Files["x.img"] = MakeSectors(100, 1);
    auto pImage = Build(MakeCcd(OneSession({0}, 100), "CDTextLength=18\n",
                                "[CDText]\nEntries=2\nEntry 0=80 00 00 00 53 6f 6e 67 00 41 00 00 00 00 00 00\n"
                                "Entry 1=nonsense\n"));
    ASSERT_TRUE(pImage);
    const std::vector<unsigned char>& packs = pImage->GetCDTextPacks();
    ASSERT_EQ(18u, packs.size());
    EXPECT_EQ('S', packs[4]);
    EXPECT_EQ(GetCRC16(packs.data(), 16), packs[16] << 8 | packs[17]);
    ASSERT_EQ(1u, pImage->GetWarnings().size());
    EXPECT_NE(std::string::npos, pImage->GetWarnings()[0].find("no pack of CD-Text"));
}

TEST_F(CcdDisc, SubChannelsTellWhatTheSheetDoesNot)
{
    m_Opener.m_Files["x.img"] = MakeSectors(100, 1);
    std::string strSub;
    for (int nSector = 0; nSector < 100; ++nSector)
    {
        const bool bSecond = nSector >= 33;
        const unsigned char nIndex = nSector >= 33 && nSector < 40 ? 0 : 1;
        if (nSector == 5)
            strSub += MakeSub({0x02, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x30});
        else if (nSector == 50)
            // "GBAYE" in six bits each (ASCII less 30h), then 6800123 from bit 32 on
            strSub += MakeSub({0x03, 0x5D, 0x24, 0x69, 0x54, 0x68, 0x00, 0x12, 0x30});
        else if (nSector == 34)
            strSub += MakeSub({0x01, 0x09, 0x00}, false); // damaged: passed over
        else
            strSub += MakeSub({0x01, static_cast<unsigned char>(bSecond ? 2 : 1), nIndex});
    }
    m_Opener.m_Files["x.sub"] = strSub;
    auto pImage = Build(MakeCcd(OneSession({0, 40}, 100)));
    ASSERT_TRUE(pImage);
    ExpectTrack(*pImage, 2, 33, 40, 60);
    EXPECT_EQ("1234567890123", pImage->GetMCN());
    EXPECT_EQ("", pImage->FindTrack(1)->m_strISRC);
    EXPECT_EQ("GBAYE6800123", pImage->FindTrack(2)->m_strISRC);
}

TEST_F(CcdDisc, AnImageThatIsCutIsReadAsFarAsItGoes)
{
    m_Opener.m_Files["x.img"] = MakeSectors(70, 1);
    auto pImage = Build(MakeCcd(OneSession({0, 40}, 100)));
    ASSERT_TRUE(pImage);
    ASSERT_EQ(1u, pImage->GetWarnings().size());
    EXPECT_NE(std::string::npos, pImage->GetWarnings()[0].find("ends before the disc does"));
    EXPECT_TRUE(Same(MakeSectors(10, 61), Read(*pImage, 60, 20)));
}

TEST_F(CcdDisc, AMissingImageIsNamed)
{
    EXPECT_FALSE(Build(MakeCcd(OneSession({0}, 100))));
    EXPECT_NE(std::string::npos, m_Error.m_strText.find("x.img"));
}

struct BAD_CCD
{
    const char* m_pName;
    std::string m_strCcd;
    const char* m_pSentence;
};

class BadCcd : public CcdDisc, public testing::WithParamInterface<BAD_CCD>
{
};

TEST_P(BadCcd, IsRefusedWithASentence)
{
    m_Opener.m_Files["x.img"] = MakeSectors(100, 1);
    EXPECT_FALSE(Build(GetParam().m_strCcd));
    EXPECT_NE(std::string::npos, m_Error.m_strText.find(GetParam().m_pSentence)) << m_Error.m_strText;
}
INSTANTIATE_TEST_SUITE_P(
    Faults, BadCcd,
    testing::Values(BAD_CCD{"NoEntry", "[CloneCD]\nVersion=3\n", "no entry for a track"},
                    BAD_CCD{"NoLeadOut", MakeCcd({{1, 1, 0, 0}}), "has no lead-out"},
                    BAD_CCD{"LeadOutAheadOfTheTrack", MakeCcd(OneSession({50}, 50)), "has no lead-out"},
                    BAD_CCD{"AddressesFall", MakeCcd(OneSession({40, 20}, 100)), "does not follow"},
                    BAD_CCD{"NumbersJump", MakeCcd({{1, 0xA2, 0, 100}, {1, 1, 0, 0}, {1, 3, 0, 9}}), "does not follow"},
                    BAD_CCD{"AheadOfTheDisc", MakeCcd(OneSession({-20}, 100)), "ahead of the disc"},
                    BAD_CCD{"SessionsOverlap",
                            MakeCcd({{1, 0xA2, 0, 100}, {1, 1, 0, 0}, {2, 0xA2, 0, 200}, {2, 2, 0, 90}}),
                            "within the session ahead"}),
    [](const auto& row) { return row.param.m_pName; });

TEST(CcdFile, IsKnownByItsFirstSection)
{
    EXPECT_TRUE(LooksLikeCcdFile("\r\n [CLONECD]\r\n"));
    EXPECT_FALSE(LooksLikeCcdFile("FILE \"a.bin\" BINARY\n"));
    EXPECT_FALSE(LooksLikeCcdFile(""));
}
