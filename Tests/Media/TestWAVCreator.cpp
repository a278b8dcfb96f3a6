#include "MemoryFile.h"
#include "WAVCreator.h"
#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

namespace
{
// A file that is being written, set up member by member, with whatever header it has.
class WAVCreatorTest : public ::testing::Test
{
protected:
    void OpenByHand(int nBits, bool bSwapBytes)
    {
        m_Creator.m_Format.SetFormat(nBits, 44100, 2);
        m_Creator.m_pWriter.Set(new MemoryWriter(m_File), true, false);
        m_Creator.m_bSwapBytes = bSwapBytes;
        m_Creator.m_bOpen = true;
    }
    void WriteHeaderByHand()
    {
        const std::string strHeader(CWAVCreator::HEADER_BYTES, 'h');
        (void)m_Creator.m_pWriter->Write(strHeader.data(), CWAVCreator::HEADER_BYTES);
        m_File.aryCalls.clear();
    }
    MEMORY_FILE m_File; // outlives the writer
    CWAVCreator m_Creator;
};

struct SWAP_CASE
{
    int nBits;
    const char* pBefore;
    const char* pAfter;
};

const SWAP_CASE s_arySwapCases[] = {
    {16, "", ""},
    {16, "a", "a"},
    {16, "abcd", "badc"},
    {16, "abcde", "badce"},
    {24, "ab", "ab"},
    {24, "abcdef", "cbafed"},
    {24, "abcdefg", "cbafedg"},
    {24, "abcdefgh", "cbafedgh"},
    {8, "abcd", "abcd"},
    {32, "abcdefgh", "abcdefgh"},
};
} // namespace

TEST(WAVCreator, MembersLieInTheirOrder)
{
    CWAVCreator creator;
    const void* const aryMembers[] = {
        &creator,         &creator.m_Format,      &creator.m_nDataBytes, &creator.m_pWriter,
        &creator.m_bOpen, &creator.m_bWriteSizes, &creator.m_bSwapBytes};
    for (size_t i = 1; i < std::size(aryMembers); ++i)
        EXPECT_LT(aryMembers[i - 1], aryMembers[i]) << i;
    EXPECT_EQ(8u, sizeof creator.m_nDataBytes);
    EXPECT_TRUE(std::has_virtual_destructor_v<CWAVCreator>);
    EXPECT_EQ(nullptr, creator.m_pWriter.Get());
    EXPECT_FALSE(creator.m_bOpen || creator.m_bWriteSizes || creator.m_bSwapBytes);
}

// ---- WritePCMData

TEST(WAVCreator, WithoutAnOpenFileDataIsRefusedAndLeftAsItIs)
{
    CWAVCreator creator;
    creator.m_Format.SetFormat(16, 44100, 2);
    creator.m_bSwapBytes = true;
    char szData[] = "abcd";
    EXPECT_EQ(-1, creator.WritePCMData(szData, 4));
    EXPECT_STREQ("abcd", szData);
    EXPECT_EQ(0, creator.m_nDataBytes);
}

TEST_F(WAVCreatorTest, DataIsWrittenAndCounted)
{
    OpenByHand(16, false);
    char szData[] = "abcdef";
    EXPECT_EQ(0, m_Creator.WritePCMData(szData, 4));
    EXPECT_EQ(0, m_Creator.WritePCMData(szData + 4, 2));
    EXPECT_EQ(0, m_Creator.WritePCMData(szData, 0));
    EXPECT_EQ("abcdef", m_File.strContent);
    EXPECT_EQ(6, m_Creator.m_nDataBytes);
    EXPECT_EQ("Write 4, Write 2, Write 0", m_File.GetCalls());
    EXPECT_STREQ("abcdef", szData);
}

TEST(WAVCreator, SamplesAreSwappedInTheCallersBuffer)
{
    for (const SWAP_CASE& row : s_arySwapCases)
    {
        MEMORY_FILE file;
        CWAVCreator creator;
        creator.m_Format.SetFormat(row.nBits, 44100, 2);
        creator.m_pWriter.Set(new MemoryWriter(file), true, false);
        creator.m_bOpen = creator.m_bSwapBytes = true;
        std::string strData = row.pBefore;
        EXPECT_EQ(0, creator.WritePCMData(strData.data(), static_cast<long long>(strData.size())));
        EXPECT_EQ(row.pAfter, strData) << row.nBits;
        EXPECT_EQ(row.pAfter, file.strContent) << row.nBits;
    }
}

TEST_F(WAVCreatorTest, AShortWriteFailsAndWhatWasWrittenCounts)
{
    OpenByHand(16, false);
    m_File.nRoom = 3;
    char szData[] = "abcd";
    EXPECT_EQ(-1, m_Creator.WritePCMData(szData, 4));
    EXPECT_EQ(3, m_Creator.m_nDataBytes);
    EXPECT_EQ(-1, m_Creator.WritePCMData(szData, 4));
    EXPECT_EQ(3, m_Creator.m_nDataBytes);
}

