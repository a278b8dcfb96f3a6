#include "WAVCreator.h"
#include "LySharedToolsHelper.h"
#include <cstring>
#include <utility>

namespace
{
constexpr int FORMAT_CHUNK_BYTES = 16;
constexpr int BITS_16 = 16;
constexpr int BITS_24 = 24;
constexpr unsigned short NO_TAG = 0;
constexpr unsigned int LENGTH_OF_A_STREAM = 0xFFFFFFFF; // read to the end

// The tag that a header without extension can say.
unsigned short GetPlainTag(const CAudioFormat& format)
{
    if (format.wFormatTag != WAVE_TAG_EXTENSIBLE)
        return format.wFormatTag;
    const unsigned int nTag = format.SubFormat.Data1; // the first number of a sub-format is its tag
    return nTag < WAVE_TAG_EXTENSIBLE ? static_cast<unsigned short>(nTag) : NO_TAG;
}

bool CanBeWritten(const CAudioFormat& format)
{
    return GetPlainTag(format) != NO_TAG && format.nChannels > 0 && format.nSamplesPerSec > 0 && format.nBlockAlign > 0;
}

// Puts little-endian numbers and four-letter names one behind the other.
class HeaderWriter
{
public:
    void Name(const char* p)
    {
        std::memcpy(m_aryBytes + m_nBytes, p, 4);
        m_nBytes += 4;
    }
    void Number(unsigned int n, int nWidth)
    {
        for (int i = 0; i < nWidth; ++i, n >>= 8)
            m_aryBytes[m_nBytes++] = static_cast<unsigned char>(n);
    }
    unsigned char m_aryBytes[CWAVCreator::HEADER_BYTES];
    int m_nBytes = 0;
};
} // namespace

CWAVCreator::~CWAVCreator()
{
    if (m_bOpen)
        (void)FinalizeWAV();
}

bool CWAVCreator::Open(const wchar_t* pPath, const CAudioFormat& format, bool bSwapBytes, long long nDataBytes)
{
    (void)FinalizeWAV(); // the old file may be the new one
    return Open(CreateGenericReader(pPath), true, format, bSwapBytes, nDataBytes);
}

bool CWAVCreator::Open(ILyReader* pWriter, bool bOwned, const CAudioFormat& format, bool bSwapBytes,
                       long long nDataBytes)
{
    (void)FinalizeWAV();
    m_pWriter.Set(pWriter, bOwned, false);
    m_Format = format;
    m_bSwapBytes = bSwapBytes;
    m_nDataBytes = 0;
    if (pWriter != nullptr && CanBeWritten(format) && nDataBytes <= MAX_DATA_BYTES)
    {
        if (pWriter->GetIsOpen() || pWriter->Create())
        {
            m_bWriteSizes = !pWriter->GetIsStream();
            m_bOpen = WriteHeader(nDataBytes);
            if (!m_bOpen)
                pWriter->Close();
        }
    }
    if (!m_bOpen)
        m_pWriter.Release();
    return m_bOpen;
}

// A file that can be patched holds no data until it is finalized, so that one that was never finalized says so.
bool CWAVCreator::WriteHeader(long long nDataBytes)
{
    const bool bKnown = m_bWriteSizes || nDataBytes >= 0;
    const unsigned int nSize = m_bWriteSizes ? 0 : static_cast<unsigned int>(nDataBytes);
    HeaderWriter header;
    header.Name("RIFF");
    header.Number(bKnown ? nSize + HEADER_BYTES - RIFF_HEADER_BYTES : LENGTH_OF_A_STREAM, 4);
    header.Name("WAVE");
    header.Name("fmt ");
    header.Number(FORMAT_CHUNK_BYTES, 4);
    header.Number(GetPlainTag(m_Format), 2);
    header.Number(m_Format.nChannels, 2);
    header.Number(m_Format.nSamplesPerSec, 4);
    header.Number(m_Format.nAvgBytesPerSec, 4);
    header.Number(m_Format.nBlockAlign, 2);
    header.Number(m_Format.wBitsPerSample, 2);
    header.Name("data");
    header.Number(bKnown ? nSize : LENGTH_OF_A_STREAM, 4);
    return m_pWriter->Write(header.m_aryBytes, HEADER_BYTES) == HEADER_BYTES;
}

int CWAVCreator::WritePCMData(void* pData, long long nBytes)
{
    if (!m_bOpen || m_pWriter == nullptr || nBytes < 0 || (pData == nullptr && nBytes > 0))
        return -1;
    if (m_bWriteSizes && nBytes > MAX_DATA_BYTES - m_nDataBytes)
        return -1;
    if (m_bSwapBytes)
        SwapSamples(static_cast<unsigned char*>(pData), nBytes);
    // Deliberate: a writer takes 32 bits. What does not fit comes back short, and is a failure.
    const int nWritten = m_pWriter->Write(pData, static_cast<int>(nBytes));
    m_nDataBytes += nWritten;
    return nWritten == nBytes ? 0 : -1;
}

// A partial sample at the end stays as it is, and so does every other depth.
void CWAVCreator::SwapSamples(unsigned char* pData, long long nBytes) const
{
    if (m_Format.wBitsPerSample == BITS_16)
        for (long long i = 0; i < nBytes - 1; i += 2)
            std::swap(pData[i], pData[i + 1]);
    else if (m_Format.wBitsPerSample == BITS_24)
        for (long long i = 0; i < nBytes - 2; i += 3)
            std::swap(pData[i], pData[i + 2]);
}

int CWAVCreator::FinalizeWAV()
{
    if (!m_bOpen)
        return 0;
    if (m_pWriter != nullptr)
    {
        if (m_bWriteSizes)
        {
            // Modulo 2^32, like the sizes themselves: they come out right for every file that Open and WritePCMData
            // made.
            const unsigned int nLength = static_cast<unsigned int>(m_pWriter->GetLength());
            PatchSize(RIFF_SIZE_OFFSET, nLength - RIFF_HEADER_BYTES);
            PatchSize(DATA_SIZE_OFFSET, nLength - HEADER_BYTES);
        }
        m_pWriter->Close();
        m_pWriter.Release();
    }
    m_nDataBytes = 0;
    m_bOpen = false;
    return 0;
}

void CWAVCreator::PatchSize(int nOffset, unsigned int nSize)
{
    unsigned char arySize[4];
    for (unsigned char& nByte : arySize)
    {
        nByte = static_cast<unsigned char>(nSize);
        nSize >>= 8;
    }
    // Deliberate: a failure is not told. The file holds its data either way, and nobody above could do anything.
    (void)m_pWriter->Seek(nOffset, 0);
    (void)m_pWriter->Write(arySize, sizeof arySize);
}
