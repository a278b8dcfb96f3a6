// The JSON log and the state: every member survives, and what nobody has written is refused with the place of its
// fault.

#include "FullReport.h"
#include "HostError.h"
#include "LogSeal.h"
#include "ReportJson.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

namespace
{
using json = nlohmann::ordered_json;

std::string GetFault(const std::string& strJson)
{
    try
    {
        (void)ReadReport(strJson);
    }
    catch (const HostError& error)
    {
        return error.what();
    }
    return "no fault";
}

// A log in which one member was changed and that was sealed anew.
std::string Forge(const char* pPointer, const json& value)
{
    json log = json::parse(MakeJsonLog(MakeFullReport()));
    log[json::json_pointer(pPointer)] = value;
    log.erase("seal");
    return SealJsonLog(log.dump(2));
}

std::string Remove(const char* pKey)
{
    json log = json::parse(MakeJsonLog(MakeFullReport()));
    log.erase(pKey);
    log.erase("seal");
    return SealJsonLog(log.dump());
}
} // namespace

// What fills no member proves nothing of it. A few are zero or empty by the nature of the report.
TEST(ReportJson, TheFullReportFillsEveryMember)
{
    DefaultCounter counter;
    ForEachLeaf(MakeFullReport(), counter);
    // In six files: an error, or a size and both sums. In two pieces each: the first status is 0.
    EXPECT_EQ(3 + 3 * 3 + 2, counter.m_nDefaults);
    EXPECT_GT(counter.m_nLeaves, 300);
}

TEST(ReportJson, TheStateKeepsEveryMember)
{
    const RIP_REPORT report = MakeFullReport();
    const std::string strState = MakeStateText(report);
    EXPECT_EQ(LeafText::Make(report), LeafText::Make(ReadReport(strState)));
    EXPECT_EQ(strState, MakeStateText(ReadReport(strState)));
}

TEST(ReportJson, ATextThatLooksLikeRowsStaysText)
{
    RIP_REPORT report = MakeFullReport();
    for (RIP_PIECE& piece : report.aryPieces)
        piece.strTitle = R"("wave":"","speed":"")";
    report.aryPieces[0].series.aryWave.clear();
    EXPECT_EQ(LeafText::Make(report), LeafText::Make(ReadReport(MakeStateText(report))));
}

TEST(ReportJson, TheStateKeepsAnEmptyReport)
{
    const RIP_REPORT report;
    EXPECT_EQ(LeafText::Make(report), LeafText::Make(ReadReport(MakeStateText(report))));
}

TEST(ReportJson, TheLogIsTheStateWithoutSeries)
{
    RIP_REPORT report = MakeFullReport();
    const std::string strLog = MakeJsonLog(report);
    for (RIP_PIECE& piece : report.aryPieces)
        piece.series = {};
    report.aryPartsBefore.clear();
    EXPECT_EQ(LeafText::Make(report), LeafText::Make(ReadReport(strLog)));
    EXPECT_EQ(std::string::npos, strLog.find("series"));
    EXPECT_EQ(LOG_SEAL_RIGHT, CheckSeal(strLog));
}

TEST(ReportJson, EveryChoiceSurvives)
{
    RIP_REPORT report = MakeFullReport();
    for (int nOutcome = RIP_OUTCOME_WHOLE; nOutcome <= RIP_OUTCOME_FAILED; ++nOutcome)
    {
        report.eOutcome = static_cast<RIP_OUTCOME>(nOutcome);
        EXPECT_EQ(nOutcome, ReadReport(MakeStateText(report)).eOutcome);
    }
    for (int nState = RIP_PIECE_OPEN; nState <= RIP_PIECE_TAKEN; ++nState)
    {
        report.aryPieces[1].eState = static_cast<RIP_PIECE_STATE>(nState);
        EXPECT_EQ(nState, ReadReport(MakeStateText(report)).aryPieces[1].eState);
    }
    report.bSecure = false;
    EXPECT_FALSE(ReadReport(MakeStateText(report)).bSecure);
}

