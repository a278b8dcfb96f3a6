// Opening a wave file, and the limit of its sizes.

#include "LySharedToolsHelper.h"
#include "MemoryFile.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include "WAVCreator.h"
#include <gtest/gtest.h>
#include <iterator>

namespace
{
CAudioFormat MakeFormat(int nBits = 16, int nRate = 44100, int nChannels = 2, bool bExtensible = false)
{
    CAudioFormat format;
    format.SetFormat(nBits, nRate, nChannels, bExtensible);
    return format;
}

std::string ReadFile(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}

class WAVCreatorOpenTest : public ::testing::Test
{
protected:
    bool Open(const CAudioFormat& format, bool bSwapBytes = false, long long nDataBytes = CWAVCreator::UNKNOWN_LENGTH)
    {
        return m_Creator.Open(new MemoryWriter(m_File), true, format, bSwapBytes, nDataBytes);
    }
    MEMORY_FILE m_File;
    CWAVCreator m_Creator;
};

// Files through the reader library.
class WAVCreatorFileTest : public ::testing::Test
{
protected:
    WAVCreatorFileTest() { GetProcessInfo(true)->SetSharedLibraryPath(Wide(RONDEL_BIN_DIR "/")); }
    ~WAVCreatorFileTest() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }
    TempFolder m_Folder;
};
} // namespace

// ---- The header

TEST_F(WAVCreatorOpenTest, TheHeaderIsTheCanonicalOne)
{
    ASSERT_TRUE(Open(MakeFormat()));
    const char szExpected[] = "RIFF\x24\0\0\0WAVE"
                              "fmt \x10\0\0\0\x01\0\x02\0\x44\xAC\0\0\x10\xB1\x02\0\x04\0\x10\0"
                              "data\0\0\0\0";
    static_assert(sizeof szExpected - 1 == 44);
    EXPECT_EQ(std::string(szExpected, 44), m_File.strContent);
    EXPECT_EQ("Write 44", m_File.GetCalls());
    EXPECT_TRUE(m_Creator.m_bOpen && m_Creator.m_bWriteSizes);
    EXPECT_FALSE(m_Creator.m_bSwapBytes);
    EXPECT_EQ(0, m_Creator.m_nDataBytes);
    EXPECT_EQ(44100u, m_Creator.m_Format.nSamplesPerSec);
}

struct HEADER_CASE
{
    const char* pName;
    CAudioFormat format;
    unsigned int nTag, nChannels, nRate, nBytesPerSecond, nBlockAlign, nBits;
};

TEST(WAVCreatorHeader, SaysTheFormat)
{
    const HEADER_CASE aryCases[] = {
        {"24 bits", MakeFormat(24, 96000, 6), 1, 6, 96000, 1728000, 18, 24},
        {"8 bits mono", MakeFormat(8, 8000, 1), 1, 1, 8000, 8000, 1, 8},
        {"float", MakeFormat(32, 48000, 2), 3, 2, 48000, 384000, 8, 32},
        {"extensible PCM", MakeFormat(16, 44100, 2, true), 1, 2, 44100, 176400, 4, 16},
        {"extensible float", MakeFormat(64, 192000, 8, true), 3, 8, 192000, 12288000, 64, 64},
    };
    for (const HEADER_CASE& row : aryCases)
    {
        MEMORY_FILE file;
        CWAVCreator creator;
        ASSERT_TRUE(creator.Open(new MemoryWriter(file), true, row.format)) << row.pName;
        EXPECT_EQ(row.nTag, file.GetNumber(20, 2)) << row.pName;
        EXPECT_EQ(row.nChannels, file.GetNumber(22, 2)) << row.pName;
        EXPECT_EQ(row.nRate, file.GetNumber(24)) << row.pName;
        EXPECT_EQ(row.nBytesPerSecond, file.GetNumber(28)) << row.pName;
        EXPECT_EQ(row.nBlockAlign, file.GetNumber(32, 2)) << row.pName;
        EXPECT_EQ(row.nBits, file.GetNumber(34, 2)) << row.pName;
    }
}

TEST_F(WAVCreatorOpenTest, AWholeFileHasTheRightSizes)
{
    ASSERT_TRUE(Open(MakeFormat(), true));
    char szData[] = "abcdefgh";
    EXPECT_EQ(0, m_Creator.WritePCMData(szData, 8));
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ(44u, m_File.GetNumber(4));
    EXPECT_EQ(8u, m_File.GetNumber(40));
    EXPECT_EQ("badcfehg", m_File.strContent.substr(44));
}

