// Gzip files unpacked through the built tools library, by the helper that the rest of the system uses.

#include "LyBuffer.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include "ZLibHelper.h"
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <zlib.h>

namespace
{
std::string MakeContent(size_t nBytes)
{
    std::string str(nBytes, 0);
    unsigned int nState = 1;
    for (char& c : str)
    {
        nState = nState * 1103515245 + 12345;
        c = static_cast<char>(nState >> 24);
    }
    return str;
}

void WriteGzip(const std::string& strPath, const std::string& strContent)
{
    gzFile file = gzopen(strPath.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    const auto nBytes = static_cast<unsigned int>(strContent.size());
    ASSERT_EQ(gzwrite(file, strContent.data(), nBytes), static_cast<int>(nBytes)); // of 0 bytes, too
    ASSERT_EQ(gzclose(file), Z_OK);
}

std::string Read(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class GzipFiles : public testing::Test
{
protected:
    GzipFiles()
    {
        setenv("XDG_CONFIG_HOME", m_Folder.GetPath().c_str(), 1);
        g_LySharedToolsHelper.UnloadLyToolsLib();
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
    }
    ~GzipFiles() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }

    LyString Name(const char* pName) const { return LyString().FromANSI(m_Folder.GetPath(pName).c_str()); }

    TempFolder m_Folder;
};
} // namespace

TEST_F(GzipFiles, UnpackInPlaceAndElsewhere)
{
    const std::string strContent = MakeContent(1'000'000);
    WriteGzip(m_Folder.GetPath("a.gz"), strContent);
    CZLibHelper helper;
    ASSERT_NE(helper.m_pZLib, nullptr);
    EXPECT_TRUE(helper.DecompressFile(Name("a.gz"), Name("b"), nullptr));
    EXPECT_EQ(Read(m_Folder.GetPath("b")), strContent);
    EXPECT_TRUE(helper.DecompressFile(Name("a.gz"), LyString(), nullptr));
    EXPECT_EQ(Read(m_Folder.GetPath("a.gz")), strContent);
    EXPECT_FALSE(std::filesystem::exists(m_Folder.GetPath("a.gz.tmp")));
    EXPECT_FALSE(std::filesystem::exists(m_Folder.GetPath("b.tmp")));
}

TEST_F(GzipFiles, UnpackIntoABuffer)
{
    CZLibHelper helper;
    for (size_t nBytes : {size_t{0}, size_t{1}, size_t{8192}, size_t{300'000}})
    {
        const std::string strContent = MakeContent(nBytes);
        WriteGzip(m_Folder.GetPath("a.gz"), strContent);
        LyBuffer buffer(10);
        EXPECT_TRUE(helper.DecompressFileToBuffer(Name("a.gz"), buffer, nullptr));
        ASSERT_EQ(buffer.GetSize(), static_cast<int>(nBytes));
        EXPECT_TRUE(nBytes == 0 || std::memcmp(buffer.GetData(), strContent.data(), nBytes) == 0);
    }
}

TEST_F(GzipFiles, CutFileGivesWhatCame)
{
    const std::string strContent = MakeContent(300'000);
    WriteGzip(m_Folder.GetPath("a.gz"), strContent);
    std::filesystem::resize_file(m_Folder.GetPath("a.gz"), 150'000);
    LyBuffer buffer;
    EXPECT_TRUE(CZLibHelper().DecompressFileToBuffer(Name("a.gz"), buffer, nullptr));
    ASSERT_GT(buffer.GetSize(), 0);
    ASSERT_LT(buffer.GetSize(), 300'000);
    EXPECT_EQ(std::memcmp(buffer.GetData(), strContent.data(), static_cast<size_t>(buffer.GetSize())), 0);
}

TEST_F(GzipFiles, MissingFileIsFalse)
{
    LyBuffer buffer;
    CZLibHelper helper;
    EXPECT_FALSE(helper.DecompressFileToBuffer(Name("missing"), buffer, nullptr));
    EXPECT_FALSE(helper.DecompressFile(Name("missing"), Name("b"), nullptr));
    EXPECT_FALSE(std::filesystem::exists(m_Folder.GetPath("b")));
}

TEST_F(GzipFiles, CancelledRunLeavesTheDestination)
{
    WriteGzip(m_Folder.GetPath("a.gz"), MakeContent(100'000));
    (void)m_Folder.Write("b", "old");
    volatile bool bCancel = true;
    EXPECT_FALSE(CZLibHelper().DecompressFile(Name("a.gz"), Name("b"), &bCancel));
    EXPECT_EQ(Read(m_Folder.GetPath("b")), "old");
    EXPECT_FALSE(std::filesystem::exists(m_Folder.GetPath("b.tmp")));
}
