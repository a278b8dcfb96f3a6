#include "LyPlatform.h"
#include "LyThread.h"
#include <algorithm>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
constexpr int PRIORITIES[] = {-15, -1, 0, 1, 14, 15};
constexpr int NOBODY = 65534;

class Worker : public LyThread
{
public:
    ~Worker() override { Stop(-1); }
    bool Thread() override
    {
        m_nNice = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
        m_nPolicy = sched_getscheduler(0);
        m_bRan = true;
        return true;
    }
    std::atomic<bool> m_bRan{false};
    int m_nNice = 0;
    int m_nPolicy = -1;
};

// The number of the step that failed, or 0. No test macros: this also runs in a forked child.
int StartAtEveryPriority()
{
    int nStep = 1;
    for (int nPriority : PRIORITIES)
    {
        Worker worker;
        if (!worker.Start(nPriority, false) || worker.GetRunCount() != 1)
            return nStep;
        worker.WaitUntilFinished();
        if (!worker.m_bRan || !worker.Stop(-1))
            return nStep + 1;
        // Lowering is free to everyone. It starts from the nice value of the process and ends at 19.
        int nProcessNice = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
        if (nPriority < 0 && worker.m_nNice != std::min(nProcessNice - nPriority, 19))
            return nStep + 2;
        nStep += 10;
    }
    return 0;
}

// No thread can be had at all: that is false, and no crash.
int StartWithoutRoomForThreads()
{
    rlimit none{0, 0};
    if (setrlimit(RLIMIT_NPROC, &none) != 0)
        return 1;
    for (int nPriority : PRIORITIES)
    {
        Worker worker;
        if (worker.Start(nPriority, false))
            return 2;
        if (worker.GetRunCount() != 0 || worker.GetRunning() || !worker.Stop(-1))
            return 3;
    }
    return 0;
}

// What the work returns in a child process that has no privileges.
int RunAsPlainUser(const std::function<int()>& work)
{
    pid_t nChild = fork();
    if (nChild == 0)
    {
        constexpr int NOT_PLAIN = 200;
        if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(NOBODY) != 0 || setuid(NOBODY) != 0))
            _exit(NOT_PLAIN);
        _exit(work());
    }
    int nStatus = 0;
    if (nChild == -1 || waitpid(nChild, &nStatus, 0) != nChild)
        return -1;
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
}
} // namespace

// The forked children come first: a child has only the thread that forked, and no other may be on its way out then.
TEST(LyThreadPriority, PlainUserGetsARunningThreadAtEveryPriority)
{
    EXPECT_EQ(RunAsPlainUser(StartAtEveryPriority), 0);
}

TEST(LyThreadPriority, NoRoomForThreadsIsFalse) { EXPECT_EQ(RunAsPlainUser(StartWithoutRoomForThreads), 0); }

TEST(LyThreadPriority, ThisUserGetsARunningThreadAtEveryPriority) { EXPECT_EQ(StartAtEveryPriority(), 0); }

TEST(LyThreadPriority, OutsideTheRangeCountsAsTheNearest)
{
    for (int nPriority : {-16, 16, -2147483647 - 1, 2147483647})
    {
        Worker worker;
        EXPECT_TRUE(worker.Start(nPriority, false));
        worker.WaitUntilFinished();
        EXPECT_TRUE(worker.m_bRan);
    }
}

TEST(LyThreadPriority, SchedulingParameterSpansTheRangeOfThePolicy)
{
    struct CASE
    {
        int nPriority;
        int nMin;
        int nMax;
        int nParameter;
    };
    const CASE aryCases[] = {
        {-15, 1, 99, 1}, // the lowest
        {15, 1, 99, 99}, // the highest
        {0, 1, 99, 50},  // 15 * 98 / 30 = 49, and 1
        {-1, 1, 99, 46}, // 14 * 3.2666... = 45.73, truncated, and 1
        {1, 1, 99, 53},  // 16 * 3.2666... = 52.27
        {14, 1, 99, 95}, // 29 * 3.2666... = 94.73
        {-15, 15, 47, 15}, {15, 15, 47, 47}, {0, 15, 47, 31}, {1, 15, 47, 32}, // 16 * 1.0666... = 17.07
    };
    for (const CASE& c : aryCases)
        EXPECT_EQ(LyPlatform::GetSchedulingParameter(c.nPriority, c.nMin, c.nMax), c.nParameter) << c.nPriority;
}

TEST(LyThreadPriority, NormalLeavesTheAttributesAlone)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    int nBefore = -1;
    int nAfter = -2;
    pthread_attr_getinheritsched(&attributes, &nBefore);
    LyThread::s_SetThreadAttributePriority(&attributes, 0);
    pthread_attr_getinheritsched(&attributes, &nAfter);
    EXPECT_EQ(nBefore, nAfter);
    pthread_attr_destroy(&attributes);
}

TEST(LyThreadPriority, OnlyTheHighestAsksForRealTime)
{
    for (int nPriority : {-15, -1, 1, 14, 15})
    {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        LyThread::s_SetThreadAttributePriority(&attributes, nPriority);
        int nInherit = -1;
        int nPolicy = -1;
        sched_param parameter{};
        pthread_attr_getinheritsched(&attributes, &nInherit);
        pthread_attr_getschedpolicy(&attributes, &nPolicy);
        pthread_attr_getschedparam(&attributes, &parameter);
        EXPECT_EQ(nInherit, PTHREAD_EXPLICIT_SCHED);
        EXPECT_EQ(nPolicy, nPriority == 15 ? SCHED_RR : SCHED_OTHER) << nPriority;
        EXPECT_EQ(parameter.sched_priority, nPriority == 15 ? sched_get_priority_max(SCHED_RR) : 0) << nPriority;
        pthread_attr_destroy(&attributes);
    }
}
