// A container of chunks that is no wave file: its numbers are big-endian, and opening it only keeps a record.

#pragma once

#include "WAVInfo.h"
#include <algorithm>
#include <utility>
#include <vector>

class BigEndianInfo final : public CIFFInfo
{
public:
    ~BigEndianInfo() override { (void)Close(); }
    int OpenInternal(bool bStrictFormat, bool bScanAllChunks) override
    {
        m_aryOpened.push_back({bStrictFormat, bScanAllChunks});
        m_bOpen = m_nResult == 0;
        return m_nResult;
    }
    long long GetByteFromBlock(long long nBlock) override { return nBlock; }
    long long GetBlockFromByte(long long nByte) override { return nByte; }
    const char* GetID3ChunkIDName() override { return "ID3 "; }
    void FlipLong(void* p) override
    {
        unsigned char* pBytes = static_cast<unsigned char*>(p);
        std::reverse(pBytes, pBytes + 4);
    }
    int m_nResult = 0;
    std::vector<std::pair<bool, bool>> m_aryOpened;
};
