// The tag as a whole: its header, what stands between it and the frames, and being loaded again.

#include "ID3v2Bytes.h"
#include <climits>
#include <gtest/gtest.h>

using namespace ID3v2Bytes;

namespace
{
const std::string s_strFrame = Text23("TIT2", "Song");

struct HEADER_ROW
{
    const char* pName;
    std::string strTag;
    bool bLoaded;
    const char* pIDs;
};

// A header that promises nBytes behind it.
std::string Promising(size_t nBytes, int nFlags = 0)
{
    return Bytes("ID3\3\0") + static_cast<char>(nFlags) + SyncSafe(nBytes);
}

const HEADER_ROW s_aryHeaders[] = {
    {"Empty", "", false, ""},
    {"NineBytes", Bytes("ID3\3\0\0\0\0\0"), false, ""},
    {"HeaderAlone", Promising(0), true, ""},
    {"OneFrame", Tag(3, s_strFrame), true, "TIT2"},
    {"OtherID", "TAG" + Tag(3, s_strFrame).substr(3), false, ""},
    {"LowerCaseID", "id3" + Tag(3, s_strFrame).substr(3), false, ""},
    {"Version1", Tag(1, s_strFrame), false, ""},
    {"Version2", Tag(2, Frame22("TT2", Bytes("\0Song"))), true, "TIT2"},
    {"Version4", Tag(4, Frame24("TIT2", Bytes("\0Song"))), true, "TIT2"},
    {"Version5", Tag(5, s_strFrame), false, ""},
    {"AnyRevision", Bytes("ID3\3\x7F\0") + SyncSafe(s_strFrame.size()) + s_strFrame, true, "TIT2"},
    {"Experimental", Tag(3, s_strFrame, 0x20), false, ""},
    {"UnknownFlags", Tag(3, s_strFrame, 0x0F), true, "TIT2"},
    {"OneByteShort", Promising(s_strFrame.size() + 1) + s_strFrame, true, "TIT2"},
    {"TwoBytesShort", Promising(s_strFrame.size() + 2) + s_strFrame, false, ""},
    {"LongerThanPromised", Promising(0) + s_strFrame, true, "TIT2"},
    {"TopBitsOfTheSizeAreMasked", Bytes("ID3\3\0\0\x80\x80\x80\x8F") + s_strFrame, true, "TIT2"},
    {"LargestSize", Bytes("ID3\3\0\0\x7F\x7F\x7F\x7F") + s_strFrame, false, ""},
    {"Footer", Tag(4, Frame24("TIT2", Bytes("\0Song")), 0x10) + std::string(10, 'F'), true, "TIT2"},
    {"FooterOneByteShort", Tag(4, Frame24("TIT2", Bytes("\0Song")), 0x10) + std::string(9, 'F'), true, ""},
    {"FooterTwoBytesShort", Tag(4, Frame24("TIT2", Bytes("\0Song")), 0x10) + std::string(8, 'F'), false, ""},
    {"FooterIsNoFrame", Promising(0, 0x10) + std::string("TIT2") + std::string(6, '\0'), true, ""},
    {"FooterThatIsNotThere", Promising(0, 0x10) + std::string(9, '\0'), true, ""},
    {"ExtendedHeaderCountsItself", Tag(4, Bytes("\0\0\0\6\1\0") + Frame24("TIT2", Bytes("\0Song")), 0x40), true,
     "TIT2"},
    {"ExtendedHeaderOfOldRulesIsMisread", // six bytes that do not count the four of their size
     Tag(3, Bytes("\0\0\0\6\0\0\0\0\0\0") + s_strFrame, 0x40), true, ""},
    {"ExtendedHeaderOfHighBytesIsMisread", // 0081h would be 129, and reads as 1: three zero bytes too early
     Tag(3, Bytes("\0\0\0\x81") + std::string(125, '\0') + s_strFrame, 0x40), true, ""},
    {"ExtendedHeaderBeyondTheTag", Tag(4, Bytes("\x7F\x7F\x7F\x7F") + s_strFrame, 0x40), true, ""},
    {"ExtendedHeaderThatIsNotThere", Promising(0, 0x40) + Bytes("\0\0\6"), true, ""},
};
} // namespace

