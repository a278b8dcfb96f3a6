#include "StrideSource.h"

#include <algorithm>

namespace
{
class StrideSource : public SectorSource
{
public:
    StrideSource(SectorSource& source, long long nOffset, int nRecordBytes, int nKeptBytes)
        : m_Source(source), m_nOffset(nOffset), m_nRecordBytes(nRecordBytes), m_nKeptBytes(nKeptBytes)
    {
    }

    long long GetBytes() const override
    {
        return std::max<long long>(0, m_Source.GetBytes() - m_nOffset) / m_nRecordBytes * m_nKeptBytes;
    }

    int Read(long long nOffset, unsigned char* pBuffer, int nBytes) override
    {
        int nDone = 0;
        while (nOffset >= 0 && nDone < nBytes)
        {
            const long long nRecord = (nOffset + nDone) / m_nKeptBytes;
            const int nWithin = static_cast<int>((nOffset + nDone) % m_nKeptBytes);
            const int nWanted = std::min(nBytes - nDone, m_nKeptBytes - nWithin);
            const int nGot = m_Source.Read(m_nOffset + nRecord * m_nRecordBytes + nWithin, pBuffer + nDone, nWanted);
            nDone += std::max(0, nGot);
            if (nGot < nWanted)
                break;
        }
        return nDone;
    }

private:
    SectorSource& m_Source;
    const long long m_nOffset;
    const int m_nRecordBytes;
    const int m_nKeptBytes;
};
} // namespace

std::unique_ptr<SectorSource> MakeStrideSource(SectorSource& source, long long nOffset, int nRecordBytes,
                                               int nKeptBytes)
{
    return std::make_unique<StrideSource>(source, nOffset, nRecordBytes, nKeptBytes);
}