TEST_F(WAVCreatorTest, AWriterIsGivenThirtyTwoBitsOfTheCount)
{
    OpenByHand(16, false);
    char szData[] = "abcd";
    EXPECT_EQ(-1, m_Creator.WritePCMData(szData, 0x100000004)) << "four bytes are not all of them";
    EXPECT_EQ("Write 4", m_File.GetCalls());
    EXPECT_EQ(4, m_Creator.m_nDataBytes);
}

TEST_F(WAVCreatorTest, ImpossibleDataIsRefused)
{
    OpenByHand(16, true);
    char szData[] = "abcd";
    EXPECT_EQ(-1, m_Creator.WritePCMData(nullptr, 4));
    EXPECT_EQ(-1, m_Creator.WritePCMData(szData, -1));
    EXPECT_EQ("", m_File.GetCalls());
    EXPECT_STREQ("abcd", szData);
    m_Creator.m_pWriter.Release();
    EXPECT_EQ(-1, m_Creator.WritePCMData(szData, 4)) << "no writer";
}

// ---- FinalizeWAV

TEST_F(WAVCreatorTest, TheEndPatchesTheSizesAndLetsGoOfTheFile)
{
    OpenByHand(16, false);
    m_Creator.m_bWriteSizes = true;
    WriteHeaderByHand();
    char szData[] = "abcdef";
    ASSERT_EQ(0, m_Creator.WritePCMData(szData, 6));
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ("Write 6, GetLength, Seek 4 0, Write 4, Seek 40 0, Write 4, Close, Destroy", m_File.GetCalls());
    ASSERT_EQ(50u, m_File.strContent.size());
    EXPECT_EQ(42u, m_File.GetNumber(4));
    EXPECT_EQ(6u, m_File.GetNumber(40));
    EXPECT_EQ("hhhh", m_File.strContent.substr(0, 4));
    EXPECT_EQ("habcdef", "h" + m_File.strContent.substr(44));
    EXPECT_EQ(0, m_Creator.m_nDataBytes);
    EXPECT_FALSE(m_Creator.m_bOpen);
    EXPECT_EQ(nullptr, m_Creator.m_pWriter.Get());
}

TEST_F(WAVCreatorTest, AFileOfNothingButItsHeaderHasSize36And0)
{
    OpenByHand(16, false);
    m_Creator.m_bWriteSizes = true;
    WriteHeaderByHand();
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ(36u, m_File.GetNumber(4));
    EXPECT_EQ(0u, m_File.GetNumber(40));
}

TEST_F(WAVCreatorTest, TheLengthIsTakenAsThirtyTwoBits)
{
    OpenByHand(16, false);
    m_Creator.m_bWriteSizes = true;
    WriteHeaderByHand();
    m_File.nLength = 0x100000000 + 60;
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ(52u, m_File.GetNumber(4));
    EXPECT_EQ(16u, m_File.GetNumber(40));
}

TEST_F(WAVCreatorTest, WithoutWriteSizesTheHeaderStays)
{
    OpenByHand(16, false);
    WriteHeaderByHand();
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ("Close, Destroy", m_File.GetCalls());
    EXPECT_EQ(std::string(44, 'h'), m_File.strContent);
}

TEST_F(WAVCreatorTest, ASecondEndDoesNothing)
{
    OpenByHand(16, false);
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    const std::string strCalls = m_File.GetCalls();
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ(strCalls, m_File.GetCalls());
}

TEST_F(WAVCreatorTest, PatchesThatFailAreNotTold)
{
    OpenByHand(16, false);
    m_Creator.m_bWriteSizes = true;
    m_File.nRoom = 0;
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ("GetLength, Seek 4 0, Write 4, Seek 40 0, Write 4, Close, Destroy", m_File.GetCalls());
}

TEST_F(WAVCreatorTest, AWriterThatIsNotOwnedIsClosedAndLives)
{
    MemoryWriter writer(m_File);
    m_Creator.m_pWriter.Set(&writer, false, false);
    m_Creator.m_bOpen = true;
    EXPECT_EQ(0, m_Creator.FinalizeWAV());
    EXPECT_EQ("Close", m_File.GetCalls());
    EXPECT_EQ(0, m_File.nDestroyed);
    EXPECT_EQ(nullptr, m_Creator.m_pWriter.Get());
}

TEST(WAVCreator, TheDestructorFinalizesWhatIsOpen)
{
    MEMORY_FILE file;
    {
        CWAVCreator creator;
        creator.m_pWriter.Set(new MemoryWriter(file), true, false);
        creator.m_bOpen = creator.m_bWriteSizes = true;
    }
    EXPECT_EQ("GetLength, Seek 4 0, Write 4, Seek 40 0, Write 4, Close, Destroy", file.GetCalls());
}

TEST(WAVCreator, TheDestructorOnlyDestroysTheWriterOfAFileThatIsNotOpen)
{
    MEMORY_FILE file;
    {
        CWAVCreator creator;
        creator.m_pWriter.Set(new MemoryWriter(file), true, false);
    }
    EXPECT_EQ("Destroy", file.GetCalls());
}
