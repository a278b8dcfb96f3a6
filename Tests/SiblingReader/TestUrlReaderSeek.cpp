#include "NginxServer.h"
#include "ReaderTesting.h"
#include "ScriptedServer.h"
#include "UrlReader.h"
#include <climits>
#include <random>

namespace
{
class UrlReaderSeek : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_strBytes = MakeBytes(2 * 1024 * 1024);
        s_pServer = new NginxServer;
        s_pServer->Write("large.bin", s_strBytes);
    }
    static void TearDownTestSuite()
    {
        delete s_pServer;
        s_pServer = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(s_pServer->GetIsRunning()) << "is nginx there?"; }
    static ReaderPtr Make(const std::string& strPath) { return MakeReader(s_pServer->GetURL(strPath)); }
    static std::string Expected(size_t nFrom, size_t nBytes) { return s_strBytes.substr(nFrom, nBytes); }

    inline static NginxServer* s_pServer = nullptr;
    inline static std::string s_strBytes;
};

const std::string s_strHundred = MakeBytes(100);
// As a server would offer 100 bytes, and then some.
std::string Answer(const std::string& strStatus, const std::string& strFields, const std::string& strBody)
{
    return "HTTP/1.1 " + strStatus + "\r\nContent-Length: " + std::to_string(strBody.size()) + "\r\n" + strFields +
           "Connection: close\r\n\r\n" + strBody;
}

bool IsRange(const std::string& strRequest) { return strRequest.find("\r\nRange: bytes=") != std::string::npos; }

