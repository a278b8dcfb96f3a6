// The terminal that the process was started from: whether it can be asked, and the way it hands over keys.
//
// Nothing here installs signal handlers. A mode is set only while this process is in the terminal's foreground, and is
// taken back by the destructor.
// Threads: any, one at a time for each object.

#pragma once

#include <string>
#include <termios.h>

class Terminal
{
public:
    enum MODE
    {
        MODE_LINES, // what is typed is shown, and comes by whole lines
        MODE_KEYS   // nothing is shown, each key comes at once; the keys that send signals still do
    };

    // Whether somebody sits there to read: the standard error stream is a terminal.
    static bool IsShown();
    // Whether somebody sits there to answer: the standard input is one, too, and it is this process's turn.
    static bool CanAsk();

    Terminal() = default; // nothing is open
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // Opens the controlling terminal and sets the mode. False, with nothing open, if there is none or if the process is
    // in its background.
    bool Open(MODE eMode);
    void Close(); // takes the mode back
    bool IsOpen() const { return m_nFile >= 0; }
    bool IsForeground() const;
    int GetFile() const { return m_nFile; } // to wait for keys on; -1 if nothing is open

    // What has been typed and not been read yet, at most 256 bytes; empty if there is nothing, or no terminal any more.
    std::string ReadKeys();
    // Waits for a line, without its end. False at the end of the input, and when a signal interrupts.
    bool ReadLine(std::string& strLine);

    static void Write(const std::string& strText); // to the standard error stream
    static int GetWidth();                         // columns; 80 if it is not known

private:
    int m_nFile = -1;
    termios m_OldMode{};
};
