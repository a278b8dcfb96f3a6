// What every fuzz target does when something does not hold: it ends the program, which the fuzzer reports.

#pragma once

inline void Check(bool bHolds)
{
    if (!bHolds)
        __builtin_trap();
}
