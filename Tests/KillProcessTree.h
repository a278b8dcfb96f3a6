// Proves that an operation which starts programs leaves its files whole wherever it is cut off. The operation runs in
// a child process; the child, and all processes that it starts, are stopped at every system call, and at one of them,
// in each round at the next one, all of them are killed at once. The rounds end with the one in which the operation
// gets through.
//
//     ASSERT_GT(KillTreeAtEachCall([&] { Replace(); }, [&](int nCall) { EXPECT_TRUE(IsOldOrNew()) << nCall; }), 0);
//
// State:      what a child does to files stays. prepare, if given, runs before each round.
// Counting:   the calls of all processes count, in the order in which they enter them. The call at which they are
//             killed is not carried out. Every nEvery-th call is one to be killed at, and the first and the last; the
//             last round is complete. With KILL_AT_CHANGES only those calls count that change files or folders:
//             between two of them a kill leaves the same.
// Sanitizers: under one, nEvery counts Thinning::KILL_EVERY times.
// Threads:    called from a test with no other threads of its own, because of the fork.
// KillAtEachCall.h does this for an operation of one process.

#pragma once

#include "KillAtEachCall.h"

#include <set>

namespace KillProcessTreeDetails
{
using KillAtEachCallDetails::CHILD_END;
using KillAtEachCallDetails::ROUND;

// Whether to kill at the call before which all stand, by its number from 1.
using IS_THERE = std::function<bool(int nCall)>;

class Tree
{
public:
    explicit Tree(pid_t nRoot) : m_nRoot(nRoot) { m_Alive.insert(nRoot); }

    ROUND Run(const IS_THERE& isThere)
    {
        int nCalls = 0;
        while (!m_Alive.empty())
        {
            int nStatus = 0;
            const pid_t nProcess = waitpid(-1, &nStatus, __WALL);
            if (nProcess < 0 && errno == EINTR)
                continue;
            if (nProcess < 0)
                return {CHILD_END::Failed, nCalls};
            if (!WIFSTOPPED(nStatus))
            {
                Forget(nProcess, nStatus);
                continue;
            }
            m_Alive.insert(nProcess); // a new process stops before its first call
            if (nStatus >> 8 == KillAtEachCallDetails::CALL_STOP && isThere(++nCalls))
                return {KillAll(), nCalls};
            (void)ptrace(PTRACE_CONT, nProcess, nullptr, GetSignal(nProcess, nStatus));
        }
        return {m_eEnd, nCalls};
    }

private:
    void Forget(pid_t nProcess, int nStatus)
    {
        m_Alive.erase(nProcess);
        if (nProcess == m_nRoot)
            m_eEnd = KillAtEachCallDetails::GetEnd(nStatus);
    }

    // What the process would have been sent without a tracer.
    long GetSignal(pid_t nProcess, int nStatus)
    {
        const int nSignal = WSTOPSIG(nStatus);
        if (nStatus >> 16 != 0)
            return 0; // a call, a fork or an exec
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
    std::set<pid_t> m_Alive;
    std::set<pid_t> m_Begun;
    CHILD_END m_eEnd = CHILD_END::Failed;
};

inline ROUND RunUntil(const std::function<void()>& child, const IS_THERE& isThere, KILL_CALLS eCalls)
{
    constexpr long OPTIONS = PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC;
    const pid_t nRoot = KillAtEachCallDetails::Begin(child, eCalls, OPTIONS);
    if (nRoot == 0)
        return {CHILD_END::NotAllowed};
    if (ptrace(PTRACE_CONT, nRoot, nullptr, 0L) == 0)
        return Tree(nRoot).Run(isThere);
    (void)KillAtEachCallDetails::Kill(nRoot);
    return {CHILD_END::NotAllowed};
}
} // namespace KillProcessTreeDetails

// Kills the operation once, as soon as isThere holds before a call that changes something. Whether it came to that, or
// a KILL_AT_EACH_CALL_RESULT.
inline int KillTreeAsSoonAs(const std::function<void()>& child, const std::function<bool()>& isThere)
{
    const auto eEnd = KillProcessTreeDetails::RunUntil(
                          child, [&](int) { return isThere(); }, KILL_AT_CHANGES)
                          .m_eEnd;
    return eEnd == KillAtEachCallDetails::CHILD_END::Killed ? 1 : KillAtEachCallDetails::GetResult(eEnd);
}

// The number of system calls of the complete run, or a KILL_AT_EACH_CALL_RESULT.
inline int KillTreeAtEachCall(const std::function<void()>& child, const std::function<void(int nCall)>& check,
                              const std::function<void()>& prepare = {}, int nEvery = 1, int nMostCalls = 20000,
                              KILL_CALLS eCalls = KILL_AT_ALL_CALLS)
{
    const auto run = [&](int nKillAt)
    {
        return KillProcessTreeDetails::RunUntil(
            child, [=](int nCall) { return nCall == nKillAt; }, eCalls);
    };
    return KillAtEachCallDetails::RunRounds(run, check, prepare, nEvery * Thinning::KILL_EVERY, nMostCalls);
}
