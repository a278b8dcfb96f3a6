// A system bus of the test's own, with a login manager in a child process.
//
// The child tells what it is asked, one line each: "inhibit <what> <who> <why> <mode>", and "released" when the other
// side has closed the lock.

#pragma once

#include "TempFolder.h"
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <vector>

// The next line from the descriptor, without its end; empty if none comes within ten seconds.
inline std::string ReadLine(int nDescriptor)
{
    std::string strLine;
    pollfd waiting = {nDescriptor, POLLIN, 0};
    char c = 0;
    while (poll(&waiting, 1, 10'000) == 1 && read(nDescriptor, &c, 1) == 1 && c != '\n')
        strLine += c;
    return strLine;
}

// A child process, killed by its number in the end. Its standard output comes back through a pipe.
class ChildProcess
{
public:
    template <class MAIN>
    explicit ChildProcess(MAIN main)
    {
        int aryPipe[2];
        if (pipe(aryPipe) != 0)
            abort();
        m_nProcess = fork();
        if (m_nProcess == 0)
        {
            dup2(aryPipe[1], STDOUT_FILENO);
            close(aryPipe[0]);
            close(aryPipe[1]);
            main();
            _exit(1);
        }
        close(aryPipe[1]);
        m_nOutput = aryPipe[0];
    }
    ~ChildProcess()
    {
        if (m_nProcess > 0 && kill(m_nProcess, SIGKILL) == 0)
            waitpid(m_nProcess, nullptr, 0);
        close(m_nOutput);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    std::string ReadLine() const { return ::ReadLine(m_nOutput); }

private:
    pid_t m_nProcess = -1;
    int m_nOutput = -1;
};

// Points the process at a socket in the folder of the test.
class SystemBusAddress
{
public:
    SystemBusAddress() { setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + GetSocketPath()).c_str(), 1); }
    ~SystemBusAddress() { unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    std::string GetSocketPath() const { return m_Folder.GetPath("bus"); }
    const TempFolder& GetFolder() const { return m_Folder; }

private:
    TempFolder m_Folder;
};

// The bus itself, once it listens.
class PrivateBus
{
public:
    PrivateBus()
        : m_Daemon(
              [this]
              {
                  // It complains of limits that do not matter here.
                  if (freopen("/dev/null", "w", stderr) == nullptr)
                      _exit(1);
                  const std::string strConfig = "--config-file=" + WriteConfig();
                  execlp("dbus-daemon", "dbus-daemon", "--nofork", "--print-address", strConfig.c_str(), nullptr);
              }),
          m_strAddress(m_Daemon.ReadLine())
    {
    }
    bool IsUp() const { return m_strAddress.starts_with("unix:path="); }

private:
    std::string WriteConfig() const
    {
        return m_Address.GetFolder().Write(
            "bus.conf", "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
                        "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                        "<busconfig><type>session</type><listen>unix:path=" +
                            m_Address.GetSocketPath() +
                            "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                            "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
                            "<allow own=\"*\"/></policy></busconfig>\n");
    }

    SystemBusAddress m_Address;
    ChildProcess m_Daemon;
    std::string m_strAddress;
};

enum FAKE_LOGIN_ANSWER
{
    FAKE_LOGIN_GRANTS,
    FAKE_LOGIN_REFUSES,
    FAKE_LOGIN_KEEPS_SILENT,
    FAKE_LOGIN_ANSWERS_A_NUMBER // where a descriptor should be
};

// The login manager; its constructor returns when the name is on the bus.
class FakeLogin
{
public:
    explicit FakeLogin(FAKE_LOGIN_ANSWER eAnswer) : m_Process([eAnswer] { Serve(eAnswer); })
    {
        m_bUp = m_Process.ReadLine() == "ready";
    }
    bool IsUp() const { return m_bUp; }
    std::string ReadLine() const { return m_Process.ReadLine(); }

private:
    struct Service
    {
        FAKE_LOGIN_ANSWER eAnswer;
        std::vector<int> aryLocks; // the reading ends of the pipes that were handed out
    };

    static void Say(const std::string& strLine)
    {
        const std::string str = strLine + "\n";
        if (write(STDOUT_FILENO, str.data(), str.size()) < 0)
            _exit(1);
    }

    static int Inhibit(sd_bus_message* pMessage, void* pUser, sd_bus_error*)
    {
        Service& service = *static_cast<Service*>(pUser);
        const char* aryTexts[4] = {};
        if (sd_bus_message_read(pMessage, "ssss", &aryTexts[0], &aryTexts[1], &aryTexts[2], &aryTexts[3]) < 0)
            return -EINVAL;
        std::string strLine = "inhibit";
        for (const char* pText : aryTexts)
            strLine += std::string(" ") + pText;
        Say(strLine);
        if (service.eAnswer == FAKE_LOGIN_REFUSES)
            return sd_bus_reply_method_errorf(pMessage, "org.freedesktop.DBus.Error.AccessDenied", "No.");
        if (service.eAnswer == FAKE_LOGIN_KEEPS_SILENT)
            return 1;
        if (service.eAnswer == FAKE_LOGIN_ANSWERS_A_NUMBER)
            return sd_bus_reply_method_return(pMessage, "u", 7U);
        int aryPipe[2];
        if (pipe(aryPipe) != 0)
            return -errno;
        service.aryLocks.push_back(aryPipe[0]);
        const int nResult = sd_bus_reply_method_return(pMessage, "h", aryPipe[1]);
        close(aryPipe[1]);
        return nResult;
    }

    // The other side has closed the last copy of a lock when its pipe is at its end.
    static void LookAtLocks(Service& service)
    {
        std::erase_if(service.aryLocks,
                      [](int nLock)
                      {
                          pollfd waiting = {nLock, POLLIN, 0};
                          if (poll(&waiting, 1, 0) != 1)
                              return false;
                          close(nLock);
                          Say("released");
                          return true;
                      });
    }

    static void Serve(FAKE_LOGIN_ANSWER eAnswer)
    {
        const sd_bus_vtable aryTable[] = {SD_BUS_VTABLE_START(0),
                                          SD_BUS_METHOD("Inhibit", "ssss",
                                                        eAnswer == FAKE_LOGIN_ANSWERS_A_NUMBER ? "u" : "h", Inhibit,
                                                        SD_BUS_VTABLE_UNPRIVILEGED),
                                          SD_BUS_VTABLE_END};
        Service service{eAnswer, {}};
        sd_bus* pBus = nullptr;
        if (sd_bus_open_system(&pBus) < 0 ||
            sd_bus_add_object_vtable(pBus, nullptr, "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                                     aryTable, &service) < 0 ||
            sd_bus_request_name(pBus, "org.freedesktop.login1", 0) < 0)
            _exit(1);
        Say("ready");
        for (;;)
        {
            if (sd_bus_process(pBus, nullptr) < 0)
                _exit(1);
            LookAtLocks(service);
            if (sd_bus_wait(pBus, 5'000) < 0)
                _exit(1);
        }
    }

    ChildProcess m_Process;
    bool m_bUp = false;
};
