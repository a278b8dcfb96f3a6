// The HTML report as people see it: opened in a browser, in light and dark, on a wide and a narrow screen, with keys.

#include "HeadlessBrowser.h"
#include "ReportHtml.h"
#include "SampleReport.h"
#include <fstream>
#include <set>

namespace
{
constexpr int WIDE = 1280;
constexpr int NARROW = 400;
constexpr int HEIGHT = 900;

// Looks at a screenshot in base64: how many colours there are among its points, and how bright they are on average, of
// 255.
struct LOOK
{
    int nWidth = 0;
    int nColours = 0;
    double fBrightness = 0;
};

class ReportHtmlBrowser : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (HeadlessBrowser::IsThere())
            s_pBrowser = std::make_unique<HeadlessBrowser>();
    }
    static void TearDownTestSuite() { s_pBrowser.reset(); }

    void SetUp() override
    {
        if (s_pBrowser == nullptr)
            GTEST_SKIP() << "There is no chromium.";
        s_pBrowser->SetScreen(WIDE, HEIGHT, "light");
    }

    HeadlessBrowser& Browser() { return *s_pBrowser; }

    void Show(const RIP_REPORT& report)
    {
        const std::string strFile = m_Folder.Write("report.html", MakeHtmlReport(report));
        Browser().ForgetEvents();
        Browser().Open("file://" + strFile);
    }

    LOOK Look()
    {
        const std::string strPicture = Browser().TakeScreenshot();
        EXPECT_FALSE(strPicture.empty());
        Browser().ForgetEvents();
        Browser().Open("about:blank"); // where no policy forbids a picture
        const HeadlessBrowser::JSON look = Browser().Evaluate(
            "(async () => { const image = new Image(); image.src = 'data:image/png;base64," + strPicture +
            "'; await image.decode(); const canvas = document.createElement('canvas');"
            "canvas.width = image.width; canvas.height = image.height;"
            "const context = canvas.getContext('2d'); context.drawImage(image, 0, 0);"
            "const data = context.getImageData(0, 0, image.width, image.height).data;"
            "const colours = new Set(); let sum = 0;"
            "for (let i = 0; i < data.length; i += 4) { sum += data[i] + data[i + 1] + data[i + 2];"
            "colours.add(data[i] << 16 | data[i + 1] << 8 | data[i + 2]); }"
            "return [image.width, colours.size, sum / data.length * 4 / 3]; })()");
        EXPECT_TRUE(look.is_array()) << look.dump();
        return look.is_array() ? LOOK{look[0], look[1], look[2]} : LOOK();
    }

    static std::unique_ptr<HeadlessBrowser> s_pBrowser;
    TempFolder m_Folder;
};
std::unique_ptr<HeadlessBrowser> ReportHtmlBrowser::s_pBrowser;

constexpr int LEAST_COLOURS = 50; // with the soft edges of letters and curves
} // namespace

TEST_F(ReportHtmlBrowser, IsBrightInLightAndDarkInDark)
{
    Show(SampleReport::Make());
    const LOOK light = Look();
    Browser().SetScreen(WIDE, HEIGHT, "dark");
    Show(SampleReport::Make());
    const LOOK dark = Look();
    EXPECT_EQ(WIDE, light.nWidth);
    EXPECT_GT(light.nColours, LEAST_COLOURS);
    EXPECT_GT(dark.nColours, LEAST_COLOURS);
    EXPECT_GT(light.fBrightness, 200);
    EXPECT_LT(dark.fBrightness, 70);
}

