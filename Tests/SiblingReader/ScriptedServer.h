// A server that does what no ordinary one does: for each connection it reads a request up to its empty line and then
// runs the test's script, which sends what it likes, stalls or hangs up.

#pragma once

#include "NginxServer.h"
#include <atomic>
#include <functional>
#include <mutex>
#include <poll.h>
#include <string_view>
#include <vector>

class ScriptedServer
{
public:
    class Connection
    {
    public:
        Connection(int nSocket, const std::atomic<bool>& bStop) : m_nSocket(nSocket), m_bStop(bStop) {}
        // False once the other side is gone.
        bool Send(std::string_view str) const
        {
            while (!str.empty())
            {
                const ssize_t nSent = send(m_nSocket, str.data(), str.size(), MSG_NOSIGNAL);
                if (nSent <= 0)
                    return false;
                str.remove_prefix(static_cast<size_t>(nSent));
            }
            return true;
        }
        // Says no more until the other side goes, or the test ends.
        void Stall() const
        {
            char aryDropped[4096];
            while (!m_bStop)
            {
                pollfd wait = {m_nSocket, POLLIN, 0};
                if (poll(&wait, 1, 20) > 0 && recv(m_nSocket, aryDropped, sizeof aryDropped, 0) <= 0)
                    return;
            }
        }
        // Hangs up with a reset instead of an end.
        void Reset() const
        {
            const linger hard = {1, 0};
            setsockopt(m_nSocket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        }
        bool GetIsStopping() const { return m_bStop; }

    private:
        int m_nSocket;
        const std::atomic<bool>& m_bStop;
    };
    using Script = std::function<void(const Connection&, const std::string& strRequest)>;

    explicit ScriptedServer(Script script) : m_Script(std::move(script))
    {
        m_nListening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = MakeLoopback(0);
        socklen_t nBytes = sizeof address;
        (void)bind(m_nListening, reinterpret_cast<sockaddr*>(&address), nBytes);
        listen(m_nListening, 16);
        getsockname(m_nListening, reinterpret_cast<sockaddr*>(&address), &nBytes);
        m_nPort = ntohs(address.sin_port);
        m_Thread = std::thread([this] { Run(); });
    }
    ~ScriptedServer()
    {
        m_bStop = true;
        m_Thread.join();
        close(m_nListening);
    }
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::string GetURL(const std::string& strPath = "/") const
    {
        return "http://127.0.0.1:" + std::to_string(m_nPort) + strPath;
    }
    std::vector<std::string> GetRequests() const
    {
        const std::lock_guard lock(m_Lock);
        return m_aryRequests;
    }

private:
    void Run()
    {
        while (!m_bStop)
        {
            pollfd wait = {m_nListening, POLLIN, 0};
            if (poll(&wait, 1, 20) < 1)
                continue;
            const int nSocket = accept4(m_nListening, nullptr, nullptr, SOCK_CLOEXEC);
            Serve(nSocket);
            close(nSocket);
        }
    }

    void Serve(int nSocket)
    {
        std::string strRequest;
        char c;
        while (!strRequest.ends_with("\r\n\r\n"))
        {
            pollfd wait = {nSocket, POLLIN, 0};
            if (m_bStop || (poll(&wait, 1, 20) > 0 && recv(nSocket, &c, 1, 0) != 1))
                return;
            if (wait.revents != 0)
                strRequest += c;
        }
        {
            const std::lock_guard lock(m_Lock);
            m_aryRequests.push_back(strRequest);
        }
        m_Script(Connection(nSocket, m_bStop), strRequest);
    }

    Script m_Script;
    int m_nListening = -1;
    int m_nPort = 0;
    std::atomic<bool> m_bStop{false};
    mutable std::mutex m_Lock;
    std::vector<std::string> m_aryRequests;
    std::thread m_Thread;
};
