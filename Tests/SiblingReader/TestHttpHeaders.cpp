#include "HttpHeaders.h"
#include <gtest/gtest.h>

namespace
{
HttpHeaders Parse(std::initializer_list<std::string_view> lines)
{
    HttpHeaders headers;
    for (const std::string_view strLine : lines)
        EXPECT_TRUE(headers.AddLine(strLine));
    return headers;
}

HttpHeaders ParseField(const std::string& strField)
{
    return Parse({"HTTP/1.1 200 OK\r\n", strField + "\r\n", "\r\n"});
}
} // namespace

TEST(HttpHeaders, TextHasLineFeedsAlone)
{
    const HttpHeaders headers = Parse({"HTTP/1.1 200 OK\r\n", "A: 1\r\n", "B:2\n", "\r\n"});
    EXPECT_EQ(headers.GetText(), "HTTP/1.1 200 OK\nA: 1\nB:2\n");
    EXPECT_EQ(headers.GetStatus(), 200);
    EXPECT_TRUE(headers.GetIsComplete());
    EXPECT_TRUE(headers.GetIsFinal());
    EXPECT_EQ(headers.GetValue("a"), "1");
    EXPECT_EQ(headers.GetValue("B"), "2");
    EXPECT_EQ(headers.GetValue("C"), "");
    EXPECT_TRUE(headers.HasValue("A"));
    EXPECT_FALSE(headers.HasValue("C"));
    EXPECT_FALSE(headers.HasValue("HTTP/1.1 200 OK"));
}

TEST(HttpHeaders, StatusLines)
{
    const struct
    {
        const char* pLine;
        int nStatus;
    } aryCases[] = {
        {"HTTP/1.1 404 Not Found\r\n", 404},
        {"HTTP/1.0 200\r\n", 200},
        {"HTTP/2 301 \r\n", 301},
        {"ICY 200 OK\r\n", 200},
        {"HTTP/1.1  500 x\r\n", 500},
        {"HTTP/1.1 20 x\r\n", 0},
        {"HTTP/1.1\r\n", 0},
        {"HTTP/1.1 -12 x\r\n", 0},
        {"HTTP/1.1 abc x\r\n", 0},
        {"200 OK\r\n", 0},
        {"\r\n", 0},
        {"", 0},
    };
    for (const auto& row : aryCases)
        EXPECT_EQ(Parse({row.pLine}).GetStatus(), row.nStatus) << row.pLine;
}

TEST(HttpHeaders, TheLastAnswerCounts)
{
    HttpHeaders headers = Parse({"HTTP/1.1 100 Continue\r\n", "\r\n"});
    EXPECT_TRUE(headers.GetIsComplete());
    EXPECT_FALSE(headers.GetIsFinal()) << "an interim answer";
    for (const char* pLine : {"HTTP/1.1 302 Found\r\n", "Location: /x\r\n", "\r\n"})
        EXPECT_TRUE(headers.AddLine(pLine));
    EXPECT_FALSE(headers.GetIsFinal()) << "it leads on";
    for (const char* pLine : {"HTTP/1.1 200 OK\r\n", "A: b\r\n"})
        EXPECT_TRUE(headers.AddLine(pLine));
    EXPECT_FALSE(headers.GetIsComplete());
    EXPECT_TRUE(headers.AddLine("\r\n"));
    EXPECT_TRUE(headers.GetIsFinal());
    EXPECT_EQ(headers.GetText(), "HTTP/1.1 200 OK\nA: b\n");
}

TEST(HttpHeaders, RedirectWithoutPlaceIsFinal)
{
    EXPECT_TRUE(Parse({"HTTP/1.1 304 Not Modified\r\n", "\r\n"}).GetIsFinal());
    EXPECT_TRUE(Parse({"HTTP/1.1 302 Found\r\n", "Location:\r\n", "\r\n"}).GetIsFinal());
}

TEST(HttpHeaders, FoldedLinesBecomeOne)
{
    const HttpHeaders headers = Parse({"HTTP/1.1 200 OK\r\n", "A: 1\r\n", "\t 2  \r\n", " 3\r\n", "B: x\r\n", "\r\n"});
    EXPECT_EQ(headers.GetValue("A"), "1 2 3");
    EXPECT_EQ(headers.GetValue("B"), "x");
}

TEST(HttpHeaders, ControlCharactersBecomeBlanks)
{
    const HttpHeaders headers = ParseField(std::string("A: x\0y\rz\x7f!", 10));
    EXPECT_EQ(headers.GetValue("A"), "x y z !");
}

TEST(HttpHeaders, TrailersAreDropped)
{
    HttpHeaders headers = ParseField("A: 1");
    EXPECT_TRUE(headers.AddLine("B: 2\r\n"));
    EXPECT_TRUE(headers.AddLine("HTTP/1.1 500 Evil\r\n"));
    EXPECT_FALSE(headers.HasValue("B"));
    EXPECT_EQ(headers.GetStatus(), 200);
}

