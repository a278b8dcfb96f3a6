#include "LyArray.h"

namespace
{
// Capacities of the growth table; above the last one the room grows by that one.
constexpr int s_aryGrowthSteps[] = {4, 64, 256, 1024, 4096, 16384, 65536};
constexpr int MAX_GROWTH_STEP = 65536;

// No array of this system comes near. It keeps the product of two hostile numbers from being asked for at all.
constexpr long long MAX_ARRAY_BYTES = 1LL << 38;

int ClampToInt(long long nSize) { return nSize > INT_MAX ? INT_MAX : static_cast<int>(nSize); }
} // namespace

int LyArrayBase::NewAllocationSize(int nSize) const
{
    if (m_nGrowBlock > 0)
        return ClampToInt((static_cast<long long>(nSize) / m_nGrowBlock + 1) * m_nGrowBlock);
    for (int nStep : s_aryGrowthSteps)
    {
        if (nSize <= nStep)
            return nStep;
    }
    return ClampToInt(static_cast<long long>(nSize) + MAX_GROWTH_STEP);
}

bool LyArrayBase::GrowAllocatedHelper(void*& pData, int nElementBytes, int nSize, bool bExactSize, bool bZeroNew,
                                      bool bKeepContents)
{
    if (nSize <= m_nAllocated)
        return true;
    const int nCapacity = bExactSize ? nSize : NewAllocationSize(nSize);
    const long long nBytes = static_cast<long long>(nCapacity) * nElementBytes;
    if (nElementBytes < 1 || nBytes > MAX_ARRAY_BYTES)
        return false;
    unsigned char* pOld = static_cast<unsigned char*>(pData);
    unsigned char* pNew = new (std::nothrow) unsigned char[static_cast<size_t>(nBytes)];
    if (pNew == nullptr)
        return false;
    const size_t nUsedBytes = static_cast<size_t>(m_nCount) * static_cast<size_t>(nElementBytes);
    if (bKeepContents && nUsedBytes > 0)
        memcpy(pNew, pOld, nUsedBytes);
    if (bZeroNew)
        memset(pNew + nUsedBytes, 0, static_cast<size_t>(nBytes) - nUsedBytes);
    delete[] pOld;
    pData = pNew;
    m_nAllocated = nCapacity;
    return true;
}
