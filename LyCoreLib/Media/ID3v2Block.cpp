#include "ID3v2Block.h"
#include <atomic>
#include <new>

namespace
{
// Smaller blocks make the C library give nothing back; larger ones would be too much to keep.
constexpr int MIN_SPARE_BYTES = 0x10000;
constexpr int MAX_SPARE_BYTES = 0x200000;

void Free(ID3V2_BLOCK* pBlock) { ::operator delete(pBlock); }

// It has no destructor, so that a tag in static storage may end after it.
constinit std::atomic<ID3V2_BLOCK*> s_pSpare{nullptr};

struct SpareEnd
{
    ~SpareEnd() { Free(s_pSpare.exchange(nullptr)); }
};
const SpareEnd s_SpareEnd; // when the library goes, but for a block that is let go later
} // namespace

void ID3V2_BLOCK_RELEASE::operator()(ID3V2_BLOCK* pBlock) const
{
    const bool bKeep = pBlock->m_nBytes >= MIN_SPARE_BYTES && pBlock->m_nBytes <= MAX_SPARE_BYTES;
    Free(bKeep ? s_pSpare.exchange(pBlock) : pBlock);
}

ID3v2BlockPtr TakeID3v2Block(int nBytes)
{
    if (nBytes >= MIN_SPARE_BYTES && nBytes <= MAX_SPARE_BYTES)
    {
        ID3V2_BLOCK* pSpare = s_pSpare.exchange(nullptr);
        if (pSpare != nullptr && pSpare->m_nBytes >= nBytes)
            return ID3v2BlockPtr(pSpare);
        Free(pSpare);
    }
    void* p = ::operator new(sizeof(ID3V2_BLOCK) + static_cast<size_t>(nBytes), std::nothrow);
    return ID3v2BlockPtr(p != nullptr ? new (p) ID3V2_BLOCK{nBytes} : nullptr);
}
