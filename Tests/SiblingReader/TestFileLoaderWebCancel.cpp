// Cancelling a load from another thread wherever it waits, a time-out, a connection that breaks, and progress.

#include "FileLoaderWebTest.h"
#include "ScriptedServer.h"
#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{
// Cancels the load in a moment, and measures how long after that it was still going on.
class CancelSoon
{
public:
    explicit CancelSoon(CFileLoader& loader, int nDelayMS = 200)
        : m_Thread(
              [this, &loader, nDelayMS]
              {
                  std::this_thread::sleep_for(std::chrono::milliseconds(nDelayMS));
                  m_tCancelled = std::chrono::steady_clock::now();
                  (void)loader.Cancel(true);
              })
    {
    }
    ~CancelSoon()
    {
        if (m_Thread.joinable())
            m_Thread.join();
    }
    CancelSoon(const CancelSoon&) = delete;
    CancelSoon& operator=(const CancelSoon&) = delete;

    // To be asked right behind the load. Negative if the load did not wait for the cancel.
    long long GetMilliseconds()
    {
        const auto tEnded = std::chrono::steady_clock::now();
        m_Thread.join();
        return std::chrono::duration_cast<std::chrono::milliseconds>(tEnded - m_tCancelled).count();
    }

private:
    std::chrono::steady_clock::time_point m_tCancelled;
    std::thread m_Thread;
};

// Notes what it is told, and cancels at the nCancelAt-th question.
class Listener final : public IFileLoaderProgress
{
public:
    bool GetCancelled() override { return ++m_nQuestions == m_nCancelAt; }
    void SetProgress(float fProgress) override { m_aryReports.push_back(fProgress); }

    int m_nCancelAt = -1;
    int m_nQuestions = 0;
    std::vector<float> m_aryReports;
};

class FileLoaderWebCancel : public FileLoaderWeb
{
protected:
    // A load that a cancel ends: within 100 ms on a quiet machine, and a loaded one gets more room.
    void ExpectEndedByCancel(const LyFilename& source)
    {
        CancelSoon canceller(m_Loader);
        EXPECT_FALSE(m_Loader.LoadBuffer(source, m_Buffer));
        const long long nMS = canceller.GetMilliseconds();
        EXPECT_GE(nMS, -1);
        EXPECT_LT(nMS, 1000);
        RecordProperty("MillisecondsAfterCancel", std::to_string(nMS));
        EXPECT_EQ(0, m_Buffer.GetSize());
        EXPECT_TRUE(m_Loader.m_Cancel.m_bCancelled);
        EXPECT_FALSE(m_Loader.m_bBusy);
    }
};
} // namespace

// ---- Cancelling

TEST_F(FileLoaderWebCancel, InTheMiddleOfASlowAnswer)
{
    m_Server.Write("slow.bin", std::string(4'000'000, 'x'));
    ExpectEndedByCancel(URL("/slow/slow.bin"));
    EXPECT_EQ("200", GetStatus());
}

TEST_F(FileLoaderWebCancel, InAReadThatGetsNothing)
{
    const ScriptedServer server(
        [](const ScriptedServer::Connection& connection, const std::string&)
        {
            connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\nthe first bytes");
            connection.Stall();
        });
    ExpectEndedByCancel(Name(server.GetURL()));
}

TEST_F(FileLoaderWebCancel, BeforeTheServerAnswers)
{
    const ScriptedServer server([](const ScriptedServer::Connection& connection, const std::string&)
                                { connection.Stall(); });
    ExpectEndedByCancel(Name(server.GetURL()));
    EXPECT_EQ("", GetStatus());
}

TEST_F(FileLoaderWebCancel, InAReadOfAPipe)
{
    const std::string strPipe = m_Folder.GetPath("pipe");
    ASSERT_EQ(0, mkfifo(strPipe.c_str(), 0600));
    const int nPipe = open(strPipe.c_str(), O_RDWR | O_CLOEXEC); // it never ends, and nothing comes
    ASSERT_GE(nPipe, 0);
    ExpectEndedByCancel(Name(strPipe));
    close(nPipe);
}

TEST_F(FileLoaderWebCancel, ThroughAnOutsideRecord)
{
    m_Server.Write("slow.bin", std::string(4'000'000, 'x'));
    FILE_LOADER_CANCEL outside;
    m_Loader.m_pCancel = &outside;
    CancelSoon canceller(m_Loader);
    EXPECT_FALSE(Load("/slow/slow.bin"));
    EXPECT_LT(canceller.GetMilliseconds(), 1000);
    EXPECT_TRUE(outside.m_bCancelled);
    EXPECT_FALSE(Load("/slow/slow.bin")) << "no load begins while the outside record is set";
    outside.m_bCancelled = false;
    EXPECT_TRUE(Load("/files/slow.bin"));
}

