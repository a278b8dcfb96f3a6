#include "Terminal.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{
constexpr const char* CONTROLLING_TERMINAL = "/dev/tty";
constexpr size_t MAX_KEY_BYTES = 256;
constexpr size_t MAX_LINE_BYTES = 4096; // of a typed line; what is more is dropped
constexpr int DEFAULT_COLUMNS = 80;

void SetMode(termios& mode, Terminal::MODE eMode)
{
    constexpr tcflag_t LINE_FLAGS = ICANON | ECHO;
    mode.c_lflag |= ISIG;
    if (eMode == Terminal::MODE_LINES)
    {
        mode.c_iflag |= ICRNL;
        mode.c_lflag |= LINE_FLAGS;
        return;
    }
    mode.c_lflag &= ~LINE_FLAGS;
    mode.c_cc[VMIN] = 0; // a read returns at once with what is there
    mode.c_cc[VTIME] = 0;
}
} // namespace

bool Terminal::IsShown() { return isatty(STDERR_FILENO) == 1; }

bool Terminal::CanAsk()
{
    if (isatty(STDIN_FILENO) != 1 || !IsShown())
        return false;
    Terminal terminal;
    terminal.m_nFile = open(CONTROLLING_TERMINAL, O_RDWR | O_CLOEXEC | O_NOCTTY);
    const bool bForeground = terminal.IsForeground();
    if (terminal.m_nFile >= 0)
        close(terminal.m_nFile);
    terminal.m_nFile = -1; // it has no mode to take back
    return bForeground;
}

Terminal::~Terminal() { Close(); }

bool Terminal::Open(MODE eMode)
{
    Close();
    m_nFile = open(CONTROLLING_TERMINAL, O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (m_nFile < 0)
        return false;
    if (IsForeground() && tcgetattr(m_nFile, &m_OldMode) == 0)
    {
        termios mode = m_OldMode;
        SetMode(mode, eMode);
        if (tcsetattr(m_nFile, TCSANOW, &mode) == 0)
            return true;
    }
    close(m_nFile);
    m_nFile = -1;
    return false;
}

// In the background the terminal is somebody else's, who has set a mode of his own.
void Terminal::Close()
{
    if (m_nFile < 0)
        return;
    if (IsForeground())
        (void)tcsetattr(m_nFile, TCSANOW, &m_OldMode); // a terminal that has gone has no mode
    close(m_nFile);
    m_nFile = -1;
}

bool Terminal::IsForeground() const { return m_nFile >= 0 && tcgetpgrp(m_nFile) == getpgrp(); }

std::string Terminal::ReadKeys()
{
    char aryKeys[MAX_KEY_BYTES];
    const ssize_t nRead = IsForeground() ? read(m_nFile, aryKeys, sizeof aryKeys) : 0;
    if (nRead > 0)
        return std::string(aryKeys, static_cast<size_t>(nRead));
    return std::string();
}

bool Terminal::ReadLine(std::string& strLine)
{
    strLine.clear();
    while (IsForeground())
    {
        char c = 0;
        const ssize_t nRead = read(m_nFile, &c, 1);
        if (nRead <= 0)
            return false;
        if (c == '\n')
            return true;
        if (strLine.size() < MAX_LINE_BYTES)
            strLine += c;
    }
    return false;
}

void Terminal::Write(const std::string& strText)
{
    size_t nDone = 0;
    while (nDone < strText.size())
    {
        const ssize_t nWritten = write(STDERR_FILENO, strText.data() + nDone, strText.size() - nDone);
        if (nWritten <= 0 && errno != EINTR)
            return;
        if (nWritten > 0)
            nDone += static_cast<size_t>(nWritten);
    }
}

int Terminal::GetWidth()
{
    winsize size = {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return DEFAULT_COLUMNS;
    return size.ws_col;
}
