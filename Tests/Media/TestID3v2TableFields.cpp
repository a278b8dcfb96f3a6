// The rows that every tag has, which are its own.

#include "ID3v2FieldTable.h"
#include "MP3Tag.h"
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{
using INDEXES = std::vector<int>;

INDEXES IndexesOf(const CID3v2Tag& tag, const wchar_t* pName)
{
    LyNumberArray<int>* pIndexes = nullptr;
    if (!tag.m_mapFieldIndexes.Lookup(pName, pIndexes))
        return {};
    return {pIndexes->begin(), pIndexes->end()};
}

CID3v2Field* MakeRow(const wchar_t* pName)
{
    return new CID3v2Field("TXXX", pName, L"A description", ID3V2_FIELD_WRITE_23, CID3v2Field::ANY_PICTURE_TYPE);
}

std::map<std::wstring, INDEXES> TableIndexes()
{
    std::map<std::wstring, INDEXES> mapIndexes;
    int nRow = 0;
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
        mapIndexes[row.pName].push_back(nRow++);
    return mapIndexes;
}
constexpr int TABLE_ROWS_OF_COMMENT = 3;
} // namespace

TEST(ID3v2TableFields, ANewTagFindsEachNameOfTheTable)
{
    const CID3v2Tag tag;
    const auto mapIndexes = TableIndexes();
    EXPECT_EQ(tag.m_mapFieldIndexes.GetCount(), static_cast<int>(mapIndexes.size()));
    for (const auto& [strName, indexes] : mapIndexes)
        EXPECT_EQ(IndexesOf(tag, strName.c_str()), indexes);
    LyString strName;
    LyNumberArray<int>* pIndexes = nullptr;
    int nNames = 0;
    for (LyPOSITION position = tag.m_mapFieldIndexes.GetStartPosition();
         tag.m_mapFieldIndexes.GetNextAssoc(position, strName, pIndexes); ++nNames)
        EXPECT_EQ(mapIndexes.count(static_cast<const wchar_t*>(strName)), 1u);
    EXPECT_EQ(nNames, tag.m_mapFieldIndexes.GetCount());
}

TEST(ID3v2TableFields, WhatATagDoesToItsRowsAndNamesNoOtherSees)
{
    const CID3v2Tag before;
    CID3v2Tag tag;
    tag.m_aryFields[0]->m_nFlags = 0;
    tag.m_aryFields[0]->m_strDescription = L"Changed";
    LyNumberArray<int>* pIndexes = nullptr;
    ASSERT_TRUE(tag.m_mapFieldIndexes.Lookup(L"Comment", pIndexes));
    (void)pIndexes->Add(0);
    EXPECT_TRUE(tag.m_mapFieldIndexes.RemoveKey(L"Artist"));
    const CID3v2Tag behind;
    for (const CID3v2Tag* pOther : {&before, &behind})
    {
        EXPECT_EQ(pOther->m_aryFields[0]->m_nFlags, GetID3v2FieldRows()[0].nFlags);
        EXPECT_EQ(pOther->m_aryFields[0]->m_strDescription, GetID3v2FieldRows()[0].pDescription);
        for (const auto& [strName, indexes] : TableIndexes())
            EXPECT_EQ(IndexesOf(*pOther, strName.c_str()), indexes);
    }
}

TEST(ID3v2TableFields, WhatOneTagAddsNoOtherHas)
{
    CID3v2Tag tag;
    const CID3v2Tag other;
    const int nRows = tag.m_aryFields.GetSize();
    const INDEXES comment = IndexesOf(tag, L"Comment");
    ASSERT_EQ(comment.size(), static_cast<size_t>(TABLE_ROWS_OF_COMMENT));
    tag.AddField(MakeRow(L"Comment"));
    tag.AddField(MakeRow(L"Comment"));
    tag.AddField(MakeRow(L"A name of its own"));
    INDEXES longer = comment;
    longer.insert(longer.end(), {nRows, nRows + 1});
    EXPECT_EQ(IndexesOf(tag, L"Comment"), longer);
    EXPECT_EQ(IndexesOf(tag, L"A name of its own"), INDEXES{nRows + 2});
    const CID3v2Tag later;
    for (const CID3v2Tag* pOther : {&other, &later})
    {
        EXPECT_EQ(pOther->m_aryFields.GetSize(), nRows);
        EXPECT_EQ(IndexesOf(*pOther, L"Comment"), comment);
        EXPECT_EQ(IndexesOf(*pOther, L"A name of its own"), INDEXES());
    }
}

TEST(ID3v2TableFields, RowsAndNamesMayBeTakenOutOfATag)
{
    {
        CID3v2Tag tag;
        tag.AddField(MakeRow(L"Comment"));
        tag.AddField(MakeRow(L"A name of its own"));
        EXPECT_TRUE(tag.m_mapFieldIndexes.RemoveKey(L"Artist"));
        EXPECT_FALSE(tag.m_mapFieldIndexes.Contains(L"Artist"));
        tag.m_aryFields.RemoveAt(0, 3);
        delete tag.m_aryFields.Detach(0);
        const std::unique_ptr<CID3v2Field> own(tag.m_aryFields.Detach(tag.m_aryFields.GetSize() - 1));
        EXPECT_EQ(own->m_strName, L"A name of its own");
        tag.m_mapFieldIndexes.RemoveAll();
        tag.m_aryFields.RemoveAll();
        EXPECT_EQ(tag.m_mapFieldIndexes.GetCount(), 0);
        tag.AddField(MakeRow(L"Comment"));
        EXPECT_EQ(IndexesOf(tag, L"Comment"), INDEXES{0});
    }
    const CID3v2Tag tag;
    for (const auto& [strName, indexes] : TableIndexes())
        EXPECT_EQ(IndexesOf(tag, strName.c_str()), indexes);
    EXPECT_EQ(tag.m_aryFields[0]->m_strName, GetID3v2FieldRows()[0].pName);
}

TEST(ID3v2TableFields, TheTableOfNamesGrowsWithATag)
{
    CID3v2Tag tag;
    const int nRows = tag.m_aryFields.GetSize();
    for (int i = 0; i < 2000; ++i)
        tag.AddField(MakeRow(LyString(L"Name ") + LyString().FromInt(i)));
    for (int i = 0; i < 2000; i += 97)
        EXPECT_EQ(IndexesOf(tag, LyString(L"Name ") + LyString().FromInt(i)), INDEXES{nRows + i});
    for (const auto& [strName, indexes] : TableIndexes())
        EXPECT_EQ(IndexesOf(tag, strName.c_str()), indexes);
}

TEST(ID3v2TableFields, TagsOnSeveralThreadsDoNotDisturbEachOther)
{
    std::vector<std::thread> aryThreads;
    for (int nThread = 0; nThread < 4; ++nThread)
        aryThreads.emplace_back(
            []
            {
                for (int i = 0; i < 50; ++i)
                {
                    CID3v2Tag tag;
                    EXPECT_TRUE(tag.Set(L"Name", L"A song"));
                    EXPECT_TRUE(tag.Set(L"Unknown", L"A text"));
                    tag.AddField(MakeRow(L"Comment"));
                    EXPECT_EQ(tag.GetSimple(L"Name"), L"A song");
                    EXPECT_EQ(IndexesOf(tag, L"Comment").size(), TABLE_ROWS_OF_COMMENT + 1u);
                }
            });
    for (std::thread& thread : aryThreads)
        thread.join();
}
