// Where fake siblings write down what happens to them, so that a test sees the order across libraries. The test hands
// its recorder over as the module handle (CProcessInfo::s_hInstance), which every sibling's "Attach" is given, and to
// the fake tools library as its context value.

#pragma once

class IFakeEvents
{
public:
    virtual void Record(const char* pEvent) = 0;

protected:
    ~IFakeEvents() = default;
};
