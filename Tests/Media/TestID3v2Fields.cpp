// The rows of a tag, and how a name finds its frames.

#include "FieldTags.h"
#include <gtest/gtest.h>

namespace
{
constexpr int ALL = ID3V2_FIELD_ANY_FLAGS;
constexpr int BOTH_VERSIONS = 0xC0000;

// The pairs of a name: the index of the row, and the frame's body.
std::vector<std::pair<int, std::string>> PairsOf(CID3v2Tag& tag, const wchar_t* pName, bool bCreate = false)
{
    LyPointerArray<CID3v2Field> aryFields;
    LyPointerArray<CID3v2Frame> aryFrames;
    const bool bFound = tag.FindFieldAndFrame(pName, aryFields, aryFrames, bCreate);
    EXPECT_EQ(aryFields.GetSize(), aryFrames.GetSize());
    EXPECT_EQ(bFound, aryFrames.GetSize() > 0);
    std::vector<std::pair<int, std::string>> pairs;
    for (int i = 0; i < aryFrames.GetSize(); ++i)
    {
        int nRow = 0;
        while (tag.m_aryFields[nRow] != aryFields[i])
            ++nRow;
        pairs.emplace_back(nRow, BodyOf(*aryFrames[i]));
    }
    return pairs;
}
using PAIRS = std::vector<std::pair<int, std::string>>;

class ID3v2Rows : public testing::Test
{
protected:
    ID3v2Rows() { RemoveRows(m_Tag); }
    CID3v2Tag m_Tag;
};
} // namespace

TEST(CID3v2Field, HoldsWhatItIsMadeOf)
{
    const CID3v2Field field("TALB", L"Album", L"Text", 0x50001, 7);
    EXPECT_EQ(std::string(field.m_ID, 4), "TALB");
    EXPECT_EQ(field.m_strName, L"Album");
    EXPECT_EQ(field.m_strDescription, L"Text");
    EXPECT_EQ(field.m_nFlags, 0x50001);
    EXPECT_EQ(field.m_nPictureType, 7);
}

TEST(CID3v2Field, FlagsHaveTheirPublishedValues)
{
    static_assert(ID3V2_FIELD_TOTAL == 0x1 && ID3V2_FIELD_GENRE == 0x2 && ID3V2_FIELD_GAIN == 0x4);
    static_assert(ID3V2_FIELD_PEAK == 0x8 && ID3V2_FIELD_LIST == 0x10 && ID3V2_FIELD_DATE == 0x20);
    static_assert(ID3V2_FIELD_BASE64 == 0x40 && ID3V2_FIELD_ORDERED == 0x10000 && ID3V2_FIELD_KEEP == 0x20000);
    static_assert(ID3V2_FIELD_WRITE_23 == 0x40000 && ID3V2_FIELD_WRITE_24 == 0x80000);
    static_assert(ID3V2_FIELD_ANY_DESCRIPTION == 0x100000);
}

TEST_F(ID3v2Rows, AddFieldKeepsTheIndexesOfANameInRowOrder)
{
    AddRow(m_Tag, "TIT2", L"One", L"", 0);
    AddRow(m_Tag, "TALB", L"Two", L"", 0);
    AddRow(m_Tag, "TPE1", L"One", L"", 0);
    m_Tag.AddField(nullptr);
    ASSERT_EQ(m_Tag.m_aryFields.GetSize(), 3);
    LyNumberArray<int>* pIndexes = nullptr;
    ASSERT_TRUE(m_Tag.m_mapFieldIndexes.Lookup(L"One", pIndexes));
    ASSERT_EQ(pIndexes->GetSize(), 2);
    EXPECT_EQ((*pIndexes)[0], 0);
    EXPECT_EQ((*pIndexes)[1], 2);
    ASSERT_TRUE(m_Tag.m_mapFieldIndexes.Lookup(L"Two", pIndexes));
    ASSERT_EQ(pIndexes->GetSize(), 1);
    EXPECT_EQ((*pIndexes)[0], 1);
}

