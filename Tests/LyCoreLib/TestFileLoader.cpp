// What a load asks of the reader, and what it makes of the answers.

#include "FileLoaderTestSupport.h"
#include "LyTempFolder.h"
#include <climits>
#include <gtest/gtest.h>
#include <string>

namespace
{
using CALLS = std::vector<std::wstring>;
} // namespace

TEST_F(FileLoader, MembersBeginAsTheyAreUsedMost)
{
    EXPECT_FALSE(m_Loader.m_Cancel.m_bCancelled);
    EXPECT_EQ(m_Loader.m_Cancel.m_pCallback, nullptr);
    EXPECT_EQ(m_Loader.m_pCancel, &m_Loader.m_Cancel);
    EXPECT_EQ(m_Loader.m_pProgress, nullptr);
    EXPECT_EQ(m_Loader.m_nMaximumLength, -1);
    EXPECT_FALSE(m_Loader.m_bFailIfTooLong);
    EXPECT_EQ(m_Loader.m_nStartOffset, 0);
    EXPECT_EQ(m_Loader.m_pChecker, nullptr);
    EXPECT_EQ(m_Loader.m_nCheckerParam, 0);
    EXPECT_EQ(m_Loader.m_nCheckBytes, 0);
    EXPECT_TRUE(m_Loader.m_bCheckAtEnd);
    EXPECT_TRUE(m_Loader.m_strRequiredText.IsEmpty());
    EXPECT_FALSE(m_Loader.m_bShowProgress);
    EXPECT_EQ(m_Loader.m_nProgressDelay, 4000);
    EXPECT_TRUE(m_Loader.m_bProgressCancel);
    EXPECT_FALSE(m_Loader.m_bShortProgressText);
    EXPECT_TRUE(m_Loader.m_strProgressTitle.IsEmpty());
    EXPECT_TRUE(m_Loader.m_strProgressText.IsEmpty());
    EXPECT_TRUE(m_Loader.m_bAllowInternet);
    EXPECT_TRUE(m_Loader.m_bAllowReader);
    EXPECT_EQ(m_Loader.m_DownloadParameters.GetSize(), 0);
    EXPECT_EQ(m_Loader.m_nPostLength, 0);
    EXPECT_EQ(m_Loader.m_pPostData, nullptr);
    EXPECT_EQ(m_Loader.m_nTimeoutMS, 20000);
    EXPECT_EQ(m_Loader.m_PostBuffer.GetSize(), 0);
    EXPECT_EQ(m_Loader.m_pReader, nullptr);
    EXPECT_FALSE(m_Loader.m_bBusy);
}

TEST_F(FileLoader, MembersStandInTheirOrder)
{
    const void* const aryAddresses[] = {
        &m_Loader.m_Cancel,
        &m_Loader.m_pCancel,
        &m_Loader.m_pProgress,
        &m_Loader.m_nMaximumLength,
        &m_Loader.m_bFailIfTooLong,
        &m_Loader.m_nStartOffset,
        &m_Loader.m_pChecker,
        &m_Loader.m_nCheckerParam,
        &m_Loader.m_nCheckBytes,
        &m_Loader.m_bCheckAtEnd,
        &m_Loader.m_strRequiredText,
        &m_Loader.m_bShowProgress,
        &m_Loader.m_nProgressDelay,
        &m_Loader.m_bProgressCancel,
        &m_Loader.m_bShortProgressText,
        &m_Loader.m_strProgressTitle,
        &m_Loader.m_strProgressText,
        &m_Loader.m_bAllowInternet,
        &m_Loader.m_bAllowReader,
        &m_Loader.m_DownloadParameters,
        &m_Loader.m_nPostLength,
        &m_Loader.m_pPostData,
        &m_Loader.m_nTimeoutMS,
        &m_Loader.m_PostBuffer,
        &m_Loader.m_strLocation,
        &m_Loader.m_strAllHeaders,
        &m_Loader.m_strStatusCode,
        &m_Loader.m_Lock,
        &m_Loader.m_pReader,
        &m_Loader.m_bBusy,
    };
    // In front of them stand the two tables of operations.
    EXPECT_EQ(static_cast<const void*>(&m_Loader.m_Cancel),
              reinterpret_cast<const char*>(&m_Loader) + 2 * sizeof(void*));
    for (size_t n = 1; n < std::size(aryAddresses); ++n)
        EXPECT_LT(aryAddresses[n - 1], aryAddresses[n]) << n;
}

