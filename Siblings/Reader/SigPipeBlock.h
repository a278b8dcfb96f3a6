// Writing to a pipe or a connection whose other end is gone raises SIGPIPE, which would end the host program. While
// such an object lives, this thread gets the error alone. Signals of the process as a whole are left as they are.

#pragma once

#include <csignal>
#include <pthread.h>

class SigPipeBlock
{
public:
    SigPipeBlock()
    {
        sigemptyset(&m_Pipe);
        sigaddset(&m_Pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &m_Pipe, &m_Before);
    }
    ~SigPipeBlock()
    {
        if (sigismember(&m_Before, SIGPIPE) == 1)
            return; // the caller keeps it blocked, and what is pending is the caller's
        sigset_t pending;
        int nSignal = 0;
        if (sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1)
            sigwait(&m_Pipe, &nSignal);
        pthread_sigmask(SIG_SETMASK, &m_Before, nullptr);
    }
    SigPipeBlock(const SigPipeBlock&) = delete;
    SigPipeBlock& operator=(const SigPipeBlock&) = delete;

private:
    sigset_t m_Pipe;
    sigset_t m_Before;
};
