// The reader of any container of chunks: its table of operations, opening and closing, audio by blocks.

#include "BigEndianInfo.h"
#include "LySharedToolsHelper.h"
#include "MemoryReader.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <gtest/gtest.h>
#include <iterator>

using namespace WaveFiles;

static_assert(offsetof(CIFFChunk, id) == 0 && sizeof(CIFFChunk::id) == 4);
static_assert(std::is_base_of_v<CIFFChunk, CUITSChunk> && std::is_abstract_v<CUITSChunk>);
static_assert(std::is_base_of_v<CIFFInfo, CWAVInfo> && std::is_abstract_v<CIFFInfo>);

namespace
{
std::string Plain(size_t nAudio = 400) { return Riff(Format() + Chunk("data", Audio(nAudio))); }

class IFFInfoTest : public ::testing::Test
{
protected:
    IFFInfoTest() : m_Reader(Plain()) { m_Info.m_nTagWritingEnabled = 1; }
    void SetUp() override { ASSERT_EQ(0, m_Info.Open(&m_Reader)); }
    MemoryReader m_Reader;
    CWAVInfo m_Info;
};
} // namespace

// ---- The table of operations

template <class RESULT, class... ARGUMENTS>
static RESULT CallSlot(CIFFInfo& info, int nSlot, ARGUMENTS... arguments)
{
    void** pTable = *reinterpret_cast<void***>(&info);
    return reinterpret_cast<RESULT (*)(CIFFInfo*, ARGUMENTS...)>(pTable[nSlot])(&info, arguments...);
}

TEST(IFFInfoSlots, StandInTheirOrder)
{
    MemoryReader reader(Plain());
    CWAVInfo info;
    info.m_nTagWritingEnabled = 1;
    ILyReader* pReader = &reader;
    EXPECT_EQ(-1, (CallSlot<int, const wchar_t*, bool, bool>(info, 2, L"/nowhere/at/all.wav", true, true)));
    EXPECT_EQ(0, (CallSlot<int, ILyReader*, bool, bool>(info, 3, pReader, true, true)));
    EXPECT_EQ(0, (CallSlot<int, bool, bool>(info, 4, true, true)));
    char aryBytes[8];
    long long nRead = 0;
    EXPECT_EQ(0, (CallSlot<int, void*, long long, long long, long long*, bool>(info, 5, aryBytes, 1, 2, &nRead, true)));
    EXPECT_EQ(8, nRead);
    EXPECT_EQ(info.GetAudioFormat(), CallSlot<CAudioFormat*>(info, 8));
    const long long aryExpected[] = {2, 100, 200, 44100, 16, 2, 2, 176400, 1, 4, 400, 444, 44};
    const bool aryLong[] = {true, true, true, true, false, false, false, true, false, false, true, true, true};
    for (int i = 0; i < 13; ++i) // GetLengthMS to GetHeaderBytes
        EXPECT_EQ(aryExpected[i], aryLong[i] ? CallSlot<long long>(info, 9 + i) : CallSlot<int>(info, 9 + i)) << i;
    char aryHeader[44];
    EXPECT_EQ(0, (CallSlot<int, void*>(info, 22, aryHeader)));
    EXPECT_EQ(Plain().substr(0, 44), std::string(aryHeader, 44));
    EXPECT_EQ(48, (CallSlot<long long, long long>(info, 23, 1)));
    EXPECT_EQ(1, (CallSlot<long long, long long>(info, 24, 48)));
    LyString strValue;
    EXPECT_TRUE((CallSlot<bool, const LyString&, const LyString&>(info, 26, L"Name", L"x")));
    EXPECT_TRUE((CallSlot<bool, const LyString&, LyString&>(info, 25, L"Name", strValue)));
    EXPECT_STREQ(L"x", strValue);
    info.m_ID3v2Tag.m_bDirty = false;
    EXPECT_TRUE((CallSlot<bool, bool>(info, 27, false)));
    EXPECT_TRUE(CallSlot<LyString>(info, 28).IsEmpty());
    unsigned int n = 0x01020304;
    CallSlot<void, void*>(info, 29, &n);
    EXPECT_EQ(0x01020304u, n);
    EXPECT_TRUE((CallSlot<bool, ILyReader*, long long>(info, 30, pReader, 0)));
    EXPECT_EQ(436u, (CallSlot<unsigned int, ILyReader*>(info, 31, pReader)));
    EXPECT_FALSE((CallSlot<bool, ILyReader*, long long>(info, 32, pReader, 2)));
    EXPECT_STREQ("id3 ", CallSlot<const char*>(info, 33));
    EXPECT_TRUE(CallSlot<bool>(info, 34));
    EXPECT_TRUE(CallSlot<bool>(info, 35));
    EXPECT_EQ(-1, CallSlot<int>(info, 6)) << "ReOpen goes by the name";
    EXPECT_EQ(0, CallSlot<int>(info, 7));
    info.m_ID3v2Tag.m_bDirty = false;
}

