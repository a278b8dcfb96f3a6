// Proves that an operation leaves its files whole wherever it is cut off: the operation runs in a child process that is
// killed on entry to its first system call, then, in a new child, to its second, and so on until a child gets through.
//
//     ASSERT_GT(KillAtEachCall([&] { Replace(); }, [&](int nCall) { EXPECT_TRUE(IsOldOrNew()) << nCall; }), 0);
//
// State:      a child is a fork of the test, so what it does to memory is gone with it, and what it does to files
// stays.
//             check puts back what the next round is to start from, and prepare, if given, runs before each fork.
// Counting:   the calls of the child's first thread count; a process that it starts is neither counted nor killed.
//             The call at which the child is killed is not carried out: round n shows the files as call n - 1 left
//             them. The last round is the complete run, whose check gets the number of calls plus one.
// Sanitizers: a child leaves by _exit, since the leak check at the end of a process does not work under a tracer. The
//             sanitizers' own calls count like any others, so there are some more rounds.
// Threads:    called from a test with no other threads of its own, because of the fork.

#pragma once

#include <cerrno>
#include <csignal>
#include <functional>
#include <sys/ptrace.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

enum KILL_AT_EACH_CALL_RESULT : int
{
    KILL_NOT_ALLOWED = -1,    // this machine lets nobody trace a child: skip the test
    KILL_CHILD_FAILED = -2,   // a child threw, crashed or left by itself with a bad status
    KILL_TOO_MANY_CALLS = -3, // the operation takes more calls than the limit
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

constexpr int STATUS_THROWN = 1;
constexpr int STATUS_NOT_TRACED = 77;
constexpr int SYSCALL_STOP = SIGTRAP | 0x80; // what PTRACE_O_TRACESYSGOOD makes of a stop at a call

[[noreturn]] inline void RunChild(const std::function<void()>& child)
{
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(STATUS_NOT_TRACED);
    (void)raise(SIGSTOP); // the tracer sets its options here
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

// Runs one child as far as the entry of the call of that number, counted from 1.
inline CHILD_END RunUntil(const std::function<void()>& child, int nCall)
{
    const pid_t nProcess = fork();
    if (nProcess == 0)
        RunChild(child);
    if (nProcess < 0)
        return CHILD_END::NotAllowed;
    int nStatus = Wait(nProcess);
    if (!WIFSTOPPED(nStatus))
        return CHILD_END::NotAllowed;
    if (ptrace(PTRACE_SETOPTIONS, nProcess, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0)
    {
        (void)Kill(nProcess);
        return CHILD_END::NotAllowed;
    }
    bool bInCall = false;
    for (long nSignal = 0; ptrace(PTRACE_SYSCALL, nProcess, nullptr, nSignal) == 0;)
    {
        nStatus = Wait(nProcess);
        if (!WIFSTOPPED(nStatus))
            return WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0 ? CHILD_END::Complete : CHILD_END::Failed;
        nSignal = WSTOPSIG(nStatus) == SYSCALL_STOP ? 0 : WSTOPSIG(nStatus);
        if (nSignal != 0)
            continue; // a signal of the child's own, which it gets as it would without a tracer
        bInCall = !bInCall;
        if (bInCall && --nCall == 0)
            return Kill(nProcess);
    }
    (void)Kill(nProcess);
    return CHILD_END::Failed;
}
} // namespace KillAtEachCallDetails

// The number of system calls of the complete run, or a KILL_AT_EACH_CALL_RESULT.
inline int KillAtEachCall(const std::function<void()>& child, const std::function<void(int nCall)>& check,
                          const std::function<void()>& prepare = {}, int nMostCalls = 5000)
{
    using namespace KillAtEachCallDetails;
    for (int nCall = 1; nCall <= nMostCalls; nCall++)
    {
        if (prepare)
            prepare();
        const CHILD_END end = RunUntil(child, nCall);
        if (end == CHILD_END::NotAllowed)
            return KILL_NOT_ALLOWED;
        if (end == CHILD_END::Failed)
            return KILL_CHILD_FAILED;
        check(nCall);
        if (end == CHILD_END::Complete)
            return nCall - 1;
    }
    return KILL_TOO_MANY_CALLS;
}
