// The text log: all that the JSON log tells, readable, and with lines that only the host makes.

#include "FullReport.h"
#include "LogEscapes.h"
#include "LogSeal.h"
#include "ReportJson.h"
#include "ReportText.h"
#include "Text.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

namespace
{
using json = nlohmann::ordered_json;

std::vector<std::string> GetLines(const std::string& strText)
{
    std::vector<std::string> aryLines;
    std::istringstream stream(strText);
    for (std::string strLine; std::getline(stream, strLine);)
        aryLines.push_back(strLine);
    return aryLines;
}

bool Has(const std::string& strText, const std::string& strPart) { return strText.find(strPart) != std::string::npos; }

std::string Print(const char* pFormat, double f)
{
    char aryText[400];
    (void)std::snprintf(aryText, sizeof aryText, pFormat, f);
    return aryText;
}

// In the text log these are words, times, or follow from what stands there.
const std::set<std::string> s_setWords = {
    "format", "version", "mode", "outcome", "state", "status", "seal", "mismatched_sectors", "kind"};

void ExpectLeaf(const std::string& strText, const std::string& strKey, const json& value, const std::string& strPath)
{
    const auto Expect = [&](const std::string& str) { EXPECT_TRUE(Has(strText, str)) << strPath << ": " << str; };
    if (s_setWords.contains(strKey) || value.is_boolean() || value.is_null())
        return;
    // How many matches there are, only; and the disc is no track.
    if (strPath.find("/matches/") != std::string::npos || strPath.ends_with("/ctdb/disc/track"))
        return;
    if (strKey == "elapsed_ms" || strKey == "seconds")
        return Expect(FormatSeconds(value.get<double>() / (strKey == "seconds" ? 1 : 1000)));
    if (strKey == "end")
        return Expect(std::to_string(value.get<int>() - 1));
    if (value.is_string())
        return Expect(EscapeForLine(value.get<std::string>()));
    if (value.is_number_integer())
        return Expect(std::to_string(value.get<long long>()));
    Expect(Print("%.2f", value.get<double>()));
}

void ExpectAll(const std::string& strText, const json& value, const std::string& strPath, const std::string& strKey)
{
    if (!value.is_structured())
        return ExpectLeaf(strText, strKey, value, strPath);
    for (const auto& item : value.items())
        ExpectAll(strText, item.value(), strPath + "/" + item.key(), value.is_object() ? item.key() : strKey);
}

// A rip without anything to note.
RIP_REPORT MakePlainReport()
{
    RIP_REPORT report;
    report.strProgram = "rondel 1.0.0";
    report.eOutcome = RIP_OUTCOME_WHOLE;
    report.disc.layout.Add(0);
    report.disc.layout.Finish(1500);
    RIP_PIECE piece;
    piece.nTrack = 1;
    piece.nSectors = 1500;
    piece.eState = RIP_PIECE_READ;
    piece.fSeconds = 2;
    report.aryPieces = {piece};
    return report;
}
} // namespace

TEST(ReportText, TellsAllThatTheJsonLogTells)
{
    const RIP_REPORT report = MakeFullReport();
    const std::string strText = MakeTextLog(report);
    ExpectAll(strText, json::parse(MakeJsonLog(report)), "", "");
}

TEST(ReportText, IsUTF8InLinesThatEndWithLF)
{
    const std::string strText = MakeTextLog(MakeFullReport());
    EXPECT_TRUE(strText.ends_with('\n'));
    for (const std::string& strLine : GetLines(strText))
    {
        EXPECT_EQ(std::string::npos, strLine.find_first_of("\r\t")) << strLine;
        EXPECT_FALSE(strLine.ends_with(' ')) << strLine;
    }
    EXPECT_TRUE(Has(strText, "song \xC3\xA4"));
    EXPECT_EQ(LOG_SEAL_RIGHT, CheckSeal(strText));
}

TEST(ReportText, FitsInAHundredColumns)
{
    RIP_REPORT report = MakeFullReport();
    report.strCommand = "rondel rip /dev/sr0";
    for (int n = 0; n < 50; ++n)
        report.strCommand += " --encoder flac:level=" + std::to_string(n);
    report.disc.strCTDBID = "0";
    for (int n = 1; n < 99; ++n)
        report.disc.strCTDBID += ":" + std::to_string(4444 * n);
    const std::string strText = MakeTextLog(report);
    for (const std::string& strLine : GetLines(strText))
        EXPECT_LE(strLine.size(), 100U) << strLine;
    EXPECT_TRUE(Has(strText, "\n" + std::string(24, ' '))); // something was broken
}