TEST_F(ID3v2Rows, FindFieldWalksTheRowsOfANameAndMovesThePosition)
{
    AddRow(m_Tag, "TIT2", L"One", L"", 0x40000);
    AddRow(m_Tag, "TALB", L"Two", L"", 0x40000);
    AddRow(m_Tag, "TPE1", L"One", L"", 0x80000);
    int nPos = 0;
    EXPECT_EQ(m_Tag.FindField(L"One", nPos, false, ALL), m_Tag.m_aryFields[0]);
    EXPECT_EQ(nPos, 1);
    EXPECT_EQ(m_Tag.FindField(L"One", nPos, false, ALL), m_Tag.m_aryFields[2]);
    EXPECT_EQ(nPos, 3);
    EXPECT_EQ(m_Tag.FindField(L"One", nPos, false, ALL), nullptr);
    EXPECT_EQ(nPos, 3);
}

TEST_F(ID3v2Rows, FindFieldTakesRowsThatHaveAnyBitOfTheMask)
{
    AddRow(m_Tag, "TIT2", L"One", L"", 0x40001);
    AddRow(m_Tag, "TPE1", L"One", L"", 0x80000);
    AddRow(m_Tag, "TPE2", L"One", L"", 0);
    int nPos = 0;
    EXPECT_EQ(m_Tag.FindField(L"One", nPos, false, 0x80000), m_Tag.m_aryFields[1]);
    nPos = 0;
    EXPECT_EQ(m_Tag.FindField(L"One", nPos, false, BOTH_VERSIONS), m_Tag.m_aryFields[0]);
    nPos = 2;
    EXPECT_EQ(m_Tag.FindField(L"One", nPos, false, ALL), m_Tag.m_aryFields[2]);
    nPos = 0;
    EXPECT_EQ(m_Tag.FindField(L"One", nPos, false, 0x10), nullptr);
    EXPECT_EQ(nPos, 0);
    nPos = -5;
    EXPECT_EQ(m_Tag.FindField(L"One", nPos, false, ALL), m_Tag.m_aryFields[0]);
}

TEST_F(ID3v2Rows, NamesOfFieldsAreComparedWithTheirCase)
{
    AddRow(m_Tag, "TIT2", L"One", L"", 0);
    int nPos = 0;
    EXPECT_EQ(m_Tag.FindField(L"one", nPos, false, ALL), nullptr);
}

TEST_F(ID3v2Rows, AnUnknownNameGetsUserTextAndACommentOfOlderWriters)
{
    AddRow(m_Tag, "TIT2", L"One", L"", 0);
    int nPos = 0;
    CID3v2Field* pField = m_Tag.FindField(L"My Field", nPos, true, ALL);
    ASSERT_EQ(m_Tag.m_aryFields.GetSize(), 3);
    EXPECT_EQ(pField, m_Tag.m_aryFields[1]);
    EXPECT_EQ(nPos, 2);
    EXPECT_EQ(std::string(pField->m_ID, 4), "TXXX");
    EXPECT_EQ(pField->m_strName, L"My Field");
    EXPECT_EQ(pField->m_strDescription, L"My Field");
    EXPECT_EQ(pField->m_nFlags, BOTH_VERSIONS);
    EXPECT_EQ(pField->m_nPictureType, -1);
    const CID3v2Field* pSecond = m_Tag.FindField(L"My Field", nPos, true, ALL);
    EXPECT_EQ(pSecond, m_Tag.m_aryFields[2]);
    EXPECT_EQ(nPos, 3);
    EXPECT_EQ(std::string(pSecond->m_ID, 4), "COMM");
    EXPECT_EQ(pSecond->m_strName, L"My Field");
    EXPECT_EQ(pSecond->m_strDescription, L"Tune Hearth: My Field");
    EXPECT_EQ(pSecond->m_nFlags, 0);
    EXPECT_EQ(pSecond->m_nPictureType, -1);
    EXPECT_EQ(m_Tag.FindField(L"My Field", nPos, true, ALL), nullptr) << "nothing is made behind the first row";
    EXPECT_EQ(m_Tag.m_aryFields.GetSize(), 3);
}

