// A child process that sits in front of a terminal of its own, with the test in the place of the user.

#pragma once

#include <cerrno>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

class PtyChild
{
public:
    static constexpr int PATIENCE_MS = 20000; // far more than anything here takes

    // The body runs in the child, which ends with its result.
    template <class BODY>
    explicit PtyChild(BODY body, unsigned short nColumns = 80)
    {
        const winsize size{25, nColumns, 0, 0};
        m_nChild = forkpty(&m_nMaster, nullptr, nullptr, &size);
        if (m_nChild == 0)
            _exit(body());
    }
    ~PtyChild()
    {
        if (m_nChild > 0)
        {
            kill(m_nChild, SIGKILL);
            (void)waitpid(m_nChild, nullptr, 0);
        }
        HangUp();
    }
    PtyChild(const PtyChild&) = delete;
    PtyChild& operator=(const PtyChild&) = delete;

    void Type(const std::string& strKeys) { (void)!write(m_nMaster, strKeys.data(), strKeys.size()); }

    // Waits until the text comes up on the screen, behind what was waited for before.
    bool See(const std::string& strText)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(PATIENCE_MS);
        while (std::chrono::steady_clock::now() < end)
        {
            const size_t nFound = m_strScreen.find(strText, m_nSeen);
            if (nFound != std::string::npos)
            {
                m_nSeen = nFound + strText.size();
                return true;
            }
            if (!ReadMore())
                return false;
        }
        return false;
    }

    // All that was written, to the end of the child.
    const std::string& ReadToEnd()
    {
        while (ReadMore())
            ;
        return m_strScreen;
    }

    void HangUp() // the window is closed
    {
        if (m_nMaster >= 0)
            close(m_nMaster);
        m_nMaster = -1;
    }

    // Whether keys come one by one and unseen.
    bool TakesKeys() const
    {
        termios mode{};
        return tcgetattr(m_nMaster, &mode) == 0 && (mode.c_lflag & (ICANON | ECHO)) == 0;
    }
    bool WaitForMode(bool bKeys) const
    {
        for (int nTry = 0; nTry < PATIENCE_MS / 10 && TakesKeys() != bKeys; ++nTry)
            usleep(10 * 1000);
        return TakesKeys() == bKeys;
    }

    int Wait() // the child's result; -1 if it did not end by itself, or if a sanitizer found something
    {
        const bool bClean = ReadToEnd().find("Sanitizer") == std::string::npos;
        int nStatus = 0;
        if (waitpid(m_nChild, &nStatus, 0) != m_nChild)
            return -1;
        m_nChild = 0;
        return bClean && WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
    }

    pid_t m_nChild = -1;

private:
    bool ReadMore()
    {
        pollfd file{m_nMaster, POLLIN, 0};
        if (poll(&file, 1, PATIENCE_MS) <= 0)
            return false;
        char aryBytes[4096];
        const ssize_t nRead = read(m_nMaster, aryBytes, sizeof aryBytes);
        if (nRead <= 0)
            return false; // nobody has the other end any more
        m_strScreen.append(aryBytes, static_cast<size_t>(nRead));
        return true;
    }

    int m_nMaster = -1;
    std::string m_strScreen;
    size_t m_nSeen = 0;
};
