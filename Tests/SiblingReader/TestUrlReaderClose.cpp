#include "ReaderTesting.h"
#include "ScriptedServer.h"

using Connection = ScriptedServer::Connection;

namespace
{
ScriptedServer::Script SayAndStall(std::string strText)
{
    return [strText](const Connection& connection, const std::string&)
    {
        (void)connection.Send(strText);
        connection.Stall();
    };
}
} // namespace

TEST(UrlReaderClose, EndsAnOpenThatWaits)
{
    const ScriptedServer server(SayAndStall(""));
    const ReaderPtr pReader = MakeReader(server.GetURL());
    CloseSoon closer(*pReader);
    EXPECT_FALSE(pReader->Open());
    EXPECT_ENDED_BY_CLOSE(closer);
    EXPECT_FALSE(pReader->GetIsOpen());
    EXPECT_EQ(GetInfo(*pReader, L"Error"), "The reader was closed.");
}

TEST(UrlReaderClose, EndsAReadThatWaits)
{
    const ScriptedServer server(SayAndStall("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n0123"));
    const ReaderPtr pReader = MakeReader(server.GetURL());
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(pReader->Open()) << "again, after a Close";
        CloseSoon closer(*pReader);
        EXPECT_EQ(ReadText(*pReader, 100), "0123");
        EXPECT_ENDED_BY_CLOSE(closer);
        EXPECT_FALSE(pReader->GetIsOpen());
        EXPECT_EQ(ReadText(*pReader, 100), "");
    }
}

TEST(UrlReaderClose, EndsAWayForwardThatWaits)
{
    const ScriptedServer server(SayAndStall("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n0123"));
    const ReaderPtr pReader = MakeReader(server.GetURL());
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(pReader->Seek(50, 0), 50);
    CloseSoon closer(*pReader);
    EXPECT_EQ(ReadText(*pReader, 1), "");
    EXPECT_ENDED_BY_CLOSE(closer);
}

TEST(UrlReaderClose, EndsAConnectionThatDoesNotCome)
{
    // A listener whose queue is full answers no further connection.
    const int nListening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = MakeLoopback(0);
    socklen_t nBytes = sizeof address;
    ASSERT_EQ(bind(nListening, reinterpret_cast<sockaddr*>(&address), nBytes), 0);
    ASSERT_EQ(listen(nListening, 0), 0);
    getsockname(nListening, reinterpret_cast<sockaddr*>(&address), &nBytes);
    std::vector<int> arySockets;
    for (int i = 0; i < 4; ++i)
    {
        arySockets.push_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        (void)connect(arySockets.back(), reinterpret_cast<sockaddr*>(&address), nBytes);
    }
    const ReaderPtr pReader = MakeReader("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/");
    CloseSoon closer(*pReader);
    EXPECT_FALSE(pReader->Open());
    EXPECT_ENDED_BY_CLOSE(closer);
    for (const int nSocket : arySockets)
        close(nSocket);
    close(nListening);
}

TEST(UrlReaderClose, AtAnyMomentIsSafe)
{
    const ScriptedServer server(
        [](const Connection& connection, const std::string&)
        {
            const std::string strText(20000, 'x');
            (void)connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n");
            for (int i = 0; i < 100 && connection.Send(strText); ++i)
            {
            }
        });
    const ReaderPtr pReader = MakeReader(server.GetURL());
    for (int i = 0; i < 60; ++i)
    {
        std::thread closer(
            [&]
            {
                std::this_thread::sleep_for(std::chrono::microseconds(i * 100));
                pReader->Close();
                pReader->Close();
            });
        if (pReader->Open())
            while (pReader->GetIsOpen() && !ReadText(*pReader, 3000).empty())
            {
            }
        closer.join();
    }
    pReader->Close();
    EXPECT_FALSE(pReader->GetIsOpen());
}

TEST(UrlReaderClose, WithoutAnOpenDoesNothing)
{
    const ReaderPtr pReader = MakeReader("http://127.0.0.1:1/");
    pReader->Close();
    pReader->Close();
    EXPECT_FALSE(pReader->GetIsOpen());
}