TEST_F(ID3v2Rows, RowsAreMadeOnlyAtPositionZeroAndOnlyIfWanted)
{
    int nPos = 1;
    EXPECT_EQ(m_Tag.FindField(L"My Field", nPos, true, ALL), nullptr);
    nPos = 0;
    EXPECT_EQ(m_Tag.FindField(L"My Field", nPos, false, ALL), nullptr);
    EXPECT_EQ(m_Tag.m_aryFields.GetSize(), 0);
    EXPECT_EQ(nPos, 0);
}

TEST_F(ID3v2Rows, RowsThatAreMadeMayStillFailTheMask)
{
    int nPos = 0;
    EXPECT_EQ(m_Tag.FindField(L"My Field", nPos, true, ID3V2_FIELD_ORDERED), nullptr);
    EXPECT_EQ(m_Tag.m_aryFields.GetSize(), 2);
}

TEST_F(ID3v2Rows, YearIsNeverMadeWhateverItsCase)
{
    for (const wchar_t* pName : {L"Year", L"year", L"YEAR"})
    {
        int nPos = 0;
        EXPECT_EQ(m_Tag.FindField(pName, nPos, true, ALL), nullptr);
        LyPropertyMap map;
        EXPECT_FALSE(m_Tag.Get(pName, map));
        EXPECT_FALSE(m_Tag.Set(pName, L"1999"));
        EXPECT_EQ(m_Tag.m_aryFields.GetSize(), 0);
        EXPECT_EQ(m_Tag.m_aryFrames.GetSize(), 0);
    }
}

TEST_F(ID3v2Rows, FindFieldByFrameWalksTheTable)
{
    AddRow(m_Tag, "TIT2", L"Name", L"", 0x40000);
    AddRow(m_Tag, "TXXX", L"One", L"First", 0x40000);
    AddRow(m_Tag, "TXXX", L"Two", L"first", 0x10000);
    EXPECT_EQ(m_Tag.FindField("TIT2", L"", ALL), 0);
    EXPECT_EQ(m_Tag.FindField("TIT2", nullptr, ALL), 0) << "a null description is an empty one";
    EXPECT_EQ(m_Tag.FindField("TIT2", L"Other", ALL), -1);
    EXPECT_EQ(m_Tag.FindField("TXXX", L"FIRST", ALL), 1);
    EXPECT_EQ(m_Tag.FindField("TXXX", L"FIRST", 0x10000), 2);
    EXPECT_EQ(m_Tag.FindField("TXXX", L"FIRST", 0x80000), -1);
    EXPECT_EQ(m_Tag.FindField("TXXX", nullptr, ALL), -1);
    EXPECT_EQ(m_Tag.FindField("tit2", L"", ALL), -1);
    EXPECT_EQ(m_Tag.FindField(static_cast<const char*>(nullptr), L"", ALL), -1);
}

TEST_F(ID3v2Rows, ACommentOfAnUnexpectedDescriptionHasNoRow)
{
    AddRow(m_Tag, "COMM", L"Comment", L"", 0x10000);
    EXPECT_EQ(m_Tag.FindField("COMM", L"iTunNORM", 0x10000), -1);
    EXPECT_EQ(m_Tag.FindField("COMM", L"", 0x10000), 0);
}

TEST_F(ID3v2Rows, UserTextsAndCommentsMatchByTheirDescription)
{
    AddRow(m_Tag, "TXXX", L"Field", L"Mark", 0);
    AddRow(m_Tag, "COMM", L"Field", L"Mark", 0);
    AddRow(m_Tag, "USLT", L"Field", L"", 0);
    LoadTag(m_Tag, 4,
            {{"TXXX", Latin1("Else", "1")},
             {"TXXX", Latin1("MARK", "2")},
             {"COMM", Comment("", "3")},
             {"COMM", Comment("mark", "4")},
             {"USLT", Comment("Mark", "5")},
             {"USLT", Comment("", "6")}});
    EXPECT_EQ(PairsOf(m_Tag, L"Field"),
              (PAIRS{{0, Latin1("MARK", "2")}, {1, Comment("mark", "4")}, {2, Comment("", "6")}}));
}