TEST(ReportJson, NumbersThatJsonCannotWriteStandAsText)
{
    RIP_REPORT report = MakeFullReport();
    RIP_LOUDNESS& loudness = report.aryPieces[0].analysis->loudness;
    loudness.fIntegrated = -std::numeric_limits<double>::infinity();
    loudness.fRange = std::numeric_limits<double>::infinity();
    loudness.fTruePeak = std::numeric_limits<double>::quiet_NaN();
    const std::string strLog = MakeJsonLog(report);
    const json shown = json::parse(strLog)["pieces"][0]["analysis"]["loudness"];
    EXPECT_EQ("-inf", shown["integrated_lufs"]);
    EXPECT_EQ("inf", shown["range_lu"]);
    EXPECT_EQ("nan", shown["true_peak_dbtp"]);
    const RIP_REPORT again = ReadReport(strLog);
    EXPECT_EQ(loudness.fIntegrated, again.aryPieces[0].analysis->loudness.fIntegrated);
    EXPECT_EQ(loudness.fRange, again.aryPieces[0].analysis->loudness.fRange);
    EXPECT_TRUE(std::isnan(again.aryPieces[0].analysis->loudness.fTruePeak));
}

TEST(ReportJson, WhatIsNotKnownIsNull)
{
    const json log = json::parse(MakeJsonLog(RIP_REPORT()));
    EXPECT_TRUE(log["album"].is_null());
    EXPECT_TRUE(log["album_dr"].is_null());
    EXPECT_TRUE(log["disc_ctdb"].is_null());
}

TEST(ReportJson, ProgramsFindWhatTheyLookFor)
{
    const json log = json::parse(MakeJsonLog(MakeFullReport()));
    EXPECT_EQ("rondel rip log", log["format"]);
    EXPECT_EQ(1, log["version"]);
    EXPECT_EQ("secure", log["mode"]);
    EXPECT_EQ("doubtful", log["outcome"]);
    EXPECT_EQ("DEADBEEF", log["disc_ctdb"]);
    EXPECT_EQ("A0010003", log["pieces"][0]["sums"]["accuraterip_1"]);
    EXPECT_EQ("limit", log["pieces"][0]["entries"][2]["status"]);
    EXPECT_EQ(true, log["pieces"][0]["entries"][2]["bad"]);
    EXPECT_EQ(false, log["pieces"][0]["entries"][1]["bad"]);
    // Statuses 2 to 8 are bad: 7 + 8 + 9 + 10 + 11 + 12 + 13 sectors in each of the two.
    EXPECT_EQ(70, log["pieces"][0]["bad_sectors"]);
    EXPECT_EQ(140, log["bad_sectors"]);
    EXPECT_EQ(-22.22, log["pieces"][1]["analysis"]["loudness"]["momentary_max_lufs"]);
    EXPECT_EQ("format", log.begin().key());
    EXPECT_EQ("seal", std::prev(log.end()).key());
}

TEST(ReportJson, WhatIsNoUTF8IsReplaced)
{
    RIP_REPORT report;
    report.disc.strTitle = "a\xFF"
                           "b\n\x01";
    EXPECT_EQ("a\xEF\xBF\xBD"
              "b\n\x01",
              ReadReport(MakeJsonLog(report)).disc.strTitle);
}

TEST(ReportJson, FaultsAreNamedWithTheirPlace)
{
    struct ROW
    {
        const char* pPointer;
        json value;
        const char* pWords;
    };
    const ROW aryRows[] = {
        {"/program", 1, "\"program\" is no text"},
        {"/drive", 1, "drive is no object"},
        {"/drive/image", "yes", "\"drive.image\" is neither true nor false"},
        {"/drive/read_offset", 1.5, "\"drive.read_offset\" is no whole number"},
        {"/drive/read_offset", 3000000000LL, "\"drive.read_offset\" is out of range"},
        {"/drive/read_offset", 18446744073709551615ULL, "\"drive.read_offset\" is out of range"},
        {"/pieces", 7, "\"pieces\" is no list"},
        {"/pieces/1", 7, "pieces[1] is no object"},
        {"/pieces/1/sectors", -1, "\"pieces[1].sectors\" is out of range"},
        {"/pieces/0/entries/3/sector", 2000000000, "\"pieces[0].entries[3].sector\" is out of range"},
        {"/pieces/0/entries/3/status", "good", "\"pieces[0].entries[3].status\" has a name that is not known"},
        {"/pieces/0/sums/ctdb", "12", "\"pieces[0].sums.ctdb\" is no sum of eight hexadecimal digits"},
        {"/pieces/0/sums/ctdb", "1234567g", "\"pieces[0].sums.ctdb\" is no sum"},
        {"/pieces/0/files/0/bytes", -1, "\"pieces[0].files[0].bytes\" is out of range"},
        {"/pieces/0/analysis/bpm", "fast", "\"pieces[0].analysis.bpm\" is no number"},
        {"/outcome", nullptr, "\"outcome\" is no text"},
        {"/notes/0", 1, "\"notes\" holds something that is no text"},
        {"/format", "another log", "it is of another kind"},
        {"/version", 2, "version 2, and only 1 is known"},
    };
    for (const ROW& row : aryRows)
    {
        const std::string strFault = GetFault(Forge(row.pPointer, row.value));
        EXPECT_NE(std::string::npos, strFault.find(row.pWords)) << row.pPointer << ": " << strFault;
        EXPECT_TRUE(strFault.ends_with("or rip anew.")) << strFault;
    }
    EXPECT_EQ("no fault", GetFault(Forge("/unknown", "members are for later versions")));
}

