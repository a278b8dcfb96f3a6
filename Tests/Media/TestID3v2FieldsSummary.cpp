// A frame as one line for a reader.

#include "FieldTags.h"
#include "ID3v2Properties.h"
#include <gtest/gtest.h>

namespace
{
std::wstring SummaryOf(const std::string& strID, const std::string& strBody)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{strID, strBody}});
    return Wide(tag.GetFrameSummary(0));
}
} // namespace

TEST(ID3v2FieldsSummary, AnIndexOutsideIsSaid)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"TIT2", Latin1("a")}});
    for (const int nIndex : {-1, 1, 1000})
        EXPECT_EQ(tag.GetFrameSummary(nIndex), L"<invalid frame>");
}

TEST(ID3v2FieldsSummary, IsIDLabelAndValue)
{
    EXPECT_EQ(SummaryOf("TIT2", Latin1("abc")), L"TIT2 (Name): abc");
    EXPECT_EQ(SummaryOf("TXXX", Latin1("Mark", "abc")), L"TXXX (Mark): abc");
    EXPECT_EQ(SummaryOf("COMM", Comment("", "abc")), L"COMM (Comment): abc");
    EXPECT_EQ(SummaryOf("TXXX", Latin1("", "abc")), L"TXXX: abc") << "neither description nor row";
    EXPECT_EQ(SummaryOf("TZZZ", Latin1("abc")), L"TZZZ: abc");
    EXPECT_EQ(SummaryOf("TRCK", Latin1("3/12")), L"TRCK (Track #): 3/12");
}

TEST(ID3v2FieldsSummary, TheLabelIsTheDescriptionEvenIfARowHasIt)
{
    EXPECT_EQ(SummaryOf("TXXX", Latin1("catalognumber", "1")), L"TXXX (catalognumber): 1");
}

TEST(ID3v2FieldsSummary, TheLabelIsTrimmedAndLosesThePrefixOfOlderWriters)
{
    EXPECT_EQ(SummaryOf("COMM", Comment("  Mark ", "1")), L"COMM (Mark): 1");
    EXPECT_EQ(SummaryOf("COMM", Comment("Tune Hearth: Mark", "1")), L"COMM (Mark): 1");
    EXPECT_EQ(SummaryOf("COMM", Comment(" Tune Hearth: Mark", "1")), L"COMM (Mark): 1");
    EXPECT_EQ(SummaryOf("COMM", Comment("A Tune Hearth: B", "1")), L"COMM (A Tune Hearth: B): 1");
    EXPECT_EQ(SummaryOf("COMM", Comment("   ", "1")), L"COMM: 1");
}

TEST(ID3v2FieldsSummary, ALongLabelIsCut)
{
    EXPECT_EQ(SummaryOf("TXXX", Latin1("12345678901234567890", "a")), L"TXXX (12345678901234567890): a");
    EXPECT_EQ(SummaryOf("TXXX", Latin1("123456789012345678901", "a")), L"TXXX (123456789012345678..): a");
    EXPECT_EQ(SummaryOf("TXXX", Latin1("Tune Hearth: 12345678901234567890", "a")), L"TXXX (12345678901234567890): a");
}

TEST(ID3v2FieldsSummary, APictureHasItsType)
{
    EXPECT_EQ(SummaryOf("APIC", Picture(3, "abc")), L"APIC (Image File) (Cover): YWJj");
    EXPECT_EQ(SummaryOf("APIC", Picture(4, "abc")), L"APIC (Image File) (4): YWJj");
    EXPECT_EQ(SummaryOf("APIC", Bytes("\0image/png\0\x03"
                                      "Front\0abc")),
              L"APIC (Front) (Cover): YWJj");
}

TEST(ID3v2FieldsSummary, AnOpaqueFrameHasNoValue) { EXPECT_EQ(SummaryOf("UFID", "abc"), L"UFID: <unknown data type>"); }

TEST(ID3v2FieldsSummary, ALongValueIsNotShown)
{
    EXPECT_EQ(SummaryOf("TIT2", Latin1(std::string(128, 'x'))), L"TIT2 (Name): " + std::wstring(128, L'x'));
    EXPECT_EQ(SummaryOf("TIT2", Latin1(std::string(129, 'x'))), L"TIT2 (Name): <too large to display>");
}

TEST(ID3v2FieldsSummary, ALargePictureIsNotShownAndNoTextIsMadeOfIt)
{
    EXPECT_EQ(SummaryOf("APIC", Picture(3, std::string(90, 0))),
              L"APIC (Image File) (Cover): " + std::wstring(64, L'A') + L"\\n" + std::wstring(56, L'A'));
    for (const int nBytes : {95, 96, 97, 1'000, 100'000}) // 95 bytes are 128 characters and a line end
    {
        CID3v2Tag tag;
        LoadTag(tag, 4, {{"APIC", Picture(3, std::string(static_cast<size_t>(nBytes), 0))}});
        EXPECT_EQ(Wide(tag.GetFrameSummary(0)), L"APIC (Image File) (Cover): <too large to display>") << nBytes;
        const auto* pProperties = static_cast<const ID3v2Properties*>(tag.m_aryFrames[0]->m_Properties.m_pProperties);
        if (nBytes > 96)
        {
            EXPECT_EQ(pProperties->GetBinaryValueBytes(), nBytes) << "a text was made";
        }
    }
}

TEST(ID3v2FieldsSummary, LineEndsAreShown)
{
    EXPECT_EQ(SummaryOf("TIT2", Latin1("a\r\nb\nc\rd")), L"TIT2 (Name): a\\nb\\nc\rd");
}

TEST(ID3v2FieldsSummary, WordsAreTranslated)
{
    FieldTools tools;
    tools.m_strTranslationMark = L"!";
    CID3v2Tag tag;
    EXPECT_EQ(tag.GetFrameSummary(0), L"!<invalid frame>");
    EXPECT_EQ(SummaryOf("UFID", "abc"), L"UFID: !<unknown data type>");
    EXPECT_EQ(SummaryOf("TIT2", Latin1(std::string(129, 'x'))), L"TIT2 (Name): !<too large to display>");
    EXPECT_EQ(SummaryOf("APIC", Picture(3, "abc")), L"APIC (Image File)! (!Cover): YWJj");
}
