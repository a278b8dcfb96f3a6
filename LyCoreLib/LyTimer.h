// Time in milliseconds: the wrapping tick count, the sleep, and two timers.
//
// Threads: the functions any; a timer object one at a time.

#pragma once

// Milliseconds of the wall clock, wrapped to 32 bits. The difference of two of them, taken as signed, is the time
// passed, also across the wrap.
unsigned int GetTickCount();

// Sleeps once. A signal may end it early.
void Sleep(unsigned int nMS);

// A stop watch on the platform's steady clock. It runs from its construction.
// The order of the operations is their order in the virtual table.
class LyTimer
{
public:
    LyTimer();
    virtual void Reset();                             // starts again from now
    virtual double GetElapsedMS(bool bReset = false); // milliseconds since the start; bReset starts again from now
    virtual double NowAsMS();                         // milliseconds from a fixed moment in the past

protected:
    double m_fStartMS = 0.0;
    double m_fMSPerTick = 0.0; // milliseconds per tick of the platform's clock
};

// The stop watch that costs least, on the wall clock. It jumps where the wall clock is set.
class LyTimerLowPrecision : public LyTimer
{
public:
    LyTimerLowPrecision();
    double NowAsMS() override;
};
