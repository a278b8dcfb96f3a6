// The bookkeeping of every array: how many elements there are, for how many there is room, and how room grows.
//
// Errors:  a size that is negative, or for which there can be no memory, is refused: the array stays as it was.
// Threads: an array belongs to one thread at a time; nothing here locks.

#pragma once

class LyArrayBase
{
public:
    static constexpr int STEPPED_GROWTH = -1; // the grow block that stands for the growth table

    // The capacity to allocate for nSize elements: by the grow block, or by the table 4, 64, 256, 1024, 4096, 16384,
    // 65536, and nSize + 65536 above. What does not fit 32 bits is cut to the largest capacity there is.
    int NewAllocationSize(int nSize) const;

    // Grows only: a request of at most the present capacity does nothing. The new array is nSize elements with
    // bExactSize, else NewAllocationSize(nSize). With bKeepContents the elements move bytewise; with bZeroNew
    // everything from the count to the new capacity is zero. False, and nothing changed, if there is no memory.
    bool GrowAllocatedHelper(void*& pData, int nElementBytes, int nSize, bool bExactSize, bool bZeroNew,
                             bool bKeepContents);

    int GetSize() const { return m_nCount; }
    int GetAllocated() const { return m_nAllocated; }
    void SetGrowBlock(int nGrowBlock) { m_nGrowBlock = nGrowBlock; } // below 1: the growth table

    int m_nCount = 0;                  // elements in use
    int m_nAllocated = 0;              // elements there is room for
    int m_nGrowBlock = STEPPED_GROWTH; // elements by which the capacity grows
};
static_assert(sizeof(LyArrayBase) == 3 * sizeof(int));
