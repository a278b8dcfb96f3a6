// The walk over the chunks of a wave file, and what is known after it.

#include "MemoryReader.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <gtest/gtest.h>

using namespace WaveFiles;

namespace
{
class WAVInfoTest : public ::testing::Test
{
protected:
    WAVInfoTest() { m_Info.m_nTagWritingEnabled = 1; } // nobody's option store is asked
    int Open(const std::string& strFile, bool bStrict = true, bool bScanAll = true)
    {
        m_Reader.m_strContent = strFile;
        return m_Info.Open(&m_Reader, bStrict, bScanAll);
    }
    std::string GetIDs() const
    {
        std::string str;
        for (const CIFFChunk& chunk : m_Info.m_aryChunks)
            str.append(chunk.id, 4);
        return str;
    }
    MemoryReader m_Reader;
    CWAVInfo m_Info;
};

std::string Plain(const std::string& strMore = "") { return Riff(Format() + Chunk("data", Audio(400)) + strMore); }

// A stream of DTS frames of 2048 bytes, 16-bit big-endian.
std::string DTSFrames(int nFrames)
{
    std::string strFrame(2048, 0);
    // Sync word; normal frame, deficit 31, no CRC; 16 sample blocks; 2048 bytes.
    const unsigned char aryHeader[] = {0x7F, 0xFE, 0x80, 0x01, 0xFC, 0x3C, 0x7F, 0xF0};
    strFrame.replace(0, sizeof aryHeader, reinterpret_cast<const char*>(aryHeader), sizeof aryHeader);
    std::string str;
    for (int i = 0; i < nFrames; ++i)
        str += strFrame;
    return str;
}
} // namespace

TEST_F(WAVInfoTest, APlainFileIsKnownWhole)
{
    m_Reader.m_nPosition = 7;
    ASSERT_EQ(0, Open(Plain("junk")));
    EXPECT_EQ(7, m_Reader.m_nPosition) << "the reader is left where it was";
    EXPECT_TRUE(m_Info.m_bOpen);
    EXPECT_EQ(44, m_Info.GetHeaderBytes());
    EXPECT_EQ(400, m_Info.GetDataBytes());
    EXPECT_EQ(448, m_Info.GetTotalBytes());
    EXPECT_EQ(4, m_Info.m_nTrailerBytes);
    EXPECT_EQ(44100, m_Info.GetSampleRate());
    EXPECT_EQ(2, m_Info.GetChannels());
    EXPECT_EQ(16, m_Info.GetBitsPerSample());
    EXPECT_EQ(2, m_Info.GetBytesPerSample());
    EXPECT_EQ(176400, m_Info.GetAverageBytesPerSecond());
    EXPECT_EQ(1, m_Info.GetFormatID());
    EXPECT_EQ(4, m_Info.GetBlockAlign());
    EXPECT_EQ(100, m_Info.GetTotalBlocks());
    EXPECT_EQ(200, m_Info.GetTotalSamples());
    EXPECT_EQ(2, m_Info.GetLengthMS()); // 2.27
    EXPECT_EQ("fmt data", GetIDs());
    EXPECT_EQ(12, m_Info.m_aryChunks[0].offset);
    EXPECT_EQ(16u, m_Info.m_aryChunks[0].size);
    EXPECT_EQ(36, m_Info.m_aryChunks[1].offset);
}

TEST_F(WAVInfoTest, BlocksAndBytesAreTurnedIntoEachOther)
{
    EXPECT_EQ(-1, m_Info.GetByteFromBlock(0));
    EXPECT_EQ(-1, m_Info.GetBlockFromByte(44));
    ASSERT_EQ(0, Open(Plain()));
    EXPECT_EQ(44, m_Info.GetByteFromBlock(0));
    EXPECT_EQ(84, m_Info.GetByteFromBlock(10));
    EXPECT_EQ(10, m_Info.GetBlockFromByte(84));
    EXPECT_EQ(10, m_Info.GetBlockFromByte(87));
    EXPECT_EQ(11, m_Info.GetBlockFromByte(88));
    EXPECT_EQ(-1, m_Info.GetByteFromBlock(LLONG_MAX)) << "what 64 bits cannot hold";
    EXPECT_EQ(-1, m_Info.GetBlockFromByte(LLONG_MIN));
    m_Info.m_AudioFormat.nBlockAlign = 0; // channels times bits
    EXPECT_EQ(84, m_Info.GetByteFromBlock(10));
    m_Info.m_AudioFormat.nChannels = 0;
    EXPECT_EQ(-1, m_Info.GetBlockFromByte(84));
}

