#include "LyFilename.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include <gtest/gtest.h>

TEST(LyFilenameSize, UrlHasNoneWithoutTheReaderLibrary)
{
    GetProcessInfo(true)->SetSharedLibraryPath(L"/nowhere/");
    EXPECT_EQ(LyFilename(L"http://fake/1234").GetFileSize(true), -1);
}

class LyFilenameReader : public testing::Test
{
protected:
    LyFilenameReader()
    {
        LyString strPath;
        strPath.FromANSI(RONDEL_FAKES_DIR "/url_reader/");
        GetProcessInfo(true)->SetSharedLibraryPath(strPath);
    }
    ~LyFilenameReader() override { g_LySharedToolsHelper.UnloadLyReaderLib(); }
};

TEST_F(LyFilenameReader, UrlSizeIsAskedForByItsHead)
{
    EXPECT_EQ(LyFilename(L"http://fake/1234").GetFileSize(true), 1234);
}

TEST_F(LyFilenameReader, UrlThatDoesNotOpenHasNoSize) { EXPECT_EQ(LyFilename(L"http://fake/").GetFileSize(true), -1); }

TEST_F(LyFilenameReader, UrlWithoutNetworkHasNoSize)
{
    EXPECT_EQ(LyFilename(L"http://fake/1234").GetFileSize(false), -1);
    EXPECT_FALSE(g_LySharedToolsHelper.m_ReaderLibrary.GetIsLoaded()) << "nobody is asked";
}

TEST_F(LyFilenameReader, ReadersAreDestroyed)
{
    (void)LyFilename(L"http://fake/1234").GetFileSize(true);
    (void)LyFilename(L"http://fake/").GetFileSize(true);
    auto pGetLiveReaders =
        reinterpret_cast<int (*)()>(g_LySharedToolsHelper.m_ReaderLibrary.GetProcAddress("GetLiveReaders"));
    ASSERT_NE(pGetLiveReaders, nullptr);
    EXPECT_EQ(pGetLiveReaders(), 0);
}
