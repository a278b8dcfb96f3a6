#include "ReportPacking.h"

namespace
{
constexpr char DIGITS[] = "0123456789abcdef";

int GetDigit(char ch)
{
    if (ch >= '0' && ch <= '9')
        return ch - '0';
    return ch >= 'a' && ch <= 'f' ? ch - 'a' + 10 : -1;
}
} // namespace

void RowPacker::AddBits(uint64_t nBits, size_t nBytes)
{
    char aryDigits[2 * sizeof nBits];
    for (size_t n = 0; n < 2 * nBytes; n += 2, nBits >>= 8)
    {
        aryDigits[n] = DIGITS[nBits >> 4 & 15];
        aryDigits[n + 1] = DIGITS[nBits & 15];
    }
    m_strText.append(aryDigits, 2 * nBytes);
}

uint64_t RowUnpacker::TakeBits(size_t nBytes)
{
    m_bGood = m_bGood && 2 * nBytes <= m_strText.size() - m_nPlace;
    uint64_t nBits = 0;
    for (size_t n = 0; n < nBytes && m_bGood; ++n, m_nPlace += 2)
    {
        const int nHigh = GetDigit(m_strText[m_nPlace]);
        const int nLow = GetDigit(m_strText[m_nPlace + 1]);
        m_bGood = nHigh >= 0 && nLow >= 0;
        if (m_bGood)
            nBits |= static_cast<uint64_t>(nHigh * 16 + nLow) << (8 * n);
    }
    return nBits;
}