struct OPEN_CASE
{
    const char* pName;
    std::string strFile;
    bool bStrict, bScanAll;
    int nResult;
};

TEST_F(WAVInfoTest, OpensOrIsRefused)
{
    const std::string strData = Chunk("data", Audio(8));
    const std::string strBadRoot = "RIFF" + Number(3) + Plain().substr(8);
    const std::string strTooLong = Riff(Format() + "data" + Number(9) + Audio(8));
    const OPEN_CASE aryCases[] = {
        {"plain", Plain(), true, true, 0},
        {"nothing", "", true, true, -1},
        {"eight bytes", std::string("RIFF\4\0\0\0", 8), true, true, -1},
        {"no chunks", Riff(""), true, true, -1},
        {"RF64", "RF64" + Plain().substr(4), false, true, -1},
        {"RIFX", "RIFX" + Plain().substr(4), false, true, -1},
        {"another form", "RIFF" + Number(100) + "AVI " + Plain().substr(12), false, true, -1},
        {"the root length plays no part", strBadRoot, true, true, 0},
        {"data ahead of the format", Riff(strData + Format()), true, true, 0},
        {"data ahead of the format, no scan", Riff(strData + Format()), true, false, 0},
        {"no data", Riff(Format()), true, true, -1},
        {"no format", Riff(strData), true, true, -1},
        {"data that claim more than there is", strTooLong, true, true, -1},
        {"no data at all", Riff(Format() + Chunk("data", "")), true, true, 0},
        {"a format of 14 bytes", Riff(Chunk("fmt ", Format().substr(8, 14)) + strData), false, true, -1},
        {"a format of 15 bytes and a pad byte", Riff(Chunk("fmt ", Format().substr(8, 15)) + strData), false, true, 0},
        {"a format of 15 bytes at the end", Riff(strData + Chunk("fmt ", Format().substr(8, 15), false)), false, true,
         -1},
        {"float", Riff(Format(3, 2, 48000, 32) + strData), true, true, 0},
        {"extensible", Riff(Format(0xFFFE, 2, 48000, 24) + strData), true, true, 0},
        {"mu-law, strict", Riff(Format(7, 1, 8000, 8) + strData), true, true, -1},
        {"mu-law", Riff(Format(7, 1, 8000, 8) + strData), false, true, 0},
        {"a tag nobody knows, strict", Riff(Format(0x1234) + strData), true, true, -1},
        {"a tag nobody knows", Riff(Format(0x1234) + strData), false, true, 0},
        {"trailing garbage", Plain("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"), true, true, 0},
        {"lower case", "riff" + Plain().substr(4), false, true, -1},
    };
    for (const OPEN_CASE& row : aryCases)
    {
        MemoryReader reader(row.strFile);
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        reader.m_nPosition = 3;
        EXPECT_EQ(row.nResult, info.Open(&reader, row.bStrict, row.bScanAll)) << row.pName;
        EXPECT_EQ(row.nResult == 0, info.m_bOpen) << row.pName;
        EXPECT_EQ(3, reader.m_nPosition) << row.pName;
        EXPECT_EQ(row.strFile, reader.m_strContent) << row.pName;
    }
}

TEST_F(WAVInfoTest, WithoutAScanTheWalkEndsWhereFormatAndDataAreKnown)
{
    ASSERT_EQ(0, Open(Plain(Chunk("id3 ", Tag(TextFrame("TIT2", "a")))), true, false));
    EXPECT_EQ("fmt data", GetIDs());
    EXPECT_FALSE(m_Info.m_ID3v2Tag.m_bLoaded);
    EXPECT_EQ(-1, m_Info.m_nID3ChunkIndex);

    MemoryReader reader(Riff(Chunk("data", Audio(8)) + Chunk("abcd", "x") + Format() + Chunk("efgh", "")));
    CWAVInfo other;
    other.m_nTagWritingEnabled = 1;
    ASSERT_EQ(0, other.Open(&reader, true, false));
    EXPECT_EQ(3, other.m_aryChunks.GetSize()) << "up to the format";
}

TEST_F(WAVInfoTest, AFurtherFormatOrDataChunkReplacesTheFirst)
{
    ASSERT_EQ(0, Open(Riff(Format() + Chunk("data", Audio(8)) + Format(1, 1, 8000, 8) + Chunk("data", Audio(6)))));
    EXPECT_EQ(8000, m_Info.GetSampleRate());
    EXPECT_EQ(6, m_Info.GetDataBytes());
    EXPECT_EQ(12 + 24 + 16 + 24 + 8, m_Info.GetHeaderBytes());
    EXPECT_EQ(0, m_Info.m_nTrailerBytes);
}