TEST(HttpHeaders, FirstOfSeveralFieldsCounts)
{
    EXPECT_EQ(Parse({"HTTP/1.1 200 OK\r\n", "A: 1\r\n", "A: 2\r\n", "\r\n"}).GetValue("A"), "1");
}

TEST(HttpHeaders, AllAnswersTogetherHaveALimit)
{
    HttpHeaders headers;
    const std::string strLine = "A: " + std::string(1019, 'x') + "\r\n"; // 1024 bytes
    for (size_t i = 0; i < HttpHeaders::MAX_BYTES / strLine.size(); ++i)
        ASSERT_TRUE(headers.AddLine(i % 8 == 0 ? "HTTP/1.1 302 Found " + std::string(1003, 'y') + "\r\n" : strLine));
    EXPECT_FALSE(headers.AddLine("\r\n"));
    headers.Clear();
    EXPECT_TRUE(headers.AddLine("HTTP/1.1 200 OK\r\n"));
    EXPECT_FALSE(headers.AddLine(std::string(HttpHeaders::MAX_BYTES, 'x')));
}

TEST(HttpHeaders, AcceptRanges)
{
    EXPECT_TRUE(ParseField("Accept-Ranges: bytes").GetAcceptsRanges());
    EXPECT_TRUE(ParseField("accept-ranges: x , Bytes").GetAcceptsRanges());
    EXPECT_FALSE(ParseField("Accept-Ranges: none").GetAcceptsRanges());
    EXPECT_FALSE(ParseField("Accept-Ranges: bytesx").GetAcceptsRanges());
    EXPECT_FALSE(ParseField("A: bytes").GetAcceptsRanges());
}

TEST(HttpHeaders, ContentRange)
{
    CONTENT_RANGE range;
    ASSERT_TRUE(ParseField("Content-Range: bytes 200-999/1000").GetContentRange(range));
    EXPECT_EQ(range.nFirst, 200);
    EXPECT_EQ(range.nLast, 999);
    EXPECT_EQ(range.nTotal, 1000);
    ASSERT_TRUE(ParseField("Content-Range: Bytes 0-0/*").GetContentRange(range));
    EXPECT_EQ(range.nLast, 0);
    EXPECT_EQ(range.nTotal, -1);
    for (const char* pBad : {"", "bytes", "bytes */1000", "bytes 5-4/1000", "bytes 0-1000/1000", "bytes -1-5/10",
                             "bytes 0-5/10x", "items 0-5/10", "bytes 0-5", "bytes 0-5/", "bytes 0 -5/10",
                             "bytes 99999999999999999999-99999999999999999999/*"})
        EXPECT_FALSE(ParseField(std::string("Content-Range: ") + pBad).GetContentRange(range)) << pBad;
    EXPECT_EQ(range.nTotal, -1) << "what is refused changes nothing";
}

TEST(HttpHeaders, ValidatorIsAStrongTagOrTheDate)
{
    EXPECT_EQ(ParseField("ETag: \"a\"").GetValidator(), "\"a\"");
    EXPECT_EQ(ParseField("ETag: W/\"a\"").GetValidator(), "");
    EXPECT_EQ(ParseField("ETag: W/\"a\"\r\nLast-Modified: x").GetValidator(), "") << "one line is one line";
    EXPECT_EQ(Parse({"HTTP/1.1 200 OK\r\n", "ETag: W/\"a\"\r\n", "Last-Modified: Sat\r\n", "\r\n"}).GetValidator(),
              "Sat");
}

TEST(HttpHeaders, SameEntityUnlessTagOrDateDiffer)
{
    const HttpHeaders a = ParseField("ETag: \"a\"");
    EXPECT_TRUE(a.GetIsSameEntity(a));
    EXPECT_TRUE(a.GetIsSameEntity(ParseField("B: c")));
    EXPECT_FALSE(a.GetIsSameEntity(ParseField("ETag: \"b\"")));
    EXPECT_FALSE(ParseField("Last-Modified: x").GetIsSameEntity(ParseField("Last-Modified: y")));
}

TEST(HttpHeaders, ContentEncodingIdentityIsNone)
{
    EXPECT_EQ(ParseField("Content-Encoding: gzip").GetContentEncoding(), "gzip");
    EXPECT_EQ(ParseField("Content-Encoding: Identity").GetContentEncoding(), "");
    EXPECT_EQ(ParseField("A: b").GetContentEncoding(), "");
}

TEST(HttpHeaders, TextIsUtf8OrLatin1)
{
    EXPECT_EQ(HttpHeaders::Widen("\xC3\xA4"), L"\u00E4");
    EXPECT_EQ(HttpHeaders::Widen("\xE4"), L"\u00E4");
    EXPECT_EQ(HttpHeaders::Widen("a"), L"a");
}
