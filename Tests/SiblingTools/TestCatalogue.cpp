#include "Catalogue.h"

#include "CatalogueBytes.h"
#include "TempFolder.h"
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace
{
const std::string s_strGood = CatalogueBytes::Make(CatalogueBytes::GetTexts());

struct BAD_CATALOGUE
{
    const char* pName;
    std::string strFile;
    const char* pReason;
};

std::string MakeWithHeader(const char* pHeader) { return CatalogueBytes::Make({{"", pHeader}, {"a", "b"}}); }

std::vector<BAD_CATALOGUE> GetBadCatalogues()
{
    const CatalogueBytes::Texts aryTexts = CatalogueBytes::GetTexts();
    return {
        {"empty", "", "it is too short"},
        {"short", s_strGood.substr(0, 27), "it is too short"},
        {"magic", CatalogueBytes::Patch(s_strGood, 0, 0x950412df), "it is no message catalogue"},
        {"revision", CatalogueBytes::Patch(s_strGood, 4, 2U << 16), "its revision is not known"},
        {"count", CatalogueBytes::Patch(s_strGood, 8, 0x20000000), "its tables do not fit into it"},
        {"count, wrapping", CatalogueBytes::Patch(s_strGood, 8, 0xffffffff), "its tables do not fit into it"},
        {"originals", CatalogueBytes::Patch(s_strGood, 12, 0xfffffff0), "its tables do not fit into it"},
        {"translations", CatalogueBytes::Patch(s_strGood, 16, 0xfffffff0), "its tables do not fit into it"},
        {"length", CatalogueBytes::Patch(s_strGood, 28 + 8, 0xffffffff), "a text does not lie in it"},
        {"offset", CatalogueBytes::Patch(s_strGood, 28 + 12, 0xffffffff), "a text does not lie in it"},
        {"no zero behind", CatalogueBytes::Patch(s_strGood, 28 + 8, 6), "a text does not lie in it"},
        {"cut", s_strGood.substr(0, s_strGood.size() - 1), "a text does not lie in it"},
        {"not sorted", CatalogueBytes::Make({aryTexts[0], aryTexts[2], aryTexts[1]}), "its texts are not sorted"},
        {"twice", CatalogueBytes::Make({aryTexts[0], aryTexts[1], aryTexts[1]}), "its texts are not sorted"},
        {"no UTF-8", CatalogueBytes::Make({aryTexts[0], {"a", "\xFC"}}), "a text is no UTF-8"},
        {"no header", CatalogueBytes::Make({{"a", "b"}}), "its character set is not UTF-8"},
        {"no texts", CatalogueBytes::Make({}), "its character set is not UTF-8"},
        {"other charset", MakeWithHeader("Content-Type: text/plain; charset=ISO-8859-1\n"),
         "its character set is not UTF-8"},
        {"longer charset", MakeWithHeader("Content-Type: text/plain; charset=UTF-8x\n"),
         "its character set is not UTF-8"},
    };
}
} // namespace

TEST(Catalogue, FindsEachTextInEitherByteOrder)
{
    for (const bool bBigEndian : {false, true})
    {
        Catalogue catalogue;
        std::string strReason;
        ASSERT_TRUE(catalogue.Load(CatalogueBytes::Make(CatalogueBytes::GetTexts(), bBigEndian), strReason))
            << strReason;
        EXPECT_EQ(catalogue.GetCount(), 4);
        EXPECT_EQ(catalogue.Find("Reading"), "Lesen");
        EXPECT_EQ(catalogue.Find("size"), "Gr\xC3\xB6\xC3\x9F"
                                          "e");
        EXPECT_EQ(catalogue.Find("reading"), "");
        EXPECT_EQ(catalogue.Find("Readin"), "");
        EXPECT_EQ(catalogue.Find("zzz"), "");
        EXPECT_EQ(catalogue.GetAt(1), std::make_pair(std::string_view("Reading"), std::string_view("Lesen")));
        EXPECT_EQ(catalogue.GetAt(4).first, "");
        EXPECT_EQ(catalogue.GetAt(-1).first, "");
    }
}

TEST(Catalogue, TextWithAPluralIsKnownByItsSingular)
{
    Catalogue catalogue;
    std::string strReason;
    ASSERT_TRUE(catalogue.Load(s_strGood, strReason));
    EXPECT_EQ(catalogue.Find("one file"), "eine Datei");
}

TEST(Catalogue, CharsetMayHaveEitherCase)
{
    Catalogue catalogue;
    std::string strReason;
    EXPECT_TRUE(catalogue.Load(MakeWithHeader("Content-Type: text/plain; charset=utf-8\nX: y\n"), strReason))
        << strReason;
    EXPECT_TRUE(catalogue.Load(MakeWithHeader("Content-Type: text/plain; charset=UTF-8"), strReason)) << strReason;
}

TEST(Catalogue, BrokenFileGivesNothingAndAReason)
{
    for (const BAD_CATALOGUE& each : GetBadCatalogues())
    {
        Catalogue catalogue;
        std::string strReason;
        EXPECT_FALSE(catalogue.Load(each.strFile, strReason)) << each.pName;
        EXPECT_EQ(strReason, each.pReason) << each.pName;
        EXPECT_EQ(catalogue.GetCount(), 0);
        EXPECT_EQ(catalogue.Find("Reading"), "");
        EXPECT_EQ(catalogue.Find(""), "");
    }
}

TEST(Catalogue, CutAtEachByteIsBroken)
{
    for (size_t nBytes = 0; nBytes < s_strGood.size(); ++nBytes)
    {
        Catalogue catalogue;
        std::string strReason;
        EXPECT_FALSE(catalogue.Load(s_strGood.substr(0, nBytes), strReason)) << nBytes;
    }
}

TEST(CatalogueOpen, TellsAMissingFileFromABrokenOne)
{
    const TempFolder folder;
    Catalogue catalogue;
    std::string strReason;
    EXPECT_EQ(catalogue.Open(folder.GetPath("none.mo"), strReason), Catalogue::NOT_THERE);
    EXPECT_EQ(catalogue.Open(folder.Write("file", "") + "/none.mo", strReason), Catalogue::NOT_THERE);
    EXPECT_EQ(strReason, "");
    EXPECT_EQ(catalogue.Open(folder.Write("good.mo", s_strGood), strReason), Catalogue::LOADED);
    EXPECT_EQ(catalogue.Find("Reading"), "Lesen");
    EXPECT_EQ(catalogue.Open(folder.Write("bad.mo", "no catalogue, but long enough"), strReason), Catalogue::BROKEN);
    EXPECT_EQ(strReason, "it is no message catalogue");
    EXPECT_EQ(catalogue.GetCount(), 0);
}

TEST(CatalogueOpen, RefusesWhatIsNoOrdinaryFileOrTooLarge)
{
    const TempFolder folder;
    Catalogue catalogue;
    std::string strReason;
    EXPECT_EQ(catalogue.Open(folder.GetPath(), strReason), Catalogue::BROKEN);
    ASSERT_EQ(mkfifo(folder.GetPath("pipe").c_str(), 0600), 0);
    EXPECT_EQ(catalogue.Open(folder.GetPath("pipe"), strReason), Catalogue::BROKEN); // and does not wait for a writer
    std::filesystem::resize_file(folder.Write("large", s_strGood), Catalogue::MAX_BYTES + 1);
    EXPECT_EQ(catalogue.Open(folder.GetPath("large"), strReason), Catalogue::BROKEN);
    EXPECT_EQ(strReason, "File too large");
}
