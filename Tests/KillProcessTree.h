// Proves that an operation which starts programs leaves its files whole wherever it is cut off. The operation runs in
// a child process; the child, and all processes that it starts, are stopped at every system call, and at one of them,
// in each round at the next one, all of them are killed at once. The rounds end with the one in
// which the operation gets through.
//
//     ASSERT_GT(KillTreeAtEachCall([&] { Replace(); }, [&](int nCall) { EXPECT_TRUE(IsOldOrNew()) << nCall; }), 0);
//
// State:    what a child does to files stays. prepare, if given, runs before each round.
// Counting: the calls of all processes count, in the order in which they enter them. The call at which they are killed
//           is not carried out. Every nEvery-th call is one to be killed at; the last round is complete. With
//           KILL_AT_CHANGES only those calls count that change files or folders: between two of them a kill leaves the
//           same.
// Threads:  called from a test with no other threads of its own, because of the fork.
// KillAtEachCall.h does this for an operation of one process.

#pragma once

#include "KillAtEachCall.h"

#include <fcntl.h>
#include <set>
#include <sys/syscall.h>

enum KILL_CALLS
{
    KILL_AT_ALL_CALLS,
    KILL_AT_CHANGES
};

namespace KillProcessTreeDetails
{
using KillAtEachCallDetails::CHILD_END;

// Whether the call at whose entry the process stands may change a file or a folder.
inline bool IsChange(pid_t nProcess)
{
    __ptrace_syscall_info info;
    if (ptrace(PTRACE_GET_SYSCALL_INFO, nProcess, sizeof info, &info) < 0 || info.op != PTRACE_SYSCALL_INFO_ENTRY)
        return true; // whatever it is
    switch (info.entry.nr)
    {
    case SYS_openat:
        return (info.entry.args[2] & (O_CREAT | O_TRUNC)) != 0;
    case SYS_write:
    case SYS_writev:
    case SYS_pwrite64:
    case SYS_ftruncate:
    case SYS_renameat:
    case SYS_renameat2:
    case SYS_unlinkat:
    case SYS_mkdirat:
    case SYS_linkat:
    case SYS_symlinkat:
    case SYS_copy_file_range:
    case SYS_sendfile:
#ifdef SYS_open // processors that have the older calls, too
    case SYS_open:
    case SYS_creat:
    case SYS_rename:
    case SYS_unlink:
    case SYS_mkdir:
    case SYS_rmdir:
    case SYS_link:
    case SYS_symlink:
#endif
        return true;
    default:
        return false;
    }
}

class Tree
{
public:
    explicit Tree(pid_t nRoot, KILL_CALLS eCalls = KILL_AT_ALL_CALLS) : m_nRoot(nRoot), m_eCalls(eCalls)
    {
        m_Alive.insert(nRoot);
    }

    CHILD_END Run(int nCall)
    {
        while (!m_Alive.empty())
        {
            int nStatus = 0;
            const pid_t nProcess = waitpid(-1, &nStatus, __WALL);
            if (nProcess < 0)
                return errno == EINTR ? Run(nCall) : CHILD_END::Failed;
            if (!WIFSTOPPED(nStatus))
            {
                Forget(nProcess, nStatus);
                continue;
            }
            m_Alive.insert(nProcess); // a new process stops before its first call
            if (IsEntry(nProcess, nStatus) && --nCall == 0)
                return KillAll();
            (void)ptrace(PTRACE_SYSCALL, nProcess, nullptr, GetSignal(nProcess, nStatus));
        }
        return m_bGood ? CHILD_END::Complete : CHILD_END::Failed;
    }

private:
    void Forget(pid_t nProcess, int nStatus)
    {
        m_Alive.erase(nProcess);
        m_InCall.erase(nProcess);
        if (nProcess == m_nRoot)
            m_bGood = WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0;
    }

    bool IsEntry(pid_t nProcess, int nStatus)
    {
        if (WSTOPSIG(nStatus) != KillAtEachCallDetails::SYSCALL_STOP)
            return false;
        if (m_InCall.erase(nProcess) != 0)
            return false;
        m_InCall.insert(nProcess);
        return m_eCalls == KILL_AT_ALL_CALLS || IsChange(nProcess);
    }

    // What the process would have been sent without a tracer.
    long GetSignal(pid_t nProcess, int nStatus)
    {
        const int nSignal = WSTOPSIG(nStatus);
        if (nSignal == KillAtEachCallDetails::SYSCALL_STOP || nStatus >> 16 != 0)
            return 0; // a call, or a fork or an exec
        if (nSignal == SIGSTOP && nProcess != m_nRoot && m_Begun.insert(nProcess).second)
            return 0; // how a new process begins
        return nSignal;
    }

    CHILD_END KillAll()
    {
        for (pid_t nProcess : m_Alive)
            (void)kill(nProcess, SIGKILL);
        while (!m_Alive.empty())
        {
            int nStatus = 0;
            const pid_t nProcess = waitpid(-1, &nStatus, __WALL);
            if (nProcess < 0 && errno != EINTR)
                break;
            if (nProcess < 0)
                continue;
            if (WIFSTOPPED(nStatus)) // one that was only just born
                (void)kill(nProcess, SIGKILL);
            else
                m_Alive.erase(nProcess);
        }
        return CHILD_END::Killed;
    }

    pid_t m_nRoot;
    KILL_CALLS m_eCalls;
    std::set<pid_t> m_Alive;
    std::set<pid_t> m_InCall;
    std::set<pid_t> m_Begun;
    bool m_bGood = false;
};

inline CHILD_END RunUntil(const std::function<void()>& child, int nCall, KILL_CALLS eCalls)
{
    const pid_t nRoot = fork();
    if (nRoot == 0)
        KillAtEachCallDetails::RunChild(child);
    if (nRoot < 0 || !WIFSTOPPED(KillAtEachCallDetails::Wait(nRoot)))
        return CHILD_END::NotAllowed;
    constexpr long OPTIONS = PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                             PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC;
    if (ptrace(PTRACE_SETOPTIONS, nRoot, nullptr, OPTIONS) != 0 || ptrace(PTRACE_SYSCALL, nRoot, nullptr, 0L) != 0)
    {
        (void)KillAtEachCallDetails::Kill(nRoot);
        return CHILD_END::NotAllowed;
    }
    return Tree(nRoot, eCalls).Run(nCall);
}
} // namespace KillProcessTreeDetails

// The number of system calls of the complete run (rounded down to nEvery), or a KILL_AT_EACH_CALL_RESULT.
inline int KillTreeAtEachCall(const std::function<void()>& child, const std::function<void(int nCall)>& check,
                              const std::function<void()>& prepare = {}, int nEvery = 1, int nMostCalls = 20000,
                              KILL_CALLS eCalls = KILL_AT_ALL_CALLS)
{
    using KillProcessTreeDetails::CHILD_END;
    for (int nCall = 1; nCall <= nMostCalls; nCall += nEvery)
    {
        if (prepare)
            prepare();
        const CHILD_END end = KillProcessTreeDetails::RunUntil(child, nCall, eCalls);
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
