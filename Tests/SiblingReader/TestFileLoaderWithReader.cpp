// The file loader over the built reader library.

#include "FileLoader.h"
#include "LyBuffer.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace
{
class FileLoaderWithReader : public testing::Test
{
protected:
    FileLoaderWithReader()
    {
        g_LySharedToolsHelper.UnloadLyReaderLib();
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
    }
    ~FileLoaderWithReader() override { g_LySharedToolsHelper.UnloadLyReaderLib(); }

    LyFilename Name(const char* pName) const
    {
        return LyFilename(LyString().FromANSI(m_Folder.GetPath(pName).c_str()));
    }

    TempFolder m_Folder;
    LyBuffer m_Buffer;
};
} // namespace

TEST_F(FileLoaderWithReader, LocalFile)
{
    std::string strContent(2'500'000, 0);
    for (size_t n = 0; n < strContent.size(); ++n)
        strContent[n] = static_cast<char>(n * 31 + n / 253);
    (void)m_Folder.Write("a.bin", strContent);
    EXPECT_TRUE(m_Buffer.FromFile(Name("a.bin"), -1, true));
    ASSERT_EQ(m_Buffer.GetSize(), 2'500'000);
    EXPECT_EQ(std::memcmp(m_Buffer.GetData(), strContent.data(), strContent.size()), 0);
    EXPECT_TRUE(m_Buffer.FromFile(Name("a.bin"), 100, true));
    EXPECT_EQ(m_Buffer.GetSize(), 100);

    CFileLoader loader;
    loader.m_nStartOffset = 2'499'990;
    EXPECT_TRUE(loader.LoadBuffer(Name("a.bin"), m_Buffer));
    ASSERT_EQ(m_Buffer.GetSize(), 10);
    EXPECT_EQ(std::memcmp(m_Buffer.GetData(), strContent.data() + 2'499'990, 10), 0);
}

TEST_F(FileLoaderWithReader, WhatIsNotThere)
{
    EXPECT_FALSE(m_Buffer.FromFile(Name("missing"), -1, true));
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    CFileLoader loader;
    loader.m_nTimeoutMS = 2000;
    EXPECT_FALSE(loader.LoadBuffer(LyFilename(L"http://127.0.0.1:1/a"), m_Buffer)); // nobody listens there
}

TEST_F(FileLoaderWithReader, OutputToAFile)
{
    (void)m_Folder.Write("a.bin", "content");
    CFileLoader loader;
    bool bOpened = true;
    ILyReader* pOutput = CreateGenericReader(Name("b.bin").GetFilename());
    ASSERT_NE(pOutput, nullptr);
    EXPECT_TRUE(loader.LoadInternal(Name("a.bin"), nullptr, pOutput, Name("b.bin"), bOpened, LyDateTime()));
    EXPECT_TRUE(bOpened);
    delete pOutput;
    EXPECT_TRUE(m_Buffer.FromFile(Name("b.bin"), -1, false));
    ASSERT_EQ(m_Buffer.GetSize(), 7);
    EXPECT_EQ(std::memcmp(m_Buffer.GetData(), "content", 7), 0);
}
