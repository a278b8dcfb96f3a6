#include "CBlockDataContainer.h"

namespace
{
constexpr long long HEAD_BYTES = sizeof(CBlockDataContainerItem);
constexpr long long MAX_BLOCK_BYTES = 1LL << 38; // above what any caller means: refused before it is asked for
} // namespace

CBlockDataContainer::CBlockDataContainer(long long nBlockSize, long long nMinimumRemainder, long long nExtraBytes)
    : m_nBlockSize(nBlockSize), m_nMinimumRemainder(nMinimumRemainder), m_nExtraBytes(nExtraBytes > 0 ? nExtraBytes : 0)
{
}

CBlockDataContainer::~CBlockDataContainer() { Empty(true); }

void* CBlockDataContainer::AddBinary(const void* p, long long nBytes)
{
    if (nBytes < 0)
        return nullptr;
    CBlockDataContainerItem* pBlock = nullptr;
    for (int i = 0; i < m_aryFree.GetSize() && pBlock == nullptr;)
    {
        CBlockDataContainerItem* pTried = m_aryFree[i];
        if (pTried->m_nRemaining >= nBytes)
        {
            pBlock = pTried;
        }
        else if ((i > MAX_WALK_INDEX || pTried->m_nRemaining < m_nMinimumRemainder) && m_aryFull.Add(pTried) >= 0)
        {
            m_aryFree.RemoveAt(i, 1); // the next one moves to this index
        }
        else
        {
            ++i;
        }
    }
    if (pBlock == nullptr)
        pBlock = AllocateBlock(nBytes);
    if (pBlock == nullptr || pBlock->m_nRemaining < nBytes)
        return nullptr;

    unsigned char* pResult = pBlock->GetData() + (pBlock->m_nSize - pBlock->m_nRemaining);
    if (p != nullptr && nBytes > 0)
        memcpy(pResult, p, static_cast<size_t>(nBytes));
    pBlock->m_nRemaining -= nBytes;
    return pResult;
}

CBlockDataContainerItem* CBlockDataContainer::AllocateBlock(long long nBytes)
{
    long long nPayload = m_nBlockSize > nBytes ? m_nBlockSize : nBytes;
    if (nPayload < 0)
        nPayload = 0;
    if (nPayload > MAX_BLOCK_BYTES || m_nExtraBytes > MAX_BLOCK_BYTES)
        return nullptr;
    unsigned char* pMemory =
        new (std::nothrow) unsigned char[static_cast<size_t>(HEAD_BYTES + nPayload + m_nExtraBytes)];
    if (pMemory == nullptr)
        return nullptr;
    CBlockDataContainerItem* pBlock = new (pMemory) CBlockDataContainerItem{nPayload, nPayload};
    if (m_aryFree.Add(pBlock) < 0)
    {
        delete[] pMemory;
        return nullptr;
    }
    return pBlock;
}

void CBlockDataContainer::Empty(bool bFreeMemory)
{
    if (bFreeMemory)
    {
        FreeBlocks(m_aryFree);
        FreeBlocks(m_aryFull);
        return;
    }
    if (m_aryFree.Append(m_aryFull))
        m_aryFull.RemoveAll(false);
    for (CBlockDataContainerItem* pBlock : m_aryFree)
        pBlock->m_nRemaining = pBlock->m_nSize;
}

void CBlockDataContainer::FreeBlocks(CItemArray& aryBlocks)
{
    for (CBlockDataContainerItem* pBlock : aryBlocks)
        delete[] reinterpret_cast<unsigned char*>(pBlock);
    aryBlocks.RemoveAll(true);
}
