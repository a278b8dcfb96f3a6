#include "LowPassFilter.h"
#include "LowPassRun.h"
#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <numbers>

// A pointer to the virtual table and 17 numbers of 32 bits, and what fills up to the pointer's alignment.
static_assert(sizeof(CLowPassFilter) == sizeof(void*) + 18 * sizeof(float));

namespace
{
// The index before, around the ring.
constexpr int Before(int nIndex) { return nIndex == 0 ? CLowPassFilter::RING - 1 : nIndex - 1; }

bool IsZero(float f) { return std::bit_cast<unsigned int>(f) == 0; }

// The smallest numbers of all: up to 2^24 of them, a float is a whole number of units of 2^-149, and below 2^23 its
// bits are that number.
constexpr unsigned int SIGN_BIT = 1U << 31;
constexpr unsigned int SILENT_UNITS = 1U << 10; // what a filter may still hold to be silent
constexpr double MAX_UNITS = 1 << 20;

double ToUnits(float f)
{
    const unsigned int nBits = std::bit_cast<unsigned int>(f);
    const double fUnits = static_cast<double>(nBits & ~SIGN_BIT);
    return (nBits & SIGN_BIT) != 0 ? -fUnits : fUnits;
}

float FromUnits(double fUnits)
{
    const unsigned int nUnits = static_cast<unsigned int>(std::fabs(fUnits));
    return std::bit_cast<float>(fUnits < 0 ? nUnits | SIGN_BIT : nUnits);
}

// To a whole number, half to even: adding this number leaves no room for a fraction.
double RoundUnits(double fUnits)
{
    constexpr double NO_FRACTION = 6755399441055744.0; // 1.5 * 2^52
    return (fUnits + NO_FRACTION) - NO_FRACTION;
}
} // namespace

bool CLowPassFilter::SetUp(float fSampleRate, float fCutOff)
{
    if (!(fCutOff > 0) || !(fCutOff < fSampleRate / 2) || !(m_fQ > 0))
        return false;
    const double fAngle = 2 * std::numbers::pi * static_cast<double>(fCutOff) / static_cast<double>(fSampleRate);
    const double fAlpha = std::sin(fAngle) / (2 * static_cast<double>(m_fQ));
    const double fA0 = 1 + fAlpha;
    b0 = static_cast<float>((1 - std::cos(fAngle)) / 2 / fA0);
    b1 = static_cast<float>((1 - std::cos(fAngle)) / fA0);
    b2 = b0;
    a1 = static_cast<float>(-2 * std::cos(fAngle) / fA0);
    a2 = static_cast<float>((1 - fAlpha) / fA0);
    std::fill(std::begin(m_X), std::end(m_X), 0.0F);
    std::fill(std::begin(m_Y), std::end(m_Y), 0.0F);
    m_fSampleRate = fSampleRate;
    m_fCutOff = fCutOff;
    m_nIndex = m_nIndexBefore = m_nIndexBefore2 = 0;
    return true;
}

float CLowPassFilter::FilterCapAs16BitInteger(float fSample)
{
    if (m_nIndex < 0 || m_nIndex >= RING)
        m_nIndex = 0;
    const int i = m_nIndex;
    m_nIndexBefore = Before(i);
    m_nIndexBefore2 = Before(m_nIndexBefore);
    m_X[i] = fSample;
    const float fOutput = b0 * m_X[i] + b1 * m_X[m_nIndexBefore] + b2 * m_X[m_nIndexBefore2] -
                          a1 * m_Y[m_nIndexBefore] - a2 * m_Y[m_nIndexBefore2];
    m_Y[i] = LowPassRun::Limit(fOutput);
    m_nIndex = i == RING - 1 ? 0 : i + 1;
    return m_Y[m_nIndex];
}

bool CLowPassFilter::IsSilent() const
{
    for (int i = 0; i < RING; ++i)
    {
        if (!IsZero(m_X[i]) || (std::bit_cast<unsigned int>(m_Y[i]) & ~SIGN_BIT) >= SILENT_UNITS)
            return false;
    }
    return IsZero(b0 * m_X[0] + b1 * m_X[0] + b2 * m_X[0]);
}

// Samples of silence after silence. Fading out, the outputs come to circle for ever among the smallest denormal
// numbers, with which each product costs thirty times its time. In their units the same arithmetic is exact in doubles:
// a product of a float and a small whole number, rounded to a whole number, and differences of those. Returns how many
// samples it took: fewer than nSamples only if the outputs grow.
int CLowPassFilter::FilterSilence(float* pOutput, int nSamples)
{
    const double fA1 = static_cast<double>(a1), fA2 = static_cast<double>(a2);
    int nIndex = m_nIndex;
    double fBefore = ToUnits(m_Y[Before(nIndex)]);
    double fBefore2 = ToUnits(m_Y[Before(Before(nIndex))]);
    int n = 0;
    for (; n < nSamples; ++n)
    {
        const double fUnits = 0.0 - RoundUnits(fA1 * fBefore) - RoundUnits(fA2 * fBefore2);
        if (!(std::fabs(fUnits) < MAX_UNITS))
            break;
        pOutput[n] = FromUnits(fBefore2);
        m_Y[nIndex] = FromUnits(fUnits);
        fBefore2 = fBefore;
        fBefore = fUnits;
        nIndex = nIndex == RING - 1 ? 0 : nIndex + 1;
    }
    if (n > 0)
    {
        m_nIndex = nIndex;
        m_nIndexBefore = Before(Before(nIndex));
        m_nIndexBefore2 = Before(m_nIndexBefore);
    }
    return n;
}

bool CLowPassFilter::IsSilentWith(const float* pSamples, int nSamples)
{
    if (m_nIndex < 0 || m_nIndex >= RING)
        m_nIndex = 0;
    return IsSilent() && std::all_of(pSamples, pSamples + nSamples, IsZero);
}

bool CLowPassFilter::FilterBlock(const float* pSamples, float* pOutput, int nSamples)
{
    if (nSamples < 1)
        return false;
    const int nDone = IsSilentWith(pSamples, nSamples) ? FilterSilence(pOutput, nSamples) : 0;
    if (nDone == nSamples)
        return true;
    LowPassRun run(*this);
    for (int i = nDone; i < nSamples; ++i)
        pOutput[i] = run.Add(pSamples[i]);
    run.Store(*this, nSamples - nDone);
    return false;
}
