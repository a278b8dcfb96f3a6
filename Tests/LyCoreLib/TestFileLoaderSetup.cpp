// The parameters of a request.

#include "FileLoader.h"
#include <cstring>
#include <gtest/gtest.h>

namespace
{
LyStringArray List(const wchar_t* pList)
{
    LyStringArray ary;
    if (*pList != 0)
        ary.InitFromList(pList, L"|");
    return ary;
}

LyString Parameters(const CFileLoader& loader) { return loader.m_DownloadParameters.GetList(L"|"); }

char s_szData[] = "<xml/>";
} // namespace

TEST(FileLoaderSetup, EverythingIsTrue)
{
    CFileLoader loader;
    EXPECT_TRUE(loader.SetMaximumLength(5, true));
    EXPECT_EQ(loader.m_nMaximumLength, 5);
    EXPECT_TRUE(loader.m_bFailIfTooLong);
    EXPECT_TRUE(loader.SetAllowReader(false));
    EXPECT_FALSE(loader.m_bAllowReader);
    EXPECT_TRUE(loader.SetProgressUI(true, 7, false, L"title", true, L"text"));
    EXPECT_TRUE(loader.m_bShowProgress);
    EXPECT_EQ(loader.m_nProgressDelay, 7);
    EXPECT_FALSE(loader.m_bProgressCancel);
    EXPECT_EQ(loader.m_strProgressTitle, L"title");
    EXPECT_TRUE(loader.m_bShortProgressText);
    EXPECT_EQ(loader.m_strProgressText, L"text");
}

struct PARAMETERS_CASE
{
    const char* pTest;
    const wchar_t* pList;
    bool bData;
    const wchar_t* pResult;
};

const PARAMETERS_CASE s_aryParametersCases[] = {
    {"Nothing", L"", false, L"INFO_HEADERS|Accept-Encoding: gzip"},
    {"Data", L"", true, L"HTTPREQUEST_TYPE|POST|INFO_HEADERS|Content-Type: text/xml\nAccept-Encoding: gzip"},
    {"OwnRequestType", L"HTTPREQUEST_TYPE|PUT", true,
     L"HTTPREQUEST_TYPE|PUT|INFO_HEADERS|Content-Type: text/xml\nAccept-Encoding: gzip"},
    {"OwnHeaders", L"INFO_HEADERS|A: b", true, L"INFO_HEADERS|A: b|HTTPREQUEST_TYPE|POST"},
    {"OwnHeadersWithoutData", L"INFO_HEADERS|A: b", false, L"INFO_HEADERS|A: b"},
    {"OtherParameters", L"x|1", false, L"x|1|INFO_HEADERS|Accept-Encoding: gzip"},
};

TEST(FileLoaderSetup, ParametersAreCompleted)
{
    for (const PARAMETERS_CASE& row : s_aryParametersCases)
    {
        CFileLoader loader;
        loader.AddDownloadParameter(L"before", L"1");
        LyStringArray aryList = List(row.pList);
        EXPECT_TRUE(loader.SetDownloadParameters(row.pList[0] != 0 ? &aryList : nullptr, row.bData ? s_szData : nullptr,
                                                 row.bData ? 6 : 0, false));
        EXPECT_STREQ(Parameters(loader), row.pResult) << row.pTest;
        EXPECT_EQ(loader.m_nPostLength, row.bData ? 6 : 0) << row.pTest;
    }
}

TEST(FileLoaderSetup, DataNeedsAPointerAndALength)
{
    CFileLoader loader;
    for (int nBytes : {0, -1})
    {
        loader.SetDownloadParameters(nullptr, s_szData, nBytes, true);
        EXPECT_STREQ(Parameters(loader), L"INFO_HEADERS|Accept-Encoding: gzip");
        EXPECT_EQ(loader.m_nPostLength, 0);
        EXPECT_EQ(loader.m_pPostData, nullptr);
    }
    loader.SetDownloadParameters(nullptr, nullptr, 6, false);
    EXPECT_STREQ(Parameters(loader), L"INFO_HEADERS|Accept-Encoding: gzip");
    EXPECT_EQ(loader.m_nPostLength, 0);
}

TEST(FileLoaderSetup, OwnListMayBeHandedBack)
{
    CFileLoader loader;
    loader.AddDownloadParameter(L"x", L"1");
    loader.SetDownloadParameters(&loader.m_DownloadParameters, nullptr, 0, false);
    EXPECT_STREQ(Parameters(loader), L"x|1|INFO_HEADERS|Accept-Encoding: gzip");
}

TEST(FileLoaderSetup, DataIsCopiedOrBorrowed)
{
    CFileLoader loader;
    EXPECT_TRUE(loader.SetDownloadParametersData(s_szData, 6, true));
    EXPECT_EQ(loader.m_PostBuffer.GetSize(), 6);
    EXPECT_EQ(loader.m_pPostData, loader.m_PostBuffer.GetData());
    EXPECT_EQ(std::memcmp(loader.m_pPostData, "<xml/>", 6), 0);
    EXPECT_TRUE(loader.SetDownloadParametersData(s_szData, 3, false));
    EXPECT_EQ(loader.m_PostBuffer.GetAllocated(), 0) << "freed";
    EXPECT_EQ(static_cast<void*>(loader.m_pPostData), s_szData);
    EXPECT_EQ(loader.m_nPostLength, 3);
}

TEST(FileLoaderSetup, ParameterIsReplacedOrAppended)
{
    CFileLoader loader;
    EXPECT_TRUE(loader.AddDownloadParameter(L"a", L"1"));
    EXPECT_TRUE(loader.AddDownloadParameter(L"b", L"2"));
    EXPECT_TRUE(loader.AddDownloadParameter(L"a", L"3"));
    EXPECT_STREQ(Parameters(loader), L"a|3|b|2");
    EXPECT_TRUE(loader.AddDownloadParameter(L"ab", L"4")) << "names are compared as wholes";
    EXPECT_STREQ(Parameters(loader), L"a|3|b|2|ab|4");
    EXPECT_TRUE(loader.AddDownloadParameter(loader.m_DownloadParameters[1], loader.m_DownloadParameters[3]));
    EXPECT_STREQ(Parameters(loader), L"a|3|2|2|ab|4") << "a value that equals the name counts as the name";
    loader.m_DownloadParameters.Add(L"end");
    EXPECT_TRUE(loader.AddDownloadParameter(L"end", loader.m_DownloadParameters[0]));
    EXPECT_STREQ(Parameters(loader), L"a|3|2|2|ab|4|end|a") << "a name without a value gets one";
}

TEST(FileLoaderSetup, RequestHeadersAreJoinedByLineFeeds)
{
    CFileLoader loader;
    EXPECT_TRUE(loader.AddDownloadParametersRequestHeaders(List(L"A: 1||B: 2|A: 1"), true));
    EXPECT_STREQ(Parameters(loader), L"INFO_HEADERS|A: 1\nB: 2\nAccept-Encoding: gzip") << "no blanks, no duplicates";
    EXPECT_TRUE(loader.AddDownloadParametersRequestHeaders(List(L"A: 1"), false));
    EXPECT_STREQ(Parameters(loader), L"INFO_HEADERS|A: 1");
    EXPECT_TRUE(loader.AddDownloadParametersRequestHeaders(List(L"accept-encoding: gzip"), true));
    EXPECT_STREQ(Parameters(loader), L"INFO_HEADERS|accept-encoding: gzip");
}
