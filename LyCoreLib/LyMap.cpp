#include "LyMap.h"
#include <climits>
#include <cstdlib>

namespace
{
constexpr long long MARGIN_PERCENT = 120;
constexpr long long FIRST_POWER = LyMapBase::MIN_HASH_SIZE + 1;
constexpr int MAX_CHAIN_AVERAGE = 2;
} // namespace

LyMapBase::LyMapBase(int nHashSize)
{
    if (nHashSize > 0)
        (void)SetHashSize(0, false);
}

// The buckets went with the derived class, which knows what they are.
LyMapBase::~LyMapBase()
{
    free(m_ppHeads);
    delete m_pContainer;
}

bool LyMapBase::SetHashSize(int nCount, bool bAddMargin)
{
    const long long nTarget = bAddMargin ? nCount * MARGIN_PERCENT / 100 : nCount;
    long long nPower = FIRST_POWER;
    while (nPower <= nTarget)
        nPower *= 2;
    if (nPower - 1 > INT_MAX)
        return false;
    const int nNewSize = static_cast<int>(nPower - 1);
    // Zero pages of the system cost nothing until a chain is used, however large the table.
    auto** ppNew = static_cast<MAP_BUCKET_BASE**>(calloc(static_cast<size_t>(nNewSize), sizeof(MAP_BUCKET_BASE*)));
    if (ppNew == nullptr)
        return false;

    MAP_BUCKET_BASE** ppOld = m_ppHeads;
    const int nOldSize = m_nHashSize;
    m_ppHeads = ppNew;
    m_nHashSize = nNewSize;
    for (int i = 0; i < nOldSize; ++i)
    {
        MAP_BUCKET_BASE* pBucket = ppOld[i];
        while (pBucket != nullptr)
        {
            MAP_BUCKET_BASE* pNext = pBucket->m_pNext;
            const int nIndex = HashIndexBase(pBucket);
            pBucket->m_pNext = ppNew[nIndex];
            ppNew[nIndex] = pBucket;
            pBucket = pNext;
        }
    }
    free(ppOld);
    return true;
}

void LyMapBase::RemoveAll()
{
    if (m_nCount < 1)
        return;
    for (int i = 0; i < m_nHashSize; ++i)
    {
        MAP_BUCKET_BASE* pBucket = m_ppHeads[i];
        m_ppHeads[i] = nullptr;
        while (pBucket != nullptr)
        {
            MAP_BUCKET_BASE* pNext = pBucket->m_pNext;
            DestroyBucketBase(pBucket);
            pBucket = pNext;
        }
    }
    m_nCount = 0;
    if (m_pContainer != nullptr)
        m_pContainer->Empty(false);
}

LyPOSITION LyMapBase::GetStartPosition() const
{
    // So a map that makes its values on demand learns of the walk, for which it makes them (ID3v2Properties).
    (void)GetBucketBytes();
    for (int i = 0; i < m_nHashSize; ++i)
    {
        if (m_ppHeads[i] != nullptr)
            return {i, m_ppHeads[i]};
    }
    return {};
}

void LyMapBase::IncrementPosition(LyPOSITION& position) const
{
    if (position.IsEnd())
    {
        position = {};
        return;
    }
    if (position.m_pBucket->m_pNext != nullptr)
    {
        position.m_pBucket = position.m_pBucket->m_pNext;
        return;
    }
    for (int i = position.m_nIndex < 0 ? 0 : position.m_nIndex; ++i < m_nHashSize;)
    {
        if (m_ppHeads[i] != nullptr)
        {
            position = {i, m_ppHeads[i]};
            return;
        }
    }
    position = {};
}

bool LyMapBase::MapGetNeedsRehash(int nCount, int nHashSize)
{
    return nHashSize < 1 || nCount > static_cast<long long>(nHashSize) * MAX_CHAIN_AVERAGE + 2;
}

void LyMapBase::SetUseBlockDataContainer(bool bUse, int nBlockSize)
{
    RemoveAll();
    if (!bUse)
    {
        delete m_pContainer;
        m_pContainer = nullptr;
    }
    else if (m_pContainer == nullptr)
    {
        m_pContainer = new CBlockDataContainer(nBlockSize, GetBucketBytes(), 0);
    }
}
