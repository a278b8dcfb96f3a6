#include "HtmlPage.h"
#include "ReportHtml.h"
#include "ReportHtmlParts.h"
#include "SampleReport.h"
#include "SecureHash.h"
#include "TempFolder.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <set>

namespace
{
constexpr const char* REPLACED = "\xEF\xBF\xBD";

// What a disc may hold to break out of a page, with bytes that are no text at all.
const std::string HOSTILE =
    "</title></style><script>alert(1)</script><img src=x onerror='a()'>\" onload=\"b()\" &amp; "
    "\x01\x1B[2J\x7F \xFF \xC0\xAF \xED\xA0\x80 \xF4\x90\x80\x80 \xEF\xBF\xBF \xC2\x85 end\xE2\x82";

std::vector<RIP_FILE> MakeHostileFiles()
{
    return {{HOSTILE, HOSTILE, HOSTILE, HOSTILE, 1, HOSTILE, "", ""},
            {HOSTILE, "wav", "", "", 1, "", HOSTILE, ""},
            {HOSTILE, "", "", "", 0, "", "", HOSTILE}};
}

RIP_REPORT MakeHostileReport()
{
    RIP_REPORT report = SampleReport::Make({3000, 2000}, false);
    report.eOutcome = RIP_OUTCOME_FAILED;
    for (std::string* pText :
         {&report.strProgram, &report.strStarted, &report.strEnded, &report.strCommand, &report.strError,
          &report.drive.strPath, &report.drive.strVendor, &report.drive.strModel, &report.drive.strRevision,
          &report.drive.strProfile, &report.disc.strTitle, &report.disc.strPerformer, &report.disc.strUPC,
          &report.disc.strAccurateRipID, &report.disc.strCDDBID, &report.disc.strMusicBrainzID, &report.disc.strCTDBID})
        *pText = HOSTILE;
    for (RIP_PIECE& piece : report.aryPieces)
    {
        piece.strTitle = piece.strPerformer = piece.strISRC = HOSTILE;
        piece.aryFiles = MakeHostileFiles();
    }
    report.aryFiles = MakeHostileFiles();
    report.aryNotes = {HOSTILE};
    report.aryVerifications[0].strFile = report.aryVerifications[0].strKind = HOSTILE;
    report.aryVerifications[0].aryNotes = {HOSTILE};
    return report;
}

// Numbers that no drive and no analyser has.
RIP_REPORT MakeAbsurdReport()
{
    const double fInfinity = std::numeric_limits<double>::infinity();
    RIP_REPORT report = SampleReport::Make({3000, 2000, 1000}, false);
    for (RIP_PIECE& piece : report.aryPieces)
    {
        piece.analysis->loudness = {-fInfinity, -fInfinity, -fInfinity, std::nan(""),
                                    -fInfinity, -fInfinity, fInfinity};
        piece.series.aryMomentary.assign(100, -std::numeric_limits<float>::infinity());
        piece.series.aryShortTerm.assign(100000, std::nanf(""));
        piece.series.arySpeed = {{2000000000, 1, 1}, {-5, 3, 1}, {100, std::nanf(""), 0}, {200, 3e38F, 0}};
        piece.series.nWaveSectors = -3;
        piece.series.aryWave.assign(9000, {32767, -32768});
        piece.aryEntries = {
            {99, -2000000000, 2000000000, 77, -1, -1, -1}, {0, 5, 2147483647, -3, 0, 0, 0}, {0, 100, -100, 2, 0, 0, 0}};
        piece.fSeconds = -1;
    }
    report.aryPieces[1].nSectors = -7;
    report.aryPieces[2].nStart = 2147483000;
    report.aryPieces[2].nSectors = 2147483647;
    report.album = report.aryPieces[0].analysis->loudness;
    report.fSeconds = fInfinity;
    return report;
}

RIP_REPORT MakeUnknownReport()
{
    RIP_REPORT report;
    report.aryPieces.resize(2);
    report.aryPieces[0].nSectors = 750;
    return report;
}

struct REPORT_CASE
{
    const char* pName;
    RIP_REPORT (*pMake)();
};

const REPORT_CASE REPORT_CASES[] = {
    {"Sample", [] { return SampleReport::Make(); }},
    {"Empty", [] { return RIP_REPORT(); }},
    {"NothingKnown", MakeUnknownReport},
    {"Hostile", MakeHostileReport},
    {"Absurd", MakeAbsurdReport},
    {"NinetyNineTracks", [] { return SampleReport::MakeLongest(99); }},
};

class ReportHtmlOf : public testing::TestWithParam<REPORT_CASE>
{
};

std::string MakeBase64(const SHA256Hash::DIGEST& digest)
{
    constexpr const char* DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string str;
    for (size_t i = 0; i < digest.size(); i += 3)
    {
        uint32_t n = 0;
        for (size_t k = 0; k < 3; ++k)
            n = n << 8 | (i + k < digest.size() ? digest[i + k] : 0U);
        for (int nShift = 18; nShift >= 0; nShift -= 6)
            str += DIGITS[n >> nShift & 63];
    }
    return str.replace(str.size() - 1, 1, "="); // 32 bytes leave two in the last group
}
} // namespace

