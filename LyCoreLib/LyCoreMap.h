// The map from keys to values, and its form that owns what its values point to.
//
// K is the key as it is stored, KARG as it is handed over; V and VARG are the same for the value. Without bHasValue the
// map is a set: its buckets have no value.

#pragma once

#include "LyHash.h"
#include "LyMapBase.h"
#include <cstdint>
#include <functional>
#include <new>
#include <type_traits>

// The layout of a bucket: the link, the key and, unless the map is a set, the value.
template <class K, class V, bool bHasValue = true>
struct MAP_BUCKET : MAP_BUCKET_BASE
{
    template <class A>
    explicit MAP_BUCKET(const A& key) : m_Key(key), m_Value()
    {
    }
    K m_Key;
    V m_Value;
};

template <class K, class V>
struct MAP_BUCKET<K, V, false> : MAP_BUCKET_BASE
{
    template <class A>
    explicit MAP_BUCKET(const A& key) : m_Key(key)
    {
    }
    K m_Key;
};

// How a map without rules of its own hashes and compares keys: text by its characters, numbers and pointers by value.
template <class KARG>
struct LyMapKey
{
    using VALUE = std::remove_cv_t<std::remove_reference_t<KARG>>;
    static constexpr bool IS_TEXT = std::is_convertible_v<KARG, const wchar_t*>;

    static unsigned int Hash(KARG key)
    {
        if constexpr (IS_TEXT)
            return LyHash::HashText(key, true);
        else if constexpr (std::is_integral_v<VALUE> || std::is_enum_v<VALUE>)
            return static_cast<unsigned int>(key);
        else if constexpr (std::is_pointer_v<VALUE>)
            return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(key) / alignof(void*));
        else if constexpr (requires { std::hash<VALUE>()(key); })
            return static_cast<unsigned int>(std::hash<VALUE>()(key));
        else
            return 0; // correct, if slow: a class with such keys overrides HashKey
    }

    static bool AreEqual(KARG first, KARG second)
    {
        if constexpr (IS_TEXT)
            return LyHash::AreTextsEqual(first, second, true);
        else if constexpr (requires { static_cast<bool>(first == second); })
            return first == second;
        else
            return false; // a class with such keys overrides AreKeysEqual
    }
};

template <class K, class KARG, class V, class VARG, bool bHasValue>
class LyMap : public LyMapBase
{
public:
    using BUCKET = MAP_BUCKET<K, V, bHasValue>;
    static_assert(alignof(BUCKET) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

    LyMap() : LyMapBase(0) {}
    explicit LyMap(int nHashSize) : LyMapBase(nHashSize) {}
    ~LyMap() override { RemoveAll(); }

    void DestroyBucketBase(MAP_BUCKET_BASE* pBucket) override { DestroyBucket(static_cast<BUCKET*>(pBucket), true); }
    int HashIndexBase(MAP_BUCKET_BASE* pBucket) const override
    {
        return IndexOf(HashKey(static_cast<BUCKET*>(pBucket)->m_Key));
    }
    int GetBucketBytes() const override { return static_cast<int>(sizeof(BUCKET)); }

    virtual unsigned int HashKey(KARG key) const { return LyMapKey<KARG>::Hash(key); }
    virtual bool AreKeysEqual(KARG first, KARG second) const { return LyMapKey<KARG>::AreEqual(first, second); }
    // Ends the bucket, unless it lies in a container. A class that overrides it calls RemoveAll in its own destructor.
    virtual void DestroyBucket(BUCKET* pBucket, bool bFree)
    {
        if (bFree && m_pContainer == nullptr)
            delete pBucket;
    }
    virtual BUCKET* CreateBucket(KARG key)
    {
        if (m_pContainer == nullptr)
            return new BUCKET(key);
        void* p = m_pContainer->AddBinary(nullptr, GetBucketBytes());
        return p != nullptr ? new (p) BUCKET(key) : nullptr;
    }

    // Inserts, or replaces the value of the key. False only if there is no memory. A set drops the value.
    bool SetAt(KARG key, VARG value);
    bool Lookup(KARG key, V& value) const; // false, and value as it was, if the key is not there
    V* FindValue(KARG key);                // the value in its place, or null; valid until the key goes
    const V* FindValue(KARG key) const { return const_cast<LyMap*>(this)->FindValue(key); }
    bool Add(KARG key); // true if the key is new; in a map its value is the default one
    bool Contains(KARG key) const { return FindBucket(key) != nullptr; }
    bool RemoveKey(KARG key);

    // Delivers the entry at the position and goes on to the next. False, and nothing delivered, at the end.
    bool GetNextAssoc(LyPOSITION& position, K& key, V& value) const;
    bool GetNextAssoc(LyPOSITION& position, K& key) const;

private:
    MAP_BUCKET_BASE** FindLink(KARG key) const;
    BUCKET* FindBucket(KARG key) const;
    BUCKET* FindOrInsert(KARG key, bool& bNew);
};

// Values that the map deletes together with their buckets, unless it was told that it does not own them. A value that
// SetAt replaces is not deleted: it belongs to the caller again. Text keys are compared with their case.
// The last template argument is part of the name by which other libraries know the type; it changes nothing.
template <class K, class KARG, class T, bool = true>
class LyOwnedPtrMap : public LyMap<K, KARG, T*, T*, true>
{
    using BASE = LyMap<K, KARG, T*, T*, true>;

public:
    LyOwnedPtrMap() = default;
    explicit LyOwnedPtrMap(bool bOwned) : m_bOwned(bOwned) {}
    ~LyOwnedPtrMap() override { this->RemoveAll(); }

