// What every map is, whatever its keys: an array of bucket chains. Its size is always a power of two less one, and it
// grows when a chain would average more than about two entries. It never shrinks.
//
// Order:   an iteration goes by bucket, then along the chain. Growth turns chains around: rely on no order.
// Errors:  a size for which there is no memory is refused, and the map stays as it was.
// Threads: a map belongs to one thread at a time, or its owner guards it.

#pragma once

#include "CBlockDataContainer.h"

struct MAP_BUCKET_BASE
{
    MAP_BUCKET_BASE* m_pNext = nullptr;
};

// Where an iteration stands. Valid until the map changes.
struct LyPOSITION
{
    int m_nIndex = -1;                    // of the chain; -1 at the end
    MAP_BUCKET_BASE* m_pBucket = nullptr; // null at the end

    bool IsEnd() const { return m_pBucket == nullptr; }
    bool operator==(const LyPOSITION& other) const = default;
};

// The order of the virtual operations is their order in the table.
class LyMapBase
{
public:
    static constexpr int MIN_HASH_SIZE = 7;
    static constexpr int DEFAULT_BLOCK_SIZE = 0x10000; // bytes

    // Deliberate: a positive number is not taken as a size. It asks for the smallest table at once instead of at the
    // first insert.
    explicit LyMapBase(int nHashSize);
    virtual ~LyMapBase();
    LyMapBase(const LyMapBase&) = delete;
    LyMapBase& operator=(const LyMapBase&) = delete;

    virtual void DestroyBucketBase(MAP_BUCKET_BASE* pBucket) = 0;
    virtual int HashIndexBase(MAP_BUCKET_BASE* pBucket) const = 0; // the chain that the bucket belongs to
    virtual int GetBucketBytes() const = 0;

    int GetCount() const { return m_nCount; }
    int GetHashSize() const { return m_nHashSize; } // chains; 0 until first needed

    // Makes the table large enough for nCount entries (a fifth more with bAddMargin) and relinks the buckets.
    bool SetHashSize(int nCount, bool bAddMargin);
    void RemoveAll(); // the table stays

    LyPOSITION GetStartPosition() const;
    void IncrementPosition(LyPOSITION& position) const; // the end stays the end
    static bool MapGetNeedsRehash(int nCount, int nHashSize);

    // Whether buckets come from a block container. Empties the map. Only for keys and values without a destructor:
    // the buckets of a container just fall away.
    void SetUseBlockDataContainer(bool bUse, int nBlockSize = DEFAULT_BLOCK_SIZE);

protected:
    int IndexOf(unsigned int nHash) const { return static_cast<int>(nHash % static_cast<unsigned int>(m_nHashSize)); }

    int m_nCount = 0;
    int m_nHashSize = 0;
    CBlockDataContainer* m_pContainer = nullptr; // owned
    MAP_BUCKET_BASE** m_ppHeads = nullptr;       // m_nHashSize chains
};
