#include "HttpHeaders.h"
#include "ReaderTesting.h"
#include "ScriptedServer.h"

using Connection = ScriptedServer::Connection;

namespace
{
constexpr int SHORT_TIMEOUT_MS = 300;

ScriptedServer::Script Say(std::string strText)
{
    return [strText](const Connection& connection, const std::string&) { (void)connection.Send(strText); };
}

ScriptedServer::Script SayAndStall(std::string strText)
{
    return [strText](const Connection& connection, const std::string&)
    {
        (void)connection.Send(strText);
        connection.Stall();
    };
}

ReaderPtr MakeHasty(const ScriptedServer& server)
{
    ReaderPtr pReader = MakeReader(server.GetURL());
    pReader->SetTimeout(SHORT_TIMEOUT_MS);
    return pReader;
}

bool Contains(const std::string& str, const char* pPart) { return str.find(pPart) != std::string::npos; }
} // namespace

TEST(UrlReaderHostile, SilenceEndsWithTheTimeout)
{
    const ScriptedServer server(SayAndStall(""));
    const ReaderPtr pReader = MakeHasty(server);
    EXPECT_FALSE(pReader->Open());
    EXPECT_TRUE(Contains(GetInfo(*pReader, L"Error"), "nothing came for 300 ms")) << GetInfo(*pReader, L"Error");
}

TEST(UrlReaderHostile, HeaderThatNeverEndsEndsWithTheTimeout)
{
    const ScriptedServer server(
        [](const Connection& connection, const std::string&)
        {
            (void)connection.Send("HTTP/1.1 200 OK\r\n");
            while (!connection.GetIsStopping() && connection.Send("A: b\r\n"))
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
        });
    const ReaderPtr pReader = MakeHasty(server);
    EXPECT_FALSE(pReader->Open()) << "a trickle of lines is no progress";
}

TEST(UrlReaderHostile, StallInTheBodyEndsTheRead)
{
    const ScriptedServer server(SayAndStall("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n0123456789"));
    const ReaderPtr pReader = MakeHasty(server);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(pReader->GetLength(), 100);
    EXPECT_EQ(ReadText(*pReader, 100), "0123456789");
    EXPECT_TRUE(Contains(GetInfo(*pReader, L"Error"), "300 ms"));
    EXPECT_EQ(ReadText(*pReader, 100), "") << "it stays at that";
}

