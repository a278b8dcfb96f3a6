// A process of its own that does something and then waits, so that a lock can be tested between real processes.

#pragma once

#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

// Runtime files go to a folder of the test while the object lives.
class RuntimeFolder
{
public:
    explicit RuntimeFolder(const std::string& strPath)
    {
        const char* pOld = std::getenv("XDG_RUNTIME_DIR");
        m_bWasSet = pOld != nullptr;
        m_strOld = m_bWasSet ? pOld : "";
        setenv("XDG_RUNTIME_DIR", strPath.c_str(), 1);
    }
    ~RuntimeFolder()
    {
        if (m_bWasSet)
            setenv("XDG_RUNTIME_DIR", m_strOld.c_str(), 1);
        else
            unsetenv("XDG_RUNTIME_DIR");
    }
    RuntimeFolder(const RuntimeFolder&) = delete;
    RuntimeFolder& operator=(const RuntimeFolder&) = delete;

private:
    bool m_bWasSet = false;
    std::string m_strOld;
};

class HolderProcess
{
public:
    // Runs begin in the new process and waits until it is through; its result is WasGood. Then the process waits for
    // its end: Finish, which makes it run end first, or Kill.
    HolderProcess(const std::function<bool()>& begin, const std::function<void()>& end)
    {
        if (pipe(m_aryToParent) != 0 || pipe(m_aryToChild) != 0)
            abort();
        m_nPid = fork();
        if (m_nPid == 0)
            Run(begin, end);
        close(m_aryToParent[1]);
        close(m_aryToChild[0]);
        char c = 0;
        m_bGood = read(m_aryToParent[0], &c, 1) == 1 && c == 1;
    }
    ~HolderProcess()
    {
        Kill();
        close(m_aryToParent[0]);
        close(m_aryToChild[1]);
    }
    HolderProcess(const HolderProcess&) = delete;
    HolderProcess& operator=(const HolderProcess&) = delete;

    bool WasGood() const { return m_bGood; }
    pid_t GetPid() const { return m_nPid; }
    void Finish()
    {
        const char c = 1;
        (void)!write(m_aryToChild[1], &c, 1);
        Wait();
    }
    void Kill()
    {
        if (!m_bEnded)
            kill(m_nPid, SIGKILL);
        Wait();
    }

private:
    [[noreturn]] void Run(const std::function<bool()>& begin, const std::function<void()>& end)
    {
        close(m_aryToChild[1]); // so that the process ends with its parent
        const char cGood = begin() ? 1 : 0;
        char c = 0;
        if (write(m_aryToParent[1], &cGood, 1) == 1 && read(m_aryToChild[0], &c, 1) == 1)
            end();
        _exit(0);
    }
    void Wait()
    {
        if (!m_bEnded)
            (void)waitpid(m_nPid, nullptr, 0);
        m_bEnded = true;
    }

    int m_aryToParent[2] = {};
    int m_aryToChild[2] = {};
    pid_t m_nPid = 0;
    bool m_bGood = false;
    bool m_bEnded = false;
};