TEST_F(ReportHtmlBrowser, LoadsNothingAndBreaksNoPolicy)
{
    Show(SampleReport::Make());
    EXPECT_EQ(1U, Browser().GetEvents("Network.requestWillBeSent").size()) << "the page itself";
    EXPECT_TRUE(Browser().GetEvents("Log.entryAdded").empty());
    EXPECT_TRUE(Browser().GetEvents("Runtime.exceptionThrown").empty());
    EXPECT_TRUE(Browser().GetEvents("Runtime.consoleAPICalled").empty());
    EXPECT_EQ("rgb(246, 246, 243)", Browser().Evaluate("getComputedStyle(document.body).backgroundColor"));
    EXPECT_EQ(1 + 2 * 9, Browser().Evaluate("document.querySelectorAll('svg.chart[tabindex=\"0\"]').length"))
        << "the script runs";
}

TEST_F(ReportHtmlBrowser, HostileTextsDoNothing)
{
    RIP_REPORT report = SampleReport::Make({3000}, false);
    report.disc.strTitle =
        "</title></style><script>document.title = 'broken'</script><svg onload=\"document.title = 'broken'\">";
    report.aryPieces[0].strTitle = report.disc.strPerformer = report.disc.strTitle;
    report.aryNotes = {report.disc.strTitle};
    Show(report);
    EXPECT_EQ(1, Browser().Evaluate("document.scripts.length"));
    EXPECT_EQ(report.disc.strTitle, Browser().Evaluate("document.querySelector('h1').textContent"));
    EXPECT_NE("broken", Browser().Evaluate("document.title"));
    EXPECT_TRUE(Browser().GetEvents("Log.entryAdded").empty());
}

TEST_F(ReportHtmlBrowser, TabReachesEveryControlAndShowsWhereItIs)
{
    Show(SampleReport::Make({4000, 3000}));
    const int nControls = Browser().Evaluate(
        "document.querySelectorAll('a[href], summary, [tabindex=\"0\"]').forEach((e, i) => e.dataset.control = i),"
        "document.querySelectorAll('[data-control]').length");
    ASSERT_GT(nControls, 15);
    std::set<int> setReached;
    for (int i = 0; i < nControls; ++i)
    {
        Browser().PressTab();
        const HeadlessBrowser::JSON focus = Browser().Evaluate(
            "(() => { const e = document.activeElement, s = getComputedStyle(e);"
            "return [Number(e.dataset.control), e.className.baseVal === undefined ? e.className : 'svg',"
            "s.outlineStyle, parseFloat(s.outlineWidth), e.getBoundingClientRect().left >= 0]; })()");
        ASSERT_TRUE(focus.is_array() && focus[0].is_number()) << i << ": " << focus.dump();
        setReached.insert(focus[0].get<int>());
        if (i == 0)
        {
            EXPECT_EQ("skip", focus[1]);
        }
        EXPECT_EQ("solid", focus[2]) << focus.dump();
        EXPECT_GE(focus[3].get<double>(), 2) << focus.dump();
        EXPECT_TRUE(focus[4].get<bool>()) << "out of sight: " << focus.dump();
    }
    EXPECT_EQ(static_cast<size_t>(nControls), setReached.size());
}

TEST_F(ReportHtmlBrowser, TheSkipLinkLeadsToTheTracks)
{
    Show(SampleReport::Make());
    Browser().PressTab();
    Browser().Press("Enter", 13, "\r");
    EXPECT_EQ("tracks",
              Browser().Evaluate("new Promise(done => setTimeout(() => done(document.activeElement.id), 50))"));
}

TEST_F(ReportHtmlBrowser, EnterFoldsATrack)
{
    Show(SampleReport::Make());
    EXPECT_EQ(true, Browser().Evaluate("document.querySelector('#t2').open"));
    (void)Browser().Evaluate("document.querySelector('#t2 > summary').focus()");
    Browser().Press("Enter", 13, "\r");
    EXPECT_EQ(false, Browser().Evaluate("document.querySelector('#t2').open"));
    Browser().Press("Enter", 13, "\r");
    EXPECT_EQ(true, Browser().Evaluate("document.querySelector('#t2').open"));
}