TEST_F(WAVCreatorOpenTest, AFileThatWasNeverFinalizedHoldsNoData)
{
    ASSERT_TRUE(Open(MakeFormat(), false, 1000));
    EXPECT_EQ(36u, m_File.GetNumber(4));
    EXPECT_EQ(0u, m_File.GetNumber(40));
}

TEST_F(WAVCreatorOpenTest, AStreamIsToldItsLengthAheadAndNotPatched)
{
    m_File.bStream = true;
    ASSERT_TRUE(Open(MakeFormat(), false, 1000));
    EXPECT_EQ(1036u, m_File.GetNumber(4));
    EXPECT_EQ(1000u, m_File.GetNumber(40));
    EXPECT_FALSE(m_Creator.m_bWriteSizes);
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ("Write 44, Close, Destroy", m_File.GetCalls());
}

TEST_F(WAVCreatorOpenTest, AStreamOfUnknownLengthSaysSo)
{
    m_File.bStream = true;
    ASSERT_TRUE(Open(MakeFormat()));
    EXPECT_EQ(0xFFFFFFFFu, m_File.GetNumber(4));
    EXPECT_EQ(0xFFFFFFFFu, m_File.GetNumber(40));
}

// ---- The writer

TEST_F(WAVCreatorOpenTest, AWriterThatIsNotOpenIsCreated)
{
    m_File.bOpen = false;
    ASSERT_TRUE(Open(MakeFormat()));
    EXPECT_EQ("Create, Write 44", m_File.GetCalls());
}

TEST_F(WAVCreatorOpenTest, AnOpenFileIsFinalizedByTheNextOpen)
{
    MEMORY_FILE first;
    ASSERT_TRUE(m_Creator.Open(new MemoryWriter(first), true, MakeFormat()));
    char szData[] = "abcd";
    ASSERT_EQ(0, m_Creator.WritePCMData(szData, 4));
    ASSERT_TRUE(Open(MakeFormat()));
    EXPECT_EQ(4u, first.GetNumber(40));
    EXPECT_EQ(1, first.nDestroyed);
    EXPECT_EQ(0, m_Creator.m_nDataBytes);
}

TEST_F(WAVCreatorOpenTest, WhatCannotBeOpenedIsLetGoOf)
{
    m_File.bOpen = m_File.bCreates = false;
    EXPECT_FALSE(Open(MakeFormat()));
    EXPECT_EQ("Create, Destroy", m_File.GetCalls());
    EXPECT_FALSE(m_Creator.m_bOpen);
    EXPECT_EQ(nullptr, m_Creator.m_pWriter.Get());
    EXPECT_FALSE(m_Creator.Open(static_cast<ILyReader*>(nullptr), true, MakeFormat()));
}

TEST_F(WAVCreatorOpenTest, AHeaderThatDoesNotFitFailsTheOpening)
{
    m_File.nRoom = 43;
    EXPECT_FALSE(Open(MakeFormat()));
    EXPECT_EQ("Write 44, Close, Destroy", m_File.GetCalls());
}

TEST_F(WAVCreatorOpenTest, AWriterThatIsNotOwnedSurvivesAFailure)
{
    MemoryWriter writer(m_File);
    EXPECT_FALSE(m_Creator.Open(&writer, false, CAudioFormat()));
    EXPECT_EQ(0, m_File.nDestroyed);
    EXPECT_EQ(nullptr, m_Creator.m_pWriter.Get());
}

TEST_F(WAVCreatorOpenTest, AFormatThatAHeaderCannotSayIsRefused)
{
    CAudioFormat foreign = MakeFormat(16, 44100, 2, true);
    foreign.SubFormat.Data1 = 0x10000;
    CAudioFormat nested = MakeFormat(16, 44100, 2, true);
    nested.SubFormat.Data1 = WAVE_TAG_EXTENSIBLE;
    for (const CAudioFormat& format :
         {CAudioFormat(), MakeFormat(16, 0, 2), MakeFormat(16, 44100, 0), MakeFormat(1, 44100, 2), foreign, nested})
    {
        MEMORY_FILE file;
        EXPECT_FALSE(m_Creator.Open(new MemoryWriter(file), true, format)) << format.wFormatTag;
        EXPECT_EQ("Destroy", file.GetCalls()) << "nothing was touched";
    }
}

// ---- The limit: sizes have 32 bits