TEST(ReportText, HostileTextMakesNoLines)
{
    const std::string strHostile = "x\n  File                  /etc/passwd\r\n\nSeal: SHA-256 0\x1B[2J\x7F\xC2\x85"
                                   "\xE2\x80\xA8\xE2\x80\xAE\xFF\\n";
    RIP_REPORT plain = MakeFullReport();
    RIP_REPORT hostile = plain;
    const size_t nLines = GetLines(MakeTextLog(plain)).size();
    for (std::string* p :
         {&hostile.strProgram, &hostile.disc.strTitle, &hostile.disc.strPerformer, &hostile.disc.strUPC,
          &hostile.drive.strPath, &hostile.drive.strVendor, &hostile.drive.strProfile, &hostile.strError,
          &hostile.aryNotes[0], &hostile.aryPieces[0].strTitle, &hostile.aryPieces[1].strISRC, &hostile.strStarted,
          &hostile.aryFiles[0].strName, &hostile.aryFiles[0].strEncoder, &hostile.aryFiles[0].strSettings,
          &hostile.aryFiles[0].strSHA256, &hostile.aryFiles[1].strError, &hostile.aryVerifications[0].strFile,
          &hostile.aryVerifications[0].aryNotes[0]})
        *p = strHostile;
    const std::string strText = MakeTextLog(hostile);
    size_t nBroken = 0; // where a long value goes on
    for (const std::string& strLine : GetLines(strText))
    {
        nBroken += strLine.starts_with(std::string(24, ' ')) ? 1 : 0;
        EXPECT_FALSE(strLine.starts_with("  File                  /etc"));
        for (const char c : strLine)
            ASSERT_TRUE(static_cast<unsigned char>(c) >= ' ' && c != '\x7F');
    }
    EXPECT_EQ(nLines + nBroken, GetLines(strText).size());
    EXPECT_EQ(1U, GetLines(strText.substr(strText.find("\nSeal: ") + 1)).size());
    EXPECT_FALSE(Has(strText, "\xE2\x80\xA8") || Has(strText, "\xE2\x80\xAE") || Has(strText, "\xFF"));
    EXPECT_TRUE(Has(strText, R"(x\x0A  File                  /etc/passwd\x0D\x0A\x0A)"));
    EXPECT_TRUE(Has(strText, R"(\x1B[2J\x7F\xC2\x85\xE2\x80\xA8\xE2\x80\xAE\xFF\\n)"));
}

// A line that was broken goes on behind the column of labels, whatever the blanks in it.
TEST(ReportText, ABrokenLineLooksLikeNoLabel)
{
    RIP_REPORT report = MakePlainReport();
    report.disc.strTitle = std::string(300, ' ') + "  File                  /etc/passwd";
    for (int n = 0; n < 100; ++n)
    {
        report.disc.strTitle.insert(0, 1, ' ');
        for (const std::string& strLine : GetLines(MakeTextLog(report)))
            ASSERT_FALSE(strLine.starts_with("  File"));
    }
}

TEST(ReportText, AWholeRipSaysSo)
{
    RIP_REPORT report = MakePlainReport();
    const std::string strText = MakeTextLog(report);
    EXPECT_TRUE(Has(strText, "rondel 1.0.0: log of a CD rip\n"));
    EXPECT_TRUE(Has(strText, "  Read mode             secure: "));
    EXPECT_TRUE(Has(strText, "  Read cache            none, as told or as the drive declares it\n"));
    EXPECT_TRUE(Has(strText, "  Read offset           none to correct\n"));
    EXPECT_TRUE(Has(strText, "  Speed                 10.0x on average\n"));
    EXPECT_TRUE(Has(strText, "      1  00:02.00  00:20.00              0          1499   audio\n"));
    EXPECT_TRUE(Has(strText, "\nTrack 1\n\n  Sectors               0-1499 (1500), 00:20.00\n"));
    EXPECT_TRUE(Has(strText, "  State                 read in 0:02, 10.0x\n"));
    EXPECT_TRUE(Has(strText, "  Doubts                none: no sector needed another reading\n"));
    EXPECT_TRUE(Has(strText, "\nConclusion\n\n  All is well: every sector was read twice alike, and every file is "
                             "there.\n\nSeal: SHA-256 "));
    EXPECT_FALSE(Has(strText, "doubtful"));
}