class ID3v2LoadHeader : public testing::TestWithParam<HEADER_ROW>
{
};

TEST_P(ID3v2LoadHeader, DecidesWhetherThereIsATag)
{
    const HEADER_ROW& row = GetParam();
    CID3v2Tag tag;
    EXPECT_EQ(tag.Load(Buffer(row.strTag), 1234), row.bLoaded);
    EXPECT_EQ(tag.m_bLoaded, row.bLoaded);
    EXPECT_EQ(IDs(tag), row.pIDs);
    EXPECT_EQ(Content(tag.m_RawTag), row.strTag) << "in any case";
    EXPECT_EQ(tag.m_nFilePosition, 1234);
}

INSTANTIATE_TEST_SUITE_P(All, ID3v2LoadHeader, testing::ValuesIn(s_aryHeaders),
                         [](const auto& row) { return std::string(row.param.pName); });

TEST(ID3v2LoadHeaderAlone, CopiesTheBytesAndDecodesTheSize)
{
    CID3v2Tag tag;
    int nPos = 2;
    LyBuffer buffer = Buffer("xx" + Bytes("ID3\4\7\x80\0\0\x02\x2C") + std::string(320, '\0'));
    EXPECT_TRUE(tag.LoadHeader(buffer, nPos));
    EXPECT_EQ(nPos, 12);
    EXPECT_EQ(std::string(tag.m_Header.m_ID, 3), "ID3");
    EXPECT_EQ(tag.m_Header.m_nMajorVersion, 4);
    EXPECT_EQ(tag.m_Header.m_nRevision, 7);
    EXPECT_EQ(tag.m_Header.m_nFlags, 0x80);
    int nBytes = 0;
    memcpy(&nBytes, reinterpret_cast<const char*>(&tag.m_Header) + 6, 4);
    EXPECT_EQ(nBytes, 300) << "an ordinary integer in its place";
    EXPECT_EQ(tag.m_Header.GetSize(), 300);
    EXPECT_FALSE(tag.m_bLoaded) << "only Load says so";
}

TEST(ID3v2LoadHeaderAlone, APositionWithoutTenBytesIsRefused)
{
    CID3v2Tag tag;
    const LyBuffer buffer = Buffer(Tag(3, s_strFrame));
    for (const int nStart : {-1, INT_MIN, buffer.GetSize() - 9, buffer.GetSize(), INT_MAX})
    {
        int nPos = nStart;
        EXPECT_FALSE(tag.LoadHeader(buffer, nPos)) << nStart;
        EXPECT_EQ(nPos, nStart);
    }
}

TEST(ID3v2LoadHeaderAlone, WhatIsNoTagIsCopiedAllTheSame)
{
    CID3v2Tag tag;
    int nPos = 0;
    EXPECT_FALSE(tag.LoadHeader(Buffer("0123456789"), nPos));
    EXPECT_EQ(nPos, 10);
    EXPECT_EQ(memcmp(&tag.m_Header, "0123456789", 10), 0);
}

TEST(ID3v2ReadSyncSafeInt, ReadsFourBytesThatAreThere)
{
    struct ROW
    {
        std::string strBytes;
        int nOffset;
        int nValue;
    } const aryRows[] = {
        {Bytes("\0\0\1\1"), 0, 129},
        {Bytes("x\0\0\1\1"), 1, 129},
        {Bytes("\x7F\x7F\x7F\x7F"), 0, 0x0FFFFFFF},
        {"\xFF\xFF\xFF\xFF", 0, 0x0FFFFFFF},
        {Bytes("\0\0\1\1"), 1, 0},
        {Bytes("\0\0\1\1"), -1, 0},
        {Bytes("\0\0\1"), 0, 0},
        {"", 0, 0},
        {Bytes("\0\0\1\1"), INT_MAX, 0},
        {Bytes("\0\0\1\1"), INT_MIN, 0},
    };
    for (const ROW& row : aryRows)
        EXPECT_EQ(CID3v2Tag::ReadSyncSafeInt(Buffer(row.strBytes), row.nOffset), row.nValue) << row.nOffset;
}

