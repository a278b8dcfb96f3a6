// The file loader against a web server: packed answers, answers without a length, parts, limits and conditional loads.

#include "FileLoaderWebTest.h"
#include <chrono>
#include <filesystem>

namespace
{
// Text that packs well, and in which every line is another.
std::string MakeText(size_t nBytes)
{
    std::string str;
    for (int nLine = 0; str.size() < nBytes; ++nLine)
        str += "line " + std::to_string(nLine) + " of a page that a server would pack\n";
    str.resize(nBytes);
    return str;
}
const std::string s_strText = MakeText(300'000);
} // namespace

// ---- Packed answers

TEST_F(FileLoaderWeb, WhatTheServerPacksOnTheWayIsUnpacked)
{
    m_Server.Write("page.txt", s_strText);
    EXPECT_TRUE(LoadWithGzip("/gzip/page.txt"));
    EXPECT_EQ("gzip", GetHeader(L"Content-Encoding"));
    EXPECT_EQ("chunked", GetHeader(L"Transfer-Encoding")) << "no length was known";
    EXPECT_TRUE(GetText() == s_strText);
}

TEST_F(FileLoaderWeb, AFileThatLiesPackedIsUnpacked)
{
    WritePacked("page.txt", s_strText);
    EXPECT_TRUE(LoadWithGzip("/packed/page.txt"));
    EXPECT_EQ("gzip", GetHeader(L"Content-Encoding"));
    const std::string strPacked = ReadFile(m_Server.GetFolder().GetPath("files/page.txt.gz"));
    EXPECT_EQ(std::to_string(strPacked.size()), GetHeader(L"Content-Length"));
    EXPECT_TRUE(GetText() == s_strText);
}

TEST_F(FileLoaderWeb, UnpackingLeavesNoFileBehind)
{
    WritePacked("page.txt", s_strText);
    EXPECT_TRUE(LoadWithGzip("/packed/page.txt"));
    EXPECT_FALSE(FindFiles("Temp").empty()) << "there was a place for one";
    EXPECT_TRUE(FindFiles("File Loader Decompress").empty());
}

TEST_F(FileLoaderWeb, AnEmptyPageUnpacksToNothing)
{
    WritePacked("empty.txt", "");
    EXPECT_TRUE(LoadWithGzip("/packed/empty.txt"));
    EXPECT_EQ(0, m_Buffer.GetSize());
}

TEST_F(FileLoaderWeb, AFileThatIsOnlyNamedPackedIsLeftAlone)
{
    WritePacked("page.txt", s_strText);
    EXPECT_TRUE(LoadWithGzip("/files/page.txt.gz"));
    EXPECT_TRUE(GetText() == ReadFile(m_Server.GetFolder().GetPath("files/page.txt.gz")));
}

TEST_F(FileLoaderWeb, OutputIsUnpackedInPlace)
{
    WritePacked("page.txt", s_strText);
    const std::string strTarget = m_Folder.GetPath("page.txt");
    const ReaderPtr pOutput = MakeReader(strTarget);
    bool bOpened = true;
    m_Loader.SetDownloadParameters(nullptr, nullptr, 0, false);
    EXPECT_TRUE(
        m_Loader.LoadInternal(URL("/packed/page.txt"), nullptr, pOutput.get(), Name(strTarget), bOpened, LyDateTime()));
    EXPECT_TRUE(bOpened);
    EXPECT_TRUE(ReadFile(strTarget) == s_strText);
    EXPECT_TRUE(FindFiles(".tmp").empty());
}

TEST_F(FileLoaderWeb, GzipIsAskedForByTheParametersAndAfterTheFirstLoad)
{
    EXPECT_TRUE(Load("/ask"));
    EXPECT_TRUE(GetText().ends_with("|")) << GetText();
    // Deliberate: the parameters of a load are cleared behind it, and clearing sets up the header again.
    EXPECT_TRUE(Load("/ask"));
    EXPECT_TRUE(GetText().ends_with("|gzip")) << GetText();
}

// ---- Answers without a length

TEST_F(FileLoaderWeb, AnAnswerWithoutALengthIsLoadedToItsEnd)
{
    WritePacked("page.txt", s_strText);
    EXPECT_TRUE(Load("/packed/page.txt"));
    EXPECT_EQ("chunked", GetHeader(L"Transfer-Encoding"));
    EXPECT_EQ("", GetHeader(L"Content-Encoding"));
    EXPECT_TRUE(GetText() == s_strText);
}

TEST_F(FileLoaderWeb, AnAnswerWithoutALengthAndWithoutBytesFails)
{
    WritePacked("empty.txt", "");
    EXPECT_FALSE(Load("/packed/empty.txt"));
    EXPECT_EQ("200", GetStatus());
}

TEST_F(FileLoaderWeb, AnAnswerWithoutALengthIsCutAtTheLimitAndNeverTooLong)
{
    WritePacked("page.txt", s_strText);
    for (const bool bFail : {false, true})
    {
        m_Loader.SetMaximumLength(100'000, bFail);
        EXPECT_TRUE(m_Loader.LoadBuffer(URL("/packed/page.txt"), m_Buffer));
        EXPECT_TRUE(GetText() == s_strText.substr(0, 100'000)) << bFail;
        m_Loader.m_DownloadParameters = LyStringArray(); // not packed the next time, either
    }
}

TEST_F(FileLoaderWeb, AnAnswerWithoutALengthIsPassedOverToTheOffset)
{
    WritePacked("page.txt", s_strText);
    m_Loader.m_nStartOffset = 200'001;
    EXPECT_TRUE(Load("/packed/page.txt"));
    EXPECT_TRUE(GetText() == s_strText.substr(200'001));
}

// ---- Parts and limits

struct PART_CASE
{
    const char* pTest;
    long long nOffset;
    long long nLimit;
    bool bFailIfTooLong;
    bool bLoaded;
    size_t nFirst; // the bytes that are to come
    size_t nBytes;
};

const PART_CASE s_aryPartCases[] = {
    // The server has 1,000,000 bytes.
    {"Whole", 0, -1, false, true, 0, 1'000'000},
    {"FromTheMiddle", 600'000, -1, false, true, 600'000, 400'000},
    {"FromNearTheStart", 10, -1, false, true, 10, 999'990},
    {"LastByte", 999'999, -1, false, true, 999'999, 1},
    {"FromTheEnd", 1'000'000, -1, false, true, 0, 0},
    {"FromBeyondTheEnd", 5'000'000'000, -1, false, true, 0, 0},
    {"LimitBelowTheLength", 0, 100, false, true, 0, 100},
    {"LimitOfOneChunkAndAByte", 0, 65'537, false, true, 0, 65'537},
    {"LimitThatIsNotReached", 0, 1'000'001, true, true, 0, 1'000'000},
    {"LimitThatIsTheLength", 0, 1'000'000, true, true, 0, 1'000'000},
    {"LimitThatFails", 0, 999'999, true, false, 0, 0},
    {"LimitOfZeroIsNone", 0, 0, true, true, 0, 1'000'000},
    {"OffsetAndLimit", 300'000, 1000, false, true, 300'000, 1000},
    {"TheLimitCountsFromTheOffset", 300'000, 700'000, true, true, 300'000, 700'000},
};

TEST_F(FileLoaderWeb, PartsAndLimits)
{
    const std::string strContent = MakeBytes(1'000'000);
    m_Server.Write("big.bin", strContent);
    for (const char* pPath : {"/files/big.bin", "/noranges/big.bin"})
        for (const PART_CASE& row : s_aryPartCases)
        {
            m_Loader.m_nStartOffset = row.nOffset;
            m_Loader.SetMaximumLength(row.nLimit, row.bFailIfTooLong);
            EXPECT_EQ(Load(pPath), row.bLoaded) << pPath << " " << row.pTest;
            EXPECT_TRUE(GetText() == strContent.substr(row.nFirst, row.nBytes)) << pPath << " " << row.pTest;
        }
    EXPECT_EQ(m_Loader.m_nStartOffset, 300'000) << "it holds for the next load, too";
}

TEST_F(FileLoaderWeb, AnOffsetBeyondTheEndIsLoweredToTheLength)
{
    m_Server.Write("small.txt", "hello\n");
    m_Loader.m_nStartOffset = 7;
    EXPECT_TRUE(Load("/files/small.txt"));
    EXPECT_EQ("", GetText());
}

// ---- Conditional loads

struct COPY_CASE
{
    const char* pTest;
    int nSecondsAfter; // the date of the copy, beside that of the server
    size_t nCopyBytes; // the server has 6
    bool bCurrent;
};

const COPY_CASE s_aryCopyCases[] = {
    {"Newer", 1, 6, true},           {"MuchNewer", 86'400 * 365, 6, true},
    {"Older", -1, 6, false},         {"NewerAndShorter", 1, 5, false},
    {"NewerAndLonger", 1, 7, false},
};

TEST_F(FileLoaderWeb, ACurrentCopyIsNotLoadedAgain)
{
    using namespace std::chrono;
    constexpr double SERVER_DATE = 34644 + (8 * 3600 + 49 * 60 + 37) / 86400.0; // 6 November 1994, 8:49:37
    constexpr seconds SERVER_SECONDS(784'111'777);                              // the same since 1970
    m_Server.Write("small.txt", "hello\n");
    std::filesystem::last_write_time(m_Server.GetFolder().GetPath("files/small.txt"),
                                     file_clock::from_sys(sys_seconds(SERVER_SECONDS)));
    for (const COPY_CASE& row : s_aryCopyCases)
    {
        const std::string strCopy = m_Folder.Write("copy.txt", std::string(row.nCopyBytes, 'c'));
        bool bOpened = false;
        const bool bLoaded = m_Loader.LoadInternal(URL("/files/small.txt"), &m_Buffer, nullptr, Name(strCopy), bOpened,
                                                   LyDateTime(SERVER_DATE + row.nSecondsAfter / 86400.0));
        EXPECT_EQ("Sun, 06 Nov 1994 08:49:37 GMT", GetHeader(L"Last-Modified"));
        EXPECT_EQ(bLoaded, !row.bCurrent) << row.pTest;
        EXPECT_EQ(GetStatus(), row.bCurrent ? "304" : "200") << row.pTest;
        EXPECT_EQ(GetText(), row.bCurrent ? "" : "hello\n") << row.pTest;
        EXPECT_EQ(ReadFile(strCopy), std::string(row.nCopyBytes, 'c')) << "the loader leaves the copy alone";
    }
}

TEST_F(FileLoaderWeb, ACopyOfTheServersOwnDateIsCurrent)
{
    m_Server.Write("small.txt", "hello\n");
    const std::string strCopy = m_Folder.Write("copy.txt", "copied");
    EXPECT_TRUE(Load("/files/small.txt"));
    LyDateTime date;
    ASSERT_TRUE(date.Parse(m_Loader.GetResponseHeader(L"Last-Modified")));
    bool bOpened = false;
    EXPECT_FALSE(m_Loader.LoadInternal(URL("/files/small.txt"), &m_Buffer, nullptr, Name(strCopy), bOpened, date));
    EXPECT_EQ("304", GetStatus());
    std::filesystem::remove(strCopy);
    EXPECT_TRUE(m_Loader.LoadInternal(URL("/files/small.txt"), &m_Buffer, nullptr, Name(strCopy), bOpened, date));
    EXPECT_EQ("200", GetStatus());
}

// ---- What the server says

TEST_F(FileLoaderWeb, TheAnswerStaysAfterAFailedLoad)
{
    EXPECT_FALSE(Load("/status/404"));
    EXPECT_EQ("404", GetStatus());
    EXPECT_EQ(0, m_Buffer.GetSize()) << "the page about the error is not the file";
    EXPECT_NE("", GetHeader(L"Content-Length"));
    EXPECT_FALSE(m_Loader.m_strError.IsEmpty());
    m_Server.Write("small.txt", "hello\n");
    EXPECT_TRUE(Load("/redirect"));
    EXPECT_EQ("200", GetStatus());
    EXPECT_EQ(m_Server.GetURL("/files/small.txt"), Narrow(m_Loader.m_strLocation));
    EXPECT_TRUE(m_Loader.m_strError.IsEmpty());
}

TEST_F(FileLoaderWeb, DataIsPostedAsXML)
{
    char szData[] = "<a>1</a>";
    m_Loader.SetDownloadParameters(nullptr, szData, 8, true);
    szData[0] = 'x'; // a copy was taken
    EXPECT_TRUE(Load("/post"));
    EXPECT_TRUE(GetText().starts_with("POST|")) << GetText();
    EXPECT_EQ("<a>1</a>", GetHeader(L"X-Body"));
    EXPECT_EQ("text/xml", GetHeader(L"X-Type"));
    EXPECT_TRUE(Load("/ask"));
    EXPECT_TRUE(GetText().starts_with("GET|")) << "the data was good for one request";
}

TEST_F(FileLoaderWeb, WithoutTheInternetNobodyIsAsked)
{
    m_Server.Write("small.txt", "hello\n");
    m_Loader.m_bAllowInternet = false;
    EXPECT_FALSE(Load("/files/small.txt"));
    EXPECT_EQ("", GetStatus());
    const std::string strFile = "file://" + m_Folder.Write("local.txt", "local");
    EXPECT_TRUE(m_Loader.LoadBuffer(Name(strFile), m_Buffer));
    EXPECT_EQ("local", GetText());
}