    void DestroyBucket(typename BASE::BUCKET* pBucket, bool bFree) override
    {
        if (bFree && m_bOwned)
            delete pBucket->m_Value;
        BASE::DestroyBucket(pBucket, bFree);
    }

    bool m_bOwned = true; // the value is deleted with its bucket
};

// ---- Implementation

// The link that leads to the key's bucket, or the null link at the end of its chain. The table must be there.
template <class K, class KARG, class V, class VARG, bool bHasValue>
MAP_BUCKET_BASE** LyMap<K, KARG, V, VARG, bHasValue>::FindLink(KARG key) const
{
    MAP_BUCKET_BASE** ppLink = &m_ppHeads[IndexOf(HashKey(key))];
    while (*ppLink != nullptr && !AreKeysEqual(static_cast<BUCKET*>(*ppLink)->m_Key, key))
        ppLink = &(*ppLink)->m_pNext;
    return ppLink;
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
auto LyMap<K, KARG, V, VARG, bHasValue>::FindBucket(KARG key) const -> BUCKET*
{
    return m_nHashSize > 0 ? static_cast<BUCKET*>(*FindLink(key)) : nullptr;
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
auto LyMap<K, KARG, V, VARG, bHasValue>::FindOrInsert(KARG key, bool& bNew) -> BUCKET*
{
    bNew = false;
    MAP_BUCKET_BASE** ppLink = m_nHashSize > 0 ? FindLink(key) : nullptr;
    if (ppLink != nullptr && *ppLink != nullptr)
        return static_cast<BUCKET*>(*ppLink);
    if (ppLink == nullptr || MapGetNeedsRehash(m_nCount + 1, m_nHashSize))
    {
        // A table that cannot grow goes on with longer chains; without a table there is no map.
        (void)SetHashSize(m_nCount + 1, false);
        if (m_nHashSize == 0)
            return nullptr;
        ppLink = FindLink(key);
    }
    BUCKET* pBucket = CreateBucket(key);
    if (pBucket == nullptr)
        return nullptr;
    *ppLink = pBucket;
    ++m_nCount;
    bNew = true;
    return pBucket;
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
bool LyMap<K, KARG, V, VARG, bHasValue>::SetAt(KARG key, VARG value)
{
    bool bNew = false;
    BUCKET* pBucket = FindOrInsert(key, bNew);
    if (pBucket == nullptr)
        return false;
    if constexpr (bHasValue)
        pBucket->m_Value = value;
    else
        (void)value;
    return true;
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
bool LyMap<K, KARG, V, VARG, bHasValue>::Lookup(KARG key, V& value) const
{
    const BUCKET* pBucket = FindBucket(key);
    if (pBucket == nullptr)
        return false;
    if constexpr (bHasValue)
        value = pBucket->m_Value;
    else
        (void)value;
    return true;
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
V* LyMap<K, KARG, V, VARG, bHasValue>::FindValue(KARG key)
{
    if constexpr (bHasValue)
    {
        BUCKET* pBucket = FindBucket(key);
        return pBucket != nullptr ? &pBucket->m_Value : nullptr;
    }
    else
    {
        (void)key;
        return nullptr;
    }
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
bool LyMap<K, KARG, V, VARG, bHasValue>::Add(KARG key)
{
    bool bNew = false;
    (void)FindOrInsert(key, bNew);
    return bNew;
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
bool LyMap<K, KARG, V, VARG, bHasValue>::RemoveKey(KARG key)
{
    if (m_nHashSize == 0)
        return false;
    MAP_BUCKET_BASE** ppLink = FindLink(key);
    BUCKET* pBucket = static_cast<BUCKET*>(*ppLink);
    if (pBucket == nullptr)
        return false;
    MAP_BUCKET_BASE* pNext = pBucket->m_pNext;
    DestroyBucket(pBucket, true);
    *ppLink = pNext;
    --m_nCount;
    return true;
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
bool LyMap<K, KARG, V, VARG, bHasValue>::GetNextAssoc(LyPOSITION& position, K& key, V& value) const
{
    if constexpr (bHasValue)
    {
        if (!position.IsEnd())
            value = static_cast<const BUCKET*>(position.m_pBucket)->m_Value;
    }
    else
    {
        (void)value;
    }
    return GetNextAssoc(position, key);
}

template <class K, class KARG, class V, class VARG, bool bHasValue>
bool LyMap<K, KARG, V, VARG, bHasValue>::GetNextAssoc(LyPOSITION& position, K& key) const
{
    if (position.IsEnd())
        return false;
    key = static_cast<const BUCKET*>(position.m_pBucket)->m_Key;
    IncrementPosition(position);
    return true;
}
