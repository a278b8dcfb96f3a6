#include "LyFilename.h"
#include "LySharedToolsHelper.h"
#include "NginxServer.h"
#include "ProcessInfo.h"
#include "ReaderTesting.h"

// The library as other programs see it: loaded from its file.

namespace
{
class ReaderLibrary : public testing::Test
{
protected:
    ReaderLibrary()
    {
        setenv("no_proxy", "*", 1);
        GetProcessInfo(true)->SetSharedLibraryPath(WidenUTF8(RONDEL_BIN_DIR "/").c_str());
    }
    ~ReaderLibrary() override { g_LySharedToolsHelper.UnloadLyReaderLib(); }
    static ReaderPtr Make(const std::string& strName)
    {
        return ReaderPtr(CreateGenericReader(WidenUTF8(strName).c_str()));
    }
};

long CountInFolder(const char* pFolder)
{
    return std::distance(std::filesystem::directory_iterator(pFolder), std::filesystem::directory_iterator());
}

long GetResidentKilobytes()
{
    std::ifstream status("/proc/self/statm");
    long nTotalPages = 0;
    long nResidentPages = 0;
    status >> nTotalPages >> nResidentPages;
    return nResidentPages * (sysconf(_SC_PAGESIZE) / 1024);
}
} // namespace

TEST_F(ReaderLibrary, MakesReadersByScheme)
{
    for (const char* pName : {"/tmp/x", "x", "file:///x", "http://h/", "https://h/"})
        EXPECT_NE(Make(pName), nullptr) << pName;
    for (const char* pName : {"", "ftp://h/", "cda://1"})
        EXPECT_EQ(Make(pName), nullptr) << pName;
    EXPECT_EQ(CreateGenericReader(nullptr), nullptr);
}

TEST_F(ReaderLibrary, ReadsAndWritesFiles)
{
    const TempFolder folder;
    const ReaderPtr pReader = Make(folder.GetPath("a.bin"));
    ASSERT_NE(pReader, nullptr);
    ASSERT_TRUE(pReader->Create());
    EXPECT_EQ(pReader->Write("hello", 5), 5);
    EXPECT_EQ(pReader->Seek(1, 0), 1);
    EXPECT_EQ(ReadText(*pReader, 10), "ello");
    EXPECT_EQ(GetInfo(*pReader, L"StatusCode"), "");
}

TEST_F(ReaderLibrary, SizeOfAUrlIsThatOfItsHead)
{
    const NginxServer server;
    ASSERT_TRUE(server.GetIsRunning());
    server.Write("a.txt", "1234567");
    EXPECT_EQ(LyFilename(WidenUTF8(server.GetURL("/files/a.txt")).c_str()).GetFileSize(true), 7);
    EXPECT_EQ(LyFilename(WidenUTF8(server.GetURL("/files/missing")).c_str()).GetFileSize(true), -1);
    const ReaderPtr pReader = Make(server.GetURL("/redirect"));
    EXPECT_FALSE(pReader->Open());
    EXPECT_EQ(GetInfo(*pReader, L"StatusCode"), "404");
}

TEST_F(ReaderLibrary, UnloadingLetsGoOfTheFile)
{
    const auto isMapped = []
    {
        std::ifstream maps("/proc/self/maps");
        const std::string strMaps(std::istreambuf_iterator<char>(maps), {});
        return strMaps.find("/libLyReader.dylib") != std::string::npos;
    };
    (void)Make("http://127.0.0.1:1/")->Open();
    EXPECT_TRUE(isMapped());
    g_LySharedToolsHelper.UnloadLyReaderLib();
    EXPECT_FALSE(isMapped());
}

TEST_F(ReaderLibrary, TwoHundredLoadsLeaveNothingBehind)
{
    const NginxServer server;
    ASSERT_TRUE(server.GetIsRunning());
    server.Write("a.txt", "1234567");
    const auto useOnce = [&]
    {
        {
            const ReaderPtr pReader = Make(server.GetURL("/files/a.txt"));
            ASSERT_TRUE(pReader->Open());
            EXPECT_EQ(ReadAll(*pReader), "1234567");
        }
        g_LySharedToolsHelper.UnloadLyReaderLib();
        EXPECT_FALSE(g_LySharedToolsHelper.m_ReaderLibrary.GetIsLoaded());
    };
    for (int i = 0; i < 20; ++i)
        useOnce();
    const long nDescriptors = CountInFolder("/proc/self/fd");
    const long nThreads = CountInFolder("/proc/self/task");
    const long nKilobytes = GetResidentKilobytes();
    for (int i = 0; i < 200; ++i)
        useOnce();
    EXPECT_EQ(CountInFolder("/proc/self/fd"), nDescriptors);
    EXPECT_EQ(CountInFolder("/proc/self/task"), nThreads);
    RecordProperty("GrowthKilobytes", std::to_string(GetResidentKilobytes() - nKilobytes));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(GetResidentKilobytes() - nKilobytes, 4096);
#endif
}
