// Unsynchronisation and compression of frames.

#include "ID3v2Bytes.h"
#include "LyCoreLib/StandInTools.h"
#include "ProcessInfo.h"
#include "ZLibHelper.h"
#include <climits>
#include <gtest/gtest.h>
#include <zlib.h>

using namespace ID3v2Bytes;

namespace
{
struct UNSYNC_ROW
{
    const char* pName;
    std::string strIn;
    int nLimit;
    std::string strOut;
    int nRemoved;
};

const UNSYNC_ROW s_aryUnsync[] = {
    {"Empty", "", INT_MAX, "", 0},
    {"NothingToDo", "abc", INT_MAX, "abc", 0},
    {"ZeroBehindFF", Bytes("\xFF\0\xE0"), INT_MAX, "\xFF\xE0", 1},
    {"OnlyTheFirstZeroGoes", Bytes("\xFF\0\0x"), INT_MAX, Bytes("\xFF\0x"), 1},
    {"EachPair", Bytes("\xFF\0\xFF\0\xFF"), INT_MAX, "\xFF\xFF\xFF", 2},
    {"ZeroElsewhereStays", Bytes("\0a\0"), INT_MAX, Bytes("\0a\0"), 0},
    {"FFAtTheEnd", "ab\xFF", INT_MAX, "ab\xFF", 0},
    {"PairAtTheEnd", Bytes("ab\xFF\0"), INT_MAX, "ab\xFF", 1},
    {"FFBeforeAnotherByte", "\xFF\xFBx", INT_MAX, "\xFF\xFBx", 0},
    {"LimitCutsTheOutput", "abcdef", 4, "abcd", 0},
    {"LimitCountsOutputNotInput", Bytes("\xFF\0\xFF\0ab"), 3,
     "\xFF\xFF"
     "a",
     2},
    {"ZeroBehindTheLastByteStillCounts", Bytes("a\xFF\0b"), 2, "a\xFF", 1},
    {"LimitOfZero", "abc", 0, "", 0},
    {"LimitBelowZero", "abc", -1, "", 0},
};

// A zlib service that says what it was asked for, and answers as it is told.
struct SCRIPT
{
    bool bThere = true;
    bool bWorks = true;
    int nRoom = -1;
    int nResult = -1;
    int nAlive = 0;
};

class ScriptedDecompressor final : public IZLibBufferDecompressor
{
public:
    explicit ScriptedDecompressor(SCRIPT& script) : m_Script(script) { ++m_Script.nAlive; }
    ~ScriptedDecompressor() override { --m_Script.nAlive; }
    int Decompress(const void*, int, void* pOutput, int nOutputBytes) override
    {
        m_Script.nRoom = nOutputBytes;
        memset(pOutput, 'o', static_cast<size_t>(nOutputBytes));
        return m_Script.nResult;
    }

private:
    SCRIPT& m_Script;
};

class ScriptedZLib final : public IZLib
{
public:
    explicit ScriptedZLib(SCRIPT& script) : m_Script(script) { ++m_Script.nAlive; }
    ~ScriptedZLib() override { --m_Script.nAlive; }
    IZLibBufferDecompressor* CreateBufferDecompressor() override
    {
        return m_Script.bWorks ? new ScriptedDecompressor(m_Script) : nullptr;
    }
    IZLibFile* OpenFile(const wchar_t*) override { return nullptr; }

private:
    SCRIPT& m_Script;
};

class ScriptedTools final : public StandInTools
{
public:
    IZLib* CreateZLib() override { return m_Script.bThere ? new ScriptedZLib(m_Script) : nullptr; }
    SCRIPT m_Script;
};

std::string Deflated(const std::string& str)
{
    uLongf nBytes = compressBound(str.size());
    std::string strOut(nBytes, 0);
    EXPECT_EQ(compress(reinterpret_cast<Bytef*>(strOut.data()), &nBytes, reinterpret_cast<const Bytef*>(str.data()),
                       str.size()),
              Z_OK);
    return strOut.substr(0, nBytes);
}

// With the tools library that is built here.
class ID3v2Inflate : public testing::Test
{
protected:
    ID3v2Inflate()
    {
        LyString strFolder;
        strFolder.FromUTF8(reinterpret_cast<const unsigned char*>(RONDEL_BIN_DIR "/"));
        GetProcessInfo(true)->SetSharedLibraryPath(strFolder);
    }
    ~ID3v2Inflate() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }
};

std::string Decompressed(const std::string& str)
{
    LyBuffer buffer = Buffer(str);
    CID3v2Tag::DecompressBuffer(buffer);
    return Content(buffer);
}
} // namespace

class ID3v2Unsynchronize : public testing::TestWithParam<UNSYNC_ROW>
{
};

