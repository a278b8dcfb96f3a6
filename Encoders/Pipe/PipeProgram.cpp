#include "PipeProgram.h"
#include "EncoderSettings.h"
#include "SigPipeBlock.h"
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace
{
constexpr size_t MAX_MESSAGE_BYTES = 4096;
constexpr int POLL_MS = 20;        // between two looks whether the program has ended
constexpr int TERMINATE_MS = 1000; // to go when asked to

int64_t GetNowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void CloseHandle(int& nHandle)
{
    if (nHandle >= 0)
        (void)close(nHandle); // of a pipe: nothing is lost
    nHandle = -1;
}

// How a program is started. The first error of a step is the error of Run.
class SpawnOrders
{
public:
    SpawnOrders()
        : m_bAttributes(Keep(posix_spawnattr_init(&m_Attributes))),
          m_bActions(Keep(posix_spawn_file_actions_init(&m_Actions)))
    {
    }
    ~SpawnOrders()
    {
        if (m_bActions)
            posix_spawn_file_actions_destroy(&m_Actions);
        if (m_bAttributes)
            posix_spawnattr_destroy(&m_Attributes);
    }
    SpawnOrders(const SpawnOrders&) = delete;
    SpawnOrders& operator=(const SpawnOrders&) = delete;

    // A group of its own, which can be ended as a whole, and signals as a program of the shell has them.
    void SetSignals()
    {
        if (m_nError != 0)
            return;
        sigset_t noSignals;
        sigset_t allSignals;
        sigemptyset(&noSignals);
        sigfillset(&allSignals);
        (void)Keep(posix_spawnattr_setflags(&m_Attributes,
                                            POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
        (void)Keep(posix_spawnattr_setpgroup(&m_Attributes, 0));
        (void)Keep(posix_spawnattr_setsigmask(&m_Attributes, &noSignals));
        (void)Keep(posix_spawnattr_setsigdefault(&m_Attributes, &allSignals));
    }
    // nOutput -1: what it says is thrown away. The other files of the host are none of its business.
    void SetFiles(int nInput, int nOutput, int nErrors)
    {
        if (m_nError != 0)
            return;
        (void)Keep(posix_spawn_file_actions_adddup2(&m_Actions, nInput, STDIN_FILENO));
        (void)Keep(nOutput >= 0
                       ? posix_spawn_file_actions_adddup2(&m_Actions, nOutput, STDOUT_FILENO)
                       : posix_spawn_file_actions_addopen(&m_Actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0));
        (void)Keep(posix_spawn_file_actions_adddup2(&m_Actions, nErrors, STDERR_FILENO));
        (void)Keep(posix_spawn_file_actions_addclosefrom_np(&m_Actions, STDERR_FILENO + 1));
    }
    int Run(const std::vector<char*>& aryArguments, pid_t& nProcess)
    {
        if (m_nError != 0)
            return m_nError;
        return posix_spawnp(&nProcess, aryArguments[0], &m_Actions, &m_Attributes, aryArguments.data(), environ);
    }

private:
    posix_spawnattr_t m_Attributes;
    posix_spawn_file_actions_t m_Actions;
    int m_nError = 0; // ahead of those that set it
    const bool m_bAttributes;
    const bool m_bActions;

    bool Keep(int nError)
    {
        m_nError = m_nError == 0 ? nError : m_nError;
        return nError == 0;
    }
};

struct PIPE_ENDS
{
    ~PIPE_ENDS()
    {
        CloseHandle(nRead);
        CloseHandle(nWrite);
    }
    bool Open()
    {
        int aryEnds[2];
        if (pipe2(aryEnds, O_CLOEXEC) != 0)
            return false;
        nRead = aryEnds[0];
        nWrite = aryEnds[1];
        return true;
    }
    int nRead = -1;
    int nWrite = -1;
};

bool SetNonBlocking(int nHandle) { return fcntl(nHandle, F_SETFL, fcntl(nHandle, F_GETFL) | O_NONBLOCK) == 0; }
} // namespace

bool PipeProgram::Fail(int nError, const std::string& strDetail)
{
    m_nError = nError;
    m_strDetail = strDetail;
    return false;
}

bool PipeProgram::Start(const std::vector<std::string>& aryArguments, int nOutput, int nTimeoutSeconds)
{
    Kill();
    m_strProgram = aryArguments[0];
    m_strMessages.clear();
    m_nTimeoutMs = nTimeoutSeconds > 0 ? nTimeoutSeconds * 1000 : -1;
    PIPE_ENDS input;
    PIPE_ENDS messages;
    if (!input.Open() || !messages.Open() || !SetNonBlocking(input.nWrite) || !SetNonBlocking(messages.nRead))
        return Fail(ENCODER_PIPE, "There is no pipe to be had.");
    if (!Spawn(aryArguments, nOutput, input.nRead, messages.nWrite))
        return false;
    m_nInput = std::exchange(input.nWrite, -1);
    m_nMessages = std::exchange(messages.nRead, -1);
    return true;
}

bool PipeProgram::Spawn(const std::vector<std::string>& aryArguments, int nOutput, int nInputEnd, int nErrorEnd)
{
    std::vector<char*> aryPointers;
    aryPointers.reserve(aryArguments.size() + 1);
    for (const std::string& strArgument : aryArguments)
        aryPointers.push_back(const_cast<char*>(strArgument.c_str())); // posix_spawn does not change them
    aryPointers.push_back(nullptr);
    SpawnOrders orders;
    orders.SetSignals();
    orders.SetFiles(nInputEnd, nOutput, nErrorEnd);
    const int nResult = orders.Run(aryPointers, m_nProcess);
    if (nResult == 0)
        return true;
    m_nProcess = -1;
    if (nResult == ENOMEM)
        return Fail(ENCODER_NO_MEMORY, {});
    const bool bMissing = nResult == ENOENT || nResult == EACCES || nResult == ENOTDIR || nResult == ENOEXEC;
    char szText[256];
    return Fail(bMissing ? ENCODER_MISSING_FILE : ENCODER_PIPE,
                "The program '" + m_strProgram + "' does not start: " + strerror_r(nResult, szText, sizeof szText));
}

bool PipeProgram::Write(const unsigned char* pData, size_t nBytes)
{
    while (nBytes > 0)
        if (!WriteSome(pData, nBytes))
            return false;
    ReadMessages();
    return true;
}

bool PipeProgram::WriteSome(const unsigned char*& pData, size_t& nBytes)
{
    ssize_t nWritten = 0;
    int nSystemError = 0;
    {
        const SigPipeBlock block;
        nWritten = write(m_nInput, pData, nBytes);
        nSystemError = errno;
    }
    if (nWritten > 0)
    {
        pData += nWritten;
        nBytes -= static_cast<size_t>(nWritten);
        return true;
    }
    if (nSystemError == EINTR)
        return true;
    if (nSystemError == EAGAIN)
        return WaitForRoom();
    // It takes no more. Its status tells why, if it has ended.
    CloseHandle(m_nInput);
    if (!WaitForEnd(TERMINATE_MS))
        return Fail(ENCODER_PIPE, "The program '" + m_strProgram + "' takes no more audio.");
    if (TellEnd())
        return Fail(ENCODER_PIPE, "The program '" + m_strProgram + "' ended before it had all of the audio.");
    return false;
}

bool PipeProgram::WaitForRoom()
{
    const int64_t nStart = GetNowMs();
    for (;;)
    {
        const int64_t nLeft = m_nTimeoutMs < 0 ? -1 : std::max<int64_t>(0, nStart + m_nTimeoutMs - GetNowMs());
        pollfd aryPolled[] = {{m_nInput, POLLOUT, 0}, {m_nMessages, POLLIN, 0}};
        const int nReady = poll(aryPolled, 2, static_cast<int>(nLeft));
        if (nReady < 0 && errno != EINTR)
            return Fail(ENCODER_PIPE, "The pipe fails.");
        if (nReady == 0)
            return Fail(ENCODER_PIPE, "The program '" + m_strProgram + "' has taken nothing for too long.");
        if (nReady < 0)
            continue;
        if (aryPolled[1].revents != 0)
            ReadMessages();
        if (aryPolled[0].revents != 0)
            return true; // room, or the error that the next write tells
    }
}

// Keeps the end of what the program says. A closed end is forgotten, so that nobody waits for it.
void PipeProgram::ReadMessages()
{
    while (m_nMessages >= 0)
    {
        char aryText[1024];
        const ssize_t nRead = read(m_nMessages, aryText, sizeof aryText);
        if (nRead < 0 && errno == EINTR)
            continue;
        if (nRead < 0 && errno == EAGAIN)
            return;
        if (nRead <= 0)
        {
            CloseHandle(m_nMessages);
            return;
        }
        m_strMessages.append(aryText, static_cast<size_t>(nRead));
        if (m_strMessages.size() > MAX_MESSAGE_BYTES)
            m_strMessages.erase(0, m_strMessages.size() - MAX_MESSAGE_BYTES);
    }
}

std::string PipeProgram::GetLastMessage() const
{
    const std::string_view strAll = EncoderTrim(m_strMessages);
    const size_t nLine = strAll.find_last_of("\r\n");
    return std::string(EncoderTrim(nLine == std::string_view::npos ? strAll : strAll.substr(nLine)));
}

// True once the program has ended. -1 waits for ever.
bool PipeProgram::WaitForEnd(int nTimeoutMs)
{
    const int64_t nStart = GetNowMs();
    while (m_nProcess > 0)
    {
        const pid_t nEnded = waitpid(m_nProcess, &m_nStatus, WNOHANG);
        if (nEnded == m_nProcess || (nEnded < 0 && errno == ECHILD))
        {
            if (nEnded < 0)
                m_nStatus = 0x7f00; // somebody else has taken the status; it counts as a failure
            m_nProcess = -1;
            break;
        }
        if (nTimeoutMs >= 0 && GetNowMs() - nStart >= nTimeoutMs)
            return false;
        pollfd polled = {m_nMessages, POLLIN, 0}; // without messages this is a pause
        (void)poll(&polled, 1, m_nMessages >= 0 ? POLL_MS : 1);
        ReadMessages();
    }
    ReadMessages();
    return true;
}

// True for status 0.
bool PipeProgram::TellEnd()
{
    if (WIFEXITED(m_nStatus) && WEXITSTATUS(m_nStatus) == 0)
        return true;
    std::string strHow = WIFEXITED(m_nStatus) ? "status " + std::to_string(WEXITSTATUS(m_nStatus))
                                              : "signal " + std::to_string(WTERMSIG(m_nStatus));
    const std::string strMessage = GetLastMessage();
    return Fail(ENCODER_PIPE, "The program '" + m_strProgram + "' ended with " + strHow +
                                  (strMessage.empty() ? "." : ": " + strMessage));
}

bool PipeProgram::Finish()
{
    CloseHandle(m_nInput);
    if (!WaitForEnd(m_nTimeoutMs))
        return Fail(ENCODER_PIPE, "The program '" + m_strProgram + "' does not end.");
    CloseHandle(m_nMessages);
    return TellEnd();
}

void PipeProgram::Kill()
{
    CloseHandle(m_nMessages);
    if (m_nProcess > 0)
    {
        // The signal goes ahead of the end of the input, so that it does not finish what it has.
        const pid_t nGroup = m_nProcess;
        (void)kill(-nGroup, SIGTERM);
        CloseHandle(m_nInput);
        if (!WaitForEnd(TERMINATE_MS))
        {
            (void)kill(-nGroup, SIGKILL);
            (void)WaitForEnd(-1);
        }
    }
    CloseHandle(m_nInput);
}