TEST(UrlReaderHostile, SlowButSteadyIsNoStall)
{
    const ScriptedServer server(
        [](const Connection& connection, const std::string&)
        {
            (void)connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n");
            for (int i = 0; i < 10; ++i)
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                (void)connection.Send("x");
            }
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    pReader->SetTimeout(900);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(ReadText(*pReader, 10), "xxxxxxxxxx");
}

TEST(UrlReaderHostile, ShortBodyEndsShortAndSaysSo)
{
    const ScriptedServer server(Say("HTTP/1.1 200 OK\r\nContent-Length: 100\r\nConnection: close\r\n\r\n0123456789"));
    const ReaderPtr pReader = MakeHasty(server);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(ReadAll(*pReader), "0123456789");
    EXPECT_TRUE(Contains(GetInfo(*pReader, L"Error"), "hung up before")) << GetInfo(*pReader, L"Error");
}

TEST(UrlReaderHostile, LongBodyIsCutAtItsLength)
{
    const ScriptedServer server(Say("HTTP/1.1 200 OK\r\nContent-Length: 4\r\nConnection: close\r\n\r\n0123456789"));
    const ReaderPtr pReader = MakeHasty(server);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(ReadAll(*pReader), "0123");
}

TEST(UrlReaderHostile, LengthsThatAreNone)
{
    for (const char* pLength : {"-5", "x", "99999999999999999999999", "1e3"})
    {
        const ScriptedServer server(
            Say(std::string("HTTP/1.1 200 OK\r\nContent-Length: ") + pLength + "\r\nConnection: close\r\n\r\n0123"));
        const ReaderPtr pReader = MakeHasty(server);
        if (!pReader->Open())
            continue;
        EXPECT_GE(pReader->GetLength(), -1) << pLength;
        EXPECT_LE(ReadAll(*pReader).size(), 4U) << pLength;
    }
}

TEST(UrlReaderHostile, ResetInTheBodyEndsShort)
{
    const ScriptedServer server(
        [](const Connection& connection, const std::string&)
        {
            (void)connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n0123");
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            connection.Reset();
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    ASSERT_TRUE(pReader->Open());
    EXPECT_LE(ReadAll(*pReader).size(), 4U);
    EXPECT_NE(GetInfo(*pReader, L"Error"), "");
}

TEST(UrlReaderHostile, HangUpWithoutAWord)
{
    const ScriptedServer server([](const Connection&, const std::string&) {});
    const ReaderPtr pReader = MakeHasty(server);
    EXPECT_FALSE(pReader->Open());
    EXPECT_TRUE(Contains(GetInfo(*pReader, L"Error"), "hung up without an answer")) << GetInfo(*pReader, L"Error");
}

TEST(UrlReaderHostile, GarbageIsNoAnswer)
{
    for (const char* pText :
         {"garbage\r\n\r\n", "SSH-2.0-OpenSSH\r\n", "HTTP/9.9 abc\r\n\r\n", "\r\n\r\n", "HTTP/1.1\r\n\r\n"})
    {
        const ScriptedServer server(Say(pText));
        const ReaderPtr pReader = MakeHasty(server);
        EXPECT_FALSE(pReader->Open()) << pText;
        EXPECT_NE(GetInfo(*pReader, L"Error"), "") << pText;
    }
}

TEST(UrlReaderHostile, HeaderBlockHasALimit)
{
    std::atomic<long long> nSent = 0;
    const ScriptedServer server(
        [&](const Connection& connection, const std::string&)
        {
            constexpr long long GIBIBYTE = 1024LL * 1024 * 1024;
            (void)connection.Send("HTTP/1.1 200 OK\r\n");
            const std::string strLine = "A: " + std::string(1000, 'x') + "\r\n";
            while (nSent < GIBIBYTE && connection.Send(strLine))
                nSent += static_cast<long long>(strLine.size());
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    EXPECT_FALSE(pReader->Open());
    EXPECT_TRUE(Contains(GetInfo(*pReader, L"Error"), "longer than 262144 bytes")) << GetInfo(*pReader, L"Error");
    EXPECT_LT(nSent, 64 * 1024 * 1024) << "what the connection holds, and no more";
}

TEST(UrlReaderHostile, HeaderLineThatNeverEndsHasALimit)
{
    std::atomic<long long> nSent = 0;
    const ScriptedServer server(
        [&](const Connection& connection, const std::string&)
        {
            constexpr long long GIBIBYTE = 1024LL * 1024 * 1024;
            const std::string strText(65536, 'x');
            (void)connection.Send("HTTP/1.1 200 OK\r\nA: ");
            while (nSent < GIBIBYTE && connection.Send(strText))
                nSent += static_cast<long long>(strText.size());
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    EXPECT_FALSE(pReader->Open());
    EXPECT_NE(GetInfo(*pReader, L"Error"), "");
    EXPECT_LT(nSent, 64 * 1024 * 1024);
}

TEST(UrlReaderHostile, RedirectsTogetherHaveOneHeaderLimit)
{
    const ScriptedServer server(
        [](const Connection& connection, const std::string&)
        {
            std::string strText = "HTTP/1.1 302 Found\r\nConnection: close\r\nLocation: /\r\nContent-Length: 0\r\n";
            for (int i = 0; i < 40; ++i)
                strText += "A: " + std::string(1000, 'x') + "\r\n";
            (void)connection.Send(strText + "\r\n");
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    EXPECT_FALSE(pReader->Open());
    EXPECT_TRUE(Contains(GetInfo(*pReader, L"Error"), "longer than 262144 bytes")) << GetInfo(*pReader, L"Error");
}

TEST(UrlReaderHostile, RedirectCircle)
{
    const ScriptedServer server(
        Say("HTTP/1.1 302 Found\r\nLocation: /again\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"));
    const ReaderPtr pReader = MakeReader(server.GetURL());
    EXPECT_FALSE(pReader->Open());
    EXPECT_EQ(server.GetRequests().size(), 11U) << "the first and ten redirects";
    EXPECT_EQ(GetInfo(*pReader, L"StatusCode"), "302");
}

TEST(UrlReaderHostile, EndlessBodyOfARedirectEndsWithTheTimeout)
{
    const ScriptedServer server(
        [](const Connection& connection, const std::string&)
        {
            (void)connection.Send("HTTP/1.1 302 Found\r\nLocation: /\r\nContent-Length: 999999999\r\n\r\n");
            while (!connection.GetIsStopping() && connection.Send("x"))
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
        });
    const ReaderPtr pReader = MakeHasty(server);
    EXPECT_FALSE(pReader->Open());
}

TEST(UrlReaderHostile, UnreadBodyStaysWithTheServer)
{
    std::atomic<long long> nSent = 0;
    const ScriptedServer server(
        [&](const Connection& connection, const std::string&)
        {
            const std::string strText(65536, 'x');
            (void)connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000000000\r\n\r\n");
            while (nSent < 1000000000 && connection.Send(strText))
                nSent += static_cast<long long>(strText.size());
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    ASSERT_TRUE(pReader->Open());
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_EQ(ReadText(*pReader, 1), "x");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_LT(nSent, 64 * 1024 * 1024) << "the buffers of the connection, and one of ours";
    pReader->Close();
}

TEST(UrlReaderHostile, BadChunksEndShort)
{
    for (const char* pChunks : {"4\r\nabcd\r\nzz\r\n", "4\r\nabcd\r\nFFFFFFFFFFFFFFFFFF\r\n", "4\r\nabcdX"})
    {
        const ScriptedServer server(Say(std::string("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nConnection: close"
                                                    "\r\n\r\n") +
                                        pChunks));
        const ReaderPtr pReader = MakeHasty(server);
        if (!pReader->Open())
            continue;
        EXPECT_EQ(pReader->GetLength(), -1);
        EXPECT_LE(ReadAll(*pReader).size(), 4U) << pChunks;
        EXPECT_NE(GetInfo(*pReader, L"Error"), "") << pChunks;
    }
}

TEST(UrlReaderHostile, TrailersDoNotTouchTheHeader)
{
    const ScriptedServer server(Say("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n"
                                    "4\r\nabcd\r\n0\r\nHTTP/1.1 500 Evil: x\r\nContent-Encoding: gzip\r\n\r\n"));
    const ReaderPtr pReader = MakeHasty(server);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(ReadAll(*pReader), "abcd");
    EXPECT_EQ(GetInfo(*pReader, L"StatusCode"), "200");
    EXPECT_EQ(GetInfo(*pReader, L"ContentEncoding"), "");
}

TEST(UrlReaderHostile, OldRadioStationsAreUnderstood)
{
    const ScriptedServer server(Say("ICY 200 OK\r\nicy-name: Test\r\n\r\nmusic"));
    const ReaderPtr pReader = MakeHasty(server);
    ASSERT_TRUE(pReader->Open()) << GetInfo(*pReader, L"Error");
    EXPECT_EQ(GetInfo(*pReader, L"StatusCode"), "200");
    EXPECT_EQ(pReader->GetLength(), -1);
    EXPECT_EQ(ReadAll(*pReader), "music");
}
