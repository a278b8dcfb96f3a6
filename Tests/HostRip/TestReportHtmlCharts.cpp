#include "HtmlPage.h"
#include "ReportHtml.h"
#include "SampleReport.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <set>

TEST(ReportHtmlCharts, MarksStandAtTheirSectors)
{
    const HtmlPage page(
        MakeHtmlReport(SampleReport::MakeMarked({{1, 1500, 20, SECURE_RIP_LIMIT, 16, 5, 1},
                                                 {1, 2000, 27, SECURE_RIP_MATCHED, 3, 5, 1},
                                                 {1, 990, 30, SECURE_RIP_UNREAD, 0, 0, 1}, // 1000 to 1019 are ours
                                                 {1, 3000, 10, SECURE_RIP_UNREAD, 0, 0, 1}})));
    const auto aryBad = page.FindIn("bad", "rect");
    ASSERT_EQ(2U, aryBad.size());
    EXPECT_EQ("0.000%", aryBad[0].Get("x"));
    EXPECT_EQ("1.000%", aryBad[0].Get("width"));
    EXPECT_EQ("25.000%", aryBad[1].Get("x"));
    EXPECT_EQ("1.000%", aryBad[1].Get("width"));
    const auto aryAgain = page.FindIn("again", "rect");
    ASSERT_EQ(1U, aryAgain.size());
    EXPECT_EQ("50.000%", aryAgain[0].Get("x"));
    EXPECT_EQ("1.350%", aryAgain[0].Get("width"));
    EXPECT_EQ("In doubt: sectors 1500 to 1519, from 00:06.50 of the track; never twice alike",
              page.FindIn("bad", "title")[1].strText);
}

TEST(ReportHtmlCharts, DoubtDiffersFromReReadsByMoreThanColour)
{
    const HtmlPage page(MakeHtmlReport(SampleReport::MakeMarked(
        {{1, 1500, 20, SECURE_RIP_LIMIT, 16, 5, 1}, {1, 2000, 27, SECURE_RIP_REREAD, 1, 5, 1}})));
    const auto heads = [&](const char* pClass)
    {
        std::set<std::string> setHeads;
        for (const HTML_ELEMENT& element : page.FindIn(pClass, "use"))
            setHeads.insert(element.Get("href"));
        return setHeads;
    };
    EXPECT_EQ(std::set<std::string>{"#head-bad"}, heads("bad"));
    EXPECT_EQ(std::set<std::string>{"#head-again"}, heads("again"));
    EXPECT_EQ(1U, page.Find("path", "id", "head-bad").size());
    EXPECT_EQ(1U, page.Find("circle", "id", "head-again").size());
    EXPECT_NE(std::string::npos, page.GetText().find("in doubt: Track 1 (20)"));
}

TEST(ReportHtmlCharts, ManyMarksAreJoinedAndNoneIsLost)
{
    std::vector<SECURE_RIP_ENTRY> aryEntries;
    for (int i = 0; i < 1000; ++i)
        aryEntries.push_back({1, 1000 + 2 * i, 1, SECURE_RIP_UNREAD, 0, 0, i});
    const HtmlPage page(MakeHtmlReport(SampleReport::MakeMarked(aryEntries)));
    const auto aryRects = page.FindIn("bad", "rect");
    EXPECT_LE(aryRects.size(), 150U);
    for (int i = 0; i < 1000; ++i)
    {
        const double f = 0.1 * i; // percent
        EXPECT_TRUE(std::any_of(aryRects.begin(), aryRects.end(),
                                [&](const HTML_ELEMENT& rect)
                                {
                                    const double fX = std::stod(rect.Get("x"));
                                    return fX <= f + 1e-9 && f < fX + std::stod(rect.Get("width"));
                                }))
            << i;
    }
    EXPECT_NE(std::string::npos, page.GetText().find("800 places more stand in the log.")) << "200 rows are enough";
}

