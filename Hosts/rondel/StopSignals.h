// While an object lives, Ctrl-C, SIGTERM and SIGHUP ask for an end instead of ending the program. Said once more, half
// a second later or more, while a drive does not answer, they end it after all, as they would have done before. One
// that is ignored (by nohup) stays so. A file that grows too large, and a reader that goes away, are errors of the
// write and no signals; these two stay so behind the object's end, when what is still to be said may be said to nobody.
//
// Threads: one object at a time.

#pragma once

class StopSignals
{
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    bool GetStopWanted() const;
};
