#include "ConvertToFloatFilter.h"

#include <algorithm>

namespace
{
constexpr double FULL_SCALE_16_BIT = 32768; // a power of two: the quotient is exact, and so is the product below
constexpr int LANES = 8;

const CSampleConverter s_Converter;
} // namespace

void CSampleConverter::Convert16Bit(const void* pSource, double* pDestination, int nSamples) const
{
    const short* pSamples = static_cast<const short*>(pSource);
    int i = 0;
    // Groups of a known size become vector code.
    for (; i <= nSamples - LANES; i += LANES)
    {
        for (int nLane = 0; nLane < LANES; ++nLane)
            pDestination[i + nLane] = pSamples[i + nLane] * (1 / FULL_SCALE_16_BIT);
    }
    for (; i < nSamples; ++i)
        pDestination[i] = pSamples[i] * (1 / FULL_SCALE_16_BIT);
}

void CConvertToFloatFilter::Bind(const CSampleConverter* pObject, CONVERSION pFunction)
{
    m_pObject = pObject;
    m_pFunction = pFunction;
}

void CConvertToFloatFilter::BindTo16Bit() { Bind(&s_Converter, &CSampleConverter::Convert16Bit); }

bool CConvertToFloatFilter::operator()(const void* pSource, double* pDestination, int nSamples) const
{
    if (pDestination == nullptr || nSamples < 1)
        return IsBound();
    if (!IsBound() || pSource == nullptr)
    {
        std::fill_n(pDestination, nSamples, 0.0);
        return false;
    }
    (m_pObject->*m_pFunction)(pSource, pDestination, nSamples);
    return true;
}
