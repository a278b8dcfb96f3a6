// What differs from platform to platform: one header, and one source file for each platform beside it.
//
// Threads: any, unless an operation says otherwise.

#pragma once

#include <pthread.h>

namespace LyPlatform
{
// ---- Clock
// A tick of the steady clock lasts nNumerator / nDenominator nanoseconds.
struct TIMEBASE
{
    unsigned int nNumerator;
    unsigned int nDenominator;
};
unsigned long long GetClockTicks();
TIMEBASE GetClockTimebase();

// ---- Threads. Priorities run from -15 to 15, the highest, which means real time.
inline constexpr int LOWEST_PRIORITY = -15;
inline constexpr int REAL_TIME_PRIORITY = 15;

// The place of nPriority in the range of a scheduling policy: both ranges from end to end, truncated.
constexpr int GetSchedulingParameter(int nPriority, int nPolicyMin, int nPolicyMax)
{
    double fStep = (nPolicyMax - nPolicyMin) / double(REAL_TIME_PRIORITY - LOWEST_PRIORITY);
    return static_cast<int>((nPriority - LOWEST_PRIORITY) * fStep) + nPolicyMin;
}

void SetThreadAttributePriority(pthread_attr_t* pAttributes, int nPriority); // 0 leaves them alone

// For a thread just created, before it works. Best effort: without the privilege nothing changes.
void SetStartedThreadPriority(pthread_t hThread, int nPriority);

int GetProcessId();

// When this process began, in seconds since 1970 by the clock of the files; 0 if that cannot be told.
double GetProcessStartSeconds();
pthread_t GetThreadId();

// Keeps the library that calls this loaded until the calling thread has ended, whatever its owner does meanwhile. The
// C++ run-time holds a library as long as something of a thread in it waits to be destroyed, and that comes after the
// last line of the thread's code.
void HoldLibraryUntilThreadEnds();

// A pool for the platform's automatically released objects, for the length of a thread. Null where there is none.
void* BeginAutoreleasePool();
void EndAutoreleasePool(void* pPool);

// The event loop of a full application; returns when the application ends. At once where the platform has none.
void RunApplicationLoop();

// ---- Processor: the four registers of a CPUID leaf. False if the processor has no such leaf, or no CPUID.
struct CPUID_REGISTERS
{
    unsigned int nEAX;
    unsigned int nEBX;
    unsigned int nECX;
    unsigned int nEDX;
};
bool GetCPUID(unsigned int nLeaf, CPUID_REGISTERS& registers);

// ---- Places
// The path of the running program, UTF-8 with a terminator. False, and an empty text, if it does not fit.
bool GetExecutablePath(char* pBuffer, int nBufferBytes);

// Whether the descriptor is the only one that any process has of its file: nobody writes or reads it. False, too, where
// the system does not tell, or not to this user.
bool IsOpenedOnce(int nDescriptor);

// The user's folder as the environment tells it (HOME), or null. Not to be freed.
const char* GetHomeDirectory();
} // namespace LyPlatform
