// How the processor's answers become LyCpu's flags, apart from asking it. For LyCpu and its test.

#pragma once

#include "LyPlatform.h"

namespace LyCpuDetails
{
// From CPUID leaves 1 and 0x80000001; a leaf that the processor does not have is all zero.
unsigned int GetFeatureFlags(const LyPlatform::CPUID_REGISTERS& leaf1, const LyPlatform::CPUID_REGISTERS& extended);

// From CPUID leaves 0 (the vendor) and 1 (family and model).
bool IsIntelAtom(const LyPlatform::CPUID_REGISTERS& leaf0, const LyPlatform::CPUID_REGISTERS& leaf1);
} // namespace LyCpuDetails
