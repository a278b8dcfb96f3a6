#include "StatusLine.h"
#include <algorithm>
#include <cstdio>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{
constexpr int USUAL_COLUMNS = 80;          // of a terminal that does not tell
constexpr unsigned char FIRST_WIDE = 0xE1; // leads U+1000 and up, where characters of two columns begin (U+1100)
constexpr const char* ERASE = "\033[K";    // ECMA-48, EL: from here to the end of the line

int GetColumns()
{
    winsize size = {};
    const bool bTold = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return bTold ? size.ws_col : USUAL_COLUMNS;
}

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// RFC 3629: the bytes of a character that begins so.
size_t GetLength(unsigned char nLead)
{
    if (nLead < 0xC0)
        return 1;
    return nLead < 0xE0 ? 2 : nLead < 0xF0 ? 3 : 4;
}

// C0 and C1 of ISO 6429, in UTF-8 or as a byte of its own: U+009B begins a sequence as ESC [ does.
bool IsControl(std::string_view character)
{
    const auto nLead = static_cast<unsigned char>(character[0]);
    const bool bC1 = nLead == 0xC2 && character.size() > 1 && static_cast<unsigned char>(character[1]) < 0xA0;
    return nLead < ' ' || nLead == 0x7F || bC1 || IsContinuation(character[0]);
}
} // namespace

std::string FitColumns(const std::string& strText, int nColumns)
{
    std::string strFit;
    for (size_t n = 0; n < strText.size();)
    {
        const auto nLead = static_cast<unsigned char>(strText[n]);
        nColumns -= nLead >= FIRST_WIDE ? 2 : 1;
        if (nColumns < 0)
            break;
        const size_t nStart = n++;
        const size_t nEnd = std::min(strText.size(), nStart + GetLength(nLead));
        while (n < nEnd && IsContinuation(strText[n]))
            ++n;
        const std::string_view character = std::string_view(strText).substr(nStart, n - nStart);
        strFit.append(IsControl(character) ? "?" : character);
    }
    return strFit;
}

StatusLine::StatusLine() : m_bTerminal(isatty(STDERR_FILENO) != 0) {}

void StatusLine::Show(const std::string& strText)
{
    if (!m_bTerminal)
        return;
    m_bShown = true;
    // The last column stays free: terminals differ in what they do behind it.
    std::fprintf(stderr, "\r%s%s", FitColumns(strText, GetColumns() - 1).c_str(), ERASE);
}

void StatusLine::TakeAway()
{
    if (m_bShown)
        std::fprintf(stderr, "\r%s", ERASE);
    m_bShown = false;
}