INSTANTIATE_TEST_SUITE_P(All, ReportHtmlOf, testing::ValuesIn(REPORT_CASES),
                         [](const auto& testCase) { return std::string(testCase.param.pName); });

TEST_P(ReportHtmlOf, IsWellFormed)
{
    const HtmlPage page(MakeHtmlReport(GetParam().pMake()));
    EXPECT_EQ("", page.GetFault());
    EXPECT_EQ(1U, page.Find("h1").size());
    EXPECT_EQ(1U, page.Find("main").size());
}

TEST_P(ReportHtmlOf, IsWellFormedToXmllintToo)
{
    if (std::system("xmllint --version >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "There is no xmllint.";
    const TempFolder folder;
    const std::string strFile = folder.Write("report.html", MakeHtmlReport(GetParam().pMake()));
    EXPECT_EQ(0, std::system(("xmllint --noout " + strFile).c_str()));
}

TEST_P(ReportHtmlOf, NeedsNothingFromOutside)
{
    const std::string strPage = MakeHtmlReport(GetParam().pMake());
    const HtmlPage page(strPage);
    static const std::set<std::string> FORBIDDEN = {"src",        "srcset",     "data",    "action",
                                                    "formaction", "background", "poster",  "xlink:href",
                                                    "style",      "ping",       "manifest"};
    for (const HTML_ELEMENT& element : page.GetAll())
    {
        for (const auto& [strName, strValue] : element.mapAttributes)
        {
            EXPECT_FALSE(FORBIDDEN.contains(strName)) << strName;
            EXPECT_FALSE(strName.starts_with("on")) << strName;
        }
        if (element.Has("href"))
        {
            EXPECT_TRUE(element.Get("href").starts_with("#")) << element.Get("href");
        }
        static const std::set<std::string> LOADERS = {"link",  "iframe", "object", "embed",
                                                      "image", "img",    "base",   "form"};
        EXPECT_FALSE(LOADERS.contains(element.strName)) << element.strName;
    }
    ASSERT_EQ(1U, page.Find("style").size());
    EXPECT_EQ(std::string::npos, page.Find("style")[0].strText.find("url("));
    EXPECT_EQ(std::string::npos, page.Find("style")[0].strText.find('@' + std::string("import")));
    EXPECT_EQ(std::string::npos, strPage.find("://"));
}

TEST_P(ReportHtmlOf, LeadsWhereItSays)
{
    const HtmlPage page(MakeHtmlReport(GetParam().pMake()));
    std::set<std::string> setIDs;
    for (const HTML_ELEMENT& element : page.GetAll())
        if (element.Has("id"))
        {
            EXPECT_TRUE(setIDs.insert(element.Get("id")).second) << element.Get("id");
        }
    for (const HTML_ELEMENT& element : page.GetAll())
    {
        if (element.Has("href"))
        {
            EXPECT_TRUE(setIDs.contains(element.Get("href").substr(1))) << element.Get("href");
        }
        for (const char* pName : {"aria-labelledby", "aria-describedby"})
            if (element.Has(pName))
            {
                EXPECT_TRUE(setIDs.contains(element.Get(pName))) << element.Get(pName);
            }
    }
}

TEST_P(ReportHtmlOf, IsNamedForThoseWhoDoNotSeeIt)
{
    const HtmlPage page(MakeHtmlReport(GetParam().pMake()));
    for (const HTML_ELEMENT& element : page.GetAll())
    {
        if (element.strName == "th")
        {
            EXPECT_TRUE(element.Has("scope"));
        }
        if (element.Get("tabindex") == "0")
        {
            EXPECT_NE("", element.Get("aria-label"));
        }
        if (element.strName != "svg" || element.Get("class") == "series") // which lies within a chart
            continue;
        const bool bNamed =
            element.Get("role") == "img" && element.Has("aria-labelledby") && element.Has("aria-describedby");
        EXPECT_TRUE(bNamed || element.Get("aria-hidden") == "true") << element.Get("class");
    }
    for (const HTML_ELEMENT& element : page.Find("table"))
        EXPECT_NE(std::string::npos, element.strText.find_first_not_of(' '));
    EXPECT_EQ(page.Find("table").size(), page.Find("caption").size());
}

TEST_P(ReportHtmlOf, StyleAndScriptAreThoseThatThePolicyNames)
{
    const HtmlPage page(MakeHtmlReport(GetParam().pMake()));
    const auto aryPolicies = page.Find("meta", "http-equiv", "Content-Security-Policy");
    ASSERT_EQ(1U, aryPolicies.size());
    ASSERT_EQ(1U, page.Find("script").size());
    const auto hash = [](const std::string& str) { return MakeBase64(SHA256Hash::Make(str.data(), str.size())); };
    EXPECT_EQ("default-src 'none'; style-src 'sha256-" + hash(page.Find("style")[0].strText) +
                  "'; script-src 'sha256-" + hash(page.Find("script")[0].strText) +
                  "'; base-uri 'none'; form-action 'none'",
              aryPolicies[0].Get("content"));
}

TEST(ReportHtml, HostileTextsStayTexts)
{
    const HtmlPage page(MakeHtmlReport(MakeHostileReport()));
    const std::string r = REPLACED;
    const std::string strShown =
        "</title></style><script>alert(1)</script><img src=x onerror='a()'>\" onload=\"b()\" &amp; " + r + r + "[2J" +
        r + " " + r + " " + r + r + " " + r + r + r + " " + r + r + r + r + " " + r + " " + r + " end" + r + r;
    EXPECT_EQ(strShown, page.Find("h1")[0].strText);
    EXPECT_EQ("Rip of " + strShown + " – " + strShown, page.Find("title")[0].strText);
    EXPECT_EQ(strShown, page.Find("meta", "name", "generator")[0].Get("content"));
    EXPECT_EQ(1U, page.Find("script").size());
    EXPECT_EQ(1U, page.Find("style").size());
    EXPECT_TRUE(page.Find("img").empty());
}

TEST(ReportHtml, EscapesTextAsATable)
{
    const std::pair<std::string, std::string> CASES[] = {
        {"", ""},
        {"a<b>&\"'", "a&lt;b&gt;&amp;&quot;&#39;"},
        {"Käse ü €\xF0\x9F\x8E\xB5", "Käse ü €\xF0\x9F\x8E\xB5"},
        {"a\nb\tc", "a b c"},
        {std::string("a\0b", 3), std::string("a") + REPLACED + "b"},
        {"\xC3", REPLACED},
        {"\xE2\x82z", std::string(REPLACED) + REPLACED + "z"},
    };
    for (const auto& [strText, strEscaped] : CASES)
        EXPECT_EQ(strEscaped, ReportHtml::Escape(strText));
}

TEST(ReportHtml, WritesNumbersAsPeopleDo)
{
    using namespace ReportHtml;
    EXPECT_EQ("−9.3", FormatDecimal(-9.34, 1));
    EXPECT_EQ("0.0", FormatDecimal(-0.04, 1)) << "no minus sign ahead of nothing";
    EXPECT_EQ("−∞", FormatDecimal(-std::numeric_limits<double>::infinity(), 1));
    EXPECT_EQ(UNKNOWN, FormatDecimal(std::nan(""), 1));
    EXPECT_EQ(311U, FormatDecimal(std::numeric_limits<double>::max(), 1).size());
    EXPECT_EQ("0", FormatWhole(0));
    EXPECT_EQ("999", FormatWhole(999));
    EXPECT_EQ("359,845", FormatWhole(359845));
    EXPECT_EQ("-1,000,000", FormatWhole(-1000000));
    EXPECT_EQ("1 sector", FormatCount(1, "sector"));
    EXPECT_EQ("0 sectors", FormatCount(0, "sector"));
    EXPECT_EQ("0000ABCD", FormatSum(0xABCD));
    EXPECT_EQ(UNKNOWN, FormatSum(0)) << "a sum of 0 is not known";
}

TEST(ReportHtml, WhatIsNotKnownIsSaid)
{
    const std::string strText = HtmlPage(MakeHtmlReport(MakeUnknownReport())).GetText();
    EXPECT_NE(std::string::npos, strText.find("The waveform was not recorded."));
    EXPECT_NE(std::string::npos, strText.find("The loudness over time was not recorded."));
    EXPECT_NE(std::string::npos, strText.find("The read speed was not recorded."));
    EXPECT_NE(std::string::npos, HtmlPage(MakeHtmlReport(RIP_REPORT())).GetText().find("Nothing was read."));
}

TEST(ReportHtml, AFileThatIsNotThereIsSaid)
{
    RIP_REPORT report = SampleReport::MakeMarked({});
    report.aryPieces[0].aryFiles = {{"01.flac", "flac", "", "", 0, "", "", "The disk is full."}};
    const std::string strText = HtmlPage(MakeHtmlReport(report)).GetText();
    EXPECT_NE(std::string::npos, strText.find("No file: The disk is full."));
    EXPECT_NE(std::string::npos, strText.find("file missing"));
}

TEST(ReportHtml, PiecesThatAreNoTracksHaveNames)
{
    RIP_REPORT report = SampleReport::MakeMarked({});
    report.aryPieces[0].nTrack = 0;
    EXPECT_EQ("Sectors 1000 to 2999", ReportHtml::GetPieceName(report, report.aryPieces[0]));
    report.disc.layout.Add(3000);
    EXPECT_EQ("Hidden audio", ReportHtml::GetPieceName(report, report.aryPieces[0]));
    report.aryPieces[0].nTrack = 7;
    EXPECT_EQ("Track 7", ReportHtml::GetPieceName(report, report.aryPieces[0]));
}

TEST(ReportHtml, VerdictFollowsTheOutcome)
{
    struct CASE
    {
        RIP_OUTCOME eOutcome;
        bool bSecure;
        bool bBad;
        const char* pClass;
        const char* pHeadline;
        const char* pSentence;
    };
    const CASE CASES[] = {
        {RIP_OUTCOME_WHOLE, true, false, "verdict good", "Whole", "Every sector was read twice alike."},
        {RIP_OUTCOME_WHOLE, false, false, "verdict good", "Whole, but not compared", "compares nothing"},
        {RIP_OUTCOME_WHOLE, true, true, "verdict doubt", "Whole, but in doubt", "1 sector is in doubt: Track 1 (1)."},
        {RIP_OUTCOME_DOUBTFUL, true, true, "verdict doubt", "Whole, but in doubt", "All other sectors were read twice"},
        {RIP_OUTCOME_DOUBTFUL, false, true, "verdict doubt", "Whole, but in doubt", "compares nothing"},
        {RIP_OUTCOME_STOPPED, true, false, "verdict stopped", "Stopped", "1 of 1 track is whole."},
        {RIP_OUTCOME_FAILED, true, true, "verdict failed", "Failed", "The tray is open."},
    };
    for (const CASE& testCase : CASES)
    {
        RIP_REPORT report = SampleReport::MakeMarked({});
        if (testCase.bBad)
            report.aryPieces[0].aryEntries = {{1, 1500, 1, SECURE_RIP_LIMIT, 16, 5, 1}};
        report.eOutcome = testCase.eOutcome;
        report.bSecure = testCase.bSecure;
        report.strError = testCase.eOutcome == RIP_OUTCOME_FAILED ? "The tray is open." : "";
        const HtmlPage page(MakeHtmlReport(report));
        const auto aryVerdicts = page.Find("section", "class", testCase.pClass);
        ASSERT_EQ(1U, aryVerdicts.size()) << testCase.pClass;
        EXPECT_NE(std::string::npos, aryVerdicts[0].strText.find(testCase.pSentence)) << aryVerdicts[0].strText;
        EXPECT_EQ(testCase.pHeadline, page.Find("h2", "id", "verdict-h")[0].strText);
    }
}

TEST(ReportHtml, ADiscOf80MinutesStaysSmall)
{
    constexpr size_t MOST_BYTES = 1500 * 1000;
    for (const int nTracks : {1, 10, 20, 40, 99})
        EXPECT_LT(MakeHtmlReport(SampleReport::MakeLongest(nTracks)).size(), MOST_BYTES) << nTracks;
}

TEST(ReportHtml, AWornDiscStaysReadable)
{
    RIP_REPORT report = SampleReport::MakeLongest(20);
    for (RIP_PIECE& piece : report.aryPieces)
        for (int i = 0; i < 5000; ++i)
            piece.aryEntries.push_back(SampleReport::MakeEntry(piece, i * 3, 2, i % 2 == 0 ? 2 : 1, 3));
    EXPECT_LT(MakeHtmlReport(report).size(), 4000U * 1000U);
}
