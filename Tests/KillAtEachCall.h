// Proves that an operation leaves its files whole wherever it is cut off: the operation runs in a child process that is
// killed on entry to its first system call, then, in a new child, to its second, and so on until a child gets through.
//
//     ASSERT_GT(KillAtEachCall([&] { Replace(); }, [&](int nCall) { EXPECT_TRUE(IsOldOrNew()) << nCall; }), 0);
//
// State:      a child is a fork of the test, so what it does to memory is gone with it, and what it does to files
//             stays. What a round is to start from is put there by prepare, which runs before each fork; where no
//             call is left out, check may do it as well.
// Counting:   all calls of the child count. It starts no thread and no process: these would not get through any call.
//             KillProcessTree.h is for those. The call at which the child is killed is not carried out: round n shows
//             the files as call n - 1 left them. The last round is the complete run, whose check gets the number of
//             calls plus one.
// Sanitizers: of the calls each one of Thinning::KILL_EVERY is one to be killed at, and the first and the last. A child
//             leaves by _exit, since the leak check at the end of a process does not work under a tracer. The
//             sanitizers' own calls count like any others.
// Threads:    called from a test with no other threads of its own, because of the fork.

#pragma once

#include "Thinning.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <string>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

enum KILL_AT_EACH_CALL_RESULT : int
{
    KILL_NOT_ALLOWED = -1,    // this machine lets nobody trace a child: skip the test
    KILL_CHILD_FAILED = -2,   // a child threw, crashed or left by itself with a bad status
    KILL_TOO_MANY_CALLS = -3, // the operation takes more calls than the limit
};

enum KILL_CALLS
{
    KILL_AT_ALL_CALLS,
    KILL_AT_CHANGES
};

namespace KillAtEachCallDetails
{
enum class CHILD_END
{
    Killed,
    Complete,
    Failed,
    NotAllowed
};

struct ROUND
{
    CHILD_END m_eEnd;
    int m_nCalls = 0; // that were entered
};

constexpr int STATUS_THROWN = 1;
constexpr int STATUS_NOT_TRACED = 77;
constexpr int CALL_STOP = SIGTRAP | PTRACE_EVENT_SECCOMP << 8; // on entry to a call that counts

// Calls that may change a file or a folder, whatever is handed to them.
constexpr int CHANGES[] = {
    SYS_write,    SYS_writev,          SYS_pwrite64, SYS_pwritev, SYS_ftruncate, SYS_truncate,  SYS_fallocate,
    SYS_renameat, SYS_renameat2,       SYS_unlinkat, SYS_mkdirat, SYS_linkat,    SYS_symlinkat, SYS_sendfile,
    SYS_openat2,  SYS_copy_file_range,
#ifdef SYS_open // processors that have the older calls, too
    SYS_creat,    SYS_rename,          SYS_unlink,   SYS_mkdir,   SYS_rmdir,     SYS_link,      SYS_symlink,
#endif
};

// Stops the tracer at calls that count, and at no others: there is one stop for each, and the rest of the program runs
// at its own speed. The programs that it starts inherit that.
inline std::vector<sock_filter> MakeFilter(KILL_CALLS eCalls)
{
    const sock_filter stop = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE);
    if (eCalls == KILL_AT_ALL_CALLS)
        return {stop};
    std::vector<sock_filter> filter = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const int nCall : CHANGES)
    {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned int>(nCall), 0, 1));
        filter.push_back(stop);
    }
    // To open a file may create or empty it. The flags are the lower half of the argument.
    const auto addOpen = [&](int nCall, unsigned int nArgument)
    {
        const unsigned int nFlags = static_cast<unsigned int>(offsetof(seccomp_data, args)) + nArgument * 8;
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned int>(nCall), 0, 4));
        filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, nFlags));
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, O_CREAT | O_TRUNC, 0, 1));
        filter.push_back(stop);
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    };
    addOpen(SYS_openat, 2);
#ifdef SYS_open
    addOpen(SYS_open, 1);
#endif
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return filter;
}

[[noreturn]] inline void RunChild(const std::function<void()>& child, KILL_CALLS eCalls)
{
    std::vector<sock_filter> filter = MakeFilter(eCalls);
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(STATUS_NOT_TRACED);
    (void)raise(SIGSTOP); // the tracer sets its options here
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        _exit(STATUS_NOT_TRACED);
    try
    {
        child();
    }
    catch (...)
    {
        _exit(STATUS_THROWN);
    }
    _exit(0);
}

inline int Wait(pid_t nProcess)
{
    int nStatus = 0;
    while (waitpid(nProcess, &nStatus, 0) < 0 && errno == EINTR)
    {
    }
    return nStatus;
}

