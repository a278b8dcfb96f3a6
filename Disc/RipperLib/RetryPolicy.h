// Whether a failed command is sent again: the decision alone, without a drive and without a clock.

#pragma once

#include "MMC.h"

// The story of one command. After each failed send, OnFailure says what to do; the caller sleeps PAUSE_MS before it
// sends again, with the time-out that is then in force.
//
//   ordinary commands                     two sends
//   unit attention                        up to five sends, from then on for this command
//   TEST UNIT READY, MODE SENSE(10)       one send: their failure is an answer
//   WRITE(10)                             up to ten sends; without limit while the drive's buffer is full, as long as
//   the
//                                         failures come within BUFFER_FULL_TIMEOUT_MS of the first
class RetryPolicy
{
public:
    enum VERDICT : int
    {
        SEND_AGAIN = 0,
        GIVE_UP = 1,
        TIMED_OUT = 2 // failures went on past the time-out; this one is not counted
    };

    // Short on purpose: a failed audio read is repeated at once, and the compared reads above do re-reading of their
    // own.
    static constexpr int PAUSE_MS = 20;
    static constexpr int DEFAULT_SENDS = 2;
    static constexpr int UNIT_ATTENTION_SENDS = 5;
    static constexpr int WRITE_SENDS = 10;
    static constexpr int BUFFER_FULL_TIMEOUT_MS = 300000;

    RetryPolicy(unsigned char nOpcode, int nTimeoutMs);

    VERDICT OnFailure(const unsigned char* pSense, unsigned int nNowMs); // pSense: SENSE_BYTES of it

    int GetTimeoutMs() const { return m_nTimeoutMs; }
    int GetTries() const { return m_nTries; }
    bool GetBufferFull() const { return m_bBufferFull; }

private:
    unsigned char m_nOpcode;
    int m_nTimeoutMs;
    int m_nLimit = DEFAULT_SENDS;         // sends allowed
    int m_nTries = 0;                     // failures counted
    unsigned int m_nFirstFailureTick = 0; // 0: none yet
    bool m_bBufferFull = false;           // what the last failure said of a WRITE(10)
};
