// A load that goes on to a second reader.

#include "FileLoaderTestSupport.h"
#include <gtest/gtest.h>

class FileLoaderOutput : public FileLoader
{
protected:
    bool LoadInto(ILyReader* pOutput, LyBuffer* pBuffer = nullptr)
    {
        return m_Loader.LoadInternal(LyFilename(URL), pBuffer, pOutput, LyFilename(), m_bOpened, LyDateTime());
    }

    OutputReader m_Output;
    bool m_bOpened = true;
};

TEST_F(FileLoaderOutput, TakesTheBytesInChunks)
{
    m_Script.strContent = Bytes(150'000);
    EXPECT_TRUE(LoadInto(&m_Output));
    EXPECT_EQ(m_Output.m_strWritten, m_Script.strContent);
    EXPECT_TRUE(m_bOpened);
    EXPECT_EQ(m_Output.m_nCreated, 1);
    EXPECT_EQ(m_Output.m_nClosed, 1);
}

TEST_F(FileLoaderOutput, IsCreatedOnlyIfTold)
{
    m_Script.strContent = "abc";
    m_bOpened = false;
    EXPECT_TRUE(LoadInto(&m_Output));
    EXPECT_FALSE(m_bOpened);
    EXPECT_EQ(m_Output.m_nCreated, 0);
    EXPECT_EQ(m_Output.m_strWritten, "abc");
    EXPECT_EQ(m_Output.m_nClosed, 1);
}

TEST_F(FileLoaderOutput, ShortWriteFails)
{
    m_Script.strContent = Bytes(150'000);
    m_Output.m_nRoom = 100'000;
    EXPECT_FALSE(LoadInto(&m_Output));
    EXPECT_EQ(m_Record.aryReads.size(), 2u) << "nothing is read behind the failure";
    EXPECT_EQ(m_Output.m_nClosed, 1);
}

TEST_F(FileLoaderOutput, TooLongASourceStillClosesIt)
{
    m_Script.strContent = "abcdef";
    m_Loader.SetMaximumLength(3, true);
    EXPECT_FALSE(LoadInto(&m_Output));
    EXPECT_EQ(m_Output.m_nCreated, 1);
    EXPECT_EQ(m_Output.m_nClosed, 1);
    EXPECT_EQ(m_Output.m_strWritten, "");
}

TEST_F(FileLoaderOutput, SourceThatDoesNotOpenCreatesNothing)
{
    m_Script.bOpens = false;
    EXPECT_FALSE(LoadInto(&m_Output));
    EXPECT_FALSE(m_bOpened);
    EXPECT_EQ(m_Output.m_nCreated, 0);
}

TEST_F(FileLoaderOutput, OutputThatIsNotCreatedFails)
{
    m_Script.strContent = "abc";
    m_Output.m_bCreates = false;
    EXPECT_FALSE(LoadInto(&m_Output));
    EXPECT_FALSE(m_bOpened);
    EXPECT_TRUE(m_Record.aryReads.empty());
    m_bOpened = true;
    EXPECT_FALSE(LoadInto(nullptr, &m_Buffer)) << "one is asked for, and there is none";
    EXPECT_FALSE(m_bOpened);
}

TEST_F(FileLoaderOutput, BufferComesFirst)
{
    m_Script.strContent = "abc";
    EXPECT_TRUE(LoadInto(&m_Output, &m_Buffer));
    EXPECT_EQ(Text(m_Buffer), "abc");
    EXPECT_EQ(m_Output.m_strWritten, "");
    EXPECT_EQ(m_Output.m_nClosed, 1);
}

TEST_F(FileLoaderOutput, NowhereToPutTheBytesFails)
{
    m_Script.strContent = "abc";
    m_bOpened = false;
    EXPECT_FALSE(LoadInto(nullptr));
    EXPECT_TRUE(m_Record.aryReads.empty());
}

TEST_F(FileLoaderOutput, ContentTestNeedsABuffer)
{
    m_Script.strContent = Bytes(1000);
    m_Loader.m_nCheckBytes = 10;
    m_Loader.m_strRequiredText = L"is not there";
    EXPECT_TRUE(LoadInto(&m_Output));
    EXPECT_EQ(m_Output.m_strWritten, m_Script.strContent);
}
