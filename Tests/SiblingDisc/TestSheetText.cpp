#include "ImageFiles.h"
#include "SheetText.h"
#include <gtest/gtest.h>

namespace
{
struct MSF_CASE
{
    const char* m_pTime;
    int m_nSectors;
};

const MSF_CASE s_aryMSFCases[] = {
    {"00:00:00", 0},
    {"00:00:74", 74},
    {"00:01:00", 75},
    {"01:00:00", 4500},
    {"99:59:74", 449999},
    {"0:2:0", 150},
    {"3:4:5", 13805},
    {"", -1},
    {"00:00", -1},
    {"00:00:75", -1},
    {"00:60:00", -1},
    {"100:00:00", -1},
    {"-1:00:00", -1},
    {"00:00:00:00", -1},
    {"00:00:0a", -1},
    {"::", -1},
    {"00:00:", -1},
    {":00:00", -1},
    {"00 :00:00", -1},
    {"000:00:00", -1},
    {"12345678901:00:00", -1},
};

TEST(ParseMSF, KeepsToTheRangesOfMinutesSecondsAndFrames)
{
    for (const MSF_CASE& row : s_aryMSFCases)
        EXPECT_EQ(row.m_nSectors, ParseMSF(row.m_pTime)) << row.m_pTime;
}

TEST(FormatSheetTime, IsReadBack)
{
    EXPECT_EQ("03:04:05", FormatSheetTime(13805));
    for (int nSectors : {0, 74, 75, 4499, 4500, 449999})
        EXPECT_EQ(nSectors, ParseMSF(FormatSheetTime(nSectors)));
}

TEST(ParseDecimal, TakesDigitsUpToTheMaximum)
{
    EXPECT_EQ(99, ParseDecimal("99", 99));
    EXPECT_EQ(7, ParseDecimal("007", 99));
    EXPECT_EQ(-1, ParseDecimal("100", 99));
    EXPECT_EQ(-1, ParseDecimal("", 99));
    EXPECT_EQ(-1, ParseDecimal("+1", 99));
    EXPECT_EQ(-1, ParseDecimal("1 ", 99));
    EXPECT_EQ(-1, ParseDecimal("9999999999999999999999", 1LL << 60));
}

struct CODE_CASE
{
    const char* m_pCode;
    bool m_bValid;
    const char* m_pResult;
};

TEST(NormaliseMCN, GivesThirteenDigitsOrNothing)
{
    const CODE_CASE aryCases[] = {{"1234567890123", true, "1234567890123"},
                                  {"123456789012", true, "0123456789012"}, // a UPC
                                  {"0-1234-5678901-2", true, "0123456789012"},
                                  {"0000000000000", true, ""}, // what programs write for "none"
                                  {"", true, ""},
                                  {"12345", false, ""},
                                  {"12345678901234", false, ""},
                                  {"123456789012X", false, ""}};
    for (const CODE_CASE& row : aryCases)
    {
        bool bValid = !row.m_bValid;
        EXPECT_EQ(row.m_pResult, NormaliseMCN(row.m_pCode, bValid)) << row.m_pCode;
        EXPECT_EQ(row.m_bValid, bValid) << row.m_pCode;
    }
}

TEST(NormaliseISRC, GivesTwelveCharactersOrNothing)
{
    const CODE_CASE aryCases[] = {{"USS1Z9900001", true, "USS1Z9900001"},
                                  {"us-s1z-99-00001", true, "USS1Z9900001"},
                                  {"000000000000", true, ""},
                                  {"", true, ""},
                                  {"USS1Z990000", false, ""},
                                  {"USS1Z99000012", false, ""},
                                  {"USS1ZA900001", false, ""}, // a letter in the year
                                  {"US$1Z9900001", false, ""}};
    for (const CODE_CASE& row : aryCases)
    {
        bool bValid = !row.m_bValid;
        EXPECT_EQ(row.m_pResult, NormaliseISRC(row.m_pCode, bValid)) << row.m_pCode;
        EXPECT_EQ(row.m_bValid, bValid) << row.m_pCode;
    }
}

TEST(FormatSheetError, NamesTheLineWhereThereIsOne)
{
    EXPECT_EQ("/a/b.cue, line 3: it is wrong; mend it.", FormatSheetError("/a/b.cue", {3, "it is wrong; mend it"}));
    EXPECT_EQ("/a/b.cue: it is wrong; mend it.", FormatSheetError("/a/b.cue", {0, "it is wrong; mend it"}));
}

TEST(QuoteWord, IsShortAndPrintable)
{
    EXPECT_EQ("\"a b\"", QuoteWord("a b"));
    EXPECT_EQ("\"a?b\"", QuoteWord("a\nb"));
    EXPECT_EQ("\"" + std::string(60, 'x') + "...\"", QuoteWord(std::string(1000, 'x')));
    EXPECT_EQ("\"" + std::string(59, 'x') + "...\"", QuoteWord(std::string(59, 'x') + "\xC3\xA4yz"));
}

TEST(LoadSheetText, DecodesWhatItLoads)
{
    TempFolder folder;
    std::string strText;
    std::string strError;
    EXPECT_TRUE(LoadSheetText(folder.Write("a.cue", "TITLE \"F\xFCr\"\n\x1A"), strText, strError));
    EXPECT_EQ("TITLE \"F\xC3\xBCr\"\n", strText); // and the end mark of old editors is gone
}

TEST(LoadSheetText, SaysWhyItCannot)
{
    using namespace std::string_literals;
    TempFolder folder;
    const std::pair<std::string, const char*> aryCases[] = {
        {folder.GetPath("missing.cue"), "missing.cue: the file does not exist; check its path."},
        {folder.GetPath(), ": this is not a plain file; name the .cue, .toc, .ccd or .nrg file of the image."},
        {folder.Write("empty.cue", ""), "empty.cue: the file is empty; copy it again from where it came from."},
        {folder.Write("blank.cue", "\xEF\xBB\xBF \r\n\0"s), "blank.cue: the file is empty;"},
        {folder.Write("binary.cue", "FILE\0x"s),
         "this is not the sheet of a disc image; open the .cue, .toc, .ccd or .nrg file"},
        {folder.Write("large.cue", std::string(1024 * 1024 + 1, ' ')),
         "the file is too large for the sheet of an image"}};
    for (const auto& [strPath, pText] : aryCases)
    {
        std::string strText;
        std::string strError;
        EXPECT_FALSE(LoadSheetText(strPath, strText, strError)) << strPath;
        EXPECT_NE(std::string::npos, strError.find(pText)) << strError;
        EXPECT_EQ(0u, strError.find(folder.GetPath())) << strError; // one sentence, and the file is its subject
        EXPECT_EQ('.', strError.back());
    }
}
} // namespace
