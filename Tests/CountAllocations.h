#pragma once

// Counts what a test program allocates by new, in every form, on any thread.

namespace CountAllocations
{
// How often the program allocated since it began.
long long GetCount();
} // namespace CountAllocations
