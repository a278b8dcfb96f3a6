// What is known of the audio, as long as a file is open.

#include "WAVInfo.h"
#include <cmath>

namespace
{
constexpr long long NOT_KNOWN = -1;
constexpr int BITS_OF_BYTE = 8;
constexpr double MS_OF_SECOND = 1000.0;
constexpr double LARGEST_LENGTH_MS = 9.0e18; // what 64 bits hold for certain
} // namespace

long long CIFFInfo::GetBlockBits() const
{
    if (m_AudioFormat.nBlockAlign != 0)
        return m_AudioFormat.nBlockAlign * BITS_OF_BYTE;
    return static_cast<long long>(m_AudioFormat.nChannels) * m_AudioFormat.wBitsPerSample;
}

long long CIFFInfo::GetLengthMS()
{
    if (!m_bOpen || m_nDataBytes < 0)
        return NOT_KNOWN;
    // A rate of 0 divides by zero, which in floating point is no fault. What comes out is no number of milliseconds.
    const double fMS = static_cast<double>(m_nDataBytes) * MS_OF_SECOND / m_AudioFormat.nAvgBytesPerSec + 0.5;
    return std::isfinite(fMS) && fMS < LARGEST_LENGTH_MS ? static_cast<long long>(fMS) : NOT_KNOWN;
}

long long CIFFInfo::GetTotalBlocks()
{
    const long long nBlockBits = GetBlockBits();
    long long nBits = 0;
    if (!m_bOpen || m_nDataBytes < 0 || nBlockBits == 0 || __builtin_mul_overflow(m_nDataBytes, BITS_OF_BYTE, &nBits))
        return NOT_KNOWN;
    return nBits / nBlockBits;
}

long long CIFFInfo::GetTotalSamples()
{
    const int nSampleBytes = m_AudioFormat.wBitsPerSample / BITS_OF_BYTE;
    if (!m_bOpen || m_nDataBytes < 0 || nSampleBytes == 0 || m_AudioFormat.nChannels == 0)
        return NOT_KNOWN;
    const long long nSamples = m_nDataBytes / nSampleBytes;
    return nSamples - nSamples % m_AudioFormat.nChannels;
}

long long CIFFInfo::GetSampleRate() { return m_bOpen ? m_AudioFormat.nSamplesPerSec : NOT_KNOWN; }

int CIFFInfo::GetBitsPerSample() { return m_bOpen ? m_AudioFormat.wValidBitsPerSample : static_cast<int>(NOT_KNOWN); }

int CIFFInfo::GetBytesPerSample()
{
    return m_bOpen ? m_AudioFormat.wBitsPerSample / BITS_OF_BYTE : static_cast<int>(NOT_KNOWN);
}

int CIFFInfo::GetChannels() { return m_bOpen ? m_AudioFormat.nChannels : static_cast<int>(NOT_KNOWN); }

long long CIFFInfo::GetAverageBytesPerSecond() { return m_bOpen ? m_AudioFormat.nAvgBytesPerSec : NOT_KNOWN; }

int CIFFInfo::GetFormatID() { return m_bOpen ? m_AudioFormat.wFormatTag : static_cast<int>(NOT_KNOWN); }

int CIFFInfo::GetBlockAlign() { return m_bOpen ? m_AudioFormat.nBlockAlign : static_cast<int>(NOT_KNOWN); }

long long CIFFInfo::GetDataBytes() { return m_bOpen ? m_nDataBytes : NOT_KNOWN; }

long long CIFFInfo::GetTotalBytes() { return m_bOpen ? m_nTotalBytes : NOT_KNOWN; }

long long CIFFInfo::GetHeaderBytes() { return m_bOpen ? m_nHeaderBytes : NOT_KNOWN; }
