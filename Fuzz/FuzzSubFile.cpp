// Any bytes as a SUB file. What comes out is a code of the right form, or nothing.

#include "FuzzCheck.h"
#include "SubFile.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace
{
class Bytes : public SectorSource
{
public:
    Bytes(const uint8_t* p, size_t nBytes) : m_p(p), m_nBytes(static_cast<long long>(nBytes)) {}
    long long GetBytes() const override { return m_nBytes; }
    int Read(long long nOffset, unsigned char* pBuffer, int nBytes) override
    {
        const int nThere = static_cast<int>(std::clamp<long long>(m_nBytes - nOffset, 0, nBytes));
        if (nThere > 0)
            std::memcpy(pBuffer, m_p + nOffset, static_cast<size_t>(nThere));
        return nThere;
    }

private:
    const uint8_t* m_p;
    long long m_nBytes;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    Bytes source(pData, nBytes);
    const SUB_CONTENT content = ReadSubFile(source);
    Check(content.m_strMCN.empty() || content.m_strMCN.size() == 13);
    for (const auto& [nTrack, strISRC] : content.m_mapISRCs)
        Check(nTrack >= 1 && nTrack <= 99 && (strISRC.empty() || strISRC.size() == 12));
    for (const auto& [nTrack, nSector] : content.m_mapPregaps)
        Check(nTrack >= 1 && nTrack <= 99 && nSector >= 0);
    return 0;
}