// Reads 5 bytes, goes back to 1 and reads again, from a server that answers the range request in this way.
struct BACK_RESULT
{
    std::string strRead;
    std::string strError;
    std::string strRequest; // the last
};
BACK_RESULT GoBack(const std::string& strFields, const std::string& strRangeAnswer)
{
    const ScriptedServer server(
        [&](const ScriptedServer::Connection& connection, const std::string& strRequest)
        {
            (void)connection.Send(IsRange(strRequest)
                                      ? strRangeAnswer
                                      : Answer("200 OK", "Accept-Ranges: bytes\r\n" + strFields, s_strHundred));
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    EXPECT_TRUE(pReader->Open());
    EXPECT_EQ(ReadText(*pReader, 5), s_strHundred.substr(0, 5));
    EXPECT_EQ(pReader->Seek(1, 0), 1);
    BACK_RESULT result;
    result.strRead = ReadText(*pReader, 10);
    result.strError = GetInfo(*pReader, L"Error");
    result.strRequest = server.GetRequests().back();
    EXPECT_EQ(GetInfo(*pReader, L"StatusCode"), "200") << "the infos are those of Open";
    return result;
}
} // namespace

TEST_F(UrlReaderSeek, BackAndForthByRanges)
{
    const ReaderPtr pReader = Make("/files/large.bin");
    ASSERT_TRUE(pReader->Open());
    EXPECT_FALSE(pReader->GetIsStream());
    EXPECT_EQ(pReader->Seek(1000000, 0), 1000000);
    EXPECT_EQ(pReader->GetPosition(), 1000000);
    EXPECT_EQ(ReadText(*pReader, 100), Expected(1000000, 100));
    EXPECT_EQ(pReader->Seek(-100, 1), 1000000);
    EXPECT_EQ(ReadText(*pReader, 100), Expected(1000000, 100));
    EXPECT_EQ(pReader->Seek(0, 0), 0);
    EXPECT_EQ(ReadText(*pReader, 100), Expected(0, 100));
    EXPECT_EQ(pReader->Seek(-10, 2), static_cast<long long>(s_strBytes.size()) - 10);
    EXPECT_EQ(ReadText(*pReader, 100), Expected(s_strBytes.size() - 10, 10));
    EXPECT_EQ(pReader->Seek(5, 0), 5);
    EXPECT_TRUE(ReadAll(*pReader) == s_strBytes.substr(5));
    EXPECT_EQ(GetInfo(*pReader, L"Error"), "");
}

TEST_F(UrlReaderSeek, RandomPlaces)
{
    std::mt19937 random(7);
    const ReaderPtr pReader = Make("/files/large.bin");
    ASSERT_TRUE(pReader->Open());
    for (int i = 0; i < 200; ++i)
    {
        const size_t nFrom = random() % s_strBytes.size();
        const size_t nBytes = random() % 5000 + 1;
        ASSERT_EQ(pReader->Seek(static_cast<long long>(nFrom), 0), static_cast<long long>(nFrom));
        ASSERT_TRUE(ReadText(*pReader, static_cast<int>(nBytes)) == Expected(nFrom, nBytes)) << nFrom;
    }
}

TEST_F(UrlReaderSeek, PlacesThatAreNoneAreRefused)
{
    const ReaderPtr pReader = Make("/files/large.bin");
    EXPECT_EQ(pReader->Seek(0, 0), -1) << "not open";
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(pReader->Seek(10, 0), 10);
    for (const auto& [nOffset, nOrigin] :
         {std::pair<long long, int>{-1, 0}, {-11, 1}, {LLONG_MIN, 1}, {LLONG_MAX, 1}, {LLONG_MAX, 2}, {0, 3}, {0, -1}})
    {
        EXPECT_EQ(pReader->Seek(nOffset, nOrigin), -1);
        EXPECT_EQ(pReader->GetPosition(), 10);
    }
    const long long nBehind = static_cast<long long>(s_strBytes.size()) + 1000;
    EXPECT_EQ(pReader->Seek(1000, 2), nBehind);
    EXPECT_EQ(ReadText(*pReader, 1), "");
    EXPECT_EQ(pReader->Seek(LLONG_MAX, 0), LLONG_MAX);
    EXPECT_EQ(ReadText(*pReader, 1), "");
    EXPECT_EQ(pReader->Seek(3, 0), 3);
    EXPECT_EQ(ReadText(*pReader, 2), Expected(3, 2));
}

TEST_F(UrlReaderSeek, WithoutRangesForwardAlone)
{
    const ReaderPtr pReader = Make("/noranges/large.bin");
    ASSERT_TRUE(pReader->Open());
    EXPECT_TRUE(pReader->GetIsStream());
    EXPECT_EQ(pReader->GetLength(), static_cast<long long>(s_strBytes.size()));
    EXPECT_EQ(pReader->Seek(100, 0), 100);
    EXPECT_EQ(pReader->Seek(50, 0), 50) << "nothing was read yet";
    EXPECT_EQ(ReadText(*pReader, 10), Expected(50, 10));
    EXPECT_EQ(pReader->Seek(59, 0), -1);
    EXPECT_EQ(pReader->GetPosition(), 60);
    EXPECT_EQ(pReader->Seek(1500000, 0), 1500000);
    EXPECT_EQ(ReadText(*pReader, 10), Expected(1500000, 10));
}

TEST_F(UrlReaderSeek, UnknownLengthGoesForward)
{
    const ReaderPtr pReader = Make("/gzip/large.bin");
    pReader->SetDownloadParameters(L"INFO_HEADERS|Accept-Encoding: gzip");
    ASSERT_TRUE(pReader->Open());
    const std::string strAll = ReadAll(*pReader);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(pReader->Seek(1000, 0), 1000);
    EXPECT_EQ(ReadText(*pReader, 10), strAll.substr(1000, 10));
    EXPECT_EQ(pReader->Seek(1LL << 40, 0), 1LL << 40);
    EXPECT_EQ(ReadText(*pReader, 10), "") << "the end came first";
}

TEST_F(UrlReaderSeek, FileThatChangesIsNotMixed)
{
    s_pServer->Write("changing.bin", std::string(1000000, 'a'));
    const ReaderPtr pReader = Make("/files/changing.bin");
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(ReadText(*pReader, 3), "aaa");
    s_pServer->Write("changing.bin", std::string(1000001, 'b'));
    EXPECT_EQ(pReader->Seek(900000, 0), 900000);
    EXPECT_EQ(ReadText(*pReader, 3), "");
    EXPECT_NE(GetInfo(*pReader, L"Error").find("changed"), std::string::npos) << GetInfo(*pReader, L"Error");
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(ReadText(*pReader, 3), "bbb");
}

TEST(UrlReaderRange, ShortWayForwardIsRead)
{
    const std::string strBytes = MakeBytes(static_cast<size_t>(UrlReader::READ_THROUGH_BYTES) * 3);
    const ScriptedServer server(
        [&](const ScriptedServer::Connection& connection, const std::string& strRequest)
        {
            const size_t nFirst = UrlReader::READ_THROUGH_BYTES * 2 + 11;
            if (IsRange(strRequest))
                (void)connection.Send(Answer("206 Partial Content",
                                             "Content-Range: bytes " + std::to_string(nFirst) + "-" +
                                                 std::to_string(strBytes.size() - 1) + "/" +
                                                 std::to_string(strBytes.size()) + "\r\n",
                                             strBytes.substr(nFirst)));
            else
                (void)connection.Send(Answer("200 OK", "Accept-Ranges: bytes\r\n", strBytes));
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(pReader->Seek(UrlReader::READ_THROUGH_BYTES, 0), UrlReader::READ_THROUGH_BYTES);
    EXPECT_EQ(ReadText(*pReader, 10), strBytes.substr(UrlReader::READ_THROUGH_BYTES, 10));
    EXPECT_EQ(server.GetRequests().size(), 1U);
    (void)pReader->Seek(UrlReader::READ_THROUGH_BYTES + 1, 1);
    EXPECT_EQ(ReadText(*pReader, 10), strBytes.substr(UrlReader::READ_THROUGH_BYTES * 2 + 11, 10));
    EXPECT_EQ(server.GetRequests().size(), 2U);
}

TEST(UrlReaderRange, AnswerIsTheRest)
{
    const BACK_RESULT result =
        GoBack("ETag: \"x\"\r\n", Answer("206 Partial Content", "ETag: \"x\"\r\nContent-Range: bytes 1-99/100\r\n",
                                         s_strHundred.substr(1)));
    EXPECT_EQ(result.strRead, s_strHundred.substr(1, 10));
    EXPECT_EQ(result.strError, "");
    EXPECT_NE(result.strRequest.find("\r\nRange: bytes=1-\r\n"), std::string::npos);
    EXPECT_NE(result.strRequest.find("\r\nIf-Range: \"x\"\r\n"), std::string::npos);
}

TEST(UrlReaderRange, DateServesWithoutAStrongTag)
{
    const BACK_RESULT result =
        GoBack("ETag: W/\"x\"\r\nLast-Modified: Sat, 01 Jan 2000 00:00:00 GMT\r\n",
               Answer("206 Partial Content", "Content-Range: bytes 1-99/*\r\n", s_strHundred.substr(1)));
    EXPECT_EQ(result.strRead, s_strHundred.substr(1, 10));
    EXPECT_NE(result.strRequest.find("\r\nIf-Range: Sat, 01 Jan 2000 00:00:00 GMT\r\n"), std::string::npos);
}

TEST(UrlReaderRange, WholeFileInsteadOfARangeIsReadThrough)
{
    const BACK_RESULT result = GoBack("", Answer("200 OK", "", s_strHundred));
    EXPECT_EQ(result.strRead, s_strHundred.substr(1, 10));
}

TEST(UrlReaderRange, WrongAnswersBringNothing)
{
    const struct
    {
        const char* pStatus;
        const char* pFields;
        const char* pError;
    } aryCases[] = {
        {"206 Partial Content", "Content-Range: bytes 0-98/100\r\n", "another part"},
        {"206 Partial Content", "", "another part"},
        {"206 Partial Content", "Content-Range: nonsense\r\n", "another part"},
        {"206 Partial Content", "Content-Range: bytes 1-99/101\r\n", "changed"},
        {"206 Partial Content", "ETag: \"y\"\r\nContent-Range: bytes 1-99/100\r\n", "changed"},
        {"200 OK", "", "changed"}, // 99 bytes in all
        {"416 Range Not Satisfiable", "", "416"},
        {"503 Service Unavailable", "", "503"},
    };
    for (const auto& row : aryCases)
    {
        const BACK_RESULT result = GoBack("ETag: \"x\"\r\n", Answer(row.pStatus, row.pFields, s_strHundred.substr(1)));
        EXPECT_EQ(result.strRead, "") << row.pStatus << row.pFields;
        EXPECT_NE(result.strError.find(row.pError), std::string::npos) << result.strError;
    }
}