TEST(ReportHtmlCharts, WaveformIsTheEnvelopeOfTheSamples)
{
    RIP_REPORT report = SampleReport::MakeMarked({});
    report.aryPieces[0].nSectors = 20;
    report.aryPieces[0].series.nWaveSectors = 5;
    report.aryPieces[0].series.aryWave = {{-16384, 16384}, {-32768, 32767}, {0, 0}, {-8192, 24576}};
    const HtmlPage page(MakeHtmlReport(report));
    const auto aryPaths = page.Find("path", "id", "w0");
    ASSERT_EQ(1U, aryPaths.size());
    // 200 units from full scale to full scale: half of it is at 50 and 150, three quarters at 25, a quarter at 125.
    EXPECT_EQ("M0 50l1-50 1 100 1-75 1 0V125l-1 0-1-25-1 100-1-50z", aryPaths[0].Get("d"));
    EXPECT_EQ("0 0 4 200", page.Find("svg", "class", "series")[0].Get("viewBox"));
    EXPECT_EQ("0 0 4 200", page.Find("svg", "class", "thumb")[0].Get("viewBox"));
}

TEST(ReportHtmlCharts, WaveformOfAPieceThatBrokeOffEndsThere)
{
    RIP_REPORT report = SampleReport::MakeMarked({});
    report.aryPieces[0].nSectors = 20;
    report.aryPieces[0].series.nWaveSectors = 5;
    report.aryPieces[0].series.aryWave = {{-32768, 32767}};
    const HtmlPage page(MakeHtmlReport(report));
    EXPECT_EQ("M0 0l1 0V200l-1 0z", page.Find("path", "id", "w0")[0].Get("d"));
}

TEST(ReportHtmlCharts, SilenceHasNoLoudness)
{
    RIP_REPORT report = SampleReport::MakeMarked({});
    RIP_PIECE& piece = report.aryPieces[0];
    piece.nSectors = 30; // 0.4 s
    piece.series.aryMomentary.assign(4, -std::numeric_limits<float>::infinity());
    piece.series.aryShortTerm = {-5, -55, -300, 5};
    const double f = -std::numeric_limits<double>::infinity();
    piece.analysis = RIP_ANALYSIS{{f, f, f, 0, f, f, {}}, {}, {}, {}, {}, 0};
    const HtmlPage page(MakeHtmlReport(report));
    // 600 units from +5 to -55 LUFS.
    EXPECT_EQ("M0 100l1 500 1 0 1-600 1 0", page.Find("path", "data-name", "short-term")[0].Get("d"));
    EXPECT_EQ("M0 600l1 0 1 0 1 0 1 0V600l-1 0-1 0-1 0-1 0z", page.Find("path", "data-name", "momentary")[0].Get("d"));
    EXPECT_TRUE(page.Find("line", "class", "integrated").empty());
    EXPECT_NE(std::string::npos, page.GetText().find("integrated, −∞ LUFS"));
}

TEST(ReportHtmlCharts, IntegratedLoudnessIsALineAcross)
{
    RIP_REPORT report = SampleReport::MakeMarked({});
    RIP_PIECE& piece = report.aryPieces[0];
    piece.series.aryMomentary.assign(4, -20);
    piece.analysis.emplace();
    piece.analysis->loudness.fIntegrated = -25;
    const HtmlPage page(MakeHtmlReport(report));
    const auto aryLines = page.Find("line", "class", "integrated");
    ASSERT_EQ(1U, aryLines.size());
    EXPECT_EQ("64", aryLines[0].Get("y1")) << "-25 is half way from +5 to -55: 4 + 120 / 2";
}

TEST(ReportHtmlCharts, SpeedFillsTheBlocksThatItIsOf)
{
    RIP_REPORT report = SampleReport::MakeMarked({});
    RIP_PIECE& piece = report.aryPieces[0];
    piece.nSectors = 10;
    piece.series.arySpeed = {{1002, 10, 1}, {1004, 5, 2}, {1008, 20, 3}};
    const HtmlPage page(MakeHtmlReport(report));
    // 500 units for 21 times, 5 % more than the fastest: 10 is at 262, 5 at 381, 20 at 24. Two sectors were not read.
    EXPECT_EQ("M0 262l1 0 1 119 1 0 1-357 1 0 1 0 1 0 1 0", page.Find("path", "class", "line")[0].Get("d"));
}
