#include "ID3v2Bytes.h"
#include <gtest/gtest.h>

using namespace ID3v2Bytes;

namespace
{
CID3v2FrameHeader Header(const std::string& strBytes)
{
    CID3v2FrameHeader header;
    memcpy(static_cast<void*>(&header), strBytes.data(), strBytes.size());
    return header;
}
} // namespace

TEST(ID3v2FrameHeader, LiesInMemoryAsInTheFile)
{
    static_assert(sizeof(CID3v2FrameHeader) == 10);
    const CID3v2FrameHeader header = Header(Bytes("TIT2\1\2\3\4\x40\x02"));
    EXPECT_TRUE(header.HasID("TIT2"));
    EXPECT_FALSE(header.HasID("TIT1"));
    EXPECT_EQ(header.GetPlainSize(), 0x01020304U);
    EXPECT_EQ(header.GetSyncSafeSize(), 1U << 21 | 2U << 14 | 3U << 7 | 4U);
    EXPECT_EQ(header.m_Flags[0], 0x40);
    EXPECT_EQ(header.m_Flags[1], 0x02);
}

TEST(ID3v2FrameHeader, ANewOneIsAllZero)
{
    const CID3v2FrameHeader header;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&header), sizeof header), std::string(10, '\0'));
}

TEST(ID3v2FrameHeader, FlagsAreThoseOfTheSecondByte)
{
    struct ROW
    {
        const char* pFlags;
        bool bUnsynchronized, bCompressed, bDataLength;
    } const aryRows[] = {
        {"\x00\x00", false, false, false}, {"\x00\x02", true, false, false},  {"\x00\x08", false, true, false},
        {"\x00\x01", false, false, true},  {"\x0B\x00", false, false, false}, // the first byte holds others
        {"\x00\xC0", false, false, false}, // compressed and encrypted, in version 2.3
        {"\xFF\xFF", true, true, true},
    };
    for (const ROW& row : aryRows)
    {
        const CID3v2FrameHeader header = Header(std::string(8, '\0') + std::string(row.pFlags, 2));
        EXPECT_EQ(header.HasFlag(ID3V2_FRAME_FLAG_UNSYNCHRONIZED), row.bUnsynchronized);
        EXPECT_EQ(header.HasFlag(ID3V2_FRAME_FLAG_COMPRESSED), row.bCompressed);
        EXPECT_EQ(header.HasFlag(ID3V2_FRAME_FLAG_DATA_LENGTH), row.bDataLength);
    }
}

TEST(ID3v2FrameHeader, IDsAreCapitalsDigitsAndQuestionMarks)
{
    struct ROW
    {
        std::string strID;
        bool bValid;
    } const aryRows[] = {
        {"TIT2", true},          {"AZ09", true},          {"????", true},   {"XYZ?", true},
        {"tit2", false},         {"TIT ", false},         {"TIT@", false},  {"TIT[", false},
        {"TIT/", false},         {"TIT:", false},         {"TI>2", false},  {"TIT\xC9", false},
        {Bytes("TIT\0"), false}, {Bytes("T\0T2"), false}, {"\1IT2", false}, {"0000", true},
    };
    for (const ROW& row : aryRows)
    {
        EXPECT_EQ(Header(row.strID).GetIsValidID(false), row.bValid) << row.strID;
        EXPECT_EQ(Header(row.strID).GetIsValidID(true), row.bValid) << row.strID;
    }
}

TEST(ID3v2FrameHeader, AnEmptyIDIsWhatTheCallerSays)
{
    for (const std::string& strID : {Bytes("\0\0\0\0"), Bytes("\0abc")})
    {
        EXPECT_TRUE(Header(strID).GetIsValidID(true));
        EXPECT_FALSE(Header(strID).GetIsValidID(false));
    }
}

