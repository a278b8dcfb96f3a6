// Whose turn it is on the terminal: questions come before wait messages, and there is one of either at a time.
//
// A wait message that is on the terminal leaves it when a question wants to be asked, and comes back afterwards.
// Threads: any.

#pragma once

#include <condition_variable>
#include <mutex>
#include <vector>

class TerminalTurns
{
public:
    // Who wants to stand on the terminal without a hurry. Wake is called under the lock: it only sends word, so that
    // the sleeper asks TryEnter, or GetMustLeave, again.
    class Sleeper
    {
    public:
        virtual void Wake() = 0;
        virtual void Silence() = 0; // leaves for good, and ends its thread

    protected:
        ~Sleeper() = default;
    };

    void BeginQuestion(); // waits until the terminal is free
    void EndQuestion();

    void Add(Sleeper* pSleeper);
    void Remove(Sleeper* pSleeper);   // waits while it is being silenced
    bool TryEnter(Sleeper* pSleeper); // false: word comes when it is worth another try
    bool GetMustLeave();              // a question waits
    void Leave(Sleeper* pSleeper);    // nothing if it is not there
    void SilenceAll();                // every sleeper; at the end of the library

private:
    void WakeAll();

    std::mutex m_Mutex; // guards all that follows
    std::condition_variable m_Changed;
    int m_nQuestions = 0; // asked and waiting
    bool m_bAsking = false;
    Sleeper* m_pInside = nullptr;
    Sleeper* m_pSilencing = nullptr; // being silenced without the lock
    std::vector<Sleeper*> m_arySleepers;
};
