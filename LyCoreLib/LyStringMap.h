// Maps and sets with text for a key.

#pragma once

#include "LyCoreMap.h"
#include "LyString.h"
#include <concepts>

// From text to VV. Keys are stored as strings and handed over as characters; a null key is the empty one. Without
// bCaseSensitive keys that differ only in case are one key, stored as it was first inserted.
// V names the stored key; it is LyString in every form of this system.
template <class V, bool bCaseSensitive, class VV, class VARG, bool bHasValue>
class LyStringMap : public LyMap<LyString, const wchar_t*, VV, VARG, bHasValue>
{
public:
    unsigned int HashKey(const wchar_t* pKey) const override { return LyHash::HashText(pKey, bCaseSensitive); }
    bool AreKeysEqual(const wchar_t* pFirst, const wchar_t* pSecond) const override
    {
        return LyHash::AreTextsEqual(pFirst, pSecond, bCaseSensitive);
    }
};

// A set of strings.
template <class K, bool bCaseSensitive>
class LyStringUniqueList : public LyStringMap<K, bCaseSensitive, int, int, false>
{
};

// The 64 bit hash of a text, treated as a key in its place.
template <bool bCaseSensitive>
class LyStringHashBase
{
public:
    LyStringHashBase() = default;
    LyStringHashBase(const wchar_t* p) : m_nHash(LyHash::HashString<wchar_t>(p, bCaseSensitive)) {}
    LyStringHashBase(const LyString& str) : LyStringHashBase(static_cast<const wchar_t*>(str)) {}
    template <std::integral N>
    LyStringHashBase(N nHash) : m_nHash(static_cast<unsigned long long>(nHash))
    {
    }

    operator unsigned long long() const { return m_nHash; }
    bool operator==(const LyStringHashBase& other) const = default;

    unsigned long long m_nHash = 0;
};

// A set of texts that keeps only their hashes: two texts with the same hash are one entry. Its buckets lie in a block
// container.
template <bool bCaseSensitive>
class LyStringCRCUniqueList
    : public LyMap<LyStringHashBase<bCaseSensitive>, LyStringHashBase<bCaseSensitive>, int, int, false>
{
    using HASH = LyStringHashBase<bCaseSensitive>;

public:
    LyStringCRCUniqueList() { this->SetUseBlockDataContainer(true, LyMapBase::DEFAULT_BLOCK_SIZE); }

    unsigned int HashKey(HASH key) const override { return static_cast<unsigned int>(key.m_nHash); }
    bool AreKeysEqual(HASH first, HASH second) const override { return first == second; }
};