TEST_F(ReportHtmlBrowser, ArrowsTellTheValuesOfAChart)
{
    RIP_REPORT report = SampleReport::MakeMarked({}); // 2000 sectors
    RIP_PIECE& piece = report.aryPieces[0];
    piece.series.nWaveSectors = 10;
    piece.series.aryWave.assign(200, {-16384, 8192});
    piece.series.aryMomentary.assign(267, -15);
    piece.series.aryShortTerm.assign(267, -25);
    piece.series.arySpeed = {{3000, 10, 1}};
    Show(report);
    const auto tell = [&](const std::string& strChart)
    {
        (void)Browser().Evaluate("document.querySelector('[aria-labelledby=\"" + strChart + "\"]').focus()");
        Browser().Press("End", 35);
        Browser().Press("PageDown", 34);
        return Browser().Evaluate("document.activeElement.getAttribute('aria-valuetext')");
    };
    EXPECT_EQ("0:24 · peaks −6.0 dBFS", tell("wave0-t"));
    EXPECT_EQ("0:24 · momentary −15.0 LUFS · short-term −25.0 LUFS", tell("loud0-t"));
    EXPECT_EQ("0:37 · speed 10.0×", tell("speed-t")) << "from 1000 sectors to 3000";
    EXPECT_EQ(1, Browser().Evaluate("document.querySelectorAll('.cursor').length"));
}

TEST_F(ReportHtmlBrowser, MarksAreDrawnWhereTheirSectorsAre)
{
    Show(SampleReport::MakeMarked({{1, 1500, 200, SECURE_RIP_LIMIT, 16, 5, 1}})); // of 1000 to 2999
    const HeadlessBrowser::JSON place = Browser().Evaluate(
        "(() => { const frame = document.querySelector('#t0 .frame').getBoundingClientRect();"
        "const mark = document.querySelector('#t0 g.bad rect').getBoundingClientRect();"
        "return [(mark.left - frame.left) / frame.width, mark.width / frame.width, mark.height, frame.height]; })()");
    EXPECT_NEAR(0.25, place[0].get<double>(), 0.002);
    EXPECT_NEAR(0.10, place[1].get<double>(), 0.003);
    EXPECT_NEAR(place[3].get<double>(), place[2].get<double>(), 2);
}

TEST_F(ReportHtmlBrowser, FitsEveryScreen)
{
    for (const int nWidth : {320, NARROW, 768, WIDE, 2560})
    {
        Browser().SetScreen(nWidth, HEIGHT, "light");
        Show(SampleReport::Make());
        EXPECT_LE(Browser().Evaluate("document.documentElement.scrollWidth").get<int>(), nWidth);
        EXPECT_LE(Browser()
                      .Evaluate("Math.max(...Array.from(document.querySelectorAll('.chart'), "
                                "e => e.getBoundingClientRect().right))")
                      .get<double>(),
                  nWidth);
        EXPECT_GT(Look().nColours, LEAST_COLOURS) << nWidth;
    }
}

TEST_F(ReportHtmlBrowser, IsReadWithoutTheScript)
{
    (void)Browser().Call("Emulation.setScriptExecutionDisabled", {{"value", true}});
    Show(SampleReport::Make());
    const std::string strPicture = Browser().TakeScreenshot();
    (void)Browser().Call("Emulation.setScriptExecutionDisabled", {{"value", false}});
    EXPECT_GT(strPicture.size(), 50000U);
    EXPECT_EQ(0, Browser().Evaluate("document.querySelectorAll('[tabindex=\"0\"][role=\"slider\"]').length"))
        << "nothing takes the focus that does nothing";
}

TEST_F(ReportHtmlBrowser, GoesToPaper)
{
    Show(SampleReport::Make());
    const std::string strPDF = Browser().Call("Page.printToPDF", {{"printBackground", true}}).value("data", "");
    EXPECT_TRUE(strPDF.starts_with("JVBERi")) << "%PDF in base64";
    EXPECT_GT(strPDF.size(), 50000U);
}