TEST(ReportJson, RowsOfTheSeriesAreChecked)
{
    const auto ForgeState = [](const char* pPointer, const json& value)
    {
        json state = json::parse(MakeStateText(MakeFullReport()));
        state[json::json_pointer(pPointer)] = value;
        state.erase("seal");
        return GetFault(SealJsonLog(state.dump()));
    };
    const char* const WAVE = "/pieces/0/series/wave";
    EXPECT_NE(std::string::npos, ForgeState(WAVE, 1).find("\"pieces[0].series.wave\" is no text"));
    EXPECT_NE(std::string::npos, ForgeState(WAVE, json::array()).find("\"pieces[0].series.wave\" is no text"));
    const char* const NO_ROWS[] = {"0", "00", "0000", "000000", "000000000", "0000000g", "0000000A", "000000 0"};
    for (const char* pRows : NO_ROWS)
        EXPECT_NE(std::string::npos,
                  ForgeState(WAVE, pRows).find("\"pieces[0].series.wave\" is not made of whole rows"))
            << pRows;
    EXPECT_NE(std::string::npos, ForgeState("/pieces/0/series/speed", "00000000").find("is not made of whole rows"));
    EXPECT_EQ("no fault", ForgeState(WAVE, "0080ff7f"));
    EXPECT_EQ("no fault", ForgeState(WAVE, ""));
}

TEST(ReportJson, AMissingMemberIsNamed)
{
    const json log = json::parse(MakeJsonLog(MakeFullReport()));
    for (const auto& item : log.items())
    {
        if (item.key() == "seal" || item.key() == "bad_sectors")
            continue;
        EXPECT_NE(std::string::npos, GetFault(Remove(item.key().c_str())).find("\"" + item.key() + "\" is missing"));
    }
    EXPECT_EQ("no fault", GetFault(Remove("bad_sectors"))); // it follows from the others
}

TEST(ReportJson, WhatIsNoJsonIsRefused)
{
    EXPECT_NE(std::string::npos, GetFault("").find("its end is missing"));
    EXPECT_NE(std::string::npos, GetFault(SealJsonLog("{\"a\" 1}")).find("it is no JSON from byte 6 on"));
    EXPECT_NE(std::string::npos, GetFault(SealJsonLog("{\"a\": 1e999}")).find("number that nothing can hold"));
    const std::string strDeep(1000000, '[');
    EXPECT_NE(std::string::npos, GetFault(SealJsonLog("{\"a\": " + strDeep)).find("it is nested too deeply"));
    RIP_REPORT report;
    report.aryPieces.resize(1001);
    EXPECT_NE(std::string::npos, GetFault(MakeStateText(report)).find("\"pieces\" has too many entries"));
}

TEST(ReportJson, ALogThatWasCutOrChangedIsRefused)
{
    std::string strState = MakeStateText(MakeFullReport());
    EXPECT_NE(std::string::npos, GetFault(strState.substr(0, strState.size() / 2)).find("its end is missing"));
    strState[strState.find("4711")] = '5';
    EXPECT_NE(std::string::npos, GetFault(strState).find("it has changed since it was written"));
    EXPECT_EQ(5711, ReadUnsealedReport(strState).nReReads);
}
