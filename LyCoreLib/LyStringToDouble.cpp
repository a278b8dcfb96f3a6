#include "LyString.h"
#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr wchar_t FIGURE_DASH = 0x2012;
constexpr unsigned long long MAX_VALUE = std::numeric_limits<unsigned long long>::max();
// An exponent may have an exponent. Nobody writes more than one; deeper ones end the number.
constexpr int MAX_EXPONENT_DEPTH = 16;
constexpr double MAX_POWER = 308.0; // 10 to this power is the largest that a double holds

// The largest power of ten that can be applied to anything; beyond twice this everything is 0 or infinite.
double TimesPowerOfTen(double fValue, double fPower)
{
    if (fValue == 0.0 || fPower == 0.0)
        return fValue;
    // Two steps reach from the largest numbers down to the smallest ones, and back. Dividing is exact where
    // multiplying by a negative power is not.
    double fFirst = std::clamp(fPower, -MAX_POWER, MAX_POWER);
    double fSecond = std::clamp(fPower - fFirst, -MAX_POWER, MAX_POWER);
    for (double f : {fFirst, fSecond})
        fValue = f < 0.0 ? fValue / std::pow(10.0, -f) : fValue * std::pow(10.0, f);
    return fValue;
}

class DecimalScanner
{
public:
    DecimalScanner(bool bAnySeparator, bool bAllowExponent, int nDepth)
        : m_bAnySeparator(bAnySeparator), m_bAllowExponent(bAllowExponent), m_nDepth(nDepth)
    {
    }

    // Reads up to nMaxChars characters; nPosition is the place reached.
    double Scan(const wchar_t* p, int nMaxChars, int& nPosition);

private:
    bool Take(wchar_t c); // false if the character ends the number
    void TakeDigit(unsigned int nDigit);
    bool TakeSeparator(wchar_t c);

    bool m_bAnySeparator;
    bool m_bAllowExponent;
    int m_nDepth;

    bool m_bNegative = false;
    bool m_bSeparatorSeen = false;
    bool m_bInFraction = false;
    unsigned long long m_nInteger = 0;
    unsigned long long m_nFraction = 0;
    unsigned long long m_nDivisor = 1;
    long long m_nDroppedDigits = 0; // of the integer part, behind those that 64 bits can hold
};

double DecimalScanner::Scan(const wchar_t* p, int nMaxChars, int& nPosition)
{
    nPosition = 0;
    double fPower = 0.0;
    for (; nPosition < nMaxChars && p[nPosition]; ++nPosition)
    {
        wchar_t c = p[nPosition];
        if ((c == L'e' || c == L'E') && m_bAllowExponent && m_nDepth < MAX_EXPONENT_DEPTH)
        {
            int nConsumed;
            int nBehind = nPosition + 1;
            fPower = DecimalScanner(true, true, m_nDepth + 1).Scan(p + nBehind, nMaxChars - nBehind, nConsumed);
            nPosition = nBehind + nConsumed;
            break;
        }
        if (!Take(c))
            break;
    }
    double fValue = static_cast<double>(m_nInteger);
    if (m_nDroppedDigits == 0)
        fValue += static_cast<double>(m_nFraction) / static_cast<double>(m_nDivisor);
    fValue = TimesPowerOfTen(fValue, std::trunc(fPower) + static_cast<double>(m_nDroppedDigits));
    return m_bNegative ? -fValue : fValue;
}

bool DecimalScanner::Take(wchar_t c)
{
    switch (c)
    {
    case L' ':
    case L'+':
        return true;
    case L'-':
    case FIGURE_DASH:
        m_bNegative = true;
        return true;
    case L',':
    case L'.':
        return TakeSeparator(c);
    default:
        if (c < L'0' || c > L'9')
            return false;
        TakeDigit(static_cast<unsigned int>(c - L'0'));
        return true;
    }
}

// Digits beyond what 64 bits hold change nothing that a double could show.
void DecimalScanner::TakeDigit(unsigned int nDigit)
{
    if (m_bInFraction)
    {
        if (m_nDivisor > MAX_VALUE / 10)
            return;
        m_nFraction = m_nFraction * 10 + nDigit;
        m_nDivisor *= 10;
    }
    else if (m_nDroppedDigits > 0 || m_nInteger > (MAX_VALUE - nDigit) / 10)
    {
        ++m_nDroppedDigits;
    }
    else
    {
        m_nInteger = m_nInteger * 10 + nDigit;
    }
}

// Deliberate: of a comma and a point only the first one counts. If it is not the decimal point, it groups digits, and
// the number ends at the next one.
bool DecimalScanner::TakeSeparator(wchar_t c)
{
    if (m_bSeparatorSeen)
        return false;
    m_bSeparatorSeen = true;
    m_bInFraction = m_bAnySeparator || c == LyString::GetDecimalPointCharacter();
    return true;
}
} // namespace

double LyString::GetDouble(const wchar_t* p, int* pnConsumed, bool bAnySeparator, int nMaxChars, bool bAllowExponent)
{
    int nPosition = 0;
    double fValue = 0.0;
    if (p && nMaxChars > 0)
        fValue = DecimalScanner(bAnySeparator, bAllowExponent, 0).Scan(p, nMaxChars, nPosition);
    if (pnConsumed)
        *pnConsumed = nPosition;
    return fValue;
}
