#include "Keys.h"
#include <csignal>
#include <cstring>
#include <poll.h>
#include <string_view>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace
{
volatile std::sig_atomic_t s_bInterrupted = 0;

void NoteInterrupt(int) { s_bInterrupted = 1; }

KEY Translate(std::string_view strBytes)
{
    static constexpr std::pair<std::string_view, KEY> KEYS[] = {
        {" ", KEY_PAUSE},         {"n", KEY_NEXT},     {"N", KEY_NEXT},          {"p", KEY_PREVIOUS},
        {"P", KEY_PREVIOUS},      {"q", KEY_QUIT},     {"Q", KEY_QUIT},          {"\x1B", KEY_QUIT},
        {"\x1B[C", KEY_FORWARD},  {".", KEY_FORWARD},  {"\x1B[D", KEY_BACKWARD}, {"\x1BOC", KEY_FORWARD},
        {"\x1BOD", KEY_BACKWARD}, {",", KEY_BACKWARD}, {"\x04", KEY_QUIT},
    };
    for (const auto& [strKey, key] : KEYS)
        if (strKey == strBytes)
            return key;
    return KEY_NONE;
}
} // namespace

struct Keys::SAVED_TERMINAL
{
    termios m_Settings;
};

Keys::Keys()
{
    s_bInterrupted = 0;
    struct sigaction action = {};
    action.sa_handler = NoteInterrupt;
    (void)sigaction(SIGINT, &action, nullptr); // without SA_RESTART: a wait for a key ends
    (void)sigaction(SIGTERM, &action, nullptr);
    termios settings;
    if (tcgetattr(STDIN_FILENO, &settings) != 0)
        return;
    m_pSaved = std::make_unique<SAVED_TERMINAL>(SAVED_TERMINAL{settings});
    settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 0;
    (void)tcsetattr(STDIN_FILENO, TCSANOW, &settings);
}

Keys::~Keys()
{
    if (m_pSaved != nullptr)
        (void)tcsetattr(STDIN_FILENO, TCSANOW, &m_pSaved->m_Settings);
    (void)std::signal(SIGINT, SIG_DFL);
    (void)std::signal(SIGTERM, SIG_DFL);
}

KEY Keys::Read(int nWaitMs)
{
    if (s_bInterrupted != 0)
        return KEY_QUIT;
    pollfd wait{STDIN_FILENO, POLLIN, 0};
    // Without a terminal there is nothing to read, but still something to wait for.
    const int nReady = poll(&wait, m_pSaved != nullptr ? 1 : 0, nWaitMs);
    if (s_bInterrupted != 0)
        return KEY_QUIT;
    if (nReady < 1)
        return KEY_NONE;
    char szBytes[8];
    const ssize_t nBytes = read(STDIN_FILENO, szBytes, sizeof szBytes);
    if (nBytes < 1)
        return (wait.revents & POLLHUP) != 0 ? KEY_QUIT : KEY_NONE; // the terminal has gone
    // Several keys at once: an arrow comes as one piece, and of others the first counts.
    const KEY key = Translate({szBytes, static_cast<size_t>(nBytes)});
    return key != KEY_NONE ? key : Translate({szBytes, 1});
}
