#include "SubFile.h"

#include "CRC16.h"
#include "SheetText.h"
#include <algorithm>
#include <vector>

namespace
{
constexpr int SUB_SECTOR_BYTES = 96;
constexpr int Q_OFFSET = 12; // behind P
constexpr int Q_BYTES = 12;
constexpr int Q_CRC_OFFSET = 10;
constexpr int SECTORS_AT_ONCE = 512;
constexpr int ADR_POSITION = 1;
constexpr int ADR_CATALOGUE_NUMBER = 2;
constexpr int ADR_ISRC = 3;

int FromBCD(unsigned char c) { return (c >> 4) <= 9 && (c & 15) <= 9 ? (c >> 4) * 10 + (c & 15) : -1; }

unsigned int GetBits(const unsigned char* p, int nBit, int nBits)
{
    unsigned int nValue = 0;
    for (int i = nBit; i < nBit + nBits; ++i)
        nValue = nValue << 1 | (p[i / 8] >> (7 - i % 8) & 1U);
    return nValue;
}

bool HasGoodCRC(const unsigned char* pQ)
{
    return GetCRC16(pQ, Q_CRC_OFFSET) == (pQ[Q_CRC_OFFSET] << 8 | pQ[Q_CRC_OFFSET + 1]);
}

std::string GetMCN(const unsigned char* pQ)
{
    std::string strDigits;
    for (int i = 0; i < 13; ++i)
        strDigits += static_cast<char>('0' + GetBits(pQ + 1, 4 * i, 4));
    bool bValid = false;
    return NormaliseMCN(strDigits, bValid);
}

std::string GetISRC(const unsigned char* pQ)
{
    std::string strISRC;
    for (int i = 0; i < 5; ++i) // 6-bit characters are ASCII less 30h
        strISRC += static_cast<char>('0' + GetBits(pQ + 1, 6 * i, 6));
    for (int i = 0; i < 7; ++i)
        strISRC += static_cast<char>('0' + GetBits(pQ + 1, 32 + 4 * i, 4));
    bool bValid = false;
    return NormaliseISRC(strISRC, bValid);
}

class SubReader
{
public:
    void Take(const unsigned char* pQ, int nSector)
    {
        const int nADR = pQ[0] & 15;
        if (nADR == ADR_POSITION)
            TakePosition(FromBCD(pQ[1]), FromBCD(pQ[2]), nSector);
        else if (nADR == ADR_CATALOGUE_NUMBER && m_Content.m_strMCN.empty())
            m_Content.m_strMCN = GetMCN(pQ);
        else if (nADR == ADR_ISRC && m_nTrack > 0 && m_Content.m_mapISRCs.count(m_nTrack) == 0)
            m_Content.m_mapISRCs[m_nTrack] = GetISRC(pQ);
    }
    SUB_CONTENT m_Content;

private:
    int m_nTrack = 0; // of the last position

    void TakePosition(int nTrack, int nIndex, int nSector)
    {
        if (nTrack < 1)
            return;
        m_nTrack = nTrack;
        if (nIndex == 0)
            m_Content.m_mapPregaps.try_emplace(nTrack, nSector);
    }
};
} // namespace

SUB_CONTENT ReadSubFile(SectorSource& source)
{
    SubReader reader;
    std::vector<unsigned char> buffer(static_cast<size_t>(SECTORS_AT_ONCE) * SUB_SECTOR_BYTES);
    const long long nSectors = std::min<long long>(source.GetBytes() / SUB_SECTOR_BYTES, 100 * 60 * 75);
    for (int nFirst = 0; nFirst < nSectors; nFirst += SECTORS_AT_ONCE)
    {
        const int nGot = source.Read(static_cast<long long>(nFirst) * SUB_SECTOR_BYTES, buffer.data(),
                                     static_cast<int>(buffer.size())) /
                         SUB_SECTOR_BYTES;
        for (int i = 0; i < nGot; ++i)
        {
            const unsigned char* pQ = buffer.data() + static_cast<std::ptrdiff_t>(i) * SUB_SECTOR_BYTES + Q_OFFSET;
            if (HasGoodCRC(pQ))
                reader.Take(pQ, nFirst + i);
        }
        if (nGot < SECTORS_AT_ONCE)
            break;
    }
    return std::move(reader.m_Content);
}
static_assert(Q_OFFSET + Q_BYTES <= SUB_SECTOR_BYTES);
