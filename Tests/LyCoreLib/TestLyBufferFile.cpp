#include "IFileSystemManager.h"
#include "LyBuffer.h"
#include "LyFile.h"
#include "LyTempFolder.h"
#include "StandInTools.h"
#include <climits>
#include <gtest/gtest.h>
#include <string>

namespace
{
// Folders are made only while there is a file system manager.
class FileTools : public StandInTools, public IFileSystemManager
{
public:
    IFileSystemManager* GetFileSystemManager(bool) override { return this; }
    bool GetFileExists(const wchar_t*, int) override { return false; }
};

class LyBufferToFile : public testing::Test
{
protected:
    LyBufferToFile() { m_Buffer.FromBuffer("abcdef", 6); }

    std::string Read(const LyString& strName)
    {
        LyFile file(strName, 1, 3, static_cast<CreationModes>(3));
        if (!file.Open())
            return "(none)";
        char aryText[100];
        unsigned int nRead = 0;
        EXPECT_TRUE(file.Read(aryText, sizeof aryText, nRead));
        return std::string(aryText, nRead);
    }

    LyTempFolder m_Folder;
    FileTools m_Tools;
    LyBuffer m_Buffer;
};
} // namespace

TEST_F(LyBufferToFile, WritesTheFirstBytes)
{
    struct CASE
    {
        int nBytes;
        const char* pText;
    };
    LyString strName = m_Folder.GetName(L"a");
    for (const CASE& c : {CASE{-1, "abcdef"}, CASE{1, "a"}, CASE{6, "abcdef"}, CASE{7, "abcdef"},
                          CASE{INT_MAX, "abcdef"}, CASE{INT_MIN, "abcdef"}})
    {
        EXPECT_TRUE(m_Buffer.ToFile(strName, c.nBytes)) << c.nBytes;
        EXPECT_EQ(Read(strName), c.pText) << c.nBytes;
    }
}

TEST_F(LyBufferToFile, MakesTheFolders)
{
    LyString strName = m_Folder.GetName(L"one/two/three.bin");
    EXPECT_TRUE(m_Buffer.ToFile(strName));
    EXPECT_EQ(Read(strName), "abcdef");
}

TEST_F(LyBufferToFile, ReplacesALongerFile)
{
    LyString strName = m_Folder.GetName(L"a");
    EXPECT_TRUE(m_Buffer.ToFile(strName));
    LyBuffer shorter;
    shorter.FromBuffer("xy", 2);
    EXPECT_TRUE(shorter.ToFile(strName));
    EXPECT_EQ(Read(strName), "xy");
}

TEST_F(LyBufferToFile, EmptyBufferIsFalseAndLeavesAnEmptyFile)
{
    LyString strName = m_Folder.GetName(L"a");
    EXPECT_FALSE(LyBuffer().ToFile(strName));
    EXPECT_EQ(Read(strName), "");
    EXPECT_TRUE(m_Buffer.ToFile(strName));
    EXPECT_FALSE(m_Buffer.ToFile(strName, 0));
    EXPECT_EQ(Read(strName), "");
    EXPECT_TRUE(m_Buffer.ToFile(strName));
    EXPECT_FALSE(LyBuffer::s_ToFile(strName, nullptr, 5));
    EXPECT_EQ(Read(strName), "");
    EXPECT_FALSE(LyBuffer::s_ToFile(strName, m_Buffer.GetData(), -1));
}

TEST_F(LyBufferToFile, FolderThatCannotBeMadeIsFalse)
{
    ASSERT_TRUE(m_Buffer.ToFile(m_Folder.GetName(L"a")));
    EXPECT_FALSE(m_Buffer.ToFile(m_Folder.GetName(L"a/b"))); // "a" is a file
    EXPECT_FALSE(m_Buffer.ToFile(L""));
}

TEST(LyBufferToFileAlone, WithoutAFileSystemManagerNothingIsWritten)
{
    LyTempFolder folder;
    LyBuffer buffer;
    buffer.FromBuffer("abc", 3);
    EXPECT_FALSE(buffer.ToFile(folder.GetName(L"a")));
    EXPECT_EQ(LyFileInfo{LyFilename(folder.GetName(L"a"))}.GetFileSize(), -1);
}
