#include "ReaderNames.h"
#include "UrlRequest.h"
#include <gtest/gtest.h>

TEST(ReaderNames, KindFollowsTheScheme)
{
    const struct
    {
        const wchar_t* pName;
        READER_KIND eKind;
    } aryCases[] = {
        {L"", READER_KIND_NONE},
        {L"/a/b.wav", READER_KIND_LOCAL},
        {L"b.wav", READER_KIND_LOCAL},
        {L"C:\\a", READER_KIND_LOCAL},
        {L"/tmp/a://b", READER_KIND_LOCAL},
        {L"://b", READER_KIND_LOCAL},
        {L"1a://b", READER_KIND_LOCAL},
        {L"(Install Drive):/a", READER_KIND_LOCAL},
        {L"file:///a", READER_KIND_FILE_URL},
        {L"FiLe://a", READER_KIND_FILE_URL},
        {L"http://h/", READER_KIND_HTTP},
        {L"HTTPS://h/", READER_KIND_HTTP},
        {L"ftp://h/a", READER_KIND_NONE},
        {L"cda://1", READER_KIND_NONE},
        {L"httpx://h/", READER_KIND_NONE},
        {L"a+b-c.1://h/", READER_KIND_NONE},
    };
    for (const auto& row : aryCases)
        EXPECT_EQ(GetReaderKind(row.pName), row.eKind) << std::string(row.pName, row.pName + wcslen(row.pName));
}

TEST(ReaderNames, LocalPaths)
{
    const struct
    {
        const wchar_t* pName;
        const char* pPath;
    } aryCases[] = {
        {L"/a/b%20c", "/a/b%20c"},
        {L"file:///a/b%20c", "/a/b c"},
        {L"file://localhost/a/b.txt", "/a/b.txt"},
        {L"FILE://LocalHost/a", "/a"},
        {L"file://localhostx/a", "localhostx/a"},
        {L"file:///%C3%A4", "/\xC3\xA4"},
        {L"file:///%ff", "/\xFF"},
        {L"file:///\u00E4%2", "/\xC3\xA4%2"},
        {L"file:///a%zz%%41", "/a%zz%A"},
        {L"file://", ""},
        {L"/\x1F3B5", "/\xF0\x9F\x8E\xB5"},
    };
    for (const auto& row : aryCases)
        EXPECT_EQ(GetLocalPath(row.pName), row.pPath);
}

TEST(ReaderNames, UrlsAreEscapedBehindTheHost)
{
    EXPECT_EQ(GetRequestURL(L"http://h/a b"), "http://h/a%20b");
    EXPECT_EQ(GetRequestURL(L"http://h/\u00E4?\u00FC=\x1F3B5"), "http://h/%C3%A4?%C3%BC=%F0%9F%8E%B5");
    EXPECT_EQ(GetRequestURL(L"http://h/%20%41\n"), "http://h/%20%41%0A");
    EXPECT_EQ(GetRequestURL(L"http://\u00E4:80?x y"), "http://\xC3\xA4:80?x%20y");
    EXPECT_EQ(GetRequestURL(L"http://h"), "http://h");
}

TEST(ReaderNames, HostForMessages)
{
    EXPECT_EQ(GetHostOfURL("http://user:p@ss@host:80/a@b"), "host");
    EXPECT_EQ(GetHostOfURL("https://[::1]:8080/"), "[::1]");
    EXPECT_EQ(GetHostOfURL("https://[::1]/"), "[::1]");
    EXPECT_EQ(GetHostOfURL("http://host?x"), "host");
    EXPECT_EQ(GetHostOfURL("http://"), "");
}

TEST(UrlRequest, PairsAreJoinedWithBars)
{
    UrlRequest request;
    request.SetParameters(L"Other|x|HTTPREQUEST_TYPE|PUT|INFO_HEADERS|A: 1\nB:2\n\nC:|");
    EXPECT_EQ(request.GetMethod(), "PUT");
    EXPECT_EQ(request.GetHeaderLines(), (std::vector<std::string>{"A: 1", "B:2", "C;"}));
    EXPECT_TRUE(request.HasHeader("a"));
    EXPECT_TRUE(request.HasHeader("C"));
    EXPECT_FALSE(request.HasHeader("D"));
    EXPECT_EQ(request.GetRefusal(), "");
    request.SetParameters(L"");
    EXPECT_EQ(request.GetMethod(), "GET") << "the last set-up counts alone";
    EXPECT_TRUE(request.GetHeaderLines().empty());
    request.SetParameters(L"HTTPREQUEST_TYPE");
    EXPECT_EQ(request.GetMethod(), "GET");
}

TEST(UrlRequest, DataMakesAPost)
{
    UrlRequest request;
    EXPECT_TRUE(request.GetIsPlainGet());
    request.SetData("abc", 2);
    EXPECT_EQ(request.GetMethod(), "POST");
    EXPECT_EQ(request.GetData(), "ab");
    EXPECT_TRUE(request.SetParameter(L"HTTPREQUEST_TYPE", L"GET"));
    EXPECT_EQ(request.GetMethod(), "GET");
    EXPECT_FALSE(request.GetIsPlainGet());
    request.SetData("abc", -1);
    EXPECT_EQ(request.GetData(), "");
    request.SetData(nullptr, 5);
    EXPECT_TRUE(request.GetIsPlainGet());
    EXPECT_FALSE(request.SetParameter(L"Unknown", L"x"));
}

TEST(UrlRequest, LinesThatWouldAddLinesAreRefused)
{
    for (const wchar_t* pBad : {L"A: 1\rB: 2", L"A", L": x", L"A B: x", L"A: \x01", L"A\u00E4: x", L"A: x\x7f"})
    {
        UrlRequest request;
        (void)request.SetParameter(L"INFO_HEADERS", std::wstring(L"Good: 1\n") + pBad);
        EXPECT_NE(request.GetRefusal().find("cannot be sent"), std::string::npos);
        EXPECT_EQ(request.GetHeaderLines().size(), 1U);
    }
}

TEST(UrlRequest, MethodIsAToken)
{
    for (const wchar_t* pBad : {L"GET /x", L"GET\r", L"G\u00E4T", L"ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFGHIJKL"})
    {
        UrlRequest request;
        (void)request.SetParameter(L"HTTPREQUEST_TYPE", pBad);
        EXPECT_NE(request.GetRefusal(), "");
    }
}
