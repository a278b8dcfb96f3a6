#include "EncoderPCM.h"
#include <cstdint>

namespace
{
// The sample as the upper bits of a number, so that its sign is the number's.
template <int BYTES>
int32_t GetUpper(const unsigned char* p)
{
    uint32_t nValue = 0;
    for (int i = 0; i < BYTES; ++i)
        nValue |= static_cast<uint32_t>(p[i]) << (8 * (4 - BYTES + i));
    return static_cast<int32_t>(nValue);
}

template <int BYTES, class CONVERT, class SAMPLE>
void ForEach(const unsigned char* pData, size_t nSamples, SAMPLE* pSamples, CONVERT convert)
{
    for (size_t i = 0; i < nSamples; ++i)
        pSamples[i] = convert(GetUpper<BYTES>(pData + i * BYTES));
}

template <class CONVERT, class SAMPLE>
void Dispatch(const unsigned char* pData, size_t nSamples, int nBits, SAMPLE* pSamples, CONVERT convert)
{
    if (nBits == 16)
        ForEach<2>(pData, nSamples, pSamples, convert);
    else if (nBits == 24)
        ForEach<3>(pData, nSamples, pSamples, convert);
    else
        ForEach<4>(pData, nSamples, pSamples, convert);
}
} // namespace

void EncoderUnpack(const unsigned char* pData, size_t nSamples, int nBits, int* pSamples)
{
    Dispatch(pData, nSamples, nBits, pSamples, [nShift = 32 - nBits](int32_t nUpper) { return nUpper >> nShift; });
}

void EncoderUnpack(const unsigned char* pData, size_t nSamples, int nBits, float* pSamples)
{
    Dispatch(pData, nSamples, nBits, pSamples,
             [](int32_t nUpper) { return static_cast<float>(nUpper) * (1.0f / 2147483648.0f); });
}
