#include "IIRFilter.h"
#include <cmath>
#include <utility>

// A pointer to the virtual table, two 32-bit numbers, and then doubles without a gap.
static_assert(sizeof(CIIRFilter) ==
              sizeof(void*) + 2 * sizeof(int) + (CIIRFilter::COEFFICIENTS + CIIRFilter::STATES) * sizeof(double));

namespace
{
constexpr int FORM0_COEFFICIENTS = 5; // of a section
constexpr int FORM1_COEFFICIENTS = 4;

double Flush(double fValue) { return std::fabs(fValue) < CIIRFilter::FLUSH_BELOW ? 0.0 : fValue; }

void Push(double* pHistory, double fNewest)
{
    pHistory[1] = pHistory[0];
    pHistory[0] = fNewest;
}

// Section k in direct form I. A section's outputs are the next one's inputs, so the histories are shared: that of the
// inputs moves up here, that of the outputs in the next section.
template <int k>
double Form0Section(const double* pCoef, double* pState, double fInput)
{
    const double* c = pCoef + 1 + FORM0_COEFFICIENTS * k;
    double* in = pState + 2 * k;
    const double* out = in + 2;
    const double fOutput = Flush(c[0] * fInput + c[1] * in[0] + c[2] * in[1] - c[3] * out[0] - c[4] * out[1]);
    Push(in, fInput);
    return fOutput;
}

template <int k>
double Form1Section(const double* pCoef, double* pState, double fInput)
{
    const double* c = pCoef + 1 + FORM1_COEFFICIENTS * k;
    double* s = pState + 2 * k;
    const double fInner = Flush(fInput - c[0] * s[0] - c[1] * s[1]);
    const double fOutput = fInner + c[2] * s[0] + c[3] * s[1];
    Push(s, fInner);
    return fOutput;
}

// The sections one behind the other, written out by the compiler for each size.
template <int... k>
double Form0(std::integer_sequence<int, k...>, const double* pCoef, double* pState, double fValue)
{
    ((fValue = Form0Section<k>(pCoef, pState, fValue)), ...);
    Push(pState + 2 * sizeof...(k), fValue);
    return fValue;
}

template <int... k>
double Form1(std::integer_sequence<int, k...>, const double* pCoef, double* pState, double fValue)
{
    ((fValue = Form1Section<k>(pCoef, pState, fValue)), ...);
    return fValue;
}

template <int nSections>
using Sections = std::make_integer_sequence<int, nSections>;
} // namespace

double CIIRFilter::Filter(double fSample) { return m_nForm == 0 ? FilterForm0(fSample) : FilterForm1(fSample); }

double CIIRFilter::FilterForm0(double fSample)
{
    switch (m_nSections)
    {
    case 1:
        return Form0(Sections<1>(), m_Coef, m_State, fSample);
    case 2:
        return Form0(Sections<2>(), m_Coef, m_State, fSample);
    case 4:
        return Form0(Sections<4>(), m_Coef, m_State, fSample);
    default:
        // Deliberate: there is no direct form I of three sections, and there will be none. Filters that are set up so
        // only scale, as they always did.
        return m_Coef[0] * fSample;
    }
}

double CIIRFilter::FilterForm1(double fSample)
{
    const double fScaled = m_Coef[0] * fSample;
    switch (m_nSections)
    {
    case 1:
        return Form1(Sections<1>(), m_Coef, m_State, fScaled);
    case 2:
        return Form1(Sections<2>(), m_Coef, m_State, fScaled);
    case 3:
        return Form1(Sections<3>(), m_Coef, m_State, fScaled);
    case 4:
        return Form1(Sections<4>(), m_Coef, m_State, fScaled);
    default:
        return fScaled;
    }
}
