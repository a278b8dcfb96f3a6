#include "LyCpuDetails.h"
#include "LyDateTime.h"
#include "LyTimer.h"

#include <cstdlib>

using LyPlatform::CPUID_REGISTERS;

namespace
{
constexpr unsigned int LEAF_VENDOR = 0;
constexpr unsigned int LEAF_FEATURES = 1;
constexpr unsigned int LEAF_EXTENDED_FEATURES = 0x80000001;

CPUID_REGISTERS GetLeaf(unsigned int nLeaf)
{
    CPUID_REGISTERS registers;
    if (!LyPlatform::GetCPUID(nLeaf, registers))
        registers = {};
    return registers;
}
} // namespace

unsigned int LyCpuDetails::GetFeatureFlags(const CPUID_REGISTERS& leaf1, const CPUID_REGISTERS& extended)
{
    struct FEATURE
    {
        unsigned int nRegister;
        int nBit;
        unsigned int nFlag;
    };
    const FEATURE aryFeatures[] = {
        {leaf1.nEDX, 23, LyCpu::MMX},   {leaf1.nEDX, 25, LyCpu::SSE},     {leaf1.nEDX, 26, LyCpu::SSE2},
        {leaf1.nECX, 0, LyCpu::SSE3},   {leaf1.nECX, 9, LyCpu::SSSE3},    {leaf1.nECX, 19, LyCpu::SSE41},
        {leaf1.nECX, 20, LyCpu::SSE42}, {extended.nECX, 6, LyCpu::SSE4A}, {extended.nEDX, 29, LyCpu::BITS64},
    };
    unsigned int nFlags = 0;
    for (const FEATURE& feature : aryFeatures)
    {
        if (feature.nRegister >> feature.nBit & 1)
            nFlags |= feature.nFlag;
    }
    return nFlags;
}

bool LyCpuDetails::IsIntelAtom(const CPUID_REGISTERS& leaf0, const CPUID_REGISTERS& leaf1)
{
    // Deliberate: four letters of "GenuineIntel" are enough, no other vendor begins with them.
    constexpr unsigned int VENDOR_GENU = 0x756e6547; // "Genu", first letter in the low byte
    constexpr unsigned int FAMILY = 6;
    constexpr unsigned int MODEL_ATOM = 0x1C;
    constexpr unsigned int MODEL_ATOM_Z6 = 0x26;
    unsigned int nFamily = leaf1.nEAX >> 8 & 0xF;
    unsigned int nModel = (leaf1.nEAX >> 4 & 0xF) | (leaf1.nEAX >> 16 & 0xF) << 4;
    return leaf0.nEBX == VENDOR_GENU && nFamily == FAMILY && (nModel == MODEL_ATOM || nModel == MODEL_ATOM_Z6);
}

std::atomic<unsigned int> LyCpu::s_nFlags{0};

unsigned int LyCpu::GetFlags()
{
    unsigned int nFlags = s_nFlags.load(std::memory_order_relaxed);
    if (nFlags & VALID)
        return nFlags;
    // Two threads may both come here first: they find the same.
    nFlags = VALID | LyCpuDetails::GetFeatureFlags(GetLeaf(LEAF_FEATURES), GetLeaf(LEAF_EXTENDED_FEATURES));
    if (InternalGetIsIntelAtomProcessor())
        nFlags |= INTEL_ATOM;
    s_nFlags.store(nFlags, std::memory_order_relaxed);
    return nFlags;
}

bool LyCpu::InternalGetIsIntelAtomProcessor()
{
    return LyCpuDetails::IsIntelAtom(GetLeaf(LEAF_VENDOR), GetLeaf(LEAF_FEATURES));
}

void LyMath::SeedRandomNumberGenerator()
{
    static std::atomic<unsigned int> s_nCalls{0};
    std::srand(GetTickCount() + s_nCalls++);
}