TEST_P(ID3v2Unsynchronize, RemovesTheZeroBehindFF)
{
    const UNSYNC_ROW& row = GetParam();
    LyBuffer buffer = Buffer(row.strIn);
    int nRemoved = -1;
    CID3v2Tag::UnsynchronizeBuffer(buffer, row.nLimit, &nRemoved);
    EXPECT_EQ(Content(buffer), row.strOut);
    EXPECT_EQ(nRemoved, row.nRemoved);
    buffer = Buffer(row.strIn);
    CID3v2Tag::UnsynchronizeBuffer(buffer, row.nLimit, nullptr);
    EXPECT_EQ(Content(buffer), row.strOut);
}

INSTANTIATE_TEST_SUITE_P(All, ID3v2Unsynchronize, testing::ValuesIn(s_aryUnsync),
                         [](const auto& row) { return std::string(row.param.pName); });

TEST(ID3v2UnsynchronizeRoundTrip, GivesBackWhatWasUnsynchronized)
{
    std::string str;
    unsigned int nRandom = 1;
    for (int i = 0; i < 10'000; ++i)
    {
        nRandom = nRandom * 1664525 + 1013904223;
        constexpr char aryBytes[] = {'\xFF', '\0', '\xE0', 'a'};
        str += aryBytes[nRandom >> 30];
    }
    LyBuffer buffer = Buffer(Unsynchronized(str));
    int nRemoved = 0;
    CID3v2Tag::UnsynchronizeBuffer(buffer, INT_MAX, &nRemoved);
    EXPECT_EQ(Content(buffer), str);
    EXPECT_EQ(nRemoved, static_cast<int>(Unsynchronized(str).size() - str.size()));
}

TEST(ID3v2Decompress, TheOutputHasTwentyTimesTheInputsRoom)
{
    ScriptedTools tools;
    tools.m_Script.nResult = 7;
    EXPECT_EQ(Decompressed("packed"), "ooooooo");
    EXPECT_EQ(tools.m_Script.nRoom, 120);
    EXPECT_EQ(tools.m_Script.nAlive, 0);
}

TEST(ID3v2Decompress, AFailureLeavesTheBuffer)
{
    ScriptedTools tools;
    EXPECT_EQ(Decompressed("packed"), "packed");
    tools.m_Script.nResult = 121; // more than there was room for
    EXPECT_EQ(Decompressed("packed"), "packed");
    tools.m_Script.bWorks = false;
    EXPECT_EQ(Decompressed("packed"), "packed");
    tools.m_Script.bThere = false;
    EXPECT_EQ(Decompressed("packed"), "packed");
    EXPECT_EQ(tools.m_Script.nAlive, 0);
}

TEST(ID3v2Decompress, NothingIsNotAskedFor)
{
    ScriptedTools tools;
    EXPECT_EQ(Decompressed(""), "");
    EXPECT_EQ(tools.m_Script.nRoom, -1);
}

TEST(ID3v2Decompress, AnOutputOfNothingEmptiesTheBuffer)
{
    ScriptedTools tools;
    tools.m_Script.nResult = 0;
    EXPECT_EQ(Decompressed("packed"), "");
}

TEST_F(ID3v2Inflate, InflatesAZLibStream)
{
    EXPECT_EQ(Decompressed(Deflated("A song of five words")), "A song of five words");
}

TEST_F(ID3v2Inflate, WhatIsLongerThanTwentyTimesStaysPacked)
{
    const std::string strPacked = Deflated(std::string(1'000'000, 'x'));
    ASSERT_LT(strPacked.size() * 20, 1'000'000U);
    EXPECT_EQ(Decompressed(strPacked), strPacked);
    // A byte for byte limit: padded to a twentieth, the same stream has room.
    const std::string strRoom = strPacked + std::string(50'000 - strPacked.size(), 'p');
    EXPECT_EQ(Decompressed(strRoom), std::string(1'000'000, 'x'));
}

TEST_F(ID3v2Inflate, DamageLeavesTheBuffer)
{
    std::string strDamaged = Deflated("A song of five words");
    strDamaged.back() ^= 1; // the check sum
    EXPECT_EQ(Decompressed(strDamaged), strDamaged);
    EXPECT_EQ(Decompressed("not packed"), "not packed");
}

TEST_F(ID3v2Inflate, ACompressedFrameIsDecodedAndKeptAsItIs)
{
    const std::string strPacked = Deflated(Bytes("\0A song of five words"));
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(4, Frame24("TIT2", strPacked, 0x08))));
    ASSERT_EQ(IDs(tag), "TIT2");
    EXPECT_EQ(Value(*tag.m_aryFrames[0]), "A song of five words");
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), strPacked);
}

TEST_F(ID3v2Inflate, ADataLengthIndicatorKeepsTheFrameFromBeingInflated)
{
    const std::string strPacked = SyncSafe(21) + Deflated(Bytes("\0A song of five words"));
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(4, Frame24("TIT2", strPacked, 0x09))));
    EXPECT_NE(Value(*tag.m_aryFrames[0]), "A song of five words");
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), strPacked);
}
