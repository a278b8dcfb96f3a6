// Date and time, what the processor can do, and the random generator's seed.

#pragma once

#include <atomic>

// A date and time as one number: days, with the time of day behind the point, counted so that 2.0 is 1 January 1900.
// 0.0 means no date.
class LyDateTime
{
public:
    LyDateTime(double fValue = 0.0) : m_fValue(fValue) {}

    double GetValue() const { return m_fValue; }

private:
    double m_fValue;
};
static_assert(sizeof(LyDateTime) == sizeof(double));

// What the processor can do, as CPUID tells it (Intel 64 and IA-32 Architectures Software Developer's Manual, volume
// 2A, and AMD64 Architecture Programmer's Manual, volume 3, for the extended leaf). Other processors have no flags but
// VALID.
// Threads: any.
class LyCpu
{
public:
    enum FLAGS : unsigned int
    {
        VALID = 1, // the flags have been found out
        MMX = 2,
        SSE = 4,
        SSE2 = 8,
        SSE3 = 16,
        SSSE3 = 32,
        SSE4A = 64,
        SSE41 = 128,
        SSE42 = 256,
        BITS64 = 1024,
        INTEL_ATOM = 0x10000
    };

    static unsigned int GetFlags(); // found out at the first call
    static bool InternalGetIsIntelAtomProcessor();

private:
    static std::atomic<unsigned int> s_nFlags;
};

class LyMath
{
public:
    // Seeds rand() from the tick count. Two calls in one tick give different seeds.
    static void SeedRandomNumberGenerator();
};
