// Memory for many small equal records that go all at once: records are cut from large blocks and never given back
// singly.
//
// Units:   bytes, 64 bits. Records follow each other without a gap, so a record is aligned as the sizes before it were.
// Errors:  null for a negative size or if there is no memory.
// Threads: none of this locks.

#pragma once

#include "LyCoreArray.h"

// The head of a block; the data follows it.
struct CBlockDataContainerItem
{
    long long m_nSize;      // bytes of data
    long long m_nRemaining; // bytes of data that are still free, at the end

    unsigned char* GetData() { return reinterpret_cast<unsigned char*>(this + 1); }
};
static_assert(sizeof(CBlockDataContainerItem) == 16);

class CBlockDataContainer
{
public:
    using CItemArray = LyArray<CBlockDataContainerItem*, CBlockDataContainerItem*, true>;
    static constexpr int MAX_WALK_INDEX = 7; // a block behind this index that does not fit is taken as full

    // Blocks of nBlockSize bytes; one that does not fit and has less than nMinimumRemainder left is full.
    CBlockDataContainer(long long nBlockSize, long long nMinimumRemainder, long long nExtraBytes);
    virtual ~CBlockDataContainer();
    CBlockDataContainer(const CBlockDataContainer&) = delete;
    CBlockDataContainer& operator=(const CBlockDataContainer&) = delete;

    // Room for nBytes, filled from p unless p is null. Lives until Empty or the end of the container.
    void* AddBinary(const void* p, long long nBytes);
    // A further block with room for the larger of the block size and nBytes.
    CBlockDataContainerItem* AllocateBlock(long long nBytes);
    // All records are gone. Without bFreeMemory the blocks stay for new ones.
    void Empty(bool bFreeMemory);

    const CItemArray& GetFreeBlocks() const { return m_aryFree; }
    const CItemArray& GetFullBlocks() const { return m_aryFull; }

private:
    static void FreeBlocks(CItemArray& aryBlocks);

    long long m_nBlockSize;
    long long m_nMinimumRemainder;
    long long m_nExtraBytes; // added to each allocation behind the data
    CItemArray m_aryFree;    // blocks with free room, in the order in which they are tried
    CItemArray m_aryFull;
};