// ---- The format

struct FORMAT_CASE
{
    int nTag, nBits;
    int nFormatID;
    const _GUID& subFormat;
};

TEST_F(WAVInfoTest, TheSubFormatComesFromTheTag)
{
    const FORMAT_CASE aryCases[] = {
        {1, 16, 1, LY_GUID_PCM},
        {1, 32, 1, LY_GUID_PCM},
        {3, 32, 3, LY_GUID_IEEE_FLOAT},
        {3, 64, 3, LY_GUID_IEEE_FLOAT},
        {7, 8, 7, LY_GUID_MULAW},
        {0x50, 16, 0x50, LY_GUID_MPEG},
        {0x92, 16, 0x92, LY_GUID_DOLBY_SPDIF},
        {0xFFFE, 24, 1, LY_GUID_PCM},
        {0xFFFE, 32, 3, LY_GUID_IEEE_FLOAT},
        {0x1234, 16, 1, LY_GUID_PCM},
    };
    for (const FORMAT_CASE& row : aryCases)
    {
        // The extension says something else, and is not read.
        MemoryReader reader(Riff(Format(row.nTag, 2, 44100, row.nBits, std::string(24, 'x')) + Chunk("data", "abcd")));
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        ASSERT_EQ(0, info.Open(&reader, false, true)) << row.nTag;
        EXPECT_EQ(row.nFormatID, info.GetFormatID()) << row.nTag;
        EXPECT_TRUE(row.subFormat == info.m_AudioFormat.SubFormat) << row.nTag << " " << row.nBits;
        EXPECT_EQ(row.nBits, info.m_AudioFormat.wBitsPerSample);
        EXPECT_EQ(0, info.m_AudioFormat.cbSize);
    }
    EXPECT_EQ(0x47, LY_GUID_IEEE_FLOAT.Data4[7]) << "which is to stay";
}

TEST_F(WAVInfoTest, TheFilesOwnRatesArePutIntoTheFormat)
{
    std::string strFormat = Format();
    strFormat.replace(16, 4, Number(12345)); // average bytes per second
    strFormat.replace(20, 2, Number(40, 2)); // block align
    ASSERT_EQ(0, Open(Riff(strFormat + Chunk("data", Audio(400)))));
    EXPECT_EQ(12345, m_Info.GetAverageBytesPerSecond());
    EXPECT_EQ(40, m_Info.GetBlockAlign());
    EXPECT_EQ(10, m_Info.GetTotalBlocks());
    EXPECT_EQ(32, m_Info.GetLengthMS()); // 400000 / 12345 = 32.4
    EXPECT_EQ(200, m_Info.GetTotalSamples()) << "by the bits of a sample";
}

TEST_F(WAVInfoTest, LargestNumbersOfAFormatAreNoFault)
{
    const std::string strFormat = Chunk("fmt ", Number(1, 2) + std::string(14, '\xFF'));
    ASSERT_EQ(0, Open(Riff(strFormat + Chunk("data", Audio(400)))));
    EXPECT_EQ(0xFFFFFFFFLL, m_Info.GetSampleRate());
    EXPECT_EQ(0xFFFFFFFFLL, m_Info.GetAverageBytesPerSecond());
    EXPECT_EQ(0xFFFF, m_Info.GetChannels());
    EXPECT_EQ(0xFFFF, m_Info.GetBlockAlign());
    EXPECT_EQ(0, m_Info.GetTotalBlocks());
}

TEST_F(WAVInfoTest, AFormatOfZeroesHasNoLengths)
{
    ASSERT_EQ(0, Open(Riff(Chunk("fmt ", Number(1, 2) + std::string(14, 0)) + Chunk("data", Audio(400)))));
    EXPECT_EQ(-1, m_Info.GetLengthMS());
    EXPECT_EQ(-1, m_Info.GetTotalBlocks());
    EXPECT_EQ(-1, m_Info.GetTotalSamples());
    EXPECT_EQ(400, m_Info.GetDataBytes());
    char aryBytes[8];
    long long nRead = 77;
    EXPECT_EQ(0, m_Info.ReadBlocks(aryBytes, 0, 1, &nRead, false));
    EXPECT_EQ(0, nRead);
}

// ---- DTS

