// Single keys from a terminal, without the need to press Enter.

#pragma once

#include <memory>

enum KEY : int
{
    KEY_NONE,
    KEY_PAUSE,    // space
    KEY_FORWARD,  // right arrow, or .
    KEY_BACKWARD, // left arrow, or ,
    KEY_NEXT,     // n
    KEY_PREVIOUS, // p
    KEY_QUIT      // q, Esc, or an interrupt
};

// While an object lives, the terminal of standard input hands over each key at once and shows none. It is put back when
// the object goes, and an interrupt (Ctrl-C) ends nothing by force but becomes KEY_QUIT.
class Keys
{
public:
    Keys();
    ~Keys();
    Keys(const Keys&) = delete;
    Keys& operator=(const Keys&) = delete;

    // The next key, waiting at most so long; KEY_NONE if none came, or if standard input is no terminal.
    KEY Read(int nWaitMs);
    bool GetIsTerminal() const { return m_pSaved != nullptr; }

private:
    struct SAVED_TERMINAL;
    std::unique_ptr<SAVED_TERMINAL> m_pSaved; // null: no terminal
};