TEST_F(ID3v2Rows, ARowMayTakeEveryDescription)
{
    AddRow(m_Tag, "USLT", L"Lyrics", L"", ID3V2_FIELD_ANY_DESCRIPTION);
    LoadTag(m_Tag, 4, {{"USLT", Comment("a", "1")}, {"USLT", Comment("", "2")}});
    EXPECT_EQ(PairsOf(m_Tag, L"Lyrics"), (PAIRS{{0, Comment("a", "1")}, {0, Comment("", "2")}}));
}

TEST_F(ID3v2Rows, PicturesMatchByTheirType)
{
    AddRow(m_Tag, "APIC", L"Cover", L"not looked at", 0, 3);
    AddRow(m_Tag, "APIC", L"Any", L"", 0);
    LoadTag(m_Tag, 4, {{"APIC", Picture(4, "b")}, {"APIC", Picture(3, "a")}});
    EXPECT_EQ(PairsOf(m_Tag, L"Cover"), (PAIRS{{0, Picture(3, "a")}}));
    EXPECT_EQ(PairsOf(m_Tag, L"Any"), (PAIRS{{1, Picture(4, "b")}, {1, Picture(3, "a")}}));
}

TEST_F(ID3v2Rows, OtherFramesMatchByTheirIDAlone)
{
    AddRow(m_Tag, "PRIV", L"Private", L"owner", 0);
    AddRow(m_Tag, "UFID", L"Opaque", L"x", 0);
    LoadTag(m_Tag, 4, {{"PRIV", Bytes("else\0data")}, {"UFID", "abc"}});
    EXPECT_EQ(PairsOf(m_Tag, L"Private"), (PAIRS{{0, Bytes("else\0data")}}));
    EXPECT_EQ(PairsOf(m_Tag, L"Opaque"), (PAIRS{{1, "abc"}}));
}

TEST_F(ID3v2Rows, PairsGoByRowsFirstAndThenByFrames)
{
    AddRow(m_Tag, "TPE2", L"Field", L"", 0);
    AddRow(m_Tag, "TPE1", L"Field", L"", 0);
    AddRow(m_Tag, "TPE1", L"Field", L"", 0);
    LoadTag(m_Tag, 4, {{"TPE1", Latin1("a")}, {"TPE2", Latin1("b")}, {"TPE1", Latin1("c")}});
    EXPECT_EQ(PairsOf(m_Tag, L"Field"),
              (PAIRS{{0, Latin1("b")}, {1, Latin1("a")}, {1, Latin1("c")}, {2, Latin1("a")}, {2, Latin1("c")}}));
}

TEST_F(ID3v2Rows, ASearchEmptiesTheArraysFirst)
{
    AddRow(m_Tag, "TPE1", L"Field", L"", 0);
    LoadTag(m_Tag, 4, {{"TPE1", Latin1("a")}});
    LyPointerArray<CID3v2Field> aryFields;
    LyPointerArray<CID3v2Frame> aryFrames;
    ASSERT_TRUE(m_Tag.FindFieldAndFrame(L"Field", aryFields, aryFrames, false));
    ASSERT_TRUE(m_Tag.FindFieldAndFrame(L"Field", aryFields, aryFrames, false));
    EXPECT_EQ(aryFrames.GetSize(), 1);
    EXPECT_FALSE(m_Tag.FindFieldAndFrame(L"None", aryFields, aryFrames, false));
    EXPECT_EQ(aryFields.GetSize(), 0);
    EXPECT_EQ(aryFrames.GetSize(), 0);
    EXPECT_EQ(m_Tag.m_aryFields.GetSize(), 1);
}
