#include "LyCpuDetails.h"
#include "LyDateTime.h"
#include "LyTimer.h"
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace
{
std::vector<unsigned int> g_arySeeds;

struct FEATURE_CASE
{
    const char* pName;
    LyPlatform::CPUID_REGISTERS leaf1;
    LyPlatform::CPUID_REGISTERS extended;
    unsigned int nFlags;
};

constexpr unsigned int BIT(int n) { return 1u << n; }
constexpr LyPlatform::CPUID_REGISTERS NONE = {0, 0, 0, 0};
constexpr LyPlatform::CPUID_REGISTERS ALL = {~0u, ~0u, ~0u, ~0u};

const FEATURE_CASE s_aryFeatureCases[] = {
    {"Nothing", NONE, NONE, 0},
    {"MMX", {0, 0, 0, BIT(23)}, NONE, 2},
    {"SSE", {0, 0, 0, BIT(25)}, NONE, 4},
    {"SSE2", {0, 0, 0, BIT(26)}, NONE, 8},
    {"SSE3", {0, 0, BIT(0), 0}, NONE, 16},
    {"SSSE3", {0, 0, BIT(9), 0}, NONE, 32},
    {"SSE4.1", {0, 0, BIT(19), 0}, NONE, 128},
    {"SSE4.2", {0, 0, BIT(20), 0}, NONE, 256},
    {"SSE4a", NONE, {0, 0, BIT(6), 0}, 64},
    {"64 bit", NONE, {0, 0, 0, BIT(29)}, 1024},
    {"Everything", ALL, ALL, 2 + 4 + 8 + 16 + 32 + 64 + 128 + 256 + 1024},
    {"Everything of leaf 1", ALL, NONE, 2 + 4 + 8 + 16 + 32 + 128 + 256},
    {"Only the other registers", {~0u, ~0u, 0, 0}, {~0u, ~0u, 0, 0}, 0},
};

constexpr unsigned int GENU = 0x756e6547; // "Genu"
constexpr unsigned int AUTH = 0x68747541; // "Auth"

struct ATOM_CASE
{
    const char* pName;
    unsigned int nVendor;
    unsigned int nVersion; // EAX of leaf 1: extended model in bits 16 to 19, family 8 to 11, model 4 to 7
    bool bAtom;
};

const ATOM_CASE s_aryAtomCases[] = {
    {"Model0x1C", GENU, 0x000106C2, true},    {"Model0x26", GENU, 0x00020661, true},
    {"OtherVendor", AUTH, 0x000106C2, false}, {"OtherFamily", GENU, 0x000105C2, false},
    {"Model0x0C", GENU, 0x000006C2, false},   {"Model0x1D", GENU, 0x000106D2, false},
    {"Model0x06", GENU, 0x00000661, false},   {"Nothing", 0, 0, false},
};
} // namespace

// Takes the place of the C library's, so that the tests see the seeds.
extern "C" void srand(unsigned int nSeed) noexcept { g_arySeeds.push_back(nSeed); }

TEST(LyCpu, EachFeatureHasItsFlag)
{
    for (const FEATURE_CASE& c : s_aryFeatureCases)
        EXPECT_EQ(LyCpuDetails::GetFeatureFlags(c.leaf1, c.extended), c.nFlags) << c.pName;
}

TEST(LyCpu, AtomIsKnownByVendorFamilyAndModel)
{
    for (const ATOM_CASE& c : s_aryAtomCases)
        EXPECT_EQ(LyCpuDetails::IsIntelAtom({0, c.nVendor, 0, 0}, {c.nVersion, 0, 0, 0}), c.bAtom) << c.pName;
}

TEST(LyCpu, FlagsOfThisProcessorAreValidAndStay)
{
    unsigned int nFlags = LyCpu::GetFlags();
    EXPECT_EQ(nFlags & 1, 1u);
    EXPECT_EQ(LyCpu::GetFlags(), nFlags);
    EXPECT_EQ((nFlags & 0x10000) != 0, LyCpu::InternalGetIsIntelAtomProcessor());
    LyPlatform::CPUID_REGISTERS registers;
    if (LyPlatform::GetCPUID(1, registers))
        EXPECT_EQ((nFlags & 8) != 0, (registers.nEDX >> 26 & 1) != 0);
    else
        EXPECT_EQ(nFlags, 1u);
}

TEST(LyCpu, LeafBeyondTheLastIsRefused)
{
    LyPlatform::CPUID_REGISTERS registers;
    EXPECT_FALSE(LyPlatform::GetCPUID(0x7fffffff, registers));
    EXPECT_EQ(registers.nEAX | registers.nEBX | registers.nECX | registers.nEDX, 0u);
}

TEST(LyMath, SeedIsTheTickCountPlusTheNumberOfCallsBefore)
{
    g_arySeeds.clear();
    unsigned int nBefore = GetTickCount();
    for (int n = 0; n < 3; ++n)
        LyMath::SeedRandomNumberGenerator();
    unsigned int nAfter = GetTickCount();
    ASSERT_EQ(g_arySeeds.size(), 3u);
    for (unsigned int n = 0; n < 3; ++n)
    {
        EXPECT_GE(static_cast<int>(g_arySeeds[n] - n - nBefore), 0);
        EXPECT_LE(static_cast<int>(g_arySeeds[n] - n - nAfter), 0);
    }
}

TEST(LyDateTime, HoldsItsValue)
{
    EXPECT_EQ(LyDateTime().GetValue(), 0.0);
    EXPECT_EQ(LyDateTime(40178.5).GetValue(), 40178.5);
}

TEST(LyPlatform, ExecutablePathEndsInTheProgramsName)
{
    char aryPath[1024];
    ASSERT_TRUE(LyPlatform::GetExecutablePath(aryPath, sizeof aryPath));
    EXPECT_EQ(aryPath[0], '/');
    EXPECT_STREQ(strrchr(aryPath, '/'), "/TestLyCpu");
}

TEST(LyPlatform, ExecutablePathThatDoesNotFitIsEmpty)
{
    char aryPath[4] = "abc";
    EXPECT_FALSE(LyPlatform::GetExecutablePath(aryPath, sizeof aryPath));
    EXPECT_STREQ(aryPath, "");
    EXPECT_FALSE(LyPlatform::GetExecutablePath(nullptr, 100));
    EXPECT_FALSE(LyPlatform::GetExecutablePath(aryPath, 0));
}