TEST_F(WAVInfoTest, ADTSStreamChangesTheFormatTagAlone)
{
    ASSERT_EQ(0, Open(Riff(Format() + Chunk("data", std::string(1000, 0) + DTSFrames(50)))));
    EXPECT_EQ(8, m_Info.GetFormatID());
    EXPECT_EQ(2, m_Info.GetChannels());
    EXPECT_EQ(44100, m_Info.GetSampleRate());
    EXPECT_TRUE(LY_GUID_PCM == m_Info.m_AudioFormat.SubFormat);
}

TEST_F(WAVInfoTest, DTSIsLookedForInWhatSaysToBeACDsAudio)
{
    const std::string strData = Chunk("data", DTSFrames(50));
    const std::string aryFiles[] = {
        Riff(Format(1, 1) + strData), Riff(Format(1, 2, 48000) + strData), Riff(Format(1, 2, 44100, 24) + strData),
        Riff(strData + Format()), // the format is not known yet
    };
    for (const std::string& strFile : aryFiles)
    {
        MemoryReader reader(strFile);
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        ASSERT_EQ(0, info.Open(&reader, true, true));
        EXPECT_EQ(1, info.GetFormatID());
    }
}

TEST_F(WAVInfoTest, TheDTSTestReads256KiBAndTheWalkGoesOnBehindTheData)
{
    m_Reader.m_bRecords = true;
    ASSERT_EQ(0, Open(Riff(Format() + Chunk("data", Audio(0x40000 + 1001)) + Chunk("abcd", "x"))));
    EXPECT_EQ("fmt dataabcd", GetIDs());
    EXPECT_EQ(1, m_Reader.CountCalls("Read " + std::to_string(0x40000)));
}

// ---- The chunks behind

TEST_F(WAVInfoTest, EveryChunkIsRecordedWithItsPlace)
{
    ASSERT_EQ(0, Open(Riff(Chunk("abcd", "x") + Format() + Chunk("data", Audio(5)) + Chunk("efgh", "yz"))));
    ASSERT_EQ("abcdfmt dataefgh", GetIDs());
    const long long aryOffsets[] = {12, 22, 46, 60};
    const unsigned int arySizes[] = {1, 16, 5, 2};
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(aryOffsets[i], m_Info.m_aryChunks[i].offset);
        EXPECT_EQ(arySizes[i], m_Info.m_aryChunks[i].size);
    }
    EXPECT_EQ(54, m_Info.GetHeaderBytes());
    EXPECT_EQ(11, m_Info.m_nTrailerBytes);
}

TEST_F(WAVInfoTest, ALastChunkOfOddSizeNeedsNoPadByte)
{
    ASSERT_EQ(0, Open(Riff(Format() + Chunk("data", Audio(5), false))));
    EXPECT_EQ(5, m_Info.GetDataBytes());
    EXPECT_EQ(0, m_Info.m_nTrailerBytes);
}

TEST_F(WAVInfoTest, TheTagChunkHasThreeSpellings)
{
    for (const char* pID : {"id3 ", "ID3 ", "tag "})
    {
        MemoryReader reader(Plain(Chunk(pID, Tag(TextFrame("TIT2", "Title"))) + Chunk("abcd", "")));
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        ASSERT_EQ(0, info.Open(&reader, true, true));
        EXPECT_EQ(2, info.m_nID3ChunkIndex);
        EXPECT_EQ(4, info.m_aryChunks.GetSize());
        EXPECT_TRUE(info.m_ID3v2Tag.m_bLoaded);
        EXPECT_EQ(452, info.m_ID3v2Tag.m_nFilePosition);
        EXPECT_EQ(1, info.m_ID3v2Tag.m_aryFrames.GetSize());
    }
}

TEST_F(WAVInfoTest, OfSeveralTagChunksTheLastOneWins)
{
    ASSERT_EQ(0, Open(Plain(Chunk("id3 ", Tag(TextFrame("TIT2", "First") + TextFrame("TALB", "Album"))) +
                            Chunk("ID3 ", Tag(TextFrame("TIT2", "Second"))))));
    EXPECT_EQ(3, m_Info.m_nID3ChunkIndex);
    ASSERT_EQ(1, m_Info.m_ID3v2Tag.m_aryFrames.GetSize());
    EXPECT_STREQ(L"Second", m_Info.m_ID3v2Tag.m_aryFrames[0]->m_Properties.GetProperty(L"Value"));
}