TEST(ID3v2FrameHeader, SizesAreWrittenAsTheyAreRead)
{
    CID3v2FrameHeader header;
    header.SetPlainSize(0x80FF0102);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(header.m_Size), 4), "\x80\xFF\x01\x02");
    EXPECT_EQ(header.GetPlainSize(), 0x80FF0102U);
    header.SetSyncSafeSize(300);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(header.m_Size), 4), Bytes("\0\0\x02\x2C"));
    header.SetSyncSafeSize(0x0FFFFFFF);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(header.m_Size), 4), "\x7F\x7F\x7F\x7F");
    EXPECT_EQ(header.GetSyncSafeSize(), 0x0FFFFFFFU);
}

TEST(ID3v2FrameHeader, TheSizeOfABodyIsSyncSafeFromVersion4On)
{
    struct ROW
    {
        int nVersion;
        std::string strSize;
    } const aryRows[] = {
        {0, Bytes("\0\0\x01\x2C")}, {2, Bytes("\0\0\x01\x2C")}, {3, Bytes("\0\0\x01\x2C")},
        {4, Bytes("\0\0\x02\x2C")}, {5, Bytes("\0\0\x02\x2C")},
    };
    for (const ROW& row : aryRows)
    {
        CID3v2Frame frame;
        frame.m_Data = LyBuffer(300);
        frame.SetHeaderFrameBytesFromBuffer(row.nVersion);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(frame.m_Header.m_Size), 4), row.strSize) << row.nVersion;
    }
}

TEST(ID3v2FrameType, IsFoundInTheOrderOfTheTable)
{
    struct ROW
    {
        const char* pID;
        int nType;
    } const aryRows[] =
        {
            {"TXXX", 1},  {"APIC", 3},  {"POPM", 4},  {"TIT2", 0},  {"TPE1", 0},  {"T???", 0},
            {"TXX?", 0},  {"PCST", 5},  {"WOAR", 6},  {"WFED", 6},  {"W000", 6},  {"WXXX", -1},
            {"COMM", 2},  {"USLT", 2},  {"PRIV", 7},  {"UFID", -1}, {"GEOB", -1}, {"SYLT", -1},
            {"PIC?", -1}, {"MCDI", -1}, {"????", -1}, {"THGN", 0}, // begins with T, and that is asked first
        };
    for (const ROW& row : aryRows)
        EXPECT_EQ(static_cast<int>(CID3v2Frame::GetFrameType(row.pID)), row.nType) << row.pID;
}

TEST(ID3v2Frame, HasItsMembersInOrderBehindItsTable)
{
    const CID3v2Frame frame;
    const auto* pFrame = reinterpret_cast<const char*>(&frame);
    const auto* pHeader = reinterpret_cast<const char*>(&frame.m_Header);
    const auto* pData = reinterpret_cast<const char*>(&frame.m_Data);
    const auto* pProperties = reinterpret_cast<const char*>(&frame.m_Properties);
    EXPECT_EQ(pHeader - pFrame, static_cast<ptrdiff_t>(sizeof(void*)));
    EXPECT_LT(pHeader, pData);
    EXPECT_LT(pData, pProperties);
    static_assert(std::has_virtual_destructor_v<CID3v2Frame>);
}

TEST(ID3v2Tag, HasItsMembersInOrder)
{
    const CID3v2Tag tag;
    const void* const aryMembers[] = {&tag.m_aryFields,     &tag.m_mapFieldIndexes, &tag.m_bLoaded,
                                      &tag.m_bDirty,        &tag.m_nEncoding,       &tag.m_RawTag,
                                      &tag.m_nFilePosition, &tag.m_Header,          &tag.m_aryFrames};
    for (size_t i = 1; i < std::size(aryMembers); ++i)
        EXPECT_LT(aryMembers[i - 1], aryMembers[i]) << i;
    static_assert(sizeof(tag.m_Header) == 10 && sizeof(tag.m_nEncoding) == 4 && sizeof(tag.m_nFilePosition) == 8);
    static_assert(std::is_base_of_v<CID3TagBase, CID3v2Tag>);
    static_assert(std::is_base_of_v<ILyQSortCompare<CID3v2Frame*>, CID3v2Tag>);
}