TEST(ID3v2Tag, ANewOneIsEmptyAndHasItsRows)
{
    const CID3v2Tag tag;
    EXPECT_FALSE(tag.m_bLoaded);
    EXPECT_FALSE(tag.m_bDirty);
    EXPECT_EQ(tag.m_nEncoding, 3);
    EXPECT_EQ(tag.m_nFilePosition, 0);
    EXPECT_EQ(tag.m_RawTag.GetSize(), 0);
    EXPECT_EQ(tag.m_aryFrames.GetSize(), 0);
    EXPECT_GT(tag.m_aryFields.GetSize(), 0);
    EXPECT_EQ(tag.GetMajorVersion(), 0);
}

TEST(ID3v2Tag, EmptyGoesBackToThatState)
{
    CID3v2Tag tag;
    const int nRows = tag.m_aryFields.GetSize();
    ASSERT_TRUE(tag.Load(Buffer(Tag(3, s_strFrame)), 77));
    tag.m_bDirty = true;
    tag.m_nEncoding = 1;
    EXPECT_TRUE(tag.Empty());
    EXPECT_FALSE(tag.m_bLoaded);
    EXPECT_FALSE(tag.m_bDirty);
    EXPECT_EQ(tag.m_nEncoding, 3);
    EXPECT_EQ(tag.m_nFilePosition, 0);
    EXPECT_EQ(tag.m_RawTag.GetSize(), 0);
    EXPECT_EQ(tag.m_aryFrames.GetSize(), 0);
    EXPECT_EQ(tag.m_aryFields.GetSize(), nRows);
    const CID3v2TagHeader zero = {};
    EXPECT_EQ(memcmp(&tag.m_Header, &zero, sizeof zero), 0);
}

TEST(ID3v2Tag, LoadingAgainForgetsTheTagBefore)
{
    CID3v2Tag tag;
    ASSERT_TRUE(tag.Load(Buffer(Tag(4, Frame24("TIT2", Bytes("\0Song")))), 1));
    EXPECT_EQ(tag.GetMajorVersion(), 4);
    ASSERT_TRUE(tag.Load(Buffer(Tag(3, Text23("TALB", "Album"))), 2));
    EXPECT_EQ(IDs(tag), "TALB");
    EXPECT_EQ(tag.GetMajorVersion(), 3);
    EXPECT_FALSE(tag.Load(Buffer("no tag at all"), 3));
    EXPECT_FALSE(tag.m_bLoaded);
    EXPECT_EQ(IDs(tag), "");
    EXPECT_EQ(tag.GetMajorVersion(), 0);
    EXPECT_EQ(Content(tag.m_RawTag), "no tag at all");
    EXPECT_EQ(tag.m_nFilePosition, 3);
}

TEST(ID3v2Tag, ItsOwnRawBytesMayBeLoadedAgain)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, s_strFrame)));
    tag.m_aryFrames.RemoveAll();
    EXPECT_TRUE(tag.Load(tag.m_RawTag, 9));
    EXPECT_EQ(IDs(tag), "TIT2");
    EXPECT_EQ(Content(tag.m_RawTag), Tag(3, s_strFrame));
}

TEST(ID3v2Tag, TheBodyOfOneOfItsFramesMayBeLoaded)
{
    const std::string strInner = Tag(3, Text23("TIT2", "Inner"));
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(4, Frame24("XYZW", strInner))));
    EXPECT_TRUE(tag.Load(tag.m_aryFrames[0]->m_Data, 0));
    EXPECT_EQ(Content(tag.m_RawTag), strInner);
    ASSERT_EQ(IDs(tag), "TIT2");
    EXPECT_EQ(Value(*tag.m_aryFrames[0]), "Inner");
}

TEST(ID3v2Tag, ABufferIsNotChanged)
{
    const std::string strTag = Tag(4, Unsynchronized(Frame24("PRIV", Bytes("o\0\xFF\0x"))), 0x90) + "footer-ten";
    const LyBuffer buffer = Buffer(strTag);
    CID3v2Tag tag;
    (void)tag.Load(buffer, 0);
    EXPECT_EQ(Content(buffer), strTag);
}