TEST_F(WAVInfoTest, ATagThatDoesNotParseIsNoFailureOfTheWalk)
{
    ASSERT_EQ(0, Open(Plain(Chunk("id3 ", "no tag at all") + Chunk("abcd", "x"))));
    EXPECT_FALSE(m_Info.m_ID3v2Tag.m_bLoaded);
    EXPECT_EQ(2, m_Info.m_nID3ChunkIndex);
    EXPECT_EQ("fmt dataid3 abcd", GetIDs());
    EXPECT_EQ(452, m_Info.m_ID3v2Tag.m_nFilePosition);
}

TEST_F(WAVInfoTest, EmptyAndShortestTagChunksAreNoFault)
{
    ASSERT_EQ(0, Open(Plain(Chunk("id3 ", "") + Chunk("tag ", "x") + Chunk("abcd", ""))));
    EXPECT_EQ("fmt dataid3 tag abcd", GetIDs());
    EXPECT_EQ(3, m_Info.m_nID3ChunkIndex);
    EXPECT_EQ(0, m_Info.m_ID3v2Tag.m_RawTag.GetSize()) << "cut by a byte, there is nothing left";
}

TEST_F(WAVInfoTest, ATagWhoseBodyCannotBeReadEndsTheWalk)
{
    m_Reader.m_nReadableEnd = 460;
    ASSERT_EQ(0, Open(Plain(Chunk("id3 ", Tag(TextFrame("TIT2", "Title"))) + Chunk("abcd", ""))));
    EXPECT_EQ("fmt dataid3 ", GetIDs());
    EXPECT_EQ(-1, m_Info.m_nID3ChunkIndex);
}

TEST_F(WAVInfoTest, ALaterListOfAnotherTypeEmptiesTheMap)
{
    const std::string strInfo = InfoList(InfoItem("IART", std::string("Me\0\0", 4)));
    ASSERT_EQ(0, Open(Plain(strInfo)));
    EXPECT_EQ(1, m_Info.m_List.GetCount());

    MemoryReader reader(Plain(strInfo + Chunk("LIST", "adtl") + Chunk("abcd", "")));
    CWAVInfo other;
    other.m_nTagWritingEnabled = 1;
    ASSERT_EQ(0, other.Open(&reader, true, true));
    EXPECT_EQ(0, other.m_List.GetCount());
    EXPECT_EQ(5, other.m_aryChunks.GetSize());
}

TEST_F(WAVInfoTest, AListOfOddSizeIsFollowedByAPadByte)
{
    ASSERT_EQ(0, Open(Plain(Chunk("LIST", "INFO" + InfoItem("IART", "Me") + "x") + Chunk("abcd", ""))));
    EXPECT_EQ("fmt dataLISTabcd", GetIDs());
    EXPECT_EQ(1, m_Info.m_List.GetCount());
}

TEST_F(WAVInfoTest, AListThatCannotBeReadEndsTheWalk)
{
    m_Reader.m_nReadableEnd = 455;
    ASSERT_EQ(0, Open(Plain(InfoList(InfoItem("IART", "Me")) + Chunk("abcd", ""))));
    EXPECT_EQ("fmt dataLIST", GetIDs());
    EXPECT_EQ(0, m_Info.m_List.GetCount());
}

TEST_F(WAVInfoTest, TheUITSChunkIsHeldWithItsPadByte)
{
    ASSERT_EQ(0, Open(Plain(Chunk("UITS", "abc") + Chunk("abcd", ""))));
    const CUITSChunk* pUITS = m_Info.m_pUITSChunk;
    ASSERT_NE(nullptr, pUITS);
    EXPECT_EQ("UITS", std::string(pUITS->id, 4));
    EXPECT_EQ(3u, pUITS->size);
    EXPECT_EQ(3u, pUITS->m_nBytesOnReading);
    EXPECT_EQ(444, pUITS->offset);
    EXPECT_EQ(2, pUITS->m_nChunkIndex);
    EXPECT_FALSE(pUITS->m_bDirty);
    ASSERT_EQ(4, pUITS->m_Data.GetSize());
    EXPECT_EQ(std::string("abc\0", 4), std::string(reinterpret_cast<const char*>(pUITS->m_Data.GetData()), 4));
    EXPECT_EQ("fmt dataUITSabcd", GetIDs());
}

TEST_F(WAVInfoTest, OfSeveralUITSChunksTheLastOneIsHeld)
{
    ASSERT_EQ(0, Open(Plain(Chunk("UITS", "first") + Chunk("UITS", "ab", false))));
    LyString strValue;
    EXPECT_TRUE(m_Info.Get(L"UITS Payload", strValue));
    EXPECT_STREQ(L"ab", strValue);
    EXPECT_EQ(3, m_Info.m_pUITSChunk->m_nChunkIndex);
}