TEST_F(FileLoaderWebCancel, ALoadAfterACancelIsWhole)
{
    m_Server.Write("slow.bin", MakeBytes(1'000'000));
    ExpectEndedByCancel(URL("/slow/slow.bin"));
    EXPECT_TRUE(Load("/files/slow.bin"));
    EXPECT_TRUE(GetText() == MakeBytes(1'000'000));
}

// ---- Faults

TEST_F(FileLoaderWebCancel, AServerThatFallsSilentIsGivenUp)
{
    const ScriptedServer server(
        [](const ScriptedServer::Connection& connection, const std::string&)
        {
            connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\nthe first bytes");
            connection.Stall();
        });
    m_Loader.m_nTimeoutMS = 300;
    EXPECT_FALSE(m_Loader.LoadBuffer(Name(server.GetURL()), m_Buffer));
    EXPECT_EQ(0, m_Buffer.GetSize());
    EXPECT_FALSE(m_Loader.m_Cancel.m_bCancelled);
    EXPECT_FALSE(m_Loader.m_strError.IsEmpty());
}

TEST_F(FileLoaderWebCancel, AnAnswerThatIsCutShortFails)
{
    const ScriptedServer server(
        [](const ScriptedServer::Connection& connection, const std::string&)
        { connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\nConnection: close\r\n\r\nthe first bytes"); });
    EXPECT_FALSE(m_Loader.LoadBuffer(Name(server.GetURL()), m_Buffer));
    EXPECT_EQ(0, m_Buffer.GetSize());
    EXPECT_FALSE(m_Loader.m_strError.IsEmpty());
}

// Deliberate: without a length nobody can tell an early end from the end. What the reader met stays to be asked for.
TEST_F(FileLoaderWebCancel, AnAnswerWithoutALengthThatBreaksOffIsWhatCame)
{
    const ScriptedServer server(
        [](const ScriptedServer::Connection& connection, const std::string&)
        { connection.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n"); });
    EXPECT_TRUE(m_Loader.LoadBuffer(Name(server.GetURL()), m_Buffer));
    EXPECT_EQ("hello", GetText());
    EXPECT_FALSE(m_Loader.m_strError.IsEmpty());
}

// ---- Progress

TEST_F(FileLoaderWebCancel, ProgressRisesToTheEndAndEveryChunkAsks)
{
    constexpr int CHUNK_BYTES = 65'536;
    m_Server.Write("big.bin", MakeBytes(20 * CHUNK_BYTES));
    Listener listener;
    m_Loader.m_pProgress = &listener;
    EXPECT_TRUE(Load("/files/big.bin"));
    EXPECT_EQ(20, listener.m_nQuestions);
    ASSERT_GE(listener.m_aryReports.size(), 2U);
    EXPECT_FLOAT_EQ(0.05F, listener.m_aryReports.front());
    EXPECT_EQ(1.0F, listener.m_aryReports.back());
    EXPECT_TRUE(std::ranges::is_sorted(listener.m_aryReports));
}

TEST_F(FileLoaderWebCancel, ProgressOfASlowAnswerComesTwiceASecondAtTheMost)
{
    m_Server.Write("slow.bin", std::string(600'000, 'x')); // two seconds
    Listener listener;
    m_Loader.m_pProgress = &listener;
    const auto tStart = std::chrono::steady_clock::now();
    EXPECT_TRUE(Load("/slow/slow.bin"));
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - tStart;
    EXPECT_GT(listener.m_aryReports.size(), 2U) << "some came on the way";
    EXPECT_LE(static_cast<double>(listener.m_aryReports.size()), taken.count() / 0.5 + 2) << "and the two ends";
}

TEST_F(FileLoaderWebCancel, ProgressWithoutALengthIsAlmostNothing)
{
    WritePacked("big.bin", MakeBytes(1'000'000));
    Listener listener;
    m_Loader.m_pProgress = &listener;
    EXPECT_TRUE(Load("/packed/big.bin"));
    EXPECT_GT(listener.m_nQuestions, 10);
    ASSERT_FALSE(listener.m_aryReports.empty());
    for (const float fReport : listener.m_aryReports)
        EXPECT_LT(fReport, 0.0001F);
}

TEST_F(FileLoaderWebCancel, TheListenerMayCancel)
{
    m_Server.Write("big.bin", MakeBytes(1'000'000));
    Listener listener;
    listener.m_nCancelAt = 3;
    m_Loader.m_pProgress = &listener;
    EXPECT_FALSE(Load("/files/big.bin"));
    EXPECT_EQ(3, listener.m_nQuestions);
    EXPECT_EQ(0, m_Buffer.GetSize());
}
