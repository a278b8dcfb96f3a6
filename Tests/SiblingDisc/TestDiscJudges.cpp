// Other people's readers of the same formats as judges of ours, where they are installed.

#include "DiscImage.h"
#include "ImageFiles.h"
#include <cstdio>
#include <gtest/gtest.h>
#include <regex>

namespace
{
// What the command prints, errors included. Empty when it cannot be run.
std::string RunProgram(const std::string& strCommand)
{
    std::string strOutput;
    FILE* pPipe = popen((strCommand + " 2>&1").c_str(), "r");
    char szPart[512];
    while (pPipe != nullptr && fgets(szPart, sizeof szPart, pPipe) != nullptr)
        strOutput += szPart;
    if (pPipe != nullptr)
        (void)pclose(pPipe);
    return strOutput;
}

bool IsInstalled(const char* pProgram) { return !RunProgram(std::string("command -v ") + pProgram).empty(); }

// The numbers that the first group of the pattern matches, in order.
std::vector<int> FindNumbers(const std::string& strText, const char* pPattern)
{
    std::vector<int> aryNumbers;
    std::regex pattern(pPattern);
    for (std::sregex_iterator it(strText.begin(), strText.end(), pattern), end; it != end; ++it)
        aryNumbers.push_back(atoi((*it)[1].str().c_str()));
    return aryNumbers;
}

TEST(DiscJudges, TocFileIsLaidOutAsCdrdaoDoes)
{
    if (!IsInstalled("cdrdao"))
        GTEST_SKIP() << "cdrdao is not installed";
    TempFolder folder;
    folder.Write("data.bin", std::string(3000 * LY_CD_SECTOR_BYTES, 'x'));
    std::string strPath = folder.Write("a.toc", "CD_DA\nTRACK AUDIO\nFILE \"data.bin\" 0 00:10:00\nSTART 00:00:33\n"
                                                "TRACK AUDIO\nPRE_EMPHASIS\nFILE \"data.bin\" 00:10:00 00:10:00\n"
                                                "START 00:02:00\nINDEX 00:03:00\n"
                                                "TRACK AUDIO\nSILENCE 600\nSTART\nFILE \"data.bin\" 00:20:00 00:15:17\n"
                                                "TRACK AUDIO\nPREGAP 00:01:00\nFILE \"data.bin\" 441000\n");
    std::string strError;
    auto pImage = DiscImage::Open(strPath, strError);
    ASSERT_TRUE(pImage) << strError;
    std::string strVerdict = RunProgram("cd " + folder.GetPath() + " && cdrdao show-toc a.toc");
    std::vector<int> aryStarts;
    std::vector<int> aryEnds;
    for (const DISC_TRACK& track : pImage->GetTracks())
    {
        aryStarts.push_back(track.m_nStartLBA);
        aryEnds.push_back(track.GetEndLBA());
    }
    EXPECT_EQ(FindNumbers(strVerdict, "START +[0-9:]+\\( *([0-9]+)\\)"), aryStarts) << strVerdict;
    EXPECT_EQ(FindNumbers(strVerdict, "END\\*? +[0-9:]+\\( *([0-9]+)\\)"), aryEnds) << strVerdict;
    EXPECT_EQ(FindNumbers(strVerdict, "INDEX +2 +[0-9:]+\\( *([0-9]+)\\)"), pImage->FindTrack(2)->m_aryIndexLBAs);
}

TEST(DiscJudges, CueSheetIsLaidOutAsCdInfoDoes)
{
    if (!IsInstalled("cd-info"))
        GTEST_SKIP() << "cd-info is not installed";
    TempFolder folder;
    folder.Write("a.bin", std::string(3000 * LY_CD_SECTOR_BYTES, '\0'));
    std::string strPath =
        folder.Write("a.cue", "CATALOG 1234567890123\nFILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 00 00:00:00\n"
                              "INDEX 01 00:00:33\nTRACK 02 AUDIO\nFLAGS PRE\nINDEX 00 00:10:00\nINDEX 01 00:12:00\n"
                              "INDEX 02 00:15:00\nTRACK 03 MODE1/2352\nINDEX 00 00:20:00\nINDEX 01 00:22:00\n");
    std::string strError;
    auto pImage = DiscImage::Open(strPath, strError);
    ASSERT_TRUE(pImage) << strError;
    std::string strVerdict =
        RunProgram("cd " + folder.GetPath() + " && cd-info --no-device-info --no-cddb --cue-file=a.cue");
    std::vector<int> aryStarts;
    for (const DISC_TRACK& track : pImage->GetTracks())
        aryStarts.push_back(track.m_nStartLBA);
    EXPECT_EQ(FindNumbers(strVerdict, " +[0-9]+: [0-9:]+ +([0-9]+) (?:audio|data)"), aryStarts) << strVerdict;
    EXPECT_EQ(FindNumbers(strVerdict, "170: [0-9:]+ +([0-9]+) leadout"), std::vector<int>({pImage->GetLeadOutLBA()}));
    EXPECT_NE(std::string::npos, strVerdict.find("(MCN): " + pImage->GetMCN())) << strVerdict;
}
} // namespace
