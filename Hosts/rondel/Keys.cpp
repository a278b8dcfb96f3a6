#include "Keys.h"
#include <algorithm>
#include <csignal>
#include <iterator>
#include <poll.h>
#include <string_view>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace
{
constexpr int QUIT_SIGNALS[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr char ESCAPE = '\x1B';
constexpr int REST_WAIT_MS = 50; // an arrow's bytes may come in pieces; the key Esc is one alone
constexpr size_t MAX_SEQUENCE_BYTES = 32;

volatile std::sig_atomic_t s_bInterrupted = 0;
volatile std::sig_atomic_t s_bContinued = 0;
volatile std::sig_atomic_t s_bRestore = 0; // s_Restore is the terminal as it was
termios s_Restore;

void NoteInterrupt(int nSignal)
{
    if (s_bInterrupted == 0)
    {
        s_bInterrupted = 1;
        return;
    }
    if (s_bRestore != 0)
        (void)tcsetattr(STDIN_FILENO, TCSANOW, &s_Restore);
    (void)std::signal(nSignal, SIG_DFL);
    (void)std::raise(nSignal); // comes as soon as this handler is left
}

void NoteContinued(int) { s_bContinued = 1; }

// How many bytes the key takes that these begin with; 0 if more must come to tell.
size_t GetKeyBytes(std::string_view str)
{
    if (str[0] != ESCAPE)
        return 1;
    if (str.size() < 2)
        return 0;
    if (str[1] == 'O') // SS3 and one byte
        return str.size() < 3 ? 0 : 3;
    if (str[1] != '[')
        return 2; // with Alt
    // CSI, parameters, and a final byte from @ to ~ (ECMA-48, 5.4).
    const auto pFinal = std::find_if(str.begin() + 2, str.end(), [](char c) { return c >= '@' && c <= '~'; });
    if (pFinal == str.end())
        return str.size() < MAX_SEQUENCE_BYTES ? 0 : str.size();
    return static_cast<size_t>(pFinal - str.begin()) + 1;
}

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

struct Keys::SAVED_STATE
{
    struct sigaction m_aryActions[std::size(QUIT_SIGNALS)];
    struct sigaction m_Continue;
};

Keys::Keys() : m_pSaved(std::make_unique<SAVED_STATE>())
{
    s_bInterrupted = 0;
    s_bContinued = 0;
    m_bTerminal = TakeTerminal();
    for (size_t i = 0; i < std::size(QUIT_SIGNALS); ++i)
    {
        struct sigaction& saved = m_pSaved->m_aryActions[i];
        (void)sigaction(QUIT_SIGNALS[i], nullptr, &saved);
        if (saved.sa_handler == SIG_IGN)
            continue; // as nohup and shells in the background have it
        struct sigaction action = {};
        action.sa_handler = NoteInterrupt;
        (void)sigaction(QUIT_SIGNALS[i], &action, nullptr); // without SA_RESTART: a wait for a key ends
    }
    struct sigaction action = {};
    action.sa_handler = NoteContinued;
    (void)sigaction(SIGCONT, &action, &m_pSaved->m_Continue);
}

Keys::~Keys()
{
    if (m_bTerminal && tcgetpgrp(STDIN_FILENO) == getpgrp())
        (void)tcsetattr(STDIN_FILENO, TCSANOW, &s_Restore);
    s_bRestore = 0;
    for (size_t i = 0; i < std::size(QUIT_SIGNALS); ++i)
        (void)sigaction(QUIT_SIGNALS[i], &m_pSaved->m_aryActions[i], nullptr);
    (void)sigaction(SIGCONT, &m_pSaved->m_Continue, nullptr);
}

// Has each key handed over at once. Only the job in the foreground may: another one would be stopped for it.
bool Keys::TakeTerminal()
{
    termios settings;
    if (tcgetpgrp(STDIN_FILENO) != getpgrp() || tcgetattr(STDIN_FILENO, &settings) != 0)
        return false;
    if (s_bRestore == 0)
        s_Restore = settings;
    s_bRestore = 1;
    settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 0;
    return tcsetattr(STDIN_FILENO, TCSANOW, &settings) == 0;
}

KEY Keys::Read(int nWaitMs)
{
    if (s_bContinued != 0) // the shell has had the terminal in the meantime
    {
        s_bContinued = 0;
        m_bTerminal = TakeTerminal();
    }
    if (s_bInterrupted != 0)
        return KEY_QUIT;
    if (m_strPending.empty() || GetKeyBytes(m_strPending) == 0)
    {
        const KEY key = Gather(m_strPending.empty() ? nWaitMs : REST_WAIT_MS);
        if (key != KEY_NONE)
            return key;
        if (!m_strPending.empty() && GetKeyBytes(m_strPending) == 0)
            (void)Gather(REST_WAIT_MS);
    }
    return s_bInterrupted != 0 ? KEY_QUIT : TakeKey();
}

// Reads what has been typed. KEY_QUIT if nothing will come any more.
KEY Keys::Gather(int nWaitMs)
{
    pollfd wait{STDIN_FILENO, POLLIN, 0};
    // Without a terminal there is nothing to read, but still something to wait for.
    const int nReady = poll(&wait, m_bTerminal ? 1 : 0, nWaitMs);
    if (s_bInterrupted != 0)
        return KEY_QUIT;
    if (nReady < 1)
        return KEY_NONE;
    char szBytes[64];
    const ssize_t nBytes = read(STDIN_FILENO, szBytes, sizeof szBytes);
    if (nBytes > 0)
        m_strPending.append(szBytes, static_cast<size_t>(nBytes));
    return nBytes < 1 && (wait.revents & POLLHUP) != 0 ? KEY_QUIT : KEY_NONE; // the terminal has gone
}

KEY Keys::TakeKey()
{
    if (m_strPending.empty())
        return KEY_NONE;
    size_t nBytes = GetKeyBytes(m_strPending);
    if (nBytes == 0)
        nBytes = m_strPending.size(); // no more comes: it is Esc, or no key at all
    const KEY key = Translate(std::string_view(m_strPending).substr(0, nBytes));
    m_strPending.erase(0, nBytes);
    return key;
}
