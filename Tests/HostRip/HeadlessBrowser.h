// Chromium without a window, spoken to through a pipe in its own protocol (Chrome DevTools Protocol): JSON messages
// with a null behind each, to descriptor 3 of the browser and from its descriptor 4.

#pragma once

#include "TempFolder.h"
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

class HeadlessBrowser
{
public:
    using JSON = nlohmann::json;
    static constexpr std::chrono::seconds LONGEST_WAIT{60};

    static bool IsThere() { return std::system("command -v chromium >/dev/null 2>&1") == 0; }

    HeadlessBrowser()
    {
        Start();
        const JSON target = Call("Target.createTarget", {{"url", "about:blank"}});
        m_strSession = Call("Target.attachToTarget", {{"targetId", target.value("targetId", "")}, {"flatten", true}})
                           .value("sessionId", "");
        for (const char* pDomain : {"Page.enable", "Runtime.enable", "Network.enable", "Log.enable"})
            (void)Call(pDomain);
    }
    ~HeadlessBrowser()
    {
        close(m_nTo);
        close(m_nFrom);
        // Without its pipe it goes by itself.
        for (int i = 0; i < 500 && waitpid(m_nProcess, nullptr, WNOHANG) == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        (void)kill(-m_nProcess, SIGKILL); // what is left of its own group
        (void)waitpid(m_nProcess, nullptr, 0);
    }
    HeadlessBrowser(const HeadlessBrowser&) = delete;
    HeadlessBrowser& operator=(const HeadlessBrowser&) = delete;

    // The result of a command; an empty object, and a failure of the test, where there is none.
    JSON Call(const std::string& strMethod, const JSON& parameters = JSON::object())
    {
        const int nID = ++m_nCalls;
        JSON message = {{"id", nID}, {"method", strMethod}, {"params", parameters}};
        if (!m_strSession.empty())
            message["sessionId"] = m_strSession;
        Send(message.dump());
        for (JSON answer = Receive(); !answer.is_null(); answer = Receive())
        {
            if (answer.value("id", 0) != nID)
            {
                m_aryEvents.push_back(answer);
                continue;
            }
            EXPECT_FALSE(answer.contains("error")) << strMethod << ": " << answer.dump();
            return answer.value("result", JSON::object());
        }
        ADD_FAILURE() << "The browser does not answer " << strMethod;
        return JSON::object();
    }

    void SetScreen(int nWidth, int nHeight, const std::string& strScheme)
    {
        (void)Call("Emulation.setDeviceMetricsOverride",
                   {{"width", nWidth}, {"height", nHeight}, {"deviceScaleFactor", 1}, {"mobile", false}});
        (void)Call("Emulation.setEmulatedMedia",
                   {{"features", JSON::array({{{"name", "prefers-color-scheme"}, {"value", strScheme}}})}});
    }
    void Open(const std::string& strURL)
    {
        (void)Call("Page.navigate", {{"url", strURL}});
        const auto loaded = [&]
        {
            for (const JSON& event : m_aryEvents)
                if (event.value("method", "") == "Page.loadEventFired")
                    return true;
            return false;
        };
        while (!loaded())
        {
            m_aryEvents.push_back(Receive());
            ASSERT_FALSE(m_aryEvents.back().is_null()) << "The page does not load.";
        }
    }
    // What was said without being asked since ForgetEvents, by the name of the event.
    std::vector<JSON> GetEvents(const std::string& strMethod) const
    {
        std::vector<JSON> aryFound;
        for (const JSON& event : m_aryEvents)
            if (event.is_object() && event.value("method", "") == strMethod)
                aryFound.push_back(event["params"]);
        return aryFound;
    }
    void ForgetEvents() { m_aryEvents.clear(); }

    JSON Evaluate(const std::string& strExpression)
    {
        const JSON result =
            Call("Runtime.evaluate", {{"expression", strExpression}, {"returnByValue", true}, {"awaitPromise", true}});
        EXPECT_FALSE(result.contains("exceptionDetails")) << strExpression << ": " << result.dump();
        return result.contains("result") && result["result"].contains("value") ? result["result"]["value"] : JSON();
    }
    void Press(const std::string& strKey, int nCode, const std::string& strText = "")
    {
        JSON key = {{"type", strText.empty() ? "rawKeyDown" : "keyDown"},
                    {"key", strKey},
                    {"code", strKey},
                    {"windowsVirtualKeyCode", nCode}};
        if (!strText.empty())
            key["text"] = strText;
        (void)Call("Input.dispatchKeyEvent", key);
        key["type"] = "keyUp";
        key.erase("text");
        (void)Call("Input.dispatchKeyEvent", key);
    }
    void PressTab() { Press("Tab", 9); }
    // A PNG in base64.
    std::string TakeScreenshot() { return Call("Page.captureScreenshot", {{"format", "png"}}).value("data", ""); }

private:
    static constexpr int BROWSER_READS = 3;
    static constexpr int BROWSER_WRITES = 4;
    static constexpr int FIRST_FREE = 10; // beyond both, so that neither is overwritten while it is put in its place

    void Start()
    {
        signal(SIGPIPE, SIG_IGN);
        int aryTo[2] = {-1, -1};
        int aryFrom[2] = {-1, -1};
        ASSERT_EQ(0, pipe2(aryTo, O_CLOEXEC));
        ASSERT_EQ(0, pipe2(aryFrom, O_CLOEXEC));
        const int nBrowserReads = fcntl(aryTo[0], F_DUPFD_CLOEXEC, FIRST_FREE);
        const int nBrowserWrites = fcntl(aryFrom[1], F_DUPFD_CLOEXEC, FIRST_FREE);
        close(aryTo[0]);
        close(aryFrom[1]);
        m_nTo = aryTo[1];
        m_nFrom = aryFrom[0];

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        for (const int nStream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            posix_spawn_file_actions_addopen(&actions, nStream, "/dev/null", O_RDWR, 0);
        posix_spawn_file_actions_adddup2(&actions, nBrowserReads, BROWSER_READS);
        posix_spawn_file_actions_adddup2(&actions, nBrowserWrites, BROWSER_WRITES);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        std::vector<std::string> aryArguments = {"chromium",
                                                 "--headless=new",
                                                 "--no-sandbox",
                                                 "--disable-gpu",
                                                 "--disable-dev-shm-usage",
                                                 "--no-first-run",
                                                 "--hide-scrollbars",
                                                 "--disable-background-networking",
                                                 "--remote-debugging-pipe",
                                                 "--user-data-dir=" + m_Folder.GetPath("profile"),
                                                 "about:blank"};
        std::vector<char*> aryPointers;
        for (std::string& str : aryArguments)
            aryPointers.push_back(str.data());
        aryPointers.push_back(nullptr);
        EXPECT_EQ(0, posix_spawnp(&m_nProcess, "chromium", &actions, &attributes, aryPointers.data(), environ));
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        close(nBrowserReads);
        close(nBrowserWrites);
    }

    void Send(std::string strMessage)
    {
        strMessage += '\0';
        for (size_t nAt = 0; nAt < strMessage.size();)
        {
            const ssize_t nWritten = write(m_nTo, strMessage.data() + nAt, strMessage.size() - nAt);
            if (nWritten <= 0 && errno != EINTR)
                return; // the missing answer tells
            nAt += static_cast<size_t>(std::max<ssize_t>(nWritten, 0));
        }
    }

    // The next message; null where none comes.
    JSON Receive()
    {
        for (;;)
        {
            if (const size_t nEnd = m_strPending.find('\0'); nEnd != std::string::npos)
            {
                const JSON message = JSON::parse(m_strPending.substr(0, nEnd), nullptr, false);
                m_strPending.erase(0, nEnd + 1);
                return message.is_object() ? message : JSON();
            }
            pollfd wait{m_nFrom, POLLIN, 0};
            char szPart[65536];
            if (poll(&wait, 1, static_cast<int>(std::chrono::milliseconds(LONGEST_WAIT).count())) <= 0)
                return JSON();
            const ssize_t nBytes = read(m_nFrom, szPart, sizeof szPart);
            if (nBytes <= 0)
                return JSON();
            m_strPending.append(szPart, static_cast<size_t>(nBytes));
        }
    }

    TempFolder m_Folder;
    pid_t m_nProcess = 0;
    int m_nTo = -1;
    int m_nFrom = -1;
    int m_nCalls = 0;
    std::string m_strSession;
    std::string m_strPending;
    std::vector<JSON> m_aryEvents;
};
