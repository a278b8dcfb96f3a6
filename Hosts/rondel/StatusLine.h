// A line on the terminal that is written over again and again, and gone in the end. Silent where stderr is no terminal.
//
// Shape:   one line: what is wider than the terminal is cut off, since a line that goes on in the next one cannot be
//          taken away, and no character steers the terminal.
// Threads: one at a time.

#pragma once

#include <string>

class StatusLine
{
public:
    StatusLine();
    ~StatusLine() { TakeAway(); }
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    bool GetIsTerminal() const { return m_bTerminal; }
    void Show(const std::string& strText); // UTF-8
    void TakeAway();                       // ahead of other lines

private:
    bool m_bTerminal;
    bool m_bShown = false;
};

// The start of a text that so many columns hold. A character that may be wide counts as two.
std::string FitColumns(const std::string& strText, int nColumns);