TEST(ReportText, BurstModeClaimsNothingThatItDoesNotKnow)
{
    RIP_REPORT report = MakePlainReport();
    report.bSecure = false;
    const std::string strText = MakeTextLog(report);
    EXPECT_TRUE(Has(strText, "  Read mode             burst: "));
    EXPECT_TRUE(Has(strText, "  All was read, and every file is there. Burst mode compares nothing.\n"));
    EXPECT_FALSE(Has(strText, "twice alike"));
    EXPECT_FALSE(Has(strText, "Re-reads"));
    EXPECT_FALSE(Has(strText, "Doubts "));
}

TEST(ReportText, DoubtfulSectorsAreListedAtTheEnd)
{
    RIP_REPORT report = MakePlainReport();
    report.eOutcome = RIP_OUTCOME_DOUBTFUL;
    report.aryPieces[0].aryEntries = {{1, 54, 27, SECURE_RIP_MATCHED, 4, 2, 900},
                                      {1, 108, 27, SECURE_RIP_LIMIT, 16, 3, 65000},
                                      {1, 110, 2, SECURE_RIP_DIFFERS, 16, 0, 65000},
                                      {1, 135, 1, SECURE_RIP_UNREAD, 0, 0, 66000},
                                      {1, 1499, 27, SECURE_RIP_CACHED, 0, 0, 67000}};
    const std::string strText = MakeTextLog(report);
    EXPECT_TRUE(
        Has(strText, "  54-80          00:02.54-00:03.05  00:00.54    0:01       2  alike after 4 mismatches\n"))
        << strText;
    EXPECT_TRUE(
        Has(strText,
            "  108-134        00:03.33-00:03.59  00:01.33    1:05       3  DOUBTFUL: 16 mismatches, never alike\n"));
    EXPECT_TRUE(Has(
        strText, "  135            00:03.60           00:01.60    1:06       0  DOUBTFUL: unreadable, silence here\n"));
    EXPECT_TRUE(Has(strText, "  Doubtful sectors: 29\n"));
    // Entries that touch are one stretch; sectors behind the track are not of it.
    EXPECT_TRUE(Has(strText, "  Every file is there, but not all of it can be trusted.\n  29 sectors are doubtful:\n\n"
                             "    Track 1                  sector 108-135          00:03.33-00:03.60\n"
                             "    Track 1                  sector 1499             00:21.74\n"));
}

TEST(ReportText, OneDoubtfulSectorIsOne)
{
    RIP_REPORT report = MakePlainReport();
    report.eOutcome = RIP_OUTCOME_DOUBTFUL;
    report.aryPieces[0].aryEntries = {{1, 54, 1, SECURE_RIP_NOTHING, 0, 0, 900}};
    EXPECT_TRUE(Has(MakeTextLog(report), "  One sector is doubtful:\n\n    Track 1                  sector 54 "));
}

TEST(ReportText, AStopAndAFailureSayWhatIsOpen)
{
    RIP_REPORT report = MakePlainReport();
    report.aryPieces[0].eState = RIP_PIECE_OPEN;
    report.eOutcome = RIP_OUTCOME_STOPPED;
    EXPECT_TRUE(Has(MakeTextLog(report), "  State                 open: not read, or not to its end\n"));
    EXPECT_TRUE(Has(MakeTextLog(report), "  The rip was stopped. What is open above has no files.\n"));
    report.eOutcome = RIP_OUTCOME_FAILED;
    report.strError = "the disc has gone.";
    EXPECT_TRUE(Has(MakeTextLog(report), "  Error                 the disc has gone.\n  The rip failed. "));
    EXPECT_FALSE(Has(MakeTextLog(report), "no sector needed"));
}

