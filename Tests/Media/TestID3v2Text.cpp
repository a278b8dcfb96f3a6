#include "ID3v2Bytes.h"
#include <climits>
#include <gtest/gtest.h>

using namespace ID3v2Bytes;

namespace
{
struct DECODE_ROW
{
    const char* pName;
    int nEncoding;
    std::string strBytes;
    bool bOnlyOne;
    const wchar_t* pText;
    int nEnd; // the position afterwards
};

const DECODE_ROW s_aryDecode[] = {
    {"Empty", 0, "", false, L"", 0},
    {"OnlyTerminator", 0, Bytes("\0"), false, L"", 1},
    {"WithoutTerminator", 0, "Song", false, L"Song", 4},
    {"WithTerminator", 0, Bytes("Song\0"), false, L"Song", 5},
    {"Latin1", 0, "\xC9t\xE9", false, L"\u00C9t\u00E9", 3},
    {"TwoValues", 0, Bytes("One\0Two"), false, L"One; Two", 7},
    {"TwoTerminatedValues", 0, Bytes("One\0Two\0"), false, L"One; Two", 8},
    {"ThreeValues", 0, Bytes("a\0b\0c"), false, L"a; b; c", 5},
    {"EmptyValuesAddNothing", 0, Bytes("\0One\0\0\0Two\0\0"), false, L"One; Two", 12},
    {"OnlyOneOfTwo", 0, Bytes("One\0Two"), true, L"One", 4},
    {"OnlyOneStopsAtAnEmptyOne", 0, Bytes("\0Two"), true, L"", 1},
    {"LittleEndianByMark", 1, Bytes("\xFF\xFEH\0i\0"), false, L"Hi", 6},
    {"BigEndianByMark", 1, Bytes("\xFE\xFF\0H\0i"), false, L"Hi", 6},
    {"LittleEndianByDefault", 1, Bytes("H\0i\0"), false, L"Hi", 4},
    {"BigEndianByDefault", 2, Bytes("\0H\0i"), false, L"Hi", 4},
    {"BigEndianWithMark", 2, Bytes("\xFE\xFF\0H\0i"), false, L"Hi", 6},
    {"EachValueHasItsOwnMark", 1,
     Bytes("\xFF\xFE"
           "A\0\0\0\xFE\xFF\0B\0\0"),
     false, L"A; B", 12},
    {"ZeroByteAcrossAPairIsNoTerminator", 1, Bytes("\xFF\xFE\x41\x00\x00\x01\x42\x00"), false, L"A\u0100B", 8},
    {"ZeroPairOutOfStepIsNoTerminator", 2, Bytes("\x01\x00\x00\x41"), false, L"\u0100A", 4},
    {"OddLastByteIsDropped", 1, Bytes("\xFF\xFEH\0i"), false, L"H", 5},
    {"OnlyOneOfTwoWide", 1,
     Bytes("\xFF\xFE"
           "A\0\0\0\xFF\xFE"
           "B\0"),
     true, L"A", 6},
    {"OnlyAMark", 1, Bytes("\xFF\xFE\0\0"), false, L"", 4},
    {"SurrogatesStayTwo", 1, Bytes("\xFF\xFE\x3D\xD8\x0A\xDE"), false, L"\xD83D\xDE0A", 6},
    {"UTF8", 3, "\xC3\xA9\xE2\x82\xAC", false, L"\u00E9\u20AC", 5},
    {"UTF8Values", 3, Bytes("\xC3\xA9\0\xE2\x82\xAC\0"), false, L"\u00E9; \u20AC", 7},
    {"UnknownEncodingIsEmpty", 4, "Song", false, L"", 4},
    {"UnknownEncodingEndsAtItsZeroByte", 255, Bytes("a\0b"), true, L"", 2},
};
} // namespace

class ID3v2DecodeString : public testing::TestWithParam<DECODE_ROW>
{
};

TEST_P(ID3v2DecodeString, GivesTheTextAndStopsBehindIt)
{
    const DECODE_ROW& row = GetParam();
    int nPos = 0;
    EXPECT_EQ(Narrow(CID3v2Tag::DecodeString(row.nEncoding, Buffer(row.strBytes), nPos, row.bOnlyOne)),
              Narrow(row.pText));
    EXPECT_EQ(nPos, row.nEnd);
    // The same behind bytes that are not looked at, so that the text stands at an odd place.
    nPos = 3;
    EXPECT_EQ(Narrow(CID3v2Tag::DecodeString(row.nEncoding, Buffer("xyz" + row.strBytes), nPos, row.bOnlyOne)),
              Narrow(row.pText));
    EXPECT_EQ(nPos, row.nEnd + 3);
}

