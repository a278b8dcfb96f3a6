// A web server for a test: nginx on a free port of loopback, with all its files in a folder that goes with it.
//
//   /files/...      what the test has written there; no ranges under /noranges/..., gzip on the way under /gzip/...,
//                   300 KB a second under /slow/...
//   /packed/<name>  the file <name>.gz, as it is to who takes gzip; to others unpacked, without a length
//   /redirect, /relative, /loop, /hops/, /toftp      redirects
//   /status/<code>  that status
//   /ask            the method, and the header lines X-Test and User-Agent, as text
//   /post           the data of the request in the header line X-Body
//   /dav/...        PUT and DELETE

#pragma once

#include "TempFolder.h"
#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <netinet/in.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

inline sockaddr_in MakeLoopback(int nPort)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(nPort));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

inline int FindFreePort()
{
    const int nSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = MakeLoopback(0);
    socklen_t nBytes = sizeof address;
    (void)bind(nSocket, reinterpret_cast<sockaddr*>(&address), nBytes);
    getsockname(nSocket, reinterpret_cast<sockaddr*>(&address), &nBytes);
    close(nSocket);
    return ntohs(address.sin_port);
}

class NginxServer
{
public:
    // With bTLS a certificate for the address 127.0.0.1, and not for the name localhost, is made and served.
    explicit NginxServer(bool bTLS = false) : m_bTLS(bTLS)
    {
        constexpr int MAX_STARTS = 5; // somebody else may take the port in between
        if (bTLS)
            MakeCertificate();
        for (const char* pName : {"files", "dav", "tmp"})
            std::filesystem::create_directories(m_Folder.GetPath(pName));
        for (int i = 0; i < MAX_STARTS && m_nPid < 0; ++i)
            Start();
    }
    ~NginxServer() { Stop(); }
    NginxServer(const NginxServer&) = delete;
    NginxServer& operator=(const NginxServer&) = delete;

    bool GetIsRunning() const { return m_nPid > 0; }
    std::string GetURL(const std::string& strPath, const std::string& strHost = "127.0.0.1") const
    {
        return (m_bTLS ? "https://" : "http://") + strHost + ":" + std::to_string(m_nPort) + strPath;
    }
    void Write(const std::string& strName, const std::string& strContent) const
    {
        (void)m_Folder.Write("files/" + strName, strContent);
    }
    const TempFolder& GetFolder() const { return m_Folder; }
    std::string GetCertificate() const { return m_Folder.GetPath("cert.pem"); }

private:
    void MakeCertificate() const
    {
        const std::string strCommand =
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=Rondel "
            "-addext subjectAltName=IP:127.0.0.1 -keyout " +
            m_Folder.GetPath("key.pem") + " -out " + GetCertificate() + " 2>/dev/null";
        (void)!std::system(strCommand.c_str());
    }

    std::string GetConfiguration() const
    {
        const std::string strPort = std::to_string(m_nPort);
        const std::string strFolder = m_Folder.GetPath();
        std::string strTemp;
        for (const char* pKind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
            strTemp += std::string("  ") + pKind + "_temp_path " + strFolder + "/tmp/" + pKind + ";\n";
        std::string strHops; // each leads to one that is shorter
        for (int i = 1; i <= 12; ++i)
            strHops += "    location = /hops/" + std::to_string(i) + " { return 302 " +
                       (i == 1 ? std::string("/files/small.txt") : "/hops/" + std::to_string(i - 1)) + "; }\n";
        return "daemon off;\nmaster_process off;\npid " + strFolder + "/nginx.pid;\nerror_log " + strFolder +
               "/error.log;\nevents { worker_connections 64; }\nhttp {\n" + strTemp +
               "  access_log off;\n  types { text/plain txt; }\n  default_type application/octet-stream;\n"
               "  client_max_body_size 64m;\n  client_body_buffer_size 1m;\n  large_client_header_buffers 4 1m;\n"
               "  server {\n    listen 127.0.0.1:" +
               strPort + (m_bTLS ? " ssl" : "") + ";\n" +
               (m_bTLS ? "    ssl_certificate cert.pem;\n    ssl_certificate_key key.pem;\n" : "") + "    root " +
               strFolder +
               ";\n"
               "    location /noranges/ { alias " +
               strFolder +
               "/files/; max_ranges 0; }\n"
               "    location /gzip/ { alias " +
               strFolder +
               "/files/; gzip on; gzip_min_length 1; gzip_types *; }\n"
               "    location /packed/ { alias " +
               strFolder +
               "/files/; gzip_static always; gunzip on; }\n"
               "    location /slow/ { alias " +
               strFolder +
               "/files/; limit_rate 300k; }\n"
               "    location = /redirect { return 302 /files/small.txt; }\n"
               "    location = /relative { absolute_redirect off; return 301 files/small.txt; }\n"
               "    location = /loop { return 302 /loop; }\n"
               "    location = /toftp { return 302 ftp://127.0.0.1/small.txt; }\n"
               "    location = /tofile { return 302 file:///etc/passwd; }\n" +
               strHops +
               "    location ~ ^/status/404 { return 404 \"nothing here\"; }\n"
               "    location ~ ^/status/500 { return 500; }\n"
               "    location ~ ^/status/201 { add_header Location /made always; return 201 \"made\"; }\n"
               "    location ~ ^/status/204 { return 204; }\n"
               "    location = /ask { return 200 \"$request_method|$http_x_test|$http_user_agent|$http_icy_metadata|"
               "$http_accept_encoding\"; }\n"
               "    location = /args { return 200 \"$request_uri\"; }\n"
               "    location = /post { proxy_pass http://127.0.0.1:" +
               strPort +
               "/ask; add_header X-Body \"$request_body\" always; add_header X-Type \"$content_type\"; }\n"
               "    location /dav/ { dav_methods PUT DELETE; }\n"
               "  }\n}\n";
    }

    void Start()
    {
        m_nPort = FindFreePort();
        const std::string strFile = m_Folder.Write("nginx.conf", GetConfiguration());
        const std::string strFolder = m_Folder.GetPath("");
        const std::string strLog = m_Folder.GetPath("error.log");
        m_nPid = fork();
        if (m_nPid == 0)
        {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            const int nLog = open(strLog.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
            dup2(nLog, STDERR_FILENO);
            for (const char* pProgram : {"/usr/sbin/nginx", "/usr/local/sbin/nginx", "/usr/bin/nginx"})
                execl(pProgram, "nginx", "-p", strFolder.c_str(), "-c", strFile.c_str(), "-e", strLog.c_str(), nullptr);
            _exit(127);
        }
        if (!WaitForPort())
            Stop();
    }

    bool WaitForPort() const
    {
        for (int i = 0; i < 500; ++i)
        {
            const int nSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
            const sockaddr_in address = MakeLoopback(m_nPort);
            const bool bThere = connect(nSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
            close(nSocket);
            if (bThere)
                return true;
            int nStatus;
            if (waitpid(m_nPid, &nStatus, WNOHANG) != 0)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }

    void Stop()
    {
        if (m_nPid > 0)
        {
            kill(m_nPid, SIGTERM);
            waitpid(m_nPid, nullptr, 0);
        }
        m_nPid = -1;
    }

    TempFolder m_Folder;
    bool m_bTLS;
    int m_nPort = 0;
    pid_t m_nPid = -1;
};