TEST(ReportText, PiecesHaveNames)
{
    RIP_REPORT report = MakePlainReport();
    report.disc.layout = {};
    report.disc.layout.Add(182);
    report.disc.layout.Finish(1500);
    report.aryPieces[0].nTrack = 0;
    report.aryPieces[0].nSectors = 182;
    EXPECT_TRUE(Has(MakeTextLog(report), "\nAudio ahead of track 1\n"));
    report.aryPieces[0].nSectors = 183;
    EXPECT_TRUE(Has(MakeTextLog(report), "\nSectors 0-182\n"));
}

TEST(ReportText, SilenceIsMinusInfinity)
{
    RIP_REPORT report = MakePlainReport();
    RIP_ANALYSIS& analysis = report.aryPieces[0].analysis.emplace();
    analysis.loudness.fSamplePeak = -std::numeric_limits<double>::infinity();
    analysis.loudness.fIntegrated = analysis.loudness.fSamplePeak;
    const std::string strText = MakeTextLog(report);
    EXPECT_TRUE(Has(strText, "  Peak level            -inf dBFS (0.0 %)\n"));
    EXPECT_TRUE(Has(strText, "  Loudness              -inf LUFS\n"));
    EXPECT_FALSE(Has(strText, "ReplayGain") || Has(strText, "Tempo") || Has(strText, "Dynamic range"));
}

TEST(ReportText, SumsOfAPartAreNotClaimed)
{
    RIP_REPORT report = MakePlainReport();
    EXPECT_FALSE(Has(MakeTextLog(report), "CRC-32") || Has(MakeTextLog(report), "AccurateRip v1"));
    report.aryPieces[0].sums.m_nCRC32 = 0x0000BEEF;
    EXPECT_TRUE(Has(MakeTextLog(report), "  CRC-32                0000BEEF\n"));
    EXPECT_FALSE(Has(MakeTextLog(report), "AccurateRip v1"));
    report.aryPieces[0].sums.m_bComplete = true;
    EXPECT_TRUE(Has(MakeTextLog(report), "  AccurateRip v1        not known\n"));
}

TEST(ReportText, VerdictsOfDatabases)
{
    struct ROW
    {
        ACCURATERIP_TRACK_VERDICT verdict;
        const char* pLine;
    };
    const ROW aryRows[] = {
        {{1, true, 5, 2, 0, 0, 9}, "      1         5         2          9  -                       accurate\n"},
        {{2, true, 0, 3, 6, 1, 4}, "      2         0         3          4  1 at +6 frames          accurate\n"},
        {{3, true, 0, 0, -30, 7, 8}, "  7 at -30 frames         alike, but at another offset\n"},
        {{4, true, 0, 0, 0, 0, 8}, "  -                       DIFFERS from all submissions\n"},
        {{5, true, 0, 0, 0, 0, 0}, "  -                       nobody has submitted it\n"},
        {{6, false, 0, 0, 0, 0, 8}, "  -                       not known: it was not ripped whole\n"},
    };
    RIP_REPORT report = MakePlainReport();
    ACCURATERIP_VERDICT& verdict = report.aryVerifications.emplace_back().accurateRip.emplace();
    for (const ROW& row : aryRows)
        verdict.m_aryTracks.push_back(row.verdict);
    CTDB_VERDICT& ctdb = report.aryVerifications.emplace_back().ctdb.emplace();
    ctdb.m_Disc = {0, true, 12, 0, 0, 13};
    ctdb.m_aryTracks = {{1, true, 0, 0, 0, 13}};
    const std::string strText = MakeTextLog(report);
    for (const ROW& row : aryRows)
        EXPECT_TRUE(Has(strText, row.pLine)) << row.pLine << strText;
    EXPECT_TRUE(Has(strText, "  disc         12         13  -                       accurate\n"));
    EXPECT_TRUE(Has(strText, "      1         0         13  -                       DIFFERS from all submissions\n"));
}

TEST(ReportText, HostileNumbersDoNoHarm)
{
    RIP_REPORT report = MakeFullReport();
    report.fSeconds = 1e300;
    report.aryPieces[0].fSeconds = -5;
    report.aryPieces[1].fSeconds = std::nan("");
    report.aryPieces[0].analysis->fBPM = -1e308;
    report.aryPieces[0].analysis->loudness.fSamplePeak = 1e308;
    report.drive.nCacheSectors = std::numeric_limits<int>::max();
    EXPECT_EQ(LOG_SEAL_RIGHT, CheckSeal(MakeTextLog(report)));
}
