// The tools library's hold on the machine's power state: as long as an entry is held, the machine does not sleep.
//
// Ownership: the service belongs to the tools library; nobody destroys it through this interface. Who acquires an
//            entry releases it.
// Threads:   any. The service does its own locking.

#pragma once

// The order of the operations is their order in the virtual table: other libraries call them there.
class ISystemPowerManager
{
public:
    // Holds the machine awake under the given name. The result carries the entry as two halves of 32 bits, the first
    // one in the low bits; a first half of 0 means that there is nothing to release.
    virtual long long Acquire(const wchar_t* pName, int nMode, int nFlags) = 0;
    // Ends the hold; takes the two halves that Acquire gave.
    virtual void Release(int nFirstHalf, int nSecondHalf) = 0;

protected:
    ~ISystemPowerManager() = default;
};