TEST(IFFInfoSlots, TheUITSChunkWritesFirst)
{
    CWAVUITSChunk chunk;
    void** pTable = *reinterpret_cast<void***>(static_cast<CUITSChunk*>(&chunk));
    EXPECT_FALSE(reinterpret_cast<bool (*)(CUITSChunk*, ILyReader*)>(pTable[0])(&chunk, nullptr));
}

// ---- Before anything is open

TEST(IFFInfo, IsClosedWhenItIsMade)
{
    CWAVInfo info;
    EXPECT_FALSE(info.m_bOpen);
    EXPECT_EQ(-1, info.m_nID3ChunkIndex);
    EXPECT_EQ(-1, info.m_nTagWritingEnabled);
    EXPECT_EQ(nullptr, info.m_pUITSChunk.Get());
    EXPECT_EQ(nullptr, info.m_pReader.Get());
    EXPECT_LT(info.m_nDataBytes, 0);
    EXPECT_EQ(0, info.m_aryChunks.GetSize());
    EXPECT_EQ(0, info.m_List.GetCount());
}

TEST(IFFInfo, AnswersMinusOneWhileNothingIsOpen)
{
    CWAVInfo info;
    char c = 0;
    long long n = 0;
    EXPECT_EQ(-1, info.GetLengthMS());
    EXPECT_EQ(-1, info.GetTotalBlocks());
    EXPECT_EQ(-1, info.GetTotalSamples());
    EXPECT_EQ(-1, info.GetSampleRate());
    EXPECT_EQ(-1, info.GetBitsPerSample());
    EXPECT_EQ(-1, info.GetBytesPerSample());
    EXPECT_EQ(-1, info.GetChannels());
    EXPECT_EQ(-1, info.GetAverageBytesPerSecond());
    EXPECT_EQ(-1, info.GetFormatID());
    EXPECT_EQ(-1, info.GetBlockAlign());
    EXPECT_EQ(-1, info.GetDataBytes());
    EXPECT_EQ(-1, info.GetTotalBytes());
    EXPECT_EQ(-1, info.GetHeaderBytes());
    EXPECT_EQ(-1, info.GetHeaderData(&c));
    EXPECT_EQ(-1, info.ReadBlocks(&c, 0, 1, &n, false));
    EXPECT_EQ(&info.m_AudioFormat, info.GetAudioFormat());
    EXPECT_TRUE(info.GetSupportTags());
    EXPECT_FALSE(info.FixBadRootChunkSize());
    EXPECT_EQ(-1, info.ReadID3Tags(4));
    EXPECT_EQ(-1, info.Open(nullptr, true, true));
}

TEST_F(IFFInfoTest, AnswersMinusOneAgainOnceItIsClosed)
{
    EXPECT_EQ(0, m_Info.Close());
    EXPECT_EQ(-1, m_Info.GetSampleRate());
    EXPECT_EQ(-1, m_Info.GetDataBytes());
    EXPECT_EQ(-1, m_Info.GetTotalBlocks());
    EXPECT_TRUE(m_Reader.m_bOpen) << "the reader is the caller's";
    EXPECT_EQ(2, m_Info.m_aryChunks.GetSize()) << "closing leaves the records";
}

// ---- Queries

TEST_F(IFFInfoTest, BitsAreTheValidOnesAndBytesThoseOfTheContainer)
{
    m_Info.m_AudioFormat.wBitsPerSample = 24;
    m_Info.m_AudioFormat.wValidBitsPerSample = 20;
    EXPECT_EQ(20, m_Info.GetBitsPerSample());
    EXPECT_EQ(3, m_Info.GetBytesPerSample());
}