TEST_F(WAVInfoTest, AnEmptyUITSChunkIsOneToo)
{
    ASSERT_EQ(0, Open(Plain(Chunk("UITS", "") + Chunk("abcd", ""))));
    LyString strValue = L"before";
    EXPECT_TRUE(m_Info.Get(L"UITS Payload", strValue));
    EXPECT_TRUE(strValue.IsEmpty());
    EXPECT_EQ("fmt dataUITSabcd", GetIDs());
}

// ---- Opening again

TEST_F(WAVInfoTest, TheRecordsOfAFurtherOpeningStandBehindThoseOfTheFirst)
{
    const std::string strTag = Chunk("id3 ", Tag(TextFrame("TIT2", "Title")));
    ASSERT_EQ(0, Open(Plain(strTag + Chunk("UITS", "ab"))));
    ASSERT_EQ(0, m_Info.Open(nullptr, true, true));
    EXPECT_EQ("fmt dataid3 UITSfmt dataid3 UITS", GetIDs());
    EXPECT_EQ(6, m_Info.m_nID3ChunkIndex);
    EXPECT_EQ(7, m_Info.m_pUITSChunk->m_nChunkIndex);
    ASSERT_EQ(0, Open(Plain()));
    EXPECT_EQ(6, m_Info.m_nID3ChunkIndex) << "a file without a tag keeps the old one";
    EXPECT_TRUE(m_Info.m_ID3v2Tag.m_bLoaded);
    EXPECT_EQ(10, m_Info.m_aryChunks.GetSize());
}

TEST_F(WAVInfoTest, AFailedOpeningLeavesNothingOpen)
{
    ASSERT_EQ(0, Open(Plain()));
    m_Reader.m_strContent = "something else";
    EXPECT_EQ(-1, m_Info.Open(nullptr, true, true));
    EXPECT_FALSE(m_Info.m_bOpen);
    EXPECT_EQ(-1, m_Info.GetDataBytes());
}

// ---- Hostile files

TEST_F(WAVInfoTest, AStreamDoesNotOpen)
{
    m_Reader.m_bStream = true; // it has no length
    EXPECT_EQ(-1, Open(Plain()));
}

TEST_F(WAVInfoTest, EmptyChunksWithoutEndEndTheWalk)
{
    const int nChunks = CIFFInfo::MAX_CHUNKS + 1000;
    ASSERT_EQ(0, Open(Plain(std::string(static_cast<size_t>(nChunks) * 8, 0))));
    EXPECT_EQ(CIFFInfo::MAX_CHUNKS, m_Info.m_aryChunks.GetSize());
}

TEST_F(WAVInfoTest, AFileCutAnywhereIsNoFault)
{
    const std::string strFile =
        Riff(Format() + Chunk("data", Audio(9)) + Chunk("id3 ", Tag(TextFrame("TIT2", "Title"), 3)) +
             InfoList(InfoItem("IART", "Me")) + Chunk("UITS", "abc") + Chunk("abcd", "xyz"));
    const size_t nDataEnd = 12 + 24 + 8 + 9;
    for (size_t n = 0; n < strFile.size(); ++n)
    {
        MemoryReader reader(strFile.substr(0, n));
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        EXPECT_EQ(n < nDataEnd ? -1 : 0, info.Open(&reader, true, true)) << n;
    }
}

TEST_F(WAVInfoTest, EverySizeFieldMayLie)
{
    const std::string strFile =
        Riff(Format() + Chunk("data", Audio(9)) + Chunk("id3 ", Tag(TextFrame("TIT2", "Title"), 3)) +
             InfoList(InfoItem("IART", "Me")) + Chunk("UITS", "abc") + Chunk("abcd", "xyz"));
    for (const CHUNK& chunk : List(strFile))
    {
        for (unsigned int nSize : {0u, 1u, 0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF8u, 0xFFFFFFFFu})
        {
            MemoryReader reader(strFile);
            CWAVInfo info;
            info.m_nTagWritingEnabled = 1;
            reader.m_strContent.replace(chunk.nOffset + 4, 4, Number(nSize));
            (void)info.Open(&reader, true, true);
            const long long nLength = static_cast<long long>(strFile.size());
            for (const CIFFChunk& record : info.m_aryChunks)
                EXPECT_LE(record.offset + 8 + record.size, nLength);
        }
    }
}
