// What a container of chunks is like: its root, its numbers, the names of its chunks.

#include "BigEndianInfo.h"
#include "MemoryReader.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <gtest/gtest.h>

using namespace WaveFiles;

// ---- What a container is like

TEST(IFFInfoContainer, OfRIFFNothingIsTurned)
{
    MemoryReader reader;
    BigEndianInfo info;
    unsigned int n = 0x01020304;
    info.CIFFInfo::FlipLong(&n);
    EXPECT_EQ(0x01020304u, n);
    EXPECT_FALSE(info.ChangeRootChunkLength(&reader, 4));
    EXPECT_EQ(0u, info.GetRootChunkLength(&reader));
    EXPECT_TRUE(info.GetSupportTags());
}

TEST(IFFInfoContainer, APadByteFollowsAnOddSize)
{
    MemoryReader reader;
    CWAVInfo info;
    EXPECT_FALSE(info.PadOneByteAtCurrentPositionIfNeeded(nullptr, 1));
    EXPECT_FALSE(info.PadOneByteAtCurrentPositionIfNeeded(&reader, 4));
    EXPECT_EQ("", reader.m_strContent);
    EXPECT_TRUE(info.PadOneByteAtCurrentPositionIfNeeded(&reader, 5));
    EXPECT_EQ(std::string(1, 0), reader.m_strContent);
    reader.m_nWritableEnd = 1;
    EXPECT_FALSE(info.PadOneByteAtCurrentPositionIfNeeded(&reader, 5)) << "it could not be written";
}

struct ROOT_CASE
{
    const char* pName;
    std::string strFile, strExpected;
    bool bBigEndian;
};

TEST(IFFInfoContainer, ABadRootLengthIsMended)
{
    const ROOT_CASE aryCases[] = {
        {"right", "RIFF" + Number(4) + "WAVE", "RIFF" + Number(4) + "WAVE", false},
        {"wrong", "RIFF" + Number(99) + "WAVE", "RIFF" + Number(4) + "WAVE", false},
        {"FORM", "FORM" + BigEndian(0) + "AIFF", "FORM" + BigEndian(4) + "AIFF", true},
        {"another root", "ABCD" + Number(99) + "WAVE", "ABCD" + Number(99) + "WAVE", false},
        {"too short", "RIFF123", "RIFF123", false},
        {"nothing", "", "", false},
    };
    for (const ROOT_CASE& row : aryCases)
    {
        MemoryReader reader(row.strFile);
        reader.m_nPosition = 2;
        CWAVInfo little;
        BigEndianInfo big;
        big.m_nTagWritingEnabled = 1;
        CIFFInfo& info = row.bBigEndian ? static_cast<CIFFInfo&>(big) : little;
        info.m_pReader.Set(&reader, false, false);
        EXPECT_TRUE(info.FixBadRootChunkSize()) << row.pName;
        EXPECT_EQ(row.strExpected, reader.m_strContent) << row.pName;
        EXPECT_EQ(2, reader.m_nPosition) << row.pName;
    }
}

TEST(IFFInfoContainer, ARootLengthThatIsRightIsNotWritten)
{
    MemoryReader reader("RIFF" + Number(4) + "WAVE");
    reader.m_bRecords = true;
    CWAVInfo info;
    info.m_pReader.Set(&reader, false, false);
    EXPECT_TRUE(info.FixBadRootChunkSize());
    EXPECT_EQ(0, reader.CountCalls("Write"));
}

TEST(IFFInfoContainer, TheTagIsKnownByThreeSpellings)
{
    for (const char* pID : {"id3 ", "ID3 ", "tag "})
        EXPECT_TRUE(CIFFInfo::ChunkIsID3(pID)) << pID;
    for (const char* pID : {"Id3 ", "TAG ", "id3", "id32", "data", " id3"})
        EXPECT_FALSE(CIFFInfo::ChunkIsID3(pID)) << pID;
    EXPECT_FALSE(CIFFInfo::ChunkIsID3(nullptr));
}

// ---- The root of a wave file

TEST(WAVInfoRoot, LengthIsReadAndChanged)
{
    MemoryReader reader("RIFF" + Number(1000) + "WAVE");
    CWAVInfo info;
    EXPECT_EQ(1000u, info.GetRootChunkLength(&reader));
    EXPECT_TRUE(info.ChangeRootChunkLength(&reader, 24));
    EXPECT_EQ("RIFF" + Number(1024) + "WAVE", reader.m_strContent);
    EXPECT_TRUE(info.ChangeRootChunkLength(&reader, -1025));
    EXPECT_EQ(0xFFFFFFFFu, info.GetRootChunkLength(&reader)) << "modulo 2^32";
}

TEST(WAVInfoRoot, OfWhatIsNoneIsRefused)
{
    CWAVInfo info;
    EXPECT_EQ(0u, info.GetRootChunkLength(nullptr));
    EXPECT_FALSE(info.ChangeRootChunkLength(nullptr, 4));
    for (const std::string& strFile : {std::string("RIFX") + Number(4), std::string("RIFF\1\2\3", 7), std::string()})
    {
        MemoryReader reader(strFile);
        EXPECT_EQ(0u, info.GetRootChunkLength(&reader));
        EXPECT_FALSE(info.ChangeRootChunkLength(&reader, 4));
        EXPECT_EQ(strFile, reader.m_strContent);
    }
    MemoryReader reader("RIFF" + Number(1000));
    reader.m_nRefusedPosition = 0;
    EXPECT_EQ(0u, info.GetRootChunkLength(&reader));
    reader.m_nRefusedPosition = -1;
    reader.m_bOpen = false;
    EXPECT_FALSE(info.ChangeRootChunkLength(&reader, 4));
    reader.m_bOpen = true;
    reader.m_nWritableEnd = 7;
    EXPECT_FALSE(info.ChangeRootChunkLength(&reader, 4)) << "not all 8 bytes went";
}