TEST_F(IFFInfoTest, AnUnknownLengthIsMinusOne)
{
    m_Info.m_nDataBytes = -5;
    EXPECT_EQ(-1, m_Info.GetTotalSamples());
    EXPECT_EQ(-1, m_Info.GetTotalBlocks());
    EXPECT_EQ(-1, m_Info.GetLengthMS());
    EXPECT_EQ(-5, m_Info.GetDataBytes());
}

TEST_F(IFFInfoTest, SamplesAreRoundedDownToAMultipleOfTheChannels)
{
    m_Info.m_nDataBytes = 399; // 199 samples
    EXPECT_EQ(198, m_Info.GetTotalSamples());
    EXPECT_EQ(99, m_Info.GetTotalBlocks());
    m_Info.m_AudioFormat.nChannels = 7;
    EXPECT_EQ(196, m_Info.GetTotalSamples());
    m_Info.m_AudioFormat.wBitsPerSample = 7;
    EXPECT_EQ(-1, m_Info.GetTotalSamples()) << "no byte to a sample";
}

TEST_F(IFFInfoTest, ABlockWithoutAlignHasChannelsTimesBits)
{
    m_Info.m_AudioFormat.nBlockAlign = 0;
    m_Info.m_AudioFormat.wBitsPerSample = 1; // 2 bits a block
    EXPECT_EQ(2, m_Info.GetBlockBits());
    EXPECT_EQ(1600, m_Info.GetTotalBlocks());
    m_Info.m_AudioFormat.nBlockAlign = 8;
    EXPECT_EQ(50, m_Info.GetTotalBlocks());
}

TEST_F(IFFInfoTest, TheLengthIsRoundedToTheNearestMillisecond)
{
    m_Info.m_AudioFormat.nAvgBytesPerSec = 1000;
    m_Info.m_nDataBytes = 1234;
    EXPECT_EQ(1234, m_Info.GetLengthMS());
    m_Info.m_AudioFormat.nAvgBytesPerSec = 4000;
    m_Info.m_nDataBytes = 10; // 2.5
    EXPECT_EQ(3, m_Info.GetLengthMS());
    m_Info.m_nDataBytes = 9; // 2.25
    EXPECT_EQ(2, m_Info.GetLengthMS());
    m_Info.m_AudioFormat.nAvgBytesPerSec = 0;
    EXPECT_EQ(-1, m_Info.GetLengthMS()) << "which is no number of milliseconds";
    m_Info.m_nDataBytes = 0;
    EXPECT_EQ(-1, m_Info.GetLengthMS());
}

TEST_F(IFFInfoTest, HeaderDataAreAllThatStandsAheadOfTheAudio)
{
    std::string strHeader(44, 'x');
    m_Reader.m_nPosition = 99;
    EXPECT_EQ(0, m_Info.GetHeaderData(strHeader.data()));
    EXPECT_EQ(Plain().substr(0, 44), strHeader);
    EXPECT_EQ(99, m_Reader.m_nPosition);
    m_Reader.m_bStream = true;
    EXPECT_EQ(-1, m_Info.GetHeaderData(strHeader.data()));
}

// ---- Audio by blocks

struct READ_CASE
{
    const char* pName;
    long long nFirst, nBlocks;
    int nResult;
    long long nBytes;
};

TEST_F(IFFInfoTest, BlocksAreReadAsFarAsTheAudioReaches)
{
    const READ_CASE aryCases[] = {
        {"the first", 0, 1, 0, 4},
        {"some", 10, 5, 0, 20},
        {"all", 0, 100, 0, 400},
        {"more than there are", 0, 1000, 0, 400},
        {"over the end", 99, 5, 0, 4},
        {"at the end", 100, 5, 0, 0},
        {"behind the end", 1000, 5, 0, 0},
        {"none", 5, 0, 0, 0},
        {"fewer than none", 5, -3, 0, 0},
        {"no end of them", 0, LLONG_MAX, 0, 400},
        {"a place that is none", -100, 1, -1, 77},
        {"a place that cannot be", LLONG_MAX, 1, -1, 77},
    };
    const std::string strAudio = Audio(400);
    for (const READ_CASE& row : aryCases)
    {
        std::string strBytes(4000, 'x');
        long long nRead = 77;
        EXPECT_EQ(row.nResult, m_Info.ReadBlocks(strBytes.data(), row.nFirst, row.nBlocks, &nRead, false)) << row.pName;
        EXPECT_EQ(row.nBytes, nRead) << row.pName;
        if (row.nResult != 0)
            continue;
        const size_t nBytes = static_cast<size_t>(row.nBytes);
        EXPECT_EQ(strAudio.substr(std::min<size_t>(static_cast<size_t>(row.nFirst) * 4, 400), nBytes),
                  strBytes.substr(0, nBytes));
    }
}

