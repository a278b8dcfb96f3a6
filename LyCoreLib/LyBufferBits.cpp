// Looking into a buffer: the search for bytes, and single bits.

#include "LyBuffer.h"

#include <algorithm>
#include <climits>
#include <cstring>

int LyBuffer::Search(const unsigned char* pPattern, int nLength, int nStart, int nStep) const
{
    if (pPattern == nullptr || nLength < 1 || nStep < 1)
        return -1;
    const int nLast = m_nSize - nLength; // the last offset at which the pattern fits
    nStart = std::max(nStart, 0);
    for (long long n = nStart; n <= nLast; n += nStep)
    {
        const unsigned char* p = m_pData + n;
        if (nStep == 1)
        {
            p = static_cast<const unsigned char*>(std::memchr(p, pPattern[0], static_cast<size_t>(nLast - n + 1)));
            if (p == nullptr)
                return -1;
            n = p - m_pData;
        }
        if (p[0] == pPattern[0] && std::memcmp(p, pPattern, static_cast<size_t>(nLength)) == 0)
            return static_cast<int>(n);
    }
    return -1;
}

unsigned int LyBuffer::ReadBits(int nBitOffset, int nBits) const
{
    constexpr int MAX_BITS = 32;
    if (nBitOffset < 0 || nBits < 1)
        return 0;
    if (static_cast<long long>(nBitOffset) + nBits > static_cast<long long>(m_nSize) * CHAR_BIT)
        return 0;
    nBits = std::min(nBits, MAX_BITS);

    // At most five bytes hold 32 bits: they are joined, and what is not asked for goes at both ends.
    int nFirst = nBitOffset / CHAR_BIT;
    int nSkip = nBitOffset % CHAR_BIT;
    int nBytes = (nSkip + nBits + CHAR_BIT - 1) / CHAR_BIT;
    unsigned long long nValue = 0;
    for (int n = 0; n < nBytes; ++n)
        nValue = (nValue << CHAR_BIT) | m_pData[nFirst + n];
    nValue >>= nBytes * CHAR_BIT - nSkip - nBits;
    return static_cast<unsigned int>(nValue & ((1ULL << nBits) - 1));
}