INSTANTIATE_TEST_SUITE_P(All, ID3v2DecodeString, testing::ValuesIn(s_aryDecode),
                         [](const auto& row) { return std::string(row.param.pName); });

TEST(ID3v2DecodeStringLimits, ManyValuesAreJoinedWhateverTheirEncoding)
{
    constexpr int VALUES = 20000;
    const struct
    {
        int nEncoding;
        std::string strValue;
        const wchar_t* pText;
    } aryCases[] = {
        {0, Bytes("a\0"), L"a"},
        {0, Bytes("\0\0ab\0\0\0"), L"ab"},
        {1,
         Bytes("\xFF\xFE"
               "a\0\0\0"),
         L"a"},
        {2, Bytes("\0a\0b\0\0"), L"ab"},
        {3, Bytes("\xE2\x82\xAC\0"), L"\u20AC"},
        {3, Bytes("\x80\x80\0"), L"\x80\x80"}, // no UTF-8: as many characters as bytes
    };
    for (const auto& row : aryCases)
    {
        std::string strBytes;
        std::wstring strText;
        for (int i = 0; i < VALUES; ++i)
        {
            strBytes += row.strValue;
            strText += (i > 0 ? L"; " : L"") + std::wstring(row.pText);
        }
        int nPos = 0;
        const LyString strResult = CID3v2Tag::DecodeString(row.nEncoding, Buffer(strBytes), nPos, false);
        EXPECT_TRUE(strText == static_cast<const wchar_t*>(strResult)) << row.nEncoding;
        EXPECT_EQ(nPos, static_cast<int>(strBytes.size()));
    }
}

TEST(ID3v2DecodeStringLimits, APositionOutsideTheBufferIsEmptyAndStays)
{
    for (const int nStart : {-1, INT_MIN, 4, 5, INT_MAX})
    {
        int nPos = nStart;
        EXPECT_TRUE(CID3v2Tag::DecodeString(0, Buffer("Song"), nPos, false).IsEmpty());
        EXPECT_EQ(nPos, nStart);
    }
}

TEST(ID3v2DecodeStringLimits, LongTextOfEachEncodingComesWhole)
{
    const std::string strLong(5000, 'x');
    std::string strWide;
    for (const char c : strLong)
        strWide += std::string(1, c) + '\0';
    for (const auto& [nEncoding, strBytes] : {std::pair(0, strLong), {1, "\xFF\xFE" + strWide}, {3, strLong}})
    {
        int nPos = 1;
        EXPECT_EQ(Narrow(CID3v2Tag::DecodeString(nEncoding, Buffer("?" + strBytes), nPos, false)), strLong);
    }
}

TEST(ID3v2DecodeStringLimits, ManyValuesAreJoined)
{
    std::string strBytes;
    for (int i = 0; i < 20'000; ++i)
        strBytes += Bytes("v\0");
    int nPos = 0;
    EXPECT_EQ(CID3v2Tag::DecodeString(0, Buffer(strBytes), nPos, false).GetLength(), 20'000 * 3 - 2);
}

TEST(ID3v2EncodeString, WritesTextWithItsTerminator)
{
    struct ROW
    {
        int nEncoding;
        const wchar_t* pText;
        std::string strBytes;
    } const aryRows[] = {
        {0, L"", Bytes("\0")},
        {0, L"Song", Bytes("Song\0")},
        {0, L"\u00C9t\u00E9", Bytes("\xC9t\xE9\0")},
        {1, L"", Bytes("\xFF\xFE\0\0")},
        {1, L"A\u20AC",
         Bytes("\xFF\xFE"
               "A\0\xAC\x20\0\0")},
        {1, L"\x1F60A", Bytes("\xFF\xFE\x0A\xF6\0\0")}, // cut to 16 bits
        {2, L"Song", ""},
        {3, L"Song", ""},
        {-1, L"Song", ""},
    };
    for (const ROW& row : aryRows)
    {
        LyBuffer buffer = Buffer("<");
        CID3v2Tag::EncodeString(row.nEncoding, row.pText, buffer);
        EXPECT_EQ(Content(buffer), "<" + row.strBytes) << row.nEncoding << Narrow(row.pText);
    }
}

TEST(ID3v2EncodeString, WhatIsWrittenIsReadBack)
{
    const LyString strText(L"\u00DCber \u00E9t\u00E9");
    for (const int nEncoding : {0, 1})
    {
        LyBuffer buffer;
        CID3v2Tag::EncodeString(nEncoding, strText, buffer);
        CID3v2Tag::EncodeString(nEncoding, L"Two", buffer);
        int nPos = 0;
        EXPECT_EQ(CID3v2Tag::DecodeString(nEncoding, buffer, nPos, false), strText + L"; Two");
    }
}
