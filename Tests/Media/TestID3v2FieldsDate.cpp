// Dates: the precision that a version can hold, and the way to the frame and back.

#include "FieldTags.h"
#include <gtest/gtest.h>

namespace
{
constexpr double DAY_MS = 86400000.0;

LyString Days(double fDay, double fMilliseconds = 0)
{
    return LyString().FromDecimal(fDay + fMilliseconds / DAY_MS, -1, false);
}
} // namespace

// Of 1 January: midnight is a year alone, 0.1 seconds are the day, 0.2 seconds are its midnight.
TEST(ID3v2FieldsDate, BelowVersion24AYearAloneIsRemoved)
{
    struct
    {
        double fDay;
        double fMilliseconds;
        bool bStays;
    } const aryCases[] = {
        {36526, 0, false},       {36526, 100, true},      {36526, 95, true},   {36526, 85, false}, {36526, 200, true},
        {36526, 205, true},      {36526, 215, false},     {36526, 150, false}, {36526, 10, false}, {36526, 990, false},
        {36526, 1010, true},     {36526, 43200000, true}, {36527, 0, true},    {36525, 0, true},   {36557, 0, true},
        {36525, 86399900, true}, // rounds to 1 January, and is a time
    };
    const FieldTools tools;
    for (const auto& test : aryCases)
    {
        for (const int nVersion : {0, 3})
        {
            CID3v2Tag tag;
            if (nVersion > 0)
                LoadTag(tag, nVersion, {{"TXXX", Latin1("Date", "1998")}});
            EXPECT_EQ(tag.Set(L"Date", Days(test.fDay, test.fMilliseconds)), test.bStays)
                << test.fDay << " " << test.fMilliseconds;
            EXPECT_EQ(tag.m_aryFrames.GetSize(), test.bStays ? 1 : 0) << "the old date goes in any case";
            EXPECT_EQ(tag.m_bDirty, test.bStays || nVersion > 0);
        }
        CID3v2Tag tag;
        LoadTag(tag, 4, {});
        EXPECT_TRUE(tag.Set(L"Date", Days(test.fDay, test.fMilliseconds))) << "version 2.4 holds a year, too";
    }
}

TEST(ID3v2FieldsDate, TheRuleIsForTheFieldDateAlone)
{
    CID3v2Tag tag;
    EXPECT_TRUE(tag.Set(L"Original Date", L"36526"));
    EXPECT_EQ(FramesOf(tag), "TXXX:" + Latin1("Original Date", "2000"));
    EXPECT_TRUE(tag.Set(L"date", L"36526"));
}

TEST(ID3v2FieldsDate, WhatIsNoDateIsNoFirstOfJanuary)
{
    CID3v2Tag tag;
    for (const wchar_t* pValue : {L"0", L"soon", L"99999999999"})
    {
        EXPECT_TRUE(tag.Set(L"Date", pValue));
        EXPECT_EQ(FramesOf(tag), "TXXX:" + Latin1("Date", "")) << "a frame that says nothing";
    }
}

TEST(ID3v2FieldsDate, IsWrittenAsISO8601WithItsPrecision)
{
    const std::pair<LyString, const char*> aryCases[] = {
        {Days(36526), "2000"},
        {Days(36526, 100), "2000-01-01"},
        {Days(36526, 200), "2000-01-01T00:00:00"},
        {Days(40304, 100), "2010-05-06"},
        {Days(40304), "2010-05-06"},
        {Days(40304, 43200000), "2010-05-06T12:00:00"},
        {L"40304,5", "2010-05-06T12:00:00"},
    };
    for (const auto& [strValue, pText] : aryCases)
    {
        CID3v2Tag tag;
        LoadTag(tag, 4, {});
        EXPECT_TRUE(tag.Set(L"Date", strValue));
        EXPECT_EQ(FramesOf(tag), "TDRC:" + Latin1(pText));
    }
}

TEST(ID3v2FieldsDate, ReadsAsItWasSet)
{
    const FieldTools tools;
    for (const int nVersion : {3, 4})
    {
        for (const double fMilliseconds : {100.0, 200.0, 43200000.0})
        {
            CID3v2Tag tag;
            LoadTag(tag, nVersion, {});
            ASSERT_TRUE(tag.Set(L"Date", Days(40304, fMilliseconds)));
            LyPropertyMap map;
            ASSERT_TRUE(tag.Get(L"Date", map));
            EXPECT_NEAR(map.GetPropertyDouble(L"Value"), 40304 + fMilliseconds / DAY_MS, 1e-9);
            const std::string strFrames = FramesOf(tag);
            ASSERT_TRUE(tag.Set(L"Date", map.GetProperty(L"Value")));
            EXPECT_EQ(FramesOf(tag), strFrames);
        }
    }
}

TEST(ID3v2FieldsDate, YearAndDateDoNotTouchEachOther)
{
    const FieldTools tools;
    CID3v2Tag tag;
    LoadTag(tag, 3, {});
    EXPECT_TRUE(tag.Set(L"Year", L"2010"));
    EXPECT_TRUE(tag.Set(L"Date", Days(40304, 100)));
    EXPECT_EQ(FramesOf(tag), "TYER:" + Latin1("2010") + "TXXX:" + Latin1("Date", "2010-05-06"));
    EXPECT_FALSE(tag.Set(L"Date", L""));
    EXPECT_EQ(FramesOf(tag), "TYER:" + Latin1("2010"));
    EXPECT_EQ(ValueOf(tag, L"Date"), L"40179") << "the year, as a date";
}

TEST(ID3v2FieldsDate, InVersion24TheYearIsReadFromTheDateAndNeverWritten)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"TDRC", Latin1("2010-05-06")}});
    EXPECT_EQ(ValueOf(tag, L"Year"), L"2010-05-06");
    const int nRows = tag.m_aryFields.GetSize();
    EXPECT_FALSE(tag.Set(L"Year", L"1999"));
    EXPECT_EQ(FramesOf(tag), "TDRC:" + Latin1("2010-05-06"));
    EXPECT_EQ(tag.m_aryFields.GetSize(), nRows);
    EXPECT_FALSE(tag.m_bDirty);
}
