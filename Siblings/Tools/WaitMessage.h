// A wait message on the terminal: a line on the standard error stream that says what takes its time, and how far it is.
//
//   Reading 'track.wav'  (3 MB of 12 MB)  25%  (Esc cancels)
//
// It appears when its delay is over. With a cancel button, Esc or q on the controlling terminal cancels: GetCancelled
// is true from then on, the line goes, and the callback is told, once, on the message's own thread. Where the standard
// error stream is no terminal nothing is shown, and nothing is ever cancelled.
// Owner:   whoever asked for it, until Close, which ends the object. A delivery to the callback is waited for.
// Threads: SetProgress and GetCancelled from any, Close from the owner, also from within the callback.
// Cost:    one thread, which sleeps until there is something to do, where there is a terminal; none elsewhere.
//          SetProgress only stores; the line is drawn ten times a second at most.

#pragma once

#include "ILyMessageBox.h"
#include "Terminal.h"
#include "TerminalTurns.h"
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

class WaitMessage final : public ILyWaitMessage, private TerminalTurns::Sleeper
{
public:
    // Null if there is no memory or no thread. strCancelHint is the translated text behind the line.
    static WaitMessage* Create(const wchar_t* pText, int nDelayMS, bool bCancelButton,
                               ILyWaitMessageCallback* pCallback, std::shared_ptr<TerminalTurns> pTurns,
                               std::wstring strCancelHint);

    bool GetCancelled() override { return m_bCancelled.load(std::memory_order_acquire); }
    // A null text leaves the text as it is. A percentage below 0 is not known, one above 100 is 100.
    void SetProgress(const wchar_t* pText, const wchar_t* pSecondText, int nPercent) override;
    void Close() override;

private:
    using CLOCK = std::chrono::steady_clock;

    WaitMessage(ILyWaitMessageCallback* pCallback, std::shared_ptr<TerminalTurns> pTurns, bool bCancelButton);
    ~WaitMessage();

    void Wake() override;
    void Silence() override;
    bool Start(int nDelayMS);
    void Run(int nDelayMS);
    void ShowUntilEnd();
    void Enter();
    void Leave();
    int GetSleepMS();
    void SleepUntilWoken(int nMS);
    bool ReadCancelKey();
    void Cancel();
    void Draw();
    std::string BuildLine(int& nColumns);

    ILyWaitMessageCallback* const m_pCallback;
    const std::shared_ptr<TerminalTurns> m_pTurns;
    const bool m_bCancelButton;
    std::wstring m_strCancelHint;
    std::thread m_Thread;
    int m_aryWakePipe[2] = {-1, -1}; // a byte in it wakes the thread
    std::atomic<bool> m_bCancelled{false};
    std::atomic<bool> m_bEnd{false};
    bool m_bDeleteAtEnd = false; // closed from within the callback; the message's thread alone reads and writes it

    std::mutex m_Mutex; // guards what is to be shown:
    std::wstring m_strText;
    std::wstring m_strSecondText;
    int m_nPercent = -1;
    bool m_bDirty = true;    // not drawn yet
    bool m_bVisible = false; // the thread wants to hear of changes

    // The thread's own.
    Terminal m_Keys;
    bool m_bInside = false;
    int m_nDrawnColumns = 0;
    CLOCK::time_point m_LastDrawn;
};
