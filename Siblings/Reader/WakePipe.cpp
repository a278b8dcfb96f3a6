#include "WakePipe.h"
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

WakePipe::~WakePipe()
{
    if (m_nRead >= 0)
    {
        close(m_nRead);
        close(m_nWrite);
    }
}

bool WakePipe::Make()
{
    const std::lock_guard lock(m_Mutex);
    if (m_nRead >= 0)
    {
        char cDropped;
        while (read(m_nRead, &cDropped, 1) > 0)
        {
        }
        return true;
    }
    int aryEnds[2];
    if (pipe(aryEnds) != 0)
        return false;
    for (const int nEnd : aryEnds)
    {
        fcntl(nEnd, F_SETFD, FD_CLOEXEC);
        fcntl(nEnd, F_SETFL, O_NONBLOCK);
    }
    m_nRead = aryEnds[0];
    m_nWrite = aryEnds[1];
    return true;
}

void WakePipe::Wake()
{
    const std::lock_guard lock(m_Mutex);
    // A full pipe has woken enough.
    if (m_nWrite >= 0)
        (void)!write(m_nWrite, "", 1);
}

bool WakePipe::Wait(int nDescriptor, short nEvents, int nTimeoutMS) const
{
    pollfd aryWaits[] = {{m_nRead, POLLIN, 0}, {nDescriptor, nEvents, 0}};
    int nReady;
    do
    {
        nReady = poll(aryWaits, 2, nTimeoutMS);
    } while (nReady < 0 && errno == EINTR);
    return nReady > 0 && aryWaits[0].revents == 0 && aryWaits[1].revents != 0;
}
