#include "LyThread.h"
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <unistd.h>

namespace
{
constexpr double LONG_MS = 20'000;

// What the work writes to standard error.
std::string CaptureErrorOutput(const std::function<void()>& work)
{
    std::FILE* pFile = std::tmpfile();
    int nSaved = dup(STDERR_FILENO);
    dup2(fileno(pFile), STDERR_FILENO);
    work();
    dup2(nSaved, STDERR_FILENO);
    close(nSaved);
    char aryText[1000] = {};
    std::rewind(pFile);
    size_t nBytes = std::fread(aryText, 1, sizeof aryText - 1, pFile);
    std::fclose(pFile);
    return std::string(aryText, nBytes);
}

// Ignores its cancel flag until it is let go. The last word of a run comes from EndThread, behind which nothing of the
// object is used: only then may a test destroy it.
class StubbornWorker : public LyThread
{
public:
    bool Thread() override
    {
        m_hWorker = pthread_self();
        while (!m_bLetGo)
        {
            ++m_nRounds;
            Sleep(1);
        }
        return true;
    }
    bool GetAllowHardKill() override { return m_bAllowHardKill; }
    void EndThread() override
    {
        ++s_nEnded;
        LyThread::EndThread();
    }
    void LetGoAndWait(int nEnded)
    {
        m_bLetGo = true;
        while (s_nEnded != nEnded)
            Sleep(1);
    }
    void WaitUntilReached()
    {
        while (m_nRounds == 0)
            Sleep(1);
    }

    static inline std::atomic<int> s_nEnded{0};
    std::atomic<bool> m_bLetGo{false};
    std::atomic<int> m_nRounds{0};
    std::atomic<pthread_t> m_hWorker{};
    bool m_bAllowHardKill = true;
};

std::string GetKillText(pthread_t hThread)
{
    char aryText[100];
    std::snprintf(aryText, sizeof aryText, "Hard Killing Thread %x\n", static_cast<unsigned int>(hThread));
    return aryText;
}
} // namespace

TEST(LyThreadHardKill, AbandonsAfterTheTimeOutAndLeavesTheWorkerAlive)
{
    StubbornWorker::s_nEnded = 0;
    StubbornWorker worker;
    worker.SetTimeout(500);
    worker.Start(0, false);
    worker.WaitUntilReached();
    LyTimer timer;
    bool bResult = true;
    std::string strText = CaptureErrorOutput([&] { bResult = worker.Stop(-1); });
    double fMS = timer.GetElapsedMS();
    EXPECT_GE(fMS, 490.0); // the tick count goes by the wall clock
    EXPECT_LT(fMS, LONG_MS);
    EXPECT_EQ(strText, GetKillText(worker.m_hWorker));
    EXPECT_FALSE(bResult); // the result that was never set
    EXPECT_FALSE(worker.GetRunning());
    EXPECT_EQ(worker.GetThreadId(), pthread_t{});

    int nRounds = worker.m_nRounds;
    while (worker.m_nRounds == nRounds)
        Sleep(1);
    worker.LetGoAndWait(1);
    EXPECT_FALSE(worker.GetReturnValue()); // an abandoned run does not speak for the object any more
}

TEST(LyThreadHardKill, ArgumentOfStopGoesBeforeTheTimeOutField)
{
    StubbornWorker::s_nEnded = 0;
    StubbornWorker worker;
    worker.Start(0, false);
    worker.WaitUntilReached();
    std::string strText = CaptureErrorOutput([&] { worker.Stop(0); });
    EXPECT_EQ(strText, GetKillText(worker.m_hWorker));
    worker.LetGoAndWait(1);
}

TEST(LyThreadHardKill, AbandonedRunLeavesTheNextOneAlone)
{
    StubbornWorker::s_nEnded = 0;
    StubbornWorker worker;
    worker.Start(0, false);
    worker.WaitUntilReached();
    (void)CaptureErrorOutput([&] { worker.Stop(0); });
    pthread_t hFirst = worker.m_hWorker;

    // The second run has the same body: both end now, and only the second clears the handle.
    worker.Start(0, false);
    while (worker.m_hWorker.load() == hFirst)
        Sleep(1);
    worker.LetGoAndWait(2);
    EXPECT_FALSE(worker.GetRunning());
    EXPECT_TRUE(worker.GetReturnValue());
    EXPECT_TRUE(worker.Stop(-1));
}

TEST(LyThreadHardKill, NotAllowedWaitsOn)
{
    StubbornWorker::s_nEnded = 0;
    StubbornWorker worker;
    worker.m_bAllowHardKill = false;
    worker.Start(0, false);
    worker.WaitUntilReached();

    class Releaser : public LyThread
    {
    public:
        explicit Releaser(StubbornWorker& worker) : m_Worker(worker) {}
        ~Releaser() override { Stop(-1); }
        bool Thread() override
        {
            Sleep(150);
            m_Worker.m_bLetGo = true;
            return true;
        }
        StubbornWorker& m_Worker;
    };
    Releaser releaser(worker);
    releaser.Start(0, false);
    bool bResult = false;
    std::string strText = CaptureErrorOutput([&] { bResult = worker.Stop(10); });
    EXPECT_TRUE(bResult);
    EXPECT_EQ(strText, "");
    EXPECT_TRUE(worker.m_bLetGo);
    worker.LetGoAndWait(1);
}