TEST_F(FileLoader, LocalFileIsReadInLargeChunks)
{
    m_Script.strContent = Bytes(2'500'000);
    EXPECT_TRUE(Load(FILE_NAME));
    EXPECT_EQ(Text(m_Buffer), m_Script.strContent);
    EXPECT_EQ(m_Record.aryReads, (std::vector<int>{1048576, 1048576, 402848}));
    EXPECT_EQ(m_Record.strPath, FILE_NAME);
    EXPECT_EQ(m_Record.aryCalls, CALLS{L"Open"}) << "nothing else is set up for a file";
    EXPECT_EQ(m_Record.nClosed, 0) << "its owner destroys it";
    EXPECT_EQ(m_Record.nDestroyed, 1);
    EXPECT_FALSE(m_Loader.m_bBusy);
}

TEST_F(FileLoader, UrlIsSetUpAndReadInSmallChunks)
{
    m_Script.strContent = Bytes(150'000);
    m_Loader.m_nTimeoutMS = 1234;
    m_Loader.AddDownloadParameter(L"a", L"1");
    m_Loader.AddDownloadParameter(L"b", L"2");
    char szData[] = "xyz";
    m_Loader.SetDownloadParametersData(szData, 3, false);
    EXPECT_TRUE(Load(URL));
    EXPECT_EQ(Text(m_Buffer), m_Script.strContent);
    EXPECT_EQ(m_Record.aryReads, (std::vector<int>{65536, 65536, 18928}));
    EXPECT_EQ(m_Record.aryCalls,
              (CALLS{L"SetTimeout 1234", L"SetPostData 3", L"SetDownloadParameters a|1|b|2", L"Open"}));
    EXPECT_EQ(m_Record.strPostData, "xyz");
    EXPECT_EQ(m_Record.strPath, URL);
}

TEST_F(FileLoader, UrlOfTheFileSchemeIsALocalFile)
{
    m_Script.strContent = "abc";
    m_Loader.m_bAllowInternet = false;
    EXPECT_TRUE(Load(L"file:///music/a%20b.bin"));
    EXPECT_EQ(m_Record.strPath, L"/music/a b.bin");
}

TEST_F(FileLoader, RequestIsGoodForOneLoad)
{
    m_Script.strContent = "abc";
    char szData[] = "xyz";
    m_Loader.SetDownloadParameters(nullptr, szData, 3, true);
    m_Loader.m_nTimeoutMS = 5;
    EXPECT_TRUE(Load(URL));
    EXPECT_EQ(m_Record.strPostData, "xyz");
    EXPECT_EQ(m_Loader.m_pPostData, nullptr);
    EXPECT_EQ(m_Loader.m_nPostLength, 0);
    EXPECT_EQ(m_Loader.m_PostBuffer.GetSize(), 0);
    EXPECT_EQ(m_Loader.m_DownloadParameters.GetList(L"|"), L"INFO_HEADERS|Accept-Encoding: gzip");
    EXPECT_EQ(m_Loader.m_nTimeoutMS, 5) << "the rest stays";
}

TEST_F(FileLoader, UrlWithoutInternetFailsWithoutAReader)
{
    m_Loader.m_bAllowInternet = false;
    EXPECT_FALSE(Load(URL));
    EXPECT_EQ(m_Record.nCreated, 0);
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    m_Script.strContent = "abc";
    EXPECT_TRUE(Load(FILE_NAME));
}

TEST_F(FileLoader, NoReaderFails)
{
    m_Script.bNoReader = true;
    EXPECT_FALSE(Load(FILE_NAME));
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    EXPECT_FALSE(m_Loader.m_bBusy);
}

TEST_F(FileLoader, ServersAnswerStaysAlsoAfterAFailure)
{
    m_Script.bOpens = false;
    m_Script.info = {{L"Location", L"http://other/"}, {L"AllHeaders", L"Server: x\r\n"}, {L"StatusCode", L"404"}};
    EXPECT_FALSE(Load(URL));
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    EXPECT_TRUE(m_Record.aryReads.empty());
    EXPECT_EQ(m_Loader.m_strLocation, L"http://other/");
    EXPECT_EQ(m_Loader.m_strAllHeaders, L"Server: x\r\n");
    EXPECT_EQ(m_Loader.m_strStatusCode, L"404");
    m_Script.info.clear();
    EXPECT_FALSE(Load(URL));
    EXPECT_EQ(m_Loader.m_strStatusCode, L"") << "of the last load";
}

struct HEADER_CASE
{
    const char* pTest;
    const wchar_t* pHeaders;
    const wchar_t* pName;
    const wchar_t* pValue;
};

const HEADER_CASE s_aryHeaderCases[] = {
    {"First", L"A: one\r\nB: two\r\n", L"A", L"one"},
    {"Trimmed", L"A: one\r\nB:\t two \r\nC: 3\r\n", L"B", L"two"},
    {"LastWithoutLineFeed", L"A: one\nB: two", L"B", L"two"},
    {"CaseDoesNotCount", L"last-modified: x\r\n", L"Last-Modified", L"x"},
    {"Missing", L"A: one\r\n", L"B", L""},
    {"PartOfAnotherName", L"X-A: no\r\nA: yes\r\n", L"A", L"yes"},
    {"ColonInTheValue", L"Date: 10:11:12\r\n", L"Date", L"10:11:12"},
    {"EmptyValue", L"A:\r\nB: two\r\n", L"A", L""},
    {"NoHeaders", L"", L"A", L""},
    {"NoName", L"A: one\r\n", L"", L""},
};

TEST_F(FileLoader, ResponseHeaders)
{
    for (const HEADER_CASE& row : s_aryHeaderCases)
    {
        m_Loader.m_strAllHeaders = row.pHeaders;
        EXPECT_STREQ(m_Loader.GetResponseHeader(row.pName), row.pValue) << row.pTest;
    }
}

// ---- Lengths

struct LENGTH_CASE
{
    const char* pTest;
    int nContent;
    long long nSaid; // by GetLength; -1: not known
    long long nMaximum;
    bool bFail;
    long long nOffset;
    bool bResult;
    int nLoaded;
};

const LENGTH_CASE s_aryLengthCases[] = {
    {"Whole", 1000, 1000, -1, false, 0, true, 1000},
    {"EmptyFile", 0, 0, -1, false, 0, true, 0},
    {"Cut", 1000, 1000, 100, false, 0, true, 100},
    {"TooLong", 1000, 1000, 100, true, 0, false, 0},
    {"JustShortEnough", 100, 100, 100, true, 0, true, 100},
    {"ZeroIsNoLimit", 1000, 1000, 0, true, 0, true, 1000},
    {"LowestIsNoLimit", 1000, 1000, LLONG_MIN, true, 0, true, 1000},
    {"LimitAboveTheLength", 1000, 1000, LLONG_MAX, true, 0, true, 1000},
    {"Offset", 1000, 1000, -1, false, 900, true, 100},
    {"OffsetAtTheEnd", 1000, 1000, -1, false, 1000, true, 0},
    {"OffsetBeyondTheEnd", 1000, 1000, -1, false, 5000, true, 0},
    {"HighestOffset", 1000, 1000, -1, false, LLONG_MAX, true, 0},
    {"NegativeOffsetIsNone", 1000, 1000, -1, false, -5, true, 1000},
    {"OffsetMakesItShortEnough", 1000, 1000, 100, true, 900, true, 100},
    {"OffsetAndCut", 1000, 1000, 50, false, 900, true, 50},
    {"NotKnown", 1000, -1, -1, false, 0, true, 1000},
    {"NotKnownLowest", 1000, LLONG_MIN, -1, false, 0, true, 1000},
    {"NotKnownAndEmpty", 0, -1, -1, false, 0, false, 0},
    {"NotKnownAndCut", 1000, -1, 100, false, 0, true, 100},
    {"NotKnownIsNeverTooLong", 1000, -1, 100, true, 0, true, 100},
    {"NotKnownAndShorterThanTheLimit", 50, -1, 100, true, 0, true, 50},
    {"NotKnownWithOffset", 1000, -1, -1, false, 990, true, 10},
    {"NotKnownWithOffsetBeyondTheEnd", 1000, -1, -1, false, 5000, false, 0},
    {"ShorterThanItSaid", 1000, 1001, -1, false, 0, false, 0},
    {"LongerThanItSaid", 1000, 900, -1, false, 0, true, 900},
    {"LieBeyondMemory", 1000, LLONG_MAX, -1, false, 0, false, 0},
};

TEST_F(FileLoader, LengthsLimitsAndOffsets)
{
    for (const LENGTH_CASE& row : s_aryLengthCases)
    {
        for (const wchar_t* pName : {FILE_NAME, URL})
        {
            m_Script.strContent = Bytes(row.nContent);
            m_Script.nLength = row.nSaid;
            m_Loader.SetMaximumLength(row.nMaximum, row.bFail);
            m_Loader.m_nStartOffset = row.nOffset;
            EXPECT_EQ(Load(pName), row.bResult) << row.pTest;
            const size_t nFrom = std::min(static_cast<size_t>(std::max(row.nOffset, 0LL)), m_Script.strContent.size());
            EXPECT_EQ(Text(m_Buffer), m_Script.strContent.substr(nFrom, static_cast<size_t>(row.nLoaded))) << row.pTest;
            EXPECT_EQ(m_Loader.m_nStartOffset, row.nOffset) << row.pTest;
        }
    }
}

TEST_F(FileLoader, OffsetIsSoughtFromTheStart)
{
    m_Script.strContent = Bytes(1000);
    m_Loader.m_nStartOffset = 2000;
    EXPECT_TRUE(Load(FILE_NAME));
    EXPECT_EQ(m_Record.aryCalls, (CALLS{L"Open", L"Seek 1000 0"})) << "lowered to the length";
    m_Record.aryCalls.clear();
    m_Script.nLength = -1;
    EXPECT_FALSE(Load(FILE_NAME));
    EXPECT_EQ(m_Record.aryCalls, (CALLS{L"Open", L"Seek 2000 0"})) << "nothing to lower it to";
}

TEST_F(FileLoader, OffsetThatCannotBeSoughtFails)
{
    m_Script.strContent = Bytes(1000);
    m_Script.bSeeks = false;
    m_Loader.m_nStartOffset = 10;
    EXPECT_FALSE(Load(URL));
    EXPECT_EQ(m_Buffer.GetSize(), 0);
}

TEST_F(FileLoader, LocalSourceOfUnknownLengthIsReadInSmallChunks)
{
    m_Script.strContent = Bytes(70'000);
    m_Script.nLength = -1;
    EXPECT_TRUE(Load(FILE_NAME));
    EXPECT_EQ(m_Record.aryReads, (std::vector<int>{65536, 65536}));
    EXPECT_EQ(Text(m_Buffer), m_Script.strContent);
}

// ---- Readers switched off

class FileLoaderNoReader : public FileLoader
{
protected:
    FileLoaderNoReader() { m_Loader.SetAllowReader(false); }

    bool LoadBytes(int nBytes)
    {
        m_strContent = Bytes(nBytes);
        (void)m_Folder.Write("a.bin", m_strContent);
        return Load(m_Folder.GetName(L"a.bin"));
    }

    LyTempFolder m_Folder;
    std::string m_strContent;
};

TEST_F(FileLoaderNoReader, LocalFileNeedsNone)
{
    EXPECT_TRUE(LoadBytes(3'000'000));
    EXPECT_EQ(Text(m_Buffer), m_strContent);
    EXPECT_EQ(m_Record.nCreated, 0);
}

TEST_F(FileLoaderNoReader, LengthsLimitsAndOffsets)
{
    for (const LENGTH_CASE& row : s_aryLengthCases)
    {
        if (row.nSaid != row.nContent)
            continue; // a file tells the truth
        m_Loader.SetMaximumLength(row.nMaximum, row.bFail);
        m_Loader.m_nStartOffset = row.nOffset;
        EXPECT_EQ(LoadBytes(row.nContent), row.bResult) << row.pTest;
        const size_t nFrom = std::min(static_cast<size_t>(std::max(row.nOffset, 0LL)), m_strContent.size());
        EXPECT_EQ(Text(m_Buffer), m_strContent.substr(nFrom, static_cast<size_t>(row.nLoaded))) << row.pTest;
    }
}

TEST_F(FileLoaderNoReader, WhatIsNoFileFails)
{
    EXPECT_FALSE(Load(m_Folder.GetName(L"missing")));
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    EXPECT_FALSE(Load(m_Folder.GetName(L"")));
    EXPECT_FALSE(Load(URL));
    EXPECT_FALSE(Load(L""));
}

TEST_F(FileLoaderNoReader, OutputAlwaysTakesAReader)
{
    m_Script.strContent = "abc";
    OutputReader output;
    bool bOpened = true;
    EXPECT_TRUE(m_Loader.LoadInternal(LyFilename(FILE_NAME), nullptr, &output, LyFilename(), bOpened, LyDateTime()));
    EXPECT_EQ(m_Record.nCreated, 1);
    EXPECT_EQ(output.m_strWritten, "abc");
}

TEST_F(FileLoaderNoReader, NoBufferFails)
{
    bool bOpened = false;
    EXPECT_FALSE(
        m_Loader.LoadInternal(LyFilename(L"/dev/null"), nullptr, nullptr, LyFilename(), bOpened, LyDateTime()));
}

TEST_F(FileLoaderNoReader, BufferFromFile)
{
    m_strContent = Bytes(100);
    (void)m_Folder.Write("a.bin", m_strContent);
    LyBuffer buffer;
    EXPECT_TRUE(buffer.FromFile(LyFilename(m_Folder.GetName(L"a.bin")), -1, false));
    EXPECT_EQ(Text(buffer), m_strContent);
    EXPECT_TRUE(buffer.FromFile(LyFilename(m_Folder.GetName(L"a.bin")), 10, false));
    EXPECT_EQ(Text(buffer), m_strContent.substr(0, 10));
    EXPECT_FALSE(buffer.FromFile(LyFilename(m_Folder.GetName(L"b.bin")), 10, false));
    EXPECT_EQ(buffer.GetSize(), 0);
    EXPECT_EQ(m_Record.nCreated, 0);
    m_Script.strContent = "by a reader";
    EXPECT_TRUE(buffer.FromFile(LyFilename(URL), 4, true));
    EXPECT_EQ(Text(buffer), "by a");
}
