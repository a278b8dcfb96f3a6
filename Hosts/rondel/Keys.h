// Single keys from a terminal, without the need to press Enter.

#pragma once

#include <memory>
#include <string>

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
// the object goes. What would end the program (Ctrl-C, SIGTERM, SIGHUP, SIGQUIT) becomes KEY_QUIT instead; said once
// more, while a drive does not answer, it ends the program after all, with the terminal as it was.
class Keys
{
public:
    Keys();
    ~Keys();
    Keys(const Keys&) = delete;
    Keys& operator=(const Keys&) = delete;

    // The next key, waiting at most so long; KEY_NONE if none came, or if standard input is no terminal that listens to
    // this program.
    KEY Read(int nWaitMs);

private:
    struct SAVED_STATE;

    bool TakeTerminal();
    KEY Gather(int nWaitMs);
    KEY TakeKey();

    std::unique_ptr<SAVED_STATE> m_pSaved;
    bool m_bTerminal = false;
    std::string m_strPending; // typed, not yet handed over
};