inline CHILD_END Kill(pid_t nProcess)
{
    (void)kill(nProcess, SIGKILL);
    int nStatus = Wait(nProcess);
    while (WIFSTOPPED(nStatus))
        nStatus = Wait(nProcess);
    return CHILD_END::Killed;
}

inline CHILD_END GetEnd(int nStatus)
{
    if (!WIFEXITED(nStatus))
        return CHILD_END::Failed;
    if (WEXITSTATUS(nStatus) == STATUS_NOT_TRACED)
        return CHILD_END::NotAllowed;
    return WEXITSTATUS(nStatus) == 0 ? CHILD_END::Complete : CHILD_END::Failed;
}

// A child that stands before its operation, or 0.
inline pid_t Begin(const std::function<void()>& child, KILL_CALLS eCalls, long nOptions)
{
    const pid_t nProcess = fork();
    if (nProcess == 0)
        RunChild(child, eCalls);
    if (nProcess < 0 || !WIFSTOPPED(Wait(nProcess)))
        return 0;
    if (ptrace(PTRACE_SETOPTIONS, nProcess, nullptr, nOptions | PTRACE_O_TRACESECCOMP | PTRACE_O_EXITKILL) == 0)
        return nProcess;
    (void)Kill(nProcess);
    return 0;
}

// Runs one child as far as the entry of the call of that number, counted from 1.
inline ROUND RunUntil(const std::function<void()>& child, int nCall)
{
    const pid_t nProcess = Begin(child, KILL_AT_ALL_CALLS, 0);
    if (nProcess == 0)
        return {CHILD_END::NotAllowed};
    int nCalls = 0;
    for (long nSignal = 0; ptrace(PTRACE_CONT, nProcess, nullptr, nSignal) == 0;)
    {
        const int nStatus = Wait(nProcess);
        if (!WIFSTOPPED(nStatus))
            return {GetEnd(nStatus), nCalls};
        const bool bCall = nStatus >> 8 == CALL_STOP;
        nSignal = bCall ? 0 : WSTOPSIG(nStatus); // a signal of its own it gets as it would without a tracer
        if (bCall && ++nCalls == nCall)
            return {Kill(nProcess), nCalls};
    }
    (void)Kill(nProcess);
    return {CHILD_END::Failed, nCalls};
}

// Where a series begins in which calls are left out: elsewhere in each test.
inline int GetFirstStep(int nEvery)
{
    const testing::TestInfo* pTest = testing::UnitTest::GetInstance()->current_test_info();
    const std::string strName = pTest == nullptr ? "" : std::string(pTest->test_suite_name()) + "." + pTest->name();
    unsigned int nSum = 0;
    for (const char c : strName)
        nSum = nSum * 31 + static_cast<unsigned char>(c);
    return 1 + static_cast<int>(nSum % static_cast<unsigned int>(nEvery));
}

inline int GetResult(CHILD_END eEnd)
{
    return eEnd == CHILD_END::NotAllowed ? KILL_NOT_ALLOWED : eEnd == CHILD_END::Failed ? KILL_CHILD_FAILED : 0;
}

// The rounds: at call 1, at each nEvery-th one, at the last, and the complete run.
inline int RunRounds(const std::function<ROUND(int nCall)>& run, const std::function<void(int nCall)>& check,
                     const std::function<void()>& prepare, int nEvery, int nMostCalls)
{
    const auto runPrepared = [&](int nCall)
    {
        if (prepare)
            prepare();
        return run(nCall);
    };
    // Where none is left out, the last call need not be known ahead.
    const ROUND whole = nEvery > 1 ? runPrepared(INT_MAX) : ROUND{CHILD_END::Complete};
    if (GetResult(whole.m_eEnd) != 0)
        return GetResult(whole.m_eEnd);
    int nStep = GetFirstStep(nEvery);
    for (int nCall = 1; nCall <= nMostCalls;)
    {
        const CHILD_END eEnd = runPrepared(nCall).m_eEnd;
        if (GetResult(eEnd) != 0)
            return GetResult(eEnd);
        check(nCall);
        if (eEnd == CHILD_END::Complete)
            return nCall - 1;
        nCall = nCall < whole.m_nCalls ? std::min(nCall + nStep, whole.m_nCalls) : nCall + 1;
        nStep = nEvery;
    }
    return KILL_TOO_MANY_CALLS;
}
} // namespace KillAtEachCallDetails

// The number of system calls of the complete run, or a KILL_AT_EACH_CALL_RESULT.
inline int KillAtEachCall(const std::function<void()>& child, const std::function<void(int nCall)>& check,
                          const std::function<void()>& prepare = {}, int nMostCalls = 5000)
{
    using namespace KillAtEachCallDetails;
    return RunRounds([&](int nCall) { return RunUntil(child, nCall); }, check, prepare, Thinning::KILL_EVERY,
                     nMostCalls);
}