TEST_F(IFFInfoTest, ReadingGoesOnWithoutASeekWhereTheReaderStands)
{
    char aryBytes[40];
    long long nRead = 0;
    m_Reader.m_bRecords = true;
    ASSERT_EQ(0, m_Info.ReadBlocks(aryBytes, 0, 10, &nRead, false));
    ASSERT_EQ(0, m_Info.ReadBlocks(aryBytes, 10, 10, &nRead, false));
    EXPECT_EQ(1, m_Reader.CountCalls("Seek"));
    EXPECT_EQ(124, m_Reader.m_nPosition);
    ASSERT_EQ(0, m_Info.ReadBlocks(aryBytes, 0, 10, &nRead, true));
    EXPECT_EQ(124, m_Reader.m_nPosition) << "restored on demand";
}

TEST_F(IFFInfoTest, ASeekThatDoesNotLandFailsTheReading)
{
    char aryBytes[40];
    long long nRead = 77;
    m_Reader.m_nRefusedPosition = 84;
    EXPECT_EQ(-1, m_Info.ReadBlocks(aryBytes, 10, 1, &nRead, false));
    EXPECT_EQ(77, nRead);
    EXPECT_EQ(0, m_Info.ReadBlocks(aryBytes, 11, 1, &nRead, false));
}

TEST_F(IFFInfoTest, TheBytesReadAreCountedInAnyWidth)
{
    char aryBytes[40];
    int nRead = 77;
    int64_t nRead64 = 77;
    EXPECT_EQ(0, m_Info.ReadBlocks(aryBytes, 99, 10, &nRead, false));
    EXPECT_EQ(4, nRead);
    EXPECT_EQ(0, m_Info.ReadBlocks(aryBytes, 0, 10, &nRead64));
    EXPECT_EQ(40, nRead64);
    int* pNoCount = nullptr;
    EXPECT_EQ(0, m_Info.ReadBlocks(aryBytes, 0, 10, pNoCount));
    m_Reader.m_nRefusedPosition = 88;
    EXPECT_EQ(-1, m_Info.ReadBlocks(aryBytes, 11, 1, &nRead, false));
    EXPECT_EQ(4, nRead);
}

TEST_F(IFFInfoTest, AnUnknownLengthLimitsNothing)
{
    std::string strBytes(4000, 'x');
    long long nRead = 0;
    m_Info.m_nDataBytes = -1;
    EXPECT_EQ(0, m_Info.ReadBlocks(strBytes.data(), 90, 1000, &nRead, false));
    EXPECT_EQ(40, nRead) << "up to the end of the file";
    EXPECT_EQ(0, m_Info.ReadBlocks(strBytes.data(), 0, LLONG_MAX, &nRead, false));
    EXPECT_EQ(0, nRead) << "what is left of the count in 32 bits is no count";
}

TEST_F(IFFInfoTest, ACutFileGivesWhatItHas)
{
    std::string strBytes(4000, 'x');
    long long nRead = 0;
    m_Reader.m_strContent.resize(60);
    EXPECT_EQ(0, m_Info.ReadBlocks(strBytes.data(), 0, 100, &nRead, false));
    EXPECT_EQ(16, nRead);
}

// ---- Opening and closing

TEST(IFFInfoOpen, ByAReaderPassesTheArgumentsOn)
{
    MemoryReader reader;
    BigEndianInfo info;
    info.m_nTagWritingEnabled = 1;
    EXPECT_EQ(0, info.Open(&reader, false, true));
    EXPECT_EQ(0, info.Open(nullptr, true, false));
    const std::vector<std::pair<bool, bool>> aryExpected = {{false, true}, {true, false}};
    EXPECT_EQ(aryExpected, info.m_aryOpened);
    EXPECT_EQ(&reader, info.m_pReader.Get());
    info.m_nResult = -1;
    EXPECT_EQ(-1, info.Open(&reader, true, true));
}