TEST_F(WAVCreatorOpenTest, ALengthBeyondTheLimitIsRefusedBeforeTheFileIsMade)
{
    static_assert(CWAVCreator::MAX_DATA_BYTES == 0xFFFFFFFFLL - 36);
    m_File.bOpen = false;
    EXPECT_FALSE(Open(MakeFormat(), false, CWAVCreator::MAX_DATA_BYTES + 1));
    EXPECT_EQ("Destroy", m_File.GetCalls());
    EXPECT_TRUE(Open(MakeFormat(), false, CWAVCreator::MAX_DATA_BYTES));
}

TEST_F(WAVCreatorOpenTest, AWritePastTheLimitFailsBeforeAnythingIsWrittenOrSwapped)
{
    ASSERT_TRUE(Open(MakeFormat(), true));
    m_File.aryCalls.clear();
    m_Creator.m_nDataBytes = CWAVCreator::MAX_DATA_BYTES - 4;
    char szData[] = "abcdef";
    EXPECT_EQ(-1, m_Creator.WritePCMData(szData, 6));
    EXPECT_EQ("", m_File.GetCalls());
    EXPECT_STREQ("abcdef", szData);
    EXPECT_EQ(0, m_Creator.WritePCMData(szData, 4)) << "up to the limit there is room";
    EXPECT_EQ(-1, m_Creator.WritePCMData(szData, 1));
    EXPECT_EQ(CWAVCreator::MAX_DATA_BYTES, m_Creator.m_nDataBytes);
}

TEST_F(WAVCreatorOpenTest, AFileOfExactlyTheLimitHasTheRightSizes)
{
    ASSERT_TRUE(Open(MakeFormat()));
    m_File.nLength = CWAVCreator::HEADER_BYTES + CWAVCreator::MAX_DATA_BYTES;
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ(0xFFFFFFFFu, m_File.GetNumber(4));
    EXPECT_EQ(0xFFFFFFFFu - 36, m_File.GetNumber(40));
}

// ---- Files

TEST_F(WAVCreatorFileTest, AFileIsMadeByItsName)
{
    const std::string strPath =
        m_Folder.Write("a \xC3\xA4.wav", "what was there before, longer than what comes after it");
    CWAVCreator creator;
    ASSERT_TRUE(creator.Open(Wide(strPath), MakeFormat(), false, 4));
    char szData[] = "abcd";
    EXPECT_EQ(0, creator.WritePCMData(szData, 4));
    EXPECT_EQ(0, creator.FinalizeWAV());
    const std::string strFile = ReadFile(strPath);
    ASSERT_EQ(48u, strFile.size());
    EXPECT_EQ(std::string("RIFF\x28\0\0\0WAVE", 12), strFile.substr(0, 12));
    EXPECT_EQ(std::string("data\x04\0\0\0abcd", 12), strFile.substr(36));
}

TEST_F(WAVCreatorFileTest, TheSameFileMayBeOpenedAnew)
{
    const std::string strPath = m_Folder.GetPath("a.wav");
    CWAVCreator creator;
    char szData[] = "abcd";
    ASSERT_TRUE(creator.Open(Wide(strPath), MakeFormat()));
    EXPECT_EQ(0, creator.WritePCMData(szData, 4));
    ASSERT_TRUE(creator.Open(Wide(strPath), MakeFormat()));
    EXPECT_EQ(0, creator.FinalizeWAV());
    EXPECT_EQ(44u, ReadFile(strPath).size());
}

TEST_F(WAVCreatorFileTest, ANameThatCannotBeMadeIsRefused)
{
    CWAVCreator creator;
    EXPECT_FALSE(creator.Open(Wide(m_Folder.GetPath("missing/a.wav")), MakeFormat()));
    EXPECT_FALSE(creator.Open(L"", MakeFormat()));
    EXPECT_FALSE(creator.Open(static_cast<const wchar_t*>(nullptr), MakeFormat()));
    EXPECT_FALSE(creator.m_bOpen);
}

TEST_F(WAVCreatorFileTest, AFullDiskFailsTheWrite)
{
    CWAVCreator creator;
    EXPECT_FALSE(creator.Open(L"/dev/full", MakeFormat()));
    char szData[] = "abcd";
    EXPECT_EQ(-1, creator.WritePCMData(szData, 4));
}

TEST_F(WAVCreatorFileTest, WithoutReaderLibraryNothingOpens)
{
    GetProcessInfo(true)->SetSharedLibraryPath(L"/nowhere/");
    CWAVCreator creator;
    EXPECT_FALSE(creator.Open(Wide(m_Folder.GetPath("a.wav")), MakeFormat()));
}
