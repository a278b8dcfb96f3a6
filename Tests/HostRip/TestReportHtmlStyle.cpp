#include "ReportHtmlParts.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace
{
using PALETTE = std::map<std::string, std::string>; // name and "#rrggbb"

// The colours of the style, for light and, where it says something else, for dark.
PALETTE GetPalette(bool bDark)
{
    const std::string strStyle = ReportHtml::STYLE;
    const size_t nDark = strStyle.find("prefers-color-scheme: dark");
    const size_t nDarkEnd = strStyle.find("}", nDark);
    const std::string strBlock =
        bDark ? strStyle.substr(nDark, nDarkEnd - nDark) : strStyle.substr(0, strStyle.find("}"));
    PALETTE palette;
    constexpr size_t COLOUR_CHARACTERS = 7;
    for (size_t nName = strBlock.find("--"); nName != std::string::npos; nName = strBlock.find("--", nName + 2))
    {
        const size_t nColon = strBlock.find(": ", nName);
        const size_t nEnd = strBlock.find(';', nName);
        if (nColon < nEnd && strBlock[nColon + 2] == '#' && nEnd - nColon - 2 == COLOUR_CHARACTERS)
            palette[strBlock.substr(nName + 2, nColon - nName - 2)] = strBlock.substr(nColon + 2, COLOUR_CHARACTERS);
    }
    return palette;
}

// WCAG 2.1: relative luminance, and the contrast of two of them.
double GetLuminance(const std::string& strColour)
{
    const double WEIGHTS[] = {0.2126, 0.7152, 0.0722};
    double fSum = 0;
    for (size_t i = 0; i < 3; ++i)
    {
        const double f = std::stoi(strColour.substr(1 + 2 * i, 2), nullptr, 16) / 255.0;
        fSum += WEIGHTS[i] * (f <= 0.04045 ? f / 12.92 : std::pow((f + 0.055) / 1.055, 2.4));
    }
    return fSum;
}
double GetContrast(const std::string& strA, const std::string& strB)
{
    const auto [fDark, fBright] = std::minmax({GetLuminance(strA), GetLuminance(strB)});
    return (fBright + 0.05) / (fDark + 0.05);
}
} // namespace

TEST(ReportHtmlStyle, ContrastIsCountedAsWCAGDoes)
{
    EXPECT_NEAR(21, GetContrast("#000000", "#ffffff"), 0.001);
    EXPECT_NEAR(4.54, GetContrast("#767676", "#ffffff"), 0.01);
}

TEST(ReportHtmlStyle, TextsStandOutInLightAndDark)
{
    for (const bool bDark : {false, true})
    {
        PALETTE palette = GetPalette(bDark);
        ASSERT_EQ(13U, palette.size()) << bDark;
        for (const char* pText : {"ink", "soft", "accent", "bad", "again", "good"})
            for (const char* pGround : {"paper", "card", "plot"})
                EXPECT_GE(GetContrast(palette[pText], palette[pGround]), 4.5) << pText << " on " << pGround << bDark;
    }
}

TEST(ReportHtmlStyle, CurvesAndMarksStandOutInLightAndDark)
{
    for (const bool bDark : {false, true})
    {
        PALETTE palette = GetPalette(bDark);
        EXPECT_GE(GetContrast(palette["wave"], palette["plot"]), 3) << bDark;
        EXPECT_GE(GetContrast(palette["wave"], palette["card"]), 3) << bDark;
        EXPECT_GE(GetContrast(palette["ink"], palette["area"]), 4.5) << "the short-term line on the momentary area";
    }
}

// Whatever begins a tag or an entity would have to be escaped in XML, and mustn't be in HTML.
TEST(ReportHtmlStyle, StyleAndScriptMeanTheSameInXML)
{
    for (const std::string strText : {ReportHtml::STYLE, ReportHtml::SCRIPT})
        EXPECT_EQ(std::string::npos, strText.find_first_of("<&"));
}

TEST(ReportHtmlStyle, FocusIsSeen)
{
    const std::string strStyle = ReportHtml::STYLE;
    EXPECT_NE(std::string::npos, strStyle.find(":focus-visible { outline: 3px solid"));
    EXPECT_NE(std::string::npos, strStyle.find("@media print"));
}