TEST(IFFInfoOpen, NeedsAReaderThatIsOpen)
{
    MemoryReader reader;
    reader.m_bOpen = false;
    BigEndianInfo info;
    EXPECT_EQ(-1, info.Open(&reader, true, true));
    EXPECT_TRUE(info.m_aryOpened.empty());
}

TEST(IFFInfoOpen, AReaderThatIsHandedInStaysTheCallers)
{
    int nDestroyed = 0;
    MemoryReader* pReader = new MemoryReader(Plain());
    pReader->m_pnDestroyed = &nDestroyed;
    {
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        EXPECT_EQ(0, info.Open(pReader, true, true));
        EXPECT_EQ(0, info.Open(pReader, true, true)) << "the same once more";
        EXPECT_EQ(0, info.Close());
        EXPECT_EQ(0, info.Open(pReader, true, true));
    }
    EXPECT_EQ(0, nDestroyed);
    delete pReader;
}

TEST(IFFInfoOpen, AnOwnedReaderGoesWithTheClosing)
{
    int nDestroyed = 0;
    MemoryReader* pReader = new MemoryReader(Plain());
    pReader->m_pnDestroyed = &nDestroyed;
    CWAVInfo info;
    info.m_nTagWritingEnabled = 1;
    info.m_pReader.Set(pReader, true, false);
    EXPECT_EQ(0, info.Open(nullptr, true, true));
    EXPECT_EQ(0, info.Open(pReader, true, true)) << "handed back: it is not lost";
    EXPECT_EQ(0, nDestroyed);
    EXPECT_EQ(0, info.Close());
    EXPECT_EQ(1, nDestroyed);
}

TEST(IFFInfoOpen, WhatIsPendingIsSavedAtTheEnd)
{
    MemoryReader aryReaders[3] = {MemoryReader(Plain()), MemoryReader(Plain()), MemoryReader(Plain())};
    {
        CWAVInfo aryInfos[3];
        for (int i = 0; i < 3; ++i)
        {
            aryInfos[i].m_nTagWritingEnabled = 1;
            ASSERT_EQ(0, aryInfos[i].Open(&aryReaders[i], true, true));
            ASSERT_TRUE(aryInfos[i].Set(L"Name", L"Title"));
        }
        aryInfos[0].Close();
        EXPECT_EQ("fmt dataid3 ", Names(aryReaders[0].m_strContent)) << "by Close";
        aryReaders[2].m_bOpen = false;
        EXPECT_EQ(Plain(), aryReaders[1].m_strContent);
    }
    EXPECT_EQ("fmt dataid3 ", Names(aryReaders[0].m_strContent)) << "and not again";
    EXPECT_EQ("fmt dataid3 ", Names(aryReaders[1].m_strContent)) << "by the destructor";
    EXPECT_EQ(Plain(), aryReaders[2].m_strContent) << "a reader that is closed takes nothing";
}

TEST(IFFInfoOpen, ByNameReadsAFileAndReOpenReadsItAgain)
{
    GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
    TempFolder folder;
    const std::string strPath = folder.Write("a.wav", Plain());
    const LyString strName = LyString().FromANSI(strPath.c_str());
    {
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        ASSERT_EQ(0, info.Open(strName, true, true));
        EXPECT_STREQ(strName, info.m_strFilename);
        EXPECT_EQ(400, info.GetDataBytes());
        ASSERT_TRUE(info.Set(L"Name", L"Title"));
        ASSERT_EQ(0, info.ReOpen());
        EXPECT_EQ(4, info.m_nID3ChunkIndex) << "behind the two records of before";
        EXPECT_FALSE(info.m_ID3v2Tag.m_bDirty);
        LyString strValue;
        EXPECT_TRUE(info.Get(L"Name", strValue));
        EXPECT_STREQ(L"Title", strValue);
        EXPECT_EQ(-1, info.Open(L"/nowhere/at/all.wav", true, true));
        EXPECT_STREQ(L"/nowhere/at/all.wav", info.m_strFilename);
        EXPECT_EQ(-1, info.ReOpen());
        EXPECT_EQ(-1, info.Open(L"", true, true));
    }
    g_LySharedToolsHelper.UnloadLySharedLibs(false);
}
