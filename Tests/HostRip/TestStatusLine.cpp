#include "StatusLine.h"
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{
// A terminal of so many columns in the place of stderr.
class Terminal
{
public:
    explicit Terminal(unsigned short nColumns) : m_nMaster(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        (void)grantpt(m_nMaster);
        (void)unlockpt(m_nMaster);
        const int nSlave = open(ptsname(m_nMaster), O_RDWR | O_NOCTTY | O_CLOEXEC);
        winsize size = {};
        size.ws_col = nColumns;
        (void)ioctl(nSlave, TIOCSWINSZ, &size);
        m_nBefore = dup(STDERR_FILENO);
        (void)dup2(nSlave, STDERR_FILENO);
        (void)close(nSlave);
    }
    ~Terminal()
    {
        (void)dup2(m_nBefore, STDERR_FILENO);
        (void)close(m_nBefore);
        (void)close(m_nMaster);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    std::string Read() const // empty if nothing comes
    {
        constexpr int PATIENCE_MS = 10000;
        pollfd wait = {m_nMaster, POLLIN, 0};
        if (poll(&wait, 1, PATIENCE_MS) < 1)
            return {};
        char aryText[1024];
        const ssize_t nBytes = read(m_nMaster, aryText, sizeof aryText);
        return std::string(aryText, nBytes > 0 ? static_cast<size_t>(nBytes) : 0);
    }

private:
    int m_nMaster;
    int m_nBefore;
};
} // namespace

TEST(FitColumns, IsTheStartThatFits)
{
    const struct
    {
        const char* pText;
        int nColumns;
        const char* pFit;
    } aryCases[] = {
        {"", 10, ""},
        {"abc", 3, "abc"},
        {"abc", 2, "ab"},
        {"abc", 0, ""},
        {"abc", -1, ""},
        {"\xC3\xA4\xC3\xA4x", 2, "\xC3\xA4\xC3\xA4"},    // umlauts of one column
        {"\xE6\x97\xA5\xE6\x9C\xAC", 3, "\xE6\x97\xA5"}, // ideographs of two
        {"a\xF0\x9F\x8E\xB5z", 2, "a"},                  // an emoji of two
        {"a\nb\tc\x1B[2J\x7F", 20, "a?b?c?[2J?"},        // what would steer
        {"a\xC2\x9B"
         "2Jb\x9B"
         "2J",
         20, "a?2Jb?2J"},                             // what would steer in one character
        {"\xC2\xA0\xC3\x9B", 20, "\xC2\xA0\xC3\x9B"}, // what would not
        {"\x80\x80z\xFF", 20, "??z\xFF"},             // no UTF-8
    };
    for (const auto& row : aryCases)
        EXPECT_EQ(row.pFit, FitColumns(row.pText, row.nColumns)) << row.pText;
}

TEST(StatusLine, IsCutToTheTerminalAndTakenAway)
{
    const Terminal terminal(12);
    {
        StatusLine line;
        EXPECT_TRUE(line.GetIsTerminal());
        line.Show("Track 5: 65 %, all: 65 %");
        EXPECT_EQ("\rTrack 5: 65\033[K", terminal.Read());
        line.TakeAway();
        EXPECT_EQ("\r\033[K", terminal.Read());
        line.TakeAway(); // is gone already
        line.Show("x");
        EXPECT_EQ("\rx\033[K", terminal.Read());
    }
    EXPECT_EQ("\r\033[K", terminal.Read());
}

TEST(StatusLine, ATerminalWithoutAWidthHas80Columns)
{
    const Terminal terminal(0);
    StatusLine line;
    line.Show(std::string(200, 'x'));
    EXPECT_EQ("\r" + std::string(79, 'x') + "\033[K", terminal.Read());
}
